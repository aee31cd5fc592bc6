// End-to-end tests of the drawing window on the headless port: messages in, what the front
// buffer (the screen) shows and what the design's members hold out.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <unistd.h>

#include "qvis/compat/win32_names.h"
#include "qvis/coords/zoom_range.h"
#include "qvis/design/design.h"
#include "qvis/design/design_objects.h"
#include "qvis/design/render_buffer.h"
#include "qvis/gdi/gdi.h"
#include "qvis/window/drawing_window.h"
#include "qvis/window/headless/headless_port.h"
#include "tests/window_test_util.h"

namespace {

using qvis::HeadlessPort;

constexpr COLORREF kRed = 0x0000FF;
constexpr COLORREF kBlack = 0x000000;

std::vector<std::uint32_t> Pixels(HeadlessPort& port) {
  const qvis::gdi::BitmapView v = qvis::gdi::BitmapPixels(port.FrontBitmap());
  std::vector<std::uint32_t> out;
  for (int y = 0; y < v.height; ++y) {
    const std::uint32_t* row = v.Row32(y);
    out.insert(out.end(), row, row + v.width);
  }
  return out;
}

int CountDifferent(const std::vector<std::uint32_t>& a, const std::vector<std::uint32_t>& b) {
  if (a.size() != b.size()) return -1;
  int n = 0;
  for (size_t i = 0; i < a.size(); ++i) n += a[i] != b[i] ? 1 : 0;
  return n;
}

int CountColour(HeadlessPort& port, COLORREF colour, const CRect& area) {
  int n = 0;
  for (int y = area.top; y < area.bottom; ++y) {
    for (int x = area.left; x < area.right; ++x) n += port.FrontPixel(x, y) == colour ? 1 : 0;
  }
  return n;
}

// A 400 x 300 window showing world (-10, -10) at its top-left corner at 10 pixels per mm,
// with the grid, snap points and origin mark off so that figures stand on black.
class WindowTest : public testing::Test, protected WindowDriver {
 protected:
  WindowTest() : port_(400, 300, CPoint(1000, 500)) {
    wnd_.Create(&port_);
    StartQuietView(&port_, wnd_.GetDesign(), -10.0, -10.0, 10.0);
  }

  std::string Proc() { return d_->GetCurrentProcInfo().GetString(); }
  template <class Cmd>
  void Start(Cmd* cmd) {
    d_->AllDeactiveCmd();
    cmd->Active();
  }
  // The area around the world rectangle, in pixels, with a margin of a few pixels.
  CRect Around(double x1, double y1, double x2, double y2, int margin = 4) {
    return CRect(c_->V2RX(std::min(x1, x2)) - margin, c_->V2RY(std::min(y1, y2)) - margin,
                 c_->V2RX(std::max(x1, x2)) + margin + 1, c_->V2RY(std::max(y1, y2)) + margin + 1);
  }

