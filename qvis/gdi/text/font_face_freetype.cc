// Font realisation: fontconfig picks the system face for a face name, weight and slant (a
// requested "Arial" resolves to a metric-compatible face); FreeType scales it the way GDI sizes
// TrueType fonts and renders hinted monochrome glyphs. Bold and italic are synthesised when the
// family has no such face.
#include "qvis/gdi/text/font_face.h"

#include <fontconfig/fontconfig.h>
#include <ft2build.h>
#include FT_FREETYPE_H
#include FT_DRIVER_H
#include FT_MODULE_H
#include FT_OUTLINE_H
#include FT_TRUETYPE_TABLES_H

#include <algorithm>
#include <cmath>
#include <cstring>
#include <mutex>

#if defined(__SANITIZE_ADDRESS__)
#define QVIS_WITH_LEAK_CHECKER 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define QVIS_WITH_LEAK_CHECKER 1
#endif
#endif
#ifdef QVIS_WITH_LEAK_CHECKER
#include <sanitizer/lsan_interface.h>
#endif

#include "qvis/compat/win32_names.h"
#include "qvis/gdi/dc.h"

namespace qvis::gdi {
namespace {

// Largest em size glyphs are rendered at. Heights beyond it draw at this size: a glyph mask of
// a million pixels a side would exhaust memory, and no display shows more than this anyway.
constexpr int kMaxPpem = 1024;
// Requested weights from this one up are bold.
constexpr int kBoldWeight = 600;
// Horizontal shear of synthesised italics (x += y / 4, about 14 degrees).
constexpr FT_Fixed kObliqueShear = 0x4000;

// FaceMutex: FreeType lets threads share a library only when the creation and destruction of
// faces are serialised; glyph work on distinct faces needs no lock.
std::mutex& FaceMutex() {
  static std::mutex mutex;
  return mutex;
}

FT_Library Library() {
  static FT_Library library = nullptr;
  static std::once_flag once;
  std::call_once(once, [] {
    if (FT_Init_FreeType(&library) != 0) {
      library = nullptr;
    } else {
      // The classic TrueType interpreter hints in both directions, as the platform's
      // rasteriser does; the newer default leaves widths unhinted and advances drift.
      FT_UInt interpreter = TT_INTERPRETER_VERSION_35;
      FT_Property_Set(library, "truetype", "interpreter-version", &interpreter);
    }
#ifdef QVIS_WITH_LEAK_CHECKER
    // The font configuration lives as long as the process; its loader keeps a few blocks the
    // leak checker would report at exit.
    __lsan_disable();
    FcInit();
    __lsan_enable();
#else
    FcInit();
#endif
  });
  return library;
}

int RoundFix(FT_Long value_26_6) { return static_cast<int>((value_26_6 + 32) >> 6); }

struct FaceChoice {
  std::string file;
  int index = 0;
  bool synthetic_bold = false;
  bool synthetic_italic = false;
  std::string name;
};

// ChooseFace asks fontconfig for the best outline face of the family, weight and slant.
bool ChooseFace(const LOGFONTA& lf, FaceChoice* choice) {
  std::string family(lf.lfFaceName, strnlen(lf.lfFaceName, sizeof lf.lfFaceName));
  if (family.empty()) family = "Arial";
  int weight = lf.lfWeight <= 0 ? FW_NORMAL : std::min<int>(lf.lfWeight, 1000);
  FcPattern* pattern = FcPatternCreate();
  if (pattern == nullptr) return false;
  FcPatternAddString(pattern, FC_FAMILY, reinterpret_cast<const FcChar8*>(family.c_str()));
  FcPatternAddInteger(pattern, FC_WEIGHT, FcWeightFromOpenType(weight));
  FcPatternAddInteger(pattern, FC_SLANT, lf.lfItalic ? FC_SLANT_ITALIC : FC_SLANT_ROMAN);
  FcPatternAddBool(pattern, FC_SCALABLE, FcTrue);
  FcPatternAddBool(pattern, FC_OUTLINE, FcTrue);
  FcConfigSubstitute(nullptr, pattern, FcMatchPattern);
  FcDefaultSubstitute(pattern);
  FcResult result = FcResultNoMatch;
  FcPattern* match = FcFontMatch(nullptr, pattern, &result);
  FcPatternDestroy(pattern);
  if (match == nullptr) return false;
  FcChar8* file = nullptr;
  bool ok = FcPatternGetString(match, FC_FILE, 0, &file) == FcResultMatch && file != nullptr;
  if (ok) {
    choice->file = reinterpret_cast<const char*>(file);
    int index = 0;
    if (FcPatternGetInteger(match, FC_INDEX, 0, &index) == FcResultMatch) choice->index = index;
    int got_weight = FC_WEIGHT_REGULAR;
    int got_slant = FC_SLANT_ROMAN;
    FcPatternGetInteger(match, FC_WEIGHT, 0, &got_weight);
    FcPatternGetInteger(match, FC_SLANT, 0, &got_slant);
    choice->synthetic_bold = weight >= kBoldWeight && got_weight < FC_WEIGHT_DEMIBOLD;
    choice->synthetic_italic = lf.lfItalic && got_slant == FC_SLANT_ROMAN;
    FcChar8* name = nullptr;
    FcChar8* style = nullptr;
    if (FcPatternGetString(match, FC_FAMILY, 0, &name) == FcResultMatch && name != nullptr) {
      choice->name = reinterpret_cast<const char*>(name);
    }
    if (FcPatternGetString(match, FC_STYLE, 0, &style) == FcResultMatch && style != nullptr) {
      choice->name += std::string(" ") + reinterpret_cast<const char*>(style);
    }
  }
  FcPatternDestroy(match);
  return ok;
}

}  // namespace

struct FontFace::Impl {
  FT_Face face = nullptr;
  bool bold = false;     // synthesise bold
  bool oblique = false;  // synthesise italic
  FT_Matrix rotation{0x10000, 0, 0, 0x10000};
  bool rotated = false;

