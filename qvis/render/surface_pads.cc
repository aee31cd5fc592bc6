// CQVIS_GDI regions and pads: circle, rectangle, obround and polygon pads with optional holes,
// built from device regions and painted solid, or hatched with a frame when the fill mode is 0.
#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

#include "qvis/compat/win32_names.h"
#include "qvis/geometry/kernel.h"
#include "qvis/gdi/gdi.h"
#include "qvis/render/gdi_objects.h"
#include "qvis/render/object_caches.h"
#include "qvis/render/surface.h"
#include "qvis/render/surface_internal.h"

namespace gdi = qvis::gdi;
using qvis::render::SatAdd;
using qvis::render::SatSub;

namespace {

// CopyAndFree gives `target` the shape of `made` and frees made; false for a null made.
bool CopyAndFree(qvis::HRGN target, qvis::HRGN made) {
  if (made == nullptr) return false;
  gdi::CombineRgn(target, made, nullptr, RGN_COPY);
  gdi::DeleteObject(qvis::AsGdiObject(made));
  return true;
}

// Polygon regions are built row by row, so one reaching billions of pixels past the view
// would take that many rows. They are cut to the DC's visible box widened by kGuard pixels
// (a box about the origin without a DC): the cut lies far outside anything painted, and the
// edges it shortens keep their slope to within 1/60000 of a pixel across the view.
constexpr int kGuard = 1 << 16;

struct GuardBox {
  double left, top, right, bottom;
};

// GuardBoxOf: the DC's visible box widened by kGuard pixels on every side.
GuardBox GuardBoxOf(qvis::HDC dc) {
  CRect box;
  if (dc == nullptr || gdi::GetClipBox(dc, &box) == gdi::kRegionError || box.IsRectEmpty()) {
    box = CRect(0, 0, 0, 0);
  }
  return GuardBox{static_cast<double>(box.left) - kGuard, static_cast<double>(box.top) - kGuard,
                  static_cast<double>(box.right) + kGuard,
                  static_cast<double>(box.bottom) + kGuard};
}

struct PointD2 {
  double x, y;
};

// PolygonRgnInBox: CreatePolygonRgn of the part of a polygon (device pixels as doubles, which
// may lie far outside the 32-bit range) inside the box, clipped by Sutherland-Hodgman.
// Null when less than a triangle is left.
qvis::HRGN PolygonRgnInBox(std::vector<PointD2> poly, const GuardBox& g, int mode) {
  using P = PointD2;
  std::vector<P> next;
  const auto clip = [&](auto keep, auto cross) {
    next.clear();
    for (size_t i = 0; i < poly.size(); ++i) {
      const P a = poly[i], b = poly[(i + 1) % poly.size()];
      const bool ka = keep(a), kb = keep(b);
      if (ka) next.push_back(a);
      if (ka != kb) next.push_back(cross(a, b));
    }
    poly.swap(next);
  };
  const auto at_x = [](P a, P b, double x) {
    return P{x, a.y + (b.y - a.y) * (x - a.x) / (b.x - a.x)};
  };
  const auto at_y = [](P a, P b, double y) {
    return P{a.x + (b.x - a.x) * (y - a.y) / (b.y - a.y), y};
  };
  clip([&](P p) { return p.x >= g.left; }, [&](P a, P b) { return at_x(a, b, g.left); });
  clip([&](P p) { return p.x <= g.right; }, [&](P a, P b) { return at_x(a, b, g.right); });
  clip([&](P p) { return p.y >= g.top; }, [&](P a, P b) { return at_y(a, b, g.top); });
  clip([&](P p) { return p.y <= g.bottom; }, [&](P a, P b) { return at_y(a, b, g.bottom); });
  if (poly.size() < 3) return nullptr;
  std::vector<CPoint> cut;
  cut.reserve(poly.size());
  for (const P& p : poly) {
    cut.emplace_back(static_cast<LONG>(std::lround(p.x)), static_cast<LONG>(std::lround(p.y)));
  }
  return gdi::CreatePolygonRgn(cut.data(), static_cast<int>(cut.size()), mode);
}

// ClippedPolygonRgn: CreatePolygonRgn of the part of the polygon inside the guard box.
qvis::HRGN ClippedPolygonRgn(qvis::HDC dc, const CPoint* points, int count, int mode) {
  const GuardBox g = GuardBoxOf(dc);
  bool inside = true;
  for (int i = 0; i < count && inside; ++i) {
    inside = points[i].x >= g.left && points[i].x <= g.right && points[i].y >= g.top &&
             points[i].y <= g.bottom;
  }
  if (inside) return gdi::CreatePolygonRgn(points, count, mode);
  std::vector<PointD2> poly;
  poly.reserve(static_cast<size_t>(count));
  for (int i = 0; i < count; ++i) poly.push_back(PointD2{double(points[i].x), double(points[i].y)});
  return PolygonRgnInBox(std::move(poly), g, mode);
}

// Rim samples of a circle too large to step row by row: enough that a chord of the sampled
// range stays within a small fraction of a pixel of the rim inside the guard box.
constexpr int kHugeRimSamples = 16384;

// HugeCircleRgn: the part of a circle of device radius r about (cx, cy) that lies inside the
// guard box, for radii beyond what the elliptic region builder steps. The rim is sampled only
// over the directions in which the box is seen from the centre and closed through the centre;
// a box wholly inside or outside the circle gives the box or an empty region at once.
qvis::HRGN HugeCircleRgn(qvis::HDC dc, double cx, double cy, double r) {
  const GuardBox g = GuardBoxOf(dc);
  const double nx = std::clamp(cx, g.left, g.right), ny = std::clamp(cy, g.top, g.bottom);
  if (std::hypot(nx - cx, ny - cy) >= r) return gdi::CreateRectRgn(0, 0, 0, 0);
  const double fx = std::max(std::abs(g.left - cx), std::abs(g.right - cx));
  const double fy = std::max(std::abs(g.top - cy), std::abs(g.bottom - cy));
  if (std::hypot(fx, fy) <= r) {
    return gdi::CreateRectRgn(static_cast<int>(g.left), static_cast<int>(g.top),
                              static_cast<int>(g.right), static_cast<int>(g.bottom));
  }
  const bool centre_inside = nx == cx && ny == cy;
  double from = 0.0, span = 2.0 * std::numbers::pi;
  if (!centre_inside) {
    // Seen from outside, the convex box spans less than half a turn about the direction of
    // its centre.
    const double base = std::atan2((g.top + g.bottom) / 2 - cy, (g.left + g.right) / 2 - cx);
    double lo = 0.0, hi = 0.0;
    const double xs[2] = {g.left, g.right}, ys[2] = {g.top, g.bottom};
    for (double x : xs) {
      for (double y : ys) {
        const double d = std::remainder(std::atan2(y - cy, x - cx) - base, 2.0 * std::numbers::pi);
        lo = std::min(lo, d);
        hi = std::max(hi, d);
      }
    }
    from = base + lo;
    span = hi - lo;
  }
  std::vector<PointD2> poly;
  poly.reserve(kHugeRimSamples + 2);
  if (!centre_inside) poly.push_back(PointD2{cx, cy});
  for (int i = 0; i <= kHugeRimSamples; ++i) {
    const double a = from + span * i / kHugeRimSamples;
    poly.push_back(PointD2{cx + r * std::cos(a), cy + r * std::sin(a)});
  }
  return PolygonRgnInBox(std::move(poly), g, WINDING);
}

// ClippedPolygonInto: ClippedPolygonRgn into an existing region; false (unchanged) for null.
bool ClippedPolygonInto(qvis::HRGN target, qvis::HDC dc, const CPoint* points, int count,
                        int mode) {
  const GuardBox g = GuardBoxOf(dc);
  bool inside = true;
  for (int i = 0; i < count && inside; ++i) {
    inside = points[i].x >= g.left && points[i].x <= g.right && points[i].y >= g.top &&
             points[i].y <= g.bottom;
  }
  if (inside) return gdi::SetPolygonRgn(target, points, count, mode) != FALSE;
  return CopyAndFree(target, ClippedPolygonRgn(dc, points, count, mode));
}

int FillModeOf(qvis::HDC dc) {
  const int mode = gdi::GetPolyFillMode(dc);
  return mode == WINDING ? WINDING : ALTERNATE;
}

// RotatedRectangleCorners: the device corners of the w x h rectangle centred on (cx, cy) and
// turned by `angle` about its centre, as the rectangle pads' regions take them.
void RotatedRectangleCorners(const CQVIS_GDI& surface, double cx, double cy, double w, double h,
                             double angle, CPoint out[4]) {
  const double xs[4] = {cx - w / 2, cx - w / 2, cx + w / 2, cx + w / 2};
  const double ys[4] = {cy + h / 2, cy - h / 2, cy - h / 2, cy + h / 2};
  for (int i = 0; i < 4; ++i) {
    double rx = xs[i], ry = ys[i];
    CQVIS_Math::Rotate(cx, cy, xs[i], ys[i], &rx, &ry, angle);
    out[i] = CPoint(surface.WorldToDeviceX(rx), surface.WorldToDeviceY(ry));
  }
}

}  // namespace

