// The eight raster jobs of a PCB canvas at 1920x1080, shared by the benchmark programs: the scene
// data (made once with a fixed seed) and QvisFrame, which draws each job through the engine's
// device layer one call at a time with its pen or brush selected, as the canvas issues them.
// raster_bench (Linux) sets these beside Cairo, win32_gdi_bench (Windows) beside the system's GDI.
// Everything lives in qvis::bench so that the system's own functions of the same names, which
// the Windows program calls as ::Name, never meet ours unqualified.
#ifndef QVIS_BENCH_RASTER_JOBS_H_
#define QVIS_BENCH_RASTER_JOBS_H_

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <numeric>
#include <random>
#include <vector>

#include "qvis/compat/win32_names.h"
#include "qvis/gdi/gdi.h"

namespace qvis::bench {

using namespace qvis::gdi;  // NOLINT: the calls read as the platform's

constexpr double kPi = 3.141592653589793;
constexpr int kWidth = 1920;
constexpr int kHeight = 1080;
constexpr std::size_t kFrameBytes = std::size_t{kWidth} * kHeight * 4;

// Scene data, made once with a fixed seed so every engine draws the same figures.
struct Track {
  int x0, y0, x1, y1, width;
};
struct Disk {
  int cx, cy, r;
};
using Quad = std::array<CPoint, 4>;

// Star returns the polygon {n/k} (k the largest step below n/2 that visits every vertex) with a
// radius that wobbles per vertex: self-intersecting, so the alternate rule decides the inside.
inline std::vector<CPoint> Star(int cx, int cy, int n, int radius, std::mt19937& rng) {
  int k = (n - 1) / 2;
  while (std::gcd(n, k) != 1) --k;
  std::vector<CPoint> p;
  for (int i = 0; i < n; ++i) {
    const double a = 2 * kPi * ((i * k) % n) / n;
    const double r = radius * (0.8 + 0.2 * std::uniform_real_distribution<double>(0, 1)(rng));
    p.emplace_back(cx + static_cast<int>(std::lround(r * std::cos(a))),
                   cy + static_cast<int>(std::lround(r * std::sin(a))));
  }
  return p;
}

struct Workloads {
  std::vector<Track> tracks;       // 20,000 45-degree routed, round-ended, widths 1..12
  std::vector<Disk> pads;          // 5,000 round pads
  std::vector<Quad> rect_pads;     // 2,000 rotated rectangular pads, drawn as regions
  std::vector<Track> thin;         // 20,000 one-pixel lines of 5..500 px, some leaving the frame
  std::vector<Disk> circles;       // 5,000 outlines, radius 5..200
  std::vector<std::vector<CPoint>> stars;  // 1,000 stars of 8..40 vertices
  std::vector<Track> rubber;       // 10,001 positions of a 10-px wide rubber band

