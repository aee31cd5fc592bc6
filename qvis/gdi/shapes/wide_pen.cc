// Geometric pen stroker. Pixel centres sit on integer coordinates; a pen of width w covers the
// band w/2 to each side of the centre line, so an even width gets its extra pixel on the side
// of the smaller coordinate (the scan converter takes centres on left and top edges).
#include "qvis/gdi/shapes/wide_pen.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

#include "qvis/compat/int_math.h"
#include "qvis/gdi/dc.h"
#include "qvis/gdi/raster/wide_pen_hook.h"
#include "qvis/gdi/shapes/curve_flatten.h"
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

// Widest round dot stepped pixel by pixel; wider dots are flattened circles, which costs what
// the clipped part of their edge costs.
constexpr std::int64_t kMaxSteppedDot = 2048;

// A disc polygon for very wide pens: the circle through the dot's outer pixel edges.
void AddBigDisc(PointI c, std::int64_t width, const IRect& clip, PolygonSet* out,
                StrokeScratch& work) {
  const double r = static_cast<double>(width) / 2.0;
  const double cx = static_cast<double>(c.x) - static_cast<double>(width / 2) + r - 0.5;
  const double cy = static_cast<double>(c.y) - static_cast<double>(width / 2) + r - 0.5;
  std::vector<Point2>& pts = work.disc;
  pts.clear();
  FlattenArc(EllipseArc{cx, cy, r, r, 0, 2 * std::numbers::pi}, clip, 0.25, &pts);
  std::vector<PointFx>& fx = work.disc_fx;
  fx.clear();
  for (const Point2& p : pts) fx.push_back(Fx(p.x, p.y));
  out->Add(fx.data(), static_cast<int>(fx.size()));
}

using Body = StrokeBody;

// Nearest integer, halves upward.
std::int64_t RoundHalfUp(double v) { return static_cast<std::int64_t>(std::floor(v + 0.5)); }

// SegmentBody: the corners of the segment a -> b (a != b) for a pen `width` wide. Horizontal and
// vertical segments are the box of whole pixels centred on the line; slanted ones offset both
// ends by the half widths across the line rounded to whole pixels, the larger half on the side of
// larger x. Square caps stretch the ends by half the width along the line.
Body SegmentBodyAlong(PointI a, PointI b, std::int64_t dx, std::int64_t dy, std::int64_t width,
                      bool cap_start, bool cap_end) {
  const std::int64_t ax = a.x, ay = a.y, bx = b.x, by = b.y;
  auto P = [](std::int64_t x, std::int64_t y) { return PointFx{x * kFixOne, y * kFixOne}; };
  Body body;
  if (dy == 0) {
    std::int64_t l = std::min(ax, bx);
    std::int64_t r = std::max(ax, bx);
    const bool capl = dx > 0 ? cap_start : cap_end;
    const bool capr = dx > 0 ? cap_end : cap_start;
    if (capl) l -= width / 2;
    if (capr) r += width / 2;
    const std::int64_t top = ay - width / 2;
    const std::int64_t bottom = top + width;
    const std::int64_t s = dx > 0 ? l : r;
    const std::int64_t e = dx > 0 ? r : l;
    // Walking east the left side is the top one.
    const std::int64_t left_y = dx > 0 ? top : bottom;
    const std::int64_t right_y = dx > 0 ? bottom : top;
    body = Body{P(s, left_y), P(e, left_y), P(e, right_y), P(s, right_y)};
    return body;
  }
  if (dx == 0) {
    std::int64_t t = std::min(ay, by);
    std::int64_t btm = std::max(ay, by);
    const bool capt = dy > 0 ? cap_start : cap_end;
    const bool capb = dy > 0 ? cap_end : cap_start;
    if (capt) t -= width / 2;
    if (capb) btm += width / 2;
    const std::int64_t l = ax - width / 2;
    const std::int64_t r = l + width;
    const std::int64_t s = dy > 0 ? t : btm;
    const std::int64_t e = dy > 0 ? btm : t;
    // Walking south the left side is the east one.
    const std::int64_t left_x = dy > 0 ? r : l;
    const std::int64_t right_x = dy > 0 ? l : r;
    body = Body{P(left_x, s), P(left_x, e), P(right_x, e), P(right_x, s)};
    return body;
  }
  const double len = std::hypot(static_cast<double>(dx), static_cast<double>(dy));
  const double w = static_cast<double>(width);
  const double across_x = w * static_cast<double>(dy < 0 ? -dy : dy) / len;
  const double across_y = w * static_cast<double>(dx < 0 ? -dx : dx) / len;
  const std::int64_t narrow_x = RoundHalfUp(across_x / 2);
  const std::int64_t narrow_y = RoundHalfUp(across_y / 2);
  const std::int64_t wide_x = RoundHalfUp((across_x + 1) / 2);
  const std::int64_t wide_y = RoundHalfUp((across_y + 1) / 2);
  // Signed half widths: the larger half goes to the side of larger x. Square caps move the
  // start corners back and the end corners forward by the halves taken along the line; for
  // segments running up-left this also moves them across the line, as the platform does.
  std::int64_t nx = narrow_x, ny = narrow_y, wx = wide_x, wy = wide_y;
  if (dx < 0) {
    wy = -wy;
    ny = -ny;
  }
  if (dy < 0) {
    std::swap(nx, wx);
    std::swap(ny, wy);
    nx = -nx;
    wx = -wx;
  }
  PointFx a_minus = P(ax - nx, ay + ny), a_plus = P(ax + wx, ay - wy);
  PointFx b_plus = P(bx + wx, by - wy), b_minus = P(bx - nx, by + ny);
  if (cap_start) {
    a_minus = PointFx{a_minus.x - ny * kFixOne, a_minus.y - nx * kFixOne};
    a_plus = PointFx{a_plus.x - ny * kFixOne, a_plus.y - nx * kFixOne};
  }
  if (cap_end) {
    b_plus = PointFx{b_plus.x + wy * kFixOne, b_plus.y + wx * kFixOne};
    b_minus = PointFx{b_minus.x + wy * kFixOne, b_minus.y + wx * kFixOne};
  }
  // The "plus" corners lie on the left of the walk whichever way the segment runs.
  return Body{a_plus, b_plus, b_minus, a_minus};
}

