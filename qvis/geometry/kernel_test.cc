// Tests of the geometry kernel: exact constants and rounding, the kept quirks, and termination
// on extreme input.
// The Win32 macro names come first: the public geometry headers must compile under them.
#include "qvis/compat/win32_names.h"
#include "qvis/geometry/distance.h"
#include "qvis/geometry/kernel.h"
#include "qvis/geometry/line_outline.h"
#include "qvis/geometry/num_support.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>
#include <random>
#include <vector>

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

using PointList = CExPtrArray<DPoint*, DPoint*>;

// Owns the points a flattening appended.
struct Points {
  PointList list;
  ~Points() { list.DeleteAll(); }
  INT_PTR size() const { return list.GetSize(); }
  const DPoint& at(INT_PTR i) const { return *list.GetAt(i); }
};

TEST(KernelAngles, GetAngleUsesTheTruncatedConstant) {
  constexpr double k = 57.2957914;
  struct Row {
    double dx, dy, want;
  };
  const Row rows[] = {
      {0, 0, 180},     {0, -1, 90},     {0, 1, 270},    {-1, 0, 180}, {5e-6, -3, 90},
      {-2, 9e-6, 180}, {1, -1, std::atan(1.0) * k},     {1, 1, 360 - std::atan(1.0) * k},
      {-1, -1, 180 - std::atan(1.0) * k},               {-1, 1, 180 + std::atan(1.0) * k},
      {1e12, 2e-5, 360},  // 360 - (a tiny angle) rounds to 360 in the vector form
  };
  for (const Row& r : rows) {
    EXPECT_EQ(CQVIS_Math::GetAngle(r.dx, r.dy), r.want) << r.dx << "," << r.dy;
  }
  EXPECT_NEAR(CQVIS_Math::GetAngle(1, -1), 45.0000093, 1e-7);
  EXPECT_NEAR(CQVIS_Math::GetAngle(1, 1), 314.9999907, 1e-7);
  EXPECT_EQ(CQVIS_Math::GetAngle(0, 0, 1e12, 2e-5), 0.0);  // the point form wraps it
  EXPECT_EQ(CQVIS_Math::GetAngle(5, 5, 5, 0), 90.0);
}

// The literal normalisation loop, for comparison with the terminating one.
double LiteralAdjust(double a) {
  if (a == 0) return 0;
  while (a >= 360) a -= 360;
  while (a < 0) a += 360;
  return a == 360 ? 0 : a;
}

TEST(KernelAngles, AdjustAngle) {
  struct Row {
    double in, want;
  };
  const Row rows[] = {{-360, 0},      {720, 0},        {0, 0},        {360, 0},
                      {359.5, 359.5}, {-0.5, 359.5},   {-1e-20, 0},   {725.25, 5.25},
                      {-725.25, 354.75}, {360.0 * 1e6 + 12.5, 12.5}};
  for (const Row& r : rows) EXPECT_EQ(CQVIS_Math::AdjustAngle(r.in), r.want) << r.in;
  const double big = CQVIS_Math::AdjustAngle(1e300);
  EXPECT_TRUE(big >= 0 && big < 360);
  EXPECT_TRUE(std::isnan(CQVIS_Math::AdjustAngle(kInf)));
  EXPECT_TRUE(std::isnan(CQVIS_Math::AdjustAngle(-kInf)));
  EXPECT_TRUE(std::isnan(CQVIS_Math::AdjustAngle(kNaN)));
}

TEST(KernelAngles, AdjustAngleMatchesTheLiteralLoopOnOrdinaryValues) {
  std::mt19937_64 rng(7);
  std::uniform_real_distribution<double> dist(-2e6, 2e6);
  for (int i = 0; i < 300; ++i) {
    const double a = dist(rng);
    ASSERT_EQ(CQVIS_Math::AdjustAngle(a), LiteralAdjust(a)) << a;
  }
}

