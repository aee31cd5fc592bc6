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

#include <cmath>

namespace qvis {

inline constexpr double kMinZoom = 1e-8;
inline constexpr double kMaxZoom = 1e6;
// The view position (world point at the top-left pixel) is kept within +/- this: a pan that
// would take it further stops there instead of running to infinity.
inline constexpr double kMaxViewOffset = 1e15;

// False for NaN, infinities and anything outside [kMinZoom, kMaxZoom].
constexpr bool ZoomInRange(double zoom) { return zoom >= kMinZoom && zoom <= kMaxZoom; }

// PanView: view + delta, saturated to +/-kMaxViewOffset; a NaN result leaves the view alone.
inline double PanView(double view, double delta) {
  const double moved = view + delta;
  if (std::isnan(moved)) return view;
  if (moved > kMaxViewOffset) return kMaxViewOffset;
  if (moved < -kMaxViewOffset) return -kMaxViewOffset;
  return moved;
}

// ZoomWithinRange runs `change` (a zoom, and the move that keeps a point fixed) on a copy of
// the view and keeps the result only when its zoom is in range and its position finite and
// within kMaxViewOffset. Returns whether the view changed hands; at a limit nothing happens.
template <class Coords, class Change>
bool ZoomWithinRange(Coords& view, Change&& change) {
  Coords trial(view);
  change(trial);
  if (!ZoomInRange(trial.m_dZoom) || !(std::fabs(trial.m_dViewX) <= kMaxViewOffset) ||
      !(std::fabs(trial.m_dViewY) <= kMaxViewOffset)) {
    return false;
  }
  view = trial;
  return true;
}

}  // namespace qvis

#endif  // QVIS_COORDS_ZOOM_RANGE_H_
