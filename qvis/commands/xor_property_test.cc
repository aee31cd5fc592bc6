// The XOR convention of every command, checked on pixels: long seeded random event sequences on
// an active command (moves, clicks, keys, setters), then Deactive must leave the bitmap exactly
// as it was, apart from the vertex lists the track and polygon commands paint on purpose, which
// must equal a reference drawing of the vertices. The host is modelled as the protocol describes
// it: it repaints (background, then OnDraw) after a handled key and after changes that only store
// (the pad sizes, the three-point circle's width), and takes a finished polygon over.
#include <cmath>
#include <functional>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "gtest/gtest.h"
#include "qvis/commands/arc_cmd.h"
#include "qvis/commands/circle_cmd.h"
#include "qvis/commands/flash_cmd.h"
#include "qvis/commands/line_cmd.h"
#include "qvis/commands/point_cmd.h"
#include "qvis/commands/polygon_cmd.h"
#include "qvis/commands/rect_cmd.h"
#include "qvis/commands/select_cmd.h"
#include "qvis/commands/test_canvas.h"
#include "qvis/compat/win32_names.h"

namespace qvis {
namespace {

using testing::Canvas;
using testing::Pixels;

// Rng: a seeded source of the values the events take.
class Rng {
 public:
  explicit Rng(unsigned seed) : gen_(seed) {}
  int Int(int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(gen_); }
  bool Chance(double p) { return std::uniform_real_distribution<double>(0, 1)(gen_) < p; }
  // Coord: mostly on a half-unit grid over the canvas and a little beyond (repeats are common,
  // as with snapping), sometimes an arbitrary double.
  double Coord(double extent) {
    if (Chance(0.1)) return std::uniform_real_distribution<double>(-4, extent + 4)(gen_);
    return Int(-8, static_cast<int>(extent * 2) + 8) * 0.5;
  }
  double Width() {
    static const double kWidths[] = {0.0, 0.5, 1.0, 2.0, 3.5, 6.0, -1.0};
    return kWidths[Int(0, 6)];
  }
  COLORREF Color() {
    static const COLORREF kColors[] = {0x0000FF, 0x00FF00, 0xFF0000, 0xFFFFFF, 0x808080};
    return kColors[Int(0, 4)];
  }
  int Key() {
    static const int kKeys[] = {VK_ESCAPE, VK_RETURN, VK_BACK, VK_SPACE, 'A', VK_DELETE};
    return kKeys[Int(0, 5)];
  }

 private:
  std::mt19937 gen_;
};

// Harness drives one command on a canvas and models the host.
struct Harness {
  Canvas canvas{160, 120, 4.0};
  Pixels background = canvas.Snapshot();
  int max_diff = 0;  // the most pixels the command ever showed at once

