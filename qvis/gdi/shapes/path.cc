// Paths: recording brackets, curved figures recorded as Bezier pieces, and rendering. A closed
// path is flattened to integer points figure by figure; filling uses the DC's fill mode over all
// figures at once, stroking draws each figure as a polyline (closed figures closed) with the
// selected pen.
// Owner: gdishapes.
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

// Angle of the ray from the centre through p, measured on the circle the ellipse is a stretched
// copy of (y grows downward).
double RayAngle(const EllipseFrame& f, PointI p) {
  const double dx = f.rx > 0 ? (p.x - f.cx) / f.rx : 0.0;
  const double dy = f.ry > 0 ? (p.y - f.cy) / f.ry : 0.0;
  if (dx == 0 && dy == 0) return 0;
  return std::atan2(dy, dx);
}

// Appends the arc from angle a0 to a1 (either way round) as Bezier pieces of at most a quarter
// turn, with their points rounded to pixels as a path keeps them.
void AppendArcBeziers(PathData& path, const EllipseFrame& f, double a0, double a1) {
  const double sweep = a1 - a0;
  const int pieces = std::max(1, static_cast<int>(std::ceil(std::fabs(sweep) /
                                                            (std::numbers::pi / 2) - 1e-9)));
  const double step = sweep / pieces;
  const double k = 4.0 / 3.0 * std::tan(step / 4);
  for (int i = 0; i < pieces; ++i) {
    const double s = a0 + step * i;
    const double e = s + step;
    const double c1x = f.X(s) - k * f.rx * std::sin(s);
    const double c1y = f.Y(s) + k * f.ry * std::cos(s);
    const double c2x = f.X(e) + k * f.rx * std::sin(e);
    const double c2y = f.Y(e) - k * f.ry * std::cos(e);
    path.vertices.push_back({static_cast<double>(RoundToPixel(c1x)),
                             static_cast<double>(RoundToPixel(c1y)), PathData::kBezierTo});
    path.vertices.push_back({static_cast<double>(RoundToPixel(c2x)),
                             static_cast<double>(RoundToPixel(c2y)), PathData::kBezierTo});
    path.vertices.push_back({static_cast<double>(RoundToPixel(f.X(e))),
                             static_cast<double>(RoundToPixel(f.Y(e))), PathData::kBezierTo});
  }
}

// --- Flattening -----------------------------------------------------------------------------

struct Figure {
  std::vector<PointI> points;
  bool closed = false;
};

void AddPoint(std::vector<PointI>* pts, double x, double y) {
  const PointI p{RoundToPixel(x), RoundToPixel(y)};
  if (pts->empty() || pts->back() != p) pts->push_back(p);
}

// Flattens one cubic piece by recursive halving until it is within a quarter pixel of its
// chord (depth-limited, so even absurd coordinates finish).
void FlattenCubic(double x0, double y0, double x1, double y1, double x2, double y2, double x3,
                  double y3, int depth, std::vector<PointI>* pts) {
  const double dx = x3 - x0;
  const double dy = y3 - y0;
  const double len = std::hypot(dx, dy);
  double d1;
  double d2;
  if (len > 1e-9) {
    d1 = std::fabs((x1 - x0) * dy - (y1 - y0) * dx) / len;
    d2 = std::fabs((x2 - x0) * dy - (y2 - y0) * dx) / len;
  } else {
    d1 = std::hypot(x1 - x0, y1 - y0);
    d2 = std::hypot(x2 - x0, y2 - y0);
  }
  if (depth >= 16 || std::max(d1, d2) <= 0.25 || !(d1 == d1 && d2 == d2)) {
    AddPoint(pts, x3, y3);
    return;
  }
  const double ax = (x0 + x1) / 2, ay = (y0 + y1) / 2;
  const double bx = (x1 + x2) / 2, by = (y1 + y2) / 2;
  const double cx = (x2 + x3) / 2, cy = (y2 + y3) / 2;
  const double abx = (ax + bx) / 2, aby = (ay + by) / 2;
  const double bcx = (bx + cx) / 2, bcy = (by + cy) / 2;
  const double mx = (abx + bcx) / 2, my = (aby + bcy) / 2;
  FlattenCubic(x0, y0, ax, ay, abx, aby, mx, my, depth + 1, pts);
  FlattenCubic(mx, my, bcx, bcy, cx, cy, x3, y3, depth + 1, pts);
}

