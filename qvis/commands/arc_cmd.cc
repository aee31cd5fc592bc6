#include "qvis/commands/arc_cmd.h"

#include <cmath>

#include "qvis/commands/construction.h"
#include "qvis/commands/figure_flow.h"
#include "qvis/commands/rubber_band.h"
#include "qvis/geometry/num_support.h"

using qvis::RubberBand;
using qvis::WorldPt;

CQVIS_DrawArcCmd::CQVIS_DrawArcCmd(CQVIS_GDI* pSurface)
    : m_pSurface(pSurface),
      m_hTargetDC(qvis::OriginContextOf(pSurface)),
      m_dWidth(4.0),
      m_nLayer(0),
      m_nApertureID(0),
      m_crColor(0x0000FF),
      m_crXORColor(0x0000FF),
      m_nLineStyle(0) {
  Init();
}

void CQVIS_DrawArcCmd::Init() {
  m_nActive = 0;
  m_dCenterX = m_dCenterY = m_dRadius = 0.0;
  m_dStartX = m_dStartY = m_dEndX = m_dEndY = 0.0;
  m_dStartAngle = m_dEndAngle = 0.0;
  m_dCursorX = m_dCursorY = 0.0;
  m_nProgress = 0;
}

void CQVIS_DrawArcCmd::Active() {
  if (m_nActive) return;
  qvis::FigureFlow<CQVIS_DrawArcCmd>::Active(*this);
  SetInfoLine();
}

void CQVIS_DrawArcCmd::Deactive() { qvis::FigureFlow<CQVIS_DrawArcCmd>::Deactive(*this); }

void CQVIS_DrawArcCmd::Cancel() {
  if (!m_nActive) return;
  qvis::FigureFlow<CQVIS_DrawArcCmd>::Cancel(*this);
  SetInfoLine();
}

int CQVIS_DrawArcCmd::KeyPress(int nKey) {
  if (!m_nActive) return qvis::kNotHandled;
  if (nKey == qvis::kKeyReturn) return MouseDown(qvis::kLeftButton, m_dCursorX, m_dCursorY);
  if (nKey != qvis::kKeyEscape) return qvis::kNotHandled;
  if (m_nProgress == 0) return nKey - 28;
  Cancel();
  return qvis::kHandled;
}

int CQVIS_DrawArcCmd::MouseMove(double x, double y) {
  if (!m_nActive || (x == m_dCursorX && y == m_dCursorY)) return qvis::kNotHandled;
  RubberBand::Update(*this, [&] {
    m_dCursorX = x;
    m_dCursorY = y;
  });
  SetInfoLine();
  return qvis::kHandled;
}

int CQVIS_DrawArcCmd::MouseDown(unsigned int nFlags, double x, double y) {
  if (!m_nActive || nFlags != qvis::kLeftButton) return qvis::kNotHandled;
  const WorldPt centre{m_dCenterX, m_dCenterY}, click{x, y};
  int result = qvis::kHandled;
  switch (m_nProgress) {
    case 0:
      RubberBand::Update(*this, [&] {
        m_dCenterX = m_dCursorX = x;
        m_dCenterY = m_dCursorY = y;
        m_nProgress = 1;
      });
      break;
    case 1: {
      const double r = qvis::Distance(centre, click);
      if (click == centre || !(r > 0.0) || !std::isfinite(r)) return qvis::kNotHandled;
      RubberBand::Update(*this, [&] {
        m_dStartX = m_dCursorX = x;
        m_dStartY = m_dCursorY = y;
        m_dRadius = r;
        m_dStartAngle = dAngleFromEast(m_dCenterX, m_dCenterY, x, y);
        m_nProgress = 2;
      });
      break;
    }
    default: {
      qvis::ArcFigure arc;
      if (!qvis::MakeArc(centre, {m_dStartX, m_dStartY}, click, &arc)) {
        return qvis::kNotHandled;
      }
      RubberBand::Update(*this, [&] {
        m_dRadius = arc.radius;
        m_dStartAngle = arc.start_angle;
        m_dEndAngle = arc.end_angle;
        m_dEndX = arc.end.x;
        m_dEndY = arc.end.y;
        m_dCursorX = x;
        m_dCursorY = y;
        m_nProgress = 0;
      });
      result = qvis::kComplete;
      break;
    }
  }
  SetInfoLine();
  return result;
}

int CQVIS_DrawArcCmd::MouseUp(unsigned int nFlags, double x, double y) {
  if (!m_nActive || nFlags != qvis::kRightButton) return qvis::kNotHandled;
  RubberBand::Update(*this, [&] {
    m_dCursorX = x;
    m_dCursorY = y;
    m_nProgress = 0;
  });
  SetInfoLine();
  return qvis::kHandled;
}

void CQVIS_DrawArcCmd::Draw() {
  if (!m_nActive) return;
  const RubberBand band(m_pSurface, m_hTargetDC);
  band.XorMode();
  band.NullBrush();
  band.DotPen(m_crXORColor);
  const WorldPt centre{m_dCenterX, m_dCenterY}, cursor{m_dCursorX, m_dCursorY};
  switch (m_nProgress) {
    case 0:
      if (m_dWidth != 0.0) band.Circle(cursor, m_dWidth / 2);
      break;
    case 1:
      band.Line(centre, cursor);
      band.Circle(centre, qvis::Distance(centre, cursor));
      break;
    case 2:
      band.Line(centre, cursor);
      if (!(cursor == centre)) {
        band.WorldPen(m_dWidth, m_crXORColor);
        band.Arc(centre, m_dRadius, {m_dStartX, m_dStartY}, cursor);
      }
      break;
    default:
      break;
  }
}

void CQVIS_DrawArcCmd::OnDraw() {
  if (m_nActive) Draw();
}

void CQVIS_DrawArcCmd::SetInfoLine() { SetDrawInfoString(); }

void CQVIS_DrawArcCmd::SetDrawInfoString() {
  switch (m_nProgress) {
    case 1:
      m_strInfo.Format("Click start position (r=%2.3f)",
                       qvis::Distance({m_dCenterX, m_dCenterY}, {m_dCursorX, m_dCursorY}));
      break;
    case 2: {
      double sweep = 0.0;
      if (!(m_dCursorX == m_dCenterX && m_dCursorY == m_dCenterY)) {
        sweep = dAngleFromEast(m_dCenterX, m_dCenterY, m_dCursorX, m_dCursorY) - m_dStartAngle;
        if (sweep < 0.0) sweep += 360.0;
      }
      m_strInfo.Format("Click end position (angle=%2.3f)", sweep);
      break;
    }
    default:
      m_strInfo = "Click center position";
      break;
  }
}

void CQVIS_DrawArcCmd::SetColor(unsigned long crColor, unsigned long crXORColor) {
  qvis::FigureFlow<CQVIS_DrawArcCmd>::SetColor(*this, crColor, crXORColor);
}

void CQVIS_DrawArcCmd::SetWidth(double dWidth) {
  RubberBand::Update(*this, [&] { m_dWidth = dWidth; });
}

void CQVIS_DrawArcCmd::SetLineStyle(int nStyle) {
  RubberBand::Update(*this, [&] { m_nLineStyle = nStyle; });
}