  template <class Cmd>
  void Repaint(Cmd& cmd) {
    canvas.Restore(background);
    cmd.OnDraw();
  }
  void Observe() {
    max_diff = std::max(max_diff, Canvas::CountDiff(canvas.Snapshot(), background));
  }
};

constexpr double kW = 40.0;  // world extent of the canvas (160 px at zoom 4)

// Common protocol events every command understands.
template <class Cmd>
bool CommonEvent(Cmd& cmd, Rng& rng, Harness& h, int which) {
  switch (which) {
    case 0:
    case 1:
    case 2:
      cmd.MouseMove(rng.Coord(kW), rng.Coord(kW));
      return true;
    case 3:
      // Only the three-point circle completes with 3, leaving nothing drawn for the host's
      // repaint to replace with the finished circle.
      if (cmd.MouseDown(rng.Chance(0.9) ? 1 : 2, rng.Coord(kW), rng.Coord(kW)) == 3) {
        h.Repaint(cmd);
      }
      return true;
    case 4:
      cmd.MouseUp(rng.Int(1, 3), rng.Coord(kW), rng.Coord(kW));
      return true;
    case 5:
      if (cmd.KeyPress(rng.Key()) != 0) h.Repaint(cmd);
      return true;
    case 6:
      if constexpr (requires { cmd.SetColor(0ul, 0ul); }) {
        cmd.SetColor(rng.Color(), rng.Color());
      } else {
        cmd.Draw();  // the selection colour is a plain member: change it with the box erased
        cmd.m_crColor = rng.Color();
        cmd.Draw();
      }
      return true;
    case 7:
      if (rng.Chance(0.2)) {
        cmd.Cancel();
        // Dropping a vertex list leaves its painted edges for the host's repaint to remove.
        if constexpr (requires { cmd.m_pPointList; }) h.Repaint(cmd);
      }
      return true;
    default:
      return false;
  }
}

template <class Cmd>
void RunSequence(Cmd& cmd, Harness& h, Rng& rng, int steps,
                 const std::function<void(Cmd&, Rng&, Harness&)>& extra,
                 const std::function<void(Cmd&, Harness&)>& after_each = nullptr) {
  cmd.Active();
  h.Observe();
  for (int i = 0; i < steps; ++i) {
    const int which = rng.Int(0, 9);
    if (!CommonEvent(cmd, rng, h, which) && extra) extra(cmd, rng, h);
    if (after_each) after_each(cmd, h);
    h.Observe();
    if (i % 16 == 15) {
      // A repaint (background, then OnDraw) shows exactly what was on screen: no stale figure
      // survives, and OnDraw draws the figure the command holds.
      const Pixels shown = h.canvas.Snapshot();
      h.Repaint(cmd);
      ASSERT_EQ(Canvas::CountDiff(h.canvas.Snapshot(), shown), 0) << "after step " << i;
    }
  }
}

constexpr int kSeeds = 6;
constexpr int kSteps = 200;

// Single-figure commands: after Deactive the bitmap is exactly the background.
template <class Cmd>
void CheckRestores(const char* name,
                   const std::function<void(Cmd&)>& setup,
                   const std::function<void(Cmd&, Rng&, Harness&)>& extra,
                   bool draws = true) {
  for (int seed = 1; seed <= kSeeds; ++seed) {
    Harness h;
    Cmd cmd(h.canvas.surface());
    if (setup) setup(cmd);
    Rng rng(static_cast<unsigned>(seed * 7919));
    RunSequence(cmd, h, rng, kSteps, extra);
    cmd.Deactive();
    EXPECT_EQ(Canvas::CountDiff(h.canvas.Snapshot(), h.background), 0)
        << name << " left pixels behind, seed " << seed;
    if (draws) {
      EXPECT_GT(h.max_diff, 0) << name << " never drew anything, seed " << seed;
    }
  }
}

TEST(XorConventionTest, PointCommandTouchesNothing) {
  CheckRestores<CQVIS_DrawPointCmd>("point", nullptr, nullptr, /*draws=*/false);
}

TEST(XorConventionTest, CircleCommandRestoresBackground) {
  CheckRestores<CQVIS_DrawCircleCmd>(
      "circle", [](CQVIS_DrawCircleCmd& c) { c.SetWidth(2.0); },
      [](CQVIS_DrawCircleCmd& c, Rng& rng, Harness&) {
        if (rng.Chance(0.5)) {
          c.SetWidth(rng.Width());
        } else if (rng.Chance(0.5)) {
          c.SetFill(rng.Int(0, 1));
        } else {
          c.SetLineStyle(rng.Int(0, 2));
        }
      });
}

TEST(XorConventionTest, ThreePointCircleRestoresBackground) {
  CheckRestores<CQVIS_Draw3PCircleCmd>(
      "three-point circle", nullptr, [](CQVIS_Draw3PCircleCmd& c, Rng& rng, Harness& h) {
        if (rng.Chance(0.3)) {
          c.SetWidth(rng.Width());  // stores only: the host's repaint shows it
          h.Repaint(c);
        } else {
          // The completing click leaves nothing drawn; the host repaints with the new circle.
          if (c.MouseDown(1, 0, 0) == 3) h.Repaint(c);
        }
      });
}

TEST(XorConventionTest, ArcCommandRestoresBackground) {
  CheckRestores<CQVIS_DrawArcCmd>(
      "arc", [](CQVIS_DrawArcCmd& c) { c.SetWidth(1.0); },
      [](CQVIS_DrawArcCmd& c, Rng& rng, Harness&) {
        if (rng.Chance(0.5)) {
          c.SetWidth(rng.Width());
        } else {
          c.MouseDown(1, rng.Coord(kW), rng.Coord(kW));
        }
      });
}

TEST(XorConventionTest, RectangleCommandRestoresBackground) {
  CheckRestores<CQVIS_DrawRectCmd>(
      "rectangle", nullptr, [](CQVIS_DrawRectCmd& c, Rng& rng, Harness&) {
        if (rng.Chance(0.3)) {
          c.SetDrawType(rng.Int(0, 2));
        } else if (rng.Chance(0.5)) {
          c.Draw();
          c.m_dWidth = rng.Width();
          c.Draw();
        } else {
          c.MouseDown(1, rng.Coord(kW), rng.Coord(kW));
        }
      });
}

TEST(XorConventionTest, SelectCommandRestoresBackground) {
  testing::Buttons buttons;
  CheckRestores<CQVIS_DrawSelectCmd>(
      "select",
      [&](CQVIS_DrawSelectCmd& c) { c.m_pSurface->SetWindowLink(&buttons, nullptr); },
      [&](CQVIS_DrawSelectCmd& c, Rng& rng, Harness&) {
        if (rng.Chance(0.4)) {
          buttons.left = rng.Chance(0.7);
        } else if (rng.Chance(0.3)) {
          c.MouseDblClk();
        } else if (rng.Chance(0.5)) {
          c.SetPointMode(rng.Chance(0.8) ? 0 : 1);
        } else {
          c.MouseDown(1, rng.Coord(kW), rng.Coord(kW));
        }
      });
}

// Pads: the sizes are stored only, so the host repaints after changing them.
TEST(XorConventionTest, FlashCircleRestoresBackground) {
  CheckRestores<CQVIS_DrawFlashCircleCmd>(
      "flash circle", [](CQVIS_DrawFlashCircleCmd& c) { c.SetRadius(3.0); },
      [](CQVIS_DrawFlashCircleCmd& c, Rng& rng, Harness& h) {
        if (rng.Chance(0.5)) {
          c.SetRadius(rng.Width());
        } else {
          c.SetHoleSize(rng.Chance(0.5) ? 0.0 : 2.0, rng.Chance(0.5) ? 0.0 : 1.5);
        }
        h.Repaint(c);
      });
}

TEST(XorConventionTest, FlashRectangleRestoresBackground) {
  CheckRestores<CQVIS_DrawFlashRectCmd>(
      "flash rectangle", [](CQVIS_DrawFlashRectCmd& c) { c.SetWidth(1.0, 3.0); c.SetHeight(2.0); },
      [](CQVIS_DrawFlashRectCmd& c, Rng& rng, Harness& h) {
        if (rng.Chance(0.5)) {
          c.SetWidth(rng.Width(), rng.Width());
          c.SetHeight(rng.Width());
        } else {
          c.SetHoleSize(rng.Chance(0.5) ? 0.0 : 1.0, rng.Chance(0.5) ? 0.0 : 0.5);
        }
        h.Repaint(c);
      });
}

TEST(XorConventionTest, FlashObroundRestoresBackground) {
  CheckRestores<CQVIS_DrawFlashObroundCmd>(
      "flash obround", [](CQVIS_DrawFlashObroundCmd& c) { c.SetWidth(6.0); c.SetHeight(3.0); },
      [](CQVIS_DrawFlashObroundCmd& c, Rng& rng, Harness& h) {
        if (rng.Chance(0.5)) {
          c.SetWidth(rng.Width());
          c.SetHeight(rng.Width());
        } else {
          c.SetHoleSize(rng.Chance(0.5) ? 0.0 : 1.0, rng.Chance(0.5) ? 0.0 : 0.5);
        }
        h.Repaint(c);
      });
}

TEST(XorConventionTest, FlashPolygonRestoresBackground) {
  CheckRestores<CQVIS_DrawFlashPolygonCmd>(
      "flash polygon", [](CQVIS_DrawFlashPolygonCmd& c) { c.SetDiameter(6.0); },
      [](CQVIS_DrawFlashPolygonCmd& c, Rng& rng, Harness& h) {
        static const int kSides[] = {0, 1, 2, 3, 4, 5, 7, 8, 400, 10000};
        if (rng.Chance(0.4)) {
          c.SetSideCount(kSides[rng.Int(0, 9)]);
        } else if (rng.Chance(0.5)) {
          c.SetDiameter(rng.Width() * 2);
        } else {
          c.SetHoleSize(rng.Chance(0.5) ? 0.0 : 1.0, rng.Chance(0.5) ? 0.0 : 0.5);
        }
        h.Repaint(c);
      });
}

// Reference drawings of committed vertex lists, made with the surface's primitives directly.
void ReferenceTrack(CQVIS_GDI* s, HDC dc, const std::vector<CQVIS_DrawLinePoint>& pts, int cap,
                    COLORREF color, COLORREF xor_color) {
  s->SetCopyMode(dc);
  for (size_t i = 0; i + 1 < pts.size(); ++i) {
    const CQVIS_DrawLinePoint& a = pts[i];
    const CQVIS_DrawLinePoint& b = pts[i + 1];
    if (cap == PS_ENDCAP_SQUARE || cap == PS_ENDCAP_FLAT) {
      s->PrepareSolidPen(xor_color, dc);
      s->PrepareSolidBrush(xor_color, dc);
      s->DrawRectangularLine(dc, a.m_dX, a.m_dY, b.m_dX, b.m_dY, b.m_dWidth, b.m_dWidth);
    } else {
      s->PrepareSolidPen(b.m_dWidth, color, dc);
      s->DrawLine(dc, a.m_dX, a.m_dY, b.m_dX, b.m_dY);
    }
  }
}

TEST(XorConventionTest, TrackLeavesExactlyItsCommittedList) {
  for (int seed = 1; seed <= kSeeds; ++seed) {
    for (int cap : {0, PS_ENDCAP_SQUARE, PS_ENDCAP_FLAT}) {
      Harness h;
      CQVIS_DrawLineCmd cmd(h.canvas.surface());
      cmd.SetEndCapStyle(cap);
      cmd.SetWidth(1.5, false);
      cmd.SetColor(0x00FF00, 0x0000FF);
      Rng rng(static_cast<unsigned>(seed * 104729 + cap));
      RunSequence<CQVIS_DrawLineCmd>(
          cmd, h, rng, kSteps, [](CQVIS_DrawLineCmd& c, Rng& r, Harness& hh) {
            const int pick = r.Int(0, 5);
            if (pick == 0) {
              c.SetWidth(r.Width(), r.Chance(0.5));
              hh.Repaint(c);
            } else if (pick == 1) {
              c.SetLineStyle(r.Int(0, 1));
              hh.Repaint(c);
            } else if (pick == 2) {
              c.MouseDblClk();
              hh.Repaint(c);
            } else {
              c.MouseDown(1, r.Coord(kW), r.Coord(kW));
            }
          });
      std::vector<CQVIS_DrawLinePoint> committed;
      for (const CQVIS_DrawLinePoint* p : *cmd.m_pPointList) committed.push_back(*p);
      const COLORREF color = cmd.m_crColor, xor_color = cmd.m_crXORColor;
      cmd.Deactive();
      const Pixels after = h.canvas.Snapshot();
      h.canvas.Restore(h.background);
      ReferenceTrack(h.canvas.surface(), h.canvas.dc(), committed, cap, color, xor_color);
      EXPECT_EQ(Canvas::CountDiff(after, h.canvas.Snapshot()), 0)
          << "track, seed " << seed << " cap " << cap << ", " << committed.size() << " vertices";
      EXPECT_GT(h.max_diff, 0);
    }
  }
}

void ReferencePolygon(CQVIS_GDI* s, HDC dc, const std::vector<CQVIS_DrawPolygonPoint>& pts,
                      COLORREF color) {
  s->SetCopyMode(dc);
  s->PrepareSolidPen(color, dc);
  s->PrepareNullBrush(dc);
  for (size_t i = 0; i + 1 < pts.size(); ++i) {
    const CQVIS_DrawPolygonPoint& a = pts[i];
    const CQVIS_DrawPolygonPoint& b = pts[i + 1];
    if (!b.m_nArc) {
      s->DrawLine(dc, a.m_dX, a.m_dY, b.m_dX, b.m_dY);
      continue;
    }
    const double r = std::hypot(a.m_dX - b.m_dCenterX, a.m_dY - b.m_dCenterY);
    if (b.m_nDirection == AD_CLOCKWISE) {
      s->DrawArc(dc, b.m_dCenterX, b.m_dCenterY, r, b.m_dX, b.m_dY, a.m_dX, a.m_dY);
    } else {
      s->DrawArc(dc, b.m_dCenterX, b.m_dCenterY, r, a.m_dX, a.m_dY, b.m_dX, b.m_dY);
    }
  }
}

TEST(XorConventionTest, PolygonLeavesExactlyItsCommittedEdges) {
  for (int seed = 1; seed <= kSeeds; ++seed) {
    Harness h;
    CQVIS_DrawPolygonCmd cmd(h.canvas.surface());
    cmd.SetColor(0x00FF00, 0x0000FF);
    Rng rng(static_cast<unsigned>(seed * 15485863));
    RunSequence<CQVIS_DrawPolygonCmd>(
        cmd, h, rng, kSteps, [](CQVIS_DrawPolygonCmd& c, Rng& r, Harness& hh) {
          const int pick = r.Int(0, 5);
          if (pick == 0) {
            c.SetLastPointArcInfo(r.Coord(kW), r.Coord(kW), r.Int(1, 2));
            hh.Repaint(c);
          } else if (pick == 1) {
            c.SetLineStyle(r.Int(0, 1));
            hh.Repaint(c);
          } else if (pick == 2) {
            c.MouseDblClk();
            hh.Repaint(c);
          } else {
            c.MouseDown(1, r.Coord(kW), r.Coord(kW));
          }
        },
        [](CQVIS_DrawPolygonCmd& c, Harness& hh) {
          // A finished polygon is taken over by the host, which then repaints.
          if (c.m_nProgress == 0 && !c.m_pPointList->IsEmpty()) {
            c.ReleasePoints();
            hh.Repaint(c);
          }
        });
    std::vector<CQVIS_DrawPolygonPoint> committed;
    for (const CQVIS_DrawPolygonPoint* p : *cmd.m_pPointList) committed.push_back(*p);
    const COLORREF color = cmd.m_crColor;
    cmd.Deactive();
    const Pixels after = h.canvas.Snapshot();
    h.canvas.Restore(h.background);
    ReferencePolygon(h.canvas.surface(), h.canvas.dc(), committed, color);
    EXPECT_EQ(Canvas::CountDiff(after, h.canvas.Snapshot()), 0)
        << "polygon, seed " << seed << ", " << committed.size() << " vertices";
    EXPECT_GT(h.max_diff, 0);
  }
}

// Bad input never crashes or hangs, and the XOR figure is still taken back exactly.
TEST(XorConventionTest, ExtremeValuesNeitherCrashNorStrandPixels) {
  const double kNaN = std::numeric_limits<double>::quiet_NaN();
  const double kInf = std::numeric_limits<double>::infinity();
  const double kValues[] = {kNaN, kInf, -kInf, 1e12, -1e300, 1e300, 0.0, 5.0};
  Harness h;
  CQVIS_DrawLineCmd line(h.canvas.surface());
  CQVIS_DrawCircleCmd circle(h.canvas.surface());
  CQVIS_DrawArcCmd arc(h.canvas.surface());
  CQVIS_Draw3PCircleCmd three(h.canvas.surface());
  CQVIS_DrawFlashCircleCmd pad(h.canvas.surface());
  CQVIS_DrawFlashPolygonCmd poly_pad(h.canvas.surface());
  CQVIS_DrawPolygonCmd polygon(h.canvas.surface());
  CQVIS_DrawRectCmd rect(h.canvas.surface());
  CQVIS_DrawFlashRectCmd rect_pad(h.canvas.surface());
  CQVIS_DrawFlashObroundCmd obround(h.canvas.surface());
  for (double v : kValues) {
    for (double w : {kNaN, -3.0, 0.0, 1e12}) {
      line.SetWidth(w, true);
      circle.SetWidth(w);
      arc.SetWidth(w);
      pad.SetRadius(w);
      poly_pad.SetDiameter(w);
      rect.m_dWidth = w;
      rect_pad.SetWidth(w);
      rect_pad.SetHeight(v);
      obround.SetWidth(v, w);
      obround.SetHeight(w);
      circle.Active();
      arc.Active();
      three.Active();
      pad.Active();
      poly_pad.Active();
      rect.Active();
      rect_pad.Active();
      obround.Active();
      for (int i = 0; i < 3; ++i) {
        rect.MouseMove(v, 2.0 * i);
        rect.MouseDown(1, 3.0, v);
        rect_pad.MouseMove(v, 4.0);
        obround.MouseMove(4.0, v);
        circle.MouseMove(5.0 + i, v);
        circle.MouseDown(1, 5.0 + i, v);
        arc.MouseMove(v, v);
        arc.MouseDown(1, 5.0 * i, v);
        three.MouseMove(v, i);
        if (i < 2) three.MouseDown(1, 0, 0);
        pad.MouseDown(1, v, v);
        poly_pad.MouseMove(v, 3.0);
      }
      circle.Deactive();
      arc.Deactive();
      three.Deactive();
      pad.Deactive();
      poly_pad.Deactive();
      rect.Deactive();
      rect_pad.Deactive();
      obround.Deactive();
      EXPECT_EQ(Canvas::CountDiff(h.canvas.Snapshot(), h.background), 0) << v << " " << w;
      // The vertex-list commands paint their lists; here they only must not fault.
      line.Active();
      polygon.Active();
      for (int i = 0; i < 3; ++i) {
        polygon.MouseMove(v, i);
        polygon.MouseDown(1, v, i);
        polygon.SetLastPointArcInfo(v, v, 2);
        line.MouseMove(v, 10.0 + i);
        line.MouseDown(1, v, 10.0 + i);
      }
      line.KeyPress(VK_RETURN);
      polygon.KeyPress(VK_RETURN);
      line.Deactive();
      polygon.Deactive();
      h.canvas.Restore(h.background);
    }
  }
  // Huge pads at a normal position: drawn as far as the device layer can (a radius of 1e4 covers
  // the canvas; 1e12 saturates the device range) and always taken back off exactly.
  pad.SetHoleSize(0.0, 0.0);
  for (double r : {1e4, 1e12}) {
    pad.SetRadius(r);
    pad.Active();
    pad.MouseMove(20.0, 15.0 + r * 1e-12);
    if (r < 1e5) {
      EXPECT_GT(Canvas::CountDiff(h.canvas.Snapshot(), h.background), 0);
    }
    pad.Deactive();
    EXPECT_EQ(Canvas::CountDiff(h.canvas.Snapshot(), h.background), 0) << r;
  }
}

}  // namespace
}  // namespace qvis
