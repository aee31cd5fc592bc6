// Cosmetic line scan converter. A segment steps one pixel at a time along its major axis; the
// minor coordinate is the exact one rounded to the nearest pixel, ties to the smaller coordinate
// whatever the direction. Positions are computed exactly (128-bit where needed) at the first
// visible pixel, so clipping neither moves a pixel nor costs time for the invisible part.
#include "qvis/gdi/raster/line.h"

#include <algorithm>
#include <cstdlib>
#include <optional>

#include "qvis/compat/int128.h"
#include "qvis/compat/int_math.h"

namespace qvis::gdi {
namespace {

using i128 = Int128;  // exact products of 64-bit coordinates

// Runs collects consecutive pixels into spans and sends them to the on or gap sink.
class Runs {
 public:
  Runs(SpanSink& on, SpanSink* gaps) : on_(on) {
    if (gaps != nullptr) gaps_.emplace(*gaps);
  }
  ~Runs() { Flush(); }
  void Pixel(int x, int y, bool on) {
    if (!on && !gaps_) return;
    if (open_ && y == y_ && on == is_on_) {
      if (x == x1_) {
        ++x1_;
        return;
      }
      if (x == x0_ - 1) {
        --x0_;
        return;
      }
    }
    Flush();
    open_ = true;
    y_ = y;
    x0_ = x;
    x1_ = x + 1;
    is_on_ = on;
  }
  void Flush() {
    if (!open_) return;
    if (is_on_) {
      on_.Add(y_, x0_, x1_);
    } else {
      gaps_->Add(y_, x0_, x1_);
    }
    open_ = false;
  }

