#include "qvis/artwork/board_window.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "qvis/coords/view_coords.h"
#include "qvis/gdi/gdi.h"
#include "qvis/render/surface.h"

namespace qvis {

double NmPerUnit(int unit) {
  switch (unit) {
    case 1: return 25400000.0;  // inch
    case 2: return 25400.0;     // mil
    case 3: return 10000000.0;  // cm
    case 4: return 1000.0;      // micrometre
    default: return 1000000.0;  // mm
  }
}

namespace {

constexpr double kCoordLimit = 4.0e15;  // board coordinates stay exact in a double

Coord ToNm(double v) {
  if (!std::isfinite(v)) return 0;
  return static_cast<Coord>(std::llround(std::clamp(v, -kCoordLimit, kCoordLimit)));
}

}  // namespace

ArtPoint WorldToBoard(double x, double y, double nm_per_unit) {
  return {ToNm(x * nm_per_unit), ToNm(-y * nm_per_unit)};
}

ArtView SurfaceView(CQVIS_GDI* surface, int width, int height) {
  ArtView v;
  v.width = width;
  v.height = height;
  if (surface == nullptr || surface->GetCoords() == nullptr) return v;
  const CQVIS_Coords* c = surface->GetCoords();
  const double npu = NmPerUnit(c->GetUnit());
  const double zoom = c->m_dZoom;
  if (!(zoom > 0) || !std::isfinite(zoom)) {
    v.dpi = 0;  // nothing drawable
    return v;
  }
  const double px_per_nm = zoom / npu;
  v.dpi = px_per_nm * static_cast<double>(kNmPerInch);
  // The surface puts world point x at pixel round((x - view x) * zoom); the view samples pixel
  // centres, so it is moved by half a pixel to agree.
  const double half = 0.5 / px_per_nm;
  v.origin_x = ToNm(c->m_dViewX * npu - half);
  v.origin_y = ToNm(-(height / zoom + c->m_dViewY) * npu + half);
  return v;
}

void DrawBoard(const ArtBoard& board, CQVIS_GDI* surface, qvis::HDC dc,
               const ComposeOptions& options) {
  DrawBoardArea(board, surface, dc, 0, 0, std::numeric_limits<int>::max(),
                std::numeric_limits<int>::max(), options);
}

void DrawBoardArea(const ArtBoard& board, CQVIS_GDI* surface, qvis::HDC dc, int left, int top,
                   int right, int bottom, const ComposeOptions& options) {
  const gdi::BitmapView bits = gdi::BitmapPixels(gdi::GetCurrentBitmap(dc));
  if (bits.bits == nullptr || bits.bits_per_pixel != 32 || bits.width <= 0 || bits.height <= 0) {
    return;
  }
  left = std::max(left, 0);
  top = std::max(top, 0);
  right = std::min(right, bits.width);
  bottom = std::min(bottom, bits.height);
  if (left >= right || top >= bottom) return;
  const ArtView frame = SurfaceView(surface, bits.width, bits.height);
  ArtView view = frame;
  if (left != 0 || top != 0 || right != bits.width || bottom != bits.height) {
    if (!(frame.dpi > 0)) return;
    // The area is a frame of its own whose lower-left corner lies `left` pixels right of and
    // `height - bottom` pixels above the whole frame's.
    const double nm_per_px = static_cast<double>(kNmPerInch) / frame.dpi;
    view.width = right - left;
    view.height = bottom - top;
    view.origin_x = frame.origin_x + ToNm(left * nm_per_px);
    view.origin_y = frame.origin_y + ToNm((bits.height - bottom) * nm_per_px);
  }
  const std::ptrdiff_t stride = bits.stride / static_cast<std::ptrdiff_t>(sizeof(std::uint32_t));
  PixelTarget target{bits.Row32(top) + left, view.width, view.height, stride};
  ComposeBoard(board, view, target, options);
}

namespace {

Aperture Circle(Coord d) {
  Aperture a;
  a.kind = ApertureKind::kCircle;
  a.size_x = std::max<Coord>(d, 0);
  return a;
}

Coord Len(double v, double npu) { return std::max<Coord>(ToNm(v * npu), 0); }

// FinishedFigure::end_cap values whose tracks the line command draws as rectangular strokes.
constexpr int kSquareEnds = 256;
constexpr int kFlatEnds = 512;

// The area the line command fills for one segment of a track with square or flat ends: a
// square of the track's width, sides along the world axes, swept from (ax, ay) to (bx, by).
// Axis-parallel and zero-length segments sweep a rectangle; any other a hexagon, the corners
// of the start square that face away from the travel, then those of the end square that face
// along it. Consecutive segments share the square about their common vertex, so the joins
// need nothing of their own. Corners are world points, turned to board points by `pt`.
template <class ToBoard>
Contour SweptSquare(double ax, double ay, double bx, double by, double width, ToBoard pt) {
  const double h = width / 2;
  std::vector<ArtPoint> corners;
  if (ax == bx || ay == by) {
    const double l = std::min(ax, bx) - h, r = std::max(ax, bx) + h;
    const double t = std::min(ay, by) - h, b = std::max(ay, by) + h;
    corners = {pt(l, t), pt(r, t), pt(r, b), pt(l, b)};
  } else {
    const double sx = bx > ax ? h : -h, sy = by > ay ? h : -h;
    corners = {pt(ax - sx, ay - sy), pt(ax + sx, ay - sy), pt(bx + sx, by - sy),
               pt(bx + sx, by + sy), pt(bx - sx, by + sy), pt(ax - sx, ay + sy)};
  }
  Contour c;
  c.start = corners.front();
  for (std::size_t k = 1; k <= corners.size(); ++k) {
    ContourSegment seg;
    seg.end = corners[k % corners.size()];  // the last edge closes
    c.segments.push_back(seg);
  }
  return c;
}

}  // namespace

std::vector<ArtObject> FigureObjects(const FinishedFigure& f, ArtBoard& board, int layer,
                                     double npu) {
  std::vector<ArtObject> out;
  auto pt = [&](double x, double y) { return WorldToBoard(x, y, npu); };
  switch (f.kind) {
    case FigureKind::kTrack:
      for (std::size_t i = 1; i < f.points.size(); ++i) {
        const FigureVertex& from = f.points[i - 1];
        const FigureVertex& to = f.points[i];
        ArtObject o;
        // The command sweeps a square of the width's size, whatever its sign.
        const double side = std::fabs(to.width);
        if ((f.end_cap == kSquareEnds || f.end_cap == kFlatEnds) && Len(side, npu) > 0) {
          o.kind = ObjectKind::kRegion;
          o.contour = SweptSquare(from.x, from.y, to.x, to.y, side, pt);
          out.push_back(o);
          continue;
        }
        o.kind = ObjectKind::kTrack;
        o.aperture = board.EnsureAperture(layer, Circle(Len(to.width, npu)));
        o.start = pt(from.x, from.y);
        o.end = pt(to.x, to.y);
        out.push_back(o);
      }
      break;
    case FigureKind::kCircle:
    case FigureKind::kCircle3: {
      ArtObject o;
      if (f.fill) {
        o.kind = ObjectKind::kFlash;
        o.aperture = board.EnsureAperture(layer, Circle(Len(2 * f.radius + f.width, npu)));
        o.end = pt(f.cx, f.cy);
      } else {
        o.kind = ObjectKind::kArc;
        o.aperture = board.EnsureAperture(layer, Circle(Len(f.width, npu)));
        o.centre = pt(f.cx, f.cy);
        o.start = o.end = pt(f.cx + f.radius, f.cy);
      }
      out.push_back(o);
      break;
    }
    case FigureKind::kArc: {
      ArtObject o;
      o.kind = ObjectKind::kArc;
      o.aperture = board.EnsureAperture(layer, Circle(Len(f.width, npu)));
      o.centre = pt(f.cx, f.cy);
      o.start = pt(f.sx, f.sy);
      o.end = pt(f.ex, f.ey);
      // Counter-clockwise on the screen stays counter-clockwise with y turned up.
      o.direction = ArcDirection::kCounterClockwise;
      out.push_back(o);
      break;
    }
    case FigureKind::kRect: {
      ArtObject o;
      o.kind = ObjectKind::kRegion;
      o.contour.start = pt(f.x1, f.y1);
      for (const ArtPoint p : {pt(f.x2, f.y1), pt(f.x2, f.y2), pt(f.x1, f.y2), pt(f.x1, f.y1)}) {
        ContourSegment s;
        s.end = p;
        o.contour.segments.push_back(s);
      }
      out.push_back(o);
      break;
    }
    case FigureKind::kPolygon: {
      if (f.points.size() < 3) break;
      ArtObject o;
      o.kind = ObjectKind::kRegion;
      o.contour.start = pt(f.points[0].x, f.points[0].y);
      for (std::size_t k = 1; k <= f.points.size(); ++k) {
        const FigureVertex& v = f.points[k % f.points.size()];  // the last edge closes
        ContourSegment s;
        s.end = pt(v.x, v.y);
        if (v.arc) {
          s.is_arc = true;
          s.centre = pt(v.cx, v.cy);
          s.direction = v.direction == 2 ? ArcDirection::kClockwise
                                         : ArcDirection::kCounterClockwise;
        }
        o.contour.segments.push_back(s);
      }
      out.push_back(o);
      break;
    }
    case FigureKind::kPad: {
      Aperture a;
      switch (f.pad) {
        case PadShape::kRound:
          a.kind = ApertureKind::kCircle;
          break;
        case PadShape::kRect:
          a.kind = ApertureKind::kRectangle;
          break;
        case PadShape::kObround:
          a.kind = ApertureKind::kObround;
          break;
        case PadShape::kPolygon:
          a.kind = ApertureKind::kPolygon;
          a.vertices = std::clamp(f.sides, 3, 12);
          break;
      }
      a.size_x = Len(f.pad_width, npu);
      if (a.kind == ApertureKind::kRectangle || a.kind == ApertureKind::kObround) {
        a.size_y = Len(f.pad_height, npu);
      }
      a.hole = std::min(Len(f.hole_width, npu), a.size_x);
      ArtObject o;
      o.kind = ObjectKind::kFlash;
      o.aperture = board.EnsureAperture(layer, a);
      o.end = pt(f.cx, f.cy);
      out.push_back(o);
      break;
    }
  }
  return out;
}

void BoardFigureSink::OnFigureFinished(const FinishedFigure& figure) {
  last_.clear();
  if (board_ == nullptr) return;
  board_->BeginGroup("Add figure");
  if (board_->LayerCount() == 0) {
    Layer l;
    l.name = "Layer 1";
    l.colour = 0xC83434;
    board_->AddLayer(l);
  }
  const int layer = std::clamp(board_->view().active_layer, 0, board_->LayerCount() - 1);
  for (ArtObject& o : FigureObjects(figure, *board_, layer, nm_)) {
    last_.push_back(board_->AddObject(layer, std::move(o)));
  }
  board_->EndGroup();
}

}  // namespace qvis
