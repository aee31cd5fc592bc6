// Pixel tests of the surface's world primitives: each is drawn into a bitmap DC and the bitmap
// is checked (small cases as ASCII pictures), and every primitive drawn twice in XOR must give
// the background back.
#include <cmath>
#include <functional>
#include <limits>
#include <string>
#include <vector>

#include "gtest/gtest.h"
#include "qvis/compat/win32_names.h"
#include "qvis/coords/view_coords.h"
#include "qvis/geometry/value_types.h"
#include "qvis/gdi/gdi.h"
#include "qvis/render/gdi_objects.h"
#include "qvis/render/render_test_canvas.h"
#include "qvis/render/surface.h"

namespace {

using qvis::testing::Canvas;
using qvis::testing::Pic;
namespace gdi = qvis::gdi;

constexpr COLORREF kWhite = 0xFFFFFF;
constexpr COLORREF kGreen = 0x00FF00;

// A surface drawing into `canvas`, zoom `zoom`, with world (0, 0) at device (ox, oy).
void Aim(CQVIS_GDI& s, Canvas& canvas, double zoom, int ox, int oy) {
  s.SetHDC(canvas.dc());
  s.GetCoords()->m_dZoom = zoom;
  s.GetCoords()->m_dViewX = -ox / zoom;
  s.GetCoords()->m_dViewY = -oy / zoom;
}

TEST(SurfaceLinesTest, HorizontalAndVerticalLinesCoverTheSamePixelsEitherWay) {
  for (bool reversed : {false, true}) {
    Canvas canvas(12, 8);
    CQVIS_GDI s;
    Aim(s, canvas, 1.0, 0, 0);
    s.PrepareSolidPen(kWhite);
    if (reversed) {
      s.DrawLine(10, 5, 2, 5);
      s.DrawLine(1, 6, 1, 1);
    } else {
      s.DrawLine(2, 5, 10, 5);
      s.DrawLine(1, 1, 1, 6);
    }
    EXPECT_EQ(canvas.Ascii(), Pic({"............",
                                   ".#..........",
                                   ".#..........",
                                   ".#..........",
                                   ".#..........",
                                   ".#########..",
                                   "............",
                                   "............"}))
        << "reversed " << reversed;
  }
}

TEST(SurfaceLinesTest, CrossAndPlusStrokesAreTwentyPixelsAtZoomTen) {
  Canvas plus(30, 30), cross(30, 30);
  CQVIS_GDI s;
  Aim(s, plus, 10.0, 15, 15);
  s.PrepareSolidPen(kWhite);
  s.DrawPlus(0, 0, 1);
  EXPECT_EQ(plus.Box(), CRect(5, 5, 25, 25));
  EXPECT_EQ(plus.Drawn(), 39);  // two 20-pixel strokes sharing the centre
  Aim(s, cross, 10.0, 15, 15);
  s.PrepareSolidPen(kWhite);
  s.DrawCross(0, 0, 1);
  // The second diagonal is neither horizontal nor vertical, so it runs from its first point
  // (25, 5) and leaves out (5, 25): 20 pixels each, sharing the centre.
  EXPECT_EQ(cross.Box(), CRect(5, 5, 26, 25));
  EXPECT_EQ(cross.Drawn(), 39);
  for (int i = 0; i < 20; ++i) {
    EXPECT_EQ(cross.At(5 + i, 5 + i), kWhite) << i;
    EXPECT_EQ(cross.At(25 - i, 5 + i), kWhite) << i;
  }
}

TEST(SurfaceLinesTest, ArrowHeadIsTheTriangleBehindTheTip) {
  // DrawArrow(0, 0, 10, 0, 2, 1) is the open triangle (0, 0), (2, 0.5), (2, -0.5).
  Canvas drawn(40, 30), expected(40, 30);
  CQVIS_GDI s;
  Aim(s, drawn, 10.0, 5, 15);
  s.PrepareSolidPen(kWhite);
  s.DrawArrow(0, 0, 10, 0, 2, 1);
  Aim(s, expected, 10.0, 5, 15);
  s.PrepareSolidPen(kWhite);
  s.DrawLine(0, 0, 2, 0.5);
  s.DrawLine(2, 0.5, 2, -0.5);
  s.DrawLine(2, -0.5, 0, 0);
  EXPECT_EQ(drawn.Snapshot(), expected.Snapshot());
  EXPECT_EQ(drawn.Box(), CRect(5, 10, 26, 21));

  // The arrow line carries a head at each end, pointing outwards.
  Canvas line(60, 30);
  Aim(s, line, 10.0, 5, 15);
  s.DrawArrowLine(0, 0, 5, 0, 1, 1, kGreen);
  EXPECT_EQ(line.At(5, 15), kGreen);
  EXPECT_EQ(line.At(15, 10), kGreen);  // base of the left head, one unit in
  EXPECT_EQ(line.At(45, 10), kGreen);  // base of the right head
  EXPECT_EQ(line.Box(), CRect(5, 10, 56, 21));
}

TEST(SurfaceLinesTest, RectangularLineSweepsTheAperture) {
  Canvas canvas(16, 12);
  CQVIS_GDI s;
  Aim(s, canvas, 1.0, 0, 0);
  s.PrepareSolidPen(kWhite);
  s.PrepareSolidBrush(kWhite);
  s.DrawRectangularLine(4, 3, 10, 3, 4, 2);  // horizontal: one Rectangle (2,2)-(12,4)
  EXPECT_EQ(canvas.Box(), CRect(2, 2, 12, 4));
  canvas.Fill(0);
  s.DrawRectangularLine(3, 3, 9, 7, 4, 2);   // diagonal: the hexagon around both boxes
  // Hexagon (1,2) (5,2) (11,6) (11,8) (7,8) (1,4): Polygon leaves out right and bottom.
  EXPECT_EQ(canvas.Ascii(), Pic({"................",
                                 "................",
                                 ".#####..........",
                                 ".#######........",
                                 ".########.......",
                                 "..#########.....",
                                 "....########....",
                                 ".....#######....",
                                 ".......#####....",
                                 "................",
                                 "................",
                                 "................"}));
}

TEST(SurfaceCurvesTest, ArcDegenerateCasesDrawNothing) {
  Canvas canvas(40, 40);
  CQVIS_GDI s;
  Aim(s, canvas, 10.0, 20, 20);
  s.PrepareSolidPen(kWhite);
  s.DrawArc(0.0, 0, 1, 1, 0, 1, 0);          // start and end on the same ray
  s.DrawArc(0.0, 0, 0.04, 1, 0, 0, -1);      // radius maps to 0.4 pixel
  s.DrawArc(0.0, 0, 0.0, 1, 0, 0, -1);       // zero radius
  s.DrawArc(0.0, 0, -1.0, 1, 0, 0, -1);      // negative radius
  s.DrawPie(0.0, 0, 1, 2, 0, 3, 0);          // same ray again
  s.DrawChord(0.0, 0, 0.0, 1, 0, 0, 1);
  s.DrawArc(0.0, 0, 1, 2, 0, 3, 0);          // different pixels, one ray
  s.DrawGuideCircle(0, 0, 0, 1);             // guide circle of no radius
  EXPECT_EQ(canvas.Drawn(), 0);
}

TEST(SurfaceCurvesTest, ArcRunsCounterClockwiseOnScreen) {
  Canvas canvas(40, 40);
  CQVIS_GDI s;
  Aim(s, canvas, 10.0, 20, 20);
  s.PrepareSolidPen(kWhite);
  // From the ray to the right to the ray upwards (smaller y): the upper-right quarter.
  s.DrawArc(0.0, 0, 1, 5, 0, 0, -5);
  const CRect box = canvas.Box();
  EXPECT_GE(box.left, 20);
  EXPECT_LE(box.bottom, 21);
  EXPECT_GT(canvas.Drawn(), 10);
  // The six-argument form takes the radius from the start point.
  Canvas same(40, 40);
  Aim(s, same, 10.0, 20, 20);
  s.PrepareSolidPen(kWhite);
  s.DrawArc(0, 0, 1, 0, 0, -5);
  EXPECT_EQ(same.Snapshot(), canvas.Snapshot());
}

TEST(SurfaceCurvesTest, CircleBoxAndGuideShapes) {
  Canvas canvas(40, 40);
  CQVIS_GDI s;
  Aim(s, canvas, 10.0, 20, 20);
  s.PrepareSolidPen(kWhite);
  s.PrepareNullBrush();
  s.DrawCircle(0, 0, 1);
  EXPECT_EQ(canvas.Box(), CRect(10, 10, 30, 30));  // Ellipse leaves out right and bottom
  canvas.Fill(0);
  s.DrawGuideCircle(0, 0, 1, 0.6);  // ring edges at radii 0.7 and 1.3
  EXPECT_EQ(canvas.Box(), CRect(7, 7, 33, 33));
  EXPECT_EQ(canvas.At(20, 13), kWhite);
  EXPECT_EQ(canvas.At(20, 10), 0u);
  canvas.Fill(0);
  s.DrawGuideCircle(0, 0, 1, 0.04);  // half width maps to 0: the centre circle only
  EXPECT_EQ(canvas.Box(), CRect(10, 10, 30, 30));
}

TEST(SurfaceCurvesTest, GuideLineOutlinesARoundEndedTrack) {
  Canvas canvas(60, 30);
  CQVIS_GDI s;
  Aim(s, canvas, 10.0, 15, 15);
  s.PrepareSolidPen(kWhite);
  s.DrawGuideLine(0, 0, 3, 0, 1.0);  // sides at y = -0.5 and 0.5, caps about both ends
  EXPECT_EQ(canvas.Box(), CRect(10, 10, 50, 21));
  EXPECT_EQ(canvas.At(30, 10), kWhite);   // upper side
  EXPECT_EQ(canvas.At(30, 20), kWhite);   // lower side
  EXPECT_EQ(canvas.At(10, 15), kWhite);   // left cap, outermost
  EXPECT_EQ(canvas.At(49, 15), kWhite);   // right cap, outermost
  EXPECT_EQ(canvas.At(30, 15), 0u);       // nothing on the centre line
  // Reversed direction gives the same outline (the arcs swap ends).
  Canvas reversed(60, 30);
  Aim(s, reversed, 10.0, 15, 15);
  s.PrepareSolidPen(kWhite);
  s.DrawGuideLine(3, 0, 0, 0, 1.0);
  EXPECT_EQ(reversed.Box(), canvas.Box());
  // Equal ends: the circle of radius width / 2.
  Canvas dot(40, 40);
  Aim(s, dot, 10.0, 20, 20);
  s.PrepareSolidPen(kWhite);
  s.DrawGuideLine(0, 0, 0, 0, 2.0);
  EXPECT_EQ(dot.Box(), CRect(10, 10, 30, 30));
}

TEST(SurfaceCurvesTest, GuideArcHasBothEdgesAndOutwardCaps) {
  Canvas canvas(80, 80);
  CQVIS_GDI s;
  Aim(s, canvas, 10.0, 40, 40);
  s.PrepareSolidPen(kWhite);
  // Quarter arc of radius 2 from +x up to -y (screen up), track width 1.
  s.DrawGuideArc(0, 0, 2, 1, 0, 0, -1, 1.0);
  EXPECT_EQ(canvas.At(64, 39), kWhite);  // outer edge (radius 25) near the start ray
  EXPECT_EQ(canvas.At(55, 39), kWhite);  // inner edge (radius 15) near the start ray
  EXPECT_EQ(canvas.At(40, 15), kWhite);  // outer edge at the end ray
  bool inner_on_diagonal = false;  // the inner edge crosses the 45-degree diagonal near 10.6
  for (int d = 9; d <= 12; ++d) inner_on_diagonal |= canvas.At(40 + d, 40 - d) == kWhite;
  EXPECT_TRUE(inner_on_diagonal);
  // The start cap bulges below the start ray, the end cap left of the end ray; nothing else
  // leaves the upper-right quarter.
  EXPECT_EQ(canvas.At(60, 44), kWhite);
  EXPECT_EQ(canvas.At(35, 20), kWhite);
  EXPECT_EQ(canvas.Box(), CRect(35, 15, 65, 45));
  EXPECT_EQ(canvas.At(48, 32), 0u);  // between the edges
}

TEST(SurfaceRectanglesTest, RectangleFormsAndPolygons) {
  Canvas canvas(10, 8);
  CQVIS_GDI s;
  Aim(s, canvas, 1.0, 0, 0);
  s.PrepareSolidPen(kWhite);
  s.PrepareSolidBrush(kGreen);
  s.DrawRectangle(7, 6, 2, 1);  // corners in any order
  EXPECT_EQ(canvas.Ascii(), Pic({"..........",
                                 "..#####...",
                                 "..#ooo#...",
                                 "..#ooo#...",
                                 "..#ooo#...",
                                 "..#####...",
                                 "..........",
                                 ".........."}));
  canvas.Fill(0);
  s.DrawRectangle_Polyline(2, 1, 7, 6);  // closed outline, both far edges included
  EXPECT_EQ(canvas.Box(), CRect(2, 1, 8, 7));
  EXPECT_EQ(canvas.At(4, 3), 0u);
  canvas.Fill(0);
  s.DrawRectangle_Polygon(2, 1, 7, 6);
  EXPECT_EQ(canvas.Box(), CRect(2, 1, 8, 7));
  EXPECT_EQ(canvas.At(4, 3), kGreen);

  canvas.Fill(0);
  CPointD two[2] = {CPointD(1, 1), CPointD(5, 5)};
  s.DrawPolygon(two, 2);
  CPoint ipts[2] = {CPoint(1, 1), CPoint(5, 5)};
  s.DrawPolygon(ipts, 2);
  s.DrawPolygonScreen(ipts, 2);
  s.DrawPolyline(ipts, 1);
  EXPECT_EQ(canvas.Drawn(), 0);  // too few points: nothing

  CPointD tri[3] = {CPointD(1, 1), CPointD(8, 1), CPointD(1, 6)};
  s.DrawPolygon(tri, 3);
  EXPECT_EQ(canvas.Box(), CRect(1, 1, 9, 7));
  Canvas ints(10, 8);
  Aim(s, ints, 1.0, 0, 0);
  s.PrepareSolidPen(kWhite);
  s.PrepareSolidBrush(kGreen);
  CPoint itri[3] = {CPoint(1, 1), CPoint(8, 1), CPoint(1, 6)};
  s.DrawPolygon(itri, 3);
  EXPECT_EQ(ints.Snapshot(), canvas.Snapshot());
}

TEST(SurfaceRectanglesTest, PolyPolygonChecksItsCounts) {
  Canvas canvas(20, 10);
  CQVIS_GDI s;
  Aim(s, canvas, 1.0, 0, 0);
  s.PrepareSolidPen(kWhite);
  s.PrepareSolidBrush(kWhite);
  CPoint pts[8] = {CPoint(1, 1), CPoint(6, 1), CPoint(6, 6), CPoint(1, 6),
                   CPoint(10, 1), CPoint(15, 1), CPoint(15, 6), CPoint(10, 6)};
  int bad[2] = {4, 5};  // more points than given
  s.DrawPolyPolygon(pts, 8, bad, 2);
  int one[2] = {4, 1};
  s.DrawPolyPolygon(pts, 8, one, 2);
  EXPECT_EQ(canvas.Drawn(), 0);
  int good[2] = {4, 4};
  s.DrawPolyPolygon(pts, 8, good, 2);
  EXPECT_EQ(canvas.Box(), CRect(1, 1, 16, 7));
  EXPECT_EQ(canvas.At(8, 3), 0u);
}

// Region of a pad drawn solid: the set of pixels in `colour`.
std::vector<bool> Mask(const Canvas& c, COLORREF colour) {
  std::vector<bool> m;
  for (int y = 0; y < c.height(); ++y)
    for (int x = 0; x < c.width(); ++x) m.push_back(c.At(x, y) == colour);
  return m;
}

TEST(SurfacePadsTest, ObroundIsTheUnionOfItsBodyAndEndCircles) {
  // Width 2, height 1 at zoom 10 about (2, 1.5): box (-0.5, 0.5)-(0.5, -0.5) about the centre
  // and circles of radius 0.5 at x = +-0.5.
  Canvas pad(50, 40), expected(50, 40);
  CQVIS_GDI s;
  Aim(s, pad, 10.0, 0, 0);
  s.DrawObroundRgn(2, 1.5, 2, 1, 0, 0, 0, kGreen);

  qvis::HRGN body = gdi::CreateRectRgn(15, 20, 25, 10);
  qvis::HRGN left = gdi::CreateEllipticRgn(10, 10, 20, 20);
  qvis::HRGN right = gdi::CreateEllipticRgn(20, 10, 30, 20);
  gdi::CombineRgn(body, body, left, RGN_OR);
  gdi::CombineRgn(body, body, right, RGN_OR);
  qvis::HBRUSH green = gdi::CreateSolidBrush(kGreen);
  gdi::FillRgn(expected.dc(), body, green);
  EXPECT_EQ(pad.Snapshot(), expected.Snapshot());
  gdi::DeleteObject(body);
  gdi::DeleteObject(left);
  gdi::DeleteObject(right);
  gdi::DeleteObject(green);

  // An upright obround is the same shape turned: its box is 10 wide and 20 high.
  Canvas upright(50, 40);
  Aim(s, upright, 10.0, 0, 0);
  s.DrawObroundRgn(2, 2, 1, 2, 0, 0, 0, kGreen);
  const CRect lying = pad.Box(), standing = upright.Box();
  EXPECT_EQ(standing.Width(), lying.Height());
  EXPECT_EQ(standing.Height(), lying.Width());
  EXPECT_EQ(upright.Drawn(), pad.Drawn());
}

TEST(SurfacePadsTest, HolesAreRoundOrRectangular) {
  Canvas round(50, 40), rect(50, 40), none(50, 40);
  CQVIS_GDI s;
  Aim(s, round, 10.0, 0, 0);
  s.DrawObroundRgn(2, 1.5, 2, 1, 0.3, 0, 0, kGreen);  // round hole, diameter 0.3
  Aim(s, rect, 10.0, 0, 0);
  s.DrawObroundRgn(2, 1.5, 2, 1, 0.3, 0.2, 0, kGreen);  // 0.3 x 0.2 box
  Aim(s, none, 10.0, 0, 0);
  s.DrawObroundRgn(2, 1.5, 2, 1, 0, 0, 0, kGreen);
  // The hole is CreateEllipticRgn(18, 13, 22, 17): a small plus.
  EXPECT_EQ(round.Ascii(17, 12, 23, 18), Pic({"######",
                                              "##.###",
                                              "#...##",
                                              "##.###",
                                              "######",
                                              "######"}));
  // The rectangular hole is the half-open box (18.5 -> 19 .. 21.5 -> 22) x (14 .. 16).
  int hole = none.Drawn() - rect.Drawn();
  EXPECT_EQ(hole, 3 * 2);
  EXPECT_EQ(rect.At(19, 14), 0u);
  EXPECT_EQ(rect.At(21, 15), 0u);
  EXPECT_EQ(rect.At(22, 15), kGreen);
  EXPECT_EQ(rect.At(19, 16), kGreen);
}

TEST(SurfacePadsTest, RectanglePadsRotateAboutTheirCentre) {
  Canvas flat(60, 60), turned(60, 60), corners(60, 60);
  CQVIS_GDI s;
  Aim(s, flat, 10.0, 30, 30);
  s.DrawRectangleRgnWH(0, 0, 4, 2, 0, 0, 0, kGreen);
  EXPECT_EQ(flat.Box(), CRect(10, 20, 50, 40));
  Aim(s, corners, 10.0, 30, 30);
  s.DrawRectangleRgn(2, 1, -2, -1, 0, 0, 0, kGreen);
  EXPECT_EQ(corners.Snapshot(), flat.Snapshot());
  Aim(s, turned, 10.0, 30, 30);
  s.DrawRectangleRgnWH(0, 0, 4, 2, 0, 0, 90, kGreen);
  EXPECT_EQ(turned.Box(), CRect(20, 10, 40, 50));
  EXPECT_EQ(turned.Drawn(), flat.Drawn());
  // 45 degrees: a diamond-ish shape whose corners are on the diagonals.
  Canvas diag(60, 60);
  Aim(s, diag, 10.0, 30, 30);
  s.DrawRectangleRgnWH(0, 0, 4, 4, 0, 0, 45, kGreen);
  EXPECT_EQ(diag.At(30, 30), kGreen);
  EXPECT_EQ(diag.At(30, 4), kGreen);     // near the top corner (0, -2.83)
  EXPECT_EQ(diag.At(30, 1), 0u);
  EXPECT_EQ(diag.At(12, 12), 0u);        // the unturned box's corner is outside
}

TEST(SurfacePadsTest, CircleAndPolygonPadsWithHoles) {
  Canvas canvas(40, 40);
  CQVIS_GDI s;
  Aim(s, canvas, 10.0, 20, 20);
  s.DrawCircleRgn(0, 0, 1.5, 1.0, 0, kGreen);
  EXPECT_EQ(canvas.Box().left, 5);
  EXPECT_EQ(canvas.Box().top, 5);
  EXPECT_EQ(canvas.At(20, 20), 0u);  // the hole
  EXPECT_EQ(canvas.At(20, 12), kGreen);
  canvas.Fill(0);
  CPoint square[4] = {CPoint(5, 5), CPoint(35, 5), CPoint(35, 35), CPoint(5, 35)};
  s.DrawPolygonRgnScreen(square, 4, 0, 0, 1.0, 1.0, kGreen);
  EXPECT_EQ(canvas.Box(), CRect(5, 5, 35, 35));
  EXPECT_EQ(canvas.Drawn(), 30 * 30 - 10 * 10);
  canvas.Fill(0);
  s.DrawPolygonRgnScreen(square, 2, 0, 0, 0, 0, kGreen);
  EXPECT_EQ(canvas.Drawn(), 0);
}

TEST(SurfacePadsTest, FillModeZeroHatchesAndFramesEveryPad) {
  using Draw = std::function<void(CQVIS_GDI&)>;
  const std::vector<std::pair<const char*, Draw>> pads = {
      {"circle", [](CQVIS_GDI& s) { s.DrawCircleRgn(0, 0, 2, 0, 0, kGreen); }},
      {"rect", [](CQVIS_GDI& s) { s.DrawRectangleRgnWH(0, 0, 4, 3, 1, 0.5, 0, kGreen); }},
      {"rect 30", [](CQVIS_GDI& s) { s.DrawRectangleRgnWH(0, 0, 4, 3, 0, 0, 30, kGreen); }},
      {"obround", [](CQVIS_GDI& s) { s.DrawObroundRgn(0, 0, 4, 2, 1, 0, 0, kGreen); }},
  };
  for (const auto& [name, draw] : pads) {
    Canvas solid(60, 60), hatched(60, 60);
    CQVIS_GDI s;
    Aim(s, solid, 10.0, 30, 30);
    draw(s);
    Aim(s, hatched, 10.0, 30, 30);
    gdi::SetBkMode(hatched.dc(), TRANSPARENT);  // the gaps show what lies below
    s.SetFillMode(0);
    draw(s);
    const std::vector<bool> area = Mask(solid, kGreen);
    const auto inside = [&](int x, int y) {
      return x > 0 && y > 0 && x < 59 && y < 59 && area[y * 60 + x] && area[y * 60 + x - 1] &&
             area[y * 60 + x + 1] && area[(y - 1) * 60 + x] && area[(y + 1) * 60 + x];
    };
    int inside_gaps = 0, inside_marks = 0;
    for (int y = 0; y < 60; ++y) {
      for (int x = 0; x < 60; ++x) {
        if (!area[y * 60 + x]) {
          EXPECT_EQ(hatched.At(x, y), 0u) << name << " outside " << x << "," << y;
        } else if (!inside(x, y)) {
          EXPECT_EQ(hatched.At(x, y), kGreen) << name << " frame " << x << "," << y;
        } else {
          const COLORREF c = hatched.At(x, y);
          EXPECT_TRUE(c == kGreen || c == 0u) << name;
          (c == 0u ? inside_gaps : inside_marks) += 1;
          // The hatch repeats every 8 pixels.
          if (inside(x + 8, y)) {
            EXPECT_EQ(hatched.At(x + 8, y), c) << name << x << "," << y;
          }
          if (inside(x, y + 8)) {
            EXPECT_EQ(hatched.At(x, y + 8), c) << name << x << "," << y;
          }
        }
      }
    }
    EXPECT_GT(inside_marks, 0) << name;
    EXPECT_GT(inside_gaps, 0) << name;
  }
}

// Every primitive drawn twice in XOR restores the background exactly.
TEST(SurfaceXorTest, EveryPrimitiveDrawnTwiceRestoresTheBackground) {
  using Draw = std::function<void(CQVIS_GDI&)>;
  CPoint screen[5] = {CPoint(10, 10), CPoint(70, 15), CPoint(60, 60), CPoint(30, 70),
                      CPoint(20, 40)};
  CPoint ints[4] = {CPoint(-2, -2), CPoint(3, -1), CPoint(2, 3), CPoint(-1, 2)};
  CPoint poly2[8] = {CPoint(-3, -3), CPoint(0, -3), CPoint(0, 0), CPoint(-3, 0),
                     CPoint(1, 1),   CPoint(3, 1),  CPoint(3, 3), CPoint(1, 3)};
  int counts[2] = {4, 4};
  CPointD world[4] = {CPointD(-2.2, -1.5), CPointD(2.7, -2.1), CPointD(1.9, 2.4),
                      CPointD(-0.6, 0.3)};
  const std::vector<std::pair<const char*, Draw>> rows = {
      {"line", [](CQVIS_GDI& s) { s.DrawLine(-3.1, -2.2, 2.9, 1.7); }},
      {"cross", [](CQVIS_GDI& s) { s.DrawCross(0.3, 0.2, 1.5); }},
      {"plus", [](CQVIS_GDI& s) { s.DrawPlus(0.3, 0.2, 1.5); }},
      {"arrow", [](CQVIS_GDI& s) { s.DrawArrow(0, 0, 3, 2, 1.5, 1); }},
      {"arrow line", [](CQVIS_GDI& s) { s.DrawArrowLine(-3, 1, 3, -1, 1, 1, 0x00FFFF); }},
      {"rect line", [](CQVIS_GDI& s) { s.DrawRectangularLine(-2, -1, 2, 2, 1, 0.6); }},
      {"rect line h", [](CQVIS_GDI& s) { s.DrawRectangularLine(-2, 1, 2, 1, 1, 0.6); }},
      {"arc", [](CQVIS_GDI& s) { s.DrawArc(0.0, 0, 2.5, 1, 1, -1, 0.5); }},
      {"pie", [](CQVIS_GDI& s) { s.DrawPie(0.0, 0, 2.5, 1, 1, -1, 0.5); }},
      {"chord", [](CQVIS_GDI& s) { s.DrawChord(0.0, 0, 2.5, 1, 1, -1, 0.5); }},
      {"circle", [](CQVIS_GDI& s) { s.DrawCircle(0.1, 0.2, 2.3); }},
      {"guide circle", [](CQVIS_GDI& s) { s.DrawGuideCircle(0, 0, 2, 1); }},
      {"guide line", [](CQVIS_GDI& s) { s.DrawGuideLine(-2, -1, 2, 1.5, 1.2); }},
      {"guide arc", [](CQVIS_GDI& s) { s.DrawGuideArc(0, 0, 2, 1, 0, -1, 1, 0.8); }},
      {"rectangle", [](CQVIS_GDI& s) { s.DrawRectangle(-2, -1.5, 2.5, 1); }},
      {"rect polygon", [](CQVIS_GDI& s) { s.DrawRectangle_Polygon(-2, -1.5, 2.5, 1); }},
      {"rect polyline", [](CQVIS_GDI& s) { s.DrawRectangle_Polyline(-2, -1.5, 2.5, 1); }},
      {"polygon", [&world](CQVIS_GDI& s) { s.DrawPolygon(world, 4); }},
      {"int polygon", [&ints](CQVIS_GDI& s) { s.DrawPolygon(ints, 4); }},
      {"polypolygon", [&](CQVIS_GDI& s) { s.DrawPolyPolygon(poly2, 8, counts, 2); }},
      {"polyline", [&ints](CQVIS_GDI& s) { s.DrawPolyline(ints, 4); }},
      {"screen polygon", [&screen](CQVIS_GDI& s) { s.DrawPolygonScreen(screen, 5); }},
      {"circle pad", [](CQVIS_GDI& s) { s.DrawCircleRgn(0, 0, 2, 1, 0, 0x00FFFF); }},
      {"rect pad", [](CQVIS_GDI& s) { s.DrawRectangleRgnWH(0, 0, 4, 3, 1, 1, 20, 0x00FFFF); }},
      {"obround pad", [](CQVIS_GDI& s) { s.DrawObroundRgn(0, 0, 2, 4, 0.5, 0, 0, 0xFF00FF); }},
      {"polygon pad",
       [&screen](CQVIS_GDI& s) { s.DrawPolygonRgnScreen(screen, 5, 0, 0, 1, 0, 0x00FFFF); }},
  };
  for (int fill_mode : {1, 0}) {
    for (const auto& [name, draw] : rows) {
      Canvas canvas(80, 80);
      // A background with structure, so that any pixel hit an odd number of times shows.
      for (int y = 0; y < 80; ++y)
        for (int x = 0; x < 80; ++x) canvas.Set(x, y, ((x * 7 + y * 13) % 5) * 0x203040);
      const std::vector<std::uint32_t> before = canvas.Snapshot();
      CQVIS_GDI s;
      Aim(s, canvas, 10.0, 40, 40);
      s.SetFillMode(fill_mode);
      s.SetXOrMode();
      s.PrepareSolidPen(fill_mode ? 0.35 : 1.0, 0xFFFF00);  // a 4-pixel pen with fill mode 1
      s.PrepareBrush(0x3366FF, HS_DIAGCROSS);
      draw(s);
      EXPECT_NE(canvas.Snapshot(), before) << name << " fill " << fill_mode;
      draw(s);
      EXPECT_EQ(canvas.Snapshot(), before) << name << " fill " << fill_mode;
    }
  }
}

TEST(SurfaceTextTest, XorTextTwiceLeavesTheTargetAsItWas) {
  Canvas canvas(160, 60);
  for (int y = 0; y < 60; ++y)
    for (int x = 0; x < 160; ++x) canvas.Set(x, y, (x / 3 + y) % 2 ? 0x404040 : 0x102030);
  const std::vector<std::uint32_t> before = canvas.Snapshot();
  CQVIS_GDI s;
  Aim(s, canvas, 2.0, 0, 0);
  s.GetCoords()->m_dScale = 5.0;  // XOR text maps without the unit factor
  s.DrawTextXOrMode(5, 5, "Pad 12", 0x00FFFF);
  EXPECT_NE(canvas.Snapshot(), before);
  // Everything that changed lies right of and below (5 * 2 + 10, 5 * 2 + 10).
  const std::vector<std::uint32_t> after = canvas.Snapshot();
  for (int y = 0; y < 60; ++y) {
    for (int x = 0; x < 160; ++x) {
      if (after[y * 160 + x] != before[y * 160 + x]) {
        EXPECT_GE(x, 20);
        EXPECT_GE(y, 20);
      }
    }
  }
  s.DrawTextXOrMode(5, 5, "Pad 12", 0x00FFFF);
  EXPECT_EQ(canvas.Snapshot(), before);
  s.DrawTextXOrMode(5, 5, "", 0x00FFFF);
  EXPECT_EQ(canvas.Snapshot(), before);
}

TEST(SurfaceTextTest, TextAtDeviceAndWorldPointsAndAsAPath) {
  Canvas device(120, 40), world(120, 40);
  CQVIS_GDI s;
  Aim(s, device, 10.0, 0, 0);
  gdi::SetTextColor(device.dc(), kWhite);
  gdi::SetBkMode(device.dc(), TRANSPARENT);
  s.SetFontFixedSize(20, 0, "Arial", 0, 0, 400, 0);
  s.DrawTextA(10L, 5L, "Hi");
  EXPECT_GT(device.Drawn(), 0);
  EXPECT_GE(device.Box().left, 10);
  Aim(s, world, 10.0, 0, 0);
  gdi::SetTextColor(world.dc(), kWhite);
  gdi::SetBkMode(world.dc(), TRANSPARENT);
  s.SetFontFixedSize(20, 0, "Arial", 0, 0, 400, 0);
  s.DrawTextA(1.0, 0.5, CString("Hi"));
  EXPECT_EQ(world.Snapshot(), device.Snapshot());

  Canvas path(120, 40);
  Aim(s, path, 10.0, 0, 0);
  s.SetFontFixedSize(30, 0, "Arial", 0, 0, 700, 0);
  s.PrepareSolidBrush(kGreen);
  s.DrawTextPathMode(1.0, 0.2, "HI");
  EXPECT_EQ(path.Drawn(), 0);  // recorded, not drawn
  EXPECT_NE(s.FillPath(path.dc()), 0);
  EXPECT_GT(path.Count(kGreen), 20);
}

TEST(SurfacePathsTest, SegmentsFormOneFigureAndCirclesCloseThemselves) {
  Canvas canvas(40, 40);
  CQVIS_GDI s;
  Aim(s, canvas, 10.0, 0, 0);
  s.PrepareSolidBrush(kGreen);
  s.PrepareSolidPen(kGreen);
  ASSERT_NE(s.BeginPath(canvas.dc()), 0);
  s.AddLinePath(0.5, 0.5, 3.5, 0.5);
  s.AddLinePath(3.5, 0.5, 3.5, 3.5);
  s.AddLinePath(3.5, 3.5, 0.5, 0.5);
  ASSERT_NE(s.EndPath(canvas.dc()), 0);
  EXPECT_EQ(canvas.Drawn(), 0);
  ASSERT_NE(s.FillPath(canvas.dc()), 0);
  EXPECT_EQ(canvas.At(30, 10), kGreen);
  EXPECT_EQ(canvas.At(25, 20), kGreen);
  EXPECT_EQ(canvas.At(10, 30), 0u);

  canvas.Fill(0);
  s.BeginPath(canvas.dc());
  s.AddCirclePath(2, 2, 1);
  s.EndPath(canvas.dc());
  s.FillPath(canvas.dc());
  EXPECT_EQ(canvas.At(20, 20), kGreen);
  const CRect box = canvas.Box();
  EXPECT_NEAR(box.left, 10, 1);
  EXPECT_NEAR(box.right, 30, 1);

  // An arc segment in the clockwise direction restores the DC's direction afterwards.
  canvas.Fill(0);
  gdi::SetArcDirection(canvas.dc(), AD_COUNTERCLOCKWISE);
  s.BeginPath(canvas.dc());
  gdi::MoveToEx(canvas.dc(), 20, 20, nullptr);
  s.AddArcPath(2, 2, 1, 3, 2, 2, 1, AD_CLOCKWISE);
  s.EndPath(canvas.dc());
  EXPECT_EQ(gdi::GetArcDirection(canvas.dc()), AD_COUNTERCLOCKWISE);
  s.StrokePath(canvas.dc());
  // Clockwise from the right to the top goes through the bottom and the left, and leaves the
  // upper-right quarter empty.
  EXPECT_EQ(canvas.At(10, 20), kGreen);
  bool bottom = false;
  for (int y = 27; y <= 30; ++y) bottom |= canvas.At(20, y) == kGreen;
  EXPECT_TRUE(bottom);
  for (int y = 0; y < 19; ++y)
    for (int x = 22; x < 40; ++x) EXPECT_EQ(canvas.At(x, y), 0u) << x << "," << y;
}

// Circles too large for the elliptic region builder are still painted where they are visible:
// a pad whose rim is far off screen covers the whole view, and a rim that crosses the view
// lies where the circle's equation puts it.
TEST(SurfacePadsTest, HugeCirclePadsPaintTheVisiblePart) {
  Canvas canvas(64, 48);
  CQVIS_GDI s;
  Aim(s, canvas, 10.0, 32, 24);
  s.DrawCircleRgn(0, 0, 1e12, 0, 0, kGreen);  // device radius saturates at the 32-bit range
  EXPECT_EQ(canvas.Drawn(), 64 * 48);

  // Centre 3,000,000 pixels to the left of the view: the rim runs down the middle of it.
  canvas.Fill(0);
  const double r_px = 3000000.0;
  s.DrawCircleRgn(-r_px / 10.0, 0, (r_px + 32.0) / 10.0, 0, 0, kGreen);
  for (int y = 0; y < 48; ++y) {
    // x of the rim on row y, measured from the centre at device x = 32 - r_px.
    const double dy = y - 24.0;
    const double rim = 32.0 - r_px + std::sqrt((r_px + 32.0) * (r_px + 32.0) - dy * dy);
    for (int x = 0; x < 64; ++x) {
      if (x < rim - 1.0) {
        ASSERT_EQ(canvas.At(x, y), kGreen) << x << "," << y;
      } else if (x > rim + 1.0) {
        ASSERT_EQ(canvas.At(x, y), 0u) << x << "," << y;
      }
    }
  }

  // A huge circle that misses the view paints nothing.
  canvas.Fill(0);
  s.DrawCircleRgn(-1e6, 0, 9e5, 0, 0, kGreen);
  EXPECT_EQ(canvas.Drawn(), 0);
}

TEST(SurfaceRobustnessTest, ExtremeValuesDrawWhatTheyCanAndReturn) {
  Canvas canvas(32, 32);
  const double inf = std::numeric_limits<double>::infinity();
  const double nan = std::numeric_limits<double>::quiet_NaN();
  for (double zoom : {1e-8, 1.0, 1e12}) {
    for (double v : {1e300, -1e300, inf, -inf, nan, 3e9}) {
      CQVIS_GDI s;
      Aim(s, canvas, zoom, 16, 16);
      s.PrepareSolidPen(v, kWhite);
      s.PrepareSolidBrush(kGreen);
      s.SetFont(v, v, "Arial", 0, 0, v, 0);
      s.DrawLine(v, 0, 0, v);
      s.DrawCross(0, 0, v);
      s.DrawArrow(0, 0, v, v, v, v);
      s.DrawRectangularLine(0, 0, v, 1, v, v);
      s.DrawArc(0.0, 0, v, v, 0, 0, v);
      s.DrawArc(v, v, 1, 0, 0, 1);
      s.DrawCircle(0, 0, v);
      s.DrawGuideCircle(0, 0, v, v);
      s.DrawGuideLine(0, 0, v, v, v);
      s.DrawGuideArc(0, 0, v, 1, 0, 0, 1, v);
      s.DrawRectangle(-v, -v, v, v);
      s.DrawObroundRgn(0, 0, v, 1, v, 0, v, kGreen);
      s.DrawRectangleRgnWH(0, 0, v, v, 0.1, v, v, kGreen);
      s.DrawCircleRgn(v, 0, v, v, 0, kGreen);
      s.DrawTextXOrMode(v, v, "x", kWhite);
      s.GP_DrawLine(nullptr, 0, 0, v, v, v, kWhite, 128);
      s.GP_DrawArc(nullptr, 0, 0, v, 1, 0, 0, 1, v, kWhite, 128);
      s.GP_DrawObroundRgn(nullptr, 0, 0, v, 1, 0, 0, v, kWhite, 128);
      s.AddArcPath(0, 0, v, 1, 0, 0, 1, 2);
      // Every call returned, and the surface and its DC still work: at an ordinary zoom a
      // 1-pixel line of 10 mm draws exactly its 10 pixels (the last one left out), in white.
      canvas.Fill(0);
      Aim(s, canvas, 1.0, 16, 16);
      s.PrepareSolidPen(kWhite);
      s.DrawLine(-5.0, 0.0, 5.0, 0.0);
      ASSERT_EQ(canvas.Drawn(), 10) << "zoom " << zoom << ", value " << v;
      for (int x = 11; x < 21; ++x) ASSERT_EQ(canvas.At(x, 16), kWhite) << x;
    }
  }
}

}  // namespace
