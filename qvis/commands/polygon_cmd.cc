#include "qvis/commands/polygon_cmd.h"

#include "qvis/commands/rubber_band.h"
#include "qvis/commands/vertex_list.h"
#include "qvis/compat/win32_names.h"

using qvis::RubberBand;
using qvis::WorldPt;
using qvis::WorldSeg;

namespace {
using Owned = qvis::OwnedList<CQVIS_DrawPolygonPoint>;
using Flow = qvis::VertexListFlow<CQVIS_DrawPolygonCmd>;

// Footprint size in pixels (the cross's half length).
constexpr double kFootprintPixels = 5.0;

// Edge draws the edge from a to b: a straight line, or the arc b carries.
void Edge(const RubberBand& band, const CQVIS_DrawPolygonPoint& a,
          const CQVIS_DrawPolygonPoint& b) {
  const WorldPt pa{a.m_dX, a.m_dY}, pb{b.m_dX, b.m_dY};
  if (!b.m_nArc) {
    band.Line(pa, pb);
    return;
  }
  const WorldPt c{b.m_dCenterX, b.m_dCenterY};
  const double r = qvis::Distance(c, pa);
  if (b.m_nDirection == AD_CLOCKWISE) {
    band.Arc(c, r, pb, pa);  // the same arc, run counter-clockwise from its other end
  } else {
    band.Arc(c, r, pa, pb);
  }
}
}  // namespace

CQVIS_DrawPolygonCmd::CQVIS_DrawPolygonCmd(CQVIS_GDI* pSurface)
    : m_pPointList(nullptr),
      m_pBackupList(nullptr),
      m_pSurface(pSurface),
      m_hTargetDC(qvis::OriginContextOf(pSurface)),
      m_nActive(0),
      m_nLineStyle(0),
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

CQVIS_DrawPolygonCmd::CQVIS_DrawPolygonCmd(const CQVIS_DrawPolygonCmd& other)
    : m_pPointList(nullptr), m_pBackupList(nullptr) {
  *this = other;
}

CQVIS_DrawPolygonCmd& CQVIS_DrawPolygonCmd::operator=(const CQVIS_DrawPolygonCmd& other) {
  if (this == &other) return *this;
  Flow::CopyState(*this, other);
  return *this;
}

CQVIS_DrawPolygonCmd::~CQVIS_DrawPolygonCmd() { Release(); }

QVIS_VERTEX_LIST_OPERATIONS(CQVIS_DrawPolygonCmd)

void CQVIS_DrawPolygonCmd::Draw() {
  if (!m_nActive) return;
  const RubberBand band(m_pSurface, m_hTargetDC);
  band.XorMode();
  band.NullBrush();
  if (m_nLineStyle == 0) {
    band.ThinPen(m_crXORColor);
  } else {
    band.DotPen(m_crXORColor);
  }
  if (m_nProgress == 0) {
    band.Plus({m_dAnchorX, m_dAnchorY}, band.PixelsToWorld(kFootprintPixels));
    return;
  }
  WorldSeg legs[2];
  const int n = Flow::Legs(*this, legs);
  for (int i = 0; i < n; ++i) band.Line(legs[i].from, legs[i].to);
  if (Owned::Count(m_pPointList) >= 2) {
    const CQVIS_DrawPolygonPoint* first = m_pPointList->GetAt(0);
    band.Line({m_dCursorX, m_dCursorY}, {first->m_dX, first->m_dY});
  }
}

void CQVIS_DrawPolygonCmd::AddPoint(double x, double y) {
  Flow::AddPoint(*this, x, y, [&] { return new CQVIS_DrawPolygonPoint(x, y); });
}

void CQVIS_DrawPolygonCmd::SetLastPointArcInfo(double dCenterX, double dCenterY,
                                               int nDirection) {
  if (Owned::Count(m_pPointList) < 2) return;
  CQVIS_DrawPolygonPoint* last = m_pPointList->GetAt(m_pPointList->GetUpperBound());
  Flow::ListChange(*this, [&] {
    last->m_nArc = 1;
    last->m_dCenterX = dCenterX;
    last->m_dCenterY = dCenterY;
    last->m_nDirection = nDirection;
  });
}

void CQVIS_DrawPolygonCmd::PaintEdges(const qvis::PolygonPointList* list, bool closed,
                                      COLORREF color) {
  const RubberBand band(m_pSurface, m_hTargetDC);
  band.ThinPen(color);
  band.NullBrush();
  const INT_PTR n = list->GetSize();
  for (INT_PTR i = 0; i + 1 < n; ++i) Edge(band, *list->GetAt(i), *list->GetAt(i + 1));
  if (closed && n >= 3) {
    const CQVIS_DrawPolygonPoint* last = list->GetAt(n - 1);
    const CQVIS_DrawPolygonPoint* first = list->GetAt(0);
    band.Line({last->m_dX, last->m_dY}, {first->m_dX, first->m_dY});
  }
}

void CQVIS_DrawPolygonCmd::DrawLineList() {
  Flow::PaintList(*this, m_pPointList, false,
                  [&] { PaintEdges(m_pPointList, m_nProgress == 0, m_crColor); });
}

void CQVIS_DrawPolygonCmd::DrawLineList(unsigned long) {
  Flow::PaintList(*this, m_pPointList, true,
                  [&] { PaintEdges(m_pPointList, m_nProgress == 0, m_crXORColor); });
}

void CQVIS_DrawPolygonCmd::DrawLineListBackup(unsigned long) {
  Flow::PaintList(*this, m_pBackupList, false,
                  [&] { PaintEdges(m_pBackupList, false, m_crXORColor); });
}
