#include "gtest/gtest.h"
#include "qvis/commands/point_cmd.h"
#include "qvis/commands/rect_cmd.h"
#include "qvis/commands/select_cmd.h"
#include "qvis/commands/test_canvas.h"
#include "qvis/compat/win32_names.h"

namespace qvis {
namespace {

using testing::Canvas;

class RectCmdTest : public ::testing::Test {
 protected:
  void SetUp() override { canvas.Clear(0); }
  Canvas canvas{120, 100, 4.0};
  CQVIS_DrawRectCmd rect{canvas.surface()};
};

TEST_F(RectCmdTest, TwoClicksAndTheLeftRelease) {
  EXPECT_EQ(rect.MouseUp(1, 0, 0), 0);  // inactive
  rect.Active();
  EXPECT_EQ(rect.MouseUp(1, 0, 0), 2);  // always 2 while active
  EXPECT_EQ(rect.MouseDown(1, 2, 3), 1);
  EXPECT_EQ(rect.MouseMove(10, 12), 1);
  EXPECT_EQ(rect.MouseMove(10, 12), 1);  // no equality test
  EXPECT_EQ(rect.MouseDown(1, 10, 12), 2);
  EXPECT_EQ(rect.m_dX1, 2.0);
  EXPECT_EQ(rect.m_dY2, 12.0);
  EXPECT_EQ(rect.m_nProgress, 0);
  EXPECT_EQ(rect.MouseDown(1, 5, 5), 1);
  EXPECT_EQ(rect.MouseDown(1, 5, 5), 2);  // zero-size rectangle completes too
  EXPECT_EQ(rect.MouseUp(3, 0, 0), 0);
}

TEST_F(RectCmdTest, RightReleaseAndEscapeAbandon) {
  rect.Active();
  EXPECT_EQ(rect.KeyPress(VK_ESCAPE), -1);
  rect.MouseDown(1, 2, 3);
  EXPECT_EQ(rect.MouseUp(2, 7, 7), 1);
  EXPECT_EQ(rect.m_nProgress, 0);
  EXPECT_EQ(rect.m_dX1, 7.0);
  rect.MouseDown(1, 2, 3);
  EXPECT_EQ(rect.KeyPress(VK_ESCAPE), 1);
  EXPECT_EQ(rect.KeyPress(VK_BACK), 0);
}

TEST_F(RectCmdTest, DrawTypes) {
  rect.SetColor(0, 0xFFFFFF);
  rect.Active();
  rect.MouseDown(1, 5, 5);
  rect.MouseMove(20, 20);  // pixels 20 .. 80
  EXPECT_TRUE(canvas.At(50, 50) != 0);  // type 0: filled
  rect.SetDrawType(1);
  EXPECT_EQ(canvas.At(50, 50), 0u);  // type 1: outline only
  EXPECT_NE(canvas.At(50, 20), 0u);
  rect.SetDrawType(2);
  for (std::uint32_t p : canvas.Snapshot()) ASSERT_EQ(p, 0u);  // type 2: nothing
  EXPECT_EQ(rect.MouseDown(1, 22, 21), 2);  // but the corners are still collected
  EXPECT_EQ(rect.m_dX2, 22.0);
}

class SelectCmdTest : public ::testing::Test {
 protected:
  Canvas canvas{120, 100, 4.0};
  testing::Pixels background = canvas.Snapshot();
  testing::Buttons buttons{canvas.surface()};
  CQVIS_DrawSelectCmd select{canvas.surface()};
  int Changed() const { return Canvas::CountDiff(canvas.Snapshot(), background); }
};

TEST_F(SelectCmdTest, KeyRequestsWithAndWithoutABox) {
  struct Case {
    int key;
    int idle;
  };
  const Case kCases[] = {{VK_ESCAPE, -1}, {VK_DELETE, 99}, {VK_RETURN, 100}, {VK_PRIOR, 101},
                         {VK_NEXT, 102},  {VK_SPACE, 103}, {'R', 200},      {'r', 200},
                         {'Q', 0},        {VK_BACK, 0}};
  select.Active();
  for (const Case& c : kCases) EXPECT_EQ(select.KeyPress(c.key), c.idle) << c.key;
  select.MouseDown(1, 3, 3);
  for (const Case& c : kCases) {
    if (c.key != VK_ESCAPE) {
      EXPECT_EQ(select.KeyPress(c.key), 0) << c.key;
    }
  }
  EXPECT_EQ(select.KeyPress(VK_ESCAPE), 1);
  EXPECT_EQ(select.m_nDragState, 0);
  EXPECT_EQ(Changed(), 0);
}

TEST_F(SelectCmdTest, DragGestureNeedsTheHeldButton) {
  select.Active();
  EXPECT_EQ(select.MouseDown(1, 2, 2), 1);
  EXPECT_EQ(select.MouseDown(1, 2, 2), 0);  // already dragging
  EXPECT_EQ(select.MouseMove(10, 10), 0);   // button not held
  EXPECT_EQ(select.m_dX2, 2.0);
  buttons.left = true;
  EXPECT_EQ(select.MouseMove(10, 10), 1);
  EXPECT_EQ(select.m_dX2, 10.0);
  EXPECT_GT(Changed(), 0);
  EXPECT_EQ(select.MouseUp(1, 10, 10), 2);
  EXPECT_EQ(Changed(), 0);
  EXPECT_EQ(select.MouseUp(1, 10, 10), 0);
}

TEST_F(SelectCmdTest, DoubleClickSkipsTheNextClick) {
  select.Active();
  EXPECT_EQ(select.MouseDblClk(), 1);
  EXPECT_EQ(select.MouseDown(1, 4, 4), 0);
  EXPECT_EQ(select.m_nDragState, 0);
  EXPECT_EQ(select.MouseUp(1, 4, 4), 0);  // the skip is spent by the down
  EXPECT_EQ(select.MouseDown(1, 4, 4), 1);
}

TEST_F(SelectCmdTest, PointModeCollectsWithoutABox) {
  buttons.left = true;
  select.SetPointMode(1);
  select.Active();
  EXPECT_EQ(select.MouseUp(1, 0, 0), 2);  // a pick without a box
  select.MouseDown(1, 3, 3);
  select.MouseMove(15, 15);
  EXPECT_EQ(Changed(), 0);
  EXPECT_EQ(select.m_dX2, 15.0);
  EXPECT_EQ(select.MouseUp(1, 15, 15), 2);
}

TEST(PointCmdTest, ProtocolOfTheSkeleton) {
  Canvas canvas(40, 40, 1.0);
  const testing::Pixels before = canvas.Snapshot();
  CQVIS_DrawPointCmd point(canvas.surface());
  EXPECT_EQ(point.m_crColor, 0xFFFFFFu);
  EXPECT_EQ(point.KeyPress(VK_ESCAPE), 0);
  point.Active();
  EXPECT_EQ(point.KeyPress(VK_ESCAPE), -1);
  EXPECT_EQ(point.KeyPress(VK_RETURN), 0);
  EXPECT_EQ(point.MouseMove(3, 4), 1);
  EXPECT_EQ(point.MouseMove(3, 4), 0);
  EXPECT_EQ(point.MouseDown(2, 9, 9), 0);
  EXPECT_EQ(point.MouseDown(1, 7, 8), 1);
  EXPECT_EQ(point.m_dX, 7.0);
  EXPECT_EQ(point.MouseUp(1, 0, 0), 1);
  EXPECT_EQ(point.IsActived(), 1);
  EXPECT_EQ(point.MouseUp(3, 0, 0), 0);
  EXPECT_EQ(point.MouseUp(2, 0, 0), 1);  // the right release ends the command
  EXPECT_EQ(point.IsActived(), 0);
  EXPECT_EQ(point.m_dY, 0.0);
  EXPECT_EQ(point.m_dX, 7.0);  // x survives, as after Release
  EXPECT_EQ(Canvas::CountDiff(canvas.Snapshot(), before), 0);  // the skeleton draws no figure
}

}  // namespace
}  // namespace qvis
