// Throughput of the geometry code: the clearance pairs, the intersection functions and arc
// flattening. Each benchmark also times a trivial reference over the same inputs in the same
// iteration (a plain hypot loop, or plain cos/sin for flattening) and reports the ratio
// subject / reference as the counter "x_ref", so results compare across machines and runs.
#include <benchmark/benchmark.h>

#include <chrono>
#include <cmath>
#include <ctime>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "qvis/geometry/distance.h"
#include "qvis/geometry/kernel.h"

namespace {

constexpr int kBatch = 512;

// Thread CPU time where available: the machine is shared, and wall time would charge the
// subject or the reference for whoever else was running.
double NowSeconds() {
#if defined(CLOCK_THREAD_CPUTIME_ID)
  timespec ts{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &ts);
  return static_cast<double>(ts.tv_sec) + static_cast<double>(ts.tv_nsec) * 1e-9;
#else
  return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch())
      .count();
#endif
}

struct Inputs {
  std::vector<CQVIS_DIST_POINT> points;
  std::vector<CQVIS_DIST_LINE> lines;
  std::vector<CQVIS_DIST_CIRCLE> circles;
  std::vector<CQVIS_DIST_ARC> arcs;
  std::vector<double> raw;  // 8 values per entry, for the kernel functions

  Inputs() {
    std::mt19937 rng(2024);
    std::uniform_real_distribution<double> pos(-50, 50);
    std::uniform_real_distribution<double> rad(0.5, 10);
    std::uniform_real_distribution<double> ang(0, 360);
    for (int i = 0; i < kBatch; ++i) {
      points.emplace_back(pos(rng), pos(rng));
      lines.emplace_back(pos(rng), pos(rng), pos(rng), pos(rng), rad(rng) / 5);
      circles.emplace_back(pos(rng), pos(rng), rad(rng), rad(rng) / 5);
      const double cx = pos(rng), cy = pos(rng), r = rad(rng), a0 = ang(rng), a1 = ang(rng);
      const double k = 3.141592653589793 / 180;
      arcs.emplace_back(cx, cy, r, rad(rng) / 5, cx + r * std::cos(a0 * k),
                        cy - r * std::sin(a0 * k), cx + r * std::cos(a1 * k),
                        cy - r * std::sin(a1 * k), a0, a1);
      for (int j = 0; j < 8; ++j) raw.push_back(pos(rng));
    }
  }
};

const Inputs& Data() {
  static const Inputs inputs;
  return inputs;
}

// The reference: one hypot per entry over the same raw values.
double ReferenceBatch() {
  const std::vector<double>& v = Data().raw;
  double sum = 0;
  for (int i = 0; i < kBatch; ++i) {
    sum += std::hypot(v[8 * i] - v[8 * i + 2], v[8 * i + 1] - v[8 * i + 3]);
  }
  return sum;
}

// Runs `subject` (one batch) and the reference alternately, reporting the ratio of their times.
void RunAgainstReference(benchmark::State& state, const std::function<double()>& subject,
                         const std::function<double()>& reference) {
  double t_subject = 0;
  double t_reference = 0;
  for (auto _ : state) {
    const double t0 = NowSeconds();
    benchmark::DoNotOptimize(reference());
    const double t1 = NowSeconds();
    benchmark::DoNotOptimize(subject());
    const double t2 = NowSeconds();
    t_reference += t1 - t0;
    t_subject += t2 - t1;
  }
  state.SetItemsProcessed(state.iterations() * kBatch);
  state.counters["x_ref"] = t_reference > 0 ? t_subject / t_reference : 0;
}

template <typename A, typename B>
void RegisterPair(const std::string& name,
                  double (CQVIS_CalcDistance::*fn)(const A*, const B*, double*) const,
                  const std::vector<A>* first, const std::vector<B>* second) {
  benchmark::RegisterBenchmark(("Distance/" + name).c_str(), [=](benchmark::State& state) {
    const CQVIS_CalcDistance calc;
    RunAgainstReference(
        state,
        [&] {
          double sum = 0;
          double pts[4];
          for (int i = 0; i < kBatch; ++i) {
            sum += (calc.*fn)(&(*first)[i], &(*second)[(i * 7 + 3) % kBatch], pts);
          }
          return sum;
        },
        ReferenceBatch);
  })->MinTime(0.05);
}

void RegisterKernel(const std::string& name, double (*one)(const double*)) {
  benchmark::RegisterBenchmark(("Kernel/" + name).c_str(), [=](benchmark::State& state) {
    RunAgainstReference(
        state,
        [&] {
          const std::vector<double>& v = Data().raw;
          double sum = 0;
          for (int i = 0; i < kBatch; ++i) sum += one(&v[8 * i]);
          return sum;
        },
        ReferenceBatch);
  })->MinTime(0.05);
}

