// CQVIS_Math: the stateless geometry kernel (comparisons, angles, rotations, line, box and
// point-on-shape tests, intersections, arc flattening, snapping) that the drawing surface, the
// commands, the extent regions, the clearance calculator and hosts call.
//
// Conventions of every function below:
//  - Angles are degrees in [0, 360). GetAngle measures counter-clockwise from +x on a plane
//    whose y axis points down: a point above the centre (smaller y) is at 90. The point at angle
//    a and radius r about (cx, cy) is (cx + r*cos a, cy - r*sin a).
//  - An arc runs counter-clockwise (GetAngle sense) from its start to its end angle and wraps
//    through 0 when start > end.
//  - Intersection outputs are arrays of four doubles (two x, y pairs); the return value says how
//    many points are meaningful. A candidate may be written even when 0 is returned.
//  - Nothing reports an error. Outside the stated preconditions (a zero divisor, NaN) results are
//    IEEE infinities or NaN; no function loops, crashes or reads out of bounds on any input.
#ifndef QVIS_GEOMETRY_KERNEL_H_
#define QVIS_GEOMETRY_KERNEL_H_

#include "qvis/compat/export.h"
#include "qvis/geometry/value_types.h"
#include "qvis/util/ex_ptr_array.h"

class QVIS_API CQVIS_Math {
 public:
  CQVIS_Math() = delete;

  // ---- Comparisons and small utilities ----

  // Absolute returns v when v >= 0, else -v (NaN stays NaN).
  static double Absolute(double v);
  // IsSameValue tells whether |a - b| < 0.001; NaN gives false.
  static bool IsSameValue(double a, double b);
  // IsSameValue tells whether |a - b| < tol; tol 0 means 0.001; a negative tol gives false.
  static bool IsSameValue(double a, double b, double tol);
  // IsSamePoint tells whether both axes differ by less than tol (strict, per axis); tol 0 means
  // 0.001.
  static bool IsSamePoint(double x1, double y1, double x2, double y2, double tol);
  // IsBetween returns 1 when min(a, b) <= v <= max(a, b), else 0 (NaN gives 0).
  static int IsBetween(double v, double a, double b);
  // Near returns a when |b - ref| > |a - ref|, else b (a tie, and NaN, return b).
  static double Near(double a, double b, double ref);
  // Swap exchanges a and b (any values, NaN included).
  static void Swap(double& a, double& b);
  // MakeSnap rounds v to a multiple of step: q = v/step, +0.5 for v >= 0, -0.4 for v < 0
  // (deliberately asymmetric), truncated toward zero. Quotients beyond the 32-bit range
  // saturate there; NaN (also step 0 with v 0) gives 0.
  static void MakeSnap(double& v, double step);
  // RectToArea writes (min x, min y, max x, max y) of the two corners into area[4]; with a NaN
  // corner the order of that axis is unspecified.
  static void RectToArea(double x1, double y1, double x2, double y2, double* area);
  // Root0 returns -b / (2a); c is unused; a = 0 gives an infinity or NaN.
  static double Root0(double a, double b, double c);
  // Root1 returns (sqrt(D) - b) / (2a) with D = |b^2 - 4ac| (absolute on purpose: callers test
  // the sign first); D = 0 gives -b / (2a).
  static double Root1(double a, double b, double c);
  // Root2 returns (-b - sqrt(D)) / (2a) with the same D; a = 0 gives an infinity or NaN.
  static double Root2(double a, double b, double c);

  // ---- Angles ----

  // AdjustAngle brings a into [0, 360); a result of exactly 360 becomes 0. NaN and infinities
  // give NaN.
  static double AdjustAngle(double a);
  // GetAngle returns the direction of the vector (dx, dy) (y down, counter-clockwise, degrees
  // via 57.2957914). |dy| < 1e-5 gives 0 when dx > 0, else 180 (the zero vector gives 180);
  // |dx| < 1e-5 gives 90 when dy < 0, else 270.
  static double GetAngle(double dx, double dy);
  // GetAngle returns the direction from point 1 to point 2 by the rules above, in [0, 360);
  // equal points give 180, NaN gives NaN.
  static double GetAngle(double x1, double y1, double x2, double y2);
  // Angle2Point writes the plain offsets (r*cos a, r*sin a); a exactly 0, 90, 180 or 270 gives
  // exact values. Callers subtract dy from y. Infinite or NaN a gives NaN offsets.
  static void Angle2Point(double a, double r, double* dx, double* dy);
  // IsAngleOnArc returns 1 when angle a lies on the arc from start to end (inclusive,
  // counter-clockwise, wrapping through 0 when start > end), else 0. NaN gives 0.
  static int IsAngleOnArc(double a, double start, double end);
  // GetLengthArc returns the length of the arc about (cx, cy) of radius r from the start point
  // to the end point, counter-clockwise; identical start and end points give 0, not a full
  // circle; a negative r gives a negative length.
  static double GetLengthArc(double cx, double cy, double r, double xs, double ys, double xe,
                             double ye);
  // GetRegionArc writes the bounding box of the arc from the start to the end point. It works in
  // radians, y up, and tests whether the end angle lies between the start angle and each axis
  // angle (truncated quarter-turn constants) rather than whether the arc passes the axis; this
  // is the box stored extents were built with. An end point at the centre is taken as straight
  // above or below it.
  static void GetRegionArc(double cx, double cy, double r, double xs, double ys, double xe,
                           double ye, double* minX, double* minY, double* maxX, double* maxY);

