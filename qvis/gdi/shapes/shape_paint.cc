// Interior-then-outline painting of closed curved shapes.
#include "qvis/gdi/shapes/shape_paint.h"

#include <algorithm>
#include <cmath>

#include "qvis/gdi/dc.h"
#include "qvis/gdi/raster/line.h"
#include "qvis/gdi/shapes/curve_flatten.h"
#include "qvis/gdi/shapes/wide_pen.h"

namespace qvis::gdi {

SpanRegion RowsToRegion(const RowShape& rows, const IRect& clip) {
  RegionBuilder builder;
  SpanRegion out;
  RowsToRegion(rows, clip, builder, &out);
  return out;
}

void RowsToRegion(const RowShape& rows, const IRect& clip, RegionBuilder& builder, SpanRegion* out) {
  if (clip.IsEmpty()) {
    builder.Build(out);
    return;
  }
  const std::int64_t n = static_cast<std::int64_t>(rows.left.size());
  const std::int64_t r0 = std::max<std::int64_t>(0, clip.top - rows.top);
  const std::int64_t r1 = std::min<std::int64_t>(n, std::int64_t{clip.bottom} - rows.top);
  {
    SpanBatch batch(builder);
    for (std::int64_t r = r0; r < r1; ++r) {
      const std::int64_t x0 =
          std::max<std::int64_t>(rows.left[static_cast<std::size_t>(r)], clip.left);
      const std::int64_t x1 =
          std::min<std::int64_t>(rows.right[static_cast<std::size_t>(r)], clip.right);
      if (x0 < x1) {
        batch.Add(static_cast<int>(rows.top + r), static_cast<int>(x0), static_cast<int>(x1));
      }
    }
  }
  builder.Build(out);
}

void PaintShape(DeviceContext& dc, const SpanRegion& interior, const PointI* outline, int count) {
  const IRect clip = ClipBox(dc);
  if (clip.IsEmpty()) return;
  const bool has_pen = dc.pen != nullptr && !dc.pen->IsNull() && count > 0;
  const bool has_brush = dc.brush != nullptr && !dc.brush->IsNull();
  if (has_pen && dc.pen->IsWide()) {
    SpanRegion& outline_rgn = dc.scratch.outline_region;
    WideOutlineRegion(dc, outline, count, true, &outline_rgn);
    if (has_brush && !interior.IsEmpty()) {
      SpanRegion& inner = dc.scratch.inner_region;
      SpanRegion::Combine(interior, outline_rgn, RegionOp::kDiff, &inner);
      inner.Emit(clip, BrushSink(dc, dc.brush));
    }
    outline_rgn.Emit(clip, PenSink(dc));
    return;
  }
  if (has_brush && !interior.IsEmpty()) interior.Emit(clip, BrushSink(dc, dc.brush));
  if (has_pen) DrawCosmeticPolyline(dc, outline, count, true);
}

namespace {

// Sends the rows inside the clip box to a sink.
void EmitRows(const RowShape& rows, const IRect& clip, SpanSink& sink) {
  const std::int64_t n = static_cast<std::int64_t>(rows.left.size());
  const std::int64_t r0 = std::max<std::int64_t>(0, clip.top - rows.top);
  const std::int64_t r1 = std::min<std::int64_t>(n, std::int64_t{clip.bottom} - rows.top);
  SpanBatch batch(sink);
  for (std::int64_t r = r0; r < r1; ++r) {
    const std::int64_t x0 =
        std::max<std::int64_t>(rows.left[static_cast<std::size_t>(r)], clip.left);
    const std::int64_t x1 =
        std::min<std::int64_t>(rows.right[static_cast<std::size_t>(r)], clip.right);
    if (x0 < x1)
      batch.Add(static_cast<int>(rows.top + r), static_cast<int>(x0), static_cast<int>(x1));
  }
}

// Paints every pixel of a closed ring of touching pixels once per visit (a pixel the ring
// passes twice is painted twice, as the one-pixel segments would), joining horizontal runs.
void EmitRing(const PointI* pts, int count, const IRect& clip, SpanSink& sink) {
  SpanBatch batch(sink);
  int i = 0;
  while (i < count) {
    const int y = pts[i].y;
    int j = i + 1;
    int dir = 0;
    // A run: consecutive ring pixels on one row, stepping the same way.
    while (j < count && pts[j].y == y) {
      const int d = pts[j].x - pts[j - 1].x;
      if ((d != 1 && d != -1) || (dir != 0 && d != dir)) break;
      dir = d;
      ++j;
    }
    if (y >= clip.top && y < clip.bottom) {
      const int x0 = std::max(std::min(pts[i].x, pts[j - 1].x), clip.left);
      const int x1 = std::min(std::max(pts[i].x, pts[j - 1].x) + 1, clip.right);
      if (x0 < x1) batch.Add(y, x0, x1);
    }
    i = j;
  }
}

}  // namespace

void PaintRowShape(DeviceContext& dc, const RowShape& interior, bool has_interior,
                   const PointI* outline, int count, bool stepped_outline) {
  const IRect clip = ClipBox(dc);
  if (clip.IsEmpty()) return;
  const bool has_pen = dc.pen != nullptr && !dc.pen->IsNull() && count > 0;
  const bool has_brush = has_interior && dc.brush != nullptr && !dc.brush->IsNull();
  if (has_pen && dc.pen->IsWide()) {
    SpanRegion& fill = dc.scratch.fill_region;
    if (has_brush) {
      RowsToRegion(interior, clip, dc.scratch.region_builder, &fill);
    } else {
      fill.Clear();
    }
    PaintShape(dc, fill, outline, count);
    return;
  }
  if (has_brush) EmitRows(interior, clip, BrushSink(dc, dc.brush));
  if (!has_pen) return;
  if (stepped_outline && dc.pen->thin_style.IsSolid()) {
    EmitRing(outline, count, clip, PenSink(dc));
  } else {
    DrawCosmeticPolyline(dc, outline, count, true);
  }
}

void BigArcPoints(DeviceContext& dc, const Box64& box, double a0, double a1,
                  std::vector<PointI>* out) {
  const double l = static_cast<double>(box.left);
  const double t = static_cast<double>(box.top);
  const double r = static_cast<double>(box.right - 1);
  const double b = static_cast<double>(box.bottom - 1);
  const EllipseArc arc{(l + r) / 2, (t + b) / 2, (r - l) / 2, (b - t) / 2, a0, a1};
  std::vector<Point2>& pts = dc.scratch.big_arc;
  pts.clear();
  FlattenArc(arc, ClipBox(dc), 0.25, &pts);
  for (const Point2& p : pts) {
    const PointI q{
        static_cast<int>(std::clamp(std::floor(p.x + 0.5), -2147483648.0, 2147483647.0)),
        static_cast<int>(std::clamp(std::floor(p.y + 0.5), -2147483648.0, 2147483647.0))};
    if (out->empty() || out->back() != q) out->push_back(q);
  }
}

void PaintPolygons(DeviceContext& dc, const SpanRegion& interior, const PointI* points,
                   const int* counts, int polygons) {
  if (polygons < 1 || points == nullptr || counts == nullptr) return;
  if (polygons == 1) {
    PaintShape(dc, interior, points, counts[0]);
    return;
  }
  const IRect clip = ClipBox(dc);
  if (clip.IsEmpty()) return;
  const bool has_pen = dc.pen != nullptr && !dc.pen->IsNull();
  const bool has_brush = dc.brush != nullptr && !dc.brush->IsNull();
  if (has_pen && dc.pen->IsWide()) {
    PolygonSet& set = dc.scratch.stroke.set;
    set.Clear();
    const StrokeStyle style = StyleOfSelectedPen(dc);
    const PointI* p = points;
    for (int i = 0; i < polygons; ++i) {
      BuildDashedStroke(p, counts[i], true, style, clip, &set, dc.scratch.stroke);
      p += counts[i];
    }
    RegionBuilder& builder = dc.scratch.region_builder;
    if (!set.counts.empty()) {
      dc.scanner.Fill(set.points.data(), set.counts.data(), static_cast<int>(set.counts.size()),
                      FillRule::kWinding, clip, builder);
    }
    SpanRegion& outline = dc.scratch.outline_region;
    builder.Build(&outline);
    if (has_brush && !interior.IsEmpty()) {
      SpanRegion& inner = dc.scratch.inner_region;
      SpanRegion::Combine(interior, outline, RegionOp::kDiff, &inner);
      inner.Emit(clip, BrushSink(dc, dc.brush));
    }
    outline.Emit(clip, PenSink(dc));
    return;
  }
  if (has_brush && !interior.IsEmpty()) interior.Emit(clip, BrushSink(dc, dc.brush));
  if (!has_pen) return;
  const PointI* p = points;
  for (int i = 0; i < polygons; ++i) {
    DrawCosmeticPolyline(dc, p, counts[i], true);
    p += counts[i];
  }
}

bool ArcDirectionIsClockwise(const DeviceContext& dc) { return dc.arc_direction == 2; }

void ApplyInsideFrame(const DeviceContext& dc, std::int64_t* left, std::int64_t* top,
                      std::int64_t* right, std::int64_t* bottom) {
  constexpr int kInsideFrame = 6;
  if (dc.pen == nullptr || dc.pen->style != kInsideFrame || !dc.pen->IsWide()) return;
  const std::int64_t w = dc.pen->width;
  *left += w / 2;
  *top += w / 2;
  *right -= (w - 1) / 2;
  *bottom -= (w - 1) / 2;
  if (*right < *left) *right = *left;
  if (*bottom < *top) *bottom = *top;
}

}  // namespace qvis::gdi
