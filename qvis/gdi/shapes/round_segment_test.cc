// A lone round-ended segment of a wide pen is painted row by row from its body and its two end
// dots; these tests hold it to the pixels of the general stroker, which fills the same pieces by
// winding.
#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <vector>

#include "qvis/compat/win32_names.h"
#include "qvis/gdi/dc.h"
#include "qvis/gdi/gdi.h"

namespace qvis::gdi {
namespace {

constexpr int kW = 96;
constexpr int kH = 72;

struct Segment {
  int x0, y0, x1, y1, width;
  bool clipped;
};

// Draws the segments over a seeded random picture in XOR mode, so that a pixel painted twice
// would show, with or without the row-by-row path, and returns the pixels.
std::vector<std::uint32_t> Draw(const std::vector<Segment>& segments, bool rows) {
  HDC dc = CreateCompatibleDC(nullptr);
  HBITMAP bitmap = CreateBitmap32(kW, kH);
  SelectObject(dc, bitmap);
  std::mt19937 rng(3);
  BitmapView view = BitmapPixels(bitmap);
  for (int y = 0; y < kH; ++y) {
    for (int x = 0; x < kW; ++x) view.Row32(y)[x] = rng() & 0xFFFFFFu;
  }
  dc->scratch.stroke.segment_rows = rows;
  SetROP2(dc, R2_XORPEN);
  LOGBRUSH lb;
  lb.lbStyle = BS_SOLID;
  lb.lbColor = 0x5A3C96;
  for (const Segment& s : segments) {
    HPEN pen = ExtCreatePen(PS_GEOMETRIC | PS_SOLID | PS_ENDCAP_ROUND | PS_JOIN_ROUND,
                            static_cast<DWORD>(s.width), &lb, 0, nullptr);
    HGDIOBJ old = SelectObject(dc, pen);
    HRGN clip = s.clipped ? CreateRectRgn(10, 7, 80, 60) : nullptr;
    SelectClipRgn(dc, clip);
    MoveToEx(dc, s.x0, s.y0, nullptr);
    LineTo(dc, s.x1, s.y1);
    SelectClipRgn(dc, nullptr);
    if (clip != nullptr) DeleteObject(clip);
    SelectObject(dc, old);
    DeleteObject(pen);
  }
  std::vector<std::uint32_t> out;
  view = BitmapPixels(bitmap);
  for (int y = 0; y < kH; ++y) out.insert(out.end(), view.Row32(y), view.Row32(y) + kW);
  DeleteDC(dc);
  DeleteObject(bitmap);
  return out;
}

TEST(RoundSegmentTest, RowsMatchTheGeneralStroker) {
  // Tracks at multiples of 45 degrees and at any angle, one pixel to tens long, widths from 2
  // to wider than the segment, ends inside, on and beyond the bitmap and the clip box.
  std::mt19937 rng(11);
  auto uni = [&](int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(rng); };
  static constexpr int kDir[8][2] = {{1, 0}, {1, 1}, {0, 1}, {-1, 1},
                                     {-1, 0}, {-1, -1}, {0, -1}, {1, -1}};
  for (int batch = 0; batch < 40; ++batch) {
    std::vector<Segment> segments;
    for (int i = 0; i < 25; ++i) {
      Segment s{};
      s.x0 = uni(-20, kW + 20);
      s.y0 = uni(-20, kH + 20);
      if (i % 2 == 0) {
        const int d = uni(0, 7), len = uni(1, 60);
        s.x1 = s.x0 + kDir[d][0] * len;
        s.y1 = s.y0 + kDir[d][1] * len;
      } else {
        s.x1 = s.x0 + uni(-50, 50);
        s.y1 = s.y0 + uni(-50, 50);
      }
      s.width = i % 5 == 0 ? uni(13, 60) : uni(2, 12);
      s.clipped = i % 3 == 0;
      segments.push_back(s);
    }
    ASSERT_EQ(Draw(segments, true), Draw(segments, false)) << "batch " << batch;
  }
}

}  // namespace
}  // namespace qvis::gdi
