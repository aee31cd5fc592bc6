// Rubber bands allocate nothing: once a command has drawn its band over the canvas, further
// mouse moves (each an erase and a draw in XOR) make no heap allocation, whatever the command and its
// settings. The surface's pens and brushes, the DC's scratch memory and the regions the pad
// bands cut their holes with are all kept from move to move. This binary's operator new counts.
#include <cmath>
#include <functional>
#include <string>

#include "gtest/gtest.h"
#include "qvis/commands/arc_cmd.h"
#include "qvis/commands/circle_cmd.h"
#include "qvis/commands/flash_cmd.h"
#include "qvis/commands/line_cmd.h"
#include "qvis/commands/polygon_cmd.h"
#include "qvis/commands/rect_cmd.h"
#include "qvis/commands/select_cmd.h"
#include "qvis/commands/test_canvas.h"
#include "qvis/gdi/counting_new.h"

namespace qvis {
namespace {

using testing::AllocationCount;
using testing::Canvas;
using testing::Pixels;

constexpr int kMoves = 200;

// The mouse wanders over the canvas (40 x 30 world units at zoom 4) along a curve that passes
// every part of it, off the half-unit grid so that no two moves are equal.
double PathX(int i) { return 20.0 + 17.0 * std::sin(i * 0.37) + 0.013 * i; }
double PathY(int i) { return 15.0 + 12.0 * std::cos(i * 0.23); }

struct Result {
  long allocations = 0;
  int changed_pixels = 0;  // what the band showed after the last move
};

// Run: a command made and prepared on a fresh canvas (clicks that start its figure), moved
// along the path and to the corners to warm up (its scratch memory grows to the largest band, a
// figure that depends on the whole position, such as an arc's sweep, included), then along the path moved
// by a fraction of a pixel while allocations are counted: every counted band is new.
template <class Cmd>
Result Run(const std::function<void(Cmd&)>& prepare) {
  Canvas canvas{160, 120, 4.0};
  testing::Buttons buttons{canvas.surface()};
  buttons.left = true;  // the selection box follows the mouse only while the button is held
  const Pixels background = canvas.Snapshot();
  Cmd cmd(canvas.surface());
  cmd.Active();
  prepare(cmd);
  for (int i = 0; i < kMoves; ++i) cmd.MouseMove(PathX(i), PathY(i));
  cmd.MouseMove(0.5, 0.5);  // and at the far corners, as large as the band gets
  cmd.MouseMove(39.5, 29.5);
  Result r;
  AllocationCount::Start();
  for (int i = 0; i < kMoves; ++i) cmd.MouseMove(PathX(i) + 0.07, PathY(i) + 0.05);
  r.allocations = AllocationCount::Stop();
  r.changed_pixels = Canvas::CountDiff(canvas.Snapshot(), background);
  return r;
}

template <class Cmd>
void Check(const std::string& name, const std::function<void(Cmd&)>& prepare) {
  SCOPED_TRACE(name);
  const Result r = Run<Cmd>(prepare);
  EXPECT_EQ(r.allocations, 0);
  EXPECT_GT(r.changed_pixels, 0);  // the counted moves really drew a band
}

TEST(RubberBandAllocation, TracksAndOutlines) {
  for (int style : {0, 1, 2}) {
    for (double width : {0.0, 1.0, 2.5}) {
      Check<CQVIS_DrawLineCmd>("track, style " + std::to_string(style) + ", width " +
                                   std::to_string(width),
                               [=](CQVIS_DrawLineCmd& c) {
                                 c.SetLineStyle(style);
                                 c.SetWidth(width, false);
                                 c.MouseDown(1, 5, 5);
                                 c.MouseDown(1, 12, 9);
                               });
    }
    Check<CQVIS_DrawPolygonCmd>("polygon, style " + std::to_string(style),
                                [=](CQVIS_DrawPolygonCmd& c) {
                                  c.SetLineStyle(style);
                                  c.MouseDown(1, 5, 5);
                                  c.MouseDown(1, 30, 6);
                                  c.MouseDown(1, 25, 20);
                                });
  }
  Check<CQVIS_DrawRectCmd>("rectangle", [](CQVIS_DrawRectCmd& c) { c.MouseDown(1, 4, 4); });
  Check<CQVIS_DrawSelectCmd>("selection box", [](CQVIS_DrawSelectCmd& c) { c.MouseDown(1, 3, 3); });
}

TEST(RubberBandAllocation, CirclesAndArcs) {
  for (int fill : {0, 1}) {
    for (double width : {0.0, 2.0}) {
      Check<CQVIS_DrawCircleCmd>("circle, fill " + std::to_string(fill) + ", width " +
                                     std::to_string(width),
                                 [=](CQVIS_DrawCircleCmd& c) {
                                   c.SetFill(fill);
                                   c.SetWidth(width);
                                   c.MouseDown(1, 20, 15);
                                 });
    }
  }
  Check<CQVIS_Draw3PCircleCmd>("three-point circle", [](CQVIS_Draw3PCircleCmd& c) {
    c.SetWidth(1.5);
    c.MouseDown(1, 10, 10);
    c.MouseDown(1, 25, 12);
  });
  for (double width : {0.0, 3.0}) {
    Check<CQVIS_DrawArcCmd>("arc, width " + std::to_string(width), [=](CQVIS_DrawArcCmd& c) {
      c.SetWidth(width);
      c.MouseDown(1, 20, 15);
      c.MouseDown(1, 28, 15);
    });
  }
}

TEST(RubberBandAllocation, PadsWithAndWithoutHoles) {
  struct Hole {
    double w, h;
  };
  for (const Hole hole : {Hole{0, 0}, Hole{1.0, 0}, Hole{1.2, 0.8}}) {
    const std::string tag = " hole " + std::to_string(hole.w) + " x " + std::to_string(hole.h);
    Check<CQVIS_DrawFlashCircleCmd>("round pad" + tag, [=](CQVIS_DrawFlashCircleCmd& c) {
      c.SetRadius(2.5);
      c.SetHoleSize(hole.w, hole.h);
      c.MouseDown(1, 20, 15);
    });
    Check<CQVIS_DrawFlashRectCmd>("rectangular pad" + tag, [=](CQVIS_DrawFlashRectCmd& c) {
      c.SetWidth(4.0);
      c.SetHeight(3.0);
      c.SetHoleSize(hole.w, hole.h);
    });
    Check<CQVIS_DrawFlashObroundCmd>("obround pad" + tag, [=](CQVIS_DrawFlashObroundCmd& c) {
      c.SetWidth(5.0);
      c.SetHeight(2.5);
      c.SetHoleSize(hole.w, hole.h);
    });
    Check<CQVIS_DrawFlashPolygonCmd>("polygon pad" + tag, [=](CQVIS_DrawFlashPolygonCmd& c) {
      c.SetDiameter(5.0);
      c.SetSideCount(8);
      c.SetHoleSize(hole.w, hole.h);
    });
  }
}

// The canvas draws its pads through the surface frame after frame: after a warm frame, a frame
// of pads of every shape, with and without holes, in both fill modes, allocates nothing, and a
// pad built in the surface's scratch regions is the one the region makers give.
TEST(SurfaceAllocation, PadsFrameAfterFrame) {
  Canvas canvas{160, 120, 4.0};
  CQVIS_GDI* surface = canvas.surface();
  const auto frame = [&](double shift) {
    canvas.Clear(0);
    for (int fill : {1, 0}) {
      surface->m_nFillMode = fill;
      for (int k = 0; k < 12; ++k) {
        const double x = 3.0 + 3.0 * k + shift, y = 5.0 + 2.0 * (k % 5) + 10.0 * fill;
        const double hole_w = (k % 3) * 0.6, hole_h = (k % 2) * 0.5;
        surface->DrawCircleRgn(x, y, 1.0 + 0.1 * k, hole_w, hole_h, 0x00FF00);
        surface->DrawRectangleRgnWH(x, y + 4, 2.5, 1.5, hole_w, hole_h, 15.0 * k, 0xFF0000);
        surface->DrawObroundRgn(x + 1, y + 7, 1.5 + 0.2 * k, 3.0, hole_w, hole_h, 0.0, 0x0000FF);
        CPoint star[5];
        for (int i = 0; i < 5; ++i) {
          const double a = 2.0 * 3.141592653589793 * ((2 * i) % 5) / 5;
          star[i] = CPoint(static_cast<LONG>(std::lround((x + 2.0 * std::cos(a)) * 4)),
                           static_cast<LONG>(std::lround((y + 10 + 2.0 * std::sin(a)) * 4)));
        }
        surface->DrawPolygonRgnScreen(star, 5, x, y + 10, hole_w, hole_h, 0xFFFFFF);
      }
    }
  };
  frame(0.0);
  const Pixels first = canvas.Snapshot();
  frame(0.3);
  AllocationCount::Start();
  frame(0.0);
  EXPECT_EQ(AllocationCount::Stop(), 0);
  EXPECT_EQ(Canvas::CountDiff(canvas.Snapshot(), first), 0);
  EXPECT_GT(Canvas::CountDiff(first, Pixels(first.size(), 0)), 0);

  // The round pad with a round hole, against the same pad cut from the region makers.
  surface->m_nFillMode = 1;
  canvas.Clear(0);
  surface->DrawCircleRgn(20.0, 15.0, 6.0, 4.0, 0.0, 0x00FF00);
  const Pixels drawn = canvas.Snapshot();
  canvas.Clear(0);
  HRGN outer = surface->GetCircleRgn(20.0, 15.0, 6.0);
  HRGN hole = surface->GetCircleRgn(20.0, 15.0, 2.0);
  gdi::CombineRgn(outer, outer, hole, RGN_DIFF);
  HBRUSH brush = gdi::CreateSolidBrush(0x00FF00);
  gdi::FillRgn(canvas.dc(), outer, brush);
  for (HGDIOBJ o : {HGDIOBJ(outer), HGDIOBJ(hole), HGDIOBJ(brush)}) gdi::DeleteObject(o);
  EXPECT_EQ(Canvas::CountDiff(canvas.Snapshot(), drawn), 0);
  EXPECT_EQ(canvas.At(80, 60), 0u);  // the hole
  EXPECT_NE(canvas.At(80 + 16, 60), 0u);  // the ring
}

}  // namespace
}  // namespace qvis
