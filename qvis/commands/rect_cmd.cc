#include "qvis/commands/rect_cmd.h"

#include "qvis/commands/figure_flow.h"
#include "qvis/commands/rubber_band.h"

using qvis::RubberBand;

CQVIS_DrawRectCmd::CQVIS_DrawRectCmd(CQVIS_GDI* pSurface)
    : m_pSurface(pSurface), m_hTargetDC(qvis::OriginContextOf(pSurface)) {
  Init();
}

void CQVIS_DrawRectCmd::Init() {
  m_nActive = 0;
  m_dX1 = m_dY1 = m_dX2 = m_dY2 = 0.0;
  m_nLayer = 0;
  m_nApertureID = 0;
  m_nProgress = 0;
  m_crColor = 0x0000FF;
  m_crXORColor = 0x0000FF;
  m_dWidth = 0.0;
  m_nDrawType = 0;
}

void CQVIS_DrawRectCmd::Active() { qvis::FigureFlow<CQVIS_DrawRectCmd>::Active(*this); }

void CQVIS_DrawRectCmd::Deactive() { qvis::FigureFlow<CQVIS_DrawRectCmd>::Deactive(*this); }

void CQVIS_DrawRectCmd::Cancel() { qvis::FigureFlow<CQVIS_DrawRectCmd>::Cancel(*this); }

int CQVIS_DrawRectCmd::KeyPress(int nKey) {
  return qvis::FigureFlow<CQVIS_DrawRectCmd>::EscapeKey(*this, nKey);
}

int CQVIS_DrawRectCmd::MouseMove(double x, double y) {
  if (!m_nActive) return qvis::kNotHandled;
  RubberBand::Update(*this, [&] {
    if (m_nProgress == 0) {
      m_dX1 = x;
      m_dY1 = y;
    }
    m_dX2 = x;
    m_dY2 = y;
  });
  return qvis::kHandled;
}

int CQVIS_DrawRectCmd::MouseDown(unsigned int nFlags, double x, double y) {
  if (!m_nActive || nFlags != qvis::kLeftButton) return qvis::kNotHandled;
  if (m_nProgress == 0) {
    RubberBand::Update(*this, [&] {
      m_dX1 = m_dX2 = x;
      m_dY1 = m_dY2 = y;
      m_nProgress = 1;
    });
    return qvis::kHandled;
  }
  RubberBand::Update(*this, [&] {
    m_dX2 = x;
    m_dY2 = y;
    m_nProgress = 0;
  });
  return qvis::kComplete;
}

int CQVIS_DrawRectCmd::MouseUp(unsigned int nFlags, double x, double y) {
  if (!m_nActive) return qvis::kNotHandled;
  if (nFlags == qvis::kLeftButton) return qvis::kComplete;
  if (nFlags != qvis::kRightButton) return qvis::kNotHandled;
  RubberBand::Update(*this, [&] {
    m_dX1 = m_dX2 = x;
    m_dY1 = m_dY2 = y;
    m_nProgress = 0;
  });
  return qvis::kHandled;
}

void CQVIS_DrawRectCmd::Draw() {
  if (!m_nActive) return;
  const RubberBand band(m_pSurface, m_hTargetDC);
  band.XorMode();
  band.SolidBrush(m_crXORColor);
  if (m_dWidth != 0.0) {
    band.WorldPen(m_dWidth, m_crXORColor);
  } else {
    band.ThinPen(m_crXORColor);
  }
  if (m_nProgress == 1 || m_nProgress == 2) DrawRectangle(m_dX1, m_dY1, m_dX2, m_dY2);
}

void CQVIS_DrawRectCmd::OnDraw() {
  if (m_nActive) Draw();
}

void CQVIS_DrawRectCmd::SetColor(unsigned long crColor, unsigned long crXORColor) {
  qvis::FigureFlow<CQVIS_DrawRectCmd>::SetColor(*this, crColor, crXORColor);
}

void CQVIS_DrawRectCmd::SetDrawType(int nType) {
  RubberBand::Update(*this, [&] { m_nDrawType = nType; });
}

void CQVIS_DrawRectCmd::DrawRectangle(double x1, double y1, double x2, double y2) {
  const RubberBand band(m_pSurface, m_hTargetDC);
  if (m_nDrawType == 0) {
    band.OriginBox(x1, y1, x2, y2);
  } else if (m_nDrawType == 1) {
    band.Line({x1, y1}, {x2, y1});
    band.Line({x2, y1}, {x2, y2});
    band.Line({x2, y2}, {x1, y2});
    band.Line({x1, y2}, {x1, y1});
  }
}
