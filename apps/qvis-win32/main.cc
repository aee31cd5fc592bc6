// qvis-win32: the Windows host program: a frame with the canvas, its menu and accelerators and
// a status line (see host_frame.h).
//   qvis-win32                       the interactive program
//   qvis-win32 --demo SECONDS        places a track and a pad through real window messages,
//                                    shows the frame for SECONDS and quits
//   ... --screenshot FILE.png        with --demo: the frame as the screen shows it, read back
//                                    from the screen's DC, written as a PNG before quitting
#include <windows.h>

#include <cstdlib>
#include <cstring>
#include <vector>

#include "apps/qvis-win32/host_frame.h"
#include "qvis/compat/win32_names.h"
#include "qvis/gdi/png_io.h"

namespace {

// Click: a left click at a client pixel of the canvas, as the system delivers it.
void Click(HWND canvas, int x, int y) {
  const LPARAM at = MAKELPARAM(x, y);
  ::SendMessageA(canvas, WM_MOUSEMOVE, 0, at);
  ::SendMessageA(canvas, WM_LBUTTONDOWN, MK_LBUTTON, at);
  ::SendMessageA(canvas, WM_LBUTTONUP, 0, at);
}

// Screenshot: the window's rectangle of the screen, as the system composed it.
bool Screenshot(HWND hwnd, const char* path) {
  RECT r;
  ::GetWindowRect(hwnd, &r);
  const int w = r.right - r.left, h = r.bottom - r.top;
  if (w <= 0 || h <= 0) return false;
  HDC screen = ::GetDC(nullptr);
  HDC mem = ::CreateCompatibleDC(screen);
  BITMAPINFO info{};
  info.bmiHeader.biSize = sizeof(BITMAPINFOHEADER);
  info.bmiHeader.biWidth = w;
  info.bmiHeader.biHeight = -h;
  info.bmiHeader.biPlanes = 1;
  info.bmiHeader.biBitCount = 32;
  void* bits = nullptr;
  HBITMAP dib = ::CreateDIBSection(screen, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
  HGDIOBJ old = ::SelectObject(mem, dib);
  ::BitBlt(mem, 0, 0, w, h, screen, r.left, r.top, SRCCOPY);
  ::GdiFlush();
  const bool ok = qvis::gdi::WritePngRows(static_cast<const std::uint32_t*>(bits), w, h, w, path);
  ::SelectObject(mem, old);
  ::DeleteObject(dib);
  ::DeleteDC(mem);
  ::ReleaseDC(nullptr, screen);
  return ok;
}

}  // namespace

int WINAPI WinMain(HINSTANCE, HINSTANCE, LPSTR, int show) {
  int demo_seconds = -1;
  const char* screenshot = nullptr;
  for (int i = 1; i + 1 < __argc; ++i) {
    if (std::strcmp(__argv[i], "--demo") == 0) demo_seconds = std::atoi(__argv[i + 1]);
    if (std::strcmp(__argv[i], "--screenshot") == 0) screenshot = __argv[i + 1];
  }
  win32host::HostFrame frame(800, 560);
  if (!frame.ok()) return 1;
  ::ShowWindow(frame.frame(), demo_seconds >= 0 ? SW_SHOWNORMAL : show);
  ::UpdateWindow(frame.frame());
  if (demo_seconds >= 0) {
    HWND canvas = frame.canvas();
    frame.Run(win32host::kTrack);
    Click(canvas, 200, 300);
    Click(canvas, 400, 300);
    Click(canvas, 560, 160);
    ::SendMessageA(canvas, WM_KEYDOWN, VK_RETURN, 1);
    ::SendMessageA(canvas, WM_KEYUP, VK_RETURN, static_cast<LPARAM>(0xC0000001u));
    frame.Run(win32host::kRoundPad);
    Click(canvas, 560, 160);
    ::RedrawWindow(frame.frame(), nullptr, nullptr,
                   RDW_INVALIDATE | RDW_UPDATENOW | RDW_ALLCHILDREN | RDW_FRAME);
    if (screenshot != nullptr && !Screenshot(frame.frame(), screenshot)) return 1;
    ::SetTimer(frame.frame(), 1, static_cast<UINT>(demo_seconds) * 1000u,
               [](HWND hwnd, UINT, UINT_PTR, DWORD) { ::PostMessageA(hwnd, WM_CLOSE, 0, 0); });
  }
  return frame.MessageLoop();
}
