// Text output: TextOutA, ExtTextOutA, GetTextExtentPointA and DrawTextA over FontFace.
//
// A string is laid out along its baseline with the font's integer advances, turned by the
// escapement. Glyph masks, underline and strike-out rules are merged into one coverage mask
// limited to the visible box, which is then painted once in the text colour: each pixel is
// written at most once whatever the glyphs overlap, and the work is bounded by the visible part.
// Text ignores the raster operation (it always copies); in OPAQUE mode the cell box is first
// filled with the background colour. With a path open, the glyph outlines are recorded instead.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "qvis/compat/int_math.h"
#include "qvis/compat/win32_names.h"
#include "qvis/gdi/dc.h"
#include "qvis/gdi/gdi.h"
#include "qvis/gdi/text/font_face.h"

namespace qvis::gdi {
namespace {

constexpr double kPi = 3.14159265358979323846;

// Clamps a device coordinate into the range the engine's integer geometry takes.
int ClampInt(double v) {
  if (!(v == v)) return 0;
  constexpr double kLo = std::numeric_limits<int>::min();
  constexpr double kHi = std::numeric_limits<int>::max();
  return static_cast<int>(std::clamp(std::floor(v + 0.5), kLo, kHi));
}

std::int64_t ToFix(double v) {
  constexpr double kLimit = 4.0e15;  // far outside any clip box, well inside int64 fixed point
  if (!(v == v)) return 0;
  return static_cast<std::int64_t>(std::clamp(v, -kLimit, kLimit) * static_cast<double>(kFixOne));
}

// MaskSink marks the spans it gets in a coverage mask over `box`.
class MaskSink final : public SpanSink {
 public:
  MaskSink(std::vector<std::uint8_t>* mask, const IRect& box) : mask_(mask), box_(box) {}
  void Blit(const Span* spans, int count) override {
    const std::int64_t w = box_.right - box_.left;
    for (int i = 0; i < count; ++i) {
      const Span& s = spans[i];
      int x0 = std::max(s.x0, box_.left);
      int x1 = std::min(s.x1, box_.right);
      if (s.y < box_.top || s.y >= box_.bottom || x0 >= x1) continue;
      std::uint8_t* row = mask_->data() + (s.y - box_.top) * w;
      std::memset(row + (x0 - box_.left), 1, static_cast<std::size_t>(x1 - x0));
    }
  }

 private:
  std::vector<std::uint8_t>* mask_;
  IRect box_;
};

// TextLayout is a string placed on the device: its baseline start, direction and advances.
struct TextLayout {
  double origin_x = 0;  // start of the baseline
  double origin_y = 0;
  double ux = 1;        // unit vector along the baseline (device y down)
  double uy = 0;
  std::int64_t width = 0;  // the extent: cell box, rules and alignment
  std::vector<int>& pen;  // pen offset of each character along the baseline (scratch)