TEST(KernelAngles, IsAngleOnArc) {
  struct Row {
    double a, start, end;
    int want;
  };
  const Row rows[] = {
      {45, 0, 90, 1},    {0, 0, 90, 1},     {90, 0, 90, 1},    {90.001, 0, 90, 0},
      {270, 0, 90, 0},   {10, 350, 20, 1},  {350, 350, 20, 1}, {20, 350, 20, 1},
      {340, 350, 20, 0}, {180, 350, 20, 0}, {400, 0, 90, 1},   {-300, 0, 90, 1},
      {-1e6, 0, 360, 1}, {kNaN, 0, 90, 0},  {45, kNaN, 90, 0},
  };
  for (const Row& r : rows) {
    EXPECT_EQ(CQVIS_Math::IsAngleOnArc(r.a, r.start, r.end), r.want)
        << r.a << " on " << r.start << ".." << r.end;
  }
  // Extreme input finishes at once: a finite angle lies somewhere on the full turn, an
  // infinite one nowhere.
  EXPECT_EQ(CQVIS_Math::IsAngleOnArc(1e300, 0, 360), 1);
  EXPECT_EQ(CQVIS_Math::IsAngleOnArc(-1e300, 0, 360), 1);
  EXPECT_EQ(CQVIS_Math::IsAngleOnArc(kInf, 0, 360), 0);
  EXPECT_EQ(CQVIS_Math::IsAngleOnArc(-kInf, 0, 90), 0);
}

TEST(KernelUtilities, SnapRootsAndTies) {
  struct Row {
    double v, step, want;
  };
  // The asymmetric rounding: -1.5 - 0.4 truncates to -1.
  const Row rows[] = {{14, 10, 10},     {15, 10, 20},      {-15, 10, -10},
                      {-16, 10, -20},   {-6, 10, -10},     {0.26, 0.5, 0.5},
                      {kNaN, 10, 0},    {1e300, 1, 2147483647.0}, {-1e300, 1, -2147483648.0}};
  for (const Row& r : rows) {
    double v = r.v;
    CQVIS_Math::MakeSnap(v, r.step);
    EXPECT_EQ(v, r.want) << r.v << " by " << r.step;
  }
  EXPECT_EQ(CQVIS_Math::Near(1, 3, 2), 3);  // a tie goes to the second value
  EXPECT_EQ(CQVIS_Math::Near(4, 1, 2), 1);
  EXPECT_TRUE(CQVIS_Math::IsSameValue(1, 1.0009, 0));  // 0 means 0.001
  EXPECT_FALSE(CQVIS_Math::IsSamePoint(1, 1, 1.0009, 1.002, 0));
  // x^2 + 1: the absolute discriminant gives +-1 instead of failing.
  EXPECT_EQ(CQVIS_Math::Root1(1, 0, 1), 1);
  EXPECT_EQ(CQVIS_Math::Root2(1, 0, 1), -1);
  EXPECT_EQ(CQVIS_Math::Root1(1, -2, 1), 1);
}

TEST(KernelTransforms, EachRotateKeepsItsOwnSense) {
  double out[2];
  CQVIS_Math::Rotate(1, 0, 90, out);  // y down: east turns to up
  EXPECT_EQ(out[0], 0);
  EXPECT_EQ(out[1], -1);
  CQVIS_Math::Rotate(3, 4, 90.000001, out);  // snapped within 1e-5
  EXPECT_EQ(out[0], 4);
  CQVIS_Math::Rotate(2, 0, 30, out);
  EXPECT_NEAR(out[1], -1.0, 1e-15);

  double ox = 0;
  double oy = 0;
  CQVIS_Math::Rotate(10, 0, &ox, &oy, 30);  // y up, rounded: (8.66, 5)
  EXPECT_EQ(ox, 9);
  EXPECT_EQ(oy, 5);
  CQVIS_Math::Rotate(0.4, 0.3, &ox, &oy, 180);  // exact angles are not rounded
  EXPECT_EQ(ox, -0.4);

  for (double a : {90.0, 450.0, -270.0}) {  // about a centre, normalised first
    CQVIS_Math::Rotate(1, 1, 3, 1, &ox, &oy, a);
    EXPECT_EQ(ox, 1);
    EXPECT_EQ(oy, 3);
  }
  CQVIS_Math::Rotate(1, 1, 3, 1, &ox, &oy, 60);
  EXPECT_NEAR(oy, 1 + std::sqrt(3.0), 1e-15);

  const int mirror[] = {0, 1, 2, 3, 7};
  const double want_y[] = {3, 3, -1, -1, 3};
  for (int i = 0; i < 5; ++i) {
    double x = 3;
    double y = 1;
    CQVIS_Math::Rotate(1, 1, x, y, 90, mirror[i]);  // (1, 3), then mirrored about (1, 1)
    EXPECT_EQ(x, 1);
    EXPECT_EQ(y, want_y[i]) << mirror[i];
  }
  double x = 3;
  double y = 1;
  CQVIS_Math::MirrorX(0, 2, x, y);
  CQVIS_Math::MirrorY(1, 0, x, y);
  EXPECT_EQ(x, -1);
  EXPECT_EQ(y, 3);
}