  HeadlessPort port_;
  CQVIS_Wnd wnd_;
};

TEST_F(WindowTest, CreationBindsTheDesignAndStartsSelection) {
  EXPECT_EQ(Proc(), "Select Command");
  EXPECT_EQ(d_->GetCurrentLayerID(), 1);
  EXPECT_EQ(c_->m_bSnap, 1);
  EXPECT_EQ(d_->m_pSurface->GetOriginHDC(), port_.FrontDC());
  EXPECT_EQ(d_->m_pSurface->GetHDC(), d_->m_pRenderBuffer->GetDC());
  EXPECT_EQ(d_->m_pSurface->GetHWND(), &port_);
  EXPECT_EQ(CountColour(port_, kBlack, CRect(0, 0, 400, 300)), 400 * 300);
}

TEST_F(WindowTest, PaintShowsGridAndOriginAndTheHostHook) {
  d_->m_pGridSnapMgr->SetShowGrid(1);
  d_->m_pGridSnapMgr->SetShowOrigin(1);
  port_.RedrawNow();
  const COLORREF grey = 0xC8C8C8;
  // Grid 10 mm at 10 px/mm: plus marks every 100 pixels; world (0, 0) is at pixel (100, 100).
  EXPECT_EQ(port_.FrontPixel(200, 200), grey);
  EXPECT_EQ(port_.FrontPixel(203, 200), grey);
  EXPECT_EQ(port_.FrontPixel(250, 250), kBlack);
  EXPECT_EQ(port_.FrontPixel(100 + 15, 100), grey);  // the origin cross reaches 20 px out
}

// A window whose host paints one filled square through the hook.
class HookWindow : public CQVIS_Wnd {
 public:
  void OnDrawHost(CQVIS_GDI* surface, qvis::HDC dc) override {
    ++calls;
    surface->SetCopyMode(dc);
    surface->PrepareSolidPen(0x00FF00, dc);
    surface->PrepareSolidBrush(0x00FF00, dc);
    surface->DrawRectangle(dc, 0.0, 0.0, 2.0, 2.0);
  }
  int calls = 0;
};

TEST(WindowHookTest, HostFiguresArePaintedBeforeTheRubberBands) {
  HeadlessPort port(200, 200);
  HookWindow wnd;
  wnd.Create(&port);
  CQVIS_Design* d = wnd.GetDesign();
  d->m_pCoords->SetScreenViewPosition(-5.0, -5.0);
  d->m_pCursorMgr->Off();
  port.RedrawNow();
  EXPECT_GE(wnd.calls, 1);
  // World (1, 1) is pixel (60, 60): inside the host's square.
  EXPECT_EQ(port.FrontPixel(60, 60), 0x00FF00u);
  // A rectangle rubber band over it XORs the host's green, and a repaint keeps both.
  d->AllDeactiveCmd();
  d->m_pDrawRectCmd->Active();
  port.Mouse(WM_MOUSEMOVE, CPoint(40, 40));
  port.Mouse(WM_LBUTTONDOWN, CPoint(40, 40));
  port.Mouse(WM_LBUTTONUP, CPoint(40, 40));
  port.Mouse(WM_MOUSEMOVE, CPoint(80, 80));
  EXPECT_EQ(port.FrontPixel(60, 60), 0x00FF00u ^ 0x0000FFu);
  port.RedrawNow();
  EXPECT_EQ(port.FrontPixel(60, 60), 0x00FF00u ^ 0x0000FFu);
}

TEST_F(WindowTest, LineCommandFromActivationToEsc) {
  wnd_.OnDrawLine();
  EXPECT_EQ(Proc(), "Draw Line Command");
  CQVIS_DrawLineCmd* line = d_->m_pDrawLineCmd;
  EXPECT_EQ(line->m_dWidth, 0.4);
  EXPECT_EQ(line->m_nPxy, 1);
  Click(0.0, 0.0);
  Move(10.0, 4.0);
  // Bend mode 1: a 45-degree leg to (4, 4), then straight to (10, 4), drawn in XOR red.
  EXPECT_EQ(port_.FrontPixel(c_->V2RX(2.0), c_->V2RY(2.0)), kRed);
  EXPECT_EQ(port_.FrontPixel(c_->V2RX(7.0), c_->V2RY(4.0)), kRed);
  EXPECT_EQ(port_.FrontPixel(c_->V2RX(7.0), c_->V2RY(0.0)), kBlack);
  port_.Key(VK_RETURN);
  ASSERT_EQ(line->m_pPointList->GetSize(), 3);
  EXPECT_EQ(line->m_pPointList->GetAt(1)->m_dX, 4.0);
  EXPECT_EQ(line->m_pPointList->GetAt(1)->m_dY, 4.0);
  EXPECT_EQ(line->m_pPointList->GetAt(2)->m_dX, 10.0);
  EXPECT_EQ(line->m_nProgress, 0);
  EXPECT_EQ(Proc(), "Draw Line Command");
  port_.Key(VK_ESCAPE);
  EXPECT_EQ(Proc(), "Select Command");
}

TEST_F(WindowTest, SpaceAndBackspaceReachTheTrack) {
  wnd_.OnDrawLine();
  CQVIS_DrawLineCmd* line = d_->m_pDrawLineCmd;
  Click(0.0, 0.0);
  port_.Key(VK_SPACE);
  EXPECT_EQ(line->m_nPxy, 2);
  Click(10.0, 4.0);  // mode 2: straight leg first, to (6, 0)
  ASSERT_EQ(line->m_pPointList->GetSize(), 3);
  EXPECT_EQ(line->m_pPointList->GetAt(1)->m_dX, 6.0);
  port_.Key(VK_BACK);
  EXPECT_EQ(line->m_pPointList->GetSize(), 2);
  EXPECT_EQ(line->m_nProgress, 1);
  EXPECT_TRUE(port_.ParentMessages().empty());  // only Esc and Enter are told
}

TEST_F(WindowTest, ArcTakesEnterAsAClick) {
  wnd_.OnDrawArc();
  EXPECT_EQ(Proc(), "Draw Arc Command");
  CQVIS_DrawArcCmd* arc = d_->m_pDrawArcCmd;
  EXPECT_EQ(arc->m_dWidth, 0.4);
  Click(0.0, 0.0);
  Click(5.0, 0.0);
  Move(0.0, -5.0);
  EXPECT_EQ(arc->m_nProgress, 2);
  port_.Key(VK_RETURN);
  EXPECT_EQ(arc->m_nProgress, 0);
  EXPECT_EQ(arc->m_dRadius, 5.0);
  EXPECT_NEAR(arc->m_dEndX, 0.0, 1e-9);
  EXPECT_NEAR(arc->m_dEndY, -5.0, 1e-9);
  EXPECT_EQ(Proc(), "Draw Arc Command");
  EXPECT_EQ(port_.ParentMessages().size(), 1u);
}

TEST_F(WindowTest, DoubleClickFinishesTheTrackAndStartsANewOne) {
  wnd_.OnDrawLine();
  d_->m_pDrawLineCmd->m_nPxy = 0;
  Click(0.0, 0.0);
  Click(5.0, 0.0);
  port_.Mouse(WM_LBUTTONDBLCLK, Px(5.0, 0.0));
  port_.Mouse(WM_LBUTTONUP, Px(5.0, 0.0));
  EXPECT_EQ(Proc(), "Draw Line Command");
  EXPECT_EQ(d_->m_pDrawLineCmd->m_nProgress, 0);
  EXPECT_EQ(d_->m_pDrawLineCmd->m_pPointList->GetSize(), 0);
}

TEST_F(WindowTest, CircleCommandRoad) {
  Start(d_->m_pDrawCircleCmd);
  EXPECT_EQ(Proc(), "Draw Circle Command");
  d_->m_pDrawCircleCmd->SetWidth(0.0);
  Click(0.0, 0.0);
  Move(3.0, 4.0);
  // Rubber band: a circle of radius 5 mm (50 px) about world (0, 0), pixel (100, 100).
  EXPECT_GT(CountColour(port_, kRed, Around(-5.0, -5.0, 5.0, 5.0)), 100);
  Click(3.0, 4.0);
  EXPECT_EQ(d_->m_pDrawCircleCmd->m_nProgress, 0);
  EXPECT_EQ(d_->m_pDrawCircleCmd->m_dRadius, 5.0);
  EXPECT_EQ(d_->m_pDrawCircleCmd->m_dCenterX, 0.0);
  port_.Key(VK_ESCAPE);
  EXPECT_EQ(Proc(), "Select Command");
}

TEST_F(WindowTest, ThreePointCircleRoad) {
  Start(d_->m_pDraw3PCircleCmd);
  EXPECT_EQ(Proc(), "Draw 3 Point Circle Command");
  Click(0.0, 0.0);
  Click(2.0, 0.0);
  EXPECT_EQ(d_->m_pDraw3PCircleCmd->m_nProgress, 2);
  Click(1.0, 1.0);
  EXPECT_EQ(d_->m_pDraw3PCircleCmd->m_nProgress, 0);
  EXPECT_DOUBLE_EQ(d_->m_pDraw3PCircleCmd->m_dCenterX, 1.0);
  EXPECT_NEAR(d_->m_pDraw3PCircleCmd->m_dCenterY, 0.0, 1e-12);
  // The window offers the three-point circle no keys: Esc leaves it running.
  port_.Key(VK_ESCAPE);
  EXPECT_EQ(Proc(), "Draw 3 Point Circle Command");
  wnd_.OnEditSelect();
  EXPECT_EQ(Proc(), "Select Command");
}

TEST_F(WindowTest, RectangleCommandRoad) {
  wnd_.OnDrawRectangle();
  EXPECT_EQ(Proc(), "Draw Rectangle Command");
  Click(1.0, 1.0);
  Move(5.0, 3.0);
  EXPECT_EQ(port_.FrontPixel(c_->V2RX(3.0), c_->V2RY(2.0)), kRed);  // filled rubber band
  Click(5.0, 3.0);
  CQVIS_DrawRectCmd* rect = d_->m_pDrawRectCmd;
  EXPECT_EQ(rect->m_nProgress, 0);
  EXPECT_EQ(rect->m_dX1, 1.0);
  EXPECT_EQ(rect->m_dY2, 3.0);
  EXPECT_EQ(port_.FrontPixel(c_->V2RX(3.0), c_->V2RY(2.0)), kBlack);  // rubber band gone
  port_.Key(VK_ESCAPE);
  EXPECT_EQ(Proc(), "Select Command");
}

TEST_F(WindowTest, PolygonCommandRoad) {
  wnd_.OnDrawPolygon();
  EXPECT_EQ(Proc(), "Draw Polygon Command");
  d_->m_pDrawPolygonCmd->m_nPxy = 0;
  Click(0.0, 0.0);
  Click(6.0, 0.0);
  Click(6.0, 6.0);
  port_.Key(VK_RETURN);
  EXPECT_EQ(d_->m_pDrawPolygonCmd->m_nProgress, 0);
  EXPECT_GE(d_->m_pDrawPolygonCmd->m_pPointList->GetSize(), 3);
  port_.Key(VK_ESCAPE);
  EXPECT_EQ(Proc(), "Select Command");
}

// Each pad command shows its pad at the cursor on the screen and takes the click position.
TEST_F(WindowTest, FlashCommandsFollowTheCursorAndPlace) {
  struct Row {
    const char* name;
    std::function<void(CQVIS_Design*)> start;
    std::function<std::pair<double, double>(CQVIS_Design*)> placed;
  };
  const std::vector<Row> rows = {
      {"Place Flash Circle Command",
       [](CQVIS_Design* d) {
         d->m_pDrawFlashCircleCmd->SetDiameter(2.0);
         d->m_pDrawFlashCircleCmd->Active();
       },
       [](CQVIS_Design* d) {
         return std::make_pair(d->m_pDrawFlashCircleCmd->m_dPlacedX,
                               d->m_pDrawFlashCircleCmd->m_dPlacedY);
       }},
      {"Place Flash Rectangle Command",
       [](CQVIS_Design* d) {
         d->m_pDrawFlashRectCmd->SetSquare(2.0);
         d->m_pDrawFlashRectCmd->Active();
       },
       [](CQVIS_Design* d) {
         return std::make_pair(d->m_pDrawFlashRectCmd->m_dCurrentX,
                               d->m_pDrawFlashRectCmd->m_dCurrentY);
       }},
      {"Place Flash Obround Command",
       [](CQVIS_Design* d) {
         d->m_pDrawFlashObroundCmd->SetWidth(3.0);
         d->m_pDrawFlashObroundCmd->SetHeight(2.0);
         d->m_pDrawFlashObroundCmd->Active();
       },
       [](CQVIS_Design* d) {
         return std::make_pair(d->m_pDrawFlashObroundCmd->m_dCurrentX,
                               d->m_pDrawFlashObroundCmd->m_dCurrentY);
       }},
      {"Place Flash Polygon Command",
       [](CQVIS_Design* d) {
         d->m_pDrawFlashPolygonCmd->SetDiameter(2.0);
         d->m_pDrawFlashPolygonCmd->SetSideCount(6);
         d->m_pDrawFlashPolygonCmd->Active();
       },
       [](CQVIS_Design* d) {
         return std::make_pair(d->m_pDrawFlashPolygonCmd->m_dCurrentX,
                               d->m_pDrawFlashPolygonCmd->m_dCurrentY);
       }},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    d_->AllDeactiveCmd();
    row.start(d_);
    EXPECT_EQ(Proc(), row.name);
    Move(5.0, 5.0);
    EXPECT_EQ(port_.FrontPixel(c_->V2RX(5.0), c_->V2RY(5.0)), kRed);
    Click(12.0, 8.0);
    EXPECT_EQ(row.placed(d_), std::make_pair(12.0, 8.0));
    EXPECT_EQ(port_.FrontPixel(c_->V2RX(5.0), c_->V2RY(5.0)), kBlack);
    EXPECT_EQ(port_.FrontPixel(c_->V2RX(12.0), c_->V2RY(8.0)), kRed);
    port_.Key(VK_ESCAPE);
    EXPECT_EQ(Proc(), "Select Command");
    EXPECT_EQ(port_.FrontPixel(c_->V2RX(12.0), c_->V2RY(8.0)), kBlack);
  }
}

TEST_F(WindowTest, WheelZoomsAboutTheCursor) {
  struct Row {
    int delta;
    bool shift;
    double factor;
  };
  for (const Row& row : {Row{-120, false, 1.5}, Row{-120, true, 2.5}, Row{120, false, 1 / 1.5},
                         Row{120, true, 1 / 2.5}}) {
    c_->SetZoom(10.0);
    c_->SetScreenViewPosition(-10.0, -10.0);
    const CPoint p(123, 77);
    const double wx = c_->ScreenXToWorld(p.x);
    const double wy = c_->ScreenYToWorld(p.y);
    const int paints = port_.PaintCount();
    port_.SetKeyDown(VK_SHIFT, row.shift);
    EXPECT_EQ(port_.Wheel(row.delta, p), 1);
    port_.SetKeyDown(VK_SHIFT, false);
    EXPECT_NEAR(c_->m_dZoom, 10.0 * row.factor, 1e-12);
    EXPECT_NEAR(c_->ScreenXToWorld(p.x), wx, 1e-9);
    EXPECT_NEAR(c_->ScreenYToWorld(p.y), wy, 1e-9);
    EXPECT_GT(port_.PaintCount(), paints);  // redrawn at once
  }
}

TEST_F(WindowTest, WheelOutsideTheClientAreaDoesNothing) {
  for (const CPoint p : {CPoint(-1, 10), CPoint(10, -1), CPoint(401, 10), CPoint(10, 301)}) {
    const int paints = port_.PaintCount();
    EXPECT_EQ(port_.Wheel(-120, p), 0);
    EXPECT_EQ(c_->m_dZoom, 10.0);
    EXPECT_EQ(port_.PaintCount(), paints);
  }
}

TEST_F(WindowTest, RightDragPansAndRightClickFallsThrough) {
  port_.Mouse(WM_MOUSEMOVE, CPoint(100, 100));
  port_.Mouse(WM_RBUTTONDOWN, CPoint(100, 100));
  port_.Mouse(WM_MOUSEMOVE, CPoint(130, 85));
  port_.Mouse(WM_MOUSEMOVE, CPoint(160, 70));
  port_.ClearDefaultMessages();
  port_.Mouse(WM_RBUTTONUP, CPoint(160, 70));
  // 60 px right and 30 px up at 10 px/mm: the drawing follows the mouse.
  EXPECT_DOUBLE_EQ(c_->m_dViewX, -16.0);
  EXPECT_DOUBLE_EQ(c_->m_dViewY, -7.0);
  EXPECT_FALSE(d_->m_pMousePanMgr->IsActived());
  for (const qvis::MSG& m : port_.DefaultMessages()) EXPECT_NE(m.message, UINT(WM_RBUTTONUP));

  port_.Mouse(WM_RBUTTONDOWN, CPoint(50, 50));
  port_.ClearDefaultMessages();
  port_.Mouse(WM_RBUTTONUP, CPoint(50, 50));
  EXPECT_DOUBLE_EQ(c_->m_dViewX, -16.0);
  ASSERT_EQ(port_.DefaultMessages().size(), 1u);
  EXPECT_EQ(port_.DefaultMessages()[0].message, UINT(WM_RBUTTONUP));
  EXPECT_EQ(port_.DefaultMessages()[0].pt, CPoint(1050, 550));  // in screen coordinates
}

TEST_F(WindowTest, ZoomBoxDragZoomsAndClickDoesNot) {
  wnd_.OnZoomZoombox();
  EXPECT_EQ(Proc(), "Zoom Command");
  port_.Mouse(WM_MOUSEMOVE, CPoint(100, 100));
  port_.Mouse(WM_LBUTTONDOWN, CPoint(100, 100));
  port_.Mouse(WM_LBUTTONUP, CPoint(100, 100));
  EXPECT_EQ(c_->m_dZoom, 10.0);
  EXPECT_EQ(c_->m_dViewX, -10.0);

  port_.Mouse(WM_LBUTTONDOWN, CPoint(100, 100));
  port_.Mouse(WM_MOUSEMOVE, CPoint(150, 120));
  port_.Mouse(WM_MOUSEMOVE, CPoint(200, 150));
  EXPECT_GT(CountColour(port_, 0xFFFFFF, CRect(100, 100, 201, 151)), 20);  // dotted box
  port_.Mouse(WM_LBUTTONUP, CPoint(200, 150));
  // The box world (0, 0)-(10, 5) fills 400 x 300 pixels: zoom min(40, 60) = 40.
  EXPECT_DOUBLE_EQ(c_->m_dZoom, 40.0);
  EXPECT_EQ(CountColour(port_, 0xFFFFFF, CRect(0, 0, 400, 300)), 0);
  EXPECT_EQ(Proc(), "Zoom Command");  // the box stays on for the next drag
}

TEST_F(WindowTest, EscAndEnterNotifyTheParentOncePerMessage) {
  port_.Key(VK_ESCAPE);
  ASSERT_EQ(port_.ParentMessages().size(), 1u);
  port_.Key(VK_RETURN);
  ASSERT_EQ(port_.ParentMessages().size(), 2u);
  for (const qvis::MSG& m : port_.ParentMessages()) {
    EXPECT_EQ(m.message, UINT(WM_KEYDOWN));
    EXPECT_EQ(m.wParam, 0u);
    EXPECT_EQ(m.lParam, 0);
  }
  // Held down, Esc notifies for every message that passes, whatever it is.
  port_.ClearParentMessages();
  port_.SetKeyDown(VK_ESCAPE, true);
  port_.Mouse(WM_MOUSEMOVE, CPoint(10, 10));
  port_.Mouse(WM_MOUSEMOVE, CPoint(11, 10));
  port_.Char('x');
  port_.SetKeyDown(VK_ESCAPE, false);
  EXPECT_EQ(port_.ParentMessages().size(), 3u);
  port_.Mouse(WM_MOUSEMOVE, CPoint(12, 10));
  EXPECT_EQ(port_.ParentMessages().size(), 3u);
}

TEST_F(WindowTest, EscEndsTheActiveCommandStep) {
  Start(d_->m_pDrawCircleCmd);
  Click(0.0, 0.0);
  Move(2.0, 0.0);
  ASSERT_TRUE(d_->m_pDrawCircleCmd->IsBusy());
  port_.Key(VK_ESCAPE);  // first Esc: the circle is dropped, the command stays
  EXPECT_FALSE(d_->m_pDrawCircleCmd->IsBusy());
  EXPECT_EQ(Proc(), "Draw Circle Command");
  port_.Key(VK_ESCAPE);  // second: back to selection
  EXPECT_EQ(Proc(), "Select Command");
}

TEST_F(WindowTest, PlusMinusZoomAboutTheMouse) {
  Move(5.0, 5.0);
  port_.Char('+');
  EXPECT_DOUBLE_EQ(c_->m_dZoom, 12.0);
  EXPECT_EQ(c_->V2RX(5.0), 150);
  port_.Char('-');
  EXPECT_NEAR(c_->m_dZoom, 10.0, 1e-12);
  port_.Char('*');
  EXPECT_NEAR(c_->m_dZoom, 10.0, 1e-12);
}

// Thousands of wheel notches (and typed "+"/"-") each way stop at the zoom range's limits: the
// view still maps pixels to finite world points and back, and as many notches the other way
// as took effect restore the zoom and the point under the cursor.
TEST_F(WindowTest, ZoomStopsAtItsLimitsAndComesBack) {
  c_->SetZoom(10.0);
  c_->SetScreenViewPosition(-10.0, -10.0);
  const CPoint p(123, 77);
  const double wx = c_->ScreenXToWorld(p.x);
  const double wy = c_->ScreenYToWorld(p.y);
  for (const int delta : {-120, 120}) {  // in, then out
    int effective = 0;
    for (int i = 0; i < 3000; ++i) {
      const double before = c_->m_dZoom;
      port_.Wheel(delta, p);
      if (c_->m_dZoom != before) ++effective;
    }
    ASSERT_GT(effective, 10);
    ASSERT_LT(effective, 100) << "the zoom ran on with no limit";
    EXPECT_TRUE(qvis::ZoomInRange(c_->m_dZoom)) << c_->m_dZoom;
    const double at_limit = c_->m_dZoom;
    port_.Wheel(delta, p);
    EXPECT_EQ(c_->m_dZoom, at_limit) << "a notch at the limit changed the zoom";
    // The view still maps: every corner pixel is a finite world point that maps back.
    for (const CPoint q : {CPoint(0, 0), CPoint(399, 299), p}) {
      const double qx = c_->ScreenXToWorld(q.x), qy = c_->ScreenYToWorld(q.y);
      ASSERT_TRUE(std::isfinite(qx) && std::isfinite(qy));
      EXPECT_EQ(c_->WorldXToScreen(qx), q.x);
      EXPECT_EQ(c_->WorldYToScreen(qy), q.y);
    }
    EXPECT_NEAR(c_->ScreenXToWorld(p.x), wx, 1e-6 * std::max(1.0, 1.0 / c_->m_dZoom));
    for (int i = 0; i < effective; ++i) port_.Wheel(-delta, p);
    EXPECT_NEAR(c_->m_dZoom, 10.0, 1e-9);
    // Back where it started to within a thousandth of a pixel (the view's doubles at the floor
    // carry world positions of 1e10 units, a few millionths of a unit apart).
    EXPECT_NEAR(c_->ScreenXToWorld(p.x), wx, 1e-3 / c_->m_dZoom);
    EXPECT_NEAR(c_->ScreenYToWorld(p.y), wy, 1e-3 / c_->m_dZoom);
    EXPECT_EQ(c_->WorldXToScreen(wx), p.x);
    EXPECT_EQ(c_->WorldYToScreen(wy), p.y);
  }
  // Typed "+" and "-" stop at the same limits.
  Move(5.0, 5.0);
  for (int i = 0; i < 2000; ++i) port_.Char('+');
  EXPECT_TRUE(qvis::ZoomInRange(c_->m_dZoom));
  EXPECT_GT(c_->m_dZoom * 1.2, qvis::kMaxZoom);
  for (int i = 0; i < 4000; ++i) port_.Char('-');
  EXPECT_TRUE(qvis::ZoomInRange(c_->m_dZoom));
  EXPECT_LT(c_->m_dZoom / 1.2, qvis::kMinZoom);
}

// A design whose ZoomAll hook counts its calls (the base design does nothing there).
class CountingDesign : public CQVIS_Design {
 public:
  int ZoomAll(double width, double height, bool, double fill) override {
    ++calls;
    last_width = width;
    last_height = height;
    last_fill = fill;
    return 1;
  }
  using CQVIS_Design::ZoomAll;
  int calls = 0;
  double last_width = 0, last_height = 0, last_fill = 0;
};

class CountingWindow : public CQVIS_Wnd {
 public:
  CountingWindow() {
    auto counting = std::make_unique<CountingDesign>();
    design = counting.get();
    SetDesign(std::move(counting));
  }
  CountingDesign* design;
};

TEST(WindowAltOneTest, AltOneFitsThroughTheDerivedDesign) {
  HeadlessPort port(320, 240);
  CountingWindow wnd;
  wnd.Create(&port);
  port.SetKeyDown(VK_MENU, true);
  port.Post(WM_SYSKEYDOWN, '1', 0x20000001);
  port.SetKeyDown(VK_MENU, false);
  EXPECT_EQ(wnd.design->calls, 1);
  EXPECT_EQ(wnd.design->last_width, 320.0);
  EXPECT_EQ(wnd.design->last_height, 240.0);
  EXPECT_EQ(wnd.design->last_fill, 0.02);
  port.Post(WM_SYSKEYDOWN, '1', 0x20000001);  // "1" without Alt
  port.SetKeyDown(VK_MENU, true);
  port.Post(WM_SYSKEYDOWN, '2', 0x20000001);  // Alt with another key
  EXPECT_EQ(wnd.design->calls, 1);
}

// Every XOR figure is drawn again after a repaint, and erased when its command ends: a frame
// repainted after the commands are gone equals the frame before they started.
TEST_F(WindowTest, NoStaleFigureAfterRepaints) {
  Move(0.0, 0.0);
  const std::vector<std::uint32_t> pristine = Pixels(port_);
  Start(d_->m_pDrawCircleCmd);
  Click(0.0, 0.0);
  Move(3.0, 4.0);
  const std::vector<std::uint32_t> with_band = Pixels(port_);
  EXPECT_GT(CountDifferent(pristine, with_band), 0);
  port_.RedrawNow();
  EXPECT_EQ(CountDifferent(with_band, Pixels(port_)), 0);
  // Changing the layer resets the colours while the rubber band is shown: erase, set, draw.
  d_->SetCurrentLayerID(2);
  EXPECT_EQ(CountDifferent(with_band, Pixels(port_)), 0);
  port_.Key(VK_ESCAPE);
  port_.Key(VK_ESCAPE);
  Move(0.0, 0.0);
  EXPECT_EQ(CountDifferent(pristine, Pixels(port_)), 0);

  wnd_.OnZoomZoombox();
  port_.Mouse(WM_LBUTTONDOWN, Px(0.0, 0.0));
  port_.Mouse(WM_MOUSEMOVE, Px(4.0, 4.0));
  port_.RedrawNow();
  port_.Key(VK_ESCAPE);  // drops the box
  port_.Mouse(WM_LBUTTONUP, Px(4.0, 4.0));
  port_.Key(VK_ESCAPE);  // leaves the zoom box
  wnd_.OnDrawLine();
  Move(1.0, 1.0);
  port_.RedrawNow();
  wnd_.OnEditSelect();
  Move(0.0, 0.0);
  EXPECT_EQ(Proc(), "Select Command");
  EXPECT_EQ(CountDifferent(pristine, Pixels(port_)), 0);
}

// The same for every command: its figure in progress survives a repaint unchanged, and the
// screen is clean once selection takes over.
TEST_F(WindowTest, EveryCommandRepaintsItsFigureAndLeavesNoTrace) {
  struct Row {
    const char* name;
    std::function<void()> start;
  };
  const std::vector<Row> rows = {
      {"line", [this] { wnd_.OnDrawLine(); }},
      {"arc", [this] { wnd_.OnDrawArc(); }},
      {"rect", [this] { wnd_.OnDrawRectangle(); }},
      {"polygon", [this] { wnd_.OnDrawPolygon(); }},
      {"circle", [this] { Start(d_->m_pDrawCircleCmd); }},
      {"circle3", [this] { Start(d_->m_pDraw3PCircleCmd); }},
      {"flash circle",
       [this] {
         d_->m_pDrawFlashCircleCmd->SetDiameter(1.5);
         Start(d_->m_pDrawFlashCircleCmd);
       }},
      {"flash rect",
       [this] {
         d_->m_pDrawFlashRectCmd->SetWidth(2.0);
         d_->m_pDrawFlashRectCmd->SetHeight(1.0);
         d_->m_pDrawFlashRectCmd->SetHoleSize(0.5, 0.0);
         Start(d_->m_pDrawFlashRectCmd);
       }},
      {"flash obround",
       [this] {
         d_->m_pDrawFlashObroundCmd->SetWidth(2.0);
         d_->m_pDrawFlashObroundCmd->SetHeight(1.0);
         Start(d_->m_pDrawFlashObroundCmd);
       }},
      {"flash polygon",
       [this] {
         d_->m_pDrawFlashPolygonCmd->SetDiameter(2.0);
         d_->m_pDrawFlashPolygonCmd->SetSideCount(5);
         Start(d_->m_pDrawFlashPolygonCmd);
       }},
      {"zoom box", [this] { wnd_.OnZoomZoombox(); }},
  };
  Move(0.0, 0.0);
  const std::vector<std::uint32_t> pristine = Pixels(port_);
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    row.start();
    Move(1.0, 1.0);
    port_.Mouse(WM_LBUTTONDOWN, Px(1.0, 1.0));
    Move(4.0, 3.0);  // a zoom box is dragged with the button held
    const std::vector<std::uint32_t> shown = Pixels(port_);
    EXPECT_GT(CountDifferent(pristine, shown), 0);
    port_.RedrawNow();
    EXPECT_EQ(CountDifferent(shown, Pixels(port_)), 0);
    wnd_.OnEditSelect();
    port_.SetKeyDown(VK_LBUTTON, false);
    Move(0.0, 0.0);
    EXPECT_EQ(CountDifferent(pristine, Pixels(port_)), 0);
    port_.RedrawNow();
    EXPECT_EQ(CountDifferent(pristine, Pixels(port_)), 0);
  }
}

