// qvis::session::HostDocument: the figures a session host has taken over from the commands
// (tracks, circles, arcs, rectangles, polygons, pads). The library keeps no shapes; this
// document paints them through the window's host drawing hook and lists them as text.
#ifndef APPS_QVIS_SESSION_HOST_DOCUMENT_H_
#define APPS_QVIS_SESSION_HOST_DOCUMENT_H_

#include <string>
#include <vector>

#include "qvis/compat/handles.h"
#include "qvis/compat/types.h"
#include "qvis/commands/finished_figure.h"

class CQVIS_Design;
class CQVIS_MaxRegionInfo;
class CQVIS_GDI;

namespace qvis::session {

// The session keeps the window's own record of a finished figure, in world units.
using Vertex = qvis::FigureVertex;
using FigureKind = qvis::FigureKind;
using PadShape = qvis::PadShape;
using Figure = qvis::FinishedFigure;

class HostDocument {
 public:
  void Add(Figure figure) { figures_.push_back(std::move(figure)); }
  void Clear() { figures_.clear(); }
  const std::vector<Figure>& figures() const { return figures_; }

  // Paint: draws every figure in copy mode into `dc` through the surface (world to pixel by
  // the surface's view). Figures with degenerate sizes draw what the surface makes of them.
  void Paint(CQVIS_GDI* surface, HDC dc) const;

  // Listing: one line per figure, values with 4 decimals, in the order the figures came.
  std::string Listing() const;

  // Extent: puts the area every figure covers (strokes and pads with their size) into
  // `extent`. Returns false, and leaves it alone, when there are no figures.
  bool Extent(CQVIS_MaxRegionInfo* extent) const;

  // LayerColor: the colour figures of a layer are painted in.
  static COLORREF LayerColor(int layer);

 private:
  static void PaintOne(CQVIS_GDI* surface, HDC dc, const Figure& f);

  std::vector<Figure> figures_;
};

// FigureTaker: the listener a host registers with CQVIS_Wnd::SetFigureListener; it adds every
// finished figure to the document.
class FigureTaker final : public qvis::FigureListener {
 public:
  explicit FigureTaker(HostDocument* document) : document_(document) {}
  void OnFigureFinished(const qvis::FinishedFigure& figure) override;
  // TakeTaken: whether a figure came since the last call (the window should be repainted).
  bool TakeTaken() {
    const bool t = taken_;
    taken_ = false;
    return t;
  }

 private:
  HostDocument* document_;
  bool taken_ = false;
};

// PadPolygonVertices: the outline of a regular-polygon pad as the pad command draws it: the
// step is 360 / sides in whole degrees, vertex 0 at (cx + r, cy). Fewer than 3 sides: none.
std::vector<Vertex> PadPolygonVertices(double cx, double cy, double diameter, int sides);

}  // namespace qvis::session

#endif  // APPS_QVIS_SESSION_HOST_DOCUMENT_H_
