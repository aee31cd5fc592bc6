// The eight raster jobs of raster_bench, drawn on Windows by the engine and by the system's GDI
// (gdi32) in the same run, each into a 32-bit top-down 1920x1080 bitmap: the engine's own
// CreateBitmap32, and a DIB section selected into a memory DC for gdi32. Both get the same calls,
// one at a time with the pen or brush selected per primitive, as the canvas issues them.
// memset and memcpy of the frame are the pixel floor. Prints: job, engine ms, GDI ms, engine/GDI.
//
// This is a plain program rather than a Google Benchmark one: Debian ships Google Benchmark for
// Linux only (there is no MinGW-w64 build of it) and dependencies come from Debian packages, never
// vendored. Each time is the best of several runs of wall time (QueryPerformanceCounter): the
// shortest run is the one least disturbed by the rest of the machine, and thread CPU time on
// Windows (GetThreadTimes) advances only by whole scheduler ticks of ~15 ms.
#include <windows.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <vector>

#include "raster_jobs.h"

namespace {

namespace qb = qvis::bench;

// ---- the same workloads with gdi32 -------------------------------------------------------------

// Every call here is the system's, written ::Name; ours have the same spelling in qvis::gdi.
class GdiFrame {
 public:
  GdiFrame() {
    dc_ = ::CreateCompatibleDC(nullptr);
    window_dc_ = ::CreateCompatibleDC(nullptr);
    bitmap_ = TopDownDib();
    window_ = TopDownDib();
    old_bitmap_ = ::SelectObject(dc_, bitmap_);
    old_window_ = ::SelectObject(window_dc_, window_);
    black_ = ::CreateSolidBrush(0);
    pad_brush_ = ::CreateSolidBrush(0x00C0FF);
    poly_brush_ = ::CreateSolidBrush(0x40A040);
    thin_pen_ = ::CreatePen(PS_SOLID, 1, 0x00FFFF);
    grid_pen_ = ::CreatePen(PS_SOLID, 1, 0xC8C8C8);
    ::LOGBRUSH lb{};
    lb.lbStyle = BS_SOLID;
    lb.lbColor = 0xFFFFFF;
    xor_pen_ = ::ExtCreatePen(PS_GEOMETRIC | PS_SOLID | PS_ENDCAP_ROUND | PS_JOIN_ROUND, 10, &lb, 0, nullptr);
    lb.lbColor = 0x3080FF;
    track_pens_[0] = ::CreatePen(PS_SOLID, 1, lb.lbColor);
    for (int w = 2; w <= 12; ++w) {
      track_pens_[w - 1] = ::ExtCreatePen(PS_GEOMETRIC | PS_SOLID | PS_ENDCAP_ROUND | PS_JOIN_ROUND,
                                          static_cast<DWORD>(w), &lb, 0, nullptr);
    }
    // gdi32 takes POINT arrays; converted once, outside the timing.
    for (const qb::Quad& q : qb::Data().rect_pads) {
      std::array<::POINT, 4> p{};
      for (int k = 0; k < 4; ++k) p[k] = {q[k].x, q[k].y};
      rect_pads_.push_back(p);
    }
    for (const auto& s : qb::Data().stars) {
      std::vector<::POINT> p;
      for (const auto& v : s) p.push_back({v.x, v.y});
      stars_.push_back(std::move(p));
    }
  }
  ~GdiFrame() {
    ::SelectObject(dc_, old_bitmap_);
    ::SelectObject(window_dc_, old_window_);
    ::DeleteDC(dc_);
    ::DeleteDC(window_dc_);
    ::DeleteObject(bitmap_);
    ::DeleteObject(window_);
    for (::HGDIOBJ o : {::HGDIOBJ(black_), ::HGDIOBJ(pad_brush_), ::HGDIOBJ(poly_brush_),
                        ::HGDIOBJ(thin_pen_), ::HGDIOBJ(grid_pen_), ::HGDIOBJ(xor_pen_)}) {
      ::DeleteObject(o);
    }
    for (::HPEN p : track_pens_) ::DeleteObject(p);
  }
  GdiFrame(const GdiFrame&) = delete;
  GdiFrame& operator=(const GdiFrame&) = delete;

