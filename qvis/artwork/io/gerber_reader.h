// Gerber RS-274X reader: one file becomes one layer of the board document. The current format
// is read in full; the deprecated forms still written by older tools are read with a warning.
#ifndef QVIS_ARTWORK_IO_GERBER_READER_H_
#define QVIS_ARTWORK_IO_GERBER_READER_H_

#include <string_view>

#include "qvis/artwork/document.h"
#include "qvis/artwork/io/messages.h"

namespace qvis {

// ReadGerber fills `layer` (cleared first) from `text`. On error the result names the line and
// column and what was expected there; the layer then holds what was read before the error.
ReadResult ReadGerber(std::string_view text, Layer* layer, const ReadLimits& limits = {});

// LooksLikeGerber tells Gerber text from Excellon by its first commands.
bool LooksLikeGerber(std::string_view text);

}  // namespace qvis

#endif  // QVIS_ARTWORK_IO_GERBER_READER_H_