  ~Impl() {
    if (face != nullptr) {
      std::lock_guard<std::mutex> lock(FaceMutex());
      FT_Done_Face(face);
    }
  }

  // Glyphs are hinted for monochrome output (stems snapped to whole pixels) before any
  // rotation, so turned text keeps the stem widths of upright text.
  static constexpr FT_Int32 LoadFlags() { return FT_LOAD_NO_BITMAP | FT_LOAD_TARGET_MONO; }

  // Load prepares the outline of a character in the glyph slot: hinted (for drawing and for
  // paths alike), emboldened, sheared and rotated as the font asks. False for
  // characters the face cannot load.
  bool Load(unsigned char c) {
    FT_UInt index = FT_Get_Char_Index(face, AnsiToUnicode(c));
    if (FT_Load_Glyph(face, index, LoadFlags()) != 0) return false;
    FT_GlyphSlot slot = face->glyph;
    if (slot->format != FT_GLYPH_FORMAT_OUTLINE) return false;
    if (bold) FT_Outline_Embolden(&slot->outline, std::max<FT_Pos>(64, face->size->metrics.x_ppem * 2));
    if (oblique) {
      FT_Matrix shear{0x10000, kObliqueShear, 0, 0x10000};
      FT_Outline_Transform(&slot->outline, &shear);
    }
    if (rotated) FT_Outline_Transform(&slot->outline, &rotation);
    return true;
  }
};

FontFace::FontFace(std::unique_ptr<Impl> impl) : impl_(std::move(impl)) {}
FontFace::~FontFace() = default;

std::unique_ptr<FontFace> FontFace::Realize(const LOGFONTA& lf) {
  FT_Library library = Library();
  if (library == nullptr) return nullptr;
  FaceChoice choice;
  if (!ChooseFace(lf, &choice)) return nullptr;
  auto impl = std::make_unique<Impl>();
  FT_Error opened = 0;
  {
    std::lock_guard<std::mutex> lock(FaceMutex());
    opened = FT_New_Face(library, choice.file.c_str(), choice.index, &impl->face);
  }
  if (opened != 0) {
    impl->face = nullptr;
    return nullptr;
  }
  FT_Face face = impl->face;
  if (!FT_IS_SCALABLE(face) || face->units_per_EM == 0) return nullptr;
  impl->bold = choice.synthetic_bold;
  impl->oblique = choice.synthetic_italic;

  // The cell of a TrueType face is its Windows ascent plus descent; a positive height asks for
  // that cell, a negative one for the em itself.
  const auto* os2 = static_cast<const TT_OS2*>(FT_Get_Sfnt_Table(face, FT_SFNT_OS2));
  const auto* hhea = static_cast<const TT_HoriHeader*>(FT_Get_Sfnt_Table(face, FT_SFNT_HHEA));
  const auto* post = static_cast<const TT_Postscript*>(FT_Get_Sfnt_Table(face, FT_SFNT_POST));
  long ascent_units = face->ascender;
  long descent_units = -face->descender;
  if (os2 != nullptr && os2->version != 0xFFFF && os2->usWinAscent + os2->usWinDescent > 0) {
    ascent_units = os2->usWinAscent;
    descent_units = os2->usWinDescent;
  } else if (hhea != nullptr) {
    ascent_units = hhea->Ascender;
    descent_units = -hhea->Descender;
  }
  long long height = lf.lfHeight == 0 ? kDefaultFontCellHeight : lf.lfHeight;
  long long ppem = 0;
  if (height > 0) {
    const long long cell = std::max(1L, ascent_units + descent_units);
    const long long upem = face->units_per_EM;
    ppem = (upem * height + cell / 2) / cell;
    // Rounding may give a cell taller than asked for; then the next smaller em is taken.
    if (ppem > 1 && (cell * ppem + upem / 2) / upem > height) --ppem;
  } else {
    ppem = -height;
  }
  ppem = std::clamp<long long>(ppem, 1, kMaxPpem);
  if (FT_Set_Pixel_Sizes(face, 0, static_cast<FT_UInt>(ppem)) != 0) return nullptr;
  const FT_Fixed y_scale = face->size->metrics.y_scale;

  auto font = std::unique_ptr<FontFace>(new FontFace(std::move(impl)));
  FontMetrics& m = font->metrics_;
  m.ppem = static_cast<int>(ppem);
  m.ascent = RoundFix(FT_MulFix(ascent_units, y_scale));
  m.descent = RoundFix(FT_MulFix(descent_units, y_scale));
  m.height = m.ascent + m.descent;
  m.internal_leading = std::max(0, m.height - m.ppem);
  if (post != nullptr && post->underlineThickness > 0) {
    m.underline_position = RoundFix(FT_MulFix(post->underlinePosition, y_scale));
    m.underline_thickness = std::max(1, RoundFix(FT_MulFix(post->underlineThickness, y_scale)));
  } else {
    m.underline_position = -std::max(1, m.descent / 2);
    m.underline_thickness = std::max(1, m.ppem / 14);
  }
  if (os2 != nullptr && os2->version != 0xFFFF && os2->yStrikeoutSize > 0) {
    m.strikeout_position = RoundFix(FT_MulFix(os2->yStrikeoutPosition, y_scale));
    m.strikeout_thickness = std::max(1, RoundFix(FT_MulFix(os2->yStrikeoutSize, y_scale)));
  } else {
    m.strikeout_position = m.ascent / 3;
    m.strikeout_thickness = m.underline_thickness;
  }

  font->escapement_ = lf.lfEscapement;
  font->underline_ = lf.lfUnderline != 0;
  font->strikeout_ = lf.lfStrikeOut != 0;
  font->face_name_ = choice.name;
  // Escapement turns the glyphs with the baseline (the compatible graphics mode ignores the
  // orientation field). Whole turns are folded first so that huge values stay exact.
  long esc = lf.lfEscapement % 3600;
  if (esc != 0) {
    double radians = static_cast<double>(esc) / 10.0 * 3.14159265358979323846 / 180.0;
    FT_Fixed c = static_cast<FT_Fixed>(std::lround(std::cos(radians) * 65536.0));
    FT_Fixed s = static_cast<FT_Fixed>(std::lround(std::sin(radians) * 65536.0));
    font->impl_->rotation = FT_Matrix{c, -s, s, c};
    font->impl_->rotated = true;
  }
  return font;
}

void FontFace::LoadAdvances(unsigned char c) {
  int advance = 0;
  int extent = 0;
  FT_UInt index = FT_Get_Char_Index(impl_->face, AnsiToUnicode(c));
  if (FT_Load_Glyph(impl_->face, index, Impl::LoadFlags()) == 0) {
    advance = RoundFix(impl_->face->glyph->advance.x);
    extent = static_cast<int>((impl_->face->glyph->linearHoriAdvance + 0x8000) >> 16);
    if (impl_->bold) {  // the emboldened glyph is one pixel wider
      advance += 1;
      extent += 1;
    }
  }
  advances_[c] = std::max(0, advance);
  extent_advances_[c] = std::max(0, extent);
  have_advance_[c] = true;
}

const GlyphMask& FontFace::Glyph(unsigned char c) {
  std::unique_ptr<GlyphMask>& slot_mask = glyphs_[c];
  if (slot_mask != nullptr) return *slot_mask;
  slot_mask = std::make_unique<GlyphMask>();
  GlyphMask& mask = *slot_mask;
  if (!impl_->Load(c)) return mask;
  FT_GlyphSlot slot = impl_->face->glyph;
  if (FT_Render_Glyph(slot, FT_RENDER_MODE_MONO) != 0) return mask;
  const FT_Bitmap& bitmap = slot->bitmap;
  if (bitmap.pixel_mode != FT_PIXEL_MODE_MONO || bitmap.width == 0 || bitmap.rows == 0) {
    return mask;
  }
  mask.left = slot->bitmap_left;
  mask.top = slot->bitmap_top;
  mask.width = static_cast<int>(bitmap.width);
  mask.rows = static_cast<int>(bitmap.rows);
  mask.ink.assign(static_cast<std::size_t>(mask.width) * mask.rows, 0);
  for (int y = 0; y < mask.rows; ++y) {
    const unsigned char* row = bitmap.buffer + static_cast<std::ptrdiff_t>(bitmap.pitch) * y;
    for (int x = 0; x < mask.width; ++x) {
      mask.ink[static_cast<std::size_t>(y) * mask.width + x] = (row[x >> 3] >> (7 - (x & 7))) & 1;
    }
  }
  return mask;
}

namespace {

// OutlineWriter receives a decomposed glyph outline and records it in a path.
struct OutlineWriter {
  PathData* path;
  double x0;
  double y0;
  double cx = 0;  // current point, device pixels
  double cy = 0;
  bool open = false;