TEST(KernelArcs, LengthAndRegion) {
  EXPECT_EQ(CQVIS_Math::GetLengthArc(0, 0, 2, 2, 0, 2, 0), 0);  // not a full circle
  EXPECT_NEAR(CQVIS_Math::GetLengthArc(0, 0, 2, 2, 0, 0, -2), std::numbers::pi, 1e-15);
  EXPECT_NEAR(CQVIS_Math::GetLengthArc(0, 0, 2, 0, -2, 2, 0), 3 * std::numbers::pi, 1e-14);

  // A quarter arc from east to north (y up): the end angle lies between the start angle and
  // the three-quarter and half turns, so the box reaches down and left too; kept.
  double b[4];
  CQVIS_Math::GetRegionArc(0, 0, 1, 1, 0, 0, 1, &b[0], &b[1], &b[2], &b[3]);
  EXPECT_EQ(b[0], -1);
  EXPECT_EQ(b[1], -1);
  EXPECT_EQ(b[2], 1);
  EXPECT_EQ(b[3], 1);
  // From north back to east: only the end angle's own side is reached.
  CQVIS_Math::GetRegionArc(10, 20, 1, 10, 21, 11, 20, &b[0], &b[1], &b[2], &b[3]);
  EXPECT_NEAR(b[0], 10, 1e-15);
  EXPECT_EQ(b[1], 20);
  EXPECT_EQ(b[2], 11);
  EXPECT_EQ(b[3], 21);
}

TEST(KernelArcs, MakeArcToLineStepsAndEndsOnTheEnd) {
  struct Row {
    double start, end, step;
    std::vector<double> angles;
  };
  const Row rows[] = {
      {0, 90, 30, {0, 30, 60, 90}},
      {0, 90, 40, {0, 40, 80, 90}},
      {350, 10, 10, {350, 360, 370}},  // the end is raised by a turn, not normalised
      {45, 45, 5, {45}},
      {0, 90, 0, {0, 90}},  // unusable steps: start and end only
      {0, 90, -5, {0, 90}},
      {0, 90, kNaN, {0, 90}},
  };
  for (const Row& r : rows) {
    Points p;
    CQVIS_Math::MakeArcToLine(10, 20, 2, r.start, r.end, r.step, &p.list);
    ASSERT_EQ(p.size(), static_cast<INT_PTR>(r.angles.size())) << r.start << ".." << r.end;
    for (size_t i = 0; i < r.angles.size(); ++i) {
      const double a = r.angles[i] * std::numbers::pi / 180;
      EXPECT_NEAR(p.at(i).x, 10 + 2 * std::cos(a), 1e-12);
      EXPECT_NEAR(p.at(i).y, 20 - 2 * std::sin(a), 1e-12);
    }
  }
  Points q;
  CQVIS_Math::MakeArcToLine(0, 0, 1, 0, 90, 30, &q.list);
  EXPECT_EQ(q.at(3).x, 0);  // exact at a quarter turn
  EXPECT_EQ(q.at(3).y, -1);
}

TEST(KernelArcs, MakeArcToLineStaysBoundedOnExtremeInput) {
  struct Row {
    double start, end, step;
  };
  const Row rows[] = {{0, 90, 1e-300}, {0, 1e300, 1}, {-1e300, 0, 1},
                      {0, kInf, 1},    {kNaN, 90, 1}, {0, 360, 1e-13}};
  for (const Row& r : rows) {
    Points p;
    CQVIS_Math::MakeArcToLine(0, 0, 1, r.start, r.end, r.step, &p.list);
    EXPECT_GE(p.size(), 1);
    EXPECT_LE(p.size(), (1 << 17) + 2);
  }
  // Where adding the step no longer changes the angle the loop still stops after the sweep.
  Points stalled;
  CQVIS_Math::MakeArcToLine(0, 0, 1, 1e300, 0, 1, &stalled.list);
  EXPECT_LE(stalled.size(), 3);
  // A step too fine for the cap is widened but still ends on the end angle.
  Points fine;
  CQVIS_Math::MakeArcToLine(0, 0, 1, 0, 90, 1e-9, &fine.list);
  EXPECT_GT(fine.size(), 1 << 16);
  EXPECT_EQ(fine.at(fine.size() - 1).x, 0);
  EXPECT_EQ(fine.at(fine.size() - 1).y, -1);
}

