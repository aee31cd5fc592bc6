// CQVIS_GDI translucent (GP_) primitives: the figures of the world primitives drawn with a
// colour that carries an opacity, through the device layer's alpha drawing. Nothing is cached;
// the DC's pen, brush and raster operation are not touched (GP_DrawCross / GP_DrawPlus aside,
// which are the plain line marks).
#include <cmath>
#include <utility>

#include "qvis/compat/win32_names.h"
#include "qvis/coords/pixel_rounding.h"
#include "qvis/gdi/alpha.h"
#include "qvis/gdi/gdi.h"
#include "qvis/render/alpha_startup.h"
#include "qvis/render/gdi_objects.h"
#include "qvis/render/surface.h"
#include "qvis/render/surface_internal.h"

namespace gdi = qvis::gdi;
using qvis::render::SatAdd;
using qvis::render::SatMul;
using qvis::render::SatSub;

namespace {

constexpr double kRadToDeg = 180.0 / 3.141592653589793;
constexpr double kHeadLength = 10.0;  // device arrow heads of GP_DrawArrowLine, pixels
constexpr double kHeadWidth = 6.0;

// The translucent path draws only while it is started (a failed start leaves it blank).
bool Running() { return qvis::AlphaIsRunning(); }

// Pen widths are at least 1 pixel and at most kMaxPenWidth: a wider pen covers any screen the
// same way and only costs the stroker time.
constexpr int kMaxPenWidth = 1 << 16;
float PenWidth(int pixels) {
  return static_cast<float>(pixels < 1 ? 1 : pixels > kMaxPenWidth ? kMaxPenWidth : pixels);
}

// Angle of (x, y) seen from (cx, cy), degrees clockwise from +x on the y-down device plane.
double DeviceAngle(int cx, int cy, int x, int y) {
  return std::atan2(static_cast<double>(y) - cy, static_cast<double>(x) - cx) * kRadToDeg;
}

// Sweep from `start` to `end` in the DC's arc direction: counter-clockwise on screen (negative
// sweep) by default, clockwise (positive) when the DC says so. Always within (0, 360] in size.
double Sweep(qvis::HDC dc, double start, double end) {
  if (gdi::GetArcDirection(dc) == AD_CLOCKWISE) {
    double s = std::fmod(end - start, 360.0);
    if (s <= 0) s += 360.0;
    return s;
  }
  double s = std::fmod(start - end, 360.0);
  if (s <= 0) s += 360.0;
  return -s;
}

// An open arrow head at (tx, ty) whose base lies towards (fx, fy).
void ArrowHead(qvis::HDC dc, std::uint32_t argb, double tx, double ty, double fx, double fy) {
  const double dx = fx - tx, dy = fy - ty;
  const double len = std::sqrt(dx * dx + dy * dy);
  if (!(len > 0) || !std::isfinite(len)) return;
  const double ux = dx / len, uy = dy / len;
  const double bx = tx + ux * kHeadLength, by = ty + uy * kHeadLength;
  const double hw = kHeadWidth / 2;
  const int c1x = qvis::RoundToPixel(bx - uy * hw), c1y = qvis::RoundToPixel(by + ux * hw);
  const int c2x = qvis::RoundToPixel(bx + uy * hw), c2y = qvis::RoundToPixel(by - ux * hw);
  const int x = qvis::RoundToPixel(tx), y = qvis::RoundToPixel(ty);
  gdi::GpDrawLine(dc, argb, 1.0f, x, y, c1x, c1y);
  gdi::GpDrawLine(dc, argb, 1.0f, c1x, c1y, c2x, c2y);
  gdi::GpDrawLine(dc, argb, 1.0f, c2x, c2y, x, y);
}

}  // namespace

std::uint32_t CQVIS_GDI::GpArgb(COLORREF color, int opacity) {
  return gdi::ArgbFromColor(color, opacity);
}

void CQVIS_GDI::GP_DrawLine(qvis::HDC hdc, double x1, double y1, double x2, double y2,
                            double width, COLORREF color, int opacity) {
  if (!Running()) return;
  LONG ax = WorldToDeviceX(x1), ay = WorldToDeviceY(y1);
  LONG bx = WorldToDeviceX(x2), by = WorldToDeviceY(y2);
  if (ay == by) {
    if (ax > bx) std::swap(ax, bx);
  } else if (ax == bx) {
    if (ay > by) std::swap(ay, by);
  }
  gdi::GpDrawLine(ResolveDC(hdc), GpArgb(color, opacity), PenWidth(PenPixelWidth(width)), ax,
                  ay, bx, by);
}

void CQVIS_GDI::GP_DrawLine(qvis::HDC hdc, double x1, double y1, double x2, double y2) {
  const qvis::HDC dc = ResolveDC(hdc);
  const COLORREF text = gdi::GetTextColor(dc);
  GP_DrawLine(hdc, x1, y1, x2, y2, 0.0, text == gdi::kClrInvalid ? 0 : text, 255);
}

