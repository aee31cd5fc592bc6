// qvis-win32: the Windows host program: a frame with the canvas, its menu and accelerators and
// a status line (see host_frame.h).
//   qvis-win32                       the interactive program
//   qvis-win32 --demo SECONDS        places a track and a pad through real window messages,
//                                    shows the frame for SECONDS and quits (for a screenshot)
#include <windows.h>

#include <cstdlib>
#include <cstring>

#include "apps/qvis-win32/host_frame.h"
#include "qvis/compat/win32_names.h"

namespace {

// Click: a left click at a client pixel of the canvas, as the system delivers it.
void Click(HWND canvas, int x, int y) {
  const LPARAM at = MAKELPARAM(x, y);
  ::SendMessageA(canvas, WM_MOUSEMOVE, 0, at);
  ::SendMessageA(canvas, WM_LBUTTONDOWN, MK_LBUTTON, at);
  ::SendMessageA(canvas, WM_LBUTTONUP, 0, at);
}

}  // namespace

int WINAPI WinMain(HINSTANCE, HINSTANCE, LPSTR, int show) {
  int demo_seconds = -1;
  for (int i = 1; i + 1 < __argc; ++i) {
    if (std::strcmp(__argv[i], "--demo") == 0) demo_seconds = std::atoi(__argv[i + 1]);
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
    ::SetTimer(frame.frame(), 1, static_cast<UINT>(demo_seconds) * 1000u,
               [](HWND hwnd, UINT, UINT_PTR, DWORD) { ::PostMessageA(hwnd, WM_CLOSE, 0, 0); });
  }
  return frame.MessageLoop();
}
