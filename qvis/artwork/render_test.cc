// Pixels of every aperture, macro primitive, arc rule, polarity and layering rule, against
// shapes computed by hand. Views are 100 dpi with the lower-left corner at board (0, 0), so
// board (X, Y) inches is pixel (100 X, H - 100 Y) with y down.
#include "qvis/artwork/render.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <random>
#include <thread>

#include "qvis/artwork/artwork_test_util.h"
#include "qvis/artwork/board.h"

namespace qvis {
namespace {

using testing_util::BoxSd;
using testing_util::CircleSd;
using testing_util::Draw;
using testing_util::ExpectShape;
using testing_util::InchHeader;
using testing_util::Mask;
using testing_util::View;

constexpr double kPi = std::numbers::pi;

// Signed distance of a convex polygon given in pixel coordinates, either orientation: exact
// inside, a lower bound outside (pixels near corners are skipped, never misjudged).
double ConvexSd(double x, double y, const std::vector<std::pair<double, double>>& v) {
  double area = 0;
  for (std::size_t i = 0; i < v.size(); ++i) {
    const auto [ax, ay] = v[i];
    const auto [bx, by] = v[(i + 1) % v.size()];
    area += ax * by - bx * ay;
  }
  const double sign = area > 0 ? 1.0 : -1.0;
  double d = -1e9;
  for (std::size_t i = 0; i < v.size(); ++i) {
    const auto [ax, ay] = v[i];
    const auto [bx, by] = v[(i + 1) % v.size()];
    const double ex = bx - ax, ey = by - ay, l = std::hypot(ex, ey);
    d = std::max(d, -sign * (ex * (y - ay) - ey * (x - ax)) / l);
  }
  return d;
}

// Rotates pixel point (x, y) by -deg about (cx, cy) in board orientation (y up).
std::pair<double, double> Unrotate(double x, double y, double cx, double cy, double deg) {
  const double t = -deg * kPi / 180.0;
  const double dx = x - cx, dy = cy - y;  // board orientation
  const double rx = dx * std::cos(t) - dy * std::sin(t), ry = dx * std::sin(t) + dy * std::cos(t);
  return {cx + rx, cy - ry};
}

TEST(ArtworkRenderTest, StandardAperturesAtHandComputedPixels) {
  const Mask m = Draw(InchHeader("%ADD10C,0.104*%\n%ADD11R,0.2X0.1*%\n%ADD12O,0.2X0.1*%\n"
                                 "%ADD13P,0.2X4*%\n") +
                          "D10*\nX300000Y500000D03*\nD11*\nX700000Y500000D03*\n"
                          "D12*\nX500000Y200000D03*\nD13*\nX500000Y800000D03*\nM02*\n",
                      View(100, 100, 100));
  // The rectangle's edges fall on pixel boundaries: exactly columns 60..79, rows 45..54.
  EXPECT_TRUE(m.At(60, 45));
  EXPECT_TRUE(m.At(79, 54));
  EXPECT_FALSE(m.At(59, 50));
  EXPECT_FALSE(m.At(80, 50));
  EXPECT_FALSE(m.At(70, 44));
  EXPECT_FALSE(m.At(70, 55));
  const int checked = ExpectShape(m, [](double x, double y) {
    const double circle = CircleSd(x, y, 30, 50, 5.2);
    const double rect = BoxSd(x, y, 60, 45, 80, 55);
    // Obround 20 x 10 px: a capsule along x with radius 5.
    const double cx = std::clamp(x, 45.0, 55.0);
    const double obround = std::hypot(x - cx, y - 80) - 5;
    // Polygon of 4 vertices on a 10 px circle, first on +x: |dx| + |dy| <= 10.
    const double diamond = (std::fabs(x - 50) + std::fabs(y - 20) - 10) / std::sqrt(2.0);
    return std::min({circle, rect, obround, diamond});
  });
  EXPECT_GT(checked, 9000);
  EXPECT_EQ(m.Count() > 200 + 80 + 150 + 190, true);
}

TEST(ArtworkRenderTest, ApertureHoleIsPartOfTheImageOnly) {
  // A dark rectangle, then a circle with a hole over it: the hole shows the rectangle, and
  // outside the rectangle the hole is blank.
  const Mask m = Draw(InchHeader("%ADD10C,0.2X0.1*%\n%ADD11R,0.1X0.4*%\n") +
                          "D11*\nX300000Y500000D03*\nD10*\nX500000Y500000D03*\nM02*\n",
                      View(100, 100, 100));
  ExpectShape(m, [](double x, double y) {
    const double ring = std::max(CircleSd(x, y, 50, 50, 10), -CircleSd(x, y, 50, 50, 5));
    return std::min(ring, BoxSd(x, y, 25, 30, 35, 70));
  });
  EXPECT_FALSE(m.At(50, 50));
}

struct MacroCase {
  const char* name;
  const char* body;  // primitives of the macro, flashed at (0.5, 0.5)
  std::function<double(double, double)> sd;
};

TEST(ArtworkRenderTest, EveryMacroPrimitive) {
  const std::vector<MacroCase> cases = {
      {"circle", "1,1,0.2,0.1,0.05*", [](double x, double y) { return CircleSd(x, y, 60, 45, 10); }},
      {"circle rotated", "1,1,0.2,0.1,0.05,90*",
       [](double x, double y) { return CircleSd(x, y, 45, 40, 10); }},
      {"vector line", "20,1,0.1,-0.2,0,0.2,0,0*",
       [](double x, double y) { return BoxSd(x, y, 30, 45, 70, 55); }},
      {"vector line rotated", "20,1,0.1,-0.2,0,0.2,0,90*",
       [](double x, double y) { return BoxSd(x, y, 45, 30, 55, 70); }},
      {"centre line", "21,1,0.3,0.1,0.05,0,0*",
       [](double x, double y) { return BoxSd(x, y, 40, 45, 70, 55); }},
      {"centre line rotated", "21,1,0.3,0.1,0,0,30*",
       [](double x, double y) {
         const auto [u, v] = Unrotate(x, y, 50, 50, 30);
         return BoxSd(u, v, 35, 45, 65, 55);
       }},
      {"outline", "4,1,3,-0.2,-0.2,0.2,-0.2,0,0.2,-0.2,-0.2,0*",
       [](double x, double y) { return ConvexSd(x, y, {{30, 70}, {70, 70}, {50, 30}}); }},
      {"polygon", "5,1,6,0,0,0.4,0*",
       [](double x, double y) {
         std::vector<std::pair<double, double>> v;
         for (int k = 0; k < 6; ++k) {
           v.push_back({50 + 20 * std::cos(k * kPi / 3), 50 - 20 * std::sin(k * kPi / 3)});
         }
         return ConvexSd(x, y, v);
       }},
      {"thermal", "7,0,0,0.4,0.3,0.06,0*",
       [](double x, double y) {
         const double dx = std::fabs(x - 50), dy = std::fabs(y - 50), r = std::hypot(dx, dy);
         return std::max({r - 20, 15 - r, 3 - dx, 3 - dy});
       }},
      {"thermal rotated", "7,0,0,0.4,0.3,0.06,45*",
       [](double x, double y) {
         const auto [u, v] = Unrotate(x, y, 50, 50, 45);
         const double dx = std::fabs(u - 50), dy = std::fabs(v - 50), r = std::hypot(dx, dy);
         return std::max({r - 20, 15 - r, 3 - dx, 3 - dy});
       }},
      {"moire", "6,0,0,0.5,0.05,0.05,2,0.02,0.6,0*",
       [](double x, double y) {
         const double r = std::hypot(x - 50, y - 50);
         const double ring1 = std::max(r - 25, 20 - r), ring2 = std::max(r - 15, 10 - r);
         const double h = BoxSd(x, y, 20, 49, 80, 51), v = BoxSd(x, y, 49, 20, 51, 80);
         return std::min({ring1, ring2, h, v});
       }},
      {"exposure off cuts only the aperture", "1,1,0.4,0,0*1,0,0.2,0,0*",
       [](double x, double y) {
         return std::max(CircleSd(x, y, 50, 50, 20), -CircleSd(x, y, 50, 50, 10));
       }},
      {"variables and expressions", "$3=$1x2*$4=($2-0.05)/2*21,1,$3,$4+0.1,0,-$4,0*",
       [](double x, double y) { return BoxSd(x, y, 40, 46.25, 60, 58.75); }},
  };
  for (const MacroCase& c : cases) {
    SCOPED_TRACE(c.name);
    const Mask m = Draw(InchHeader(std::string("%AMM*") + c.body + "%\n%ADD20M,0.1X0.1*%\n") +
                            "D20*\nX500000Y500000D03*\nM02*\n",
                        View(100, 100, 100));
    EXPECT_GT(ExpectShape(m, c.sd), 9000);
    EXPECT_GT(m.Count(), 50);
  }
}

TEST(ArtworkRenderTest, MacroClearPartsDoNotEraseEarlierObjects) {
  const Mask m = Draw(InchHeader("%AMRING*1,1,0.4,0,0*1,0,0.2,0,0*%\n%ADD20RING*%\n"
                                 "%ADD10R,0.06X0.06*%\n") +
                          "D10*\nX500000Y500000D03*\nD20*\nX500000Y500000D03*\nM02*\n",
                      View(100, 100, 100));
  EXPECT_TRUE(m.At(50, 50));   // the earlier square shows through the ring's clear centre
  EXPECT_FALSE(m.At(50, 42));  // the rest of the centre is blank
  EXPECT_TRUE(m.At(50, 35));   // the ring
}

TEST(ArtworkRenderTest, ClearPolarityErasesEarlierObjectsOfTheLayerOnly) {
  ArtDocument doc;
  doc.layers.push_back(testing_util::ReadOk(
      InchHeader("%ADD10R,0.6X0.6*%\n%ADD11C,0.2*%\n") +
      "D10*\nX500000Y500000D03*\n%LPC*%\nD11*\nX500000Y500000D03*\n%LPD*%\nM02*\n"));
  doc.layers[0].colour = 0xFF0000;
  doc.layers.push_back(testing_util::ReadOk(
      InchHeader("%ADD10R,0.1X0.1*%\n") +
      "%LPC*%\nD10*\nX300000Y500000D03*\n%LPD*%\nX500000Y500000D03*\nX700000Y500000D03*\n"
      "M02*\n"));
  doc.layers[1].colour = 0x0000FF;
  doc.layers[1].order = 1;
  const gdi::PixelImage img = RenderArtwork(doc, View(100, 100, 100));
  EXPECT_EQ(img.At(50, 50), 0x0000FFu);  // layer 2 drawn over the hole of layer 1
  EXPECT_EQ(img.At(50, 58), 0xFFFFFFu);  // the hole: background
  EXPECT_EQ(img.At(50, 65), 0xFF0000u);  // layer 1 around the hole
  EXPECT_EQ(img.At(30, 50), 0xFF0000u);  // layer 2's clear flash leaves layer 1 alone
  EXPECT_EQ(img.At(10, 50), 0xFFFFFFu);  // outside everything
  // Drawn in the other order, layer 1's colour covers layer 2 where both are dark.
  doc.layers[1].order = -1;
  EXPECT_EQ(img.At(70, 50), 0x0000FFu);
  const gdi::PixelImage under = RenderArtwork(doc, View(100, 100, 100));
  EXPECT_EQ(under.At(70, 50), 0xFF0000u);
  EXPECT_EQ(under.At(50, 50), 0x0000FFu);  // still seen through the hole
}

TEST(ArtworkRenderTest, StepAndRepeatCopiesEveryObject) {
  const Mask one = Draw(InchHeader("%ADD10R,0.1X0.1*%\n") + "D10*\nX100000Y100000D03*\nM02*\n",
                        View(100, 100, 100));
  const Mask m = Draw(InchHeader("%ADD10R,0.1X0.1*%\n") +
                          "%SRX3Y2I0.3J0.4*%\nD10*\nX100000Y100000D03*\n%SR*%\nM02*\n",
                      View(100, 100, 100));
  EXPECT_EQ(one.Count(), 100);
  EXPECT_EQ(m.Count(), 600);
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 2; ++j) {
      EXPECT_TRUE(m.At(10 + 30 * i, 90 - 40 * j)) << i << "," << j;
    }
  }
  EXPECT_FALSE(m.At(25, 90));
}

