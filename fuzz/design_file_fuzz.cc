// Fuzz target for whole design files. Any input must either load or raise CArchiveException
// (never crash, hang or read out of bounds); whatever loads must write back to bytes that load
// and write back to the very same bytes.
#include <cstdint>
#include <vector>

#include "fuzz/fuzz_util.h"
#include "qvis/compat/archive.h"
#include "qvis/compat/exceptions.h"
#include "qvis/design/design.h"

namespace {

void Check(bool ok, const char* what) {
  qvis::fuzz::CheckInvariant(ok, "design_file_fuzz", what);
}

// One design for the whole run: building the surface and the seventeen objects per input
// would make the fuzzer crawl. Init brings it back to a new design's state between inputs.
CQVIS_Design& Shared() {
  static CQVIS_Design* design = new CQVIS_Design;
  return *design;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size) {
  CQVIS_Design& d = Shared();
  d.Init();
  const std::vector<std::uint8_t> before = qvis::fuzz::StoreBytes(d);
  qvis::MemFile in(data, size);
  try {
    CArchive ar(&in, CArchive::load);
    d.Serialize(ar);
  } catch (const CArchiveException& e) {
    // A load stops at the end of the file or at a field whose value it refuses, and then
    // leaves the design exactly as it was.
    Check(e.m_cause == CArchiveException::endOfFile ||
              e.m_cause == CArchiveException::genericException,
          "a load stops only at the end of the file or at a refused value");
    Check(qvis::fuzz::StoreBytes(d) == before, "a failed load leaves the design as it was");
    return 0;
  }
  const std::vector<std::uint8_t> once = qvis::fuzz::StoreBytes(d);
  Check(once.size() == 242, "a stored design is 242 bytes");
  d.Init();
  qvis::fuzz::LoadBytes(once, d);
  Check(qvis::fuzz::StoreBytes(d) == once, "a stored design reloads to the same bytes");
  return 0;
}
