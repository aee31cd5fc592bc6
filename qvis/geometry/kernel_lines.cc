// CQVIS_Math: distances, line relations, point and box tests, line-line intersections.
#include <cmath>

#include "qvis/geometry/kernel.h"
#include "qvis/geometry/tolerance.h"

using qvis::tol::kZero;

namespace {

double Min(double a, double b) { return a < b ? a : b; }
double Max(double a, double b) { return a < b ? b : a; }

// InBox tells whether (x, y) lies in the box of the two corners, boundary included.
bool InBox(double x, double y, double x1, double y1, double x2, double y2) {
  return Min(x1, x2) <= x && x <= Max(x1, x2) && Min(y1, y2) <= y && y <= Max(y1, y2);
}

// How two segments meet; the exported functions answer with its value.
enum class SegmentContact { kNone = -1, kTouch = 0, kCross = 1 };

// Classify tells how two segments meet.
SegmentContact Classify(double x1, double y1, double x2, double y2, double x3, double y3,
                        double x4, double y4) {
  if (x1 > x2) {
    CQVIS_Math::Swap(x1, x2);
    CQVIS_Math::Swap(y1, y2);
  }
  if (x3 > x4) {
    CQVIS_Math::Swap(x3, x4);
    CQVIS_Math::Swap(y3, y4);
  }
  const int c1 = CQVIS_Math::IsCCW(x1, y1, x2, y2, x3, y3);
  const int c2 = CQVIS_Math::IsCCW(x1, y1, x2, y2, x4, y4);
  const int c3 = CQVIS_Math::IsCCW(x3, y3, x4, y4, x1, y1);
  const int c4 = CQVIS_Math::IsCCW(x3, y3, x4, y4, x2, y2);
  if (c1 * c2 < 0 && c3 * c4 < 0) return SegmentContact::kCross;
  auto touch_if = [](bool in_range) {
    return in_range ? SegmentContact::kTouch : SegmentContact::kNone;
  };
  if (c1 == 0 && c2 == 0) return x3 > x2 ? SegmentContact::kNone : touch_if(x1 <= x4);
  // Contact of an end point with the other line, judged by x alone (so a vertical segment
  // always passes); kept as the answer hosts get.
  if (c1 == 0) return touch_if(x1 <= x3 && x3 <= x2);
  if (c2 == 0) return touch_if(x1 <= x4 && x4 <= x2);
  if (c3 != 0 && c4 == 0) return touch_if(x3 <= x2 && x2 <= x4);
  if (c3 == 0) return touch_if(x3 <= x1 && x1 <= x4);
  return SegmentContact::kNone;
}

}  // namespace

double CQVIS_Math::Distance(double x1, double y1, double x2, double y2) {
  const double dx = x2 - x1;
  const double dy = y2 - y1;
  if (dx == 0) return std::fabs(dy);
  if (dy == 0) return std::fabs(dx);
  return std::sqrt(dx * dx + dy * dy);
}

bool CQVIS_Math::IsVerticalLine(double x1, double y1, double x2, double y2) {
  return std::fabs(x1 - x2) < qvis::tol::kSame && y1 != y2;
}

bool CQVIS_Math::IsHorizontalLine(double x1, double y1, double x2, double y2) {
  return std::fabs(y1 - y2) < qvis::tol::kSame && x1 != x2;
}

int CQVIS_Math::IsCCW(double x1, double y1, double x2, double y2, double x3, double y3) {
  const double v = (x2 - x1) * (y3 - y1) - (y2 - y1) * (x3 - x1);
  if (v > 0) return 1;
  if (v < 0) return -1;
  return 0;
}

int CQVIS_Math::PerpendicularLine(double x1, double y1, double x2, double y2, double px,
                                  double py, double* foot) {
  if (y1 == y2) {
    if (x1 == x2) {
      foot[0] = x1;
      foot[1] = y1;
    } else {
      foot[0] = px;
      foot[1] = y1;
    }
  } else if (x1 == x2) {
    foot[0] = x1;
    foot[1] = py;
  } else {
    // The foot's distance t from P1 along the line follows from the two distances to P (law of
    // cosines); it is then laid off along the slope.
    const double len = Distance(x1, y1, x2, y2);
    const double d1 = Distance(x1, y1, px, py);
    const double d2 = Distance(x2, y2, px, py);
    const double t = ((d1 * d1 - d2 * d2) / len + len) / 2;
    const double m = (y2 - y1) / (x2 - x1);
    const double u = m * (x2 - x1 < 0 ? -t : t) / std::sqrt(m * m + 1);
    foot[0] = x1 + u / m;
    foot[1] = y1 + u;
  }
  return InBox(foot[0], foot[1], x1, y1, x2, y2) ? 1 : 0;
}

