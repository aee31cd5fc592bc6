// Ellipse, RoundRect and CreateEllipticRgn. The outline is the stepped ring of ellipse_geom.h;
// the interior is the elliptic region of the box one pixel larger, painted before the outline.
#include <algorithm>
#include <climits>
#include <cmath>
#include <numbers>
#include <memory>
#include <vector>

#include "qvis/compat/win32_names.h"
#include "qvis/gdi/dc.h"
#include "qvis/gdi/gdi.h"
#include "qvis/gdi/shapes/curve_flatten.h"
#include "qvis/gdi/shapes/ellipse_geom.h"
#include "qvis/gdi/shapes/path_record.h"
#include "qvis/gdi/shapes/shape_paint.h"

namespace qvis::gdi {
namespace {

constexpr IRect kEverywhere{INT_MIN, INT_MIN, INT_MAX, INT_MAX};
// How far from the origin the rows of an elliptic region too big to step are kept.
constexpr int kRegionReach = 1 << 15;

// Boxes this thin are drawn as rectangles: too narrow for a curve to show.
bool TooThinForCurve(std::int64_t w, std::int64_t h) { return w <= 2 || h <= 2; }

// The outline of a round rectangle: the ring of the corner ellipse with its four quarters
// moved out to the corners of the box; the straight sides join them.
void RoundRectOutline(const Box64& box, std::int64_t ew, std::int64_t eh, bool clockwise,
                      std::vector<PointI>* out, CurveScratch* work) {
  out->clear();
  std::vector<PointI>& ring = work->ring;
  const int c = EllipseRing(Box64{box.left, box.top, box.left + ew, box.top + eh}, clockwise,
                            &ring, work);
  const int dx = static_cast<int>(box.Width() - ew);
  const int dy = static_cast<int>(box.Height() - eh);
  for (int k = 0; k < 4 * c; ++k) {
    PointI p = ring[static_cast<std::size_t>(k)];
    const bool right = k < c || k >= 3 * c;
    const bool bottom = clockwise ? (k < 2 * c) : (k >= 2 * c);
    if (right) p.x += dx;
    if (bottom) p.y += dy;
    if (out->empty() || out->back() != p) out->push_back(p);
  }
  while (out->size() > 1 && out->back() == out->front()) out->pop_back();
}

BOOL DrawRoundShape(HDC dc, int left, int top, int right, int bottom, std::int64_t corner_w,
                    std::int64_t corner_h, bool is_ellipse) {
  if (dc == nullptr) return FALSE;
  Box64 box = NormalizedBox(left, top, right, bottom);
  if (PathIsOpen(*dc)) {
    if (is_ellipse) RecordCurve(*dc, box, PointI{}, PointI{}, CurveKind::kEllipse);
    return TRUE;
  }
  ApplyInsideFrame(*dc, &box.left, &box.top, &box.right, &box.bottom);
  const std::int64_t w = box.Width();
  const std::int64_t h = box.Height();
  if (w == 0 || h == 0) return TRUE;
  const std::int64_t ew = std::min(w, corner_w < 0 ? -corner_w : corner_w);
  const std::int64_t eh = std::min(h, corner_h < 0 ? -corner_h : corner_h);
  if (TooThinForCurve(ew, eh)) {
    if (w == 1 && h == 1) return TRUE;  // a one-pixel box has no outline left to draw
    return Rectangle(dc, static_cast<int>(box.left), static_cast<int>(box.top),
                     static_cast<int>(box.right), static_cast<int>(box.bottom));
  }
  const IRect clip = ClipBox(*dc);
  if (clip.IsEmpty()) return TRUE;
  if (w > kMaxSteppedEllipse || h > kMaxSteppedEllipse) {
    // Too big to step: the flattened ellipse (its corners rounded as an ellipse too).
    std::vector<PointI>& outline = dc->scratch.outline;
    outline.clear();
    BigArcPoints(*dc, box, 0, 2 * std::numbers::pi, &outline);
    SpanRegion& interior = dc->scratch.fill_region;
    interior.Clear();
    if (dc->brush != nullptr && !dc->brush->IsNull() && outline.size() > 2) {
      const int n = static_cast<int>(outline.size());
      RegionBuilder& builder = dc->scratch.region_builder;
      dc->scanner.Fill(outline.data(), &n, 1, FillRule::kWinding, clip, builder);
      builder.Build(&interior);
    }
    PaintShape(*dc, interior, outline.data(), static_cast<int>(outline.size()));
    return TRUE;
  }
  // The DC's scratch: drawing many ellipses allocates nothing once warm. The interior's rows
  // are lent by the DC for the call.
  struct LentRows {
    RowShape rows;
    ScratchArena& arena;
    explicit LentRows(ScratchArena& a) : arena(a) {
      rows.left.swap(arena.row_left);
      rows.right.swap(arena.row_right);
    }
    ~LentRows() {
      rows.left.swap(arena.row_left);
      rows.right.swap(arena.row_right);
    }
  } lent(dc->scratch);
  RowShape& interior = lent.rows;
  std::vector<PointI>& outline = dc->scratch.outline;
  const bool has_brush = dc->brush != nullptr && !dc->brush->IsNull();
  if (has_brush) {
    const Box64 grown{box.left, box.top, box.right + 1, box.bottom + 1};
    interior.top = grown.top;
    RoundRectRows(grown, ew, eh, &interior.left, &interior.right, &dc->scratch.curve);
  }
  outline.clear();
  if (dc->pen == nullptr || dc->pen->IsNull()) {
    // No outline to draw (filled pads): skip stepping it.
  } else if (is_ellipse) {
    EllipseOutline(box, ArcDirectionIsClockwise(*dc), &outline, &dc->scratch.curve);
  } else {
    RoundRectOutline(box, ew, eh, ArcDirectionIsClockwise(*dc), &outline, &dc->scratch.curve);
  }
  PaintRowShape(*dc, interior, has_brush, outline.data(), static_cast<int>(outline.size()),
                is_ellipse);
  return TRUE;
}

}  // namespace

BOOL Ellipse(HDC dc, int left, int top, int right, int bottom) {
  return DrawRoundShape(dc, left, top, right, bottom, std::int64_t{right} - left,
                        std::int64_t{bottom} - top, true);
}

BOOL RoundRect(HDC dc, int left, int top, int right, int bottom, int width, int height) {
  return DrawRoundShape(dc, left, top, right, bottom, width, height, false);
}

void EllipticShape(const Box64& box, RegionWork& work, SpanRegion* out) {
  if (box.Width() - 1 > kMaxSteppedEllipse || box.Height() - 1 > kMaxSteppedEllipse) {
    // Too big to step: the flattened ellipse, kept within kRegionReach of the origin (a region
    // holds a band per row, and rows that far out are never on a bitmap).
    const IRect reach{-kRegionReach, -kRegionReach, kRegionReach, kRegionReach};
    const double l = static_cast<double>(box.left);
    const double t = static_cast<double>(box.top);
    const double r = static_cast<double>(box.right - 1);
    const double b = static_cast<double>(box.bottom - 1);
    std::vector<Point2>& pts = work.curve_points;
    pts.clear();
    FlattenArc(EllipseArc{(l + r) / 2 - 0.5, (t + b) / 2 - 0.5, (r - l) / 2, (b - t) / 2, 0,
                          2 * std::numbers::pi},
               reach, 0.25, &pts);
    std::vector<PointFx>& fx = work.fixed_points;
    fx.clear();
    for (const Point2& p : pts) {
      fx.push_back(PointFx{static_cast<std::int64_t>(std::llround(p.x * kFixOne)),
                           static_cast<std::int64_t>(std::llround(p.y * kFixOne))});
    }
    const int n = static_cast<int>(fx.size());
    if (n >= 3) work.scanner.Fill(fx.data(), &n, 1, FillRule::kWinding, reach, work.builder);
    work.builder.Build(out);
    return;
  }
  work.rows.top = box.top;
  RoundRectRows(box, box.Width(), box.Height(), &work.rows.left, &work.rows.right, &work.curve);
  RowsToRegion(work.rows, kEverywhere, work.builder, out);
}

HRGN CreateEllipticRgn(int left, int top, int right, int bottom) {
  auto region = std::make_unique<RegionData>();
  EllipticShape(NormalizedBox(left, top, right, bottom), region->Work(), &region->shape);
  region->work.reset();  // a region made once keeps no working memory
  Register(region.get());
  return region.release()->Handle();
}

BOOL SetEllipticRgn(HRGN handle, int left, int top, int right, int bottom) {
  RegionData* region = AsRegion(handle);
  if (region == nullptr) return FALSE;
  EllipticShape(NormalizedBox(left, top, right, bottom), region->Work(), &region->shape);
  return TRUE;
}

}  // namespace qvis::gdi
