// CQVIS_GDI world primitives: lines, marks, arrows, swept rectangles, arcs and circles, guide
// outlines, rectangles, polygons and path segments.
#include <cmath>
#include <utility>
#include <vector>

#include "qvis/compat/win32_names.h"
#include "qvis/geometry/kernel.h"
#include "qvis/geometry/line_outline.h"
#include "qvis/geometry/value_types.h"
#include "qvis/gdi/gdi.h"
#include "qvis/render/surface.h"
#include "qvis/render/surface_internal.h"

namespace gdi = qvis::gdi;
using qvis::render::SatAdd;
using qvis::render::SatSub;

namespace {

constexpr double kDegToRad = 3.141592653589793 / 180.0;

enum ArcKind { kArc, kPie, kChord };

// Direction of angle `a` (degrees) with magnitude m. The four axis angles are exact so that
// axis-parallel arrows land on whole world values.
void Direction(double a, double m, double* dx, double* dy) {
  if (a == 0) {
    *dx = m, *dy = 0;
  } else if (a == 90) {
    *dx = 0, *dy = m;
  } else if (a == 180) {
    *dx = -m, *dy = 0;
  } else if (a == 270) {
    *dx = 0, *dy = -m;
  } else {
    *dx = m * std::cos(a * kDegToRad);
    *dy = m * std::sin(a * kDegToRad);
  }
}

}  // namespace

std::vector<CPoint>& CQVIS_GDI::MappedPoints(size_t n) {
  if (m_ptMapped.size() < n) m_ptMapped.resize(n);
  return m_ptMapped;
}

// ----- Lines and marks -----------------------------------------------------------------------

void CQVIS_GDI::DrawLine(double x1, double y1, double x2, double y2) {
  DrawLine(nullptr, x1, y1, x2, y2);
}

void CQVIS_GDI::DrawLine(qvis::HDC hdc, double x1, double y1, double x2, double y2) {
  qvis::HDC dc = ResolveDC(hdc);
  LONG ax = WorldToDeviceX(x1), ay = WorldToDeviceY(y1);
  LONG bx = WorldToDeviceX(x2), by = WorldToDeviceY(y2);
  // Horizontal and vertical lines always run towards the larger coordinate, so the end pixel
  // that the device leaves out is the same whichever way round the line was given.
  if (ay == by) {
    if (ax > bx) std::swap(ax, bx);
  } else if (ax == bx) {
    if (ay > by) std::swap(ay, by);
  }
  gdi::MoveToEx(dc, ax, ay, nullptr);
  gdi::LineTo(dc, bx, by);
}

void CQVIS_GDI::DrawLineTo(double x, double y) { DrawLineTo(nullptr, x, y); }

void CQVIS_GDI::DrawLineTo(qvis::HDC hdc, double x, double y) {
  gdi::LineTo(ResolveDC(hdc), WorldToDeviceX(x), WorldToDeviceY(y));
}

void CQVIS_GDI::DrawCross(double x, double y, double size) { DrawCross(nullptr, x, y, size); }

void CQVIS_GDI::DrawCross(qvis::HDC hdc, double x, double y, double size) {
  DrawLine(hdc, x - size, y - size, x + size, y + size);
  DrawLine(hdc, x + size, y - size, x - size, y + size);
}

void CQVIS_GDI::DrawPlus(double x, double y, double size) { DrawPlus(nullptr, x, y, size); }

void CQVIS_GDI::DrawPlus(qvis::HDC hdc, double x, double y, double size) {
  DrawLine(hdc, x - size, y, x + size, y);
  DrawLine(hdc, x, y - size, x, y + size);
}

void CQVIS_GDI::DrawArrow(double tipX, double tipY, double toX, double toY, double length,
                          double width) {
  DrawArrow(nullptr, tipX, tipY, toX, toY, length, width);
}

void CQVIS_GDI::DrawArrow(qvis::HDC hdc, double tipX, double tipY, double toX, double toY,
                          double length, double width) {
  // The angle is taken with y negated, and the offsets below add +sin to y: together they
  // point the head's base from the tip towards (toX, toY).
  const double a = CQVIS_Math::GetAngle(tipX, -tipY, toX, -toY);
  double dx = 0, dy = 0;
  Direction(a, length, &dx, &dy);
  const double bx = tipX + dx, by = tipY + dy;
  double ox = 0, oy = 0;
  Direction(a + 90, width / 2, &ox, &oy);
  const double c1x = bx + ox, c1y = by + oy;
  Direction(a - 90, width / 2, &ox, &oy);
  const double c2x = bx + ox, c2y = by + oy;
  DrawLine(hdc, tipX, tipY, c1x, c1y);
  DrawLine(hdc, c1x, c1y, c2x, c2y);
  DrawLine(hdc, c2x, c2y, tipX, tipY);
}

