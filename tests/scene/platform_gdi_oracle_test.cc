// The platform's own GDI as an oracle (Windows build only). Every golden scene whose rule is
// exact (tests/golden/<area>/<scene>.txt without a budget) is drawn twice in the same process:
// by the engine through the scene runner, and by the system's gdi32 (and GDI+ for the gp_*
// commands) into a 32-bpp top-down DIB section of the same size. The final canvas and every
// `save` checkpoint must agree pixel for pixel. Unlike the golden fixtures, which were rendered
// once and committed, this compares against the GDI of the machine that runs the test, so a
// rule that drifts from the platform shows up even where no fixture covers it yet.
// Text scenes are compared too, every one of them exactly: on this platform the engine takes its
// glyph bitmaps from the same GDI, so any difference is in where the engine puts them (baseline,
// advances, alignment, escapement, clipping, background). The platform's font is asked for in
// black and white, as the engine draws it.
// Scenes are found by listing tests/golden, so new scenes join without a change here.
#ifdef _WIN32

#include <windows.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <map>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "qvis/gdi/png_io.h"
#include "tests/scene/golden_compare.h"
#include "tests/scene/scene_runner.h"

// The GDI+ flat API: only the calls the scenes use. MinGW's import library provides them.
extern "C" {
struct GpStartupInput {
  UINT32 version;
  void* debug_callback;
  BOOL no_background_thread;
  BOOL no_codecs;
};
typedef void GpGraphics;
typedef void GpPen;
typedef void GpBrush;
typedef void GpRegion;
int WINAPI GdiplusStartup(ULONG_PTR*, const GpStartupInput*, void*);
void WINAPI GdiplusShutdown(ULONG_PTR);
int WINAPI GdipCreateFromHDC(HDC, GpGraphics**);
int WINAPI GdipDeleteGraphics(GpGraphics*);
int WINAPI GdipSetSmoothingMode(GpGraphics*, int);
int WINAPI GdipCreatePen1(UINT32, float, int, GpPen**);
int WINAPI GdipSetPenLineCap197819(GpPen*, int, int, int);
int WINAPI GdipSetPenLineJoin(GpPen*, int);
int WINAPI GdipDeletePen(GpPen*);
int WINAPI GdipCreateSolidFill(UINT32, GpBrush**);
int WINAPI GdipDeleteBrush(GpBrush*);
int WINAPI GdipDrawLineI(GpGraphics*, GpPen*, INT, INT, INT, INT);
int WINAPI GdipDrawEllipseI(GpGraphics*, GpPen*, INT, INT, INT, INT);
int WINAPI GdipDrawArcI(GpGraphics*, GpPen*, INT, INT, INT, INT, float, float);
int WINAPI GdipDrawPieI(GpGraphics*, GpPen*, INT, INT, INT, INT, float, float);
int WINAPI GdipFillPolygonI(GpGraphics*, GpBrush*, const POINT*, INT, int);
int WINAPI GdipFillRectangleI(GpGraphics*, GpBrush*, INT, INT, INT, INT);
int WINAPI GdipCreateRegionHrgn(HRGN, GpRegion**);
int WINAPI GdipFillRegion(GpGraphics*, GpBrush*, GpRegion*);
int WINAPI GdipDeleteRegion(GpRegion*);
}

namespace qvis::gdi {
namespace {

namespace fs = std::filesystem;
using Words = std::vector<std::string>;

struct Named {
  const char* name;
  long value;
};

// PlatformScene draws a scene with the system's GDI. It reads the same language as the scene
// runner; a line it cannot run throws std::runtime_error with "LINE: reason".
class PlatformScene {
 public:
  PlatformScene() = default;
  PlatformScene(const PlatformScene&) = delete;
  PlatformScene& operator=(const PlatformScene&) = delete;
  ~PlatformScene() {
    for (auto& entry : regions_) DeleteObject(entry.second);
    for (HGDIOBJ object : objects_) DeleteObject(object);
    if (src_ != nullptr) DeleteDC(src_);
    if (canvas_ != nullptr) DeleteDC(canvas_);
    if (canvas_bitmap_ != nullptr) DeleteObject(canvas_bitmap_);
    if (src_bitmap_ != nullptr) DeleteObject(src_bitmap_);
  }

  void Run(const std::string& text) {
    std::istringstream in(text);
    std::string line;
    while (std::getline(in, line)) {
      ++line_;
      Words w = Split(line);
      if (w.empty()) continue;
      if (canvas_ == nullptr && w[0] != "canvas") Fail("the first command must be canvas");
      if (w[0] == "canvas") {
        NewCanvas(w);
      } else {
        Command(w);
      }
    }
    if (canvas_ == nullptr) Fail("no canvas line");
    final_image = Snapshot();
  }

  PixelImage final_image;
  std::vector<SceneCheckpoint> checkpoints;

 private:
  [[noreturn]] void Fail(const std::string& why) const {
    throw std::runtime_error("line " + std::to_string(line_) + ": " + why);
  }

  Words Split(const std::string& line) const {
    Words out;
    if (!SplitSceneLine(line, &out)) Fail("unterminated quote");
    return out;
  }

