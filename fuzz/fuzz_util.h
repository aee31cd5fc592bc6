// Helpers the fuzz targets share: stopping a run on a broken invariant and the store/reload
// round trip through an in-memory archive. Header-only; used by the targets in fuzz/.
#ifndef FUZZ_FUZZ_UTIL_H_
#define FUZZ_FUZZ_UTIL_H_

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "qvis/compat/archive.h"

namespace qvis::fuzz {

// CheckInvariant stops the run with a message naming the target; libFuzzer and the replay
// driver both report an abort as a failure with the input that caused it.
inline void CheckInvariant(bool ok, const char* target, const char* what) {
  if (!ok) {
    std::fprintf(stderr, "%s: invariant failed: %s\n", target, what);
    std::abort();
  }
}

// StoreBytes writes `object` through its Serialize into memory and returns the bytes.
template <class T>
std::vector<std::uint8_t> StoreBytes(T& object) {
  MemFile f;
  CArchive ar(&f, CArchive::store);
  object.Serialize(ar);
  ar.Close();
  return f.bytes();
}

// LoadBytes reads `object` back from bytes StoreBytes made (throws as Serialize does).
template <class T>
void LoadBytes(const std::vector<std::uint8_t>& bytes, T& object) {
  MemFile f(bytes);
  CArchive ar(&f, CArchive::load);
  object.Serialize(ar);
}

}  // namespace qvis::fuzz

#endif  // FUZZ_FUZZ_UTIL_H_