double ArcSd(double x, double y, double cx, double cy, double r, double a0, double a1,
             double w) {
  // Arc of radius r from angle a0 to a1 (degrees, counter-clockwise, board orientation) drawn
  // with a round aperture of radius w, in pixels with y down.
  double ang = std::atan2(cy - y, x - cx) * 180 / kPi;
  while (ang < a0) ang += 360;
  if (ang <= a1) return std::fabs(std::hypot(x - cx, y - cy) - r) - w;
  auto cap = [&](double a) {
    return std::hypot(x - (cx + r * std::cos(a * kPi / 180)), y - (cy - r * std::sin(a * kPi / 180))) - w;
  };
  return std::min(cap(a0), cap(a1));
}

TEST(ArtworkRenderTest, ArcsInBothQuadrantModes) {
  const std::string head = InchHeader("%ADD10C,0.04*%\n");
  // Multi quadrant: centre at start + (I, J).
  const Mask multi = Draw(head + "D10*\nX700000Y500000D02*\nG03X500000Y700000I-200000J0D01*\nM02*\n",
                          View(100, 100, 100));
  ExpectShape(multi, [](double x, double y) { return ArcSd(x, y, 50, 50, 20, 0, 90, 2); });
  // Single quadrant: unsigned offsets, the centre chosen so the arc stays within 90 degrees.
  const Mask single =
      Draw(InchHeader("%ADD10C,0.04*%\n").replace(0, 0, "") +
               "G74*\nD10*\nX700000Y500000D02*\nG03X500000Y700000I200000J0D01*\nM02*\n",
           View(100, 100, 100));
  EXPECT_EQ(single.bits, multi.bits);
  // Clockwise three quarters the long way round.
  const Mask cw = Draw(head + "D10*\nX700000Y500000D02*\nG02X500000Y700000I-200000J0D01*\nM02*\n",
                       View(100, 100, 100));
  ExpectShape(cw, [](double x, double y) { return ArcSd(x, y, 50, 50, 20, 90, 360, 2); });
  // Start == end: a full circle in G75, no sweep at all in G74.
  const Mask full = Draw(head + "D10*\nX700000Y500000D02*\nG03X700000Y500000I-200000J0D01*\nM02*\n",
                         View(100, 100, 100));
  ExpectShape(full, [](double x, double y) { return std::fabs(std::hypot(x - 50, y - 50) - 20) - 2; });
  const Mask dot = Draw(InchHeader("%ADD10C,0.04*%\n") +
                            "G74*\nD10*\nX700000Y500000D02*\nG03X700000Y500000I200000J0D01*\nM02*\n",
                        View(100, 100, 100));
  ExpectShape(dot, [](double x, double y) { return CircleSd(x, y, 70, 50, 2); });
}

