// Paths: recording brackets, curved figures recorded as Bezier pieces, and rendering. A closed
// path is flattened to integer points figure by figure; filling uses the DC's fill mode over all
// figures at once, stroking draws each figure as a polyline (closed figures closed) with the
// selected pen.
#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

#include "qvis/compat/win32_names.h"
#include "qvis/gdi/dc.h"
#include "qvis/gdi/gdi.h"
#include "qvis/gdi/shapes/path_record.h"
#include "qvis/gdi/shapes/shape_paint.h"
#include "qvis/gdi/shapes/wide_pen.h"

namespace qvis::gdi {
namespace {
// Curves are flattened in 1/16 pixel: each piece is halved until both control points lie within
// a pixel of the chord (measured across its major axis) and between its ends, at most 8 times;
// the ends of the pieces, rounded back to pixels, are the points.
constexpr int kBezierShift = 4;
constexpr std::int64_t kBezierPixel = std::int64_t{1} << kBezierShift;
constexpr int kBezierDepth = 8;

std::int64_t BezierDown(std::int64_t v) { return (v + (kBezierPixel >> 1)) >> kBezierShift; }

struct BPoint {
  std::int64_t x = 0;
  std::int64_t y = 0;
};

BPoint BezierMiddle(BPoint a, BPoint b) { return BPoint{(a.x + b.x + 1) / 2, (a.y + b.y + 1) / 2}; }

bool ControlOutside(std::int64_t c, std::int64_t p0, std::int64_t p3) {
  return c < p0 ? c < p3 : c > p3;
}

bool BezierFlat(const BPoint* p) {
  std::int64_t dx = p[3].x - p[0].x;
  std::int64_t dy = p[3].y - p[0].y;
  auto abs64 = [](std::int64_t v) { return v < 0 ? -v : v; };
  if (abs64(dy) <= abs64(dx)) {
    if (ControlOutside(p[1].x, p[0].x, p[3].x) || ControlOutside(p[2].x, p[0].x, p[3].x)) {
      return false;
    }
    dx = BezierDown(dx);
    if (dx == 0) return true;
    return abs64(p[1].y - p[0].y - (dy / dx) * BezierDown(p[1].x - p[0].x)) <= kBezierPixel &&
           abs64(p[2].y - p[0].y - (dy / dx) * BezierDown(p[2].x - p[0].x)) <= kBezierPixel;
  }
  if (ControlOutside(p[1].y, p[0].y, p[3].y) || ControlOutside(p[2].y, p[0].y, p[3].y)) {
    return false;
  }
  dy = BezierDown(dy);
  if (dy == 0) return true;
  return abs64(p[1].x - p[0].x - (dx / dy) * BezierDown(p[1].y - p[0].y)) <= kBezierPixel &&
         abs64(p[2].x - p[0].x - (dx / dy) * BezierDown(p[2].y - p[0].y)) <= kBezierPixel;
}

PointI WholePixel(BPoint p, PointI*) {
  return PointI{static_cast<int>(BezierDown(p.x)), static_cast<int>(BezierDown(p.y))};
}
PointFx WholePixel(BPoint p, PointFx*) {
  return PointFx{BezierDown(p.x) * kFixOne, BezierDown(p.y) * kFixOne};
}

template <typename P>
void FlattenFixed(BPoint* p, int level, std::vector<P>* pts) {
  if (level == 0 || BezierFlat(p)) {
    const P q = WholePixel(p[3], static_cast<P*>(nullptr));
    if (pts->empty() || pts->back() != q) pts->push_back(q);
    return;
  }
  BPoint q[4];
  q[3] = p[3];
  q[2] = BezierMiddle(p[2], p[3]);
  q[0] = BezierMiddle(p[1], p[2]);
  q[1] = BezierMiddle(q[0], q[2]);
  p[1] = BezierMiddle(p[0], p[1]);
  p[2] = BezierMiddle(p[1], q[0]);
  p[3] = BezierMiddle(p[2], q[1]);
  q[0] = p[3];
  FlattenFixed(p, level - 1, pts);
  FlattenFixed(q, level - 1, pts);
}

// Path points are whole pixels clamped to a range whose 1/16 multiples stay far from overflow.
std::int64_t BezierUp(double v) {
  if (!(v == v)) return 0;
  v = std::clamp(std::round(v), -1.0e15, 1.0e15);
  return static_cast<std::int64_t>(v) * kBezierPixel;
}

template <typename P>
void FlattenCubicTo(double x0, double y0, double x1, double y1, double x2, double y2, double x3,
                    double y3, std::vector<P>* pts) {
  BPoint p[4] = {{BezierUp(x0), BezierUp(y0)},
                 {BezierUp(x1), BezierUp(y1)},
                 {BezierUp(x2), BezierUp(y2)},
                 {BezierUp(x3), BezierUp(y3)}};
  FlattenFixed(p, kBezierDepth, pts);
}

}  // namespace

void FlattenCubic(double x0, double y0, double x1, double y1, double x2, double y2, double x3,
                  double y3, std::vector<PointI>* pts) {
  FlattenCubicTo(x0, y0, x1, y1, x2, y2, x3, y3, pts);
}

void FlattenCubic(double x0, double y0, double x1, double y1, double x2, double y2, double x3,
                  double y3, std::vector<PointFx>* pts) {
  FlattenCubicTo(x0, y0, x1, y1, x2, y2, x3, y3, pts);
}

namespace {

// Nearest pixel, halves upward; saturates to the 32-bit range (NaN gives 0).
int RoundToPixel(double v) {
  if (!(v == v)) return 0;
  const double r = std::floor(v + 0.5);
  if (r <= static_cast<double>(INT32_MIN)) return INT32_MIN;
  if (r >= static_cast<double>(INT32_MAX)) return INT32_MAX;
  return static_cast<int>(r);
}

// The ellipse a curve is recorded on: paths keep integer points, and the ellipse spans the
// pixels of the box, so its edges run through the first and the last pixel on each axis.
struct EllipseFrame {
  double cx = 0;
  double cy = 0;
  double rx = 0;
  double ry = 0;
  double X(double a) const { return cx + rx * std::cos(a); }
  double Y(double a) const { return cy + ry * std::sin(a); }
};

EllipseFrame FrameOf(const Box64& box) {
  const double l = static_cast<double>(box.left);
  const double t = static_cast<double>(box.top);
  const double r = static_cast<double>(box.right - 1);
  const double b = static_cast<double>(box.bottom - 1);
  return EllipseFrame{(l + r) / 2, (t + b) / 2, (r - l) / 2, (b - t) / 2};
}

// Appends one Bezier piece (at most a quarter turn) of the arc from a0 to a1, its points rounded
// to pixels as a path keeps them.
void AppendArcPiece(PathData& path, const EllipseFrame& f, double a0, double a1) {
  const double half = (a1 - a0) / 2;
  double x[4];
  double y[4];
  x[0] = std::cos(a0);
  y[0] = std::sin(a0);
  x[3] = std::cos(a1);
  y[3] = std::sin(a1);
  if (std::fabs(half) > 1e-8) {
    const double k = 4.0 / 3.0 * (1 - std::cos(half)) / std::sin(half);
    x[1] = x[0] - k * y[0];
    y[1] = y[0] + k * x[0];
    x[2] = x[3] + k * y[3];
    y[2] = y[3] - k * x[3];
  } else {
    x[1] = x[2] = x[3] = x[0];
    y[1] = y[2] = y[3] = y[0];
  }
  for (int i = 1; i < 4; ++i) {
    path.vertices.push_back({static_cast<double>(RoundToPixel(f.cx + f.rx * x[i])),
                             static_cast<double>(RoundToPixel(f.cy + f.ry * y[i])),
                             PathData::kBezierTo});
  }
}

// Appends the arc from a0 to a1 as one Bezier piece per quadrant it crosses, the pieces split
// at the axes.
void AppendArcBeziers(PathData& path, const EllipseFrame& f, double a0, double a1) {
  const double q = std::numbers::pi / 2;
  const bool clockwise = a1 > a0;
  double s = a0;
  double e = clockwise ? (std::floor(a0 / q) + 1) * q : (std::ceil(a0 / q) - 1) * q;
  for (int guard = 0; guard < 8; ++guard) {
    const bool last = clockwise ? a1 < e : a1 > e;
    if (last) e = a1;
    AppendArcPiece(path, f, s, e);
    if (last) break;
    s = e;
    e += clockwise ? q : -q;
  }
}

// --- Flattening -----------------------------------------------------------------------------

void AddPoint(std::vector<PointI>* pts, double x, double y) {
  const PointI p{RoundToPixel(x), RoundToPixel(y)};
  if (pts->empty() || pts->back() != p) pts->push_back(p);
}

// FlattenPath turns the path's lines and curves into figures of whole-pixel points.
void FlattenPath(const PathData& path, std::vector<PointI>* points,
                 std::vector<PathFigure>* figures) {
  points->clear();
  figures->clear();
  const auto& v = path.vertices;
  std::size_t i = 0;
  while (i < v.size()) {
    const std::uint8_t type = v[i].type & ~PathData::kCloseFigure;
    if (type == PathData::kMoveTo || figures->empty()) {
      figures->push_back(PathFigure{points->size(), 0, false, false});
      points->push_back(PointI{RoundToPixel(v[i].x), RoundToPixel(v[i].y)});
      if (v[i].type & PathData::kCloseFigure) figures->back().closed = true;
      if (type == PathData::kMoveTo) {
        ++i;
        continue;
      }
    }
    PathFigure& fig = figures->back();
    fig.has_segments = true;
    if (type == PathData::kBezierTo && i + 2 < v.size()) {
      const auto& p0 = i > 0 ? v[i - 1] : v[i];
      FlattenCubic(p0.x, p0.y, v[i].x, v[i].y, v[i + 1].x, v[i + 1].y, v[i + 2].x, v[i + 2].y,
                   points);
      if (v[i + 2].type & PathData::kCloseFigure) fig.closed = true;
      i += 3;
      continue;
    }
    AddPoint(points, v[i].x, v[i].y);
    if (v[i].type & PathData::kCloseFigure) fig.closed = true;
    ++i;
  }
  for (std::size_t k = 0; k < figures->size(); ++k) {
    const std::size_t end = k + 1 < figures->size() ? (*figures)[k + 1].first : points->size();
    (*figures)[k].count = static_cast<int>(end - (*figures)[k].first);
  }
}

enum class PathRender { kStroke, kFill, kStrokeAndFill };

BOOL RenderPath(HDC dc, PathRender what) {
  if (dc == nullptr || dc->path.state != PathData::kClosed) return FALSE;
  ScratchArena& scratch = dc->scratch;
  std::vector<PointI>& points = scratch.path_points;
  std::vector<PathFigure>& figures = scratch.path_figures;
  FlattenPath(dc->path, &points, &figures);
  dc->path.Clear();
  // Filling closes every open figure, for the outline of StrokeAndFillPath too.
  if (what == PathRender::kStrokeAndFill) {
    for (PathFigure& f : figures) f.closed = true;
  }
  const IRect clip = ClipBox(*dc);
  if (clip.IsEmpty()) return TRUE;

  const bool fill = what != PathRender::kStroke && dc->brush != nullptr && !dc->brush->IsNull();
  const bool stroke = what != PathRender::kFill && dc->pen != nullptr && !dc->pen->IsNull();
  SpanRegion& interior = scratch.fill_region;
  interior.Clear();
  if (fill) {
    std::vector<PointI>& pts = scratch.path_fill;
    std::vector<int>& counts = scratch.path_counts;
    pts.clear();
    counts.clear();
    for (const PathFigure& f : figures) {
      if (f.count < 2) continue;
      const auto from = points.begin() + static_cast<std::ptrdiff_t>(f.first);
      pts.insert(pts.end(), from, from + f.count);
      counts.push_back(f.count);
    }
    if (!counts.empty()) {
      const FillRule rule =
          dc->poly_fill_mode == WINDING ? FillRule::kWinding : FillRule::kAlternate;
      RegionBuilder& builder = scratch.region_builder;
      dc->scanner.Fill(pts.data(), counts.data(), static_cast<int>(counts.size()), rule, clip,
                       builder);
      builder.Build(&interior);
    }
  }
  if (stroke && dc->pen->IsWide()) {
    PolygonSet& set = scratch.stroke.set;
    set.Clear();
    const StrokeStyle style = StyleOfSelectedPen(*dc);
    for (const PathFigure& f : figures) {
      if (!f.has_segments) continue;
      BuildDashedStroke(points.data() + f.first, f.count, f.closed, style, clip, &set,
                        scratch.stroke);
    }
    RegionBuilder& builder = scratch.region_builder;
    if (!set.counts.empty()) {
      dc->scanner.Fill(set.points.data(), set.counts.data(), static_cast<int>(set.counts.size()),
                       FillRule::kWinding, clip, builder);
    }
    SpanRegion& outline = scratch.outline_region;
    builder.Build(&outline);
    if (fill) {
      SpanRegion::Combine(interior, outline, RegionOp::kDiff, &scratch.inner_region);
      scratch.inner_region.Emit(clip, BrushSink(*dc, dc->brush));
    }
    outline.Emit(clip, PenSink(*dc));
    return TRUE;
  }
  if (fill) interior.Emit(clip, BrushSink(*dc, dc->brush));
  if (stroke) {
    for (const PathFigure& f : figures) {
      if (f.count < 2) continue;
      DrawCosmeticPolyline(*dc, points.data() + f.first, f.count, f.closed);
    }
  }
  return TRUE;
}

}  // namespace

double RayAngle(const Box64& box, PointI p) {
  const double w = static_cast<double>(box.Width());
  const double h = static_cast<double>(box.Height());
  const double x = (p.x - static_cast<double>(box.left)) / w * 2 - 1;
  const double y = (p.y - static_cast<double>(box.top)) / h * 2 - 1;
  if (!(x == x) || !(y == y)) return 0;
  return std::atan2(y, x);
}

bool PathIsOpen(const DeviceContext& dc) { return dc.path.state == PathData::kOpen; }

PointI ArcEndPoint(const Box64& box, PointI ray) {
  const double w = static_cast<double>(box.Width());
  const double h = static_cast<double>(box.Height());
  const double cx = static_cast<double>(box.left) + w / 2;
  const double cy = static_cast<double>(box.top) + h / 2;
  const double a =
      std::atan2(w > 0 && h > 0 ? (ray.y - cy) / h : 0.0, w > 0 && h > 0 ? (ray.x - cx) / w : 0.0);
  return PointI{RoundToPixel(cx + std::cos(a) * w / 2), RoundToPixel(cy + std::sin(a) * h / 2)};
}

void RecordCurve(DeviceContext& dc, const Box64& box, PointI start, PointI end, CurveKind kind) {
  if (box.Width() == 0 || box.Height() == 0) return;
  PathData& path = dc.path;
  const EllipseFrame f = FrameOf(box);
  const bool clockwise = ArcDirectionIsClockwise(dc);
  double a0 = 0;
  double a1 = 0;
  if (kind == CurveKind::kEllipse) {
    // A whole ellipse starts and ends at the middle of its left edge.
    start = end = PointI{static_cast<int>(box.left), static_cast<int>((box.top + box.bottom) / 2)};
  }
  a0 = RayAngle(box, start);
  a1 = RayAngle(box, end);
  // Counter-clockwise on screen is toward smaller angles, y growing downward; equal rays give
  // a full turn.
  if (clockwise) {
    if (a1 <= a0) a1 += 2 * std::numbers::pi;
  } else {
    if (a1 >= a0) a1 -= 2 * std::numbers::pi;
  }
  const double sx = static_cast<double>(RoundToPixel(f.X(a0)));
  const double sy = static_cast<double>(RoundToPixel(f.Y(a0)));
  if (kind == CurveKind::kArcTo) {
    path.LineTo(dc.position.x, dc.position.y, sx, sy);
  } else {
    path.MoveTo(sx, sy);
  }
  AppendArcBeziers(path, f, a0, a1);
  if (kind == CurveKind::kPie) {
    path.vertices.push_back({static_cast<double>(RoundToPixel(f.cx)),
                             static_cast<double>(RoundToPixel(f.cy)), PathData::kLineTo});
  }
  if (kind == CurveKind::kArcTo) {
    dc.position = PointI{RoundToPixel(f.X(a1)), RoundToPixel(f.Y(a1))};
  }
  if (kind == CurveKind::kPie || kind == CurveKind::kChord || kind == CurveKind::kEllipse) {
    path.CloseFigure();
  }
}

BOOL BeginPath(HDC dc) {
  if (dc == nullptr) return FALSE;
  dc->path.Clear();
  dc->path.state = PathData::kOpen;
  return TRUE;
}

BOOL EndPath(HDC dc) {
  if (dc == nullptr || dc->path.state != PathData::kOpen) return FALSE;
  dc->path.state = PathData::kClosed;
  dc->path.figure_open = false;
  return TRUE;
}

BOOL AbortPath(HDC dc) {
  if (dc == nullptr) return FALSE;
  dc->path.Clear();
  return TRUE;
}

BOOL CloseFigure(HDC dc) {
  if (dc == nullptr || dc->path.state != PathData::kOpen) return FALSE;
  dc->path.CloseFigure();
  return TRUE;
}

BOOL StrokePath(HDC dc) { return RenderPath(dc, PathRender::kStroke); }
BOOL FillPath(HDC dc) { return RenderPath(dc, PathRender::kFill); }
BOOL StrokeAndFillPath(HDC dc) { return RenderPath(dc, PathRender::kStrokeAndFill); }

}  // namespace qvis::gdi
