// Painting helpers shared by the closed curved shapes (Ellipse, RoundRect, Pie, Chord): an
// interior given as rows or as a region painted with the brush, then the outline with the pen,
// so that a wide outline and the interior never paint the same pixel.
#ifndef QVIS_GDI_SHAPES_SHAPE_PAINT_H_
#define QVIS_GDI_SHAPES_SHAPE_PAINT_H_

#include <cstdint>
#include <vector>

#include "qvis/gdi/raster/geom.h"
#include "qvis/gdi/raster/polygon.h"
#include "qvis/gdi/raster/region.h"
#include "qvis/gdi/shapes/curve_flatten.h"
#include "qvis/gdi/shapes/ellipse_geom.h"

namespace qvis::gdi {

struct DeviceContext;

// RowShape: rows top, top+1, ... with the half-open spans [left[i], right[i]) (empty rows
// allowed), in 64-bit pixels.
struct RowShape {
  std::int64_t top = 0;
  std::vector<std::int64_t> left;
  std::vector<std::int64_t> right;
};

// RegionWork: the working memory a region object reshapes itself with (SetEllipticRgn,
// SetPolygonRgn), made on its first reshape and kept with it, as a DC keeps its ScratchArena.
struct RegionWork {
  RowShape rows;
  CurveScratch curve;
  RegionBuilder builder;
  PolygonScanner scanner;
  std::vector<PointI> points;
  std::vector<Point2> curve_points;  // ellipses too big to step
  std::vector<PointFx> fixed_points;
};

// EllipticShape: the region of the ellipse inscribed in the box, built into `out`.
void EllipticShape(const Box64& box, RegionWork& work, SpanRegion* out);

// RowsToRegion keeps the part of the rows inside `clip` as a region.
SpanRegion RowsToRegion(const RowShape& rows, const IRect& clip);
// The same into `out`, built with `builder` (both reused from call to call).
void RowsToRegion(const RowShape& rows, const IRect& clip, RegionBuilder& builder, SpanRegion* out);

// PaintShape paints a closed shape: the interior (already a region, clipped) with the DC's
// brush, then the outline points with the DC's pen (closed polyline). A cosmetic pen is drawn
// over the painted interior, as GDI does; a wide pen's pixels are taken out of the interior
// first. A null pen or brush skips its part.
void PaintShape(DeviceContext& dc, const SpanRegion& interior, const PointI* outline, int count);

// BigArcPoints appends the outline points of the ellipse in `box` from angle a0 to a1 (radians
// on the unit circle the box stretches, y downward), for boxes too big to step: flattened where
// the curve passes near the DC's clip box, straight chords elsewhere.
void BigArcPoints(DeviceContext& dc, const Box64& box, double a0, double a1,
                  std::vector<PointI>* out);

// PaintPolygons paints filled polygons (counts[i] points each) the same way: the interior
// region with the brush, then every outline closed with the pen; with a wide pen the outlines'
// pixels are taken out of the interior first, so each pixel is painted once. For Polygon,
// PolyPolygon and Rectangle. polygons < 1: nothing.
void PaintPolygons(DeviceContext& dc, const SpanRegion& interior, const PointI* points,
                   const int* counts, int polygons);

// PaintRowShape paints a closed shape whose interior is given as rows, as PaintShape does, but
// sends the rows straight to the brush when the pen is not wide. With `stepped_outline` the
// outline points are consecutive touching pixels (an ellipse ring), which a solid cosmetic pen
// paints as runs of pixels instead of one-pixel segments.
void PaintRowShape(DeviceContext& dc, const RowShape& interior, bool has_interior,
                   const PointI* outline, int count, bool stepped_outline);

// ArcDirectionIsClockwise tells the direction the DC draws arcs in.
bool ArcDirectionIsClockwise(const DeviceContext& dc);

// PenBox: the box a shape's outline is drawn on, after an inside-frame pen moved it inward by
// half its width.
void ApplyInsideFrame(const DeviceContext& dc, std::int64_t* left, std::int64_t* top,
                      std::int64_t* right, std::int64_t* bottom);

}  // namespace qvis::gdi

#endif  // QVIS_GDI_SHAPES_SHAPE_PAINT_H_
