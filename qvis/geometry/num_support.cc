// Centre of the circle through three points, direction from east.
#include "qvis/geometry/num_support.h"

#include <cmath>

#include "qvis/geometry/tolerance.h"

gf_point getArcCenter(double x1, double y1, double x2, double y2, double x3, double y3) {
  const gf_point first{x1, y1};
  // Work relative to the first point: the usual circumcentre formula loses all precision on
  // board coordinates far from the origin otherwise.
  const double bx = x2 - x1;
  const double by = y2 - y1;
  const double cx = x3 - x1;
  const double cy = y3 - y1;
  const double b2 = bx * bx + by * by;
  const double c2 = cx * cx + cy * cy;
  const double cross = bx * cy - by * cx;
  // Flat triangles (collinear or coincident points) have no circle; the test is scale-free.
  if (!(std::fabs(cross) > qvis::tol::kCollinearSine * std::sqrt(b2) * std::sqrt(c2))) {
    return first;
  }
  const double d = 2 * cross;
  const double ux = (cy * b2 - by * c2) / d;
  const double uy = (bx * c2 - cx * b2) / d;
  const gf_point centre{x1 + ux, y1 + uy};
  if (!std::isfinite(centre.x) || !std::isfinite(centre.y)) return first;
  return centre;
}

double dAngleFromEast(double cx, double cy, double x, double y) {
  // y is negated: the plane's y axis points down and angles run counter-clockwise on screen.
  double a = std::atan2(-(y - cy), x - cx) * (180.0 / qvis::tol::kPi);
  if (std::isnan(a)) return 0.0;
  if (a < 0) a += 360.0;
  if (a >= 360.0) a = 0.0;  // a tiny negative angle rounds up to 360
  return a + 0.0;           // -0 becomes 0
}
