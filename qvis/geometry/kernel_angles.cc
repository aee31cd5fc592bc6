// CQVIS_Math: comparisons, snapping, roots, angles and rotations.
#include <cmath>

#include "qvis/geometry/kernel.h"
#include "qvis/geometry/tolerance.h"
#include "qvis/geometry/turns.h"

using qvis::tol::kDegToRad;
using qvis::tol::kZero;

double CQVIS_Math::Absolute(double v) { return v >= 0 ? v : -v; }

bool CQVIS_Math::IsSameValue(double a, double b) {
  return std::fabs(a - b) < qvis::tol::kSame;
}

bool CQVIS_Math::IsSameValue(double a, double b, double tol) {
  if (tol == 0) tol = qvis::tol::kSame;
  return std::fabs(a - b) < tol;
}

bool CQVIS_Math::IsSamePoint(double x1, double y1, double x2, double y2, double tol) {
  if (tol == 0) tol = qvis::tol::kSame;
  return std::fabs(x1 - x2) < tol && std::fabs(y1 - y2) < tol;
}

int CQVIS_Math::IsBetween(double v, double a, double b) {
  const double lo = a < b ? a : b;
  const double hi = a < b ? b : a;
  return (lo <= v && v <= hi) ? 1 : 0;
}

double CQVIS_Math::Near(double a, double b, double ref) {
  return std::fabs(b - ref) > std::fabs(a - ref) ? a : b;
}

void CQVIS_Math::Swap(double& a, double& b) {
  const double t = a;
  a = b;
  b = t;
}

void CQVIS_Math::MakeSnap(double& v, double step) {
  double q = v / step;
  if (v >= 0) {
    q += 0.5;
  } else {
    q -= 0.4;
  }
  v = qvis::geom::SaturateToInt32(q) * step;
}

void CQVIS_Math::RectToArea(double x1, double y1, double x2, double y2, double* area) {
  area[0] = x1 < x2 ? x1 : x2;
  area[1] = y1 < y2 ? y1 : y2;
  area[2] = x1 < x2 ? x2 : x1;
  area[3] = y1 < y2 ? y2 : y1;
}

double CQVIS_Math::Root0(double a, double b, double /*c*/) { return -b / (2 * a); }

double CQVIS_Math::Root1(double a, double b, double c) {
  const double d = std::fabs(b * b - 4 * a * c);
  if (d == 0) return -b / (2 * a);
  return (std::sqrt(d) - b) / (2 * a);
}

double CQVIS_Math::Root2(double a, double b, double c) {
  const double d = std::fabs(b * b - 4 * a * c);
  return (-b - std::sqrt(d)) / (2 * a);
}

double CQVIS_Math::AdjustAngle(double a) {
  if (a == 0) return 0;
  a = qvis::geom::WrapDegrees(a);
  return a == 360.0 ? 0.0 : a;
}

double CQVIS_Math::GetAngle(double dx, double dy) {
  constexpr double k = qvis::tol::kRadToDeg;
  if (std::fabs(dy) < kZero) return dx > 0 ? 0.0 : 180.0;
  if (std::fabs(dx) < kZero) return dy < 0 ? 90.0 : 270.0;
  if (dx > 0 && dy > 0) return 360.0 - std::atan(dy / dx) * k;
  if (dx < 0 && dy < 0) return 180.0 - std::atan(dy / dx) * k;
  if (dx < 0 && dy > 0) return 180.0 + std::atan(dy / -dx) * k;
  return std::atan(-dy / dx) * k;
}

double CQVIS_Math::GetAngle(double x1, double y1, double x2, double y2) {
  double a = GetAngle(x2 - x1, y2 - y1);
  if (a < 0) a += 360.0;
  if (a >= 360.0) a -= 360.0;
  return a;
}

void CQVIS_Math::Angle2Point(double a, double r, double* dx, double* dy) {
  if (a == 0) {
    *dx = r;
    *dy = 0;
  } else if (a == 90) {
    *dx = 0;
    *dy = r;
  } else if (a == 180) {
    *dx = -r;
    *dy = 0;
  } else if (a == 270) {
    *dx = 0;
    *dy = -r;
  } else {
    *dx = r * std::cos(a * kDegToRad);
    *dy = r * std::sin(a * kDegToRad);
  }
}

int CQVIS_Math::IsAngleOnArc(double a, double start, double end) {
  if (start > end && a < end) a += 360.0;
  a = qvis::geom::RaiseByTurns(a, start);
  const double e = start > end ? end + 360.0 : end;
  a = qvis::geom::LowerByTurns(a, e);
  return (start <= a && a <= e) ? 1 : 0;
}

void CQVIS_Math::Rotate(double x, double y, double a, double* out) {
  if (std::fabs(a) < kZero) {
    out[0] = x;
    out[1] = y;
  } else if (std::fabs(a - 90) < kZero) {
    out[0] = y;
    out[1] = -x;
  } else if (std::fabs(a - 180) < kZero) {
    out[0] = -x;
    out[1] = -y;
  } else if (std::fabs(a - 270) < kZero) {
    out[0] = -y;
    out[1] = x;
  } else {
    const double c = std::cos(a * kDegToRad);
    const double s = std::sin(a * kDegToRad);
    out[0] = x * c + y * s;
    out[1] = -x * s + y * c;
  }
}

void CQVIS_Math::Rotate(double x, double y, double* ox, double* oy, double a) {
  if (a == 0) {
    *ox = x;
    *oy = y;
  } else if (a == 90) {
    *ox = -y;
    *oy = x;
  } else if (a == 180) {
    *ox = -x;
    *oy = -y;
  } else if (a == 270) {
    *ox = y;
    *oy = -x;
  } else {
    const double c = std::cos(a * kDegToRad);
    const double s = std::sin(a * kDegToRad);
    *ox = std::round(x * c - y * s);
    *oy = std::round(x * s + y * c);
  }
}

void CQVIS_Math::Rotate(double cx, double cy, double x, double y, double* ox, double* oy,
                        double a) {
  a = qvis::geom::WrapDegrees(a);
  const double dx = x - cx;
  const double dy = y - cy;
  if (a == 0) {
    *ox = x;
    *oy = y;
  } else if (a == 90) {
    *ox = cx - dy;
    *oy = cy + dx;
  } else if (a == 180) {
    *ox = cx - dx;
    *oy = cy - dy;
  } else if (a == 270) {
    *ox = cx + dy;
    *oy = cy - dx;
  } else {
    const double c = std::cos(a * kDegToRad);
    const double s = std::sin(a * kDegToRad);
    *ox = cx + c * dx - s * dy;
    *oy = cy + s * dx + c * dy;
  }
}

void CQVIS_Math::Rotate(double cx, double cy, double& x, double& y, double a, int mirror) {
  double ox = 0;
  double oy = 0;
  Rotate(cx, cy, x, y, &ox, &oy, a);
  x = ox;
  y = oy;
  if (mirror == 1 || mirror == 3) x = cx - (x - cx);
  if (mirror == 2 || mirror == 3) y = cy - (y - cy);
}

void CQVIS_Math::MirrorX(double cx, double cy, double& x, double& y) {
  (void)cx;
  (void)x;
  y = cy - (y - cy);
}

void CQVIS_Math::MirrorY(double cx, double cy, double& x, double& y) {
  (void)cy;
  (void)y;
  x = cx - (x - cx);
}
