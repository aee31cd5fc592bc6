// What every font backend shares: the ANSI code page, the face cached with a font record and
// the advance tables. The faces themselves come from the platform (font_face_freetype.cc on
// Linux, font_face_gdi32.cc on Windows).
#include "qvis/gdi/text/font_face.h"

#include "qvis/compat/win32_names.h"
#include "qvis/gdi/dc.h"

namespace qvis::gdi {
namespace {

// Windows-1252 code points of bytes 0x80..0x9F (0 for the five unassigned ones).
constexpr char16_t kCp1252High[32] = {
    0x20AC, 0,      0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0,      0x017D, 0,      0,      0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0,      0x017E, 0x0178};

}  // namespace

char32_t AnsiToUnicode(unsigned char c) {
  if (c >= 0x80 && c < 0xA0) return kCp1252High[c - 0x80];
  return c;
}

FontFace* FontFace::ForFont(FontData* font) {
  if (font == nullptr) {
    // A DC without a selected font draws with a plain bold sans face of 16-pixel cells. Each
    // thread has its own: a face caches glyphs and may not be shared between threads. It is a
    // resource made once, like a font's own face, not working memory, so it is not the DC's.
    static thread_local std::unique_ptr<FontFace> fallback = [] {
      LOGFONTA lf;
      lf.lfHeight = kDefaultFontCellHeight;
      lf.lfWeight = FW_BOLD;
      return Realize(lf);
    }();
    return fallback.get();
  }
  if (font->engine_cache == nullptr) {
    std::unique_ptr<FontFace> face = Realize(font->logfont);
    if (face == nullptr) return nullptr;
    font->engine_cache = std::shared_ptr<FontFace>(std::move(face));
  }
  return static_cast<FontFace*>(font->engine_cache.get());
}

int FontFace::Advance(unsigned char c) {
  if (!have_advance_[c]) LoadAdvances(c);
  return advances_[c];
}

int FontFace::ExtentAdvance(unsigned char c) {
  if (!have_advance_[c]) LoadAdvances(c);
  return extent_advances_[c];
}

}  // namespace qvis::gdi
