// Tests of the editor's board: files in and out (all or nothing), figures becoming objects,
// selection, moves, undo and redo.
#include "apps/qvis-editor/board.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace {

using qvis::ArtObject;
using qvis::ObjectKind;
using qvis::editor::Board;
using qvis::FigureKind;
using qvis::ObjectRef;
using Figure = qvis::FinishedFigure;

namespace fs = std::filesystem;

std::string Example(const char* name) {
  return std::string(QVIS_SOURCE_DIR) + "/examples/gerber/" + name;
}

fs::path TempDir() {
  const fs::path d = fs::temp_directory_path() / ("qvis_board_test_" + std::to_string(::getpid()));
  fs::create_directories(d);
  return d;
}

void WriteText(const fs::path& p, const std::string& text) { std::ofstream(p) << text; }
std::string ReadText(const fs::path& p) {
  std::ostringstream s;
  s << std::ifstream(p).rdbuf();
  return s.str();
}

Figure TrackFigure(std::initializer_list<std::pair<double, double>> points, double width) {
  Figure f;
  f.kind = FigureKind::kTrack;
  for (auto [x, y] : points) {
    qvis::FigureVertex v;
    v.x = x;
    v.y = y;
    v.width = width;
    f.points.push_back(v);
  }
  return f;
}

Figure Pad(double x, double y, double d) {
  Figure f;
  f.kind = FigureKind::kPad;
  f.pad = qvis::PadShape::kRound;
  f.cx = x;
  f.cy = y;
  f.pad_width = d;
  return f;
}

TEST(BoardTest, OpensASetOfFilesAsLayersOrNothing) {
  Board b;
  std::string error;
  ASSERT_TRUE(b.OpenFiles({Example("board-F_Cu.gbr"), Example("board.drl")}, &error)) << error;
  ASSERT_EQ(b.document().layers.size(), 2u);
  EXPECT_EQ(b.document().layers[0].name, "board-F_Cu.gbr");
  EXPECT_EQ(b.document().layers[1].kind, qvis::LayerKind::kDrill);
  EXPECT_GT(b.document().layers[0].objects.size(), 20u);
  const qvis::ArtDocument before = b.document();

  const fs::path dir = TempDir();
  WriteText(dir / "bad.gbr", "%FSLAX46Y46*%\n%MOMM*%\n%ADD10C,0.2*%\nD10*\nX1Y1D01*\nX2Y2D07*\nM02*\n");
  EXPECT_FALSE(b.OpenFiles({Example("board-B_Cu.gbr"), (dir / "bad.gbr").string()}, &error));
  // The message names the file and where in it.
  EXPECT_NE(error.find("bad.gbr"), std::string::npos) << error;
  EXPECT_NE(error.find("line 6"), std::string::npos) << error;
  EXPECT_EQ(b.document(), before);
  EXPECT_FALSE(b.OpenFiles({(dir / "missing.gbr").string()}, &error));
  EXPECT_NE(error.find("missing.gbr"), std::string::npos);
  EXPECT_EQ(b.document(), before);
  fs::remove_all(dir);
}

// Files opened together stack as the board does seen from the top, whatever order they come
// in: by their function attribute, else by their names; one file nothing identifies keeps the
// order given for the whole set.
TEST(BoardTest, OpenedFilesStackByWhatTheyAre) {
  auto orders = [](const Board& b) {
    std::vector<std::pair<std::string, int>> out;
    for (const qvis::Layer& l : b.document().layers) out.emplace_back(l.name, l.order);
    return out;
  };
  using Orders = std::vector<std::pair<std::string, int>>;
  Board b;
  std::string error;
  ASSERT_TRUE(b.OpenFiles({Example("board.drl"), Example("board-F_Silk.gbr"), Example("board-Edge_Cuts.gbr"),
                           Example("board-F_Cu.gbr"), Example("board-B_Cu.gbr")},
                          &error))
      << error;
  EXPECT_EQ(orders(b), (Orders{{"board.drl", 4},
                               {"board-F_Silk.gbr", 2},
                               {"board-Edge_Cuts.gbr", 3},
                               {"board-F_Cu.gbr", 1},
                               {"board-B_Cu.gbr", 0}}));

  const fs::path dir = TempDir();
  const char* art = "%FSLAX46Y46*%\n%MOMM*%\n%ADD10C,0.2*%\nD10*\nX1Y1D02*\nX2Y2D01*\nM02*\n";
  WriteText(dir / "top.GTL", art);
  WriteText(dir / "bottom.gbl", art);
  WriteText(dir / "mask.GTS", art);
  WriteText(dir / "notes.gbr", art);
  WriteText(dir / "inner.G1", art);
  ASSERT_TRUE(b.OpenFiles({(dir / "mask.GTS").string(), (dir / "top.GTL").string(), (dir / "inner.G1").string(),
                           (dir / "bottom.gbl").string()},
                          &error))
      << error;
  EXPECT_EQ(orders(b), (Orders{{"mask.GTS", 3}, {"top.GTL", 2}, {"inner.G1", 1}, {"bottom.gbl", 0}}));
  ASSERT_TRUE(b.OpenFiles({(dir / "top.GTL").string(), (dir / "notes.gbr").string(), (dir / "bottom.gbl").string()},
                          &error))
      << error;
  EXPECT_EQ(orders(b), (Orders{{"top.GTL", 0}, {"notes.gbr", 1}, {"bottom.gbl", 2}}));
  fs::remove_all(dir);
}