  void Clear() {
    flip_ = !flip_;
    const ::RECT frame{0, 0, qb::kWidth, qb::kHeight};
    ::FillRect(dc_, &frame, flip_ ? black_ : poly_brush_);
  }
  void PcbScene() {
    const qb::Workloads& d = qb::Data();
    for (const qb::Track& t : d.tracks) {
      ::SelectObject(dc_, track_pens_[t.width - 1]);
      ::MoveToEx(dc_, t.x0, t.y0, nullptr);
      ::LineTo(dc_, t.x1, t.y1);
    }
    ::SelectObject(dc_, ::GetStockObject(NULL_PEN));
    for (const qb::Disk& p : d.pads) {
      ::SelectObject(dc_, pad_brush_);
      ::Ellipse(dc_, p.cx - p.r, p.cy - p.r, p.cx + p.r + 1, p.cy + p.r + 1);
    }
    for (const auto& q : rect_pads_) {
      ::HRGN rgn = ::CreatePolygonRgn(q.data(), 4, WINDING);
      ::FillRgn(dc_, rgn, pad_brush_);
      ::DeleteObject(rgn);
    }
  }
  void ThinLines() {
    for (const qb::Track& t : qb::Data().thin) {
      ::SelectObject(dc_, thin_pen_);
      ::MoveToEx(dc_, t.x0, t.y0, nullptr);
      ::LineTo(dc_, t.x1, t.y1);
    }
  }
  void Circles() {
    for (const qb::Disk& d : qb::Data().circles) {
      ::SelectObject(dc_, thin_pen_);
      ::SelectObject(dc_, ::GetStockObject(NULL_BRUSH));
      ::Ellipse(dc_, d.cx - d.r, d.cy - d.r, d.cx + d.r + 1, d.cy + d.r + 1);
    }
  }
  void Stars() {
    ::SetPolyFillMode(dc_, ALTERNATE);
    for (const auto& p : stars_) {
      ::SelectObject(dc_, ::GetStockObject(NULL_PEN));
      ::SelectObject(dc_, poly_brush_);
      ::Polygon(dc_, p.data(), static_cast<int>(p.size()));
    }
  }
  void Grid() {
    for (int y = 0; y < qb::kHeight; y += 5) {
      for (int x = 0; x < qb::kWidth; x += 5) ::SetPixel(dc_, x, y, 0x646464);
    }
    for (int y = 0; y < qb::kHeight; y += 20) {
      for (int x = 0; x < qb::kWidth; x += 20) {
        ::SelectObject(dc_, grid_pen_);
        ::MoveToEx(dc_, x - 3, y, nullptr);
        ::LineTo(dc_, x + 4, y);
        ::MoveToEx(dc_, x, y - 3, nullptr);
        ::LineTo(dc_, x, y + 4);
      }
    }
  }
  void RubberBand() {
    const int rop = ::SetROP2(dc_, R2_XORPEN);
    const auto& r = qb::Data().rubber;
    for (std::size_t i = 1; i < r.size(); ++i) {
      ::SelectObject(dc_, xor_pen_);
      ::MoveToEx(dc_, r[i - 1].x0, r[i - 1].y0, nullptr);
      ::LineTo(dc_, r[i - 1].x1, r[i - 1].y1);
      ::MoveToEx(dc_, r[i].x0, r[i].y0, nullptr);
      ::LineTo(dc_, r[i].x1, r[i].y1);
    }
    ::SetROP2(dc_, rop);
  }
  void Present() { ::BitBlt(window_dc_, 0, 0, qb::kWidth, qb::kHeight, dc_, 0, 0, SRCCOPY); }
  // The calls are queued per thread; GdiFlush makes sure every pixel is written inside the timing.
  static void Flush() { ::GdiFlush(); }

 private:
  static ::HBITMAP TopDownDib() {
    ::BITMAPINFO bi{};
    bi.bmiHeader.biSize = sizeof(bi.bmiHeader);
    bi.bmiHeader.biWidth = qb::kWidth;
    bi.bmiHeader.biHeight = -qb::kHeight;  // negative: the first row is the top one
    bi.bmiHeader.biPlanes = 1;
    bi.bmiHeader.biBitCount = 32;
    bi.bmiHeader.biCompression = BI_RGB;
    void* bits = nullptr;
    return ::CreateDIBSection(nullptr, &bi, DIB_RGB_COLORS, &bits, nullptr, 0);
  }

