// Alpha drawing: fills and round-capped strokes blended source-over. A stroke wider than a pixel
// is widened into outline polygons (round caps as Bezier half discs, corners joined straight),
// snapped to whole pixels and filled by winding, so each pixel is blended once; a thinner one is
// drawn as thin lines.
#include "qvis/gdi/alpha.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <vector>

#include "qvis/compat/win32_names.h"
#include "qvis/gdi/dc.h"
#include "qvis/gdi/gdi.h"
#include "qvis/gdi/raster/line.h"
#include "qvis/gdi/shapes/path_record.h"
#include "qvis/gdi/shapes/wide_pen.h"

namespace qvis::gdi {
namespace {

// Points of a stroke's centre line, kept in the DC's scratch between calls.
using Vec = Point2;

// Coordinates beyond this are far outside any bitmap; clamping keeps the fixed-point
// conversion exact and the scan converter's arithmetic in range.
constexpr double kCoordLimit = 1.0e12;

// Single precision, as the reference keeps its points: the angles, the piece ends and the
// points of an arc are rounded to float where it rounds them. The last bit decides the pixel
// where a point lands on a whole or half pixel (an arc ending on an axis, an ellipse closing
// at a little past a full turn). The value passes through memory: a vectorising optimiser
// (g++ 12 at -O2) was seen to drop a plain round trip through float. A value beyond the float
// range (or NaN) is returned as it is.
double Single(double v) {
  if (!(std::fabs(v) <= static_cast<double>(std::numeric_limits<float>::max()))) return v;
  volatile float f = static_cast<float>(v);
  return f;
}

SpanSink& AlphaSink(DeviceContext& dc, std::uint32_t argb) {
  FillSource src;
  src.kind = FillSource::Kind::kArgb;
  src.argb = argb;
  return SourceSink(dc, src, dc.rop2);
}

// The widened outline of a stroke too wide for a thin line, built as the reference widens a
// path: an open figure is one closed outline (the start cap, one side through every corner, the
// end cap, the other side back); a closed one is two, one per side, filled by winding into a
// ring. A round cap is a half disc of two quarter-turn Bezier pieces (handles 0.5523 of the half
// width, the length that makes a quarter of a circle). Every point is rounded to whole pixels
// and the pieces are flattened as a path flattens its curves.
class OutlineBuilder {
 public:
  OutlineBuilder(double width, PolygonSet* out) : hw_(width / 2.0), out_(out) {}

  void Open(const std::vector<Vec>& v) {
    const std::size_t n = v.size();
    Begin();
    Cap(v[0], v[1]);
    for (std::size_t i = 1; i + 1 < n; ++i) Joint(v[i - 1], v[i], v[i + 1]);
    Cap(v[n - 1], v[n - 2]);
    for (std::size_t i = n - 2; i >= 1; --i) Joint(v[i + 1], v[i], v[i - 1]);
    End();
  }

  void Closed(const std::vector<Vec>& v) {
    const std::size_t n = v.size();
    Begin();
    for (std::size_t i = 0; i < n; ++i) Joint(v[(i + n - 1) % n], v[i], v[(i + 1) % n]);
    End();
    Begin();
    for (std::size_t i = n; i-- > 0;) Joint(v[(i + 1) % n], v[i], v[(i + n - 1) % n]);
    End();
  }

 private:
  static constexpr double kHandle = 0.5522847498307935;  // 4/3 (sqrt 2 - 1)

  // Offset of the half width to the right of the walk from `from` towards `to`.
  Vec Side(Vec from, Vec to) const {
    const double dx = Single(to.x - from.x);
    const double dy = Single(to.y - from.y);
    const double len = Single(std::sqrt(Single(Single(dx * dx) + Single(dy * dy))));
    if (!(len > 0)) return Vec{0, 0};
    return Vec{Single(Single(dy / len) * hw_), Single(Single(-dx / len) * hw_)};
  }

  // Nearest whole pixel, halves upward, kept far inside the fixed-point range.
  static double Whole(double v) {
    if (!(v == v)) return 0;
    return std::clamp(std::floor(v + 0.5), -kCoordLimit, kCoordLimit);
  }

  void LineTo(Vec p) {
    const PointFx q{static_cast<std::int64_t>(Whole(p.x)) * kFixOne,
                    static_cast<std::int64_t>(Whole(p.y)) * kFixOne};
    if (out_->points.size() == first_ || out_->points.back() != q) out_->points.push_back(q);
  }

  void CurveTo(Vec p0, Vec p1, Vec p2, Vec p3) {
    LineTo(p0);
    FlattenCubic(Whole(p0.x), Whole(p0.y), Whole(p1.x), Whole(p1.y), Whole(p2.x), Whole(p2.y),
                 Whole(p3.x), Whole(p3.y), &out_->points);
  }

