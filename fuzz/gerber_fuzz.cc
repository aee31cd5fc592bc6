// Fuzz target for the Gerber reader. Any input must either be refused with a located error or
// read into a layer that renders into a small frame and writes back as text that reads again,
// without a crash, a sanitizer report, a hang or unbounded memory. Built as a libFuzzer target
// under clang and as a corpus replay driver otherwise (see README.md).
#include <cstdint>
#include <string_view>

#include "fuzz/artwork_fuzz_util.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size) {
  if (size > (1u << 20)) return 0;
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  const qvis::ReadLimits limits = qvis::fuzz::SmallReadLimits();
  qvis::Layer layer;
  qvis::fuzz::CheckReadLayer("gerber_fuzz", qvis::ReadGerber(text, &layer, limits), layer, limits);
  return 0;
}