  // Numbers saturate to 32 bits, as in the scene runner.
  long Num(const std::string& s) const {
    char* end = nullptr;
    const long long v = std::strtoll(s.c_str(), &end, 0);
    if (s.empty() || *end != '\0') Fail("not a number: " + s);
    return static_cast<long>(std::clamp<long long>(v, INT32_MIN, INT32_MAX));
  }
  double Real(const std::string& s) const {
    char* end = nullptr;
    const double v = std::strtod(s.c_str(), &end);
    if (s.empty() || *end != '\0') Fail("not a number: " + s);
    return v;
  }
  // Scene colours are 0xRRGGBB; a COLORREF is 0x00BBGGRR.
  COLORREF Color(const std::string& s) const {
    const unsigned long v = static_cast<unsigned long>(Num(s));
    return RGB((v >> 16) & 255, (v >> 8) & 255, v & 255);
  }
  static UINT32 Argb(const std::string& s) {
    return static_cast<UINT32>(std::strtoul(s.c_str(), nullptr, 0));
  }
  long Pick(const std::string& s, std::initializer_list<Named> names) const {
    for (const Named& n : names) {
      if (s == n.name) return n.value;
    }
    return Num(s);
  }
  void Need(const Words& w, std::size_t lo, std::size_t hi) const {
    if (w.size() - 1 < lo || w.size() - 1 > hi) Fail("wrong number of arguments to " + w[0]);
  }
  std::vector<POINT> Points(const Words& w, std::size_t from) const {
    if (w.size() < from || (w.size() - from) % 2 != 0) Fail("odd coordinate list");
    std::vector<POINT> p;
    for (std::size_t i = from; i < w.size(); i += 2) p.push_back({Num(w[i]), Num(w[i + 1])});
    return p;
  }
  HRGN Region(const std::string& name) const {
    auto it = regions_.find(name);
    if (it == regions_.end()) Fail("no region named " + name);
    return it->second;
  }
  void SetRegion(const std::string& name, HRGN r) {
    auto it = regions_.find(name);
    if (it != regions_.end()) DeleteObject(it->second);
    regions_[name] = r;
  }
  // Objects made for selection live until the scene ends (a selected object must not be
  // deleted), which is short.
  template <typename T>
  T Keep(T object) {
    if (object != nullptr) objects_.push_back(object);
    return object;
  }

  static const std::initializer_list<Named>& FillModes() {
    static const std::initializer_list<Named> k = {{"alternate", ALTERNATE}, {"winding", WINDING}};
    return k;
  }
  static const std::initializer_list<Named>& PenStyles() {
    static const std::initializer_list<Named> k = {
        {"solid", PS_SOLID}, {"dash", PS_DASH}, {"dot", PS_DOT}, {"dashdot", PS_DASHDOT},
        {"dashdotdot", PS_DASHDOTDOT}, {"null", PS_NULL}, {"insideframe", PS_INSIDEFRAME},
        {"alternate", PS_ALTERNATE}, {"user", PS_USERSTYLE}};
    return k;
  }
  static const std::initializer_list<Named>& Hatches() {
    static const std::initializer_list<Named> k = {
        {"horizontal", HS_HORIZONTAL}, {"vertical", HS_VERTICAL}, {"fdiagonal", HS_FDIAGONAL},
        {"bdiagonal", HS_BDIAGONAL}, {"cross", HS_CROSS}, {"diagcross", HS_DIAGCROSS}};
    return k;
  }

  PixelImage Snapshot() const {
    GdiFlush();
    PixelImage image;
    image.width = width_;
    image.height = height_;
    image.pixels.resize(static_cast<std::size_t>(width_) * static_cast<std::size_t>(height_));
    for (std::size_t i = 0; i < image.pixels.size(); ++i) image.pixels[i] = bits_[i] & 0xFFFFFFu;
    return image;
  }

  void NewCanvas(const Words& w) {
    Need(w, 3, 3);
    if (canvas_ != nullptr) Fail("canvas given twice");
    width_ = static_cast<int>(Num(w[1]));
    height_ = static_cast<int>(Num(w[2]));
    if (width_ < 1 || height_ < 1 || width_ > 4096 || height_ > 4096) Fail("canvas size");
    background_ = static_cast<std::uint32_t>(Num(w[3])) & 0xFFFFFFu;
    BITMAPINFO bi = {};
    bi.bmiHeader.biSize = sizeof(BITMAPINFOHEADER);
    bi.bmiHeader.biWidth = width_;
    bi.bmiHeader.biHeight = -height_;  // top-down, like the engine's rows
    bi.bmiHeader.biPlanes = 1;
    bi.bmiHeader.biBitCount = 32;
    bi.bmiHeader.biCompression = BI_RGB;
    canvas_ = dc_ = CreateCompatibleDC(nullptr);
    void* bits = nullptr;
    canvas_bitmap_ = CreateDIBSection(canvas_, &bi, DIB_RGB_COLORS, &bits, nullptr, 0);
    if (canvas_bitmap_ == nullptr) Fail("CreateDIBSection failed");
    bits_ = static_cast<DWORD*>(bits);
    SelectObject(canvas_, canvas_bitmap_);
    Clear(background_);
  }

  void Clear(std::uint32_t rgb) {
    GdiFlush();
    std::fill(bits_, bits_ + static_cast<std::size_t>(width_) * height_, static_cast<DWORD>(rgb));
  }

  void NewSource(bool mono, int w, int h, COLORREF fill) {
    if (src_ != nullptr) Fail("one source DC per scene");
    if (w < 1 || h < 1) Fail("source size");
    src_ = CreateCompatibleDC(canvas_);
    src_bitmap_ = mono ? CreateBitmap(w, h, 1, 1, nullptr) : CreateCompatibleBitmap(canvas_, w, h);
    if (src_bitmap_ == nullptr) Fail("cannot create the source bitmap");
    SelectObject(src_, src_bitmap_);
    if (font_ != nullptr) SelectObject(src_, font_);
    HBRUSH b = CreateSolidBrush(fill);
    RECT r = {0, 0, w, h};
    FillRect(src_, &r, b);
    DeleteObject(b);
    src_w_ = w;
    src_h_ = h;
  }