  // The round cap around the end `c` of the segment towards `next`: from the left of the walk
  // into the line, round the tip, to its right.
  void Cap(Vec c, Vec next) {
    const Vec r = Side(c, next);
    const Vec l{-r.x, -r.y};
    const Vec d{r.y, -r.x};  // out of the line, half width long
    auto at = [&](Vec u, double su, Vec w, double sw) {
      return Vec{c.x + u.x * su + w.x * sw, c.y + u.y * su + w.y * sw};
    };
    CurveTo(at(l, 1, d, 0), at(l, 1, d, kHandle), at(d, 1, l, kHandle), at(d, 1, l, 0));
    CurveTo(at(d, 1, l, 0), at(d, 1, r, kHandle), at(r, 1, d, kHandle), at(r, 1, d, 0));
  }

  // The corner at p2 between the segments from p1 and to p3, on the right of the walk: the
  // ends of the two sides, joined straight.
  void Joint(Vec p1, Vec p2, Vec p3) {
    const Vec a = Side(p1, p2);
    const Vec b = Side(p2, p3);
    LineTo(Vec{Single(p2.x + a.x), Single(p2.y + a.y)});
    LineTo(Vec{Single(p2.x + b.x), Single(p2.y + b.y)});
  }

  void Begin() { first_ = out_->points.size(); }

  // Closes the figure; one that collapsed to fewer than three points is dropped.
  void End() {
    std::vector<PointFx>& p = out_->points;
    if (p.size() > first_ + 1 && p.back() == p[first_]) p.pop_back();
    const std::size_t n = p.size() - first_;
    if (n < 3) {
      p.resize(first_);
      return;
    }
    out_->counts.push_back(static_cast<int>(n));
  }

