#include "qvis/commands/circle_cmd.h"

#include "qvis/commands/construction.h"
#include "qvis/commands/figure_flow.h"
#include "qvis/commands/rubber_band.h"

using qvis::RubberBand;
using qvis::WorldPt;

namespace {
// Size of the point crosses of the three-point circle, in pixels.
constexpr double kCrossPixels = 5.0;
}  // namespace

// ---------------------------------------------------------------------------------------------
// CQVIS_DrawCircleCmd

CQVIS_DrawCircleCmd::CQVIS_DrawCircleCmd(CQVIS_GDI* pSurface)
    : m_pSurface(pSurface),
      m_hTargetDC(qvis::OriginContextOf(pSurface)),
      m_nActive(0),
      m_dCenterX(0.0),
      m_dCenterY(0.0),
      m_dRadius(0.0),
      m_dCursorX(0.0),
      m_dCursorY(0.0),
      m_dWidth(4.0),
      m_nLayer(0),
      m_nProgress(0),
      m_nApertureID(0),
      m_strFontName("Arial"),
      m_crColor(0x0000FF),
      m_crXORColor(0x0000FF),
      m_nLineStyle(0),
      m_nReserved(0),
      m_nFill(0) {}

void CQVIS_DrawCircleCmd::Init() {
  m_nActive = 0;
  m_dCenterX = m_dCenterY = 0.0;
  m_dCursorX = m_dCursorY = 0.0;
  m_nProgress = 0;
}

void CQVIS_DrawCircleCmd::Clear() { Init(); }

void CQVIS_DrawCircleCmd::Active() { qvis::FigureFlow<CQVIS_DrawCircleCmd>::Active(*this); }

void CQVIS_DrawCircleCmd::Deactive() { qvis::FigureFlow<CQVIS_DrawCircleCmd>::Deactive(*this); }

void CQVIS_DrawCircleCmd::Cancel() { qvis::FigureFlow<CQVIS_DrawCircleCmd>::Cancel(*this); }

int CQVIS_DrawCircleCmd::KeyPress(int nKey) {
  return qvis::FigureFlow<CQVIS_DrawCircleCmd>::EscapeKey(*this, nKey);
}

int CQVIS_DrawCircleCmd::MouseMove(double x, double y) {
  if (!m_nActive || (x == m_dCursorX && y == m_dCursorY)) return qvis::kNotHandled;
  RubberBand::Update(*this, [&] {
    m_dCursorX = x;
    m_dCursorY = y;
    m_dRadius = qvis::Distance({m_dCenterX, m_dCenterY}, {x, y});
  });
  return qvis::kHandled;
}

int CQVIS_DrawCircleCmd::MouseDown(unsigned int nFlags, double x, double y) {
  if (!m_nActive || nFlags != qvis::kLeftButton) return qvis::kNotHandled;
  if (m_nProgress == 0) {
    RubberBand::Update(*this, [&] {
      m_dCenterX = m_dCursorX = x;
      m_dCenterY = m_dCursorY = y;
      m_nProgress = 1;
      m_dRadius = 0.0;
    });
    return qvis::kHandled;
  }
  if (x == m_dCenterX && y == m_dCenterY) return qvis::kNotHandled;
  const double r = qvis::Distance({m_dCenterX, m_dCenterY}, {x, y});
  if (r == 0.0) return qvis::kNotHandled;  // refused like a click on the centre; band kept
  RubberBand::Update(*this, [&] {
    m_dRadius = r;
    m_dCursorX = x;
    m_dCursorY = y;
    m_nProgress = 0;
  });
  return qvis::kComplete;
}

int CQVIS_DrawCircleCmd::MouseUp(unsigned int nFlags, double x, double y) {
  if (!m_nActive || nFlags != qvis::kRightButton) return qvis::kNotHandled;
  RubberBand::Update(*this, [&] {
    m_dCursorX = x;
    m_dCursorY = y;
    m_nProgress = 0;
  });
  return qvis::kHandled;
}

void CQVIS_DrawCircleCmd::Draw() {
  if (!m_nActive) return;
  const RubberBand band(m_pSurface, m_hTargetDC);
  band.XorMode();
  const WorldPt centre{m_dCenterX, m_dCenterY}, cursor{m_dCursorX, m_dCursorY};
  if (m_nFill != 0) {
    if (m_nProgress != 1) return;
    band.SolidBrush(m_crXORColor);
    band.DotPen(m_crXORColor);
    band.Circle(centre, qvis::Distance(centre, cursor));
    return;
  }
  band.NullBrush();
  if (m_nProgress == 1) {
    band.DotPen(m_crXORColor);
    band.Line(centre, cursor);
    band.WorldPen(m_dWidth, m_crXORColor);
    band.Circle(centre, qvis::Distance(centre, cursor));
  } else if (m_nProgress == 0) {
    band.DotPen(m_crXORColor);
    if (m_dWidth != 0.0) band.Circle(cursor, m_dWidth / 2);
  }
}

void CQVIS_DrawCircleCmd::OnDraw() {
  if (m_nActive) Draw();
}

void CQVIS_DrawCircleCmd::SetColor(unsigned long crColor, unsigned long crXORColor) {
  qvis::FigureFlow<CQVIS_DrawCircleCmd>::SetColor(*this, crColor, crXORColor);
}

void CQVIS_DrawCircleCmd::SetWidth(double dWidth) {
  RubberBand::Update(*this, [&] { m_dWidth = dWidth; });
}

void CQVIS_DrawCircleCmd::SetLineStyle(int nStyle) {
  RubberBand::Update(*this, [&] { m_nLineStyle = nStyle; });
}

