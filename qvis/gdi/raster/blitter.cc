// Blitters: solid, pattern and ARGB sinks over 32-bpp bitmaps, the 1-bpp sink, and the choice of
// a blitter from a fill source.
#include "qvis/gdi/raster/blitter.h"

#include <algorithm>

#include "qvis/gdi/dc.h"
#include "qvis/gdi/raster/solid_run.h"

namespace qvis::gdi {

const std::uint8_t kHatchPatterns[6][8] = {
    {0x00, 0x00, 0x00, 0xFF, 0x00, 0x00, 0x00, 0x00},  // horizontal
    {0x08, 0x08, 0x08, 0x08, 0x08, 0x08, 0x08, 0x08},  // vertical
    {0x80, 0x40, 0x20, 0x10, 0x08, 0x04, 0x02, 0x01},  // forward diagonal: top left to bottom right
    {0x01, 0x02, 0x04, 0x08, 0x10, 0x20, 0x40, 0x80},  // backward diagonal
    {0x08, 0x08, 0x08, 0xFF, 0x08, 0x08, 0x08, 0x08},  // cross
    {0x81, 0x42, 0x24, 0x18, 0x18, 0x24, 0x42, 0x81},  // diagonal cross
};

bool MonoBitFor(COLORREF color, COLORREF bk) {
  const int r = static_cast<int>(bk & 0xFF), g = static_cast<int>((bk >> 8) & 0xFF),
            b = static_cast<int>((bk >> 16) & 0xFF);
  const int to_black = r * r + g * g + b * b;
  const int to_white = (255 - r) * (255 - r) + (255 - g) * (255 - g) + (255 - b) * (255 - b);
  const bool bk_bit = to_white < to_black;
  return ((color & 0xFFFFFF) == (bk & 0xFFFFFF)) ? bk_bit : !bk_bit;
}

void SpanSink::BlitRect(const IRect& box) {
  if (box.IsEmpty()) return;
  SpanBatch batch(*this);
  for (int y = box.top; y < box.bottom; ++y) batch.Add(y, box.left, box.right);
}

namespace {

// ClampSpan narrows a span to the bitmap; false when nothing is left.
inline bool ClampSpan(const BitmapData* bitmap, const Span& s, int* x0, int* x1) {
  if (s.y < 0 || s.y >= bitmap->height) return false;
  *x0 = std::max(s.x0, 0);
  *x1 = std::min(s.x1, bitmap->width);
  return *x0 < *x1;
}

inline unsigned Mod8(int v, int origin) {
  return (static_cast<unsigned>(v) - static_cast<unsigned>(origin)) & 7u;
}

}  // namespace

// --- Solid --------------------------------------------------------------------------------------

void SolidBlitter32::Reset(BitmapData* bitmap, std::uint32_t pixel, int rop2) {
  bitmap_ = bitmap;
  pixel_ = pixel;
  fn_ = ChooseRop2Span(rop2);
  copy_ = rop2 == kRop2CopyPen;
}

void SolidBlitter32::Blit(const Span* spans, int count) {
  if (copy_) {
    // The common case, short spans of one colour: stored here rather than through a call. The
    // bitmap's fields are read once: the pixel stores could otherwise alias them.
    const std::uint32_t value = pixel_ & 0x00FFFFFFu;
    std::uint8_t* const bits = bitmap_->bits.get();
    const std::ptrdiff_t stride = bitmap_->stride;
    const int width = bitmap_->width;
    const unsigned height = static_cast<unsigned>(bitmap_->height);
    for (int i = 0; i < count; ++i) {
      const Span& s = spans[i];
      if (static_cast<unsigned>(s.y) >= height) continue;
      const int x0 = std::max(s.x0, 0);
      const int x1 = std::min(s.x1, width);
      const int n = x1 - x0;
      if (n <= 0) continue;
      std::uint32_t* const p = reinterpret_cast<std::uint32_t*>(bits + stride * s.y) + x0;
      if (n <= 32) {
        StoreRun(p, n, value);
      } else {
        fn_(p, n, pixel_);
      }
    }
    return;
  }
  for (int i = 0; i < count; ++i) {
    int x0, x1;
    if (!ClampSpan(bitmap_, spans[i], &x0, &x1)) continue;
    fn_(bitmap_->Row32(spans[i].y) + x0, x1 - x0, pixel_);
  }
}

bool SolidBlitter32::Solid(SolidTarget* target) const {
  // Only the plain copy stores a constant word; rows must hold whole pixels.
  if (!copy_ || bitmap_->stride % 4 != 0) return false;
  target->bits = bitmap_->Row32(0);
  target->stride = bitmap_->stride / 4;
  target->bounds = bitmap_->Bounds();
  target->value = pixel_ & 0x00FFFFFFu;
  return true;
}

void SolidBlitter32::BlitRect(const IRect& box) {
  IRect r = box.Intersect(bitmap_->Bounds());
  if (r.IsEmpty()) return;
  if (r.left == 0 && r.right == bitmap_->width && bitmap_->stride == std::ptrdiff_t{4} * r.right) {
    // Whole rows lie back to back: one run over the block (the operations are per pixel).
    std::int64_t left = std::int64_t{r.right} * (r.bottom - r.top);
    std::uint32_t* p = bitmap_->Row32(r.top);
    while (left > 0) {
      const int n = static_cast<int>(std::min<std::int64_t>(left, 1 << 30));
      fn_(p, n, pixel_);
      p += n;
      left -= n;
    }
    return;
  }
  for (int y = r.top; y < r.bottom; ++y) fn_(bitmap_->Row32(y) + r.left, r.right - r.left, pixel_);
}

// --- Pattern ------------------------------------------------------------------------------------

void PatternBlitter32::Reset(BitmapData* bitmap, const FillSource& source, int rop2) {
  bitmap_ = bitmap;
  std::copy(source.pattern, source.pattern + 8, rows_);
  origin_ = source.origin;
  fg_ = ColorToPixel(source.color);
  bg_ = ColorToPixel(source.gap_color);
  opaque_ = source.opaque_gaps;
  fn_ = ChooseRop2Pixel(rop2);
}

void PatternBlitter32::Blit(const Span* spans, int count) {
  for (int i = 0; i < count; ++i) {
    int x0, x1;
    if (!ClampSpan(bitmap_, spans[i], &x0, &x1)) continue;
    const unsigned bits = rows_[Mod8(spans[i].y, origin_.y)];
    std::uint32_t* row = bitmap_->Row32(spans[i].y);
    unsigned col = Mod8(x0, origin_.x);
    for (int x = x0; x < x1; ++x, col = (col + 1) & 7u) {
      if ((bits >> (7 - col)) & 1u) {
        row[x] = fn_(fg_, row[x]);
      } else if (opaque_) {
        row[x] = fn_(bg_, row[x]);
      }
    }
  }
}

// --- ARGB ---------------------------------------------------------------------------------------

void ArgbBlitter32::Reset(BitmapData* bitmap, std::uint32_t argb) {
  bitmap_ = bitmap;
  argb_ = argb;
}

void ArgbBlitter32::Blit(const Span* spans, int count) {
  const std::uint32_t a = argb_ >> 24;
  const std::uint32_t sr = (argb_ >> 16) & 0xFF, sg = (argb_ >> 8) & 0xFF, sb = argb_ & 0xFF;
  const std::uint32_t ia = 255 - a;
  for (int i = 0; i < count; ++i) {
    int x0, x1;
    if (!ClampSpan(bitmap_, spans[i], &x0, &x1)) continue;
    std::uint32_t* row = bitmap_->Row32(spans[i].y);
    if (a == 255) {
      std::fill(row + x0, row + x1, argb_ & 0xFFFFFFu);
      continue;
    }
    for (int x = x0; x < x1; ++x) {
      const std::uint32_t d = row[x];
      const std::uint32_t r = (sr * a + ((d >> 16) & 0xFF) * ia + 127) / 255;
      const std::uint32_t g = (sg * a + ((d >> 8) & 0xFF) * ia + 127) / 255;
      const std::uint32_t b = (sb * a + (d & 0xFF) * ia + 127) / 255;
      row[x] = (r << 16) | (g << 8) | b;
    }
  }
}

// --- 1 bpp --------------------------------------------------------------------------------------

void MonoBlitter::Reset(BitmapData* bitmap, bool fg_bit, bool bg_bit,
                        const std::uint8_t* pattern, bool opaque_gaps, PointI origin, int rop2) {
  bitmap_ = bitmap;
  fg_ = fg_bit;
  bg_ = bg_bit;
  if (pattern != nullptr) {
    std::copy(pattern, pattern + 8, rows_);
  } else {
    std::fill(rows_, rows_ + 8, 0xFF);
  }
  opaque_ = opaque_gaps;
  origin_ = origin;
  rop2_ = rop2;
}

void MonoBlitter::Blit(const Span* spans, int count) {
  const std::uint32_t fg = fg_ ? ~0u : 0u, bg = bg_ ? ~0u : 0u;
  for (int i = 0; i < count; ++i) {
    int x0, x1;
    if (!ClampSpan(bitmap_, spans[i], &x0, &x1)) continue;
    const unsigned bits = rows_[Mod8(spans[i].y, origin_.y)];
    std::uint8_t* row = bitmap_->RowBytes(spans[i].y);
    for (int x = x0; x < x1; ++x) {
      const bool on = (bits >> (7 - Mod8(x, origin_.x))) & 1u;
      if (!on && !opaque_) continue;
      std::uint8_t& byte = row[x >> 3];
      const std::uint8_t mask = static_cast<std::uint8_t>(0x80u >> (x & 7));
      const std::uint32_t d = (byte & mask) ? ~0u : 0u;
      if (Rop2(rop2_, on ? fg : bg, d) & 1u) {
        byte = static_cast<std::uint8_t>(byte | mask);
      } else {
        byte = static_cast<std::uint8_t>(byte & ~mask);
      }
    }
  }
}

// --- Choice -------------------------------------------------------------------------------------

SpanSink& BlitterSet::Choose(BitmapData* bitmap, const FillSource& source, int rop2,
                             COLORREF bk_color, const SpanRegion* clip) {
  if (bitmap == nullptr || !bitmap->bits || source.kind == FillSource::Kind::kNone ||
      (source.kind != FillSource::Kind::kArgb && (rop2 == kRop2Nop || rop2 < kRop2Min ||
                                                  rop2 > kRop2Max)) ||
      (clip != nullptr && clip->IsEmpty())) {
    return null_;
  }
  SpanSink* sink = &null_;
  if (bitmap->bpp == 1) {
    const bool pattern = source.kind == FillSource::Kind::kPattern;
    const COLORREF color = source.kind == FillSource::Kind::kArgb
                               ? PixelToColor(source.argb & 0xFFFFFFu)
                               : source.color;
    const COLORREF rule = source.mono_by_background ? bk_color : color;
    mono_.Reset(bitmap, MonoBitFor(color, rule),
                MonoBitFor(source.gap_color, source.gap_color), pattern ? source.pattern : nullptr,
                pattern ? source.opaque_gaps : true, source.origin,
                source.kind == FillSource::Kind::kArgb ? kRop2CopyPen : rop2);
    sink = &mono_;
  } else {
    switch (source.kind) {
      case FillSource::Kind::kSolid:
        solid_.Reset(bitmap, ColorToPixel(source.color), rop2);
        sink = &solid_;
        break;
      case FillSource::Kind::kPattern:
        pattern_.Reset(bitmap, source, rop2);
        sink = &pattern_;
        break;
      case FillSource::Kind::kArgb:
        argb_.Reset(bitmap, source.argb);
        sink = &argb_;
        break;
      case FillSource::Kind::kNone:
        break;
    }
  }
  if (clip == nullptr) return *sink;
  clip_.Reset(clip, sink);
  return clip_;
}

}  // namespace qvis::gdi