  double X(double u, double v) const { return origin_x + u * ux - v * uy; }
  double Y(double u, double v) const { return origin_y + u * uy + v * ux; }
};

// FillQuad fills the box u0..u1 x v0..v1 of the text's own axes (v down) into a sink.
void FillQuad(DeviceContext& dc, const TextLayout& t, double u0, double u1, double v0, double v1,
              const IRect& clip, SpanSink& sink) {
  if (clip.IsEmpty() || u1 <= u0 || v1 <= v0) return;
  PointFx quad[4] = {{ToFix(t.X(u0, v0)), ToFix(t.Y(u0, v0))},
                     {ToFix(t.X(u1, v0)), ToFix(t.Y(u1, v0))},
                     {ToFix(t.X(u1, v1)), ToFix(t.Y(u1, v1))},
                     {ToFix(t.X(u0, v1)), ToFix(t.Y(u0, v1))}};
  int count = 4;
  dc.scanner.Fill(quad, &count, 1, FillRule::kWinding, clip, sink);
}

// PaintRule adds an underline or strike-out rule (offset above the baseline, thickness) to the
// mask, placed as GDI places it: centred on the offset, the odd pixel below.
void PaintRule(DeviceContext& dc, const TextLayout& t, int position, int thickness,
               const IRect& box, MaskSink& sink) {
  double top = -(static_cast<double>(position) + thickness / 2);
  FillQuad(dc, t, 0.0, static_cast<double>(t.width), top, top + thickness, box, sink);
}

// DrawRun draws or records a run of text. (x, y) is the reference point of `align`; `dx`, when
// given, replaces the font's advances; `limit`, when given, clips the output (ETO_CLIPPED and
// DrawTextA boxes). Returns FALSE when there is no usable font.
BOOL DrawRun(DeviceContext& dc, int x, int y, UINT align, const unsigned char* text, int n,
             const int* dx, const IRect* limit, const IRect* opaque_box) {
  FontFace* face = FontFace::ForFont(dc.font);
  if (face == nullptr) return FALSE;
  const FontMetrics& m = face->metrics();

  TextLayout t{.pen = dc.scratch.text_pen};
  long esc = face->escapement() % 3600;
  // The angle is formed as the platform forms it (tenths times pi over 1800): at 330 degrees
  // another order of the same operations gives a sine on the other side of -1/2, and every
  // turned offset is truncated, so glyphs would land a pixel away.
  double radians = static_cast<double>(esc) * kPi / 1800.0;
  t.ux = esc == 0 ? 1.0 : std::cos(radians);
  t.uy = esc == 0 ? 0.0 : -std::sin(radians);
  t.pen.resize(static_cast<std::size_t>(n));
  std::int64_t pen = 0;
  std::int64_t extent = 0;
  const int extra = dc.char_extra;
  for (int i = 0; i < n; ++i) {
    t.pen[static_cast<std::size_t>(i)] = SaturateToInt(pen);
    // Upright glyphs advance by their hinted widths; turned text, and text with extra space
    // after every character, is laid out with the extent widths, as the platform does.
    const bool hinted = esc == 0 && extra == 0;
    pen += (dx != nullptr ? dx[i] : hinted ? face->Advance(text[i]) : face->ExtentAdvance(text[i])) +
           extra;
    extent += (dx != nullptr ? dx[i] : face->ExtentAdvance(text[i])) + extra;
  }
  t.width = extent;
  const std::int64_t pen_end = pen;

  const bool update_cp = (align & TA_UPDATECP) != 0;
  const double ref_x = update_cp ? dc.position.x : x;
  const double ref_y = update_cp ? dc.position.y : y;
  double rx = ref_x;
  double ry = ref_y;
  // The reference point moves to the start of the baseline in whole pixels: back along the
  // baseline by the turned extent (or half of it), then across it by the ascent or descent.
  // Every turned offset is truncated towards zero as the platform does; upright text only
  // ever sees whole numbers here.
  const double wx = std::trunc(static_cast<double>(t.width) * t.ux);
  const double wy = std::trunc(static_cast<double>(t.width) * t.uy);
  switch (align & TA_CENTER) {
    case TA_CENTER:
      rx -= std::trunc(wx / 2);
      ry -= std::trunc(wy / 2);
      break;
    case TA_RIGHT:
      rx -= wx;
      ry -= wy;
      break;
    default: break;
  }
  double v0 = 0;  // baseline below the reference point, along v
  switch (align & TA_BASELINE) {
    case TA_BASELINE: v0 = 0; break;
    case TA_BOTTOM: v0 = -m.descent; break;
    default: v0 = m.ascent; break;
  }
  t.origin_x = std::trunc(rx - v0 * t.uy);
  t.origin_y = std::trunc(ry + v0 * t.ux);
  if (update_cp) {
    // The current position moves by the same truncated turned extent: forwards for left
    // alignment, backwards for right alignment, not at all for centred text.
    const double sign = (align & TA_CENTER) == TA_CENTER ? 0.0
                        : (align & TA_CENTER) == TA_RIGHT ? -1.0
                                                          : 1.0;
    dc.position = PointI{ClampInt(ref_x + sign * wx), ClampInt(ref_y + sign * wy)};
  }

  if (dc.path.state == PathData::kOpen) {
    for (int i = 0; i < n; ++i) {
      double p = t.pen[static_cast<std::size_t>(i)];
      face->AppendOutline(text[i], t.X(p, 0), t.Y(p, 0), &dc.path);
    }
    return TRUE;
  }

  IRect visible = ClipBox(dc);
  if (limit != nullptr) visible = visible.Intersect(*limit);

  FillSource paint;
  paint.kind = FillSource::Kind::kSolid;
  if (opaque_box != nullptr) {
    paint.color = dc.bk_color;
    SourceSink(dc, paint, R2_COPYPEN).BlitRect(opaque_box->Intersect(ClipBox(dc)));
  }
  if (visible.IsEmpty()) return TRUE;
  if (dc.bk_mode == OPAQUE) {
    paint.color = dc.bk_color;
    FillQuad(dc, t, 0.0, static_cast<double>(t.width), -m.ascent, m.descent, visible,
             SourceSink(dc, paint, R2_COPYPEN));
  }

  // The mask covers what the glyphs and rules can reach, inside the visible box.
  double reach_u0 = -2.0 * m.ppem - 2;
  double reach_u1 = static_cast<double>(std::max(t.width, pen_end)) + 2.0 * m.ppem + 2;
  double reach_v = 2.0 * (m.height + m.ppem) + 2;
  double xs[4] = {t.X(reach_u0, -reach_v), t.X(reach_u1, -reach_v), t.X(reach_u0, reach_v),
                  t.X(reach_u1, reach_v)};
  double ys[4] = {t.Y(reach_u0, -reach_v), t.Y(reach_u1, -reach_v), t.Y(reach_u0, reach_v),
                  t.Y(reach_u1, reach_v)};
  // Rounded outwards; the far edges saturate like every other coordinate.
  IRect reach{ClampInt(*std::min_element(xs, xs + 4) - 1), ClampInt(*std::min_element(ys, ys + 4) - 1),
              ClampInt(*std::max_element(xs, xs + 4) + 1),
              ClampInt(*std::max_element(ys, ys + 4) + 1)};
  IRect box = visible.Intersect(reach);
  if (box.IsEmpty()) return TRUE;
  const std::int64_t bw = box.right - box.left;
  const std::int64_t bh = box.bottom - box.top;
  std::vector<std::uint8_t>& mask = dc.scratch.text_mask;
  mask.assign(static_cast<std::size_t>(bw * bh), 0);

  // Each glyph sits at its pen offset along the baseline turned by the escapement. The turned
  // offset is truncated towards zero, as the platform converts it to whole pixels (rounding
  // puts some glyphs of 45-degree text a pixel away); upright offsets are whole already.
  for (int i = 0; i < n; ++i) {
    const double p = t.pen[static_cast<std::size_t>(i)];
    const std::int64_t ox = ClampInt(t.origin_x + std::trunc(p * t.ux));
    const std::int64_t oy = ClampInt(t.origin_y + std::trunc(p * t.uy));
    const GlyphMask& g = face->Glyph(text[i]);
    if (g.rows == 0) continue;
    std::int64_t gx = ox + static_cast<std::int64_t>(g.left);
    std::int64_t gy = oy - static_cast<std::int64_t>(g.top);
    std::int64_t x0 = std::max<std::int64_t>(gx, box.left);
    std::int64_t x1 = std::min<std::int64_t>(gx + g.width, box.right);
    std::int64_t y0 = std::max<std::int64_t>(gy, box.top);
    std::int64_t y1 = std::min<std::int64_t>(gy + g.rows, box.bottom);
    for (std::int64_t yy = y0; yy < y1; ++yy) {
      const std::uint8_t* src = g.ink.data() + (yy - gy) * g.width;
      std::uint8_t* dst = mask.data() + (yy - box.top) * bw;
      for (std::int64_t xx = x0; xx < x1; ++xx) dst[xx - box.left] |= src[xx - gx];
    }
  }
  MaskSink rules(&mask, box);
  if (face->underline()) PaintRule(dc, t, m.underline_position, m.underline_thickness, box, rules);
  if (face->strikeout()) PaintRule(dc, t, m.strikeout_position, m.strikeout_thickness, box, rules);

  paint.color = dc.text_color;
  SpanSink& ink = SourceSink(dc, paint, R2_COPYPEN);
  SpanBatch batch(ink);
  for (std::int64_t yy = 0; yy < bh; ++yy) {
    const std::uint8_t* row = mask.data() + yy * bw;
    std::int64_t xx = 0;
    while (xx < bw) {
      while (xx < bw && row[xx] == 0) ++xx;
      std::int64_t start = xx;
      while (xx < bw && row[xx] != 0) ++xx;
      if (xx > start) {
        batch.Add(static_cast<int>(box.top + yy), static_cast<int>(box.left + start),
                  static_cast<int>(box.left + xx));
      }
    }
  }
  return TRUE;
}

// TextWidth is the sum of the advances of a string.
std::int64_t TextWidth(FontFace* face, const unsigned char* text, std::size_t n) {
  std::int64_t width = 0;
  for (std::size_t i = 0; i < n; ++i) width += face->ExtentAdvance(text[i]);
  return width;
}

}  // namespace

BOOL TextOutA(HDC dc, int x, int y, const char* text, int length) {
  if (dc == nullptr || length < 0 || (text == nullptr && length > 0)) return FALSE;
  return DrawRun(*dc, x, y, dc->text_align, reinterpret_cast<const unsigned char*>(text), length,
                 nullptr, nullptr, nullptr);
}

BOOL ExtTextOutA(HDC dc, int x, int y, UINT options, const CRect* rect, const char* text,
                 UINT length, const int* advances) {
  if (dc == nullptr || (text == nullptr && length > 0)) return FALSE;
  if (length > static_cast<UINT>(std::numeric_limits<int>::max())) return FALSE;
  IRect box;
  if (rect != nullptr) {
    box = IRect{std::min(rect->left, rect->right), std::min(rect->top, rect->bottom),
                std::max(rect->left, rect->right), std::max(rect->top, rect->bottom)};
  }
  const bool opaque = rect != nullptr && (options & ETO_OPAQUE) != 0;
  const bool clipped = rect != nullptr && (options & ETO_CLIPPED) != 0;
  if (length == 0) {
    if (opaque) {
      FillSource paint;
      paint.kind = FillSource::Kind::kSolid;
      paint.color = dc->bk_color;
      SourceSink(*dc, paint, R2_COPYPEN).BlitRect(box.Intersect(ClipBox(*dc)));
    }
    return TRUE;
  }
  return DrawRun(*dc, x, y, dc->text_align, reinterpret_cast<const unsigned char*>(text),
                 static_cast<int>(length), advances, clipped ? &box : nullptr,
                 opaque ? &box : nullptr);
}

BOOL GetTextExtentPointA(HDC dc, const char* text, int length, CSize* size) {
  if (dc == nullptr || size == nullptr || length < 0 || (text == nullptr && length > 0)) {
    return FALSE;
  }
  FontFace* face = FontFace::ForFont(dc->font);
  if (face == nullptr) return FALSE;
  *size = CSize(SaturateToInt(TextWidth(face, reinterpret_cast<const unsigned char*>(text),
                                         static_cast<std::size_t>(length)) +
                               static_cast<std::int64_t>(dc->char_extra) * length),
                face->metrics().height);
  return TRUE;
}

BOOL GetTextExtentPoint32A(HDC dc, const char* text, int length, CSize* size) {
  return GetTextExtentPointA(dc, text, length, size);
}

namespace {

// StripPrefixes copies the text less the '&' marks of mnemonic prefixes ("&&" stands for one
// '&') to out.
void StripPrefixes(const std::string& s, std::string* out) {
  out->clear();
  for (std::size_t i = 0; i < s.size(); ++i) {
    if (s[i] == '&') {
      if (i + 1 < s.size() && s[i + 1] == '&') {
        *out += '&';
        ++i;
      }
      continue;
    }
    *out += s[i];
  }
}

// WrapParagraph splits one paragraph into lines no wider than `width` at blanks; a word wider
// than the box keeps a line of its own. The lines' characters go to the end of `chars`.
void WrapParagraph(FontFace* face, const char* para, std::size_t n, std::int64_t width,
                   std::string* chars, std::vector<TextLineSpan>* lines) {
  std::size_t i = 0;
  while (true) {
    const std::size_t line_first = chars->size();
    std::int64_t line_width = 0;
    while (i < n) {
      // The next word with the blanks before it.
      std::size_t word_start = i;
      while (i < n && para[i] == ' ') ++i;
      std::size_t letters = i;
      while (i < n && para[i] != ' ') ++i;
      const char* piece = para + word_start;
      const std::size_t piece_size = i - word_start;
      std::int64_t piece_width =
          TextWidth(face, reinterpret_cast<const unsigned char*>(piece), piece_size);
      if (chars->size() > line_first && line_width + piece_width > width && letters < i) {
        i = letters;  // the blanks at the break vanish
        break;
      }
      chars->append(piece, piece_size);
      line_width += piece_width;
    }
    lines->push_back(TextLineSpan{line_first, chars->size() - line_first, 0});
    if (i >= n) break;
  }
}

}  // namespace

int DrawTextA(HDC dc, const char* text, int length, CRect* rect, UINT format) {
  if (dc == nullptr || rect == nullptr || (text == nullptr && length != 0)) return 0;
  if (length < 0) length = text == nullptr ? 0 : static_cast<int>(std::strlen(text));
  FontFace* face = FontFace::ForFont(dc->font);
  if (face == nullptr) return 0;
  const int line_height = face->metrics().height;

  // The text, its lines one after another and where each line lies: the DC's scratch.
  std::string& all = dc->scratch.text_source;
  std::string& chars = dc->scratch.text_lines;
  std::vector<TextLineSpan>& lines = dc->scratch.text_line_spans;
  all.assign(text == nullptr ? "" : text, static_cast<std::size_t>(length));
  if ((format & DT_NOPREFIX) == 0) {
    StripPrefixes(all, &chars);
    std::swap(all, chars);
  }
  chars.clear();
  lines.clear();
  const std::int64_t box_width = static_cast<std::int64_t>(rect->right) - rect->left;

  if ((format & DT_SINGLELINE) != 0) {
    for (char c : all) {
      if (c != '\r' && c != '\n') chars += c;
    }
    lines.push_back(TextLineSpan{0, chars.size(), 0});
  } else {
    std::size_t start = 0;
    while (true) {
      std::size_t end = all.find('\n', start);
      std::size_t size = (end == std::string::npos ? all.size() : end) - start;
      if (size > 0 && all[start + size - 1] == '\r') --size;
      if ((format & DT_WORDBREAK) != 0) {
        WrapParagraph(face, all.data() + start, size, box_width, &chars, &lines);
      } else {
        lines.push_back(TextLineSpan{chars.size(), size, 0});
        chars.append(all, start, size);
      }
      if (end == std::string::npos) break;
      start = end + 1;
    }
  }

  std::int64_t widest = 0;
  for (TextLineSpan& line : lines) {
    line.width =
        TextWidth(face, reinterpret_cast<const unsigned char*>(chars.data() + line.first), line.size);
    widest = std::max(widest, line.width);
  }
  const std::int64_t total = static_cast<std::int64_t>(lines.size()) * line_height;

  if ((format & DT_CALCRECT) != 0) {
    rect->right = SaturateToInt(static_cast<std::int64_t>(rect->left) + widest);
    rect->bottom = SaturateToInt(static_cast<std::int64_t>(rect->top) + total);
    return SaturateToInt(total);
  }

  std::int64_t top = rect->top;
  if ((format & DT_SINGLELINE) != 0) {
    std::int64_t box_height = static_cast<std::int64_t>(rect->bottom) - rect->top;
    if ((format & DT_BOTTOM) != 0) {
      top = rect->bottom - total;
    } else if ((format & DT_VCENTER) != 0) {
      top = rect->top + (box_height - total) / 2;
    }
  }
  IRect limit{std::min(rect->left, rect->right), std::min(rect->top, rect->bottom),
              std::max(rect->left, rect->right), std::max(rect->top, rect->bottom)};
  const IRect* clip = (format & DT_NOCLIP) != 0 ? nullptr : &limit;
  for (std::size_t i = 0; i < lines.size(); ++i) {
    std::int64_t x = rect->left;
    if ((format & DT_CENTER) != 0) {
      x = rect->left + (box_width - lines[i].width) / 2;
    } else if ((format & DT_RIGHT) != 0) {
      x = rect->right - lines[i].width;
    }
    std::int64_t y = top + static_cast<std::int64_t>(i) * line_height;
    if (y > INT32_MAX) break;
    DrawRun(*dc, SaturateToInt(x), SaturateToInt(y), TA_LEFT | TA_TOP,
            reinterpret_cast<const unsigned char*>(chars.data() + lines[i].first),
            static_cast<int>(lines[i].size),
            nullptr, clip, nullptr);
  }
  return SaturateToInt(top - rect->top + total);
}

}  // namespace qvis::gdi
