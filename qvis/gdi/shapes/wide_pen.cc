// Geometric pen stroker. Pixel centres sit on integer coordinates; a pen of width w covers the
// band w/2 to each side of the centre line, so an even width gets its extra pixel on the side
// of the smaller coordinate (the scan converter takes centres on left and top edges).
// Owner: gdishapes.
#include "qvis/gdi/shapes/wide_pen.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "qvis/gdi/dc.h"
#include "qvis/gdi/raster/wide_pen_hook.h"
#include "qvis/gdi/shapes/ellipse_geom.h"

namespace qvis::gdi {
namespace {

// Largest fixed-point coordinate kept; far beyond any clip box, small enough that the scan
// converter's products stay inside 128 bits.
constexpr double kFxLimit = 4.0e15;

std::int64_t ToFixed(double v) {
  const double f = std::round(v * static_cast<double>(kFixOne));
  if (!(f > -kFxLimit)) return static_cast<std::int64_t>(-kFxLimit);  // also NaN
  if (f > kFxLimit) return static_cast<std::int64_t>(kFxLimit);
  return static_cast<std::int64_t>(f);
}

PointFx Fx(double x, double y) { return PointFx{ToFixed(x), ToFixed(y)}; }

// Twice the signed area in fixed point squared (as double: only the sign is used).
double SignedArea(const PointFx* p, int n) {
  double a = 0;
  for (int i = 0; i < n; ++i) {
    const PointFx& u = p[i];
    const PointFx& v = p[(i + 1) % n];
    a += static_cast<double>(u.x) * static_cast<double>(v.y) -
         static_cast<double>(v.x) * static_cast<double>(u.y);
  }
  return a;
}

struct Vec {
  double x = 0;
  double y = 0;
};

// A disc polygon for pens too wide to step: the circle through the dot's outer pixel edges.
void AddBigDisc(PointI c, std::int64_t width, PolygonSet* out) {
  constexpr int kSides = 4096;
  const double r = static_cast<double>(width) / 2.0;
  const double cx = static_cast<double>(c.x) - static_cast<double>(width / 2) + r - 0.5;
  const double cy = static_cast<double>(c.y) - static_cast<double>(width / 2) + r - 0.5;
  std::vector<PointFx> pts(kSides);
  for (int i = 0; i < kSides; ++i) {
    const double a = 2.0 * std::numbers::pi * i / kSides;
    pts[static_cast<std::size_t>(i)] = Fx(cx + r * std::cos(a), cy + r * std::sin(a));
  }
  out->Add(pts.data(), kSides);
}

}  // namespace

void PolygonSet::Add(const PointFx* p, int n) {
  if (n < 3) return;
  const double area = SignedArea(p, n);
  if (area == 0) return;
  const std::size_t start = points.size();
  points.insert(points.end(), p, p + n);
  if (area < 0) std::reverse(points.begin() + static_cast<std::ptrdiff_t>(start), points.end());
  counts.push_back(n);
}

void AddRoundDot(PointI c, std::int64_t width, const IRect& rows, PolygonSet* out) {
  if (width < 1) return;
  const std::int64_t left = static_cast<std::int64_t>(c.x) - width / 2;
  const std::int64_t top = static_cast<std::int64_t>(c.y) - width / 2;
  if (width > kMaxSteppedEllipse) {
    AddBigDisc(c, width, out);
    return;
  }
  // The dot is the elliptic region of the box one pixel larger than the dot (regions leave
  // out the right and bottom edges).
  std::vector<std::int64_t> lo;
  std::vector<std::int64_t> hi;
  const std::int64_t n =
      RoundRectRows(Box64{left, top, left + width + 1, top + width + 1}, width + 1, width + 1,
                    &lo, &hi);
  // Staircase polygon over the rows inside the clip: down the right ends, up the left ends,
  // edges on the half-pixel lines so that sampling at pixel centres gives back the rows.
  const std::int64_t r0 = std::max<std::int64_t>(0, std::int64_t{rows.top} - 1 - top);
  const std::int64_t r1 = std::min<std::int64_t>(n, std::int64_t{rows.bottom} + 1 - top);
  std::vector<PointFx> pts;
  for (std::int64_t r = r0; r < r1; ++r) {
    if (lo[static_cast<std::size_t>(r)] >= hi[static_cast<std::size_t>(r)]) continue;
    const double y = static_cast<double>(top + r);
    const double x = static_cast<double>(hi[static_cast<std::size_t>(r)]) - 0.5;
    pts.push_back(Fx(x, y - 0.5));
    pts.push_back(Fx(x, y + 0.5));
  }
  for (std::int64_t r = r1 - 1; r >= r0; --r) {
    if (lo[static_cast<std::size_t>(r)] >= hi[static_cast<std::size_t>(r)]) continue;
    const double y = static_cast<double>(top + r);
    const double x = static_cast<double>(lo[static_cast<std::size_t>(r)]) - 0.5;
    pts.push_back(Fx(x, y + 0.5));
    pts.push_back(Fx(x, y - 0.5));
  }
  out->Add(pts.data(), static_cast<int>(pts.size()));
}

void BuildStroke(const PointI* points, int count, bool closed, const StrokeStyle& style,
                 const IRect& clip, PolygonSet* out) {
  if (count < 1 || points == nullptr) return;
  std::vector<PointI> v;
  v.reserve(static_cast<std::size_t>(count));
  for (int i = 0; i < count; ++i) {
    if (v.empty() || v.back() != points[i]) v.push_back(points[i]);
  }
  if (closed) {
    while (v.size() > 1 && v.back() == v.front()) v.pop_back();
  }
  const std::int64_t width = std::max<std::int64_t>(1, style.width);
  if (v.size() == 1) {
    if (style.cap == CapStyle::kRound) AddRoundDot(v[0], width, clip, out);
    return;
  }
  const double hw = static_cast<double>(width) / 2.0;
  const int n = static_cast<int>(v.size());
  const int segments = closed ? n : n - 1;
  auto dir = [&](int i) {
    const PointI& a = v[static_cast<std::size_t>(i)];
    const PointI& b = v[static_cast<std::size_t>((i + 1) % n)];
    const double dx = static_cast<double>(b.x) - a.x;
    const double dy = static_cast<double>(b.y) - a.y;
    const double len = std::hypot(dx, dy);
    return Vec{dx / len, dy / len};
  };
  // Segment bodies, with square caps stretched over the open ends.
  for (int i = 0; i < segments; ++i) {
    const PointI& a = v[static_cast<std::size_t>(i)];
    const PointI& b = v[static_cast<std::size_t>((i + 1) % n)];
    const Vec d = dir(i);
    const Vec nrm{-d.y, d.x};
    double ax = a.x;
    double ay = a.y;
    double bx = b.x;
    double by = b.y;
    if (!closed && style.cap == CapStyle::kSquare) {
      if (i == 0) {
        ax -= d.x * hw;
        ay -= d.y * hw;
      }
      if (i == segments - 1) {
        bx += d.x * hw;
        by += d.y * hw;
      }
    }
    const PointFx quad[4] = {Fx(ax + nrm.x * hw, ay + nrm.y * hw),
                             Fx(bx + nrm.x * hw, by + nrm.y * hw),
                             Fx(bx - nrm.x * hw, by - nrm.y * hw),
                             Fx(ax - nrm.x * hw, ay - nrm.y * hw)};
    out->Add(quad, 4);
  }
  // Round caps.
  if (!closed && style.cap == CapStyle::kRound) {
    AddRoundDot(v.front(), width, clip, out);
    AddRoundDot(v.back(), width, clip, out);
  }
  // Joins between consecutive segments.
  const int first_join = closed ? 0 : 1;
  const int last_join = closed ? n - 1 : n - 2;
  for (int j = first_join; j <= last_join; ++j) {
    const int in_seg = (j - 1 + n) % n;
    const int out_seg = j;
    const PointI& c = v[static_cast<std::size_t>(j)];
    if (style.join == JoinStyle::kRound) {
      AddRoundDot(c, width, clip, out);
      continue;
    }
    const Vec d1 = dir(in_seg);
    const Vec d2 = dir(out_seg);
    const double cross = d1.x * d2.y - d1.y * d2.x;
    if (cross == 0) continue;  // straight on (or straight back: nothing to fill)
    // The outer corner lies against the turn.
    const double s = cross > 0 ? -1.0 : 1.0;
    const Vec n1{-d1.y * s, d1.x * s};
    const Vec n2{-d2.y * s, d2.x * s};
    const double cx = c.x;
    const double cy = c.y;
    const PointFx p1 = Fx(cx + n1.x * hw, cy + n1.y * hw);
    const PointFx p2 = Fx(cx + n2.x * hw, cy + n2.y * hw);
    const double cosang = n1.x * n2.x + n1.y * n2.y;
    bool miter = style.join == JoinStyle::kMiter && cosang > -1.0;
    double mx = 0;
    double my = 0;
    if (miter) {
      // The miter tip: where the two outer edges meet, hw / cos(turn / 2) from the vertex.
      const double k = hw / (1.0 + cosang);
      mx = cx + (n1.x + n2.x) * k;
      my = cy + (n1.y + n2.y) * k;
      const double ratio = std::hypot(mx - cx, my - cy) / hw;
      miter = ratio <= style.miter_limit;
    }
    if (miter) {
      const PointFx quad[4] = {Fx(cx, cy), p1, Fx(mx, my), p2};
      out->Add(quad, 4);
    } else {
      const PointFx tri[3] = {Fx(cx, cy), p1, p2};
      out->Add(tri, 3);
    }
  }
}

StrokeStyle StyleOfSelectedPen(const DeviceContext& dc) {
  StrokeStyle st;
  if (dc.pen == nullptr) return st;
  st.width = std::max(1, dc.pen->width);
  switch (dc.pen->end_cap & 0xF00u) {
    case 0x100u:
      st.cap = CapStyle::kSquare;
      break;
    case 0x200u:
      st.cap = CapStyle::kFlat;
      break;
    default:
      st.cap = CapStyle::kRound;
      break;
  }
  switch (dc.pen->join & 0xF000u) {
    case 0x1000u:
      st.join = JoinStyle::kBevel;
      break;
    case 0x2000u:
      st.join = JoinStyle::kMiter;
      break;
    default:
      st.join = JoinStyle::kRound;
      break;
  }
  st.miter_limit = std::max(1.0, static_cast<double>(dc.miter_limit));
  return st;
}

namespace {

PolygonSet& Scratch() {
  static thread_local PolygonSet set;
  set.Clear();
  return set;
}

}  // namespace

SpanRegion WideOutlineRegion(DeviceContext& dc, const PointI* points, int count, bool closed) {
  const IRect clip = ClipBox(dc);
  PolygonSet& set = Scratch();
  BuildStroke(points, count, closed, StyleOfSelectedPen(dc), clip, &set);
  RegionBuilder builder;
  if (!clip.IsEmpty() && !set.counts.empty()) {
    dc.scanner.Fill(set.points.data(), set.counts.data(), static_cast<int>(set.counts.size()),
                    FillRule::kWinding, clip, builder);
  }
  return builder.Build();
}

void StrokeWide(DeviceContext& dc, const PointI* points, int count, bool closed) {
  if (dc.pen == nullptr || dc.pen->IsNull() || count < 1) return;
  const IRect clip = ClipBox(dc);
  if (clip.IsEmpty()) return;
  PolygonSet& set = Scratch();
  BuildStroke(points, count, closed, StyleOfSelectedPen(dc), clip, &set);
  if (set.counts.empty()) return;
  dc.scanner.Fill(set.points.data(), set.counts.data(), static_cast<int>(set.counts.size()),
                  FillRule::kWinding, clip, PenSink(dc));
}

}  // namespace qvis::gdi
