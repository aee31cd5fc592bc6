// Alpha drawing: fills and round-capped strokes blended source-over. Strokes are the union of
// the segment bodies and a disc at every vertex (round caps and round joins at once), with the
// vertices snapped to whole pixels as the translucent path is filled; the union is filled by
// winding, so each pixel is blended once.
#include "qvis/gdi/alpha.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

#include "qvis/compat/win32_names.h"
#include "qvis/gdi/dc.h"
#include "qvis/gdi/gdi.h"
#include "qvis/gdi/raster/line.h"
#include "qvis/gdi/shapes/wide_pen.h"

namespace qvis::gdi {
namespace {

// Points of a stroke's centre line, kept in the DC's scratch between calls.
using Vec = Point2;

// Coordinates beyond this are far outside any bitmap; clamping keeps the fixed-point
// conversion exact and the scan converter's arithmetic in range.
constexpr double kCoordLimit = 1.0e12;

PointFx SnapFx(double x, double y) {
  auto snap = [](double v) {
    if (!(v == v)) return std::int64_t{0};
    v = std::clamp(std::round(v), -kCoordLimit, kCoordLimit);
    return static_cast<std::int64_t>(v) * kFixOne;
  };
  return PointFx{snap(x), snap(y)};
}

// ExactFx keeps the fractions, for the caps that must not be snapped.
PointFx ExactFx(double x, double y) {
  auto fix = [](double v) {
    if (!(v == v)) return std::int64_t{0};
    v = std::clamp(v, -kCoordLimit, kCoordLimit);
    return static_cast<std::int64_t>(std::round(v * static_cast<double>(kFixOne)));
  };
  return PointFx{fix(x), fix(y)};
}

SpanSink& AlphaSink(DeviceContext& dc, std::uint32_t argb) {
  FillSource src;
  src.kind = FillSource::Kind::kArgb;
  src.argb = argb;
  return SourceSink(dc, src, dc.rop2);
}

// Segments used for a disc of this radius: fine enough that the snapped polygon is the round
// shape, bounded for absurd radii.
int DiscSides(double radius) {
  const double sides = std::ceil(radius * 2.0);
  return static_cast<int>(std::clamp(sides, 8.0, 1024.0));
}

// A disc is snapped to whole pixels like the rest of the outline unless `exact`.
void AddDisc(Vec c, double radius, bool exact, PolygonSet* out, std::vector<PointFx>& pts) {
  const int n = DiscSides(radius);
  pts.clear();
  for (int i = 0; i < n; ++i) {
    const double a = 2.0 * std::numbers::pi * i / n;
    const double px = c.x + radius * std::cos(a);
    const double py = c.y + radius * std::sin(a);
    const PointFx p = exact ? ExactFx(px, py) : SnapFx(px, py);
    if (pts.empty() || pts.back() != p) pts.push_back(p);
  }
  out->Add(pts.data(), static_cast<int>(pts.size()));
}

// Round-capped, round-joined outline of a polyline with real vertices. Every corner of the
// widened outline is snapped to whole pixels before the fill, curves included: that rounding is
// what puts a wide translucent outline one pixel in or out on one side and not the other.
void BuildRoundStroke(const std::vector<Vec>& pts, bool closed, double width, bool curve,
                      PolygonSet* out, std::vector<PointFx>& disc) {
  auto P = [](double x, double y) { return SnapFx(x, y); };
  const double hw = width / 2.0;
  const std::size_t n = pts.size();
  if (n < 2) return;
  const std::size_t segs = closed ? n : n - 1;
  for (std::size_t i = 0; i < segs; ++i) {
    const Vec a = pts[i];
    const Vec b = pts[(i + 1) % n];
    const double dx = b.x - a.x;
    const double dy = b.y - a.y;
    const double len = std::hypot(dx, dy);
    if (!(len > 1e-12)) continue;
    const double nx = -dy / len * hw;
    const double ny = dx / len * hw;
    const PointFx quad[4] = {P(a.x + nx, a.y + ny), P(b.x + nx, b.y + ny), P(b.x - nx, b.y - ny),
                             P(a.x - nx, a.y - ny)};
    out->Add(quad, 4);
  }
  // Snapping the cap of a straight line of 2 or less to whole pixels would square it off; the
  // reference keeps such caps unsnapped. The joins of a flattened curve are snapped at any width.
  const bool exact_discs = !curve && width <= 2.0;
  for (std::size_t i = 0; i < n; ++i) AddDisc(pts[i], hw, exact_discs, out, disc);
}

bool UsableWidth(float w) { return std::isfinite(w) && w > 0; }

// Curve flattening. An ellipse or arc is first made of cubic Bezier pieces of at most a quarter
// turn each (the handle length 4/3 tan(quarter of the piece's angle) times the radius), then each
// piece is halved (de Casteljau) until the curve's midpoint lies within kFlatness of the piece's
// chord. The pictures this must match come from that coarse polyline: a 60 x 40 ellipse is 20
// straight pieces, not a smooth curve, so a finer flattening would move whole runs of pixels.
constexpr double kFlatness = 0.5;
constexpr int kMaxHalvings = 10;

Vec Mid(Vec a, Vec b) { return Vec{(a.x + b.x) / 2, (a.y + b.y) / 2}; }

// Distance of p from the line through a and b (from a when they coincide).
double DistanceFromChord(Vec p, Vec a, Vec b) {
  const double dx = b.x - a.x;
  const double dy = b.y - a.y;
  const double len = std::hypot(dx, dy);
  if (!(len > 0)) return std::hypot(p.x - a.x, p.y - a.y);
  return std::fabs((p.x - a.x) * dy - (p.y - a.y) * dx) / len;
}

// Appends the piece's points but its last one (the next piece or the caller adds that).
void FlattenBezier(Vec p0, Vec p1, Vec p2, Vec p3, int depth, std::vector<Vec>* out) {
  const Vec a = Mid(p0, p1);
  const Vec b = Mid(p1, p2);
  const Vec c = Mid(p2, p3);
  const Vec d = Mid(a, b);
  const Vec e = Mid(b, c);
  const Vec m = Mid(d, e);  // the curve at t = 1/2
  if (depth >= kMaxHalvings || DistanceFromChord(m, p0, p3) <= kFlatness) {
    out->push_back(p0);
    return;
  }
  FlattenBezier(p0, a, d, m, depth + 1, out);
  FlattenBezier(m, e, c, p3, depth + 1, out);
}

// Points of the ellipse in the box from `start` over `sweep` degrees (clockwise on screen), both
// ends included. An angle names the point where its ray from the centre meets the ellipse.
std::vector<Vec>& EllipseArcPoints(double x, double y, double w, double h, double start,
                                   double sweep, std::vector<Vec>& pts) {
  pts.clear();
  const double rx = w / 2.0;
  const double ry = h / 2.0;
  const double cx = x + rx;
  const double cy = y + ry;
  if (!(std::fabs(sweep) < 1e7)) sweep = sweep > 0 ? 360.0 : -360.0;  // also NaN
  sweep = std::clamp(sweep, -360.0, 360.0);
  if (!std::isfinite(start)) start = 0;
  start = std::fmod(start, 360.0);
  const double deg = std::numbers::pi / 180.0;
  auto param = [&](double angle_deg) {
    const double a = angle_deg * deg;
    return std::atan2(rx * std::sin(a), ry * std::cos(a));
  };
  double t0 = param(start);
  double t1 = param(start + sweep);
  // Keep the parameter running the same way and as far round as the sweep.
  if (sweep > 0) {
    while (t1 <= t0) t1 += 2 * std::numbers::pi;
    if (sweep >= 360.0) t1 = t0 + 2 * std::numbers::pi;
  } else if (sweep < 0) {
    while (t1 >= t0) t1 -= 2 * std::numbers::pi;
    if (sweep <= -360.0) t1 = t0 - 2 * std::numbers::pi;
  } else {
    t1 = t0;
  }
  auto at = [&](double t) { return Vec{cx + rx * std::cos(t), cy + ry * std::sin(t)}; };
  // Whole quarter turns of the parameter from the start, then what is left: the pieces begin at
  // the arc's start, not where the ellipse crosses an axis, and are not evened out.
  const double quarter = std::numbers::pi / 2;
  const double dir = t1 >= t0 ? 1.0 : -1.0;
  double a = t0;
  for (int guard = 0; guard < 8 && dir * (t1 - a) > 1e-12; ++guard) {
    double b = a + dir * quarter;
    if (dir * (b - t1) > -1e-9) b = t1;
    const double handle = 4.0 / 3.0 * std::tan((b - a) / 4);
    const Vec p0 = at(a);
    const Vec p3 = at(b);
    const Vec p1{p0.x - handle * rx * std::sin(a), p0.y + handle * ry * std::cos(a)};
    const Vec p2{p3.x + handle * rx * std::sin(b), p3.y - handle * ry * std::cos(b)};
    FlattenBezier(p0, p1, p2, p3, 0, &pts);
    a = b;
  }
  pts.push_back(at(t1));
  return pts;
}

// A pen one pixel wide or thinner draws a thin line: along the major axis every whole position
// that lies between the two ends (an end on a whole position included), the other coordinate
// rounded half up; each pixel is blended once even where segments meet or cross. Flattened
// curves end between pixels, and a position just outside a piece belongs to its neighbour.
void AddThinSegment(Vec a, Vec b, const IRect& clip, SpanBatch* batch) {
  const double dx = b.x - a.x;
  const double dy = b.y - a.y;
  const bool x_major = std::fabs(dx) >= std::fabs(dy);
  const double a_major = x_major ? a.x : a.y;
  const double b_major = x_major ? b.x : b.y;
  const double d_major = x_major ? dx : dy;
  const double a_minor = x_major ? a.y : a.x;
  const double d_minor = x_major ? dy : dx;
  // The slack keeps an end that rounding errors moved off a whole position on it.
  constexpr double kSlack = 1e-9;
  double lo = std::ceil(std::min(a_major, b_major) - kSlack);
  double hi = std::floor(std::max(a_major, b_major) + kSlack);
  // Only the positions that can land in the clip box are visited.
  lo = std::max(lo, static_cast<double>(x_major ? clip.left : clip.top));
  hi = std::min(hi, static_cast<double>(x_major ? clip.right : clip.bottom) - 1);
  for (double m = lo; m <= hi; m += 1) {
    const double t = d_major != 0 ? (m - a_major) / d_major : 0;
    const double minor = std::floor(a_minor + d_minor * std::clamp(t, 0.0, 1.0) + 0.5);
    const double x = x_major ? m : minor;
    const double y = x_major ? minor : m;
    if (x >= clip.left && x < clip.right && y >= clip.top && y < clip.bottom) {
      batch->Add(static_cast<int>(y), static_cast<int>(x), static_cast<int>(x) + 1);
    }
  }
}

void BlendThinPolyline(DeviceContext& dc, std::uint32_t argb, const std::vector<Vec>& pts,
                       bool closed, const IRect& clip) {
  if (pts.size() < 2) return;
  for (const Vec& v : pts) {
    if (!std::isfinite(v.x) || !std::isfinite(v.y)) return;
  }
  RegionBuilder& pixels = dc.scratch.region_builder;
  {
    SpanBatch batch(pixels);
    const std::size_t n = pts.size();
    const std::size_t segments = closed ? n : n - 1;
    for (std::size_t i = 0; i < segments; ++i) {
      AddThinSegment(pts[i], pts[(i + 1) % n], clip, &batch);
    }
  }
  pixels.Build(&dc.scratch.fill_region);
  dc.scratch.fill_region.Emit(clip, AlphaSink(dc, argb));
}

BOOL StrokeAndBlend(HDC dc, std::uint32_t argb, const std::vector<Vec>& pts, bool closed,
                    double width, bool curve) {
  const IRect clip = ClipBox(*dc);
  if (clip.IsEmpty()) return TRUE;
  if (width <= 1.0) {
    BlendThinPolyline(*dc, argb, pts, closed, clip);
    return TRUE;
  }
  PolygonSet& set = dc->scratch.stroke.set;
  set.Clear();
  BuildRoundStroke(pts, closed, width, curve, &set, dc->scratch.alpha_disc);
  if (set.counts.empty()) return TRUE;
  dc->scanner.Fill(set.points.data(), set.counts.data(), static_cast<int>(set.counts.size()),
                   FillRule::kWinding, clip, AlphaSink(*dc, argb));
  return TRUE;
}

}  // namespace

BOOL GpFillPolygon(HDC dc, const CPoint* points, int count, std::uint32_t argb) {
  if (dc == nullptr || points == nullptr || count < 3) return FALSE;
  const IRect clip = ClipBox(*dc);
  if (clip.IsEmpty()) return TRUE;
  std::vector<PointI>& pts = dc->points;
  pts.resize(static_cast<std::size_t>(count));
  for (int i = 0; i < count; ++i)
    pts[static_cast<std::size_t>(i)] = PointI{points[i].x, points[i].y};
  dc->scanner.Fill(pts.data(), &count, 1, FillRule::kAlternate, clip, AlphaSink(*dc, argb));
  return TRUE;
}

BOOL GpFillRect(HDC dc, int x, int y, int width, int height, std::uint32_t argb) {
  if (dc == nullptr) return FALSE;
  if (width <= 0 || height <= 0) return TRUE;
  const std::int64_t r = std::min<std::int64_t>(std::int64_t{x} + width, INT32_MAX);
  const std::int64_t b = std::min<std::int64_t>(std::int64_t{y} + height, INT32_MAX);
  const IRect box = IRect{x, y, static_cast<int>(r), static_cast<int>(b)}.Intersect(ClipBox(*dc));
  if (box.IsEmpty()) return TRUE;
  AlphaSink(*dc, argb).BlitRect(box);
  return TRUE;
}

BOOL GpFillRegion(HDC dc, HRGN region, std::uint32_t argb) {
  if (dc == nullptr) return FALSE;
  const RegionData* rgn = AsRegion(region);
  if (rgn == nullptr) return FALSE;
  const IRect clip = ClipBox(*dc);
  if (clip.IsEmpty()) return TRUE;
  rgn->shape.Emit(clip, AlphaSink(*dc, argb));
  return TRUE;
}

BOOL GpDrawLine(HDC dc, std::uint32_t argb, float width, int x1, int y1, int x2, int y2) {
  if (dc == nullptr) return FALSE;
  if (!UsableWidth(width) || (x1 == x2 && y1 == y2)) return TRUE;
  std::vector<Vec>& pts = dc->scratch.alpha_points;
  pts.assign({Vec{static_cast<double>(x1), static_cast<double>(y1)},
              Vec{static_cast<double>(x2), static_cast<double>(y2)}});
  return StrokeAndBlend(dc, argb, pts, false, width, false);
}

BOOL GpDrawEllipse(HDC dc, std::uint32_t argb, float pen_width, int x, int y, int width,
                   int height) {
  if (dc == nullptr) return FALSE;
  if (!UsableWidth(pen_width) || width == 0 || height == 0) return TRUE;
  std::vector<Vec>& pts = EllipseArcPoints(x, y, width, height, 0, 360, dc->scratch.alpha_points);
  pts.pop_back();  // the closing point repeats the first
  return StrokeAndBlend(dc, argb, pts, true, pen_width, true);
}

BOOL GpDrawArc(HDC dc, std::uint32_t argb, float pen_width, int x, int y, int width, int height,
               float start, float sweep) {
  if (dc == nullptr) return FALSE;
  if (!UsableWidth(pen_width) || width == 0 || height == 0 || sweep == 0) return TRUE;
  const std::vector<Vec>& pts =
      EllipseArcPoints(x, y, width, height, start, sweep, dc->scratch.alpha_points);
  return StrokeAndBlend(dc, argb, pts, false, pen_width, true);
}

BOOL GpDrawPie(HDC dc, std::uint32_t argb, float pen_width, int x, int y, int width, int height,
               float start, float sweep) {
  if (dc == nullptr) return FALSE;
  if (!UsableWidth(pen_width) || width == 0 || height == 0) return TRUE;
  std::vector<Vec>& pts =
      EllipseArcPoints(x, y, width, height, start, sweep, dc->scratch.alpha_points);
  pts.push_back(Vec{x + width / 2.0, y + height / 2.0});
  return StrokeAndBlend(dc, argb, pts, true, pen_width, true);
}

}  // namespace qvis::gdi
