// The board document at scale: drawing a 1920x1080 frame of a board through its spatial index,
// hit-testing, and memory per object. Every figure is a ratio to a reference measured in the
// same run, interleaved with the work:
//   frame_vs_memset  a frame (pan or zoom step) of 100,000 visible objects against clearing
//                    the same 1920x1080 frame with memset;
//   big_vs_small     a zoomed-in frame of a 1,000,000-object board against the same view of
//                    a board holding only what that view shows (1.0: cost follows what is
//                    visible, not the board);
//   hit_big_vs_small a point hit test on 1,000,000 objects against one on 10,000;
//   bytes_per_object resident memory the board (document and index) takes per object.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstring>
#include <ctime>
#include <unistd.h>
#include <vector>

#include "qvis/artwork/board.h"
#include "qvis/artwork/render.h"

namespace {

using qvis::ArtBoard;
using qvis::ArtDocument;
using qvis::ArtObject;
using qvis::Coord;
using qvis::kNmPerMm;

constexpr int kWidth = 1920;
constexpr int kHeight = 1080;

double ThreadSeconds() {
  timespec t{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
  return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_nsec) * 1e-9;
}

long ResidentBytes() {
  long pages = 0, resident = 0;
  if (FILE* f = std::fopen("/proc/self/statm", "r")) {
    if (std::fscanf(f, "%ld %ld", &pages, &resident) != 2) resident = 0;
    std::fclose(f);
  }
  return resident * sysconf(_SC_PAGESIZE);
}

// Reports two timings summed over `n` steps: each as a mean (in milliseconds, or the unit
// `per_second` divides a second into) and `ratio`, the first over the second, the figure the
// benchmark is for.
struct Timing {
  const char* name;
  double seconds;
};
void ReportRatio(benchmark::State& state, int n, Timing work, Timing reference, const char* ratio,
                 double per_second = 1e3) {
  state.counters[work.name] = work.seconds / n * per_second;
  state.counters[reference.name] = reference.seconds / n * per_second;
  state.counters[ratio] = work.seconds / reference.seconds;
}

// A board of `n` objects on a square grid `pitch` apart (two layers: tracks with a round
// aperture and rectangular pads, one region in every 50), starting at the origin.
ArtDocument GridBoard(int n, Coord pitch) {
  ArtDocument d;
  d.layers.resize(2);
  d.layers[0].name = "copper";
  d.layers[0].colour = 0xC83434;
  d.layers[1].name = "pads";
  d.layers[1].colour = 0xE0C040;
  d.layers[1].order = 1;
  for (qvis::Layer& l : d.layers) {
    qvis::Aperture a;
    a.kind = qvis::ApertureKind::kCircle;
    a.size_x = pitch / 4;
    l.apertures[10] = a;
    a.kind = qvis::ApertureKind::kRectangle;
    a.size_x = pitch / 2;
    a.size_y = pitch / 3;
    l.apertures[11] = a;
  }
  int side = 1;
  while (side * side < n) ++side;
  d.layers[0].objects.reserve(static_cast<std::size_t>(n));
  for (int k = 0; k < n; ++k) {
    const Coord x = (k % side) * pitch, y = (k / side) * pitch;
    ArtObject o;
    if (k % 50 == 0) {
      o.kind = qvis::ObjectKind::kRegion;
      o.contour.start = {x, y};
      for (qvis::ArtPoint p : {qvis::ArtPoint{x + pitch / 2, y}, qvis::ArtPoint{x + pitch / 2, y + pitch / 2},
                               qvis::ArtPoint{x, y}}) {
        qvis::ContourSegment s;
        s.end = p;
        o.contour.segments.push_back(s);
      }
      d.layers[0].objects.push_back(std::move(o));
    } else if (k % 2 == 0) {
      o.kind = qvis::ObjectKind::kTrack;
      o.aperture = 10;
      o.start = {x, y};
      o.end = {x + pitch * 2 / 3, y + pitch / 3};
      d.layers[0].objects.push_back(std::move(o));
    } else {
      o.kind = qvis::ObjectKind::kFlash;
      o.aperture = 11;
      o.end = {x, y};
      d.layers[1].objects.push_back(std::move(o));
    }
  }
  return d;
}

struct Frame {
  std::vector<std::uint32_t> pixels = std::vector<std::uint32_t>(kWidth * kHeight);
  qvis::PixelTarget Target() { return {pixels.data(), kWidth, kHeight, kWidth}; }
};

qvis::ArtView ViewOf(Coord x0, Coord y0, Coord width_nm) {
  qvis::ArtView v;
  v.width = kWidth;
  v.height = kHeight;
  v.dpi = kWidth * static_cast<double>(qvis::kNmPerInch) / static_cast<double>(width_nm);
  v.origin_x = x0;
  v.origin_y = y0;
  return v;
}

// 100,000 objects 0.5 mm apart (a 158 mm square), the whole board in view (about 3 pixels
// from one object to the next); each frame pans by a few pixels or zooms by a step, as a drag
// or the wheel does.
void BM_InteractiveFrame100k(benchmark::State& state) {
  const Coord pitch = kNmPerMm / 2;
  ArtBoard board(GridBoard(100000, pitch));
  Frame frame, ref;
  double t_frame = 0, t_ref = 0;
  int step = 0;
  std::int64_t visible = 0;
  for (auto _ : state) {
    const Coord pan = (step % 16) * pitch / 4;
    const Coord width = 290 * kNmPerMm - (step % 8) * kNmPerMm;  // zooming in and out
    const qvis::ArtView view = ViewOf(-60 * kNmPerMm + pan, -5 * kNmPerMm, width);
    double t0 = ThreadSeconds();
    std::memset(ref.pixels.data(), 0, ref.pixels.size() * 4);
    benchmark::DoNotOptimize(ref.pixels.data());
    double t1 = ThreadSeconds();
    std::memset(frame.pixels.data(), 0, frame.pixels.size() * 4);
    qvis::ComposeBoard(board, view, frame.Target());
    benchmark::DoNotOptimize(frame.pixels.data());
    double t2 = ThreadSeconds();
    t_ref += t1 - t0;
    t_frame += t2 - t1;
    if (step == 0) {
      const qvis::ArtBox area = qvis::ViewArea(view, 0);
      visible = static_cast<std::int64_t>(board.Visible(0, area).size() + board.Visible(1, area).size());
    }
    ++step;
  }
  ReportRatio(state, step, {"frame_ms", t_frame}, {"memset_ms", t_ref}, "frame_vs_memset");
  state.counters["visible"] = static_cast<double>(visible);
}
BENCHMARK(BM_InteractiveFrame100k)->Unit(benchmark::kMillisecond)->Iterations(24);

// 1,000,000 objects 1 mm apart (a 1 m square); a 40 by 22.5 mm view shows about 900 of them.
// The same view of a board made of just the objects around it is the reference.
void BM_ZoomedIn1M(benchmark::State& state) {
  const Coord pitch = kNmPerMm;
  const long before = ResidentBytes();
  ArtBoard big(GridBoard(1000000, pitch));
  const long after = ResidentBytes();
  // The small board: the same grid cut to a 60 mm square around the view.
  ArtDocument cut = GridBoard(1000000, pitch);
  for (qvis::Layer& l : cut.layers) {
    std::vector<ArtObject> keep;
    for (ArtObject& o : l.objects) {
      const qvis::ArtPoint p = o.kind == qvis::ObjectKind::kFlash ? o.end
                               : o.kind == qvis::ObjectKind::kRegion ? o.contour.start
                                                                     : o.start;
      if (p.x >= 480 * kNmPerMm && p.x < 540 * kNmPerMm && p.y >= 480 * kNmPerMm &&
          p.y < 540 * kNmPerMm) {
        keep.push_back(std::move(o));
      }
    }
    l.objects = std::move(keep);
  }
  ArtBoard small(std::move(cut));
  Frame a, b;
  double t_big = 0, t_small = 0;
  int step = 0;
  for (auto _ : state) {
    const qvis::ArtView view =
        ViewOf(490 * kNmPerMm + (step % 8) * kNmPerMm / 4, 500 * kNmPerMm, 40 * kNmPerMm);
    double t0 = ThreadSeconds();
    std::memset(a.pixels.data(), 0, a.pixels.size() * 4);
    qvis::ComposeBoard(big, view, a.Target());
    double t1 = ThreadSeconds();
    std::memset(b.pixels.data(), 0, b.pixels.size() * 4);
    qvis::ComposeBoard(small, view, b.Target());
    double t2 = ThreadSeconds();
    benchmark::DoNotOptimize(a.pixels.data());
    benchmark::DoNotOptimize(b.pixels.data());
    if (step == 0 && a.pixels != b.pixels) state.SkipWithError("the two boards drew differently");
    t_big += t1 - t0;
    t_small += t2 - t1;
    ++step;
  }
  ReportRatio(state, step, {"big_frame_ms", t_big}, {"small_frame_ms", t_small}, "big_vs_small");
  state.counters["objects"] = static_cast<double>(big.LiveCount());
  state.counters["bytes_per_object"] =
      static_cast<double>(after - before) / static_cast<double>(big.LiveCount());
  state.counters["board_MB"] = static_cast<double>(after - before) / (1024.0 * 1024.0);
}
BENCHMARK(BM_ZoomedIn1M)->Unit(benchmark::kMillisecond)->Iterations(16);

// Point hits (with a tolerance) on 1,000,000 objects against 10,000, both 1 mm apart.
void BM_HitPoint(benchmark::State& state) {
  ArtBoard big(GridBoard(1000000, kNmPerMm));
  ArtBoard small(GridBoard(10000, kNmPerMm));
  double t_big = 0, t_small = 0;
  std::int64_t hits = 0;
  int n = 0;
  for (auto _ : state) {
    for (int k = 0; k < 1000; ++k) {
      const Coord x = (k * 37 % 97) * kNmPerMm + kNmPerMm / 3, y = (k * 11 % 89) * kNmPerMm;
      double t0 = ThreadSeconds();
      hits += static_cast<std::int64_t>(big.HitPoint(x, y, kNmPerMm / 10).size());
      double t1 = ThreadSeconds();
      hits += static_cast<std::int64_t>(small.HitPoint(x, y, kNmPerMm / 10).size());
      double t2 = ThreadSeconds();
      t_big += t1 - t0;
      t_small += t2 - t1;
      ++n;
    }
  }
  ReportRatio(state, n, {"big_hit_us", t_big}, {"small_hit_us", t_small}, "hit_big_vs_small", 1e6);
  state.counters["hits"] = static_cast<double>(hits);
}
BENCHMARK(BM_HitPoint)->Unit(benchmark::kMillisecond)->Iterations(3);

// Building the index of 1,000,000 objects (bulk load) against copying the same document.
void BM_IndexBuild1M(benchmark::State& state) {
  const ArtDocument doc = GridBoard(1000000, kNmPerMm);
  double t_build = 0, t_copy = 0;
  int n = 0;
  for (auto _ : state) {
    double t0 = ThreadSeconds();
    ArtDocument copy = doc;
    double t1 = ThreadSeconds();
    ArtBoard board(std::move(copy));
    benchmark::DoNotOptimize(board.LiveCount());
    double t2 = ThreadSeconds();
    t_copy += t1 - t0;
    t_build += t2 - t1;
    ++n;
  }
  ReportRatio(state, n, {"index_ms", t_build}, {"copy_ms", t_copy}, "index_vs_copy");
}
BENCHMARK(BM_IndexBuild1M)->Unit(benchmark::kMillisecond)->Iterations(2);

}  // namespace

BENCHMARK_MAIN();
