// Integer device geometry of the raster engine: points and half-open boxes in pixels.
#ifndef QVIS_GDI_RASTER_GEOM_H_
#define QVIS_GDI_RASTER_GEOM_H_

#include <algorithm>
#include <cstdint>

namespace qvis::gdi {

struct PointI {
  int x = 0;
  int y = 0;
  friend bool operator==(const PointI&, const PointI&) = default;
};

// IRect is the half-open box left <= x < right, top <= y < bottom. Empty when either extent is
// zero or negative.
struct IRect {
  int left = 0;
  int top = 0;
  int right = 0;
  int bottom = 0;

  bool IsEmpty() const { return right <= left || bottom <= top; }
  bool Contains(int x, int y) const { return x >= left && x < right && y >= top && y < bottom; }
  // Intersect returns the common part (possibly empty, never with inverted edges).
  IRect Intersect(const IRect& o) const {
    IRect r{std::max(left, o.left), std::max(top, o.top), std::min(right, o.right),
            std::min(bottom, o.bottom)};
    if (r.IsEmpty()) return IRect{};
    return r;
  }
  friend bool operator==(const IRect&, const IRect&) = default;
};

// Fixed-point device coordinates for vertices that fall between pixels (wide-pen outlines,
// flattened curves): 64-bit integers with kFixShift fraction bits, so the whole 32-bit pixel
// range fits with room for products in 128 bits.
inline constexpr int kFixShift = 8;
inline constexpr std::int64_t kFixOne = std::int64_t{1} << kFixShift;

struct PointFx {
  std::int64_t x = 0;
  std::int64_t y = 0;
  friend bool operator==(const PointFx&, const PointFx&) = default;
};

inline PointFx ToFx(PointI p) {
  return PointFx{std::int64_t{p.x} * kFixOne, std::int64_t{p.y} * kFixOne};
}

}  // namespace qvis::gdi

#endif  // QVIS_GDI_RASTER_GEOM_H_
