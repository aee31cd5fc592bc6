#include "qvis/commands/rubber_band.h"

#include <cmath>

#include "qvis/compat/cpoint.h"
#include "qvis/compat/win32_names.h"
#include "qvis/coords/view_coords.h"
#include "qvis/gdi/gdi.h"
#include "qvis/render/surface.h"

namespace qvis {

HDC OriginContextOf(CQVIS_GDI* surface) { return surface ? surface->GetOriginHDC() : nullptr; }

void RubberBand::XorMode() const {
  if (surface_) surface_->SetXOrMode(target_);
}
void RubberBand::CopyMode() const {
  if (surface_) surface_->SetCopyMode(target_);
}
void RubberBand::MergeMode() const {
  if (surface_) surface_->SetMergeMode(target_);
}

void RubberBand::NullBrush() const {
  if (surface_) surface_->PrepareNullBrush(target_);
}
void RubberBand::SolidBrush(COLORREF color) const {
  if (surface_) surface_->PrepareSolidBrush(color, target_);
}
void RubberBand::ThinPen(COLORREF color) const {
  if (surface_) surface_->PrepareSolidPen(color, target_);
}
void RubberBand::DotPen(COLORREF color) const {
  if (surface_) surface_->PrepareDotPen(color, target_);
}
void RubberBand::WorldPen(double width, COLORREF color) const {
  if (surface_) surface_->PrepareSolidPen(width, color, target_);
}

void RubberBand::Line(WorldPt a, WorldPt b) const {
  if (surface_) surface_->DrawLine(target_, a.x, a.y, b.x, b.y);
}
void RubberBand::Circle(WorldPt c, double r) const {
  if (surface_) surface_->DrawCircle(target_, c.x, c.y, r);
}
void RubberBand::RectangularLine(WorldPt a, WorldPt b, double width) const {
  if (surface_) surface_->DrawRectangularLine(target_, a.x, a.y, b.x, b.y, width, width);
}
void RubberBand::Rectangle(double x1, double y1, double x2, double y2) const {
  if (surface_) surface_->DrawRectangle(target_, x1, y1, x2, y2);
}
void RubberBand::Cross(WorldPt c, double size) const {
  if (surface_) surface_->DrawCross(target_, c.x, c.y, size);
}
void RubberBand::Plus(WorldPt c, double size) const {
  if (surface_) surface_->DrawPlus(target_, c.x, c.y, size);
}
void RubberBand::GuideCircle(WorldPt c, double r, double width) const {
  if (surface_) surface_->DrawGuideCircle(target_, c.x, c.y, r, width);
}
void RubberBand::Arc(WorldPt c, double r, WorldPt s, WorldPt e) const {
  if (surface_) surface_->DrawArc(target_, c.x, c.y, r, s.x, s.y, e.x, e.y);
}

void RubberBand::Polygon(const std::vector<WorldPt>& pts) const {
  if (!surface_ || pts.size() < 3) return;
  std::vector<CPoint> dev;
  dev.reserve(pts.size());
  for (const WorldPt& p : pts) {
    dev.emplace_back(surface_->WorldToDeviceX(p.x), surface_->WorldToDeviceY(p.y));
  }
  gdi::Polygon(surface_->ResolveDC(target_), dev.data(), static_cast<int>(dev.size()));
}

void RubberBand::OriginBox(double x1, double y1, double x2, double y2) const {
  if (!surface_ || !surface_->GetOriginHDC()) return;
  gdi::Rectangle(surface_->GetOriginHDC(), surface_->WorldToDeviceX(x1),
                 surface_->WorldToDeviceY(y1), surface_->WorldToDeviceX(x2),
                 surface_->WorldToDeviceY(y2));
}

void RubberBand::BoxPen(COLORREF color) const {
  if (!surface_) return;
  const HDC origin = surface_->GetOriginHDC();
  surface_->SetXOrMode(origin);
  surface_->PrepareNullBrush(origin);
  surface_->PrepareDotPen(color, origin);
}

double RubberBand::PixelsToWorld(double pixels) const {
  if (!surface_ || !surface_->GetCoords()) return 0.0;
  const double zoom = surface_->GetCoords()->m_dZoom;
  if (zoom == 0.0 || !std::isfinite(zoom)) return 0.0;
  return pixels / zoom;
}

}  // namespace qvis
