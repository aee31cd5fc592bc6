// HostFrame: the Windows host of a qvis canvas, the part a Windows developer copies to embed
// qvis: a frame window with a menu and keyboard accelerators for every command, the canvas as
// a child window filling it, and a status line that shows the active command. Figures the
// commands finish are kept by the host (HostDocument) and drawn by its window's drawing hook.
#ifndef APPS_QVIS_WIN32_HOST_FRAME_H_
#define APPS_QVIS_WIN32_HOST_FRAME_H_

#include <windows.h>

#include <memory>
#include <string>

#include "apps/qvis-session/host_document.h"
#include "apps/qvis-session/session.h"
#include "qvis/window/win32/win32_port.h"

namespace win32host {

// Menu command ids (WM_COMMAND).
enum Command : int {
  kSelect = 100,
  kTrack,
  kArc,
  kCircle,
  kCircle3,
  kRectangle,
  kPolygon,
  kRoundPad,
  kSquarePad,
  kObroundPad,
  kOctagonPad,
  kZoomBox,
  kZoomIn,
  kZoomOut,
  kZoomAll,
  kSave,
  kOpen,
  kExit,
};

class HostFrame {
 public:
  // HostFrame: creates the frame (client width x height, not yet shown) with its menu, its
  // canvas and its status line. ok() tells whether everything was made.
  HostFrame(int width, int height);
  ~HostFrame();
  HostFrame(const HostFrame&) = delete;
  HostFrame& operator=(const HostFrame&) = delete;

  bool ok() const { return frame_ != nullptr && port_ != nullptr && port_->ok(); }
  HWND frame() const { return frame_; }
  HWND canvas() const { return port_ ? static_cast<HWND>(port_->native_handle()) : nullptr; }
  HACCEL accelerators() const { return accelerators_; }
  qvis::Win32Port& port() { return *port_; }
  qvis::session::SessionWindow& window() { return window_; }
  qvis::session::HostDocument& document() { return document_; }
  CQVIS_Design* design() { return window_.GetDesign(); }

  // Run: carries out a menu command, as the menu or an accelerator does.
  void Run(int command);
  // StatusText: what the status line shows (the active command).
  std::string StatusText() const;
  // ParentKeyMessages: how many WM_KEYDOWN (0, 0) the canvas sent to the frame (Esc, Enter).
  int ParentKeyMessages() const { return parent_keys_; }
  // When the frame is closed: quit the message loop (the program's frame) or not (a test's).
  void SetQuitOnClose(bool quit) { quit_on_close_ = quit; }

  // MessageLoop: the host's loop, with the accelerators, until WM_QUIT. Returns its code.
  int MessageLoop();

 private:
  static LRESULT CALLBACK FrameProc(HWND hwnd, UINT message, WPARAM wparam, LPARAM lparam);
  LRESULT Handle(UINT message, WPARAM wparam, LPARAM lparam);
  void Layout();
  void ShowState();

  qvis::session::HostDocument document_;
  qvis::session::FigureTaker taker_{&document_};
  qvis::session::SessionWindow window_{&document_};
  HWND frame_ = nullptr;
  HWND status_ = nullptr;
  HACCEL accelerators_ = nullptr;
  std::unique_ptr<qvis::Win32Port> port_;
  int parent_keys_ = 0;
  bool quit_on_close_ = true;
};

}  // namespace win32host

#endif  // APPS_QVIS_WIN32_HOST_FRAME_H_
