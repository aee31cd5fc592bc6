// RubberBand: the one drawing helper every interactive command, the zoom box and the mouse pan
// share. It owns the erase -> change -> draw sequence of exclusive-or figures and the few drawing
// steps their Draw operations are made of. Built on the stack from a command's surface and target
// context; it holds nothing else and owns nothing.
#ifndef QVIS_COMMANDS_RUBBER_BAND_H_
#define QVIS_COMMANDS_RUBBER_BAND_H_

#include <utility>
#include <vector>

#include "qvis/commands/construction.h"
#include "qvis/compat/handles.h"
#include "qvis/compat/types.h"

class CQVIS_GDI;

namespace qvis {

// Virtual-key codes the commands test (the Win32 values, under names that cannot clash with the
// platform's macros).
inline constexpr int kKeyBack = 8;
inline constexpr int kKeyReturn = 13;
inline constexpr int kKeyEscape = 27;
inline constexpr int kKeySpace = 32;

// Button flags of MouseDown / MouseUp: which button, not a modifier mask.
inline constexpr unsigned kLeftButton = 1;
inline constexpr unsigned kRightButton = 2;

// Command result codes shared by every command.
inline constexpr int kNotHandled = 0;
inline constexpr int kHandled = 1;
inline constexpr int kComplete = 2;
inline constexpr int kCircle3Complete = 3;
inline constexpr int kLeaveCommand = -1;  // Esc with nothing in progress

class RubberBand {
 public:
  // RubberBand draws through `surface` into `target` (a null target falls back to the surface's
  // drawing context, as every surface operation does). A null surface makes every step a no-op.
  RubberBand(CQVIS_GDI* surface, HDC target) : surface_(surface), target_(target) {}

  // Update erases the figure that `figure.Draw()` paints, applies `change` and paints the figure
  // again: the only way a visible figure changes. Draw must paint nothing while the figure is
  // inactive, which makes the sequence safe in every state.
  template <class Figure, class Change>
  static void Update(Figure& figure, Change&& change) {
    figure.Draw();
    std::forward<Change>(change)();
    figure.Draw();
  }

  // DragBox follows the pointer with a box the left button drags (the zoom and selection
  // boxes: m_nDragState, corners m_dX1/Y1 and m_dX2/Y2): before the press both corners move to
  // (x, y), during the drag only the second corner; any other state leaves the box as it is.
  template <class Box>
  static void DragBox(Box& box, double x, double y) {
    Update(box, [&] {
      if (box.m_nDragState == 0) {
        box.m_dX1 = box.m_dX2 = x;
        box.m_dY1 = box.m_dY2 = y;
      } else if (box.m_nDragState == 1) {
        box.m_dX2 = x;
        box.m_dY2 = y;
      }
    });
  }

  // Raster modes of the target: XOR for transient figures, copy for committed ones, merge for the
  // track list's erase pass.
  void XorMode() const;
  void CopyMode() const;
  void MergeMode() const;

  // Pens and brushes, all from the surface's caches and selected into the target.
  void NullBrush() const;
  void SolidBrush(COLORREF color) const;
  void ThinPen(COLORREF color) const;                  // solid, 1 pixel
  void DotPen(COLORREF color) const;                   // dotted, 1 pixel, transparent gaps
  void WorldPen(double width, COLORREF color) const;   // solid, pixel width of a world width

  // World primitives into the target. Degenerate sizes draw what the surface draws for them.
  void Line(WorldPt a, WorldPt b) const;
  void Circle(WorldPt c, double r) const;
  void RectangularLine(WorldPt a, WorldPt b, double width) const;
  void Rectangle(double x1, double y1, double x2, double y2) const;
  void Cross(WorldPt c, double size) const;
  void Plus(WorldPt c, double size) const;
  void GuideCircle(WorldPt c, double r, double width) const;
  // Arc draws counter-clockwise (the DC's default direction) from the ray through `s` to the ray
  // through `e`, radius r.
  void Arc(WorldPt c, double r, WorldPt s, WorldPt e) const;
  // Polygon fills and outlines the world vertices on the target; fewer than 3 draw nothing.
  void Polygon(const std::vector<WorldPt>& pts) const;

  // OriginBox maps the two corners with the surface's coordinate system (device = R((f * v -
  // view) * zoom)) and draws the platform rectangle straight into the surface's origin context
  // with the pen and brush already selected there. With no origin context nothing is drawn.
  void OriginBox(double x1, double y1, double x2, double y2) const;

  // BoxPen prepares the zoom and selection box: XOR on the surface's origin context (null
  // fallback), the null brush and the 1-pixel dotted pen of `color`.
  void BoxPen(COLORREF color) const;

  // PixelsToWorld converts a length in pixels to world units at the current zoom (5 pixels ->
  // 5 / zoom); a zero or non-finite zoom gives 0.
  double PixelsToWorld(double pixels) const;

  CQVIS_GDI* surface() const { return surface_; }
  HDC target() const { return target_; }

 private:
  CQVIS_GDI* surface_;
  HDC target_;
};

// OriginContextOf returns the surface's origin device context (null for a null surface): the
// target context a command copies at construction.
HDC OriginContextOf(CQVIS_GDI* surface);

}  // namespace qvis

#endif  // QVIS_COMMANDS_RUBBER_BAND_H_