void CQVIS_GDI::DrawArrowLine(double x1, double y1, double x2, double y2, double length,
                              double width, COLORREF color) {
  DrawArrowLine(nullptr, x1, y1, x2, y2, length, width, color);
}

void CQVIS_GDI::DrawArrowLine(qvis::HDC hdc, double x1, double y1, double x2, double y2,
                              double length, double width, COLORREF color) {
  PrepareSolidPen(color, hdc);
  DrawLine(hdc, x1, y1, x2, y2);
  DrawArrow(hdc, x1, y1, x2, y2, length, width);
  DrawArrow(hdc, x2, y2, x1, y1, length, width);
}

void CQVIS_GDI::DrawRectangularLine(double x1, double y1, double x2, double y2, double w,
                                    double h) {
  DrawRectangularLine(nullptr, x1, y1, x2, y2, w, h);
}

int CQVIS_GDI::SweptRectangle(double x1, double y1, double x2, double y2, double w, double h,
                              CPoint* out) const {
  const double hw = std::fabs(w) / 2, hh = std::fabs(h) / 2;
  if (x1 == x2 || y1 == y2) {
    const double l = std::fmin(x1, x2) - hw, r = std::fmax(x1, x2) + hw;
    const double t = std::fmin(y1, y2) - hh, b = std::fmax(y1, y2) + hh;
    out[0] = CPoint(WorldToDeviceX(l), WorldToDeviceY(t));
    out[1] = CPoint(WorldToDeviceX(r), WorldToDeviceY(b));
    return 2;
  }
  if (x1 > x2) {
    std::swap(x1, x2);
    std::swap(y1, y2);
  }
  // The hull of the rectangle at both ends: a hexagon whose long sides join the corners that
  // face away from the direction of travel.
  double px[6], py[6];
  if (y2 > y1) {
    const double xs[6] = {x1 - hw, x1 + hw, x2 + hw, x2 + hw, x2 - hw, x1 - hw};
    const double ys[6] = {y1 - hh, y1 - hh, y2 - hh, y2 + hh, y2 + hh, y1 + hh};
    for (int i = 0; i < 6; ++i) px[i] = xs[i], py[i] = ys[i];
  } else {
    const double xs[6] = {x1 - hw, x1 - hw, x2 - hw, x2 + hw, x2 + hw, x1 + hw};
    const double ys[6] = {y1 + hh, y1 - hh, y2 - hh, y2 - hh, y2 + hh, y1 + hh};
    for (int i = 0; i < 6; ++i) px[i] = xs[i], py[i] = ys[i];
  }
  for (int i = 0; i < 6; ++i) out[i] = CPoint(WorldToDeviceX(px[i]), WorldToDeviceY(py[i]));
  return 6;
}

void CQVIS_GDI::DrawRectangularLine(qvis::HDC hdc, double x1, double y1, double x2, double y2,
                                    double w, double h) {
  qvis::HDC dc = ResolveDC(hdc);
  CPoint pts[6];
  if (SweptRectangle(x1, y1, x2, y2, w, h, pts) == 2) {
    gdi::Rectangle(dc, pts[0].x, pts[0].y, pts[1].x, pts[1].y);
  } else {
    gdi::Polygon(dc, pts, 6);
  }
}

// ----- Curves --------------------------------------------------------------------------------

