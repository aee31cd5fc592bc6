// A host outside the library tree: built against an installed qvis (CMake package or
// pkg-config) or with qvis as a subproject, by scripts/consumer_test.sh. It places a track
// through a window, saves the design, reloads it into a second window and checks what it got.
// Exits non-zero on the first failed check.
#include <qvis/qvis.h>
#include <qvis/compat/win32_names.h>

#include <cstdio>
#include <string>

namespace {

int failures = 0;

void Check(bool ok, const char* what) {
  if (!ok) {
    std::fprintf(stderr, "board_host: FAILED: %s\n", what);
    ++failures;
  }
}

// The host's window: paints the track it was given in its own colour over the grid.
class BoardWnd : public CQVIS_Wnd {
 public:
  void OnDrawHost(CQVIS_GDI* surface, qvis::HDC dc) override {
    surface->PrepareSolidPenEndCap(PS_ENDCAP_ROUND, 0.25, RGB(255, 200, 0), dc);
    if (has_track_) surface->DrawLine(dc, x1_, y1_, x2_, y2_);
  }
  void SetTrack(double x1, double y1, double x2, double y2) {
    x1_ = x1, y1_ = y1, x2_ = x2, y2_ = y2;
    has_track_ = true;
  }

 private:
  bool has_track_ = false;
  double x1_ = 0, y1_ = 0, x2_ = 0, y2_ = 0;
};

}  // namespace

int main(int argc, char** argv) {
  const std::string path = std::string(argc > 1 ? argv[1] : ".") + "/board_host_design.dat";

  // A new design shows world (-50, -50) at the top-left pixel at 10 pixels per unit and snaps
  // to 2 units.
  qvis::HeadlessPort port(800, 600);
  BoardWnd wnd;
  Check(wnd.Create(&port), "Create");

  // The host paints its own track over the grid: world y = 0 is pixel row 500.
  wnd.SetTrack(-40, 0, 20, 0);
  port.RedrawNow();
  Check(port.FrontPixel(450, 500) == RGB(255, 200, 0), "the host's track is on the front buffer");
  Check(port.FrontPixel(450, 510) != RGB(255, 200, 0), "nothing beside the host's track");

  // Place a track with the mouse: these clicks snap to (-40, -40) and (-20, -40).
  wnd.OnDrawLine();
  port.Mouse(WM_LBUTTONDOWN, CPoint(101, 99));
  port.Mouse(WM_MOUSEMOVE, CPoint(300, 100));
  port.Mouse(WM_LBUTTONDOWN, CPoint(299, 101));
  port.Key(VK_RETURN);
  CQVIS_DrawLineCmd* line = wnd.GetDesign()->m_pDrawLineCmd;
  Check(line->m_pPointList != nullptr && line->m_pPointList->GetSize() == 2, "two vertices");
  if (failures) return 1;
  const CQVIS_DrawLinePoint* a = line->m_pPointList->GetAt(0);
  const CQVIS_DrawLinePoint* b = line->m_pPointList->GetAt(1);
  Check(a->m_dX == -40.0 && a->m_dY == -40.0, "first vertex snapped to (-40, -40)");
  Check(b->m_dX == -20.0 && b->m_dY == -40.0, "second vertex snapped to (-20, -40)");
  int keydowns = 0;
  for (const qvis::MSG& m : port.ParentMessages()) {
    if (m.message == WM_KEYDOWN && m.wParam == 0 && m.lParam == 0) ++keydowns;
  }
  Check(keydowns == 1, "the parent was told once that the track is finished");

  // Save a changed view and grid, reload them into a second window: same design, same view.
  CQVIS_Design* design = wnd.GetDesign();
  design->m_pCoords->SetZoom(7.5);
  design->m_pCoords->SetScreenViewPosition(-3.25, 1.5);
  design->m_pGridSnapMgr->SetGridColor(0x00FF80);
  Check(design->SaveToFile(path.c_str()) == 1, "SaveToFile");
  qvis::HeadlessPort port2(800, 600);
  BoardWnd wnd2;
  wnd2.Create(&port2);
  Check(!(*wnd2.GetDesign() == *design), "a new design differs before loading");
  Check(!(*wnd2.GetDesign()->m_pCoords == *design->m_pCoords), "a new view differs before loading");
  Check(wnd2.GetDesign()->LoadFromFile(path.c_str()) == 1, "LoadFromFile");
  Check(*wnd2.GetDesign() == *design, "the reloaded design equals the saved one");
  Check(*wnd2.GetDesign()->m_pCoords == *design->m_pCoords, "the reloaded view equals the saved one");
  std::remove(path.c_str());

  // The library's exceptions reach the host as their own types.
  bool caught = false;
  try {
    wnd2.GetDesign()->LoadFromFile((path + ".missing").c_str());
  } catch (const CFileException& e) {
    caught = e.m_cause == CFileException::fileNotFound;
  }
  Check(caught, "a missing file throws CFileException(fileNotFound)");

  if (failures) return 1;
  std::printf("board_host: track placed, design saved and reloaded\n");
  return 0;
}
