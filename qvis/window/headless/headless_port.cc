// The in-memory window port: client size, key state, focus, parent messages and a front buffer,
// with a one-message-at-a-time loop that feeds the bound window.
#include "qvis/window/headless/headless_port.h"

#include <algorithm>

#include "qvis/compat/win32_names.h"
#include "qvis/gdi/gdi.h"
#include "qvis/window/drawing_window.h"

namespace qvis {
namespace {

constexpr int kMaxSide = 8192;  // an 8K screen; 256 MB a buffer

LPARAM PackPoint(CPoint p) {
  return static_cast<LPARAM>((static_cast<DWORD>(p.x) & 0xFFFF) |
                             ((static_cast<DWORD>(p.y) & 0xFFFF) << 16));
}

}  // namespace

HeadlessPort::HeadlessPort(int width, int height, CPoint screen_origin)
    : screen_origin_(screen_origin) {
  front_dc_ = gdi::CreateCompatibleDC(nullptr);
  MakeFront(width, height);
  previous_source_ = SetKeyStateSource(this);
}

HeadlessPort::~HeadlessPort() {
  if (GetKeyStateSource() == this) SetKeyStateSource(previous_source_);
  if (wnd_ != nullptr) wnd_->DetachPort();
  if (front_dc_ != nullptr && original_bitmap_ != nullptr) {
    gdi::SelectObject(front_dc_, original_bitmap_);
  }
  if (front_bitmap_ != nullptr) gdi::DeleteObject(reinterpret_cast<HGDIOBJ>(front_bitmap_));
  if (front_dc_ != nullptr) gdi::DeleteDC(front_dc_);
}

void HeadlessPort::MakeFront(int width, int height) {
  width = std::clamp(width, 0, kMaxSide);
  height = std::clamp(height, 0, kMaxSide);
  HBITMAP bitmap = gdi::CreateBitmap32(width, height);
  if (bitmap == nullptr) return;
  if (front_bitmap_ != nullptr) {
    // Keep what still fits, as a real window keeps its pixels until the next paint.
    HDC old_dc = gdi::CreateCompatibleDC(nullptr);
    HGDIOBJ prev = gdi::SelectObject(old_dc, reinterpret_cast<HGDIOBJ>(bitmap));
    gdi::BitBlt(old_dc, 0, 0, std::min(width, width_), std::min(height, height_), front_dc_, 0,
                0, SRCCOPY);
    gdi::SelectObject(old_dc, prev);
    gdi::DeleteDC(old_dc);
  }
  HGDIOBJ previous = gdi::SelectObject(front_dc_, reinterpret_cast<HGDIOBJ>(bitmap));
  if (original_bitmap_ == nullptr) original_bitmap_ = previous;
  if (front_bitmap_ != nullptr) gdi::DeleteObject(reinterpret_cast<HGDIOBJ>(front_bitmap_));
  front_bitmap_ = bitmap;
  width_ = width;
  height_ = height;
}

void HeadlessPort::Bind(CQVIS_Wnd* wnd) { wnd_ = wnd; }

CRect HeadlessPort::GetClientRect() const { return CRect(0, 0, width_, height_); }

CPoint HeadlessPort::ScreenToClient(CPoint screen) const {
  return CPoint(screen.x - screen_origin_.x, screen.y - screen_origin_.y);
}

CPoint HeadlessPort::ClientToScreen(CPoint client) const {
  return CPoint(client.x + screen_origin_.x, client.y + screen_origin_.y);
}

LRESULT HeadlessPort::SendToParent(UINT message, WPARAM wparam, LPARAM lparam) {
  MSG msg;
  msg.hwnd = this;
  msg.message = message;
  msg.wParam = wparam;
  msg.lParam = lparam;
  msg.time = time_;
  parent_messages_.push_back(msg);
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
  MakeFront(width, height);
  invalid_ = true;  // a resized window is repainted whole, as with CS_HREDRAW | CS_VREDRAW
  Post(WM_SIZE, 0, PackPoint(CPoint(width_, height_)));
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
    MSG msg;
    msg.hwnd = this;
    msg.message = message;
    msg.wParam = wparam;
    msg.lParam = lparam;
    msg.time = time_;
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
  return Post(message, MouseFlags(), PackPoint(client));
}

LRESULT HeadlessPort::Wheel(int delta, CPoint client) {
  const WPARAM wparam =
      MouseFlags() | (static_cast<WPARAM>(static_cast<WORD>(static_cast<short>(delta))) << 16);
  return Post(WM_MOUSEWHEEL, wparam, PackPoint(ClientToScreen(client)));
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
  if (x < 0 || y < 0 || x >= width_ || y >= height_) return 0xFFFFFFFFu;
  const gdi::BitmapView view = gdi::BitmapPixels(front_bitmap_);
  if (view.bits == nullptr || x >= view.width || y >= view.height) return 0xFFFFFFFFu;
  const std::uint32_t rgb = view.Row32(y)[x];
  return Rgb((rgb >> 16) & 0xFF, (rgb >> 8) & 0xFF, rgb & 0xFF);
}

}  // namespace qvis
