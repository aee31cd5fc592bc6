#include "qvis/artwork/render.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <numbers>
#include <numeric>

#include "qvis/artwork/board.h"
#include "qvis/artwork/shapes.h"
#include "qvis/compat/int_math.h"
#include "qvis/gdi/raster/polygon.h"

namespace qvis {

namespace {

constexpr double kPixelLimit = 1099511627776.0;  // 2^40: far beyond any frame, safe in 64 bits

// std::llround for |v| < 2^62 (halves away from zero), without the library call: the fraction
// v - trunc(v) is exact in doubles, so the result is llround's to the last bit.
inline std::int64_t RoundHalfAway(double v) {
  std::int64_t i = static_cast<std::int64_t>(v);
  const double f = v - static_cast<double>(i);
  i += f >= 0.5 ? 1 : 0;
  i -= f <= -0.5 ? 1 : 0;
  return i;
}

// memset for the few bytes a small shape covers on a row, where the call costs more than the
// stores.
inline void FillBytes(std::uint8_t* p, std::uint8_t value, std::int64_t n) {
  if (n > 16) {
    std::memset(p, value, static_cast<std::size_t>(n));
    return;
  }
  for (std::int64_t i = 0; i < n; ++i) p[i] = value;
}

// Convex rings with at most this many points and rows are filled by LayerRaster::ScanConvex.
constexpr std::size_t kConvexMaxPoints = 64;
constexpr std::int64_t kConvexMaxRows = 256;

class MaskSink final : public gdi::SpanSink {
 public:
  MaskSink(std::vector<std::uint8_t>& mask, int width) : mask_(mask), width_(width) {}
  void set_value(std::uint8_t v) { value_ = v; }
  void Blit(const gdi::Span* spans, int count) override {
    for (int i = 0; i < count; ++i) {
      const gdi::Span& s = spans[i];
      std::uint8_t* row = mask_.data() + static_cast<std::size_t>(s.y) * width_;
      std::fill(row + s.x0, row + s.x1, value_);
    }
  }

 private:
  std::vector<std::uint8_t>& mask_;
  int width_;
  std::uint8_t value_ = 1;
};

// Composes one layer's coverage. Aperture images with clear parts are built in a scratch mask
// first, so their clear parts cut only the image itself. The mask is either the raster's own
// or one the caller keeps zeroed between layers and frames (ComposeBoard): `touched()` bounds
// every byte written, so the caller reads and clears only that box.
class LayerRaster final : public ShapeSink {
 public:
  // Draws into its own zeroed mask.
  explicit LayerRaster(const ArtView& view) : LayerRaster(view, nullptr) {}
  // Draws into `mask` (view.width * view.height bytes, all zero) when given.
  LayerRaster(const ArtView& view, std::vector<std::uint8_t>* mask)
      : view_(view),
        scale_(view.dpi / static_cast<double>(kNmPerInch)),
        frame_{0, 0, view.width, view.height},
        own_(mask == nullptr ? static_cast<std::size_t>(view.width) * view.height : 0, 0),
        mask_(mask == nullptr ? own_ : *mask),
        mask_sink_(mask_, view.width) {}

  void Fill(const std::vector<Ring>& rings, bool even_odd, bool dark) override {
    Restart();
    double minx = kPixelLimit, miny = kPixelLimit, maxx = -kPixelLimit, maxy = -kPixelLimit;
    for (const Ring& r : rings) {
      if (r.size() < 3) continue;
      if (!AddRing(r.data(), r.size(), minx, miny, maxx, maxy)) return;
      counts_.push_back(static_cast<int>(r.size()));
    }
    Scan(even_odd, dark, minx, miny, maxx, maxy);
  }

  // FillRing is Fill for one ring drawn by the nonzero rule, from points the caller keeps.
  void FillRing(const DPoint* ring, std::size_t n, bool dark) {
    Restart();
    if (n < 3) return;
    double minx = kPixelLimit, miny = kPixelLimit, maxx = -kPixelLimit, maxy = -kPixelLimit;
    if (!AddRing(ring, n, minx, miny, maxx, maxy)) return;
    counts_.push_back(static_cast<int>(n));
    Scan(false, dark, minx, miny, maxx, maxy);
  }

  void set_fast(bool fast) { fast_ = fast; }
  bool fast() const { return fast_; }

 private:
  void Restart() {
    points_.clear();
    counts_.clear();
    fx0_ = fy0_ = std::numeric_limits<std::int64_t>::max();
    fx1_ = fy1_ = std::numeric_limits<std::int64_t>::min();
  }

