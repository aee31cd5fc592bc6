// The scene runner (syntax, errors, checkpoints) and the golden comparison it feeds.
#include "tests/scene/scene_runner.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "tests/scene/golden_compare.h"

namespace qvis::gdi {
namespace {

TEST(SceneRunnerTest, SceneErrorsNameTheLineAndStopTheRun) {
  struct Row {
    const char* scene;
    const char* error;  // expected tail of the message
  } rows[] = {
      {"", "scene:0: error: empty scene: no canvas line"},
      {"# only a comment\n\n", "error: empty scene: no canvas line"},
      {"pen solid 1 0xFF0000\n", "scene:1: error: the first command must be: canvas W H 0xRRGGBB"},
      {"canvas 0 10 0\n", "scene:1: error: canvas size out of range"},
      {"canvas 4097 10 0\n", "error: canvas size out of range"},
      {"canvas 10 10 0\ncanvas 10 10 0\n", "scene:2: error: canvas given twice"},
      {"canvas 10 10 0\nfrobnicate 1\n", "scene:2: error: unknown command 'frobnicate'"},
      {"canvas 10 10 0\nline 1 2 3\n", "error: usage: line X1 Y1 X2 Y2"},
      {"canvas 10 10 0\nline 1 2 3 x\n", "error: not a number: 'x'"},
      {"canvas 10 10 0\npen solid 1 0x1000000\n", "error: colour '0x1000000' is not 0xRRGGBB"},
      {"canvas 10 10 0\npen wiggly 1 0\n", "error: unknown value 'wiggly'"},
      {"canvas 10 10 0\ntextout 1 1 \"open\n", "error: unterminated quote"},
      {"canvas 10 10 0\nfillrgn nowhere 0xFFFFFF\n", "error: no region named 'nowhere'"},
      {"canvas 10 10 0\nbitblt 0 0 1 1 0 0 srccopy\n", "error: no source DC (srcdc)"},
      {"canvas 10 10 0\ntarget src\n", "error: no source DC yet (srcdc)"},
      {"canvas 10 10 0\nsave a.b\n", "error: save name: letters, digits, _ and - only"},
      {"canvas 10 10 0\nsave final\n", "error: 'final' is reserved"},
      {"canvas 10 10 0\npolygon alternate 1 2 3\n", "error: usage: polygon"},
      {"canvas 10 10 0\npolypolygon winding 3,2 0 0 1 1 2 2 3 3\n",
       "error: polypolygon: counts add up to 5, 4 points given"},
      {"canvas 10 10 0\nsrcdc mono 4 4 0\nsrcdc mono 4 4 0\n", "error: the source DC exists already"},
      {"canvas 10 10 0\nexttextout 1 1 0 -\n", "scene:2: error: exttextout X Y OPTIONS"},
      {"canvas 10 10 0\nexttextout 1 1 0 1,2,3 \"ab\"\n", "error: exttextout X Y OPTIONS"},
      {"canvas 10 10 0\nexttextout 1 1 0 1,2,3,4,5 \"ab\"\n", "error: exttextout X Y OPTIONS"},
      {"canvas 10 10 0\nexttextout 1 1 shiny - \"ab\"\n", "error: unknown value 'shiny'"},
      {"canvas 10 10 0\nexttextout 1 1 0 - \"ab\" 4\n", "error: one DX per character"},
  };
  for (const Row& row : rows) {
    SceneOutcome out = RunScene(row.scene);
    EXPECT_FALSE(out.ok) << row.scene;
    EXPECT_NE(out.error.find(row.error), std::string::npos)
        << "scene: " << row.scene << "\nerror: " << out.error;
  }
}

TEST(SceneRunnerTest, DrawsCheckpointsAndTheFinalCanvas) {
  const char* scene =
      "# a comment line, then a blank one\n"
      "\n"
      "canvas 8 6 0x102030   # trailing comment\n"
      "fillrect 2 1 5 3 0xFF0000\n"
      "save red\n"
      "clear 0x00FF00\n"
      "setpixel 7 5 0x0000FF\n"
      "save\n"
      "line 0 0 4 0\n";
  SceneOutcome out = RunScene(scene, "unit.txt");
  ASSERT_TRUE(out.ok) << out.error;
  EXPECT_EQ(out.background, 0x102030u);
  ASSERT_EQ(out.checkpoints.size(), 2u);
  EXPECT_EQ(out.checkpoints[0].name, "red");
  EXPECT_EQ(out.checkpoints[1].name, "2");  // unnamed saves are numbered by their order
  const PixelImage& red = out.checkpoints[0].image;
  ASSERT_EQ(red.width, 8);
  ASSERT_EQ(red.height, 6);
  for (int y = 0; y < 6; ++y) {
    for (int x = 0; x < 8; ++x) {
      bool inside = x >= 2 && x < 5 && y >= 1 && y < 3;
      EXPECT_EQ(red.At(x, y), inside ? 0xFF0000u : 0x102030u) << x << "," << y;
    }
  }
  EXPECT_EQ(out.checkpoints[1].image.At(7, 5), 0x0000FFu);
  EXPECT_EQ(out.checkpoints[1].image.At(0, 0), 0x00FF00u);
  // The default pen is black and one pixel wide; LineTo leaves out the last pixel.
  const PixelImage& last = out.final_image;
  for (int x = 0; x < 4; ++x) EXPECT_EQ(last.At(x, 0), 0u) << x;
  EXPECT_EQ(last.At(4, 0), 0x00FF00u);
}

TEST(SceneRunnerTest, CallsThatFailAreNotedAndTheRunGoesOn) {
  SceneOutcome out = RunScene(
      "canvas 4 4 0\n"
      "rop2 99\n"
      "framergn_missing_is_error_so_not_here 0\n",
      "n.txt");
  EXPECT_FALSE(out.ok);
  ASSERT_FALSE(out.notes.empty());
  EXPECT_EQ(out.notes[0], "n.txt:2: note: SetROP2 returned 0");
  // Far-off and saturated coordinates draw what fits, without failing the scene.
  out = RunScene("canvas 16 16 0\nline -99999999999 5 99999999999 5\nellipse 2147483647 0 -2147483648 9\n");
  EXPECT_TRUE(out.ok) << out.error;
}

TEST(GoldenCompareTest, CountsDifferencesAgainstTheDrawnPixels) {
  PixelImage a;
  a.width = 4;
  a.height = 2;
  a.pixels = {0, 0, 5, 0,   //
              0, 7, 7, 0};
  PixelImage b = a;
  b.pixels[2] = 6;   // differs where both drew
  b.pixels[4] = 9;   // drawn only in b
  b.pixels[5] = 0;   // drawn only in a
  ImageComparison c = CompareImages(a, b, 0, 2);
  ASSERT_TRUE(c.same_size);
  EXPECT_EQ(c.differing, 3);
  EXPECT_EQ(c.ink, 4);  // pixels 2, 4, 5 and 6 are drawn in a or b
  EXPECT_DOUBLE_EQ(c.AgreementPercent(), 25.0);
  ASSERT_EQ(c.first.size(), 2u);  // listing stops at the limit, in row order
  EXPECT_EQ(c.first[0].x, 2);
  EXPECT_EQ(c.first[0].y, 0);
  EXPECT_EQ(c.first[0].expected, 5u);
  EXPECT_EQ(c.first[0].actual, 6u);
  EXPECT_EQ(c.first[1].x, 0);
  EXPECT_EQ(c.first[1].y, 1);
  EXPECT_NE(DescribeDifferences(c).find("(2,0) expected 0x000005 got 0x000006"), std::string::npos);

  EXPECT_DOUBLE_EQ(CompareImages(a, a, 0).AgreementPercent(), 100.0);
  PixelImage empty_canvas = a;
  empty_canvas.pixels.assign(8, 0);
  EXPECT_DOUBLE_EQ(CompareImages(empty_canvas, empty_canvas, 0).AgreementPercent(), 100.0);
  // The high byte is not part of the colour.
  PixelImage high = a;
  for (auto& p : high.pixels) p |= 0xFF000000u;
  EXPECT_EQ(CompareImages(a, high, 0).differing, 0);
  PixelImage other_size = a;
  other_size.width = 8;
  other_size.height = 1;
  EXPECT_FALSE(CompareImages(a, other_size, 0).same_size);
  EXPECT_DOUBLE_EQ(CompareImages(a, other_size, 0).AgreementPercent(), 0.0);
}

TEST(GoldenCompareTest, RulesComeFromTheSceneComment) {
  struct Row {
    const char* text;
    GoldenRule::Kind kind;
    long long budget;
    bool error;
  } rows[] = {
      {"canvas 1 1 0\n", GoldenRule::Kind::kExact, 0, false},
      {"# golden: exact\ncanvas 1 1 0\n", GoldenRule::Kind::kExact, 0, false},
      {"# golden: ours\n", GoldenRule::Kind::kOurs, 0, false},
      {"# wide pens\n# golden: budget 14\n", GoldenRule::Kind::kBudget, 14, false},
      {"# golden: budget 0\n", GoldenRule::Kind::kBudget, 0, false},
      {"# golden: budget\n", GoldenRule::Kind::kExact, 0, true},
      {"# golden: budget -3\n", GoldenRule::Kind::kExact, 0, true},
      {"# golden: budget 9x\n", GoldenRule::Kind::kExact, 0, true},
      {"# golden: budget 2.5\n", GoldenRule::Kind::kExact, 0, true},
      {"# golden: budget 3 4\n", GoldenRule::Kind::kExact, 0, true},
      {"# golden: agreement 99\n", GoldenRule::Kind::kExact, 0, true},  // shares are gone
      {"# golden: report\n", GoldenRule::Kind::kExact, 0, true},        // so is report-only
      {"# golden: roughly\n", GoldenRule::Kind::kExact, 0, true},
  };
  for (const Row& row : rows) {
    std::string error;
    GoldenRule rule = ParseGoldenRule(row.text, &error);
    EXPECT_EQ(rule.kind, row.kind) << row.text;
    EXPECT_EQ(rule.budget, row.budget) << row.text;
    EXPECT_EQ(!error.empty(), row.error) << row.text;
  }
}

TEST(SceneRunnerTest, SplitsLinesIntoWordsQuotesAndComments) {
  using Words = std::vector<std::string>;
  Words w = {"left", "over"};
  ASSERT_TRUE(SplitSceneLine("  textout 1\t2 \"a # b\" \"\"  # note", &w));
  EXPECT_EQ(w, (Words{"textout", "1", "2", "a # b", ""}));
  ASSERT_TRUE(SplitSceneLine("# nothing but a comment", &w));
  EXPECT_TRUE(w.empty());
  ASSERT_TRUE(SplitSceneLine("x#y", &w));  // `#` only starts a comment where a word would
  EXPECT_EQ(w, (Words{"x#y"}));
  EXPECT_FALSE(SplitSceneLine("textout 1 1 \"open", &w));
  EXPECT_EQ(w, (Words{"textout", "1", "1"}));
}

TEST(GoldenCompareTest, ListsSceneFilesByPathWithTheirArea) {
  namespace fs = std::filesystem;
  const fs::path root = fs::path(testing::TempDir()) / "qvis_golden_listing";
  fs::remove_all(root);
  for (const char* file : {"pens/b.txt", "pens/a.txt", "pens/a.png", "fill/deep/c.txt", "top.txt"}) {
    fs::create_directories((root / file).parent_path());
    std::ofstream(root / file, std::ios::binary) << "canvas 1 1 0\n";  // no CRLF on Windows
  }
  fs::create_directories(root / "dir.txt");  // a folder, not a scene
  const std::vector<GoldenScene> scenes = ListGoldenScenes(root);
  std::vector<std::string> seen;
  for (const GoldenScene& s : scenes) {
    seen.push_back(s.area + "|" + s.file.lexically_relative(root).generic_string());
  }
  EXPECT_EQ(seen, (std::vector<std::string>{"fill/deep|fill/deep/c.txt", "pens|pens/a.txt",
                                            "pens|pens/b.txt", ".|top.txt"}));
  EXPECT_EQ(GoldenSuiteName("Golden_", "fill/deep"), "Golden_fill_deep");
  EXPECT_EQ(ReadSceneText(root / "top.txt"), "canvas 1 1 0\n");
  EXPECT_EQ(ReadSceneText(root / "missing.txt"), "");
  EXPECT_TRUE(ListGoldenScenes(root / "missing").empty());
  fs::remove_all(root);
}

}  // namespace
}  // namespace qvis::gdi
