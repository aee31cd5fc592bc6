// The core's drawing calls: sinks from DC state, cosmetic lines and outlines, polygons,
// rectangles, pixels, and the pattern/bit-block transfers.
#include <algorithm>
#include <climits>
#include <cstring>
#include <optional>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include "qvis/compat/int_math.h"
#include "qvis/compat/win32_names.h"
#include "qvis/gdi/dc.h"
#include "qvis/gdi/gdi.h"
#include "qvis/gdi/raster/line.h"
#include "qvis/gdi/raster/wide_pen_hook.h"
#include "qvis/gdi/shapes/shape_paint.h"

namespace qvis::gdi {

// --- Sinks from DC state ------------------------------------------------------------------------

IRect ClipBox(const DeviceContext& dc) {
  if (dc.bitmap == nullptr) return IRect{};
  IRect box = dc.bitmap->Bounds();
  if (dc.has_clip) box = box.Intersect(dc.clip.Bounds());
  return box;
}

const SpanRegion* ClipRegion(const DeviceContext& dc) {
  if (!dc.has_clip || dc.clip.Kind() == RegionKind::kSimple) return nullptr;
  return &dc.clip;
}

FillSource BrushSource(const DeviceContext& dc, const BrushData* brush) {
  FillSource s;
  if (brush == nullptr || brush->IsNull()) return s;
  if (brush->style == BS_HATCHED) {
    s.kind = FillSource::Kind::kPattern;
    s.pattern = kHatchPatterns[std::clamp(brush->hatch, 0, 5)];
    s.gap_color = dc.bk_color;
    s.opaque_gaps = dc.bk_mode == OPAQUE;
    s.origin = dc.brush_origin;
  } else {
    s.kind = FillSource::Kind::kSolid;
  }
  s.color = brush->color;
  return s;
}

FillSource PenSource(const DeviceContext& dc) {
  FillSource s;
  const PenData* pen = dc.pen;
  if (pen == nullptr || pen->IsNull()) return s;
  if (pen->geometric && pen->brush_style == BS_HATCHED) {
    s.kind = FillSource::Kind::kPattern;
    s.pattern = kHatchPatterns[std::clamp(pen->hatch, 0, 5)];
    s.gap_color = dc.bk_color;
    s.opaque_gaps = dc.bk_mode == OPAQUE;
    s.origin = dc.brush_origin;
  } else {
    s.kind = FillSource::Kind::kSolid;
  }
  s.color = pen->color;
  s.mono_by_background = true;
  return s;
}

SpanSink& SourceSink(DeviceContext& dc, const FillSource& source, int rop2) {
  return dc.blit_a.Choose(dc.bitmap, source, rop2, dc.bk_color, ClipRegion(dc));
}

SpanSink& BrushSink(DeviceContext& dc, const BrushData* brush) {
  return SourceSink(dc, BrushSource(dc, brush), dc.rop2);
}

SpanSink& PenSink(DeviceContext& dc) { return SourceSink(dc, PenSource(dc), dc.rop2); }

SpanSink& GapSink(DeviceContext& dc) {
  FillSource s;
  s.kind = FillSource::Kind::kSolid;
  s.color = dc.bk_color;
  s.mono_by_background = true;
  return dc.blit_b.Choose(dc.bitmap, s, dc.rop2, dc.bk_color, ClipRegion(dc));
}

// --- Outlines -----------------------------------------------------------------------------------

void DrawCosmeticPolyline(DeviceContext& dc, const PointI* points, int count, bool closed) {
  if (points == nullptr || count < 2 || dc.pen == nullptr || dc.pen->IsNull()) return;
  const IRect clip = ClipBox(dc);
  if (clip.IsEmpty()) return;
  // The pattern runs on from segment to segment of the one figure; a solid pen has none.
  std::optional<LineStyle> styled;
  if (!dc.pen->thin_style.IsSolid()) styled = dc.pen->thin_style;
  LineStyle* style = styled ? &*styled : nullptr;
  SpanSink& on = PenSink(dc);
  SpanSink* gaps =
      (style != nullptr && dc.bk_mode == OPAQUE && dc.pen->paints_gaps) ? &GapSink(dc) : nullptr;
  for (int i = 0; i + 1 < count; ++i) {
    ScanCosmeticLine(points[i], points[i + 1], clip, style, on, gaps);
  }
  if (closed) ScanCosmeticLine(points[count - 1], points[0], clip, style, on, gaps);
}

void DrawPenOutline(DeviceContext& dc, const PointI* points, int count, bool closed) {
  if (dc.pen == nullptr || dc.pen->IsNull() || count < 1) return;
  if (dc.pen->IsWide()) {
    StrokeWide(dc, points, count, closed);
  } else {
    DrawCosmeticPolyline(dc, points, count, closed);
  }
}

namespace {

// CopyPoints copies API points into the DC's scratch list.
const PointI* CopyPoints(DeviceContext& dc, const CPoint* points, std::size_t count) {
  dc.points.resize(count);
  for (std::size_t i = 0; i < count; ++i) dc.points[i] = PointI{points[i].x, points[i].y};
  return dc.points.data();
}

bool PathOpen(const DeviceContext& dc) { return dc.path.state == PathData::kOpen; }

void RecordFigure(DeviceContext& dc, const PointI* p, std::size_t n, bool closed) {
  dc.path.MoveTo(p[0].x, p[0].y);
  for (std::size_t i = 1; i < n; ++i) {
    dc.path.LineTo(p[i - 1].x, p[i - 1].y, p[i].x, p[i].y);
  }
  if (closed) dc.path.CloseFigure();
}

FillRule RuleOf(const DeviceContext& dc) {
  return dc.poly_fill_mode == WINDING ? FillRule::kWinding : FillRule::kAlternate;
}

}  // namespace

// --- Lines --------------------------------------------------------------------------------------

BOOL LineTo(HDC dc, int x, int y) {
  if (dc == nullptr) return FALSE;
  const PointI from = dc->position;
  const PointI to{x, y};
  dc->position = to;
  if (PathOpen(*dc)) {
    dc->path.LineTo(from.x, from.y, x, y);
    return TRUE;
  }
  const PointI pts[2] = {from, to};
  DrawPenOutline(*dc, pts, 2, false);
  return TRUE;
}

BOOL Polyline(HDC dc, const CPoint* points, int count) {
  if (dc == nullptr || points == nullptr || count < 2) return FALSE;
  const PointI* p = CopyPoints(*dc, points, static_cast<std::size_t>(count));
  if (PathOpen(*dc)) {
    RecordFigure(*dc, p, static_cast<std::size_t>(count), false);
    // Polyline does not use the current position, but the path now continues from its end.
    return TRUE;
  }
  DrawPenOutline(*dc, p, count, false);
  return TRUE;
}

BOOL PolylineTo(HDC dc, const CPoint* points, DWORD count) {
  if (dc == nullptr || points == nullptr || count == 0 || count > INT_MAX - 1) return FALSE;
  dc->points.resize(count + 1);
  dc->points[0] = dc->position;
  for (DWORD i = 0; i < count; ++i) dc->points[i + 1] = PointI{points[i].x, points[i].y};
  dc->position = dc->points.back();
  if (PathOpen(*dc)) {
    for (DWORD i = 1; i <= count; ++i) {
      dc->path.LineTo(dc->points[i - 1].x, dc->points[i - 1].y, dc->points[i].x,
                      dc->points[i].y);
    }
    return TRUE;
  }
  DrawPenOutline(*dc, dc->points.data(), static_cast<int>(count + 1), false);
  return TRUE;
}

// --- Filled shapes ------------------------------------------------------------------------------

BOOL PolyPolygon(HDC dc, const CPoint* points, const int* counts, int polygons) {
  if (dc == nullptr || points == nullptr || counts == nullptr || polygons <= 0) return FALSE;
  std::int64_t total = 0;
  for (int i = 0; i < polygons; ++i) {
    if (counts[i] < 2) return FALSE;
    total += counts[i];
    if (total > INT_MAX) return FALSE;
  }
  const PointI* p = CopyPoints(*dc, points, static_cast<std::size_t>(total));
  if (PathOpen(*dc)) {
    const PointI* q = p;
    for (int i = 0; i < polygons; ++i) {
      RecordFigure(*dc, q, static_cast<std::size_t>(counts[i]), true);
      q += counts[i];
    }
    return TRUE;
  }
  const IRect clip = ClipBox(*dc);
  if (clip.IsEmpty()) return TRUE;
  dc->scanner.Fill(p, counts, polygons, RuleOf(*dc), clip, BrushSink(*dc, dc->brush));
  const PointI* q = p;
  for (int i = 0; i < polygons; ++i) {
    DrawPenOutline(*dc, q, counts[i], true);
    q += counts[i];
  }
  return TRUE;
}

BOOL Polygon(HDC dc, const CPoint* points, int count) {
  if (count < 2) return FALSE;
  return PolyPolygon(dc, points, &count, 1);
}

BOOL Rectangle(HDC dc, int left, int top, int right, int bottom) {
  if (dc == nullptr) return FALSE;
  if (left > right) std::swap(left, right);
  if (top > bottom) std::swap(top, bottom);
  // The box is half-open: the outline runs on its last column and row.
  int r = static_cast<int>(std::max<std::int64_t>(std::int64_t{right} - 1, INT_MIN));
  int b = static_cast<int>(std::max<std::int64_t>(std::int64_t{bottom} - 1, INT_MIN));
  if (PathOpen(*dc)) {
    const PointI corners[4] = {{r, top}, {left, top}, {left, b}, {r, b}};
    RecordFigure(*dc, corners, 4, true);
    return TRUE;
  }
  if (left == right || top == bottom) return TRUE;
  const IRect clip = ClipBox(*dc);
  if (clip.IsEmpty()) return TRUE;
  const bool has_pen = dc->pen != nullptr && !dc->pen->IsNull();
  if (has_pen) {
    // An inside-frame pen draws on the box shrunk by half its width, so that the whole outline
    // lies within the box.
    std::int64_t l = left, t = top, rr = right, bb = bottom;
    ApplyInsideFrame(*dc, &l, &t, &rr, &bb);
    left = static_cast<int>(l);
    top = static_cast<int>(t);
    r = static_cast<int>(std::max<std::int64_t>(rr - 1, l));
    b = static_cast<int>(std::max<std::int64_t>(bb - 1, t));
  }
  if (has_pen && dc->pen->IsWide()) {
    // The brush fills the box of the outline's centre line less the pixels the pen paints
    // (a dashed pen's gaps show the brush up to the centre line).
    const PointI corners[4] = {{r, top}, {left, top}, {left, b}, {r, b}};
    SpanRegion& interior = dc->scratch.fill_region;
    interior.Clear();
    if (dc->brush != nullptr && !dc->brush->IsNull()) {
      interior.SetRect(IRect{left, top, r, b}.Intersect(clip));
    }
    PaintShape(*dc, interior, corners, 4);
    return TRUE;
  }
  // With a pen the brush fills inside the outline; without one it fills the box less its
  // right column and bottom row.
  IRect fill = has_pen ? IRect{left + 1, top + 1, r, b} : IRect{left, top, r, b};
  fill = fill.Intersect(clip);
  if (!fill.IsEmpty()) BrushSink(*dc, dc->brush).BlitRect(fill);
  if (has_pen) {
    // Counter-clockwise from the top-right corner: where a styled pen's pattern starts.
    const PointI corners[4] = {{r, top}, {left, top}, {left, b}, {r, b}};
    DrawPenOutline(*dc, corners, 4, true);
  }
  return TRUE;
}

// --- Pixels -------------------------------------------------------------------------------------

namespace {

bool PixelVisible(const DeviceContext& dc, int x, int y) {
  if (dc.bitmap == nullptr || !dc.bitmap->bits || !dc.bitmap->Bounds().Contains(x, y)) {
    return false;
  }
  return !dc.has_clip || dc.clip.Contains(x, y);
}

bool MonoPixel(const BitmapData& bitmap, int x, int y) {
  return (bitmap.RowBytes(y)[x >> 3] >> (7 - (x & 7))) & 1u;
}

void SetMonoPixel(BitmapData& bitmap, int x, int y, bool bit) {
  std::uint8_t& byte = bitmap.RowBytes(y)[x >> 3];
  const auto mask = static_cast<std::uint8_t>(0x80u >> (x & 7));
  byte = static_cast<std::uint8_t>(bit ? (byte | mask) : (byte & ~mask));
}

}  // namespace

COLORREF SetPixel(HDC dc, int x, int y, COLORREF color) {
  if (dc == nullptr || !PixelVisible(*dc, x, y)) return kClrInvalid;
  BitmapData& bitmap = *dc->bitmap;
  // The pixel is combined with the DC's raster operation like any other drawing.
  if (bitmap.bpp == 1) {
    // A single pixel takes the nearer of black and white (no background-colour rule here).
    const bool bit = MonoBitFor(color, color);
    const std::uint32_t d = MonoPixel(bitmap, x, y) ? ~0u : 0u;
    SetMonoPixel(bitmap, x, y, Rop2(dc->rop2, bit ? ~0u : 0u, d) & 1u);
    return bit ? 0xFFFFFFu : 0u;
  }
  std::uint32_t& px = bitmap.Row32(y)[x];
  px = ChooseRop2Pixel(dc->rop2)(ColorToPixel(color), px);
  return color & 0xFFFFFFu;
}

COLORREF GetPixel(HDC dc, int x, int y) {
  if (dc == nullptr || !PixelVisible(*dc, x, y)) return kClrInvalid;
  const BitmapData& bitmap = *dc->bitmap;
  if (bitmap.bpp == 1) return MonoPixel(bitmap, x, y) ? 0xFFFFFFu : 0u;
  return PixelToColor(bitmap.Row32(y)[x]);
}

// --- Block transfers ----------------------------------------------------------------------------

namespace {

// A ternary code uses the source when its result differs between S = 0 and S = 1 somewhere.
bool UsesSource(unsigned rop3) { return ((rop3 >> 2) & 0x33u) != (rop3 & 0x33u); }
bool UsesPattern(unsigned rop3) { return ((rop3 >> 4) & 0x0Fu) != (rop3 & 0x0Fu); }

// BlockSink applies a ternary raster operation to the spans it gets: the destination pixels,
// the brush pattern at the same device position and the source pixel at the same offset.
// Colours are converted to the destination's format first, so the operation itself works on
// plain bit words.
class BlockSink final : public SpanSink {
 public:
  BlockSink(DeviceContext& dst, unsigned rop3, const BitmapData* src, int dx, int dy,
            COLORREF src_bk)
      : dst_(dst), bitmap_(*dst.bitmap), rop3_(rop3), src_(src), dx_(dx), dy_(dy) {
    const FillSource brush = BrushSource(dst, dst.brush);
    has_pattern_ = brush.kind != FillSource::Kind::kNone;
    if (brush.kind == FillSource::Kind::kPattern) {
      std::memcpy(rows_, brush.pattern, 8);
      transparent_gaps_ = !brush.opaque_gaps;
    } else {
      std::memset(rows_, 0xFF, 8);
    }
    fg_ = ToDst(brush.color);
    bg_ = ToDst(brush.gap_color);
    origin_ = brush.origin;
    if (src_ != nullptr) {
      // 1-bpp to colour: 0 bits take the text colour, 1 bits the background colour.
      mono_zero_ = ToDst(dst.text_color);
      mono_one_ = ToDst(dst.bk_color);
      src_bk_ = ColorToPixel(src_bk);
    }
  }