  // Appends one ring's points in the scanner's fixed point, widening the fixed-point extent
  // (fx0_ .. fy1_) to them; false on a NaN.
  bool AddRing(const DPoint* ring, std::size_t n, double& minx, double& miny, double& maxx,
               double& maxy) {
    // Locals throughout: stores through the members or the output would keep the compiler
    // from holding anything in registers.
    const double ox = static_cast<double>(view_.origin_x);
    const double oy = static_cast<double>(view_.origin_y);
    const double height = view_.height;
    const double scale = scale_;
    double x0 = minx, y0 = miny, x1 = maxx, y1 = maxy;
    std::int64_t fx0 = fx0_, fx1 = fx1_, fy0 = fy0_, fy1 = fy1_;
    const std::size_t at = points_.size();
    points_.resize(at + n);
    gdi::PointFx* out = points_.data() + at;
    bool nan = false;
    for (std::size_t k = 0; k < n; ++k) {
      const DPoint p = ring[k];
      // Sample at pixel centres: the scanner samples at whole coordinates, so move the
      // shape half a pixel up and left.
      double u = std::clamp((p.x - ox) * scale - 0.5, -kPixelLimit, kPixelLimit);
      double v = std::clamp(height - (p.y - oy) * scale - 0.5, -kPixelLimit, kPixelLimit);
      if (!(u == u) || !(v == v)) {  // NaN from a degenerate transform
        nan = true;
        u = v = 0.0;
      }
      x0 = std::min(x0, u);
      x1 = std::max(x1, u);
      y0 = std::min(y0, v);
      y1 = std::max(y1, v);
      const gdi::PointFx q{RoundHalfAway(u * gdi::kFixOne), RoundHalfAway(v * gdi::kFixOne)};
      fx0 = std::min(fx0, q.x);
      fx1 = std::max(fx1, q.x);
      fy0 = std::min(fy0, q.y);
      fy1 = std::max(fy1, q.y);
      out[k] = q;
    }
    if (nan) return false;
    minx = x0;
    miny = y0;
    maxx = x1;
    maxy = y1;
    fx0_ = fx0;
    fx1_ = fx1;
    fy0_ = fy0;
    fy1_ = fy1;
    return true;
  }

  void Scan(bool even_odd, bool dark, double minx, double miny, double maxx, double maxy) {
    if (counts_.empty() || maxx < -1 || maxy < -1 || minx > view_.width || miny > view_.height) {
      return;
    }
    // Every pixel the fill can write lies within a pixel of the outline's extent (the fixed
    // point rounds by less than one).
    Touch(static_cast<std::int64_t>(std::floor(minx)) - 1,
          static_cast<std::int64_t>(std::floor(miny)) - 1,
          static_cast<std::int64_t>(std::ceil(maxx)) + 2,
          static_cast<std::int64_t>(std::ceil(maxy)) + 2);
    if (fast_ && !group_ && (ScanShortcut(dark) || ScanConvex(dark))) return;
    const gdi::FillRule rule = even_odd ? gdi::FillRule::kAlternate : gdi::FillRule::kWinding;
    if (group_) {
      scratch_sink_.set_value(dark ? 1 : 0);
      scanner_.Fill(points_.data(), counts_.data(), static_cast<int>(counts_.size()), rule,
                    frame_, scratch_sink_);
      group_box_ = Union(group_box_, gdi::IRect{static_cast<int>(std::max(0.0, minx)),
                                                static_cast<int>(std::max(0.0, miny)),
                                                static_cast<int>(std::min<double>(view_.width, maxx + 2)),
                                                static_cast<int>(std::min<double>(view_.height, maxy + 2))});
    } else {
      mask_sink_.set_value(dark ? 1 : 0);
      scanner_.Fill(points_.data(), counts_.data(), static_cast<int>(counts_.size()), rule,
                    frame_, mask_sink_);
    }
  }

  void Touch(std::int64_t x0, std::int64_t y0, std::int64_t x1, std::int64_t y1) {
    const gdi::IRect r{static_cast<int>(std::clamp<std::int64_t>(x0, 0, view_.width)),
                       static_cast<int>(std::clamp<std::int64_t>(y0, 0, view_.height)),
                       static_cast<int>(std::clamp<std::int64_t>(x1, 0, view_.width)),
                       static_cast<int>(std::clamp<std::int64_t>(y1, 0, view_.height))};
    if (r.left < r.right && r.top < r.bottom) touched_ = Union(touched_, r);
  }