TEST(KernelArcs, MakeArcToLineCChoosesTheStep) {
  struct Row {
    double xe, ye, n;
    INT_PTR count;  // quarter arc from east to north (y down) about the origin, r = 1
  };
  const Row rows[] = {
      {0, -1, 0, 31},      // n = 0 divides to infinity: the 3-degree cap
      {0, -1, 3, 31},      // 30 degrees asked, capped at 3
      {0, -1, -2, 10},     // coarse: capped at 10
      {0, -1, -30, 31},    // 3 degrees asked, under the coarse cap
      {0, -1, kNaN, 31},   // no wish: the fine cap
      {-1, 0, 60, 61},     // 3 degrees over a half turn
  };
  for (const Row& r : rows) {
    Points p;
    CQVIS_Math::MakeArcToLineC(0, 0, 1, 1, 0, r.xe, r.ye, r.n, &p.list);
    EXPECT_EQ(p.size(), r.count) << r.n;
    ASSERT_GE(p.size(), 1);
    EXPECT_NEAR(p.at(p.size() - 1).x, r.xe, 1e-12);
    EXPECT_NEAR(p.at(p.size() - 1).y, r.ye, 1e-12);
  }
  Points same;
  CQVIS_Math::MakeArcToLineC(0, 0, 1, 1, 0, 1.0005, 0.0005, 10, &same.list);
  ASSERT_EQ(same.size(), 1);
  EXPECT_EQ(same.at(0).x, 1);
  Points none;
  CQVIS_Math::MakeArcToLineC(0, 0, 0, 1, 0, 0, -1, 10, &none.list);
  EXPECT_EQ(none.size(), 0);
  // From north to east wraps through west and south: 270 degrees.
  Points wrap;
  CQVIS_Math::MakeArcToLineC(0, 0, 1, 0, -1, 1, 0, 90, &wrap.list);
  EXPECT_EQ(wrap.size(), 91);
  EXPECT_NEAR(wrap.at(30).x, -1, 1e-12);  // west, 90 degrees in
}

TEST(KernelLines, PerpendicularFoot) {
  struct Row {
    double x1, y1, x2, y2, px, py, fx, fy;
    int inside;
  };
  const Row rows[] = {
      {0, 0, 10, 0, 3, 5, 3, 0, 1},     {0, 0, 10, 0, 12, 5, 12, 0, 0},
      {0, 0, 0, 10, 4, 3, 0, 3, 1},     {0, 0, 0, 10, 4, -3, 0, -3, 0},
      {0, 0, 10, 10, 0, 10, 5, 5, 1},   {10, 10, 0, 0, 0, 10, 5, 5, 1},
      {0, 0, 10, 10, 20, 30, 25, 25, 0}, {2, 3, 2, 3, 9, 9, 2, 3, 1},
      {0, 10, 10, 0, 0, 0, 5, 5, 1},
  };
  for (const Row& r : rows) {
    double foot[2];
    EXPECT_EQ(CQVIS_Math::PerpendicularLine(r.x1, r.y1, r.x2, r.y2, r.px, r.py, foot), r.inside);
    EXPECT_NEAR(foot[0], r.fx, 1e-12);
    EXPECT_NEAR(foot[1], r.fy, 1e-12);
  }
  double ax, ay, bx, by;
  CQVIS_Math::GetNormalLine(0, 0, 10, 0, 2, &ax, &ay, &bx, &by);
  EXPECT_EQ(ax, 5);
  EXPECT_EQ(ay, -2);
  EXPECT_NEAR(bx, 5, 1e-15);
  EXPECT_NEAR(by, 2, 1e-15);
}

TEST(KernelTests, BoxTests) {
  EXPECT_EQ(CQVIS_Math::IsPointInArea(5, 2, 10, 5, 0, 0), 0);  // not normalised
  EXPECT_EQ(CQVIS_Math::IsPointInRect(5, 2, 10, 5, 0, 0), 1);
  EXPECT_EQ(CQVIS_Math::IsInBox(10, 5, 0, 0, -1, 6, 1), 1);
  EXPECT_EQ(CQVIS_Math::IsOverlap(0, 0, 10, 10, 10, 10, 20, 20), 1);  // a shared corner
  EXPECT_EQ(CQVIS_Math::IsOverlap(0, 0, 10, 10, 10.5, 0, 20, 10), 0);
  EXPECT_EQ(CQVIS_Math::IsOverlap(0, 0, 10, 10, 10.5, 0, 20, 10, 0.5), 1);
  EXPECT_EQ(CQVIS_Math::IsOverlap(0, 0, 10, 10, kNaN, 2, 3, 3), 0);
}