  // ---- Transformations ----

  // Rotate turns the vector (x, y) by a degrees counter-clockwise on the y-down plane into
  // out[2]; a within 1e-5 of 0, 90, 180 or 270 gives exact results (other multiples of 360
  // are not snapped); infinite or NaN a gives NaN.
  static void Rotate(double x, double y, double a, double* out);
  // Rotate turns (x, y) counter-clockwise on the y-up plane and rounds to whole numbers (halves
  // away from zero); a exactly 0, 90, 180 or 270 gives exact, unrounded results; infinite or
  // NaN a gives NaN.
  static void Rotate(double x, double y, double* ox, double* oy, double a);
  // Rotate turns (x, y) about (cx, cy) counter-clockwise on the y-up plane, unrounded; a is
  // first brought into [0, 360) and 0, 90, 180, 270 are exact; infinite or NaN a gives NaN.
  static void Rotate(double cx, double cy, double x, double y, double* ox, double* oy, double a);
  // Rotate turns (x, y) in place as above, then mirrors about the centre: mirror 1 reflects x,
  // 2 reflects y, 3 both, any other value none.
  static void Rotate(double cx, double cy, double& x, double& y, double a, int mirror);
  // MirrorX reflects y in the horizontal line through (cx, cy); x is untouched.
  static void MirrorX(double cx, double cy, double& x, double& y);
  // MirrorY reflects x in the vertical line through (cx, cy); y is untouched.
  static void MirrorY(double cx, double cy, double& x, double& y);

  // ---- Lines ----

  // Distance returns |dy| when dx = 0, |dx| when dy = 0, else sqrt(dx^2 + dy^2) (which
  // overflows to infinity beyond about 1e154).
  static double Distance(double x1, double y1, double x2, double y2);
  // IsVerticalLine tells whether |x1 - x2| < 0.001 and y1 != y2.
  static bool IsVerticalLine(double x1, double y1, double x2, double y2);
  // IsHorizontalLine tells whether |y1 - y2| < 0.001 and x1 != x2.
  static bool IsHorizontalLine(double x1, double y1, double x2, double y2);
  // IsCCW returns the exact sign (1, -1, 0) of (x2 - x1)(y3 - y1) - (y2 - y1)(x3 - x1); NaN
  // gives 0.
  static int IsCCW(double x1, double y1, double x2, double y2, double x3, double y3);
  // PerpendicularLine writes into foot[2] the foot of the perpendicular from (px, py) to the
  // line through the two points, and returns 1 when it lies inside the segment's box
  // (inclusive), else 0. Two equal points give the first point.
  static int PerpendicularLine(double x1, double y1, double x2, double y2, double px, double py,
                               double* foot);
  // GetNormalLine writes the segment A-B of half-length len through the midpoint, perpendicular
  // to the line (A on the +90 side of its GetAngle direction). Equal points give a vertical
  // normal (their angle is 180).
  static void GetNormalLine(double x1, double y1, double x2, double y2, double len, double* ax,
                            double* ay, double* bx, double* by);

  // ---- Point and box tests (boundary included, exact unless a tolerance is named) ----

  // IsPointInArea tests against area[4] = (min x, min y, max x, max y); a NaN point gives 0.
  static int IsPointInArea(double x, double y, double* area);
  // IsPointInArea tests against the four values given; they are not normalised, so a reversed
  // box contains nothing.
  static int IsPointInArea(double x, double y, double minX, double minY, double maxX,
                           double maxY);
  // IsPointInRect tests against the box of two corners given in any order; a NaN point gives 0.
  static int IsPointInRect(double x, double y, double x1, double y1, double x2, double y2);
  // IsInBox tests the point (px, py), given last, against the box of two corners; a NaN point
  // gives 0.
  static int IsInBox(double x1, double y1, double x2, double y2, double px, double py);
  // IsInBox tests against the box grown by margin on every side; a negative margin shrinks it.
  static int IsInBox(double x1, double y1, double x2, double y2, double px, double py,
                     double margin);
  // IsOverlap returns 1 when the two corner-given boxes share at least a boundary point; NaN
  // gives 0.
  static int IsOverlap(double x1, double y1, double x2, double y2, double x3, double y3,
                       double x4, double y4);
  // IsOverlap tests with the first box grown by margin on every side; a negative margin
  // shrinks it.
  static int IsOverlap(double x1, double y1, double x2, double y2, double x3, double y3,
                       double x4, double y4, double margin);
  // IsPointOnLine returns 0 outside the segment's box, 1 for a vertical segment with the point
  // on it, otherwise 1 when |((y1 - y2)/(x2 - x1))(px - x1) - y1 - py| < 1e-5. That expression
  // is kept as hosts rely on it: a sloped or horizontal segment accepts a point only where py is
  // the negated line height, so such calls normally answer 0.
  static int IsPointOnLine(double px, double py, double x1, double y1, double x2, double y2);
  // IsPointOnCircle returns 1 when |(px - cx)^2 + (py - cy)^2 - r^2| < 1e-5 (squared units, so
  // the test is looser near small circles); NaN gives 0.
  static int IsPointOnCircle(double px, double py, double cx, double cy, double r);
  // IsPointOnArc returns 1 when the point passes IsPointOnCircle and its angle about the centre
  // lies on the arc (IsAngleOnArc); NaN gives 0.
  static int IsPointOnArc(double px, double py, double cx, double cy, double r, double start,
                          double end);

