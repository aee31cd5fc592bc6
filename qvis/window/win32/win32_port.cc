// The Win32 window port. <windows.h> comes first; the system's names are written with :: where
// qvis has its own of the same spelling (HWND, HDC, MSG, GetKeyState ...).
#include <windows.h>
#include <windowsx.h>

#include "qvis/window/win32/win32_port.h"

#include <algorithm>

#include "qvis/gdi/gdi.h"
#include "qvis/window/drawing_window.h"

namespace qvis {
namespace {

::HWND Native(void* hwnd) { return static_cast<::HWND>(hwnd); }

LRESULT CALLBACK CanvasProc(::HWND hwnd, UINT message, WPARAM wparam, LPARAM lparam) {
  if (message == WM_NCCREATE) {
    const auto* create = reinterpret_cast<const CREATESTRUCTA*>(lparam);
    ::SetWindowLongPtrA(hwnd, GWLP_USERDATA,
                        reinterpret_cast<LONG_PTR>(create->lpCreateParams));
  }
  auto* port = reinterpret_cast<Win32Port*>(::GetWindowLongPtrA(hwnd, GWLP_USERDATA));
  if (port == nullptr) return ::DefWindowProcA(hwnd, message, wparam, lparam);
  return port->HandleMessage(hwnd, message, wparam, lparam);
}

// The class is registered once per module; a second registration of the same class fails
// harmlessly, so no flag is kept.
void RegisterCanvasClass(HINSTANCE instance) {
  WNDCLASSEXA wc{};
  wc.cbSize = sizeof wc;
  wc.style = CS_DBLCLKS;
  wc.lpfnWndProc = &CanvasProc;
  wc.hInstance = instance;
  wc.hCursor = ::LoadCursor(nullptr, IDC_CROSS);
  wc.hbrBackground = nullptr;  // the canvas paints every pixel itself
  wc.lpszClassName = Win32Port::ClassName();
  ::RegisterClassExA(&wc);
}

bool IsKeyboardMessage(UINT message) { return message >= WM_KEYFIRST && message <= WM_KEYLAST; }

}  // namespace

Win32Port::Win32Port(void* parent_hwnd, int x, int y, int width, int height, int control_id) {
  front_.Resize(width, height, /*keep_pixels=*/false);
  HINSTANCE instance = ::GetModuleHandleA(nullptr);
  RegisterCanvasClass(instance);
  hwnd_ = ::CreateWindowExA(0, ClassName(), "",
                            WS_CHILD | WS_VISIBLE | WS_CLIPSIBLINGS | WS_TABSTOP, x, y, width,
                            height, Native(parent_hwnd),
                            reinterpret_cast<HMENU>(static_cast<INT_PTR>(control_id)), instance,
                            this);
  void* owner = hwnd_;
  previous_box_ = SetMessageBoxHandler([owner](const char* text) {
    return ::MessageBoxA(Native(owner), text, "qvis", MB_OK | MB_ICONINFORMATION);
  });
}

Win32Port::~Win32Port() {
  SetMessageBoxHandler(previous_box_);
  if (wnd_ != nullptr) wnd_->DetachPort();
  wnd_ = nullptr;
  if (hwnd_ != nullptr) {
    ::SetWindowLongPtrA(Native(hwnd_), GWLP_USERDATA, 0);
    ::DestroyWindow(Native(hwnd_));
  }
}

CRect Win32Port::GetClientRect() const { return CRect(0, 0, front_.width(), front_.height()); }

CPoint Win32Port::ScreenToClient(CPoint screen) const {
  ::POINT p{screen.x, screen.y};
  if (hwnd_ != nullptr) ::ScreenToClient(Native(hwnd_), &p);
  return CPoint(p.x, p.y);
}

CPoint Win32Port::ClientToScreen(CPoint client) const {
  ::POINT p{client.x, client.y};
  if (hwnd_ != nullptr) ::ClientToScreen(Native(hwnd_), &p);
  return CPoint(p.x, p.y);
}

void Win32Port::SetFocus() {
  if (hwnd_ != nullptr) ::SetFocus(Native(hwnd_));
}

void Win32Port::EnableInput(bool enable) {
  if (hwnd_ != nullptr) ::EnableWindow(Native(hwnd_), enable ? TRUE : FALSE);
}

LRESULT Win32Port::SendToParent(UINT message, WPARAM wparam, LPARAM lparam) {
  if (hwnd_ == nullptr) return 0;
  ::HWND parent = ::GetParent(Native(hwnd_));
  if (parent == nullptr) return 0;
  return ::SendMessageA(parent, message, wparam, lparam);
}

void Win32Port::Invalidate(bool erase) {
  if (hwnd_ != nullptr) ::InvalidateRect(Native(hwnd_), nullptr, erase ? TRUE : FALSE);
}

void Win32Port::RedrawNow() {
  if (hwnd_ == nullptr) return;
  ::InvalidateRect(Native(hwnd_), nullptr, TRUE);
  ::UpdateWindow(Native(hwnd_));
}

void Win32Port::FrontChanged(const CRect& area) {
  if (hwnd_ == nullptr || painting_) return;  // a paint presents its own area when it ends
  ::HDC dc = ::GetDC(Native(hwnd_));
  if (dc == nullptr) return;
  Present(dc, area);
  ::ReleaseDC(Native(hwnd_), dc);
}

LRESULT Win32Port::DefaultProc(const MSG& msg) {
  if (hwnd_ == nullptr) return 0;
  return ::DefWindowProcA(Native(hwnd_), msg.message, msg.wParam, msg.lParam);
}

short Win32Port::KeyState(int virtual_key) const { return ::GetKeyState(virtual_key); }

short Win32Port::AsyncKeyState(int virtual_key) const { return ::GetAsyncKeyState(virtual_key); }

void Win32Port::Present(void* native_dc, const CRect& area) {
  const gdi::BitmapView view = gdi::BitmapPixels(front_.bitmap());
  if (view.bits == nullptr || view.bits_per_pixel != 32 || view.stride != view.width * 4) return;
  const int left = std::max(0, static_cast<int>(area.left));
  const int top = std::max(0, static_cast<int>(area.top));
  const int right = std::min(view.width, static_cast<int>(area.right));
  const int bottom = std::min(view.height, static_cast<int>(area.bottom));
  if (left >= right || top >= bottom) return;
  // The rows of the rectangle, described as a top-down DIB of their own: our pixels are B, G,
  // R, X bytes in rows of width * 4, exactly the system's 32-bit DIB layout.
  BITMAPINFO info{};
  info.bmiHeader.biSize = sizeof(BITMAPINFOHEADER);
  info.bmiHeader.biWidth = view.width;
  info.bmiHeader.biHeight = -(bottom - top);
  info.bmiHeader.biPlanes = 1;
  info.bmiHeader.biBitCount = 32;
  info.bmiHeader.biCompression = BI_RGB;
  ::SetDIBitsToDevice(static_cast<::HDC>(native_dc), left, top,
                      static_cast<DWORD>(right - left), static_cast<DWORD>(bottom - top), left, 0,
                      0, static_cast<UINT>(bottom - top), view.RowBytes(top), &info,
                      DIB_RGB_COLORS);
  last_presented_ = CRect(left, top, right, bottom);
  ++present_count_;
  const std::size_t size = static_cast<std::size_t>(view.width) * static_cast<std::size_t>(view.height);
  if (shown_.size() != size) shown_.assign(size, 0);
  for (int y = top; y < bottom; ++y) {
    std::copy(view.Row32(y) + left, view.Row32(y) + right,
              shown_.begin() + static_cast<std::ptrdiff_t>(y) * view.width + left);
  }
}

void Win32Port::ShowChanges() {
  if (hwnd_ == nullptr) return;
  const gdi::BitmapView view = gdi::BitmapPixels(front_.bitmap());
  if (view.bits == nullptr || view.bits_per_pixel != 32) return;
  if (shown_.size() !=
      static_cast<std::size_t>(view.width) * static_cast<std::size_t>(view.height)) {
    FrontChanged(CRect(0, 0, view.width, view.height));
    last_changed_pixels_ = static_cast<long long>(view.width) * view.height;
    return;
  }
  // Each changed row's span; consecutive rows with the same span go out as one rectangle (a
  // moving cross-hair is a few full rows and one narrow column band, not the whole window).
  ::HDC dc = nullptr;
  long long changed = 0;
  CRect band(0, 0, 0, 0);
  auto flush = [&] {
    if (band.IsRectEmpty()) return;
    if (dc == nullptr) dc = ::GetDC(Native(hwnd_));
    if (dc != nullptr) Present(dc, band);
    changed += static_cast<long long>(band.Width()) * band.Height();
    band = CRect(0, 0, 0, 0);
  };
  for (int y = 0; y < view.height; ++y) {
    const std::uint32_t* row = view.Row32(y);
    const std::uint32_t* old = shown_.data() + static_cast<std::ptrdiff_t>(y) * view.width;
    int x0 = 0;
    while (x0 < view.width && row[x0] == old[x0]) ++x0;
    if (x0 == view.width) {
      flush();
      continue;
    }
    int x1 = view.width;
    while (row[x1 - 1] == old[x1 - 1]) --x1;
    if (!band.IsRectEmpty() && band.left == x0 && band.right == x1 && band.bottom == y) {
      band.bottom = y + 1;
    } else {
      flush();
      band = CRect(x0, y, x1, y + 1);
    }
  }
  flush();
  if (dc != nullptr) ::ReleaseDC(Native(hwnd_), dc);
  last_changed_pixels_ = changed;
}

std::intptr_t Win32Port::HandleMessage(void* native_hwnd, unsigned message, std::uintptr_t wparam,
                                       std::intptr_t lparam) {
  // Messages arrive while CreateWindowEx runs, before it has returned the handle.
  if (hwnd_ == nullptr && message == WM_NCCREATE) hwnd_ = native_hwnd;
  ::HWND hwnd = Native(native_hwnd);
  switch (message) {
    case WM_NCDESTROY:
      if (wnd_ != nullptr) wnd_->DetachPort();
      wnd_ = nullptr;
      hwnd_ = nullptr;
      ::SetWindowLongPtrA(hwnd, GWLP_USERDATA, 0);
      return ::DefWindowProcA(hwnd, message, wparam, lparam);
    case WM_ERASEBKGND:
      return 1;  // the paint covers every pixel
    case WM_GETDLGCODE:
      return DLGC_WANTALLKEYS | DLGC_WANTARROWS | DLGC_WANTCHARS;
    case WM_MOUSEACTIVATE:
      ::SetFocus(hwnd);
      return MA_ACTIVATE;
    case WM_SIZE:
      front_.Resize(GET_X_LPARAM(lparam), GET_Y_LPARAM(lparam), /*keep_pixels=*/true);
      break;
    case WM_PAINT: {
      PAINTSTRUCT ps;
      ::HDC dc = ::BeginPaint(hwnd, &ps);
      painting_ = true;
      if (wnd_ != nullptr) wnd_->WindowProc(WM_PAINT, 0, 0);
      painting_ = false;
      Present(dc, CRect(ps.rcPaint.left, ps.rcPaint.top, ps.rcPaint.right, ps.rcPaint.bottom));
      ::EndPaint(hwnd, &ps);
      return 0;
    }
    default:
      break;
  }
  if (wnd_ == nullptr || hwnd_ == nullptr) return ::DefWindowProcA(hwnd, message, wparam, lparam);
  const bool input = IsKeyboardMessage(message) ||
                     (message >= WM_MOUSEFIRST && message <= WM_MOUSELAST);
  if (input && hook_) hook_(message, wparam, false);
  if (IsKeyboardMessage(message)) {
    // A host's own message loop knows nothing of the canvas, so the canvas pre-translates its
    // keys itself, as a framework's loop would before dispatching them.
    MSG msg;
    msg.hwnd = this;
    msg.message = message;
    msg.wParam = wparam;
    msg.lParam = lparam;
    msg.time = static_cast<DWORD>(::GetMessageTime());
    if (wnd_->PreTranslateMessage(&msg)) {
      if (hook_) hook_(message, wparam, true);
      return 0;
    }
  }
  if (message == WM_LBUTTONDOWN || message == WM_RBUTTONDOWN) ::SetCapture(hwnd);
  if ((message == WM_LBUTTONUP || message == WM_RBUTTONUP) &&
      (wparam & (MK_LBUTTON | MK_RBUTTON)) == 0) {
    ::ReleaseCapture();
  }
  const LRESULT result = wnd_->WindowProc(message, wparam, lparam);
  if (input && hook_ && wnd_ != nullptr) hook_(message, wparam, true);
  if (input) ShowChanges();
  return result;
}

}  // namespace qvis
