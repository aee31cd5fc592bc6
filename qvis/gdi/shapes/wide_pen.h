// Geometric (wide) pen stroking: a polyline becomes a set of consistently oriented polygons
// (segment bodies, caps, joins) whose union, filled by winding, is the painted outline, so every
// pixel is painted once. Also the round dot that caps and round joins are made of.
#ifndef QVIS_GDI_SHAPES_WIDE_PEN_H_
#define QVIS_GDI_SHAPES_WIDE_PEN_H_

#include <array>
#include <cstdint>
#include <vector>

#include "qvis/compat/types.h"
#include "qvis/gdi/raster/geom.h"
#include "qvis/gdi/raster/region.h"
#include "qvis/gdi/raster/span.h"
#include "qvis/gdi/shapes/curve_flatten.h"

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
  // Dash pattern in pixels along the path, on and off lengths alternating from an on length;
  // dash_count 0 is a solid pen. The on lengths are what lies between the caps of a dash: a
  // capped pen's dashes are shorter by the width so that caps and dash together keep the
  // style's length (see DashPatternOf).
  std::array<double, 32> dashes{};
  int dash_count = 0;
};

// PolygonSet: polygons in fixed point, as the scan converter takes them.
struct PolygonSet {
  std::vector<PointFx> points;
  std::vector<int> counts;
  void Clear() {
    points.clear();
    counts.clear();
  }
  void clear() { Clear(); }
  // Add appends a polygon, turned so that all polygons of the set wind the same way (a union
  // under the winding rule). Fewer than 3 points or zero area: ignored.
  void Add(const PointFx* p, int n);
};

// StrokeBody: the four corners of a wide segment, on the left and right of the walk from start
// to end (left as seen on screen, y growing downward).
struct StrokeBody {
  PointFx start_left;
  PointFx end_left;
  PointFx end_right;
  PointFx start_right;
  // Corners: the four corners in order round the body, as a polygon.
  void Corners(PointFx out[4]) const {
    out[0] = start_left;
    out[1] = end_left;
    out[2] = end_right;
    out[3] = start_right;
  }
};

// DotOutline: the staircase outline of a round dot of one width, relative to the dot's top-left
// pixel and turned the way PolygonSet winds its polygons.
struct DotOutline {
  std::int64_t width = 0;
  std::vector<PointFx> points;
};

// DotRows: the pixels of a round dot of one width, row by row relative to its top-left pixel:
// row r covers [lo[r], hi[r]) (lo == hi: none). `usable` is false when a row holds more than one
// run, which the row-by-row painter does not take.
struct DotRows {
  std::int64_t width = 0;
  int top = 0;  // the first row, relative to the top-left pixel
  std::vector<int> lo;
  std::vector<int> hi;
  bool usable = false;
};

// StrokeScratch: the stroker's working memory and its few cached dot outlines (tracks use a
// handful of widths), kept by the DC between calls so that warm stroking does not allocate.
struct StrokeScratch {
  std::vector<PointI> points;         // the polyline without repeated points
  std::vector<PointI> headings;       // the heading of each of its segments
  std::vector<StrokeBody> bodies;
  std::vector<PointI> dash;           // the dash being collected
  std::vector<PointI> dash_headings;
  std::vector<PointI> opening;        // a closed figure's first dash, held for its last one
  std::vector<PointI> opening_headings;
  PolygonSet set;                     // the outline pieces of one call
  std::vector<DotOutline> dots;
  std::size_t next_dot = 0;
  // A lone round-ended segment is painted row by row from its body's spans and the spans of
  // its two dots, read once per width from the dot outline (same pixels, no outline edges).
  std::vector<DotRows> dot_rows;
  std::size_t next_dot_rows = 0;
  std::vector<int> body_rows;         // per row of the body: two [lo, hi) pairs
  std::vector<Point2> disc;           // a disc too wide to step, flattened
  std::vector<PointFx> disc_fx;
  bool segment_rows = true;           // off: every stroke takes the outline pieces (tests)
};

// AddRoundDot appends the disc a round cap or join paints at pixel c: the elliptic region of the
// width x width box whose top-left pixel is c - width/2, as a staircase polygon. Only rows inside
// `rows` (a clip box) are kept, so the cost follows the clipped result; discs too big to step are
// approximated by a fine polygon.
void AddRoundDot(PointI c, std::int64_t width, const IRect& rows, PolygonSet* out,
                 StrokeScratch& work);

// BuildStroke appends the outline pieces of the polyline points[0..count) (closed: with the
// segment back to the first point) for the style. Repeated points are skipped; a polyline that
// collapses to one point gives a dot with round caps and nothing with square or flat caps.
// `clip` bounds the work of round pieces. count < 1: nothing.
void BuildStroke(const PointI* points, int count, bool closed, const StrokeStyle& style,
                 const IRect& clip, PolygonSet* out, StrokeScratch& work);

// DashPatternOf fills style->dashes for a geometric pen of the given PS_ style (PS_DASH ..
// PS_DASHDOTDOT scale their on/off units by the width: dash 3, dot 1, gap 1; PS_USERSTYLE
// entries are pixels as given, an odd count running twice so that on and off alternate). With
// round or square caps every on length of a standard style gives up one width to its two caps,
// and the gap after it takes it, down to a zero-length dash, which is a lone cap; a user
// style's on lengths stay as given, with the caps beyond them. Solid and other styles, or a
// user style with no length at all: dash_count 0.
void DashPatternOf(int pen_style, const std::vector<DWORD>& user, StrokeStyle* style);

// BuildDashedStroke appends the outline pieces of the dashes of a styled stroke: the pattern
// runs from the first point along the whole polyline (round its corners, and back to the start
// when closed), each segment moving it on by its length cut to whole pixels; each dash is a
// polyline with the style's joins at the corners it spans (a dash that begins at a corner spans
// it too) and the caps at its ends. Dashes wholly outside `clip` cost only their count.
// Degenerate input as BuildStroke; a style without dashes: as BuildStroke.
void BuildDashedStroke(const PointI* points, int count, bool closed, const StrokeStyle& style,
                       const IRect& clip, PolygonSet* out, StrokeScratch& work);

// BuildStrokeAlong is BuildStroke with the heading of every segment given (dirs[i] for the
// segment from points[i]; the polyline must not repeat a point): the bodies are cut square to
// that heading instead of to the segment's own, as the dashes of a longer segment are. dirs
// null: each segment's own heading.
void BuildStrokeAlong(const PointI* points, const PointI* dirs, int count, bool closed,
                      const StrokeStyle& style, const IRect& clip, PolygonSet* out,
                      StrokeScratch& work);

// StyleOfSelectedPen: the stroke style of the DC's selected geometric pen.
StrokeStyle StyleOfSelectedPen(const DeviceContext& dc);

// WideOutlineRegion gives in `out` the pixels the DC's wide pen paints for the polyline, clipped
// to the DC's clip box (the region a filled shape subtracts so its outline pixels are painted
// once). It builds with the DC's region builder.
void WideOutlineRegion(DeviceContext& dc, const PointI* points, int count, bool closed,
                       SpanRegion* out);

}  // namespace qvis::gdi

#endif  // QVIS_GDI_SHAPES_WIDE_PEN_H_