// HeadingOf: the direction from a to b as a vector that fits in int (scaled down, both parts
// alike, when the coordinates are far apart).
PointI HeadingOf(PointI a, PointI b) {
  std::int64_t dx = std::int64_t{b.x} - a.x;
  std::int64_t dy = std::int64_t{b.y} - a.y;
  while (dx > (1 << 30) || dx < -(1 << 30) || dy > (1 << 30) || dy < -(1 << 30)) {
    dx /= 2;
    dy /= 2;
  }
  return PointI{static_cast<int>(dx), static_cast<int>(dy)};
}

Body SegmentBody(PointI a, PointI b, std::int64_t width, bool cap_start, bool cap_end) {
  return SegmentBodyAlong(a, b, std::int64_t{b.x} - a.x, std::int64_t{b.y} - a.y, width,
                          cap_start, cap_end);
}

// AddBody appends the body as one polygon.
void AddBody(const Body& body, PolygonSet* out) {
  PointFx quad[4];
  body.Corners(quad);
  out->Add(quad, 4);
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

namespace {

const DotOutline& CachedDot(std::int64_t width, StrokeScratch& work) {
  constexpr std::size_t kSlots = 16;
  std::vector<DotOutline>& cache = work.dots;
  std::size_t& next = work.next_dot;
  for (const DotOutline& d : cache) {
    if (d.width == width) return d;
  }
  DotOutline dot;
  dot.width = width;
  // The dot is the elliptic region of the box one pixel larger than the dot (regions leave
  // out the right and bottom edges). Down the right ends, up the left ends, edges on the
  // half-pixel lines so that sampling at pixel centres gives back the rows.
  std::vector<std::int64_t> lo;
  std::vector<std::int64_t> hi;
  const std::int64_t n =
      RoundRectRows(Box64{0, 0, width + 1, width + 1}, width + 1, width + 1, &lo, &hi);
  for (std::int64_t r = 0; r < n; ++r) {
    if (lo[static_cast<std::size_t>(r)] >= hi[static_cast<std::size_t>(r)]) continue;
    const double x = static_cast<double>(hi[static_cast<std::size_t>(r)]) - 0.5;
    dot.points.push_back(Fx(x, r - 0.5));
    dot.points.push_back(Fx(x, r + 0.5));
  }
  for (std::int64_t r = n - 1; r >= 0; --r) {
    if (lo[static_cast<std::size_t>(r)] >= hi[static_cast<std::size_t>(r)]) continue;
    const double x = static_cast<double>(lo[static_cast<std::size_t>(r)]) - 0.5;
    dot.points.push_back(Fx(x, r + 0.5));
    dot.points.push_back(Fx(x, r - 0.5));
  }
  if (SignedArea(dot.points.data(), static_cast<int>(dot.points.size())) < 0) {
    std::reverse(dot.points.begin(), dot.points.end());
  }
  if (cache.size() < kSlots) {
    cache.push_back(std::move(dot));
    return cache.back();
  }
  next = (next + 1) % kSlots;
  cache[next] = std::move(dot);
  return cache[next];
}

}  // namespace

void AddRoundDot(PointI c, std::int64_t width, const IRect& rows, PolygonSet* out,
                 StrokeScratch& work) {
  if (width < 1) return;
  const std::int64_t left = static_cast<std::int64_t>(c.x) - width / 2;
  const std::int64_t top = static_cast<std::int64_t>(c.y) - width / 2;
  // A dot wholly outside the clip box adds nothing.
  if (left > rows.right || left + width < rows.left || top > rows.bottom ||
      top + width < rows.top) {
    return;
  }
  if (width > kMaxSteppedDot) {
    AddBigDisc(c, width, rows, out, work);
    return;
  }
  const DotOutline& dot = CachedDot(width, work);
  if (dot.points.size() < 3) return;
  const std::int64_t dx = left * kFixOne;
  const std::int64_t dy = top * kFixOne;
  for (const PointFx& p : dot.points) out->points.push_back(PointFx{p.x + dx, p.y + dy});
  out->counts.push_back(static_cast<int>(dot.points.size()));
}

namespace {

// JoinEnd: the end corners of the incoming body as the join sees them. An axis-aligned body's
// flat end is its last whole row or column of pixels, so the join is cut from one pixel back
// along the heading; a slanted body's corners are used as they are.
void JoinEnd(const Body& in_body, PointI heading, PointFx* left, PointFx* right) {
  *left = in_body.end_left;
  *right = in_body.end_right;
  if (heading.x != 0 && heading.y != 0) return;
  const std::int64_t bx = heading.x > 0 ? kFixOne : (heading.x < 0 ? -kFixOne : 0);
  const std::int64_t by = heading.y > 0 ? kFixOne : (heading.y < 0 ? -kFixOne : 0);
  *left = PointFx{left->x - bx, left->y - by};
  *right = PointFx{right->x - bx, right->y - by};
}

// Side: the sign of the turn from p -> r to p -> t.
int Side(const PointFx& p, const PointFx& r, const PointFx& t) {
  const double v = static_cast<double>(r.x - p.x) * static_cast<double>(t.y - p.y) -
                   static_cast<double>(r.y - p.y) * static_cast<double>(t.x - p.x);
  return v > 0 ? 1 : (v < 0 ? -1 : 0);
}

// PointAlong: the point of p -> r at the fraction t, as near as the fixed point comes while
// staying on that line exactly (p and r are whole pixels).
PointFx PointAlong(const PointFx& p, const PointFx& r, double t) {
  const std::int64_t m = static_cast<std::int64_t>(std::llround(t * static_cast<double>(kFixOne)));
  return PointFx{p.x + (r.x - p.x) / kFixOne * m, p.y + (r.y - p.y) / kFixOne * m};
}

// AddQuad adds the quadrilateral q (whole-pixel corners) as the platform's polygon region
// takes it, a crossed one included: that one goes in as its two lobes, so that the union of
// the set covers both. Each lobe keeps its sides on the quad's own edge lines (a pixel centre
// on one of them falls the same way as in the quad) and meets the other within a 256th of a
// pixel of the crossing.
void AddQuad(const PointFx q[4], PolygonSet* out) {
  for (int k = 0; k < 2; ++k) {
    // Edges a -> b and c -> d are opposite sides.
    const PointFx& a = q[k];
    const PointFx& b = q[k + 1];
    const PointFx& c = q[k + 2];
    const PointFx& d = q[(k + 3) % 4];
    if (Side(a, b, c) * Side(a, b, d) >= 0 || Side(c, d, a) * Side(c, d, b) >= 0) continue;
    const double ux = static_cast<double>(b.x - a.x), uy = static_cast<double>(b.y - a.y);
    const double vx = static_cast<double>(d.x - c.x), vy = static_cast<double>(d.y - c.y);
    const double den = ux * vy - uy * vx;
    const double cax = static_cast<double>(c.x - a.x), cay = static_cast<double>(c.y - a.y);
    const double t = (cax * vy - cay * vx) / den;  // along a -> b
    const double s = (cax * uy - cay * ux) / den;  // along c -> d
    const PointFx xa = PointAlong(a, b, t);
    const PointFx xc = PointAlong(c, d, s);
    if (xa == xc) {
      const PointFx lobe_a[3] = {a, xa, d};
      const PointFx lobe_b[3] = {xa, b, c};
      out->Add(lobe_a, 3);
      out->Add(lobe_b, 3);
    } else {
      const PointFx lobe_a[4] = {a, xa, xc, d};
      const PointFx lobe_b[4] = {xa, b, c, xc};
      out->Add(lobe_a, 4);
      out->Add(lobe_b, 4);
    }
    return;
  }
  out->Add(q, 4);
}

// AddJoin appends the bevel or miter piece at corner c between the body coming in along
// in_heading and the one going out along out_heading (round joins are dots; the caller adds
// them). A bevel is cut across the incoming body's end: the two triangles from that end to
// each start corner of the outgoing body. On the outer side of the turn this is the bevel
// proper; on the inner side it fills what short or sharply turning segments leave open between
// the bodies. Which side is outer needs no test for a bevel: both triangles are added.
// A miter keeps the inner triangle and puts in place of the outer one the quadrilateral from
// the incoming body's outer end corner over the miter tip to the outgoing body's outer start
// corner and back along the incoming body's end. Its tip is where the two outer edges meet,
// found from the bodies' own (whole-pixel) corners and rounded to a whole pixel; in a slight
// turn that rounding can put the tip behind the bevel's edge, and the quadrilateral then
// folds over and leaves out pixels the bevel would paint, as the platform's does.
void AddJoin(const Body& in_body, const Body& out_body, PointI in_heading, PointI c,
             PointI out_heading, const StrokeStyle& style, PolygonSet* out) {
  const double d1x = in_heading.x, d1y = in_heading.y;
  const double d2x = out_heading.x, d2y = out_heading.y;
  const double cross = d1x * d2y - d1y * d2x;
  if (cross == 0 && d1x * d2x + d1y * d2y > 0) return;  // straight on: the bodies meet
  PointFx end_left;
  PointFx end_right;
  JoinEnd(in_body, in_heading, &end_left, &end_right);
  const PointFx left_tri[3] = {end_left, end_right, out_body.start_left};
  const PointFx right_tri[3] = {end_left, end_right, out_body.start_right};
  if (style.join != JoinStyle::kMiter || cross == 0) {
    out->Add(left_tri, 3);
    out->Add(right_tri, 3);
    return;
  }
  const bool left_outer = cross > 0;
  const PointFx out_corner = left_outer ? out_body.start_left : out_body.start_right;
  // The tip is where the outer edges meet: the line through the incoming body's outer end
  // corner along its heading and the one through the outgoing body's outer start corner along
  // its heading. Corners are whole pixels; the work is in pixels, in double precision.
  const PointFx in_corner = left_outer ? in_body.end_left : in_body.end_right;
  const double px = static_cast<double>(in_corner.x / kFixOne);
  const double py = static_cast<double>(in_corner.y / kFixOne);
  const double ox = static_cast<double>(out_corner.x / kFixOne);
  const double oy = static_cast<double>(out_corner.y / kFixOne);
  // cross is not zero here: the turn is neither straight on nor back.
  const double a = ((ox - px) * d2y - (oy - py) * d2x) / cross;
  const double mx = a * d1x + px;
  const double my = a * d1y + py;
  // The limit test compares four times the squared distance from the centre to the tip with
  // limit * limit * width * width worked out in single precision from left to right (the limit
  // is a float); equal is still a miter. Set one float step of the limit either side of the
  // threshold, this decides every join as the reference does but exact ties, which its own
  // last-bit rounding decides differently from place to place (the ratio in double precision,
  // or only the limit squared in single precision, miss about one join in five there).
  const double ex = mx - c.x;
  const double ey = my - c.y;
  const float limit = static_cast<float>(style.miter_limit);
  const float width = static_cast<float>(style.width);
  const float bound = limit * limit * width * width;
  const bool miter = (ex * ex + ey * ey) * 4 <= static_cast<double>(bound);
  out->Add(left_outer ? right_tri : left_tri, 3);
  if (!miter) {
    out->Add(left_outer ? left_tri : right_tri, 3);
    return;
  }
  const PointFx tip{static_cast<std::int64_t>(std::floor(mx + 0.5)) * kFixOne,
                    static_cast<std::int64_t>(std::floor(my + 0.5)) * kFixOne};
  const PointFx quad[4] = {left_outer ? end_left : end_right, tip, out_corner,
                           left_outer ? end_right : end_left};
  AddQuad(quad, out);
}

}  // namespace

void BuildStroke(const PointI* points, int count, bool closed, const StrokeStyle& style,
                 const IRect& clip, PolygonSet* out, StrokeScratch& work) {
  BuildStrokeAlong(points, nullptr, count, closed, style, clip, out, work);
}

namespace {

// StrokeWithCaps is BuildStrokeAlong with the caps of an open line at either end left out on
// request (a dash that goes on into another there).
void StrokeWithCaps(const PointI* points, const PointI* dirs, int count, bool closed,
                    const StrokeStyle& style, bool start_cap, bool end_cap, const IRect& clip,
                    PolygonSet* out, StrokeScratch& work) {
  if (count < 1 || points == nullptr) return;
  std::vector<PointI>& v = work.points;
  std::vector<PointI>& vd = work.headings;
  v.clear();
  vd.clear();
  for (int i = 0; i < count; ++i) {
    if (v.empty() || v.back() != points[i]) {
      if (!v.empty()) {
        vd.push_back(dirs != nullptr ? dirs[i - 1] : HeadingOf(v.back(), points[i]));
      }
      v.push_back(points[i]);
    }
  }
  if (closed) {
    while (v.size() > 1 && v.back() == v.front()) v.pop_back();
  }
  const std::int64_t width = std::max<std::int64_t>(1, style.width);
  if (v.size() == 1) {
    if (style.cap == CapStyle::kRound) AddRoundDot(v[0], width, clip, out, work);
    return;
  }
  const int n = static_cast<int>(v.size());
  const int segments = closed ? n : n - 1;
  std::vector<Body>& bodies = work.bodies;
  if (static_cast<std::size_t>(segments) > bodies.capacity()) {
    bodies.reserve(std::max(static_cast<std::size_t>(segments), 2 * bodies.capacity()));
  }
  bodies.assign(static_cast<std::size_t>(segments), Body{});
  for (int i = 0; i < segments; ++i) {
    const PointI& a = v[static_cast<std::size_t>(i)];
    const PointI& b = v[static_cast<std::size_t>((i + 1) % n)];
    const bool cap_start = !closed && start_cap && i == 0 && style.cap == CapStyle::kSquare;
    const bool cap_end =
        !closed && end_cap && i == segments - 1 && style.cap == CapStyle::kSquare;
    Body& body = bodies[static_cast<std::size_t>(i)];
    if (i < static_cast<int>(vd.size())) {
      const PointI d = vd[static_cast<std::size_t>(i)];
      body = SegmentBodyAlong(a, b, d.x, d.y, width, cap_start, cap_end);
    } else {
      body = SegmentBody(a, b, width, cap_start, cap_end);
    }
    AddBody(body, out);
  }
  // Round caps.
  if (!closed && style.cap == CapStyle::kRound) {
    if (start_cap) AddRoundDot(v.front(), width, clip, out, work);
    if (end_cap) AddRoundDot(v.back(), width, clip, out, work);
  }
  // Joins between consecutive segments.
  auto HeadingAt = [&](int i) {
    if (i < static_cast<int>(vd.size())) return vd[static_cast<std::size_t>(i)];
    return HeadingOf(v[static_cast<std::size_t>(i)], v[static_cast<std::size_t>((i + 1) % n)]);
  };
  const int first_join = closed ? 0 : 1;
  const int last_join = closed ? n - 1 : n - 2;
  for (int j = first_join; j <= last_join; ++j) {
    const int in_seg = (j - 1 + n) % n;
    const int out_seg = j;
    const PointI& c = v[static_cast<std::size_t>(j)];
    if (style.join == JoinStyle::kRound) {
      AddRoundDot(c, width, clip, out, work);
      continue;
    }
    AddJoin(bodies[static_cast<std::size_t>(in_seg)], bodies[static_cast<std::size_t>(out_seg)],
            HeadingAt(in_seg), c, HeadingAt(out_seg), style, out);
  }
}

}  // namespace

void BuildStrokeAlong(const PointI* points, const PointI* dirs, int count, bool closed,
                      const StrokeStyle& style, const IRect& clip, PolygonSet* out,
                      StrokeScratch& work) {
  StrokeWithCaps(points, dirs, count, closed, style, true, true, clip, out, work);
}

void DashPatternOf(int pen_style, const std::vector<DWORD>& user, StrokeStyle* style) {
  style->dash_count = 0;
  constexpr int kDash = 1, kDashDotDot = 4, kUserStyle = 7;  // PS_DOT and PS_DASHDOT between
  static constexpr double kUnits[4][6] = {
      {3, 1}, {1, 1}, {3, 1, 1, 1}, {3, 1, 1, 1, 1, 1}};
  static constexpr int kUnitCount[4] = {2, 2, 4, 6};
  const double w = static_cast<double>(std::max<std::int64_t>(1, style->width));
  int n = 0;
  if (pen_style >= kDash && pen_style <= kDashDotDot) {
    n = kUnitCount[pen_style - kDash];
    for (int i = 0; i < n; ++i) {
      style->dashes[static_cast<std::size_t>(i)] = kUnits[pen_style - kDash][i] * w;
    }
  } else if (pen_style == kUserStyle && !user.empty()) {
    const int m = static_cast<int>(std::min<std::size_t>(user.size(), 16));
    double total = 0;
    for (int i = 0; i < m; ++i) total += static_cast<double>(user[static_cast<std::size_t>(i)]);
    if (!(total > 0)) return;  // no length at all: solid
    n = (m % 2 == 0) ? m : 2 * m;
    for (int i = 0; i < n; ++i) {
      style->dashes[static_cast<std::size_t>(i)] =
          static_cast<double>(user[static_cast<std::size_t>(i % m)]);
    }
  } else {
    return;
  }
  // The standard styles keep their units whatever the cap; a user style's lengths are the
  // dashes' bodies, and the caps reach past them.
  if (style->cap != CapStyle::kFlat && pen_style != kUserStyle) {
    for (int i = 0; i + 1 < n; i += 2) {
      const double on = style->dashes[static_cast<std::size_t>(i)];
      const double shorter = std::max(0.0, on - w);
      style->dashes[static_cast<std::size_t>(i)] = shorter;
      style->dashes[static_cast<std::size_t>(i) + 1] += on - shorter;
    }
  }
  style->dash_count = n;
}

namespace {

// LoneCap: the figure of a zero-length dash at c on a segment heading (dx, dy): the pen's
// round dot, or with square caps the two caps of a segment of no length (a square as wide as
// the pen, half a width to each side along the path, rounded down as segment caps are).
void LoneCap(PointI c, std::int64_t dx, std::int64_t dy, const StrokeStyle& style,
             const IRect& clip, PolygonSet* out, StrokeScratch& work) {
  if (style.cap == CapStyle::kRound) {
    AddRoundDot(c, style.width, clip, out, work);
    return;
  }
  if (style.cap != CapStyle::kSquare || (dx == 0 && dy == 0)) return;
  const Body body = SegmentBodyAlong(c, c, dx, dy, style.width, true, true);
  AddBody(body, out);
}

// CornerJoin: the join at corner c of a dash that starts there, turning from the segment that
// comes from p0 with heading d0 (which the dash does not cover) to the one going to p2 with
// heading d2. A dash going straight on along a row still gets one pixel from that join: the
// top row's pixel just behind the corner.
void CornerJoin(PointI p0, PointI c, PointI p2, PointI d0, PointI d2, const StrokeStyle& style,
                const IRect& clip, PolygonSet* out, StrokeScratch& work) {
  if (style.cap == CapStyle::kSquare) {
    // A square-capped dash takes its start cap on the segment it begins on, behind the corner,
    // whatever the join.
    const Body cap = SegmentBodyAlong(c, c, d0.x, d0.y, style.width, true, false);
    AddBody(cap, out);
  }
  if (style.join == JoinStyle::kRound) {
    AddRoundDot(c, style.width, clip, out, work);
    return;
  }
  const Body in = SegmentBodyAlong(p0, c, d0.x, d0.y, style.width, false, false);
  const Body next = SegmentBodyAlong(c, p2, d2.x, d2.y, style.width, false, false);
  if (style.cap != CapStyle::kSquare && d0.y == 0 && d2.y == 0 && (d0.x > 0) == (d2.x > 0)) {
    const std::int64_t x = c.x - (d0.x > 0 ? 1 : 0);
    const std::int64_t y = c.y - style.width / 2;
    const PointFx pixel[4] = {PointFx{x * kFixOne, y * kFixOne},
                              PointFx{(x + 1) * kFixOne, y * kFixOne},
                              PointFx{(x + 1) * kFixOne, (y + 1) * kFixOne},
                              PointFx{x * kFixOne, (y + 1) * kFixOne}};
    out->Add(pixel, 4);
  }
  AddJoin(in, next, d0, c, d2, style, out);
}

// DashWalker: the position in a dash pattern while walking a polyline, and the dash being
// collected.
class DashWalker {
 public:
  DashWalker(const StrokeStyle& style, bool closed, const IRect& clip, PolygonSet* out,
             StrokeScratch& work)
      : style_(style), closed_(closed), clip_(clip), out_(out), work_(work), dash_(work.dash),
        dirs_(work.dash_headings), held_(work.opening), held_dirs_(work.opening_headings) {
    held_.clear();
    held_dirs_.clear();
    solid_ = style;
    solid_.dash_count = 0;
    for (int i = 0; i < style.dash_count; ++i) period_ += style.dashes[static_cast<std::size_t>(i)];
    left_ = style.dashes[0];
    // Pieces farther than this from the clip box cannot reach it: half the width, or the
    // longest miter.
    reach_ = static_cast<double>(style.width) * std::max(1.0, style.miter_limit) + 2.0;
    ClearDash();
  }

  // Segment walks from a to b (a != b).
  void Segment(PointI a, PointI b) {
    const double dx = static_cast<double>(b.x) - a.x;
    const double dy = static_cast<double>(b.y) - a.y;
    // A segment runs the pattern on by its length cut to whole pixels (the fraction is lost, not
    // carried to the next segment); points along it are placed by the true direction, so a dash
    // that ends where the cut length ends stops short of b when the fraction is large.
    const double true_len = std::hypot(dx, dy);
    const double len = std::floor(true_len);
    const double ux = dx / true_len, uy = dy / true_len;
    const PointI heading = HeadingOf(a, b);
    dir_x_ = heading.x;
    dir_y_ = heading.y;
    const bool first = !walked_;
    walked_ = true;
    if (first) {
      first_to_ = b;
      first_dir_ = heading;
    }
    last_from_ = a;
    last_dir_ = heading;
    auto at = [&](double t) { return Along(a, ux, uy, t); };
    // The part of the segment near the clip box; the pattern skips the rest by arithmetic.
    double t0 = 0, t1 = len;
    if (!NearClip(a, dx, dy, len, &t0, &t1)) {
      Flush();
      Advance(len);
      return;
    }
    if (t0 > 0) {
      Flush();
      Advance(t0);
    }
    double t = t0;
    if (on() && dash_.empty()) {
      Add(at(t));
      // The dash that begins right at a closed figure's first point may go on from its last.
      opening_ = closed_ && first && t == 0;
    }
    while (true) {
      if (on() && left_ <= 0) {
        // A zero-length dash: a lone cap.
        LoneCap(at(t), dir_x_, dir_y_, style_, clip_, out_, work_);
        ClearDash();
        Next();
        continue;
      }
      const double step = std::min(left_, t1 - t);
      t += step;
      left_ -= step;
      if (left_ > kEps) break;  // the segment (or its visible part) ends inside this run
      if (on()) {
        Add(at(t));
        // A dash whose end, cut back to whole pixels, falls on this segment's start still
        // holds a piece of no length of the segment, so it turns the corner there.
        const bool turns = t > kEps && dash_.size() > 1 && dash_.back() == a;
        const PointI from = turns ? dash_[dash_.size() - 2] : a;
        const PointI from_dir = turns ? dirs_.back() : heading;
        Flush(turns ? &heading : nullptr);
        if (turns) TrailJoin(from, a, b, from_dir, heading);
      }
      Next();
      if (on()) Add(at(t));
      // A dash of no length that falls on the end is drawn here, square to this segment.
      if (t >= t1 - kEps && !(on() && left_ <= 0)) break;
    }
    if (t1 < len) {
      Flush();
      Advance(len - t1);
    } else if (on()) {
      Add(b);  // the dash runs on round the corner
      if (dash_.size() == 1) {
        // The dash begins right at the corner: it still turns it, from a piece of no length
        // on this segment, so the corner gets the pen's join.
        lead_from_ = a;
        lead_dir_ = heading;
        lead_ = true;
      }
    }
  }

  // InDash tells whether the walk has reached a point inside a dash.
  bool InDash() const { return on(); }
  // Finish draws the dash still open at the end of the polyline; true when a closed figure's
  // corner at its first point is settled here: when the figure is one dash all round (drawn as
  // an open dash, with its caps and no join there), or when its last dash went on into its
  // first one. The two then meet at the first point as one dash would turn a corner: no caps
  // there, and the pen's join cut from the bodies of the two whole segments that meet there
  // (the closing one and the first), not from the dashes' pieces of them. A last dash that
  // only reaches the first point (none of its length walked on the closing segment, so nothing
  // of it before the corner) does not join: it is nothing, and the first dash keeps its start
  // cap and takes the corner's join alone (BuildDashedStroke). Otherwise a dash that would only
  // start at the very end is its caps alone on an open line.
  bool Finish() {
    if (!held_.empty()) {
      const PointI corner = held_.front();
      if (on() && dash_.size() > 1 && dash_.back() == corner) {
        // No caps at the corner; its join is cut from the two segments that meet there.
        Flush(nullptr, /*start_cap=*/true, /*end_cap=*/false);
        DrawHeld(/*start_cap=*/false);
        TrailJoin(last_from_, corner, first_to_, last_dir_, first_dir_);
        return true;
      }
      DrawHeld();
    }
    if (closed_ && dash_.size() == 1 && left_ > 0 &&
        left_ == style_.dashes[static_cast<std::size_t>(index_)]) {
      ClearDash();
    }
    const bool whole = opening_;  // one dash all round
    opening_ = false;
    Flush();
    return whole;
  }

 private:
  static constexpr double kEps = 1e-9;

  bool on() const { return index_ % 2 == 0; }
  void Next() {
    index_ = (index_ + 1) % style_.dash_count;
    left_ = style_.dashes[static_cast<std::size_t>(index_)];
  }
  // Advance moves the pattern on by d without drawing.
  void Advance(double d) {
    if (period_ > 0 && d > 2 * period_) d = std::fmod(d, period_) + period_;
    while (d > kEps) {
      const double step = std::min(left_, d);
      d -= step;
      left_ -= step;
      if (left_ <= kEps) Next();
    }
    ClearDash();
  }
  // Along: the pixel at distance t from a; the offset is cut toward a (whole pixels of it).
  static PointI Along(PointI a, double ux, double uy, double t) {
    return PointI{static_cast<int>(a.x + std::trunc(ux * t)),
                  static_cast<int>(a.y + std::trunc(uy * t))};
  }
  void ClearDash() {
    dash_.clear();
    dirs_.clear();
    lead_ = false;
    opening_ = false;
  }
  void Add(PointI p) {
    if (dash_.empty() || dash_.back() != p) {
      if (!dash_.empty()) dirs_.push_back(PointI{dir_x_, dir_y_});
      dash_.push_back(p);
    }
  }
  // Flush strokes the collected dash. `end_dir`, when given, is the heading its end cap is
  // square to (a dash that ends on a piece of no length of the next segment); a dash that goes
  // on into another at one end is drawn without the cap there.
  void Flush(const PointI* end_dir = nullptr, bool start_cap = true, bool end_cap = true) {
    if (opening_ && dash_.size() > 1) {
      // Held until the end of the walk tells whether the last dash goes on into it.
      held_.assign(dash_.begin(), dash_.end());
      held_dirs_.assign(dirs_.begin(), dirs_.end());
      held_end_ = end_dir != nullptr;
      if (held_end_) held_end_dir_ = *end_dir;
      ClearDash();
      return;
    }
    if (dash_.size() == 1) {
      LoneCap(dash_[0], dir_x_, dir_y_, style_, clip_, out_, work_);
    } else if (dash_.size() > 1) {
      if ((lead_ || end_dir != nullptr) && solid_.cap == CapStyle::kSquare) {
        // A start cap behind the corner comes with LeadJoin; the others are added on their own.
        StrokeStyle flat = solid_;
        flat.cap = CapStyle::kFlat;
        BuildStrokeAlong(dash_.data(), dirs_.data(), static_cast<int>(dash_.size()), false, flat,
                         clip_, out_, work_);
        if (!lead_ && start_cap) {
          const PointI d = dirs_.front();
          AddBody(SegmentBodyAlong(dash_.front(), dash_.front(), d.x, d.y, solid_.width, true,
                                   false),
                  out_);
        }
        if (end_cap) {
          const PointI d = end_dir != nullptr ? *end_dir : dirs_.back();
          AddBody(
              SegmentBodyAlong(dash_.back(), dash_.back(), d.x, d.y, solid_.width, false, true),
              out_);
        }
      } else {
        StrokeWithCaps(dash_.data(), dirs_.data(), static_cast<int>(dash_.size()), false, solid_,
                       start_cap, end_cap, clip_, out_, work_);
      }
      if (lead_) LeadJoin();
    }
    ClearDash();
  }
  // DrawHeld draws the held first dash as any other, leaving the dash being collected as it is.
  void DrawHeld(bool start_cap = true) {
    const bool lead = lead_;
    dash_.swap(held_);
    dirs_.swap(held_dirs_);
    lead_ = false;
    opening_ = false;
    Flush(held_end_ ? &held_end_dir_ : nullptr, start_cap, true);
    dash_.swap(held_);
    dirs_.swap(held_dirs_);
    lead_ = lead;
  }
  // TrailJoin adds the join at corner c of a dash that ends there, having come from p0 with
  // heading d0 and turning onto the segment to p2 with heading d2.
  void TrailJoin(PointI p0, PointI c, PointI p2, PointI d0, PointI d2) {
    if (style_.join == JoinStyle::kRound) {
      AddRoundDot(c, style_.width, clip_, out_, work_);
      return;
    }
    const Body in = SegmentBodyAlong(p0, c, d0.x, d0.y, style_.width, false, false);
    const Body next = SegmentBodyAlong(c, p2, d2.x, d2.y, style_.width, false, false);
    AddJoin(in, next, d0, c, d2, style_, out_);
  }
  // LeadJoin adds the join at the first point of a dash that began at the end of the segment
  // from lead_from_.
  void LeadJoin() {
    CornerJoin(lead_from_, dash_[0], dash_[1], lead_dir_, dirs_[0], style_, clip_, out_, work_);
  }
  // NearClip narrows [t0, t1] of the segment from a along (dx, dy) to the part within reach_ of
  // the clip box; false when none is.
  bool NearClip(PointI a, double dx, double dy, double len, double* t0, double* t1) const {
    const double lo[2] = {clip_.left - reach_, clip_.top - reach_};
    const double hi[2] = {clip_.right + reach_, clip_.bottom + reach_};
    const double p[2] = {static_cast<double>(a.x), static_cast<double>(a.y)};
    const double d[2] = {dx / len, dy / len};
    for (int k = 0; k < 2; ++k) {
      if (d[k] == 0) {
        if (p[k] < lo[k] || p[k] > hi[k]) return false;
        continue;
      }
      double u = (lo[k] - p[k]) / d[k];
      double v = (hi[k] - p[k]) / d[k];
      if (u > v) std::swap(u, v);
      *t0 = std::max(*t0, u);
      *t1 = std::min(*t1, v);
    }
    return *t0 < *t1;
  }

  const StrokeStyle& style_;
  bool closed_ = false;
  StrokeStyle solid_;
  const IRect& clip_;
  PolygonSet* out_;
  double period_ = 0;
  double reach_ = 0;
  int index_ = 0;
  double left_ = 0;
  int dir_x_ = 1;  // the segment being walked
  int dir_y_ = 0;
  StrokeScratch& work_;
  std::vector<PointI>& dash_;
  std::vector<PointI>& dirs_;  // the heading of each segment of dash_
  std::vector<PointI>& held_;  // a closed figure's first dash, drawn by Finish
  std::vector<PointI>& held_dirs_;
  bool held_end_ = false;  // held_ ends square to held_end_dir_
  PointI held_end_dir_{};
  bool opening_ = false;  // dash_ began at a closed figure's first point
  PointI first_to_{};  // the end and heading of the first segment walked
  PointI first_dir_{};
  PointI last_from_{};  // the start and heading of the last one
  PointI last_dir_{};
  bool walked_ = false;  // a segment has been walked
  bool lead_ = false;  // dash_ began at the end of the segment from lead_from_
  PointI lead_from_{};
  PointI lead_dir_{};
};

}  // namespace

void BuildDashedStroke(const PointI* points, int count, bool closed, const StrokeStyle& style,
                       const IRect& clip, PolygonSet* out, StrokeScratch& work) {
  if (style.dash_count < 2) {
    BuildStroke(points, count, closed, style, clip, out, work);
    return;
  }
  if (count < 1 || points == nullptr) return;
  int first = 0;
  int n = 0;
  PointI prev{};
  DashWalker walker(style, closed, clip, out, work);
  for (int i = 0; i < count; ++i) {
    if (n > 0 && points[i] == prev) continue;
    if (n == 0) {
      first = i;
    } else {
      walker.Segment(prev, points[i]);
    }
    prev = points[i];
    ++n;
  }
  if (n == 1) {
    // One point: the first dash is a dot with round caps.
    if (style.cap == CapStyle::kRound) AddRoundDot(points[first], style.width, clip, out, work);
    return;
  }
  if (closed && prev != points[first]) walker.Segment(prev, points[first]);
  const bool ends_on = walker.InDash();
  if (walker.Finish()) return;
  // A closed figure's first dash starts with the join at the first point, the corner from the
  // closing segment, when the last dash only begins at that point.
  if (!closed || !ends_on || n < 3 || style.dashes[0] <= 0) return;
  const PointI p1 = points[first];
  PointI p2 = p1;
  PointI p0 = p1;
  for (int i = first + 1; i < count; ++i) {
    if (points[i] == p1) continue;
    if (p2 == p1) p2 = points[i];
    p0 = points[i];
  }
  if (p2 == p1 || p0 == p1) return;
  CornerJoin(p0, p1, p2, HeadingOf(p0, p1), HeadingOf(p1, p2), style, clip, out, work);
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
  if (dc.pen->geometric) DashPatternOf(dc.pen->style, dc.pen->user_style, &st);
  return st;
}

namespace {

}  // namespace

namespace {

// StrokeCoversBox: a round-capped, round-joined stroke contains the pen's disc about every
// vertex, so when one such disc holds the whole clip box (with two pixels to spare) the stroke
// is just the box. Without this a pen far wider than the view, drawn along a long curve, would
// send every one of its thousands of outline edges across each visible row.
bool StrokeCoversBox(const PointI* points, int count, const StrokeStyle& style, const IRect& clip) {
  if (style.cap != CapStyle::kRound || style.join != JoinStyle::kRound) return false;
  if (style.dash_count > 0) return false;
  const double reach = static_cast<double>(style.width) / 2.0 - 2.0;
  if (!(reach > 0.0)) return false;
  for (int i = 0; i < count; ++i) {
    const double x = points[i].x, y = points[i].y;
    const double dx = std::max(std::abs(clip.left - x), std::abs(clip.right - x));
    const double dy = std::max(std::abs(clip.top - y), std::abs(clip.bottom - y));
    if (std::hypot(dx, dy) <= reach) return true;
  }
  return false;
}

// BuildVisibleStroke: the stroke's polygons, or the clip box itself when the stroke covers it.
void BuildVisibleStroke(const PointI* points, int count, bool closed, const StrokeStyle& style,
                        const IRect& clip, PolygonSet* set, StrokeScratch& work) {
  if (!clip.IsEmpty() && StrokeCoversBox(points, count, style, clip)) {
    set->Clear();
    const PointFx box[4] = {ToFx(PointI{clip.left, clip.top}), ToFx(PointI{clip.right, clip.top}),
                            ToFx(PointI{clip.right, clip.bottom}),
                            ToFx(PointI{clip.left, clip.bottom})};
    set->Add(box, 4);
    return;
  }
  BuildDashedStroke(points, count, closed, style, clip, set, work);
}

}  // namespace

void WideOutlineRegion(DeviceContext& dc, const PointI* points, int count, bool closed,
                       SpanRegion* out) {
  const IRect clip = ClipBox(dc);
  PolygonSet& set = dc.scratch.stroke.set;
  set.Clear();
  BuildVisibleStroke(points, count, closed, StyleOfSelectedPen(dc), clip, &set, dc.scratch.stroke);
  RegionBuilder& builder = dc.scratch.region_builder;
  if (!clip.IsEmpty() && !set.counts.empty()) {
    dc.scanner.Fill(set.points.data(), set.counts.data(), static_cast<int>(set.counts.size()),
                    FillRule::kWinding, clip, builder);
  }
  builder.Build(out);
}

namespace {

// RowRuns collects the spans of one polygon row by row, at most two runs a row (a quadrilateral
// has no more); `overflow` says one came that did not fit.
class RowRuns final : public SpanSink {
 public:
  RowRuns(std::vector<int>& rows, int top, int count) : rows_(rows), top_(top), count_(count) {
    rows_.assign(static_cast<std::size_t>(count) * 4, 0);
  }
  void Blit(const Span* spans, int n) override {
    for (int i = 0; i < n; ++i) {
      const Span& s = spans[i];
      const int r = s.y - top_;
      if (r < 0 || r >= count_) {
        overflow = true;
        continue;
      }
      int* row = &rows_[static_cast<std::size_t>(r) * 4];
      if (row[0] == row[1]) {
        row[0] = s.x0;
        row[1] = s.x1;
      } else if (row[2] == row[3]) {
        row[2] = s.x0;
        row[3] = s.x1;
      } else {
        overflow = true;
      }
    }
  }
  bool overflow = false;

 private:
  std::vector<int>& rows_;
  int top_;
  int count_;
};

const DotRows& CachedDotRows(std::int64_t width, PolygonScanner& scanner, StrokeScratch& work) {
  constexpr std::size_t kSlots = 16;
  for (const DotRows& d : work.dot_rows) {
    if (d.width == width) return d;
  }
  // The dot's outline through the scan converter, as the general path fills it.
  const DotOutline& dot = CachedDot(width, work);
  DotRows rows;
  rows.width = width;
  rows.top = -1;
  const int count = static_cast<int>(width) + 3;
  std::vector<int> runs;
  RowRuns sink(runs, rows.top, count);
  const int n = static_cast<int>(dot.points.size());
  if (n >= 3) {
    scanner.Fill(dot.points.data(), &n, 1, FillRule::kWinding,
                 IRect{-2, rows.top, static_cast<int>(width) + 3, rows.top + count}, sink);
  }
  rows.usable = !sink.overflow;
  rows.lo.resize(static_cast<std::size_t>(count));
  rows.hi.resize(static_cast<std::size_t>(count));
  for (int r = 0; r < count; ++r) {
    const int* row = &runs[static_cast<std::size_t>(r) * 4];
    if (row[2] != row[3]) rows.usable = false;
    rows.lo[static_cast<std::size_t>(r)] = row[0];
    rows.hi[static_cast<std::size_t>(r)] = row[1];
  }
  if (work.dot_rows.size() < kSlots) {
    work.dot_rows.push_back(std::move(rows));
    return work.dot_rows.back();
  }
  work.next_dot_rows = (work.next_dot_rows + 1) % kSlots;
  work.dot_rows[work.next_dot_rows] = std::move(rows);
  return work.dot_rows[work.next_dot_rows];
}

// StrokeRoundSegment paints the segment a -> b (a != b) of a solid round-capped pen as the union
// of its body and its two end dots, row by row: the body's spans from the scan converter, the
// dots' from their cached rows. The general path fills the same three pieces by winding, which
// for pieces that all wind one way is their union, so the pixels are the same; what it saves is
// the dots' staircase edges, two per row, which cost most of a track. false: nothing was
// painted (a piece this path does not take), and the caller takes the general path.
bool StrokeRoundSegment(DeviceContext& dc, PointI a, PointI b, const StrokeStyle& style,
                        const IRect& clip) {
  StrokeScratch& work = dc.scratch.stroke;
  const std::int64_t width = style.width;
  if (width < 2 || width > kMaxSteppedDot) return false;
  const DotRows& dot = CachedDotRows(width, dc.scanner, work);
  if (!dot.usable) return false;
  const PointI d = HeadingOf(a, b);
  const Body body = SegmentBodyAlong(a, b, d.x, d.y, width, false, false);
  PointFx quad[4];
  body.Corners(quad);
  // The rows the body can reach, inside the clip.
  std::int64_t ymin = quad[0].y, ymax = quad[0].y;
  for (const PointFx& p : quad) {
    ymin = std::min(ymin, p.y);
    ymax = std::max(ymax, p.y);
  }
  const std::int64_t body_top = std::max<std::int64_t>(CeilDiv(ymin, kFixOne), clip.top);
  const std::int64_t body_end = std::min<std::int64_t>(CeilDiv(ymax, kFixOne), clip.bottom);
  // The dots' top-left pixels, as AddRoundDot places them.
  const std::int64_t ax = std::int64_t{a.x} - width / 2, ay = std::int64_t{a.y} - width / 2;
  const std::int64_t bx = std::int64_t{b.x} - width / 2, by = std::int64_t{b.y} - width / 2;
  const std::int64_t dot_rows = static_cast<std::int64_t>(dot.lo.size());
  const std::int64_t first = std::max<std::int64_t>(
      std::min({ay + dot.top, by + dot.top, body_top}), clip.top);
  const std::int64_t last = std::min<std::int64_t>(
      std::max({ay + dot.top + dot_rows, by + dot.top + dot_rows, body_end}), clip.bottom);
  // A very tall clip box crossed by a long segment: the outline pieces cost no memory per row.
  constexpr std::int64_t kMaxRows = std::int64_t{1} << 16;
  if (last - first > kMaxRows || body_end - body_top > kMaxRows) return false;
  const int body_rows = static_cast<int>(std::max<std::int64_t>(body_end - body_top, 0));
  RowRuns runs(work.body_rows, static_cast<int>(body_top), body_rows);
  if (body_rows > 0 && SignedArea(quad, 4) != 0) {
    const int four = 4;
    dc.scanner.Fill(quad, &four, 1, FillRule::kWinding, clip, runs);
    if (runs.overflow) return false;
  }
  SpanBatch batch(PenSink(dc));
  for (std::int64_t y = first; y < last; ++y) {
    // Up to four runs on the row, clipped; then in order of x, joined where they meet.
    std::int64_t lo[4], hi[4];
    int n = 0;
    auto add = [&](std::int64_t l, std::int64_t h) {
      l = std::max<std::int64_t>(l, clip.left);
      h = std::min<std::int64_t>(h, clip.right);
      if (l >= h) return;
      int k = n++;
      while (k > 0 && lo[k - 1] > l) {
        lo[k] = lo[k - 1];
        hi[k] = hi[k - 1];
        --k;
      }
      lo[k] = l;
      hi[k] = h;
    };
    if (y >= body_top && y < body_end) {
      const int* row = &work.body_rows[static_cast<std::size_t>(y - body_top) * 4];
      if (row[0] != row[1]) add(row[0], row[1]);
      if (row[2] != row[3]) add(row[2], row[3]);
    }
    const std::int64_t ra = y - ay - dot.top, rb = y - by - dot.top;
    if (ra >= 0 && ra < dot_rows) {
      const std::size_t r = static_cast<std::size_t>(ra);
      if (dot.lo[r] != dot.hi[r]) add(ax + dot.lo[r], ax + dot.hi[r]);
    }
    if (rb >= 0 && rb < dot_rows) {
      const std::size_t r = static_cast<std::size_t>(rb);
      if (dot.lo[r] != dot.hi[r]) add(bx + dot.lo[r], bx + dot.hi[r]);
    }
    int k = 0;
    while (k < n) {
      std::int64_t h = hi[k];
      int j = k + 1;
      while (j < n && lo[j] <= h) h = std::max(h, hi[j++]);
      batch.Add(static_cast<int>(y), static_cast<int>(lo[k]), static_cast<int>(h));
      k = j;
    }
  }
  return true;
}

}  // namespace

void StrokeWide(DeviceContext& dc, const PointI* points, int count, bool closed) {
  if (dc.pen == nullptr || dc.pen->IsNull() || count < 1) return;
  const IRect clip = ClipBox(dc);
  if (clip.IsEmpty()) return;
  const StrokeStyle style = StyleOfSelectedPen(dc);
  if (count == 2 && !closed && points[0] != points[1] && dc.scratch.stroke.segment_rows &&
      style.cap == CapStyle::kRound && style.dash_count == 0 &&
      !StrokeCoversBox(points, count, style, clip) &&
      StrokeRoundSegment(dc, points[0], points[1], style, clip)) {
    return;
  }
  PolygonSet& set = dc.scratch.stroke.set;
  set.Clear();
  BuildVisibleStroke(points, count, closed, style, clip, &set, dc.scratch.stroke);
  if (set.counts.empty()) return;
  dc.scanner.Fill(set.points.data(), set.counts.data(), static_cast<int>(set.counts.size()),
                  FillRule::kWinding, clip, PenSink(dc));
}

}  // namespace qvis::gdi