  // GDI+ drawing: each command makes and drops its own graphics object, as the oracle does.
  struct Gp {
    GpGraphics* g = nullptr;
    Gp(HDC dc, int smoothing) {
      GdipCreateFromHDC(dc, &g);
      if (smoothing >= 0 && g != nullptr) GdipSetSmoothingMode(g, smoothing);
    }
    ~Gp() {
      if (g != nullptr) GdipDeleteGraphics(g);
    }
  };
  GpPen* GpMakePen(const std::string& c, const std::string& w) const {
    GpPen* p = nullptr;
    GdipCreatePen1(Argb(c), static_cast<float>(Real(w)), 0, &p);
    GdipSetPenLineCap197819(p, 2, 2, 2);  // round caps
    GdipSetPenLineJoin(p, 2);             // round joins
    return p;
  }

  void Command(const Words& a) {
    const std::string& c = a[0];
    HDC dc = dc_;
    if (c == "save") {
      Need(a, 0, 1);
      ++saves_;
      checkpoints.push_back({a.size() > 1 ? a[1] : std::to_string(saves_), Snapshot()});
    } else if (c == "clear") {
      Need(a, 1, 1);
      Clear(static_cast<std::uint32_t>(Num(a[1])) & 0xFFFFFFu);
    } else if (c == "target") {
      Need(a, 1, 1);
      if (a[1] == "canvas") {
        dc_ = canvas_;
      } else if (a[1] == "src" && src_ != nullptr) {
        dc_ = src_;
      } else {
        Fail("target canvas|src");
      }
    } else if (c == "pen") {
      Need(a, 3, 3);
      SelectObject(dc, Keep(CreatePen(static_cast<int>(Pick(a[1], PenStyles())),
                                      static_cast<int>(Num(a[2])), Color(a[3]))));
    } else if (c == "extpen") {
      Need(a, 3, 8 + 17);
      DWORD style = static_cast<DWORD>(Pick(a[1], PenStyles()));
      DWORD type = PS_GEOMETRIC;
      std::vector<DWORD> entries;
      for (std::size_t i = 4; i < a.size(); ++i) {
        if (a[i] == "style") {
          for (++i; i < a.size(); ++i) entries.push_back(static_cast<DWORD>(Num(a[i])));
        } else if (a[i] == "cosmetic") {
          type = PS_COSMETIC;
        } else {
          style |= static_cast<DWORD>(
              Pick(a[i], {{"cap_round", PS_ENDCAP_ROUND}, {"cap_square", PS_ENDCAP_SQUARE},
                          {"cap_flat", PS_ENDCAP_FLAT}, {"join_round", PS_JOIN_ROUND},
                          {"join_bevel", PS_JOIN_BEVEL}, {"join_miter", PS_JOIN_MITER}}));
        }
      }
      LOGBRUSH lb = {BS_SOLID, Color(a[3]), 0};
      HPEN pen = Keep(ExtCreatePen(type | style, static_cast<DWORD>(Num(a[2])), &lb,
                                   static_cast<DWORD>(entries.size()), entries.empty() ? nullptr : entries.data()));
      if (pen == nullptr) Fail("ExtCreatePen refused the pen");
      SelectObject(dc, pen);
    } else if (c == "brush") {
      HBRUSH b = nullptr;
      if (a.size() == 3 && a[1] == "solid") {
        b = Keep(CreateSolidBrush(Color(a[2])));
      } else if (a.size() == 4 && a[1] == "hatch") {
        b = Keep(CreateHatchBrush(static_cast<int>(Pick(a[2], Hatches())), Color(a[3])));
      } else if (a.size() == 2 && (a[1] == "hollow" || a[1] == "null")) {
        b = static_cast<HBRUSH>(GetStockObject(NULL_BRUSH));
      } else {
        Fail("brush solid C | brush hatch N C | brush hollow");
      }
      SelectObject(dc, b);
    } else if (c == "rop2") {
      Need(a, 1, 1);
      SetROP2(dc, static_cast<int>(Pick(
                      a[1], {{"black", 1}, {"notmergepen", 2}, {"masknotpen", 3}, {"notcopypen", 4},
                             {"maskpennot", 5}, {"not", 6}, {"xorpen", 7}, {"notmaskpen", 8},
                             {"maskpen", 9}, {"notxorpen", 10}, {"nop", 11}, {"mergenotpen", 12},
                             {"copypen", 13}, {"mergepennot", 14}, {"mergepen", 15}, {"white", 16}})));
    } else if (c == "bkmode") {
      Need(a, 1, 1);
      SetBkMode(dc, static_cast<int>(Pick(a[1], {{"transparent", TRANSPARENT}, {"opaque", OPAQUE}})));
    } else if (c == "bkcolor") {
      Need(a, 1, 1);
      SetBkColor(dc, Color(a[1]));
    } else if (c == "textcolor") {
      Need(a, 1, 1);
      SetTextColor(dc, Color(a[1]));
    } else if (c == "fillmode") {
      Need(a, 1, 1);
      SetPolyFillMode(dc, static_cast<int>(Pick(a[1], FillModes())));
    } else if (c == "arcdir") {
      Need(a, 1, 1);
      SetArcDirection(dc, static_cast<int>(
                              Pick(a[1], {{"ccw", AD_COUNTERCLOCKWISE}, {"cw", AD_CLOCKWISE}})));
    } else if (c == "brushorg") {
      Need(a, 2, 2);
      SetBrushOrgEx(dc, static_cast<int>(Num(a[1])), static_cast<int>(Num(a[2])), nullptr);
    } else if (c == "miterlimit") {
      Need(a, 1, 1);
      SetMiterLimit(dc, static_cast<float>(Real(a[1])), nullptr);
    } else if (c == "moveto") {
      Need(a, 2, 2);
      MoveToEx(dc, static_cast<int>(Num(a[1])), static_cast<int>(Num(a[2])), nullptr);
    } else if (c == "lineto") {
      Need(a, 2, 2);
      LineTo(dc, static_cast<int>(Num(a[1])), static_cast<int>(Num(a[2])));
    } else if (c == "line") {
      Need(a, 4, 4);
      MoveToEx(dc, static_cast<int>(Num(a[1])), static_cast<int>(Num(a[2])), nullptr);
      LineTo(dc, static_cast<int>(Num(a[3])), static_cast<int>(Num(a[4])));
    } else if (c == "polyline" || c == "polylineto") {
      std::vector<POINT> p = Points(a, 1);
      if (c == "polyline") {
        Polyline(dc, p.data(), static_cast<int>(p.size()));
      } else {
        PolylineTo(dc, p.data(), static_cast<DWORD>(p.size()));
      }
    } else if (c == "polygon") {
      if (a.size() < 2) Fail("polygon MODE X Y ...");
      std::vector<POINT> p = Points(a, 2);
      SetPolyFillMode(dc, static_cast<int>(Pick(a[1], FillModes())));
      Polygon(dc, p.data(), static_cast<int>(p.size()));
    } else if (c == "polypolygon") {
      if (a.size() < 3) Fail("polypolygon MODE N1,N2,... X Y ...");
      std::vector<INT> counts;
      std::size_t total = 0;
      for (std::size_t s = 0; s <= a[2].size();) {
        std::size_t e = a[2].find(',', s);
        if (e == std::string::npos) e = a[2].size();
        counts.push_back(static_cast<INT>(Num(a[2].substr(s, e - s))));
        total += static_cast<std::size_t>(counts.back());
        s = e + 1;
      }
      std::vector<POINT> p = Points(a, 3);
      if (p.size() != total) Fail("polypolygon counts do not match the points");
      SetPolyFillMode(dc, static_cast<int>(Pick(a[1], FillModes())));
      PolyPolygon(dc, p.data(), counts.data(), static_cast<int>(counts.size()));
    } else if (c == "rectangle" || c == "ellipse") {
      Need(a, 4, 4);
      const int l = static_cast<int>(Num(a[1])), t = static_cast<int>(Num(a[2]));
      const int r = static_cast<int>(Num(a[3])), b = static_cast<int>(Num(a[4]));
      if (c == "rectangle") {
        Rectangle(dc, l, t, r, b);
      } else {
        Ellipse(dc, l, t, r, b);
      }
    } else if (c == "roundrect") {
      Need(a, 6, 6);
      RoundRect(dc, static_cast<int>(Num(a[1])), static_cast<int>(Num(a[2])), static_cast<int>(Num(a[3])),
                static_cast<int>(Num(a[4])), static_cast<int>(Num(a[5])), static_cast<int>(Num(a[6])));
    } else if (c == "arc" || c == "arcto" || c == "pie" || c == "chord") {
      Need(a, 8, 8);
      int v[8];
      for (int i = 0; i < 8; ++i) v[i] = static_cast<int>(Num(a[static_cast<std::size_t>(i) + 1]));
      BOOL(WINAPI * f)(HDC, int, int, int, int, int, int, int, int) =
          c == "arc" ? Arc : c == "arcto" ? ArcTo : c == "pie" ? Pie : Chord;
      f(dc, v[0], v[1], v[2], v[3], v[4], v[5], v[6], v[7]);
    } else if (c == "setpixel") {
      Need(a, 3, 3);
      SetPixel(dc, static_cast<int>(Num(a[1])), static_cast<int>(Num(a[2])), Color(a[3]));
    } else if (c == "fillrect") {
      Need(a, 5, 5);
      RECT r = {Num(a[1]), Num(a[2]), Num(a[3]), Num(a[4])};
      HBRUSH b = CreateSolidBrush(Color(a[5]));
      FillRect(dc, &r, b);
      DeleteObject(b);
    } else if (c == "patblt") {
      Need(a, 5, 5);
      PatBlt(dc, static_cast<int>(Num(a[1])), static_cast<int>(Num(a[2])), static_cast<int>(Num(a[3])),
             static_cast<int>(Num(a[4])),
             static_cast<DWORD>(Pick(a[5], {{"patcopy", PATCOPY}, {"patinvert", PATINVERT},
                                            {"dstinvert", DSTINVERT}, {"blackness", BLACKNESS},
                                            {"whiteness", WHITENESS}})));
    } else if (c == "rgn_rect" || c == "rgn_ellipse") {
      Need(a, 5, 5);
      const int l = static_cast<int>(Num(a[2])), t = static_cast<int>(Num(a[3]));
      const int r = static_cast<int>(Num(a[4])), b = static_cast<int>(Num(a[5]));
      SetRegion(a[1], c == "rgn_rect" ? CreateRectRgn(l, t, r, b) : CreateEllipticRgn(l, t, r, b));
    } else if (c == "rgn_roundrect") {
      Need(a, 7, 7);
      SetRegion(a[1], CreateRoundRectRgn(static_cast<int>(Num(a[2])), static_cast<int>(Num(a[3])),
                                         static_cast<int>(Num(a[4])), static_cast<int>(Num(a[5])),
                                         static_cast<int>(Num(a[6])), static_cast<int>(Num(a[7]))));
    } else if (c == "rgn_polygon") {
      if (a.size() < 3) Fail("rgn_polygon NAME MODE X Y ...");
      std::vector<POINT> p = Points(a, 3);
      SetRegion(a[1], CreatePolygonRgn(p.data(), static_cast<int>(p.size()),
                                       static_cast<int>(Pick(a[2], FillModes()))));
    } else if (c == "combine") {
      Need(a, 4, 4);
      const int mode = static_cast<int>(
          Pick(a[4], {{"and", RGN_AND}, {"or", RGN_OR}, {"xor", RGN_XOR}, {"diff", RGN_DIFF}, {"copy", RGN_COPY}}));
      if (regions_.count(a[1]) == 0) regions_[a[1]] = CreateRectRgn(0, 0, 0, 0);
      CombineRgn(Region(a[1]), Region(a[2]), mode == RGN_COPY ? nullptr : Region(a[3]), mode);
    } else if (c == "fillrgn") {
      HBRUSH b = nullptr;
      if (a.size() == 3) {
        b = CreateSolidBrush(Color(a[2]));
      } else if (a.size() == 5 && a[2] == "hatch") {
        b = CreateHatchBrush(static_cast<int>(Pick(a[3], Hatches())), Color(a[4]));
      } else {
        Fail("fillrgn NAME C | fillrgn NAME hatch N C");
      }
      FillRgn(dc, Region(a[1]), b);
      DeleteObject(b);
    } else if (c == "framergn") {
      Need(a, 4, 4);
      HBRUSH b = CreateSolidBrush(Color(a[2]));
      FrameRgn(dc, Region(a[1]), b, static_cast<int>(Num(a[3])), static_cast<int>(Num(a[4])));
      DeleteObject(b);
    } else if (c == "paintrgn") {
      Need(a, 1, 1);
      PaintRgn(dc, Region(a[1]));
    } else if (c == "invertrgn") {
      Need(a, 1, 1);
      InvertRgn(dc, Region(a[1]));
    } else if (c == "cliprgn") {
      Need(a, 1, 1);
      SelectClipRgn(dc, a[1] == "none" ? nullptr : Region(a[1]));
    } else if (c == "textcharextra") {
      Need(a, 1, 1);
      SetTextCharacterExtra(dc, static_cast<int>(Num(a[1])));
    } else if (c == "textalign") {
      Need(a, 1, 1);
      SetTextAlign(dc, static_cast<UINT>(Num(a[1])));
    } else if (c == "font") {
      Need(a, 4, 7);
      LOGFONTA lf = {};
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
          Fail("font flag " + a[i]);
        }
      }
      lf.lfCharSet = ANSI_CHARSET;
      lf.lfOutPrecision = OUT_TT_ONLY_PRECIS;
      // The engine draws glyphs in black and white; the platform is asked for the same, so
      // that only placement can differ (at some sizes draft quality comes out smoothed).
      lf.lfQuality = NONANTIALIASED_QUALITY;
      std::strncpy(lf.lfFaceName, a[1].c_str(), LF_FACESIZE - 1);
      font_ = Keep(CreateFontIndirectA(&lf));
      if (font_ == nullptr) Fail("CreateFontIndirectA failed");
      SelectObject(dc, font_);
    } else if (c == "textout") {
      Need(a, 3, 3);
      TextOutA(dc, static_cast<int>(Num(a[1])), static_cast<int>(Num(a[2])), a[3].c_str(),
               static_cast<int>(a[3].size()));
    } else if (c == "exttextout") {
      if (a.size() < 6) Fail("exttextout X Y OPTIONS L,T,R,B|- \"TEXT\" [DX ...]");
      UINT options = 0;
      for (std::size_t s = 0; s <= a[3].size();) {
        std::size_t e = a[3].find('+', s);
        if (e == std::string::npos) e = a[3].size();
        options |= static_cast<UINT>(
            Pick(a[3].substr(s, e - s), {{"opaque", ETO_OPAQUE}, {"clipped", ETO_CLIPPED}}));
        s = e + 1;
      }
      RECT box = {};
      const RECT* rect = nullptr;
      if (a[4] != "-") {
        long v[4];
        std::size_t s = 0;
        for (int k = 0; k < 4; ++k) {
          std::size_t e = a[4].find(',', s);
          if ((e == std::string::npos) != (k == 3)) Fail("rectangle L,T,R,B");
          v[k] = Num(a[4].substr(s, e == std::string::npos ? std::string::npos : e - s));
          s = e + 1;
        }
        box = {v[0], v[1], v[2], v[3]};
        rect = &box;
      }
      const std::string& text = a[5];
      std::vector<INT> dx;
      for (std::size_t i = 6; i < a.size(); ++i) dx.push_back(static_cast<INT>(Num(a[i])));
      if (!dx.empty() && dx.size() != text.size()) Fail("one DX per character");
      ExtTextOutA(dc, static_cast<int>(Num(a[1])), static_cast<int>(Num(a[2])), options, rect,
                  text.c_str(), static_cast<UINT>(text.size()), dx.empty() ? nullptr : dx.data());
    } else if (c == "srcdc_text") {
      Need(a, 3, 3);
      if (a[1] != "mono" && a[1] != "color") Fail("srcdc_text mono|color C \"TEXT\"");
      SIZE size = {};
      GetTextExtentPoint32A(canvas_, a[3].c_str(), static_cast<int>(a[3].size()), &size);
      NewSource(a[1] == "mono", size.cx, size.cy, Color(a[2]));
    } else if (c == "beginpath") {
      BeginPath(dc);
    } else if (c == "endpath") {
      EndPath(dc);
    } else if (c == "closefigure") {
      CloseFigure(dc);
    } else if (c == "abortpath") {
      AbortPath(dc);
    } else if (c == "strokepath") {
      StrokePath(dc);
    } else if (c == "fillpath") {
      FillPath(dc);
    } else if (c == "strokeandfillpath") {
      StrokeAndFillPath(dc);
    } else if (c == "widenpath") {
      WidenPath(dc);
    } else if (c == "flattenpath") {
      FlattenPath(dc);
    } else if (c == "srcdc") {
      Need(a, 4, 4);
      if (a[1] != "mono" && a[1] != "color") Fail("srcdc mono|color W H C");
      NewSource(a[1] == "mono", static_cast<int>(Num(a[2])), static_cast<int>(Num(a[3])), Color(a[4]));
    } else if (c == "bitblt") {
      Need(a, 7, 7);
      if (src_ == nullptr) Fail("no source DC");
      const DWORD rop = static_cast<DWORD>(Pick(
          a[7], {{"srccopy", SRCCOPY}, {"srcpaint", SRCPAINT}, {"srcand", SRCAND}, {"srcinvert", SRCINVERT},
                 {"srcerase", SRCERASE}, {"notsrccopy", NOTSRCCOPY}, {"notsrcerase", NOTSRCERASE},
                 {"mergecopy", MERGECOPY}, {"mergepaint", MERGEPAINT}, {"patcopy", PATCOPY},
                 {"patpaint", PATPAINT}, {"patinvert", PATINVERT}, {"dstinvert", DSTINVERT},
                 {"blackness", BLACKNESS}, {"whiteness", WHITENESS}}));
      BitBlt(canvas_, static_cast<int>(Num(a[1])), static_cast<int>(Num(a[2])), static_cast<int>(Num(a[3])),
             static_cast<int>(Num(a[4])), src_, static_cast<int>(Num(a[5])), static_cast<int>(Num(a[6])), rop);
    } else if (c == "bitblt_srcinvert") {
      Need(a, 2, 2);
      if (src_ == nullptr) Fail("no source DC");
      BitBlt(canvas_, static_cast<int>(Num(a[1])), static_cast<int>(Num(a[2])), src_w_, src_h_, src_, 0, 0,
             SRCINVERT);
    } else if (c == "gp_smoothing") {
      Need(a, 1, 1);
      smoothing_ = static_cast<int>(Num(a[1]));
    } else if (c == "gp_drawline") {
      Need(a, 6, 6);
      Gp g(dc, smoothing_);
      GpPen* p = GpMakePen(a[1], a[2]);
      GdipDrawLineI(g.g, p, static_cast<INT>(Num(a[3])), static_cast<INT>(Num(a[4])),
                    static_cast<INT>(Num(a[5])), static_cast<INT>(Num(a[6])));
      GdipDeletePen(p);
    } else if (c == "gp_drawellipse") {
      Need(a, 6, 6);
      Gp g(dc, smoothing_);
      GpPen* p = GpMakePen(a[1], a[2]);
      GdipDrawEllipseI(g.g, p, static_cast<INT>(Num(a[3])), static_cast<INT>(Num(a[4])),
                       static_cast<INT>(Num(a[5])), static_cast<INT>(Num(a[6])));
      GdipDeletePen(p);
    } else if (c == "gp_drawarc" || c == "gp_drawpie") {
      Need(a, 8, 8);
      Gp g(dc, smoothing_);
      GpPen* p = GpMakePen(a[1], a[2]);
      auto f = c == "gp_drawarc" ? GdipDrawArcI : GdipDrawPieI;
      f(g.g, p, static_cast<INT>(Num(a[3])), static_cast<INT>(Num(a[4])), static_cast<INT>(Num(a[5])),
        static_cast<INT>(Num(a[6])), static_cast<float>(Real(a[7])), static_cast<float>(Real(a[8])));
      GdipDeletePen(p);
    } else if (c == "gp_fillpolygon") {
      if (a.size() < 2) Fail("gp_fillpolygon C X Y ...");
      std::vector<POINT> p = Points(a, 2);
      Gp g(dc, smoothing_);
      GpBrush* b = nullptr;
      GdipCreateSolidFill(Argb(a[1]), &b);
      GdipFillPolygonI(g.g, b, p.data(), static_cast<INT>(p.size()), 0);
      GdipDeleteBrush(b);
    } else if (c == "gp_fillrect") {
      Need(a, 5, 5);
      Gp g(dc, smoothing_);
      GpBrush* b = nullptr;
      GdipCreateSolidFill(Argb(a[1]), &b);
      GdipFillRectangleI(g.g, b, static_cast<INT>(Num(a[2])), static_cast<INT>(Num(a[3])),
                         static_cast<INT>(Num(a[4])), static_cast<INT>(Num(a[5])));
      GdipDeleteBrush(b);
    } else if (c == "gp_fillrgn") {
      Need(a, 2, 2);
      Gp g(dc, smoothing_);
      GpBrush* b = nullptr;
      GdipCreateSolidFill(Argb(a[1]), &b);
      GpRegion* r = nullptr;
      GdipCreateRegionHrgn(Region(a[2]), &r);
      GdipFillRegion(g.g, b, r);
      GdipDeleteRegion(r);
      GdipDeleteBrush(b);
    } else {
      Fail("command not drawn by this oracle: " + c);
    }
  }

