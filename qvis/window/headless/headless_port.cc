// The in-memory window port: client size, key state, focus, parent messages and a front buffer,
// with a one-message-at-a-time loop that feeds the bound window.
#include "qvis/window/headless/headless_port.h"

#include "qvis/compat/win32_names.h"
#include "qvis/gdi/gdi.h"
#include "qvis/window/drawing_window.h"

namespace qvis {
HeadlessPort::HeadlessPort(int width, int height, CPoint screen_origin)
    : screen_origin_(screen_origin) {
  front_.Resize(width, height, /*keep_pixels=*/false);
}

HeadlessPort::~HeadlessPort() {
  if (wnd_ != nullptr) wnd_->DetachPort();
}

void HeadlessPort::Bind(CQVIS_Wnd* wnd) { wnd_ = wnd; }

CRect HeadlessPort::GetClientRect() const { return CRect(0, 0, front_.width(), front_.height()); }

CPoint HeadlessPort::ScreenToClient(CPoint screen) const {
  return CPoint(screen.x - screen_origin_.x, screen.y - screen_origin_.y);
}

CPoint HeadlessPort::ClientToScreen(CPoint client) const {
  return CPoint(client.x + screen_origin_.x, client.y + screen_origin_.y);
}

MSG HeadlessPort::Message(UINT message, WPARAM wparam, LPARAM lparam) {
  MSG msg;
  msg.hwnd = this;
  msg.message = message;
  msg.wParam = wparam;
  msg.lParam = lparam;
  msg.time = time_;
  return msg;
}

LRESULT HeadlessPort::SendToParent(UINT message, WPARAM wparam, LPARAM lparam) {
  parent_messages_.push_back(Message(message, wparam, lparam));
  return 0;
}

void HeadlessPort::Invalidate(bool /*erase*/) { invalid_ = true; }

void HeadlessPort::RedrawNow() {
  invalid_ = true;
  PaintIfNeeded();
}

void HeadlessPort::FrontChanged(const CRect& /*area*/) {}

LRESULT HeadlessPort::DefaultProc(const MSG& msg) {
  default_messages_.push_back(msg);
  return 0;
}

short HeadlessPort::KeyState(int virtual_key) const {
  return IsKeyDown(virtual_key) ? static_cast<short>(0x8000) : 0;
}

short HeadlessPort::AsyncKeyState(int virtual_key) const { return KeyState(virtual_key); }

void HeadlessPort::SetKeyDown(int virtual_key, bool down) {
  if (virtual_key < 0 || virtual_key > 255) return;
  keys_[static_cast<size_t>(virtual_key)] = down;
}

bool HeadlessPort::IsKeyDown(int virtual_key) const {
  if (virtual_key < 0 || virtual_key > 255) return false;
  return keys_[static_cast<size_t>(virtual_key)];
}

void HeadlessPort::Resize(int width, int height) {
  front_.Resize(width, height, /*keep_pixels=*/true);
  invalid_ = true;  // a resized window is repainted whole, as with CS_HREDRAW | CS_VREDRAW
  Post(WM_SIZE, 0, PackPointLParam(front_.width(), front_.height()));
}

void HeadlessPort::TrackInput(UINT message, WPARAM wparam) {
  switch (message) {
    case WM_LBUTTONDOWN:
    case WM_LBUTTONDBLCLK:
      SetKeyDown(VK_LBUTTON, true);
      break;
    case WM_LBUTTONUP:
      SetKeyDown(VK_LBUTTON, false);
      break;
    case WM_RBUTTONDOWN:
      SetKeyDown(VK_RBUTTON, true);
      break;
    case WM_RBUTTONUP:
      SetKeyDown(VK_RBUTTON, false);
      break;
    case WM_KEYDOWN:
    case WM_SYSKEYDOWN:
      if (wparam < 256) SetKeyDown(static_cast<int>(wparam), true);
      break;
    case WM_KEYUP:
    case WM_SYSKEYUP:
      if (wparam < 256) SetKeyDown(static_cast<int>(wparam), false);
      break;
    default:
      break;
  }
}

WPARAM HeadlessPort::MouseFlags() const {
  WPARAM flags = 0;
  if (IsKeyDown(VK_LBUTTON)) flags |= MK_LBUTTON;
  if (IsKeyDown(VK_RBUTTON)) flags |= MK_RBUTTON;
  if (IsKeyDown(VK_SHIFT)) flags |= MK_SHIFT;
  if (IsKeyDown(VK_CONTROL)) flags |= MK_CONTROL;
  return flags;
}

LRESULT HeadlessPort::Post(UINT message, WPARAM wparam, LPARAM lparam) {
  ++time_;
  TrackInput(message, wparam);
  LRESULT result = 0;
  if (wnd_ != nullptr) {
    MSG msg = Message(message, wparam, lparam);
    if (!wnd_->PreTranslateMessage(&msg)) {
      result = wnd_->WindowProc(message, wparam, lparam);
    }
  }
  PaintIfNeeded();
  return result;
}

LRESULT HeadlessPort::Mouse(UINT message, CPoint client) {
  // The button of the message is already held (or let go) when the window sees the flags.
  TrackInput(message, 0);
  return Post(message, MouseFlags(), PackPointLParam(client.x, client.y));
}

LRESULT HeadlessPort::Wheel(int delta, CPoint client) {
  const CPoint screen = ClientToScreen(client);
  return Post(WM_MOUSEWHEEL, PackWheelWParam(MouseFlags(), static_cast<short>(delta)),
              PackPointLParam(screen.x, screen.y));
}

void HeadlessPort::Key(int virtual_key) {
  Post(WM_KEYDOWN, static_cast<WPARAM>(virtual_key), 1);
  Post(WM_KEYUP, static_cast<WPARAM>(virtual_key), static_cast<LPARAM>(0xC0000001u));
}

LRESULT HeadlessPort::Char(char c) {
  return Post(WM_CHAR, static_cast<WPARAM>(static_cast<unsigned char>(c)), 1);
}

void HeadlessPort::PaintIfNeeded() {
  if (!invalid_ || painting_ || wnd_ == nullptr) return;
  painting_ = true;
  invalid_ = false;
  ++paint_count_;
  wnd_->WindowProc(WM_PAINT, 0, 0);
  painting_ = false;
}

COLORREF HeadlessPort::FrontPixel(int x, int y) const {
  if (x < 0 || y < 0 || x >= front_.width() || y >= front_.height()) return 0xFFFFFFFFu;
  const gdi::BitmapView view = gdi::BitmapPixels(front_.bitmap());
  if (view.bits == nullptr || x >= view.width || y >= view.height) return 0xFFFFFFFFu;
  const std::uint32_t rgb = view.Row32(y)[x];
  return Rgb((rgb >> 16) & 0xFF, (rgb >> 8) & 0xFF, rgb & 0xFF);
}

}  // namespace qvis
