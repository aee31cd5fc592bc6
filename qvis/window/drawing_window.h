// CQVIS_Wnd: the child window in which one design is shown and edited: platform messages in,
// calls on the design's managers and commands out, paint through the render buffer, Esc and
// Enter told to the parent. Created by the host over a qvis::WindowPort (which it borrows);
// owns its design. A host may derive from it, e.g. to paint its own figures in OnDrawHost.
#ifndef QVIS_WINDOW_DRAWING_WINDOW_H_
#define QVIS_WINDOW_DRAWING_WINDOW_H_

#include <memory>

#include "qvis/compat/cpoint.h"
#include "qvis/design/figure_watch.h"
#include "qvis/compat/cstring.h"
#include "qvis/compat/export.h"
#include "qvis/compat/handles.h"
#include "qvis/compat/types.h"

class CQVIS_Design;
class CQVIS_GDI;

namespace qvis {
class WindowPort;
}  // namespace qvis

class QVIS_API CQVIS_Wnd {
 public:
  // CQVIS_Wnd: creates and initialises the design; the window is not on a port yet.
  CQVIS_Wnd();
  // ~CQVIS_Wnd: unbinds from the port and deletes the design with everything it owns.
  virtual ~CQVIS_Wnd();
  CQVIS_Wnd(const CQVIS_Wnd&) = delete;
  CQVIS_Wnd& operator=(const CQVIS_Wnd&) = delete;

  // Create: puts the window on a port (the platform window) and runs WM_CREATE through
  // WindowProc. Returns FALSE for a null port or a window that is already created.
  BOOL Create(qvis::WindowPort* port);
  // GetSafeHwnd: the port the window lives on (null before Create).
  qvis::HWND GetSafeHwnd() const { return m_pPort; }
  // DetachPort: the port is going away; the window stops talking to it.
  void DetachPort();

  CQVIS_Design* GetDesign() { return m_pDesign; }
  // UpdateInformation: a hook for a derived window; the base does nothing with the text.
  virtual void UpdateInformation(CString text);
  // Enable, Disable: switch the window's input on and off.
  virtual void Enable();
  virtual void Disable();

  // WindowProc: routes one message by the message map; unknown messages take the default
  // path. Returns the handler's result.
  virtual LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam);
  // PreTranslateMessage: while Esc or Enter is held, ends the command step, tells the parent
  // (WM_KEYDOWN, 0, 0) and returns TRUE; otherwise handles Alt+1, "+" and "-" and returns
  // FALSE so that the message goes on. A null message returns FALSE.
  virtual BOOL PreTranslateMessage(qvis::MSG* pMsg);

  // Message handlers, as WindowProc calls them. Points are client pixels except for the
  // wheel's, which is in screen pixels. A handler on a window without a port does nothing
  // that reaches the platform.
  //
  // OnCreate: binds the surface to the port's front buffer and the render buffer, runs Init,
  // sets the initial layer, shows the cursor, turns snapping on and starts selection.
  // Returns -1 when default processing refuses the window, else 0.
  virtual int OnCreate(void* lpCreateStruct);
  // OnPaint: frame in the background colour, snap points, grid, origin, the host's figures,
  // present, then every transient figure once more in XOR and the cursor.
  virtual void OnPaint();
  virtual BOOL OnEraseBkgnd(qvis::HDC hdc);
  virtual void OnMouseMove(UINT nFlags, CPoint point);
  // OnMouseWheel: zooms out (delta > 0) or in (delta < 0) by 1.5, or 2.5 with Shift, about
  // the cursor. A point outside the client area returns 0 and changes nothing.
  virtual BOOL OnMouseWheel(UINT nFlags, short zDelta, CPoint pt);
  virtual void OnSize(UINT nType, int cx, int cy);
  virtual void OnLButtonDblClk(UINT nFlags, CPoint point);
  virtual void OnLButtonDown(UINT nFlags, CPoint point);
  virtual void OnLButtonUp(UINT nFlags, CPoint point);
  virtual void OnRButtonDown(UINT nFlags, CPoint point);
  // OnRButtonUp: ends a pan gesture with one scroll by the whole drag; a release where the
  // button went down is a plain right click and goes to default processing (context menu).
  virtual void OnRButtonUp(UINT nFlags, CPoint point);
  // OnKeyDown: offers the key to the active commands; a handled key repaints, and a command
  // that asks to be left (-1) hands over to selection. Unknown keys change nothing.
  virtual void OnKeyDown(UINT nChar, UINT nRepCnt, UINT nFlags);

  // Command operations for the host's menus and toolbars. Each starting operation ends the
  // other commands first and does nothing when its command is already active.
  void OnEditSelect();
  void OnDrawLine();
  void OnDrawArc();
  void OnDrawRectangle();
  void OnDrawPolygon();
  void OnZoomZoomin();
  void OnZoomZoomout();
  void OnZoomZoomall();
  void OnZoomZoombox();

  // OnDrawHost: the host's drawing hook, called by every paint after the snap points, grid and
  // origin mark and before the frame is presented. `dc` is the back buffer (also the
  // surface's drawing DC). The base draws nothing.
  virtual void OnDrawHost(CQVIS_GDI* surface, qvis::HDC dc);

  // SetFigureListener: `listener` (borrowed; null: none) is told of every figure a command
  // finishes in this window, once, after the message that finished it; the window then
  // repaints. The one notification a host needs instead of watching messages.
  void SetFigureListener(qvis::FigureListener* listener);

  CQVIS_Design* m_pDesign;
  int m_nInitLayerID;

 protected:
  // SetDesign: a derived window replaces the design it was constructed with (before Create):
  // the window owns the new one and deletes the old one. m_pDesign observes the design; it is
  // never deleted by hand. A null design is ignored.
  void SetDesign(std::unique_ptr<CQVIS_Design> design);
  // Default: the platform's default processing of the message being handled.
  LRESULT Default();
  // Invalidate: asks for a repaint of the whole client area (with erase).
  void Invalidate();
  // RedrawNow: repaints at once.
  void RedrawNow();
  // ClientSize: the client area's width and height.
  CSize ClientSize() const;

  qvis::WindowPort* m_pPort = nullptr;

 private:
  // The message WindowProc is handling, for Default.
  qvis::MSG current_;
  // Finished figures are looked for around the outermost message only (handlers re-enter
  // WindowProc to repaint).
  qvis::FigureWatch figure_watch_;
  int dispatch_depth_ = 0;
  // Dispatch: the message map (WindowProc is this, with finished figures looked for).
  LRESULT Dispatch(UINT message, WPARAM wParam, LPARAM lParam);
  bool FigureWatchBegin(UINT message, WPARAM wParam);
  void FigureWatchEnd(bool outer, UINT message, WPARAM wParam);
  // The design: owned here, observed through m_pDesign.
  std::unique_ptr<CQVIS_Design> design_;
};

#endif  // QVIS_WINDOW_DRAWING_WINDOW_H_