  int line_ = 0;
  int width_ = 0;
  int height_ = 0;
  std::uint32_t background_ = 0;
  DWORD* bits_ = nullptr;
  HDC canvas_ = nullptr;
  HDC src_ = nullptr;
  HDC dc_ = nullptr;
  HBITMAP canvas_bitmap_ = nullptr;
  HBITMAP src_bitmap_ = nullptr;
  int src_w_ = 0;
  int src_h_ = 0;
  int saves_ = 0;
  int smoothing_ = -1;
  HFONT font_ = nullptr;
  std::map<std::string, HRGN> regions_;
  std::vector<HGDIOBJ> objects_;
};

// GDI+ is started once for the whole binary.
class GdiplusSession {
 public:
  GdiplusSession() {
    GpStartupInput input = {1, nullptr, FALSE, FALSE};
    ok_ = GdiplusStartup(&token_, &input, nullptr) == 0;
  }
  ~GdiplusSession() {
    if (ok_) GdiplusShutdown(token_);
  }
  bool ok() const { return ok_; }

 private:
  ULONG_PTR token_ = 0;
  bool ok_ = false;
};

// Wine's ntdll exports wine_get_version; Windows' does not.
bool RunningUnderWine() {
  HMODULE ntdll = GetModuleHandleA("ntdll.dll");
  return ntdll != nullptr && GetProcAddress(ntdll, "wine_get_version") != nullptr;
}