TEST(KernelTests, PointOnShapes) {
  struct Row {
    double px, py, x1, y1, x2, y2;
    int want;
  };
  const Row on_line[] = {
      {5, 0, 0, 0, 10, 0, 1},
      {5, 1, 0, 1, 10, 1, 0},  // horizontal away from y = 0: the kept expression says no
      {0, 5, 0, 0, 0, 10, 1},  // vertical
      {0, 11, 0, 0, 0, 10, 0},
      {2.5, 1, 0, -2, 10, 2, 1},   // off the line, at the negated height: accepted
      {2.5, -1, 0, -2, 10, 2, 0},  // on the line: refused
      {11, 0, 0, 0, 10, 0, 0},
  };
  for (const Row& r : on_line) {
    EXPECT_EQ(CQVIS_Math::IsPointOnLine(r.px, r.py, r.x1, r.y1, r.x2, r.y2), r.want)
        << r.px << "," << r.py;
  }
  EXPECT_EQ(CQVIS_Math::IsPointOnCircle(3, 4, 0, 0, 5), 1);
  EXPECT_EQ(CQVIS_Math::IsPointOnCircle(3, 4.000001, 0, 0, 5), 1);  // squared test, 1e-5
  EXPECT_EQ(CQVIS_Math::IsPointOnCircle(3, 4.00001, 0, 0, 5), 0);
  EXPECT_EQ(CQVIS_Math::IsPointOnArc(3, -4, 0, 0, 5, 0, 90), 1);  // y up on screen
  EXPECT_EQ(CQVIS_Math::IsPointOnArc(3, 4, 0, 0, 5, 0, 90), 0);
  EXPECT_EQ(CQVIS_Math::IsPointOnArc(3, 4, 0, 0, 5, 270, 0), 1);
}

TEST(KernelIntersections, CheckCrossLineLine) {
  struct Row {
    double x1, y1, x2, y2, x3, y3, x4, y4;
    int want;
  };
  const Row rows[] = {
      {0, 0, 10, 10, 0, 10, 10, 0, 1},     // X
      {10, 10, 0, 0, 10, 0, 0, 10, 1},     // X, both reversed
      {0, 0, 10, 0, 5, 0, 5, 5, 0},        // T
      {0, 0, 10, 0, 5, 1, 5, 5, -1},       // apart
      {0, 0, 10, 0, 5, 0, 15, 0, 0},       // collinear overlap
      {0, 0, 10, 0, 11, 0, 15, 0, -1},     // collinear, apart
      {0, 0, 10, 0, 10, 0, 15, 0, 0},      // collinear, end to end
      {0, 0, 0, 1, 0, 5, 0, 6, 0},         // vertical collinear apart: x alone says contact
      {0, 0, 10, 10, 20, 20, 30, 0, -1},   // end on the other's line, beyond it
  };
  for (const Row& r : rows) {
    EXPECT_EQ(CQVIS_Math::CheckCrossLineLine(r.x1, r.y1, r.x2, r.y2, r.x3, r.y3, r.x4, r.y4),
              r.want);
    EXPECT_EQ(CQVIS_Math::IsIntersectLineLine(r.x1, r.y1, r.x2, r.y2, r.x3, r.y3, r.x4, r.y4),
              r.want);
  }
}

