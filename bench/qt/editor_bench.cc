// The editor's responsiveness on Qt's offscreen platform with a 1920x1080 canvas:
//
//   RubberBand: 10,000 mouse moves with a track rubber band over a board of 100,000 objects,
//     all of them on screen. Counters: moves_per_s, the same moves over an empty board in the
//     same run (ref_moves_per_s) and their ratio (vs_empty: about 1 when the board costs the
//     rubber band nothing), and the mean area each move repaints as a share of the canvas
//     (repaint_share: the widget repaints the changed rectangle, not the frame).
//   PanFrame: one live-pan frame (a middle-button drag step of up to 40 px: the view moves,
//     the kept picture of the last frame is shifted and the board drawn in the uncovered strips,
//     and the frame is presented) over the same board. Counters: frame_ms, ref_frame_ms (empty
//     board: grid and present only), vs_empty, and redraw_frame_ms / vs_redraw: the same drag
//     with the picture not kept (every frame drawn whole, as before the canvas kept it).
//   ZoomFrame: one frame after a zoom step (the whole view drawn again), alternately with the
//     whole board fitted (all 100,000 objects on screen) and zoomed in 8x about its centre
//     (about 1/64 of the board on screen). Counters: fit_frame_ms, in_frame_ms, ref_frame_ms
//     (the same steps over an empty board) and in_vs_fit.
#include <QApplication>
#include <QMouseEvent>
#include <benchmark/benchmark.h>
#include <chrono>
#include <cstdlib>
#include <memory>

#include "apps/qvis-editor/editor_window.h"
#include "qvis/design/design.h"
#include "qvis/design/design_objects.h"