TEST(ArtworkRenderTest, LinesThinnerThanAPixelAreOnePixelWide) {
  const Mask m = Draw(InchHeader("%ADD10C,0.001*%\n") +
                          "D10*\nX100000Y503000D02*\nG01X900000Y503000D01*\n"
                          "X100000Y100000D02*\nX900000Y400000D01*\nM02*\n",
                      View(100, 100, 100));
  for (int i = 12; i < 88; ++i) {
    int horizontal = 0, slanted = 0;
    for (int j = 0; j < 100; ++j) {
      if (m.At(i, j)) (j < 52 ? horizontal : slanted) += 1;
    }
    EXPECT_EQ(horizontal, 1) << "column " << i;
    EXPECT_GE(slanted, 1) << "column " << i;
    EXPECT_LE(slanted, 2) << "column " << i;
  }
}

TEST(ArtworkRenderTest, RectangleTracksAndRegionsWithArcs) {
  const Mask m = Draw(InchHeader("%ADD10R,0.1X0.04*%\n") +
                          "D10*\nX100000Y800000D02*\nG01X500000Y800000D01*\n"
                          // A region: a half disc of radius 0.2 about (0.5, 0.3), flat side down,
                          // with a square hole cut in by a zero-width bridge.
                          "G36*\nX300000Y300000D02*\nX450000Y300000D01*\nX450000Y350000D01*\n"
                          "X450000Y450000D01*\nX550000Y450000D01*\nX550000Y350000D01*\n"
                          "X450000Y350000D01*\nX450000Y300000D01*\nX700000Y300000D01*\n"
                          "G03X300000Y300000I-200000J0D01*\n"
                          "G37*\nM02*\n",
                      View(100, 100, 100));
  ExpectShape(m, [](double x, double y) {
    const double track = BoxSd(x, y, 5, 18, 55, 22);
    const double disc = std::max(CircleSd(x, y, 50, 70, 20), y - 70);
    const double region = std::max(disc, -BoxSd(x, y, 45, 55, 55, 65));
    return std::min(track, region);
  });
}

