// Excellon drill file reader: the header's tools, inch or metric with leading or trailing zeros
// or decimal coordinates, hits, G85 slots, routed paths and repeats. Holes become flashes of
// round apertures (one per tool) on a drill layer; slots and routes become tracks and arcs.
#ifndef QVIS_ARTWORK_IO_EXCELLON_READER_H_
#define QVIS_ARTWORK_IO_EXCELLON_READER_H_

#include <string_view>

#include "qvis/artwork/document.h"
#include "qvis/artwork/io/messages.h"

namespace qvis {

// Aperture number of tool T<n> on the drill layer.
inline int DrillAperture(int tool) { return 10 + tool; }

ReadResult ReadExcellon(std::string_view text, Layer* layer, const ReadLimits& limits = {});

}  // namespace qvis

#endif  // QVIS_ARTWORK_IO_EXCELLON_READER_H_
