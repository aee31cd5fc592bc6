// Fuzz target for the Excellon reader. Any input must either be refused with a located error or
// read into a drill layer that renders into a small frame and writes back as Gerber that reads
// again, without a crash, a sanitizer report, a hang or unbounded memory. Built as a libFuzzer
// target under clang and as a corpus replay driver otherwise (see README.md).
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "qvis/artwork/io/excellon_reader.h"
#include "qvis/artwork/io/gerber_reader.h"
#include "qvis/artwork/io/gerber_writer.h"
#include "qvis/artwork/render.h"
#include "qvis/artwork/shapes.h"

namespace {

void Check(bool ok, const char* what) {
  if (!ok) {
    std::fprintf(stderr, "excellon_fuzz: invariant failed: %s\n", what);
    std::abort();
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size) {
  if (size > (1u << 20)) return 0;
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  // Limits small enough that a fuzzed drill file renders quickly.
  qvis::ReadLimits limits;
  limits.max_objects = 20000;
  limits.max_expanded = 100000;
  limits.max_repeat = 1000;
  qvis::Layer layer;
  const qvis::ReadResult r = qvis::ReadExcellon(text, &layer, limits);
  if (!r.ok) {
    Check(r.error.line >= 1 && r.error.column >= 1, "error has a place");
    Check(!r.error.text.empty(), "error says what was expected");
    return 0;
  }
  Check(static_cast<std::int64_t>(layer.objects.size()) <= limits.max_objects, "object limit holds");
  qvis::ArtView view;
  view.dpi = 50;
  view.width = 64;
  view.height = 48;
  const qvis::ArtBox box = qvis::LayerExtent(layer);
  if (!box.IsEmpty()) {
    view.origin_x = box.min_x;
    view.origin_y = box.min_y;
  }
  Check(qvis::RenderLayerMask(layer, view).size() == 64u * 48u, "mask has the frame's size");
  const std::string written = qvis::WriteGerber(layer);
  qvis::Layer again;
  qvis::ReadLimits loose;
  loose.max_objects = limits.max_objects * 4;
  loose.max_expanded = limits.max_expanded * 4;
  Check(qvis::ReadGerber(written, &again, loose).ok, "the drill layer written as Gerber reads again");
  return 0;
}
