// CQVIS_LineOutline and its pieces.
#include "qvis/geometry/line_outline.h"

#include <cmath>

#include "qvis/geometry/kernel.h"
#include "qvis/geometry/tolerance.h"

void EO_Point::Set(double x, double y) { Set(x, y, 0.0, 0.0, 0.0, 0); }

void EO_Point::Set(double x, double y, double a, double b, double c, int n) {
  m_dX = x;
  m_dY = y;
  m_dValue1 = a;
  m_dValue2 = b;
  m_dValue3 = c;
  m_nValue = n;
}

void EO_Line::Set(double x1, double y1, double x2, double y2) {
  m_dX1 = x1;
  m_dY1 = y1;
  m_dX2 = x2;
  m_dY2 = y2;
}

void EO_Arc::Set(double cx, double cy, double r, double sx, double sy, double ex, double ey) {
  m_dCX = cx;
  m_dCY = cy;
  m_dRadius = r;
  m_dStartX = sx;
  m_dStartY = sy;
  m_dEndX = ex;
  m_dEndY = ey;
}

void CQVIS_LineOutline::GetGuideLine(double x1, double y1, double x2, double y2, double width) {
  const double h = width / 2;
  const double dx = x2 - x1;
  const double dy = y2 - y1;
  double ox = h;
  double oy = h;
  if (dx != 0 || dy != 0) {
    const double len = std::sqrt(dy * dy + dx * dx);
    ox = dy / len * h;
    oy = dx / len * h;
  }
  m_Line1.Set(x1 + ox, y1 - oy, x2 + ox, y2 - oy);
  m_Line2.Set(x2 - ox, y2 + oy, x1 - ox, y1 + oy);
}

void CQVIS_LineOutline::FillCaps(double x1, double y1, double x2, double y2, double width,
                                 bool y_up) {
  GetGuideLine(x1, y1, x2, y2, width);
  const double h = width / 2;
  m_StartArc.Set(x1, y1, h, m_Line2.m_dX2, m_Line2.m_dY2, m_Line1.m_dX1, m_Line1.m_dY1);
  m_EndArc.Set(x2, y2, h, m_Line1.m_dX2, m_Line1.m_dY2, m_Line2.m_dX1, m_Line2.m_dY1);
  // Negating y before the kernel's y-down measure gives the y-up counter-clockwise angle.
  const double s = y_up ? -1.0 : 1.0;
  for (EO_Arc* arc : {&m_StartArc, &m_EndArc}) {
    arc->m_dStartAngle =
        CQVIS_Math::GetAngle(arc->m_dCX, s * arc->m_dCY, arc->m_dStartX, s * arc->m_dStartY);
    arc->m_dEndAngle =
        CQVIS_Math::GetAngle(arc->m_dCX, s * arc->m_dCY, arc->m_dEndX, s * arc->m_dEndY);
  }
}

void CQVIS_LineOutline::GetGuideArc(double x1, double y1, double x2, double y2, double width) {
  FillCaps(x1, y1, x2, y2, width, true);
}

void CQVIS_LineOutline::GetGuideArc2(double x1, double y1, double x2, double y2, double width) {
  FillCaps(x1, y1, x2, y2, width, false);
}

bool CQVIS_LineOutline::IsSameLinePoint() const {
  const EO_Line& a = m_Line1;
  const EO_Line& b = m_Line2;
  const bool same = a.m_dX1 == b.m_dX1 && a.m_dY1 == b.m_dY1 && a.m_dX2 == b.m_dX2 &&
                    a.m_dY2 == b.m_dY2;
  const bool reversed = a.m_dX1 == b.m_dX2 && a.m_dY1 == b.m_dY2 && a.m_dX2 == b.m_dX1 &&
                        a.m_dY2 == b.m_dY1;
  return same || reversed;
}

bool CQVIS_LineOutline::IsSameArcPoint() const {
  const EO_Arc& a = m_StartArc;
  const EO_Arc& b = m_EndArc;
  return a.m_dCX == b.m_dCX && a.m_dCY == b.m_dCY && a.m_dRadius == b.m_dRadius &&
         a.m_dStartX == b.m_dStartX && a.m_dStartY == b.m_dStartY && a.m_dEndX == b.m_dEndX &&
         a.m_dEndY == b.m_dEndY && a.m_dStartAngle == b.m_dStartAngle &&
         a.m_dEndAngle == b.m_dEndAngle;
}

double CQVIS_LineOutline::Angle(double x1, double y1, double x2, double y2) const {
  if (x1 == x2) return y1 <= y2 ? 90.0 : 270.0;
  if (y1 == y2) return x2 > x1 ? 0.0 : 180.0;
  const double len = Distance(x1, y1, x2, y2);
  if (len < qvis::tol::kOutlineShortLine) return 0.0;
  const double c = (x2 - x1) / len;
  if (c < -1 || c > 1) return 0.0;
  const double a = std::acos(c) / qvis::tol::kOutlineRadPerDegree;
  return y1 <= y2 ? a : 360.0 - a;
}

double CQVIS_LineOutline::Distance(double x1, double y1, double x2, double y2) const {
  return std::sqrt((x2 - x1) * (x2 - x1) + (y2 - y1) * (y2 - y1));
}
