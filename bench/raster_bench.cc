// Raster engine workloads of a PCB canvas at 1920x1080, each measured beside the same workload
// drawn with Cairo (image surface, no anti-aliasing) and beside memset / memcpy of the frame, in
// the same run. Counters: qvis_ms and cairo_ms per run of the workload, vs_cairo = qvis / cairo
// (below 1: faster than Cairo), vs_memset = qvis / memset of the frame. Times are the CPU time
// of the drawing thread.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <ctime>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <functional>
#include <random>
#include <vector>

#ifdef QVIS_HAVE_CAIRO
#include <cairo.h>
#endif

#include "qvis/compat/win32_names.h"
#include "qvis/gdi/gdi.h"

namespace {

using namespace qvis;       // NOLINT: handle types
using namespace qvis::gdi;  // NOLINT: the calls read as the platform's

constexpr double kPi = 3.141592653589793;
constexpr int kWidth = 1920;
constexpr int kHeight = 1080;
constexpr std::size_t kFrameBytes = std::size_t{kWidth} * kHeight * 4;

// Scene data, made once with a fixed seed so both engines draw the same figures.
struct Track {
  int x0, y0, x1, y1, width;
};
struct Disk {
  int cx, cy, r;
};

struct Workloads {
  std::vector<Track> tracks;       // 20,000 round-ended, widths 1..12
  std::vector<Disk> pads;          // 5,000 filled disks
  std::vector<Track> thin;         // 20,000 one-pixel lines
  std::vector<Disk> circles;       // 5,000 outlines
  std::vector<std::vector<CPoint>> polygons;  // 1,000 filled polygons
  std::vector<Track> rubber;       // 10,001 positions of a 10-px rubber band

  Workloads() {
    std::mt19937 rng(7);
    auto uni = [&](int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(rng); };
    for (int i = 0; i < 20000; ++i) {
      int x = uni(0, kWidth - 1), y = uni(0, kHeight - 1);
      tracks.push_back({x, y, x + uni(-120, 120), y + uni(-120, 120), uni(1, 12)});
    }
    for (int i = 0; i < 5000; ++i) pads.push_back({uni(0, kWidth - 1), uni(0, kHeight - 1), uni(2, 20)});
    for (int i = 0; i < 20000; ++i) {
      int x = uni(0, kWidth - 1), y = uni(0, kHeight - 1);
      thin.push_back({x, y, x + uni(-200, 200), y + uni(-200, 200), 1});
    }
    for (int i = 0; i < 5000; ++i) circles.push_back({uni(0, kWidth - 1), uni(0, kHeight - 1), uni(3, 60)});
    for (int i = 0; i < 1000; ++i) {
      int cx = uni(0, kWidth - 1), cy = uni(0, kHeight - 1), n = uni(3, 12);
      std::vector<CPoint> p;
      for (int k = 0; k < n; ++k) {
        double a = 2 * kPi * k / n;
        int r = uni(10, 80);
        p.emplace_back(cx + static_cast<int>(r * std::cos(a)), cy + static_cast<int>(r * std::sin(a)));
      }
      polygons.push_back(std::move(p));
    }
    int x = 500, y = 500;
    for (int i = 0; i <= 10000; ++i) {
      x = std::clamp(x + uni(-3, 3), 20, kWidth - 20);
      y = std::clamp(y + uni(-3, 3), 20, kHeight - 20);
      rubber.push_back({x, y, x + 10, y, 1});
    }
  }
};

const Workloads& Data() {
  static const Workloads data;
  return data;
}

// ---- the engine ----------------------------------------------------------------------------------

class QvisFrame {
 public:
  QvisFrame() : dc_(CreateCompatibleDC(nullptr)), bitmap_(CreateBitmap32(kWidth, kHeight)) {
    SelectObject(dc_, bitmap_);
    black_ = CreateSolidBrush(0);
    pad_brush_ = CreateSolidBrush(0x00C0FF);
    poly_brush_ = CreateSolidBrush(0x40A040);
    thin_pen_ = CreatePen(PS_SOLID, 1, 0x00FFFF);
    grid_pen_ = CreatePen(PS_SOLID, 1, 0xC8C8C8);
    xor_pen_ = CreatePen(PS_SOLID, 1, 0xFFFFFF);
    LOGBRUSH lb;
    lb.lbStyle = BS_SOLID;
    lb.lbColor = 0x3080FF;
    track_pens_[0] = CreatePen(PS_SOLID, 1, lb.lbColor);
    for (int w = 2; w <= 12; ++w) {
      track_pens_[w - 1] = ExtCreatePen(PS_GEOMETRIC | PS_SOLID | PS_ENDCAP_ROUND | PS_JOIN_ROUND,
                                        static_cast<DWORD>(w), &lb, 0, nullptr);
    }
  }
  ~QvisFrame() {
    DeleteDC(dc_);
    DeleteObject(bitmap_);
    for (HGDIOBJ o : {HGDIOBJ(black_), HGDIOBJ(pad_brush_), HGDIOBJ(poly_brush_), HGDIOBJ(thin_pen_),
                      HGDIOBJ(grid_pen_), HGDIOBJ(xor_pen_)}) {
      DeleteObject(o);
    }
    for (HPEN p : track_pens_) DeleteObject(p);
  }