TEST(ArtworkRenderTest, ApertureTransforms) {
  const std::string head = InchHeader("%ADD10R,0.2X0.1*%\n");
  const Mask rotated =
      Draw(head + "%LR90*%\nD10*\nX500000Y500000D03*\nM02*\n", View(100, 100, 100));
  ExpectShape(rotated, [](double x, double y) { return BoxSd(x, y, 45, 40, 55, 60); });
  const Mask scaled =
      Draw(head + "%LS1.5*%\nD10*\nX500000Y500000D03*\nM02*\n", View(100, 100, 100));
  ExpectShape(scaled, [](double x, double y) { return BoxSd(x, y, 35, 42.5, 65, 57.5); });
  // A macro with its shape off centre shows the mirror.
  const Mask mirrored = Draw(InchHeader("%AMOFF*1,1,0.1,0.2,0.1*%\n%ADD11OFF*%\n") +
                                 "%LMX*%\nD11*\nX500000Y500000D03*\nM02*\n",
                             View(100, 100, 100));
  ExpectShape(mirrored, [](double x, double y) { return CircleSd(x, y, 30, 40, 5); });
}

TEST(ArtworkRenderTest, BlockFlashesInvertWithClearPolarity) {
  const std::string text = InchHeader("%ADD10R,0.4X0.4*%\n%ADD11C,0.1*%\n"
                                      "%ABD20*%\nD11*\nX0Y0D03*\n%LPC*%\nX100000Y0D03*\n%LPD*%\n%AB*%\n") +
                           "D10*\nX500000Y500000D03*\n%LPC*%\nD20*\nX400000Y500000D03*\n"
                           "%LPD*%\nX300000Y200000D03*\nM02*\n";
  const Mask m = Draw(text, View(100, 100, 100));
  // Clear flash of the block: its dark disc clears, its clear disc draws dark.
  EXPECT_FALSE(m.At(40, 50));
  EXPECT_TRUE(m.At(50, 50));
  EXPECT_TRUE(m.At(60, 50));
  // Dark flash elsewhere: a disc at (0.3, 0.2), and the second disc clears nothing there.
  EXPECT_TRUE(m.At(30, 80));
  EXPECT_FALSE(m.At(40, 80));
}

