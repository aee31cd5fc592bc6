// Cosmetic (1-pixel) line scan converter with the pen styles stepped per pixel.
#ifndef QVIS_GDI_RASTER_LINE_H_
#define QVIS_GDI_RASTER_LINE_H_

#include <cstdint>

#include "qvis/gdi/raster/geom.h"
#include "qvis/gdi/raster/span.h"

namespace qvis::gdi {

// LineStyle is the on/off pattern of a styled cosmetic pen: bit i of `mask` says whether pixel i
// of each period is drawn, `pos` is where the next pixel falls in the period.
struct LineStyle {
  std::uint32_t mask = 0xFFFFFFFFu;
  int period = 1;
  int pos = 0;
  bool IsSolid() const { return period == 1 && (mask & 1u); }
};

// CosmeticStyle returns the pattern of a cosmetic pen style (PS_DASH 18 on 6 off, PS_DOT 3/3,
// PS_DASHDOT 9-6-3-6, PS_DASHDOTDOT 9-3-3-3-3-3; PS_ALTERNATE 1/1; anything else solid).
LineStyle CosmeticStyle(int ps_style);

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
