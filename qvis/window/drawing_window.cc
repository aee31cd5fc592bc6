// Message routing of the drawing window: every handler turns a client pixel into world points
// (unsnapped for selection, zoom box and pan; snapped for the drawing commands) and hands them to
// the design's managers and commands in a fixed order.
#include "qvis/window/drawing_window.h"

#include <memory>
#include <utility>

#include "qvis/compat/key_state.h"
#include "qvis/compat/redraw.h"
#include "qvis/compat/win32_names.h"
#include "qvis/coords/zoom_range.h"
#include "qvis/design/design.h"
#include "qvis/design/design_objects.h"
#include "qvis/design/render_buffer.h"
#include "qvis/window/window_port.h"

namespace {

// The parent's notification of Esc and Enter carries no key: the parent reads the state it
// needs from the design.
constexpr WPARAM kNotifyWParam = 0;
constexpr LPARAM kNotifyLParam = 0;
// Wheel zoom factors: one notch zooms by 1.5, by 2.5 with Shift held.
constexpr double kWheelFactor = 1.5;
constexpr double kWheelShiftFactor = 2.5;
// Zoom-all margin handed to the design's ZoomAll hook.
constexpr double kZoomAllFill = 0.02;
// Defaults the window gives a track, arc, rectangle or polygon when the host starts it.
constexpr double kDefaultTrackWidth = 0.4;
constexpr COLORREF kCommandRed = 0x0000FF;

// IsDown, IsAsyncDown: whether a key is held in the window's own port (no port: no).
bool IsDown(const qvis::WindowPort* port, int virtual_key) {
  const qvis::KeyStateSource* keys = port != nullptr ? port->KeyStates() : nullptr;
  return (qvis::GetKeyState(keys, virtual_key) & 0x8000) != 0;
}
bool IsAsyncDown(const qvis::WindowPort* port, int virtual_key) {
  const qvis::KeyStateSource* keys = port != nullptr ? port->KeyStates() : nullptr;
  return (qvis::GetAsyncKeyState(keys, virtual_key) & 0x8000) != 0;
}

CPoint PointFromLParam(LPARAM lp) {
  return CPoint(static_cast<short>(lp & 0xFFFF), static_cast<short>((lp >> 16) & 0xFFFF));
}

// ForEachCommand calls `fn` with each command given that exists, in the order given: the order
// in which the window hands a message on.
template <class Fn, class... Cmd>
void ForEachCommand(Fn&& fn, Cmd*... cmds) {
  (..., [&] {
    if (cmds != nullptr) fn(cmds);
  }());
}

// StartCommand makes `cmd` the one active command: unless it is missing or already active,
// every command is deactivated, `setup` gives it the window's defaults and it is activated.
template <class Cmd, class Setup>
void StartCommand(CQVIS_Design* design, Cmd* cmd, Setup&& setup) {
  if (cmd == nullptr || cmd->IsActived()) return;
  design->AllDeactiveCmd();
  setup(*cmd);
  cmd->Active();
}

}  // namespace

CQVIS_Wnd::CQVIS_Wnd()
    : m_pDesign(nullptr), m_nInitLayerID(1), design_(std::make_unique<CQVIS_Design>()) {
  m_pDesign = design_.get();
}

CQVIS_Wnd::~CQVIS_Wnd() {
  if (m_pPort != nullptr) m_pPort->Bind(nullptr);
  m_pDesign = nullptr;  // design_ deletes it with everything it owns
}

void CQVIS_Wnd::SetDesign(std::unique_ptr<CQVIS_Design> design) {
  if (design == nullptr) return;
  design_ = std::move(design);
  m_pDesign = design_.get();
}