TEST(ArtworkRenderTest, FrameMapsOriginAndDpiExactly) {
  // A 0.1 inch square at (1.05, 2.05) with origin (1, 2) at 200 dpi: pixels 0..19 by
  // rows H-20..H-1.
  const Mask m = Draw(InchHeader("%ADD10R,0.1X0.1*%\n") + "D10*\nX1050000Y2050000D03*\nM02*\n",
                      View(200, 40, 30, 1.0, 2.0));
  EXPECT_EQ(m.Count(), 400);
  EXPECT_TRUE(m.At(0, 29));
  EXPECT_TRUE(m.At(19, 10));
  EXPECT_FALSE(m.At(20, 20));
  EXPECT_FALSE(m.At(5, 9));
  // Negative origin moves the picture right and up.
  const Mask n = Draw(InchHeader("%ADD10R,0.1X0.1*%\n") + "D10*\nX50000Y50000D03*\nM02*\n",
                      View(100, 30, 30, -0.1, -0.1));
  EXPECT_TRUE(n.At(10, 19));
  EXPECT_FALSE(n.At(9, 19));
  EXPECT_FALSE(n.At(10, 20));
  EXPECT_EQ(n.Count(), 100);
}

TEST(ArtworkRenderTest, RefusesViewsBeyondTheLimit) {
  ArtDocument doc;
  ArtView v = View(100, kMaxRenderSide + 1, 10);
  EXPECT_TRUE(RenderArtwork(doc, v).pixels.empty());
  v.width = 0;
  EXPECT_TRUE(RenderArtwork(doc, v).pixels.empty());
}