  // Shapes the scanner's result is known for without scanning: outlines between whose extreme
  // coordinates no sample row or column lies (nothing is inked), and one ring that is a
  // rectangle with axis-parallel sides (rows ceil(y0) .. ceil(y1) - 1 and columns ceil(x0) ..
  // ceil(x1) - 1, the scanner's rule that an edge through a sample point owns it on the left
  // and top only). True when the shape was handled.
  bool ScanShortcut(bool dark) {
    const std::int64_t x0 = fx0_, x1 = fx1_, y0 = fy0_, y1 = fy1_;
    const std::int64_t top = std::max<std::int64_t>(CeilDiv(y0, gdi::kFixOne), 0);
    const std::int64_t bottom = std::min<std::int64_t>(CeilDiv(y1, gdi::kFixOne), view_.height);
    const std::int64_t left = std::max<std::int64_t>(CeilDiv(x0, gdi::kFixOne), 0);
    const std::int64_t right = std::min<std::int64_t>(CeilDiv(x1, gdi::kFixOne), view_.width);
    if (top >= bottom || left >= right) return true;
    if (counts_.size() != 1 || points_.size() != 4) return false;
    const gdi::PointFx* q = points_.data();
    const bool rect = (q[0].y == q[1].y && q[1].x == q[2].x && q[2].y == q[3].y && q[3].x == q[0].x) ||
                      (q[0].x == q[1].x && q[1].y == q[2].y && q[2].x == q[3].x && q[3].y == q[0].y);
    if (!rect) return false;
    const std::uint8_t value = dark ? 1 : 0;
    for (std::int64_t y = top; y < bottom; ++y) {
      FillBytes(mask_.data() + static_cast<std::size_t>(y) * view_.width + left, value,
                right - left);
    }
    return true;
  }

  // One small convex ring (round-ended tracks, round flashes, most regions of a few points)
  // filled straight into the mask. For a convex ring every sample row between its top and
  // bottom meets exactly two of its edges, each edge owning the rows of [top, bottom) of its
  // ends; the scanner's pixels on that row run from the first pixel at or right of one crossing
  // to the first at or right of the other, which is what is computed here, with the scanner's
  // exact integer crossing and its clamping to the frame. Convex means: every turn the same
  // way (or straight ahead, never back), and the outline going down and up once (twice would
  // be a ring wound twice). Anything else, or coordinates beyond the scanner's 64-bit range,
  // is left to the scanner. True when the ring was filled.
  bool ScanConvex(bool dark) {
    const std::size_t count = points_.size();
    if (counts_.size() != 1 || count > kConvexMaxPoints) return false;
    constexpr std::int64_t kSmall = std::int64_t{1} << 30;  // the scanner's 64-bit range
    // The ring without repeated points, its first two points again at the end (plain arrays:
    // PointFx's initialisers would clear the whole array on every call).
    std::int64_t vx[kConvexMaxPoints + 2], vy[kConvexMaxPoints + 2];
    if (fx0_ <= -kSmall || fx1_ >= kSmall || fy0_ <= -kSmall || fy1_ >= kSmall) return false;
    const std::int64_t ymin = fy0_, ymax = fy1_;
    std::size_t n = 0;
    for (std::size_t k = 0; k < count; ++k) {
      const gdi::PointFx p = points_[k];
      vx[n] = p.x;
      vy[n] = p.y;
      n += (n == 0 || p.x != vx[n - 1] || p.y != vy[n - 1]) ? 1 : 0;
    }
    while (n > 1 && vx[n - 1] == vx[0] && vy[n - 1] == vy[0]) --n;
    if (n < 3) return false;
    vx[n] = vx[0];
    vy[n] = vy[0];
    vx[n + 1] = vx[1];
    vy[n + 1] = vy[1];
    int turn = 0, first_dir = 0, last_dir = 0, dir_changes = 0;
    for (std::size_t i = 0; i < n; ++i) {
      const std::int64_t ex = vx[i + 1] - vx[i], ey = vy[i + 1] - vy[i];
      const std::int64_t fx = vx[i + 2] - vx[i + 1], fy = vy[i + 2] - vy[i + 1];
      const std::int64_t cross = ex * fy - ey * fx;
      if (cross == 0) {
        if (ex * fx + ey * fy < 0) return false;  // straight back
      } else {
        const int s = cross > 0 ? 1 : -1;
        if (turn == 0) turn = s;
        if (s != turn) return false;
      }
      if (ey != 0) {
        const int d = ey > 0 ? 1 : -1;
        if (first_dir == 0) first_dir = d;
        if (last_dir != 0 && d != last_dir) ++dir_changes;
        last_dir = d;
      }
    }
    if (last_dir != first_dir) ++dir_changes;
    if (turn == 0 || dir_changes != 2) return false;

    const std::int64_t top = std::max<std::int64_t>(CeilDiv(ymin, gdi::kFixOne), 0);
    const std::int64_t bottom = std::min<std::int64_t>(CeilDiv(ymax, gdi::kFixOne), view_.height);
    if (top >= bottom) return true;
    if (bottom - top > kConvexMaxRows) return false;
    const std::int64_t width = view_.width;
    std::int64_t lo[kConvexMaxRows], hi[kConvexMaxRows];
    std::fill(lo, lo + (bottom - top), width);
    std::fill(hi, hi + (bottom - top), std::int64_t{0});
    for (std::size_t i = 0; i < n; ++i) {
      gdi::PointFx a{vx[i], vy[i]}, b{vx[i + 1], vy[i + 1]};
      if (a.y == b.y) continue;
      if (a.y > b.y) std::swap(a, b);
      const std::int64_t y0 = std::max(CeilDiv(a.y, gdi::kFixOne), top);
      const std::int64_t y1 = std::min(CeilDiv(b.y, gdi::kFixOne), bottom);
      const std::int64_t dy = b.y - a.y, dx = b.x - a.x, den = dy * gdi::kFixOne;
      for (std::int64_t y = y0; y < y1; ++y) {
        // The crossing of row y in pixels is num / den; its pixel is the ceiling.
        const std::int64_t num = a.x * dy + (y * gdi::kFixOne - a.y) * dx;
        const std::int64_t px = std::clamp<std::int64_t>(CeilDiv(num, den), 0, width);
        lo[y - top] = std::min(lo[y - top], px);
        hi[y - top] = std::max(hi[y - top], px);
      }
    }
    const std::uint8_t value = dark ? 1 : 0;
    for (std::int64_t y = top; y < bottom; ++y) {
      const std::int64_t l = lo[y - top], r = hi[y - top];
      if (l < r) FillBytes(mask_.data() + static_cast<std::size_t>(y) * view_.width + l, value, r - l);
    }
    return true;
  }