TEST(BoardTest, SaveAndLoadGiveTheSameBoardAndAFailedSaveKeepsTheOldFile) {
  Board b;
  std::string error;
  ASSERT_TRUE(b.OpenFiles({Example("board-F_Cu.gbr"), Example("board.drl")}, &error)) << error;
  b.SetLayerColour(1, 0x123456);
  b.SetOpacity(0, 40);
  b.AddFigure(TrackFigure({{1, -2}, {5, -2}}, 0.25));
  const fs::path dir = TempDir();
  const std::string path = (dir / "b.qvb").string();
  b.SetActiveLayer(1);
  ASSERT_TRUE(b.Save(path, {-3.0, -40.0, 12.5, 0, 1}, &error)) << error;
  EXPECT_FALSE(b.modified());
  Board c;
  qvis::BoardView view;
  ASSERT_TRUE(c.Load(path, &view, &error)) << error;
  EXPECT_EQ(view.zoom, 12.5);
  EXPECT_EQ(view.view_y, -40.0);
  EXPECT_EQ(c.active_layer(), 1);
  ASSERT_EQ(c.document().layers.size(), 2u);
  EXPECT_EQ(c.document().layers[1].colour, 0x123456u);
  EXPECT_EQ(c.document().layers[1].kind, qvis::LayerKind::kDrill);
  // Opacity is how this editor shows a layer, not part of the board: not saved.
  EXPECT_EQ(b.opacity(0), 40);
  EXPECT_EQ(c.opacity(0), 100);
  EXPECT_EQ(c.document().layers[0].objects, b.document().layers[0].objects);
  EXPECT_EQ(c.document().layers[1].objects, b.document().layers[1].objects);

  // Saving into a directory that does not exist fails and says where.
  EXPECT_FALSE(b.Save((dir / "no" / "such.qvb").string(), {}, &error));
  EXPECT_NE(error.find("such.qvb"), std::string::npos);
  // A board file cut short is refused and the board kept.
  const std::string text = ReadText(path);
  WriteText(dir / "cut.qvb", text.substr(0, text.size() / 2));
  const qvis::ArtDocument kept = c.document();
  EXPECT_FALSE(c.Load((dir / "cut.qvb").string(), &view, &error));
  EXPECT_NE(error.find("cut.qvb: line"), std::string::npos) << error;
  EXPECT_EQ(c.document(), kept);
  EXPECT_EQ(c.path(), path);
  fs::remove_all(dir);
}

