// CQVIS_Math: intersections of lines, circles and arcs.
#include <cmath>

#include "qvis/geometry/kernel.h"
#include "qvis/geometry/tolerance.h"

using qvis::tol::kZero;

namespace {

// LineCircleCandidates computes the crossings of the infinite line through (x1, y1), (x2, y2)
// with the circle of radius r about the origin (all coordinates relative to the centre) into
// rel[4] and returns their count. Shared by the line and the segment forms.
int LineCircleCandidates(double x1, double y1, double x2, double y2, double r, double* rel) {
  const bool horizontal = std::fabs(y1 - y2) < kZero;
  const bool vertical = std::fabs(x1 - x2) < kZero;
  if (!vertical && !horizontal) {
    const double m = (y2 - y1) / (x2 - x1);
    const double a = 1 + m * m;
    const double b = 2 * m * y1 - 2 * m * m * x1;
    const double c = m * m * x1 * x1 - 2 * m * y1 * x1 + y1 * y1 - r * r;
    const double d = b * b - 4 * a * c;
    if (d < 0) return 0;
    if (d == 0) {
      const double u = CQVIS_Math::Root0(a, b, c);
      rel[0] = u;
      rel[1] = m * (u - x1) + y1;
      return 1;
    }
    const double u1 = CQVIS_Math::Root1(a, b, c);
    const double u2 = CQVIS_Math::Root2(a, b, c);
    rel[0] = u1;
    rel[1] = m * (u1 - x1) + y1;
    rel[2] = u2;
    rel[3] = m * (u2 - x1) + y1;
    return 2;
  }
  if (horizontal && -r <= y1 && y1 <= r) {
    if (y1 == r || y1 == -r) {
      rel[0] = 0;
      rel[1] = y1;
      return 1;
    }
    const double s = std::sqrt(std::fabs(r * r - y1 * y1));
    const double first = x1 < 0 ? -s : s;
    rel[0] = first;
    rel[1] = y1;
    rel[2] = -first;
    rel[3] = y2;
    return 2;
  }
  if (vertical && -r <= x1 && x1 <= r) {
    if (x1 == r || x1 == -r) {
      rel[0] = x1;
      rel[1] = 0;
      return 1;
    }
    const double s = std::sqrt(std::fabs(r * r - x1 * x1));
    const double first = y1 < 0 ? -s : s;
    rel[0] = x1;
    rel[1] = first;
    rel[2] = x2;
    rel[3] = -first;
    return 2;
  }
  return 0;
}

// KeepOnArcs packs to the front of pts the first n points whose angle about each given arc's
// centre lies on that arc, and returns how many were kept. An arc with a null centre is skipped.
int KeepOnArcs(double* pts, int n, const double* arc1, const double* arc2) {
  int kept = 0;
  for (int i = 0; i < n; ++i) {
    const double x = pts[2 * i];
    const double y = pts[2 * i + 1];
    bool ok = true;
    for (const double* arc : {arc1, arc2}) {
      if (arc == nullptr) continue;
      // arc = (cx, cy, start, end)
      const double a = CQVIS_Math::GetAngle(x - arc[0], y - arc[1]);
      if (!CQVIS_Math::IsAngleOnArc(a, arc[2], arc[3])) ok = false;
    }
    if (ok) {
      pts[2 * kept] = x;
      pts[2 * kept + 1] = y;
      ++kept;
    }
  }
  return kept;
}

}  // namespace

int CQVIS_Math::GetCrossPointLC(double x1, double y1, double x2, double y2, double cx, double cy,
                                double r, double* out) {
  double rel[4];
  const int n = LineCircleCandidates(x1 - cx, y1 - cy, x2 - cx, y2 - cy, r, rel);
  for (int i = 0; i < n; ++i) {
    out[2 * i] = rel[2 * i] + cx;
    out[2 * i + 1] = rel[2 * i + 1] + cy;
  }
  return n;
}

int CQVIS_Math::GetIntersectionLineCircle(double x1, double y1, double x2, double y2, double cx,
                                          double cy, double r, double* out) {
  if (r < kZero) {
    out[0] = cx;
    out[1] = cy;
    return IsPointInRect(cx, cy, x1, y1, x2, y2);
  }
  const double rx1 = x1 - cx;
  const double ry1 = y1 - cy;
  const double rx2 = x2 - cx;
  const double ry2 = y2 - cy;
  double rel[4];
  const int n = LineCircleCandidates(rx1, ry1, rx2, ry2, r, rel);
  int kept = 0;
  for (int i = 0; i < n; ++i) {
    if (!IsPointInRect(rel[2 * i], rel[2 * i + 1], rx1, ry1, rx2, ry2)) continue;
    out[2 * kept] = rel[2 * i] + cx;
    out[2 * kept + 1] = rel[2 * i + 1] + cy;
    ++kept;
  }
  return kept;
}

