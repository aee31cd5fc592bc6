// Font realisation on Windows: the system's GDI chooses the face for the logical font and gives
// its metrics (GetOutlineTextMetrics), monochrome glyph bitmaps and hinted outlines
// (GetGlyphOutline). Each face owns its own memory DC and font handle, so faces share no state.
// The system's names are written with :: (ours, in qvis::gdi, have the same spelling).
#include <windows.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>

#include "qvis/gdi/dc.h"
#include "qvis/gdi/text/font_face.h"

namespace qvis::gdi {
namespace {

// Largest em size glyphs are rendered at, as in the FreeType backend.
constexpr int kMaxPpem = 1024;

double FixedToDouble(const ::FIXED& f) { return f.value + f.fract / 65536.0; }

::FIXED DoubleToFixed(double v) {
  const auto raw = static_cast<std::int32_t>(std::lround(v * 65536.0));
  ::FIXED f;
  f.value = static_cast<short>(raw >> 16);
  f.fract = static_cast<WORD>(raw & 0xFFFF);
  return f;
}

}  // namespace

struct FontFace::Impl {
  ::HDC dc = nullptr;
  ::HFONT font = nullptr;
  ::HGDIOBJ old_font = nullptr;
  ::MAT2 rotation{};  // the escapement, applied to glyph bitmaps and outlines