void CQVIS_DrawCircleCmd::SetFill(int nFill) {
  if (nFill == m_nFill) return;
  RubberBand::Update(*this, [&] { m_nFill = nFill; });
}

// ---------------------------------------------------------------------------------------------
// CQVIS_Draw3PCircleCmd

CQVIS_Draw3PCircleCmd::CQVIS_Draw3PCircleCmd(CQVIS_GDI* pSurface)
    : m_pSurface(pSurface),
      m_hTargetDC(qvis::OriginContextOf(pSurface)),
      m_dWidth(4.0),
      m_crColor(0x0000FF),
      m_crXORColor(0x0000FF) {
  Init();
}

void CQVIS_Draw3PCircleCmd::Init() {
  m_nActive = 0;
  m_dCenterX = m_dCenterY = m_dRadius = 0.0;
  m_dX1 = m_dY1 = m_dX2 = m_dY2 = m_dX3 = m_dY3 = 0.0;
  m_nLayer = 0;
  m_nApertureID = 0;
  m_nProgress = 0;
  m_nLineStyle = 0;
  m_nReserved = 0;
}

void CQVIS_Draw3PCircleCmd::Active() { qvis::FigureFlow<CQVIS_Draw3PCircleCmd>::Active(*this); }

void CQVIS_Draw3PCircleCmd::Deactive() { qvis::FigureFlow<CQVIS_Draw3PCircleCmd>::Deactive(*this); }

void CQVIS_Draw3PCircleCmd::Cancel() { qvis::FigureFlow<CQVIS_Draw3PCircleCmd>::Cancel(*this); }

int CQVIS_Draw3PCircleCmd::KeyPress(int nKey) {
  return qvis::FigureFlow<CQVIS_Draw3PCircleCmd>::EscapeKey(*this, nKey);
}

int CQVIS_Draw3PCircleCmd::MouseMove(double x, double y) {
  if (!m_nActive) return qvis::kNotHandled;
  switch (m_nProgress) {
    case 0:
      if (x == m_dX1 && y == m_dY1) return qvis::kNotHandled;
      RubberBand::Update(*this, [&] {
        m_dX1 = m_dX2 = m_dX3 = x;
        m_dY1 = m_dY2 = m_dY3 = y;
      });
      return qvis::kHandled;
    case 1:
      if (x == m_dX2 && y == m_dY2) return qvis::kNotHandled;
      RubberBand::Update(*this, [&] {
        m_dX2 = m_dX3 = x;
        m_dY2 = m_dY3 = y;
      });
      return qvis::kHandled;
    case 2:
      if (x == m_dX3 && y == m_dY3) return qvis::kNotHandled;
      RubberBand::Update(*this, [&] {
        m_dX3 = x;
        m_dY3 = y;
        const WorldPt c = qvis::CircleThroughThree({m_dX1, m_dY1}, {m_dX2, m_dY2}, {x, y});
        m_dCenterX = c.x;
        m_dCenterY = c.y;
        // The radius the drawing uses: centre to first point.
        m_dRadius = qvis::Distance(c, {m_dX1, m_dY1});
      });
      return qvis::kHandled;
    default:
      return qvis::kNotHandled;
  }
}

int CQVIS_Draw3PCircleCmd::MouseDown(unsigned int nFlags, double, double) {
  if (!m_nActive || nFlags != qvis::kLeftButton) return qvis::kNotHandled;
  Draw();
  m_nProgress += 1;
  if (m_nProgress != 3) {
    Draw();
    return m_nProgress;
  }
  m_nProgress = 0;  // complete; the host repaints with the finished circle
  return qvis::kCircle3Complete;
}

int CQVIS_Draw3PCircleCmd::MouseUp(unsigned int nFlags, double x, double y) {
  if (!m_nActive || nFlags != qvis::kRightButton) return qvis::kNotHandled;
  RubberBand::Update(*this, [&] {
    m_dX1 = m_dX2 = x;
    m_dY1 = m_dY2 = y;
    m_nProgress = 0;
  });
  return qvis::kHandled;
}

void CQVIS_Draw3PCircleCmd::Draw() {
  if (!m_nActive) return;
  const RubberBand band(m_pSurface, m_hTargetDC);
  band.XorMode();
  band.NullBrush();
  band.DotPen(m_crXORColor);
  const double s = band.PixelsToWorld(kCrossPixels);
  const WorldPt p1{m_dX1, m_dY1}, p2{m_dX2, m_dY2}, p3{m_dX3, m_dY3};
  switch (m_nProgress) {
    case 0:
      band.Circle(p1, m_dWidth / 2);
      break;
    case 1: {
      band.Cross(p1, s);
      band.Circle(p2, m_dWidth / 2);
      const WorldPt m{(p1.x + p2.x) / 2, (p1.y + p2.y) / 2};
      band.GuideCircle(m, qvis::Distance(m, p1), m_dWidth);
      break;
    }
    case 2: {
      band.Cross(p1, s);
      band.Cross(p2, s);
      const WorldPt c = qvis::CircleThroughThree(p1, p2, p3);
      band.GuideCircle(c, qvis::Distance(c, p1), m_dWidth);
      break;
    }
    default:
      break;
  }
}

void CQVIS_Draw3PCircleCmd::OnDraw() {
  if (m_nActive) Draw();
}

void CQVIS_Draw3PCircleCmd::SetColor(unsigned long crColor, unsigned long crXORColor) {
  qvis::FigureFlow<CQVIS_Draw3PCircleCmd>::SetColor(*this, crColor, crXORColor);
}

void CQVIS_Draw3PCircleCmd::SetLineStyle(int nStyle) {
  RubberBand::Update(*this, [&] { m_nLineStyle = nStyle; });
}