void CQVIS_Math::GetNormalLine(double x1, double y1, double x2, double y2, double len,
                               double* ax, double* ay, double* bx, double* by) {
  const double mx = (x1 + x2) / 2;
  const double my = (y1 + y2) / 2;
  const double a = GetAngle(x1, y1, x2, y2);
  double dx = 0;
  double dy = 0;
  Angle2Point(a + 90, len, &dx, &dy);
  *ax = mx + dx;
  *ay = my - dy;
  Angle2Point(a - 90, len, &dx, &dy);
  *bx = mx + dx;
  *by = my - dy;
}

int CQVIS_Math::IsPointInArea(double x, double y, double* area) {
  return IsPointInArea(x, y, area[0], area[1], area[2], area[3]);
}

int CQVIS_Math::IsPointInArea(double x, double y, double minX, double minY, double maxX,
                              double maxY) {
  return (minX <= x && x <= maxX && minY <= y && y <= maxY) ? 1 : 0;
}

int CQVIS_Math::IsPointInRect(double x, double y, double x1, double y1, double x2, double y2) {
  return InBox(x, y, x1, y1, x2, y2) ? 1 : 0;
}

int CQVIS_Math::IsInBox(double x1, double y1, double x2, double y2, double px, double py) {
  return InBox(px, py, x1, y1, x2, y2) ? 1 : 0;
}

int CQVIS_Math::IsInBox(double x1, double y1, double x2, double y2, double px, double py,
                        double margin) {
  return IsPointInArea(px, py, Min(x1, x2) - margin, Min(y1, y2) - margin, Max(x1, x2) + margin,
                       Max(y1, y2) + margin);
}

int CQVIS_Math::IsOverlap(double x1, double y1, double x2, double y2, double x3, double y3,
                          double x4, double y4) {
  return IsOverlap(x1, y1, x2, y2, x3, y3, x4, y4, 0.0);
}

int CQVIS_Math::IsOverlap(double x1, double y1, double x2, double y2, double x3, double y3,
                          double x4, double y4, double margin) {
  const double a_min_x = Min(x1, x2) - margin;
  const double a_max_x = Max(x1, x2) + margin;
  const double a_min_y = Min(y1, y2) - margin;
  const double a_max_y = Max(y1, y2) + margin;
  // Written as "every edge test passes" so that NaN answers "no overlap".
  const bool overlap = Min(x3, x4) <= a_max_x && Max(x3, x4) >= a_min_x &&
                       Min(y3, y4) <= a_max_y && Max(y3, y4) >= a_min_y;
  return overlap ? 1 : 0;
}

int CQVIS_Math::IsPointOnLine(double px, double py, double x1, double y1, double x2, double y2) {
  if (!InBox(px, py, x1, y1, x2, y2)) return 0;
  if (std::fabs(x2 - x1) < kZero && std::fabs(px - x1) < kZero) return 1;
  // Sign pattern kept exactly as hosts have always been answered (see the header).
  const double v = ((y1 - y2) / (x2 - x1)) * (px - x1) - y1 - py;
  return std::fabs(v) < kZero ? 1 : 0;
}

int CQVIS_Math::IsPointOnCircle(double px, double py, double cx, double cy, double r) {
  const double dx = px - cx;
  const double dy = py - cy;
  return std::fabs(dx * dx + dy * dy - r * r) < kZero ? 1 : 0;
}

int CQVIS_Math::IsPointOnArc(double px, double py, double cx, double cy, double r, double start,
                             double end) {
  if (!IsPointOnCircle(px, py, cx, cy, r)) return 0;
  return IsAngleOnArc(GetAngle(px - cx, py - cy), start, end);
}

int CQVIS_Math::CheckCrossLineLine(double x1, double y1, double x2, double y2, double x3,
                                   double y3, double x4, double y4) {
  return static_cast<int>(Classify(x1, y1, x2, y2, x3, y3, x4, y4));
}

int CQVIS_Math::IsIntersectLineLine(double x1, double y1, double x2, double y2, double x3,
                                    double y3, double x4, double y4) {
  return CheckCrossLineLine(x1, y1, x2, y2, x3, y3, x4, y4);
}

void CQVIS_Math::GetInsideValues(double a1, double a2, double b1, double b2, double* out) {
  // NearerOf(p, q, ref): p only when strictly nearer to ref.
  auto nearer_of = [](double p, double q, double ref) {
    return std::fabs(p - ref) < std::fabs(q - ref) ? p : q;
  };
  if (IsBetween(b1, a1, a2)) {
    out[0] = nearer_of(b1, b2, a1);
    out[1] = nearer_of(b1, b2, a2);
  } else if (!IsBetween(b2, a1, a2)) {
    out[0] = nearer_of(a1, a2, b1);
    out[1] = nearer_of(a1, a2, b2);
  } else {
    out[0] = b2;
    out[1] = IsBetween(a1, b1, b2) ? a1 : a2;
  }
}

