// Gerber RS-274X writer: one layer as a file in the current format (FS LA 4.6 / 2.6 absolute,
// G75 arcs), apertures, macros, blocks, step-and-repeat, polarity, transforms and attributes
// as the layer holds them.
#ifndef QVIS_ARTWORK_IO_GERBER_WRITER_H_
#define QVIS_ARTWORK_IO_GERBER_WRITER_H_

#include <string>

#include "qvis/artwork/document.h"

namespace qvis {

struct GerberWriteOptions {
  Units units = Units::kMillimetre;  // millimetres (4.6) or inches (2.6)
};

std::string WriteGerber(const Layer& layer, const GerberWriteOptions& options = {});

}  // namespace qvis

#endif  // QVIS_ARTWORK_IO_GERBER_WRITER_H_
