#include "qvis/commands/line_cmd.h"

#include <vector>

#include "gtest/gtest.h"
#include "qvis/commands/construction.h"
#include "qvis/commands/test_canvas.h"
#include "qvis/compat/win32_names.h"

namespace qvis {
namespace {

using testing::Canvas;

std::vector<WorldPt> Vertices(const CQVIS_DrawLineCmd& c) {
  std::vector<WorldPt> out;
  for (const CQVIS_DrawLinePoint* p : *c.m_pPointList) out.push_back({p->m_dX, p->m_dY});
  return out;
}

// Click moves to (x, y) and clicks there, as the window does with one snapped position.
void Click(CQVIS_DrawLineCmd& c, double x, double y) {
  c.MouseMove(x, y);
  c.MouseDown(1, x, y);
}

class LineCmdTest : public ::testing::Test {
 protected:
  Canvas canvas{160, 120, 4.0};
  CQVIS_DrawLineCmd cmd{canvas.surface()};
};

TEST_F(LineCmdTest, DefaultsAndInactiveEvents) {
  EXPECT_EQ(cmd.m_dWidth, 4.0);
  EXPECT_EQ(cmd.m_crColor, 0x0000FFu);
  EXPECT_EQ(cmd.m_crBackupColor, 0xFF0000u);
  EXPECT_EQ(cmd.m_hTargetDC, canvas.dc());
  EXPECT_EQ(cmd.MouseMove(1, 1), 0);
  EXPECT_EQ(cmd.MouseDown(1, 1, 1), 0);
  EXPECT_EQ(cmd.MouseUp(2, 1, 1), 0);
  EXPECT_EQ(cmd.MouseDblClk(), 0);
  EXPECT_EQ(cmd.KeyPress(VK_ESCAPE), 0);
  EXPECT_EQ(cmd.IsBusy(), 0);
}

TEST_F(LineCmdTest, BendModesAddTheBendPointAndTheCursor) {
  struct Case {
    int mode;
    WorldPt bend;
  };
  for (const Case c : {Case{1, {4, 4}}, Case{2, {6, 0}}, Case{3, {0, 4}}, Case{4, {10, 0}}}) {
    CQVIS_DrawLineCmd line(canvas.surface());
    line.Active();
    Click(line, 0, 0);
    line.MouseMove(10, 4);
    // Modes are chosen with the cursor off the anchor's lines: with the cursor on them the
    // right-angle modes rewrite themselves.
    for (int i = 0; i < c.mode; ++i) line.KeyPress(VK_SPACE);
    ASSERT_EQ(line.m_nPxy, c.mode);
    EXPECT_EQ(line.MouseDown(1, 10, 4), 1);
    const std::vector<WorldPt> v = Vertices(line);
    ASSERT_EQ(v.size(), 3u) << "mode " << c.mode;
    EXPECT_TRUE(v[1] == c.bend) << "mode " << c.mode;
    EXPECT_TRUE(v[2] == (WorldPt{10, 4})) << "mode " << c.mode;
    line.Deactive();
  }
}

TEST_F(LineCmdTest, RightAngleModeFollowsTheLineItLeft) {
  cmd.Active();
  Click(cmd, 0, 0);
  cmd.m_nPxy = 3;
  cmd.MouseMove(8, 0);  // on the anchor's horizontal line
  EXPECT_EQ(cmd.m_nPxy, 4);
  cmd.MouseMove(8, 3);
  EXPECT_EQ(cmd.m_nPxy, 4);  // the rewrite persists off the line
  EXPECT_EQ(cmd.GetPxy(), 1);
  EXPECT_EQ(cmd.m_dPx, 8.0);
  EXPECT_EQ(cmd.m_dPy, 0.0);
}

TEST_F(LineCmdTest, SpaceCyclesTheBendModeInFiveSteps) {
  cmd.Active();
  cmd.m_nPxy = 2;
  for (int i = 0; i < 5; ++i) EXPECT_EQ(cmd.KeyPress(VK_SPACE), 1);
  EXPECT_EQ(cmd.m_nPxy, 2);
}

TEST_F(LineCmdTest, DoubleClickFinishesWithTheFirstClicksVertex) {
  cmd.Active();
  Click(cmd, 1, 1);
  Click(cmd, 5, 1);
  Click(cmd, 5, 6);  // the first click of the double click
  EXPECT_EQ(cmd.MouseDblClk(), 1);
  EXPECT_EQ(cmd.m_nProgress, 0);
  EXPECT_EQ(cmd.IsBusy(), 0);
  ASSERT_EQ(Vertices(cmd).size(), 3u);
  EXPECT_TRUE(Vertices(cmd)[2] == (WorldPt{5, 6}));
  // The next click appends to the kept list until the host empties it.
  Click(cmd, 9, 9);
  EXPECT_EQ(Vertices(cmd).size(), 4u);
}

TEST_F(LineCmdTest, ReturnOnTheLastVertexAddsNothing) {
  cmd.Active();
  Click(cmd, 1, 1);
  Click(cmd, 5, 1);
  EXPECT_EQ(cmd.KeyPress(VK_RETURN), 1);
  EXPECT_EQ(Vertices(cmd).size(), 2u);
  EXPECT_EQ(cmd.m_nProgress, 0);
  EXPECT_EQ(cmd.Done(), 1);  // Done is Enter: a new one-vertex start, finished at once
  EXPECT_EQ(cmd.m_nProgress, 0);
}

TEST_F(LineCmdTest, ReturnAtTheCursorAddsItsVertex) {
  cmd.Active();
  Click(cmd, 1, 1);
  cmd.MouseMove(7, 2);
  EXPECT_EQ(cmd.KeyPress(VK_RETURN), 1);
  ASSERT_EQ(Vertices(cmd).size(), 2u);
  EXPECT_TRUE(Vertices(cmd)[1] == (WorldPt{7, 2}));
}

TEST_F(LineCmdTest, BackspaceRemovesVerticesButNeverTheProgress) {
  cmd.Active();
  Click(cmd, 1, 1);
  Click(cmd, 5, 1);
  EXPECT_EQ(cmd.KeyPress(VK_BACK), 1);
  EXPECT_EQ(Vertices(cmd).size(), 1u);
  EXPECT_EQ(cmd.m_dAnchorX, 1.0);
  EXPECT_EQ(cmd.KeyPress(VK_BACK), 1);  // a list of one vertex becomes empty
  EXPECT_TRUE(Vertices(cmd).empty());
  EXPECT_EQ(cmd.m_nProgress, 1);
  EXPECT_EQ(cmd.m_dAnchorX, 1.0);  // anchor unchanged
  EXPECT_EQ(cmd.KeyPress(VK_BACK), 1);  // nothing to remove: still handled
}

TEST_F(LineCmdTest, EscapeDropsTheFigureThenAsksToLeave) {
  cmd.Active();
  Click(cmd, 1, 1);
  Click(cmd, 5, 1);
  cmd.MouseMove(8, 8);
  EXPECT_EQ(cmd.KeyPress(VK_ESCAPE), 1);
  EXPECT_TRUE(Vertices(cmd).empty());
  EXPECT_EQ(cmd.m_nProgress, 0);
  EXPECT_EQ(cmd.m_dAnchorX, 8.0);
  EXPECT_EQ(cmd.KeyPress(VK_ESCAPE), -1);
  EXPECT_EQ(cmd.KeyPress('Q'), 0);
}

TEST_F(LineCmdTest, WidthAndHeightOfFixedAndNewVertices) {
  cmd.Active();
  Click(cmd, 1, 1);
  Click(cmd, 5, 1);
  cmd.SetWidth(2.5, false);
  cmd.SetHeight(7.0, true);
  Click(cmd, 5, 9);
  EXPECT_EQ(cmd.m_pPointList->GetAt(0)->m_dWidth, 4.0);
  EXPECT_EQ(cmd.m_pPointList->GetAt(2)->m_dWidth, 2.5);
  EXPECT_EQ(cmd.m_pPointList->GetAt(0)->m_dHeight, 7.0);  // SetHeight(all) reached them
  EXPECT_EQ(cmd.m_pPointList->GetAt(2)->m_dHeight, 0.0);  // new vertices: always 0
  cmd.SetWidth(1.0, true);
  for (const CQVIS_DrawLinePoint* p : *cmd.m_pPointList) EXPECT_EQ(p->m_dWidth, 1.0);
}

TEST_F(LineCmdTest, ClickOnTheLastVertexAddsNothing) {
  cmd.Active();
  Click(cmd, 3, 3);
  Click(cmd, 3, 3);
  EXPECT_EQ(Vertices(cmd).size(), 1u);
  EXPECT_EQ(cmd.IsLastPosition(3, 3), 1);
  EXPECT_EQ(cmd.IsLastPosition(3, 3.0000001), 0);
  EXPECT_EQ(cmd.MouseMove(3, 3), 0);  // the same position again: not handled
}

TEST_F(LineCmdTest, RightButtonIsReportedOnly) {
  cmd.Active();
  EXPECT_EQ(cmd.MouseDown(2, 1, 1), 0);
  EXPECT_EQ(cmd.MouseUp(2, 1, 1), 1);
  EXPECT_EQ(cmd.MouseUp(1, 1, 1), 0);
  EXPECT_EQ(cmd.IsActived(), 1);
  EXPECT_EQ(cmd.m_nProgress, 0);
}

TEST_F(LineCmdTest, ListsAreOwnedOncePerObject) {
  cmd.Active();
  Click(cmd, 1, 1);
  Click(cmd, 4, 1);
  CQVIS_DrawLineCmd copy(cmd);
  EXPECT_NE(copy.m_pPointList, cmd.m_pPointList);
  EXPECT_EQ(copy.m_pPointList->GetSize(), 2);
  cmd.ReleasePoints();
  EXPECT_EQ(copy.m_pPointList->GetSize(), 2);
  cmd.Init();  // twice-initialised lists are replaced, not leaked (checked under ASan)
  cmd.Init();
  cmd.Release();
  cmd.Release();
  EXPECT_EQ(cmd.m_pPointList, nullptr);
  cmd.Active();  // a released command still takes vertices
  Click(cmd, 2, 2);
  EXPECT_EQ(cmd.m_pPointList->GetSize(), 1);
}

TEST_F(LineCmdTest, FootprintDependsOnTheEndCap) {
  const testing::Pixels before = canvas.Snapshot();
  struct Case {
    int cap;
    bool footprint;
  };
  for (const Case c : {Case{0, true}, Case{PS_ENDCAP_SQUARE, true}, Case{PS_ENDCAP_FLAT, false}}) {
    CQVIS_DrawLineCmd line(canvas.surface());
    line.SetEndCapStyle(c.cap);
    line.Active();
    line.MouseMove(20, 15);
    EXPECT_EQ(Canvas::CountDiff(canvas.Snapshot(), before) > 0, c.footprint) << c.cap;
    line.MouseDown(1, 20, 15);
    line.MouseMove(30, 15);  // every cap style draws the rubber band
    EXPECT_GT(Canvas::CountDiff(canvas.Snapshot(), before), 0) << c.cap;
    line.KeyPress(VK_ESCAPE);
    line.Deactive();
    EXPECT_EQ(Canvas::CountDiff(canvas.Snapshot(), before), 0) << c.cap;
  }
}

TEST_F(LineCmdTest, CommittedSegmentsArePaintedInTheColour) {
  canvas.Clear(0);
  cmd.SetColor(0x00FF00, 0x0000FF);  // green; committed round segments use the colour
  cmd.SetWidth(1.0, false);
  cmd.Active();
  Click(cmd, 5, 10);
  Click(cmd, 25, 10);
  cmd.MouseMove(25, 25);
  // Middle of the committed segment: pure green (pixel 0x00RRGGBB), not XORed with the band.
  EXPECT_EQ(canvas.At(60, 40), 0x00FF00u);
  cmd.Deactive();
  EXPECT_EQ(canvas.At(60, 40), 0x00FF00u);  // the track stays on screen after Deactive
  EXPECT_EQ(canvas.At(100, 80), 0u);        // the rubber band does not
  EXPECT_EQ(cmd.m_pPointList->GetSize(), 0);
}

}  // namespace
}  // namespace qvis