int CQVIS_Math::GetIntersectionLineLine(double x1, double y1, double x2, double y2, double x3,
                                        double y3, double x4, double y4, double* out) {
  if (Classify(x1, y1, x2, y2, x3, y3, x4, y4) == SegmentContact::kNone) return 0;
  if (!IsOverlap(x1, y1, x2, y2, x3, y3, x4, y4)) return 0;
  const bool a_vert = std::fabs(x2 - x1) < kZero;
  const bool a_horz = std::fabs(y2 - y1) < kZero;
  const bool b_vert = std::fabs(x4 - x3) < kZero;
  const bool b_horz = std::fabs(y4 - y3) < kZero;
  double v[2];
  if (a_vert && b_vert) {
    if (std::fabs(x1 - x3) >= kZero) return 0;
    GetInsideValues(y1, y2, y3, y4, v);
    out[0] = x1;
    out[1] = v[0];
    out[2] = x2;
    out[3] = v[1];
    return 2;
  }
  if (a_horz && b_horz) {
    if (std::fabs(y1 - y3) >= kZero) return 0;
    GetInsideValues(x1, x2, x3, x4, v);
    out[0] = v[0];
    out[1] = y1;
    out[2] = v[1];
    out[3] = y2;
    return 2;
  }
  double x = 0;
  double y = 0;
  if (a_vert && b_horz) {
    x = x1;
    y = y3;
  } else if (b_vert && a_horz) {
    x = x3;
    y = y1;
  } else if (a_vert) {
    x = x1;
    y = y3 + (x1 - x3) * (y4 - y3) / (x4 - x3);
  } else if (b_vert) {
    x = x3;
    y = y1 + (x3 - x1) * (y2 - y1) / (x2 - x1);
  } else if (a_horz) {
    y = y1;
    x = x3 + (y1 - y3) * (x4 - x3) / (y4 - y3);
  } else if (b_horz) {
    y = y3;
    x = x1 + (y3 - y1) * (x2 - x1) / (y2 - y1);
  } else {
    const double m1 = (y2 - y1) / (x2 - x1);
    const double m2 = (y4 - y3) / (x4 - x3);
    if (std::fabs(m1 - m2) < kZero) {
      // Parallel. The collinearity expression adds y3; hosts get 0 for sloped parallel
      // segments from it, and that answer is kept.
      if (std::fabs(y1 - m1 * x1 + m2 * x3 + y3) >= kZero) return 0;
      double xs[2];
      double ys[2];
      GetInsideValues(x1, x2, x3, x4, xs);
      GetInsideValues(y1, y2, y3, y4, ys);
      out[0] = xs[0];
      out[1] = ys[0];
      out[2] = xs[1];
      out[3] = ys[1];
      return 2;
    }
    x = (m1 * x1 - m2 * x3 - y1 + y3) / (m1 - m2);
    y = m1 * (x - x1) + y1;
  }
  out[0] = x;
  out[1] = y;
  return (InBox(x, y, x1, y1, x2, y2) && InBox(x, y, x3, y3, x4, y4)) ? 1 : 0;
}

int CQVIS_Math::CrossLine(double x1, double y1, double x2, double y2, double x3, double y3,
                          double x4, double y4, double* x, double* y) {
  constexpr double t = qvis::tol::kCrossLine;
  const bool a_vert = std::fabs(x1 - x2) < t;
  const bool a_horz = std::fabs(y1 - y2) < t;
  const bool b_vert = std::fabs(x3 - x4) < t;
  const bool b_horz = std::fabs(y3 - y4) < t;
  if (a_vert && b_horz) {
    *x = x1;
    *y = y3;
    return 1;
  }
  if (a_horz && b_vert) {
    *x = x3;
    *y = y1;
    return 1;
  }
  if (!a_vert && b_vert) {
    *x = x3;
    *y = y1 + (x3 - x1) * (y2 - y1) / (x2 - x1);
    return 1;
  }
  if (a_vert && !b_vert) {
    *x = x1;
    *y = y3 + (x1 - x3) * (y4 - y3) / (x4 - x3);
    return 1;
  }
  if (a_vert && b_vert && std::fabs(x1 - x3) < t) {
    *x = x1;
    *y = y1;
    return 1;
  }
  if (a_horz && b_horz && std::fabs(y1 - y3) < t) {
    *x = x1;
    *y = y1;
    return 1;
  }
  if (x1 != x2 && x3 != x4) {
    const double m1 = (y2 - y1) / (x2 - x1);
    const double m2 = (y4 - y3) / (x4 - x3);
    if (10 * m1 != 10 * m2) {
      *x = (m1 * x1 - m2 * x3 + y3 - y1) / (m1 - m2);
      *y = m1 * (*x - x1) + y1;
      return 1;
    }
  }
  *x = 0;
  *y = 0;
  return 0;
}
