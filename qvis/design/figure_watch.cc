#include "qvis/design/figure_watch.h"

#include <cmath>
#include <utility>

#include "qvis/compat/win32_names.h"
#include "qvis/design/design.h"
#include "qvis/design/design_objects.h"

namespace qvis {

namespace {

FinishedFigure NewFigure(FigureKind kind, int layer, int aperture) {
  FinishedFigure f;
  f.kind = kind;
  f.layer = layer;
  f.aperture = aperture;
  return f;
}

double Distance(double x1, double y1, double x2, double y2) { return std::hypot(x2 - x1, y2 - y1); }

// TakeList hands a vertex-list command's list over as figure `f` when the command is active,
// its figure ended (or a double click is about to end it) and the list holds at least
// `min_points` vertices; the command's list is then emptied.
template <class Cmd, class ToVertex, class HandFn>
bool TakeList(Cmd* cmd, bool before_double_click, INT_PTR min_points, FinishedFigure f,
              ToVertex&& to_vertex, HandFn&& hand) {
  if (cmd == nullptr || !cmd->IsActived() || !(before_double_click || cmd->m_nProgress == 0) ||
      cmd->m_pPointList->GetSize() < min_points) {
    return false;
  }
  for (INT_PTR i = 0; i < cmd->m_pPointList->GetSize(); ++i) {
    f.points.push_back(to_vertex(*cmd->m_pPointList->GetAt(i)));
  }
  cmd->ReleasePoints();
  hand(f);
  return true;
}

}  // namespace

void FigureWatch::Hand(const FinishedFigure& f) {
  if (listener_ != nullptr) listener_->OnFigureFinished(f);
}

void FigureWatch::Before(CQVIS_Design* d, UINT message, WPARAM /*wparam*/) {
  if (listener_ == nullptr || d == nullptr || d->m_pDrawCircleCmd == nullptr) return;
  circle_busy_ = d->m_pDrawCircleCmd->IsBusy();
  circle3_progress_ = d->m_pDraw3PCircleCmd->IsActived() ? d->m_pDraw3PCircleCmd->m_nProgress : 0;
  rect_busy_ = d->m_pDrawRectCmd->IsBusy();
  arc_progress_ = d->m_pDrawArcCmd->IsActived() ? d->m_pDrawArcCmd->m_nProgress : 0;
  // A double click ends the track (or polygon) and the window starts the command over, which
  // drops the list: it is taken before the window sees the message.
  taken_before_ = message == WM_LBUTTONDBLCLK && TakeVertexLists(d, true);
}

bool FigureWatch::TakeVertexLists(CQVIS_Design* d, bool before_double_click) {
  const int layer = d->GetCurrentLayerID();
  CQVIS_DrawLineCmd* line = d->m_pDrawLineCmd;
  FinishedFigure track = NewFigure(FigureKind::kTrack, layer, line->GetApertureID());
  track.end_cap = line->GetEndCapStyle();
  const bool took_track = TakeList(
      line, before_double_click, 2, std::move(track),
      [](const CQVIS_DrawLinePoint& p) {
        FigureVertex v;
        v.x = p.m_dX;
        v.y = p.m_dY;
        v.width = p.m_dWidth;
        return v;
      },
      [this](const FinishedFigure& f) { Hand(f); });
  CQVIS_DrawPolygonCmd* polygon = d->m_pDrawPolygonCmd;
  const bool took_polygon = TakeList(
      polygon, before_double_click, 3,
      NewFigure(FigureKind::kPolygon, layer, polygon->GetApertureID()),
      [](const CQVIS_DrawPolygonPoint& p) {
        FigureVertex v;
        v.x = p.m_dX;
        v.y = p.m_dY;
        v.arc = p.m_nArc == 1;
        v.cx = p.m_dCenterX;
        v.cy = p.m_dCenterY;
        v.direction = p.m_nDirection;
        return v;
      },
      [this](const FinishedFigure& f) { Hand(f); });
  return took_track || took_polygon;
}

bool FigureWatch::After(CQVIS_Design* d, UINT message, WPARAM wparam) {
  if (listener_ == nullptr || d == nullptr || d->m_pDrawCircleCmd == nullptr) return false;
  const int layer = d->GetCurrentLayerID();
  bool taken = TakeVertexLists(d, false) || taken_before_;
  taken_before_ = false;
  auto take = [&](FinishedFigure&& f) {
    Hand(f);
    taken = true;
  };
  if (message == WM_LBUTTONDOWN) {
    CQVIS_DrawCircleCmd* circle = d->m_pDrawCircleCmd;
    if (circle_busy_ && circle->IsActived() && circle->m_nProgress == 0) {
      FinishedFigure f = NewFigure(FigureKind::kCircle, layer, circle->GetApertureID());
      f.cx = circle->m_dCenterX;
      f.cy = circle->m_dCenterY;
      f.radius = circle->m_dRadius;
      f.width = circle->m_dWidth;
      f.fill = circle->IsFill() != 0;
      take(std::move(f));
    }
    CQVIS_Draw3PCircleCmd* circle3 = d->m_pDraw3PCircleCmd;
    if (circle3_progress_ == 2 && circle3->IsActived() && circle3->m_nProgress == 0) {
      FinishedFigure f = NewFigure(FigureKind::kCircle3, layer, circle3->GetApertureID());
      f.cx = circle3->m_dCenterX;
      f.cy = circle3->m_dCenterY;
      f.radius = Distance(f.cx, f.cy, circle3->m_dX1, circle3->m_dY1);
      f.width = circle3->m_dWidth;
      take(std::move(f));
    }
  }
  // The arc ends with its third click, or with Enter, which the window hands it as a click.
  CQVIS_DrawArcCmd* arc = d->m_pDrawArcCmd;
  if ((message == WM_LBUTTONDOWN || (message == WM_KEYDOWN && wparam == VK_RETURN)) &&
      arc_progress_ == 2 && arc->IsActived() && arc->m_nProgress == 0) {
    FinishedFigure f = NewFigure(FigureKind::kArc, layer, arc->GetApertureID());
    f.cx = arc->m_dCenterX;
    f.cy = arc->m_dCenterY;
    f.radius = arc->m_dRadius;
    f.sx = arc->m_dStartX;
    f.sy = arc->m_dStartY;
    f.ex = arc->m_dEndX;
    f.ey = arc->m_dEndY;
    f.width = arc->m_dWidth;
    take(std::move(f));
  }
  if (message == WM_LBUTTONDOWN) {
    CQVIS_DrawRectCmd* rect = d->m_pDrawRectCmd;
    if (rect_busy_ && rect->IsActived() && rect->m_nProgress == 0) {
      FinishedFigure f = NewFigure(FigureKind::kRect, layer, rect->GetApertureID());
      f.x1 = rect->m_dX1;
      f.y1 = rect->m_dY1;
      f.x2 = rect->m_dX2;
      f.y2 = rect->m_dY2;
      take(std::move(f));
    }
    auto pad = [&](PadShape shape, double x, double y, double w, double h, int sides,
                   double hole_w, double hole_h, int aperture) {
      FinishedFigure f = NewFigure(FigureKind::kPad, layer, aperture);
      f.pad = shape;
      f.cx = x;
      f.cy = y;
      f.pad_width = w;
      f.pad_height = h;
      f.sides = sides;
      f.hole_width = hole_w;
      f.hole_height = hole_h;
      take(std::move(f));
    };
    if (CQVIS_DrawFlashCircleCmd* c = d->m_pDrawFlashCircleCmd; c->IsActived()) {
      pad(PadShape::kRound, c->m_dPlacedX, c->m_dPlacedY, c->m_dRadius * 2.0, 0.0, 0,
          c->m_dHoleWidth, c->m_dHoleHeight, c->GetApertureID());
    }
    if (CQVIS_DrawFlashRectCmd* c = d->m_pDrawFlashRectCmd; c->IsActived()) {
      // Unequal extents shift the pad's centre off the click.
      pad(PadShape::kRect, c->m_dCurrentX + (c->m_dRight - c->m_dLeft) * 0.5, c->m_dCurrentY,
          c->m_dWidth, c->m_dHeight, 0, c->m_dHoleWidth, c->m_dHoleHeight, c->GetApertureID());
    }
    if (CQVIS_DrawFlashObroundCmd* c = d->m_pDrawFlashObroundCmd; c->IsActived()) {
      pad(PadShape::kObround, c->m_dCurrentX, c->m_dCurrentY, c->m_dWidth, c->m_dHeight, 0,
          c->m_dHoleWidth, c->m_dHoleHeight, c->GetApertureID());
    }
    if (CQVIS_DrawFlashPolygonCmd* c = d->m_pDrawFlashPolygonCmd; c->IsActived()) {
      pad(PadShape::kPolygon, c->m_dCurrentX, c->m_dCurrentY, c->m_dDiameter, 0.0,
          c->m_nSideCount, c->m_dHoleWidth, c->m_dHoleHeight, c->GetApertureID());
    }
  }
  return taken;
}

}  // namespace qvis