void CQVIS_GDI::ArcLike(int kind, qvis::HDC hdc, double cx, double cy, double r, double sx,
                        double sy, double ex, double ey) {
  if (!(r > 0)) return;
  const LONG rad = WorldToDeviceLength(r);
  if (rad < 1) return;
  const LONG dcx = WorldToDeviceX(cx), dcy = WorldToDeviceY(cy);
  const LONG dsx = WorldToDeviceX(sx), dsy = WorldToDeviceY(sy);
  const LONG dex = WorldToDeviceX(ex), dey = WorldToDeviceY(ey);
  // End points on one ray would make the device draw the full circle; that is DrawCircle's
  // job, so nothing is drawn.
  if (qvis::render::SameRay(dcx, dcy, dsx, dsy, dex, dey)) return;
  qvis::HDC dc = ResolveDC(hdc);
  const int l = SatSub(dcx, rad), t = SatSub(dcy, rad);
  const int rr = SatAdd(dcx, rad), b = SatAdd(dcy, rad);
  switch (kind) {
    case kArc: gdi::Arc(dc, l, t, rr, b, dsx, dsy, dex, dey); break;
    case kPie: gdi::Pie(dc, l, t, rr, b, dsx, dsy, dex, dey); break;
    default: gdi::Chord(dc, l, t, rr, b, dsx, dsy, dex, dey); break;
  }
}

namespace {
double RadiusTo(double cx, double cy, double x, double y) {
  return std::sqrt((x - cx) * (x - cx) + (y - cy) * (y - cy));
}
}  // namespace

void CQVIS_GDI::DrawArc(double cx, double cy, double r, double sx, double sy, double ex,
                        double ey) {
  ArcLike(kArc, nullptr, cx, cy, r, sx, sy, ex, ey);
}
void CQVIS_GDI::DrawArc(qvis::HDC hdc, double cx, double cy, double r, double sx, double sy,
                        double ex, double ey) {
  ArcLike(kArc, hdc, cx, cy, r, sx, sy, ex, ey);
}
void CQVIS_GDI::DrawArc(double cx, double cy, double sx, double sy, double ex, double ey) {
  ArcLike(kArc, nullptr, cx, cy, RadiusTo(cx, cy, sx, sy), sx, sy, ex, ey);
}
void CQVIS_GDI::DrawArc(qvis::HDC hdc, double cx, double cy, double sx, double sy, double ex,
                        double ey) {
  ArcLike(kArc, hdc, cx, cy, RadiusTo(cx, cy, sx, sy), sx, sy, ex, ey);
}
void CQVIS_GDI::DrawPie(double cx, double cy, double r, double sx, double sy, double ex,
                        double ey) {
  ArcLike(kPie, nullptr, cx, cy, r, sx, sy, ex, ey);
}
void CQVIS_GDI::DrawPie(qvis::HDC hdc, double cx, double cy, double r, double sx, double sy,
                        double ex, double ey) {
  ArcLike(kPie, hdc, cx, cy, r, sx, sy, ex, ey);
}
void CQVIS_GDI::DrawPie(double cx, double cy, double sx, double sy, double ex, double ey) {
  ArcLike(kPie, nullptr, cx, cy, RadiusTo(cx, cy, sx, sy), sx, sy, ex, ey);
}
void CQVIS_GDI::DrawPie(qvis::HDC hdc, double cx, double cy, double sx, double sy, double ex,
                        double ey) {
  ArcLike(kPie, hdc, cx, cy, RadiusTo(cx, cy, sx, sy), sx, sy, ex, ey);
}
void CQVIS_GDI::DrawChord(double cx, double cy, double r, double sx, double sy, double ex,
                          double ey) {
  ArcLike(kChord, nullptr, cx, cy, r, sx, sy, ex, ey);
}
void CQVIS_GDI::DrawChord(qvis::HDC hdc, double cx, double cy, double r, double sx, double sy,
                          double ex, double ey) {
  ArcLike(kChord, hdc, cx, cy, r, sx, sy, ex, ey);
}
void CQVIS_GDI::DrawChord(double cx, double cy, double sx, double sy, double ex, double ey) {
  ArcLike(kChord, nullptr, cx, cy, RadiusTo(cx, cy, sx, sy), sx, sy, ex, ey);
}
void CQVIS_GDI::DrawChord(qvis::HDC hdc, double cx, double cy, double sx, double sy, double ex,
                          double ey) {
  ArcLike(kChord, hdc, cx, cy, RadiusTo(cx, cy, sx, sy), sx, sy, ex, ey);
}

void CQVIS_GDI::DrawCircle(double cx, double cy, double r) { DrawCircle(nullptr, cx, cy, r); }