  // Clear fills the frame as the render buffer begins a frame. It alternates two colours so
  // that no engine can skip a clear that changes nothing.
  void Clear() {
    flip_ = !flip_;
    const CRect frame(0, 0, kWidth, kHeight);
    FillRect(dc_, &frame, flip_ ? black_ : poly_brush_);
  }
  void Tracks() {
    for (const Track& t : Data().tracks) {
      SelectObject(dc_, track_pens_[t.width - 1]);
      MoveToEx(dc_, t.x0, t.y0, nullptr);
      LineTo(dc_, t.x1, t.y1);
    }
  }
  void Pads() {
    SelectObject(dc_, GetStockObject(NULL_PEN));
    SelectObject(dc_, pad_brush_);
    for (const Disk& d : Data().pads) Ellipse(dc_, d.cx - d.r, d.cy - d.r, d.cx + d.r, d.cy + d.r);
  }
  void ThinLines() {
    SelectObject(dc_, thin_pen_);
    for (const Track& t : Data().thin) {
      MoveToEx(dc_, t.x0, t.y0, nullptr);
      LineTo(dc_, t.x1, t.y1);
    }
  }
  void Circles() {
    SelectObject(dc_, thin_pen_);
    SelectObject(dc_, GetStockObject(NULL_BRUSH));
    for (const Disk& d : Data().circles) Ellipse(dc_, d.cx - d.r, d.cy - d.r, d.cx + d.r, d.cy + d.r);
  }
  void Polygons() {
    SelectObject(dc_, GetStockObject(NULL_PEN));
    SelectObject(dc_, poly_brush_);
    for (const auto& p : Data().polygons) Polygon(dc_, p.data(), static_cast<int>(p.size()));
  }
  // The grid display: a dot every 5 pixels and a 7-pixel plus every 20.
  void Grid() {
    for (int y = 0; y < kHeight; y += 5) {
      for (int x = 0; x < kWidth; x += 5) SetPixel(dc_, x, y, 0x646464);
    }
    SelectObject(dc_, grid_pen_);
    for (int y = 0; y < kHeight; y += 20) {
      for (int x = 0; x < kWidth; x += 20) {
        MoveToEx(dc_, x - 3, y, nullptr);
        LineTo(dc_, x + 4, y);
        MoveToEx(dc_, x, y - 3, nullptr);
        LineTo(dc_, x, y + 4);
      }
    }
  }
  // Rubber band: erase the previous line and draw the next one, both in XOR.
  void RubberBand() {
    SelectObject(dc_, xor_pen_);
    int rop = SetROP2(dc_, R2_XORPEN);
    const auto& r = Data().rubber;
    for (std::size_t i = 1; i < r.size(); ++i) {
      MoveToEx(dc_, r[i - 1].x0, r[i - 1].y0, nullptr);
      LineTo(dc_, r[i - 1].x1, r[i - 1].y1);
      MoveToEx(dc_, r[i].x0, r[i].y0, nullptr);
      LineTo(dc_, r[i].x1, r[i].y1);
    }
    SetROP2(dc_, rop);
  }