// ----- Region makers -------------------------------------------------------------------------

qvis::HRGN CQVIS_GDI::GetCircleRgn(double cx, double cy, double r) {
  return GetCircleRgn(nullptr, cx, cy, r);
}

qvis::HRGN CQVIS_GDI::GetCircleRgn(qvis::HDC hdc, double cx, double cy, double r) {
  qvis::HRGN region = gdi::CreateRectRgn(0, 0, 0, 0);
  if (region != nullptr && !SetCircleRgn(region, hdc, cx, cy, r)) {
    gdi::DeleteObject(qvis::AsGdiObject(region));
    return nullptr;
  }
  return region;
}

qvis::HRGN CQVIS_GDI::GetRectangleRgn(double x1, double y1, double x2, double y2) {
  return GetRectangleRgn(nullptr, x1, y1, x2, y2);
}

qvis::HRGN CQVIS_GDI::GetRectangleRgn(qvis::HDC, double x1, double y1, double x2, double y2) {
  return gdi::CreateRectRgn(WorldToDeviceX(x1), WorldToDeviceY(y1), WorldToDeviceX(x2),
                            WorldToDeviceY(y2));
}

qvis::HRGN CQVIS_GDI::GetRectangleRgn(double cx, double cy, double w, double h, double angle) {
  return GetRectangleRgn(nullptr, cx, cy, w, h, angle);
}

