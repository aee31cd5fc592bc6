// qvis::gdi alpha drawing: the translucent fills and round-capped strokes the drawing surface's
// GP_ primitives are made of. Colours are ARGB (0xAARRGGBB); each painted pixel becomes
// src * a / 255 + dst * (255 - a) / 255 per channel, without anti-aliasing, whatever the DC's
// ROP2; the DC's clip region applies. Angles are degrees, clockwise from +x (y grows downward).
#ifndef QVIS_GDI_ALPHA_H_
#define QVIS_GDI_ALPHA_H_

#include <cstdint>

#include "qvis/compat/cpoint.h"
#include "qvis/compat/export.h"
#include "qvis/compat/handles.h"
#include "qvis/compat/types.h"

namespace qvis::gdi {

// ArgbFromColor builds the ARGB value of a COLORREF (0x00BBGGRR) and an opacity; only the low
// byte of the opacity counts.
constexpr std::uint32_t ArgbFromColor(COLORREF color, int opacity) {
  return (static_cast<std::uint32_t>(opacity) & 0xFFu) << 24 | (color & 0xFFu) << 16 |
         ((color >> 8) & 0xFFu) << 8 | ((color >> 16) & 0xFFu);
}

// GpFillPolygon fills the polygon by the alternate rule (the pixels GDI's Polygon fills with a
// null pen). Fewer than 3 points or a null DC: FALSE, nothing drawn.
QVIS_API BOOL GpFillPolygon(HDC dc, const CPoint* points, int count, std::uint32_t argb);
// GpFillRect fills the box x <= px < x + width, y <= py < y + height. A zero or negative size
// draws nothing (TRUE); a null DC: FALSE.
QVIS_API BOOL GpFillRect(HDC dc, int x, int y, int width, int height, std::uint32_t argb);
// GpFillRegion fills a region. A null DC or region: FALSE.
QVIS_API BOOL GpFillRegion(HDC dc, HRGN region, std::uint32_t argb);
// GpDrawLine strokes the segment with a pen of the given width, round caps. A zero-length
// segment, a width that is not positive or not finite draw nothing (TRUE); a null DC: FALSE.
QVIS_API BOOL GpDrawLine(HDC dc, std::uint32_t argb, float width, int x1, int y1, int x2, int y2);
// GpDrawEllipse strokes the ellipse inscribed in the box (x, y, width, height), round joins.
// An empty box draws nothing.
QVIS_API BOOL GpDrawEllipse(HDC dc, std::uint32_t argb, float pen_width, int x, int y, int width,
                   int height);
// GpDrawArc strokes the part of that ellipse from `start` over `sweep` degrees (negative:
// counter-clockwise; beyond a full turn: the whole ellipse), round caps and joins.
QVIS_API BOOL GpDrawArc(HDC dc, std::uint32_t argb, float pen_width, int x, int y, int width, int height,
               float start, float sweep);
// GpDrawPie strokes the arc closed through the centre of the box, round joins.
QVIS_API BOOL GpDrawPie(HDC dc, std::uint32_t argb, float pen_width, int x, int y, int width, int height,
               float start, float sweep);

}  // namespace qvis::gdi

#endif  // QVIS_GDI_ALPHA_H_
