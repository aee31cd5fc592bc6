#include "qvis/commands/polygon_cmd.h"

#include "gtest/gtest.h"
#include "qvis/commands/test_canvas.h"
#include "qvis/compat/win32_names.h"

namespace qvis {
namespace {

using testing::Canvas;

void Click(CQVIS_DrawPolygonCmd& c, double x, double y) {
  c.MouseMove(x, y);
  c.MouseDown(1, x, y);
}

class PolygonCmdTest : public ::testing::Test {
 protected:
  void SetUp() override {
    canvas.Clear(0);
    cmd.SetColor(0x00FF00, 0x0000FF);
    cmd.Active();
  }
  Canvas canvas{160, 120, 4.0};
  CQVIS_DrawPolygonCmd cmd{canvas.surface()};
};

TEST_F(PolygonCmdTest, ReturnClosesThePolygonOnScreen) {
  Click(cmd, 5, 5);
  Click(cmd, 30, 5);
  Click(cmd, 30, 25);
  // In progress: the closing edge (cursor -> first vertex) is only the rubber band's.
  const std::uint32_t on_closing_edge = canvas.At(70, 60);  // (17.5, 15) on (30,25)-(5,5)
  EXPECT_NE(on_closing_edge, 0u);
  EXPECT_NE(on_closing_edge, 0x00FF00u);
  EXPECT_EQ(cmd.KeyPress(VK_RETURN), 1);
  EXPECT_EQ(cmd.m_nProgress, 0);
  ASSERT_EQ(cmd.m_pPointList->GetSize(), 3);
  // Finished: the closing edge is committed in the colour.
  EXPECT_EQ(canvas.At(70, 60), 0x00FF00u);
  EXPECT_EQ(canvas.At(70, 20), 0x00FF00u);  // first edge
}

TEST_F(PolygonCmdTest, DoubleClickFinishesAndBackRemoves) {
  Click(cmd, 5, 5);
  Click(cmd, 30, 5);
  Click(cmd, 30, 25);
  EXPECT_EQ(cmd.KeyPress(VK_BACK), 1);
  EXPECT_EQ(cmd.m_pPointList->GetSize(), 2);
  EXPECT_EQ(cmd.m_dAnchorX, 30.0);
  EXPECT_EQ(cmd.m_dAnchorY, 5.0);
  Click(cmd, 10, 25);
  EXPECT_EQ(cmd.MouseDblClk(), 1);
  EXPECT_EQ(cmd.m_pPointList->GetSize(), 3);
  EXPECT_EQ(cmd.IsBusy(), 0);
}

TEST_F(PolygonCmdTest, BendedClickAddsTwoVertices) {
  Click(cmd, 0, 0);
  cmd.KeyPress(VK_SPACE);  // bend mode 1: diagonal first
  Click(cmd, 10, 4);
  ASSERT_EQ(cmd.m_pPointList->GetSize(), 3);
  EXPECT_EQ(cmd.m_pPointList->GetAt(1)->m_dX, 4.0);
  EXPECT_EQ(cmd.m_pPointList->GetAt(1)->m_dY, 4.0);
}

TEST_F(PolygonCmdTest, LastEdgeBecomesAnArc) {
  Click(cmd, 10, 15);
  cmd.SetLastPointArcInfo(20, 15, AD_CLOCKWISE);  // one vertex: no edge ends there
  EXPECT_EQ(cmd.m_pPointList->GetAt(0)->m_nArc, 0);
  Click(cmd, 30, 15);
  cmd.SetLastPointArcInfo(20, 15, AD_COUNTERCLOCKWISE);
  const CQVIS_DrawPolygonPoint* last = cmd.m_pPointList->GetAt(1);
  EXPECT_EQ(last->m_nArc, 1);
  EXPECT_EQ(last->m_dCenterX, 20.0);
  EXPECT_EQ(last->m_nDirection, AD_COUNTERCLOCKWISE);
  // Counter-clockwise on screen from (10, 15) to (30, 15) about (20, 15) runs below the centre
  // (screen y grows downwards): the top of the circle stays dark, the bottom is painted.
  canvas.Clear(0);
  cmd.DrawLineList();
  EXPECT_EQ(canvas.At(80, 20), 0u);       // world (20, 5): top of the circle
  bool bottom = false;
  for (int dy = -1; dy <= 1; ++dy) bottom |= canvas.At(80, 100 + dy) == 0x00FF00u;
  EXPECT_TRUE(bottom);                    // world (20, 25): bottom of the circle
}

TEST_F(PolygonCmdTest, EscapeAndInactiveResults) {
  EXPECT_EQ(cmd.KeyPress(VK_ESCAPE), -1);
  Click(cmd, 5, 5);
  EXPECT_EQ(cmd.KeyPress(VK_ESCAPE), 1);
  EXPECT_EQ(cmd.m_pPointList->GetSize(), 0);
  cmd.Deactive();
  EXPECT_EQ(cmd.MouseDown(1, 1, 1), 0);
  EXPECT_EQ(cmd.KeyPress(VK_RETURN), 0);
  EXPECT_EQ(cmd.MouseDblClk(), 0);
}

}  // namespace
}  // namespace qvis
