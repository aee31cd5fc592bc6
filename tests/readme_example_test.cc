// The host example of the README, run as written: a derived window paints the host's own
// tracks through the drawing hook, and a track placed with the mouse is read from the command.
#include <vector>

#include <gtest/gtest.h>

#include "qvis/qvis.h"
#include "qvis/compat/win32_names.h"

namespace {

struct HostTrack {
  double x1, y1, x2, y2;
};

class BoardWnd : public CQVIS_Wnd {
 public:
  void OnDrawHost(CQVIS_GDI* surface, qvis::HDC dc) override {
    surface->PrepareSolidPenEndCap(PS_ENDCAP_ROUND, 0.25, RGB(255, 200, 0), dc);
    for (const auto& t : tracks_) surface->DrawLine(dc, t.x1, t.y1, t.x2, t.y2);
  }
  std::vector<HostTrack> tracks_;
};

TEST(ReadmeExampleTest, HostPlacesATrackAndPaintsItsOwnFigures) {
  qvis::HeadlessPort port(800, 600);
  BoardWnd wnd;
  ASSERT_TRUE(wnd.Create(&port));
  wnd.tracks_.push_back({-40, 0, 20, 0});
  port.RedrawNow();
  // A new design shows world (-50, -50) at the top-left corner at 10 pixels per unit, so the
  // host's track along world y = 0 runs along pixel row 500, over the grid.
  CQVIS_Coords* c = wnd.GetDesign()->m_pCoords;
  ASSERT_EQ(c->V2RY(0.0), 500);
  EXPECT_EQ(port.FrontPixel(c->V2RX(-5.0), 500), RGB(255, 200, 0));
  EXPECT_EQ(port.FrontPixel(c->V2RX(-5.0), 510), 0u);

  wnd.OnDrawLine();
  port.Mouse(WM_LBUTTONDOWN, CPoint(100, 100));
  port.Mouse(WM_MOUSEMOVE, CPoint(300, 100));
  port.Mouse(WM_LBUTTONDOWN, CPoint(300, 100));
  port.Key(VK_RETURN);

  CQVIS_DrawLineCmd* line = wnd.GetDesign()->m_pDrawLineCmd;
  ASSERT_EQ(line->m_pPointList->GetSize(), 2);
  // Pixels (100, 100) and (300, 100) are world (-40, -40) and (-20, -40), on the 2-unit snap
  // grid; a straight run needs no bend vertex.
  EXPECT_EQ(line->m_pPointList->GetAt(0)->m_dX, -40.0);
  EXPECT_EQ(line->m_pPointList->GetAt(0)->m_dY, -40.0);
  EXPECT_EQ(line->m_pPointList->GetAt(1)->m_dX, -20.0);
  EXPECT_EQ(line->m_pPointList->GetAt(1)->m_dY, -40.0);

  // Enter told the parent once, with wParam and lParam 0.
  int keydowns = 0;
  for (const qvis::MSG& m : port.ParentMessages()) {
    if (m.message == WM_KEYDOWN && m.wParam == 0 && m.lParam == 0) ++keydowns;
  }
  EXPECT_EQ(keydowns, 1);
}

}  // namespace