  Workloads() {
    std::mt19937 rng(7);
    auto uni = [&](int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(rng); };
    static constexpr int kDir[8][2] = {{1, 0}, {1, 1}, {0, 1}, {-1, 1}, {-1, 0}, {-1, -1}, {0, -1}, {1, -1}};
    for (int i = 0; i < 20000; ++i) {
      const int x = uni(0, kWidth - 1), y = uni(0, kHeight - 1), d = uni(0, 7), len = uni(4, 150);
      tracks.push_back({x, y, x + kDir[d][0] * len, y + kDir[d][1] * len, uni(1, 12)});
    }
    for (int i = 0; i < 5000; ++i) pads.push_back({uni(0, kWidth - 1), uni(0, kHeight - 1), uni(2, 20)});
    for (int i = 0; i < 2000; ++i) {
      const double cx = uni(0, kWidth - 1), cy = uni(0, kHeight - 1), hw = uni(3, 25), hh = uni(2, 12);
      const double a = uni(0, 359) * kPi / 180, c = std::cos(a), s = std::sin(a);
      Quad q;
      const double corner[4][2] = {{-hw, -hh}, {hw, -hh}, {hw, hh}, {-hw, hh}};
      for (int k = 0; k < 4; ++k) {
        q[k] = CPoint(static_cast<int>(std::lround(cx + corner[k][0] * c - corner[k][1] * s)),
                      static_cast<int>(std::lround(cy + corner[k][0] * s + corner[k][1] * c)));
      }
      rect_pads.push_back(q);
    }
    for (int i = 0; i < 20000; ++i) {
      // Start points reach 100 px past the frame, so about one line in six is clipped.
      const int x = uni(-100, kWidth + 99), y = uni(-100, kHeight + 99), len = uni(5, 500);
      const double a = std::uniform_real_distribution<double>(0, 2 * kPi)(rng);
      thin.push_back({x, y, x + static_cast<int>(std::lround(len * std::cos(a))),
                      y + static_cast<int>(std::lround(len * std::sin(a))), 1});
    }
    for (int i = 0; i < 5000; ++i) circles.push_back({uni(0, kWidth - 1), uni(0, kHeight - 1), uni(5, 200)});
    for (int i = 0; i < 1000; ++i) stars.push_back(Star(uni(0, kWidth - 1), uni(0, kHeight - 1), uni(8, 40), uni(20, 150), rng));
    // The band runs from a fixed anchor to the mouse, which wanders by a few pixels per step.
    int x = 900, y = 500;
    for (int i = 0; i <= 10000; ++i) {
      x = std::clamp(x + uni(-4, 4), 700, 1200);
      y = std::clamp(y + uni(-4, 4), 300, 800);
      rubber.push_back({800, 450, x, y, 10});
    }
  }
};

inline const Workloads& Data() {
  static const Workloads data;
  return data;
}

// ---- the engine ----------------------------------------------------------------------------------

class QvisFrame {
 public:
  QvisFrame()
      : dc_(CreateCompatibleDC(nullptr)),
        bitmap_(CreateBitmap32(kWidth, kHeight)),
        window_dc_(CreateCompatibleDC(nullptr)),
        window_(CreateBitmap32(kWidth, kHeight)) {
    SelectObject(dc_, bitmap_);
    SelectObject(window_dc_, window_);
    black_ = CreateSolidBrush(0);
    pad_brush_ = CreateSolidBrush(0x00C0FF);
    poly_brush_ = CreateSolidBrush(0x40A040);
    thin_pen_ = CreatePen(PS_SOLID, 1, 0x00FFFF);
    grid_pen_ = CreatePen(PS_SOLID, 1, 0xC8C8C8);
    LOGBRUSH lb;
    lb.lbStyle = BS_SOLID;
    lb.lbColor = 0xFFFFFF;
    xor_pen_ = ExtCreatePen(PS_GEOMETRIC | PS_SOLID | PS_ENDCAP_ROUND | PS_JOIN_ROUND, 10, &lb, 0, nullptr);
    lb.lbColor = 0x3080FF;
    track_pens_[0] = CreatePen(PS_SOLID, 1, lb.lbColor);
    for (int w = 2; w <= 12; ++w) {
      track_pens_[w - 1] = ExtCreatePen(PS_GEOMETRIC | PS_SOLID | PS_ENDCAP_ROUND | PS_JOIN_ROUND,
                                        static_cast<DWORD>(w), &lb, 0, nullptr);
    }
  }
  ~QvisFrame() {
    DeleteDC(dc_);
    DeleteDC(window_dc_);
    DeleteObject(bitmap_);
    DeleteObject(window_);
    for (HGDIOBJ o : {HGDIOBJ(black_), HGDIOBJ(pad_brush_), HGDIOBJ(poly_brush_), HGDIOBJ(thin_pen_),
                      HGDIOBJ(grid_pen_), HGDIOBJ(xor_pen_)}) {
      DeleteObject(o);
    }
    for (HPEN p : track_pens_) DeleteObject(p);
  }
  HDC dc() const { return dc_; }