  ~Impl() {
    if (dc != nullptr) {
      if (old_font != nullptr) ::SelectObject(dc, old_font);
      ::DeleteDC(dc);
    }
    if (font != nullptr) ::DeleteObject(font);
  }
};

FontFace::FontFace(std::unique_ptr<Impl> impl) : impl_(std::move(impl)) {}
FontFace::~FontFace() = default;

std::unique_ptr<FontFace> FontFace::Realize(const LOGFONTA& lf) {
  ::LOGFONTA sys{};
  // A positive height asks for the cell, a negative one for the em, as in GDI itself; the height
  // is limited so that glyph bitmaps stay reasonable.
  LONG height = lf.lfHeight == 0 ? kDefaultFontCellHeight : lf.lfHeight;
  height = std::clamp<LONG>(height, -kMaxPpem, kMaxPpem * 2);
  sys.lfHeight = height;
  sys.lfWidth = 0;
  sys.lfEscapement = 0;  // turned by the glyph transform below, as the FreeType backend does
  sys.lfOrientation = 0;
  sys.lfWeight = lf.lfWeight <= 0 ? FW_NORMAL : std::min<LONG>(lf.lfWeight, 1000);
  sys.lfItalic = lf.lfItalic;
  sys.lfUnderline = 0;  // rules are drawn by the text layer
  sys.lfStrikeOut = 0;
  sys.lfCharSet = ANSI_CHARSET;
  sys.lfOutPrecision = OUT_TT_ONLY_PRECIS;
  sys.lfClipPrecision = CLIP_DEFAULT_PRECIS;
  sys.lfQuality = NONANTIALIASED_QUALITY;
  sys.lfPitchAndFamily = DEFAULT_PITCH | FF_DONTCARE;
  const std::size_t name_len = strnlen(lf.lfFaceName, sizeof lf.lfFaceName);
  if (name_len == 0) {
    std::strcpy(sys.lfFaceName, "Arial");
  } else {
    std::memcpy(sys.lfFaceName, lf.lfFaceName, std::min<std::size_t>(name_len, LF_FACESIZE - 1));
  }

  auto impl = std::make_unique<Impl>();
  impl->dc = ::CreateCompatibleDC(nullptr);
  impl->font = ::CreateFontIndirectA(&sys);
  if (impl->dc == nullptr || impl->font == nullptr) return nullptr;
  ::SetMapMode(impl->dc, MM_TEXT);
  impl->old_font = ::SelectObject(impl->dc, impl->font);

  const UINT size = ::GetOutlineTextMetricsA(impl->dc, 0, nullptr);
  if (size == 0) return nullptr;
  std::vector<std::uint8_t> buffer(size);
  auto* otm = reinterpret_cast<::OUTLINETEXTMETRICA*>(buffer.data());
  if (::GetOutlineTextMetricsA(impl->dc, size, otm) == 0) return nullptr;

  auto face = std::unique_ptr<FontFace>(new FontFace(std::move(impl)));
  FontMetrics& m = face->metrics_;
  const ::TEXTMETRICA& tm = otm->otmTextMetrics;
  m.ascent = tm.tmAscent;
  m.descent = tm.tmDescent;
  m.height = tm.tmHeight;
  m.internal_leading = tm.tmInternalLeading;
  m.ppem = std::max(1, static_cast<int>(tm.tmHeight - tm.tmInternalLeading));
  m.underline_position = otm->otmsUnderscorePosition;
  m.underline_thickness = std::max(1, static_cast<int>(otm->otmsUnderscoreSize));
  m.strikeout_position = otm->otmsStrikeoutPosition;
  m.strikeout_thickness = std::max(1, static_cast<int>(otm->otmsStrikeoutSize));

  face->escapement_ = lf.lfEscapement;
  face->underline_ = lf.lfUnderline != 0;
  face->strikeout_ = lf.lfStrikeOut != 0;
  auto name_at = [&](PSTR offset) -> std::string {
    const auto at = reinterpret_cast<std::uintptr_t>(offset);
    if (at == 0 || at >= size) return {};
    const char* s = reinterpret_cast<const char*>(buffer.data() + at);
    return std::string(s, strnlen(s, size - at));
  };
  face->face_name_ = name_at(otm->otmpFamilyName);
  const std::string style = name_at(otm->otmpStyleName);
  if (!style.empty()) face->face_name_ += " " + style;

  // Escapement turns glyphs counter-clockwise with the baseline; whole turns fold first.
  const long esc = lf.lfEscapement % 3600;
  const double radians = static_cast<double>(esc) / 10.0 * 3.14159265358979323846 / 180.0;
  const double c = esc == 0 ? 1.0 : std::cos(radians);
  const double s = esc == 0 ? 0.0 : std::sin(radians);
  face->impl_->rotation.eM11 = DoubleToFixed(c);
  face->impl_->rotation.eM12 = DoubleToFixed(s);
  face->impl_->rotation.eM21 = DoubleToFixed(-s);
  face->impl_->rotation.eM22 = DoubleToFixed(c);
  return face;
}

void FontFace::LoadAdvances(unsigned char c) {
  ::GLYPHMETRICS gm{};
  ::MAT2 identity{};
  identity.eM11.value = 1;
  identity.eM22.value = 1;
  const auto wc = static_cast<UINT>(AnsiToUnicode(c));
  // Glyphs are placed with the cell increment of the black-and-white bitmap, which is what the
  // system's own text output steps by; the plain metrics query can give the unhinted width
  // instead (a pixel more for some characters at some sizes).
  int advance = 0;
  if (::GetGlyphOutlineW(impl_->dc, wc, GGO_BITMAP, &gm, 0, nullptr, &identity) != GDI_ERROR) {
    advance = gm.gmCellIncX;
  }
  ::ABC abc{};
  int extent = advance;
  if (::GetCharABCWidthsW(impl_->dc, wc, wc, &abc)) {
    extent = abc.abcA + static_cast<int>(abc.abcB) + abc.abcC;
  }
  advances_[c] = std::max(0, advance);
  extent_advances_[c] = std::max(0, extent);
  have_advance_[c] = true;
}

const GlyphMask& FontFace::Glyph(unsigned char c) {
  std::unique_ptr<GlyphMask>& slot = glyphs_[c];
  if (slot != nullptr) return *slot;
  slot = std::make_unique<GlyphMask>();
  GlyphMask& mask = *slot;
  const auto wc = static_cast<UINT>(AnsiToUnicode(c));
  ::GLYPHMETRICS gm{};
  const DWORD size = ::GetGlyphOutlineW(impl_->dc, wc, GGO_BITMAP, &gm, 0, nullptr, &impl_->rotation);
  if (size == GDI_ERROR || size == 0) return mask;  // a blank
  std::vector<std::uint8_t> bits(size);
  if (::GetGlyphOutlineW(impl_->dc, wc, GGO_BITMAP, &gm, size, bits.data(), &impl_->rotation) ==
      GDI_ERROR) {
    return mask;
  }
  mask.left = gm.gmptGlyphOrigin.x;
  mask.top = gm.gmptGlyphOrigin.y;
  mask.width = static_cast<int>(gm.gmBlackBoxX);
  mask.rows = static_cast<int>(gm.gmBlackBoxY);
  const std::size_t pitch = ((static_cast<std::size_t>(mask.width) + 31) / 32) * 4;  // DWORD rows
  if (pitch * static_cast<std::size_t>(mask.rows) > bits.size()) {
    mask = GlyphMask();
    return mask;
  }
  mask.ink.assign(static_cast<std::size_t>(mask.width) * static_cast<std::size_t>(mask.rows), 0);
  for (int y = 0; y < mask.rows; ++y) {
    const std::uint8_t* row = bits.data() + pitch * static_cast<std::size_t>(y);
    for (int x = 0; x < mask.width; ++x) {
      mask.ink[static_cast<std::size_t>(y) * mask.width + x] = (row[x >> 3] >> (7 - (x & 7))) & 1;
    }
  }
  return mask;
}

void FontFace::AppendOutline(unsigned char c, double x, double y, PathData* path) {
  if (path == nullptr) return;
  const auto wc = static_cast<UINT>(AnsiToUnicode(c));
  ::GLYPHMETRICS gm{};
  // The hinted outline, as the system's own path recording takes it (the unhinted one puts
  // some curve points a pixel away).
  const UINT format = GGO_NATIVE;
  const DWORD size = ::GetGlyphOutlineW(impl_->dc, wc, format, &gm, 0, nullptr, &impl_->rotation);
  if (size == GDI_ERROR || size == 0) return;
  std::vector<std::uint8_t> data(size);
  if (::GetGlyphOutlineW(impl_->dc, wc, format, &gm, size, data.data(), &impl_->rotation) ==
      GDI_ERROR) {
    return;
  }
  // Outline points land on whole device pixels (halves rounded up), as path points do; the
  // outline's y grows upwards.
  const double ox = std::floor(x);
  const double oy = std::floor(y);
  auto px = [&](double fx) { return ox + std::floor(fx + 0.5); };
  auto py = [&](double fy) { return oy - std::floor(fy + 0.5); };
  double cx = 0, cy = 0;        // current point, device pixels
  double qx = 0, qy = 0;        // current point, outline units (for spline midpoints)
  std::size_t pos = 0;
  while (pos + sizeof(::TTPOLYGONHEADER) <= data.size()) {
    ::TTPOLYGONHEADER header;
    std::memcpy(&header, data.data() + pos, sizeof header);
    if (header.cb < sizeof header || header.cb > data.size() - pos) break;
    const std::size_t end = pos + header.cb;
    qx = FixedToDouble(header.pfxStart.x);
    qy = FixedToDouble(header.pfxStart.y);
    cx = px(qx);
    cy = py(qy);
    path->MoveTo(cx, cy);
    std::size_t at = pos + sizeof header;
    while (at + offsetof(::TTPOLYCURVE, apfx) <= end) {
      ::TTPOLYCURVE curve;
      std::memcpy(&curve, data.data() + at, offsetof(::TTPOLYCURVE, apfx));
      const std::size_t points_at = at + offsetof(::TTPOLYCURVE, apfx);
      if (curve.cpfx == 0 || points_at + curve.cpfx * sizeof(::POINTFX) > end) break;
      std::vector<::POINTFX> pts(curve.cpfx);
      std::memcpy(pts.data(), data.data() + points_at, curve.cpfx * sizeof(::POINTFX));
      if (curve.wType == TT_PRIM_LINE) {
        for (const ::POINTFX& p : pts) {
          qx = FixedToDouble(p.x);
          qy = FixedToDouble(p.y);
          path->LineTo(cx, cy, px(qx), py(qy));
          cx = px(qx);
          cy = py(qy);
        }
      } else if (curve.wType == TT_PRIM_QSPLINE) {
        // A quadratic B-spline: on-curve points lie halfway between consecutive controls.
        for (std::size_t i = 0; i + 1 < pts.size(); ++i) {
          const double kx = FixedToDouble(pts[i].x), ky = FixedToDouble(pts[i].y);
          double ex = FixedToDouble(pts[i + 1].x), ey = FixedToDouble(pts[i + 1].y);
          if (i + 2 < pts.size()) {
            ex = (kx + ex) / 2;
            ey = (ky + ey) / 2;
          }
          const double dkx = px(kx), dky = py(ky), dex = px(ex), dey = py(ey);
          path->vertices.push_back({cx + 2.0 / 3.0 * (dkx - cx), cy + 2.0 / 3.0 * (dky - cy),
                                    PathData::kBezierTo});
          path->vertices.push_back({dex + 2.0 / 3.0 * (dkx - dex), dey + 2.0 / 3.0 * (dky - dey),
                                    PathData::kBezierTo});
          path->vertices.push_back({dex, dey, PathData::kBezierTo});
          cx = dex;
          cy = dey;
          qx = ex;
          qy = ey;
        }
      } else if (curve.wType == TT_PRIM_CSPLINE) {
        for (std::size_t i = 0; i + 2 < pts.size(); i += 3) {
          for (std::size_t k = 0; k < 3; ++k) {
            path->vertices.push_back({px(FixedToDouble(pts[i + k].x)),
                                      py(FixedToDouble(pts[i + k].y)), PathData::kBezierTo});
          }
          qx = FixedToDouble(pts[i + 2].x);
          qy = FixedToDouble(pts[i + 2].y);
          cx = px(qx);
          cy = py(qy);
        }
      }
      at = points_at + curve.cpfx * sizeof(::POINTFX);
    }
    path->CloseFigure();
    pos = end;
  }
}

}  // namespace qvis::gdi
