// Reading and opening artwork files.
//
// BM_ParseGerber / BM_ParseExcellon: a large generated board is parsed into a layer and, in the
// same run and interleaved with it, the same bytes are read with no parsing (the file read into
// memory and every byte passed over once, counting command ends). Counters: parse_MBps,
// objects_per_s, read_MBps, and vs_read = parse time / read time.
//
// BM_OpenFirstFrame: a board is opened and its first 1920x1080 frame written as PNG, by
// `qvis-gerber render` and by the reference viewer gerbv (`gerbv -x png`) with the same framing,
// each as a process of its own, alternately; the time is the process's CPU time (user +
// system). Counters: qvis_ms, gerbv_ms, vs_gerbv = qvis / gerbv (goal: at most 0.25), and
// inproc_ms, the reading and drawing alone inside this process (no process start, no PNG).
#include <benchmark/benchmark.h>

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <numbers>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "qvis/artwork/io/excellon_reader.h"
#include "qvis/artwork/io/gerber_reader.h"
#include "qvis/artwork/render.h"
#include "qvis/artwork/shapes.h"

extern char** environ;

namespace {

using qvis::Layer;

double ThreadSeconds() {
  timespec t{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
  return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_nsec) * 1e-9;
}

std::string Mm(double v) { return std::to_string(std::llround(v * 1e6)); }
std::string Xy(double x, double y) { return "X" + Mm(x) + "Y" + Mm(y); }

// A board of `w` x `h` mm: `tracks` track segments in routed polylines at multiples of 45
// degrees, `flashes` pads of every aperture kind and several macros, `regions` pours and
// cut-outs (some with arc edges, some clear), and a few arcs.
std::string MakeBoard(double w, double h, int tracks, int flashes, int regions, unsigned seed) {
  std::mt19937 rng(seed);
  std::uniform_real_distribution<double> ux(2, w - 2), uy(2, h - 2), unit(0, 1);
  std::string g;
  g.reserve(static_cast<std::size_t>(tracks) * 40 + static_cast<std::size_t>(flashes) * 30);
  g += "G04 generated benchmark board*\n%TF.FileFunction,Copper,L1,Top*%\n%FSLAX46Y46*%\n%MOMM*%\n";
  g += "%AMTHERM*7,0,0,$1,$1x0.7,$1x0.12,45*%\n";
  g += "%AMRNDRECT*21,1,$1,$2-$3x2,0,0,0*21,1,$1-$3x2,$2,0,0,0*1,1,$3x2,($1/2)-$3,($2/2)-$3*"
       "1,1,$3x2,-($1/2)+$3,($2/2)-$3*1,1,$3x2,($1/2)-$3,-($2/2)+$3*1,1,$3x2,-($1/2)+$3,-($2/2)+$3*%\n";
  g += "%AMDPAK*4,1,5,-1,-1,1,-1,1.5,0,1,1,-1,1,-1,-1,0*1,0,0.5,0,0*5,1,8,0,0,0.6,22.5*%\n";
  const char* defs[] = {"C,0.15",  "C,0.2",    "C,0.25",        "C,0.3",       "C,0.5",
                        "C,1.0",   "R,1.5X0.8", "R,0.6X1.2X0.3", "O,1.8X0.9",   "O,0.7X1.6",
                        "P,1.2X8", "P,1.0X6X15", "THERM,2.0",    "RNDRECT,1.6X1.0X0.2", "DPAK"};
  const int n_defs = static_cast<int>(sizeof defs / sizeof defs[0]);
  for (int i = 0; i < n_defs; ++i) g += "%ADD" + std::to_string(10 + i) + defs[i] + "*%\n";
  g += "G75*\n";
  // Regions first: the pours, with clear cut-outs in them.
  for (int i = 0; i < regions; ++i) {
    const bool clear = i % 5 == 4;
    if (clear) g += "%LPC*%\n";
    const double cx = ux(rng), cy = uy(rng), r = 1 + 6 * unit(rng);
    const int n = 6 + static_cast<int>(unit(rng) * 14);
    g += "G36*\n";
    for (int k = 0; k <= n; ++k) {
      const double a = 2 * std::numbers::pi * (k % n) / n;
      const double rr = r * (0.7 + 0.3 * std::cos(3 * a));
      g += Xy(cx + rr * std::cos(a), cy + rr * std::sin(a)) + (k == 0 ? "D02*\n" : "G01D01*\n");
    }
    if (i % 10 == 0) {
      // A lobe with an arc edge.
      g += Xy(cx + r, cy) + "D02*\n" + Xy(cx + r + 2, cy) + "D01*\n" + "G03" + Xy(cx + r, cy + 2) +
           "I-2000000J0D01*\nG01" + Xy(cx + r, cy) + "D01*\n";
    }
    g += "G37*\n";
    if (clear) g += "%LPD*%\n";
  }
  // Tracks: polylines of 2-8 segments.
  int made = 0;
  int ap = -1;
  while (made < tracks) {
    const int want = 10 + static_cast<int>(unit(rng) * 5);
    if (want != ap) {
      g += "D" + std::to_string(want) + "*\n";
      ap = want;
    }
    double x = ux(rng), y = uy(rng);
    g += Xy(x, y) + "D02*\n";
    const int segs = 2 + static_cast<int>(unit(rng) * 7);
    for (int s = 0; s < segs && made < tracks; ++s, ++made) {
      const double a = std::numbers::pi / 4 * static_cast<int>(unit(rng) * 8);
      const double len = 0.5 + 8 * unit(rng);
      x = std::clamp(x + len * std::cos(a), 1.0, w - 1);
      y = std::clamp(y + len * std::sin(a), 1.0, h - 1);
      g += Xy(x, y) + "D01*\n";
    }
  }
  // A few arcs.
  g += "D12*\n";
  for (int i = 0; i < tracks / 200; ++i) {
    const double x = ux(rng), y = uy(rng);
    g += Xy(x, y) + "D02*\nG02" + Xy(x + 2, y + 2) + "I2000000J0D01*\nG01*\n";
  }
  // Pads.
  for (int i = 0; i < flashes; ++i) {
    if (i % 40 == 0) g += "D" + std::to_string(13 + (i / 40) % (n_defs - 3)) + "*\n";
    g += Xy(ux(rng), uy(rng)) + "D03*\n";
  }
  g += "M02*\n";
  return g;
}

std::string MakeDrill(double w, double h, int holes, unsigned seed) {
  std::mt19937 rng(seed);
  std::uniform_real_distribution<double> ux(2, w - 2), uy(2, h - 2);
  std::string d = "M48\nMETRIC,TZ\nT1C0.3\nT2C0.6\nT3C0.8\nT4C1.0\nT5C3.2\n%\nG90\nG05\n";
  char buf[64];
  for (int t = 1; t <= 5; ++t) {
    d += "T" + std::to_string(t) + "\n";
    for (int i = 0; i < holes / 5; ++i) {
      std::snprintf(buf, sizeof buf, "X%dY%d\n", static_cast<int>(ux(rng) * 1000),
                    static_cast<int>(uy(rng) * 1000));
      d += buf;
    }
  }
  d += "M30\n";
  return d;
}

std::string TempPath(const std::string& name) {
  return (std::filesystem::temp_directory_path() / ("qvis_bench_" + name)).string();
}

const std::string& LargeBoardPath() {
  static const std::string path = [] {
    const std::string p = TempPath("large.gbr");
    std::ofstream(p, std::ios::binary) << MakeBoard(400, 300, 100000, 20000, 500, 1);
    return p;
  }();
  return path;
}

const std::string& RealBoardPath() {
  static const std::string path = [] {
    const std::string p = TempPath("real.gbr");
    std::ofstream(p, std::ios::binary) << MakeBoard(160, 100, 12000, 3000, 60, 2);
    return p;
  }();
  return path;
}

const std::string& DrillPath() {
  static const std::string path = [] {
    const std::string p = TempPath("large.drl");
    std::ofstream(p, std::ios::binary) << MakeDrill(400, 300, 100000, 3);
    return p;
  }();
  return path;
}

std::string ReadFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream s;
  s << in.rdbuf();
  return s.str();
}