  // Clear fills the frame as the render buffer begins a frame. It alternates two colours so
  // that no engine can skip a clear that changes nothing.
  void Clear() {
    flip_ = !flip_;
    const CRect frame(0, 0, kWidth, kHeight);
    FillRect(dc_, &frame, flip_ ? black_ : poly_brush_);
  }
  // The board as the canvas draws it: every track with its own pen, then the pads.
  void PcbScene() {
    const Workloads& d = Data();
    for (const Track& t : d.tracks) {
      SelectObject(dc_, track_pens_[t.width - 1]);
      MoveToEx(dc_, t.x0, t.y0, nullptr);
      LineTo(dc_, t.x1, t.y1);
    }
    SelectObject(dc_, GetStockObject(NULL_PEN));
    for (const Disk& p : d.pads) {
      SelectObject(dc_, pad_brush_);
      Ellipse(dc_, p.cx - p.r, p.cy - p.r, p.cx + p.r + 1, p.cy + p.r + 1);
    }
    for (const Quad& q : d.rect_pads) {
      HRGN rgn = CreatePolygonRgn(q.data(), 4, WINDING);
      FillRgn(dc_, rgn, pad_brush_);
      DeleteObject(rgn);
    }
  }
  void ThinLines() {
    for (const Track& t : Data().thin) {
      SelectObject(dc_, thin_pen_);
      MoveToEx(dc_, t.x0, t.y0, nullptr);
      LineTo(dc_, t.x1, t.y1);
    }
  }
  void Circles() {
    for (const Disk& d : Data().circles) {
      SelectObject(dc_, thin_pen_);
      SelectObject(dc_, GetStockObject(NULL_BRUSH));
      Ellipse(dc_, d.cx - d.r, d.cy - d.r, d.cx + d.r + 1, d.cy + d.r + 1);
    }
  }
  void Stars() {
    SetPolyFillMode(dc_, ALTERNATE);
    for (const auto& p : Data().stars) {
      SelectObject(dc_, GetStockObject(NULL_PEN));
      SelectObject(dc_, poly_brush_);
      Polygon(dc_, p.data(), static_cast<int>(p.size()));
    }
  }
  // The grid display: a dot every 5 pixels and a 7-pixel plus every 20.
  void Grid() {
    for (int y = 0; y < kHeight; y += 5) {
      for (int x = 0; x < kWidth; x += 5) SetPixel(dc_, x, y, 0x646464);
    }
    for (int y = 0; y < kHeight; y += 20) {
      for (int x = 0; x < kWidth; x += 20) {
        SelectObject(dc_, grid_pen_);
        MoveToEx(dc_, x - 3, y, nullptr);
        LineTo(dc_, x + 4, y);
        MoveToEx(dc_, x, y - 3, nullptr);
        LineTo(dc_, x, y + 4);
      }
    }
  }
  // Rubber band: erase the previous band and draw the next one, both in XOR with a round pen.
  void RubberBand() {
    int rop = SetROP2(dc_, R2_XORPEN);
    const auto& r = Data().rubber;
    for (std::size_t i = 1; i < r.size(); ++i) {
      SelectObject(dc_, xor_pen_);
      MoveToEx(dc_, r[i - 1].x0, r[i - 1].y0, nullptr);
      LineTo(dc_, r[i - 1].x1, r[i - 1].y1);
      MoveToEx(dc_, r[i].x0, r[i].y0, nullptr);
      LineTo(dc_, r[i].x1, r[i].y1);
    }
    SetROP2(dc_, rop);
  }
  // Present: the finished frame copied to the window.
  void Present() { BitBlt(window_dc_, 0, 0, kWidth, kHeight, dc_, 0, 0, SRCCOPY); }

 private:
  HDC dc_;
  HBITMAP bitmap_;
  HDC window_dc_;
  HBITMAP window_;
  HBRUSH black_, pad_brush_, poly_brush_;
  HPEN thin_pen_, grid_pen_, xor_pen_;
  HPEN track_pens_[12] = {};
  bool flip_ = false;
};

}  // namespace qvis::bench

#endif  // QVIS_BENCH_RASTER_JOBS_H_