TEST(KernelIntersections, GetIntersectionLineLine) {
  struct Row {
    double x1, y1, x2, y2, x3, y3, x4, y4;
    int n;
    double ox1, oy1, ox2, oy2;
  };
  const Row rows[] = {
      {0, 0, 10, 10, 0, 10, 10, 0, 1, 5, 5, 0, 0},
      {0, 0, 0, 10, -5, 5, 5, 5, 1, 0, 5, 0, 0},        // vertical / horizontal
      {-5, 5, 5, 5, 0, 0, 0, 10, 1, 0, 5, 0, 0},        // horizontal / vertical
      {0, 0, 0, 10, -2, 0, 2, 8, 1, 0, 4, 0, 0},        // vertical / sloped
      {0, 0, 10, 0, 2, -2, 6, 6, 1, 3, 0, 0, 0},        // horizontal / sloped
      {0, 0, 10, 0, -5, 0, 5, 0, 2, 5, 0, 0, 0},        // horizontal overlap [0, 5]
      {0, 0, 0, 10, 0, 5, 0, 20, 2, 0, 5, 0, 5},        // nearest-end rule, kept
      {0, 0, 10, 10, 5, 5, 15, 15, 0, 0, 0, 0, 0},      // sloped collinear: 0, kept
      {0, 0, 10, 10, 11, 0, 21, 10, 0, 0, 0, 0, 0},     // parallel
      {0, 0, 1, 1, 5, 0, 6, -2, 0, 0, 0, 0, 0},         // apart
  };
  for (const Row& r : rows) {
    double out[4] = {0, 0, 0, 0};
    const int n =
        CQVIS_Math::GetIntersectionLineLine(r.x1, r.y1, r.x2, r.y2, r.x3, r.y3, r.x4, r.y4, out);
    ASSERT_EQ(n, r.n) << r.x1 << "," << r.y1 << " " << r.x3 << "," << r.y3;
    if (n >= 1) {
      EXPECT_NEAR(out[0], r.ox1, 1e-12);
      EXPECT_NEAR(out[1], r.oy1, 1e-12);
    }
    if (n == 2) {
      EXPECT_NEAR(out[2], r.ox2, 1e-12);
      EXPECT_NEAR(out[3], r.oy2, 1e-12);
    }
  }
}

TEST(KernelIntersections, GetInsideValuesBranches) {
  struct Row {
    double a1, a2, b1, b2, o1, o2;
  };
  const Row rows[] = {
      {0, 10, 5, 20, 5, 5},    // b1 inside: nearest of b to each a end
      {0, 10, 2, 8, 2, 8},
      {0, 10, -5, 20, 0, 10},  // both b outside: nearest of a to each b end
      {0, 10, 20, 5, 5, 10},   // b2 inside, a1 outside b: a2
      {0, 10, -5, 5, 5, 0},    // b2 inside, a1 inside b
  };
  for (const Row& r : rows) {
    double out[2];
    CQVIS_Math::GetInsideValues(r.a1, r.a2, r.b1, r.b2, out);
    EXPECT_EQ(out[0], r.o1);
    EXPECT_EQ(out[1], r.o2);
  }
}

TEST(KernelIntersections, CrossLine) {
  struct Row {
    double x1, y1, x2, y2, x3, y3, x4, y4;
    int ret;
    double x, y;
  };
  const Row rows[] = {
      {0, 0, 0.5, 10, -5, 3, 5, 3.5, 1, 0, 3},          // near-vertical / near-horizontal
      {-5, 3, 5, 3.5, 0, 0, 0.5, 10, 1, 0, 3},
      {0, 0, 10, 10, 4, -5, 4, 5, 1, 4, 4},             // B vertical
      {4, -5, 4, 5, 0, 0, 10, 10, 1, 4, 4},             // A vertical
      {0, 0, 0.2, 10, 0.5, 0, 0.6, 10, 1, 0, 0},        // both vertical, 0.5 apart
      {0, 1, 10, 1.5, 3, 1.2, 9, 1.9, 1, 0, 1},         // both horizontal within 1
      {0, 0, 10, 10, 0, 10, 10, 0, 1, 5, 5},
      {0, 0, 10, 10, 0, 5, 10, 15, 0, 0, 0},            // parallel
  };
  for (const Row& r : rows) {
    double x = -1;
    double y = -1;
    EXPECT_EQ(CQVIS_Math::CrossLine(r.x1, r.y1, r.x2, r.y2, r.x3, r.y3, r.x4, r.y4, &x, &y),
              r.ret);
    EXPECT_NEAR(x, r.x, 1e-12);
    EXPECT_NEAR(y, r.y, 1e-12);
  }
}