  void Blit(const Span* spans, int count) override {
    for (int i = 0; i < count; ++i) {
      const Span& s = spans[i];
      const int x0 = std::max(s.x0, 0), x1 = std::min(s.x1, bitmap_.width);
      if (s.y < 0 || s.y >= bitmap_.height || x0 >= x1) continue;
      Row(s.y, x0, x1 - x0);
    }
  }

 private:
  std::uint32_t ToDst(COLORREF c) const {
    if (bitmap_.bpp == 1) return MonoBitFor(c, c) ? ~0u : 0u;
    return ColorToPixel(c);
  }

  void Row(int y, int x0, int n) {
    d_.resize(static_cast<std::size_t>(n));
    s_.resize(static_cast<std::size_t>(n));
    p_.resize(static_cast<std::size_t>(n));
    skip_.assign(static_cast<std::size_t>(n), 0);
    // Destination words.
    if (bitmap_.bpp == 32) {
      std::memcpy(d_.data(), bitmap_.Row32(y) + x0, static_cast<std::size_t>(n) * 4);
    } else {
      for (int i = 0; i < n; ++i) d_[static_cast<std::size_t>(i)] = MonoPixel(bitmap_, x0 + i, y) ? ~0u : 0u;
    }
    // Source words.
    if (src_ != nullptr) {
      const int sy = y + dy_;
      for (int i = 0; i < n; ++i) {
        const int sx = x0 + i + dx_;
        std::uint32_t v;
        if (src_->bpp == 32) {
          const std::uint32_t px = src_->Row32(sy)[sx] & 0xFFFFFFu;
          v = bitmap_.bpp == 32 ? px : (px == src_bk_ ? ~0u : 0u);
        } else {
          const bool bit = MonoPixel(*src_, sx, sy);
          v = bitmap_.bpp == 32 ? (bit ? mono_one_ : mono_zero_) : (bit ? ~0u : 0u);
        }
        s_[static_cast<std::size_t>(i)] = v;
      }
    }
    // Pattern words.
    if (has_pattern_) {
      const unsigned bits = rows_[(static_cast<unsigned>(y) - static_cast<unsigned>(origin_.y)) & 7u];
      for (int i = 0; i < n; ++i) {
        const unsigned col = (static_cast<unsigned>(x0 + i) - static_cast<unsigned>(origin_.x)) & 7u;
        const bool on = (bits >> (7 - col)) & 1u;
        p_[static_cast<std::size_t>(i)] = on ? fg_ : bg_;
        if (!on && transparent_gaps_ && UsesPattern(rop3_)) skip_[static_cast<std::size_t>(i)] = 1;
      }
    } else {
      std::fill(p_.begin(), p_.end(), 0u);
    }
    Apply(n);
    // Store.
    if (bitmap_.bpp == 32) {
      std::uint32_t* row = bitmap_.Row32(y) + x0;
      for (int i = 0; i < n; ++i) {
        if (!skip_[static_cast<std::size_t>(i)]) row[i] = d_[static_cast<std::size_t>(i)] & 0xFFFFFFu;
      }
    } else {
      for (int i = 0; i < n; ++i) {
        if (!skip_[static_cast<std::size_t>(i)]) {
          SetMonoPixel(bitmap_, x0 + i, y, d_[static_cast<std::size_t>(i)] & 1u);
        }
      }
    }
  }