void CQVIS_GDI::GP_DrawArrowLine(qvis::HDC hdc, double x1, double y1, double x2, double y2,
                                 COLORREF color, int opacity) {
  GP_DrawArrowLine(hdc, static_cast<long>(WorldToDeviceX(x1)),
                   static_cast<long>(WorldToDeviceY(y1)), static_cast<long>(WorldToDeviceX(x2)),
                   static_cast<long>(WorldToDeviceY(y2)), color, opacity);
}

void CQVIS_GDI::GP_DrawArrowLine(qvis::HDC hdc, long x1, long y1, long x2, long y2,
                                 COLORREF color, int opacity) {
  if (!Running()) return;
  const qvis::HDC dc = ResolveDC(hdc);
  const std::uint32_t argb = GpArgb(color, opacity);
  const int ax = qvis::render::Sat(x1), ay = qvis::render::Sat(y1);
  const int bx = qvis::render::Sat(x2), by = qvis::render::Sat(y2);
  gdi::GpDrawLine(dc, argb, 1.0f, ax, ay, bx, by);
  ArrowHead(dc, argb, ax, ay, bx, by);
  ArrowHead(dc, argb, bx, by, ax, ay);
}

void CQVIS_GDI::GP_DrawRectangularLine(qvis::HDC hdc, double x1, double y1, double x2,
                                       double y2, double w, double h, COLORREF color,
                                       int opacity) {
  if (!Running()) return;
  CPoint pts[6];
  int n = SweptRectangle(x1, y1, x2, y2, w, h, pts);
  if (n == 2) {
    const CPoint tl = pts[0], br = pts[1];
    pts[0] = CPoint(tl.x, tl.y);
    pts[1] = CPoint(br.x, tl.y);
    pts[2] = CPoint(br.x, br.y);
    pts[3] = CPoint(tl.x, br.y);
    n = 4;
  }
  gdi::GpFillPolygon(ResolveDC(hdc), pts, n, GpArgb(color, opacity));
}

void CQVIS_GDI::GP_DrawArc(qvis::HDC hdc, double cx, double cy, double r, double sx, double sy,
                           double ex, double ey, double width, COLORREF color, int opacity) {
  if (!Running() || !(r > 0)) return;
  const LONG rad = WorldToDeviceLength(r);
  if (rad < 1 || rad > qvis::render::kMaxBuiltRadius) return;
  const LONG dcx = WorldToDeviceX(cx), dcy = WorldToDeviceY(cy);
  const LONG dsx = WorldToDeviceX(sx), dsy = WorldToDeviceY(sy);
  const LONG dex = WorldToDeviceX(ex), dey = WorldToDeviceY(ey);
  if (qvis::render::SameRay(dcx, dcy, dsx, dsy, dex, dey)) return;
  const qvis::HDC dc = ResolveDC(hdc);
  const double start = DeviceAngle(dcx, dcy, dsx, dsy);
  const double sweep = Sweep(dc, start, DeviceAngle(dcx, dcy, dex, dey));
  gdi::GpDrawArc(dc, GpArgb(color, opacity), PenWidth(PenPixelWidth(width)), SatSub(dcx, rad),
                 SatSub(dcy, rad), SatMul(rad, 2), SatMul(rad, 2), static_cast<float>(start),
                 static_cast<float>(sweep));
}

void CQVIS_GDI::GP_DrawArc(qvis::HDC hdc, double cx, double cy, double sx, double sy,
                           double ex, double ey, double width, COLORREF color, int opacity) {
  const double r = std::sqrt((sx - cx) * (sx - cx) + (sy - cy) * (sy - cy));
  GP_DrawArc(hdc, cx, cy, r, sx, sy, ex, ey, width, color, opacity);
}

void CQVIS_GDI::GP_DrawPie(qvis::HDC hdc, double cx, double cy, double r, double sx, double sy,
                           double ex, double ey, COLORREF color, int opacity) {
  if (!Running() || !(r > 0)) return;
  const LONG rad = WorldToDeviceLength(r);
  if (rad < 1 || rad > qvis::render::kMaxBuiltRadius) return;
  const LONG dcx = WorldToDeviceX(cx), dcy = WorldToDeviceY(cy);
  const LONG dsx = WorldToDeviceX(sx), dsy = WorldToDeviceY(sy);
  const LONG dex = WorldToDeviceX(ex), dey = WorldToDeviceY(ey);
  if (qvis::render::SameRay(dcx, dcy, dsx, dsy, dex, dey)) return;
  const qvis::HDC dc = ResolveDC(hdc);
  const double start = DeviceAngle(dcx, dcy, dsx, dsy);
  const double sweep = Sweep(dc, start, DeviceAngle(dcx, dcy, dex, dey));
  gdi::GpDrawPie(dc, GpArgb(color, opacity), 1.0f, SatSub(dcx, rad), SatSub(dcy, rad),
                 SatMul(rad, 2), SatMul(rad, 2), static_cast<float>(start),
                 static_cast<float>(sweep));
}