// The shortcuts ComposeBoard takes for common shapes (round-ended tracks, round and rectangular
// flashes, outlines too small to reach a sample point, axis-parallel rectangles) must ink
// exactly the pixels the general outline and scan conversion ink. Random boards of small and
// large objects, many of them on coordinates that land exactly on sample rows and columns, at
// random zooms and offsets, both ways, pixel for pixel.
TEST(ArtworkRenderTest, FastPathsMatchTheGeneralPath) {
  std::mt19937_64 rng(12);
  auto uni = [&](double a, double b) { return std::uniform_real_distribution<double>(a, b)(rng); };
  auto pick = [&](int n) { return static_cast<int>(rng() % static_cast<std::uint64_t>(n)); };
  constexpr Coord kStep = 25000;  // a quarter pixel at 254 dpi, two and a half at 2540
  for (int round = 0; round < 24; ++round) {
    ArtDocument d;
    d.layers.resize(2);
    d.layers[0].colour = 0xFF0000;
    d.layers[1].colour = 0x00FF00;
    d.layers[1].order = 1;
    for (Layer& l : d.layers) {
      for (int code = 10; code < 22; ++code) {
        Aperture a;
        a.kind = code % 3 == 0 ? ApertureKind::kRectangle
                 : code % 3 == 1 ? ApertureKind::kCircle
                                 : ApertureKind::kObround;
        a.size_x = code == 10 ? 0 : pick(8) * kStep + pick(3) * 1000 + (code % 2) * 7;
        a.size_y = pick(8) * kStep + pick(2) * 333;
        if (code == 21) a.hole = a.size_x / 3;
        l.apertures[code] = a;
      }
    }
    const int n = 300 + pick(300);
    for (int k = 0; k < n; ++k) {
      ArtObject o;
      const int what = pick(10);
      auto point = [&]() {
        const bool on_grid = pick(2) == 0;
        return ArtPoint{on_grid ? pick(160) * kStep : static_cast<Coord>(uni(0, 4e6)),
                        on_grid ? pick(120) * kStep : static_cast<Coord>(uni(0, 3e6))};
      };
      o.aperture = 10 + pick(12);
      o.polarity = pick(6) == 0 ? Polarity::kClear : Polarity::kDark;
      if (pick(5) == 0) {
        o.transform.rotation = pick(2) == 0 ? 90.0 * pick(4) : uni(0, 360);
        o.transform.mirror_x = pick(2) == 0;
        o.transform.scale = pick(2) == 0 ? 1.0 : uni(0.5, 2.0);
      }
      if (what < 5) {
        o.kind = ObjectKind::kTrack;
        o.start = point();
        o.end = pick(8) == 0 ? o.start
                             : ArtPoint{o.start.x + static_cast<Coord>(uni(-4e5, 4e5)),
                                        o.start.y + static_cast<Coord>(uni(-4e5, 4e5))};
        if (pick(3) == 0) o.end = {o.start.x + pick(8) * kStep, o.start.y};
      } else if (what < 9) {
        o.kind = ObjectKind::kFlash;
        o.end = point();
      } else {
        o.kind = ObjectKind::kRegion;
        o.contour.start = point();
        for (int s = 0; s < 3; ++s) {
          ContourSegment seg;
          seg.end = point();
          o.contour.segments.push_back(seg);
        }
      }
      d.layers[static_cast<std::size_t>(pick(2))].objects.push_back(std::move(o));
    }
    ArtBoard board(std::move(d));
    for (int v = 0; v < 4; ++v) {
      ArtView view;
      view.width = 100 + pick(200);
      view.height = 80 + pick(150);
      // Views 0 and 1 put the grid's coordinates on or halfway between sample points.
      view.dpi = v == 0 ? 2540.0 : v == 1 ? 254.0 : uni(20.0, 1200.0);
      view.origin_x = v < 2 ? pick(8) * kStep : static_cast<Coord>(uni(-1e6, 2e6));
      view.origin_y = v < 2 ? pick(8) * kStep : static_cast<Coord>(uni(-1e6, 2e6));
      view.min_line_pixels = pick(2) == 0 ? 1.0 : uni(0.0, 3.0);
      view.background = 0;
      ComposeOptions fast, general;
      general.fast_paths = false;
      const gdi::PixelImage a = RenderBoard(board, view, fast);
      const gdi::PixelImage b = RenderBoard(board, view, general);
      ASSERT_EQ(a.pixels.size(), b.pixels.size());
      std::size_t differ = 0, first = 0, inked = 0;
      for (std::size_t i = 0; i < a.pixels.size(); ++i) {
        if (b.pixels[i] != 0) ++inked;
        if (a.pixels[i] != b.pixels[i] && differ++ == 0) first = i;
      }
      EXPECT_EQ(differ, 0u) << "round " << round << " view " << v << ": first at ("
                            << first % static_cast<std::size_t>(view.width) << ", "
                            << first / static_cast<std::size_t>(view.width) << ")";
      if (v == 0) {
        EXPECT_GT(inked, a.pixels.size() / 50) << "round " << round;
      }
    }
  }
}


