// The scene runner: one line, one GDI call, with the same defaults, names and argument checks
// as the reference renderer, so that a scene file and the image it produced there can be
// replayed here pixel for pixel.
#include "tests/scene/scene_runner.h"

#include <cctype>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <initializer_list>
#include <map>
#include <sstream>
#include <utility>

#include "qvis/compat/win32_names.h"
#include "qvis/gdi/alpha.h"
#include "qvis/gdi/gdi.h"

namespace qvis::gdi {
namespace {

using Words = std::vector<std::string>;

// SceneError stops the run: the message is the text after "error: ".
struct SceneError {
  std::string message;
};

struct NamedValue {
  const char* name;
  long long value;
};

// Integers saturate to the 32-bit range, as a 32-bit strtol does.
bool ParseInteger(const std::string& s, long long* value) {
  if (s.empty()) return false;
  errno = 0;
  char* end = nullptr;
  long long v = std::strtoll(s.c_str(), &end, 0);
  if (*end != '\0') return false;
  if (errno == ERANGE || v > INT_MAX) v = v < 0 ? INT_MIN : INT_MAX;
  if (v < INT_MIN) v = INT_MIN;
  *value = v;
  return true;
}

int Num(const std::string& s) {
  long long v = 0;
  if (!ParseInteger(s, &v)) throw SceneError{"not a number: '" + s + "'"};
  return static_cast<int>(v);
}

double Real(const std::string& s) {
  char* end = nullptr;
  double v = std::strtod(s.c_str(), &end);
  if (s.empty() || *end != '\0') throw SceneError{"not a number: '" + s + "'"};
  return v;
}

// Scene colours are 0xRRGGBB; the engine takes COLORREF 0x00BBGGRR.
COLORREF Color(const std::string& s) {
  long long v = 0;
  if (!ParseInteger(s, &v) || v < 0 || v > 0xFFFFFF) {
    throw SceneError{"colour '" + s + "' is not 0xRRGGBB"};
  }
  return Rgb(static_cast<unsigned>(v >> 16), static_cast<unsigned>(v >> 8),
             static_cast<unsigned>(v));
}

std::uint32_t Argb(const std::string& s) {
  return static_cast<std::uint32_t>(std::strtoul(s.c_str(), nullptr, 0));
}

// Pick returns the value of a symbolic name from the table, or the number written.
long long Pick(const std::string& s, std::initializer_list<NamedValue> names) {
  for (const NamedValue& n : names) {
    if (s == n.name) return n.value;
  }
  long long v = 0;
  if (!ParseInteger(s, &v)) {
    std::string all;
    for (const NamedValue& n : names) {
      all += ' ';
      all += n.name;
    }
    throw SceneError{"unknown value '" + s + "' (one of:" + all + ", or a number)"};
  }
  return v;
}

const std::initializer_list<NamedValue> kFillModes = {{"alternate", ALTERNATE},
                                                      {"winding", WINDING}};
const std::initializer_list<NamedValue> kPenStyles = {
    {"solid", PS_SOLID}, {"dash", PS_DASH},         {"dot", PS_DOT},
    {"dashdot", PS_DASHDOT}, {"dashdotdot", PS_DASHDOTDOT}, {"null", PS_NULL},
    {"insideframe", PS_INSIDEFRAME}, {"alternate", PS_ALTERNATE}, {"user", PS_USERSTYLE}};
const std::initializer_list<NamedValue> kHatches = {
    {"horizontal", HS_HORIZONTAL}, {"vertical", HS_VERTICAL}, {"fdiagonal", HS_FDIAGONAL},
    {"bdiagonal", HS_BDIAGONAL},   {"cross", HS_CROSS},       {"diagcross", HS_DIAGCROSS}};

void Need(const Words& a, std::size_t lo, std::size_t hi, const char* usage) {
  if (a.size() - 1 < lo || a.size() - 1 > hi) throw SceneError{std::string("usage: ") + usage};
}

// Points reads x y x y ... from a[from] on.
std::vector<CPoint> Points(const Words& a, std::size_t from, std::size_t min_count,
                           const char* usage) {
  if (a.size() < from || (a.size() - from) % 2 != 0 || (a.size() - from) / 2 < min_count) {
    throw SceneError{std::string("usage: ") + usage};
  }
  std::vector<CPoint> points;
  for (std::size_t i = from; i < a.size(); i += 2) points.emplace_back(Num(a[i]), Num(a[i + 1]));
  return points;
}

Words SplitWords(const std::string& line) {
  Words out;
  if (!SplitSceneLine(line, &out)) throw SceneError{"unterminated quote"};
  return out;
}

class SceneRunner {
 public:
  SceneRunner(std::string_view name, SceneOutcome* outcome) : name_(name), out_(outcome) {}
  SceneRunner(const SceneRunner&) = delete;
  SceneRunner& operator=(const SceneRunner&) = delete;
  ~SceneRunner() { Release(); }

