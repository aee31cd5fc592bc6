// Tests of the three-point centre and the direction from east.
#include "qvis/geometry/num_support.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

#include "qvis/geometry/kernel.h"

namespace {

TEST(NumSupport, ArcCenter) {
  struct Row {
    double x1, y1, x2, y2, x3, y3, cx, cy;
  };
  const Row rows[] = {
      {0, 0, 2, 0, 0, 2, 1, 1},
      {5, 0, 0, 5, -5, 0, 0, 0},
      {1e6 + 5, 1e6, 1e6, 1e6 + 5, 1e6 - 5, 1e6, 1e6, 1e6},  // far from the origin
      {0, 0, 1, 1, 2, 2, 0, 0},                              // collinear: the first point
      {3, 4, 3, 4, 3, 4, 3, 4},                              // coincident
      {3, 4, 3, 4, 9, 9, 3, 4},                              // two coincident
      {1, 1, 1e-300, 1e-300, 2, 2, 1, 1},
  };
  for (const Row& r : rows) {
    const gf_point c = getArcCenter(r.x1, r.y1, r.x2, r.y2, r.x3, r.y3);
    EXPECT_NEAR(c.x, r.cx, 1e-9) << r.x1 << "," << r.y1;
    EXPECT_NEAR(c.y, r.cy, 1e-9) << r.x1 << "," << r.y1;
  }
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const gf_point n = getArcCenter(1, 2, nan, 0, 3, 3);
  EXPECT_EQ(n.x, 1);
  EXPECT_EQ(n.y, 2);
  const gf_point big = getArcCenter(0, 0, 1e300, 0, 0, 1e300);
  EXPECT_TRUE(std::isfinite(big.x) && std::isfinite(big.y));

  std::mt19937 rng(11);
  std::uniform_real_distribution<double> u(-100, 100);
  for (int i = 0; i < 200; ++i) {
    const double p[6] = {u(rng), u(rng), u(rng), u(rng), u(rng), u(rng)};
    const gf_point c = getArcCenter(p[0], p[1], p[2], p[3], p[4], p[5]);
    const double r1 = std::hypot(p[0] - c.x, p[1] - c.y);
    const double r2 = std::hypot(p[2] - c.x, p[3] - c.y);
    const double r3 = std::hypot(p[4] - c.x, p[5] - c.y);
    EXPECT_NEAR(r1, r2, 1e-9 * r1);
    EXPECT_NEAR(r1, r3, 1e-9 * r1);
  }
}

TEST(NumSupport, AngleFromEast) {
  struct Row {
    double cx, cy, x, y, want;
  };
  const Row rows[] = {
      {0, 0, 5, 0, 0},   {0, 0, 0, -5, 90}, {0, 0, -5, 0, 180}, {0, 0, 0, 5, 270},
      {1, 1, 2, 0, 45},  {1, 1, 1, 1, 0},   {0, 0, 1, 1e-300, 0},
      {0, 0, 1, std::numeric_limits<double>::quiet_NaN(), 0},
  };
  for (const Row& r : rows) {
    const double a = dAngleFromEast(r.cx, r.cy, r.x, r.y);
    EXPECT_NEAR(a, r.want, 1e-12) << r.x << "," << r.y;
    EXPECT_FALSE(std::signbit(a));
  }
  // Same sense as the kernel's angle of a vector (which uses a slightly larger constant).
  std::mt19937 rng(5);
  std::uniform_real_distribution<double> u(-10, 10);
  for (int i = 0; i < 200; ++i) {
    const double x = u(rng), y = u(rng);
    const double a = dAngleFromEast(0, 0, x, y);
    EXPECT_GE(a, 0);
    EXPECT_LT(a, 360);
    double diff = std::fabs(a - CQVIS_Math::GetAngle(0, 0, x, y));
    diff = std::min(diff, 360 - diff);
    EXPECT_LT(diff, 1e-4);
  }
}

}  // namespace
