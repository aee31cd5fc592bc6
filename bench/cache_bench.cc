// Memory of the pen, brush and font caches over a long zoom: a board (tracks of many widths,
// pads, labels) is drawn through the surface at each of 10,000 zoom steps, zooming in and out
// between 2 and 100 pixels per mm with a slow drift, so that nearly every step asks for pen
// widths and font heights not seen before (about 40 new keys a step; an unbounded cache would
// hold tens of thousands of objects by the end). The reference is the same run's state after
// its first 1,000 steps. Counters: objects held by the three caches and the heap in use at the
// reference and at the end, their ratios (flat memory: about 1), the most objects ever held and
// the caches' capacity.
#include <benchmark/benchmark.h>

#include <malloc.h>

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "qvis/compat/win32_names.h"
#include "qvis/coords/view_coords.h"
#include "qvis/gdi/gdi.h"
#include "qvis/render/object_caches.h"
#include "qvis/render/surface.h"

namespace {

namespace gdi = qvis::gdi;

constexpr int kWidth = 640;
constexpr int kHeight = 480;
constexpr int kSteps = 10000;
constexpr int kReferenceSteps = 1000;

struct Frame {
  Frame() : dc(gdi::CreateCompatibleDC(nullptr)), bitmap(gdi::CreateBitmap32(kWidth, kHeight)) {
    gdi::SelectObject(dc, bitmap);
  }
  ~Frame() {
    gdi::DeleteDC(dc);
    gdi::DeleteObject(bitmap);
  }
  qvis::HDC dc;
  qvis::HBITMAP bitmap;
};

// DrawBoard: 40 tracks of widths 0.1 .. 4 mm, 30 round and square pads and 6 labels.
void DrawBoard(CQVIS_GDI& s) {
  for (int i = 0; i < 40; ++i) {
    const double y = -30.0 + i * 1.5;
    s.PrepareSolidPenEndCap(PS_ENDCAP_ROUND, 0.1 * (i + 1), 0x00A0FF);
    s.DrawLine(-40.0, y, 40.0, y + 3.0);
  }
  for (int i = 0; i < 30; ++i) {
    const double x = -35.0 + i * 2.4;
    s.DrawCircleRgn(x, 20.0, 0.3 + 0.05 * i, 0.2, 0.2, 0x00C000);
    s.DrawRectangleRgnWH(x, 25.0, 1.0 + 0.03 * i, 0.8, 0.3, 0.3, 15.0 * i, 0xC0C000);
  }
  s.SetTextColor(0xFFFFFF);
  for (int i = 0; i < 6; ++i) {
    s.SetFont(0.2 + 0.05 * i, 0.0, "Arial", 0, 0, 400, 0);
    s.DrawTextA(-30.0 + 10.0 * i, -35.0, "U12");
  }
}

int Held(const CQVIS_GDI& s) {
  return s.GetPenMgr()->PenCount() + s.GetBrushMgr()->Count() + s.GetFontMgr()->GetCount();
}

double HeapInUse() { return static_cast<double>(mallinfo2().uordblks); }

void BM_ZoomSweepMemory(benchmark::State& state) {
  Frame frame;
  CQVIS_GDI surface;
  surface.SetHandles(nullptr, frame.dc, frame.dc);
  surface.GetCoords()->SetScreenViewPosition(-50.0, -40.0);
  double ref_held = 0, ref_heap = 0, end_held = 0, end_heap = 0, peak = 0;
  for (auto _ : state) {
    surface.GetPenMgr()->Clear();
    surface.GetBrushMgr()->Clear();
    surface.GetFontMgr()->Clear();
    int most = 0;
    for (int step = 0; step < kSteps; ++step) {
      // In and out over 250 steps each way, drifting up by 37% over the run so that the
      // widths of one sweep are not those of the last.
      const double t = static_cast<double>(step % 500) / 250.0;
      const double phase = t < 1.0 ? t : 2.0 - t;
      const double drift = 1.0 + 0.37 * step / kSteps;
      surface.GetCoords()->SetZoom(2.0 * std::pow(50.0, phase) * drift);
      DrawBoard(surface);
      most = std::max(most, Held(surface));
      if (step + 1 == kReferenceSteps) {
        ref_held = Held(surface);
        ref_heap = HeapInUse();
      }
    }
    end_held = Held(surface);
    end_heap = HeapInUse();
    peak = most;
    benchmark::DoNotOptimize(frame.bitmap);
  }
  state.counters["held_ref"] = ref_held;
  state.counters["held_end"] = end_held;
  state.counters["held_peak"] = peak;
  state.counters["held_ratio"] = ref_held > 0 ? end_held / ref_held : 0;
  state.counters["heap_ref_kb"] = ref_heap / 1024;
  state.counters["heap_end_kb"] = end_heap / 1024;
  state.counters["heap_ratio"] = ref_heap > 0 ? end_heap / ref_heap : 0;
  state.counters["cap"] = CQVIS_PenMgr::kCapacity + CQVIS_BrushMgr::kCapacity +
                          CQVIS_FontMgr::kCapacity;
}
BENCHMARK(BM_ZoomSweepMemory)->Unit(benchmark::kMillisecond)->Iterations(1);

}  // namespace

BENCHMARK_MAIN();