BOOL CQVIS_Wnd::Create(qvis::WindowPort* port) {
  if (port == nullptr || m_pPort != nullptr) return FALSE;
  m_pPort = port;
  port->Bind(this);
  // The layers below the window (the zoom box, selection, the mouse pan) read this port's keys
  // and repaint through it: the link lives on this window's surface, nowhere else.
  if (m_pDesign != nullptr && m_pDesign->m_pSurface != nullptr) {
    m_pDesign->m_pSurface->SetWindowLink(port->KeyStates(), [port](qvis::HWND, UINT) -> BOOL {
      port->RedrawNow();
      return TRUE;
    });
  }
  if (WindowProc(WM_CREATE, 0, 0) == -1) {
    port->Bind(nullptr);
    m_pPort = nullptr;
    if (m_pDesign != nullptr && m_pDesign->m_pSurface != nullptr) {
      m_pDesign->m_pSurface->SetWindowLink(nullptr, nullptr);
    }
    return FALSE;
  }
  const CRect client = port->GetClientRect();
  WindowProc(WM_SIZE, 0, qvis::PackPointLParam(client.Width(), client.Height()));
  port->Invalidate(true);  // the first paint comes with the next turn of the message loop
  return TRUE;
}

void CQVIS_Wnd::DetachPort() {
  if (m_pPort != nullptr) m_pPort->Bind(nullptr);
  m_pPort = nullptr;
  if (m_pDesign == nullptr || m_pDesign->m_pSurface == nullptr) return;
  m_pDesign->m_pSurface->SetWindowLink(nullptr, nullptr);
  // Nothing may draw into the port's front buffer once the port is gone: the rubber bands
  // fall back to the back buffer, which the design owns.
  m_pDesign->m_pRenderBuffer->Attach(nullptr, nullptr, 0, 0);
  m_pDesign->m_pSurface->SetHandles(nullptr, m_pDesign->m_pRenderBuffer->GetDC(), nullptr);
  m_pDesign->ShareSurfaceDCs();
}

void CQVIS_Wnd::UpdateInformation(CString /*text*/) {}

void CQVIS_Wnd::Enable() {
  if (m_pPort != nullptr) m_pPort->EnableInput(true);
}

void CQVIS_Wnd::Disable() {
  if (m_pPort != nullptr) m_pPort->EnableInput(false);
}

void CQVIS_Wnd::OnDrawHost(CQVIS_GDI* /*surface*/, qvis::HDC /*dc*/) {}

LRESULT CQVIS_Wnd::Default() {
  if (m_pPort == nullptr) return 0;
  return m_pPort->DefaultProc(current_);
}

void CQVIS_Wnd::Invalidate() {
  if (m_pPort != nullptr) m_pPort->Invalidate(true);
}

void CQVIS_Wnd::RedrawNow() {
  if (m_pPort != nullptr) m_pPort->RedrawNow();
}

CSize CQVIS_Wnd::ClientSize() const {
  if (m_pPort == nullptr) return CSize(0, 0);
  const CRect r = m_pPort->GetClientRect();
  return CSize(r.Width(), r.Height());
}

void CQVIS_Wnd::SetFigureListener(qvis::FigureListener* listener) {
  figure_watch_.set_listener(listener);
}

namespace {
// Leaves the dispatch depth as it was however the handler ends.
struct DepthGuard {
  explicit DepthGuard(int& d) : depth(d) { ++depth; }
  ~DepthGuard() { --depth; }
  int& depth;
};
}  // namespace

bool CQVIS_Wnd::FigureWatchBegin(UINT message, WPARAM wParam) {
  if (dispatch_depth_ != 0 || figure_watch_.listener() == nullptr) return false;
  figure_watch_.Before(m_pDesign, message, wParam);
  return true;
}

void CQVIS_Wnd::FigureWatchEnd(bool outer, UINT message, WPARAM wParam) {
  if (outer && figure_watch_.After(m_pDesign, message, wParam)) Invalidate();
}