namespace {

using qvis::editor::EditorWindow;
constexpr int kWidth = 1920;
constexpr int kHeight = 1080;
constexpr int kMoves = 10000;

// 100,000 objects on a 200 x 110 mm board: tracks of 0.2 mm in rows and columns and pads.
qvis::ArtDocument BigBoard(int objects) {
  qvis::ArtDocument doc;
  qvis::Layer l;
  l.name = "Top";
  l.colour = 0xC83434;
  l.apertures[10].size_x = 200000;  // circles
  l.apertures[11].size_x = 600000;
  unsigned seed = 12345;
  auto rnd = [&](int n) {
    seed = seed * 1103515245u + 12345u;
    return static_cast<qvis::Coord>((seed >> 8) % static_cast<unsigned>(n));
  };
  for (int i = 0; i < objects; ++i) {
    qvis::ArtObject o;
    const qvis::Coord x = rnd(200000) * 1000, y = rnd(110000) * 1000;
    if (i % 5 == 4) {
      o.kind = qvis::ObjectKind::kFlash;
      o.aperture = 11;
      o.end = {x, y};
    } else {
      o.kind = qvis::ObjectKind::kTrack;
      o.aperture = 10;
      o.start = {x, y};
      o.end = i % 2 ? qvis::ArtPoint{x + 1000000 + rnd(3000000), y}
                    : qvis::ArtPoint{x, y + 1000000 + rnd(3000000)};
    }
    l.objects.push_back(o);
  }
  doc.layers.push_back(std::move(l));
  return doc;
}

struct Editor {
  explicit Editor(int objects) {
    w.SetQuiet(true);
    port = w.port();
    port->setParent(nullptr);
    port->resize(kWidth, kHeight);
    port->show();
    QCoreApplication::processEvents();
    qvis::ArtDocument doc = objects > 0 ? BigBoard(objects) : qvis::ArtDocument{};
    if (objects == 0) doc.layers.push_back(qvis::Layer{});
    w.board().Reset(std::move(doc));
    if (objects > 0) {
      w.FitView();
    } else {
      w.design()->m_pCoords->SetZoom(9.0);
      w.design()->m_pCoords->SetScreenViewPosition(-5.0, -115.0);
    }
    port->RedrawNow();
    QCoreApplication::processEvents();
  }
  void Move(QPoint p, Qt::MouseButtons buttons = Qt::NoButton) {
    QMouseEvent e(QEvent::MouseMove, QPointF(p), QPointF(p), Qt::NoButton, buttons, Qt::NoModifier);
    QCoreApplication::sendEvent(port, &e);
  }
  void Press(QPoint p, Qt::MouseButton b) {
    QMouseEvent e(QEvent::MouseButtonPress, QPointF(p), QPointF(p), b, b, Qt::NoModifier);
    QCoreApplication::sendEvent(port, &e);
  }
  void Release(QPoint p, Qt::MouseButton b) {
    QMouseEvent e(QEvent::MouseButtonRelease, QPointF(p), QPointF(p), b, Qt::NoButton, Qt::NoModifier);
    QCoreApplication::sendEvent(port, &e);
  }
  EditorWindow w;
  qvis::QtWindowPort* port = nullptr;
};

// The mouse wanders over the canvas, as a hand does: small steps, now and then a long one.
QPoint Wander(int i) {
  return QPoint(200 + (i * 7) % 1500 + (i % 13), 150 + (i * 3) % 800 + (i % 7));
}

double SecondsOfMoves(Editor& e, double* repaint_share) {
  e.Move(QPoint(960, 540));
  e.Press(QPoint(960, 540), Qt::LeftButton);
  e.Release(QPoint(960, 540), Qt::LeftButton);
  double area = 0;
  const auto t0 = std::chrono::steady_clock::now();
  for (int i = 0; i < kMoves; ++i) {
    e.Move(Wander(i));
    area += static_cast<double>(e.port->LastRepaintArea());
  }
  const auto t1 = std::chrono::steady_clock::now();
  *repaint_share = area / kMoves / (static_cast<double>(kWidth) * kHeight);
  return std::chrono::duration<double>(t1 - t0).count();
}

void BM_RubberBand(benchmark::State& state) {
  Editor big(100000);
  Editor empty(0);
  big.w.Action("track")->trigger();
  empty.w.Action("track")->trigger();
  double ref_s = 0, s = 0, share = 0, ref_share = 0;
  for (auto _ : state) {
    ref_s += SecondsOfMoves(empty, &ref_share);
    const double t = SecondsOfMoves(big, &share);
    s += t;
    state.SetIterationTime(t);
  }
  const double n = static_cast<double>(state.iterations());
  state.counters["moves_per_s"] = kMoves * n / s;
  state.counters["ref_moves_per_s"] = kMoves * n / ref_s;
  state.counters["vs_empty"] = s / ref_s;
  state.counters["repaint_share"] = share;
}
BENCHMARK(BM_RubberBand)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(2);

double SecondsOfPan(Editor& e, int frames) {
  const QPoint start(900, 500);
  e.Press(start, Qt::MiddleButton);
  const auto t0 = std::chrono::steady_clock::now();
  for (int i = 1; i <= frames; ++i) e.Move(start + QPoint((i % 40) - 20, (i % 24) - 12), Qt::MiddleButton);
  const auto t1 = std::chrono::steady_clock::now();
  e.Release(start, Qt::MiddleButton);
  return std::chrono::duration<double>(t1 - t0).count() / frames;
}

void BM_PanFrame(benchmark::State& state) {
  Editor big(100000);
  Editor empty(0);
  double ref = 0, t = 0, redraw = 0;
  for (auto _ : state) {
    ref += SecondsOfPan(empty, 20);
    big.w.canvas().SetKeepPicture(false);
    redraw += SecondsOfPan(big, 5);
    big.w.canvas().SetKeepPicture(true);
    const double f = SecondsOfPan(big, 20);
    t += f;
    state.SetIterationTime(f);
  }
  const double n = static_cast<double>(state.iterations());
  state.counters["frame_ms"] = t / n * 1e3;
  state.counters["ref_frame_ms"] = ref / n * 1e3;
  state.counters["vs_empty"] = t / ref;
  state.counters["redraw_frame_ms"] = redraw / n * 1e3;
  state.counters["vs_redraw"] = t / redraw;
}
BENCHMARK(BM_PanFrame)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(3);

// Frames alternately at `zoom` and 8 x `zoom` about the canvas centre; seconds per frame of
// each kind.
void SecondsOfZoom(Editor& e, int frames, double* fit_s, double* in_s) {
  CQVIS_Coords* c = e.w.design()->m_pCoords;
  const double zoom = c->m_dZoom;
  const double cx = c->m_dViewX + kWidth / 2.0 / zoom;
  const double cy = c->m_dViewY + kHeight / 2.0 / zoom;
  *fit_s = *in_s = 0;
  for (int i = 0; i < 2 * frames; ++i) {
    const double z = i % 2 ? zoom * 8.0 : zoom * (1.0 + 0.001 * (i % 4));
    const auto t0 = std::chrono::steady_clock::now();
    c->SetZoom(z);
    c->SetScreenViewPosition(cx - kWidth / 2.0 / z, cy - kHeight / 2.0 / z);
    e.port->RedrawNow();
    const double t = std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
    (i % 2 ? *in_s : *fit_s) += t / frames;
  }
  c->SetZoom(zoom);
  c->SetScreenViewPosition(cx - kWidth / 2.0 / zoom, cy - kHeight / 2.0 / zoom);
}

void BM_ZoomFrame(benchmark::State& state) {
  Editor big(100000);
  Editor empty(0);
  double ref = 0, fit = 0, in = 0;
  for (auto _ : state) {
    double ref_fit = 0, ref_in = 0, f = 0, i = 0;
    SecondsOfZoom(empty, 5, &ref_fit, &ref_in);
    SecondsOfZoom(big, 5, &f, &i);
    ref += (ref_fit + ref_in) / 2;
    fit += f;
    in += i;
    state.SetIterationTime(f);
  }
  const double n = static_cast<double>(state.iterations());
  state.counters["fit_frame_ms"] = fit / n * 1e3;
  state.counters["in_frame_ms"] = in / n * 1e3;
  state.counters["ref_frame_ms"] = ref / n * 1e3;
  state.counters["in_vs_fit"] = in / fit;
}
BENCHMARK(BM_ZoomFrame)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(2);

}  // namespace

int main(int argc, char** argv) {
  setenv("QT_QPA_PLATFORM", "offscreen", 0);
  QApplication app(argc, argv);
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