// Scenes whose drawing by Wine's GDI is not repeatable, with the reason; they run on Windows.
struct WineUnstableScene {
  const char* scene;  // AREA/STEM
  const char* reason;
};
constexpr WineUnstableScene kWineUnstable[] = {
    {"ellipses/regions",
     "Wine's CreateEllipticRgn leaves spans of some small regions unset: stray pixels and rows "
     "that change from run to run (6 to 1100 pixels measured), even in a fresh process"},
};

// PlatformBudget reads "# platform: budget N" from a scene: the pixels per image allowed to differ
// from this system's GDI where the system itself is the odd one (the scene says why beside it);
// 0 without such a line.
long long PlatformBudget(const std::string& text) {
  std::istringstream in(text);
  std::string line;
  const std::string key = "# platform: budget ";
  while (std::getline(in, line)) {
    if (line.compare(0, key.size(), key) == 0) return std::atoll(line.c_str() + key.size());
  }
  return 0;
}

// What the platform drew for one scene, read back from the child that drew it.
struct PlatformDrawing {
  std::string error;
  PixelImage final_image;
  std::vector<SceneCheckpoint> checkpoints;
};

// The child's side: draws SCENE with the platform's GDI and writes OUT/final.png, OUT/<i>.png per
// checkpoint and OUT/names.txt (checkpoint names), or OUT/error.txt. Returns the exit status.
int DrawSceneToFiles(const fs::path& scene, const fs::path& out) {
  const std::string text = ReadSceneText(scene);
  GdiplusSession gdiplus;
  PlatformScene platform;
  try {
    if (!gdiplus.ok()) throw std::runtime_error("GDI+ did not start");
    platform.Run(text);
  } catch (const std::runtime_error& e) {
    std::ofstream(out / "error.txt") << e.what();
    return 1;
  }
  bool ok = WritePngImage(platform.final_image, (out / "final.png").string());
  std::ofstream names(out / "names.txt", std::ios::binary);
  for (std::size_t i = 0; i < platform.checkpoints.size(); ++i) {
    ok = ok && WritePngImage(platform.checkpoints[i].image, (out / (std::to_string(i) + ".png")).string());
    names << platform.checkpoints[i].name << "\n";
  }
  return ok ? 0 : 1;
}