LRESULT CQVIS_Wnd::WindowProc(UINT message, WPARAM wParam, LPARAM lParam) {
  const bool outer = FigureWatchBegin(message, wParam);
  LRESULT result = 0;
  {
    DepthGuard depth(dispatch_depth_);
    result = Dispatch(message, wParam, lParam);
  }
  FigureWatchEnd(outer, message, wParam);
  return result;
}

LRESULT CQVIS_Wnd::Dispatch(UINT message, WPARAM wParam, LPARAM lParam) {
  // Handlers may re-enter WindowProc (an immediate repaint), so the current message is saved
  // and restored around the call.
  const qvis::MSG saved = current_;
  current_.hwnd = m_pPort;
  current_.message = message;
  current_.wParam = wParam;
  current_.lParam = lParam;
  const UINT flags = static_cast<UINT>(wParam & 0xFFFF);
  const CPoint point = PointFromLParam(lParam);
  LRESULT result = 0;
  switch (message) {
    case WM_CREATE:
      result = OnCreate(reinterpret_cast<void*>(lParam));
      break;
    case WM_PAINT:
      OnPaint();
      break;
    case WM_ERASEBKGND:
      result = OnEraseBkgnd(reinterpret_cast<qvis::HDC>(wParam));
      break;
    case WM_MOUSEMOVE:
      OnMouseMove(flags, point);
      break;
    case WM_MOUSEWHEEL:
      result = OnMouseWheel(flags, static_cast<short>((wParam >> 16) & 0xFFFF), point);
      break;
    case WM_SIZE:
      OnSize(static_cast<UINT>(wParam), point.x & 0xFFFF, point.y & 0xFFFF);
      break;
    case WM_LBUTTONDBLCLK:
      OnLButtonDblClk(flags, point);
      break;
    case WM_LBUTTONDOWN:
      OnLButtonDown(flags, point);
      break;
    case WM_LBUTTONUP:
      OnLButtonUp(flags, point);
      break;
    case WM_RBUTTONDOWN:
      OnRButtonDown(flags, point);
      break;
    case WM_RBUTTONUP:
      OnRButtonUp(flags, point);
      break;
    case WM_KEYDOWN:
      OnKeyDown(static_cast<UINT>(wParam), static_cast<UINT>(lParam & 0xFFFF),
                static_cast<UINT>((lParam >> 16) & 0xFFFF));
      break;
    default:
      result = Default();
      break;
  }
  current_ = saved;
  return result;
}

BOOL CQVIS_Wnd::PreTranslateMessage(qvis::MSG* pMsg) {
  if (pMsg == nullptr) return FALSE;
  const bool escape = IsDown(m_pPort, VK_ESCAPE);
  const bool enter = IsDown(m_pPort, VK_RETURN);
  if (escape || enter) {
    const WPARAM key = enter ? VK_RETURN : VK_ESCAPE;
    const bool outer = FigureWatchBegin(WM_KEYDOWN, key);
    {
      DepthGuard depth(dispatch_depth_);
      if (escape) OnKeyDown(VK_ESCAPE, 1, 0);
      if (enter) OnKeyDown(VK_RETURN, 1, 0);
    }
    FigureWatchEnd(outer, WM_KEYDOWN, key);
    if (m_pPort != nullptr) m_pPort->SendToParent(WM_KEYDOWN, kNotifyWParam, kNotifyLParam);
    return TRUE;
  }
  // Alt+1 fits the design whatever the message is, as long as it carries the "1" key.
  if (IsDown(m_pPort, VK_MENU) && pMsg->wParam == 0x31) OnZoomZoomall();
  if (pMsg->message == WM_CHAR) {
    if (pMsg->wParam == '+') {
      OnZoomZoomin();
    } else if (pMsg->wParam == '-') {
      OnZoomZoomout();
    }
  }
  return FALSE;
}

// ---------------------------------------------------------------------------------------------
// Creation, size and paint.

