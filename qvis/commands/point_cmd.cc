#include "qvis/commands/point_cmd.h"

#include "qvis/commands/figure_flow.h"
#include "qvis/commands/rubber_band.h"

using qvis::RubberBand;

CQVIS_DrawPointCmd::CQVIS_DrawPointCmd(CQVIS_GDI* pSurface)
    : m_pSurface(pSurface),
      m_hTargetDC(qvis::OriginContextOf(pSurface)),
      m_nActive(0),
      m_dX(0.0),  // left unset by the protocol; 0 is the safe start
      m_dY(0.0),
      m_nLayer(0),
      m_nProgress(0),
      m_crColor(0xFFFFFF),
      m_crXORColor(0xFFFFFF) {}

CQVIS_DrawPointCmd::~CQVIS_DrawPointCmd() { Release(); }

void CQVIS_DrawPointCmd::Init() {
  m_nActive = 0;
  m_dY = 0.0;
  m_nProgress = 0;
}

void CQVIS_DrawPointCmd::Clear() { Init(); }
void CQVIS_DrawPointCmd::Release() { Init(); }

void CQVIS_DrawPointCmd::Active() { qvis::FigureFlow<CQVIS_DrawPointCmd>::Active(*this); }

void CQVIS_DrawPointCmd::Deactive() { qvis::FigureFlow<CQVIS_DrawPointCmd>::Deactive(*this); }

void CQVIS_DrawPointCmd::Cancel() { qvis::FigureFlow<CQVIS_DrawPointCmd>::Cancel(*this); }

int CQVIS_DrawPointCmd::KeyPress(int nKey) {
  return qvis::FigureFlow<CQVIS_DrawPointCmd>::EscapeKey(*this, nKey);
}

int CQVIS_DrawPointCmd::MouseMove(double x, double y) {
  if (!m_nActive) return qvis::kNotHandled;
  if (x == m_dX && y == m_dY) return qvis::kNotHandled;
  RubberBand::Update(*this, [&] { m_dX = x; m_dY = y; });
  return qvis::kHandled;
}

int CQVIS_DrawPointCmd::MouseDown(unsigned int nFlags, double x, double y) {
  if (!m_nActive || nFlags != qvis::kLeftButton) return qvis::kNotHandled;
  Draw();
  if (m_nProgress != 0) return qvis::kHandled;
  m_dX = x;
  m_dY = y;
  Draw();
  return qvis::kHandled;
}

int CQVIS_DrawPointCmd::MouseUp(unsigned int nFlags, double, double) {
  if (!m_nActive) return qvis::kNotHandled;
  if (nFlags == qvis::kRightButton) {
    Draw();
    m_nActive = 0;
    m_dY = 0.0;
    m_nProgress = 0;
    Draw();  // inactive now: draws nothing
    return qvis::kHandled;
  }
  return nFlags == qvis::kLeftButton ? qvis::kHandled : qvis::kNotHandled;
}

void CQVIS_DrawPointCmd::Draw() {
  if (!m_nActive) return;
  const RubberBand band(m_pSurface, m_hTargetDC);
  band.XorMode();
  band.ThinPen(m_crXORColor);
  band.SolidBrush(m_crXORColor);
}

void CQVIS_DrawPointCmd::OnDraw() {
  if (m_nActive) Draw();
}

void CQVIS_DrawPointCmd::SetColor(unsigned long crColor, unsigned long crXORColor) {
  qvis::FigureFlow<CQVIS_DrawPointCmd>::SetColor(*this, crColor, crXORColor);
}
