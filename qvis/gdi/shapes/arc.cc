// Arc, ArcTo, Pie and Chord: the part of the stepped ellipse ring between two rays, drawn as an
// open polyline (Arc, ArcTo from the current position) or closed through the centre (Pie) or
// straight back (Chord), the closed ones filled by winding first.
#include <numbers>
#include <vector>

#include "qvis/compat/win32_names.h"
#include "qvis/gdi/dc.h"
#include "qvis/gdi/gdi.h"
#include "qvis/gdi/shapes/ellipse_geom.h"
#include "qvis/gdi/shapes/path_record.h"
#include "qvis/gdi/shapes/shape_paint.h"

namespace qvis::gdi {
namespace {

BOOL DrawArcFigure(HDC dc, int left, int top, int right, int bottom, int xs, int ys, int xe, int ye,
                   CurveKind kind) {
  if (dc == nullptr) return FALSE;
  Box64 box = NormalizedBox(left, top, right, bottom);
  const PointI start{xs, ys};
  const PointI end{xe, ye};
  if (PathIsOpen(*dc)) {
    RecordCurve(*dc, box, start, end, kind);
    return TRUE;
  }
  ApplyInsideFrame(*dc, &box.left, &box.top, &box.right, &box.bottom);
  if (box.Width() == 0 || box.Height() == 0) return TRUE;
  // The DC's scratch: drawing many arcs allocates nothing once warm.
  std::vector<PointI>& pts = dc->scratch.outline;
  std::vector<PointI>& arc = dc->scratch.arc;
  pts.clear();
  if (kind == CurveKind::kArcTo) pts.push_back(dc->position);
  const bool clockwise = ArcDirectionIsClockwise(*dc);
  if (!ArcPoints(box, start, end, clockwise, &arc, &dc->scratch.curve)) {
    // Too big to step: the flattened arc between the same rays.
    const double a0 = RayAngle(box, start);
    double a1 = RayAngle(box, end);
    if (clockwise && a1 <= a0) a1 += 2 * std::numbers::pi;
    if (!clockwise && a1 >= a0) a1 -= 2 * std::numbers::pi;
    BigArcPoints(*dc, box, a0, a1, &arc);
  }
  pts.insert(pts.end(), arc.begin(), arc.end());
  if (kind == CurveKind::kArcTo && !arc.empty()) dc->position = ArcEndPoint(box, end);
  if (kind == CurveKind::kPie) {
    pts.push_back(PointI{static_cast<int>(box.left + box.Width() / 2),
                         static_cast<int>(box.top + box.Height() / 2)});
  }
  if (pts.size() < 2) return TRUE;
  const int n = static_cast<int>(pts.size());
  if (kind == CurveKind::kArc || kind == CurveKind::kArcTo) {
    DrawPenOutline(*dc, pts.data(), n, false);
    return TRUE;
  }
  const IRect clip = ClipBox(*dc);
  if (clip.IsEmpty()) return TRUE;
  const bool has_brush = dc->brush != nullptr && !dc->brush->IsNull();
  const bool wide = dc->pen != nullptr && !dc->pen->IsNull() && dc->pen->IsWide();
  if (!wide) {
    // The interior straight to the brush, the outline over it.
    if (has_brush) {
      dc->scanner.Fill(pts.data(), &n, 1, FillRule::kWinding, clip, BrushSink(*dc, dc->brush));
    }
    DrawPenOutline(*dc, pts.data(), n, true);
    return TRUE;
  }
  SpanRegion& interior = dc->scratch.fill_region;
  interior.Clear();
  if (has_brush) {
    RegionBuilder& builder = dc->scratch.region_builder;
    dc->scanner.Fill(pts.data(), &n, 1, FillRule::kWinding, clip, builder);
    builder.Build(&interior);
  }
  PaintShape(*dc, interior, pts.data(), n);
  return TRUE;
}

}  // namespace

BOOL Arc(HDC dc, int left, int top, int right, int bottom, int xs, int ys, int xe, int ye) {
  return DrawArcFigure(dc, left, top, right, bottom, xs, ys, xe, ye, CurveKind::kArc);
}

BOOL ArcTo(HDC dc, int left, int top, int right, int bottom, int xs, int ys, int xe, int ye) {
  return DrawArcFigure(dc, left, top, right, bottom, xs, ys, xe, ye, CurveKind::kArcTo);
}

BOOL Pie(HDC dc, int left, int top, int right, int bottom, int xs, int ys, int xe, int ye) {
  return DrawArcFigure(dc, left, top, right, bottom, xs, ys, xe, ye, CurveKind::kPie);
}

BOOL Chord(HDC dc, int left, int top, int right, int bottom, int xs, int ys, int xe, int ye) {
  return DrawArcFigure(dc, left, top, right, bottom, xs, ys, xe, ye, CurveKind::kChord);
}

}  // namespace qvis::gdi