 private:
  SpanBatch on_;
  std::optional<SpanBatch> gaps_;
  bool open_ = false;
  bool is_on_ = true;
  int y_ = 0, x0_ = 0, x1_ = 0;
};

}  // namespace

LineStyle StyleOfRuns(const std::uint32_t* lengths, int n, std::int64_t scale) {
  LineStyle s;
  if (lengths == nullptr || n <= 0 || n > LineStyle::kMaxRuns / 2) return s;
  std::int64_t total = 0;
  for (int i = 0; i < n; ++i) total += lengths[i];
  if (total == 0) return s;
  s.count = n % 2 == 0 ? n : 2 * n;
  for (int i = 0; i < s.count; ++i) s.runs[i] = std::int64_t{lengths[i % n]} * scale;
  s.period = total * scale * (s.count / n);
  return s;
}

LineStyle CosmeticStyle(int ps_style) {
  static constexpr std::uint32_t kDash[] = {18, 6}, kDot[] = {3, 3}, kDashDot[] = {9, 6, 3, 6},
                                 kDashDotDot[] = {9, 3, 3, 3, 3, 3}, kAlternate[] = {1, 1};
  switch (ps_style) {
    case 1: return StyleOfRuns(kDash, 2, 1);
    case 2: return StyleOfRuns(kDot, 2, 1);
    case 3: return StyleOfRuns(kDashDot, 4, 1);
    case 4: return StyleOfRuns(kDashDotDot, 6, 1);
    case 8: return StyleOfRuns(kAlternate, 2, 1);
    default: return LineStyle{};
  }
}

LineStyle ThinPenStyle(int ps_style, bool geometric, const std::uint32_t* user, int user_count) {
  constexpr int kUserStyle = 7;
  if (ps_style == kUserStyle) return StyleOfRuns(user, user_count, geometric ? 1 : 3);
  if (!geometric) return CosmeticStyle(ps_style);
  static constexpr std::uint32_t kUnits[4][6] = {{3, 1}, {1, 1}, {3, 1, 1, 1}, {3, 1, 1, 1, 1, 1}};
  static constexpr int kUnitCount[4] = {2, 2, 4, 6};
  if (ps_style < 1 || ps_style > 4) return LineStyle{};
  return StyleOfRuns(kUnits[ps_style - 1], kUnitCount[ps_style - 1], 1);
}

void ScanCosmeticLine(PointI a, PointI b, const IRect& clip, LineStyle* style, SpanSink& on,
                      SpanSink* gaps) {
  const std::int64_t dx = std::int64_t{b.x} - a.x;
  const std::int64_t dy = std::int64_t{b.y} - a.y;
  if (dx == 0 && dy == 0) return;
  const bool x_major = std::llabs(dx) >= std::llabs(dy);
  // Work in (major, minor) coordinates.
  const std::int64_t major0 = x_major ? a.x : a.y;
  const std::int64_t minor0 = x_major ? a.y : a.x;
  const std::int64_t dmaj = x_major ? dx : dy;
  const std::int64_t dmin = x_major ? dy : dx;
  const int step = dmaj > 0 ? 1 : -1;
  const std::int64_t n = std::llabs(dmaj);  // pixels drawn: start in, end out
  const bool solid = style == nullptr || style->IsSolid();
  const std::int64_t period = solid ? 1 : std::max<std::int64_t>(style->period, 1);
  const std::int64_t pos0 = solid ? 0 : style->pos;
  // (A solid pen has no period: no division for the line every drawing is full of.)
  if (!solid) style->pos = (pos0 + n) % period;
  // A solid line into a sink that only stores one word per pixel is stored here, pixel by
  // pixel, with no spans in between: most of a line's pixels are runs of one.
  SolidTarget target;
  const bool direct = solid && on.Solid(&target);
  const IRect box = direct ? clip.Intersect(target.bounds) : clip;
  if (box.IsEmpty()) return;
  const std::int64_t maj_lo = x_major ? box.left : box.top;
  const std::int64_t maj_hi = x_major ? box.right : box.bottom;
  const std::int64_t min_lo = x_major ? box.top : box.left;
  const std::int64_t min_hi = x_major ? box.bottom : box.right;

  // Visible index range along the major axis.
  std::int64_t i_lo, i_hi;
  if (step > 0) {
    i_lo = maj_lo - major0;
    i_hi = maj_hi - major0;
  } else {
    i_lo = major0 - maj_hi + 1;
    i_hi = major0 - maj_lo + 1;
  }
  i_lo = std::max<std::int64_t>(i_lo, 0);
  i_hi = std::min<std::int64_t>(i_hi, n);
  if (i_lo >= i_hi) return;

  // minor(i) = ceil((2 * (minor0 * n + i * dmin) - n) / (2n)): nearest, ties to the smaller.
  // Segments shorter than 2^29 pixels whose minor start is below 2^31 (every one an int
  // coordinate gives) keep the numerator below 2^63; the 128-bit division is a library call.
  const std::int64_t den64 = 2 * n;
  std::int64_t q, r;
  if (n < (std::int64_t{1} << 29)) {
    const std::int64_t num = 2 * (minor0 * n + i_lo * dmin) - n;
    q = FloorDiv(num, den64);
    r = num - q * den64;
  } else {
    const i128 num = i128{2} * (i128{minor0} * n + i128{i_lo} * dmin) - n;
    q = static_cast<std::int64_t>(FloorDiv(num, i128{den64}));
    r = static_cast<std::int64_t>(num - i128{q} * den64);
  }
  const std::int64_t dnum = 2 * dmin;  // |dmin| <= n, so the step is -1, 0 or +1 per pixel
  // floor(dmin / n) for -n <= dmin <= n, without a division.
  const std::int64_t dq = dmin < 0 ? -1 : (dmin == n ? 1 : 0);
  const std::int64_t dr = dnum - dq * den64;

  std::int64_t major = major0 + step * i_lo;
  if (direct) {
    // The minor coordinate moves monotonically, so the test that keeps it inside the box is
    // true over one stretch of the loop and costs no mispredictions; the carry is arithmetic.
    const std::uint64_t min_span = static_cast<std::uint64_t>(min_hi - min_lo);
    const std::ptrdiff_t major_stride = x_major ? 1 : target.stride;
    const std::ptrdiff_t minor_stride = x_major ? target.stride : 1;
    std::uint32_t* const bits = target.bits;
    const std::uint32_t value = target.value;
    for (std::int64_t i = i_lo; i < i_hi; ++i) {
      const std::int64_t minor = q + (r > 0 ? 1 : 0);
      if (static_cast<std::uint64_t>(minor - min_lo) < min_span) {
        bits[major * major_stride + minor * minor_stride] = value;
      }
      major += step;
      // The remainder is the loop's one chain from pixel to pixel: the wrapped value is
      // computed beside the test and then chosen, three steps a pixel (masking it took five).
      q += dq;
      r += dr;
      const std::int64_t wrapped = r - den64;
      q += wrapped >= 0 ? 1 : 0;
      r = wrapped >= 0 ? wrapped : r;
    }
    return;
  }

  // The pattern's place at the first visible pixel: run `run`, with `left` pixels to go in it.
  int run = 0;
  std::int64_t left = 1;
  if (!solid) {
    left = (pos0 + i_lo) % period;
    while (left >= style->runs[run]) left -= style->runs[run++];
    left = style->runs[run] - left;
  }

  Runs runs(on, solid ? nullptr : gaps);
  for (std::int64_t i = i_lo; i < i_hi; ++i) {
    const std::int64_t minor = q + (r > 0 ? 1 : 0);
    if (minor >= min_lo && minor < min_hi) {
      const bool is_on = solid || run % 2 == 0;
      if (x_major) {
        runs.Pixel(static_cast<int>(major), static_cast<int>(minor), is_on);
      } else {
        runs.Pixel(static_cast<int>(minor), static_cast<int>(major), is_on);
      }
    }
    major += step;
    q += dq;
    r += dr;
    if (r >= den64) {
      r -= den64;
      ++q;
    }
    if (!solid && --left == 0) {
      // Zero-length runs are passed over; the period is not zero, so one run is not.
      do {
        if (++run == style->count) run = 0;
      } while (style->runs[run] == 0);
      left = style->runs[run];
    }
  }
}

}  // namespace qvis::gdi