void CQVIS_GDI::DrawCircle(qvis::HDC hdc, double cx, double cy, double r) {
  const LONG rad = WorldToDeviceLength(r);
  const LONG dcx = WorldToDeviceX(cx), dcy = WorldToDeviceY(cy);
  gdi::Ellipse(ResolveDC(hdc), SatSub(dcx, rad), SatSub(dcy, rad), SatAdd(dcx, rad),
               SatAdd(dcy, rad));
}

void CQVIS_GDI::DrawGuideCircle(double cx, double cy, double r, double width) {
  DrawGuideCircle(nullptr, cx, cy, r, width);
}

void CQVIS_GDI::DrawGuideCircle(qvis::HDC hdc, double cx, double cy, double r, double width) {
  if (!(r > 0)) return;
  const double h = width / 2;
  if (WorldToDeviceLength(h) != 0) {
    DrawCircle(hdc, cx, cy, r - h);
    DrawCircle(hdc, cx, cy, r + h);
  } else {
    DrawCircle(hdc, cx, cy, r);
  }
}

void CQVIS_GDI::DrawGuideLine(double x1, double y1, double x2, double y2, double width) {
  DrawGuideLine(nullptr, x1, y1, x2, y2, width);
}

void CQVIS_GDI::DrawGuideLine(qvis::HDC hdc, double x1, double y1, double x2, double y2,
                              double width) {
  if (x1 == x2 && y1 == y2) {
    DrawCircle(hdc, x1, y1, width / 2);
    return;
  }
  CQVIS_LineOutline outline;
  outline.GetGuideArc(x1, y1, x2, y2, width);
  const EO_Line& s1e1 = outline.m_Line1;
  const EO_Line& s2e2 = outline.m_Line2;
  const double s1x = s1e1.m_dX1, s1y = s1e1.m_dY1, e1x = s1e1.m_dX2, e1y = s1e1.m_dY2;
  const double s2x = s2e2.m_dX1, s2y = s2e2.m_dY1, e2x = s2e2.m_dX2, e2y = s2e2.m_dY2;
  // A joins E1 and S2 (the end cap), B joins E2 and S1 (the start cap).
  const double ax = outline.m_EndArc.m_dCX, ay = outline.m_EndArc.m_dCY;
  const double bx = outline.m_StartArc.m_dCX, by = outline.m_StartArc.m_dCY;
  DrawLine(hdc, s1x, s1y, e1x, e1y);
  // The device arc runs counter-clockwise; the order of its ends picks the outer half.
  if (CQVIS_Math::IsCCW(s1x, s1y, e1x, e1y, s2x, s2y) == 1) {
    DrawArc(hdc, ax, ay, s2x, s2y, e1x, e1y);
    DrawLine(hdc, s2x, s2y, e2x, e2y);
    DrawArc(hdc, bx, by, s1x, s1y, e2x, e2y);
  } else {
    DrawArc(hdc, ax, ay, e1x, e1y, s2x, s2y);
    DrawLine(hdc, s2x, s2y, e2x, e2y);
    DrawArc(hdc, bx, by, e2x, e2y, s1x, s1y);
  }
}

void CQVIS_GDI::DrawGuideArc(double cx, double cy, double r, double sx, double sy, double ex,
                             double ey, double width) {
  DrawGuideArc(nullptr, cx, cy, r, sx, sy, ex, ey, width);
}

void CQVIS_GDI::DrawGuideArc(qvis::HDC hdc, double cx, double cy, double r, double sx,
                             double sy, double ex, double ey, double width) {
  if (!(r > 0)) return;
  const double h = width / 2;
  if (!(h > 0)) {
    DrawArc(hdc, cx, cy, r, sx, sy, ex, ey);
    return;
  }
  // Unit directions of the two rays (y down); a ray through the centre itself has none.
  const double ls = RadiusTo(cx, cy, sx, sy), le = RadiusTo(cx, cy, ex, ey);
  if (!(ls > 0) || !(le > 0)) return;
  const double usx = (sx - cx) / ls, usy = (sy - cy) / ls;
  const double uex = (ex - cx) / le, uey = (ey - cy) / le;
  DrawArc(hdc, cx, cy, r + h, sx, sy, ex, ey);
  if (r - h > 0) DrawArc(hdc, cx, cy, r - h, sx, sy, ex, ey);
  // Caps: half circles about the centre line's ends, bulging away from the arc's body. The
  // body leaves the start counter-clockwise, so the start cap runs from the inner to the outer
  // edge and the end cap from the outer to the inner edge.
  const double psx = cx + r * usx, psy = cy + r * usy;
  const double pex = cx + r * uex, pey = cy + r * uey;
  DrawArc(hdc, psx, psy, h, psx - h * usx, psy - h * usy, psx + h * usx, psy + h * usy);
  DrawArc(hdc, pex, pey, h, pex + h * uex, pey + h * uey, pex - h * uex, pey - h * uey);
}