qvis::HRGN CQVIS_GDI::GetRectangleRgn(qvis::HDC hdc, double cx, double cy, double w, double h,
                                      double angle) {
  CPoint pts[4];
  RotatedRectangleCorners(*this, cx, cy, w, h, angle, pts);
  const qvis::HDC dc = ResolveDC(hdc);
  return ClippedPolygonRgn(dc, pts, 4, FillModeOf(dc));
}

qvis::HRGN CQVIS_GDI::GetPolygonScreen(CPoint* points, int count, int fillMode) {
  return GetPolygonScreen(nullptr, points, count, fillMode);
}

qvis::HRGN CQVIS_GDI::GetPolygonScreen(qvis::HDC hdc, CPoint* points, int count,
                                       int fillMode) {
  if (points == nullptr || count < 3) return nullptr;
  if (fillMode != ALTERNATE && fillMode != WINDING) return nullptr;
  return ClippedPolygonRgn(ResolveDC(hdc), points, count, fillMode);
}

bool CQVIS_GDI::SetCircleRgn(qvis::HRGN region, qvis::HDC hdc, double cx, double cy, double r) {
  if (region == nullptr) return false;
  const LONG rad = WorldToDeviceLength(r);
  const LONG dcx = WorldToDeviceX(cx), dcy = WorldToDeviceY(cy);
  if (rad > qvis::render::kMaxBuiltRadius) {
    return CopyAndFree(region, HugeCircleRgn(hdc ? hdc : GetHDC(), dcx, dcy, rad));
  }
  if (rad < -qvis::render::kMaxBuiltRadius) return false;
  return gdi::SetEllipticRgn(region, SatSub(dcx, rad), SatSub(dcy, rad), SatAdd(dcx, rad),
                             SatAdd(dcy, rad)) != FALSE;
}

bool CQVIS_GDI::SetRectangleRgn(qvis::HRGN region, qvis::HDC, double x1, double y1, double x2,
                                double y2) {
  return gdi::SetRectRgn(region, WorldToDeviceX(x1), WorldToDeviceY(y1), WorldToDeviceX(x2),
                         WorldToDeviceY(y2)) != FALSE;
}

bool CQVIS_GDI::SetRectangleRgn(qvis::HRGN region, qvis::HDC hdc, double cx, double cy,
                                double w, double h, double angle) {
  if (region == nullptr) return false;
  CPoint pts[4];
  RotatedRectangleCorners(*this, cx, cy, w, h, angle, pts);
  const qvis::HDC dc = ResolveDC(hdc);
  return ClippedPolygonInto(region, dc, pts, 4, FillModeOf(dc));
}

bool CQVIS_GDI::SetPolygonScreen(qvis::HRGN region, qvis::HDC hdc, const CPoint* points,
                                 int count, int fillMode) {
  if (region == nullptr || points == nullptr || count < 3) return false;
  if (fillMode != ALTERNATE && fillMode != WINDING) return false;
  return ClippedPolygonInto(region, ResolveDC(hdc), points, count, fillMode);
}

