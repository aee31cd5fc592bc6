#include "qvis/design/mouse_pan_mgr.h"

#include "qvis/commands/rubber_band.h"
#include "qvis/compat/key_state.h"
#include "qvis/compat/redraw.h"
#include "qvis/compat/win32_names.h"
#include "qvis/coords/view_coords.h"
#include "qvis/coords/zoom_range.h"
#include "qvis/render/surface.h"

using qvis::RubberBand;

namespace {
// RDW_INVALIDATE | RDW_ERASE | RDW_UPDATENOW: repaint at once with the background erased.
constexpr UINT kRedrawNow = 0x105;
}  // namespace

CQVIS_MousePanMgr::CQVIS_MousePanMgr()
    : m_pSurface(nullptr), m_nPressed(0), m_nHideLine(0) {
  Init();
}

CQVIS_MousePanMgr::CQVIS_MousePanMgr(CQVIS_GDI* pSurface)
    : m_pSurface(pSurface), m_nPressed(0), m_nHideLine(0) {
  Init();
  m_pCoords = pSurface ? pSurface->GetCoords() : nullptr;
}

void CQVIS_MousePanMgr::Init() {
  m_nActive = 0;
  m_nScrollCount = 0;
  m_dPressX = m_dPressY = 0.0;
  m_dCurrentX = m_dCurrentY = 0.0;
  m_nLastX = m_nLastY = -1;
  m_pCoords = nullptr;
  m_hWnd = nullptr;
  m_crColor = 0xFFFFFF;
}

void CQVIS_MousePanMgr::Release() {
  m_nLastX = m_nLastY = -1;
  m_dPressX = m_dPressY = 0.0;
  m_dCurrentX = m_dCurrentY = 0.0;
  m_nActive = 0;
  m_nScrollCount = 0;
  m_nPressed = 0;
  m_nHideLine = 0;
}

void CQVIS_MousePanMgr::Active(qvis::HWND hWnd, CQVIS_Coords* pCoords, long x, long y) {
  if (m_nActive) return;
  m_nLastX = static_cast<LONG>(x);
  m_nLastY = static_cast<LONG>(y);
  m_nActive = 1;
  m_nScrollCount = 0;
  m_pCoords = pCoords;
  m_hWnd = hWnd;
}

int CQVIS_MousePanMgr::MouseDown(unsigned int nFlags, double x, double y) {
  if (!m_nActive || nFlags != qvis::kRightButton || m_nPressed) return qvis::kNotHandled;
  RubberBand::Update(*this, [&] {
    m_dPressX = m_dCurrentX = x;
    m_dPressY = m_dCurrentY = y;
    m_nPressed = 1;
  });
  return qvis::kHandled;
}

int CQVIS_MousePanMgr::MouseMove(double x, double y, int nHideLine) {
  if (!m_nActive) return qvis::kNotHandled;
  const qvis::KeyStateSource* keys = m_pSurface != nullptr ? m_pSurface->GetKeyStates() : nullptr;
  if ((qvis::GetAsyncKeyState(keys, VK_RBUTTON) & 0x8000) == 0) return qvis::kNotHandled;
  // The line is erased with the flag it was drawn with, so hiding it never strands it.
  RubberBand::Update(*this, [&] {
    m_nHideLine = nHideLine;
    if (!m_nPressed) {
      m_dPressX = m_dCurrentX = x;
      m_dPressY = m_dCurrentY = y;
    } else {
      m_dCurrentX = x;
      m_dCurrentY = y;
    }
  });
  return qvis::kHandled;
}

int CQVIS_MousePanMgr::MouseUp(unsigned int, double, double) {
  if (!m_nActive || !m_nPressed) return qvis::kNotHandled;
  RubberBand::Update(*this, [&] { m_nPressed = 0; });
  return qvis::kComplete;
}

void CQVIS_MousePanMgr::Draw() {
  if (!m_nActive || !m_pSurface) return;
  const qvis::HDC origin = m_pSurface->GetOriginHDC();
  const RubberBand band(m_pSurface, origin);
  band.XorMode();
  band.NullBrush();
  band.ThinPen(m_crColor);
  if (m_nPressed && m_nHideLine == 0) band.Line({m_dPressX, m_dPressY}, {m_dCurrentX, m_dCurrentY});
}

CQVIS_Coords* CQVIS_MousePanMgr::Coords() {
  if (!m_pCoords && m_pSurface) m_pCoords = m_pSurface->GetCoords();
  return m_pCoords;
}

int CQVIS_MousePanMgr::Scroll(long x, long y, int nMode) {
  if (!m_nActive) return -1;
  if ((m_nLastX == -1 && m_nLastY == -1) || (m_nLastX == x && m_nLastY == y)) return -1;
  CQVIS_Coords* coords = Coords();
  // Pixel steps are taken in 64 bits: two 32-bit positions may differ by more than 32 bits hold.
  double dx = static_cast<double>(static_cast<long long>(x) - m_nLastX);
  double dy = static_cast<double>(static_cast<long long>(y) - m_nLastY);
  if (nMode == 0) {
    dx = -dx;
    dy = -dy;
  }
  if ((nMode == 0 || nMode == 1) && coords) {
    coords->m_dViewX = qvis::PanView(coords->m_dViewX, dx / coords->m_dZoom);
    coords->m_dViewY = qvis::PanView(coords->m_dViewY, dy / coords->m_dZoom);
  }
  if (m_hWnd && m_pSurface) qvis::RedrawWindow(m_pSurface->GetRedrawHandler(), m_hWnd, kRedrawNow);
  ++m_nScrollCount;
  m_nLastX = static_cast<LONG>(x);
  m_nLastY = static_cast<LONG>(y);
  return 1;
}

void CQVIS_MousePanMgr::ScrollDelta(long dx, long dy) {
  if (dx == 0 && dy == 0) return;
  CQVIS_Coords* coords = Coords();
  if (!coords) return;
  // Offsets saturate at the view bound instead of running away.
  if (dx != 0) {
    coords->m_dViewX = qvis::PanView(
        coords->m_dViewX, static_cast<double>(-static_cast<long long>(dx)) / coords->m_dZoom);
  }
  if (dy != 0) {
    coords->m_dViewY = qvis::PanView(
        coords->m_dViewY, static_cast<double>(-static_cast<long long>(dy)) / coords->m_dZoom);
  }
}