TEST(KernelIntersections, LineWithCircle) {
  struct Row {
    double x1, y1, x2, y2, cx, cy, r;
    int line_n, segment_n;
    double ox, oy;  // the first point written
  };
  const Row rows[] = {
      {-10, 1, 10, 1, 0, 1, 5, 2, 2, -5, 1},  // horizontal: first on P1's side of the centre
      {10, 0, -10, 0, 0, 0, 5, 2, 2, 5, 0},
      {-10, 5, 10, 5, 0, 0, 5, 1, 1, 0, 5},   // tangent
      {3, -10, 3, 10, 0, 0, 5, 2, 2, 3, -4},  // vertical
      {0, 0, 10, 0, 0, 0, 5, 2, 1, 5, 0},     // the segment keeps what lies in its box
      {0, 0, 4, 0, 0, 0, 5, 2, 0, -5, 0},
      {6, -10, 6, 10, 0, 0, 5, 0, 0, 0, 0},
  };
  for (const Row& r : rows) {
    double out[4] = {0, 0, 0, 0};
    ASSERT_EQ(CQVIS_Math::GetCrossPointLC(r.x1, r.y1, r.x2, r.y2, r.cx, r.cy, r.r, out), r.line_n);
    if (r.line_n > 0 && r.segment_n == r.line_n) {
      EXPECT_EQ(out[0], r.ox);
      EXPECT_EQ(out[1], r.oy);
    }
    EXPECT_EQ(CQVIS_Math::GetIntersectionLineCircle(r.x1, r.y1, r.x2, r.y2, r.cx, r.cy, r.r, out),
              r.segment_n);
  }
  double out[4];
  ASSERT_EQ(CQVIS_Math::GetIntersectionLineCircle(-7, -8, 7, 6, 1, -1, 5, out), 2);  // sloped
  for (int i = 0; i < 2; ++i) {
    EXPECT_NEAR(std::hypot(out[2 * i] - 1, out[2 * i + 1] + 1), 5, 1e-12);
    EXPECT_NEAR(out[2 * i + 1], out[2 * i] - 1, 1e-12);  // on y = x - 1
  }
  // A point-sized circle is its centre, kept when inside the segment's box.
  EXPECT_EQ(CQVIS_Math::GetIntersectionLineCircle(0, 0, 10, 10, 3, 3, 1e-6, out), 1);
  EXPECT_EQ(CQVIS_Math::GetIntersectionLineCircle(0, 0, 10, 10, 30, 3, 0, out), 0);
  // Arc: the crossings whose angle lies on it, packed from the front.
  ASSERT_EQ(CQVIS_Math::GetIntersectionLineArc(-7, 0, 7, 0, 0, 0, 5, 270, 90, out), 1);
  EXPECT_EQ(out[0], 5);
  EXPECT_EQ(CQVIS_Math::GetIntersectionLineArc(-7, 0, 7, 0, 0, 0, 5, 10, 170, out), 0);
}

TEST(KernelIntersections, CircleWithCircleAndArcs) {
  double out[4];
  ASSERT_EQ(CQVIS_Math::GetIntersectionCircleCircle(1, 2, 3, 1, 2, 3, out), 1);  // identical
  EXPECT_EQ(out[0], 1);
  EXPECT_EQ(out[1], 2);
  EXPECT_EQ(CQVIS_Math::GetIntersectionCircleCircle(0, 0, 1, 1.8, 1.8, 1, out), 0);
  ASSERT_EQ(CQVIS_Math::GetIntersectionCircleCircle(0, 0, 5, 10, 0, 5, out), 1);  // tangent
  EXPECT_EQ(out[0], 5);
  // Two crossings for horizontal, vertical and skew centre lines, each on both circles.
  const double centres[][2] = {{8, 0}, {0, 8}, {0, -8}, {-6, 5}, {3, 4}};
  for (const auto& c : centres) {
    ASSERT_EQ(CQVIS_Math::GetIntersectionCircleCircle(0, 0, 5, c[0], c[1], 5, out), 2);
    for (int i = 0; i < 2; ++i) {
      EXPECT_NEAR(std::hypot(out[2 * i], out[2 * i + 1]), 5, 1e-9);
      EXPECT_NEAR(std::hypot(out[2 * i] - c[0], out[2 * i + 1] - c[1]), 5, 1e-9);
    }
    EXPECT_GT(std::hypot(out[0] - out[2], out[1] - out[3]), 1);
  }
  // The circles about (0, 0) and (8, 0) meet at (4, -3) (above, y down) and (4, 3).
  ASSERT_EQ(CQVIS_Math::GetIntersectionCircleArc(0, 0, 5, 8, 0, 5, 180, 270, out), 1);
  EXPECT_NEAR(out[1], 3, 1e-12);
  EXPECT_EQ(CQVIS_Math::GetIntersectionCircleArc(0, 0, 5, 8, 0, 5, 300, 60, out), 0);
  ASSERT_EQ(CQVIS_Math::GetIntersectionArcArc(0, 0, 5, 0, 90, 8, 0, 5, 90, 270, out), 1);
  EXPECT_NEAR(out[1], -3, 1e-12);
  EXPECT_EQ(CQVIS_Math::GetIntersectionArcArc(0, 0, 5, 180, 270, 8, 0, 5, 90, 180, out), 0);
}

