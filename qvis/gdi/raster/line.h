// Cosmetic (1-pixel) line scan converter with the pen styles stepped per pixel.
#ifndef QVIS_GDI_RASTER_LINE_H_
#define QVIS_GDI_RASTER_LINE_H_

#include <cstdint>

#include "qvis/gdi/raster/geom.h"
#include "qvis/gdi/raster/span.h"

namespace qvis::gdi {

// LineStyle is the on/off pattern of a styled thin pen: `runs[0..count)` are pixel counts, on
// first and then alternately off (count is even), `period` their sum, and `pos` where the next
// pixel falls in the period. count 0 is a solid pen.
struct LineStyle {
  static constexpr int kMaxRuns = 32;  // 16 user entries, an odd count running twice
  std::int64_t runs[kMaxRuns] = {};
  int count = 0;
  std::int64_t period = 1;
  std::int64_t pos = 0;
  bool IsSolid() const { return count == 0; }
};

// StyleOfRuns builds a pattern from on/off lengths times `scale`, an odd count running twice so
// that on and off alternate; more than 16 lengths, or no length at all, is solid.
LineStyle StyleOfRuns(const std::uint32_t* lengths, int n, std::int64_t scale);

// CosmeticStyle returns the pattern of a cosmetic pen style (PS_DASH 18 on 6 off, PS_DOT 3/3,
// PS_DASHDOT 9-6-3-6, PS_DASHDOTDOT 9-3-3-3-3-3; PS_ALTERNATE 1/1; anything else solid).
LineStyle CosmeticStyle(int ps_style);

// ThinPenStyle is the pattern a one-pixel pen steps along its lines. A cosmetic pen's user style
// counts three pixels for every unit; a geometric pen of width 1 scales its style's units by
// that width (dash 3 on 1 off, dot 1/1, dash-dot 3-1-1-1, dash-dot-dot 3-1-1-1-1-1), and its
// user style is in pixels as given. Measured against the reference for both kinds.
LineStyle ThinPenStyle(int ps_style, bool geometric, const std::uint32_t* user, int user_count);

// ScanCosmeticLine emits the pixels of the segment a -> b inside `clip`: the start pixel, not the
// end pixel. Pixels step along the major axis; the minor coordinate is the nearest one with ties
// going to the smaller coordinate, so a segment and its reverse share their interior pixels and
// clipping never moves a pixel. With a style, drawn pixels go to `on` and gap pixels to `gaps`
// (null: gaps are left alone) and style->pos advances by the segment's pixel count. A
// zero-length segment draws nothing.
void ScanCosmeticLine(PointI a, PointI b, const IRect& clip, LineStyle* style, SpanSink& on,
                      SpanSink* gaps);

}  // namespace qvis::gdi

#endif  // QVIS_GDI_RASTER_LINE_H_
