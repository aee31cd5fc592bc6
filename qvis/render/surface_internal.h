// Small helpers shared by the surface's .cc files: saturating device arithmetic, so that
// coordinates that already saturated at the 32-bit range never overflow when offset.
// Owner: render. Not part of the public API.
#ifndef QVIS_RENDER_SURFACE_INTERNAL_H_
#define QVIS_RENDER_SURFACE_INTERNAL_H_

#include <cstdint>

namespace qvis::render {

constexpr int Sat(std::int64_t v) {
  if (v > INT32_MAX) return INT32_MAX;
  if (v < INT32_MIN) return INT32_MIN;
  return static_cast<int>(v);
}
constexpr int SatAdd(int a, int b) { return Sat(std::int64_t{a} + b); }
constexpr int SatSub(int a, int b) { return Sat(std::int64_t{a} - b); }
constexpr int SatMul(int a, int b) { return Sat(std::int64_t{a} * b); }

}  // namespace qvis::render

#endif  // QVIS_RENDER_SURFACE_INTERNAL_H_
