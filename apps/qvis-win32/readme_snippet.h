// The README's embedding snippet as a host runs it (readme_snippet.cc is generated from
// README.md): a frame's child canvas made by the snippet's own lines.
#ifndef APPS_QVIS_WIN32_README_SNIPPET_H_
#define APPS_QVIS_WIN32_README_SNIPPET_H_

#include <windows.h>

#include <memory>

#include "qvis/window/drawing_window.h"
#include "qvis/window/win32/win32_port.h"

struct ReadmeCanvas {
  // Embed runs the snippet inside the frame `hwnd` (as its WM_CREATE would).
  void Embed(HWND hwnd);

  std::unique_ptr<qvis::Win32Port> port;
  CQVIS_Wnd wnd;  // destroyed before the port it lives on
};

#endif  // APPS_QVIS_WIN32_README_SNIPPET_H_
