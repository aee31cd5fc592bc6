// qvis::WindowPort: everything the drawing window needs of the platform window it lives in.
// A port (headless, Qt, ...) implements it and owns the front buffer, the bitmap that holds
// exactly what the screen shows. The window borrows the port; the port outlives the window.
#ifndef QVIS_WINDOW_WINDOW_PORT_H_
#define QVIS_WINDOW_WINDOW_PORT_H_

#include "qvis/compat/cpoint.h"
#include "qvis/compat/export.h"
#include "qvis/compat/handles.h"
#include "qvis/compat/key_state.h"
#include "qvis/compat/types.h"

class CQVIS_Wnd;

namespace qvis {

class QVIS_API WindowPort {
 public:
  virtual ~WindowPort() = default;

  // Bind: the window announces itself when it is created over this port (null when it goes
  // away). From then on the port delivers its paint requests to it.
  virtual void Bind(CQVIS_Wnd* wnd) = 0;

  // GetClientRect: the client area, (0, 0, width, height).
  virtual CRect GetClientRect() const = 0;
  // ScreenToClient, ClientToScreen: convert between screen and client pixels.
  virtual CPoint ScreenToClient(CPoint screen) const = 0;
  virtual CPoint ClientToScreen(CPoint client) const = 0;

  // SetFocus: gives the keyboard focus to the window.
  virtual void SetFocus() = 0;
  // EnableInput: enables (true) or disables (false) mouse and keyboard input.
  virtual void EnableInput(bool enable) = 0;

  // SendToParent: delivers a message to the parent window synchronously and returns its
  // answer; without a parent nothing is sent and 0 is returned.
  virtual LRESULT SendToParent(UINT message, WPARAM wparam, LPARAM lparam) = 0;

  // Invalidate: marks the whole client area for repainting; the paint comes later, when the
  // message queue is empty.
  virtual void Invalidate(bool erase) = 0;
  // RedrawNow: invalidates, erases and repaints at once (the paint runs before it returns).
  virtual void RedrawNow() = 0;

  // FrontDC: the window's own device context, drawing straight into the front buffer.
  // Valid from construction to destruction of the port; it follows client resizes.
  virtual HDC FrontDC() = 0;
  // FrontChanged: the given client area of the front buffer changed and should be shown.
  virtual void FrontChanged(const CRect& area) = 0;

  // DefaultProc: the platform's default processing of a message the window passes on.
  virtual LRESULT DefaultProc(const MSG& msg) = 0;

  // KeyStates: the key and mouse-button state of this port's window, which the window and its
  // design's managers and commands ask (GetKeyState, GetAsyncKeyState). Each port keeps its
  // own; it lives as long as the port.
  virtual const KeyStateSource* KeyStates() const = 0;
};

// PackPointLParam: a client or screen point as the LPARAM of a mouse or size message (x in the
// low word, y in the high word, each cut to 16 bits), as a port delivers it.
inline LPARAM PackPointLParam(int x, int y) {
  return static_cast<LPARAM>((static_cast<DWORD>(x) & 0xFFFF) |
                             ((static_cast<DWORD>(y) & 0xFFFF) << 16));
}

// PackWheelWParam: the WPARAM of WM_MOUSEWHEEL, the MK_ flags in the low word and the signed
// wheel delta (120 a notch, positive away from the user) in the high word.
inline WPARAM PackWheelWParam(WPARAM flags, short delta) {
  return flags | (static_cast<WPARAM>(static_cast<WORD>(delta)) << 16);
}

}  // namespace qvis

#endif  // QVIS_WINDOW_WINDOW_PORT_H_