// Renders `board` both ways (shortcuts on and off) and reports the pixels that differ.
std::size_t DifferingPixels(const ArtBoard& board, const ArtView& view, std::size_t* inked) {
  ComposeOptions fast, general;
  general.fast_paths = false;
  const gdi::PixelImage a = RenderBoard(board, view, fast);
  const gdi::PixelImage b = RenderBoard(board, view, general);
  if (a.pixels.size() != b.pixels.size()) return static_cast<std::size_t>(-1);
  std::size_t differ = 0;
  *inked = 0;
  for (std::size_t i = 0; i < a.pixels.size(); ++i) {
    if (b.pixels[i] != view.background) ++*inked;
    if (a.pixels[i] != b.pixels[i]) ++differ;
  }
  return differ;
}

// Small convex rings are filled without the scan converter; rings that only look convex must
// still go to it. Regions are built from regular polygons of every size (a fraction of a pixel
// to taller than the shortcut takes), both orientations, with repeated points, points in the
// middle of a side, a vertex pushed in (a dent), a spike out and back, stars (wound twice),
// and sides through sample rows and columns; some clear, over one another. Both ways, pixel
// for pixel.
TEST(ArtworkRenderTest, ConvexRingShortcutMatchesTheScanConverter) {
  std::mt19937_64 rng(77);
  auto uni = [&](double a, double b) { return std::uniform_real_distribution<double>(a, b)(rng); };
  auto pick = [&](int n) { return static_cast<int>(rng() % static_cast<std::uint64_t>(n)); };
  constexpr double kPx = 10000.0;  // board nanometres per pixel at 2540 dpi
  for (int round = 0; round < 16; ++round) {
    ArtDocument d;
    d.layers.resize(1);
    d.layers[0].colour = 0xFF0000;
    const int count = 60 + pick(60);
    for (int k = 0; k < count; ++k) {
      const int sides = 3 + pick(pick(2) == 0 ? 6 : 40);
      const double radius = kPx * (pick(3) == 0 ? uni(0.1, 2.0) : pick(8) == 0 ? uni(120, 220)
                                                                            : uni(2.0, 30.0));
      // Centres on whole or half pixels put vertices and sides on sample lines.
      const double cx = pick(2) == 0 ? kPx * (pick(400) / 2.0) : uni(-20 * kPx, 220 * kPx);
      const double cy = pick(2) == 0 ? kPx * (pick(300) / 2.0) : uni(-20 * kPx, 170 * kPx);
      const double turn = pick(3) == 0 ? 0.0 : uni(0, 2 * kPi);
      const bool clockwise = pick(2) == 0;
      std::vector<ArtPoint> ring;
      for (int i = 0; i < sides; ++i) {
        const double t = turn + (clockwise ? -1 : 1) * 2 * kPi * i / sides;
        ring.push_back({static_cast<Coord>(std::llround(cx + radius * std::cos(t))),
                        static_cast<Coord>(std::llround(cy + radius * std::sin(t)))});
      }
      switch (pick(7)) {
        case 0:  // every point twice
          for (std::size_t i = ring.size(); i-- > 0;) ring.insert(ring.begin() + i, ring[i]);
          break;
        case 1:  // a point in the middle of each side
          for (std::size_t i = ring.size(); i-- > 0;) {
            const ArtPoint a = ring[i], b = ring[(i + 1) % ring.size()];
            ring.insert(ring.begin() + i + 1, {(a.x + b.x) / 2, (a.y + b.y) / 2});
          }
          break;
        case 2:  // a dent: one vertex pulled towards the centre
          ring[0] = {static_cast<Coord>((ring[0].x + cx) / 2), static_cast<Coord>((ring[0].y + cy) / 2)};
          break;
        case 3:  // a spike out from the centre and back
          ring.insert(ring.begin() + 1,
                      {static_cast<Coord>(cx + 1.5 * (static_cast<double>(ring[0].x) - cx)),
                       static_cast<Coord>(cy + 1.5 * (static_cast<double>(ring[0].y) - cy))});
          ring.insert(ring.begin() + 2, ring[0]);
          break;
        case 4:  // a star (every second vertex of an odd polygon): each turn the same way,
                 // the outline wound twice, notches between its points
          if (sides % 2 == 1 && sides >= 5) {
            std::vector<ArtPoint> star;
            for (int i = 0; i < sides; ++i) star.push_back(ring[static_cast<std::size_t>(2 * i % sides)]);
            ring = star;
          }
          break;
        default:
          break;
      }
      ArtObject o;
      o.kind = ObjectKind::kRegion;
      o.polarity = pick(5) == 0 ? Polarity::kClear : Polarity::kDark;
      o.contour.start = ring[0];
      for (std::size_t i = 1; i <= ring.size(); ++i) {
        ContourSegment seg;
        seg.end = ring[i % ring.size()];
        o.contour.segments.push_back(seg);
      }
      d.layers[0].objects.push_back(std::move(o));
    }
    ArtBoard board(std::move(d));
    for (int v = 0; v < 3; ++v) {
      ArtView view;
      view.width = 200 + pick(60);
      view.height = 150 + pick(40);
      view.dpi = v == 0 ? 2540.0 : uni(800.0, 5000.0);
      view.origin_x = v == 0 ? 0 : static_cast<Coord>(uni(-2e5, 2e5));
      view.origin_y = v == 0 ? 0 : static_cast<Coord>(uni(-2e5, 2e5));
      view.background = 0;
      std::size_t inked = 0;
      EXPECT_EQ(DifferingPixels(board, view, &inked), 0u) << "round " << round << " view " << v;
      if (v == 0) {
        EXPECT_GT(inked, static_cast<std::size_t>(view.width) * view.height / 20)
            << "round " << round;
      }
    }
  }
}