int CQVIS_Math::GetIntersectionLineArc(double x1, double y1, double x2, double y2, double cx,
                                       double cy, double r, double start, double end,
                                       double* out) {
  const int n = GetIntersectionLineCircle(x1, y1, x2, y2, cx, cy, r, out);
  const double arc[4] = {cx, cy, start, end};
  return KeepOnArcs(out, n, arc, nullptr);
}

int CQVIS_Math::GetIntersectionCircleCircle(double cx1, double cy1, double r1, double cx2,
                                            double cy2, double r2, double* out) {
  if (cx2 - r2 > cx1 + r1 || cx1 - r1 > cx2 + r2 || cy2 - r2 > cy1 + r1 ||
      cy1 - r1 > cy2 + r2) {
    return 0;
  }
  if (std::fabs(cx1 - cx2) < kZero && std::fabs(cy1 - cy2) < kZero &&
      std::fabs(r1 - r2) < kZero) {
    out[0] = cx1;
    out[1] = cy1;
    return 1;
  }
  const double d = Distance(cx1, cy1, cx2, cy2);
  if (d > r1 + r2) return 0;
  if (d < kZero) return GetIntersectionLineCircle(cx1, cy1, cx2, cy2, cx1, cy1, r1, out);

  const double dx = cx2 - cx1;
  const double dy = cy2 - cy1;
  const double k = dx * dx + dy * dy + r1 * r1 - r2 * r2;
  double a = 0;
  double b = 0;
  double c = 0;
  // solve_for_y: u is the relative y and the companion the relative x; else the reverse.
  bool solve_for_y = false;
  if (std::fabs(dy) < kZero) {
    if (std::fabs(dx) < kZero && std::fabs(r1 - r2) < kZero) {
      out[0] = cx1 + r1;
      out[1] = cy1;
      out[2] = cx1 - r1;
      out[3] = cy1;
      return 3;
    }
    solve_for_y = true;
    a = dy * dy / (dx * dx) + 1;
    b = -k * dy / (dx * dx);
    c = k * k / (4 * dx * dx) - r1 * r1;
  } else {
    a = dx * dx / (dy * dy) + 1;
    b = -k * dx / (dy * dy);
    c = k * k / (4 * dy * dy) - r1 * r1;
  }
  const double disc = b * b - 4 * a * c;
  if (!(disc >= 0)) return 0;
  double us[2];
  int n = 0;
  if (disc == 0) {
    us[n++] = -b / (2 * a);
  } else {
    us[n++] = Root1(a, b, c);
    us[n++] = Root2(a, b, c);
  }
  for (int i = 0; i < n; ++i) {
    const double u = us[i];
    const double w = std::sqrt(std::fabs(r1 * r1 - u * u));
    // The companion coordinate takes the sign that puts the point on the second circle.
    double x = solve_for_y ? cx1 + w : cx1 + u;
    double y = solve_for_y ? cy1 + u : cy1 + w;
    if (!IsPointOnCircle(x, y, cx2, cy2, r2)) {
      if (solve_for_y) {
        x = cx1 - w;
      } else {
        y = cy1 - w;
      }
    }
    out[2 * i] = x;
    out[2 * i + 1] = y;
  }
  return n;
}

int CQVIS_Math::GetIntersectionCircleArc(double cx1, double cy1, double r1, double cx2,
                                         double cy2, double r2, double start, double end,
                                         double* out) {
  int n = GetIntersectionCircleCircle(cx1, cy1, r1, cx2, cy2, r2, out);
  if (n == 3) n = 2;  // coincident circles: the two written points are filtered like others
  const double arc[4] = {cx2, cy2, start, end};
  return KeepOnArcs(out, n, arc, nullptr);
}

int CQVIS_Math::GetIntersectionArcArc(double cx1, double cy1, double r1, double start1,
                                      double end1, double cx2, double cy2, double r2,
                                      double start2, double end2, double* out) {
  int n = GetIntersectionCircleCircle(cx1, cy1, r1, cx2, cy2, r2, out);
  if (n == 3) n = 2;
  const double arc1[4] = {cx1, cy1, start1, end1};
  const double arc2[4] = {cx2, cy2, start2, end2};
  return KeepOnArcs(out, n, arc1, arc2);
}
