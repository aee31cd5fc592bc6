// A small PCB scene drawn through the surface and compared pixel for pixel with what real GDI
// draws for the calls the surface is meant to make (testdata/pcb_scene.txt, rendered into
// testdata/pcb_scene.png by the reference renderer).
#include <string>

#include "gtest/gtest.h"
#include "qvis/compat/win32_names.h"
#include "qvis/coords/view_coords.h"
#include "qvis/gdi/gdi.h"
#include "qvis/render/render_test_canvas.h"
#include "qvis/render/surface.h"

namespace {

using qvis::testing::Canvas;
namespace gdi = qvis::gdi;

TEST(SurfaceGoldenTest, PcbSceneMatchesTheReference) {
  const std::string path = std::string(QVIS_SOURCE_DIR) + "/qvis/render/testdata/pcb_scene.png";
  qvis::HBITMAP expected = gdi::ReadPng(path.c_str());
  ASSERT_NE(expected, nullptr) << path;
  const gdi::BitmapView want = gdi::BitmapPixels(expected);
  ASSERT_EQ(want.width, 160);
  ASSERT_EQ(want.height, 120);

  Canvas canvas(160, 120);
  CQVIS_GDI s;
  s.SetHDC(canvas.dc());
  s.GetCoords()->SetZoom(10.0);
  s.PrepareSolidPen(0.6, 0x0000FF);
  s.DrawLine(1, 1, 6, 3);
  s.PrepareSolidPenEndCap(PS_ENDCAP_FLAT, 0.8, 0x00FF00);
  s.DrawLine(9, 5, 2, 5);
  s.DrawCircleRgn(12, 3, 1.5, 1.0, 0, 0x00C0C0);
  s.DrawObroundRgn(4, 9, 4, 2, 0.8, 0, 0, 0x00C0C0);
  s.SetFillMode(0);
  s.DrawRectangleRgnWH(11, 9, 3, 2, 0, 0, 90, 0xFF00FF);

  int differing = 0;
  for (int y = 0; y < 120; ++y) {
    for (int x = 0; x < 160; ++x) {
      const COLORREF have = canvas.At(x, y);
      const COLORREF ref = Canvas::FromRgb(want.Row32(y)[x] & 0xFFFFFF);
      if (have != ref && ++differing <= 10) {
        ADD_FAILURE() << "pixel " << x << "," << y << ": " << std::hex << have << " vs " << ref;
      }
    }
  }
  EXPECT_EQ(differing, 0);
  gdi::DeleteObject(expected);
}

}  // namespace