// The reference: the bytes read and passed over once, with no parsing.
std::size_t ReadOnly(const std::string& path) {
  const std::string text = ReadFile(path);
  std::size_t ends = 0;
  for (char c : text) ends += c == '*' || c == '\n';
  return ends;
}

std::int64_t StoredObjects(const Layer& layer) {
  std::int64_t n = 0;
  for (const qvis::ArtObject& o : layer.objects) {
    n += 1 + static_cast<std::int64_t>(o.contour.segments.size());
  }
  return n;
}

template <class ParseFn>
void ParseVsRead(benchmark::State& state, const std::string& path, ParseFn parse) {
  const double bytes = static_cast<double>(std::filesystem::file_size(path));
  double parse_s = 0, read_s = 0;
  std::int64_t objects = 0;
  for (auto _ : state) {
    double t0 = ThreadSeconds();
    benchmark::DoNotOptimize(ReadOnly(path));
    double t1 = ThreadSeconds();
    read_s += t1 - t0;
    Layer layer;
    t0 = ThreadSeconds();
    const std::string text = ReadFile(path);
    if (!parse(text, &layer)) {
      state.SkipWithError("the generated file does not read");
      return;
    }
    t1 = ThreadSeconds();
    parse_s += t1 - t0;
    objects = StoredObjects(layer);
  }
  const double n = static_cast<double>(state.iterations());
  state.counters["MB"] = bytes / 1e6;
  state.counters["objects"] = static_cast<double>(objects);
  state.counters["parse_ms"] = parse_s / n * 1e3;
  state.counters["read_ms"] = read_s / n * 1e3;
  state.counters["parse_MBps"] = bytes * n / parse_s / 1e6;
  state.counters["read_MBps"] = bytes * n / read_s / 1e6;
  state.counters["objects_per_s"] = static_cast<double>(objects) * n / parse_s;
  state.counters["vs_read"] = parse_s / read_s;
}

