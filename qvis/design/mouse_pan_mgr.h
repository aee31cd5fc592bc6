// CQVIS_MousePanMgr: panning the view with the right mouse button. While the button is held a
// thin XOR line runs from the press point to the cursor; on release the host calls Scroll, which
// moves the view origin once by the whole drag and repaints the window. Owned by the design.
#ifndef QVIS_DESIGN_MOUSE_PAN_MGR_H_
#define QVIS_DESIGN_MOUSE_PAN_MGR_H_

#include "qvis/compat/export.h"
#include "qvis/compat/handles.h"
#include "qvis/compat/types.h"

class CQVIS_GDI;
class CQVIS_Coords;

// The gesture as the window drives it: right button down at pixel p (Active with p, then
// MouseDown(2, world)); moves (MouseMove(world, 0)) while the right button is held; right button
// up at pixel q: Scroll(q, 0) pans by q - p and the window resets the manager. A release at the
// press pixel does not pan (Scroll returns -1) and the host gives the click its own meaning.
class QVIS_API CQVIS_MousePanMgr {
 public:
  // CQVIS_MousePanMgr(): no surface; the Init settings; pressed and hide-line flag 0.
  CQVIS_MousePanMgr();
  // CQVIS_MousePanMgr(surface): the same, with the surface and its coordinate system.
  explicit CQVIS_MousePanMgr(CQVIS_GDI* pSurface);
  CQVIS_MousePanMgr(const CQVIS_MousePanMgr&) = default;
  // operator= copies every member.
  CQVIS_MousePanMgr& operator=(const CQVIS_MousePanMgr&) = default;

  // Init: active and scroll count 0, points (0, 0), last pixel (-1, -1), coordinate system and
  // window null, colour 0xFFFFFF; the surface is kept. Nothing is drawn.
  void Init();
  // Release: last pixel (-1, -1), points (0, 0), active, scroll count, pressed and hide-line
  // flag 0; colour, surface, coordinate system and window kept. Nothing is drawn.
  void Release();
  // Active arms a gesture: last pixel := (x, y), active, scroll count 0, coordinate system and
  // window := the arguments. Already active: nothing.
  void Active(qvis::HWND hWnd, CQVIS_Coords* pCoords, long x, long y);
  int IsActived() const { return m_nActive; }

  // MouseDown: flag 2 while active and not pressed: press and current point := (x, y), pressed,
  // the line drawn (a point); 1. Otherwise 0.
  int MouseDown(unsigned int nFlags, double x, double y);
  // MouseMove: 0 when inactive or the right button is not held now (asynchronous state).
  // Otherwise the line is erased, the hide-line flag := nHideLine, the current point (and,
  // before a press, the press point) := (x, y), and the line drawn unless hidden; 1.
  int MouseMove(double x, double y, int nHideLine);
  // MouseUp: while active and pressed erases the line, pressed := 0, result 2 (no pan).
  // Otherwise 0. Flags and position are not used.
  int MouseUp(unsigned int nFlags, double x, double y);

  // Draw and OnDraw: while active, XOR, null brush, the 1-pixel solid pen of the colour on the
  // surface's origin context (null: the drawing context), and the line from the press point to
  // the current point when pressed and not hidden.
  void Draw();
  void OnDraw() { Draw(); }

  // Scroll pans by the pixel step from the last pixel position to (x, y): mode 0 moves the
  // drawing with the mouse (view -= step / zoom), mode 1 the view with it (view += step /
  // zoom), other modes only repaint. Then repaints the window (0x105), counts the step and
  // makes (x, y) the last position; 1. Not active, no last position (-1, -1) or no movement:
  // -1. A null coordinate system takes the surface's; with neither nothing moves.
  int Scroll(long x, long y, int nMode);
  // ScrollDelta moves the view origin by a pixel step (view -= d / zoom per axis); no repaint.
  // (0, 0), or no coordinate system: nothing.
  void ScrollDelta(long dx, long dy);

  CQVIS_GDI* m_pSurface;
  CQVIS_Coords* m_pCoords;
  qvis::HWND m_hWnd;
  double m_dPressX;  // world point where the drag started
  double m_dPressY;
  double m_dCurrentX;  // world cursor during the drag
  double m_dCurrentY;
  LONG m_nLastX;  // device pixel reference of the next Scroll; (-1, -1) none
  LONG m_nLastY;
  int m_nActive;
  int m_nScrollCount;
  int m_nPressed;
  COLORREF m_crColor;
  int m_nHideLine;

 private:
  CQVIS_Coords* Coords();
};

#endif  // QVIS_DESIGN_MOUSE_PAN_MGR_H_
