// CQVIS_Math: arc length, arc bounding box and arc flattening.
#include <cmath>
#include <memory>

#include "qvis/geometry/kernel.h"
#include "qvis/geometry/tolerance.h"
#include "qvis/geometry/turns.h"

namespace {

constexpr double kPi = qvis::tol::kPi;

// AddPoint appends a new point the list owns; a failed Add frees the point and rethrows.
void AddPoint(CExPtrArray<DPoint*, DPoint*>* pts, double x, double y) {
  auto point = std::make_unique<DPoint>(x, y);
  pts->Add(point.get());
  point.release();
}

// RegionAngle returns the y-up angle in radians of (x, y) about (cx, cy) as the arc box uses it:
// atan of the slope, plus pi on the left half, and a fixed quarter turn straight above or below.
double RegionAngle(double cx, double cy, double x, double y) {
  if (x == cx) return cy > y ? 3 * kPi / 2 : kPi / 2;
  double t = std::atan((y - cy) / (x - cx));
  if (x - cx < 0) t += kPi;
  return t;
}

// Within tells whether v lies between a and b, inclusive, in either order.
bool Within(double v, double a, double b) {
  return (a < b ? a : b) <= v && v <= (a < b ? b : a);
}

// AppendArcPoint appends the point at angle a (degrees) of the circle, exact at the four
// quarter angles.
void AppendArcPoint(double cx, double cy, double r, double a, CExPtrArray<DPoint*, DPoint*>* pts) {
  double c = 0;
  double s = 0;
  if (a == 0) {
    c = 1;
  } else if (a == 90) {
    s = 1;
  } else if (a == 180) {
    c = -1;
  } else if (a == 270) {
    s = -1;
  } else {
    c = std::cos(a * qvis::tol::kDegToRad);
    s = std::sin(a * qvis::tol::kDegToRad);
  }
  AddPoint(pts, cx + r * c, cy - r * s);
}

}  // namespace

double CQVIS_Math::GetLengthArc(double cx, double cy, double r, double xs, double ys, double xe,
                                double ye) {
  const double as = GetAngle(cx, cy, xs, ys);
  double ae = GetAngle(cx, cy, xe, ye);
  ae = qvis::geom::RaiseByTurns(ae, as);  // "while as > ae add 360": at most one turn here
  const double sweep = AdjustAngle(ae - as);
  return sweep / 360.0 * qvis::tol::kTwoPi * r;
}

void CQVIS_Math::GetRegionArc(double cx, double cy, double r, double xs, double ys, double xe,
                              double ye, double* minX, double* minY, double* maxX,
                              double* maxY) {
  const double te = RegionAngle(cx, cy, xe, ye);
  const double ts = RegionAngle(cx, cy, xs, ys);
  const double ex = cx + r * std::cos(te);
  const double ey = cy + r * std::sin(te);
  const double sx = cx + r * std::cos(ts);
  const double sy = cy + r * std::sin(ts);
  // Each extreme is taken when the end angle lies between the start angle and that axis angle,
  // with the truncated quarter-turn constants; stored extents were built this way.
  *maxY = Within(te, ts, qvis::tol::kQuarterTurnTrunc) ? cy + r : (ey > sy ? ey : sy);
  *minY = Within(te, ts, qvis::tol::kThreeQuarterTurnTrunc) ? cy - r : (ey < sy ? ey : sy);
  *maxX = Within(te, ts, 0.0) ? cx + r : (ex > sx ? ex : sx);
  *minX = Within(te, ts, kPi) ? cx - r : (ex < sx ? ex : sx);
}

void CQVIS_Math::MakeArcToLine(double cx, double cy, double r, double start, double end,
                               double step, CExPtrArray<DPoint*, DPoint*>* pts) {
  // "while start > end add 360 to end", through the terminating form.
  if (start > end) end = qvis::geom::RaiseByTurns(end, start);  // "add 360 while start > end"
  const double sweep = end - start;
  if (!std::isfinite(start) || !std::isfinite(sweep)) {
    // No angle can be stepped through; keep the promise to start and end on the given angles.
    AppendArcPoint(cx, cy, r, start, pts);
    AppendArcPoint(cx, cy, r, end, pts);
    return;
  }
  // Unusable or runaway steps (see turns.h): a step that is not positive covers the sweep in
  // one go, a step finer than kMaxArcPoints allows is widened, and the loop never runs more
  // often than the sweep holds steps, even where a += step no longer changes a.
  if (!(step > 0)) step = sweep > 0 ? sweep : 1.0;
  if (sweep / step > static_cast<double>(qvis::tol::kMaxArcPoints)) {
    step = sweep / static_cast<double>(qvis::tol::kMaxArcPoints);
  }
  const double max_steps = std::floor(sweep / step) + 1;
  bool ended_on_end = false;
  double count = 0;
  for (double a = start; a <= end && count <= max_steps; a += step, count += 1) {
    AppendArcPoint(cx, cy, r, a, pts);
    if (a == end) ended_on_end = true;
  }
  if (!ended_on_end) AppendArcPoint(cx, cy, r, end, pts);
}

void CQVIS_Math::MakeArcToLineC(double cx, double cy, double r, double xs, double ys, double xe,
                                double ye, double n, CExPtrArray<DPoint*, DPoint*>* pts) {
  if (std::fabs(xs - xe) < qvis::tol::kSame && std::fabs(ys - ye) < qvis::tol::kSame) {
    AddPoint(pts, xs, ys);
    return;
  }
  if (r <= 0) return;
  const double as = GetAngle(cx, cy, xs, ys);
  double ae = GetAngle(cx, cy, xe, ye);
  ae = qvis::geom::RaiseByTurns(ae, as);
  double step = std::fabs((ae - as) / std::fabs(n));
  const double cap = n < 0 ? qvis::tol::kCoarseArcStep : qvis::tol::kFineArcStep;
  if (step > cap || std::isnan(step)) step = cap;  // n = 0 divides to infinity: the cap
  if (step == 0) step = qvis::tol::kEmptyArcStep;
  MakeArcToLine(cx, cy, r, as, ae, step, pts);
}