// ComposeBoard keeps its layer mask between frames and clears only what each layer wrote: a
// frame drawn after other frames (a denser board, another size, a selection, part opacity)
// must equal the same frame drawn by a thread that never drew before.
TEST(ArtworkRenderTest, FramesDoNotInheritEarlierFrames) {
  auto board_of = [](int n, Coord pitch, Coord size, std::uint32_t colour) {
    ArtDocument d;
    d.layers.resize(2);
    for (std::size_t li = 0; li < 2; ++li) {
      Layer& l = d.layers[li];
      l.colour = colour >> (8 * li);
      l.order = static_cast<int>(li);
      Aperture a;
      a.kind = li == 0 ? ApertureKind::kCircle : ApertureKind::kRectangle;
      a.size_x = size;
      a.size_y = size / 2;
      l.apertures[10] = a;
      for (int k = 0; k < n; ++k) {
        ArtObject o;
        o.kind = li == 0 ? ObjectKind::kTrack : ObjectKind::kFlash;
        o.aperture = 10;
        o.start = {(k % 40) * pitch, (k / 40) * pitch};
        o.end = {o.start.x + pitch / 2, o.start.y + (li == 0 ? pitch / 3 : 0)};
        o.polarity = k % 7 == 3 ? Polarity::kClear : Polarity::kDark;
        l.objects.push_back(o);
      }
    }
    return d;
  };
  ArtBoard dense(board_of(1600, 30000, 40000, 0x00FF00FF));
  ArtBoard sparse(board_of(400, 70000, 25000, 0x0000FFFF));
  sparse.Select({ObjectRef{0, 5}, ObjectRef{1, 7}});
  ArtView view = View(2540, 300, 200);
  view.background = 0x101010;
  ComposeOptions part;
  part.layer_opacity = {200, 90};

  gdi::PixelImage fresh;
  std::thread([&] { fresh = RenderBoard(sparse, view, part); }).join();
  ArtView other = view;
  other.width = 420;
  other.height = 260;
  RenderBoard(dense, other);
  RenderBoard(dense, view);
  const gdi::PixelImage after = RenderBoard(sparse, view, part);
  ASSERT_EQ(after.pixels.size(), fresh.pixels.size());
  std::size_t differ = 0, inked = 0;
  for (std::size_t i = 0; i < after.pixels.size(); ++i) {
    if (fresh.pixels[i] != view.background) ++inked;
    if (after.pixels[i] != fresh.pixels[i]) ++differ;
  }
  EXPECT_EQ(differ, 0u);
  EXPECT_GT(inked, 2000u);
}

}  // namespace
}  // namespace qvis
