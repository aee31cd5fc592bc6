#include "qvis/commands/arc_cmd.h"

#include "gtest/gtest.h"
#include "qvis/commands/test_canvas.h"
#include "qvis/compat/win32_names.h"

namespace qvis {
namespace {

using testing::Canvas;
using testing::Pixels;

class ArcCmdTest : public ::testing::Test {
 protected:
  void Click(double x, double y, int expected) {
    cmd.MouseMove(x, y);
    EXPECT_EQ(cmd.MouseDown(1, x, y), expected) << x << ", " << y;
  }
  Canvas canvas{160, 120, 4.0};
  Pixels background = canvas.Snapshot();
  CQVIS_DrawArcCmd cmd{canvas.surface()};
};

TEST_F(ArcCmdTest, ThreeClicksMakeTheArc) {
  cmd.Active();
  EXPECT_EQ(cmd.m_strInfo, CString("Click center position"));
  Click(20, 15, 1);
  Click(20, 15, 0);  // the start point on the centre is refused
  EXPECT_EQ(cmd.m_nProgress, 1);
  Click(25, 15, 1);
  EXPECT_EQ(cmd.m_dRadius, 5.0);
  EXPECT_EQ(cmd.IsBusy(), 1);
  cmd.MouseMove(20, 5);
  EXPECT_EQ(cmd.m_strInfo, CString("Click end position (angle=90.000)"));
  Click(20, 5, 2);
  EXPECT_EQ(cmd.m_nProgress, 0);
  EXPECT_EQ(cmd.m_dCenterX, 20.0);
  EXPECT_EQ(cmd.m_dStartX, 25.0);
  EXPECT_NEAR(cmd.m_dStartAngle, 0.0, 1e-9);
  EXPECT_NEAR(cmd.m_dEndAngle, 90.0, 1e-9);
  EXPECT_NEAR(cmd.m_dEndX, 20.0, 1e-9);
  EXPECT_NEAR(cmd.m_dEndY, 10.0, 1e-9);  // on the circle, along the ray through the click
  cmd.Deactive();
  EXPECT_EQ(Canvas::CountDiff(canvas.Snapshot(), background), 0);
}

TEST_F(ArcCmdTest, ReturnIsAClickAtTheCursor) {
  cmd.Active();
  cmd.MouseMove(20, 15);
  EXPECT_EQ(cmd.KeyPress(VK_RETURN), 1);
  cmd.MouseMove(30, 15);
  EXPECT_EQ(cmd.KeyPress(VK_RETURN), 1);
  cmd.MouseMove(10, 15);
  EXPECT_EQ(cmd.KeyPress(VK_RETURN), 2);
  EXPECT_NEAR(cmd.m_dEndAngle, 180.0, 1e-9);
}

TEST_F(ArcCmdTest, EscapeRightReleaseAndInactive) {
  EXPECT_EQ(cmd.MouseDown(1, 1, 1), 0);
  EXPECT_EQ(cmd.KeyPress(VK_ESCAPE), 0);
  cmd.Active();
  EXPECT_EQ(cmd.KeyPress(VK_ESCAPE), -1);
  Click(5, 5, 1);
  EXPECT_EQ(cmd.KeyPress(VK_ESCAPE), 1);
  EXPECT_EQ(cmd.m_nProgress, 0);
  Click(5, 5, 1);
  EXPECT_EQ(cmd.MouseUp(2, 9, 9), 1);
  EXPECT_EQ(cmd.m_nProgress, 0);
  EXPECT_EQ(cmd.MouseUp(1, 9, 9), 0);
  EXPECT_EQ(cmd.KeyPress(VK_SPACE), 0);
}

TEST_F(ArcCmdTest, RubberBandRunsCounterClockwiseFromTheStart) {
  canvas.Clear(0);
  cmd.SetWidth(0.0);
  cmd.Active();
  Click(20, 15, 1);
  Click(30, 15, 1);  // start due east, radius 10 (40 px)
  cmd.MouseMove(20, 5);  // cursor due north: a quarter arc through the upper right
  auto lit_near = [&](int x, int y) {
    int n = 0;
    for (int dy = -1; dy <= 1; ++dy)
      for (int dx = -1; dx <= 1; ++dx) n += canvas.At(x + dx, y + dy) != 0;
    return n;
  };
  // 45 degrees up-right: (20 + 7.07, 15 - 7.07) world -> (108, 32) px.
  EXPECT_GT(lit_near(108, 32), 0);
  // 225 degrees (down-left) is not on the arc.
  EXPECT_EQ(lit_near(52, 88), 0);
}

}  // namespace
}  // namespace qvis
