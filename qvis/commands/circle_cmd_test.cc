#include "qvis/commands/circle_cmd.h"

#include "gtest/gtest.h"
#include "qvis/commands/test_canvas.h"
#include "qvis/compat/win32_names.h"

namespace qvis {
namespace {

using testing::Canvas;
using testing::Pixels;

class CircleCmdTest : public ::testing::Test {
 protected:
  Canvas canvas{160, 120, 4.0};
  Pixels background = canvas.Snapshot();
  CQVIS_DrawCircleCmd cmd{canvas.surface()};
  int Changed() const { return Canvas::CountDiff(canvas.Snapshot(), background); }
};

TEST_F(CircleCmdTest, CentreThenRimCompletesTheCircle) {
  cmd.Active();
  cmd.MouseMove(10, 10);
  EXPECT_EQ(cmd.MouseDown(1, 10, 10), 1);
  EXPECT_EQ(cmd.IsBusy(), 1);
  cmd.MouseMove(13, 14);
  EXPECT_EQ(cmd.m_dRadius, 5.0);  // the radius follows the cursor
  EXPECT_EQ(cmd.MouseDown(1, 10, 10), 0);  // a rim click on the centre is refused
  EXPECT_EQ(cmd.m_nProgress, 1);
  EXPECT_EQ(cmd.MouseDown(1, 13, 14), 2);
  EXPECT_EQ(cmd.m_nProgress, 0);
  EXPECT_EQ(cmd.m_dCenterX, 10.0);
  EXPECT_EQ(cmd.m_dCenterY, 10.0);
  EXPECT_EQ(cmd.m_dRadius, 5.0);
  cmd.Deactive();
  EXPECT_EQ(Changed(), 0);
}

TEST_F(CircleCmdTest, RightReleaseAndEscapeAbandon) {
  cmd.Active();
  cmd.MouseDown(1, 10, 10);
  EXPECT_EQ(cmd.MouseUp(1, 20, 20), 0);
  EXPECT_EQ(cmd.MouseUp(2, 20, 20), 1);
  EXPECT_EQ(cmd.m_nProgress, 0);
  EXPECT_EQ(cmd.m_dCursorX, 20.0);
  cmd.MouseDown(1, 10, 10);
  EXPECT_EQ(cmd.KeyPress(VK_ESCAPE), 1);
  EXPECT_EQ(cmd.KeyPress(VK_ESCAPE), -1);
  EXPECT_EQ(cmd.KeyPress(VK_RETURN), 0);
  EXPECT_EQ(cmd.MouseDown(2, 1, 1), 0);
  EXPECT_EQ(cmd.MouseMove(10, 10), 0);  // the cursor the last click left
}

TEST_F(CircleCmdTest, FootprintRules) {
  struct Case {
    int fill;
    double width;
    bool footprint;
  };
  for (const Case c : {Case{0, 4.0, true}, Case{0, 0.0, false}, Case{1, 4.0, false}}) {
    CQVIS_DrawCircleCmd circle(canvas.surface());
    circle.SetFill(c.fill);
    circle.SetWidth(c.width);
    circle.Active();
    circle.MouseMove(20, 15);
    EXPECT_EQ(Changed() > 0, c.footprint) << c.fill << " " << c.width;
    circle.MouseDown(1, 20, 15);
    circle.MouseMove(26, 15);
    EXPECT_GT(Changed(), 0) << "every style shows the circle being dragged";
    circle.Deactive();
    EXPECT_EQ(Changed(), 0);
  }
}

TEST_F(CircleCmdTest, FilledCircleCoversItsInside) {
  canvas.Clear(0);
  cmd.SetFill(1);
  cmd.SetColor(0x0000FF, 0x00FF00);
  cmd.Active();
  cmd.MouseDown(1, 20, 15);
  cmd.MouseMove(25, 15);
  EXPECT_EQ(canvas.At(80, 60), 0x00FF00u);  // centre of the disc
  EXPECT_EQ(canvas.At(80 + 30, 60), 0u);    // outside
  cmd.SetFill(0);  // while active: erase, change, draw
  EXPECT_EQ(canvas.At(80 + 5, 60 + 5), 0u);
}

TEST_F(CircleCmdTest, InitAndClearKeepTheSettings) {
  cmd.SetWidth(2.0);
  cmd.SetLayer(3);
  cmd.SetApertureID(12);
  cmd.Active();
  cmd.MouseDown(1, 5, 5);
  cmd.Deactive();
  cmd.Clear();
  EXPECT_EQ(cmd.m_nActive, 0);
  EXPECT_EQ(cmd.m_dCenterX, 0.0);
  EXPECT_EQ(cmd.m_dWidth, 2.0);
  EXPECT_EQ(cmd.GetLayer(), 3);
  EXPECT_EQ(cmd.GetApertureID(), 12);
  EXPECT_EQ(cmd.m_strFontName, CString("Arial"));
}

class ThreePointCircleTest : public CircleCmdTest {
 protected:
  CQVIS_Draw3PCircleCmd three{canvas.surface()};
};

TEST_F(ThreePointCircleTest, ThreeClicksGiveCentreAndRadius) {
  three.Active();
  three.MouseMove(10, 10);
  EXPECT_EQ(three.MouseDown(1, 99, 99), 1);  // the click position is not used
  three.MouseMove(12, 10);
  EXPECT_EQ(three.MouseDown(1, 0, 0), 2);
  three.MouseMove(11, 11);
  EXPECT_NEAR(three.m_dCenterX, 11.0, 1e-12);
  EXPECT_NEAR(three.m_dCenterY, 10.0, 1e-12);
  EXPECT_NEAR(three.m_dRadius, 1.0, 1e-12);
  EXPECT_EQ(three.MouseDown(1, 0, 0), 3);
  EXPECT_EQ(three.m_nProgress, 0);
  EXPECT_EQ(three.m_dX1, 10.0);
  EXPECT_EQ(three.m_dX2, 12.0);
  EXPECT_EQ(three.m_dY3, 11.0);
  EXPECT_EQ(Changed(), 0);  // the completing click leaves nothing drawn
}

TEST_F(ThreePointCircleTest, GuideCircleThroughTheThreePoints) {
  canvas.Clear(0);
  three.SetWidth(0.0);  // a single guide circle
  three.SetColor(0x0000FF, 0xFFFFFF);
  three.Active();
  three.MouseMove(10, 15);
  three.MouseDown(1, 0, 0);
  three.MouseMove(30, 15);
  three.MouseDown(1, 0, 0);
  three.MouseMove(20, 5);  // centre (20, 15), radius 10 world = 40 px
  int on_circle = 0;  // bottom of the circle: world (20, 25), the last row of its box is 99
  for (int dy = -2; dy <= 0; ++dy) {
    for (int dx = -1; dx <= 1; ++dx) on_circle += canvas.At(80 + dx, 100 + dy) != 0;
  }
  EXPECT_GT(on_circle, 0);
  EXPECT_EQ(canvas.At(80, 60), 0u);  // centre: inside, untouched
}

TEST_F(ThreePointCircleTest, WidthIsStoredWithoutRedraw) {
  three.Active();
  three.MouseMove(20, 15);
  const Pixels shown = canvas.Snapshot();
  three.SetWidth(8.0);
  EXPECT_EQ(three.m_dWidth, 8.0);
  EXPECT_EQ(Canvas::CountDiff(canvas.Snapshot(), shown), 0);
}

TEST_F(ThreePointCircleTest, RightReleaseRestartsAndCollinearPointsDoNotFault) {
  three.Active();
  three.MouseMove(1, 1);
  three.MouseDown(1, 0, 0);
  EXPECT_EQ(three.MouseUp(2, 5, 6), 1);
  EXPECT_EQ(three.m_nProgress, 0);
  EXPECT_EQ(three.m_dX1, 5.0);
  EXPECT_EQ(three.m_dY2, 6.0);
  three.MouseMove(1, 1);
  three.MouseDown(1, 0, 0);
  three.MouseMove(2, 2);
  three.MouseDown(1, 0, 0);
  three.MouseMove(3, 3);  // collinear: centre falls back to the first point
  EXPECT_EQ(three.m_dCenterX, 1.0);
  EXPECT_EQ(three.m_dRadius, 0.0);
  EXPECT_EQ(three.KeyPress(VK_ESCAPE), 1);
  three.Deactive();
  EXPECT_EQ(Changed(), 0);
}

}  // namespace
}  // namespace qvis
