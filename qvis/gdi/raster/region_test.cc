// SpanRegion against a brute-force pixel model: combination in every mode, building from spans,
// offsets at the 32-bit limits, and the clip sink.
#include "qvis/gdi/raster/region.h"

#include <gtest/gtest.h>

#include <climits>
#include <random>
#include <set>
#include <utility>

namespace qvis::gdi {
namespace {

using PixelSet = std::set<std::pair<int, int>>;

PixelSet ToPixels(const SpanRegion& r) {
  RecordingSink sink;
  r.Emit(IRect{-100, -100, 100, 100}, sink);
  PixelSet set;
  for (const Span& s : sink.spans()) {
    for (int x = s.x0; x < s.x1; ++x) EXPECT_TRUE(set.insert({x, s.y}).second);
  }
  return set;
}

SpanRegion RandomRegion(std::mt19937& rng) {
  std::uniform_int_distribution<int> c(-12, 12);
  SpanRegion r;
  const int boxes = static_cast<int>(rng() % 4);
  for (int i = 0; i < boxes; ++i) {
    IRect b{c(rng), c(rng), c(rng), c(rng)};
    if (b.left > b.right) std::swap(b.left, b.right);
    if (b.top > b.bottom) std::swap(b.top, b.bottom);
    r = SpanRegion::Combine(r, SpanRegion::FromRect(b), (rng() % 3) ? RegionOp::kOr : RegionOp::kXor);
  }
  return r;
}

TEST(SpanRegionTest, CombineMatchesPixelSetsInEveryMode) {
  std::mt19937 rng(2024);
  for (int k = 0; k < 300; ++k) {
    const SpanRegion a = RandomRegion(rng), b = RandomRegion(rng);
    const PixelSet pa = ToPixels(a), pb = ToPixels(b);
    for (RegionOp op : {RegionOp::kAnd, RegionOp::kOr, RegionOp::kXor, RegionOp::kDiff}) {
      PixelSet want;
      for (int y = -13; y <= 13; ++y) {
        for (int x = -13; x <= 13; ++x) {
          const bool ia = pa.count({x, y}), ib = pb.count({x, y});
          const bool in = op == RegionOp::kAnd   ? ia && ib
                          : op == RegionOp::kOr  ? ia || ib
                          : op == RegionOp::kXor ? ia != ib
                                                 : ia && !ib;
          if (in) want.insert({x, y});
        }
      }
      const SpanRegion r = SpanRegion::Combine(a, b, op);
      ASSERT_EQ(ToPixels(r), want) << "case " << k << " op " << static_cast<int>(op);
      // Queries agree with the pixels.
      for (int y = -13; y <= 13; y += 2) {
        for (int x = -13; x <= 13; x += 3) EXPECT_EQ(r.Contains(x, y), want.count({x, y}) == 1);
      }
      // Coalesced bands: building the same pixels another way gives an equal region.
      RegionBuilder builder;
      for (const auto& [x, y] : want) {
        const Span s{y, x, x + 1};
        builder.Blit(&s, 1);
      }
      EXPECT_TRUE(builder.Build() == r);
    }
  }
}

TEST(SpanRegionTest, KindsAndBounds) {
  EXPECT_EQ(SpanRegion().Kind(), RegionKind::kEmpty);
  EXPECT_EQ(SpanRegion::FromRect({5, 5, 5, 9}).Kind(), RegionKind::kEmpty);
  const SpanRegion box = SpanRegion::FromRect({1, 2, 5, 9});
  EXPECT_EQ(box.Kind(), RegionKind::kSimple);
  EXPECT_EQ(box.Bounds(), (IRect{1, 2, 5, 9}));
  const SpanRegion two = SpanRegion::Combine(box, SpanRegion::FromRect({7, 2, 9, 3}), RegionOp::kOr);
  EXPECT_EQ(two.Kind(), RegionKind::kComplex);
  EXPECT_EQ(two.Bounds(), (IRect{1, 2, 9, 9}));
  // Two boxes that meet edge to edge merge into one.
  const SpanRegion merged =
      SpanRegion::Combine(box, SpanRegion::FromRect({5, 2, 8, 9}), RegionOp::kOr);
  EXPECT_EQ(merged.Kind(), RegionKind::kSimple);
  EXPECT_TRUE(merged.Intersects({7, 8, 20, 20}));
  EXPECT_FALSE(merged.Intersects({8, 0, 20, 20}));
}

TEST(SpanRegionTest, OffsetSaturatesAtTheLimits) {
  SpanRegion r = SpanRegion::FromRect({INT_MAX - 10, 0, INT_MAX, 4});
  r.Offset(100, 0);  // pushed past the limit: nothing representable is left
  EXPECT_TRUE(r.IsEmpty());
  SpanRegion s = SpanRegion::FromRect({-5, INT_MIN, 5, INT_MIN + 10});
  s.Offset(0, -3);
  EXPECT_EQ(s.Bounds(), (IRect{-5, INT_MIN, 5, INT_MIN + 7}));
  SpanRegion t = SpanRegion::FromRect({0, 0, 3, 3});
  t.Offset(-7, 9);
  EXPECT_EQ(t.Bounds(), (IRect{-7, 9, -4, 12}));
}

TEST(SpanRegionTest, BuilderTakesOverlapsAndTallBoxes) {
  RegionBuilder b;
  const Span spans[] = {{0, 0, 5}, {0, 3, 8}, {1, 0, 8}, {0, 10, 12}};
  b.Blit(spans, 4);
  b.BlitRect({0, 2, 8, 1000000});
  const SpanRegion r = b.Build();
  EXPECT_EQ(r.bands().size(), 2u);  // rows 0 (two intervals) and 1..999999 (one)
  EXPECT_TRUE(r.Contains(11, 0));
  EXPECT_TRUE(r.Contains(7, 999999));
  EXPECT_FALSE(r.Contains(8, 5));
}

TEST(RegionClipSinkTest, ForwardsOnlyTheInsideParts) {
  const SpanRegion ring = SpanRegion::Combine(SpanRegion::FromRect({0, 0, 10, 10}),
                                              SpanRegion::FromRect({3, 3, 7, 7}), RegionOp::kDiff);
  RecordingSink out;
  RegionClipSink clip;
  clip.Reset(&ring, &out);
  const Span spans[] = {{5, -4, 20}, {1, 2, 4}, {20, 0, 10}};
  clip.Blit(spans, 3);
  clip.BlitRect({8, 8, 30, 12});
  PixelSet got;
  for (const Span& s : out.spans()) {
    for (int x = s.x0; x < s.x1; ++x) got.insert({x, s.y});
  }
  const PixelSet want = {{0, 5}, {1, 5}, {2, 5}, {7, 5}, {8, 5}, {9, 5}, {2, 1}, {3, 1},
                         {8, 8}, {9, 8}, {8, 9}, {9, 9}};
  EXPECT_EQ(got, want);
}

}  // namespace
}  // namespace qvis::gdi