// ----- Rectangles and polygons ---------------------------------------------------------------

void CQVIS_GDI::DrawRectangle(double x1, double y1, double x2, double y2) {
  DrawRectangle(nullptr, x1, y1, x2, y2);
}

void CQVIS_GDI::DrawRectangle(qvis::HDC hdc, double x1, double y1, double x2, double y2) {
  gdi::Rectangle(ResolveDC(hdc), WorldToDeviceX(x1), WorldToDeviceY(y1), WorldToDeviceX(x2),
                 WorldToDeviceY(y2));
}

void CQVIS_GDI::DrawRectangle_Polygon(double x1, double y1, double x2, double y2) {
  DrawRectangle_Polygon(nullptr, x1, y1, x2, y2);
}

void CQVIS_GDI::DrawRectangle_Polygon(qvis::HDC hdc, double x1, double y1, double x2,
                                      double y2) {
  const LONG l = WorldToDeviceX(x1), t = WorldToDeviceY(y1);
  const LONG r = WorldToDeviceX(x2), b = WorldToDeviceY(y2);
  const CPoint pts[4] = {CPoint(l, t), CPoint(r, t), CPoint(r, b), CPoint(l, b)};
  gdi::Polygon(ResolveDC(hdc), pts, 4);
}

void CQVIS_GDI::DrawRectangle_Polyline(double x1, double y1, double x2, double y2) {
  DrawRectangle_Polyline(nullptr, x1, y1, x2, y2);
}

void CQVIS_GDI::DrawRectangle_Polyline(qvis::HDC hdc, double x1, double y1, double x2,
                                       double y2) {
  const LONG l = WorldToDeviceX(x1), t = WorldToDeviceY(y1);
  const LONG r = WorldToDeviceX(x2), b = WorldToDeviceY(y2);
  const CPoint pts[5] = {CPoint(l, t), CPoint(r, t), CPoint(r, b), CPoint(l, b), CPoint(l, t)};
  gdi::Polyline(ResolveDC(hdc), pts, 5);
}

void CQVIS_GDI::DrawPolygon(CPointD* points, int count) { DrawPolygon(nullptr, points, count); }

void CQVIS_GDI::DrawPolygon(qvis::HDC hdc, CPointD* points, int count) {
  if (points == nullptr || count < 3) return;
  std::vector<CPoint>& pts = MappedPoints(static_cast<size_t>(count));
  for (int i = 0; i < count; ++i) {
    pts[i] = CPoint(WorldToDeviceX(points[i].m_dX), WorldToDeviceY(points[i].m_dY));
  }
  gdi::Polygon(ResolveDC(hdc), pts.data(), count);
}

void CQVIS_GDI::DrawPolygon(CPoint* points, int count) { DrawPolygon(nullptr, points, count); }

void CQVIS_GDI::DrawPolygon(qvis::HDC hdc, CPoint* points, int count) {
  if (points == nullptr || count < 3) return;
  std::vector<CPoint>& pts = MappedPoints(static_cast<size_t>(count));
  for (int i = 0; i < count; ++i) {
    pts[i] = CPoint(WorldToDeviceX(points[i].x), WorldToDeviceY(points[i].y));
  }
  gdi::Polygon(ResolveDC(hdc), pts.data(), count);
}

void CQVIS_GDI::DrawPolyPolygon(CPoint* points, int count, int* counts, int polyCount) {
  DrawPolyPolygon(nullptr, points, count, counts, polyCount);
}

void CQVIS_GDI::DrawPolyPolygon(qvis::HDC hdc, CPoint* points, int count, int* counts,
                                int polyCount) {
  if (points == nullptr || counts == nullptr || count <= 0 || polyCount <= 0) return;
  std::int64_t total = 0;
  for (int i = 0; i < polyCount; ++i) {
    if (counts[i] < 2) return;
    total += counts[i];
  }
  if (total > count) return;
  std::vector<CPoint>& pts = MappedPoints(static_cast<size_t>(total));
  for (std::int64_t i = 0; i < total; ++i) {
    pts[i] = CPoint(WorldToDeviceX(points[i].x), WorldToDeviceY(points[i].y));
  }
  gdi::PolyPolygon(ResolveDC(hdc), pts.data(), counts, polyCount);
}

