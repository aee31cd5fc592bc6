#include "qvis/design/zoom_mgr.h"

#include "qvis/commands/rubber_band.h"
#include "qvis/compat/key_state.h"
#include "qvis/compat/win32_names.h"
#include "qvis/render/surface.h"

using qvis::RubberBand;

CQVIS_ZoomMgr::CQVIS_ZoomMgr(CQVIS_GDI* pSurface) : m_pSurface(pSurface) { Init(); }

void CQVIS_ZoomMgr::Init() {
  m_nActive = 0;
  m_nZoomMode = 0;
  m_dX1 = m_dY1 = m_dX2 = m_dY2 = 0.0;
  m_nHasExtent = 0;
  m_nDragState = 0;
  m_crColor = 0xFFFFFF;
}

void CQVIS_ZoomMgr::Release() {
  m_nActive = 0;
  m_nHasExtent = 0;
}

void CQVIS_ZoomMgr::Active() {
  m_nActive = 1;
  m_nHasExtent = 0;
}

void CQVIS_ZoomMgr::Deactive() {
  if (!m_nActive) return;
  RubberBand::Update(*this, [&] {
    m_nDragState = 0;
    m_nActive = 0;
  });
}

void CQVIS_ZoomMgr::Cancel() {
  if (m_nActive) RubberBand::Update(*this, [&] { m_nDragState = 0; });
}

int CQVIS_ZoomMgr::KeyPress(int nKey) {
  if (!m_nActive || nKey != VK_ESCAPE) return qvis::kNotHandled;
  if (m_nDragState == 0) return qvis::kLeaveCommand;
  RubberBand::Update(*this, [&] { m_nDragState = 0; });
  return qvis::kHandled;
}

int CQVIS_ZoomMgr::MouseDown(unsigned int nFlags, double x, double y) {
  if (!m_nActive || nFlags != qvis::kLeftButton || m_nDragState != 0) return qvis::kNotHandled;
  RubberBand::Update(*this, [&] {
    m_nDragState = 1;
    m_dX1 = m_dX2 = x;
    m_dY1 = m_dY2 = y;
  });
  return qvis::kHandled;
}

int CQVIS_ZoomMgr::MouseMove(double x, double y) {
  if (!m_nActive) return qvis::kNotHandled;
  const qvis::KeyStateSource* keys = m_pSurface != nullptr ? m_pSurface->GetKeyStates() : nullptr;
  if ((qvis::GetAsyncKeyState(keys, VK_LBUTTON) & 0x8000) == 0) return qvis::kNotHandled;
  RubberBand::DragBox(*this, x, y);
  return qvis::kHandled;
}

int CQVIS_ZoomMgr::MouseUp(unsigned int, double, double) {
  if (!m_nActive || m_nDragState != 1) return qvis::kNotHandled;
  RubberBand::Update(*this, [&] { m_nDragState = 0; });
  return qvis::kComplete;
}

void CQVIS_ZoomMgr::SetSecondPoint(double x, double y) {
  m_dX2 = x;
  m_dY2 = y;
  m_nHasExtent = (x != m_dX1 || y != m_dY1) ? 1 : 0;
}

void CQVIS_ZoomMgr::Draw() {
  if (!m_nActive) return;
  RubberBand(m_pSurface, nullptr).BoxPen(m_crColor);
  if (BoxShown()) DrawRectangle(m_dX1, m_dY1, m_dX2, m_dY2);
}

void CQVIS_ZoomMgr::DrawRectangle(double x1, double y1, double x2, double y2) {
  RubberBand(m_pSurface, nullptr).OriginBox(x1, y1, x2, y2);
}
