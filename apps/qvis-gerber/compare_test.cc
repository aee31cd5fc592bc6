// Compares our renderer with the reference viewer gerbv on boards generated here. gerbv rounds
// flash centres and line ends to pixel corners and widths to whole pixels, so coverage is
// compared with a one-pixel tolerance: a pixel inked in one picture and not the other must lie
// within one pixel of ink in the other, and the number of such pixels stays within a budget
// proportional to the length of the edges. Skipped (with the reason) when gerbv is absent.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <string>

#include "apps/qvis-gerber/cli.h"
#include "qvis/artwork/io/gerber_reader.h"
#include "qvis/artwork/render.h"
#include "qvis/gdi/png_io.h"

namespace qvis {
namespace {

bool HaveGerbv() { return std::system("command -v gerbv >/dev/null 2>&1") == 0; }

std::string OutDir() {
  const std::string dir = QVIS_GERBER_TEST_OUT;
  std::filesystem::create_directories(dir);
  return dir;
}

std::string Num(double inches) { return std::to_string(std::llround(inches * 1e6)); }

// A board in inches (2.6) mixing every kind of object. `seed` varies the placement.
std::string MakeBoard(unsigned seed) {
  std::mt19937 rng(seed);
  std::uniform_real_distribution<double> pos(0.15, 1.85);
  std::string g =
      "%FSLAX26Y26*%\n%MOIN*%\n"
      "%AMTHERMAL*7,0,0,0.12,0.08,0.02,0*%\n"
      "%AMPADS*1,1,0.05,-0.04,0*21,1,0.08,0.03,0.04,0,30*4,1,3,0,0,0.06,0,0.03,0.05,0,0,0*%\n"
      "%ADD10C,0.012*%\n%ADD11C,0.04*%\n%ADD12R,0.06X0.04*%\n%ADD13O,0.08X0.04*%\n"
      "%ADD14P,0.07X6X10*%\n%ADD15THERMAL*%\n%ADD16PADS*%\n%ADD17C,0.003*%\n"
      "%ADD18C,0.08X0.03*%\nG75*\n";
  // A ground pour with an arc edge, and clear areas cut out of it.
  g += "G36*\nX100000Y100000D02*\nG01X1000000Y100000D01*\nX1000000Y700000D01*\n"
       "G03X700000Y1000000I-300000J0D01*\nG01X100000Y1000000D01*\nX100000Y100000D01*\nG37*\n";
  g += "%LPC*%\nD11*\nX500000Y500000D03*\nD12*\nX300000Y300000D03*\n"
       "D10*\nX200000Y800000D02*\nG01X900000Y800000D01*\n%LPD*%\n";
  const int codes[] = {11, 12, 13, 14, 15, 16, 18};
  for (int i = 0; i < 24; ++i) {
    g += "D" + std::to_string(codes[i % 7]) + "*\nX" + Num(pos(rng)) + "Y" + Num(pos(rng)) +
         "D03*\n";
  }
  for (int i = 0; i < 12; ++i) {
    g += (i % 3 == 0 ? "D17*\n" : i % 3 == 1 ? "D10*\n" : "D11*\n");
    g += "X" + Num(pos(rng)) + "Y" + Num(pos(rng)) + "D02*\nG01X" + Num(pos(rng)) + "Y" +
         Num(pos(rng)) + "D01*\n";
  }
  g += "D10*\nX1500000Y1500000D02*\nG02X1500000Y1500000I-200000J0D01*\n"
       "X1200000Y400000D02*\nG03X1700000Y400000I250000J0D01*\n";
  g += "%SRX3Y2I0.15J0.2*%\nD12*\nX1300000Y1100000D03*\n%SR*%\n";
  g += "M02*\n";
  return g;
}

struct Comparison {
  int differing = 0;
  int beyond_tolerance = 0;
  int edge_pixels = 0;
  int inked = 0;
};

Comparison Compare(const std::vector<std::uint8_t>& ours, const gdi::PixelImage& ref, int w,
                   int h) {
  std::vector<std::uint8_t> theirs(static_cast<std::size_t>(w) * h);
  for (int y = 0; y < h; ++y) {
    for (int x = 0; x < w; ++x) {
      const std::uint32_t p = ref.At(x, y);
      const int lum = ((p >> 16) & 0xFF) + ((p >> 8) & 0xFF) + (p & 0xFF);
      theirs[static_cast<std::size_t>(y) * w + x] = lum < 3 * 128;
    }
  }
  auto at = [&](const std::vector<std::uint8_t>& m, int x, int y) {
    return x >= 0 && y >= 0 && x < w && y < h && m[static_cast<std::size_t>(y) * w + x];
  };
  // Whether `value` is within one pixel of (x, y); outside the frame either picture may hold
  // anything, so a neighbour there counts as near.
  auto near = [&](const std::vector<std::uint8_t>& m, int x, int y, bool value) {
    for (int dy = -1; dy <= 1; ++dy) {
      for (int dx = -1; dx <= 1; ++dx) {
        const int nx = x + dx, ny = y + dy;
        if (nx < 0 || ny < 0 || nx >= w || ny >= h) return true;
        if (at(m, nx, ny) == value) return true;
      }
    }
    return false;
  };
  Comparison c;
  for (int y = 0; y < h; ++y) {
    for (int x = 0; x < w; ++x) {
      const bool a = at(ours, x, y), b = at(theirs, x, y);
      c.inked += a;
      if (near(ours, x, y, !a)) ++c.edge_pixels;
      if (a == b) continue;
      ++c.differing;
      // Our ink must be within a pixel of theirs, and their ink within a pixel of ours.
      if (!near(a ? theirs : ours, x, y, true)) {
        if (++c.beyond_tolerance <= 5) {
          ADD_FAILURE() << "pixel (" << x << ", " << y << ") " << (a ? "inked only by us" : "inked only by gerbv")
                        << ", more than a pixel from ink in the other picture";
        }
      }
    }
  }
  return c;
}

// The part of the picture compared: `dpi` pixels per inch, the bottom-left corner at (x, y)
// inches, w by h pixels.
struct Frame {
  double dpi;
  double x, y;
  int w, h;
};

// Draws the file at `path` with gerbv and `layer` (read from the same file) with our renderer,
// both framed by `f`, and checks that our coverage matches within one pixel and that at least
// `min_inked` pixels are inked. Both pictures are left beside the file, named after it and the
// resolution (<file>_<dpi>_gerbv.png, <file>_<dpi>_ours.png), for a look when they differ.
void CompareWithGerbv(const std::string& path, const Layer& layer, const Frame& f, int min_inked) {
  const std::string stem = std::filesystem::path(path).replace_extension().string() + "_" +
                           std::to_string(static_cast<int>(f.dpi));
  const std::string png = stem + "_gerbv.png";
  char cmd[2048];
  std::snprintf(cmd, sizeof cmd,
                "gerbv -x png -B 0 -D %g -O %gx%g -w %dx%d -b '#FFFFFF' -f '#000000FF' "
                "-o '%s' '%s' >/dev/null 2>&1",
                f.dpi, f.x, f.y, f.w, f.h, png.c_str(), path.c_str());
  ASSERT_EQ(std::system(cmd), 0) << cmd;
  gdi::PixelImage ref;
  ASSERT_TRUE(gdi::ReadPngImage(png, &ref));
  ASSERT_EQ(ref.width, f.w);
  ASSERT_EQ(ref.height, f.h);
  ArtView view;
  view.dpi = f.dpi;
  view.origin_x = static_cast<Coord>(std::llround(f.x * kNmPerInch));
  view.origin_y = static_cast<Coord>(std::llround(f.y * kNmPerInch));
  view.width = f.w;
  view.height = f.h;
  ArtDocument doc;
  doc.layers.push_back(layer);
  gdi::WritePngImage(RenderArtwork(doc, view), stem + "_ours.png");
  const Comparison c = Compare(RenderLayerMask(layer, view), ref, f.w, f.h);
  EXPECT_GE(c.inked, min_inked);  // the drawing is there
  EXPECT_EQ(c.beyond_tolerance, 0);
  // Rounding moves an edge by at most a pixel: at most every edge pixel differs.
  EXPECT_LE(c.differing, c.edge_pixels) << c.differing << " differ, " << c.edge_pixels
                                         << " edge pixels";
}

TEST(GerberCompareTest, CoverageMatchesTheReferenceViewerWithinOnePixel) {
  if (!HaveGerbv()) GTEST_SKIP() << "gerbv is not installed (scripts/setup.sh installs it)";
  const Frame frames[] = {{200, 0, 0, 420, 420}, {300, 0.05, 0.05, 600, 600},
                          {150, -0.2, 0.3, 320, 260}, {600, 0.4, 0.4, 500, 400}};
  const std::string dir = OutDir();
  for (unsigned seed = 1; seed <= 3; ++seed) {
    const std::string board = MakeBoard(seed);
    const std::string path = dir + "/board" + std::to_string(seed) + ".gbr";
    std::ofstream(path) << board;
    Layer layer;
    ASSERT_TRUE(ReadGerber(board, &layer).ok);
    for (const Frame& f : frames) {
      SCOPED_TRACE("board " + std::to_string(seed) + " at " + std::to_string(f.dpi) + " dpi");
      CompareWithGerbv(path, layer, f, f.w * f.h / 20);
    }
  }
}

// The deprecated forms still found in old files, each on a small drawing with an arc, a
// rectangle, an obround and a region, compared with the reference viewer's picture of the same
// file. (The axis swap AS is left out: the viewer turns the swapped image a half turn as well;
// the reader's own test checks the swap.)
TEST(GerberCompareTest, DeprecatedFormsMatchTheReferenceViewer) {
  if (!HaveGerbv()) GTEST_SKIP() << "gerbv is not installed (scripts/setup.sh installs it)";
  const std::string body =
      "%ADD10R,0.2X0.1*%\n%ADD11C,0.03*%\n%ADD12O,0.08X0.16*%\nG54D10*\nX5000Y3000D03*\n"
      "G54D12*\nX-4000Y-2000D03*\nD11*\nX2000Y1000D02*\nG01X2000Y6000D01*\nG75*\n"
      "G03X-3000Y6000I-2500J0D01*\nG36*\nX-2000Y-7000D02*\nG01X3000Y-7000D01*\n"
      "X3000Y-4000D01*\nX-2000Y-7000D01*\nG37*\n";
  struct Case {
    const char* name;
    std::string text;
  };
  const std::string header = "%FSLAX24Y24*%\n%MOIN*%\n";
  const Case cases[] = {
      {"mirror_a", header + "%MIA1B0*%\n" + body + "M02*\n"},
      {"mirror_ab", header + "%MIA1B1*%\n" + body + "M02*\n"},
      {"offset", header + "%OFA0.1B-0.2*%\n" + body + "M02*\n"},
      {"scale", header + "%SFA1.5B1.5*%\n" + body + "M02*\n"},
      {"rotate90", header + "%IR90*%\n" + body + "M02*\n"},
      {"rotate270", header + "%IR270*%\n" + body + "M02*\n"},
      {"offset_mirror_rotate", header + "%OFA0.1B0.2*%\n%MIA0B1*%\n%IR180*%\n" + body + "M02*\n"},
      {"negative", header + "%IPNEG*%\n" + body + "%LPC*%\nD11*\nX-1000Y-1000D03*\nM02*\n"},
      {"image_name_layer_name", "%FSLAX24Y24*%\n%INOLD*%\n%LNTOP*%\n%MOIN*%\n" + body + "M02*\n"},
      // Incremental coordinates (G91 and FS ...I); the moves below retrace the body.
      {"incremental", header + "G91*\n%ADD10C,0.03*%\nD10*\nX1000Y1000D02*\nX3000Y0D01*\n"
                                "Y4000D01*\nG75*\nG03X-4000Y0I-2000J0D01*\nG90*\nG01X0Y0D01*\n"
                                "M02*\n"},
      {"incremental_format", "%FSLIX24Y24*%\n%MOIN*%\n%ADD10C,0.03*%\nD10*\nX1000Y1000D02*\n"
                             "X3000Y0D01*\nY4000D01*\nX-2000Y-2000D01*\nM02*\n"},
      // Units from G70/G71 instead of MO; the millimetre file draws the body at 25.4 times
      // the numbers.
      {"g70", "%FSLAX24Y24*%\nG70*\n" + body + "M02*\n"},
      {"g71", "%FSLAX33Y33*%\nG71*\n%ADD10C,0.8*%\nD10*\nX-5000Y-5000D02*\nX12000Y9000D01*\n"
              "%ADD11R,2X3*%\nD11*\nX-10000Y10000D03*\nM02*\n"},
      // Zero handling: none given (read as leading omitted), trailing zeros omitted.
      {"no_zero_mode", "%FSAX24Y24*%\n%MOIN*%\n" + body + "M02*\n"},
      {"trailing_zeros", "%FSTAX24Y24*%\n%MOIN*%\n%ADD10C,0.03*%\nD10*\nX005Y003D02*\n"
                         "X-01Y-0075D01*\nX0Y-00025D01*\nM02*\n"},
      {"missing_m02", header + body},
  };
  const std::string dir = OutDir();
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    const std::string path = dir + "/deprecated_" + c.name + ".gbr";
    std::ofstream(path) << c.text;
    Layer layer;
    const ReadResult r = ReadGerber(c.text, &layer);
    ASSERT_TRUE(r.ok) << r.error.ToString();
    EXPECT_FALSE(r.warnings.empty());
    CompareWithGerbv(path, layer, {200, -1.2, -1.2, 480, 480}, 200);
  }
}

// Drill files in every unit and zero form, with slots and repeats, against the reference
// viewer. (It does not draw routed paths; the reader's test checks those.)
TEST(GerberCompareTest, DrillFilesMatchTheReferenceViewer) {
  if (!HaveGerbv()) GTEST_SKIP() << "gerbv is not installed (scripts/setup.sh installs it)";
  const struct {
    const char* name;
    const char* text;
  } cases[] = {
      {"inch_lz", "M48\nINCH,LZ\nT1C0.04\nT2C0.1\n%\nG90\nG05\nT1\nX005000Y003000\n"
                  "X-01Y-005\nX-005\nT2\nX0Y0\nM30\n"},
      {"inch_tz", "M48\nINCH,TZ\nT01F200S65C0.05\n%\nT01\nX5000Y3000\nX-10000Y-5000\nY2\nM30\n"},
      {"metric_tz", "M48\nMETRIC,TZ\nT1C1.2\nT2C2.5\n%\nT1\nX12700Y7620\nX-2540Y-12700\nT2\n"
                    "X-20000Y15000\nM30\n"},
      {"metric_lz", "M48\nMETRIC,LZ\nT1C1.0\n%\nT1\nX012700Y007620\nX-00254Y0127\nM30\n"},
      {"decimal", "M48\nMETRIC\nT1C0.8\nT2C1.6\n%\nT1\nX12.7Y7.62\nX-5.08Y-17.78\nT2\n"
                  "X0.Y0.\nM30\n"},
      {"slots", "M48\nINCH\nT1C0.04\nT2C0.07\n%\nT1\nX0.5Y0.3G85X1.0Y0.3\nT2\n"
                "X-0.5Y-0.2G85X-0.5Y-0.9\nX-0.2Y0.2G85X0.2Y0.6\nM30\n"},
      {"repeats", "M48\nINCH\nT1C0.04\n%\nT1\nX0.1Y0.1\nR3X0.2Y0.1\nX-0.8Y-0.8\nR4Y0.25\nM30\n"},
  };
  const std::string dir = OutDir();
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    const std::string path = dir + "/drill_" + c.name + ".drl";
    std::ofstream(path) << c.text;
    Layer layer;
    const ReadResult r = LoadArtworkFile(path, &layer);
    ASSERT_TRUE(r.ok) << r.error.ToString();
    ASSERT_EQ(layer.kind, LayerKind::kDrill);
    CompareWithGerbv(path, layer, {300, -1.2, -1.2, 720, 720}, 100);
  }
}

