#include "qvis/artwork/board.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "qvis/artwork/render.h"

namespace qvis {
namespace {

constexpr Coord kMm = kNmPerMm;

Aperture Round(Coord d) {
  Aperture a;
  a.kind = ApertureKind::kCircle;
  a.size_x = d;
  return a;
}

Aperture Rect(Coord w, Coord h) {
  Aperture a;
  a.kind = ApertureKind::kRectangle;
  a.size_x = w;
  a.size_y = h;
  return a;
}

ArtObject Track(Coord x0, Coord y0, Coord x1, Coord y1, int ap = 10) {
  ArtObject o;
  o.kind = ObjectKind::kTrack;
  o.aperture = ap;
  o.start = {x0, y0};
  o.end = {x1, y1};
  return o;
}

ArtObject Flash(Coord x, Coord y, int ap, Polarity p = Polarity::kDark) {
  ArtObject o;
  o.kind = ObjectKind::kFlash;
  o.aperture = ap;
  o.end = {x, y};
  o.polarity = p;
  return o;
}

ArtObject Square(Coord x0, Coord y0, Coord x1, Coord y1, Polarity p = Polarity::kDark) {
  ArtObject o;
  o.kind = ObjectKind::kRegion;
  o.polarity = p;
  o.contour.start = {x0, y0};
  for (ArtPoint p : {ArtPoint{x1, y0}, ArtPoint{x1, y1}, ArtPoint{x0, y1}, ArtPoint{x0, y0}}) {
    ContourSegment s;
    s.end = p;
    o.contour.segments.push_back(s);
  }
  return o;
}

Layer MakeLayer(const std::string& name, std::uint32_t colour) {
  Layer l;
  l.name = name;
  l.colour = colour;
  l.apertures[10] = Round(1 * kMm);
  l.apertures[11] = Rect(2 * kMm, 1 * kMm);
  return l;
}

// A board of two layers with a grid of tracks and flashes, 1 mm apart.
ArtDocument GridDoc(int n) {
  ArtDocument d;
  d.layers.push_back(MakeLayer("top", 0xC83434));
  d.layers.push_back(MakeLayer("bottom", 0x3434C8));
  d.layers[1].order = 1;
  for (int i = 0; i < n; ++i) {
    for (int j = 0; j < n; ++j) {
      const Coord x = i * 3 * kMm, y = j * 3 * kMm;
      d.layers[0].objects.push_back(Track(x, y, x + 2 * kMm, y));
      d.layers[1].objects.push_back(Flash(x, y, 11));
    }
  }
  return d;
}

// The objects an area shows, by value, sorted: comparable between two boards whatever their
// slot numbers.
std::vector<std::pair<int, ArtPoint>> Shown(const ArtBoard& b, const ArtBox& area) {
  std::vector<std::pair<int, ArtPoint>> out;
  for (int li = 0; li < b.LayerCount(); ++li) {
    for (std::uint32_t i : b.Visible(li, area)) {
      EXPECT_TRUE(b.IsLive({li, i}));
      const ArtObject& o = b.object({li, i});
      out.push_back({li * 1000 + o.aperture, o.kind == ObjectKind::kRegion ? o.contour.start : o.end});
    }
  }
  std::sort(out.begin(), out.end(), [](const auto& a, const auto& c) {
    return std::tie(a.first, a.second.x, a.second.y) < std::tie(c.first, c.second.x, c.second.y);
  });
  return out;
}

TEST(ArtBoardIndex, QueriesMatchAFreshBoardAfterRandomEditsUndoAndRedo) {
  ArtBoard board(GridDoc(12));
  std::mt19937 rng(7);
  auto pick = [&](int layer) -> ObjectRef {
    const auto n = static_cast<std::uint32_t>(board.layer(layer).objects.size());
    return {layer, std::uniform_int_distribution<std::uint32_t>(0, n - 1)(rng)};
  };
  for (int step = 0; step < 300; ++step) {
    const int layer = static_cast<int>(rng() % 2);
    switch (rng() % 7) {
      case 0: board.AddObject(layer, Track(0, 0, static_cast<Coord>(rng() % 40) * kMm, 5 * kMm)); break;
      case 1: board.DeleteObjects({pick(layer), pick(layer)}); break;
      case 2: board.MoveObjects({pick(layer)}, static_cast<Coord>(rng() % 9) * kMm - 4 * kMm, kMm); break;
      case 3: board.SetWidth({pick(0)}, static_cast<Coord>(1 + rng() % 5) * kMm); break;
      case 4: board.SetLayer({pick(layer)}, 1 - layer); break;
      case 5: board.Undo(); break;
      case 6: board.Redo(); break;
    }
    if (step % 25 == 0 || step == 299) {
      ArtBoard fresh(board.Document());
      ASSERT_EQ(fresh.LiveCount(), board.LiveCount());
      for (int q = 0; q < 6; ++q) {
        const Coord x = static_cast<Coord>(rng() % 40) * kMm, y = static_cast<Coord>(rng() % 40) * kMm;
        const ArtBox area{x, y, x + static_cast<Coord>(rng() % 12) * kMm, y + 4 * kMm};
        ASSERT_EQ(Shown(board, area), Shown(fresh, area)) << "step " << step;
      }
    }
  }
  // Undo everything: the board is the one we started with, and its index agrees.
  while (board.CanUndo()) board.Undo();
  EXPECT_EQ(board.Document(), GridDoc(12));
  ArtBoard fresh(GridDoc(12));
  const ArtBox all{-10 * kMm, -10 * kMm, 60 * kMm, 60 * kMm};
  EXPECT_EQ(Shown(board, all), Shown(fresh, all));
}

TEST(ArtBoardIndex, BoundsIncludeTheApertureAndAnArcsBulge) {
  ArtDocument d;
  d.layers.push_back(MakeLayer("l", 0));
  d.layers[0].objects.push_back(Track(0, 0, 10 * kMm, 0));  // round 1 mm
  d.layers[0].objects.push_back(Flash(20 * kMm, 0, 11));    // 2 x 1 mm
  ArtObject arc;
  arc.kind = ObjectKind::kArc;
  arc.aperture = 10;
  arc.start = {5 * kMm, 0};
  arc.end = {-5 * kMm, 0};
  arc.centre = {0, 0};
  arc.direction = ArcDirection::kCounterClockwise;  // the upper half
  d.layers[0].objects.push_back(arc);
  ArtBoard b(d);
  EXPECT_EQ(b.Bounds({0, 0}), (ArtBox{-kMm / 2, -kMm / 2, 10 * kMm + kMm / 2, kMm / 2}));
  EXPECT_EQ(b.Bounds({0, 1}), (ArtBox{19 * kMm, -kMm / 2, 21 * kMm, kMm / 2}));
  const ArtBox a = b.Bounds({0, 2});
  EXPECT_EQ(a.min_y, -kMm / 2);
  EXPECT_NEAR(static_cast<double>(a.max_y), 5.5 * kMm, 2.0);
  EXPECT_EQ(a.min_x, -5 * kMm - kMm / 2);
}

TEST(ArtBoardHit, PointTestsTheOutlineWithTolerance) {
  ArtDocument d;
  d.layers.push_back(MakeLayer("a", 0));
  d.layers.push_back(MakeLayer("b", 0));
  d.layers[1].order = 1;
  d.layers[0].objects.push_back(Track(0, 0, 10 * kMm, 0));         // 1 mm wide
  d.layers[1].objects.push_back(Flash(5 * kMm, 0, 11));            // 2 x 1 mm on top
  d.layers[0].objects.push_back(Square(20 * kMm, 0, 30 * kMm, 10 * kMm));
  ArtBoard b(d);
  // Inside the track only (the flash spans x 4..6).
  EXPECT_EQ(b.HitPoint(2 * kMm, 400000, 0), (std::vector<ObjectRef>{{0, 0}}));
  EXPECT_TRUE(b.HitPoint(2 * kMm, 600000, 0).empty());
  EXPECT_EQ(b.HitPoint(2 * kMm, 600000, 150000).size(), 1u);
  // Round end: the corner of the track's box is outside the round cap.
  EXPECT_TRUE(b.HitPoint(10 * kMm + 450000, 450000, 0).empty());
  // Both: the top layer's flash first.
  EXPECT_EQ(b.HitPoint(5 * kMm, 0, 0), (std::vector<ObjectRef>{{1, 0}, {0, 0}}));
  // A region is hit inside, not only on its edge.
  EXPECT_EQ(b.HitPoint(25 * kMm, 5 * kMm, 0), (std::vector<ObjectRef>{{0, 1}}));
  // Hidden layers are not hit; deleted objects neither.
  b.SetLayerProperties(1, "b", 0, false, 1, "");
  EXPECT_EQ(b.HitPoint(5 * kMm, 0, 0), (std::vector<ObjectRef>{{0, 0}}));
  b.DeleteObjects({{0, 0}});
  EXPECT_TRUE(b.HitPoint(5 * kMm, 0, 0).empty());
  b.Undo();
  b.Undo();
  EXPECT_EQ(b.HitPoint(5 * kMm, 0, 0).size(), 2u);
}

TEST(ArtBoardHit, BoxInsideAndIntersecting) {
  ArtDocument d;
  d.layers.push_back(MakeLayer("a", 0));
  d.layers[0].objects.push_back(Track(0, 0, 10 * kMm, 0));
  d.layers[0].objects.push_back(Square(20 * kMm, 0, 30 * kMm, 10 * kMm));
  // A diagonal track whose box meets the query box but whose outline does not.
  d.layers[0].objects.push_back(Track(40 * kMm, 0, 50 * kMm, 10 * kMm));
  ArtBoard b(d);
  const ArtBox around_track{-kMm, -kMm, 11 * kMm, kMm};
  EXPECT_EQ(b.HitBox(around_track, BoxHit::kInside), (std::vector<ObjectRef>{{0, 0}}));
  const ArtBox half_track{5 * kMm, -kMm, 15 * kMm, kMm};
  EXPECT_TRUE(b.HitBox(half_track, BoxHit::kInside).empty());
  EXPECT_EQ(b.HitBox(half_track, BoxHit::kIntersects), (std::vector<ObjectRef>{{0, 0}}));
  // Box wholly inside the region: it meets it though no edge crosses.
  EXPECT_EQ(b.HitBox({24 * kMm, 4 * kMm, 26 * kMm, 6 * kMm}, BoxHit::kIntersects),
            (std::vector<ObjectRef>{{0, 1}}));
  // Lower-right corner of the diagonal's box: the line passes far from it.
  EXPECT_TRUE(b.HitBox({48 * kMm, 0, 50 * kMm, 2 * kMm}, BoxHit::kIntersects).empty());
}

class Recorder final : public BoardListener {
 public:
  void OnBoardChanged(const ArtBox& area) override {
    ++calls;
    last = area;
  }
  int calls = 0;
  ArtBox last;
};

TEST(ArtBoardUndo, EachEditRevertsAndGroupsAreOneStep) {
  ArtBoard b(GridDoc(2));
  const ArtDocument before = b.Document();
  Recorder rec;
  b.AddListener(&rec);

  b.MoveObjects({{0, 0}}, kMm, 2 * kMm);
  EXPECT_EQ(b.object({0, 0}).start, (ArtPoint{kMm, 2 * kMm}));
  EXPECT_EQ(rec.calls, 1);
  EXPECT_FALSE(rec.last.IsEmpty());
  b.SetWidth({{0, 1}}, 3 * kMm);
  const int code = b.object({0, 1}).aperture;
  EXPECT_EQ(b.layer(0).apertures.at(code), Round(3 * kMm));
  b.SetAperture({{1, 0}}, 10);
  const std::vector<ObjectRef> moved = b.SetLayer({{1, 1}}, 0);
  ASSERT_EQ(moved.size(), 1u);
  EXPECT_EQ(moved[0].layer, 0);
  EXPECT_FALSE(b.IsLive({1, 1}));
  // The flash kept its shape: the 2 x 1 rectangle is layer 0's aperture 11 already.
  EXPECT_EQ(b.object(moved[0]).aperture, 11);
  b.BeginGroup("three");
  for (int i = 0; i < 3; ++i) b.AddObject(1, Flash(i * kMm, 50 * kMm, 10));
  b.EndGroup();
  EXPECT_EQ(b.UndoName(), "three");
  EXPECT_EQ(b.LiveCount(), 8 - 1 + 1 + 3);
  const ArtDocument after = b.Document();

  b.Undo();  // the group: all three at once
  EXPECT_EQ(b.LiveCount(), 8);
  for (int i = 0; i < 4; ++i) b.Undo();
  EXPECT_FALSE(b.CanUndo());
  EXPECT_EQ(b.Document(), before);  // the added aperture went too
  for (int i = 0; i < 5; ++i) b.Redo();
  EXPECT_EQ(b.Document(), after);
  // A new edit drops what could be redone.
  b.Undo();
  b.DeleteObjects({{0, 0}});
  EXPECT_FALSE(b.CanRedo());
  b.RemoveListener(&rec);
}

TEST(ArtBoardUndo, CleanPointFollowsUndoAndIsLostWhenItsBranchIs) {
  ArtBoard b(GridDoc(2));
  EXPECT_FALSE(b.IsModified());
  b.MoveObjects({{0, 0}}, kMm, 0);
  EXPECT_TRUE(b.IsModified());
  b.MarkClean();  // saved here
  EXPECT_FALSE(b.IsModified());
  b.MoveObjects({{0, 0}}, kMm, 0);
  EXPECT_TRUE(b.IsModified());
  b.Undo();
  EXPECT_FALSE(b.IsModified());
  b.Undo();
  EXPECT_TRUE(b.IsModified());
  b.Redo();
  EXPECT_FALSE(b.IsModified());
  b.Undo();
  b.DeleteObjects({{0, 1}});  // the saved state is now unreachable
  EXPECT_TRUE(b.IsModified());
  b.Undo();
  EXPECT_TRUE(b.IsModified());
  // An empty group is no step: it neither lands on the undo stack nor drops the redo one.
  b.BeginGroup("nothing");
  b.MoveObjects({{0, 0}}, 0, 0);
  b.EndGroup();
  EXPECT_TRUE(b.CanRedo());
  EXPECT_NE(b.UndoName(), "nothing");
}

// --- drawing ---

ArtView Frame(int w, int h, double px_per_mm) {
  ArtView v;
  v.dpi = px_per_mm * 25.4;
  v.width = w;
  v.height = h;
  v.background = 0x000000;
  return v;
}

TEST(ArtBoardDraw, IndexedDrawingEqualsDrawingEveryObject) {
  ArtBoard b(GridDoc(10));
  b.DeleteObjects({{0, 3}, {1, 7}});
  b.MoveObjects({{0, 5}}, 0, 2 * kMm);
  b.AddObject(0, Square(kMm, kMm, 4 * kMm, 2 * kMm, Polarity::kClear));
  ArtView v = Frame(120, 90, 4.0);
  v.origin_x = 2 * kMm;
  v.origin_y = kMm;
  ComposeOptions opt;
  opt.show_selection = false;
  const gdi::PixelImage indexed = RenderBoard(b, v, opt);
  const gdi::PixelImage all = RenderArtwork(b.Document(), v);
  ASSERT_EQ(indexed.pixels.size(), all.pixels.size());
  EXPECT_TRUE(indexed.pixels == all.pixels);
  int inked = 0;
  for (std::uint32_t p : indexed.pixels) inked += p != 0;
  EXPECT_GT(inked, 1000);
}

TEST(ArtBoardDraw, ClearErasesOnlyItsOwnLayerAndLayersGoInOrder) {
  ArtDocument d;
  d.layers.push_back(MakeLayer("under", 0xFF0000));
  d.layers.push_back(MakeLayer("over", 0x00FF00));
  d.layers[1].order = 1;
  d.layers[0].objects.push_back(Square(0, 0, 10 * kMm, 10 * kMm));
  d.layers[1].objects.push_back(Square(0, 0, 10 * kMm, 5 * kMm));
  d.layers[1].objects.push_back(Square(0, 0, 5 * kMm, 5 * kMm, Polarity::kClear));
  // A dark object after the clear one is not erased by it.
  d.layers[1].objects.push_back(Square(kMm, kMm, 2 * kMm, 2 * kMm));
  ArtBoard b(d);
  const ArtView v = Frame(10, 10, 1.0);  // 1 px per mm, y up: row 9 is board y 0..1 mm
  const gdi::PixelImage img = RenderBoard(b, v);
  EXPECT_EQ(img.At(7, 7), 0x00FF00u);  // over, dark
  EXPECT_EQ(img.At(2, 7), 0xFF0000u);  // cleared in "over": "under" shows, not background
  EXPECT_EQ(img.At(1, 8), 0x00FF00u);  // dark after the clear
  EXPECT_EQ(img.At(2, 2), 0xFF0000u);  // only "under"
  // Swap the order: "under" now covers everything it has.
  b.SetLayerProperties(0, "under", 0xFF0000, true, 5, "");
  EXPECT_EQ(RenderBoard(b, v).At(7, 7), 0xFF0000u);
  // Half-transparent layers blend.
  ComposeOptions half;
  half.opacity = 128;
  const gdi::PixelImage blended = RenderBoard(b, v, half);
  EXPECT_EQ(blended.At(2, 2), 0x800000u);
}

TEST(ArtBoardDraw, SelectionIsHighlighted) {
  ArtDocument d;
  d.layers.push_back(MakeLayer("l", 0x0000FF));
  d.layers[0].objects.push_back(Square(0, 0, 4 * kMm, 4 * kMm));
  d.layers[0].objects.push_back(Square(6 * kMm, 0, 10 * kMm, 4 * kMm));
  ArtBoard b(d);
  b.Select({{0, 1}});
  const gdi::PixelImage img = RenderBoard(b, Frame(10, 4, 1.0));
  EXPECT_EQ(img.At(1, 1), 0x0000FFu);
  EXPECT_EQ(img.At(8, 1), 0x8080FFu);  // white at half over blue
  EXPECT_EQ(img.At(5, 1), 0x000000u);
  b.DeleteObjects({{0, 1}});
  EXPECT_TRUE(b.selection().empty());
}

}  // namespace
}  // namespace qvis
