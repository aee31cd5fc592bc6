// Test support for the render tests: a memory DC over a 32-bpp bitmap filled with a background
// colour, with pixel access, ASCII pictures and snapshots. Used only by *_test.cc.
#ifndef QVIS_RENDER_RENDER_TEST_CANVAS_H_
#define QVIS_RENDER_RENDER_TEST_CANVAS_H_

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "qvis/compat/cpoint.h"
#include "qvis/compat/types.h"
#include "qvis/gdi/gdi.h"

namespace qvis::testing {

class Canvas {
 public:
  Canvas(int width, int height, COLORREF background = 0)
      : width_(width), height_(height), background_(background) {
    dc_ = gdi::CreateCompatibleDC(nullptr);
    bitmap_ = gdi::CreateBitmap32(width, height);
    old_ = gdi::SelectObject(dc_, bitmap_);
    Fill(background);
  }
  Canvas(const Canvas&) = delete;
  Canvas& operator=(const Canvas&) = delete;
  ~Canvas() {
    gdi::SelectObject(dc_, old_);
    gdi::DeleteObject(bitmap_);
    gdi::DeleteDC(dc_);
  }

  HDC dc() const { return dc_; }
  HBITMAP bitmap() const { return bitmap_; }
  int width() const { return width_; }
  int height() const { return height_; }

  // Fill sets every pixel to a COLORREF.
  void Fill(COLORREF c) {
    gdi::BitmapView v = gdi::BitmapPixels(bitmap_);
    for (int y = 0; y < v.height; ++y) {
      for (int x = 0; x < v.width; ++x) v.Row32(y)[x] = ToRgb(c);
    }
  }
  // At returns the COLORREF at (x, y).
  COLORREF At(int x, int y) const {
    gdi::BitmapView v = gdi::BitmapPixels(bitmap_);
    return FromRgb(v.Row32(y)[x]);
  }
  void Set(int x, int y, COLORREF c) {
    gdi::BitmapView v = gdi::BitmapPixels(bitmap_);
    v.Row32(y)[x] = ToRgb(c);
  }
  // Snapshot returns every pixel, row by row.
  std::vector<std::uint32_t> Snapshot() const {
    gdi::BitmapView v = gdi::BitmapPixels(bitmap_);
    std::vector<std::uint32_t> out;
    for (int y = 0; y < v.height; ++y) out.insert(out.end(), v.Row32(y), v.Row32(y) + v.width);
    return out;
  }
  // Count returns how many pixels differ from the background (or equal `c` when given).
  int CountNot(COLORREF c) const {
    int n = 0;
    for (int y = 0; y < height_; ++y)
      for (int x = 0; x < width_; ++x) n += At(x, y) != c;
    return n;
  }
  int Count(COLORREF c) const { return width_ * height_ - CountNot(c); }
  int Drawn() const { return CountNot(background_); }
  // Box returns the bounding box of the pixels that differ from the background (empty when
  // none): left, top, right (exclusive), bottom (exclusive).
  CRect Box() const {
    CRect r(width_, height_, 0, 0);
    for (int y = 0; y < height_; ++y)
      for (int x = 0; x < width_; ++x)
        if (At(x, y) != background_) {
          if (x < r.left) r.left = x;
          if (y < r.top) r.top = y;
          if (x + 1 > r.right) r.right = x + 1;
          if (y + 1 > r.bottom) r.bottom = y + 1;
        }
    if (r.right == 0) return CRect();
    return r;
  }
  // Ascii renders the box [l, r) x [t, b): '.' background, then '#', 'o', '*', '+', 'x' for the
  // other colours in order of first appearance. Rows end with '\n'.
  std::string Ascii(int l, int t, int r, int b) const {
    static const char kMarks[] = "#o*+x%@&";
    std::map<COLORREF, char> marks;
    std::string out;
    for (int y = t; y < b; ++y) {
      for (int x = l; x < r; ++x) {
        const COLORREF c = At(x, y);
        if (c == background_) {
          out += '.';
          continue;
        }
        auto it = marks.find(c);
        if (it == marks.end()) {
          const size_t i = marks.size();
          it = marks.emplace(c, i < sizeof(kMarks) - 1 ? kMarks[i] : '?').first;
        }
        out += it->second;
      }
      out += '\n';
    }
    return out;
  }
  std::string Ascii() const { return Ascii(0, 0, width_, height_); }

  static std::uint32_t ToRgb(COLORREF c) {
    return ((c & 0xFF) << 16) | (c & 0xFF00) | ((c >> 16) & 0xFF);
  }
  static COLORREF FromRgb(std::uint32_t p) {
    return ((p >> 16) & 0xFF) | (p & 0xFF00) | ((p & 0xFF) << 16);
  }

 private:
  int width_;
  int height_;
  COLORREF background_;
  HDC dc_ = nullptr;
  HBITMAP bitmap_ = nullptr;
  HGDIOBJ old_ = nullptr;
};

// Pic joins lines into one picture string ("row\n" each) for readable expectations.
inline std::string Pic(std::initializer_list<const char*> rows) {
  std::string s;
  for (const char* r : rows) {
    s += r;
    s += '\n';
  }
  return s;
}

}  // namespace qvis::testing

#endif  // QVIS_RENDER_RENDER_TEST_CANVAS_H_
