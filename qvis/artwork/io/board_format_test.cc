// The board text format: round trips of every construct, located errors that leave the target
// alone, limits, and saving and loading files.
#include "qvis/artwork/io/board_format.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>

#include "qvis/artwork/io/gerber_reader.h"
#include "qvis/compat/exceptions.h"

namespace qvis {
namespace {

constexpr Coord kMm = kNmPerMm;

ContourSegment Seg(Coord x, Coord y) {
  ContourSegment s;
  s.end = {x, y};
  return s;
}

// A document using every field the format carries.
ArtDocument RichDoc() {
  ArtDocument d;
  Layer top;
  top.name = "Top \"copper\"\n\xC3\xA9";
  top.file_function = "Copper,L1,Top";
  top.colour = 0xC83434;
  top.order = 2;
  top.units = Units::kInch;
  top.file_attributes = {{".Part", {"Single"}}, {".Empty", {}}};
  ApertureMacro m;
  m.name = "THERM";
  MacroStatement c;
  c.kind = MacroStatement::Kind::kComment;
  c.comment = "a thermal, with \\ and \"quotes\"";
  MacroStatement as;
  as.kind = MacroStatement::Kind::kAssign;
  as.var = 3;
  std::string err;
  std::size_t at = 0;
  EXPECT_TRUE(ParseMacroExpr("$1x0.5-(2+$2)/3", &as.value, &err, &at));
  MacroStatement p;
  p.kind = MacroStatement::Kind::kPrimitive;
  p.code = kMacroThermal;
  for (const char* e : {"0", "0", "$1", "$2", "$3/2", "45"}) {
    MacroExpr x;
    EXPECT_TRUE(ParseMacroExpr(e, &x, &err, &at));
    p.modifiers.push_back(x);
  }
  m.statements = {c, as, p};
  top.macros[m.name] = m;
  Aperture round;
  round.size_x = kMm / 2;
  round.attributes = {{".AperFunction", {"ComponentPad"}}};
  top.apertures[10] = round;
  Aperture poly;
  poly.kind = ApertureKind::kPolygon;
  poly.size_x = 1 * kMm;
  poly.vertices = 6;
  poly.rotation = 15.25;
  poly.hole = kMm / 3;
  top.apertures[11] = poly;
  Aperture mac;
  mac.kind = ApertureKind::kMacro;
  mac.macro = "THERM";
  mac.params = {2.0, 1.5, 0.1};
  mac.macro_units = Units::kInch;
  top.apertures[12] = mac;
  Aperture block;
  block.kind = ApertureKind::kBlock;
  ArtObject bf;
  bf.kind = ObjectKind::kFlash;
  bf.aperture = 10;
  bf.attributes = {{".N", {"GND"}}};
  block.block = {bf, bf};
  block.block[1].polarity = Polarity::kClear;
  top.apertures[20] = block;

  ArtObject track;
  track.aperture = 10;
  track.start = {-kMm, 2 * kMm};
  track.end = {5 * kMm, -(std::int64_t{1} << 40)};
  track.attributes = {{".N", {"Net 1", ""}}, {".C", {"R1"}}};
  ArtObject arc;
  arc.kind = ObjectKind::kArc;
  arc.aperture = 10;
  arc.start = {kMm, 0};
  arc.end = {0, kMm};
  arc.direction = ArcDirection::kClockwise;
  ArtObject flash;
  flash.kind = ObjectKind::kFlash;
  flash.aperture = 12;
  flash.end = {3, 4};
  flash.start = {7, 8};  // the point before the flash, as a reader may leave it
  flash.transform = {true, false, 30.5, 1.25};
  ArtObject region;
  region.kind = ObjectKind::kRegion;
  region.polarity = Polarity::kClear;
  region.aperture = 11;
  region.contour.start = {0, 0};
  region.contour.segments = {Seg(2 * kMm, 0), Seg(0, 2 * kMm), Seg(0, 0)};
  region.contour.segments[1].is_arc = true;
  region.contour.segments[1].direction = ArcDirection::kClockwise;
  ArtObject rep;
  rep.kind = ObjectKind::kStepRepeat;
  rep.repeat_x = 3;
  rep.repeat_y = 2;
  rep.step_x = 5 * kMm;
  rep.step_y = -kMm;
  rep.children = {track, flash, region};
  ArtObject nested = rep;
  nested.children.push_back(rep);
  top.objects = {track, arc, flash, region, nested};

  Layer drill;
  drill.name = "";
  drill.kind = LayerKind::kDrill;
  drill.visible = false;
  drill.order = -1;
  drill.apertures[1] = round;
  d.layers = {top, drill, Layer{}};
  return d;
}

TEST(BoardFormatTest, RoundTripGivesAnEqualDocumentAndTheSameText) {
  const ArtDocument doc = RichDoc();
  BoardView view{12.5, -3.25, 0.125, 1, 1};
  const std::string text = WriteBoardText(doc, view);
  EXPECT_TRUE(LooksLikeBoardText(text));
  ArtDocument back;
  BoardView vback;
  const ReadResult r = ReadBoardText(text, &back, &vback);
  ASSERT_TRUE(r.ok) << r.error.ToString() << "\n" << text;
  EXPECT_EQ(back, doc);
  EXPECT_EQ(vback, view);
  EXPECT_EQ(WriteBoardText(back, vback), text);
  // One object per line: moving a track changes one line.
  ArtDocument moved = doc;
  moved.layers[0].objects[0].end.x += 1;
  const std::string text2 = WriteBoardText(moved, view);
  int differing = 0;
  std::istringstream a(text), b(text2);
  for (std::string la, lb; std::getline(a, la) && std::getline(b, lb);) differing += la != lb;
  EXPECT_EQ(differing, 1);
}

TEST(BoardFormatTest, GerberLayersRoundTrip) {
  const std::string gerber =
      "%FSLAX46Y46*%\n%MOMM*%\n%TF.FileFunction,Copper,L2,Inr*%\n"
      "%AMBOX*21,1,$1,$2,0,0,$3*1,0,0.2,0,0*%\n"
      "%ADD10C,0.25*%\n%ADD11BOX,1X0.5X30*%\n%ADD12O,1.5X0.6X0.2*%\n"
      "%TO.N,VCC*%\nD10*\nX0Y0D02*\nX1000000Y0D01*\nG75*\nG03X0Y1000000I-1000000J0D01*\n%TD*%\n"
      "D11*\n%LR45*%\nX2000000Y2000000D03*\n%LR0*%\nD12*\nX3000000Y0D03*\n"
      "%LPC*%\nG36*\nX0Y0D02*\nG01X500000Y0D01*\nX0Y500000D01*\nX0Y0D01*\nG37*\n%LPD*%\n"
      "%SRX2Y2I3J3*%\nD10*\nX5000000Y0D03*\n%SR*%\nM02*\n";
  ArtDocument doc;
  doc.layers.emplace_back();
  ASSERT_TRUE(ReadGerber(gerber, &doc.layers[0]).ok);
  doc.layers[0].name = "inner";
  ArtDocument back;
  BoardView v;
  const ReadResult r = ReadBoardText(WriteBoardText(doc, {}), &back, &v);
  ASSERT_TRUE(r.ok) << r.error.ToString();
  EXPECT_EQ(back, doc);
}

struct BadCase {
  const char* text;
  int line;
  int column;
  const char* expected;
};

TEST(BoardFormatTest, ErrorsNameLineColumnAndLeaveTheTargetAlone) {
  const BadCase cases[] = {
      {"", 1, 1, "qvis-board 1"},
      {"qvis-bored 1\n", 1, 1, "qvis-board 1"},
      {"qvis-board 2\n", 1, 12, "version from 1 to 1"},
      {"qvis-board 1 extra\n", 1, 14, "end of the line"},
      {"qvis-board 1\n\n# comment\nlayers \"x\"\n", 4, 1, "\"view\" or \"layer\""},
      {"qvis-board 1\nlayer x\nend\n", 2, 7, "quoted string"},
      {"qvis-board 1\nlayer \"x\nend\n", 2, 9, "closing quote"},
      {"qvis-board 1\nlayer \"a\\q\"\nend\n", 2, 9, "escape"},
      {"qvis-board 1\nlayer \"x\"\n  colour 12345G\nend\n", 3, 10, "colour RRGGBB"},
      {"qvis-board 1\nlayer \"x\"\n  track 10 0 0 1.5 0\nend\n", 3, 16, "integer"},
      {"qvis-board 1\nlayer \"x\"\n  track 10 0 0 1\nend\n", 3, 17, "integer"},
      {"qvis-board 1\nlayer \"x\"\n  arc 10 0 0 1 1 0 0 up\nend\n", 3, 22, "cw or ccw"},
      {"qvis-board 1\nlayer \"x\"\n  flash 10 0 0 bold\nend\n", 3, 16, "an option"},
      {"qvis-board 1\nlayer \"x\"\n  flash 10 0 0 rotate nan\nend\n", 3, 23, "a number"},
      {"qvis-board 1\nlayer \"x\"\n  attr \"n\"\nend\n", 3, 3, "object before its attr"},
      {"qvis-board 1\nlayer \"x\"\n  region\n  line 0 0\nend\n", 4, 1, "start X Y"},
      {"qvis-board 1\nlayer \"x\"\n  region\n    start 0 0\n    line 1 1\n", 6, 1, "\"end\""},
      {"qvis-board 1\nlayer \"x\"\n  macro \"M\"\n    primitive 1 \"1\" \"$1x\"\n  end\nend\n", 4,
       25, "a number, a variable"},
      {"qvis-board 1\nlayer \"x\"\n  aperture 10 circle 1 0 0 0 0\n  end\n"
       "  aperture 10 circle 1 0 0 0 0\n  end\nend\n",
       5, 12, "code not used before"},
      {"qvis-board 1\nlayer \"x\"\n  aperture 10 star 1 0 0 0 0\n  end\nend\n", 3, 15, "circle"},
      {"qvis-board 1\nlayer \"x\"\n  repeat 0 1 0 0\n  end\nend\n", 3, 10, "from 1"},
      {"qvis-board 1\nview 0 0 0 0 0\n", 2, 10, "zoom above 0"},
      {"qvis-board 1\nlayer \"x\"\n  track 10 0 0 0 9999999999999999999\nend\n", 3, 18, "integer"},
  };
  for (const BadCase& c : cases) {
    ArtDocument doc = RichDoc();
    BoardView view{1, 2, 3, 0, 0};
    const ReadResult r = ReadBoardText(c.text, &doc, &view);
    EXPECT_FALSE(r.ok) << c.text;
    EXPECT_EQ(r.error.line, c.line) << c.text << r.error.ToString();
    EXPECT_EQ(r.error.column, c.column) << c.text << r.error.ToString();
    EXPECT_NE(r.error.text.find(c.expected), std::string::npos) << c.text << r.error.ToString();
    EXPECT_FALSE(r.error.text.empty());
    EXPECT_EQ(doc, RichDoc());
    EXPECT_EQ(view, (BoardView{1, 2, 3, 0, 0}));
  }
}

TEST(BoardFormatTest, LimitsAreCheckedBeforeStoring) {
  std::string text = "qvis-board 1\nlayer \"x\"\n";
  for (int i = 0; i < 50; ++i) text += "  flash 10 0 0\n";
  text += "end\n";
  ReadLimits limits;
  limits.max_objects = 20;
  ArtDocument doc;
  BoardView v;
  ReadResult r = ReadBoardText(text, &doc, &v, limits);
  EXPECT_FALSE(r.ok);
  EXPECT_EQ(r.error.line, 23);
  limits.max_objects = 50;
  EXPECT_TRUE(ReadBoardText(text, &doc, &v, limits).ok);
  // Nested repeats deeper than the limit.
  std::string deep = "qvis-board 1\nlayer \"x\"\n";
  for (int i = 0; i < 40; ++i) deep += "repeat 1 1 0 0\n";
  for (int i = 0; i < 40; ++i) deep += "end\n";
  deep += "end\n";
  r = ReadBoardText(deep, &doc, &v);
  EXPECT_FALSE(r.ok);
  EXPECT_NE(r.error.text.find("nesting"), std::string::npos);
}

class BoardFileTest : public ::testing::Test {
 protected:
  void SetUp() override {
    dir_ = std::filesystem::path(::testing::TempDir()) /
           ("qvis_board_" + std::to_string(::getpid()));
    std::filesystem::create_directories(dir_);
  }
  void TearDown() override { std::filesystem::remove_all(dir_); }
  std::filesystem::path dir_;
};

TEST_F(BoardFileTest, SaveMarksCleanAndLoadGivesTheSameBoard) {
  ArtBoard board(RichDoc(), BoardView{1, 2, 4, 0, 0});
  board.DeleteObjects({{0, 1}});
  EXPECT_TRUE(board.IsModified());
  const std::string path = (dir_ / "b.qvb").string();
  SaveBoard(path, board);
  EXPECT_FALSE(board.IsModified());
  ArtBoard loaded;
  const ReadResult r = LoadBoard(path, &loaded);
  ASSERT_TRUE(r.ok) << r.error.ToString();
  EXPECT_EQ(loaded.Document(), board.Document());
  EXPECT_EQ(loaded.view(), board.view());
  EXPECT_EQ(loaded.LiveCount(), board.LiveCount());

  // A damaged file leaves the board as it was.
  { std::ofstream(dir_ / "bad.qvb") << "qvis-board 1\nlayer \"x\"\n"; }
  const ReadResult bad = LoadBoard((dir_ / "bad.qvb").string(), &loaded);
  EXPECT_FALSE(bad.ok);
  EXPECT_EQ(loaded.Document(), board.Document());
  EXPECT_THROW(LoadBoard((dir_ / "missing.qvb").string(), &loaded), CFileException);
  // A save that fails keeps the old file and the modified flag.
  board.MoveObjects({{0, 0}}, 1, 1);
  EXPECT_THROW(SaveBoard((dir_ / "no" / "such" / "b.qvb").string(), board), CFileException);
  EXPECT_TRUE(board.IsModified());
}

}  // namespace
}  // namespace qvis

namespace qvis {
namespace {

// The fuzz seeds are boards the reader accepts (a refused seed would only fuzz the first lines).
TEST(BoardFormatTest, FuzzSeedsRead) {
  int n = 0;
  for (const auto& e : std::filesystem::directory_iterator(
           std::filesystem::path(QVIS_SOURCE_DIR) / "fuzz" / "corpus" / "board")) {
    std::ifstream in(e.path(), std::ios::binary);
    const std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    ArtDocument doc;
    BoardView v;
    const ReadResult r = ReadBoardText(text, &doc, &v);
    EXPECT_TRUE(r.ok) << e.path() << ": " << r.error.ToString();
    ++n;
  }
  EXPECT_GE(n, 4);
}

}  // namespace
}  // namespace qvis
