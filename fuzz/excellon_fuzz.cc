// Fuzz target for the Excellon reader. Any input must either be refused with a located error or
// read into a drill layer that renders into a small frame and writes back as Gerber that reads
// again, without a crash, a sanitizer report, a hang or unbounded memory. Built as a libFuzzer
// target under clang and as a corpus replay driver otherwise (see README.md).
#include <cstdint>
#include <string_view>

#include "fuzz/artwork_fuzz_util.h"
#include "qvis/artwork/io/excellon_reader.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size) {
  if (size > (1u << 20)) return 0;
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  const qvis::ReadLimits limits = qvis::fuzz::SmallReadLimits();
  qvis::Layer layer;
  const qvis::ReadResult r = qvis::ReadExcellon(text, &layer, limits);
  qvis::fuzz::CheckInvariant(!r.ok || static_cast<std::int64_t>(layer.objects.size()) <=
                                          limits.max_objects,
                             "excellon_fuzz", "object limit holds");
  qvis::fuzz::CheckReadLayer("excellon_fuzz", r, layer, limits);
  return 0;
}
