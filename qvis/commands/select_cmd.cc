#include "qvis/commands/select_cmd.h"

#include "qvis/commands/rubber_band.h"
#include "qvis/compat/key_state.h"
#include "qvis/compat/win32_names.h"
#include "qvis/render/surface.h"

using qvis::RubberBand;

namespace {
// LeftButtonHeld: whether the left button is held now in the window the surface is shown in.
bool LeftButtonHeld(const CQVIS_GDI* surface) {
  const qvis::KeyStateSource* keys = surface != nullptr ? surface->GetKeyStates() : nullptr;
  return (qvis::GetAsyncKeyState(keys, VK_LBUTTON) & 0x8000) != 0;
}
}  // namespace

CQVIS_DrawSelectCmd::CQVIS_DrawSelectCmd(CQVIS_GDI* pSurface) : m_pSurface(pSurface) { Init(); }

void CQVIS_DrawSelectCmd::Init() {
  m_nPointMode = 0;
  m_nActive = 0;
  m_nSkipClicks = 0;
  m_dX1 = m_dY1 = m_dX2 = m_dY2 = 0.0;
  m_nDragState = 0;
  m_crColor = 0xFFFFFF;
}

bool CQVIS_DrawSelectCmd::BoxShown() const {
  return m_nActive && m_nPointMode == 0 && (m_nDragState == 1 || m_nDragState == 2);
}

void CQVIS_DrawSelectCmd::Active() {
  if (m_nActive) return;
  m_nDragState = 0;
  m_nActive = 1;
  RubberBand(m_pSurface, nullptr).BoxPen(m_crColor);
}

void CQVIS_DrawSelectCmd::Deactive() {
  if (!m_nActive) return;
  RubberBand::Update(*this, [&] {
    m_nDragState = 0;
    m_nActive = 0;
  });
}

void CQVIS_DrawSelectCmd::Cancel() {
  if (m_nActive) RubberBand::Update(*this, [&] { m_nDragState = 0; });
}

int CQVIS_DrawSelectCmd::MouseDown(unsigned int nFlags, double x, double y) {
  if (!m_nActive || nFlags != qvis::kLeftButton) return qvis::kNotHandled;
  if (m_nSkipClicks > 0) {
    --m_nSkipClicks;
    return qvis::kNotHandled;
  }
  if (m_nDragState != 0) return qvis::kNotHandled;
  RubberBand::Update(*this, [&] {
    m_dX1 = m_dX2 = x;
    m_dY1 = m_dY2 = y;
    m_nDragState = 1;
  });
  return qvis::kHandled;
}

int CQVIS_DrawSelectCmd::MouseMove(double x, double y) {
  if (!m_nActive || !LeftButtonHeld(m_pSurface)) return qvis::kNotHandled;
  RubberBand::DragBox(*this, x, y);
  return qvis::kHandled;
}

int CQVIS_DrawSelectCmd::MouseUp(unsigned int, double, double) {
  if (!m_nActive) return qvis::kNotHandled;
  if (m_nSkipClicks > 0) {
    --m_nSkipClicks;
    return qvis::kNotHandled;
  }
  if (m_nDragState == 0 && m_nPointMode == 1) return qvis::kComplete;
  if (m_nDragState != 1) return qvis::kNotHandled;
  RubberBand::Update(*this, [&] { m_nDragState = 0; });
  return qvis::kComplete;
}

int CQVIS_DrawSelectCmd::MouseDblClk() {
  if (!m_nActive) return qvis::kNotHandled;
  // A box left by an unfinished drag is taken away rather than stranded.
  RubberBand::Update(*this, [&] {
    m_nDragState = 0;
    m_nSkipClicks = 1;
  });
  return qvis::kHandled;
}

int CQVIS_DrawSelectCmd::KeyPress(int nKey) {
  if (!m_nActive) return qvis::kNotHandled;
  if (m_nDragState != 0) {
    if (nKey != VK_ESCAPE) return qvis::kNotHandled;
    RubberBand::Update(*this, [&] { m_nDragState = 0; });
    return qvis::kHandled;
  }
  switch (nKey) {
    case VK_ESCAPE: return qvis::kLeaveCommand;
    case VK_DELETE: return kRequestDelete;
    case VK_RETURN: return kRequestConfirm;
    case VK_PRIOR: return kRequestPrevious;
    case VK_NEXT: return kRequestNext;
    case VK_SPACE: return kRequestSpace;
    case 'R':
    case 'r': return kRequestR;
    default: return qvis::kNotHandled;
  }
}

void CQVIS_DrawSelectCmd::Draw() {
  if (!m_nActive) return;
  RubberBand(m_pSurface, nullptr).BoxPen(m_crColor);
  if (BoxShown()) DrawRectangle(m_dX1, m_dY1, m_dX2, m_dY2);
}

void CQVIS_DrawSelectCmd::SetPointMode(int nMode) {
  RubberBand::Update(*this, [&] { m_nPointMode = nMode; });
}

void CQVIS_DrawSelectCmd::DrawRectangle(double x1, double y1, double x2, double y2) {
  RubberBand(m_pSurface, nullptr).OriginBox(x1, y1, x2, y2);
}