TEST(GerberCompareTest, CommandLineRendersTheFramingItIsGiven) {
  const std::string dir = OutDir();
  const std::string path = dir + "/square.gbr";
  std::ofstream(path) << "%FSLAX26Y26*%\n%MOIN*%\n%ADD10R,0.1X0.1*%\nD10*\nX1050000Y2050000D03*\nM02*\n";
  std::ostringstream out, err;
  const std::string png = dir + "/square.png";
  ASSERT_EQ(RunGerberCli({"render", path, "-o", png, "--dpi", "200", "--origin", "1,2", "--size",
                          "40x30", "--foreground", "FF0000", "--background", "00FF00"},
                         out, err),
            0)
      << err.str();
  gdi::PixelImage img;
  ASSERT_TRUE(gdi::ReadPngImage(png, &img));
  ASSERT_EQ(img.width, 40);
  ASSERT_EQ(img.height, 30);
  EXPECT_EQ(img.At(0, 29), 0xFF0000u);
  EXPECT_EQ(img.At(19, 10), 0xFF0000u);
  EXPECT_EQ(img.At(20, 10), 0x00FF00u);
  EXPECT_EQ(img.At(0, 9), 0x00FF00u);
  // Several files are layers in order: the second, in the first of the extra layer colours,
  // over the first; a clear object of the second uncovers the first, not the background.
  const std::string over = dir + "/over.gbr";
  std::ofstream(over) << "%FSLAX26Y26*%\n%MOIN*%\n%ADD10R,0.05X0.05*%\nD10*\nX1050000Y2050000D03*\n"
                         "%LPC*%\n%ADD11R,0.02X0.02*%\nD11*\nX1050000Y2050000D03*\nM02*\n";
  ASSERT_EQ(RunGerberCli({"render", path, over, "-o", png, "--dpi", "200", "--origin", "1,2",
                          "--size", "40x30"},
                         out, err),
            0)
      << err.str();
  ASSERT_TRUE(gdi::ReadPngImage(png, &img));
  EXPECT_EQ(img.At(0, 29), 0x000000u);   // first layer only
  EXPECT_EQ(img.At(6, 23), 0xC83232u);   // second layer over the first
  EXPECT_EQ(img.At(10, 20), 0x000000u);  // the second layer's clear centre shows the first
  EXPECT_EQ(img.At(25, 5), 0xFFFFFFu);   // background
  std::ostringstream info;
  ASSERT_EQ(RunGerberCli({"info", path}, info, err), 0);
  EXPECT_NE(info.str().find("1 flashes"), std::string::npos) << info.str();
  EXPECT_NE(info.str().find("x 25.4000 mm (1.00000 in) to 27.9400 mm"), std::string::npos) << info.str();
  EXPECT_EQ(RunGerberCli({"render", path}, out, err), 2);
  EXPECT_EQ(RunGerberCli({"render", dir + "/missing.gbr", "-o", png}, out, err), 1);
}

}  // namespace
}  // namespace qvis