qvis::HRGN CQVIS_GDI::ScratchRegion(int index) {
  if (index < 0 || index >= kScratchRegions) return nullptr;
  qvis::HRGN& region = m_hScratchRegions[index];
  if (region == nullptr) region = gdi::CreateRectRgn(0, 0, 0, 0);
  return region;
}

// ----- Pad construction ----------------------------------------------------------------------
// Pads are built in the scratch regions: 0 the outline, 1 the hole, 2 an obround's end circles.

qvis::HRGN CQVIS_GDI::CircleOutline(qvis::HDC dc, double cx, double cy, double r) {
  qvis::HRGN outline = ScratchRegion(0);
  return SetCircleRgn(outline, dc, cx, cy, r) ? outline : nullptr;
}

qvis::HRGN CQVIS_GDI::RectangleOutline(qvis::HDC dc, double cx, double cy, double w, double h,
                                       double angle) {
  qvis::HRGN outline = ScratchRegion(0);
  return SetRectangleRgn(outline, dc, cx, cy, w, h, angle) ? outline : nullptr;
}

qvis::HRGN CQVIS_GDI::PolygonOutline(qvis::HDC dc, const CPoint* points, int count,
                                     int fillMode) {
  qvis::HRGN outline = ScratchRegion(0);
  return SetPolygonScreen(outline, dc, points, count, fillMode) ? outline : nullptr;
}

qvis::HRGN CQVIS_GDI::HoleRegion(qvis::HDC dc, double cx, double cy, double holeWidth,
                                 double holeHeight, double angle) {
  qvis::HRGN hole = ScratchRegion(1);
  if (holeHeight != 0) {
    // Only the corners turn: the hole stays an axis-aligned box between the turned corners.
    double x1 = 0, y1 = 0, x2 = 0, y2 = 0;
    CQVIS_Math::Rotate(cx, cy, cx - holeWidth / 2, cy + holeHeight / 2, &x1, &y1, angle);
    CQVIS_Math::Rotate(cx, cy, cx + holeWidth / 2, cy - holeHeight / 2, &x2, &y2, angle);
    return SetRectangleRgn(hole, dc, x1, y1, x2, y2) ? hole : nullptr;
  }
  if (holeWidth != 0) return SetCircleRgn(hole, dc, cx, cy, holeWidth / 2) ? hole : nullptr;
  return nullptr;
}

qvis::HRGN CQVIS_GDI::PadRegion(qvis::HRGN outer, qvis::HDC dc, double cx, double cy,
                                double holeWidth, double holeHeight, double angle) {
  if (outer == nullptr) return nullptr;
  if (qvis::HRGN hole = HoleRegion(dc, cx, cy, holeWidth, holeHeight, angle)) {
    gdi::CombineRgn(outer, outer, hole, RGN_DIFF);
  }
  return outer;
}

qvis::HRGN CQVIS_GDI::ObroundRegion(qvis::HDC dc, double cx, double cy, double width,
                                    double height, double holeWidth, double holeHeight,
                                    double angle) {
  const double hw = width / 2, hh = height / 2;
  // Only the body's corners are turned; the end circles keep their unturned places and the
  // body stays an axis-aligned box, so the shape is exact at 0 and 180 degrees only. Pads are
  // placed upright or lying, and this is the shape hosts have always been shown.
  double x1 = 0, y1 = 0, x2 = 0, y2 = 0;
  qvis::HRGN shape = ScratchRegion(0);
  qvis::HRGN part = ScratchRegion(2);
  if (shape == nullptr || part == nullptr) return nullptr;
  // Union adds the end circle to the body (a circle that cannot be made adds nothing).
  const auto add = [&](double x, double y, double r) {
    if (SetCircleRgn(part, dc, x, y, r)) gdi::CombineRgn(shape, shape, part, RGN_OR);
  };
  if (height > width) {
    CQVIS_Math::Rotate(cx, cy, cx - hw, cy + hh - hw, &x1, &y1, angle);
    CQVIS_Math::Rotate(cx, cy, cx + hw, cy - hh + hw, &x2, &y2, angle);
    SetRectangleRgn(shape, dc, x1, y1, x2, y2);
    add(cx, cy + hh - hw, hw);
    add(cx, cy - hh + hw, hw);
  } else {
    CQVIS_Math::Rotate(cx, cy, cx - hw + hh, cy + hh, &x1, &y1, angle);
    CQVIS_Math::Rotate(cx, cy, cx + hw - hh, cy - hh, &x2, &y2, angle);
    SetRectangleRgn(shape, dc, x1, y1, x2, y2);
    add(cx - hw + hh, cy, hh);
    add(cx + hw - hh, cy, hh);
  }
  return PadRegion(shape, dc, cx, cy, holeWidth, holeHeight, angle);
}

