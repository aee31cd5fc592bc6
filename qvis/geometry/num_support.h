// Small numeric helpers the arc and three-point-circle commands use: the centre of the circle
// through three points and the direction of a point from a centre.
#ifndef QVIS_GEOMETRY_NUM_SUPPORT_H_
#define QVIS_GEOMETRY_NUM_SUPPORT_H_

#include "qvis/compat/export.h"

// gf_point: a plain pair of doubles.
struct gf_point {
  double x = 0.0;
  double y = 0.0;
};

// getArcCenter returns the centre of the circle through the three points. Collinear or
// coincident points (no such circle), and any input whose centre is not finite, give the first
// point.
QVIS_API gf_point getArcCenter(double x1, double y1, double x2, double y2, double x3, double y3);

// dAngleFromEast returns the direction of (x, y) seen from (cx, cy) in degrees from east (+x),
// counter-clockwise on the y-down plane (a point above the centre is at 90), in [0, 360).
// Coincident points give 0; NaN anywhere gives 0.
QVIS_API double dAngleFromEast(double cx, double cy, double x, double y);

#endif  // QVIS_GEOMETRY_NUM_SUPPORT_H_
