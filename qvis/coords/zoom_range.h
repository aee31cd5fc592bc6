// The zoom range the design and the window keep a view inside: zoom is pixels per world unit.
// Within it world <-> pixel mapping stays exact: at the ceiling a world unit is a million
// pixels, so a board a kilometre wide in mm still maps to pixels whose rounding error is far
// below one pixel (doubles carry 53 bits) and every on-screen pixel is a finite world point;
// at the floor a pixel spans 1e8 units, so any world the doubles hold fits in 32-bit pixels.
// CQVIS_Coords keeps its own rules (a zoom of exactly 0 becomes the floor); zoom requests that
// arrive at the design or the window (keys, wheel, host zoom operations, zoom box, zoom all)
// do nothing when they would leave the range.
#ifndef QVIS_COORDS_ZOOM_RANGE_H_
#define QVIS_COORDS_ZOOM_RANGE_H_

namespace qvis {

inline constexpr double kMinZoom = 1e-8;
inline constexpr double kMaxZoom = 1e6;

// False for NaN, infinities and anything outside [kMinZoom, kMaxZoom].
constexpr bool ZoomInRange(double zoom) { return zoom >= kMinZoom && zoom <= kMaxZoom; }

}  // namespace qvis

#endif  // QVIS_COORDS_ZOOM_RANGE_H_
