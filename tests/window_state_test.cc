// Windows share no state: each reads the key state of its own port, ports and windows may be
// destroyed in any order, and two windows on two threads, each with its own design, draw
// exactly what one window alone draws. The threaded case also runs under ThreadSanitizer.
#include <cstdint>
#include <memory>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "qvis/compat/win32_names.h"
#include "qvis/coords/view_coords.h"
#include "qvis/design/design.h"
#include "qvis/design/design_objects.h"
#include "qvis/gdi/gdi.h"
#include "qvis/window/drawing_window.h"
#include "qvis/window/headless/headless_port.h"

namespace {

using qvis::HeadlessPort;

std::vector<std::uint32_t> Screen(HeadlessPort& port) {
  const qvis::gdi::BitmapView v = qvis::gdi::BitmapPixels(port.FrontBitmap());
  std::vector<std::uint32_t> out;
  for (int y = 0; y < v.height; ++y) out.insert(out.end(), v.Row32(y), v.Row32(y) + v.width);
  return out;
}

// ZoomBoxDrag drags a zoom box from (100, 100) to (200, 150) on a 400 x 300 window at 10 px
// per mm and returns the zoom it ends with: 40 when the window saw its own left button held.
double ZoomBoxDrag(HeadlessPort& port, CQVIS_Wnd& wnd) {
  wnd.GetDesign()->m_pCoords->m_dZoom = 10.0;
  wnd.OnZoomZoombox();
  port.Mouse(WM_MOUSEMOVE, CPoint(100, 100));
  port.Mouse(WM_LBUTTONDOWN, CPoint(100, 100));
  port.Mouse(WM_MOUSEMOVE, CPoint(150, 120));
  port.Mouse(WM_MOUSEMOVE, CPoint(200, 150));
  port.Mouse(WM_LBUTTONUP, CPoint(200, 150));
  return wnd.GetDesign()->m_pCoords->m_dZoom;
}

TEST(WindowStateTest, EachWindowReadsTheButtonsOfItsOwnPort) {
  HeadlessPort port_a(400, 300);
  CQVIS_Wnd wnd_a;
  ASSERT_TRUE(wnd_a.Create(&port_a));
  HeadlessPort port_b(400, 300);  // created later, its left button up
  CQVIS_Wnd wnd_b;
  ASSERT_TRUE(wnd_b.Create(&port_b));
  EXPECT_DOUBLE_EQ(ZoomBoxDrag(port_a, wnd_a), 40.0);

  // The other way round: a button held on one port is not held on the other.
  port_a.SetKeyDown(VK_LBUTTON, true);
  wnd_b.GetDesign()->m_pCoords->m_dZoom = 10.0;
  wnd_b.OnZoomZoombox();
  port_b.Post(WM_LBUTTONDOWN, MK_LBUTTON, qvis::PackPointLParam(100, 100));
  port_b.SetKeyDown(VK_LBUTTON, false);  // let go on b without a message; a still holds
  port_b.Post(WM_MOUSEMOVE, 0, qvis::PackPointLParam(200, 150));
  port_b.Post(WM_LBUTTONUP, 0, qvis::PackPointLParam(200, 150));
  EXPECT_DOUBLE_EQ(wnd_b.GetDesign()->m_pCoords->m_dZoom, 10.0);  // no drag: b's button was up
}

// Destroying ports and windows in the order they were made (and in the reverse order, and
// ports before windows) leaves nothing behind that a later window or design reads.
TEST(WindowStateTest, AnyDestructionOrderIsSafe) {
  for (int order = 0; order < 4; ++order) {
    auto port_a = std::make_unique<HeadlessPort>(400, 300);
    auto wnd_a = std::make_unique<CQVIS_Wnd>();
    ASSERT_TRUE(wnd_a->Create(port_a.get()));
    auto port_b = std::make_unique<HeadlessPort>(400, 300);
    auto wnd_b = std::make_unique<CQVIS_Wnd>();
    ASSERT_TRUE(wnd_b->Create(port_b.get()));
    port_a->SetKeyDown(VK_LBUTTON, true);
    port_b->SetKeyDown(VK_RBUTTON, true);
    switch (order) {
      case 0:  // creation order, windows first
        wnd_a.reset();
        port_a.reset();
        wnd_b.reset();
        port_b.reset();
        break;
      case 1:  // creation order, ports first
        port_a.reset();
        port_b.reset();
        wnd_a.reset();
        wnd_b.reset();
        break;
      case 2:  // reverse order
        wnd_b.reset();
        port_b.reset();
        wnd_a.reset();
        port_a.reset();
        break;
      default:  // interleaved
        port_a.reset();
        wnd_b.reset();
        wnd_a.reset();
        port_b.reset();
        break;
    }
    // A design without a window asks for the button state: nobody holds a button.
    CQVIS_Design design;
    design.m_pZoomMgr->Active();
    design.m_pZoomMgr->MouseDown(1, 0.0, 0.0);
    EXPECT_EQ(design.m_pZoomMgr->MouseMove(5.0, 5.0), 0) << "order " << order;
    EXPECT_EQ(design.m_pMousePanMgr->MouseMove(5.0, 5.0, 0), 0) << "order " << order;
    // A new window on a new port works as the first one did.
    HeadlessPort port_c(400, 300);
    CQVIS_Wnd wnd_c;
    ASSERT_TRUE(wnd_c.Create(&port_c));
    EXPECT_DOUBLE_EQ(ZoomBoxDrag(port_c, wnd_c), 40.0) << "order " << order;
  }
}

// Session starts a track, pans, zooms with the wheel and with a box, and returns the screen
// during the box drag and after it; the variant moves the pan and the box.
std::vector<std::uint32_t> Session(int variant) {
  HeadlessPort port(320, 240, CPoint(0, 0));
  CQVIS_Wnd wnd;
  if (!wnd.Create(&port)) return {};
  CQVIS_Design* d = wnd.GetDesign();
  d->m_pCoords->SetScreenViewPosition(-10.0, -10.0);
  d->m_pCoords->m_dZoom = 8.0;
  wnd.OnDrawLine();
  const int shift = variant * 7;
  port.Mouse(WM_MOUSEMOVE, CPoint(40 + shift, 40));
  port.Mouse(WM_LBUTTONDOWN, CPoint(40 + shift, 40));
  port.Mouse(WM_LBUTTONUP, CPoint(40 + shift, 40));
  port.Mouse(WM_MOUSEMOVE, CPoint(200, 120 + shift));
  port.Mouse(WM_LBUTTONDOWN, CPoint(200, 120 + shift));
  port.Mouse(WM_LBUTTONUP, CPoint(200, 120 + shift));
  port.Mouse(WM_RBUTTONDOWN, CPoint(100, 100));
  port.Mouse(WM_MOUSEMOVE, CPoint(130 + shift, 90));
  port.Mouse(WM_RBUTTONUP, CPoint(130 + shift, 90));
  port.Wheel(-120, CPoint(160, 120));
  port.Wheel(120, CPoint(150, 110));
  wnd.OnZoomZoombox();
  port.Mouse(WM_LBUTTONDOWN, CPoint(60, 60));
  port.Mouse(WM_MOUSEMOVE, CPoint(90, 80));
  port.Mouse(WM_MOUSEMOVE, CPoint(250, 200 - shift));  // the dotted box is on screen now
  std::vector<std::uint32_t> during = Screen(port);
  port.Mouse(WM_LBUTTONUP, CPoint(250, 200 - shift));
  port.RedrawNow();
  std::vector<std::uint32_t> after = Screen(port);
  during.insert(during.end(), after.begin(), after.end());
  return during;
}

TEST(WindowStateTest, TwoWindowsOnTwoThreadsDrawWhatEachDrawsAlone) {
  const std::vector<std::uint32_t> alone_0 = Session(0);
  const std::vector<std::uint32_t> alone_1 = Session(1);
  ASSERT_FALSE(alone_0.empty());
  int lit = 0;
  for (std::uint32_t px : alone_0) lit += px != 0 ? 1 : 0;
  EXPECT_GT(lit, 0);
  ASSERT_NE(alone_0, alone_1);  // the two sessions differ, so a mix-up would show
  constexpr int kRounds = 3;
  std::vector<std::uint32_t> seen_0[kRounds];
  std::vector<std::uint32_t> seen_1[kRounds];
  std::thread t0([&] {
    for (auto& s : seen_0) s = Session(0);
  });
  std::thread t1([&] {
    for (auto& s : seen_1) s = Session(1);
  });
  t0.join();
  t1.join();
  for (int i = 0; i < kRounds; ++i) {
    EXPECT_EQ(seen_0[i], alone_0) << "round " << i;
    EXPECT_EQ(seen_1[i], alone_1) << "round " << i;
  }
}

}  // namespace