void CQVIS_GDI::PaintPad(qvis::HDC dc, qvis::HRGN region, COLORREF color) {
  if (region == nullptr) return;
  const auto brush = [&](int style) {
    CBrush* cached = m_pBrushMgr->CreateBrush(style, color);
    return cached != nullptr ? static_cast<qvis::HBRUSH>(cached->m_hObject) : nullptr;
  };
  if (m_nFillMode != 0) {
    if (qvis::HBRUSH solid = brush(6)) gdi::FillRgn(dc, region, solid);
  } else {
    // Outline view: the pad's area cross-hatched and its edge framed, both in its colour.
    if (qvis::HBRUSH hatch = brush(HS_CROSS)) gdi::FillRgn(dc, region, hatch);
    if (qvis::HBRUSH solid = brush(6)) gdi::FrameRgn(dc, region, solid, 1, 1);
  }
}

// ----- Pads ----------------------------------------------------------------------------------

void CQVIS_GDI::DrawCircleRgn(double cx, double cy, double r, double holeWidth,
                              double holeHeight, COLORREF color) {
  DrawCircleRgn(nullptr, cx, cy, r, holeWidth, holeHeight, color);
}

void CQVIS_GDI::DrawCircleRgn(qvis::HDC hdc, double cx, double cy, double r, double holeWidth,
                              double holeHeight, COLORREF color) {
  qvis::HDC dc = ResolveDC(hdc);
  PaintPad(dc, PadRegion(CircleOutline(dc, cx, cy, r), dc, cx, cy, holeWidth, holeHeight, 0),
           color);
}

void CQVIS_GDI::DrawRectangleRgn(double x1, double y1, double x2, double y2, double holeWidth,
                                 double holeHeight, double angle, COLORREF color) {
  DrawRectangleRgn(nullptr, x1, y1, x2, y2, holeWidth, holeHeight, angle, color);
}

void CQVIS_GDI::DrawRectangleRgn(qvis::HDC hdc, double x1, double y1, double x2, double y2,
                                 double holeWidth, double holeHeight, double angle,
                                 COLORREF color) {
  DrawRectangleRgnWH(hdc, (x1 + x2) / 2, (y1 + y2) / 2, std::fabs(x2 - x1), std::fabs(y2 - y1),
                     holeWidth, holeHeight, angle, color);
}

void CQVIS_GDI::DrawRectangleRgnWH(double cx, double cy, double w, double h, double holeWidth,
                                   double holeHeight, double angle, COLORREF color) {
  DrawRectangleRgnWH(nullptr, cx, cy, w, h, holeWidth, holeHeight, angle, color);
}

void CQVIS_GDI::DrawRectangleRgnWH(qvis::HDC hdc, double cx, double cy, double w, double h,
                                   double holeWidth, double holeHeight, double angle,
                                   COLORREF color) {
  qvis::HDC dc = ResolveDC(hdc);
  PaintPad(dc,
           PadRegion(RectangleOutline(dc, cx, cy, w, h, angle), dc, cx, cy, holeWidth,
                     holeHeight, angle),
           color);
}

void CQVIS_GDI::DrawObroundRgn(double cx, double cy, double width, double height,
                               double holeWidth, double holeHeight, double angle,
                               COLORREF color) {
  DrawObroundRgn(nullptr, cx, cy, width, height, holeWidth, holeHeight, angle, color);
}

void CQVIS_GDI::DrawObroundRgn(qvis::HDC hdc, double cx, double cy, double width, double height,
                               double holeWidth, double holeHeight, double angle,
                               COLORREF color) {
  qvis::HDC dc = ResolveDC(hdc);
  PaintPad(dc, ObroundRegion(dc, cx, cy, width, height, holeWidth, holeHeight, angle), color);
}

void CQVIS_GDI::DrawPolygonRgnScreen(CPoint* points, int count, double cx, double cy,
                                     double holeWidth, double holeHeight, COLORREF color) {
  DrawPolygonRgnScreen(nullptr, points, count, cx, cy, holeWidth, holeHeight, color);
}

void CQVIS_GDI::DrawPolygonRgnScreen(qvis::HDC hdc, CPoint* points, int count, double cx,
                                     double cy, double holeWidth, double holeHeight,
                                     COLORREF color) {
  qvis::HDC dc = ResolveDC(hdc);
  PaintPad(dc,
           PadRegion(PolygonOutline(dc, points, count, FillModeOf(dc)), dc, cx, cy, holeWidth,
                     holeHeight, 0),
           color);
}