  void Run(std::string_view text) {
    std::size_t pos = 0;
    try {
      while (pos < text.size()) {
        std::size_t end = text.find('\n', pos);
        if (end == std::string_view::npos) end = text.size();
        std::string line(text.substr(pos, end - pos));
        pos = end + 1;
        ++line_;
        Words a = SplitWords(line);
        if (a.empty()) continue;
        if (canvas_ == nullptr && a[0] != "canvas") {
          throw SceneError{"the first command must be: canvas W H 0xRRGGBB"};
        }
        if (a[0] == "canvas") {
          if (canvas_ != nullptr) throw SceneError{"canvas given twice"};
          NewCanvas(a);
        } else {
          Command(a);
        }
      }
      if (canvas_ == nullptr) throw SceneError{"empty scene: no canvas line"};
      out_->ok = true;
    } catch (const SceneError& e) {
      out_->error = Prefix("error") + e.message;
    }
    if (canvas_ != nullptr) out_->final_image = Snapshot();
  }

 private:
  std::string Prefix(const char* kind) const {
    return std::string(name_) + ":" + std::to_string(line_) + ": " + kind + ": ";
  }
  void Note(const std::string& text) { out_->notes.push_back(Prefix("note") + text); }
  // Check notes a call that returned 0, as the reference renderer does.
  long long Check(long long result, const char* call) {
    if (result == 0) Note(std::string(call) + " returned 0");
    return result;
  }

  template <typename T>
  T Keep(T object) {
    if (object != nullptr) objects_.push_back(object);
    return object;
  }

  PixelImage Snapshot() const {
    PixelImage image;
    BitmapView view = BitmapPixels(canvas_bitmap_);
    if (view.bits == nullptr || view.bits_per_pixel != 32) return image;
    image.width = view.width;
    image.height = view.height;
    image.pixels.resize(static_cast<std::size_t>(view.width) * view.height);
    for (int y = 0; y < view.height; ++y) {
      const std::uint32_t* row = view.Row32(y);
      for (int x = 0; x < view.width; ++x) {
        image.pixels[static_cast<std::size_t>(y) * view.width + x] = row[x] & 0xFFFFFFu;
      }
    }
    return image;
  }

  void FillCanvas(std::uint32_t rgb) {
    BitmapView view = BitmapPixels(canvas_bitmap_);
    if (view.bits == nullptr || view.bits_per_pixel != 32) return;
    for (int y = 0; y < view.height; ++y) {
      std::uint32_t* row = view.Row32(y);
      for (int x = 0; x < view.width; ++x) row[x] = rgb & 0xFFFFFFu;
    }
  }

  void NewCanvas(const Words& a) {
    Need(a, 3, 3, "canvas W H 0xRRGGBB");
    int w = Num(a[1]);
    int h = Num(a[2]);
    if (w < 1 || h < 1 || w > 4096 || h > 4096) throw SceneError{"canvas size out of range"};
    long long bg = 0;
    if (!ParseInteger(a[3], &bg)) throw SceneError{"not a number: '" + a[3] + "'"};
    canvas_ = target_ = CreateCompatibleDC(nullptr);
    canvas_bitmap_ = CreateBitmap32(w, h);
    if (canvas_ == nullptr || canvas_bitmap_ == nullptr) {
      throw SceneError{"the engine could not create the canvas"};
    }
    SelectObject(canvas_, canvas_bitmap_);
    out_->background = static_cast<std::uint32_t>(bg) & 0xFFFFFFu;
    FillCanvas(out_->background);
  }

  HRGN Region(const std::string& name) {
    auto it = regions_.find(name);
    if (it == regions_.end()) throw SceneError{"no region named '" + name + "'"};
    return it->second;
  }
  void SetRegion(const std::string& name, HRGN region) {
    if (region == nullptr) Note("region '" + name + "' could not be created");
    auto it = regions_.find(name);
    if (it != regions_.end() && it->second != nullptr) DeleteObject(it->second);
    regions_[name] = region;
  }

  void NewSource(bool mono, int w, int h, COLORREF fill) {
    if (source_ != nullptr) throw SceneError{"the source DC exists already (one per scene)"};
    if (w < 1 || h < 1) {
      throw SceneError{"source size " + std::to_string(w) + "x" + std::to_string(h)};
    }
    source_ = CreateCompatibleDC(canvas_);
    HBITMAP bitmap = Keep(mono ? CreateBitmap(w, h, 1, 1, nullptr)
                               : CreateCompatibleBitmap(canvas_, w, h));
    if (source_ == nullptr || bitmap == nullptr) throw SceneError{"cannot create the source bitmap"};
    SelectObject(source_, bitmap);
    if (font_ != nullptr) SelectObject(source_, font_);
    HBRUSH brush = CreateSolidBrush(fill);
    CRect box(0, 0, w, h);
    FillRect(source_, &box, brush);
    DeleteObject(brush);
    source_w_ = w;
    source_h_ = h;
  }