  void Apply(int n) {
    std::uint32_t* d = d_.data();
    const std::uint32_t* s = s_.data();
    const std::uint32_t* p = p_.data();
    switch (rop3_) {
      case 0xCC: std::copy(s, s + n, d); break;                     // SRCCOPY
      case 0x66: for (int i = 0; i < n; ++i) d[i] ^= s[i]; break;   // SRCINVERT
      case 0x88: for (int i = 0; i < n; ++i) d[i] &= s[i]; break;   // SRCAND
      case 0xEE: for (int i = 0; i < n; ++i) d[i] |= s[i]; break;   // SRCPAINT
      case 0xF0: std::copy(p, p + n, d); break;                     // PATCOPY
      case 0x5A: for (int i = 0; i < n; ++i) d[i] ^= p[i]; break;   // PATINVERT
      case 0x55: for (int i = 0; i < n; ++i) d[i] = ~d[i]; break;   // DSTINVERT
      case 0x00: std::fill(d, d + n, 0u); break;                    // BLACKNESS
      case 0xFF: std::fill(d, d + n, ~0u); break;                   // WHITENESS
      default:
        for (int i = 0; i < n; ++i) d[i] = Rop3(rop3_, p[i], s[i], d[i]);
        break;
    }
  }

  DeviceContext& dst_;
  BitmapData& bitmap_;
  unsigned rop3_;
  const BitmapData* src_;
  int dx_, dy_;
  bool has_pattern_ = false;
  bool transparent_gaps_ = false;
  std::uint8_t rows_[8] = {};
  std::uint32_t fg_ = 0, bg_ = 0;
  PointI origin_;
  std::uint32_t mono_zero_ = 0, mono_one_ = 0, src_bk_ = 0;
  // Row buffers, the destination DC's scratch, so that warm blits do not allocate.
  std::vector<std::uint32_t>& d_ = dst_.scratch.blit_dst;
  std::vector<std::uint32_t>& s_ = dst_.scratch.blit_src;
  std::vector<std::uint32_t>& p_ = dst_.scratch.blit_pat;
  std::vector<std::uint8_t>& skip_ = dst_.scratch.blit_skip;
};

// RunBlock sends the box through a BlockSink, clipped by the DC's clip region.
void RunBlock(DeviceContext& dc, const IRect& box, unsigned rop3, const BitmapData* src, int dx,
              int dy, COLORREF src_bk) {
  if (box.IsEmpty()) return;
  // An operation that needs a pattern does nothing at all when the brush is hollow.
  if (UsesPattern(rop3) && (dc.brush == nullptr || dc.brush->IsNull())) return;
  BlockSink block(dc, rop3, src, dx, dy, src_bk);
  if (const SpanRegion* clip = ClipRegion(dc)) {
    RegionClipSink clipped;
    clipped.Reset(clip, &block);
    clipped.BlitRect(box);
  } else {
    block.BlitRect(box);
  }
}

// BoxOf turns an origin and signed extents into a box. A negative extent reaches back from the
// origin pixel, which stays inside: x = 10, width = -3 covers pixels 8, 9 and 10.
IRect BoxOf(int x, int y, std::int64_t w, std::int64_t h) {
  std::int64_t l = x, t = y, r = x + w, b = y + h;
  if (w < 0) {
    l = r + 1;
    r = std::int64_t{x} + 1;
  }
  if (h < 0) {
    t = b + 1;
    b = std::int64_t{y} + 1;
  }
  auto c = [](std::int64_t v) { return SaturateToInt(v); };
  return IRect{c(l), c(t), c(r), c(b)};
}

}  // namespace

BOOL PatBlt(HDC dc, int x, int y, int width, int height, DWORD rop) {
  const unsigned rop3 = (rop >> 16) & 0xFFu;
  if (dc == nullptr || UsesSource(rop3)) return FALSE;
  if (dc->bitmap == nullptr || !dc->bitmap->bits) return TRUE;
  RunBlock(*dc, BoxOf(x, y, width, height).Intersect(ClipBox(*dc)), rop3, nullptr, 0, 0, 0);
  return TRUE;
}

int FillRect(HDC dc, const CRect* rect, HBRUSH brush) {
  BrushData* data = AsBrush(brush);
  if (dc == nullptr || rect == nullptr || data == nullptr) return 0;
  // A pattern copy of the box given by its corner and extents, so an inverted rectangle
  // covers the same pixels as a PatBlt with negative extents.
  const IRect box = BoxOf(rect->left, rect->top, std::int64_t{rect->right} - rect->left,
                          std::int64_t{rect->bottom} - rect->top)
                        .Intersect(ClipBox(*dc));
  if (!box.IsEmpty()) SourceSink(*dc, BrushSource(*dc, data), R2_COPYPEN).BlitRect(box);
  return 1;
}

namespace {

// CopyFrameBlock copies a frame-sized block between two bitmaps (never overlapping) with
// streaming stores: the destination is overwritten whole, so fetching its old contents into the
// cache first, as ordinary stores do, is wasted memory traffic (about an eighth of the time of a
// 1920x1080 present, measured).
void CopyFrameBlock(void* dst, const void* src, std::size_t bytes) {
#if defined(__SSE2__)
  auto* d = static_cast<std::uint8_t*>(dst);
  const auto* s = static_cast<const std::uint8_t*>(src);
  std::size_t i = 0;
  // Streaming stores want 16-byte aligned destinations: copy up to the first one plainly.
  const std::size_t head = (16 - (reinterpret_cast<std::uintptr_t>(d) & 15u)) & 15u;
  if (head > 0) {
    std::memcpy(d, s, std::min(head, bytes));
    i = std::min(head, bytes);
  }
  for (; i + 64 <= bytes; i += 64) {
    const __m128i a = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s + i));
    const __m128i b = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s + i + 16));
    const __m128i c = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s + i + 32));
    const __m128i e = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s + i + 48));
    _mm_stream_si128(reinterpret_cast<__m128i*>(d + i), a);
    _mm_stream_si128(reinterpret_cast<__m128i*>(d + i + 16), b);
    _mm_stream_si128(reinterpret_cast<__m128i*>(d + i + 32), c);
    _mm_stream_si128(reinterpret_cast<__m128i*>(d + i + 48), e);
  }
  _mm_sfence();
  if (i < bytes) std::memcpy(d + i, s + i, bytes - i);