 public:
  void BeginGroup() override {
    if (scratch_.empty()) scratch_.assign(mask_.size(), 0);
    group_ = true;
    group_box_ = gdi::IRect{};
  }

  void EndGroup(bool dark) override {
    group_ = false;
    const gdi::IRect b = group_box_.Intersect(frame_);
    for (int y = b.top; y < b.bottom; ++y) {
      std::uint8_t* s = scratch_.data() + static_cast<std::size_t>(y) * view_.width;
      std::uint8_t* m = mask_.data() + static_cast<std::size_t>(y) * view_.width;
      for (int x = b.left; x < b.right; ++x) {
        if (s[x]) m[x] = dark ? 1 : 0;
        s[x] = 0;
      }
    }
  }

  std::vector<std::uint8_t>& mask() { return mask_; }
  // The box of mask bytes written so far (empty when none).
  const gdi::IRect& touched() const { return touched_; }
  // Marks the whole mask written (a negative layer starts all dark).
  void TouchAll() { Touch(0, 0, view_.width, view_.height); }

 private:
  static gdi::IRect Union(const gdi::IRect& a, const gdi::IRect& b) {
    if (a.IsEmpty()) return b;
    if (b.IsEmpty()) return a;
    return {std::min(a.left, b.left), std::min(a.top, b.top), std::max(a.right, b.right),
            std::max(a.bottom, b.bottom)};
  }

  class ScratchSink final : public gdi::SpanSink {
   public:
    explicit ScratchSink(LayerRaster* owner) : owner_(owner) {}
    void set_value(std::uint8_t v) { value_ = v; }
    void Blit(const gdi::Span* spans, int count) override {
      for (int i = 0; i < count; ++i) {
        const gdi::Span& s = spans[i];
        std::uint8_t* row = owner_->scratch_.data() + static_cast<std::size_t>(s.y) * owner_->view_.width;
        std::fill(row + s.x0, row + s.x1, value_);
      }
    }

   private:
    LayerRaster* owner_;
    std::uint8_t value_ = 1;
  };