int CQVIS_Wnd::OnCreate(void* /*lpCreateStruct*/) {
  if (Default() == -1) return -1;
  CQVIS_Design* d = m_pDesign;
  const CSize size = ClientSize();
  qvis::HDC front = m_pPort->FrontDC();
  d->m_pRenderBuffer->Attach(m_pPort, front, size.cx, size.cy);
  qvis::HDC back = d->m_pRenderBuffer->GetDC();
  d->m_pSurface->SetHandles(m_pPort, back, front);
  d->m_pSurface->SetCDC(nullptr);
  d->Init();
  d->SetCurrentLayerID(m_nInitLayerID);
  if (d->m_pCursorMgr != nullptr) d->m_pCursorMgr->On();
  d->m_pCoords->ActivateSnap();
  d->AllDeactiveCmd();
  if (d->m_pSelectCmd != nullptr) d->m_pSelectCmd->Active();
  return 0;
}

void CQVIS_Wnd::OnSize(UINT /*nType*/, int cx, int cy) {
  Default();
  m_pDesign->m_pRenderBuffer->SetViewport(0, 0, cx, cy);
}

BOOL CQVIS_Wnd::OnEraseBkgnd(qvis::HDC /*hdc*/) { return static_cast<BOOL>(Default()); }

void CQVIS_Wnd::OnPaint() {
  if (m_pPort == nullptr) return;
  CQVIS_Design* d = m_pDesign;
  CQVIS_GDI* surface = d->m_pSurface;
  qvis::RenderBuffer* buffer = d->m_pRenderBuffer;
  buffer->BeginFrame(surface->GetBkColor());
  const CSize size = ClientSize();
  qvis::HDC back = buffer->GetDC();
  surface->PrepareNullBrush(back);
  if (CQVIS_GridSnapMgr* grid = d->m_pGridSnapMgr) {
    if (grid->GetShowSnap()) grid->DrawSnap(size.cx, size.cy);
    if (grid->GetShowGrid()) grid->DrawGrid(size.cx, size.cy);
    if (grid->GetShowOrigin()) grid->DrawOrigin();
  }
  OnDrawHost(surface, back);
  buffer->Present();

  // The transient figures live only on the front buffer; the fresh frame has wiped them, so
  // each is drawn once more in XOR (an inactive one draws nothing).
  ForEachCommand([](auto* cmd) { cmd->OnDraw(); }, d->m_pZoomMgr, d->m_pSelectCmd,
                 d->m_pDrawLineCmd, d->m_pDrawCircleCmd, d->m_pDraw3PCircleCmd, d->m_pDrawArcCmd,
                 d->m_pDrawRectCmd, d->m_pDrawPolygonCmd, d->m_pDrawFlashCircleCmd,
                 d->m_pDrawFlashRectCmd, d->m_pDrawFlashObroundCmd, d->m_pDrawFlashPolygonCmd);
  if (d->m_pCursorMgr && d->m_pCursorMgr->IsOn()) d->m_pCursorMgr->DrawCursor();
  if (m_pPort != nullptr) m_pPort->FrontChanged(CRect(0, 0, size.cx, size.cy));
}

// ---------------------------------------------------------------------------------------------
// Mouse.