  void Command(const Words& a);
  void StateCommand(const Words& a, HDC dc);
  bool DrawCommand(const Words& a, HDC dc);
  bool RegionCommand(const Words& a, HDC dc);
  bool TextOrBlitCommand(const Words& a, HDC dc);
  bool AlphaCommand(const Words& a, HDC dc);

  void Release() {
    for (auto& [name, region] : regions_) {
      if (region != nullptr) DeleteObject(region);
    }
    regions_.clear();
    if (source_ != nullptr) DeleteDC(source_);
    if (canvas_ != nullptr) DeleteDC(canvas_);
    source_ = canvas_ = target_ = nullptr;
    if (canvas_bitmap_ != nullptr) DeleteObject(canvas_bitmap_);
    canvas_bitmap_ = nullptr;
    for (HGDIOBJ object : objects_) DeleteObject(object);
    objects_.clear();
  }

  std::string_view name_;
  SceneOutcome* out_;
  int line_ = 0;
  HDC canvas_ = nullptr;
  HDC source_ = nullptr;
  HDC target_ = nullptr;
  HBITMAP canvas_bitmap_ = nullptr;
  HFONT font_ = nullptr;
  int source_w_ = 0;
  int source_h_ = 0;
  int save_count_ = 0;
  std::map<std::string, HRGN> regions_;
  std::vector<HGDIOBJ> objects_;  // pens, brushes, fonts and bitmaps, deleted at the end
};

void SceneRunner::Command(const Words& a) {
  const std::string& c = a[0];
  HDC dc = target_;
  if (c == "save") {
    Need(a, 0, 1, "save [NAME]");
    ++save_count_;
    std::string name = a.size() > 1 ? a[1] : std::to_string(save_count_);
    for (char ch : name) {
      if (!std::isalnum(static_cast<unsigned char>(ch)) && ch != '_' && ch != '-') {
        throw SceneError{"save name: letters, digits, _ and - only"};
      }
    }
    if (name == "final") throw SceneError{"'final' is reserved"};
    out_->checkpoints.push_back({name, Snapshot()});
  } else if (c == "clear") {
    Need(a, 1, 1, "clear 0xRRGGBB");
    FillCanvas(static_cast<std::uint32_t>(Num(a[1])));
  } else if (c == "target") {
    Need(a, 1, 1, "target canvas|src");
    if (a[1] == "canvas") {
      target_ = canvas_;
    } else if (a[1] == "src") {
      if (source_ == nullptr) throw SceneError{"no source DC yet (srcdc)"};
      target_ = source_;
    } else {
      throw SceneError{"target canvas|src"};
    }
  } else if (DrawCommand(a, dc) || RegionCommand(a, dc) || TextOrBlitCommand(a, dc) ||
             AlphaCommand(a, dc)) {
    // done
  } else {
    StateCommand(a, dc);
  }
}

void SceneRunner::StateCommand(const Words& a, HDC dc) {
  const std::string& c = a[0];
  if (c == "pen") {
    Need(a, 3, 3, "pen STYLE WIDTH 0xRRGGBB");
    int style = static_cast<int>(Pick(a[1], kPenStyles));
    HPEN pen = Keep(CreatePen(style, Num(a[2]), Color(a[3])));
    Check(pen != nullptr, "CreatePen");
    SelectObject(dc, pen);
  } else if (c == "extpen") {
    Need(a, 3, 8 + 17,
         "extpen STYLE WIDTH 0xRRGGBB [cap_round|cap_square|cap_flat] "
         "[join_round|join_bevel|join_miter] [cosmetic] [0xFLAGS] [style N...]");
    DWORD style = static_cast<DWORD>(Pick(a[1], kPenStyles));
    DWORD type = PS_GEOMETRIC;
    std::vector<DWORD> entries;  // a user style's on/off lengths, after the word "style"
    for (std::size_t i = 4; i < a.size(); ++i) {
      if (a[i] == "style") {
        for (++i; i < a.size(); ++i) entries.push_back(static_cast<DWORD>(Num(a[i])));
      } else if (a[i] == "cosmetic") {
        type = PS_COSMETIC;
      } else {
        style |= static_cast<DWORD>(Pick(a[i], {{"cap_round", PS_ENDCAP_ROUND},
                                                {"cap_square", PS_ENDCAP_SQUARE},
                                                {"cap_flat", PS_ENDCAP_FLAT},
                                                {"join_round", PS_JOIN_ROUND},
                                                {"join_bevel", PS_JOIN_BEVEL},
                                                {"join_miter", PS_JOIN_MITER}}));
      }
    }
    LOGBRUSH brush;
    brush.lbStyle = BS_SOLID;
    brush.lbColor = Color(a[3]);
    HPEN pen = Keep(ExtCreatePen(type | style, static_cast<DWORD>(Num(a[2])), &brush,
                                 static_cast<DWORD>(entries.size()), entries.empty() ? nullptr : entries.data()));
    Check(pen != nullptr, "ExtCreatePen");
    SelectObject(dc, pen);
  } else if (c == "brush") {
    HBRUSH brush = nullptr;
    if (a.size() == 3 && a[1] == "solid") {
      brush = Keep(CreateSolidBrush(Color(a[2])));
    } else if (a.size() == 4 && a[1] == "hatch") {
      brush = Keep(CreateHatchBrush(static_cast<int>(Pick(a[2], kHatches)), Color(a[3])));
    } else if (a.size() == 2 && (a[1] == "hollow" || a[1] == "null")) {
      brush = static_cast<HBRUSH>(GetStockObject(NULL_BRUSH));
    } else {
      throw SceneError{"usage: brush solid 0xRRGGBB | brush hatch N 0xRRGGBB | brush hollow"};
    }
    Check(brush != nullptr, "CreateBrush");
    SelectObject(dc, brush);
  } else if (c == "rop2") {
    Need(a, 1, 1, "rop2 N|NAME");
    Check(SetROP2(dc, static_cast<int>(Pick(
                          a[1], {{"black", 1},     {"notmergepen", 2}, {"masknotpen", 3},
                                 {"notcopypen", 4}, {"maskpennot", 5}, {"not", 6},
                                 {"xorpen", 7},    {"notmaskpen", 8}, {"maskpen", 9},
                                 {"notxorpen", 10}, {"nop", 11},       {"mergenotpen", 12},
                                 {"copypen", 13},  {"mergepennot", 14}, {"mergepen", 15},
                                 {"white", 16}}))),
          "SetROP2");
  } else if (c == "bkmode") {
    Need(a, 1, 1, "bkmode transparent|opaque");
    Check(SetBkMode(dc, static_cast<int>(Pick(a[1], {{"transparent", TRANSPARENT},
                                                      {"opaque", OPAQUE}}))),
          "SetBkMode");
  } else if (c == "bkcolor") {
    Need(a, 1, 1, "bkcolor 0xRRGGBB");
    SetBkColor(dc, Color(a[1]));
  } else if (c == "textcolor") {
    Need(a, 1, 1, "textcolor 0xRRGGBB");
    SetTextColor(dc, Color(a[1]));
  } else if (c == "fillmode") {
    Need(a, 1, 1, "fillmode alternate|winding");
    Check(SetPolyFillMode(dc, static_cast<int>(Pick(a[1], kFillModes))), "SetPolyFillMode");
  } else if (c == "arcdir") {
    Need(a, 1, 1, "arcdir ccw|cw (1|2)");
    Check(SetArcDirection(dc, static_cast<int>(Pick(a[1], {{"ccw", AD_COUNTERCLOCKWISE},
                                                           {"cw", AD_CLOCKWISE}}))),
          "SetArcDirection");
  } else if (c == "brushorg") {
    Need(a, 2, 2, "brushorg X Y");
    Check(SetBrushOrgEx(dc, Num(a[1]), Num(a[2]), nullptr), "SetBrushOrgEx");
  } else if (c == "miterlimit") {
    Need(a, 1, 1, "miterlimit F");
    Check(SetMiterLimit(dc, static_cast<float>(Real(a[1])), nullptr), "SetMiterLimit");
  } else if (c == "textcharextra") {
    Need(a, 1, 1, "textcharextra N");
    SetTextCharacterExtra(dc, Num(a[1]));
  } else if (c == "textalign") {
    Need(a, 1, 1, "textalign N");
    SetTextAlign(dc, static_cast<UINT>(Num(a[1])));
  } else if (c == "font") {
    Need(a, 4, 7, "font FACE HEIGHT ESCAPEMENT WEIGHT [italic] [underline] [strikeout]");
    LOGFONTA lf;
    lf.lfHeight = Num(a[2]);
    lf.lfEscapement = Num(a[3]);
    lf.lfWeight = Num(a[4]);
    for (std::size_t i = 5; i < a.size(); ++i) {
      if (a[i] == "italic") {
        lf.lfItalic = 1;
      } else if (a[i] == "underline") {
        lf.lfUnderline = 1;
      } else if (a[i] == "strikeout") {
        lf.lfStrikeOut = 1;
      } else {
        throw SceneError{"font flag '" + a[i] + "'"};
      }
    }
    lf.lfCharSet = ANSI_CHARSET;
    lf.lfOutPrecision = OUT_TT_ONLY_PRECIS;
    lf.lfQuality = DRAFT_QUALITY;
    std::strncpy(lf.lfFaceName, a[1].c_str(), kFaceNameSize - 1);
    font_ = Keep(CreateFontIndirectA(&lf));
    Check(font_ != nullptr, "CreateFontIndirectA");
    SelectObject(dc, font_);
  } else if (c == "beginpath") {
    Need(a, 0, 0, "beginpath");
    Check(BeginPath(dc), "BeginPath");
  } else if (c == "endpath") {
    Need(a, 0, 0, "endpath");
    Check(EndPath(dc), "EndPath");
  } else if (c == "closefigure") {
    Need(a, 0, 0, "closefigure");
    Check(CloseFigure(dc), "CloseFigure");
  } else if (c == "abortpath") {
    Need(a, 0, 0, "abortpath");
    Check(AbortPath(dc), "AbortPath");
  } else if (c == "strokepath") {
    Need(a, 0, 0, "strokepath");
    Check(StrokePath(dc), "StrokePath");
  } else if (c == "fillpath") {
    Need(a, 0, 0, "fillpath");
    Check(FillPath(dc), "FillPath");
  } else if (c == "strokeandfillpath") {
    Need(a, 0, 0, "strokeandfillpath");
    Check(StrokeAndFillPath(dc), "StrokeAndFillPath");
  } else {
    throw SceneError{"unknown command '" + c + "'"};
  }
}

bool SceneRunner::DrawCommand(const Words& a, HDC dc) {
  const std::string& c = a[0];
  if (c == "moveto") {
    Need(a, 2, 2, "moveto X Y");
    Check(MoveToEx(dc, Num(a[1]), Num(a[2]), nullptr), "MoveToEx");
  } else if (c == "lineto") {
    Need(a, 2, 2, "lineto X Y");
    Check(LineTo(dc, Num(a[1]), Num(a[2])), "LineTo");
  } else if (c == "line") {
    Need(a, 4, 4, "line X1 Y1 X2 Y2");
    MoveToEx(dc, Num(a[1]), Num(a[2]), nullptr);
    Check(LineTo(dc, Num(a[3]), Num(a[4])), "LineTo");
  } else if (c == "polyline" || c == "polylineto") {
    std::vector<CPoint> p = Points(a, 1, 1, "polyline X Y X Y ...");
    if (c == "polyline") {
      Check(Polyline(dc, p.data(), static_cast<int>(p.size())), "Polyline");
    } else {
      Check(PolylineTo(dc, p.data(), static_cast<DWORD>(p.size())), "PolylineTo");
    }
  } else if (c == "polygon") {
    std::vector<CPoint> p = Points(a, 2, 1, "polygon alternate|winding X Y X Y ...");
    SetPolyFillMode(dc, static_cast<int>(Pick(a[1], kFillModes)));
    Check(Polygon(dc, p.data(), static_cast<int>(p.size())), "Polygon");
  } else if (c == "polypolygon") {
    const char* usage = "polypolygon alternate|winding N1,N2,... X Y X Y ...";
    if (a.size() < 3) throw SceneError{std::string("usage: ") + usage};
    std::vector<int> counts;
    long long total = 0;
    for (std::size_t s = 0; s <= a[2].size();) {
      std::size_t e = a[2].find(',', s);
      if (e == std::string::npos) e = a[2].size();
      counts.push_back(Num(a[2].substr(s, e - s)));
      total += counts.back();
      s = e + 1;
    }
    std::vector<CPoint> p = Points(a, 3, 1, usage);
    if (static_cast<long long>(p.size()) != total) {
      throw SceneError{"polypolygon: counts add up to " + std::to_string(total) + ", " +
                       std::to_string(p.size()) + " points given"};
    }
    SetPolyFillMode(dc, static_cast<int>(Pick(a[1], kFillModes)));
    Check(PolyPolygon(dc, p.data(), counts.data(), static_cast<int>(counts.size())),
          "PolyPolygon");
  } else if (c == "rectangle" || c == "ellipse") {
    Need(a, 4, 4, "rectangle|ellipse L T R B");
    int l = Num(a[1]), t = Num(a[2]), r = Num(a[3]), b = Num(a[4]);
    if (c == "rectangle") {
      Check(Rectangle(dc, l, t, r, b), "Rectangle");
    } else {
      Check(Ellipse(dc, l, t, r, b), "Ellipse");
    }
  } else if (c == "roundrect") {
    Need(a, 6, 6, "roundrect L T R B W H");
    Check(RoundRect(dc, Num(a[1]), Num(a[2]), Num(a[3]), Num(a[4]), Num(a[5]), Num(a[6])),
          "RoundRect");
  } else if (c == "arc" || c == "arcto" || c == "pie" || c == "chord") {
    Need(a, 8, 8, "arc|arcto|pie|chord L T R B XS YS XE YE");
    int v[8];
    for (int i = 0; i < 8; ++i) v[i] = Num(a[i + 1]);
    BOOL (*f)(HDC, int, int, int, int, int, int, int, int) =
        c == "arc" ? Arc : c == "arcto" ? ArcTo : c == "pie" ? Pie : Chord;
    Check(f(dc, v[0], v[1], v[2], v[3], v[4], v[5], v[6], v[7]), c.c_str());
  } else if (c == "setpixel") {
    Need(a, 3, 3, "setpixel X Y 0xRRGGBB");
    if (SetPixel(dc, Num(a[1]), Num(a[2]), Color(a[3])) == kClrInvalid) {
      Note("SetPixel returned -1");
    }
  } else if (c == "fillrect") {
    Need(a, 5, 5, "fillrect L T R B 0xRRGGBB");
    CRect r(Num(a[1]), Num(a[2]), Num(a[3]), Num(a[4]));
    HBRUSH brush = CreateSolidBrush(Color(a[5]));
    Check(FillRect(dc, &r, brush), "FillRect");
    DeleteObject(brush);
  } else if (c == "patblt") {
    Need(a, 5, 5, "patblt X Y W H ROP");
    DWORD rop = static_cast<DWORD>(Pick(a[5], {{"patcopy", PATCOPY},
                                               {"patinvert", PATINVERT},
                                               {"dstinvert", DSTINVERT},
                                               {"blackness", BLACKNESS},
                                               {"whiteness", WHITENESS}}));
    Check(PatBlt(dc, Num(a[1]), Num(a[2]), Num(a[3]), Num(a[4]), rop), "PatBlt");
  } else {
    return false;
  }
  return true;
}

bool SceneRunner::RegionCommand(const Words& a, HDC dc) {
  const std::string& c = a[0];
  if (c == "rgn_rect" || c == "rgn_ellipse") {
    Need(a, 5, 5, "rgn_rect|rgn_ellipse NAME L T R B");
    int l = Num(a[2]), t = Num(a[3]), r = Num(a[4]), b = Num(a[5]);
    SetRegion(a[1], c == "rgn_rect" ? CreateRectRgn(l, t, r, b) : CreateEllipticRgn(l, t, r, b));
  } else if (c == "rgn_polygon") {
    if (a.size() < 3) throw SceneError{"usage: rgn_polygon NAME alternate|winding X Y ..."};
    std::vector<CPoint> p = Points(a, 3, 1, "rgn_polygon NAME alternate|winding X Y ...");
    SetRegion(a[1], CreatePolygonRgn(p.data(), static_cast<int>(p.size()),
                                     static_cast<int>(Pick(a[2], kFillModes))));
  } else if (c == "combine") {
    Need(a, 4, 4, "combine DST A B and|or|xor|diff|copy");
    int mode = static_cast<int>(Pick(a[4], {{"and", RGN_AND},
                                            {"or", RGN_OR},
                                            {"xor", RGN_XOR},
                                            {"diff", RGN_DIFF},
                                            {"copy", RGN_COPY}}));
    if (regions_.count(a[1]) == 0) regions_[a[1]] = CreateRectRgn(0, 0, 0, 0);
    HRGN b = mode == RGN_COPY ? nullptr : Region(a[3]);
    int result = CombineRgn(Region(a[1]), Region(a[2]), b, mode);
    if (result == kRegionError) {
      Note("CombineRgn returned ERROR");
    } else if (result == kNullRegion) {
      Note("CombineRgn made an empty region");
    }
  } else if (c == "fillrgn") {
    HBRUSH brush = nullptr;
    if (a.size() == 3) {
      brush = CreateSolidBrush(Color(a[2]));
    } else if (a.size() == 5 && a[2] == "hatch") {
      brush = CreateHatchBrush(static_cast<int>(Pick(a[3], kHatches)), Color(a[4]));
    } else {
      throw SceneError{"usage: fillrgn NAME 0xRRGGBB | fillrgn NAME hatch N 0xRRGGBB"};
    }
    Check(FillRgn(dc, Region(a[1]), brush), "FillRgn");
    DeleteObject(brush);
  } else if (c == "framergn") {
    Need(a, 4, 4, "framergn NAME 0xRRGGBB W H");
    HBRUSH brush = CreateSolidBrush(Color(a[2]));
    Check(FrameRgn(dc, Region(a[1]), brush, Num(a[3]), Num(a[4])), "FrameRgn");
    DeleteObject(brush);
  } else if (c == "paintrgn") {
    Need(a, 1, 1, "paintrgn NAME");
    Check(PaintRgn(dc, Region(a[1])), "PaintRgn");
  } else if (c == "invertrgn") {
    Need(a, 1, 1, "invertrgn NAME");
    Check(InvertRgn(dc, Region(a[1])), "InvertRgn");
  } else if (c == "cliprgn") {
    Need(a, 1, 1, "cliprgn NAME|none");
    SelectClipRgn(dc, a[1] == "none" ? nullptr : Region(a[1]));
  } else {
    return false;
  }
  return true;
}

bool SceneRunner::TextOrBlitCommand(const Words& a, HDC dc) {
  const std::string& c = a[0];
  if (c == "textout") {
    Need(a, 3, 3, "textout X Y \"TEXT\"");
    Check(TextOutA(dc, Num(a[1]), Num(a[2]), a[3].c_str(), static_cast<int>(a[3].size())),
          "TextOutA");
  } else if (c == "exttextout") {
    // exttextout X Y OPTIONS RECT "TEXT" [DX ...]: OPTIONS is 0, opaque, clipped or
    // opaque+clipped (or a number); RECT is L,T,R,B or - for none; the DX give every advance.
    const char* usage = "exttextout X Y OPTIONS L,T,R,B|- \"TEXT\" [DX ...]";
    if (a.size() < 6) throw SceneError{usage};
    UINT options = 0;
    for (std::size_t s = 0; s <= a[3].size();) {
      std::size_t e = a[3].find('+', s);
      if (e == std::string::npos) e = a[3].size();
      options |= static_cast<UINT>(
          Pick(a[3].substr(s, e - s), {{"opaque", ETO_OPAQUE}, {"clipped", ETO_CLIPPED}}));
      s = e + 1;
    }
    CRect box;
    const CRect* rect = nullptr;
    if (a[4] != "-") {
      int v[4];
      std::size_t s = 0;
      for (int k = 0; k < 4; ++k) {
        std::size_t e = a[4].find(',', s);
        if ((e == std::string::npos) != (k == 3)) throw SceneError{usage};
        v[k] = Num(a[4].substr(s, e == std::string::npos ? std::string::npos : e - s));
        s = e + 1;
      }
      box = CRect(v[0], v[1], v[2], v[3]);
      rect = &box;
    }
    const std::string& text = a[5];
    std::vector<int> dx;
    for (std::size_t i = 6; i < a.size(); ++i) dx.push_back(Num(a[i]));
    if (!dx.empty() && dx.size() != text.size()) throw SceneError{"one DX per character"};
    Check(ExtTextOutA(dc, Num(a[1]), Num(a[2]), options, rect, text.c_str(),
                      static_cast<UINT>(text.size()), dx.empty() ? nullptr : dx.data()),
          "ExtTextOutA");
  } else if (c == "srcdc") {
    Need(a, 4, 4, "srcdc mono|color W H 0xRRGGBB");
    if (a[1] != "mono" && a[1] != "color") throw SceneError{"srcdc mono|color W H 0xRRGGBB"};
    NewSource(a[1] == "mono", Num(a[2]), Num(a[3]), Color(a[4]));
  } else if (c == "srcdc_text") {
    Need(a, 3, 3, "srcdc_text mono|color 0xRRGGBB \"TEXT\"");
    if (a[1] != "mono" && a[1] != "color") {
      throw SceneError{"srcdc_text mono|color 0xRRGGBB \"TEXT\""};
    }
    CSize size;
    Check(GetTextExtentPoint32A(canvas_, a[3].c_str(), static_cast<int>(a[3].size()), &size),
          "GetTextExtentPoint32A");
    Note("text extent of \"" + a[3] + "\": " + std::to_string(size.cx) + " x " +
         std::to_string(size.cy));
    NewSource(a[1] == "mono", size.cx, size.cy, Color(a[2]));
  } else if (c == "bitblt") {
    Need(a, 7, 7, "bitblt X Y W H SX SY ROP");
    if (source_ == nullptr) throw SceneError{"no source DC (srcdc)"};
    DWORD rop = static_cast<DWORD>(Pick(
        a[7], {{"srccopy", SRCCOPY},     {"srcpaint", SRCPAINT},     {"srcand", SRCAND},
               {"srcinvert", SRCINVERT}, {"srcerase", SRCERASE},     {"notsrccopy", NOTSRCCOPY},
               {"notsrcerase", NOTSRCERASE}, {"mergecopy", MERGECOPY}, {"mergepaint", MERGEPAINT},
               {"patcopy", PATCOPY},     {"patpaint", PATPAINT},     {"patinvert", PATINVERT},
               {"dstinvert", DSTINVERT}, {"blackness", BLACKNESS},   {"whiteness", WHITENESS}}));
    Check(BitBlt(canvas_, Num(a[1]), Num(a[2]), Num(a[3]), Num(a[4]), source_, Num(a[5]),
                 Num(a[6]), rop),
          "BitBlt");
  } else if (c == "bitblt_srcinvert") {
    Need(a, 2, 2, "bitblt_srcinvert X Y");
    if (source_ == nullptr) throw SceneError{"no source DC (srcdc)"};
    Check(BitBlt(canvas_, Num(a[1]), Num(a[2]), source_w_, source_h_, source_, 0, 0, SRCINVERT),
          "BitBlt");
  } else {
    (void)dc;
    return false;
  }
  return true;
}

// The translucent primitives, each with its own pen or fill, round caps and joins.
bool SceneRunner::AlphaCommand(const Words& a, HDC dc) {
  const std::string& c = a[0];
  if (c == "gp_smoothing") {
    Need(a, 1, 1, "gp_smoothing N");
    // Anti-aliasing is never drawn; any mode other than none-set is reported.
    if (Num(a[1]) > 2) Note("smoothing mode " + a[1] + " is drawn without anti-aliasing");
  } else if (c == "gp_drawline") {
    Need(a, 6, 6, "gp_drawline 0xAARRGGBB WIDTH X1 Y1 X2 Y2");
    Check(GpDrawLine(dc, Argb(a[1]), static_cast<float>(Real(a[2])), Num(a[3]), Num(a[4]),
                     Num(a[5]), Num(a[6])),
          "GdipDrawLineI");
  } else if (c == "gp_drawellipse") {
    Need(a, 6, 6, "gp_drawellipse 0xAARRGGBB WIDTH X Y W H");
    Check(GpDrawEllipse(dc, Argb(a[1]), static_cast<float>(Real(a[2])), Num(a[3]), Num(a[4]),
                        Num(a[5]), Num(a[6])),
          "GdipDrawEllipseI");
  } else if (c == "gp_drawarc" || c == "gp_drawpie") {
    Need(a, 8, 8, "gp_drawarc|gp_drawpie 0xAARRGGBB WIDTH X Y W H START SWEEP");
    auto* draw = c == "gp_drawarc" ? GpDrawArc : GpDrawPie;
    Check(draw(dc, Argb(a[1]), static_cast<float>(Real(a[2])), Num(a[3]), Num(a[4]), Num(a[5]),
               Num(a[6]), static_cast<float>(Real(a[7])), static_cast<float>(Real(a[8]))),
          c.c_str());
  } else if (c == "gp_fillpolygon") {
    std::vector<CPoint> p = Points(a, 2, 1, "gp_fillpolygon 0xAARRGGBB X Y X Y ...");
    Check(GpFillPolygon(dc, p.data(), static_cast<int>(p.size()), Argb(a[1])), "GdipFillPolygonI");
  } else if (c == "gp_fillrect") {
    Need(a, 5, 5, "gp_fillrect 0xAARRGGBB X Y W H");
    Check(GpFillRect(dc, Num(a[2]), Num(a[3]), Num(a[4]), Num(a[5]), Argb(a[1])),
          "GdipFillRectangleI");
  } else if (c == "gp_fillrgn") {
    Need(a, 2, 2, "gp_fillrgn 0xAARRGGBB NAME");
    Check(GpFillRegion(dc, Region(a[2]), Argb(a[1])), "GdipFillRegion");
  } else {
    return false;
  }
  return true;
}

}  // namespace

bool SplitSceneLine(std::string_view line, std::vector<std::string>* words) {
  words->clear();
  std::size_t i = 0;
  const std::size_t n = line.size();
  while (i < n) {
    while (i < n && std::isspace(static_cast<unsigned char>(line[i]))) ++i;
    if (i >= n || line[i] == '#') break;
    std::string w;
    if (line[i] == '"') {
      const std::size_t j = line.find('"', i + 1);
      if (j == std::string_view::npos) return false;
      w = line.substr(i + 1, j - i - 1);
      i = j + 1;
    } else {
      while (i < n && !std::isspace(static_cast<unsigned char>(line[i]))) w += line[i++];
    }
    words->push_back(std::move(w));
  }
  return true;
}

SceneOutcome RunScene(std::string_view text, std::string_view name) {
  SceneOutcome outcome;
  SceneRunner runner(name, &outcome);
  runner.Run(text);
  return outcome;
}

SceneOutcome RunSceneFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  if (!in) {
    SceneOutcome outcome;
    outcome.error = path + ": cannot open";
    return outcome;
  }
  std::ostringstream text;
  text << in.rdbuf();
  std::string name = path;
  std::size_t slash = name.find_last_of('/');
  if (slash != std::string::npos) name = name.substr(slash + 1);
  return RunScene(text.str(), name);
}

}  // namespace qvis::gdi