std::vector<Figure> FlattenPath(const PathData& path) {
  std::vector<Figure> figures;
  const auto& v = path.vertices;
  std::size_t i = 0;
  while (i < v.size()) {
    const std::uint8_t type = v[i].type & ~PathData::kCloseFigure;
    if (type == PathData::kMoveTo || figures.empty()) {
      figures.emplace_back();
      AddPoint(&figures.back().points, v[i].x, v[i].y);
      if (v[i].type & PathData::kCloseFigure) figures.back().closed = true;
      if (type == PathData::kMoveTo) {
        ++i;
        continue;
      }
    }
    Figure& fig = figures.back();
    if (type == PathData::kBezierTo && i + 2 < v.size()) {
      const auto& p0 = i > 0 ? v[i - 1] : v[i];
      FlattenCubic(p0.x, p0.y, v[i].x, v[i].y, v[i + 1].x, v[i + 1].y, v[i + 2].x, v[i + 2].y,
                   0, &fig.points);
      if (v[i + 2].type & PathData::kCloseFigure) fig.closed = true;
      i += 3;
      continue;
    }
    AddPoint(&fig.points, v[i].x, v[i].y);
    if (v[i].type & PathData::kCloseFigure) fig.closed = true;
    ++i;
  }
  return figures;
}

enum class PathRender { kStroke, kFill, kStrokeAndFill };

BOOL RenderPath(HDC dc, PathRender what) {
  if (dc == nullptr || dc->path.state != PathData::kClosed) return FALSE;
  const std::vector<Figure> figures = FlattenPath(dc->path);
  dc->path.Clear();
  const IRect clip = ClipBox(*dc);
  if (clip.IsEmpty()) return TRUE;

  const bool fill = what != PathRender::kStroke && dc->brush != nullptr && !dc->brush->IsNull();
  const bool stroke = what != PathRender::kFill && dc->pen != nullptr && !dc->pen->IsNull();
  SpanRegion interior;
  if (fill) {
    std::vector<PointI> pts;
    std::vector<int> counts;
    for (const Figure& f : figures) {
      if (f.points.size() < 2) continue;
      pts.insert(pts.end(), f.points.begin(), f.points.end());
      counts.push_back(static_cast<int>(f.points.size()));
    }
    if (!counts.empty()) {
      const FillRule rule = dc->poly_fill_mode == WINDING ? FillRule::kWinding
                                                          : FillRule::kAlternate;
      RegionBuilder builder;
      dc->scanner.Fill(pts.data(), counts.data(), static_cast<int>(counts.size()), rule, clip,
                       builder);
      interior = builder.Build();
    }
  }
  if (stroke && dc->pen->IsWide()) {
    PolygonSet set;
    const StrokeStyle style = StyleOfSelectedPen(*dc);
    for (const Figure& f : figures) {
      BuildStroke(f.points.data(), static_cast<int>(f.points.size()), f.closed, style, clip,
                  &set);
    }
    RegionBuilder builder;
    if (!set.counts.empty()) {
      dc->scanner.Fill(set.points.data(), set.counts.data(), static_cast<int>(set.counts.size()),
                       FillRule::kWinding, clip, builder);
    }
    const SpanRegion outline = builder.Build();
    if (fill) {
      SpanRegion::Combine(interior, outline, RegionOp::kDiff).Emit(clip, BrushSink(*dc, dc->brush));
    }
    outline.Emit(clip, PenSink(*dc));
    return TRUE;
  }
  if (fill) interior.Emit(clip, BrushSink(*dc, dc->brush));
  if (stroke) {
    for (const Figure& f : figures) {
      if (f.points.size() < 2) continue;
      DrawCosmeticPolyline(*dc, f.points.data(), static_cast<int>(f.points.size()), f.closed);
    }
  }
  return TRUE;
}

}  // namespace

bool PathIsOpen(const DeviceContext& dc) { return dc.path.state == PathData::kOpen; }

PointI ArcEndPoint(const Box64& box, PointI ray) {
  const double w = static_cast<double>(box.Width());
  const double h = static_cast<double>(box.Height());
  const double cx = static_cast<double>(box.left) + w / 2;
  const double cy = static_cast<double>(box.top) + h / 2;
  const double a = std::atan2(w > 0 && h > 0 ? (ray.y - cy) / h : 0.0,
                              w > 0 && h > 0 ? (ray.x - cx) / w : 0.0);
  return PointI{RoundToPixel(cx + std::cos(a) * w / 2), RoundToPixel(cy + std::sin(a) * h / 2)};
}

void RecordCurve(DeviceContext& dc, const Box64& box, PointI start, PointI end,
                 CurveKind kind) {
  if (box.Width() == 0 || box.Height() == 0) return;
  PathData& path = dc.path;
  const EllipseFrame f = FrameOf(box);
  const bool clockwise = ArcDirectionIsClockwise(dc);
  double a0 = 0;
  double a1 = 0;
  if (kind != CurveKind::kEllipse) {
    a0 = RayAngle(f, start);
    a1 = RayAngle(f, end);
  }
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
