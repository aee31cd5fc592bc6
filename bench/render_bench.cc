// The drawing surface's overhead: each workload is drawn through the surface (world values,
// mapping, pen/brush caches, the grid manager) and, in the same run and interleaved with it,
// as the same device-layer calls made directly with precomputed device values and pens. The
// pixels of the two are checked equal before timing. Counters: surface_ms and direct_ms per
// frame (CPU time of the drawing thread), overhead = surface / direct - 1 (goal: below 0.15).
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <ctime>
#include <map>
#include <memory>
#include <random>
#include <utility>
#include <vector>

#include "qvis/compat/win32_names.h"
#include "qvis/coords/view_coords.h"
#include "qvis/gdi/gdi.h"
#include "qvis/render/gdi_objects.h"
#include "qvis/render/grid_snap_display.h"
#include "qvis/render/surface.h"

namespace {

namespace gdi = qvis::gdi;

constexpr int kWidth = 1920;
constexpr int kHeight = 1080;
constexpr COLORREF kGridColor = 0xC8C8C8;
constexpr COLORREF kSnapColor = 0x646464;

double ThreadSeconds() {
  timespec t{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
  return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_nsec) * 1e-9;
}

// Frame: a 1920x1080 bitmap DC.
struct Frame {
  Frame() {
    dc = gdi::CreateCompatibleDC(nullptr);
    bitmap = gdi::CreateBitmap32(kWidth, kHeight);
    gdi::SelectObject(dc, bitmap);
  }
  ~Frame() {
    gdi::DeleteDC(dc);
    gdi::DeleteObject(bitmap);
  }
  void Clear() {
    gdi::BitmapView v = gdi::BitmapPixels(bitmap);
    for (int y = 0; y < v.height; ++y) std::memset(v.RowBytes(y), 0, v.width * 4);
  }
  bool SameAs(const Frame& o) const {
    gdi::BitmapView a = gdi::BitmapPixels(bitmap), b = gdi::BitmapPixels(o.bitmap);
    for (int y = 0; y < a.height; ++y)
      if (std::memcmp(a.RowBytes(y), b.RowBytes(y), a.width * 4) != 0) return false;
    return true;
  }
  qvis::HDC dc = nullptr;
  qvis::HBITMAP bitmap = nullptr;
};

// The view of both workloads: 10 pixels per mm, world (-50, -50) at the top-left corner.
void SetView(CQVIS_GDI& s, double grid, double snap) {
  s.GetCoords()->SetZoom(10.0);
  s.GetCoords()->SetScreenViewPosition(-50.0, -50.0);
  s.GetCoords()->SetGrid(grid);
  s.GetCoords()->SetSnap(snap);
}

// Runs `surface` and `direct` alternately in the benchmark loop after checking that they
// paint the same pixels; reports their times and the surface's overhead.
template <class SurfaceFn, class DirectFn>
void Compare(benchmark::State& state, Frame& a, Frame& b, SurfaceFn surface, DirectFn direct) {
  a.Clear();
  b.Clear();
  surface();
  direct();
  if (!a.SameAs(b)) {
    state.SkipWithError("the surface and the direct calls painted different pixels");
    return;
  }
  double surface_s = 0, direct_s = 0;
  for (auto _ : state) {
    double t0 = ThreadSeconds();
    surface();
    double t1 = ThreadSeconds();
    direct();
    double t2 = ThreadSeconds();
    surface_s += t1 - t0;
    direct_s += t2 - t1;
    benchmark::ClobberMemory();
  }
  const double n = static_cast<double>(state.iterations());
  state.counters["surface_ms"] = surface_s / n * 1e3;
  state.counters["direct_ms"] = direct_s / n * 1e3;
  state.counters["overhead"] = surface_s / direct_s - 1.0;
}

// ----- Background repaint: snap points, grid, origin -------------------------------------------

void Background(benchmark::State& state, int style) {
  Frame a, b;
  CQVIS_GDI surface;
  surface.SetHDC(a.dc);
  SetView(surface, 2.0, 0.5);  // grid every 20 px, snap every 5 px
  CQVIS_GridSnapMgr grid(&surface);
  grid.SetGridStyle(style);

  // The direct version: the same marks from precomputed device positions and pens made once.
  const CQVIS_Coords& c = *surface.GetCoords();
  std::vector<int> cols, rows;
  for (double x = std::floor(c.m_dViewX / 2.0) * 2.0 - 2.0; x <= c.m_dViewX + kWidth / 10.0 + 2.0;
       x += 2.0) {
    cols.push_back(surface.WorldToDeviceX(x));
  }
  for (double y = std::floor(c.m_dViewY / 2.0) * 2.0 - 2.0;
       y <= c.m_dViewY + kHeight / 10.0 + 2.0; y += 2.0) {
    rows.push_back(surface.WorldToDeviceY(y));
  }
  qvis::HPEN grid_pen = gdi::CreatePen(PS_SOLID, 1, kGridColor);
  qvis::HPEN snap_pen = gdi::CreatePen(PS_SOLID, 1, kSnapColor);
  qvis::HPEN origin_pen = gdi::CreatePen(PS_SOLID, 1, 0xC8C8C8);
  const int ww = kWidth / 10, wh = kHeight / 10;  // line ends: the visible world size
  const int ox = surface.WorldToDeviceX(0), oy = surface.WorldToDeviceY(0);
  const qvis::HDC dc = b.dc;
  auto line = [dc](int x1, int y1, int x2, int y2) {
    gdi::MoveToEx(dc, x1, y1, nullptr);
    gdi::LineTo(dc, x2, y2);
  };
  auto direct = [&] {
    gdi::SetROP2(dc, R2_COPYPEN);
    if (style == 0) {
      for (int y : rows)
        for (int k = 1; k < 4; ++k)
          for (int x : cols) gdi::SetPixel(dc, x, y + 5 * k, kSnapColor);
      for (int x : cols)
        for (int k = 1; k < 4; ++k)
          for (int y : rows) gdi::SetPixel(dc, x + 5 * k, y, kSnapColor);
      gdi::SelectObject(dc, grid_pen);
      for (int y : rows)
        for (int x : cols) {
          line(x - 3, y, x + 4, y);
          line(x, y - 3, x, y + 4);
        }
    } else {
      gdi::SelectObject(dc, snap_pen);
      for (int y : rows) line(0, y, ww, y);
      for (int x : cols) line(x, 0, x, wh);
      gdi::SelectObject(dc, grid_pen);
      for (int y : rows) line(0, y, ww, y);
      for (int x : cols) line(x, 0, x, wh);
    }
    gdi::SelectObject(dc, origin_pen);
    gdi::SelectObject(dc, gdi::GetStockObject(NULL_BRUSH));
    gdi::Ellipse(dc, ox - 10, oy - 10, ox + 10, oy + 10);
    line(ox - 20, oy, ox + 21, oy);
    line(ox, oy - 20, ox, oy + 21);
  };
  auto through_surface = [&] {
    grid.DrawSnap(kWidth, kHeight);
    grid.DrawGrid(kWidth, kHeight);
    grid.DrawOrigin();
  };
  Compare(state, a, b, through_surface, direct);
  gdi::SelectObject(dc, gdi::GetStockObject(BLACK_PEN));
  gdi::DeleteObject(grid_pen);
  gdi::DeleteObject(snap_pen);
  gdi::DeleteObject(origin_pen);
}

void BM_BackgroundPlusGrid(benchmark::State& state) { Background(state, 0); }
void BM_BackgroundLineGrid(benchmark::State& state) { Background(state, 1); }

// ----- A PCB-like scene: tracks, round, rectangular and obround pads -------------------------

struct Track {
  double x1, y1, x2, y2, width;
  COLORREF color;
};
struct Pad {
  double x, y, w, h, hole, angle;
  COLORREF color;
};

struct Scene {
  std::vector<Track> tracks;
  std::vector<Pad> round, rect, obround;
  Scene() {
    std::mt19937 rng(11);
    auto uni = [&](double lo, double hi) { return std::uniform_real_distribution<double>(lo, hi)(rng); };
    const double widths[] = {0.15, 0.2, 0.25, 0.3, 0.5, 0.8};
    const COLORREF layers[] = {0x0000C0, 0xC00000};
    for (int i = 0; i < 4000; ++i) {
      const double x = uni(-50, 142), y = uni(-50, 58);
      const int dir = static_cast<int>(uni(0, 4));
      const double len = uni(1, 12);
      const double dx = dir == 0 ? len : dir == 1 ? 0 : dir == 2 ? len * 0.7071 : -len * 0.7071;
      const double dy = dir == 0 ? 0 : dir == 1 ? len : len * 0.7071;
      tracks.push_back({x, y, x + dx, y + dy, widths[i % 6], layers[i % 2]});
    }
    for (int i = 0; i < 1000; ++i) {
      const double d = uni(0.6, 2.0);
      round.push_back({uni(-48, 140), uni(-48, 56), d, d, i % 2 ? d * 0.4 : 0, 0, 0x00C0C0});
    }
    for (int i = 0; i < 1000; ++i) {
      rect.push_back({uni(-48, 140), uni(-48, 56), uni(0.6, 2.5), uni(0.6, 2.5), 0,
                      i % 3 == 0 ? 90.0 : 0.0, 0x00C0C0});
    }
    for (int i = 0; i < 500; ++i) {
      const double w = uni(1.2, 3.0), h = uni(0.6, 1.1);
      obround.push_back({uni(-48, 140), uni(-48, 56), i % 2 ? w : h, i % 2 ? h : w, h * 0.5, 0,
                         0x00C0C0});
    }
  }
};

const Scene& TheScene() {
  static const Scene scene;
  return scene;
}

void BM_PcbScene(benchmark::State& state) {
  const Scene& scene = TheScene();
  Frame a, b;
  CQVIS_GDI surface;
  surface.SetHDC(a.dc);
  SetView(surface, 2.0, 0.5);

  // Direct: device values precomputed with the same mapping, pens made once per key.
  struct DTrack {
    int x1, y1, x2, y2;
    qvis::HPEN pen;
  };
  std::map<std::pair<int, COLORREF>, qvis::HPEN> pens;
  std::vector<DTrack> dtracks;
  for (const Track& t : scene.tracks) {
    int x1 = surface.WorldToDeviceX(t.x1), y1 = surface.WorldToDeviceY(t.y1);
    int x2 = surface.WorldToDeviceX(t.x2), y2 = surface.WorldToDeviceY(t.y2);
    if (y1 == y2 && x1 > x2) std::swap(x1, x2);
    if (x1 == x2 && y1 > y2) std::swap(y1, y2);
    const int w = surface.PenPixelWidth(t.width);
    qvis::HPEN& pen = pens[{w, t.color}];
    if (pen == nullptr) {
      if (w >= 2) {
        gdi::LOGBRUSH lb;
        lb.lbStyle = BS_SOLID;
        lb.lbColor = t.color;
        pen = gdi::ExtCreatePen(PS_GEOMETRIC | PS_SOLID, w, &lb, 0, nullptr);
      } else {
        pen = gdi::CreatePen(PS_SOLID, 1, t.color);
      }
    }
    dtracks.push_back({x1, y1, x2, y2, pen});
  }
  struct Box {
    int l, t, r, b;
  };
  auto circle_box = [&](double x, double y, double r) {
    const int cx = surface.WorldToDeviceX(x), cy = surface.WorldToDeviceY(y);
    const int rad = surface.WorldToDeviceLength(r);
    return Box{cx - rad, cy - rad, cx + rad, cy + rad};
  };
  struct DRound {
    Box outer, hole;
    bool has_hole;
    COLORREF color;
  };
  std::vector<DRound> drounds;
  for (const Pad& p : scene.round) {
    drounds.push_back({circle_box(p.x, p.y, p.w / 2), circle_box(p.x, p.y, p.hole / 2),
                       p.hole != 0, p.color});
  }
  struct DRect {
    CPoint pts[4];
    COLORREF color;
  };
  std::vector<DRect> drects;
  for (const Pad& p : scene.rect) {
    // Turning by 0 or 90 degrees about the centre is exact.
    const double hw = (p.angle == 90 ? p.h : p.w) / 2, hh = (p.angle == 90 ? p.w : p.h) / 2;
    const double xs[4] = {p.x - hw, p.x - hw, p.x + hw, p.x + hw};
    const double ys[4] = {p.y + hh, p.y - hh, p.y - hh, p.y + hh};
    DRect r;
    for (int i = 0; i < 4; ++i) {
      r.pts[i] = CPoint(surface.WorldToDeviceX(xs[i]), surface.WorldToDeviceY(ys[i]));
    }
    if (p.angle == 90) {  // corner order as the rotation produces it
      std::rotate(r.pts, r.pts + 1, r.pts + 4);
    }
    r.color = p.color;
    drects.push_back(r);
  }
  struct DObround {
    Box body, c1, c2, hole;
    COLORREF color;
  };
  std::vector<DObround> dobrounds;
  for (const Pad& p : scene.obround) {
    const double hw = p.w / 2, hh = p.h / 2;
    DObround o;
    auto rect_box = [&](double x1, double y1, double x2, double y2) {
      return Box{surface.WorldToDeviceX(x1), surface.WorldToDeviceY(y1),
                 surface.WorldToDeviceX(x2), surface.WorldToDeviceY(y2)};
    };
    if (p.h > p.w) {
      o.body = rect_box(p.x - hw, p.y + hh - hw, p.x + hw, p.y - hh + hw);
      o.c1 = circle_box(p.x, p.y + hh - hw, hw);
      o.c2 = circle_box(p.x, p.y - hh + hw, hw);
    } else {
      o.body = rect_box(p.x - hw + hh, p.y + hh, p.x + hw - hh, p.y - hh);
      o.c1 = circle_box(p.x - hw + hh, p.y, hh);
      o.c2 = circle_box(p.x + hw - hh, p.y, hh);
    }
    o.hole = circle_box(p.x, p.y, p.hole / 2);
    o.color = p.color;
    dobrounds.push_back(o);
  }

  const qvis::HDC dc = b.dc;
  auto fill = [dc](qvis::HRGN rgn, COLORREF color) {
    qvis::HBRUSH brush = gdi::CreateSolidBrush(color);
    gdi::FillRgn(dc, rgn, brush);
    gdi::DeleteObject(brush);
    gdi::DeleteObject(rgn);
  };
  auto direct = [&] {
    gdi::SetROP2(dc, R2_COPYPEN);
    for (const DTrack& t : dtracks) {
      gdi::SelectObject(dc, t.pen);
      gdi::MoveToEx(dc, t.x1, t.y1, nullptr);
      gdi::LineTo(dc, t.x2, t.y2);
    }
    for (const DRound& p : drounds) {
      qvis::HRGN rgn = gdi::CreateEllipticRgn(p.outer.l, p.outer.t, p.outer.r, p.outer.b);
      if (p.has_hole) {
        qvis::HRGN hole = gdi::CreateEllipticRgn(p.hole.l, p.hole.t, p.hole.r, p.hole.b);
        gdi::CombineRgn(rgn, rgn, hole, RGN_DIFF);
        gdi::DeleteObject(hole);
      }
      fill(rgn, p.color);
    }
    for (const DRect& p : drects) fill(gdi::CreatePolygonRgn(p.pts, 4, ALTERNATE), p.color);
    for (const DObround& p : dobrounds) {
      qvis::HRGN rgn = gdi::CreateRectRgn(p.body.l, p.body.t, p.body.r, p.body.b);
      for (const Box& c : {p.c1, p.c2}) {
        qvis::HRGN e = gdi::CreateEllipticRgn(c.l, c.t, c.r, c.b);
        gdi::CombineRgn(rgn, rgn, e, RGN_OR);
        gdi::DeleteObject(e);
      }
      qvis::HRGN hole = gdi::CreateEllipticRgn(p.hole.l, p.hole.t, p.hole.r, p.hole.b);
      gdi::CombineRgn(rgn, rgn, hole, RGN_DIFF);
      gdi::DeleteObject(hole);
      fill(rgn, p.color);
    }
  };
  auto through_surface = [&] {
    surface.SetCopyMode();
    for (const Track& t : scene.tracks) {
      surface.PrepareSolidPen(t.width, t.color);
      surface.DrawLine(t.x1, t.y1, t.x2, t.y2);
    }
    for (const Pad& p : scene.round) surface.DrawCircleRgn(p.x, p.y, p.w / 2, p.hole, 0, p.color);
    for (const Pad& p : scene.rect) {
      surface.DrawRectangleRgnWH(p.x, p.y, p.w, p.h, 0, 0, p.angle, p.color);
    }
    for (const Pad& p : scene.obround) {
      surface.DrawObroundRgn(p.x, p.y, p.w, p.h, p.hole, 0, 0, p.color);
    }
  };
  Compare(state, a, b, through_surface, direct);
  gdi::SelectObject(dc, gdi::GetStockObject(BLACK_PEN));
  for (auto& [key, pen] : pens) gdi::DeleteObject(pen);
}

}  // namespace

BENCHMARK(BM_BackgroundPlusGrid)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_BackgroundLineGrid)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_PcbScene)->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