void CQVIS_Wnd::OnMouseMove(UINT /*nFlags*/, CPoint point) {
  CQVIS_Design* d = m_pDesign;
  CQVIS_Coords* c = d->m_pCoords;
  const double wx = c->ScreenXToWorld(point.x);
  const double wy = c->ScreenYToWorld(point.y);
  const double sx = c->ScreenXToWorldSnap(point.x);
  const double sy = c->ScreenYToWorldSnap(point.y);
  d->m_dMouseWorldX = wx;
  d->m_dMouseWorldY = wy;
  d->m_nMouseScreenX = point.x;
  d->m_nMouseScreenY = point.y;

  if (CQVIS_MousePanMgr* pan = d->m_pMousePanMgr) {
    // A release outside the window never reached us: the pan ends without its last scroll.
    if (pan->IsActived() && !IsAsyncDown(m_pPort, VK_RBUTTON)) pan->m_nActive = 0;
    if (pan->IsActived()) pan->MouseMove(wx, wy, 0);
  }
  if (d->m_pZoomMgr && d->m_pZoomMgr->IsActived()) d->m_pZoomMgr->MouseMove(wx, wy);
  if (d->m_pCursorMgr && d->m_pCursorMgr->IsOn()) {
    d->m_pCursorMgr->DrawCursor(point.x, point.y);
  }

  if (d->m_pSelectCmd) d->m_pSelectCmd->MouseMove(wx, wy);
  // The drawing commands get the snapped point (an inactive one ignores it).
  ForEachCommand([&](auto* cmd) { cmd->MouseMove(sx, sy); }, d->m_pDrawLineCmd,
                 d->m_pDrawCircleCmd, d->m_pDraw3PCircleCmd, d->m_pDrawArcCmd, d->m_pDrawRectCmd,
                 d->m_pDrawPolygonCmd, d->m_pDrawFlashCircleCmd, d->m_pDrawFlashObroundCmd,
                 d->m_pDrawFlashRectCmd, d->m_pDrawFlashPolygonCmd);
  Default();
}

BOOL CQVIS_Wnd::OnMouseWheel(UINT /*nFlags*/, short zDelta, CPoint pt) {
  if (m_pPort == nullptr) return 0;
  const CPoint p = m_pPort->ScreenToClient(pt);
  const CSize size = ClientSize();
  if (p.x < 0 || p.y < 0 || p.x > size.cx || p.y > size.cy) return 0;
  CQVIS_Coords* c = m_pDesign->m_pCoords;
  const double wx = c->ScreenXToWorld(p.x);
  const double wy = c->ScreenYToWorld(p.y);
  const double factor = IsAsyncDown(m_pPort, VK_SHIFT) ? kWheelShiftFactor : kWheelFactor;
  if (zDelta == 0) return static_cast<BOOL>(Default());
  // A notch that would take the zoom out of its range does nothing (the view stays usable).
  const bool zoomed = qvis::ZoomWithinRange(*c, [&](CQVIS_Coords& view) {
    if (zDelta > 0) {
      view.ZoomOut(factor);
    } else {
      view.ZoomIn(factor);
    }
    view.ScreenPointToFixedWorldPoint(p.x, p.y, wx, wy);
  });
  if (zoomed) RedrawNow();
  Default();
  return TRUE;
}

void CQVIS_Wnd::OnLButtonDown(UINT /*nFlags*/, CPoint point) {
  if (m_pPort != nullptr) m_pPort->SetFocus();
  CQVIS_Design* d = m_pDesign;
  CQVIS_Coords* c = d->m_pCoords;
  const double wx = c->ScreenXToWorld(point.x);
  const double wy = c->ScreenYToWorld(point.y);
  const double sx = c->ScreenXToWorldSnap(point.x);
  const double sy = c->ScreenYToWorldSnap(point.y);
  // The zoom box starts its drag here (both corners at the click, box drawn in XOR).
  if (d->m_pZoomMgr && d->m_pZoomMgr->IsActived()) d->m_pZoomMgr->MouseDown(1, wx, wy);
  if (d->m_pCursorMgr) d->m_pCursorMgr->SetLastClickXY(sx, sy);

  if (d->m_pSelectCmd) d->m_pSelectCmd->MouseDown(1, wx, wy);
  ForEachCommand([&](auto* cmd) { cmd->MouseDown(1, sx, sy); }, d->m_pDrawLineCmd,
                 d->m_pDrawCircleCmd, d->m_pDrawArcCmd, d->m_pDrawPolygonCmd,
                 d->m_pDrawFlashObroundCmd, d->m_pDrawRectCmd, d->m_pDraw3PCircleCmd,
                 d->m_pDrawFlashCircleCmd, d->m_pDrawFlashRectCmd, d->m_pDrawFlashPolygonCmd);
  Default();
}