  ::HDC dc_ = nullptr;
  ::HDC window_dc_ = nullptr;
  ::HBITMAP bitmap_ = nullptr;
  ::HBITMAP window_ = nullptr;
  ::HGDIOBJ old_bitmap_ = nullptr;
  ::HGDIOBJ old_window_ = nullptr;
  ::HBRUSH black_ = nullptr, pad_brush_ = nullptr, poly_brush_ = nullptr;
  ::HPEN thin_pen_ = nullptr, grid_pen_ = nullptr, xor_pen_ = nullptr;
  ::HPEN track_pens_[12] = {};
  std::vector<std::array<::POINT, 4>> rect_pads_;
  std::vector<std::vector<::POINT>> stars_;
  bool flip_ = false;
};

// ---- timing ------------------------------------------------------------------------------------

double Now() {
  static const double tick = [] {
    ::LARGE_INTEGER f;
    ::QueryPerformanceFrequency(&f);
    return 1.0 / static_cast<double>(f.QuadPart);
  }();
  ::LARGE_INTEGER t;
  ::QueryPerformanceCounter(&t);
  return static_cast<double>(t.QuadPart) * tick;
}

// Keeps the compiler from dropping a store nobody reads.
void Escape(void* p) { asm volatile("" : : "g"(p) : "memory"); }

// Best seconds of one run of `fn`: one warm-up run (scratch buffers, caches, page faults), then
// at least `min_runs` runs and at least `min_seconds` in all.
template <typename Fn>
double BestSeconds(Fn&& fn, int min_runs = 5, double min_seconds = 0.3) {
  fn();
  double best = 1e30, total = 0;
  for (int run = 0; run < min_runs || total < min_seconds; ++run) {
    const double start = Now();
    fn();
    const double t = Now() - start;
    best = std::min(best, t);
    total += t;
  }
  return best;
}

struct Job {
  const char* name;
  void (qb::QvisFrame::*engine)();
  void (GdiFrame::*gdi)();
};

}  // namespace

int main() {
  qb::Data();  // the scene is made before any timing
  qb::QvisFrame engine;
  GdiFrame gdi;

  std::vector<std::uint8_t> a(qb::kFrameBytes, 1), b(qb::kFrameBytes);
  const double memset_s = BestSeconds([&] {
    std::memset(b.data(), 0, b.size());
    Escape(b.data());
  });
  const double memcpy_s = BestSeconds([&] {
    std::memcpy(b.data(), a.data(), a.size());
    Escape(b.data());
  });

  static const Job kJobs[] = {
      {"Clear", &qb::QvisFrame::Clear, &GdiFrame::Clear},
      {"PcbScene", &qb::QvisFrame::PcbScene, &GdiFrame::PcbScene},
      {"ThinLines20k", &qb::QvisFrame::ThinLines, &GdiFrame::ThinLines},
      {"Circles5k", &qb::QvisFrame::Circles, &GdiFrame::Circles},
      {"Stars1k", &qb::QvisFrame::Stars, &GdiFrame::Stars},
      {"Grid", &qb::QvisFrame::Grid, &GdiFrame::Grid},
      {"RubberBand10k", &qb::QvisFrame::RubberBand, &GdiFrame::RubberBand},
      {"Present", &qb::QvisFrame::Present, &GdiFrame::Present},
  };
  std::printf("1920x1080, 32-bit top-down; best of >= 5 runs; memset %.3f ms, memcpy %.3f ms\n",
              memset_s * 1e3, memcpy_s * 1e3);
  std::printf("%-14s %12s %12s %12s %12s\n", "job", "engine ms", "GDI ms", "engine/GDI", "engine/memcpy");
  for (const Job& job : kJobs) {
    const double e = BestSeconds([&] { (engine.*job.engine)(); });
    const double g = BestSeconds([&] {
      (gdi.*job.gdi)();
      GdiFrame::Flush();
    });
    std::printf("%-14s %12.3f %12.3f %12.2f %12.2f\n", job.name, e * 1e3, g * 1e3, e / g, e / memcpy_s);
    std::fflush(stdout);
  }
  return 0;
}