constexpr const char* kChildVariable = "QVIS_PLATFORM_GDI_DRAW";  // "SCENE|OUTDIR"

// Each scene is drawn by the platform in a fresh process: Wine's elliptic regions pick up spans
// left in its heap by earlier drawings (stray rows that differ from run to run), so a scene drawn
// after fifty others is not the platform's answer for that scene alone.
PlatformDrawing DrawInChild(const fs::path& scene) {
  PlatformDrawing result;
  std::error_code ec;
  const fs::path out = fs::temp_directory_path(ec) / "qvis-platform-gdi" /
                       (scene.parent_path().filename().string() + "_" + scene.stem().string());
  fs::remove_all(out, ec);
  fs::create_directories(out, ec);
  wchar_t exe[MAX_PATH];
  if (GetModuleFileNameW(nullptr, exe, MAX_PATH) == 0) {
    result.error = "GetModuleFileNameW failed";
    return result;
  }
  const std::string job = scene.string() + "|" + out.string();
  SetEnvironmentVariableA(kChildVariable, job.c_str());
  std::wstring command = L"\"" + std::wstring(exe) + L"\" --gtest_list_tests";
  // The child's standard handles go to NUL: under Wine, a helper process the child's GDI starts
  // would otherwise keep the test's output pipe open after the test ends, and ctest would wait.
  SECURITY_ATTRIBUTES inherit = {sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
  HANDLE nul = CreateFileW(L"NUL", GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, &inherit,
                           OPEN_EXISTING, 0, nullptr);
  STARTUPINFOW si = {};
  si.cb = sizeof(si);
  si.dwFlags = STARTF_USESTDHANDLES;
  si.hStdInput = si.hStdOutput = si.hStdError = nul;
  PROCESS_INFORMATION pi = {};
  const BOOL started = CreateProcessW(exe, command.data(), nullptr, nullptr, TRUE, CREATE_NO_WINDOW, nullptr,
                                      nullptr, &si, &pi);
  if (nul != INVALID_HANDLE_VALUE) CloseHandle(nul);
  SetEnvironmentVariableA(kChildVariable, nullptr);
  if (!started) {
    result.error = "cannot start the drawing process (error " + std::to_string(GetLastError()) + ")";
    return result;
  }
  WaitForSingleObject(pi.hProcess, INFINITE);
  DWORD status = 1;
  GetExitCodeProcess(pi.hProcess, &status);
  CloseHandle(pi.hThread);
  CloseHandle(pi.hProcess);
  if (status != 0) {
    std::ifstream error(out / "error.txt");
    std::getline(error, result.error);
    if (result.error.empty()) result.error = "the drawing process exited with " + std::to_string(status);
    return result;
  }
  if (!ReadPngImage((out / "final.png").string(), &result.final_image)) result.error = "no final image";
  std::ifstream names(out / "names.txt", std::ios::binary);
  std::string name;
  for (std::size_t i = 0; std::getline(names, name); ++i) {
    SceneCheckpoint cp;
    cp.name = name;
    if (!ReadPngImage((out / (std::to_string(i) + ".png")).string(), &cp.image)) result.error = "no image for " + name;
    result.checkpoints.push_back(std::move(cp));
  }
  fs::remove_all(out, ec);
  return result;
}

class PlatformOracleTest : public testing::Test {
 public:
  explicit PlatformOracleTest(fs::path scene) : scene_(std::move(scene)) {}

  void TestBody() override {
    const std::string text = ReadSceneText(scene_);
    const std::string id = scene_.parent_path().filename().string() + "/" + scene_.stem().string();
    for (const WineUnstableScene& unstable : kWineUnstable) {
      if (id == unstable.scene && RunningUnderWine()) GTEST_SKIP() << unstable.reason;
    }

    SceneOutcome ours = RunScene(text, scene_.filename().string());
    ASSERT_TRUE(ours.ok) << ours.error;
    const PlatformDrawing drawing = DrawInChild(scene_);
    ASSERT_TRUE(drawing.error.empty()) << scene_ << ": " << drawing.error;
    const PlatformDrawing* platform = &drawing;
    ASSERT_EQ(ours.checkpoints.size(), platform->checkpoints.size()) << scene_;

    std::vector<std::pair<std::string, std::pair<const PixelImage*, const PixelImage*>>> pairs;
    pairs.push_back({"final", {&platform->final_image, &ours.final_image}});
    for (std::size_t i = 0; i < ours.checkpoints.size(); ++i) {
      ASSERT_EQ(ours.checkpoints[i].name, platform->checkpoints[i].name) << scene_;
      pairs.push_back({ours.checkpoints[i].name, {&platform->checkpoints[i].image, &ours.checkpoints[i].image}});
    }
    // QVIS_PLATFORM_WRITE_GOLDEN=1 writes the platform's images as the scene's reference
    // fixtures where they are missing (new scenes), to be reviewed before they are committed.
    if (std::getenv("QVIS_PLATFORM_WRITE_GOLDEN") != nullptr) {
      for (const auto& [label, images] : pairs) {
        const fs::path fixture = scene_.parent_path() /
                                 (scene_.stem().string() + (label == "final" ? "" : "." + label) + ".png");
        std::error_code ec;
        if (!fs::exists(fixture, ec)) {
          ASSERT_TRUE(WritePngImage(*images.first, fixture.string())) << fixture;
        }
      }
    }
    const long long budget = PlatformBudget(text);
    for (const auto& [label, images] : pairs) {
      const ImageComparison cmp = CompareImages(*images.first, *images.second, ours.background);
      ASSERT_TRUE(cmp.same_size) << scene_ << " " << label;
      std::printf("[ platform ] %s %s: %lld of %lld drawn pixels differ from this system's GDI\n",
                  scene_.filename().string().c_str(), label.c_str(), cmp.differing, cmp.ink);
      if (cmp.differing != 0) {
        // Both images go where the golden test puts the engine's, for a look side by side.
        const char* env = std::getenv("QVIS_GOLDEN_OUT");
        const fs::path dir = (env != nullptr && *env != '\0' ? fs::path(env) : fs::path("/tmp/qvis-golden")) /
                             scene_.parent_path().filename();
        std::error_code ec;
        fs::create_directories(dir, ec);
        const std::string base = scene_.stem().string() + (label == "final" ? "" : "." + label);
        WritePngImage(*images.first, (dir / (base + ".platform.png")).string());
        WritePngImage(*images.second, (dir / (base + ".actual.png")).string());
      }
      EXPECT_LE(cmp.differing, budget) << scene_ << " (" << label << "): " << DescribeDifferences(cmp);
    }
  }

 private:
  fs::path scene_;
};

// One test per exact-rule golden scene, registered when the binary starts; scenes with a budget
// are left to the golden test, which states their known differences.
const bool kRegistered = [] {
  // In the drawing child: draw the one scene and leave before any test runs.
  if (const char* job = std::getenv(kChildVariable); job != nullptr && *job != '\0') {
    const std::string text = job;
    const std::size_t bar = text.find('|');
    std::exit(bar == std::string::npos ? 2 : DrawSceneToFiles(text.substr(0, bar), text.substr(bar + 1)));
  }
  for (const GoldenScene& found : ListGoldenScenes(fs::path(QVIS_TEST_DATA_DIR) / "golden")) {
    const fs::path& scene = found.file;
    std::string error;
    const GoldenRule rule = ParseGoldenRule(ReadSceneText(scene), &error);
    // Scenes checked against our own fixtures ("ours") are text whose face differs between the
    // platforms; here the face is the platform's, so they are exact too.
    if (!error.empty() || rule.kind == GoldenRule::Kind::kBudget) continue;
    const std::string suite = GoldenSuiteName("PlatformGdi_", found.area);
    testing::RegisterTest(suite.c_str(), scene.stem().string().c_str(), nullptr, nullptr,
                          scene.string().c_str(), 0,
                          [scene]() -> testing::Test* { return new PlatformOracleTest(scene); });
  }
  return true;
}();

}  // namespace
}  // namespace qvis::gdi

#endif  // _WIN32
