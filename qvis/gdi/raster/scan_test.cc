// Scan converters through a recording sink: cosmetic lines (pixel rules, clipping, styles) and
// polygons (fill rules, shared edges, far-off vertices).
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstring>
#include <memory>
#include <random>
#include <set>
#include <utility>
#include <vector>

#include "qvis/gdi/dc.h"
#include "qvis/gdi/raster/blitter.h"
#include "qvis/gdi/raster/line.h"
#include "qvis/gdi/raster/polygon.h"
#include "qvis/gdi/raster/span.h"

namespace qvis::gdi {
namespace {

using Pixel = std::pair<int, int>;  // (x, y)
using PixelSet = std::set<Pixel>;

// Pixels of the recorded spans; fails the test when a pixel comes twice.
PixelSet Pixels(const RecordingSink& sink) {
  PixelSet set;
  for (const Span& s : sink.spans()) {
    EXPECT_LT(s.x0, s.x1);
    for (int x = s.x0; x < s.x1; ++x) {
      EXPECT_TRUE(set.insert({x, s.y}).second) << "pixel (" << x << "," << s.y << ") twice";
    }
  }
  return set;
}

PixelSet LinePixels(PointI a, PointI b, IRect clip = {-1000, -1000, 1000, 1000}) {
  RecordingSink sink;
  ScanCosmeticLine(a, b, clip, nullptr, sink, nullptr);
  return Pixels(sink);
}

// Bitmap: a 32-bit bitmap of w x h pixels whose rows are `stride_pixels` apart, all zero.
std::unique_ptr<BitmapData> Bitmap(int w, int h, int stride_pixels) {
  auto b = std::make_unique<BitmapData>();
  b->width = w;
  b->height = h;
  b->stride = 4 * stride_pixels;
  b->bits = std::make_unique<std::uint8_t[]>(static_cast<std::size_t>(b->stride) * h);
  return b;
}

TEST(CosmeticLineTest, StartInEndOutAndReverseSharesTheInterior) {
  for (int dy = -12; dy <= 12; ++dy) {
    for (int dx = -12; dx <= 12; ++dx) {
      if (dx == 0 && dy == 0) continue;
      const PointI a{3, -4}, b{3 + dx, -4 + dy};
      PixelSet fwd = LinePixels(a, b), rev = LinePixels(b, a);
      EXPECT_EQ(fwd.size(), static_cast<std::size_t>(std::max(std::abs(dx), std::abs(dy))));
      EXPECT_TRUE(fwd.count({a.x, a.y}));
      EXPECT_FALSE(fwd.count({b.x, b.y}));
      fwd.erase({a.x, a.y});
      rev.erase({b.x, b.y});
      EXPECT_EQ(fwd, rev) << "dx " << dx << " dy " << dy;
    }
  }
}

TEST(CosmeticLineTest, MinorTiesGoToTheSmallerCoordinate) {
  // Half-way along (0,0)-(8,1) the exact y is 1/2: the pixel stays on row 0.
  EXPECT_TRUE(LinePixels({0, 0}, {8, 1}).count({4, 0}));
  EXPECT_TRUE(LinePixels({8, 1}, {0, 0}).count({4, 0}));
  EXPECT_TRUE(LinePixels({0, 0}, {1, 8}).count({0, 4}));
  EXPECT_TRUE(LinePixels({5, 0}, {-3, -1}).count({1, -1}));
  EXPECT_TRUE(LinePixels({0, 0}, {0, 0}).empty());
}

TEST(CosmeticLineTest, ClippingNeverMovesAPixel) {
  std::mt19937 rng(1234);
  std::uniform_int_distribution<int> near(-60, 60);
  const IRect clip{-20, -15, 25, 30};
  for (int k = 0; k < 500; ++k) {
    const PointI a{near(rng), near(rng)}, b{near(rng), near(rng)};
    PixelSet whole = LinePixels(a, b);
    PixelSet expected;
    for (const Pixel& p : whole) {
      if (clip.Contains(p.first, p.second)) expected.insert(p);
    }
    EXPECT_EQ(LinePixels(a, b, clip), expected) << a.x << "," << a.y << " " << b.x << "," << b.y;
  }
}

TEST(CosmeticLineTest, FarEndPointsCostOnlyTheVisiblePart) {
  const IRect clip{0, 0, 64, 64};
  struct Case {
    PointI a, b;
  } cases[] = {
      {{INT_MIN, INT_MIN}, {INT_MAX, INT_MAX}},
      {{INT_MAX, INT_MIN}, {INT_MIN, INT_MAX}},
      {{INT_MIN, 10}, {INT_MAX, 11}},
      {{-5, INT_MIN}, {5, INT_MAX}},
      {{INT_MIN, INT_MIN}, {INT_MIN + 1, INT_MAX}},
  };
  for (const Case& c : cases) {
    PixelSet px = LinePixels(c.a, c.b, clip);
    EXPECT_LE(px.size(), 64u);
    for (const Pixel& p : px) EXPECT_TRUE(clip.Contains(p.first, p.second));
  }
  // The full diagonal crosses the whole clip box.
  EXPECT_EQ(LinePixels({INT_MIN, INT_MIN}, {INT_MAX, INT_MAX}, clip).size(), 64u);
}

TEST(CosmeticLineTest, StylesStepPerPixelAndSplitOnFromGaps) {
  // Dash: 18 on, 6 off.
  LineStyle dash = CosmeticStyle(1);
  RecordingSink on, gaps;
  ScanCosmeticLine({0, 0}, {30, 0}, {0, 0, 100, 10}, &dash, on, &gaps);
  EXPECT_EQ(dash.pos, 30 % 24);
  PixelSet on_px = Pixels(on), gap_px = Pixels(gaps);
  EXPECT_EQ(on_px.size(), 18u + 6u);  // 0..17 and 24..29
  EXPECT_EQ(gap_px.size(), 6u);       // 18..23
  EXPECT_TRUE(gap_px.count({18, 0}) && gap_px.count({23, 0}));
  EXPECT_TRUE(on_px.count({24, 0}));
  // Clipping keeps the phase: the first visible pixel x = 20 is still in the gap.
  LineStyle again = CosmeticStyle(1);
  RecordingSink on2;
  ScanCosmeticLine({0, 0}, {30, 0}, {20, 0, 100, 10}, &again, on2, nullptr);
  PixelSet on2_px = Pixels(on2);
  EXPECT_EQ(on2_px, PixelSet({{24, 0}, {25, 0}, {26, 0}, {27, 0}, {28, 0}, {29, 0}}));
  // Periods of the other styles.
  EXPECT_EQ(CosmeticStyle(2).period, 6);
  EXPECT_EQ(CosmeticStyle(3).period, 24);
  EXPECT_EQ(CosmeticStyle(4).period, 24);
  EXPECT_TRUE(CosmeticStyle(0).IsSolid());
}

// --- Polygons -----------------------------------------------------------------------------------

PixelSet FillPixels(const std::vector<PointI>& pts, FillRule rule,
                    IRect clip = {-1000, -1000, 1000, 1000}) {
  RecordingSink sink;
  PolygonScanner scanner;
  const int n = static_cast<int>(pts.size());
  scanner.Fill(pts.data(), &n, 1, rule, clip, sink);
  return Pixels(sink);
}

TEST(PolygonScanTest, AxisAlignedBoxIsHalfOpen) {
  PixelSet px = FillPixels({{2, 3}, {7, 3}, {7, 5}, {2, 5}}, FillRule::kAlternate);
  PixelSet want;
  for (int y = 3; y < 5; ++y) {
    for (int x = 2; x < 7; ++x) want.insert({x, y});
  }
  EXPECT_EQ(px, want);
}

TEST(PolygonScanTest, TrianglesSharingEdgesTileWithoutGapsOrOverlaps) {
  // A fan of triangles around a centre covers the same pixels as the whole polygon, each once.
  std::mt19937 rng(99);
  std::uniform_int_distribution<int> r(-40, 40);
  for (int k = 0; k < 50; ++k) {
    std::vector<PointI> ring;
    for (int i = 0; i < 6; ++i) {
      const double a = i * 3.14159265 / 3;
      ring.push_back({static_cast<int>(40 * std::cos(a)) + r(rng) / 8,
                      static_cast<int>(40 * std::sin(a)) + r(rng) / 8});
    }
    const PointI c{r(rng) / 8, r(rng) / 8};
    PixelSet whole = FillPixels(ring, FillRule::kAlternate);
    PixelSet joined;
    for (int i = 0; i < 6; ++i) {
      for (const Pixel& p : FillPixels({c, ring[static_cast<std::size_t>(i)],
                                        ring[static_cast<std::size_t>((i + 1) % 6)]},
                                       FillRule::kAlternate)) {
        EXPECT_TRUE(joined.insert(p).second) << "overlap at " << p.first << "," << p.second;
      }
    }
    EXPECT_EQ(joined, whole);
  }
}

TEST(PolygonScanTest, FillRuleDecidesTheCentreOfAStar) {
  const std::vector<PointI> star = {{0, -20}, {12, 16}, {-19, -6}, {19, -6}, {-12, 16}};
  EXPECT_FALSE(FillPixels(star, FillRule::kAlternate).count({0, 0}));
  EXPECT_TRUE(FillPixels(star, FillRule::kWinding).count({0, 0}));
  // Outside the pentagon both agree.
  PixelSet alt = FillPixels(star, FillRule::kAlternate), win = FillPixels(star, FillRule::kWinding);
  for (const Pixel& p : alt) EXPECT_TRUE(win.count(p));
}

TEST(PolygonScanTest, DegenerateInputsDrawNothing) {
  EXPECT_TRUE(FillPixels({}, FillRule::kAlternate).empty());
  EXPECT_TRUE(FillPixels({{1, 1}}, FillRule::kAlternate).empty());
  EXPECT_TRUE(FillPixels({{1, 1}, {9, 9}}, FillRule::kAlternate).empty());
  EXPECT_TRUE(FillPixels({{0, 0}, {10, 0}, {20, 0}}, FillRule::kWinding).empty());
  EXPECT_TRUE(FillPixels({{0, 0}, {10, 0}, {0, 10}}, FillRule::kAlternate, IRect{}).empty());
}

TEST(PolygonScanTest, HugeVerticesVisitOnlyTheClip) {
  const IRect clip{0, 0, 50, 40};
  RecordingSink sink;
  PolygonScanner scanner;
  const PointI box[4] = {{INT_MIN, INT_MIN}, {INT_MAX, INT_MIN}, {INT_MAX, INT_MAX}, {INT_MIN, INT_MAX}};
  const int n = 4;
  scanner.Fill(box, &n, 1, FillRule::kWinding, clip, sink);
  // Vertical sides: the whole clip comes as boxes, not row by row.
  EXPECT_LE(sink.spans().size(), 40u);
  EXPECT_EQ(Pixels(sink).size(), 50u * 40u);
  const PointI slanted[3] = {{INT_MIN, INT_MIN}, {INT_MAX, 0}, {-7, INT_MAX}};
  const int m = 3;
  RecordingSink sink2;
  scanner.Fill(slanted, &m, 1, FillRule::kAlternate, clip, sink2);
  for (const Pixel& p : Pixels(sink2)) EXPECT_TRUE(clip.Contains(p.first, p.second));
}

TEST(PolygonScanTest, FixedPointVerticesSampleAtWholePixels) {
  // A triangle whose left edge passes exactly through x = 1 on row 2 and just right of it.
  RecordingSink sink;
  PolygonScanner scanner;
  const PointFx tri[3] = {{1 * kFixOne, 0}, {1 * kFixOne + 1, 4 * kFixOne}, {8 * kFixOne, 4 * kFixOne}};
  const int n = 3;
  scanner.Fill(tri, &n, 1, FillRule::kAlternate, {0, 0, 20, 20}, sink);
  PixelSet px = Pixels(sink);
  EXPECT_TRUE(px.count({2, 2}));
  EXPECT_FALSE(px.count({1, 2}));  // the edge lies 1/512 of a pixel right of x = 1 there
}

TEST(PolygonScanTest, VerticalSidesAtAnyFractionStartAtTheirCeiling) {
  // A box whose sides lie anywhere between whole pixels, left or right of zero, covers the
  // columns from the ceiling of its left x up to, not including, the ceiling of its right x.
  PolygonScanner scanner;
  for (std::int64_t left = -3 * kFixOne - 5; left <= 2 * kFixOne + 5; left += 37) {
    for (std::int64_t right = left + 1; right <= left + 3 * kFixOne; right += 29) {
      const PointFx box[4] = {{left, -kFixOne / 2}, {right, -kFixOne / 2},
                              {right, 3 * kFixOne + 1}, {left, 3 * kFixOne + 1}};
      const int n = 4;
      RecordingSink sink;
      scanner.Fill(box, &n, 1, FillRule::kWinding, {-10, -10, 10, 10}, sink);
      PixelSet want;
      const auto ceil_px = [](std::int64_t v) {
        return static_cast<int>(v >= 0 ? (v + kFixOne - 1) / kFixOne : -((-v) / kFixOne));
      };
      for (int y = 0; y <= 3; ++y) {
        for (int x = ceil_px(left); x < ceil_px(right); ++x) want.insert({x, y});
      }
      ASSERT_EQ(Pixels(sink), want) << "left " << left << " right " << right;
    }
  }
}

TEST(PolygonScanTest, ParityRowsMatchTheSortedWalker) {
  // Alternate fills of many edges toggle bits per crossing instead of sorting the crossings.
  // Random stars, several figures at once, fractional vertices, clips cutting through them and
  // vertices far outside must give the walker's pixels exactly; the last figure sets are wider
  // than the rows read back whole, so their rows are read back over the crossings' extent.
  std::mt19937 rng(2024);
  auto uni = [&](std::int64_t lo, std::int64_t hi) {
    return std::uniform_int_distribution<std::int64_t>(lo, hi)(rng);
  };
  PolygonScanner parity, walker;
  walker.set_parity_rows(false);
  // The parity rows also store runs straight into a plain-copy blitter's bitmap.
  constexpr int kSide = 72;
  constexpr int kWide = 1800;
  const auto owned = Bitmap(kWide, kSide, kWide);
  BitmapData& bitmap = *owned;
  SolidBlitter32 blitter;
  for (int k = 0; k < 460; ++k) {
    const bool wide = k >= 400;
    const std::int64_t stretch = wide ? 15 : 1;  // across only: the rows stay few
    const int polygons = static_cast<int>(uni(1, 3));
    std::vector<int> counts;
    std::vector<PointFx> pts;
    for (int p = 0; p < polygons; ++p) {
      const int n = static_cast<int>(uni(2, 30));
      counts.push_back(n);
      const std::int64_t cx = uni(-20, 80) * stretch * kFixOne + uni(0, kFixOne - 1);
      const std::int64_t cy = uni(-20, 80) * kFixOne + uni(0, kFixOne - 1);
      const std::int64_t reach = uni(1, 60) * kFixOne;
      for (int i = 0; i < n; ++i) {
        // Every few figures: whole-pixel vertices, so crossings land exactly on pixel columns
        // and several edges share them; now and then one vertex very far away.
        std::int64_t x = cx + uni(-reach, reach) * stretch, y = cy + uni(-reach, reach);
        if (k % 3 == 0) x = x / kFixOne * kFixOne, y = y / kFixOne * kFixOne;
        if (uni(0, 40) == 0) x = uni(0, 1) ? std::int64_t{INT_MAX} * kFixOne : std::int64_t{INT_MIN} * kFixOne;
        pts.push_back({x, y});
      }
    }
    IRect clip = k % 2 ? IRect{0, 0, 64, 64}
                       : IRect{static_cast<int>(uni(-30, 30)), static_cast<int>(uni(-30, 30)),
                               static_cast<int>(uni(31, 100)), static_cast<int>(uni(31, 100))};
    if (wide) clip.right = k % 2 ? kWide : static_cast<int>(uni(900, 2000));
    RecordingSink a, b;
    parity.Fill(pts.data(), counts.data(), polygons, FillRule::kAlternate, clip, a);
    walker.Fill(pts.data(), counts.data(), polygons, FillRule::kAlternate, clip, b);
    ASSERT_EQ(Pixels(a), Pixels(b)) << "figure set " << k;
    std::memset(bitmap.bits.get(), 0, 4u * kWide * kSide);
    blitter.Reset(&bitmap, 0x10203, kRop2CopyPen);
    parity.Fill(pts.data(), counts.data(), polygons, FillRule::kAlternate, clip, blitter);
    PixelSet stored, want;
    for (int y = 0; y < kSide; ++y) {
      for (int x = 0; x < kWide; ++x) {
        if (bitmap.Row32(y)[x] != 0) stored.insert({x, y});
      }
    }
    for (const Pixel& p : Pixels(b)) {
      if (p.first >= 0 && p.first < kWide && p.second >= 0 && p.second < kSide) want.insert(p);
    }
    ASSERT_EQ(stored, want) << "figure set " << k << " stored directly";
    for (const Span& s : a.spans()) {
      EXPECT_TRUE(s.y >= clip.top && s.y < clip.bottom && s.x0 >= clip.left && s.x1 <= clip.right);
    }
  }
}

TEST(CosmeticLineTest, SolidLinesStoredDirectlyMatchTheirSpans) {
  // A solid line into a plain-copy blitter stores its pixels itself; the same line into a
  // recording sink goes through spans. Random lines, short and long, far ends, clip boxes
  // inside, across and beyond the bitmap must give the same pixels.
  constexpr int kW = 64, kH = 48;
  const auto owned = Bitmap(kW, kH, kW);
  BitmapData& bitmap = *owned;
  SolidBlitter32 blitter;
  std::mt19937 rng(77);
  auto uni = [&](int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(rng); };
  for (int k = 0; k < 3000; ++k) {
    const int reach = k % 10 == 0 ? 2000000000 : (k % 2 ? 100 : 30);
    const PointI a{uni(-reach, reach) + 30, uni(-reach, reach) + 20};
    const PointI b{k % 7 == 0 ? a.x + uni(-3, 3) : uni(-reach, reach) + 30,
                   uni(-reach, reach) + 20};
    const IRect clip = k % 3 == 0 ? IRect{-1000, -1000, 1000, 1000}
                                  : IRect{uni(-10, 30), uni(-10, 20), uni(31, 80), uni(21, 60)};
    std::memset(bitmap.bits.get(), 0, 4u * kW * kH);
    blitter.Reset(&bitmap, 0xABCDEF, kRop2CopyPen);
    LineStyle solid;
    ScanCosmeticLine(a, b, clip, &solid, blitter, nullptr);
    RecordingSink sink;
    ScanCosmeticLine(a, b, clip, nullptr, sink, nullptr);
    PixelSet want;
    for (const Pixel& p : Pixels(sink)) {
      if (p.first >= 0 && p.first < kW && p.second >= 0 && p.second < kH) want.insert(p);
    }
    PixelSet got;
    for (int y = 0; y < kH; ++y) {
      for (int x = 0; x < kW; ++x) {
        if (bitmap.Row32(y)[x] != 0) got.insert({x, y});
      }
    }
    ASSERT_EQ(got, want) << "line " << k << " (" << a.x << "," << a.y << ")-(" << b.x << ","
                         << b.y << ")";
  }
}

TEST(SolidBlitterTest, ShortAndLongRunsSetExactlyTheirPixels) {
  // Runs of every length up to past the short-run stores, at every alignment, including ones
  // hanging over the bitmap's sides, against pixels set one at a time.
  const auto owned = Bitmap(45, 6, 48);
  BitmapData& bitmap = *owned;
  std::vector<std::uint32_t> want(48 * 6);
  std::mt19937 rng(5);
  for (std::size_t i = 0; i < want.size(); ++i) want[i] = rng() & 0xFFFFFFu;
  std::memcpy(bitmap.bits.get(), want.data(), want.size() * 4);
  SolidBlitter32 blitter;
  std::vector<Span> spans;
  std::uint32_t colour = 0x123456;
  for (int len = 1; len <= 40; ++len) {
    for (int x0 = -3; x0 < 48; x0 += 1 + len % 3) {
      const int y = (len + x0 + 3) % 7 - 1;  // row -1 must be dropped
      spans.push_back(Span{y, x0, x0 + len});
    }
    colour = (colour * 2654435761u) & 0xFFFFFFu;
    blitter.Reset(&bitmap, colour, kRop2CopyPen);
    blitter.Blit(spans.data(), static_cast<int>(spans.size()));
    for (const Span& s : spans) {
      if (s.y < 0 || s.y >= bitmap.height) continue;
      for (int x = std::max(s.x0, 0); x < std::min(s.x1, bitmap.width); ++x) {
        want[static_cast<std::size_t>(s.y * 48 + x)] = colour;
      }
    }
    spans.clear();
    ASSERT_EQ(std::memcmp(bitmap.bits.get(), want.data(), want.size() * 4), 0) << "length " << len;
  }
}

}  // namespace
}  // namespace qvis::gdi