double LineLine(const double* p) {
  double out[4];
  return CQVIS_Math::GetIntersectionLineLine(p[0], p[1], p[2], p[3], p[4], p[5], p[6], p[7], out);
}
double CrossLine(const double* p) {
  double x = 0;
  double y = 0;
  return CQVIS_Math::CrossLine(p[0], p[1], p[2], p[3], p[4], p[5], p[6], p[7], &x, &y) + x;
}
double LineCircle(const double* p) {
  double out[4];
  return CQVIS_Math::GetIntersectionLineCircle(p[0], p[1], p[2], p[3], p[4], p[5],
                                               std::fabs(p[6]), out);
}
double CircleCircle(const double* p) {
  double out[4];
  return CQVIS_Math::GetIntersectionCircleCircle(p[0] / 4, p[1] / 4, std::fabs(p[2]) / 2,
                                                 p[3] / 4, p[4] / 4, std::fabs(p[5]) / 2, out);
}
double ArcArc(const double* p) {
  double out[4];
  return CQVIS_Math::GetIntersectionArcArc(p[0] / 4, p[1] / 4, std::fabs(p[2]) / 2, p[6] + 50,
                                           p[7] + 50, p[3] / 4, p[4] / 4, std::fabs(p[5]) / 2,
                                           p[7] + 50, p[6] + 50, out);
}

// Flattening appends heap points; the reference computes the same number of points with plain
// cos/sin into a reserved vector.
void ArcFlatten(benchmark::State& state) {
  const std::vector<CQVIS_DIST_ARC>& arcs = Data().arcs;
  std::vector<double> plain;
  plain.reserve(2 * 128);
  long produced = 0;
  RunAgainstReference(
      state,
      [&] {
        double sum = 0;
        for (int i = 0; i < kBatch; i += 8) {
          const CQVIS_DIST_ARC& a = arcs[i];
          CExPtrArray<DPoint*, DPoint*> pts;
          CQVIS_Math::MakeArcToLineC(a.m_dCX, a.m_dCY, a.m_dRadius, a.m_dStartX, a.m_dStartY,
                                     a.m_dEndX, a.m_dEndY, 0, &pts);
          produced += pts.GetSize();
          sum += pts.GetSize();
          pts.DeleteAll();
        }
        return sum;
      },
      [&] {
        double sum = 0;
        for (int i = 0; i < kBatch; i += 8) {
          const CQVIS_DIST_ARC& a = arcs[i];
          double sweep = a.m_dEndAngle - a.m_dStartAngle;
          if (sweep < 0) sweep += 360;
          const int n = static_cast<int>(sweep / 3) + 2;
          plain.clear();
          for (int k = 0; k < n; ++k) {
            const double t = (a.m_dStartAngle + 3 * k) * 3.141592653589793 / 180;
            plain.push_back(a.m_dCX + a.m_dRadius * std::cos(t));
            plain.push_back(a.m_dCY - a.m_dRadius * std::sin(t));
          }
          sum += plain.back();
        }
        return sum;
      });
  state.counters["points"] = benchmark::Counter(static_cast<double>(produced),
                                                benchmark::Counter::kAvgIterations);
}

}  // namespace

int main(int argc, char** argv) {
  const Inputs& d = Data();
  using C = CQVIS_CalcDistance;
  RegisterPair("PointLine", &C::PointLine, &d.points, &d.lines);
  RegisterPair("PointCircle", &C::PointCircle, &d.points, &d.circles);
  RegisterPair("PointArc", &C::PointArc, &d.points, &d.arcs);
  RegisterPair("LineLine", &C::LineLine, &d.lines, &d.lines);
  RegisterPair("LineCircle", &C::LineCircle, &d.lines, &d.circles);
  RegisterPair("LineDisk", &C::LineDisk, &d.lines, &d.circles);
  RegisterPair("LineArc", &C::LineArc, &d.lines, &d.arcs);
  RegisterPair("CircleCircle", &C::CircleCircle, &d.circles, &d.circles);
  RegisterPair("CircleArc", &C::CircleArc, &d.circles, &d.arcs);
  RegisterPair("DiskDisk", &C::DiskDisk, &d.circles, &d.circles);
  RegisterPair("ArcDisk", &C::ArcDisk, &d.arcs, &d.circles);
  RegisterPair("ArcArc", &C::ArcArc, &d.arcs, &d.arcs);
  RegisterKernel("GetIntersectionLineLine", LineLine);
  RegisterKernel("CrossLine", CrossLine);
  RegisterKernel("GetIntersectionLineCircle", LineCircle);
  RegisterKernel("GetIntersectionCircleCircle", CircleCircle);
  RegisterKernel("GetIntersectionArcArc", ArcArc);
  benchmark::RegisterBenchmark("Kernel/MakeArcToLineC", ArcFlatten)->MinTime(0.05);
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
