// Pixel tests of the grid, snap and origin display: thresholds, mark shapes and positions,
// ranges, fractional spacings, and prompt returns for extreme views.
#include <chrono>
#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

#include "gtest/gtest.h"
#include "qvis/compat/archive.h"
#include "qvis/coords/view_coords.h"
#include "qvis/render/grid_snap_display.h"
#include "qvis/render/render_test_canvas.h"
#include "qvis/render/surface.h"

namespace {

using qvis::testing::Canvas;

constexpr COLORREF kGrid = 0xC8C8C8;
constexpr COLORREF kSnap = 0x646464;

struct Scene {
  Scene(int w, int h, double zoom) : canvas(w, h) {
    surface.SetHDC(canvas.dc());
    surface.GetCoords()->m_dZoom = zoom;
    mgr = std::make_unique<CQVIS_GridSnapMgr>(&surface);
  }
  Canvas canvas;
  CQVIS_GDI surface;
  std::unique_ptr<CQVIS_GridSnapMgr> mgr;
  CQVIS_Coords& coords() { return *surface.GetCoords(); }
};

TEST(GridTest, DrawnOnlyFromTwentyPixels) {
  struct Row {
    double gx, gy, zoom;
    bool drawn;
  } rows[] = {
      {100, 100, 0.19, false},  // 19 pixels
      {100, 100, 0.2, true},    // 20 pixels
      {100, 10, 0.5, true},     // 50 x 5: one spacing suffices
      {10, 100, 0.19, false},   // 2 x 19
  };
  for (const Row& r : rows) {
    for (int style : {0, 1}) {
      Scene s(200, 200, r.zoom);
      s.coords().SetGrid(r.gx, r.gy);
      s.mgr->SetShowSnap(0);
      s.mgr->SetGridStyle(style);
      s.mgr->DrawGrid(200, 200);
      EXPECT_EQ(s.canvas.Count(kGrid) > 0, r.drawn) << r.gx << "x" << r.gy << " @" << r.zoom;
    }
  }
}

TEST(GridTest, PlusMarksAreSevenPixelsAtEveryZoom) {
  for (double zoom : {0.5, 1.0, 3.0}) {
    Scene s(400, 400, zoom);
    s.coords().SetScreenViewPosition(-100 / zoom, -100 / zoom);  // world 0 at pixel 100
    s.mgr->DrawGrid(400, 400);
    EXPECT_EQ(s.canvas.Ascii(96, 96, 105, 105), qvis::testing::Pic({".........",
                                                                    "....#....",
                                                                    "....#....",
                                                                    "....#....",
                                                                    ".#######.",
                                                                    "....#....",
                                                                    "....#....",
                                                                    "....#....",
                                                                    "........."}))
        << zoom;
    EXPECT_EQ(s.canvas.At(100, 100), kGrid);
  }
}

TEST(GridTest, ColumnsAndRowsRunOneSpacingBeyondTheView) {
  // Origin 0, grid 100, 1000 x 800 at zoom 1: columns -100 .. 1100, rows -100 .. 900. The line
  // grid shows the ones on the canvas: x = 0, 100, ..., 1000 and y = 0, ..., 800.
  Scene s(1001, 801, 1.0);
  s.mgr->SetShowSnap(0);
  s.mgr->SetLineGrid();
  s.mgr->DrawGrid(1000, 800);
  for (int x = 0; x <= 1000; x += 100) EXPECT_EQ(s.canvas.At(x, 450), kGrid) << x;
  for (int y = 0; y <= 800; y += 100) EXPECT_EQ(s.canvas.At(450, y), kGrid) << y;
  EXPECT_EQ(s.canvas.At(450, 450), 0u);
  EXPECT_EQ(s.canvas.At(1000, 450), kGrid);
  // Rows end at the visible world size used as a device x: 1000 here (exclusive).
  EXPECT_EQ(s.canvas.At(999, 50 * 2), kGrid);
  EXPECT_EQ(s.canvas.At(1000, 100), kGrid);  // the column at 1000 itself
  EXPECT_EQ(s.canvas.At(1000, 150), kGrid);
}

TEST(GridTest, LineGridRowsEndAtTheVisibleWorldSize) {
  Scene s(1000, 300, 2.0);  // 1000 pixels at zoom 2 show 500 world units
  s.mgr->SetShowSnap(0);
  s.mgr->SetLineGrid();
  s.mgr->DrawGrid(1000, 300);
  EXPECT_EQ(s.canvas.At(499, 200), kGrid);
  EXPECT_EQ(s.canvas.At(500, 200), 0u);
  EXPECT_EQ(s.canvas.At(700, 200), 0u);
  EXPECT_EQ(s.canvas.At(600, 100), kGrid);  // columns still cover the view (x = 600, 800)
}

TEST(SnapTest, DrawnOnlyFromFivePixelsAlongTheGridLines) {
  struct Row {
    double zoom;
    bool drawn;
  } rows[] = {{0.19, true}, {0.15, false}};
  for (const Row& r : rows) {
    Scene s(400, 400, r.zoom);
    s.mgr->SetShowGrid(0);
    s.mgr->DrawSnap(400, 400);
    EXPECT_EQ(s.canvas.Count(kSnap) > 0, r.drawn) << r.zoom;
  }
  // Zoom 1, grid 100, snap 25: three dots between grid points along every grid line, none at
  // the grid points themselves, none off the lines.
  Scene s(300, 300, 1.0);
  s.mgr->SetShowGrid(0);
  s.mgr->DrawSnap(300, 300);
  for (int k = 0; k < 300; ++k) {
    const bool on_row = k % 100 == 25 || k % 100 == 50 || k % 100 == 75;
    EXPECT_EQ(s.canvas.At(k, 100) == kSnap, on_row) << k;
    EXPECT_EQ(s.canvas.At(200, k) == kSnap, on_row) << k;
  }
  EXPECT_EQ(s.canvas.At(50, 50), 0u);
  EXPECT_EQ(s.canvas.Count(kSnap), 3 * 3 * 3 * 2);
}

TEST(SnapTest, FractionalSpacingsStepAtTheirTrueSpacing) {
  // Grid 1 and snap 0.1 at zoom 100: dots every 10 pixels between grid lines 100 apart.
  Scene s(300, 300, 100.0);
  s.coords().SetGrid(1.0);
  s.coords().SetSnap(0.1);
  s.mgr->SetShowGrid(0);
  s.mgr->DrawSnap(300, 300);
  for (int k = 0; k < 300; ++k) {
    const bool dot = k % 10 == 0 && k % 100 != 0;
    EXPECT_EQ(s.canvas.At(k, 100) == kSnap, dot) << k;
  }
  // Grid 0.5 at zoom 100 (50 pixels) as lines.
  Scene g(300, 300, 100.0);
  g.coords().SetGrid(0.5);
  g.mgr->SetShowSnap(0);
  g.mgr->SetLineGrid();
  g.mgr->DrawGrid(300, 300);
  for (int x = 0; x < 300; ++x) EXPECT_EQ(g.canvas.At(x, 1) == kGrid, x % 50 == 0) << x;
  // Plus marks at 0.25 spacing, view not on a multiple.
  Scene p(200, 200, 100.0);
  p.coords().SetGrid(0.25);
  p.coords().SetScreenViewPosition(0.1, 0.1);
  p.mgr->SetShowSnap(0);
  p.mgr->DrawGrid(200, 200);
  EXPECT_EQ(p.canvas.At(15, 15), kGrid);    // world 0.25 at pixel 15
  EXPECT_EQ(p.canvas.At(40, 15), kGrid);
  EXPECT_EQ(p.canvas.At(190, 190), kGrid);  // world 2.0
}

TEST(GridTest, ExtremeViewsReturnPromptlyAndDenseAxesAreLeftOut) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  struct Row {
    double zoom, vx, gx, gy, sx, sy;
  } rows[] = {
      {1e-8, 0, 100, 100, 25, 25},  {1e12, 0, 100, 100, 25, 25},  {1, nan, 100, 100, 25, 25},
      {1, 1e300, 100, 100, 25, 25}, {1, 0, 100, 1e-9, 25, 1e-12}, {1, 0, 1e-9, 1e-9, 1e-9, 25},
      {1e6, 0, 1e-3, 1e-3, 1e-4, 1e-4}, {1, 0, 1e300, 1e300, 1, 1},
  };
  for (const Row& r : rows) {
    for (int style : {0, 1}) {
      Scene s(400, 300, r.zoom);
      s.coords().m_dViewX = r.vx;
      s.coords().m_dGridX = r.gx;
      s.coords().m_dGridY = r.gy;
      s.coords().m_dSnapX = r.sx;
      s.coords().m_dSnapY = r.sy;
      s.mgr->SetGridStyle(style);
      const auto t0 = std::chrono::steady_clock::now();
      s.mgr->DrawGrid(400, 300);
      s.mgr->DrawSnap(400, 300);
      s.mgr->DrawOrigin();
      const double seconds =
          std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
      EXPECT_LT(seconds, 2.0) << r.zoom << " " << r.gx << " " << r.gy;
    }
  }
  // Rows 1e-9 apart would be denser than the pixels: the line grid keeps only its columns.
  Scene s(400, 300, 1.0);
  s.coords().m_dGridY = 1e-9;
  s.mgr->SetShowSnap(0);
  s.mgr->SetLineGrid();
  s.mgr->DrawGrid(400, 300);
  EXPECT_EQ(s.canvas.At(100, 150), kGrid);
  EXPECT_EQ(s.canvas.At(150, 150), 0u);
}

