// The Win32 macro names come first: the public header must compile under them.
#include "qvis/compat/win32_names.h"
#include "qvis/design/zoom_mgr.h"

#include <algorithm>
#include <random>

#include "gtest/gtest.h"
#include "qvis/commands/test_canvas.h"
#include "qvis/compat/win32_names.h"

namespace qvis {
namespace {

using testing::Canvas;

class ZoomMgrTest : public ::testing::Test {
 protected:
  int Changed() const { return Canvas::CountDiff(canvas.Snapshot(), background); }
  Canvas canvas{120, 100, 4.0};
  testing::Pixels background = canvas.Snapshot();
  testing::Buttons buttons{canvas.surface()};
  CQVIS_ZoomMgr zoom{canvas.surface()};
};

TEST_F(ZoomMgrTest, DragGestureEndsWithTheCornersKept) {
  EXPECT_EQ(zoom.MouseDown(1, 2, 3), 0);  // inactive
  zoom.Active();
  EXPECT_EQ(zoom.MouseDown(2, 2, 3), 0);
  EXPECT_EQ(zoom.MouseDown(1, 2, 3), 1);
  EXPECT_EQ(zoom.MouseDown(1, 5, 5), 0);  // a box is already being dragged
  buttons.left = true;
  EXPECT_EQ(zoom.MouseMove(20, 15), 1);
  EXPECT_GT(Changed(), 0);
  EXPECT_EQ(zoom.MouseUp(1, 0, 0), 2);
  EXPECT_EQ(Changed(), 0);
  EXPECT_EQ(zoom.m_dX1, 2.0);
  EXPECT_EQ(zoom.m_dY1, 3.0);
  EXPECT_EQ(zoom.m_dX2, 20.0);
  EXPECT_EQ(zoom.m_dY2, 15.0);
  EXPECT_FALSE(zoom.IsSamePoint());
  EXPECT_EQ(zoom.MouseUp(1, 0, 0), 0);
  EXPECT_EQ(zoom.IsActived(), 1);  // stays active for the next box
}

TEST_F(ZoomMgrTest, MovesNeedTheLeftButton) {
  zoom.Active();
  zoom.MouseDown(1, 2, 3);
  EXPECT_EQ(zoom.MouseMove(9, 9), 0);
  EXPECT_EQ(zoom.m_dX2, 2.0);
  zoom.MouseUp(1, 0, 0);
  buttons.left = true;
  EXPECT_EQ(zoom.MouseMove(9, 8), 1);  // drag state 0: both corners follow, nothing drawn
  EXPECT_EQ(zoom.m_dX1, 9.0);
  EXPECT_EQ(zoom.m_dY2, 8.0);
  EXPECT_EQ(Changed(), 0);
}

TEST_F(ZoomMgrTest, ShownBoxIsNotEndedByTheMouse) {
  zoom.Active();
  zoom.m_dX1 = 2;
  zoom.m_dY1 = 2;
  zoom.SetSecondPoint(20, 20);
  zoom.m_nDragState = 2;
  zoom.Draw();
  const int shown = Changed();
  EXPECT_GT(shown, 0);
  buttons.left = true;
  EXPECT_EQ(zoom.MouseMove(30, 30), 1);  // state 2: the box does not move
  EXPECT_EQ(zoom.m_dX2, 20.0);
  EXPECT_EQ(zoom.MouseUp(1, 0, 0), 0);
  EXPECT_EQ(Changed(), shown);
  EXPECT_EQ(zoom.KeyPress(VK_ESCAPE), 1);
  EXPECT_EQ(Changed(), 0);
  EXPECT_EQ(zoom.KeyPress(VK_ESCAPE), -1);
  EXPECT_EQ(zoom.KeyPress(VK_RETURN), 0);
}

TEST_F(ZoomMgrTest, SecondPointSetsTheExtentExactly) {
  struct Case {
    double x, y;
    int extent;
  };
  zoom.m_dX1 = 1.5;
  zoom.m_dY1 = -2.0;
  for (const Case c : {Case{1.5, -2.0, 0}, Case{1.5000001, -2.0, 1}, Case{1.5, 2.0, 1}}) {
    zoom.SetSecondPoint(c.x, c.y);
    EXPECT_EQ(zoom.m_nHasExtent, c.extent) << c.x << ", " << c.y;
    EXPECT_EQ(zoom.IsSamePoint(), c.extent == 0);
  }
  EXPECT_EQ(Changed(), 0);  // draws nothing
}

TEST_F(ZoomMgrTest, ActiveTwiceKeepsTheDragAndDeactiveErases) {
  zoom.Active();
  zoom.MouseDown(1, 2, 3);
  buttons.left = true;
  zoom.MouseMove(12, 13);
  const int shown = Changed();
  zoom.Active();
  EXPECT_EQ(zoom.m_nDragState, 1);
  EXPECT_EQ(Changed(), shown);
  zoom.Deactive();
  EXPECT_EQ(Changed(), 0);
  EXPECT_EQ(zoom.m_nDragState, 0);
  zoom.Active();
  zoom.MouseDown(1, 2, 3);
  zoom.MouseMove(12, 13);
  zoom.Cancel();
  EXPECT_EQ(Changed(), 0);
}

TEST_F(ZoomMgrTest, BoxNeedsAnOriginContext) {
  canvas.surface()->SetOriginHDC(nullptr);
  zoom.Active();
  zoom.MouseDown(1, 2, 3);
  buttons.left = true;
  zoom.MouseMove(12, 13);
  EXPECT_EQ(Changed(), 0);
}

}  // namespace
}  // namespace qvis

namespace qvis {
namespace {

// The XOR convention over long seeded random gestures: Deactive leaves the picture as it was.
TEST(ZoomMgrXorTest, RandomGesturesLeaveNothingBehind) {
  for (unsigned seed = 1; seed <= 8; ++seed) {
    testing::Canvas canvas(120, 100, 4.0);
    const testing::Pixels background = canvas.Snapshot();
    testing::Buttons buttons(canvas.surface());
    CQVIS_ZoomMgr zoom(canvas.surface());
    std::mt19937 rng(seed);
    auto coord = [&] { return static_cast<int>(rng() % 70) * 0.5 - 2.0; };
    zoom.Active();
    int shown = 0;
    for (int i = 0; i < 300; ++i) {
      switch (rng() % 7) {
        case 0: buttons.left = rng() % 3 != 0; break;
        case 1: zoom.MouseDown(rng() % 2 + 1, coord(), coord()); break;
        case 2: zoom.MouseUp(1, coord(), coord()); break;
        case 3: zoom.KeyPress(rng() % 4 ? VK_ESCAPE : VK_RETURN); break;
        case 4: if (rng() % 5 == 0) zoom.Cancel(); break;
        default: zoom.MouseMove(coord(), coord()); break;
      }
      shown = std::max(shown, testing::Canvas::CountDiff(canvas.Snapshot(), background));
      if (i % 16 == 15) {  // a repaint shows exactly what was on screen
        const testing::Pixels on_screen = canvas.Snapshot();
        canvas.Restore(background);
        zoom.OnDraw();
        ASSERT_EQ(testing::Canvas::CountDiff(canvas.Snapshot(), on_screen), 0) << seed << " " << i;
      }
    }
    zoom.Deactive();
    EXPECT_EQ(testing::Canvas::CountDiff(canvas.Snapshot(), background), 0) << seed;
    EXPECT_GT(shown, 0) << seed;
  }
}

}  // namespace
}  // namespace qvis