void CQVIS_GDI::GP_DrawCircle(qvis::HDC hdc, double cx, double cy, double r, double width,
                              COLORREF color, int opacity) {
  if (!Running()) return;
  const LONG rad = WorldToDeviceLength(r);
  if (rad > qvis::render::kMaxBuiltRadius || rad < -qvis::render::kMaxBuiltRadius) return;
  const LONG dcx = WorldToDeviceX(cx), dcy = WorldToDeviceY(cy);
  gdi::GpDrawEllipse(ResolveDC(hdc), GpArgb(color, opacity), PenWidth(PenPixelWidth(width)),
                     SatSub(dcx, rad), SatSub(dcy, rad), SatMul(rad, 2), SatMul(rad, 2));
}

void CQVIS_GDI::GP_DrawRectangle(qvis::HDC hdc, double x1, double y1, double x2, double y2,
                                 COLORREF color, int opacity) {
  if (!Running()) return;
  LONG l = WorldToDeviceX(x1), t = WorldToDeviceY(y1);
  LONG r = WorldToDeviceX(x2), b = WorldToDeviceY(y2);
  if (l > r) std::swap(l, r);
  if (t > b) std::swap(t, b);
  gdi::GpFillRect(ResolveDC(hdc), l, t, SatSub(r, l), SatSub(b, t), GpArgb(color, opacity));
}

void CQVIS_GDI::GP_DrawRectangleWH(qvis::HDC hdc, double x, double y, double w, double h,
                                   COLORREF color, int opacity) {
  GP_DrawRectangle(hdc, x, y, x + w, y + h, color, opacity);
}

void CQVIS_GDI::GP_DrawPolygonScreen(qvis::HDC hdc, CPoint* points, int count, COLORREF color,
                                     int opacity) {
  if (!Running() || points == nullptr || count < 3) return;
  gdi::GpFillPolygon(ResolveDC(hdc), points, count, GpArgb(color, opacity));
}

void CQVIS_GDI::FillPadAlpha(qvis::HDC dc, qvis::HRGN region, COLORREF color, int opacity) {
  if (region == nullptr) return;
  // The translucent pads ignore the fill mode: always one solid fill of the region.
  gdi::GpFillRegion(dc, region, GpArgb(color, opacity));
}

void CQVIS_GDI::GP_DrawCircleRgn(qvis::HDC hdc, double cx, double cy, double r,
                                 double holeWidth, double holeHeight, COLORREF color,
                                 int opacity) {
  if (!Running()) return;
  const qvis::HDC dc = ResolveDC(hdc);
  FillPadAlpha(dc, PadRegion(CircleOutline(dc, cx, cy, r), dc, cx, cy, holeWidth, holeHeight, 0),
               color, opacity);
}

void CQVIS_GDI::GP_DrawRectangleRgn(qvis::HDC hdc, double x1, double y1, double x2, double y2,
                                    double holeWidth, double holeHeight, double angle,
                                    COLORREF color, int opacity) {
  if (!Running()) return;
  const qvis::HDC dc = ResolveDC(hdc);
  const double cx = (x1 + x2) / 2, cy = (y1 + y2) / 2;
  FillPadAlpha(dc,
               PadRegion(RectangleOutline(dc, cx, cy, std::fabs(x2 - x1), std::fabs(y2 - y1),
                                          angle),
                         dc, cx, cy, holeWidth, holeHeight, angle),
               color, opacity);
}

void CQVIS_GDI::GP_DrawObroundRgn(qvis::HDC hdc, double cx, double cy, double width,
                                  double height, double holeWidth, double holeHeight,
                                  double angle, COLORREF color, int opacity) {
  if (!Running()) return;
  const qvis::HDC dc = ResolveDC(hdc);
  FillPadAlpha(dc, ObroundRegion(dc, cx, cy, width, height, holeWidth, holeHeight, angle), color,
               opacity);
}

void CQVIS_GDI::GP_DrawPolygonRgnScreen(qvis::HDC hdc, CPoint* points, int count, double cx,
                                        double cy, double holeWidth, double holeHeight,
                                        COLORREF color, int opacity) {
  if (!Running()) return;
  const qvis::HDC dc = ResolveDC(hdc);
  FillPadAlpha(dc,
               PadRegion(PolygonOutline(dc, points, count,
                                                gdi::GetPolyFillMode(dc) == WINDING ? WINDING : ALTERNATE), dc, cx, cy, holeWidth,
                         holeHeight, 0),
               color, opacity);
}

void CQVIS_GDI::GP_DrawCross(qvis::HDC hdc, double x, double y, double size) {
  DrawCross(hdc, x, y, size);
}

void CQVIS_GDI::GP_DrawPlus(qvis::HDC hdc, double x, double y, double size) {
  DrawPlus(hdc, x, y, size);
}
