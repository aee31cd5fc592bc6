// Helpers of the drawing-window tests: the quiet view they start from and mouse input given at
// world positions (millimetres) through the headless port.
#ifndef QVIS_TESTS_WINDOW_TEST_UTIL_H_
#define QVIS_TESTS_WINDOW_TEST_UTIL_H_

#include "qvis/compat/win32_names.h"
#include "qvis/design/design.h"
#include "qvis/design/design_objects.h"
#include "qvis/window/headless/headless_port.h"

// WindowDriver is a mix-in of the window test fixtures: after StartQuietView, d_ and c_ are the
// window's design and coordinates, and Px/Move/Click work in world millimetres.
class WindowDriver {
 protected:
  // Binds the created window's design, shows world (left, top) at the window's top-left corner
  // at `zoom` pixels per millimetre, snaps to whole millimetres and turns the grid, the snap
  // points, the origin mark and the cursor cross off so that figures stand on the background;
  // then paints.
  void StartQuietView(qvis::HeadlessPort* port, CQVIS_Design* design, double left, double top,
             double zoom) {
    driven_ = port;
    d_ = design;
    c_ = d_->m_pCoords;
    c_->SetScreenViewPosition(left, top);
    c_->SetZoom(zoom);
    c_->SetSnap(1.0, 1.0);
    d_->m_pGridSnapMgr->SetShowGrid(0);
    d_->m_pGridSnapMgr->SetShowSnap(0);
    d_->m_pGridSnapMgr->SetShowOrigin(0);
    d_->m_pCursorMgr->Off();
    driven_->RedrawNow();
  }

  CPoint Px(double x, double y) const { return CPoint(c_->V2RX(x), c_->V2RY(y)); }
  void Move(double x, double y) { driven_->Mouse(WM_MOUSEMOVE, Px(x, y)); }
  void Click(double x, double y) {
    Move(x, y);
    driven_->Mouse(WM_LBUTTONDOWN, Px(x, y));
    driven_->Mouse(WM_LBUTTONUP, Px(x, y));
  }

  CQVIS_Design* d_ = nullptr;
  CQVIS_Coords* c_ = nullptr;

 private:
  qvis::HeadlessPort* driven_ = nullptr;
};

#endif  // QVIS_TESTS_WINDOW_TEST_UTIL_H_
