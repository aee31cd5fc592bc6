// Tests of the session runner: a script's listing and snapshot against expected output, and
// the messages for bad lines.
#include "apps/qvis-session/session.h"

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <unistd.h>

#include "qvis/gdi/gdi.h"

namespace qvis::session {
namespace {

std::string ReadText(const std::string& path) {
  std::ifstream in(path);
  std::stringstream s;
  s << in.rdbuf();
  return s.str();
}

// Pixel of a PNG written by a snapshot, as 0x00RRGGBB; 0xFFFFFFFF when unreadable.
std::uint32_t PngPixel(const std::string& path, int x, int y) {
  HBITMAP bitmap = gdi::ReadPng(path.c_str());
  const gdi::BitmapView v = gdi::BitmapPixels(bitmap);
  std::uint32_t p = 0xFFFFFFFFu;
  if (v.bits != nullptr && x < v.width && y < v.height) p = v.Row32(y)[x] & 0xFFFFFF;
  gdi::DeleteObject(reinterpret_cast<HGDIOBJ>(bitmap));
  return p;
}

// A directory of this process's own, so that test runs side by side never share files.
std::string PrivateDir() {
  static const std::string dir = [] {
    std::string d = testing::TempDir() + "qvis_session_test_" + std::to_string(::getpid());
    std::filesystem::create_directories(d);
    return d;
  }();
  return dir;
}

class SessionTest : public testing::Test {
 protected:
  std::string Dir() const { return PrivateDir(); }
  int Run(const std::string& script) {
    Session session(Dir(), out_);
    const int rc = session.RunScript(script, "test.qs", err_);
    figures_ = session.document().figures().size();
    return rc;
  }
  std::ostringstream out_;
  std::ostringstream err_;
  size_t figures_ = 0;
};

// World (0, 0) at pixel (20, 20), 10 px/mm, nothing on screen but the figures.
const char* const kSetup =
    "window 200 150\n"
    "view -2 -2\n"
    "zoom 10\n"
    "snap 1\n"
    "show grid off\n"
    "show snap off\n"
    "show origin off\n";

TEST_F(SessionTest, ScriptListingAndSnapshot) {
  const std::string script = std::string(kSetup) +
                             "command line\n"
                             "set width 0.6\n"
                             "set bend 0\n"
                             "click 0 0\n"
                             "click 8 0\n"
                             "click 8 4\n"
                             "key enter\n"
                             "command flash-circle\n"
                             "set diameter 3\n"
                             "set hole 1\n"
                             "set aperture 12\n"
                             "click 4 9\n"
                             "command rect\n"
                             "click 11 1\n"
                             "click 14 3\n"
                             "command circle\n"
                             "set width 0.2\n"
                             "click 12 9\n"
                             "click 14 9\n"
                             "command select\n"
                             "move px 199 149\n"
                             "list out.txt\n"
                             "snapshot shot.png\n";
  ASSERT_EQ(Run(script), 0) << err_.str();
  EXPECT_EQ(ReadText(Dir() + "/out.txt"),
            "track layer=1 aperture=0 cap=round points=(0.0000,0.0000) (8.0000,0.0000) "
            "(8.0000,4.0000) widths=0.6000,0.6000\n"
            "pad shape=round layer=1 aperture=12 at=(4.0000,9.0000) diameter=3.0000 "
            "hole=1.0000x0.0000\n"
            "rect layer=1 from=(11.0000,1.0000) to=(14.0000,3.0000)\n"
            "circle layer=1 centre=(12.0000,9.0000) radius=2.0000 width=0.2000 fill=0\n");
  const std::string png = Dir() + "/shot.png";
  EXPECT_EQ(PngPixel(png, 60, 20), 0xFF0000u);   // on the track, world (4, 0)
  EXPECT_EQ(PngPixel(png, 100, 40), 0xFF0000u);  // on its second leg, world (8, 2)
  EXPECT_EQ(PngPixel(png, 60, 40), 0x000000u);   // inside the bend, nothing
  EXPECT_EQ(PngPixel(png, 60, 110 - 12), 0xFF0000u);  // the pad ring, world (4, 7.8)
  EXPECT_EQ(PngPixel(png, 60, 110), 0x000000u);  // its hole
  EXPECT_EQ(PngPixel(png, 145, 40), 0xFF0000u);  // inside the rectangle
  EXPECT_EQ(PngPixel(png, 159, 110), 0xFF0000u);  // on the circle, world (14, 9)
  EXPECT_EQ(PngPixel(png, 140, 90), 0xFF0000u);   // and at world (12, 7)
  EXPECT_EQ(PngPixel(png, 161, 110), 0x000000u);  // just outside its 2-pixel pen
  EXPECT_EQ(PngPixel(png, 140, 110), 0x000000u);  // the circle's centre
}

TEST_F(SessionTest, ArcsPolygonsAndThreePointCirclesAreTakenOver) {
  const std::string script = std::string(kSetup) +
                             "command arc\n"
                             "click 0 0\nclick 5 0\nclick 0 -5\n"
                             "command circle3\n"
                             "set width 0.2\n"
                             "click 0 0\nclick 2 0\nclick 1 1\n"
                             "command polygon\n"
                             "set bend 0\n"
                             "click 4 4\nclick 9 4\ndblclick 9 8\n"
                             "command line\n"
                             "set endcap square\n"
                             "click 0 10\nclick 3 10\nkey esc\n"
                             "expect figures 3\n"
                             "list -\n";
  ASSERT_EQ(Run(script), 0) << err_.str();
  EXPECT_EQ(out_.str(),
            "arc layer=1 centre=(0.0000,0.0000) radius=5.0000 from=(5.0000,0.0000) "
            "to=(0.0000,-5.0000) width=0.4000\n"
            "circle3 layer=1 centre=(1.0000,0.0000) radius=1.0000 width=0.2000 fill=0\n"
            "polygon layer=1 points=(4.0000,4.0000) (9.0000,4.0000) (9.0000,8.0000)\n");
}

TEST_F(SessionTest, ViewCommandsAndExpectations) {
  const std::string script = std::string(kSetup) +
                             "wheel down px 100 75\n"
                             "expect zoom 15\n"
                             "wheel up px 100 75 shift\n"
                             "expect zoom 6\n"
                             "wheel down px 300 75\n"
                             "expect zoom 6\n"
                             "char +\n"
                             "expect zoom 7.2\n"
                             "alt1\n"
                             "expect zoom 7.2\n"  // no figures: the fit changes nothing
                             "key esc\n"
                             "key enter\n"
                             "expect parent-keydowns 2\n"
                             "expect proc \"Select Command\"\n"
                             "command zoombox\n"
                             "expect proc \"Zoom Command\"\n"
                             "drag px 20 20 to px 120 95\n"
                             "expect zoom 14.4\n";  // a box half the window: zoom x2
  ASSERT_EQ(Run(script), 0) << err_.str();
}

TEST_F(SessionTest, AltOneFitsTheHostFigures) {
  const std::string script = std::string(kSetup) +
                             "command rect\n"
                             "click 0 0\nclick 40 10\n"
                             "command select\n"
                             "alt1\n"
                             // 40 mm plus 2 % of it on each side across 200 pixels
                             "expect zoom 4.8076923076923\n";
  ASSERT_EQ(Run(script), 0) << err_.str();
}

TEST_F(SessionTest, SaveAndLoadRoundTrip) {
  const std::string script = std::string(kSetup) +
                             "zoom 4\n"
                             "save design.dat\n"
                             "zoom 9\n"
                             "load design.dat\n"
                             "expect zoom 4\n";
  ASSERT_EQ(Run(script), 0) << err_.str();
  std::ifstream in(Dir() + "/design.dat", std::ios::binary | std::ios::ate);
  EXPECT_EQ(in.tellg(), 242);
}

TEST_F(SessionTest, BadLinesNameFileLineAndWhatWasExpected) {
  struct Row {
    const char* line;
    const char* message;
  };
  const std::vector<Row> rows = {
      {"frobnicate", "test.qs:2: error: expected a statement"},
      {"zoom abc", "test.qs:2: error: expected a zoom (pixels per world unit) after 'zoom', "
                   "got 'abc'"},
      {"zoom 0", "test.qs:2: error: expected a zoom above 0"},
      {"click 1", "test.qs:2: error: expected a world y after 'click', got end of line"},
      {"click px 1 2 3", "test.qs:2: error: expected end of line after 'click', got '3'"},
      {"command teleport", "test.qs:2: error: expected a command name"},
      {"set sides 2", "test.qs:2: error: expected a side count from 3 to 360"},
      {"set endcap pointy", "test.qs:2: error: expected an end cap (round, square, flat)"},
      {"key f13", "test.qs:2: error: expected a key (esc, enter"},
      {"drag 0 0 1 1", "test.qs:2: error: expected 'to' between the two positions of 'drag'"},
      {"window 0 10", "test.qs:2: error: expected a window size from 1 to 8192 pixels"},
      {"show grid maybe", "test.qs:2: error: expected 'on' or 'off' for show grid, got 'maybe'"},
      {"expect zoom 3", "test.qs:2: error: expectation failed: zoom is"},
      {"load no-such-file.dat", "test.qs:2: error: cannot use file"},
      {"echo \"open", "test.qs:2: error: expected a closing '\"'"},
  };
  for (const Row& row : rows) {
    err_.str("");
    EXPECT_EQ(Run(std::string("# a comment\n") + row.line + "\nzoom 5\n"), 1) << row.line;
    EXPECT_EQ(err_.str().rfind(row.message, 0), 0u) << err_.str();
  }
}

TEST_F(SessionTest, OutputsBeforeABadLineStay) {
  std::remove((Dir() + "/before.png").c_str());
  EXPECT_EQ(Run(std::string(kSetup) + "snapshot before.png\nbogus\nsnapshot after.png\n"), 1);
  EXPECT_NE(PngPixel(Dir() + "/before.png", 0, 0), 0xFFFFFFFFu);
  EXPECT_EQ(PngPixel(Dir() + "/after.png", 0, 0), 0xFFFFFFFFu);
}

TEST(SessionFileTest, MissingScriptIsAnError) {
  std::ostringstream out, err;
  Session session(PrivateDir(), out);
  EXPECT_EQ(session.RunFile("/no/such/script.qs", err), 1);
  EXPECT_EQ(err.str(), "/no/such/script.qs: error: cannot read the script\n");
}

TEST(PadPolygonTest, VerticesFollowThePadCommand) {
  const std::vector<Vertex> four = PadPolygonVertices(0, 0, 2, 4);
  ASSERT_EQ(four.size(), 4u);
  EXPECT_EQ(four[1].x, 0.0);
  EXPECT_EQ(four[1].y, 1.0);
  EXPECT_EQ(four[3].y, -1.0);
  const std::vector<Vertex> seven = PadPolygonVertices(0, 0, 2, 7);
  ASSERT_EQ(seven.size(), 7u);  // step 51 degrees: the last edge is the longer one
  EXPECT_NEAR(seven[6].x, std::cos(306 * 3.141592653589793 / 180), 1e-12);
  EXPECT_TRUE(PadPolygonVertices(0, 0, 2, 2).empty());
}

}  // namespace
}  // namespace qvis::session
