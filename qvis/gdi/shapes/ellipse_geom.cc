// Ellipse stepping: an integer midpoint walk over one quarter, mirrored into the other three.
#include "qvis/gdi/shapes/ellipse_geom.h"

#include <algorithm>
#include <utility>

#include "qvis/compat/int128.h"

namespace qvis::gdi {
namespace {

bool Steppable(std::int64_t width, std::int64_t height) {
  return width >= 1 && height >= 1 && width <= kMaxSteppedEllipse && height <= kMaxSteppedEllipse;
}

// Walks one quarter of the width x height ellipse from the middle of the right edge toward the
// top, calling visit(x, y) for each pixel (x from width-1 down, y from height/2 up). The walk
// keeps the doubled midpoint error of the next diagonal step and moves in x, in y or in both.
template <typename Visit>
void WalkQuadrant(std::int64_t width, std::int64_t height, Visit visit) {
  // The error terms grow with the fourth power of the box side; 128 bits hold them for every
  // box that is stepped.
  const Int128 a = width - 1;
  const Int128 b = height - 1;
  const Int128 a_step = 8 * a * a;
  const Int128 b_step = 8 * b * b;
  Int128 dx = 4 * b * b * (1 - a);
  Int128 dy = 4 * a * a * (1 + (b % 2));
  Int128 err = dx + dy + a * a * (b % 2);
  std::int64_t x = width - 1;
  std::int64_t y = height / 2;
  while (x >= width / 2) {
    visit(x, y);
    const Int128 e2 = 2 * err;
    if (e2 >= dx) {
      --x;
      dx += b_step;
      err += dx;
    }
    if (e2 <= dy) {
      ++y;
      dy += a_step;
      err += dy;
    }
  }
}

}  // namespace

Box64 NormalizedBox(std::int64_t left, std::int64_t top, std::int64_t right, std::int64_t bottom) {
  if (left > right) std::swap(left, right);
  if (top > bottom) std::swap(top, bottom);
  return Box64{left, top, right, bottom};
}

void EllipseQuadrant(std::int64_t width, std::int64_t height, std::vector<PointI>* out) {
  if (!Steppable(width, height)) return;
  WalkQuadrant(width, height, [out](std::int64_t x, std::int64_t y) {
    out->push_back(PointI{static_cast<int>(x), static_cast<int>(y)});
  });
}

namespace {

// AssignGrowing is vector::assign whose memory grows at least twofold: an assign past the
// capacity takes exactly what it needs, and scratch reused for ever larger figures (a circle
// dragged wider) would then allocate on every one.
template <class T>
void AssignGrowing(std::vector<T>* v, std::size_t n, const T& value) {
  if (n > v->capacity()) v->reserve(std::max(n, 2 * v->capacity()));
  v->assign(n, value);
}

// Builds the ring from a quadrant already computed.
void BuildRing(const std::vector<PointI>& q, const Box64& box, bool clockwise,
               std::vector<PointI>* ring) {
  const std::int64_t w = box.Width();
  const std::int64_t h = box.Height();
  const std::size_t c = q.size();
  AssignGrowing(ring, 4 * c, PointI{});
  for (std::size_t i = 0; i < c; ++i) {
    const std::int64_t px = q[i].x;
    const std::int64_t py = q[i].y;
    const int xr = static_cast<int>(box.left + px);
    const int xl = static_cast<int>(box.left + (w - 1 - px));
    // The quarter walked first lies above the middle on screen for counter-clockwise rings
    // and below it for clockwise ones.
    const int y_first = static_cast<int>(clockwise ? box.top + py : box.top + (h - 1 - py));
    const int y_other = static_cast<int>(clockwise ? box.top + (h - 1 - py) : box.top + py);
    (*ring)[i] = PointI{xr, y_first};
    (*ring)[2 * c - 1 - i] = PointI{xl, y_first};
    (*ring)[2 * c + i] = PointI{xl, y_other};
    (*ring)[4 * c - 1 - i] = PointI{xr, y_other};
  }
}

// Index of the first quadrant pixel at or past the ray, for the four quarters of the plane.
// The ties differ between quarters on purpose: they decide which of two pixels on a ray through
// a pixel centre starts or ends an arc, and they are what the arcs are measured against.
int FindRayIndex(const std::vector<PointI>& q, std::int64_t cx, std::int64_t cy, std::int64_t x,
                 std::int64_t y) {
  const int c = static_cast<int>(q.size());
  auto rx = [&](int i) { return static_cast<std::int64_t>(q[i].x) - cx; };
  auto ry = [&](int i) { return static_cast<std::int64_t>(q[i].y) - cy; };
  int i = 0;
  if (y >= 0) {
    if (x >= 0) {
      while (i < c && !(rx(i) * y <= ry(i) * x)) ++i;
      return i;
    }
    while (i < c && !(rx(i) * y < ry(i) * -x)) ++i;
    return 2 * c - i;
  }
  if (x >= 0) {
    while (i < c && !(rx(i) * -y <= ry(i) * x)) ++i;
    return 4 * c - i;
  }
  while (i < c && !(rx(i) * -y < ry(i) * -x)) ++i;
  return 2 * c + i;
}

}  // namespace

int EllipseRing(const Box64& box, bool clockwise, std::vector<PointI>* ring, CurveScratch* work) {
  ring->clear();
  CurveScratch own;
  std::vector<PointI>& q = (work != nullptr ? work : &own)->quadrant;
  q.clear();
  EllipseQuadrant(box.Width(), box.Height(), &q);
  BuildRing(q, box, clockwise, ring);
  return static_cast<int>(q.size());
}

int RingIndexOfRay(const std::vector<PointI>& quadrant, const Box64& box, bool clockwise,
                   std::int64_t x, std::int64_t y) {
  const std::int64_t w = box.Width();
  const std::int64_t h = box.Height();
  std::int64_t vx = x - (box.left + w / 2);
  std::int64_t vy = y - (box.top + h / 2);
  // The quadrant is measured with y growing away from the middle in the drawing direction.
  if (!clockwise) vy = -vy;
  return FindRayIndex(quadrant, w / 2, h / 2, vx, vy);
}

bool ArcPoints(const Box64& box, PointI start, PointI end, bool clockwise,
               std::vector<PointI>* points, CurveScratch* work) {
  points->clear();
  if (!Steppable(box.Width(), box.Height())) return false;
  CurveScratch own;
  CurveScratch& scratch = work != nullptr ? *work : own;
  std::vector<PointI>& q = scratch.quadrant;
  q.clear();
  EllipseQuadrant(box.Width(), box.Height(), &q);
  std::vector<PointI>& ring = scratch.ring;
  BuildRing(q, box, clockwise, &ring);
  const int c = static_cast<int>(q.size());
  if (c == 0) return false;
  const int s = RingIndexOfRay(q, box, clockwise, start.x, start.y);
  int e = RingIndexOfRay(q, box, clockwise, end.x, end.y);
  if (e <= s) e += 4 * c;
  points->reserve(static_cast<std::size_t>(e - s));
  for (int k = s; k < e; ++k) {
    const PointI& p = ring[static_cast<std::size_t>(k % (4 * c))];
    if (points->empty() || points->back() != p) points->push_back(p);
  }
  return true;
}

void EllipseOutline(const Box64& box, bool clockwise, std::vector<PointI>* points,
                    CurveScratch* work) {
  points->clear();
  CurveScratch own;
  CurveScratch& scratch = work != nullptr ? *work : own;
  std::vector<PointI>& ring = scratch.ring;
  EllipseRing(box, clockwise, &ring, &scratch);
  for (const PointI& p : ring) {
    if (points->empty() || points->back() != p) points->push_back(p);
  }
  while (points->size() > 1 && points->back() == points->front()) points->pop_back();
}

std::int64_t RoundRectRows(const Box64& box, std::int64_t corner_w, std::int64_t corner_h,
                           std::vector<std::int64_t>* left, std::vector<std::int64_t>* right,
                           CurveScratch* work) {
  left->clear();
  right->clear();
  // The region leaves out the right and bottom edges of the box.
  const std::int64_t w = box.Width() - 1;
  const std::int64_t h = box.Height() - 1;
  if (w < 1 || h < 1 || w > kMaxSteppedEllipse || h > kMaxSteppedEllipse) return 0;
  const std::int64_t ew = std::min(w, corner_w < 0 ? -corner_w : corner_w);
  const std::int64_t eh = std::min(h, corner_h < 0 ? -corner_h : corner_h);
  AssignGrowing(left, static_cast<std::size_t>(h), std::int64_t{box.left});
  AssignGrowing(right, static_cast<std::size_t>(h), std::int64_t{box.left + w});
  if (ew < 2 || eh < 2) return h;  // corners too small to round: a plain box

  // inset[y] for the eh rows of the corner ellipse; the walk sets the lower half, moving
  // inward each time it steps down a row.
  CurveScratch own;
  std::vector<std::int64_t>& inset = (work != nullptr ? work : &own)->inset;
  AssignGrowing(&inset, static_cast<std::size_t>(eh), std::int64_t{-1});
  std::int64_t x = 0;
  std::int64_t y = eh / 2;
  inset[static_cast<std::size_t>(y)] = 0;
  {
    const Int128 a = ew - 1;
    const Int128 b = eh - 1;
    const Int128 a_step = 8 * a * a;
    const Int128 b_step = 8 * b * b;
    Int128 dx = 4 * b * b * (1 - a);
    Int128 dy = 4 * a * a * (1 + (b % 2));
    Int128 err = dx + dy + a * a * (b % 2);
    while (x <= ew / 2) {
      const Int128 e2 = 2 * err;
      if (e2 >= dx) {
        ++x;
        dx += b_step;
        err += dx;
      }
      if (e2 <= dy) {
        ++y;
        dy += a_step;
        err += dy;
        if (y < eh) inset[static_cast<std::size_t>(y)] = x;
      }
    }
  }
  // Rows the walk does not reach (the tips of very narrow ellipses) stay empty.
  for (std::int64_t r = eh / 2 + 1; r < eh; ++r) {
    if (inset[static_cast<std::size_t>(r)] < 0) inset[static_cast<std::size_t>(r)] = w;
  }
  for (std::int64_t r = 0; r < eh / 2; ++r) {
    inset[static_cast<std::size_t>(r)] = inset[static_cast<std::size_t>(eh - 1 - r)];
  }
  // The corner ellipse's upper half rounds the top rows, its lower half the bottom rows; the
  // rows between are full width.
  const std::int64_t top_rows = eh / 2;
  const std::int64_t bottom_rows = eh - eh / 2;
  for (std::int64_t r = 0; r < h; ++r) {
    std::int64_t in = 0;
    if (r < top_rows) {
      in = inset[static_cast<std::size_t>(r)];
    } else if (r >= h - bottom_rows) {
      in = inset[static_cast<std::size_t>(r - (h - eh))];
    }
    // Round-rectangle corners take the corner ellipse's inset at each side.
    if (2 * in >= w) in = w;  // empty row: both ends at the right edge
    (*left)[static_cast<std::size_t>(r)] = box.left + std::min(in, w);
    (*right)[static_cast<std::size_t>(r)] =
        box.left + std::max<std::int64_t>(w - in, std::min(in, w));
  }
  return h;
}

}  // namespace qvis::gdi
