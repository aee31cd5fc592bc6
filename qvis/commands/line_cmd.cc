#include "qvis/commands/line_cmd.h"

#include "qvis/commands/rubber_band.h"
#include "qvis/commands/vertex_list.h"
#include "qvis/compat/win32_names.h"

using qvis::RubberBand;
using qvis::WorldPt;
using qvis::WorldSeg;

namespace {
using Flow = qvis::VertexListFlow<CQVIS_DrawLineCmd>;

bool IsRectangularCap(int style) { return style == PS_ENDCAP_SQUARE || style == PS_ENDCAP_FLAT; }
}  // namespace

CQVIS_DrawLineCmd::CQVIS_DrawLineCmd(CQVIS_GDI* pSurface)
    : m_pPointList(nullptr),
      m_pBackupList(nullptr),
      m_pSurface(pSurface),
      m_hTargetDC(qvis::OriginContextOf(pSurface)),
      m_nActive(0),
      m_dWidth(4.0),
      m_dHeight(0.0),
      m_nLineStyle(0),
      m_nEndCapStyle(0),
      m_nPxy(0),
      m_nLayer(0),
      m_nApertureID(0),
      m_dAnchorX(0.0),
      m_dAnchorY(0.0),
      m_dCursorX(0.0),
      m_dCursorY(0.0),
      m_dPx(0.0),
      m_dPy(0.0),
      m_nProgress(0),
      m_nInfoStep(0),
      m_crColor(0x0000FF),
      m_crXORColor(0x0000FF),
      m_crBackupColor(0xFF0000) {
  Init();
}

CQVIS_DrawLineCmd::CQVIS_DrawLineCmd(const CQVIS_DrawLineCmd& other)
    : m_pPointList(nullptr), m_pBackupList(nullptr) {
  *this = other;
}

CQVIS_DrawLineCmd& CQVIS_DrawLineCmd::operator=(const CQVIS_DrawLineCmd& other) {
  if (this == &other) return *this;
  Flow::CopyState(*this, other);
  m_dWidth = other.m_dWidth;
  m_dHeight = other.m_dHeight;
  m_nEndCapStyle = other.m_nEndCapStyle;
  return *this;
}

CQVIS_DrawLineCmd::~CQVIS_DrawLineCmd() { Release(); }

QVIS_VERTEX_LIST_OPERATIONS(CQVIS_DrawLineCmd)

void CQVIS_DrawLineCmd::Draw() {
  if (!m_nActive) return;
  const RubberBand band(m_pSurface, m_hTargetDC);
  band.XorMode();
  band.NullBrush();
  const double w = m_dWidth;
  if (m_nProgress == 0) {
    const WorldPt a{m_dAnchorX, m_dAnchorY};
    if (m_nEndCapStyle == PS_ENDCAP_ROUND) {
      band.ThinPen(m_crXORColor);
      band.Circle(a, w / 2);
    } else if (m_nEndCapStyle == PS_ENDCAP_SQUARE) {
      band.ThinPen(m_crXORColor);
      band.SolidBrush(m_crXORColor);
      band.Rectangle(a.x - w / 2, a.y + w / 2, a.x + w / 2, a.y - w / 2);
    }
    return;
  }
  WorldSeg legs[2];
  const int n = Flow::Legs(*this, legs);
  if (n == 0) return;
  const bool rectangular = m_nLineStyle == 0 && IsRectangularCap(m_nEndCapStyle);
  if (rectangular) {
    band.ThinPen(m_crXORColor);
    band.SolidBrush(m_crXORColor);
  } else {
    band.WorldPen(w, m_crXORColor);
  }
  for (int i = 0; i < n; ++i) {
    if (rectangular) {
      band.RectangularLine(legs[i].from, legs[i].to, w);
    } else {
      band.Line(legs[i].from, legs[i].to);
    }
  }
}

void CQVIS_DrawLineCmd::SetWidth(double dWidth, bool bAll) {
  if (!m_nActive) {
    m_dWidth = dWidth;
    return;
  }
  Flow::ListChange(*this, [&] {
    m_dWidth = dWidth;
    if (bAll && m_pPointList) {
      for (CQVIS_DrawLinePoint* p : *m_pPointList) p->m_dWidth = dWidth;
    }
  });
}

void CQVIS_DrawLineCmd::SetHeight(double dHeight, bool bAll) {
  if (!m_nActive) {
    m_dHeight = dHeight;
    return;
  }
  Flow::ListChange(*this, [&] {
    m_dHeight = dHeight;
    if (bAll && m_pPointList) {
      for (CQVIS_DrawLinePoint* p : *m_pPointList) p->m_dHeight = dHeight;
    }
  });
}

void CQVIS_DrawLineCmd::AddPoint(double x, double y, double dWidth) {
  Flow::AddPoint(*this, x, y, [&] { return new CQVIS_DrawLinePoint(x, y, dWidth, 0.0); });
}

void CQVIS_DrawLineCmd::PaintSegments(const qvis::LinePointList* list, COLORREF roundColor,
                                      COLORREF rectColor) {
  const RubberBand band(m_pSurface, m_hTargetDC);
  const bool rectangular = IsRectangularCap(m_nEndCapStyle);
  for (INT_PTR i = 0; i + 1 < list->GetSize(); ++i) {
    const CQVIS_DrawLinePoint* a = list->GetAt(i);
    const CQVIS_DrawLinePoint* b = list->GetAt(i + 1);
    if (rectangular) {
      band.ThinPen(rectColor);
      band.SolidBrush(rectColor);
      band.RectangularLine({a->m_dX, a->m_dY}, {b->m_dX, b->m_dY}, b->m_dWidth);
    } else {
      band.WorldPen(b->m_dWidth, roundColor);
      band.Line({a->m_dX, a->m_dY}, {b->m_dX, b->m_dY});
    }
  }
}

void CQVIS_DrawLineCmd::DrawLineList() {
  Flow::PaintList(*this, m_pPointList, false,
                  [&] { PaintSegments(m_pPointList, m_crColor, m_crXORColor); });
}

void CQVIS_DrawLineCmd::DrawLineList(unsigned long) {
  Flow::PaintList(*this, m_pPointList, true,
                  [&] { PaintSegments(m_pPointList, m_crXORColor, m_crXORColor); });
}

void CQVIS_DrawLineCmd::DrawLineListBackup(unsigned long) {
  Flow::PaintList(*this, m_pBackupList, false,
                  [&] { PaintSegments(m_pBackupList, m_crXORColor, m_crXORColor); });
}
