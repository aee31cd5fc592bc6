// qvis::Win32Port: the drawing window as a real child window on Windows. The port registers a
// window class, creates the child inside the host's parent window and routes the messages the
// system delivers to it into CQVIS_Wnd::WindowProc; keys and buttons are answered by the
// system's own key state, messages to the parent go through SendMessage, repaints through
// InvalidateRect/UpdateWindow, and the front buffer reaches the screen with SetDIBitsToDevice
// (only the changed rectangle when a rubber band moves). Everything the port knows lives in
// the port; two canvases in one process share nothing.
//
// The header does not include <windows.h> (so a host may include it before or after): native
// handles pass as void*, to be cast to HWND by the host.
#ifndef QVIS_WINDOW_WIN32_WIN32_PORT_H_
#define QVIS_WINDOW_WIN32_WIN32_PORT_H_

#include <cstdint>
#include <functional>
#include <vector>

#include "qvis/compat/cpoint.h"
#include "qvis/compat/export.h"
#include "qvis/compat/handles.h"
#include "qvis/compat/key_state.h"
#include "qvis/compat/message_box.h"
#include "qvis/compat/types.h"
#include "qvis/window/front_buffer.h"
#include "qvis/window/window_port.h"

namespace qvis {

class QVIS_API Win32Port : public WindowPort, public KeyStateSource {
 public:
  // Win32Port: creates the child window inside `parent_hwnd` at (x, y), width x height client
  // pixels, with `control_id` as its child id. ok() tells whether the window exists. The port
  // answers key-state questions and shows the library's message box while it lives.
  Win32Port(void* parent_hwnd, int x, int y, int width, int height, int control_id = 0);
  // ~Win32Port: detaches the bound window and destroys the child window.
  ~Win32Port() override;
  Win32Port(const Win32Port&) = delete;
  Win32Port& operator=(const Win32Port&) = delete;

  bool ok() const { return hwnd_ != nullptr; }
  // native_handle: the child window's HWND.
  void* native_handle() const { return hwnd_; }
  // The window class every canvas is created with.
  static const char* ClassName() { return "qvisCanvas"; }

  // WindowPort.
  void Bind(CQVIS_Wnd* wnd) override { wnd_ = wnd; }
  CRect GetClientRect() const override;
  CPoint ScreenToClient(CPoint screen) const override;
  CPoint ClientToScreen(CPoint client) const override;
  void SetFocus() override;
  void EnableInput(bool enable) override;
  LRESULT SendToParent(UINT message, WPARAM wparam, LPARAM lparam) override;
  void Invalidate(bool erase) override;
  void RedrawNow() override;
  HDC FrontDC() override { return front_.dc(); }
  void FrontChanged(const CRect& area) override;
  LRESULT DefaultProc(const MSG& msg) override;
  const KeyStateSource* KeyStates() const override { return this; }

  // KeyStateSource: the system's GetKeyState and GetAsyncKeyState.
  short KeyState(int virtual_key) const override;
  short AsyncKeyState(int virtual_key) const override;

  // MessageHook is called around every message the canvas hands to the window: before the
  // window sees it (after = false) and once it has (after = true). A host uses it to take over
  // finished figures.
  using MessageHook = std::function<void(UINT message, WPARAM wparam, bool after)>;
  void SetMessageHook(MessageHook hook) { hook_ = std::move(hook); }

  // What the screen shows: the front buffer.
  HBITMAP FrontBitmap() const { return front_.bitmap(); }
  // LastPresented: the client rectangle most recently copied to the screen, and how many
  // copies there were (for tests and diagnostics).
  CRect LastPresented() const { return last_presented_; }
  int PresentCount() const { return present_count_; }
  // LastChangedPixels: how many pixels the last message's changes copied to the screen.
  long long LastChangedPixels() const { return last_changed_pixels_; }

  // HandleMessage: the window procedure of the child, called by the registered class for
  // every message the system delivers to `native_hwnd` (the child, also while it is created).
  std::intptr_t HandleMessage(void* native_hwnd, unsigned message, std::uintptr_t wparam,
                              std::intptr_t lparam);

 private:
  // Present copies a client rectangle of the front buffer to a device context of the window
  // and records it as shown.
  void Present(void* native_dc, const CRect& area);
  // ShowChanges presents the bounding rectangle of what differs between the front buffer and
  // what the screen was last given: XOR figures are drawn straight into the front buffer
  // between paints, and only their area is copied.
  void ShowChanges();

  void* hwnd_ = nullptr;
  CQVIS_Wnd* wnd_ = nullptr;
  FrontBuffer front_;
  MessageBoxHandler previous_box_;
  MessageHook hook_;
  std::vector<std::uint32_t> shown_;  // what the screen was last given, width * height
  bool painting_ = false;
  CRect last_presented_;
  int present_count_ = 0;
  long long last_changed_pixels_ = 0;
};

}  // namespace qvis

#endif  // QVIS_WINDOW_WIN32_WIN32_PORT_H_
