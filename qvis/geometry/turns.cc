// Whole-turn stepping of angles.
//
// The literal "while (a < x) a += 360" loops never end for infinities and spin for ages on
// 1e300, so a distance of more than kTurnLoopLimit is first reduced by fmod (see turns.h).
#include "qvis/geometry/turns.h"

#include <cmath>
#include <cstdint>
#include <limits>

#include "qvis/geometry/tolerance.h"

namespace qvis::geom {

double RaiseByTurns(double a, double limit) {
  const double gap = limit - a;
  if (gap > tol::kTurnLoopLimit) {
    if (!std::isfinite(gap)) return std::numeric_limits<double>::quiet_NaN();
    // a + k*360 with k = ceil(gap/360): take all but the last turn in one exact step.
    a = limit - std::fmod(gap, 360.0);
  }
  while (a < limit) a += 360.0;
  return a;
}

double LowerByTurns(double a, double limit) {
  const double gap = a - limit;
  if (gap > tol::kTurnLoopLimit) {
    if (!std::isfinite(gap)) return std::numeric_limits<double>::quiet_NaN();
    a = limit + std::fmod(gap, 360.0);
  }
  while (a > limit) a -= 360.0;
  return a;
}

double LowerByTurnsBelow(double a, double limit) {
  const double gap = a - limit;
  if (gap > tol::kTurnLoopLimit) {
    if (!std::isfinite(gap)) return std::numeric_limits<double>::quiet_NaN();
    a = limit + std::fmod(gap, 360.0);
  }
  while (a >= limit) a -= 360.0;
  return a;
}

double WrapDegrees(double a) {
  if (!std::isfinite(a)) return std::numeric_limits<double>::quiet_NaN();
  if (std::fabs(a) > tol::kTurnLoopLimit) a = std::fmod(a, 360.0);
  while (a >= 360.0) a -= 360.0;
  while (a < 0.0) a += 360.0;
  return a;
}

int SaturateToInt32(double v) {
  if (std::isnan(v)) return 0;
  if (v >= 2147483647.0) return std::numeric_limits<std::int32_t>::max();
  if (v <= -2147483648.0) return std::numeric_limits<std::int32_t>::min();
  return static_cast<int>(v);
}

}  // namespace qvis::geom