TEST(BoardTest, FiguresBecomeObjectsOfTheActiveLayerWithUndoAndRedo) {
  Board b;
  // Enter at the last click repeats the last vertex: that leg of no length is dropped.
  b.AddFigure(TrackFigure({{0, 0}, {10, 0}, {10, -5}, {10, -5}}, 0.25));
  const qvis::Layer l = b.document().layers[0];
  ASSERT_EQ(l.objects.size(), 2u);
  EXPECT_EQ(l.objects[1].start, (qvis::ArtPoint{10000000, 0}));
  EXPECT_EQ(l.objects[1].end, (qvis::ArtPoint{10000000, 5000000}));  // board y is up
  EXPECT_EQ(l.apertures.at(l.objects[0].aperture).size_x, 250000);
  b.AddFigure(Pad(20, -20, 1.6));
  EXPECT_EQ(b.document().layers[0].objects.size(), 3u);
  EXPECT_EQ(b.document().layers[0].objects[2].kind, ObjectKind::kFlash);
  EXPECT_TRUE(b.Undo());
  EXPECT_EQ(b.document().layers[0].objects.size(), 2u);
  EXPECT_TRUE(b.Undo());
  EXPECT_EQ(b.document().layers[0].objects.size(), 0u);
  EXPECT_FALSE(b.Undo());
  EXPECT_TRUE(b.Redo());
  EXPECT_TRUE(b.Redo());
  EXPECT_EQ(b.document().layers[0].objects.size(), 3u);
  EXPECT_FALSE(b.Redo());
}

TEST(BoardTest, SelectMoveCopyPasteAndDelete) {
  Board b;
  b.AddFigure(TrackFigure({{0, 0}, {10, 0}}, 0.5));
  b.AddFigure(Pad(20, -20, 2.0));
  // A click near the track (inside its width plus the tolerance) picks it; far away nothing.
  b.SelectAt(5, 0.3, 0.1, false);
  ASSERT_EQ(b.selection().size(), 1u);
  EXPECT_EQ(b.selection()[0], (ObjectRef{0, 0u}));
  b.SelectAt(5, 2.0, 0.1, false);
  EXPECT_TRUE(b.selection().empty());
  // A box picks what lies wholly inside.
  b.SelectBox(15, -25, 25, -15, false);
  ASSERT_EQ(b.selection().size(), 1u);
  EXPECT_EQ(b.selection()[0].index, 1u);
  b.SelectBox(-1, -25, 25, 1, false);
  EXPECT_EQ(b.selection().size(), 2u);

  b.SelectAt(20, -20, 0.1, false);
  b.MoveSelection(1.0, -2.0);
  EXPECT_EQ(b.document().layers[0].objects[1].end, (qvis::ArtPoint{21000000, 22000000}));
  b.Copy();
  b.Paste(5.0, 0.0);
  ASSERT_EQ(b.document().layers[0].objects.size(), 3u);
  EXPECT_EQ(b.document().layers[0].objects[2].end, (qvis::ArtPoint{26000000, 22000000}));
  EXPECT_EQ(b.selection()[0].index, 2u);
  b.SelectAt(5, 0, 0.1, false);
  b.DeleteSelection();
  EXPECT_EQ(b.document().layers[0].objects.size(), 2u);
  EXPECT_EQ(b.document().layers[0].objects[0].kind, ObjectKind::kFlash);
  b.Undo();
  b.Undo();
  b.Undo();
  EXPECT_EQ(b.document().layers[0].objects[1].end, (qvis::ArtPoint{20000000, 20000000}));
}

TEST(BoardTest, LayersReorderAndExportAsGerberAndSvg) {
  Board b;
  const int second = b.AddLayer("Second");
  b.SetActiveLayer(second);
  b.AddFigure(Pad(1, -1, 1.0));
  EXPECT_EQ(b.document().layers[1].objects.size(), 1u);
  EXPECT_EQ(b.document().layers[0].order, 0);
  b.MoveLayer(second, -1);
  EXPECT_EQ(b.document().layers[1].order, 0);
  EXPECT_EQ(b.document().layers[0].order, 1);
  b.MoveLayer(second, -1);  // already at the bottom
  EXPECT_EQ(b.document().layers[1].order, 0);

  const fs::path dir = TempDir();
  std::string error;
  ASSERT_TRUE(b.ExportGerber(1, (dir / "l.gbr").string(), &error)) << error;
  Board c;
  ASSERT_TRUE(c.OpenFiles({(dir / "l.gbr").string()}, &error)) << error;
  EXPECT_EQ(c.document().layers[0].objects, b.document().layers[1].objects);
  const std::string svg = b.SvgOfVisibleLayers();
  EXPECT_NE(svg.find("<svg"), std::string::npos);
  EXPECT_NE(svg.find("<path fill=\"#"), std::string::npos);
  b.SetLayerVisible(1, false);
  EXPECT_EQ(b.SvgOfVisibleLayers().find("<path"), std::string::npos);
  fs::remove_all(dir);
}

}  // namespace