 private:
  HDC dc_;
  HBITMAP bitmap_;
  HBRUSH black_, pad_brush_, poly_brush_;
  HPEN thin_pen_, grid_pen_, xor_pen_;
  HPEN track_pens_[12] = {};
  bool flip_ = false;
};

// ---- the same workloads with Cairo -------------------------------------------------------------

#ifdef QVIS_HAVE_CAIRO
class CairoFrame {
 public:
  CairoFrame()
      : surface_(cairo_image_surface_create(CAIRO_FORMAT_RGB24, kWidth, kHeight)),
        cr_(cairo_create(surface_)) {
    cairo_set_antialias(cr_, CAIRO_ANTIALIAS_NONE);
  }
  ~CairoFrame() {
    cairo_destroy(cr_);
    cairo_surface_destroy(surface_);
  }
  void Rgb(std::uint32_t rgb) {
    cairo_set_source_rgb(cr_, ((rgb >> 16) & 255) / 255.0, ((rgb >> 8) & 255) / 255.0, (rgb & 255) / 255.0);
  }
  void Clear() {
    flip_ = !flip_;
    cairo_set_operator(cr_, CAIRO_OPERATOR_SOURCE);
    Rgb(flip_ ? 0 : 0x40A040);
    cairo_paint(cr_);
    cairo_set_operator(cr_, CAIRO_OPERATOR_OVER);
  }
  void Tracks() {
    Rgb(0xFF8030);
    cairo_set_line_cap(cr_, CAIRO_LINE_CAP_ROUND);
    for (const Track& t : Data().tracks) {
      cairo_set_line_width(cr_, t.width);
      cairo_move_to(cr_, t.x0 + 0.5, t.y0 + 0.5);
      cairo_line_to(cr_, t.x1 + 0.5, t.y1 + 0.5);
      cairo_stroke(cr_);
    }
  }
  void Pads() {
    Rgb(0xFFC000);
    for (const Disk& d : Data().pads) {
      cairo_new_sub_path(cr_);
      cairo_arc(cr_, d.cx, d.cy, d.r, 0, 2 * kPi);
      cairo_fill(cr_);
    }
  }
  void ThinLines() {
    Rgb(0xFFFF00);
    cairo_set_line_width(cr_, 1);
    cairo_set_line_cap(cr_, CAIRO_LINE_CAP_BUTT);
    for (const Track& t : Data().thin) {
      cairo_move_to(cr_, t.x0 + 0.5, t.y0 + 0.5);
      cairo_line_to(cr_, t.x1 + 0.5, t.y1 + 0.5);
      cairo_stroke(cr_);
    }
  }
  void Circles() {
    Rgb(0xFFFF00);
    cairo_set_line_width(cr_, 1);
    for (const Disk& d : Data().circles) {
      cairo_new_sub_path(cr_);
      cairo_arc(cr_, d.cx, d.cy, d.r, 0, 2 * kPi);
      cairo_stroke(cr_);
    }
  }
  void Polygons() {
    Rgb(0x40A040);
    for (const auto& p : Data().polygons) {
      cairo_move_to(cr_, p[0].x, p[0].y);
      for (std::size_t k = 1; k < p.size(); ++k) cairo_line_to(cr_, p[k].x, p[k].y);
      cairo_close_path(cr_);
      cairo_set_fill_rule(cr_, CAIRO_FILL_RULE_EVEN_ODD);
      cairo_fill(cr_);
    }
  }
  // Pixel-exact marks are rectangles in Cairo: the fastest way it has to set single pixels.
  void Grid() {
    Rgb(0x646464);
    for (int y = 0; y < kHeight; y += 5) {
      for (int x = 0; x < kWidth; x += 5) cairo_rectangle(cr_, x, y, 1, 1);
    }
    cairo_fill(cr_);
    Rgb(0xC8C8C8);
    for (int y = 0; y < kHeight; y += 20) {
      for (int x = 0; x < kWidth; x += 20) {
        cairo_rectangle(cr_, x - 3, y, 7, 1);
        cairo_rectangle(cr_, x, y - 3, 1, 3);
        cairo_rectangle(cr_, x, y + 1, 1, 3);
      }
    }
    cairo_fill(cr_);
  }
  // Cairo has no pixel XOR; DIFFERENCE with white inverts, which is the same reversible change.
  void RubberBand() {
    cairo_set_operator(cr_, CAIRO_OPERATOR_DIFFERENCE);
    Rgb(0xFFFFFF);
    cairo_set_line_width(cr_, 1);
    const auto& r = Data().rubber;
    for (std::size_t i = 1; i < r.size(); ++i) {
      cairo_move_to(cr_, r[i - 1].x0, r[i - 1].y0 + 0.5);
      cairo_line_to(cr_, r[i - 1].x1, r[i - 1].y1 + 0.5);
      cairo_stroke(cr_);
      cairo_move_to(cr_, r[i].x0, r[i].y0 + 0.5);
      cairo_line_to(cr_, r[i].x1, r[i].y1 + 0.5);
      cairo_stroke(cr_);
    }
    cairo_set_operator(cr_, CAIRO_OPERATOR_OVER);
  }