void CQVIS_Wnd::OnLButtonUp(UINT /*nFlags*/, CPoint point) {
  CQVIS_Design* d = m_pDesign;
  CQVIS_Coords* c = d->m_pCoords;
  const double wx = c->ScreenXToWorld(point.x);
  const double wy = c->ScreenYToWorld(point.y);
  if (CQVIS_ZoomMgr* zoom = d->m_pZoomMgr) {
    if (zoom->MouseUp(1, wx, wy) != 0 && !zoom->IsSamePoint()) {
      double x1 = zoom->m_dX1, y1 = zoom->m_dY1, x2 = zoom->m_dX2, y2 = zoom->m_dY2;
      const CSize size = ClientSize();
      qvis::ZoomWithinRange(
          *c, [&](CQVIS_Coords& view) { view.SetScreenZone(x1, y1, x2, y2, size.cx, size.cy); });
      RedrawNow();
      return;
    }
  }
  if (d->m_pSelectCmd) d->m_pSelectCmd->MouseUp(1, wx, wy);
  Default();
}

void CQVIS_Wnd::OnLButtonDblClk(UINT /*nFlags*/, CPoint /*point*/) {
  CQVIS_Design* d = m_pDesign;
  if (d->m_pDrawLineCmd && d->m_pDrawLineCmd->IsActived()) {
    // The track ends here; the command starts over so that the next click begins a new one.
    d->m_pDrawLineCmd->MouseDblClk();
    d->m_pDrawLineCmd->Deactive();
    d->m_pDrawLineCmd->Active();
  } else {
    if (d->m_pDrawPolygonCmd == nullptr || d->m_pDrawPolygonCmd->MouseDblClk() == 0) {
      Default();
      return;
    }
    d->m_pDrawPolygonCmd->Deactive();
    d->m_pDrawPolygonCmd->Active();
  }
  Invalidate();
}

void CQVIS_Wnd::OnRButtonDown(UINT /*nFlags*/, CPoint point) {
  if (m_pPort != nullptr) m_pPort->SetFocus();
  CQVIS_Design* d = m_pDesign;
  CQVIS_Coords* c = d->m_pCoords;
  if (CQVIS_MousePanMgr* pan = d->m_pMousePanMgr) {
    if (!pan->IsActived()) pan->Active(m_pPort, c, point.x, point.y);
    pan->MouseDown(2, c->ScreenXToWorld(point.x), c->ScreenYToWorld(point.y));
  }
  Default();
}

void CQVIS_Wnd::OnRButtonUp(UINT /*nFlags*/, CPoint point) {
  int scrolled = -1;
  if (CQVIS_MousePanMgr* pan = m_pDesign->m_pMousePanMgr) {
    pan->m_nActive = 1;
    scrolled = pan->Scroll(point.x, point.y, 0);
    pan->Release();
    pan->m_nActive = 0;
  }
  if (scrolled != 1) {
    // A plain right click: the platform turns it into its context-menu request.
    if (m_pPort != nullptr) current_.pt = m_pPort->ClientToScreen(point);
    Default();
  }
}

// ---------------------------------------------------------------------------------------------
// Keys.