  const ArtView& view_;
  double scale_;
  gdi::IRect frame_;
  std::vector<std::uint8_t> own_;
  std::vector<std::uint8_t>& mask_;
  std::vector<std::uint8_t> scratch_;
  MaskSink mask_sink_;
  ScratchSink scratch_sink_{this};
  gdi::PolygonScanner scanner_;
  std::vector<gdi::PointFx> points_;
  std::vector<int> counts_;
  bool group_ = false;
  bool fast_ = true;
  gdi::IRect group_box_;
  gdi::IRect touched_;
  std::int64_t fx0_ = 0, fx1_ = 0, fy0_ = 0, fy1_ = 0;
};

// Outlines of the two commonest objects, round-ended tracks and round flashes, built without
// allocating. Arcs are cut by the outline builder's ArcSegments and turned as its Circle,
// AppendArc and Capsule turn them (shapes.cc), step for step, so the points and hence the pixels are the same; the
// unit vectors of each arc, which cost a sine and cosine per arc, are kept per (angle, radius,
// tolerance) since a board repeats few of them. FastPathsMatchTheGeneralPath in render_test.cc
// compares both ways pixel for pixel.
class OutlineCache {
 public:
  // The stadium around a -> b with radius r (a circle when a == b), in `out`.
  void Capsule(DPoint a, DPoint b, double r, double tol, std::vector<DPoint>& out) {
    out.clear();
    const double dx = b.x - a.x, dy = b.y - a.y;
    if (dx == 0.0 && dy == 0.0) {
      Circle(a, r, tol, out);
      return;
    }
    const Entry& e = Find(1, Angle(dx, dy), r, tol);
    for (std::size_t i = 0; i < e.split; ++i) out.push_back({b.x + r * e.u[i].x, b.y + r * e.u[i].y});
    for (std::size_t i = e.split; i < e.u.size(); ++i) {
      out.push_back({a.x + r * e.u[i].x, a.y + r * e.u[i].y});
    }
  }

  void Circle(DPoint c, double r, double tol, std::vector<DPoint>& out) {
    out.clear();
    const Entry& e = Find(0, 0.0, r, tol);
    for (const DPoint& u : e.u) out.push_back({c.x + r * u.x, c.y + r * u.y});
  }

 private:
  static constexpr double kPi = std::numbers::pi;
  static constexpr std::size_t kSlots = 64;

  struct Entry {
    int kind = -1;  // 0: circle, 1: capsule at angle `th`
    double th = 0, r = 0, tol = 0;
    std::vector<DPoint> u;
    std::size_t split = 0;  // capsule: where the arc about `a` starts
  };

  // atan2(dy, dx), remembered per (dx, dy): boards repeat track vectors (buses, grids).
  double Angle(double dx, double dy) {
    std::uint64_t bits[2];
    std::memcpy(&bits[0], &dx, 8);
    std::memcpy(&bits[1], &dy, 8);
    const std::uint64_t h = (bits[0] * 0x9E3779B97F4A7C15ull) ^ (bits[1] * 0xC2B2AE3D27D4EB4Full);
    AngleSlot& a = angles_[(h >> 40) % kAngleSlots];
    if (a.used && a.dx == dx && a.dy == dy) return a.th;
    a = {true, dx, dy, std::atan2(dy, dx)};
    return a.th;
  }

  static void Arc(std::vector<DPoint>& u, double r, double a0, double sweep, double tol) {
    const int n = std::max(ArcSegments(r, std::fabs(sweep), tol), 1);
    const double step = sweep / n;
    const double cs = std::cos(step), sn = std::sin(step);
    double ux = std::cos(a0), uy = std::sin(a0);
    for (int i = 0; i < n; ++i) {
      u.push_back({ux, uy});
      const double nx = ux * cs - uy * sn;
      uy = ux * sn + uy * cs;
      ux = nx;
    }
    u.push_back({std::cos(a0 + sweep), std::sin(a0 + sweep)});
  }

  const Entry& Find(int kind, double th, double r, double tol) {
    std::uint64_t bits[3];
    std::memcpy(&bits[0], &th, 8);
    std::memcpy(&bits[1], &r, 8);
    std::memcpy(&bits[2], &tol, 8);
    const std::uint64_t h = (bits[0] * 0x9E3779B97F4A7C15ull) ^ (bits[1] * 0xC2B2AE3D27D4EB4Full) ^
                            bits[2] ^ static_cast<std::uint64_t>(kind);
    Entry& e = slots_[(h >> 40) % kSlots];
    if (e.kind == kind && e.th == th && e.r == r && e.tol == tol) return e;
    e.kind = kind;
    e.th = th;
    e.r = r;
    e.tol = tol;
    e.u.clear();
    if (kind == 0) {
      const int n = std::max(ArcSegments(r, 2.0 * kPi, tol), kMinCircleSegments);
      const double cs = std::cos(2.0 * kPi / n), sn = std::sin(2.0 * kPi / n);
      double ux = 1.0, uy = 0.0;
      for (int i = 0; i < n; ++i) {
        e.u.push_back({ux, uy});
        const double nx = ux * cs - uy * sn;
        uy = ux * sn + uy * cs;
        ux = nx;
      }
    } else {
      Arc(e.u, r, th - kPi / 2, kPi, tol);
      e.split = e.u.size();
      Arc(e.u, r, th + kPi / 2, kPi, tol);
    }
    return e;
  }

