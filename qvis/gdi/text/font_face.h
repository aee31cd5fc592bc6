// FontFace: a logical font (LOGFONTA) realised on a system face (through fontconfig and FreeType
// on Linux, through the system's GDI on Windows): cell metrics as GDI reports them, integer
// advances, monochrome glyph masks (rotated by the escapement) and glyph outlines for paths.
#ifndef QVIS_GDI_TEXT_FONT_FACE_H_
#define QVIS_GDI_TEXT_FONT_FACE_H_

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "qvis/gdi/gdi.h"

namespace qvis::gdi {

struct FontData;

// Cell height, in pixels, of a logical font whose height is 0 (its "default size").
inline constexpr int kDefaultFontCellHeight = 16;
struct PathData;

// FontMetrics are the cell metrics of a realised font, in whole pixels.
struct FontMetrics {
  int ascent = 0;            // baseline to the top of the cell
  int descent = 0;           // baseline to the bottom of the cell
  int height = 0;            // ascent + descent
  int internal_leading = 0;  // height minus the em size
  int ppem = 0;              // the em size the glyphs are drawn at
  // Rules, as offsets above the baseline (negative: below) and thicknesses, at least 1.
  int underline_position = 0;
  int underline_thickness = 1;
  int strikeout_position = 0;
  int strikeout_thickness = 1;
};

// GlyphMask is one character rendered in black and white: `rows` rows of `width` bytes (1 =
// ink), whose top-left pixel lies at (left, -top) from the glyph origin on the baseline (device
// y down). Empty for blanks.
struct GlyphMask {
  int left = 0;
  int top = 0;
  int width = 0;
  int rows = 0;
  std::vector<std::uint8_t> ink;
};

class FontFace {
 public:
  // ForFont returns the realised face of a font record, made on first use and kept with the
  // record; a null record gives the default font. Returns null only when no system face can be
  // loaded at all.
  static FontFace* ForFont(FontData* font);
  // Realize makes a face for a logical font; null when no system face can be loaded.
  static std::unique_ptr<FontFace> Realize(const LOGFONTA& logfont);

  ~FontFace();
  FontFace(const FontFace&) = delete;
  FontFace& operator=(const FontFace&) = delete;

  const FontMetrics& metrics() const { return metrics_; }
  // Escapement of the baseline, tenths of a degree counter-clockwise.
  int escapement() const { return escapement_; }
  bool underline() const { return underline_; }
  bool strikeout() const { return strikeout_; }
  // The face that was chosen, as "Family Style" (for diagnostics).
  const std::string& face_name() const { return face_name_; }

  // Advance is the integer advance of a character of the ANSI code page as glyphs are placed
  // (hinted). ExtentAdvance is its width as text extents, cell boxes and rules measure it (the
  // design width rounded to whole pixels); the two differ by a pixel for some characters.
  int Advance(unsigned char c);
  int ExtentAdvance(unsigned char c);
  // Glyph is the mask of a character, rotated by the escapement. The reference stays valid for
  // the face's life.
  const GlyphMask& Glyph(unsigned char c);
  // AppendOutline adds a character's outline, rotated by the escapement, to a path with the
  // glyph origin at (x, y) in device pixels: one closed figure per contour, every point on a
  // whole pixel as path points are. It is the hinted outline on every platform, the one the
  // system records for text in a path, so a filled path lines its stems up with drawn text.
  void AppendOutline(unsigned char c, double x, double y, PathData* path);

 private:
  struct Impl;
  explicit FontFace(std::unique_ptr<Impl> impl);

  std::unique_ptr<Impl> impl_;
  FontMetrics metrics_;
  int escapement_ = 0;
  bool underline_ = false;
  bool strikeout_ = false;
  std::string face_name_;
  void LoadAdvances(unsigned char c);

  std::array<int, 256> advances_{};
  std::array<int, 256> extent_advances_{};
  std::array<bool, 256> have_advance_{};
  std::array<std::unique_ptr<GlyphMask>, 256> glyphs_{};
};

// AnsiToUnicode maps a byte of the ANSI code page (Windows-1252) to its Unicode code point.
char32_t AnsiToUnicode(unsigned char c);

}  // namespace qvis::gdi

#endif  // QVIS_GDI_TEXT_FONT_FACE_H_