void CQVIS_Wnd::OnKeyDown(UINT nChar, UINT /*nRepCnt*/, UINT /*nFlags*/) {
  CQVIS_Design* d = m_pDesign;
  const int key = static_cast<int>(nChar);
  // A handled key repaints (committed geometry under an erased rubber band comes back); -1 is
  // a command asking to be left, and selection takes over. Once that happened the later
  // commands are inactive and ignore the key.
  auto offer = [&](int result) {
    if (result != 0) Invalidate();
    if (result == -1) {
      d->AllDeactiveCmd();
      if (d->m_pSelectCmd) d->m_pSelectCmd->Active();
    }
  };
  if (d->m_pSelectCmd) offer(d->m_pSelectCmd->KeyPress(key));
  if (d->m_pZoomMgr) offer(d->m_pZoomMgr->KeyPress(key));
  if (d->m_pDrawLineCmd) offer(d->m_pDrawLineCmd->KeyPress(key));
  if (d->m_pDrawArcCmd) {
    if (key == VK_RETURN && d->m_pDrawArcCmd->IsActived()) {
      // Enter places the arc's next point where the mouse is, as a click would.
      CQVIS_Coords* c = d->m_pCoords;
      offer(d->m_pDrawArcCmd->MouseDown(1, c->ScreenXToWorldSnap(d->m_nMouseScreenX),
                                        c->ScreenYToWorldSnap(d->m_nMouseScreenY)));
    } else {
      offer(d->m_pDrawArcCmd->KeyPress(key));
    }
  }
  ForEachCommand([&](auto* cmd) { offer(cmd->KeyPress(key)); }, d->m_pDrawCircleCmd,
                 d->m_pDrawRectCmd, d->m_pDrawPolygonCmd, d->m_pDrawFlashCircleCmd,
                 d->m_pDrawFlashRectCmd, d->m_pDrawFlashObroundCmd, d->m_pDrawFlashPolygonCmd);
}

// ---------------------------------------------------------------------------------------------
// Host command operations.

void CQVIS_Wnd::OnEditSelect() {
  StartCommand(m_pDesign, m_pDesign->m_pSelectCmd, [](CQVIS_DrawSelectCmd&) {});
}

void CQVIS_Wnd::OnDrawLine() {
  StartCommand(m_pDesign, m_pDesign->m_pDrawLineCmd, [](CQVIS_DrawLineCmd& cmd) {
    cmd.SetApertureID(0);
    cmd.SetEndCapStyle(0);
    cmd.SetWidth(kDefaultTrackWidth, false);
    cmd.SetHeight(0.0, false);
    cmd.SetColor(kCommandRed, kCommandRed);
    cmd.m_nPxy = 1;
  });
}

void CQVIS_Wnd::OnDrawArc() {
  StartCommand(m_pDesign, m_pDesign->m_pDrawArcCmd, [](CQVIS_DrawArcCmd& cmd) {
    cmd.SetApertureID(0);
    cmd.SetWidth(kDefaultTrackWidth);
    cmd.SetColor(kCommandRed, kCommandRed);
  });
}

void CQVIS_Wnd::OnDrawRectangle() {
  StartCommand(m_pDesign, m_pDesign->m_pDrawRectCmd, [](CQVIS_DrawRectCmd& cmd) {
    cmd.SetApertureID(0);
    cmd.SetColor(kCommandRed, kCommandRed);
  });
}

void CQVIS_Wnd::OnDrawPolygon() {
  StartCommand(m_pDesign, m_pDesign->m_pDrawPolygonCmd, [](CQVIS_DrawPolygonCmd& cmd) {
    cmd.SetApertureID(0);
    cmd.SetColor(kCommandRed, kCommandRed);
  });
}

void CQVIS_Wnd::OnZoomZoomin() {
  m_pDesign->ZoomIn();
  Invalidate();
}

void CQVIS_Wnd::OnZoomZoomout() {
  m_pDesign->ZoomOut();
  Invalidate();
}

void CQVIS_Wnd::OnZoomZoomall() {
  const CSize size = ClientSize();
  m_pDesign->ZoomAll(static_cast<double>(size.cx), static_cast<double>(size.cy), false,
                     kZoomAllFill);
  Invalidate();
}

void CQVIS_Wnd::OnZoomZoombox() {
  StartCommand(m_pDesign, m_pDesign->m_pZoomMgr, [](CQVIS_ZoomMgr&) {});
}