// Random segments and circles: every point returned lies on both shapes, and the count is the
// one the exact geometry gives (tangent and grazing cases are skipped).
TEST(KernelIntersections, PointsLieOnBothShapes) {
  std::mt19937 rng(99);
  std::uniform_real_distribution<double> pos(-10, 10);
  std::uniform_real_distribution<double> rad(0.5, 6);
  int crossings = 0;
  for (int i = 0; i < 500; ++i) {
    const double x1 = pos(rng), y1 = pos(rng), x2 = pos(rng), y2 = pos(rng);
    const double cx = pos(rng), cy = pos(rng), r = rad(rng);
    // Exact count: crossings of the circle at parameters t in [0, 1] of the segment.
    const double dx = x2 - x1, dy = y2 - y1, fx = x1 - cx, fy = y1 - cy;
    const double a = dx * dx + dy * dy, b = 2 * (fx * dx + fy * dy);
    const double disc = b * b - 4 * a * (fx * fx + fy * fy - r * r);
    int want = 0;
    bool grazing = std::fabs(disc) < 1e-6;
    if (disc > 0) {
      for (double t : {(-b - std::sqrt(disc)) / (2 * a), (-b + std::sqrt(disc)) / (2 * a)}) {
        want += (t >= 0 && t <= 1) ? 1 : 0;
        grazing = grazing || std::fabs(t) < 1e-6 || std::fabs(t - 1) < 1e-6;
      }
    }
    double out[4];
    const int n = CQVIS_Math::GetIntersectionLineCircle(x1, y1, x2, y2, cx, cy, r, out);
    if (!grazing) {
      EXPECT_EQ(n, want) << "segment case " << i;
    }
    for (int k = 0; k < n; ++k) {
      EXPECT_NEAR(std::hypot(out[2 * k] - cx, out[2 * k + 1] - cy), r, 1e-9);
      EXPECT_NEAR((out[2 * k] - x1) * dy - (out[2 * k + 1] - y1) * dx, 0, 1e-9 * a);
    }
    crossings += n;

    const double cx2 = pos(rng) / 2, cy2 = pos(rng) / 2, r2 = rad(rng);
    const double d = std::hypot(cx2 - cx, cy2 - cy);
    const int n2 = CQVIS_Math::GetIntersectionCircleCircle(cx, cy, r, cx2, cy2, r2, out);
    if (d > r + r2 + 1e-6 || d < std::fabs(r - r2) - 1e-6) {
      EXPECT_EQ(n2, 0) << "circles " << i;
    }
    if (d < r + r2 - 1e-6 && d > std::fabs(r - r2) + 1e-6) {
      ASSERT_EQ(n2, 2) << "circles " << i;
      for (int k = 0; k < 2; ++k) {
        EXPECT_NEAR(std::hypot(out[2 * k] - cx, out[2 * k + 1] - cy), r, 1e-6);
        EXPECT_NEAR(std::hypot(out[2 * k] - cx2, out[2 * k + 1] - cy2), r2, 1e-6);
      }
    }
  }
  EXPECT_GT(crossings, 100);
}

TEST(KernelRobustness, ExtremeInputFinishes) {
  const double bad[] = {kNaN, kInf, -kInf, 1e300, -1e300, 0};
  for (double v : bad) {
    double out[4];
    CQVIS_Math::GetIntersectionCircleCircle(v, 0, 1, 0, v, 2, out);
    CQVIS_Math::GetIntersectionArcArc(0, 0, 5, v, 90, 8, 0, 5, 90, v, out);
    CQVIS_Math::GetIntersectionLineArc(0, v, 7, 0, 0, 0, 5, v, 270, out);
    CQVIS_Math::GetIntersectionLineLine(0, 0, v, v, 1, 0, 0, 1, out);
    double x = 0;
    double y = 0;
    CQVIS_Math::CrossLine(0, 0, v, 1, 1, v, 0, 1, &x, &y);
    const double len = CQVIS_Math::GetLengthArc(0, 0, 1, v, 0, 0, v);
    EXPECT_FALSE(len < 0);
    Points p;
    CQVIS_Math::MakeArcToLineC(0, 0, 1, 1, 0, v, 1, v, &p.list);
    EXPECT_LE(p.size(), (1 << 17) + 2);
  }
}

}  // namespace