#else
  std::memcpy(dst, src, bytes);
#endif
}

}  // namespace

BOOL BitBlt(HDC dst, int x, int y, int width, int height, HDC src, int sx, int sy, DWORD rop) {
  const unsigned rop3 = (rop >> 16) & 0xFFu;
  if (dst == nullptr) return FALSE;
  if (!UsesSource(rop3)) return PatBlt(dst, x, y, width, height, rop);
  if (src == nullptr) return FALSE;
  if (width <= 0 || height <= 0) return TRUE;
  if (dst->bitmap == nullptr || !dst->bitmap->bits || src->bitmap == nullptr ||
      !src->bitmap->bits) {
    return TRUE;
  }
  const std::int64_t dx = std::int64_t{sx} - x, dy = std::int64_t{sy} - y;
  // Destination box, narrowed to where the source exists and to the clip.
  IRect box = BoxOf(x, y, width, height).Intersect(ClipBox(*dst));
  const BitmapData& sb = *src->bitmap;
  const std::int64_t src_l = -dx, src_t = -dy;  // source (0, 0) in destination coordinates
  auto c = [](std::int64_t v) { return SaturateToInt(v); };
  box = box.Intersect(IRect{c(src_l), c(src_t), c(src_l + sb.width), c(src_t + sb.height)});
  if (box.IsEmpty()) return TRUE;
  if (rop3 == 0xCC && sb.bpp == 32 && dst->bitmap->bpp == 32 && ClipRegion(*dst) == nullptr) {
    // Plain colour copy: whole rows at once. Rows go bottom-up when copying downwards within
    // one bitmap so that no source row is overwritten before it is read.
    const std::size_t bytes = static_cast<std::size_t>(box.right - box.left) * 4;
    const BitmapData& db = *dst->bitmap;
    if (&sb != &db && dx == 0 && box.left == 0 && box.right == db.width && sb.stride == db.stride &&
        db.stride == static_cast<std::ptrdiff_t>(bytes)) {
      // Whole rows of two bitmaps of one layout (a frame presented to the window): one block.
      CopyFrameBlock(db.Row32(box.top), sb.Row32(static_cast<int>(box.top + dy)),
                     bytes * static_cast<std::size_t>(box.bottom - box.top));
      return TRUE;
    }
    const bool upward = src->bitmap == dst->bitmap && dy < 0;
    for (int i = 0; i < box.bottom - box.top; ++i) {
      const int y = upward ? box.bottom - 1 - i : box.top + i;
      std::memmove(dst->bitmap->Row32(y) + box.left,
                   sb.Row32(static_cast<int>(y + dy)) + (box.left + dx), bytes);
    }
    return TRUE;
  }
  if (src->bitmap == dst->bitmap) {
    // Overlapping copy within one bitmap: read from a snapshot of the source box.
    BitmapData copy;
    copy.width = sb.width;
    copy.height = sb.height;
    copy.bpp = sb.bpp;
    copy.stride = sb.stride;
    const std::size_t bytes = static_cast<std::size_t>(sb.stride) * static_cast<std::size_t>(sb.height);
    copy.bits.reset(new std::uint8_t[bytes]);
    std::memcpy(copy.bits.get(), sb.bits.get(), bytes);
    RunBlock(*dst, box, rop3, &copy, static_cast<int>(dx), static_cast<int>(dy), src->bk_color);
    return TRUE;
  }
  RunBlock(*dst, box, rop3, &sb, static_cast<int>(dx), static_cast<int>(dy), src->bk_color);
  return TRUE;
}

}  // namespace qvis::gdi
