// Clip-aware flattening of elliptic arcs into polylines, for curves too big to step pixel by
// pixel: pieces that pass near the clip box are split until they lie within a fraction of a
// pixel of their chords; pieces that stay away from it become single chords, so the number of
// points follows the visible part of the curve, not its size.
#ifndef QVIS_GDI_SHAPES_CURVE_FLATTEN_H_
#define QVIS_GDI_SHAPES_CURVE_FLATTEN_H_

#include <vector>

#include "qvis/gdi/raster/geom.h"

namespace qvis::gdi {

// Point2: a point with real coordinates (device pixels).
struct Point2 {
  double x = 0;
  double y = 0;
};

// EllipseArc: the points (cx + rx cos t, cy + ry sin t) for t from t0 to t1 (radians, either
// way round; y grows downward).
struct EllipseArc {
  double cx = 0;
  double cy = 0;
  double rx = 0;
  double ry = 0;
  double t0 = 0;
  double t1 = 0;
};

// FlattenArc appends the arc's points from t0 (included) to t1 (included). Pieces whose
// neighbourhood misses `clip` are replaced by their chords; the others are flattened to within
// `tolerance` pixels. Non-finite input appends nothing.
void FlattenArc(const EllipseArc& arc, const IRect& clip, double tolerance,
                std::vector<Point2>* out);

}  // namespace qvis::gdi

#endif  // QVIS_GDI_SHAPES_CURVE_FLATTEN_H_