  double hw_;
  PolygonSet* out_;
  std::size_t first_ = 0;
};

// Pens up to this width draw thin lines; from the next float up they are widened. The reference
// turns at the square root of 2 (measured: 1.41424 is thin, 1.41425 wide), so a pen of 1.25 px
// draws the one-pixel line, not a ragged outline of its own.
constexpr double kThinWidthLimit = 1.41424;

bool UsableWidth(float w) { return std::isfinite(w) && w > 0; }

// Curve flattening. An ellipse or arc is first made of cubic Bezier pieces of at most a quarter
// turn each (the handle length 4/3 tan(quarter of the piece's angle) times the radius), then each
// piece is halved (de Casteljau) until the curve's midpoint lies within kFlatness of the piece's
// chord. The pictures this must match come from that coarse polyline: a 60 x 40 ellipse is 20
// straight pieces, not a smooth curve, so a finer flattening would move whole runs of pixels.
constexpr double kFlatness = 0.5;
constexpr int kMaxHalvings = 10;

// Halving in single precision, as the points are kept.
Vec Mid(Vec a, Vec b) { return Vec{Single((a.x + b.x) / 2), Single((a.y + b.y) / 2)}; }

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
// ends included. An angle names the point where its ray from the centre meets the ellipse; one
// on an axis is kept as it is.
std::vector<Vec>& EllipseArcPoints(double x, double y, double w, double h, double start,
                                   double sweep, std::vector<Vec>& pts) {
  pts.clear();
  const double rx = Single(w / 2.0);
  const double ry = Single(h / 2.0);
  const double cx = Single(x + rx);
  const double cy = Single(y + ry);
  if (!(std::fabs(sweep) < 1e7)) sweep = sweep > 0 ? 360.0 : -360.0;  // also NaN
  sweep = std::clamp(sweep, -360.0, 360.0);
  if (!std::isfinite(start)) start = 0;
  start = std::fmod(start, 360.0);
  const double pi = std::numbers::pi;
  auto param = [&](double angle_deg) {
    const double a = Single(angle_deg * pi / 180.0);
    const double c = std::cos(a);
    const double s = std::sin(a);
    if (std::fabs(c) < 1e-5 || std::fabs(s) < 1e-5) return a;
    double t = std::atan2(s / ry, c / rx);
    // The same turn as the angle itself.
    while (t - a > pi) t -= 2 * pi;
    while (a - t > pi) t += 2 * pi;
    return Single(t);
  };
  const double t0 = param(start);
  double t1 = param(start + sweep);
  // Keep the parameter running the same way and as far round as the sweep.
  if (sweep > 0) {
    for (int guard = 0; guard < 4 && t1 <= t0; ++guard) t1 = Single(t1 + 2 * pi);
    if (sweep >= 360.0) t1 = Single(t0 + 2 * pi);
  } else if (sweep < 0) {
    for (int guard = 0; guard < 4 && t1 >= t0; ++guard) t1 = Single(t1 - 2 * pi);
    if (sweep <= -360.0) t1 = Single(t0 - 2 * pi);
  } else {
    t1 = t0;
  }
  auto at = [&](double t) {
    return Vec{Single(cx + rx * std::cos(t)), Single(cy + ry * std::sin(t))};
  };
  // Whole quarter turns of the parameter from the start, then what is left: the pieces begin at
  // the arc's start, not where the ellipse crosses an axis, and are not evened out. The turns
  // are added in single precision and a sliver left over is a piece of its own, as short as it
  // is (a half turn from an axis ends in one).
  const double quarter = pi / 2;
  const double dir = t1 >= t0 ? 1.0 : -1.0;
  double a = t0;
  for (int guard = 0; guard < 8 && dir * (t1 - a) > 0; ++guard) {
    double b = Single(a + dir * quarter);
    if (dir * (b - t1) >= 0) b = t1;
    const double handle = 4.0 / 3.0 * std::tan((b - a) / 4);
    const Vec p0 = at(a);
    const Vec p3 = at(b);
    const Vec p1{Single(p0.x - handle * rx * std::sin(a)),
                 Single(p0.y + handle * ry * std::cos(a))};
    const Vec p2{Single(p3.x + handle * rx * std::sin(b)),
                 Single(p3.y - handle * ry * std::cos(b))};
    FlattenBezier(p0, p1, p2, p3, 0, &pts);
    a = b;
  }
  pts.push_back(at(t1));
  return pts;
}

// A pen up to the square root of 2 pixels wide draws a thin line. Its major axis is the one
// along which the whole pixels holding its ends lie further apart (x on a tie); a piece whose
// ends lie in one pixel draws nothing. Along the major axis it takes every whole position
// between the ends (an end on a whole position included) and rounds the other coordinate half
// up, interpolated in single precision. Each pixel is blended once even where segments meet or
// cross.
void AddThinSegment(Vec a, Vec b, const IRect& clip, SpanBatch* batch) {
  const double pixel_dx = std::floor(b.x) - std::floor(a.x);
  const double pixel_dy = std::floor(b.y) - std::floor(a.y);
  if (pixel_dx == 0 && pixel_dy == 0) return;
  const bool x_major = std::fabs(pixel_dx) >= std::fabs(pixel_dy);
  const double a_major = x_major ? a.x : a.y;
  const double b_major = x_major ? b.x : b.y;
  const double a_minor = x_major ? a.y : a.x;
  const double d_major = Single(b_major - a_major);
  const double d_minor = Single(x_major ? b.y - a.y : b.x - a.x);
  const double slope = Single(d_minor / d_major);  // the major span crosses a pixel boundary
  double lo = std::ceil(std::min(a_major, b_major));
  double hi = std::floor(std::max(a_major, b_major));
  // Only the positions that can land in the clip box are visited.
  lo = std::max(lo, static_cast<double>(x_major ? clip.left : clip.top));
  hi = std::min(hi, static_cast<double>(x_major ? clip.right : clip.bottom) - 1);
  for (double m = lo; m <= hi; m += 1) {
    const double step = Single(Single(m - a_major) * slope);
    const double minor = std::floor(Single(a_minor + step) + 0.5);
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
                    double width) {
  const IRect clip = ClipBox(*dc);
  if (clip.IsEmpty() || pts.size() < 2) return TRUE;
  if (width <= kThinWidthLimit) {
    BlendThinPolyline(*dc, argb, pts, closed, clip);
    return TRUE;
  }
  PolygonSet& set = dc->scratch.stroke.set;
  set.Clear();
  OutlineBuilder outline(width, &set);
  if (closed) {
    outline.Closed(pts);
  } else {
    outline.Open(pts);
  }
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
  return StrokeAndBlend(dc, argb, pts, false, width);
}

BOOL GpDrawEllipse(HDC dc, std::uint32_t argb, float pen_width, int x, int y, int width,
                   int height) {
  if (dc == nullptr) return FALSE;
  if (!UsableWidth(pen_width) || width == 0 || height == 0) return TRUE;
  std::vector<Vec>& pts = EllipseArcPoints(x, y, width, height, 0, 360, dc->scratch.alpha_points);
  // The closing point repeats the first and is kept: the reference widens that empty last piece
  // too, which pinches one side of the outline to the centre line where the ellipse starts.
  return StrokeAndBlend(dc, argb, pts, true, pen_width);
}

BOOL GpDrawArc(HDC dc, std::uint32_t argb, float pen_width, int x, int y, int width, int height,
               float start, float sweep) {
  if (dc == nullptr) return FALSE;
  if (!UsableWidth(pen_width) || width == 0 || height == 0 || sweep == 0) return TRUE;
  const std::vector<Vec>& pts =
      EllipseArcPoints(x, y, width, height, start, sweep, dc->scratch.alpha_points);
  return StrokeAndBlend(dc, argb, pts, false, pen_width);
}

BOOL GpDrawPie(HDC dc, std::uint32_t argb, float pen_width, int x, int y, int width, int height,
               float start, float sweep) {
  if (dc == nullptr) return FALSE;
  if (!UsableWidth(pen_width) || width == 0 || height == 0) return TRUE;
  std::vector<Vec>& pts =
      EllipseArcPoints(x, y, width, height, start, sweep, dc->scratch.alpha_points);
  pts.push_back(Vec{Single(x + width / 2.0), Single(y + height / 2.0)});
  return StrokeAndBlend(dc, argb, pts, true, pen_width);
}

}  // namespace qvis::gdi
