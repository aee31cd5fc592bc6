// Pixel tests of the translucent GP_ primitives: colour conversion, blending, the line's
// direction rule, pads always solid, and nothing drawn without a start-up.
#include <vector>

#include "gtest/gtest.h"
#include "qvis/compat/message_box.h"
#include "qvis/compat/win32_names.h"
#include "qvis/coords/view_coords.h"
#include "qvis/render/alpha_startup.h"
#include "qvis/render/render_test_canvas.h"
#include "qvis/render/surface.h"

namespace {

using qvis::testing::Canvas;

void Aim(CQVIS_GDI& s, Canvas& canvas, double zoom, int ox, int oy) {
  s.SetHDC(canvas.dc());
  s.GetCoords()->m_dZoom = zoom;
  s.GetCoords()->m_dViewX = -ox / zoom;
  s.GetCoords()->m_dViewY = -oy / zoom;
}

TEST(GpColourTest, ArgbTakesTheLowByteOfTheOpacity) {
  EXPECT_EQ(CQVIS_GDI::GpArgb(0x0000FF, 128), 0x80FF0000u);
  EXPECT_EQ(CQVIS_GDI::GpArgb(0x563412, 255), 0xFF123456u);
  EXPECT_EQ(CQVIS_GDI::GpArgb(0x0000FF, 0x180), 0x80FF0000u);
  EXPECT_EQ(CQVIS_GDI::GpArgb(0xFF0000FF, -1), 0xFFFF0000u);
}

TEST(GpFillTest, RectangleBlendsOverTheBackground) {
  Canvas canvas(40, 30, 0);
  CQVIS_GDI s;
  Aim(s, canvas, 10.0, 0, 0);
  s.GP_DrawRectangle(nullptr, 3, 2, 1, 1, 0x0000FF, 128);  // corners in any order
  EXPECT_EQ(canvas.Box(), CRect(10, 10, 30, 20));
  EXPECT_EQ(canvas.At(15, 15), 0x000080u);  // red 255 * 128 / 255
  const int painted = canvas.Drawn();
  // Opacity 0x180 is 0x80 again: the same result once more halves towards red.
  s.GP_DrawRectangleWH(nullptr, 1, 1, 2, 1, 0x0000FF, 0x180);
  EXPECT_EQ(canvas.Drawn(), painted);
  EXPECT_EQ(canvas.At(15, 15), 0x0000C0u);
}

TEST(GpLineTest, ReversedHorizontalLineCoversTheSamePixels) {
  Canvas forward(60, 30), backward(60, 30);
  CQVIS_GDI s;
  Aim(s, forward, 10.0, 5, 15);
  s.GP_DrawLine(nullptr, 0, 0, 4, 0, 0.3, 0x00FF00, 255);
  Aim(s, backward, 10.0, 5, 15);
  s.GP_DrawLine(nullptr, 4, 0, 0, 0, 0.3, 0x00FF00, 255);
  EXPECT_GT(forward.Drawn(), 40 * 2);
  EXPECT_EQ(forward.Snapshot(), backward.Snapshot());
}

TEST(GpPadTest, PadsAreSolidWhateverTheFillMode) {
  Canvas solid(60, 40), outline(60, 40);
  CQVIS_GDI s;
  Aim(s, solid, 10.0, 30, 20);
  s.GP_DrawObroundRgn(nullptr, 0, 0, 4, 2, 0.6, 0, 0, 0x00FF00, 255);
  Aim(s, outline, 10.0, 30, 20);
  s.SetFillMode(0);
  s.GP_DrawObroundRgn(nullptr, 0, 0, 4, 2, 0.6, 0, 0, 0x00FF00, 255);
  EXPECT_EQ(outline.Snapshot(), solid.Snapshot());
  EXPECT_EQ(solid.At(30, 20), 0u);       // the hole
  EXPECT_EQ(solid.At(20, 20), 0x00FF00u);

  // The GP pad covers exactly the pixels of the GDI pad of the same arguments.
  Canvas gdi_pad(60, 40);
  CQVIS_GDI g;
  Aim(g, gdi_pad, 10.0, 30, 20);
  g.DrawObroundRgn(0, 0, 4, 2, 0.6, 0, 0, 0x00FF00);
  EXPECT_EQ(gdi_pad.Snapshot(), solid.Snapshot());
}

TEST(GpArcTest, ArcFollowsTheDeviceArcAndItsDegenerateRules) {
  Canvas canvas(60, 60);
  CQVIS_GDI s;
  Aim(s, canvas, 10.0, 30, 30);
  s.GP_DrawArc(nullptr, 0, 0, 2, 1, 1, 1, 1, 0.1, 0xFFFFFF, 255);  // one ray
  s.GP_DrawArc(nullptr, 0, 0, 0.04, 1, 0, 0, -1, 0.1, 0xFFFFFF, 255);
  EXPECT_EQ(canvas.Drawn(), 0);
  // Counter-clockwise on screen from the right to the top: the upper-right quarter.
  s.GP_DrawArc(nullptr, 0, 0, 2, 1, 0, 0, -1, 0.1, 0xFFFFFF, 255);
  const CRect box = canvas.Box();
  EXPECT_GT(canvas.Drawn(), 20);
  EXPECT_GE(box.left, 29);
  EXPECT_LE(box.bottom, 32);
  EXPECT_NEAR(box.right, 51, 1);
  EXPECT_NEAR(box.top, 10, 1);
}

TEST(GpStartTest, NothingIsDrawnWithoutAStart) {
  Canvas canvas(40, 40);
  qvis::MessageBoxHandler previous = qvis::SetMessageBoxHandler([](const char*) { return 1; });
  qvis::SetAlphaStartupFailsForTesting(true);
  {
    CQVIS_GDI s;
    Aim(s, canvas, 10.0, 0, 0);
    ASSERT_FALSE(qvis::AlphaIsRunning());
    s.GP_DrawRectangle(nullptr, 0, 0, 3, 3, 0x00FF00, 255);
    s.GP_DrawCircleRgn(nullptr, 2, 2, 1, 0, 0, 0x00FF00, 255);
    s.GP_DrawLine(nullptr, 0, 0, 3, 3, 0.5, 0x00FF00, 255);
    EXPECT_EQ(canvas.Drawn(), 0);
    // The plain marks are not translucent drawing and still work.
    s.PrepareSolidPen(0xFFFFFF);
    s.GP_DrawPlus(nullptr, 2, 2, 1);
    EXPECT_EQ(canvas.Drawn(), 39);
  }
  qvis::SetAlphaStartupFailsForTesting(false);
  qvis::SetMessageBoxHandler(previous);
}

}  // namespace
