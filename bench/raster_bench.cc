// The eight raster jobs of a PCB canvas at 1920x1080, each measured beside the same job drawn
// with Cairo (image surface, aliased and anti-aliased) and beside memset / memcpy of the frame,
// in the same run. Every primitive is one call with its pen or brush selected, as the canvas
// issues them. Counters: qvis_ms, cairo_ms, cairo_aa_ms per run of the job; vs_cairo,
// vs_cairo_aa and vs_best (the faster Cairo) = qvis / that time, below 1 is faster; vs_memset
// and vs_memcpy = qvis / one fill or copy of the frame. Times are CPU time of the drawing thread.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <ctime>
#include <functional>
#include <vector>

#ifdef QVIS_HAVE_CAIRO
#include <cairo.h>
#endif

#include "raster_jobs.h"

namespace {

using namespace qvis::bench;  // NOLINT: the shared jobs and their scene data

// ---- the same workloads with Cairo -------------------------------------------------------------

#ifdef QVIS_HAVE_CAIRO
// One Cairo context per anti-aliasing mode; the figures are placed on pixel centres as a
// one-pixel GDI line is.
class CairoFrame {
 public:
  explicit CairoFrame(bool antialias)
      : surface_(cairo_image_surface_create(CAIRO_FORMAT_RGB24, kWidth, kHeight)),
        window_(cairo_image_surface_create(CAIRO_FORMAT_RGB24, kWidth, kHeight)),
        cr_(cairo_create(surface_)),
        window_cr_(cairo_create(window_)) {
    cairo_set_antialias(cr_, antialias ? CAIRO_ANTIALIAS_DEFAULT : CAIRO_ANTIALIAS_NONE);
    cairo_set_operator(window_cr_, CAIRO_OPERATOR_SOURCE);
    cairo_set_source_surface(window_cr_, surface_, 0, 0);
  }
  ~CairoFrame() {
    cairo_destroy(window_cr_);
    cairo_destroy(cr_);
    cairo_surface_destroy(window_);
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
  void PcbScene() {
    const Workloads& d = Data();
    cairo_set_line_cap(cr_, CAIRO_LINE_CAP_ROUND);
    for (const Track& t : d.tracks) {
      Rgb(0xFF8030);
      cairo_set_line_width(cr_, t.width);
      cairo_move_to(cr_, t.x0 + 0.5, t.y0 + 0.5);
      cairo_line_to(cr_, t.x1 + 0.5, t.y1 + 0.5);
      cairo_stroke(cr_);
    }
    for (const Disk& p : d.pads) {
      Rgb(0xFFC000);
      cairo_new_sub_path(cr_);
      cairo_arc(cr_, p.cx + 0.5, p.cy + 0.5, p.r, 0, 2 * kPi);
      cairo_fill(cr_);
    }
    cairo_set_fill_rule(cr_, CAIRO_FILL_RULE_WINDING);
    for (const Quad& q : d.rect_pads) {
      Rgb(0xFFC000);
      cairo_move_to(cr_, q[0].x, q[0].y);
      for (int k = 1; k < 4; ++k) cairo_line_to(cr_, q[k].x, q[k].y);
      cairo_close_path(cr_);
      cairo_fill(cr_);
    }
  }
  void ThinLines() {
    cairo_set_line_width(cr_, 1);
    cairo_set_line_cap(cr_, CAIRO_LINE_CAP_BUTT);
    for (const Track& t : Data().thin) {
      Rgb(0xFFFF00);
      cairo_move_to(cr_, t.x0 + 0.5, t.y0 + 0.5);
      cairo_line_to(cr_, t.x1 + 0.5, t.y1 + 0.5);
      cairo_stroke(cr_);
    }
  }
  void Circles() {
    cairo_set_line_width(cr_, 1);
    for (const Disk& d : Data().circles) {
      Rgb(0xFFFF00);
      cairo_new_sub_path(cr_);
      cairo_arc(cr_, d.cx + 0.5, d.cy + 0.5, d.r, 0, 2 * kPi);
      cairo_stroke(cr_);
    }
  }
  void Stars() {
    cairo_set_fill_rule(cr_, CAIRO_FILL_RULE_EVEN_ODD);
    for (const auto& p : Data().stars) {
      Rgb(0x40A040);
      cairo_move_to(cr_, p[0].x, p[0].y);
      for (std::size_t k = 1; k < p.size(); ++k) cairo_line_to(cr_, p[k].x, p[k].y);
      cairo_close_path(cr_);
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
    cairo_set_line_width(cr_, 10);
    cairo_set_line_cap(cr_, CAIRO_LINE_CAP_ROUND);
    const auto& r = Data().rubber;
    for (std::size_t i = 1; i < r.size(); ++i) {
      Rgb(0xFFFFFF);
      cairo_move_to(cr_, r[i - 1].x0 + 0.5, r[i - 1].y0 + 0.5);
      cairo_line_to(cr_, r[i - 1].x1 + 0.5, r[i - 1].y1 + 0.5);
      cairo_stroke(cr_);
      cairo_move_to(cr_, r[i].x0 + 0.5, r[i].y0 + 0.5);
      cairo_line_to(cr_, r[i].x1 + 0.5, r[i].y1 + 0.5);
      cairo_stroke(cr_);
    }
    cairo_set_operator(cr_, CAIRO_OPERATOR_OVER);
  }
  void Present() {
    cairo_paint(window_cr_);
    cairo_surface_flush(window_);
  }

 private:
  cairo_surface_t* surface_;
  cairo_surface_t* window_;
  cairo_t* cr_;
  cairo_t* window_cr_;
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

double MemcpySeconds() {
  static std::vector<std::uint8_t> a(kFrameBytes, 1), b(kFrameBytes);
  return SecondsPerRun([] {
    std::memcpy(b.data(), a.data(), a.size());
    benchmark::DoNotOptimize(b.data());
    benchmark::ClobberMemory();
  });
}

// Runs one workload: the engine in the benchmark loop, then Cairo (aliased and anti-aliased),
// memset and memcpy of the frame for the ratios.
template <void (QvisFrame::*Qvis)()
#ifdef QVIS_HAVE_CAIRO
          , void (CairoFrame::*Cairo)()
#endif
          >
void RunWorkload(benchmark::State& state) {
  QvisFrame qvis;
  Data();
  (qvis.*Qvis)();  // warm: scratch buffers, caches, page faults
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
  state.counters["vs_memcpy"] = qvis_seconds / MemcpySeconds();
#ifdef QVIS_HAVE_CAIRO
  CairoFrame aliased(false), antialiased(true);
  const double cairo_seconds = SecondsPerRun([&] { (aliased.*Cairo)(); });
  const double cairo_aa_seconds = SecondsPerRun([&] { (antialiased.*Cairo)(); });
  state.counters["cairo_ms"] = cairo_seconds * 1e3;
  state.counters["cairo_aa_ms"] = cairo_aa_seconds * 1e3;
  state.counters["vs_cairo"] = qvis_seconds / cairo_seconds;
  state.counters["vs_cairo_aa"] = qvis_seconds / cairo_aa_seconds;
  state.counters["vs_best"] = qvis_seconds / std::min(cairo_seconds, cairo_aa_seconds);
#endif
}

#ifdef QVIS_HAVE_CAIRO
#define QVIS_WORKLOAD(name) RunWorkload<&QvisFrame::name, &CairoFrame::name>
#else
#define QVIS_WORKLOAD(name) RunWorkload<&QvisFrame::name>
#endif

void BM_Clear(benchmark::State& s) { QVIS_WORKLOAD(Clear)(s); }
void BM_PcbScene(benchmark::State& s) { QVIS_WORKLOAD(PcbScene)(s); }
void BM_ThinLines20k(benchmark::State& s) { QVIS_WORKLOAD(ThinLines)(s); }
void BM_Circles5k(benchmark::State& s) { QVIS_WORKLOAD(Circles)(s); }
void BM_Stars1k(benchmark::State& s) { QVIS_WORKLOAD(Stars)(s); }
void BM_Grid(benchmark::State& s) { QVIS_WORKLOAD(Grid)(s); }
void BM_RubberBand10k(benchmark::State& s) { QVIS_WORKLOAD(RubberBand)(s); }
void BM_Present(benchmark::State& s) { QVIS_WORKLOAD(Present)(s); }

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
BENCHMARK(BM_PcbScene)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ThinLines20k)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Circles5k)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Stars1k)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Grid)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_RubberBand10k)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Present)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