TEST(OriginTest, RingAndCrossOfFixedSizeAndNullDcFallback) {
  for (double zoom : {0.01, 1.0, 50.0}) {
    Canvas canvas(120, 120);
    CQVIS_GDI surface;
    surface.GetCoords()->m_dZoom = zoom;
    surface.GetCoords()->SetScreenViewPosition(-60 / zoom, -60 / zoom);
    CQVIS_GridSnapMgr mgr(&surface);  // made before the surface has a DC
    EXPECT_EQ(mgr.GetHDC(), nullptr);
    surface.SetHDC(canvas.dc());
    mgr.DrawOrigin();
    EXPECT_EQ(mgr.GetHDC(), canvas.dc());
    EXPECT_EQ(canvas.Box(), CRect(40, 40, 81, 81)) << zoom;
    EXPECT_EQ(canvas.At(50, 60), 0xC8C8C8u);   // on the ring and the cross
    EXPECT_EQ(canvas.At(55, 55), 0u);          // inside the ring, off the cross
  }
}

TEST(GridSnapStateTest, SettingsCompareCopyAndPersist) {
  CQVIS_GridSnapMgr a(nullptr), b(nullptr);
  EXPECT_EQ(a, b);
  a.SetGridColor(1);
  a.SetSnapColor(2);
  a.SetOriginColor(3);
  a.SetShowGrid(0);
  a.SetShowSnap(0);
  a.SetLineGrid();
  a.SetShowOrigin(0);
  EXPECT_NE(a, b);
  qvis::MemFile file;
  {
    CArchive ar(&file, CArchive::store);
    a.Serialize(ar);
    ar.Close();
  }
  ASSERT_EQ(file.bytes().size(), 32u);
  file.Rewind();
  {
    CArchive ar(&file, CArchive::load);
    b.Serialize(ar);
  }
  EXPECT_EQ(a, b);
  std::vector<std::uint8_t> bytes = file.bytes();
  std::memset(bytes.data(), 0, 4);
  qvis::MemFile old(bytes);
  CQVIS_GridSnapMgr c(nullptr);
  {
    CArchive ar(&old, CArchive::load);
    c.Serialize(ar);
  }
  EXPECT_EQ(c, CQVIS_GridSnapMgr(nullptr));
  b.Clear();
  EXPECT_EQ(b.GetGridColor(), kGrid);
  EXPECT_EQ(b.GetGridStyle(), 0);
  CQVIS_GridSnapMgr d(nullptr);
  d = a;
  EXPECT_EQ(d, a);
}

}  // namespace