 private:
  cairo_surface_t* surface_;
  cairo_t* cr_;
  bool flip_ = false;
};
#endif

// ThreadSeconds is the CPU time of this thread: the machines that run benchmarks are shared,
// and wall time would count the other processes.
double ThreadSeconds() {
  timespec t{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
  return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_nsec) * 1e-9;
}

// Seconds per run of `fn`, averaged over at least `min_seconds` of runs (after one warm-up run).
double SecondsPerRun(const std::function<void()>& fn, double min_seconds = 0.25) {
  fn();
  int runs = 0;
  const double start = ThreadSeconds();
  double elapsed = 0;
  do {
    fn();
    ++runs;
    elapsed = ThreadSeconds() - start;
  } while (elapsed < min_seconds);
  return elapsed / runs;
}

double MemsetSeconds() {
  static std::vector<std::uint8_t> frame(kFrameBytes);
  return SecondsPerRun([] {
    std::memset(frame.data(), 0, frame.size());
    benchmark::DoNotOptimize(frame.data());
    benchmark::ClobberMemory();
  });
}

// Runs one workload: the engine in the benchmark loop, then Cairo and memset for the ratios.
template <void (QvisFrame::*Qvis)()
#ifdef QVIS_HAVE_CAIRO
          , void (CairoFrame::*Cairo)()
#endif
          >
void RunWorkload(benchmark::State& state) {
  QvisFrame qvis;
  Data();
  (qvis.*Qvis)();  // warm: scratch buffers, glyph caches, page faults
  double qvis_seconds = 0;
  for (auto _ : state) {
    double start = ThreadSeconds();
    (qvis.*Qvis)();
    qvis_seconds += ThreadSeconds() - start;
    benchmark::ClobberMemory();
  }
  qvis_seconds /= static_cast<double>(state.iterations());
  state.counters["qvis_ms"] = qvis_seconds * 1e3;
  state.counters["vs_memset"] = qvis_seconds / MemsetSeconds();
#ifdef QVIS_HAVE_CAIRO
  CairoFrame cairo;
  double cairo_seconds = SecondsPerRun([&] { (cairo.*Cairo)(); });
  state.counters["cairo_ms"] = cairo_seconds * 1e3;
  state.counters["vs_cairo"] = qvis_seconds / cairo_seconds;
#endif
}

#ifdef QVIS_HAVE_CAIRO
#define QVIS_WORKLOAD(name) RunWorkload<&QvisFrame::name, &CairoFrame::name>
#else
#define QVIS_WORKLOAD(name) RunWorkload<&QvisFrame::name>
#endif

void BM_Clear(benchmark::State& s) { QVIS_WORKLOAD(Clear)(s); }
void BM_Tracks20k(benchmark::State& s) { QVIS_WORKLOAD(Tracks)(s); }
void BM_Pads5k(benchmark::State& s) { QVIS_WORKLOAD(Pads)(s); }
void BM_ThinLines20k(benchmark::State& s) { QVIS_WORKLOAD(ThinLines)(s); }
void BM_Circles5k(benchmark::State& s) { QVIS_WORKLOAD(Circles)(s); }
void BM_Polygons1k(benchmark::State& s) { QVIS_WORKLOAD(Polygons)(s); }
void BM_Grid(benchmark::State& s) { QVIS_WORKLOAD(Grid)(s); }
void BM_RubberBand10k(benchmark::State& s) { QVIS_WORKLOAD(RubberBand)(s); }

// The references themselves: filling and copying one frame.
void BM_MemsetFrame(benchmark::State& state) {
  std::vector<std::uint8_t> frame(kFrameBytes);
  for (auto _ : state) {
    std::memset(frame.data(), 0, frame.size());
    benchmark::DoNotOptimize(frame.data());
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * static_cast<std::int64_t>(kFrameBytes));
}
void BM_MemcpyFrame(benchmark::State& state) {
  std::vector<std::uint8_t> a(kFrameBytes, 1), b(kFrameBytes);
  for (auto _ : state) {
    std::memcpy(b.data(), a.data(), a.size());
    benchmark::DoNotOptimize(b.data());
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * static_cast<std::int64_t>(kFrameBytes));
}

BENCHMARK(BM_MemsetFrame)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_MemcpyFrame)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Clear)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Tracks20k)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Pads5k)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ThinLines20k)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Circles5k)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Polygons1k)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Grid)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_RubberBand10k)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
