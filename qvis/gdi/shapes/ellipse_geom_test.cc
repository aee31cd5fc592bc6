#include "qvis/gdi/shapes/ellipse_geom.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "qvis/gdi/shapes/curve_flatten.h"

namespace qvis::gdi {
namespace {

using PixelSet = std::set<std::pair<int, int>>;

PixelSet ToSet(const std::vector<PointI>& pts) {
  PixelSet s;
  for (const PointI& p : pts) s.insert({p.x, p.y});
  return s;
}

// Renders a pixel set inside w x h as rows of '#' and '.'.
std::vector<std::string> Picture(const PixelSet& s, int w, int h) {
  std::vector<std::string> rows(static_cast<std::size_t>(h),
                                std::string(static_cast<std::size_t>(w), '.'));
  for (const auto& [x, y] : s) {
    if (x >= 0 && x < w && y >= 0 && y < h)
      rows[static_cast<std::size_t>(y)][static_cast<std::size_t>(x)] = '#';
  }
  return rows;
}

TEST(EllipseOutlineTest, SmallBoxesHaveTheSteppedShapes) {
  struct Row {
    int w, h;
    std::vector<std::string> picture;
  };
  const Row rows[] = {
      {3, 3, {".#.", "#.#", ".#."}},
      {4, 3, {".##.", "#..#", ".##."}},
      {5, 5, {".###.", "#...#", "#...#", "#...#", ".###."}},
      {6, 4, {".####.", "#....#", "#....#", ".####."}},
  };
  for (const Row& r : rows) {
    std::vector<PointI> pts;
    EllipseOutline(Box64{0, 0, r.w, r.h}, false, &pts);
    EXPECT_EQ(Picture(ToSet(pts), r.w, r.h), r.picture) << r.w << "x" << r.h;
  }
}

TEST(EllipseOutlineTest, IsSymmetricAndConnected) {
  for (int w = 3; w <= 40; w += 3) {
    for (int h = 3; h <= 40; h += 5) {
      std::vector<PointI> pts;
      EllipseOutline(Box64{10, 20, 10 + w, 20 + h}, (w + h) % 2 == 0, &pts);
      ASSERT_GE(pts.size(), 4u);
      const PixelSet s = ToSet(pts);
      // Only the middle row of an odd-height box is walked twice (out and back), as the
      // platform draws it: in XOR mode those pixels cancel.
      std::multiset<std::pair<int, int>> seen;
      for (const PointI& p : pts) seen.insert({p.x, p.y});
      for (const auto& px : s) {
        if (seen.count(px) > 1) {
          EXPECT_TRUE(h % 2 == 1 && px.second == 20 + h / 2) << w << "x" << h;
        }
      }
      for (std::size_t i = 0; i < pts.size(); ++i) {
        const PointI& a = pts[i];
        const PointI& b = pts[(i + 1) % pts.size()];
        EXPECT_LE(std::max(std::abs(a.x - b.x), std::abs(a.y - b.y)), 1) << w << "x" << h;
        EXPECT_TRUE(s.count({19 + w - a.x, a.y}) && s.count({a.x, 39 + h - a.y}))
            << "not mirror-symmetric at " << a.x << "," << a.y;
        EXPECT_TRUE(a.x >= 10 && a.x < 10 + w && a.y >= 20 && a.y < 20 + h);
      }
    }
  }
}

TEST(EllipseOutlineTest, DirectionOnlyReversesTheOrder) {
  std::vector<PointI> ccw;
  std::vector<PointI> cw;
  EllipseOutline(Box64{0, 0, 17, 11}, false, &ccw);
  EllipseOutline(Box64{0, 0, 17, 11}, true, &cw);
  EXPECT_EQ(ToSet(ccw), ToSet(cw));
  // Both start at the right end of the middle row; counter-clockwise goes up first.
  EXPECT_EQ(ccw.front(), cw.front());
  auto first_turn = [](const std::vector<PointI>& v) {
    for (const PointI& p : v) {
      if (p.y != v.front().y) return p.y - v.front().y;
    }
    return 0;
  };
  EXPECT_LT(first_turn(ccw), 0);
  EXPECT_GT(first_turn(cw), 0);
}

TEST(EllipseOutlineTest, DegenerateBoxesGiveNothing) {
  const Box64 boxes[] = {{0, 0, 0, 5}, {0, 0, 5, 0}, {0, 0, kMaxSteppedEllipse + 1, 10}};
  for (const Box64& b : boxes) {
    std::vector<PointI> pts;
    EllipseOutline(b, false, &pts);
    EXPECT_TRUE(pts.empty());
    EXPECT_FALSE(ArcPoints(b, PointI{0, 0}, PointI{1, 1}, false, &pts));
  }
}

TEST(ArcPointsTest, EqualRaysGiveTheWholeOutlineInDrawingOrder) {
  const Box64 box{5, 5, 40, 26};
  std::vector<PointI> outline;
  EllipseOutline(box, false, &outline);
  for (PointI ray : {PointI{100, 15}, PointI{22, -50}, PointI{0, 0}, PointI{22, 15}}) {
    std::vector<PointI> arc;
    ASSERT_TRUE(ArcPoints(box, ray, ray, false, &arc));
    EXPECT_EQ(ToSet(arc), ToSet(outline));
  }
}

TEST(ArcPointsTest, QuarterArcsFollowTheDirection) {
  const Box64 box{0, 0, 21, 21};  // centre pixel (10, 10)
  std::vector<PointI> ccw;
  std::vector<PointI> cw;
  // From the ray to the right to the ray upward.
  ArcPoints(box, PointI{30, 10}, PointI{10, -30}, false, &ccw);
  ArcPoints(box, PointI{30, 10}, PointI{10, -30}, true, &cw);
  ASSERT_FALSE(ccw.empty());
  ASSERT_FALSE(cw.empty());
  EXPECT_EQ(ccw.front(), (PointI{20, 10}));
  EXPECT_EQ(cw.front(), (PointI{20, 10}));
  // Counter-clockwise stays in the upper right quarter; clockwise runs round the other three.
  for (const PointI& p : ccw) EXPECT_TRUE(p.x >= 10 && p.y <= 10) << p.x << "," << p.y;
  EXPECT_GT(cw.size(), 2 * ccw.size());
  PixelSet both = ToSet(ccw);
  for (const PointI& p : cw) both.insert({p.x, p.y});
  std::vector<PointI> outline;
  EllipseOutline(box, false, &outline);
  EXPECT_EQ(both, ToSet(outline));
}

TEST(RoundRectRowsTest, EllipticRegionRows) {
  std::vector<std::int64_t> l;
  std::vector<std::int64_t> r;
  // The region of a 6x6 box covers 5 rows (right and bottom edges excluded once more).
  ASSERT_EQ(RoundRectRows(Box64{0, 0, 6, 6}, 6, 6, &l, &r), 5);
  const std::vector<std::int64_t> want_l = {1, 0, 0, 0, 1};
  const std::vector<std::int64_t> want_r = {4, 5, 5, 5, 4};
  EXPECT_EQ(l, want_l);
  EXPECT_EQ(r, want_r);
  // Round rectangle: full rows between the rounded corners.
  ASSERT_EQ(RoundRectRows(Box64{0, 0, 20, 12}, 4, 4, &l, &r), 11);
  EXPECT_EQ(l[5], 0);
  EXPECT_EQ(r[5], 19);
  EXPECT_GT(l[0], 0);
  EXPECT_EQ(l[0], l[10]);
  // Corners below 2 pixels are square; empty and huge boxes give no rows.
  ASSERT_EQ(RoundRectRows(Box64{3, 4, 9, 8}, 1, 30, &l, &r), 3);
  EXPECT_EQ(l, (std::vector<std::int64_t>{3, 3, 3}));
  EXPECT_EQ(RoundRectRows(Box64{0, 0, 1, 9}, 9, 9, &l, &r), 0);
  EXPECT_EQ(RoundRectRows(Box64{0, 0, kMaxSteppedEllipse + 2, 9}, 9, 9, &l, &r), 0);
}

TEST(FlattenArcTest, PointsLieOnTheCurveAndFarPiecesAreChords) {
  const IRect clip{0, 0, 200, 200};
  std::vector<Point2> pts;
  FlattenArc(EllipseArc{100, 100, 80, 50, 0, 6.283185307179586}, clip, 0.25, &pts);
  ASSERT_GT(pts.size(), 20u);
  for (const Point2& p : pts) {
    const double e = (p.x - 100) * (p.x - 100) / 6400 + (p.y - 100) * (p.y - 100) / 2500;
    EXPECT_NEAR(e, 1.0, 1e-9);
  }
  // Huge circles whose edge crosses the clip box: few points in all, and where a chord passes
  // over the box it stays within the tolerance of the curve.
  for (double r : {2.0e3, 1.0e6, 1.0e9}) {
    pts.clear();
    FlattenArc(EllipseArc{100, r + 100, r, r, 0, 6.283185307179586}, clip, 0.25, &pts);
    EXPECT_LT(pts.size(), 400u) << r;
    for (std::size_t i = 0; i + 1 < pts.size(); ++i) {
      const double mx = (pts[i].x + pts[i + 1].x) / 2;
      const double my = (pts[i].y + pts[i + 1].y) / 2;
      if (mx < 0 || mx >= 200 || my < 0 || my >= 200) continue;
      EXPECT_LT(r - std::hypot(mx - 100, my - (r + 100)), 0.3) << r;
    }
  }
  // Non-finite input gives nothing.
  pts.clear();
  FlattenArc(EllipseArc{0, 0, std::numeric_limits<double>::infinity(), 5, 0, 1}, clip, 0.25, &pts);
  EXPECT_TRUE(pts.empty());
}

}  // namespace
}  // namespace qvis::gdi
