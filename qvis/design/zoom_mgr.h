// CQVIS_ZoomMgr: the zoom box. The user drags a dotted XOR box with the left button; the host
// zooms to it (CQVIS_Coords::SetScreenZone) when MouseUp returns 2. Owned by the design.
#ifndef QVIS_DESIGN_ZOOM_MGR_H_
#define QVIS_DESIGN_ZOOM_MGR_H_

#include "qvis/compat/export.h"
#include "qvis/compat/types.h"

class CQVIS_GDI;

// CQVIS_ZoomMgr follows the command protocol (results 0, 1, 2 when a drag ends, -1 for
// VK_ESCAPE with no box). The box is drawn with the box pen (XOR on the surface's origin context,
// the null brush, the 1-pixel dotted pen of m_crColor) only in drag state 1 or 2, and mapped
// straight to device pixels into the origin context (no origin context: no box). The manager
// stays active after a box, so several boxes can be dragged in a row.
class QVIS_API CQVIS_ZoomMgr {
 public:
  // CQVIS_ZoomMgr: colour 0xFFFFFF, everything else 0.
  explicit CQVIS_ZoomMgr(CQVIS_GDI* pSurface);
  CQVIS_ZoomMgr(const CQVIS_ZoomMgr&) = default;
  // operator= copies every member.
  CQVIS_ZoomMgr& operator=(const CQVIS_ZoomMgr&) = default;

  // Init: as the constructor, the surface kept. Nothing is drawn.
  void Init();
  // Release: active := 0, has extent := 0. Nothing is drawn.
  void Release();
  // Active: active := 1, has extent := 0; draws nothing and keeps the drag state.
  void Active();
  // Deactive: erases the box, drag state 0, inactive. Inactive: nothing.
  void Deactive();
  int IsActived() const { return m_nActive; }
  int IsZoomMode() const { return m_nZoomMode; }
  // Cancel: erases the box, drag state 0. Inactive: nothing.
  void Cancel();

  // KeyPress: VK_ESCAPE only (other keys or inactive: 0): -1 with no box, else the box is
  // erased (drag state 0) and 1.
  int KeyPress(int nKey);
  // MouseDown: with flag 1, active and no box: both corners := (x, y), drag state 1, the box
  // (a point) drawn; 1. Otherwise 0.
  int MouseDown(unsigned int nFlags, double x, double y);
  // MouseMove: 0 when inactive or when the left button is not held now (asynchronous state).
  // Otherwise erase; drag state 0 moves both corners, 1 the second one, 2 nothing; draw; 1.
  int MouseMove(double x, double y);
  // MouseUp: in drag state 1 erases the box, drag state 0, result 2 (the corners keep the box
  // for the host). Otherwise 0. Flags and position are not used.
  int MouseUp(unsigned int nFlags, double x, double y);
  // SetSecondPoint sets the second corner and has extent (1 when it differs from the first in
  // x or y, exactly). Draws nothing: with a box on screen, erase (Draw) before and draw after.
  void SetSecondPoint(double x, double y);
  // IsSamePoint: both corners exactly equal.
  bool IsSamePoint() const { return m_dX1 == m_dX2 && m_dY1 == m_dY2; }

  // Draw and OnDraw: the box pen and, in drag state 1 or 2, the box. Inactive: nothing.
  void Draw();
  void OnDraw() { Draw(); }
  // DrawRectangle maps the corners (device = R((f * v - view) * zoom)) and draws the platform
  // rectangle into the origin context with what is selected there. No origin context: nothing.
  void DrawRectangle(double x1, double y1, double x2, double y2);

  CQVIS_GDI* m_pSurface;
  int m_nActive;
  int m_nZoomMode;  // for the host; the manager only resets it
  double m_dX1;     // first corner (where the drag started)
  double m_dY1;
  double m_dX2;     // second corner
  double m_dY2;
  int m_nHasExtent;
  int m_nDragState;  // 0 none, 1 dragging, 2 shown without a drag
  COLORREF m_crColor;

 private:
  bool BoxShown() const { return m_nDragState == 1 || m_nDragState == 2; }
};

#endif  // QVIS_DESIGN_ZOOM_MGR_H_
