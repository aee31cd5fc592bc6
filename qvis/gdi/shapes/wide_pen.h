// Geometric (wide) pen stroking: a polyline becomes a set of consistently oriented polygons
// (segment bodies, caps, joins) whose union, filled by winding, is the painted outline, so every
// pixel is painted once. Also the round dot that caps and round joins are made of.
#ifndef QVIS_GDI_SHAPES_WIDE_PEN_H_
#define QVIS_GDI_SHAPES_WIDE_PEN_H_

#include <cstdint>
#include <vector>

#include "qvis/gdi/raster/geom.h"
#include "qvis/gdi/raster/region.h"
#include "qvis/gdi/raster/span.h"

namespace qvis::gdi {

struct DeviceContext;

enum class CapStyle { kRound, kSquare, kFlat };
enum class JoinStyle { kRound, kBevel, kMiter };

// StrokeStyle: the shape parameters of a geometric pen.
struct StrokeStyle {
  std::int64_t width = 1;  // pixels, >= 1
  CapStyle cap = CapStyle::kRound;
  JoinStyle join = JoinStyle::kRound;
  double miter_limit = 10.0;  // longest miter as a multiple of the pen width
};

// PolygonSet: polygons in fixed point, as the scan converter takes them.
struct PolygonSet {
  std::vector<PointFx> points;
  std::vector<int> counts;
  void Clear() {
    points.clear();
    counts.clear();
  }
  // Add appends a polygon, turned so that all polygons of the set wind the same way (a union
  // under the winding rule). Fewer than 3 points or zero area: ignored.
  void Add(const PointFx* p, int n);
};

// AddRoundDot appends the disc a round cap or join paints at pixel c: the elliptic region of the
// width x width box whose top-left pixel is c - width/2, as a staircase polygon. Only rows inside
// `rows` (a clip box) are kept, so the cost follows the clipped result; discs too big to step are
// approximated by a fine polygon.
void AddRoundDot(PointI c, std::int64_t width, const IRect& rows, PolygonSet* out);

// BuildStroke appends the outline pieces of the polyline points[0..count) (closed: with the
// segment back to the first point) for the style. Repeated points are skipped; a polyline that
// collapses to one point gives a dot with round caps and nothing with square or flat caps.
// `clip` bounds the work of round pieces. count < 1: nothing.
void BuildStroke(const PointI* points, int count, bool closed, const StrokeStyle& style,
                 const IRect& clip, PolygonSet* out);

// StyleOfSelectedPen: the stroke style of the DC's selected geometric pen.
StrokeStyle StyleOfSelectedPen(const DeviceContext& dc);

// WideOutlineRegion returns the pixels the DC's wide pen paints for the polyline, clipped to the
// DC's clip box (the region a filled shape subtracts so its outline pixels are painted once).
SpanRegion WideOutlineRegion(DeviceContext& dc, const PointI* points, int count, bool closed);

}  // namespace qvis::gdi

#endif  // QVIS_GDI_SHAPES_WIDE_PEN_H_
