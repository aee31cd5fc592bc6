// Recording of curved figures into a DC's open path: ellipses and elliptic arcs become cubic
// Bezier pieces, pies and chords add their straight sides and close the figure.
#ifndef QVIS_GDI_SHAPES_PATH_RECORD_H_
#define QVIS_GDI_SHAPES_PATH_RECORD_H_

#include <vector>

#include "qvis/gdi/raster/geom.h"
#include "qvis/gdi/shapes/ellipse_geom.h"

namespace qvis::gdi {

struct DeviceContext;

enum class CurveKind { kArc, kArcTo, kPie, kChord, kEllipse };

// PathIsOpen tells whether drawing calls on the DC are being recorded.
bool PathIsOpen(const DeviceContext& dc);

// RecordCurve adds the figure of the ellipse in `box` (device pixels, right and bottom edges
// excluded as when drawn) from the ray through `start` to the ray through `end` in the DC's arc
// direction: kArc starts a new figure, kArcTo continues the current one with a line to the arc's
// start and moves the current position to its end, kPie and kChord close the figure (through
// the centre for kPie), kEllipse records the whole closed ellipse. An empty box records nothing.
void RecordCurve(DeviceContext& dc, const Box64& box, PointI start, PointI end, CurveKind kind);

// RayAngle: the angle (radians, y downward) of the ray from the centre of `box` through p,
// measured on the unit circle the box is a stretched copy of.
double RayAngle(const Box64& box, PointI p);

// ArcEndPoint: the point where the ray from the centre of `box` through `ray` meets the ellipse,
// rounded to the nearest pixel (the position ArcTo leaves behind).
PointI ArcEndPoint(const Box64& box, PointI ray);

// FlattenCubic appends the points of the cubic Bezier piece from (x0, y0) through the control
// points to (x3, y3), every point first rounded to whole pixels, as a path flattens its curves:
// the piece is halved in 1/16 pixel until it lies within a pixel of its chord, and the ends of
// the pieces, rounded back to pixels, are appended (the start point excepted; a point equal to
// the last one appended is left out). The second form gives the same whole-pixel points in
// fixed point, for coordinates beyond the 32-bit range.
void FlattenCubic(double x0, double y0, double x1, double y1, double x2, double y2, double x3,
                  double y3, std::vector<PointI>* pts);
void FlattenCubic(double x0, double y0, double x1, double y1, double x2, double y2, double x3,
                  double y3, std::vector<PointFx>* pts);

}  // namespace qvis::gdi

#endif  // QVIS_GDI_SHAPES_PATH_RECORD_H_
