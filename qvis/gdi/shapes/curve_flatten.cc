// Clip-aware arc flattening.
#include "qvis/gdi/shapes/curve_flatten.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace qvis::gdi {
namespace {

// Recursion limit: 2^-40 of a turn is far below a pixel for any 32-bit curve.
constexpr int kMaxDepth = 40;

Point2 At(const EllipseArc& a, double t) {
  return Point2{a.cx + a.rx * std::cos(t), a.cy + a.ry * std::sin(t)};
}

void Split(const EllipseArc& arc, const IRect& clip, double tol, double t0, double t1, Point2 p0,
           Point2 p1, int depth, std::vector<Point2>* out) {
  const double r = std::max(std::fabs(arc.rx), std::fabs(arc.ry));
  const double half = std::fabs(t1 - t0) / 2;
  // The piece lies within its chord's box grown by its sagitta.
  const double sag = half >= std::numbers::pi / 2 ? r : r * (1 - std::cos(half));
  const double margin = sag + 2;
  const bool near =
      std::min(p0.x, p1.x) - margin < clip.right && std::max(p0.x, p1.x) + margin > clip.left &&
      std::min(p0.y, p1.y) - margin < clip.bottom && std::max(p0.y, p1.y) + margin > clip.top;
  if (depth >= kMaxDepth || !near || (sag <= tol && half < std::numbers::pi / 4)) {
    out->push_back(p1);
    return;
  }
  const double tm = (t0 + t1) / 2;
  const Point2 pm = At(arc, tm);
  Split(arc, clip, tol, t0, tm, p0, pm, depth + 1, out);
  Split(arc, clip, tol, tm, t1, pm, p1, depth + 1, out);
}

}  // namespace

void FlattenArc(const EllipseArc& arc, const IRect& clip, double tolerance,
                std::vector<Point2>* out) {
  if (!std::isfinite(arc.cx) || !std::isfinite(arc.cy) || !std::isfinite(arc.rx) ||
      !std::isfinite(arc.ry) || !std::isfinite(arc.t0) || !std::isfinite(arc.t1)) {
    return;
  }
  const double tol = std::max(tolerance, 1e-3);
  const Point2 p0 = At(arc, arc.t0);
  out->push_back(p0);
  Split(arc, clip, tol, arc.t0, arc.t1, p0, At(arc, arc.t1), 0, out);
}

}  // namespace qvis::gdi