void BM_ParseGerber(benchmark::State& state) {
  ParseVsRead(state, LargeBoardPath(), [](const std::string& text, Layer* layer) {
    return qvis::ReadGerber(text, layer).ok;
  });
}
BENCHMARK(BM_ParseGerber)->Unit(benchmark::kMillisecond)->Iterations(5);

void BM_ParseExcellon(benchmark::State& state) {
  ParseVsRead(state, DrillPath(), [](const std::string& text, Layer* layer) {
    return qvis::ReadExcellon(text, layer).ok;
  });
}
BENCHMARK(BM_ParseExcellon)->Unit(benchmark::kMillisecond)->Iterations(5);

// Runs a program with its output discarded; returns its CPU time in seconds, or -1 when it
// could not be run or failed.
double ProcessSeconds(const std::vector<std::string>& args) {
  std::vector<char*> argv;
  for (const std::string& a : args) argv.push_back(const_cast<char*>(a.c_str()));
  argv.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
  posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", O_WRONLY, 0);
  pid_t pid = 0;
  const int rc = posix_spawnp(&pid, argv[0], &actions, nullptr, argv.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  if (rc != 0) return -1;
  int status = 0;
  rusage usage{};
  if (wait4(pid, &status, 0, &usage) != pid || !WIFEXITED(status) || WEXITSTATUS(status) != 0) {
    return -1;
  }
  auto sec = [](const timeval& t) { return static_cast<double>(t.tv_sec) + t.tv_usec * 1e-6; };
  return sec(usage.ru_utime) + sec(usage.ru_stime);
}

// The first frame: the board's extent fitted into 1920x1080 with a 5 % margin.
struct Framing {
  double dpi = 0, x = 0, y = 0;
};

Framing FitFrame(const Layer& layer) {
  qvis::ArtBox box = qvis::LayerExtent(layer);
  const double w_in = static_cast<double>(box.max_x - box.min_x) / qvis::kNmPerInch;
  const double h_in = static_cast<double>(box.max_y - box.min_y) / qvis::kNmPerInch;
  Framing f;
  f.dpi = std::floor(std::min(1920 / w_in, 1080 / h_in) * 0.95);
  const double cx = static_cast<double>(box.min_x + box.max_x) / 2 / qvis::kNmPerInch;
  const double cy = static_cast<double>(box.min_y + box.max_y) / 2 / qvis::kNmPerInch;
  f.x = cx - 960 / f.dpi;
  f.y = cy - 540 / f.dpi;
  return f;
}

void OpenFirstFrame(benchmark::State& state, const std::string& path) {
  Layer layer;
  if (!qvis::ReadGerber(ReadFile(path), &layer).ok) {
    state.SkipWithError("the generated file does not read");
    return;
  }
  const Framing f = FitFrame(layer);
  char dpi[32], origin[64], gorigin[64];
  std::snprintf(dpi, sizeof dpi, "%g", f.dpi);
  std::snprintf(origin, sizeof origin, "%.6f,%.6f", f.x, f.y);
  std::snprintf(gorigin, sizeof gorigin, "%.6fx%.6f", f.x, f.y);
  const std::string ours_png = TempPath("frame_ours.png"), gerbv_png = TempPath("frame_gerbv.png");
  const std::vector<std::string> ours = {QVIS_GERBER_EXE, "render", path, "-o", ours_png,
                                         "--dpi", dpi, "--origin", origin, "--size", "1920x1080"};
  const std::vector<std::string> gerbv = {"gerbv", "-x", "png", "-B", "0", "-D", dpi, "-O", gorigin,
                                          "-w", "1920x1080", "-b", "#FFFFFF", "-f", "#000000FF",
                                          "-o", gerbv_png, path};
  double qvis_s = 0, gerbv_s = 0, inproc_s = 0;
  bool have_gerbv = true;
  for (auto _ : state) {
    const double q = ProcessSeconds(ours);
    if (q < 0) {
      state.SkipWithError("qvis-gerber failed");
      return;
    }
    qvis_s += q;
    state.SetIterationTime(q);
    const double g = have_gerbv ? ProcessSeconds(gerbv) : -1;
    if (g < 0) have_gerbv = false;
    gerbv_s += g;
    const double t0 = ThreadSeconds();
    Layer l;
    qvis::ReadGerber(ReadFile(path), &l);
    qvis::ArtDocument doc;
    doc.layers.push_back(std::move(l));
    qvis::ArtView view;
    view.dpi = f.dpi;
    view.origin_x = static_cast<qvis::Coord>(std::llround(f.x * qvis::kNmPerInch));
    view.origin_y = static_cast<qvis::Coord>(std::llround(f.y * qvis::kNmPerInch));
    view.width = 1920;
    view.height = 1080;
    benchmark::DoNotOptimize(qvis::RenderArtwork(doc, view).pixels.data());
    inproc_s += ThreadSeconds() - t0;
  }
  const double n = static_cast<double>(state.iterations());
  state.counters["MB"] = static_cast<double>(std::filesystem::file_size(path)) / 1e6;
  state.counters["dpi"] = f.dpi;
  state.counters["qvis_ms"] = qvis_s / n * 1e3;
  state.counters["inproc_ms"] = inproc_s / n * 1e3;
  if (have_gerbv) {
    state.counters["gerbv_ms"] = gerbv_s / n * 1e3;
    state.counters["vs_gerbv"] = qvis_s / gerbv_s;
  } else {
    state.SetLabel("gerbv not available: no reference");
  }
}

void BM_OpenFirstFrame_RealBoard(benchmark::State& state) { OpenFirstFrame(state, RealBoardPath()); }
BENCHMARK(BM_OpenFirstFrame_RealBoard)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(5);

void BM_OpenFirstFrame_LargeBoard(benchmark::State& state) {
  OpenFirstFrame(state, LargeBoardPath());
}
BENCHMARK(BM_OpenFirstFrame_LargeBoard)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(2);

}  // namespace

BENCHMARK_MAIN();
