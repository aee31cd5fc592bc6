#include "qvis/commands/construction.h"

#include <climits>
#include <cmath>
#include <limits>

#include "gtest/gtest.h"

namespace qvis {
namespace {

struct BendCase {
  WorldPt anchor, cursor;
  int mode;
  bool has_point;
  WorldPt point;
  int mode_after;
};

TEST(TrackBendTest, BendPointPerMode) {
  const BendCase kCases[] = {
      {{0, 0}, {10, 4}, 1, true, {4, 4}, 1},
      {{0, 0}, {10, 4}, 2, true, {6, 0}, 2},
      {{0, 0}, {10, 4}, 3, true, {0, 4}, 3},
      {{0, 0}, {10, 4}, 4, true, {10, 0}, 4},
      {{0, 0}, {-10, -4}, 1, true, {-4, -4}, 1},
      {{0, 0}, {-10, -4}, 2, true, {-6, 0}, 2},
      {{5, 5}, {5, 5}, 1, true, {5, 5}, 1},  // on the anchor: P is the anchor itself
      {{0, 0}, {10, 4}, 0, false, {}, 0},
      {{0, 0}, {10, 4}, 5, false, {}, 5},
      {{0, 0}, {10, 4}, -1, false, {}, -1},
      // Right-angle modes on a shared x or y are rewritten by the larger offset.
      {{0, 0}, {10, 0}, 3, true, {10, 0}, 4},
      {{0, 0}, {0, 7}, 4, true, {0, 7}, 3},
      {{2, 2}, {2, 2}, 3, true, {2, 2}, 4},
  };
  for (const BendCase& c : kCases) {
    TrackBend bend{c.anchor, c.cursor, c.mode};
    WorldPt p{-99, -99};
    EXPECT_EQ(bend.BendPoint(&p), c.has_point) << "mode " << c.mode;
    if (c.has_point) {
      EXPECT_EQ(p.x, c.point.x) << "mode " << c.mode;
      EXPECT_EQ(p.y, c.point.y) << "mode " << c.mode;
    }
    EXPECT_EQ(bend.mode, c.mode_after);
  }
}

TEST(TrackBendTest, LegsFollowTheMode) {
  WorldSeg legs[2];
  TrackBend straight{{0, 0}, {10, 4}, 0};
  ASSERT_EQ(straight.Legs(legs), 1);
  EXPECT_TRUE(legs[0].to == (WorldPt{10, 4}));
  TrackBend bent{{0, 0}, {10, 4}, 1};
  ASSERT_EQ(bent.Legs(legs), 2);
  EXPECT_TRUE(legs[0].to == (WorldPt{4, 4}));
  EXPECT_TRUE(legs[1].from == (WorldPt{4, 4}));
  TrackBend unknown{{0, 0}, {10, 4}, 9};
  EXPECT_EQ(unknown.Legs(legs), 0);
}

TEST(TrackBendTest, NaNPositionsGiveNoFault) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  for (int mode = 0; mode < kBendModeCount; ++mode) {
    TrackBend bend{{nan, 0}, {1e300, -std::numeric_limits<double>::infinity()}, mode};
    WorldSeg legs[2];
    EXPECT_LE(bend.Legs(legs), 2);
  }
}

TEST(NextBendModeTest, FivePressesComeBackAndLargeValuesDoNotOverflow) {
  for (int start = 0; start < kBendModeCount; ++start) {
    int m = start;
    for (int i = 0; i < 5; ++i) m = NextBendMode(m);
    EXPECT_EQ(m, start);
  }
  EXPECT_EQ(NextBendMode(4), 0);
  EXPECT_EQ(NextBendMode(7), 8);
  EXPECT_EQ(NextBendMode(INT_MAX), INT_MIN);
}

TEST(RegularPolygonTest, SquareHasExactVertices) {
  const auto v = RegularPolygonVertices(0, 0, 2, 4);
  ASSERT_EQ(v.size(), 4u);
  const WorldPt kExpected[] = {{1, 0}, {0, 1}, {-1, 0}, {0, -1}};
  for (int i = 0; i < 4; ++i) {
    EXPECT_EQ(v[i].x, kExpected[i].x) << i;
    EXPECT_EQ(v[i].y, kExpected[i].y) << i;
  }
}

TEST(RegularPolygonTest, IntegerStepDecidesTheAngles) {
  struct Case {
    int sides;
    int step;
  };
  for (const Case c : {Case{5, 72}, Case{7, 51}, Case{3, 120}, Case{360, 1}}) {
    const auto v = RegularPolygonVertices(10, 20, 4, c.sides);
    ASSERT_EQ(v.size(), static_cast<size_t>(c.sides));
    const int last = c.sides - 1;
    const double a = last * c.step * 3.141592653589793 / 180.0;
    EXPECT_DOUBLE_EQ(v[last].x, 10 + 2 * std::cos(a)) << c.sides;
    EXPECT_DOUBLE_EQ(v[last].y, 20 + 2 * std::sin(a)) << c.sides;
  }
}

TEST(RegularPolygonTest, DegenerateSideCounts) {
  for (int sides : {INT_MIN, -3, 0, 1, 2}) {
    EXPECT_TRUE(RegularPolygonVertices(0, 0, 2, sides).empty()) << sides;
  }
  // Above 360 sides the step is 0: every vertex is vertex 0, kept as three records.
  for (int sides : {361, 10000, INT_MAX}) {
    const auto v = RegularPolygonVertices(0, 0, 2, sides);
    ASSERT_EQ(v.size(), 3u) << sides;
    for (const WorldPt& p : v) EXPECT_TRUE(p == (WorldPt{1, 0}));
  }
}

TEST(ArcTest, AnglesRunCounterClockwiseOnScreen) {
  ArcFigure arc;
  // Screen y grows downwards: (10, 5) lies straight above the centre (10, 10), at 90 degrees.
  ASSERT_TRUE(MakeArc({10, 10}, {15, 10}, {10, 2}, &arc));
  EXPECT_EQ(arc.radius, 5.0);
  EXPECT_NEAR(arc.start_angle, 0.0, 1e-9);
  EXPECT_NEAR(arc.end_angle, 90.0, 1e-9);
  EXPECT_NEAR(arc.end.x, 10.0, 1e-9);  // projected onto the circle along the end ray
  EXPECT_NEAR(arc.end.y, 5.0, 1e-9);
  ASSERT_TRUE(MakeArc({0, 0}, {0, 3}, {-4, 0}, &arc));
  EXPECT_NEAR(arc.start_angle, 270.0, 1e-9);
  EXPECT_NEAR(arc.end_angle, 180.0, 1e-9);
}

TEST(ArcTest, DegenerateArcsAreRefused) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double inf = std::numeric_limits<double>::infinity();
  ArcFigure arc;
  arc.radius = -7;
  EXPECT_FALSE(MakeArc({1, 1}, {1, 1}, {2, 2}, &arc));    // start on the centre
  EXPECT_FALSE(MakeArc({1, 1}, {3, 1}, {1, 1}, &arc));    // end on the centre
  EXPECT_FALSE(MakeArc({1, 1}, {nan, 1}, {2, 2}, &arc));  // no finite radius
  EXPECT_FALSE(MakeArc({1, 1}, {inf, 1}, {2, 2}, &arc));
  EXPECT_EQ(arc.radius, -7);  // untouched
}

TEST(CircleThroughThreeTest, CentreOrFirstPoint) {
  const WorldPt c = CircleThroughThree({0, 0}, {2, 0}, {1, 1});
  EXPECT_NEAR(c.x, 1.0, 1e-12);
  EXPECT_NEAR(c.y, 0.0, 1e-12);
  const WorldPt collinear = CircleThroughThree({3, 3}, {4, 4}, {5, 5});
  EXPECT_TRUE(collinear == (WorldPt{3, 3}));
}

}  // namespace
}  // namespace qvis