  struct AngleSlot {
    bool used = false;
    double dx = 0, dy = 0, th = 0;
  };
  static constexpr std::size_t kAngleSlots = 256;

  Entry slots_[kSlots];
  AngleSlot angles_[kAngleSlots];
};

const Aperture* FindAperture(const Layer& layer, int code) {
  auto it = layer.apertures.find(code);
  return it == layer.apertures.end() ? nullptr : &it->second;
}

// The outline of a rectangular aperture, as the outline builder's Rect makes it (an element at a
// time: assigning from a list copies through a slow block move here).
void RectRing(double sx, double sy, std::vector<DPoint>& ring) {
  ring.resize(4);
  ring[0] = {-sx / 2, -sy / 2};
  ring[1] = {sx / 2, -sy / 2};
  ring[2] = {sx / 2, sy / 2};
  ring[3] = {-sx / 2, sy / 2};
}

// Draws one top-level object of a layer: round-ended tracks and flashes of round or rectangular
// apertures (no hole) straight from their outline, everything else through EmitObject.
void DrawObject(const Layer& layer, const ArtObject& o, const ShapeOptions& opt,
                LayerRaster& raster, OutlineCache& cache, std::vector<DPoint>& ring) {
  if (raster.fast() && (o.kind == ObjectKind::kTrack || o.kind == ObjectKind::kFlash)) {
    const Aperture* ap = FindAperture(layer, o.aperture);
    const bool dark = o.polarity == Polarity::kDark;
    // Objects are placed through the identity here; with an untransformed aperture too (the
    // common case) the matrices are skipped: multiplying by one and adding zero change no
    // coordinate (a zero's sign at most, which no pixel sees).
    const bool plain = o.transform.IsIdentity();
    if (ap != nullptr && o.kind == ObjectKind::kTrack && ap->kind == ApertureKind::kCircle) {
      const double tol = opt.tolerance_nm;
      double r = static_cast<double>(ap->size_x) / 2;
      if (!plain) r *= Affine::FromTransform(o.transform).Scale();
      if (r <= 0 && opt.min_line_width_nm <= 0) return;
      r = std::max(r, opt.min_line_width_nm / 2);
      const DPoint a{static_cast<double>(o.start.x), static_cast<double>(o.start.y)};
      const DPoint b{static_cast<double>(o.end.x), static_cast<double>(o.end.y)};
      if (o.start == o.end) {
        cache.Circle(a, r, tol, ring);
      } else {
        cache.Capsule(a, b, r, tol, ring);
      }
      raster.FillRing(ring.data(), ring.size(), dark);
      return;
    }
    if (ap != nullptr && o.kind == ObjectKind::kFlash && ap->hole <= 0 &&
        (ap->kind == ApertureKind::kCircle || ap->kind == ApertureKind::kRectangle)) {
      if (ap->size_x <= 0) return;
      const double ex = static_cast<double>(o.end.x), ey = static_cast<double>(o.end.y);
      const double sx = std::max(static_cast<double>(ap->size_x), 0.0);
      if (plain) {
        if (ap->kind == ApertureKind::kCircle) {
          cache.Circle({0, 0}, sx / 2, opt.tolerance_nm, ring);
        } else {
          const double sy = std::max(static_cast<double>(ap->size_y), 0.0);
          RectRing(sx, sy, ring);
        }
        for (DPoint& p : ring) p = {p.x + ex, p.y + ey};
        raster.FillRing(ring.data(), ring.size(), dark);
        return;
      }
      const Affine m =
          Affine::Translate(ex, ey).Then(Affine::FromTransform(o.transform));
      if (ap->kind == ApertureKind::kCircle) {
        const double tol = opt.tolerance_nm / std::max(m.Scale(), 1e-12);
        cache.Circle({0, 0}, sx / 2, tol, ring);
      } else {
        const double sy = std::max(static_cast<double>(ap->size_y), 0.0);
        RectRing(sx, sy, ring);
      }
      for (DPoint& p : ring) p = m.Apply(p);
      raster.FillRing(ring.data(), ring.size(), dark);
      return;
    }
  }
  EmitObject(layer, o, Affine{}, false, opt, raster);
}

bool ViewOk(const ArtView& v) {
  return v.width > 0 && v.height > 0 && v.width <= kMaxRenderSide && v.height <= kMaxRenderSide &&
         v.dpi > 0 && std::isfinite(v.dpi);
}

}  // namespace

std::vector<std::uint8_t> RenderLayerMask(const Layer& layer, const ArtView& view) {
  if (!ViewOk(view)) return {};
  LayerRaster raster(view);
  ShapeOptions opt;
  const double nm_per_px = static_cast<double>(kNmPerInch) / view.dpi;
  opt.tolerance_nm = nm_per_px * 0.05;
  opt.min_line_width_nm = nm_per_px * view.min_line_pixels;
  if (layer.negative) {
    std::fill(raster.mask().begin(), raster.mask().end(), std::uint8_t{1});
    for (const ArtObject& o : layer.objects) EmitObject(layer, o, Affine{}, true, opt, raster);
  } else {
    EmitLayer(layer, opt, raster);
  }
  return std::move(raster.mask());
}

gdi::PixelImage RenderArtwork(const ArtDocument& doc, const ArtView& view) {
  gdi::PixelImage img;
  if (!ViewOk(view)) return img;
  img.width = view.width;
  img.height = view.height;
  img.pixels.assign(static_cast<std::size_t>(view.width) * view.height, view.background);
  std::vector<const Layer*> order;
  for (const Layer& l : doc.layers) {
    if (l.visible) order.push_back(&l);
  }
  std::stable_sort(order.begin(), order.end(),
                   [](const Layer* a, const Layer* b) { return a->order < b->order; });
  for (const Layer* l : order) {
    const std::vector<std::uint8_t> mask = RenderLayerMask(*l, view);
    const std::uint32_t c = l->colour & 0xFFFFFFu;
    for (std::size_t i = 0; i < mask.size(); ++i) {
      if (mask[i]) img.pixels[i] = c;
    }
  }
  return img;
}

ArtBox ViewArea(const ArtView& view, double margin_px) {
  const double nm_per_px = static_cast<double>(kNmPerInch) / view.dpi;
  const double m = margin_px * nm_per_px;
  const double x0 = static_cast<double>(view.origin_x) - m;
  const double y0 = static_cast<double>(view.origin_y) - m;
  const double x1 = static_cast<double>(view.origin_x) + view.width * nm_per_px + m;
  const double y1 = static_cast<double>(view.origin_y) + view.height * nm_per_px + m;
  static constexpr double kLim = 4.0e18;
  auto c = [](double v) { return static_cast<Coord>(std::clamp(v, -kLim, kLim)); };
  return ArtBox{c(std::floor(x0)), c(std::floor(y0)), c(std::ceil(x1)), c(std::ceil(y1))};
}

namespace {

inline std::uint32_t Blend(std::uint32_t dst, std::uint32_t src, unsigned a) {
  if (a >= 255) return src;
  const unsigned b = 255 - a;
  const unsigned r = (((src >> 16) & 0xFF) * a + ((dst >> 16) & 0xFF) * b + 127) / 255;
  const unsigned g = (((src >> 8) & 0xFF) * a + ((dst >> 8) & 0xFF) * b + 127) / 255;
  const unsigned l = ((src & 0xFF) * a + (dst & 0xFF) * b + 127) / 255;
  return (r << 16) | (g << 8) | l;
}

// Lays the `box` of a layer's mask over the frame and clears it, leaving the mask zeroed.
void LayOver(std::vector<std::uint8_t>& mask, const PixelTarget& t, std::uint32_t colour,
             unsigned alpha, const gdi::IRect& box) {
  for (int y = box.top; y < box.bottom; ++y) {
    std::uint8_t* m = mask.data() + static_cast<std::size_t>(y) * t.width;
    std::uint32_t* row = t.pixels + y * t.stride;
    int x = box.left;
    // Eight mask bytes at a time: most of a layer's mask is empty.
    for (; x + 8 <= box.right; x += 8) {
      std::uint64_t word;
      std::memcpy(&word, m + x, 8);
      if (word == 0) continue;
      for (int k = x; k < x + 8; ++k) {
        if (m[k]) row[k] = Blend(row[k], colour, alpha);
      }
    }
    for (; x < box.right; ++x) {
      if (m[x]) row[x] = Blend(row[x], colour, alpha);
    }
    std::memset(m + box.left, 0, static_cast<std::size_t>(box.right - box.left));
  }
}

// The mask ComposeBoard composes each layer in, kept per thread between frames so that a frame
// neither allocates nor clears a whole mask per layer: after each layer only the box it wrote
// is laid over the frame and cleared. `clean` is false while a frame is using it, so a frame
// that ended early (an exception) leaves it to be cleared in full by the next.
struct FrameMask {
  std::vector<std::uint8_t> bytes;
  bool clean = true;
};

FrameMask& TakeFrameMask(std::size_t size) {
  thread_local FrameMask mask;
  if (mask.bytes.size() != size || !mask.clean) mask.bytes.assign(size, 0);
  mask.clean = false;
  return mask;
}

}  // namespace

void ComposeBoard(const ArtBoard& board, const ArtView& view, const PixelTarget& target,
                  const ComposeOptions& options) {
  if (!ViewOk(view) || target.pixels == nullptr || target.width != view.width ||
      target.height != view.height || target.stride < target.width) {
    return;
  }
  const double nm_per_px = static_cast<double>(kNmPerInch) / view.dpi;
  ShapeOptions opt;
  opt.tolerance_nm = nm_per_px * 0.05;
  opt.min_line_width_nm = nm_per_px * view.min_line_pixels;
  // Thin lines widened to a pixel reach up to a pixel beyond their extent.
  const ArtBox area = ViewArea(view, view.min_line_pixels + 1.0);

  OutlineCache cache;
  std::vector<DPoint> ring;
  std::vector<int> order;
  for (int i = 0; i < board.LayerCount(); ++i) {
    if (board.layer(i).visible) order.push_back(i);
  }
  std::stable_sort(order.begin(), order.end(),
                   [&](int a, int b) { return board.layer(a).order < board.layer(b).order; });
  FrameMask& mask = TakeFrameMask(static_cast<std::size_t>(view.width) * view.height);
  for (int li : order) {
    const Layer& l = board.layer(li);
    const std::vector<std::uint32_t> visible = board.Visible(li, area);
    if (visible.empty()) continue;
    LayerRaster raster(view, &mask.bytes);
    raster.set_fast(options.fast_paths);
    for (std::uint32_t i : visible) DrawObject(l, l.objects[i], opt, raster, cache, ring);
    const std::size_t at = static_cast<std::size_t>(li);
    LayOver(mask.bytes, target, l.colour & 0xFFFFFFu,
            at < options.layer_opacity.size() ? options.layer_opacity[at] : options.opacity,
            raster.touched());
  }
  if (options.show_selection && !board.selection().empty()) {
    LayerRaster sel(view, &mask.bytes);
    const ArtBox view_area = area;
    for (ObjectRef r : board.selection()) {
      if (!board.IsLive(r) || !board.layer(r.layer).visible) continue;
      const ArtBox b = board.Bounds(r);
      if (b.IsEmpty() || b.max_x < view_area.min_x || b.min_x > view_area.max_x ||
          b.max_y < view_area.min_y || b.min_y > view_area.max_y) {
        continue;
      }
      ArtObject o = board.object(r);
      o.polarity = Polarity::kDark;  // a selected clear object shows where it cuts
      EmitObject(board.layer(r.layer), o, Affine{}, false, opt, sel);
    }
    LayOver(mask.bytes, target, options.highlight & 0xFFFFFFu, 128, sel.touched());
  }
  mask.clean = true;
}

gdi::PixelImage RenderBoard(const ArtBoard& board, const ArtView& view,
                            const ComposeOptions& options) {
  gdi::PixelImage img;
  if (!ViewOk(view)) return img;
  img.width = view.width;
  img.height = view.height;
  img.pixels.assign(static_cast<std::size_t>(view.width) * view.height, view.background);
  ComposeBoard(board, view, PixelTarget{img.pixels.data(), img.width, img.height, img.width},
               options);
  return img;
}

ArtView FitView(const ArtBox& box, double dpi, int border) {
  ArtView v;
  v.dpi = dpi;
  if (box.IsEmpty()) {
    v.width = v.height = 2 * border + 1;
    return v;
  }
  const double px_per_nm = dpi / static_cast<double>(kNmPerInch);
  const double w = static_cast<double>(box.max_x - box.min_x) * px_per_nm;
  const double h = static_cast<double>(box.max_y - box.min_y) * px_per_nm;
  v.width = static_cast<int>(std::min<double>(std::ceil(w) + 2 * border, kMaxRenderSide + 1.0));
  v.height = static_cast<int>(std::min<double>(std::ceil(h) + 2 * border, kMaxRenderSide + 1.0));
  const double nm_per_px = 1.0 / px_per_nm;
  v.origin_x = box.min_x - static_cast<Coord>(std::llround(border * nm_per_px));
  v.origin_y = box.min_y - static_cast<Coord>(std::llround(border * nm_per_px));
  return v;
}

}  // namespace qvis