  // Outline points land on whole device pixels (halves rounded up), as path points do.
  double X(const FT_Vector* v) const { return std::floor(x0) + static_cast<double>((v->x + 32) >> 6); }
  double Y(const FT_Vector* v) const { return std::floor(y0) - static_cast<double>((v->y + 32) >> 6); }
  void Bezier(double x1, double y1, double x2, double y2, double x3, double y3) {
    path->vertices.push_back({x1, y1, PathData::kBezierTo});
    path->vertices.push_back({x2, y2, PathData::kBezierTo});
    path->vertices.push_back({x3, y3, PathData::kBezierTo});
    cx = x3;
    cy = y3;
  }
  void Close() {
    if (open) path->CloseFigure();
    open = false;
  }

  static int MoveTo(const FT_Vector* to, void* user) {
    auto* w = static_cast<OutlineWriter*>(user);
    w->Close();
    w->cx = w->X(to);
    w->cy = w->Y(to);
    w->path->MoveTo(w->cx, w->cy);
    w->open = true;
    return 0;
  }
  static int LineTo(const FT_Vector* to, void* user) {
    auto* w = static_cast<OutlineWriter*>(user);
    double x = w->X(to);
    double y = w->Y(to);
    w->path->LineTo(w->cx, w->cy, x, y);
    w->cx = x;
    w->cy = y;
    return 0;
  }
  // Quadratic pieces become the equivalent cubic ones (paths hold cubic Beziers only).
  static int ConicTo(const FT_Vector* control, const FT_Vector* to, void* user) {
    auto* w = static_cast<OutlineWriter*>(user);
    double qx = w->X(control), qy = w->Y(control);
    double x = w->X(to), y = w->Y(to);
    w->Bezier(w->cx + 2.0 / 3.0 * (qx - w->cx), w->cy + 2.0 / 3.0 * (qy - w->cy),
              x + 2.0 / 3.0 * (qx - x), y + 2.0 / 3.0 * (qy - y), x, y);
    return 0;
  }
  static int CubicTo(const FT_Vector* c1, const FT_Vector* c2, const FT_Vector* to, void* user) {
    auto* w = static_cast<OutlineWriter*>(user);
    w->Bezier(w->X(c1), w->Y(c1), w->X(c2), w->Y(c2), w->X(to), w->Y(to));
    return 0;
  }
};

}  // namespace

void FontFace::AppendOutline(unsigned char c, double x, double y, PathData* path) {
  if (path == nullptr || !impl_->Load(c)) return;
  FT_Outline_Funcs funcs{};
  funcs.move_to = &OutlineWriter::MoveTo;
  funcs.line_to = &OutlineWriter::LineTo;
  funcs.conic_to = &OutlineWriter::ConicTo;
  funcs.cubic_to = &OutlineWriter::CubicTo;
  OutlineWriter writer{path, x, y};
  FT_Outline_Decompose(&impl_->face->glyph->outline, &funcs, &writer);
  writer.Close();
}

}  // namespace qvis::gdi