void CQVIS_GDI::DrawPolyline(CPoint* points, int count) { DrawPolyline(nullptr, points, count); }

void CQVIS_GDI::DrawPolyline(qvis::HDC hdc, CPoint* points, int count) {
  if (points == nullptr || count < 2) return;
  std::vector<CPoint>& pts = MappedPoints(static_cast<size_t>(count));
  for (int i = 0; i < count; ++i) {
    pts[i] = CPoint(WorldToDeviceX(points[i].x), WorldToDeviceY(points[i].y));
  }
  gdi::Polyline(ResolveDC(hdc), pts.data(), count);
}

void CQVIS_GDI::DrawPolygonScreen(CPoint* points, int count) {
  DrawPolygonScreen(nullptr, points, count);
}

void CQVIS_GDI::DrawPolygonScreen(qvis::HDC hdc, CPoint* points, int count) {
  if (points == nullptr || count < 3) return;
  gdi::Polygon(ResolveDC(hdc), points, count);
}

// ----- Path segments -------------------------------------------------------------------------

void CQVIS_GDI::AddLinePath(double x1, double y1, double x2, double y2) {
  AddLinePath(nullptr, x1, y1, x2, y2);
}

void CQVIS_GDI::AddLinePath(qvis::HDC hdc, double x1, double y1, double x2, double y2) {
  qvis::HDC dc = ResolveDC(hdc);
  const CPoint start(WorldToDeviceX(x1), WorldToDeviceY(y1));
  CPoint current;
  // A MoveToEx inside a path starts a new figure; consecutive segments stay one figure.
  if (!gdi::GetCurrentPositionEx(dc, &current) || current != start) {
    gdi::MoveToEx(dc, start.x, start.y, nullptr);
  }
  gdi::LineTo(dc, WorldToDeviceX(x2), WorldToDeviceY(y2));
}

void CQVIS_GDI::AddCirclePath(double cx, double cy, double r) {
  AddCirclePath(nullptr, cx, cy, r);
}

void CQVIS_GDI::AddCirclePath(qvis::HDC hdc, double cx, double cy, double r) {
  if (!(r > 0)) return;
  const LONG rad = WorldToDeviceLength(r);
  if (rad < 1) return;
  qvis::HDC dc = ResolveDC(hdc);
  const LONG dcx = WorldToDeviceX(cx), dcy = WorldToDeviceY(cy);
  const int right = SatAdd(dcx, rad);
  gdi::MoveToEx(dc, right, dcy, nullptr);
  // Equal start and end rays make ArcTo trace the whole circle.
  gdi::ArcTo(dc, SatSub(dcx, rad), SatSub(dcy, rad), right, SatAdd(dcy, rad), right, dcy, right,
             dcy);
  gdi::CloseFigure(dc);
}

void CQVIS_GDI::AddArcPath(double cx, double cy, double r, double sx, double sy, double ex,
                           double ey, int direction) {
  AddArcPath(nullptr, cx, cy, r, sx, sy, ex, ey, direction);
}

void CQVIS_GDI::AddArcPath(qvis::HDC hdc, double cx, double cy, double r, double sx, double sy,
                           double ex, double ey, int direction) {
  if (!(r > 0)) return;
  const LONG rad = WorldToDeviceLength(r);
  if (rad < 1) return;
  qvis::HDC dc = ResolveDC(hdc);
  const LONG dcx = WorldToDeviceX(cx), dcy = WorldToDeviceY(cy);
  const int previous = gdi::GetArcDirection(dc);
  if (direction == AD_COUNTERCLOCKWISE || direction == AD_CLOCKWISE) {
    gdi::SetArcDirection(dc, direction);
  }
  gdi::ArcTo(dc, SatSub(dcx, rad), SatSub(dcy, rad), SatAdd(dcx, rad), SatAdd(dcy, rad),
             WorldToDeviceX(sx), WorldToDeviceY(sy), WorldToDeviceX(ex), WorldToDeviceY(ey));
  if (previous != 0) gdi::SetArcDirection(dc, previous);
}
