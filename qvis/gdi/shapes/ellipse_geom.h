// Pixel geometry of ellipses as the device layer draws them: the outline ring that Ellipse,
// Arc, Pie and Chord walk, the choice of the ring's part between two rays, and the rows of
// elliptic and round-rectangle regions. Integer stepping only; no drawing here.
#ifndef QVIS_GDI_SHAPES_ELLIPSE_GEOM_H_
#define QVIS_GDI_SHAPES_ELLIPSE_GEOM_H_

#include <cstdint>
#include <vector>

#include "qvis/gdi/raster/geom.h"

namespace qvis::gdi {

// Largest box side (pixels) whose outline is stepped pixel by pixel. Stepping costs one
// iteration per outline pixel, so bigger boxes are drawn through a polygon approximation
// whose cost is bounded by the clipped result instead.
inline constexpr std::int64_t kMaxSteppedEllipse = std::int64_t{1} << 16;

// A box normalised to left <= right, top <= bottom in 64 bits (sides of any 32-bit box fit).
// CurveScratch: working memory of the ellipse stepping, lent by the caller (a DC keeps one so
// that warm drawing does not allocate). Null where a function takes one: its own buffers.
struct CurveScratch {
  std::vector<PointI> quadrant;
  std::vector<PointI> ring;
  std::vector<std::int64_t> inset;
};

struct Box64 {
  std::int64_t left = 0;
  std::int64_t top = 0;
  std::int64_t right = 0;
  std::int64_t bottom = 0;
  std::int64_t Width() const { return right - left; }
  std::int64_t Height() const { return bottom - top; }
};

// NormalizedBox swaps inverted corners.
Box64 NormalizedBox(std::int64_t left, std::int64_t top, std::int64_t right, std::int64_t bottom);

// EllipseQuadrant appends the outline pixels of one quarter of a width x height ellipse, in
// box-relative coordinates: x runs from width-1 down to width/2 while y runs upward from
// height/2 (the quarter that touches the right edge, seen with y growing away from the middle).
// Consecutive pixels touch (8-connected). Sizes below 1 or above kMaxSteppedEllipse append
// nothing.
void EllipseQuadrant(std::int64_t width, std::int64_t height, std::vector<PointI>* out);

// EllipseRing fills `ring` with the closed outline of the ellipse inscribed in `box` (right and
// bottom edges excluded), as 4 * q absolute pixels where q is the quadrant size: it starts at
// the right end of the middle row and runs counter-clockwise on screen, or clockwise when
// `clockwise`. Pixels on the axes may appear twice in a row (the quarters are mirrored, not
// merged). Returns the quadrant size q; 0 (and an empty ring) for boxes narrower than 1 or
// wider than kMaxSteppedEllipse.
int EllipseRing(const Box64& box, bool clockwise, std::vector<PointI>* ring,
                CurveScratch* work = nullptr);

// RingIndexOfRay returns the index in the ring of EllipseRing (same box and direction) where
// the ray from the ring's centre through (x, y) crosses it: the first outline pixel reached
// when walking from the middle of the right edge in the drawing direction. `quadrant` is the
// relative quadrant of EllipseQuadrant. A point at the centre counts as lying on the start ray.
int RingIndexOfRay(const std::vector<PointI>& quadrant, const Box64& box, bool clockwise,
                   std::int64_t x, std::int64_t y);

// ArcPoints fills `points` with the outline pixels of the arc of the ellipse in `box` from
// the ray through `start` to the ray through `end` in the given direction, in drawing order,
// with repeated pixels removed. The list is meant to be drawn as an open polyline (so its
// last pixel is left out). Equal rays give the whole ellipse. Returns false (empty list) when
// the box is empty or too big to step.
bool ArcPoints(const Box64& box, PointI start, PointI end, bool clockwise,
               std::vector<PointI>* points, CurveScratch* work = nullptr);

// EllipseOutline fills `points` with the closed outline of the ellipse in `box`, drawing order
// from the middle of the right edge in the given direction, repeated pixels removed (for
// Ellipse; draw it as a closed polyline). Empty for empty or too big boxes.
void EllipseOutline(const Box64& box, bool clockwise, std::vector<PointI>* points,
                    CurveScratch* work = nullptr);

// RoundRectRows computes the rows of a round-rectangle region of the box with corner ellipses
// of corner_w x corner_h (an elliptic region when they equal the box's size): for every row y
// of [box.top, box.top + rows) the half-open span [left[i], right[i]). The right and bottom
// edges of the box are outside, one pixel more than the Ellipse outline leaves out. Corner
// sizes are clamped to the box. Returns the number of rows (0 for an empty box or one taller
// or wider than kMaxSteppedEllipse).
std::int64_t RoundRectRows(const Box64& box, std::int64_t corner_w, std::int64_t corner_h,
                           std::vector<std::int64_t>* left, std::vector<std::int64_t>* right,
                           CurveScratch* work = nullptr);

}  // namespace qvis::gdi

#endif  // QVIS_GDI_SHAPES_ELLIPSE_GEOM_H_
