// Blitters: the span sinks that write pixels. One blitter per fill source (solid colour, 8x8
// pattern, ARGB source-over); the raster operation is chosen once when the blitter is set up,
// never per pixel. Every blitter also clamps to its bitmap, so no span can write outside it.
#ifndef QVIS_GDI_RASTER_BLITTER_H_
#define QVIS_GDI_RASTER_BLITTER_H_

#include <cstdint>

#include "qvis/compat/types.h"
#include "qvis/gdi/raster/geom.h"
#include "qvis/gdi/raster/region.h"
#include "qvis/gdi/raster/rop2.h"
#include "qvis/gdi/raster/span.h"

namespace qvis::gdi {

struct BitmapData;

// ColorToPixel turns a COLORREF (0x00BBGGRR) into a 32-bpp pixel (0x00RRGGBB), and back.
inline std::uint32_t ColorToPixel(COLORREF c) {
  return ((c & 0xFFu) << 16) | (c & 0xFF00u) | ((c >> 16) & 0xFFu);
}
inline COLORREF PixelToColor(std::uint32_t p) {
  return ((p & 0xFFu) << 16) | (p & 0xFF00u) | ((p >> 16) & 0xFFu);
}
// MonoBitFor gives the bit a pen colour takes in a 1-bpp bitmap of a DC whose background colour
// is `bk`: the background colour itself takes the bit nearest to it (white 1 or black 0), every
// other colour the opposite bit. MonoBitFor(c, c) is the nearer of black and white.
bool MonoBitFor(COLORREF color, COLORREF bk);

// The 8x8 hatch patterns, one byte per row, bit 7 = leftmost pixel; a set bit is a line pixel.
// Index HS_HORIZONTAL 0 .. HS_DIAGCROSS 5.
extern const std::uint8_t kHatchPatterns[6][8];

// FillSource says what a primitive paints with.
struct FillSource {
  enum class Kind { kNone, kSolid, kPattern, kArgb };
  Kind kind = Kind::kNone;
  COLORREF color = 0;            // kSolid; the line colour of kPattern
  COLORREF gap_color = 0;        // kPattern: colour of the gaps when opaque_gaps
  bool opaque_gaps = false;      // kPattern: gaps painted (OPAQUE) or left alone (TRANSPARENT)
  const std::uint8_t* pattern = nullptr;  // kPattern: 8 rows
  PointI origin;                 // kPattern: brush origin
  std::uint32_t argb = 0;        // kArgb: 0xAARRGGBB, source-over, ROP2 ignored
  // On 1-bpp bitmaps a pen's colour takes its bit by the DC's background colour (MonoBitFor);
  // brush colours take the nearer of black and white.
  bool mono_by_background = false;
};

// SolidBlitter32: one colour through a ROP2 loop on a 32-bpp bitmap.
class SolidBlitter32 final : public SpanSink {
 public:
  void Reset(BitmapData* bitmap, std::uint32_t pixel, int rop2);
  void Blit(const Span* spans, int count) override;
  void BlitRect(const IRect& box) override;
  bool Solid(SolidTarget* target) const override;

 private:
  BitmapData* bitmap_ = nullptr;
  std::uint32_t pixel_ = 0;
  Rop2SpanFn fn_ = nullptr;
  bool copy_ = false;  // R2_COPYPEN: short spans are stored inline
};

// PatternBlitter32: an 8x8 two-colour pattern aligned to the brush origin on a 32-bpp bitmap.
class PatternBlitter32 final : public SpanSink {
 public:
  void Reset(BitmapData* bitmap, const FillSource& source, int rop2);
  void Blit(const Span* spans, int count) override;

 private:
  BitmapData* bitmap_ = nullptr;
  std::uint8_t rows_[8] = {};
  PointI origin_;
  std::uint32_t fg_ = 0;
  std::uint32_t bg_ = 0;
  bool opaque_ = false;
  Rop2PixelFn fn_ = nullptr;
};

// ArgbBlitter32: source-over blending of one ARGB colour, per channel
// src * a / 255 + dst * (255 - a) / 255, rounded to the nearest value.
class ArgbBlitter32 final : public SpanSink {
 public:
  void Reset(BitmapData* bitmap, std::uint32_t argb);
  void Blit(const Span* spans, int count) override;

 private:
  BitmapData* bitmap_ = nullptr;
  std::uint32_t argb_ = 0;
};

// MonoBlitter: solid or pattern fills on a 1-bpp bitmap (colours already turned into bits).
class MonoBlitter final : public SpanSink {
 public:
  void Reset(BitmapData* bitmap, bool fg_bit, bool bg_bit, const std::uint8_t* pattern,
             bool opaque_gaps, PointI origin, int rop2);
  void Blit(const Span* spans, int count) override;

 private:
  BitmapData* bitmap_ = nullptr;
  std::uint8_t rows_[8] = {};
  PointI origin_;
  bool fg_ = false;
  bool bg_ = false;
  bool opaque_ = true;
  int rop2_ = kRop2CopyPen;
};

// BlitterSet owns one blitter of each kind and hands out the one a primitive needs, wrapped in
// the clip region when there is one. A DC keeps two sets (pen and gap colours of a styled line
// are live at the same time); setting one up allocates nothing.
class BlitterSet {
 public:
  // Choose returns the sink that paints `source` into `bitmap` with `rop2`, clipped to `clip`
  // when it is not null. A null bitmap, kNone, R2_NOP or an empty clip give a sink that drops
  // everything. For 1-bpp bitmaps colours become bits as `mono_by_background` says.
  SpanSink& Choose(BitmapData* bitmap, const FillSource& source, int rop2, COLORREF bk_color,
                   const SpanRegion* clip);

 private:
  SolidBlitter32 solid_;
  PatternBlitter32 pattern_;
  ArgbBlitter32 argb_;
  MonoBlitter mono_;
  RegionClipSink clip_;
  NullSink null_;
};

}  // namespace qvis::gdi

#endif  // QVIS_GDI_RASTER_BLITTER_H_
