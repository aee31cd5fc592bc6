#include "qvis/commands/flash_cmd.h"

#include "gtest/gtest.h"
#include "qvis/commands/test_canvas.h"
#include "qvis/compat/win32_names.h"

namespace qvis {
namespace {

using testing::Canvas;
using testing::Pixels;

// Every pad command on a black canvas at 10 pixels per world unit.
class FlashCmdTest : public ::testing::Test {
 protected:
  void SetUp() override { canvas.Clear(0); }
  Canvas canvas{120, 100, 10.0};
  CQVIS_DrawFlashCircleCmd circle{canvas.surface()};
  CQVIS_DrawFlashRectCmd rect{canvas.surface()};
  CQVIS_DrawFlashObroundCmd obround{canvas.surface()};
  CQVIS_DrawFlashPolygonCmd polygon{canvas.surface()};
  bool Lit(int x, int y) const { return canvas.At(x, y) != 0; }
  bool Blank() const {
    for (std::uint32_t p : canvas.Snapshot()) {
      if (p != 0) return false;
    }
    return true;
  }
};

template <class Cmd>
void ExpectCommonProtocol(Cmd& c, const char* name) {
  EXPECT_EQ(c.KeyPress(VK_ESCAPE), 0) << name;  // inactive
  c.Active();
  EXPECT_EQ(c.KeyPress(VK_ESCAPE), -1) << name;
  EXPECT_EQ(c.KeyPress(VK_RETURN), 0) << name;
  EXPECT_EQ(c.IsBusy(), 0) << name;
  EXPECT_EQ(c.MouseDown(2, 1, 1), 0) << name;
  EXPECT_EQ(c.MouseDown(1, 3, 4), 1) << name;
  EXPECT_EQ(c.m_dCurrentX, 3.0) << name;
  EXPECT_EQ(c.m_dCurrentY, 4.0) << name;
  c.Deactive();
  EXPECT_EQ(c.MouseMove(1, 1), 0) << name;
}

TEST_F(FlashCmdTest, SharedProtocol) {
  ExpectCommonProtocol(circle, "circle");
  EXPECT_EQ(circle.m_dPlacedX, 3.0);
  ExpectCommonProtocol(rect, "rectangle");
  ExpectCommonProtocol(obround, "obround");
  ExpectCommonProtocol(polygon, "polygon");
}

TEST_F(FlashCmdTest, MovesAndReleasesDifferForTheRoundPad) {
  circle.Active();
  rect.Active();
  obround.Active();
  polygon.Active();
  EXPECT_EQ(circle.MouseMove(5, 5), 1);
  EXPECT_EQ(circle.MouseMove(5, 5), 0);  // only the round pad tests for the same position
  EXPECT_EQ(rect.MouseMove(5, 5), 1);
  EXPECT_EQ(rect.MouseMove(5, 5), 1);
  EXPECT_EQ(obround.MouseMove(5, 5), 1);
  EXPECT_EQ(polygon.MouseMove(5, 5), 1);
  EXPECT_EQ(circle.MouseUp(2, 7, 8), 1);
  EXPECT_EQ(circle.m_dCurrentX, 7.0);
  EXPECT_EQ(circle.MouseUp(1, 7, 8), 0);
  EXPECT_EQ(rect.MouseUp(2, 7, 8), 0);
  EXPECT_EQ(obround.MouseUp(2, 7, 8), 0);
  EXPECT_EQ(polygon.MouseUp(2, 7, 8), 0);
}

TEST_F(FlashCmdTest, HoleShapeFollowsTheHoleHeight) {
  // Round pad of radius 1 at (5, 5): 10 px about pixel (50, 50). Probe pixels keep two or more
  // pixels from every edge, so they do not hang on the rasteriser's edge rules.
  circle.SetRadius(1.0);
  circle.SetHoleSize(0.8, 0.0);  // round hole, radius 4 px
  circle.Active();
  circle.MouseDown(1, 5, 5);
  EXPECT_FALSE(Lit(50, 50));
  EXPECT_FALSE(Lit(50, 48));  // inside the round hole
  EXPECT_TRUE(Lit(50, 43));
  EXPECT_TRUE(Lit(57, 50));
  circle.Deactive();
  EXPECT_TRUE(Blank());
  circle.SetHoleSize(0.8, 0.2);  // an 8 x 2 px rectangular hole
  circle.Active();
  EXPECT_FALSE(Lit(50, 50));
  EXPECT_FALSE(Lit(52, 50));
  EXPECT_TRUE(Lit(50, 47));  // above the low rectangle, where the round hole was
  EXPECT_TRUE(Lit(57, 50));
  circle.Deactive();
  EXPECT_TRUE(Blank());
}

TEST_F(FlashCmdTest, RectangleExtentsAndObroundCentring) {
  rect.SetWidth(1.0, 3.0);
  rect.SetHeight(2.0);
  EXPECT_EQ(rect.GetWidth(), 4.0);
  rect.Active();
  rect.MouseDown(1, 5, 5);  // spans x 4 .. 8 = pixels 40 .. 80
  EXPECT_TRUE(Lit(42, 50));
  EXPECT_TRUE(Lit(78, 50));
  EXPECT_FALSE(Lit(36, 50));
  rect.Deactive();
  EXPECT_TRUE(Blank());
  obround.SetWidth(1.0, 3.0);
  obround.SetHeight(2.0);
  obround.Active();
  obround.MouseDown(1, 5, 5);  // width 4 centred on x = 5: pixels 30 .. 70
  EXPECT_TRUE(Lit(32, 50));
  EXPECT_FALSE(Lit(74, 50));
  obround.Deactive();
  EXPECT_TRUE(Blank());
}

TEST_F(FlashCmdTest, SquareSetterAndInitRules) {
  rect.SetSquare(2.0);
  EXPECT_EQ(rect.m_dLeft, 1.0);
  EXPECT_EQ(rect.GetHeight(), 2.0);
  rect.SetHoleSize(0.5, 0.0);
  rect.Init();
  EXPECT_EQ(rect.GetWidth(), 0.0);
  EXPECT_EQ(rect.m_dHoleWidth, 0.5);  // the rectangle's Init keeps the hole
  obround.SetHoleSize(0.5, 0.0);
  obround.Init();
  EXPECT_EQ(obround.m_dHoleWidth, 0.0);  // the obround's clears it
  circle.SetDiameter(3.0);
  EXPECT_EQ(circle.GetRadius(), 1.5);
  circle.Init();
  EXPECT_EQ(circle.GetRadius(), 1.5);  // not touched by Init
  polygon.SetSideCount(6);
  polygon.Init();
  EXPECT_EQ(polygon.GetSideCount(), 3);
}

TEST_F(FlashCmdTest, PolygonPadSideCounts) {
  polygon.SetDiameter(4.0);
  polygon.SetSideCount(4);
  polygon.Active();
  polygon.MouseDown(1, 5, 5);  // diamond with vertices 20 px from (50, 50)
  EXPECT_TRUE(Lit(50, 50));
  EXPECT_TRUE(Lit(62, 50));
  EXPECT_FALSE(Lit(65, 35));  // outside the diamond, inside its box
  polygon.Deactive();
  EXPECT_TRUE(Blank());
  for (int sides : {0, 1, 2, -5}) {
    for (double hole : {0.0, 1.0}) {
      polygon.SetSideCount(sides);
      polygon.SetHoleSize(hole, 0.0);
      polygon.Active();
      polygon.MouseMove(5, 5);
      EXPECT_TRUE(Blank()) << sides << " sides draw nothing";
      polygon.Deactive();
    }
  }
  polygon.SetSideCount(10000);  // degenerate but harmless
  polygon.Active();
  polygon.MouseMove(6, 6);
  polygon.Deactive();
  EXPECT_TRUE(Blank());
}

}  // namespace
}  // namespace qvis
