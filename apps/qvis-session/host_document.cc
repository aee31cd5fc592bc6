// The session host's own figures: painting through the surface and the text listing.
#include "apps/qvis-session/host_document.h"

#include <cmath>
#include <cstdio>
#include <string>

#include "qvis/compat/cpoint.h"
#include "qvis/compat/win32_names.h"
#include "qvis/design/design.h"
#include "qvis/design/design_objects.h"
#include "qvis/geometry/value_types.h"
#include "qvis/render/surface.h"

namespace qvis::session {
namespace {

constexpr double kPi = 3.141592653589793;
// Arc edges of polygons are painted as chords of at most this many degrees.
constexpr double kArcStepDegrees = 5.0;

std::string Num(double v) {
  char buf[64];
  std::snprintf(buf, sizeof buf, "%.4f", v == 0.0 ? 0.0 : v);  // no "-0.0000"
  return buf;
}

std::string Pt(double x, double y) { return "(" + Num(x) + "," + Num(y) + ")"; }

// Points lists the vertices separated by spaces; with `arcs`, an arc edge's vertex is followed
// by "@arc" and its centre.
std::string Points(const std::vector<Vertex>& points, bool arcs) {
  std::string out;
  for (size_t i = 0; i < points.size(); ++i) {
    if (i > 0) out += " ";
    out += Pt(points[i].x, points[i].y);
    if (arcs && points[i].arc) out += "@arc" + Pt(points[i].cx, points[i].cy);
  }
  return out;
}

const char* CapName(int cap) {
  switch (cap) {
    case 0:
      return "round";
    case 256:
      return "square";
    case 512:
      return "flat";
    default:
      return "other";
  }
}

const char* PadName(PadShape shape) {
  switch (shape) {
    case PadShape::kRound:
      return "round";
    case PadShape::kRect:
      return "rect";
    case PadShape::kObround:
      return "obround";
    case PadShape::kPolygon:
      return "polygon";
  }
  return "?";
}

// Angle of (x, y) about (cx, cy), counter-clockwise on the y-down screen, in radians.
double ScreenAngle(double cx, double cy, double x, double y) {
  return std::atan2(-(y - cy), x - cx);
}

// Appends the points of an arc edge from `from` to `to` (excluded `from`, included `to`).
void FlattenArc(const Vertex& from, const Vertex& to, std::vector<CPointD>* out) {
  const double r = std::hypot(to.x - to.cx, to.y - to.cy);
  double a0 = ScreenAngle(to.cx, to.cy, from.x, from.y);
  double a1 = ScreenAngle(to.cx, to.cy, to.x, to.y);
  double sweep = a1 - a0;
  if (to.direction == 2) {
    if (sweep >= 0) sweep -= 2 * kPi;
  } else if (sweep <= 0) {
    sweep += 2 * kPi;
  }
  const int steps =
      std::max(1, static_cast<int>(std::ceil(std::fabs(sweep) * 180.0 / kPi / kArcStepDegrees)));
  if (!std::isfinite(r) || steps > 100000) {
    out->push_back(CPointD(to.x, to.y));
    return;
  }
  for (int i = 1; i < steps; ++i) {
    const double a = a0 + sweep * i / steps;
    out->push_back(CPointD(to.cx + r * std::cos(a), to.cy - r * std::sin(a)));
  }
  out->push_back(CPointD(to.x, to.y));
}

}  // namespace

COLORREF HostDocument::LayerColor(int layer) {
  static const COLORREF kPalette[] = {0x0000FF, 0x00C000, 0xFF6000, 0x00C0FF,
                                      0xFF00FF, 0xFFFF00, 0x8080FF, 0xC0C0C0};
  const int n = static_cast<int>(sizeof kPalette / sizeof kPalette[0]);
  const int i = ((layer - 1) % n + n) % n;
  return kPalette[i];
}

std::vector<Vertex> PadPolygonVertices(double cx, double cy, double diameter, int sides) {
  std::vector<Vertex> v;
  if (sides < 3 || sides > 3600) return v;
  const double r = diameter * 0.5;
  const double step = static_cast<double>(360 / sides);
  for (int i = 0; i < sides; ++i) {
    const double a = i * step;
    double dx = r, dy = 0.0;
    if (a == 90) {
      dx = 0, dy = r;
    } else if (a == 180) {
      dx = -r, dy = 0;
    } else if (a == 270) {
      dx = 0, dy = -r;
    } else if (a != 0) {
      dx = r * std::cos(a * kPi / 180.0);
      dy = r * std::sin(a * kPi / 180.0);
    }
    Vertex p;
    p.x = cx + dx;
    p.y = cy + dy;
    v.push_back(p);
  }
  return v;
}

void HostDocument::Paint(CQVIS_GDI* surface, HDC dc) const {
  if (surface == nullptr || dc == nullptr) return;
  surface->SetCopyMode(dc);
  // Pads go over the tracks that end on them, so two passes: everything else, then the pads.
  for (int pass = 0; pass < 2; ++pass) {
    for (const Figure& f : figures_) {
      if ((f.kind == FigureKind::kPad) != (pass == 1)) continue;
      PaintOne(surface, dc, f);
    }
  }
}

void HostDocument::PaintOne(CQVIS_GDI* surface, HDC dc, const Figure& f) {
  {
    const COLORREF colour = LayerColor(f.layer);
    switch (f.kind) {
      case FigureKind::kTrack:
        for (size_t i = 1; i < f.points.size(); ++i) {
          const Vertex& a = f.points[i - 1];
          const Vertex& b = f.points[i];
          if (f.end_cap == 256 || f.end_cap == 512) {
            surface->PrepareSolidPen(colour, dc);
            surface->PrepareSolidBrush(colour, dc);
            surface->DrawRectangularLine(dc, a.x, a.y, b.x, b.y, b.width, b.width);
          } else {
            surface->PrepareSolidPen(b.width, colour, dc);
            surface->DrawLine(dc, a.x, a.y, b.x, b.y);
          }
        }
        break;
      case FigureKind::kCircle:
      case FigureKind::kCircle3:
        surface->PrepareSolidPen(f.width, colour, dc);
        if (f.fill) {
          surface->PrepareSolidBrush(colour, dc);
        } else {
          surface->PrepareNullBrush(dc);
        }
        surface->DrawCircle(dc, f.cx, f.cy, f.radius);
        break;
      case FigureKind::kArc:
        surface->PrepareSolidPen(f.width, colour, dc);
        surface->DrawArc(dc, f.cx, f.cy, f.radius, f.sx, f.sy, f.ex, f.ey);
        break;
      case FigureKind::kRect:
        surface->PrepareSolidPen(colour, dc);
        surface->PrepareSolidBrush(colour, dc);
        surface->DrawRectangle(dc, f.x1, f.y1, f.x2, f.y2);
        break;
      case FigureKind::kPolygon: {
        std::vector<CPointD> pts;
        for (size_t i = 0; i < f.points.size(); ++i) {
          const Vertex& v = f.points[i];
          if (v.arc && i > 0) {
            FlattenArc(f.points[i - 1], v, &pts);
          } else {
            pts.push_back(CPointD(v.x, v.y));
          }
        }
        surface->PrepareSolidPen(colour, dc);
        surface->PrepareSolidBrush(colour, dc);
        if (pts.size() >= 3) surface->DrawPolygon(dc, pts.data(), static_cast<int>(pts.size()));
        break;
      }
      case FigureKind::kPad:
        switch (f.pad) {
          case PadShape::kRound:
            surface->DrawCircleRgn(dc, f.cx, f.cy, f.pad_width * 0.5, f.hole_width,
                                   f.hole_height, colour);
            break;
          case PadShape::kRect:
            surface->DrawRectangleRgnWH(dc, f.cx, f.cy, f.pad_width, f.pad_height, f.hole_width,
                                        f.hole_height, 0.0, colour);
            break;
          case PadShape::kObround:
            surface->DrawObroundRgn(dc, f.cx, f.cy, f.pad_width, f.pad_height, f.hole_width,
                                    f.hole_height, 0.0, colour);
            break;
          case PadShape::kPolygon: {
            std::vector<CPoint> pts;
            for (const Vertex& v : PadPolygonVertices(f.cx, f.cy, f.pad_width, f.sides)) {
              pts.emplace_back(surface->WorldToDeviceX(v.x), surface->WorldToDeviceY(v.y));
            }
            if (pts.size() >= 3) {
              surface->DrawPolygonRgnScreen(dc, pts.data(), static_cast<int>(pts.size()), f.cx,
                                            f.cy, f.hole_width, f.hole_height, colour);
            }
            break;
          }
        }
        break;
    }
  }
}

bool HostDocument::Extent(CQVIS_MaxRegionInfo* extent) const {
  if (figures_.empty() || extent == nullptr) return false;
  CQVIS_MaxRegionInfo e;
  auto box = [&e](double x, double y, double half_w, double half_h) {
    e.Put(x - half_w, y - half_h);
    e.Put(x + half_w, y + half_h);
  };
  for (const Figure& f : figures_) {
    switch (f.kind) {
      case FigureKind::kTrack:
      case FigureKind::kPolygon:
        for (const Vertex& v : f.points) box(v.x, v.y, v.width * 0.5, v.width * 0.5);
        break;
      case FigureKind::kCircle:
      case FigureKind::kCircle3:
      case FigureKind::kArc: {
        const double r = f.radius + f.width * 0.5;
        box(f.cx, f.cy, r, r);
        break;
      }
      case FigureKind::kRect:
        box(f.x1, f.y1, 0.0, 0.0);
        box(f.x2, f.y2, 0.0, 0.0);
        break;
      case FigureKind::kPad:
        if (f.pad == PadShape::kRect || f.pad == PadShape::kObround) {
          box(f.cx, f.cy, f.pad_width * 0.5, f.pad_height * 0.5);
        } else {
          box(f.cx, f.cy, f.pad_width * 0.5, f.pad_width * 0.5);
        }
        break;
    }
  }
  *extent = e;
  return true;
}

std::string HostDocument::Listing() const {
  std::string out;
  for (const Figure& f : figures_) {
    const std::string layer = "layer=" + std::to_string(f.layer);
    switch (f.kind) {
      case FigureKind::kTrack: {
        out += "track " + layer + " aperture=" + std::to_string(f.aperture) +
               " cap=" + CapName(f.end_cap) + " points=" + Points(f.points, false);
        out += " widths=";
        for (size_t i = 1; i < f.points.size(); ++i) {
          if (i > 1) out += ",";
          out += Num(f.points[i].width);
        }
        break;
      }
      case FigureKind::kCircle:
      case FigureKind::kCircle3:
        out += std::string(f.kind == FigureKind::kCircle ? "circle " : "circle3 ") + layer +
               " centre=" + Pt(f.cx, f.cy) + " radius=" + Num(f.radius) +
               " width=" + Num(f.width) + " fill=" + (f.fill ? "1" : "0");
        break;
      case FigureKind::kArc:
        out += "arc " + layer + " centre=" + Pt(f.cx, f.cy) + " radius=" + Num(f.radius) +
               " from=" + Pt(f.sx, f.sy) + " to=" + Pt(f.ex, f.ey) + " width=" + Num(f.width);
        break;
      case FigureKind::kRect:
        out += "rect " + layer + " from=" + Pt(f.x1, f.y1) + " to=" + Pt(f.x2, f.y2);
        break;
      case FigureKind::kPolygon:
        out += "polygon " + layer + " points=" + Points(f.points, true);
        break;
      case FigureKind::kPad:
        out += std::string("pad shape=") + PadName(f.pad) + " " + layer +
               " aperture=" + std::to_string(f.aperture) + " at=" + Pt(f.cx, f.cy);
        if (f.pad == PadShape::kRound || f.pad == PadShape::kPolygon) {
          out += " diameter=" + Num(f.pad_width);
        } else {
          out += " size=" + Num(f.pad_width) + "x" + Num(f.pad_height);
        }
        if (f.pad == PadShape::kPolygon) out += " sides=" + std::to_string(f.sides);
        out += " hole=" + Num(f.hole_width) + "x" + Num(f.hole_height);
        break;
    }
    out += "\n";
  }
  return out;
}

// ---------------------------------------------------------------------------------------------
// Taking finished figures over.

void FigureTaker::OnFigureFinished(const qvis::FinishedFigure& figure) {
  document_->Add(figure);
  taken_ = true;
}

}  // namespace qvis::session
