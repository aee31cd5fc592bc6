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
  qvis::MemFile in(data, size);
  try {
    CArchive ar(&in, CArchive::load);
    d.Serialize(ar);
  } catch (const CArchiveException& e) {
    Check(e.m_cause == CArchiveException::endOfFile, "only end-of-file may stop a load");
    return 0;
  }
  const std::vector<std::uint8_t> once = qvis::fuzz::StoreBytes(d);
  Check(once.size() == 242, "a stored design is 242 bytes");
  d.Init();
  qvis::fuzz::LoadBytes(once, d);
  Check(qvis::fuzz::StoreBytes(d) == once, "a stored design reloads to the same bytes");
  return 0;
}
