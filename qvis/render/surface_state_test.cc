// Tests of the drawing surface's state: defaults, the pen/brush/font preparation rules, copy,
// comparison, persistence and the start-up failure message.
#include <cmath>
#include <cstring>
#include <string>
#include <vector>

#include "gtest/gtest.h"
#include "qvis/compat/archive.h"
#include "qvis/compat/message_box.h"
#include "qvis/compat/win32_names.h"
#include "qvis/coords/view_coords.h"
#include "qvis/gdi/gdi.h"
#include "qvis/render/alpha_startup.h"
#include "qvis/render/object_caches.h"
#include "qvis/render/render_test_canvas.h"
#include "qvis/render/surface.h"

namespace {

using qvis::testing::Canvas;

qvis::HGDIOBJ SelectedPen(qvis::HDC dc) { return qvis::AsGdiObject(qvis::gdi::GetCurrentPen(dc)); }
qvis::HGDIOBJ SelectedBrush(qvis::HDC dc) {
  return qvis::AsGdiObject(qvis::gdi::GetCurrentBrush(dc));
}

TEST(SurfaceStateTest, DefaultsAndTheSharedViewAndTransparentMode) {
  CQVIS_GDI s;
  EXPECT_EQ(s.GetBkColor(), 0u);
  EXPECT_EQ(s.GetTextSizeUnit(), 10.0);
  EXPECT_EQ(s.GetFillMode(), 1);
  EXPECT_EQ(s.GetOutlineMode(), 0);
  EXPECT_EQ(s.m_nXORTextHeight, 20);
  EXPECT_STREQ(s.m_strXORTextFace.GetString(), "Arial");
  EXPECT_EQ(s.GetHDC(), nullptr);
  EXPECT_EQ(s.GetCoords()->m_dZoom, 1.0);
  EXPECT_EQ(s.GetPenMgr()->Count(), 0);
  EXPECT_EQ(s.GetBrushMgr()->Count(), 0);
  EXPECT_EQ(s.GetFontMgr()->GetCount(), 0);

  s.SetViewMode(3);
  EXPECT_EQ(s.GetTransparentMode(), 3);
  s.SetTransparentMode(5);
  EXPECT_EQ(s.GetViewMode(), 5);
}

TEST(SurfaceStateTest, WorldToDeviceRoundsWithTheAsymmetricRuleAndSaturates) {
  CQVIS_GDI s;
  struct Row {
    double v;
    LONG expected;
  } rows[] = {{0.0, 0},   {0.4, 0},   {0.5, 1},   {2.55, 3},        {-0.4, 0},
              {-0.5, 0},  {-0.6, -1}, {-2.55, -2}, {-2.6, -3},      {1e300, INT32_MAX},
              {-1e300, INT32_MIN}};
  for (const Row& r : rows) {
    EXPECT_EQ(s.WorldToDeviceLength(r.v), r.expected) << r.v;
    EXPECT_EQ(s.WorldToDeviceX(r.v), r.expected) << r.v;
  }
  EXPECT_EQ(s.WorldToDeviceX(std::nan("")), 0);
  // Unit factor, view origin and zoom all take part: R((f*x - ox) * zoom).
  s.GetCoords()->m_dScale = 2.0;
  s.GetCoords()->m_dViewX = 3.0;
  s.GetCoords()->m_dViewY = -1.0;
  s.GetCoords()->m_dZoom = 10.0;
  EXPECT_EQ(s.WorldToDeviceX(2.0), 10);   // (4 - 3) * 10
  EXPECT_EQ(s.WorldToDeviceY(2.0), 50);   // (4 + 1) * 10
  EXPECT_EQ(s.WorldToDeviceLength(0.5), 10);
}

// Which cached pen a preparation selects: (fill mode, zoom, call, expected cache width).
TEST(SurfaceStateTest, PenPreparationAsksTheCacheForTheRightWidth) {
  Canvas canvas(4, 4);
  const COLORREF c = 0x0000FF;
  struct Row {
    const char* name;
    int fill_mode;
    void (*prepare)(CQVIS_GDI&, COLORREF);
    int end_cap;
    int expected_width;
  } rows[] = {
      {"1.4 -> 1", 1, [](CQVIS_GDI& s, COLORREF k) { s.PrepareSolidPen(1.4, k); }, 0, 1},
      {"1.5 -> 2", 1, [](CQVIS_GDI& s, COLORREF k) { s.PrepareSolidPen(1.5, k); }, 0, 2},
      {"2.5 -> 3", 1, [](CQVIS_GDI& s, COLORREF k) { s.PrepareSolidPen(2.5, k); }, 0, 3},
      {"fill 0 world", 0, [](CQVIS_GDI& s, COLORREF k) { s.PrepareSolidPen(50.0, k); }, 0, 1},
      {"fill 0 real", 0, [](CQVIS_GDI& s, COLORREF k) { s.PrepareSolidPenRealWidth(8, k); }, 0,
       1},
      {"real", 1, [](CQVIS_GDI& s, COLORREF k) { s.PrepareSolidPenRealWidth(8, k); }, 0, 8},
      {"inner 5 -> 3", 1, [](CQVIS_GDI& s, COLORREF k) { s.PrepareSolidPenInner(5.0, k); }, 0,
       3},
      {"inner 3 -> 1", 1, [](CQVIS_GDI& s, COLORREF k) { s.PrepareSolidPenInner(3.0, k); }, 0,
       1},
      {"inner fill 0", 0, [](CQVIS_GDI& s, COLORREF k) { s.PrepareSolidPenInner(9.0, k); }, 0,
       1},
      {"1 px ignores fill", 1, [](CQVIS_GDI& s, COLORREF k) { s.PrepareSolidPen(k); }, 0, 1},
      {"end cap", 1,
       [](CQVIS_GDI& s, COLORREF k) { s.PrepareSolidPenEndCap(PS_ENDCAP_FLAT, 5.0, k); },
       PS_ENDCAP_FLAT, 5},
      {"end cap inner", 1,
       [](CQVIS_GDI& s, COLORREF k) {
         s.PrepareSolidPenEndCapInner(PS_ENDCAP_SQUARE, 6.0, k);
       },
       PS_ENDCAP_SQUARE, 4},
      {"end cap real, fill 0", 0,
       [](CQVIS_GDI& s, COLORREF k) {
         s.PrepareSolidPenEndCapRealWidth(PS_ENDCAP_FLAT, 7, k);
       },
       PS_ENDCAP_FLAT, 1},
      {"end cap 1 px", 1,
       [](CQVIS_GDI& s, COLORREF k) { s.PrepareSolidPenEndCap(PS_ENDCAP_FLAT, k); },
       PS_ENDCAP_FLAT, 1},
  };
  for (const Row& r : rows) {
    CQVIS_GDI s;
    s.SetHDC(canvas.dc());
    s.SetFillMode(r.fill_mode);
    r.prepare(s, c);
    EXPECT_EQ(s.GetPenMgr()->PenCount(), 1) << r.name;
    CPen* expected = s.GetPenMgr()->CreatePen(PS_SOLID, r.end_cap, r.expected_width, c);
    EXPECT_EQ(s.GetPenMgr()->PenCount(), 1) << r.name << ": a different key was asked for";
    EXPECT_EQ(SelectedPen(canvas.dc()), expected->m_hObject) << r.name;
  }
}

TEST(SurfaceStateTest, StyleAndDotPensAndBrushes) {
  Canvas canvas(4, 4);
  CQVIS_GDI s;
  s.SetHDC(canvas.dc());
  s.PrepareStylePen(PS_DASH, 0x00FF00);
  EXPECT_EQ(SelectedPen(canvas.dc()), s.GetPenMgr()->CreatePen(PS_DASH, 0, 1, 0x00FF00)->m_hObject);

  qvis::gdi::SetBkMode(canvas.dc(), OPAQUE);
  s.PrepareDotPen(0xFFFFFF);
  EXPECT_EQ(SelectedPen(canvas.dc()), s.GetPenMgr()->CreatePen(PS_DOT, 0, 1, 0xFFFFFF)->m_hObject);
  EXPECT_EQ(qvis::gdi::GetBkMode(canvas.dc()), TRANSPARENT);

  s.PrepareSolidBrush(0x123456);
  EXPECT_EQ(SelectedBrush(canvas.dc()), s.GetBrushMgr()->CreateBrush(6, 0x123456)->m_hObject);
  s.PrepareBrush(0x123456, HS_CROSS);
  EXPECT_EQ(SelectedBrush(canvas.dc()), s.GetBrushMgr()->CreateBrush(4, 0x123456)->m_hObject);
  s.PrepareNullBrush();
  EXPECT_EQ(SelectedBrush(canvas.dc()), qvis::gdi::GetStockObject(NULL_BRUSH));
  EXPECT_EQ(s.GetBrushMgr()->Count(7), 1);
}

TEST(SurfaceStateTest, NullDcMeansTheDrawingDcButPathsPassNullOn) {
  Canvas drawing(4, 4), other(4, 4);
  CQVIS_GDI s;
  s.SetHandles(nullptr, drawing.dc(), other.dc());
  const qvis::HGDIOBJ other_pen = SelectedPen(other.dc());
  s.PrepareSolidPen(0x0000FF, nullptr);
  EXPECT_EQ(SelectedPen(drawing.dc()), s.GetPenMgr()->CreatePen(0, 0, 1, 0x0000FF)->m_hObject);
  EXPECT_EQ(SelectedPen(other.dc()), other_pen);

  s.SetXOrMode(nullptr);
  EXPECT_EQ(qvis::gdi::GetROP2(drawing.dc()), R2_XORPEN);
  s.SetMergeMode(other.dc());
  EXPECT_EQ(qvis::gdi::GetROP2(other.dc()), R2_MERGEPEN);
  EXPECT_EQ(qvis::gdi::GetROP2(drawing.dc()), R2_XORPEN);
  s.SetCopyMode();
  EXPECT_EQ(qvis::gdi::GetROP2(drawing.dc()), R2_COPYPEN);

  EXPECT_EQ(s.BeginPath(nullptr), 0);
  EXPECT_NE(s.BeginPath(drawing.dc()), 0);
  EXPECT_NE(s.EndPath(drawing.dc()), 0);
}

TEST(SurfaceStateTest, FontHeightEscapementAndWeight) {
  Canvas canvas(4, 4);
  CQVIS_GDI s;
  s.SetHDC(canvas.dc());
  CQVIS_FontMgr& fonts = *s.GetFontMgr();
  struct Row {
    double size, zoom, angle, weight;
    int height, escapement;
    long weight_key;
  } rows[] = {
      {1.0, 1.0, 0.0, 400.0, 10, 0, 400},   // 1 x text unit 10 at zoom 1
      {0.03, 1.0, 45.9, 10.0, 1, 450, 10},  // 0.3 px rounds to 0: asks for 1, never 0
      {2.0, 0.5, 12.7, 700.9, 10, 120, 700},
      {0.0, 1.0, -30.5, 0.0, 1, -300, 0},
  };
  for (const Row& r : rows) {
    s.GetCoords()->m_dZoom = r.zoom;
    s.SetFont(r.size, r.angle, "Arial", 0, 0, r.weight, 0);
    CFont* f = fonts.Find("Arial", r.height, r.escapement, 0, 0, r.weight_key, 0);
    ASSERT_NE(f, nullptr) << r.size << " " << r.angle;
    EXPECT_EQ(qvis::AsGdiObject(qvis::gdi::GetCurrentFont(canvas.dc())), f->m_hObject);
  }
  // The unit factor does not take part in the text height.
  s.GetCoords()->m_dZoom = 1.0;
  s.GetCoords()->m_dScale = 3.0;
  const int before = fonts.GetCount();
  s.SetFont(1.0, 0.0, "Arial", 0, 0, 400.0, 0);
  EXPECT_EQ(fonts.GetCount(), before);

  // SetFontFixedSize returns what was selected before.
  const qvis::HGDIOBJ current = qvis::AsGdiObject(qvis::gdi::GetCurrentFont(canvas.dc()));
  const qvis::HGDIOBJ previous = s.SetFontFixedSize(33.9, 0, "Arial", 0, 0, 400, 0);
  EXPECT_EQ(previous, current);
  EXPECT_NE(fonts.Find("Arial", 33, 0, 0, 0, 400, 0), nullptr);
}

TEST(SurfaceStateTest, ChangeUnitAndTheWorldClippingRectangle) {
  CQVIS_GDI s;
  s.ChangeUnit(2, 0);
  EXPECT_NEAR(s.GetTextSizeUnit(), 0.254, 1e-12);

  s.GetCoords()->m_dZoom = 2.0;
  s.GetCoords()->m_dViewX = 10.0;
  s.GetCoords()->m_dViewY = 20.0;
  s.GetCoords()->m_dScale = 5.0;  // not applied here
  s.m_nScreenClipLeft = 0;
  s.m_nScreenClipTop = -4;
  s.m_nScreenClipRight = 100;
  s.m_nScreenClipBottom = 50;
  s.SetClippingRegionOfScreen();
  EXPECT_EQ(s.m_dWorldClipLeft, 10.0);
  EXPECT_EQ(s.m_dWorldClipTop, 18.0);
  EXPECT_EQ(s.m_dWorldClipRight, 60.0);
  EXPECT_EQ(s.m_dWorldClipBottom, 45.0);
}

TEST(SurfaceStateTest, AssignmentCopiesColourTextUnitAndViewOnly) {
  Canvas canvas(4, 4);
  CQVIS_GDI a, b;
  a.SetBkColor(0x010203);
  a.SetTextSizeUnit(2.5);
  a.GetCoords()->m_dZoom = 7.0;
  a.GetCoords()->m_dScale = 3.0;
  a.SetFillMode(0);
  a.SetHDC(canvas.dc());
  EXPECT_NE(a, b);
  b = a;
  EXPECT_EQ(a, b);
  EXPECT_EQ(b.GetCoords()->m_dZoom, 7.0);
  EXPECT_EQ(b.GetCoords()->m_dScale, 3.0);  // a new copy of the whole coordinate system
  EXPECT_NE(b.GetCoords(), a.GetCoords());
  EXPECT_EQ(b.GetFillMode(), 1);
  EXPECT_EQ(b.GetHDC(), nullptr);
  // Modes do not take part in the comparison; the view does.
  b.SetFillMode(0);
  EXPECT_EQ(a, b);
  b.GetCoords()->m_dViewX = 1.0;
  EXPECT_NE(a, b);
  CQVIS_GDI c(a);
  EXPECT_EQ(c, a);
}

TEST(SurfaceStateTest, SerializeWritesOneHundredBytesAndStopsAtVersionZero) {
  CQVIS_GDI a;
  a.SetBkColor(0x00ABCDEF);
  a.SetTextSizeUnit(0.5);
  a.GetCoords()->m_dZoom = 4.0;
  qvis::MemFile file;
  {
    CArchive ar(&file, CArchive::store);
    a.Serialize(ar);
    ar.Close();
  }
  ASSERT_EQ(file.bytes().size(), 100u);
  int version = 0;
  COLORREF colour = 0;
  std::memcpy(&version, file.bytes().data(), 4);
  std::memcpy(&colour, file.bytes().data() + 4, 4);
  EXPECT_EQ(version, 1);
  EXPECT_EQ(colour, 0x00ABCDEFu);

  CQVIS_GDI b;
  file.Rewind();
  {
    CArchive ar(&file, CArchive::load);
    b.Serialize(ar);
  }
  EXPECT_EQ(a, b);

  std::vector<std::uint8_t> bytes = file.bytes();
  std::memset(bytes.data(), 0, 4);  // version 0
  qvis::MemFile old(bytes);
  CQVIS_GDI c;
  {
    CArchive ar(&old, CArchive::load);
    c.Serialize(ar);
  }
  EXPECT_EQ(c.GetBkColor(), 0u);
  EXPECT_EQ(c.GetCoords()->m_dZoom, 1.0);

  // A truncated record is the archive's end-of-file error.
  qvis::MemFile truncated(std::vector<std::uint8_t>(file.bytes().begin(),
                                                     file.bytes().begin() + 10));
  CArchive ar(&truncated, CArchive::load);
  EXPECT_THROW(b.Serialize(ar), CArchiveException);
}

TEST(SurfaceStateTest, StartFailureShowsTheMessageAndTheSurfaceStillWorks) {
  std::vector<std::string> shown;
  qvis::MessageBoxHandler previous =
      qvis::SetMessageBoxHandler([&shown](const char* text) {
        shown.push_back(text);
        return 1;
      });
  {
    CQVIS_GDI ok;
    EXPECT_TRUE(shown.empty());
    EXPECT_TRUE(qvis::AlphaIsRunning());
  }
  qvis::SetAlphaStartupFailsForTesting(true);
  {
    Canvas canvas(4, 4);
    CQVIS_GDI s;
    ASSERT_EQ(shown.size(), 1u);
    EXPECT_EQ(shown[0], "GDI+ initialization failed.");
    s.InitGDIPlus();
    ASSERT_EQ(shown.size(), 2u);
    EXPECT_EQ(shown[1], "GDI+ initialization failed.");
    s.SetHDC(canvas.dc());
    s.PrepareSolidPen(0x0000FF);
    EXPECT_NE(qvis::gdi::GetCurrentPen(canvas.dc()), nullptr);
  }
  qvis::SetAlphaStartupFailsForTesting(false);
  qvis::SetMessageBoxHandler(previous);
}

TEST(SurfaceStateTest, InitAndReleaseKeepTheLatestToken) {
  CQVIS_GDI s;
  const UINT_PTR first = s.m_nGdiplusToken;
  s.InitGDIPlus();
  EXPECT_NE(s.m_nGdiplusToken, first);
  s.ReleaseGDIPlus();
  EXPECT_NE(s.m_nGdiplusToken, 0u);  // the token is kept
  // The first start-up was overwritten and is never shut down by the surface; end it here so
  // that no later test (in whatever order the tests run) sees the translucent path running.
  qvis::AlphaShutdown(first);
}

}  // namespace
