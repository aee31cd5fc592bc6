// qvis::HeadlessPort: a window port in memory: client size, key and button state, focus, the
// messages sent to the parent, and a one-message-at-a-time loop. Its front buffer is what a user
// would see. Used by tests and screenless hosts (the session runner), which own it.
#ifndef QVIS_WINDOW_HEADLESS_HEADLESS_PORT_H_
#define QVIS_WINDOW_HEADLESS_HEADLESS_PORT_H_

#include <array>
#include <cstdint>
#include <vector>

#include "qvis/compat/cpoint.h"
#include "qvis/compat/export.h"
#include "qvis/compat/handles.h"
#include "qvis/compat/key_state.h"
#include "qvis/compat/types.h"
#include "qvis/window/front_buffer.h"
#include "qvis/window/window_port.h"

namespace qvis {

class QVIS_API HeadlessPort : public WindowPort, public KeyStateSource {
 public:
  // HeadlessPort: a client area of width x height pixels (negative sizes count as 0), whose
  // top-left corner sits at `screen_origin` on the simulated screen. The port keeps the key
  // state of its own window; nothing is shared with other ports.
  HeadlessPort(int width, int height, CPoint screen_origin = CPoint(0, 0));
  ~HeadlessPort() override;
  HeadlessPort(const HeadlessPort&) = delete;
  HeadlessPort& operator=(const HeadlessPort&) = delete;

  // WindowPort.
  void Bind(CQVIS_Wnd* wnd) override;
  CRect GetClientRect() const override;
  CPoint ScreenToClient(CPoint screen) const override;
  CPoint ClientToScreen(CPoint client) const override;
  void SetFocus() override { focus_ = true; }
  void EnableInput(bool enable) override { enabled_ = enable; }
  LRESULT SendToParent(UINT message, WPARAM wparam, LPARAM lparam) override;
  void Invalidate(bool erase) override;
  void RedrawNow() override;
  HDC FrontDC() override { return front_.dc(); }
  void FrontChanged(const CRect& area) override;
  LRESULT DefaultProc(const MSG& msg) override;
  const KeyStateSource* KeyStates() const override { return this; }

  // KeyStateSource: bit 15 set while a key or button is down.
  short KeyState(int virtual_key) const override;
  short AsyncKeyState(int virtual_key) const override;

  // SetKeyDown: holds a key or mouse button (VK_LBUTTON, VK_SHIFT, ...) down or lets it go.
  // Codes outside 0..255 are ignored.
  void SetKeyDown(int virtual_key, bool down);
  bool IsKeyDown(int virtual_key) const;

  // Resize: a new client size; the front buffer keeps what fits and the window gets WM_SIZE.
  void Resize(int width, int height);

  // Post: runs one message as a message loop does: the key and button state follow the
  // message first (a button goes down with WM_xBUTTONDOWN, a key with WM_KEYDOWN...), then
  // the window's PreTranslateMessage, then (unless it handled the message) its WindowProc,
  // and finally a WM_PAINT if the window was invalidated. Returns the window's answer
  // (0 when no window is bound or the message was pre-translated).
  LRESULT Post(UINT message, WPARAM wparam, LPARAM lparam);
  // Mouse: posts a mouse message at a client pixel with the MK_ flags of what is held now.
  LRESULT Mouse(UINT message, CPoint client);
  // Wheel: posts WM_MOUSEWHEEL of `delta` at a client pixel (sent in screen coordinates).
  LRESULT Wheel(int delta, CPoint client);
  // Key: posts WM_KEYDOWN then WM_KEYUP of a virtual key.
  void Key(int virtual_key);
  // Char: posts WM_CHAR of a character.
  LRESULT Char(char c);
  // PaintIfNeeded: delivers the pending WM_PAINT, if any.
  void PaintIfNeeded();

  // What a user would see: the front buffer.
  HBITMAP FrontBitmap() const { return front_.bitmap(); }
  // FrontPixel: the colour at a client pixel as a COLORREF; 0xFFFFFFFF outside.
  COLORREF FrontPixel(int x, int y) const;

  bool HasFocus() const { return focus_; }
  bool IsInputEnabled() const { return enabled_; }
  bool NeedsPaint() const { return invalid_; }
  int PaintCount() const { return paint_count_; }
  // ParentMessages: every message sent to the parent, in order.
  const std::vector<MSG>& ParentMessages() const { return parent_messages_; }
  void ClearParentMessages() { parent_messages_.clear(); }
  // DefaultMessages: every message passed to default processing, in order.
  const std::vector<MSG>& DefaultMessages() const { return default_messages_; }
  void ClearDefaultMessages() { default_messages_.clear(); }

 private:
  // Message: a message from this window at the current message time.
  MSG Message(UINT message, WPARAM wparam, LPARAM lparam);
  void TrackInput(UINT message, WPARAM wparam);
  WPARAM MouseFlags() const;

  CQVIS_Wnd* wnd_ = nullptr;
  CPoint screen_origin_;
  bool focus_ = false;
  bool enabled_ = true;
  bool invalid_ = false;
  bool painting_ = false;
  int paint_count_ = 0;
  DWORD time_ = 0;
  std::array<bool, 256> keys_{};
  std::vector<MSG> parent_messages_;
  std::vector<MSG> default_messages_;
  FrontBuffer front_;
};

}  // namespace qvis

#endif  // QVIS_WINDOW_HEADLESS_HEADLESS_PORT_H_