  // ---- Intersections ----

  // CheckCrossLineLine returns 1 for a proper crossing of the two segments, 0 for touching or
  // collinear contact, -1 for no contact (range tests by x alone, so vertical segments pass).
  static int CheckCrossLineLine(double x1, double y1, double x2, double y2, double x3, double y3,
                                double x4, double y4);
  // IsIntersectLineLine is CheckCrossLineLine under its second exported name.
  static int IsIntersectLineLine(double x1, double y1, double x2, double y2, double x3,
                                 double y3, double x4, double y4);
  // GetIntersectionLineLine returns 0, 1 or 2 (collinear overlap: the two ends of the shared
  // piece) points of the two segments. Sloped parallel segments normally give 0 (the
  // collinearity test adds y3 where a subtraction would be expected; kept). Zero-length
  // segments are treated as both vertical and horizontal.
  static int GetIntersectionLineLine(double x1, double y1, double x2, double y2, double x3,
                                     double y3, double x4, double y4, double* out);
  // CrossLine writes the crossing of the two infinite lines (same-coordinate tolerance 1.0) and
  // returns 1; when none is found it writes (0, 0) and returns 0.
  static int CrossLine(double x1, double y1, double x2, double y2, double x3, double y3,
                       double x4, double y4, double* x, double* y);
  // GetCrossPointLC returns 0, 1 or 2 crossings of the infinite line with the circle; two equal
  // points are taken as a horizontal line through them.
  static int GetCrossPointLC(double x1, double y1, double x2, double y2, double cx, double cy,
                             double r, double* out);
  // GetIntersectionLineCircle returns 0, 1 or 2 crossings of the segment with the circle; a
  // radius below 1e-5 writes the centre and returns 1 when it lies in the segment's box.
  static int GetIntersectionLineCircle(double x1, double y1, double x2, double y2, double cx,
                                       double cy, double r, double* out);
  // GetIntersectionLineArc returns the crossings of the segment with the circle that lie on the
  // arc, packed from the front.
  static int GetIntersectionLineArc(double x1, double y1, double x2, double y2, double cx,
                                    double cy, double r, double start, double end, double* out);
  // GetIntersectionCircleCircle returns 0, 1 or 2 points; identical circles give 1 with the
  // centre; coincident circles that reach the last step give 3 with two points on them.
  static int GetIntersectionCircleCircle(double cx1, double cy1, double r1, double cx2,
                                         double cy2, double r2, double* out);
  // GetIntersectionCircleArc returns the circle-circle points that lie on the arc (the second
  // circle), packed from the front. The points of a result of 3 are filtered like any others.
  static int GetIntersectionCircleArc(double cx1, double cy1, double r1, double cx2, double cy2,
                                      double r2, double start, double end, double* out);
  // GetIntersectionArcArc returns the circle-circle points that lie on both arcs, packed from
  // the front. The points of a result of 3 are filtered like any others.
  static int GetIntersectionArcArc(double cx1, double cy1, double r1, double start1,
                                   double end1, double cx2, double cy2, double r2, double start2,
                                   double end2, double* out);
  // GetInsideValues writes into out[2] the two ends of the overlap of the intervals (a1, a2)
  // and (b1, b2) on one axis, by the nearest-end rule of the line-line intersection. Disjoint
  // intervals give the ends of the first nearest to the second.
  static void GetInsideValues(double a1, double a2, double b1, double b2, double* out);

  // ---- Arc flattening ----

  // MakeArcToLine appends points of the arc at start, start + step, ... and always ends on the
  // end angle (end is raised by 360 while below start; angles are not normalised). A zero,
  // negative or NaN step appends the start and end points only; a step so small that more than
  // 131072 points would follow is widened to that count; a non-finite sweep appends the start
  // and end points only.
  static void MakeArcToLine(double cx, double cy, double r, double start, double end,
                            double step, CExPtrArray<DPoint*, DPoint*>* pts);
  // MakeArcToLineC appends points of the arc from (xs, ys) to (xe, ye) in about |n| steps, no
  // step above 3 degrees (10 when n < 0); coincident end points append that one point; r <= 0
  // appends nothing; n = 0 or NaN uses the 3-degree cap.
  static void MakeArcToLineC(double cx, double cy, double r, double xs, double ys, double xe,
                             double ye, double n, CExPtrArray<DPoint*, DPoint*>* pts);
};

#endif  // QVIS_GEOMETRY_KERNEL_H_
