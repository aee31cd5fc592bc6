// Small helpers shared by the surface's .cc files: saturating device arithmetic, so that
// coordinates that already saturated at the 32-bit range never overflow when offset.
// Not part of the public API.
#ifndef QVIS_RENDER_SURFACE_INTERNAL_H_
#define QVIS_RENDER_SURFACE_INTERNAL_H_

#include <cstdint>

#include "qvis/compat/int_math.h"

namespace qvis::render {

// Round shapes built point by point (elliptic regions, translucent arcs and circles) are not
// built beyond this device radius: a million-pixel circle already reaches past any screen, and
// larger ones only cost time. The plain device calls (Ellipse, Arc) have no such limit.
constexpr int kMaxBuiltRadius = 1 << 20;

// Saturating device arithmetic comes from the one integer-helper header.
constexpr int Sat(std::int64_t v) { return qvis::SaturateToInt(v); }
using qvis::SatAdd;
using qvis::SatMul;
using qvis::SatSub;

// Mul64 multiplies two unsigned 64-bit values into a 128-bit (hi, lo) pair.
constexpr void Mul64(std::uint64_t a, std::uint64_t b, std::uint64_t* hi, std::uint64_t* lo) {
  const std::uint64_t a0 = a & 0xFFFFFFFFu, a1 = a >> 32, b0 = b & 0xFFFFFFFFu, b1 = b >> 32;
  const std::uint64_t p00 = a0 * b0, p01 = a0 * b1, p10 = a1 * b0, p11 = a1 * b1;
  const std::uint64_t mid = (p00 >> 32) + (p01 & 0xFFFFFFFFu) + (p10 & 0xFFFFFFFFu);
  *lo = (mid << 32) | (p00 & 0xFFFFFFFFu);
  *hi = p11 + (p01 >> 32) + (p10 >> 32) + (mid >> 32);
}

// SameRay tells whether the device points s and e lie on one ray from c (the same pixel
// included). An arc between them would be the full circle; the surface draws none instead.
// Exact for every 32-bit input.
constexpr bool SameRay(int cx, int cy, int sx, int sy, int ex, int ey) {
  const std::int64_t ax = std::int64_t{sx} - cx, ay = std::int64_t{sy} - cy;
  const std::int64_t bx = std::int64_t{ex} - cx, by = std::int64_t{ey} - cy;
  if (ax == bx && ay == by) return true;
  // Same direction: the dot product is positive and the cross product ax*by - ay*bx is 0.
  if ((ax == 0) != (bx == 0) || (ay == 0) != (by == 0)) return false;
  if ((ax < 0) != (bx < 0) || (ay < 0) != (by < 0)) return false;
  if (ax == 0 && ay == 0) return false;
  const auto mag = [](std::int64_t v) { return static_cast<std::uint64_t>(v < 0 ? -v : v); };
  std::uint64_t h1 = 0, l1 = 0, h2 = 0, l2 = 0;
  Mul64(mag(ax), mag(by), &h1, &l1);
  Mul64(mag(ay), mag(bx), &h2, &l2);
  return h1 == h2 && l1 == l2;
}

}  // namespace qvis::render

#endif  // QVIS_RENDER_SURFACE_INTERNAL_H_
