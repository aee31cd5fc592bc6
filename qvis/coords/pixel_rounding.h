// Pixel rounding and snapping: the one rounding rule used wherever a world
// value becomes a pixel, and the snap rule used by every snap. Stateless
// functions of the coordinates layer, for anything that must round the same
// way as CQVIS_Coords.
#ifndef QVIS_COORDS_PIXEL_ROUNDING_H_
#define QVIS_COORDS_PIXEL_ROUNDING_H_

#include <cstdint>

namespace qvis {

// TruncToInt32 truncates toward zero into the 32-bit range. Values beyond
// it saturate to INT32_MIN / INT32_MAX (infinities too); NaN gives 0.
constexpr std::int32_t TruncToInt32(double v) {
  if (!(v == v)) return 0;  // NaN
  if (v >= 2147483647.0) return INT32_MAX;
  if (v <= -2147483648.0) return INT32_MIN;
  return static_cast<std::int32_t>(v);
}

// RoundToPixel: v > 0 gives trunc(v + 0.5), v < 0 gives trunc(v - 0.4), 0
// gives 0. The asymmetric 0.4 is deliberate (-2.55 -> -2, -2.65 -> -3).
// Beyond the 32-bit range the result saturates; NaN gives 0.
constexpr std::int32_t RoundToPixel(double v) {
  if (v > 0) return TruncToInt32(v + 0.5);
  if (v < 0) return TruncToInt32(v - 0.4);
  return 0;
}

// SnapToSpacing returns v snapped to a whole multiple of `spacing` (origin
// 0): q = v / spacing, n = trunc(q + 0.5) for v >= 0 (sign of v, not of q)
// and trunc(q - 0.4) otherwise; the result is n * spacing. The multiple
// saturates at the 32-bit range; NaN v gives 0; a zero spacing gives 0.
constexpr double SnapToSpacing(double v, double spacing) {
  const double q = v / spacing;
  const std::int32_t n = v >= 0 ? TruncToInt32(q + 0.5) : TruncToInt32(q - 0.4);
  return n * spacing;
}

}  // namespace qvis

#endif  // QVIS_COORDS_PIXEL_ROUNDING_H_
