#include "apps/qvis-win32/host_frame.h"

#include <commdlg.h>

#include <iterator>

#include "qvis/compat/exceptions.h"
#include "qvis/design/design.h"
#include "qvis/design/design_objects.h"

namespace win32host {
namespace {

constexpr const char* kFrameClass = "qvisHostFrame";
constexpr int kStatusHeight = 22;
constexpr int kCanvasId = 1;

template <class Cmd>
void StartCommand(CQVIS_Design* d, Cmd* cmd) {
  if (cmd->IsActived()) return;
  d->AllDeactiveCmd();
  cmd->Active();
}

// Each command: its menu text (with the accelerator shown after a tab) and its key.
struct MenuEntry {
  int command;
  const char* text;
  BYTE modifiers;  // FVIRTKEY plus FCONTROL / FSHIFT
  WORD key;
};

constexpr MenuEntry kDrawMenu[] = {
    {kSelect, "&Select\tF2", FVIRTKEY, VK_F2},
    {kTrack, "&Track\tCtrl+T", FVIRTKEY | FCONTROL, 'T'},
    {kArc, "&Arc\tCtrl+A", FVIRTKEY | FCONTROL, 'A'},
    {kCircle, "&Circle\tCtrl+I", FVIRTKEY | FCONTROL, 'I'},
    {kCircle3, "&3-point circle\tCtrl+3", FVIRTKEY | FCONTROL, '3'},
    {kRectangle, "&Rectangle\tCtrl+R", FVIRTKEY | FCONTROL, 'R'},
    {kPolygon, "&Polygon\tCtrl+P", FVIRTKEY | FCONTROL, 'P'},
    {kRoundPad, "R&ound pad\tCtrl+1", FVIRTKEY | FCONTROL, '1'},
    {kSquarePad, "S&quare pad\tCtrl+2", FVIRTKEY | FCONTROL, '2'},
    {kObroundPad, "O&bround pad\tCtrl+4", FVIRTKEY | FCONTROL, '4'},
    {kOctagonPad, "Oc&tagon pad\tCtrl+8", FVIRTKEY | FCONTROL, '8'},
};
constexpr MenuEntry kViewMenu[] = {
    {kZoomBox, "Zoom &box\tCtrl+B", FVIRTKEY | FCONTROL, 'B'},
    {kZoomIn, "Zoom &in\tCtrl+Up", FVIRTKEY | FCONTROL, VK_UP},
    {kZoomOut, "Zoom &out\tCtrl+Down", FVIRTKEY | FCONTROL, VK_DOWN},
    {kZoomAll, "Zoom &all\tCtrl+Home", FVIRTKEY | FCONTROL, VK_HOME},
};
constexpr MenuEntry kFileMenu[] = {
    {kOpen, "&Open view...\tCtrl+O", FVIRTKEY | FCONTROL, 'O'},
    {kSave, "&Save view...\tCtrl+S", FVIRTKEY | FCONTROL, 'S'},
    {kExit, "E&xit\tCtrl+Q", FVIRTKEY | FCONTROL, 'Q'},
};

template <std::size_t N>
HMENU MakeMenu(const MenuEntry (&entries)[N], std::vector<ACCEL>* accels) {
  HMENU menu = ::CreatePopupMenu();
  for (const MenuEntry& e : entries) {
    ::AppendMenuA(menu, MF_STRING, static_cast<UINT_PTR>(e.command), e.text);
    accels->push_back(ACCEL{e.modifiers, e.key, static_cast<WORD>(e.command)});
  }
  return menu;
}

}  // namespace

HostFrame::HostFrame(int width, int height) {
  HINSTANCE instance = ::GetModuleHandleA(nullptr);
  WNDCLASSEXA wc{};
  wc.cbSize = sizeof wc;
  wc.lpfnWndProc = &HostFrame::FrameProc;
  wc.hInstance = instance;
  wc.hCursor = ::LoadCursor(nullptr, IDC_ARROW);
  wc.hbrBackground = reinterpret_cast<HBRUSH>(COLOR_BTNFACE + 1);
  wc.lpszClassName = kFrameClass;
  ::RegisterClassExA(&wc);  // fails harmlessly when a second frame registers it again

  std::vector<ACCEL> accels;
  HMENU bar = ::CreateMenu();
  ::AppendMenuA(bar, MF_POPUP, reinterpret_cast<UINT_PTR>(MakeMenu(kFileMenu, &accels)), "&File");
  ::AppendMenuA(bar, MF_POPUP, reinterpret_cast<UINT_PTR>(MakeMenu(kDrawMenu, &accels)), "&Draw");
  ::AppendMenuA(bar, MF_POPUP, reinterpret_cast<UINT_PTR>(MakeMenu(kViewMenu, &accels)), "&View");
  accelerators_ = ::CreateAcceleratorTableA(accels.data(), static_cast<int>(accels.size()));

  RECT r{0, 0, width, height + kStatusHeight};
  const DWORD style = WS_OVERLAPPEDWINDOW | WS_CLIPCHILDREN;
  ::AdjustWindowRect(&r, style, TRUE);
  frame_ = ::CreateWindowExA(0, kFrameClass, "qvis", style, 0, 0, r.right - r.left,
                             r.bottom - r.top, nullptr, bar, instance, this);
  if (frame_ == nullptr) return;
  status_ = ::CreateWindowExA(0, "STATIC", "", WS_CHILD | WS_VISIBLE | SS_LEFT | SS_SUNKEN, 0,
                              height, width, kStatusHeight, frame_, nullptr, instance, nullptr);
  port_ = std::make_unique<qvis::Win32Port>(frame_, 0, 0, width, height, kCanvasId);
  window_.SetFigureListener(&taker_);  // finished figures join the document; the window repaints
  window_.Create(port_.get());
  Layout();
  ShowState();
}

HostFrame::~HostFrame() {
  port_.reset();  // detaches the window and destroys the canvas before the frame
  if (frame_ != nullptr) {
    ::SetWindowLongPtrA(frame_, GWLP_USERDATA, 0);
    ::DestroyWindow(frame_);
  }
  if (accelerators_ != nullptr) ::DestroyAcceleratorTable(accelerators_);
}

void HostFrame::Run(int command) {
  CQVIS_Design* d = design();
  switch (command) {
    case kSelect: window_.OnEditSelect(); break;
    case kTrack: window_.OnDrawLine(); break;
    case kArc: window_.OnDrawArc(); break;
    case kCircle: StartCommand(d, d->m_pDrawCircleCmd); break;
    case kCircle3: StartCommand(d, d->m_pDraw3PCircleCmd); break;
    case kRectangle: window_.OnDrawRectangle(); break;
    case kPolygon: window_.OnDrawPolygon(); break;
    case kRoundPad:
      d->m_pDrawFlashCircleCmd->SetDiameter(1.6);
      d->m_pDrawFlashCircleCmd->SetHoleSize(0.8, 0.0);
      StartCommand(d, d->m_pDrawFlashCircleCmd);
      break;
    case kSquarePad:
      d->m_pDrawFlashRectCmd->SetSquare(1.6);
      d->m_pDrawFlashRectCmd->SetHoleSize(0.8, 0.0);
      StartCommand(d, d->m_pDrawFlashRectCmd);
      break;
    case kObroundPad:
      d->m_pDrawFlashObroundCmd->SetWidth(2.4);
      d->m_pDrawFlashObroundCmd->SetHeight(1.4);
      d->m_pDrawFlashObroundCmd->SetHoleSize(0.8, 0.0);
      StartCommand(d, d->m_pDrawFlashObroundCmd);
      break;
    case kOctagonPad:
      d->m_pDrawFlashPolygonCmd->SetDiameter(2.0);
      d->m_pDrawFlashPolygonCmd->SetSideCount(8);
      d->m_pDrawFlashPolygonCmd->SetHoleSize(0.8, 0.0);
      StartCommand(d, d->m_pDrawFlashPolygonCmd);
      break;
    case kZoomBox: window_.OnZoomZoombox(); break;
    case kZoomIn: window_.OnZoomZoomin(); break;
    case kZoomOut: window_.OnZoomZoomout(); break;
    case kZoomAll: window_.OnZoomZoomall(); break;
    case kSave:
    case kOpen: {
      char path[MAX_PATH] = "";
      OPENFILENAMEA ofn{};
      ofn.lStructSize = sizeof ofn;
      ofn.hwndOwner = frame_;
      ofn.lpstrFile = path;
      ofn.nMaxFile = sizeof path;
      ofn.lpstrFilter = "Designs (*.qvd)\0*.qvd\0All files\0*.*\0";
      ofn.Flags = command == kOpen ? OFN_FILEMUSTEXIST : OFN_OVERWRITEPROMPT;
      const BOOL chosen = command == kOpen ? ::GetOpenFileNameA(&ofn) : ::GetSaveFileNameA(&ofn);
      if (!chosen) return;
      try {
        if (command == kOpen) {
          d->LoadFromFile(path);
        } else {
          d->SaveToFile(path);
        }
      } catch (const CException& e) {
        ::MessageBoxA(frame_, e.what(), "qvis", MB_OK | MB_ICONWARNING);
      }
      break;
    }
    case kExit:
      ::PostMessageA(frame_, WM_CLOSE, 0, 0);
      return;
    default:
      return;
  }
  port_->Invalidate(true);
  ShowState();
  port_->SetFocus();
}

std::string HostFrame::StatusText() const {
  return const_cast<qvis::session::SessionWindow&>(window_).GetDesign()->GetCurrentProcInfo().GetString();
}

void HostFrame::ShowState() {
  if (status_ != nullptr) ::SetWindowTextA(status_, StatusText().c_str());
}

void HostFrame::Layout() {
  if (frame_ == nullptr || port_ == nullptr) return;
  RECT r;
  ::GetClientRect(frame_, &r);
  const int canvas_height = std::max(0, static_cast<int>(r.bottom) - kStatusHeight);
  ::MoveWindow(canvas(), 0, 0, r.right, canvas_height, TRUE);
  if (status_ != nullptr) ::MoveWindow(status_, 0, canvas_height, r.right, kStatusHeight, TRUE);
}

int HostFrame::MessageLoop() {
  ::MSG msg;
  while (::GetMessageA(&msg, nullptr, 0, 0) > 0) {
    if (::TranslateAcceleratorA(frame_, accelerators_, &msg)) continue;
    ::TranslateMessage(&msg);
    ::DispatchMessageA(&msg);
  }
  return static_cast<int>(msg.wParam);
}

LRESULT CALLBACK HostFrame::FrameProc(HWND hwnd, UINT message, WPARAM wparam, LPARAM lparam) {
  if (message == WM_NCCREATE) {
    const auto* create = reinterpret_cast<const CREATESTRUCTA*>(lparam);
    ::SetWindowLongPtrA(hwnd, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(create->lpCreateParams));
  }
  auto* self = reinterpret_cast<HostFrame*>(::GetWindowLongPtrA(hwnd, GWLP_USERDATA));
  if (self == nullptr || self->frame_ == nullptr) {
    return ::DefWindowProcA(hwnd, message, wparam, lparam);
  }
  return self->Handle(message, wparam, lparam);
}

LRESULT HostFrame::Handle(UINT message, WPARAM wparam, LPARAM lparam) {
  switch (message) {
    case WM_COMMAND:
      Run(LOWORD(wparam));
      return 0;
    case WM_SIZE:
      Layout();
      return 0;
    case WM_SETFOCUS:
      if (port_ != nullptr) port_->SetFocus();
      return 0;
    case WM_KEYDOWN:
      // The canvas tells its parent that Esc or Enter ended a command step.
      if (wparam == 0 && lparam == 0) {
        ++parent_keys_;
        ShowState();
        return 0;
      }
      break;
    case WM_CLOSE:
      ::ShowWindow(frame_, SW_HIDE);
      if (quit_on_close_) ::PostQuitMessage(0);
      return 0;
    default:
      break;
  }
  return ::DefWindowProcA(frame_, message, wparam, lparam);
}

}  // namespace win32host
