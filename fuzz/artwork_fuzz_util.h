// What the Gerber and Excellon fuzz targets check of every input they read: a refused input
// has a located error; an accepted layer renders into a small frame and writes as Gerber that
// reads again. Header-only; used by the artwork targets in fuzz/.
#ifndef FUZZ_ARTWORK_FUZZ_UTIL_H_
#define FUZZ_ARTWORK_FUZZ_UTIL_H_

#include <string>

#include "fuzz/fuzz_util.h"
#include "qvis/artwork/io/gerber_reader.h"
#include "qvis/artwork/io/gerber_writer.h"
#include "qvis/artwork/render.h"
#include "qvis/artwork/shapes.h"

namespace qvis::fuzz {

// SmallReadLimits: limits low enough that a fuzzed layer renders quickly.
inline ReadLimits SmallReadLimits() {
  ReadLimits limits;
  limits.max_objects = 20000;
  limits.max_expanded = 100000;
  limits.max_repeat = 1000;
  return limits;
}

// CheckReadLayer checks the outcome of reading one input with `limits` into `layer`.
inline void CheckReadLayer(const char* target, const ReadResult& r, const Layer& layer,
                           const ReadLimits& limits) {
  if (!r.ok) {
    CheckInvariant(r.error.line >= 1 && r.error.column >= 1, target, "error has a place");
    CheckInvariant(!r.error.text.empty(), target, "error says what was expected");
    return;
  }
  ArtView view;
  view.dpi = 50;
  view.width = 64;
  view.height = 48;
  const ArtBox box = LayerExtent(layer);
  if (!box.IsEmpty()) {
    view.origin_x = box.min_x;
    view.origin_y = box.min_y;
  }
  CheckInvariant(RenderLayerMask(layer, view).size() == 64u * 48u, target,
                 "mask has the frame's size");
  const std::string written = WriteGerber(layer);
  Layer again;
  ReadLimits loose;
  loose.max_objects = limits.max_objects * 4;
  loose.max_expanded = limits.max_expanded * 4;
  CheckInvariant(ReadGerber(written, &again, loose).ok, target,
                 "what the writer writes reads again");
}

}  // namespace qvis::fuzz

#endif  // FUZZ_ARTWORK_FUZZ_UTIL_H_