TEST_F(WindowTest, ResizeKeepsTheBufferInStep) {
  port_.Resize(500, 200);
  EXPECT_EQ(d_->m_pRenderBuffer->GetViewport(), CRect(0, 0, 500, 200));
  Start(d_->m_pDrawFlashCircleCmd);
  d_->m_pDrawFlashCircleCmd->SetDiameter(2.0);
  Move(30.0, 5.0);  // pixel (400, 150): only inside the wider window
  EXPECT_EQ(port_.FrontPixel(400, 150), kRed);
  port_.RedrawNow();
  EXPECT_EQ(port_.FrontPixel(400, 150), kRed);
}

// A view saved from one window and loaded into another shows the same picture.
TEST(WindowFileTest, SavedViewReloadsToTheSamePicture) {
  const std::string path =
      testing::TempDir() + "window_test_view_" + std::to_string(::getpid()) + ".dat";
  HeadlessPort port_a(240, 160);
  CQVIS_Wnd a;
  a.Create(&port_a);
  CQVIS_Design* da = a.GetDesign();
  da->m_pCoords->SetZoom(7.5);
  da->m_pCoords->SetScreenViewPosition(-3.25, 1.5);
  da->m_pCoords->SetGrid(4.0, 6.0);
  da->m_pGridSnapMgr->SetLineGrid();
  da->m_pGridSnapMgr->SetGridColor(0x00FF80);
  da->m_pSurface->SetBkColor(0x202020);
  da->m_pCursorMgr->Off();
  port_a.RedrawNow();
  da->SaveToFile(path.c_str());

  HeadlessPort port_b(240, 160);
  CQVIS_Wnd b;
  b.Create(&port_b);
  b.GetDesign()->m_pCursorMgr->Off();
  port_b.RedrawNow();
  EXPECT_GT(CountDifferent(Pixels(port_a), Pixels(port_b)), 0);
  b.GetDesign()->LoadFromFile(path.c_str());
  port_b.RedrawNow();
  EXPECT_TRUE(*b.GetDesign() == *da);
  EXPECT_EQ(CountDifferent(Pixels(port_a), Pixels(port_b)), 0);
  std::remove(path.c_str());
}

TEST(WindowLifeTest, PortOrWindowMayGoFirst) {
  {
    auto port = std::make_unique<HeadlessPort>(50, 50);
    CQVIS_Wnd wnd;
    EXPECT_TRUE(wnd.Create(port.get()));
    EXPECT_FALSE(wnd.Create(port.get()));
    port.reset();  // the window stops talking to it
    wnd.OnZoomZoomin();
    wnd.WindowProc(WM_PAINT, 0, 0);
  }
  {
    HeadlessPort port(50, 50);
    {
      CQVIS_Wnd wnd;
      wnd.Create(&port);
    }
    const int paints = port.PaintCount();
    port.Invalidate(true);
    port.Mouse(WM_MOUSEMOVE, CPoint(5, 5));  // no window: nothing is delivered
    EXPECT_EQ(port.PaintCount(), paints);
  }
  CQVIS_Wnd unbound;
  EXPECT_FALSE(unbound.Create(nullptr));
  EXPECT_EQ(unbound.WindowProc(WM_MOUSEMOVE, 0, 0), 0);
}

}  // namespace
