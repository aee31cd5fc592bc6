// Tests of the guide outline of a track and its pieces.
#include "qvis/geometry/line_outline.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace {

void ExpectLine(const EO_Line& l, double x1, double y1, double x2, double y2) {
  EXPECT_NEAR(l.m_dX1, x1, 1e-12);
  EXPECT_NEAR(l.m_dY1, y1, 1e-12);
  EXPECT_NEAR(l.m_dX2, x2, 1e-12);
  EXPECT_NEAR(l.m_dY2, y2, 1e-12);
}

TEST(LineOutline, HorizontalTrack) {
  CQVIS_LineOutline o;
  o.GetGuideArc(0, 0, 10, 0, 2);
  ExpectLine(o.m_Line1, 0, -1, 10, -1);
  ExpectLine(o.m_Line2, 10, 1, 0, 1);
  EXPECT_EQ(o.m_StartArc.m_dCX, 0);
  EXPECT_EQ(o.m_StartArc.m_dRadius, 1);
  EXPECT_EQ(o.m_StartArc.m_dStartY, 1);
  EXPECT_EQ(o.m_StartArc.m_dEndY, -1);
  // y-up angles: (0, 1) is below the centre on screen, i.e. at 270 on the y-down plane and at
  // 90 once y is negated.
  EXPECT_EQ(o.m_StartArc.m_dStartAngle, 90);
  EXPECT_EQ(o.m_StartArc.m_dEndAngle, 270);
  EXPECT_EQ(o.m_EndArc.m_dCX, 10);
  EXPECT_EQ(o.m_EndArc.m_dStartY, -1);
  EXPECT_EQ(o.m_EndArc.m_dEndY, 1);
  EXPECT_EQ(o.m_EndArc.m_dStartAngle, 270);
  EXPECT_EQ(o.m_EndArc.m_dEndAngle, 90);

  CQVIS_LineOutline down;
  down.GetGuideArc2(0, 0, 10, 0, 2);
  EXPECT_EQ(down.m_StartArc.m_dStartAngle, 270);
  EXPECT_EQ(down.m_StartArc.m_dEndAngle, 90);
  EXPECT_EQ(down.m_EndArc.m_dStartAngle, 90);
  EXPECT_EQ(down.m_EndArc.m_dEndAngle, 270);
  EXPECT_FALSE(o.IsSameLinePoint());
  EXPECT_FALSE(o.IsSameArcPoint());
}

TEST(LineOutline, ContourIsClosedAndAtHalfWidth) {
  std::mt19937 rng(3);
  std::uniform_real_distribution<double> u(-50, 50);
  for (int i = 0; i < 100; ++i) {
    const double x1 = u(rng), y1 = u(rng), x2 = u(rng), y2 = u(rng);
    const double w = std::fabs(u(rng)) / 10;
    CQVIS_LineOutline o;
    o.GetGuideArc(x1, y1, x2, y2, w);
    // Side 1, end cap, side 2, start cap meet end to end.
    EXPECT_EQ(o.m_Line1.m_dX2, o.m_EndArc.m_dStartX);
    EXPECT_EQ(o.m_EndArc.m_dEndX, o.m_Line2.m_dX1);
    EXPECT_EQ(o.m_Line2.m_dY2, o.m_StartArc.m_dStartY);
    EXPECT_EQ(o.m_StartArc.m_dEndY, o.m_Line1.m_dY1);
    // Every corner lies at half the width from its end point, and side 1 lies on the
    // (dy, -dx) side of the direction of travel.
    EXPECT_NEAR(std::hypot(o.m_Line1.m_dX1 - x1, o.m_Line1.m_dY1 - y1), w / 2, 1e-9);
    EXPECT_NEAR(std::hypot(o.m_Line2.m_dX1 - x2, o.m_Line2.m_dY1 - y2), w / 2, 1e-9);
    const double side = (o.m_Line1.m_dX1 - x1) * (y2 - y1) - (o.m_Line1.m_dY1 - y1) * (x2 - x1);
    EXPECT_GE(side, 0);
    // The caps are half circles: their end points are opposite each other.
    EXPECT_NEAR(std::fabs(o.m_StartArc.m_dStartAngle - o.m_StartArc.m_dEndAngle), 180, 1e-4);
  }
}

TEST(LineOutline, DegenerateInput) {
  CQVIS_LineOutline thin;
  thin.GetGuideArc(1, 2, 5, 7, 0);
  EXPECT_TRUE(thin.IsSameLinePoint());  // width 0 collapses onto the centre line
  EXPECT_FALSE(thin.IsSameArcPoint());

  // A single point gives two diagonal sides offset by (h, h), not a circle.
  CQVIS_LineOutline dot;
  dot.GetGuideArc(3, 3, 3, 3, 2);
  ExpectLine(dot.m_Line1, 4, 2, 4, 2);
  ExpectLine(dot.m_Line2, 2, 4, 2, 4);
  EXPECT_FALSE(dot.IsSameLinePoint());
  EXPECT_FALSE(dot.IsSameArcPoint());
  CQVIS_LineOutline nothing;
  nothing.GetGuideArc(3, 3, 3, 3, 0);
  EXPECT_TRUE(nothing.IsSameArcPoint());
  EXPECT_TRUE(nothing.IsSameLinePoint());
}

TEST(LineOutline, AngleAndDistance) {
  const CQVIS_LineOutline o;
  struct Row {
    double x1, y1, x2, y2, want;
  };
  const Row rows[] = {
      {0, 0, 0, 0, 90},     {0, 0, 0, 5, 90},     {0, 5, 0, 0, 270},   {0, 0, 5, 0, 0},
      {5, 0, 0, 0, 180},    {0, 0, 0.005, 0.005, 0}, {0, 0, 1, 1, 45}, {0, 0, 1, -1, 315},
      {0, 0, -1, 1, 135},   {0, 0, -1, -1, 225},
  };
  for (const Row& r : rows) {
    EXPECT_NEAR(o.Angle(r.x1, r.y1, r.x2, r.y2), r.want, 1e-12)
        << r.x1 << "," << r.y1 << " -> " << r.x2 << "," << r.y2;
  }
  EXPECT_EQ(o.Distance(1, 1, 4, 5), 5);
}

TEST(LineOutline, PieceSettersLeaveWhatTheyDoNotName) {
  EO_Point p;
  p.Set(1, 2, 3, 4, 5, 6);
  p.Set(7, 8);  // zeroes the other four
  EXPECT_EQ(p.m_dValue1, 0);
  EXPECT_EQ(p.m_nValue, 0);
  EO_Arc a;
  a.m_dStartAngle = 33;
  a.Set(1, 2, 3, 4, 5, 6, 7);
  EXPECT_EQ(a.m_dStartAngle, 33);  // the angles keep their values
}

}  // namespace
