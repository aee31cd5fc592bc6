// The board in a drawing window: finished figures reach the board through the window's one
// figure notification and become objects (undoable); the board is drawn through the surface
// in the window's drawing hook, asserted on the pixels the user sees.
#include <algorithm>
#include <vector>

#include <gtest/gtest.h>

#include "qvis/artwork/board.h"
#include "qvis/artwork/board_window.h"
#include "qvis/compat/win32_names.h"
#include "qvis/design/design.h"
#include "qvis/design/design_objects.h"
#include "qvis/window/drawing_window.h"
#include "qvis/window/headless/headless_port.h"
#include "tests/window_test_util.h"

namespace {

using qvis::ArtBoard;
using qvis::ArtObject;
using qvis::kNmPerMm;
using qvis::ObjectKind;

class CountingSink final : public qvis::FigureListener {
 public:
  explicit CountingSink(qvis::FigureListener* next) : next_(next) {}
  void OnFigureFinished(const qvis::FinishedFigure& f) override {
    kinds.push_back(f.kind);
    next_->OnFigureFinished(f);
  }
  std::vector<qvis::FigureKind> kinds;

 private:
  qvis::FigureListener* next_;
};

class BoardWindow : public CQVIS_Wnd {
 public:
  ArtBoard board;
  // 0: the board is drawn whole; otherwise in areas of tile x (tile + 3) pixels, the last
  // ones reaching past the frame, and only those of `area` when it is set.
  int tile = 0;
  CRect area{0, 0, 1 << 20, 1 << 20};
  void OnDrawHost(CQVIS_GDI* surface, qvis::HDC dc) override {
    if (tile == 0) {
      qvis::DrawBoard(board, surface, dc);
      return;
    }
    // CRect's sides are LONG, which is not int on every platform.
    const int left = static_cast<int>(area.left), top = static_cast<int>(area.top);
    const int right = static_cast<int>(area.right), bottom = static_cast<int>(area.bottom);
    for (int y = top; y < std::min(bottom, 400); y += tile + 3) {
      for (int x = left; x < std::min(right, 600); x += tile) {
        qvis::DrawBoardArea(board, surface, dc, x, y, std::min(x + tile, right),
                            std::min(y + tile + 3, bottom));
      }
    }
  }
};

// A 300 x 200 window at 10 px per mm showing world (-5, -5) at its top-left, grid and cursor off.
class BoardWindowTest : public testing::Test, protected WindowDriver {
 protected:
  BoardWindowTest() : port_(300, 200), sink_(&wnd_.board, 1e6), counter_(&sink_) {
    qvis::Layer top;
    top.name = "top";
    top.colour = 0x00FF00;
    wnd_.board = ArtBoard(qvis::ArtDocument{{top}});
    wnd_.SetFigureListener(&counter_);
    wnd_.Create(&port_);
    StartQuietView(&port_, wnd_.GetDesign(), -5.0, -5.0, 10.0);
  }
  COLORREF At(double x, double y) {
    port_.PaintIfNeeded();
    const CPoint p = Px(x, y);
    return port_.FrontPixel(p.x, p.y);
  }

  qvis::HeadlessPort port_;
  BoardWindow wnd_;
  qvis::BoardFigureSink sink_;
  CountingSink counter_;
};

constexpr COLORREF kGreen = 0x00FF00;  // COLORREF of 0x00FF00 is green either way round

TEST_F(BoardWindowTest, ATrackBecomesObjectsOnceAndUndoTakesItAway) {
  wnd_.OnDrawLine();
  d_->m_pDrawLineCmd->SetWidth(1.0, false);
  Click(0.0, 0.0);
  Click(10.0, 0.0);  // bend mode: straight, one leg
  Move(10.0, 8.0);
  port_.Key(VK_RETURN);
  ASSERT_EQ(counter_.kinds.size(), 1u);
  EXPECT_EQ(counter_.kinds[0], qvis::FigureKind::kTrack);
  // Enter ends the track at the mouse: two legs, two objects.
  ASSERT_EQ(wnd_.board.LiveCount(), 2);
  EXPECT_EQ(wnd_.board.object({0, 1}).end, (qvis::ArtPoint{10 * kNmPerMm, -8 * kNmPerMm}));
  const ArtObject& t = wnd_.board.object({0, 0});
  EXPECT_EQ(t.kind, ObjectKind::kTrack);
  EXPECT_EQ(t.start, (qvis::ArtPoint{0, 0}));
  EXPECT_EQ(t.end, (qvis::ArtPoint{10 * kNmPerMm, 0}));
  EXPECT_EQ(wnd_.board.layer(0).apertures.at(t.aperture).size_x, kNmPerMm);
  // Moving the mouse afterwards hands over nothing more.
  Move(3.0, 3.0);
  Move(4.0, 4.0);
  EXPECT_EQ(counter_.kinds.size(), 1u);
  // The board draws it in the layer's colour under the track, not beside it.
  EXPECT_EQ(At(5.0, 0.0), kGreen);
  EXPECT_EQ(At(5.0, 0.3), kGreen);
  EXPECT_EQ(At(5.0, 1.5), 0u);
  EXPECT_EQ(At(10.0, 4.0), kGreen);
  wnd_.board.Undo();  // both legs: one figure is one step
  port_.RedrawNow();
  EXPECT_EQ(wnd_.board.LiveCount(), 0);
  EXPECT_EQ(At(5.0, 0.0), 0u);
}

TEST_F(BoardWindowTest, AFlatEndedTrackKeepsItsSquareEndsOnTheBoard) {
  wnd_.OnDrawLine();
  d_->m_pDrawLineCmd->SetWidth(2.0, false);
  d_->m_pDrawLineCmd->SetEndCapStyle(PS_ENDCAP_FLAT);
  Click(0.0, 0.0);
  Click(8.0, 0.0);
  Move(8.0, 6.0);
  port_.Key(VK_RETURN);
  ASSERT_EQ(wnd_.board.LiveCount(), 2);
  EXPECT_EQ(wnd_.board.object({0, 0}).kind, ObjectKind::kRegion);
  EXPECT_EQ(wnd_.board.object({0, 1}).kind, ObjectKind::kRegion);
  d_->AllDeactiveCmd();
  d_->m_pCursorMgr->Off();
  port_.RedrawNow();
  // The corners of both ends, outside the discs round ends would have drawn, and the outer
  // corner of the bend.
  EXPECT_EQ(At(-0.9, -0.9), kGreen);
  EXPECT_EQ(At(-0.9, 0.9), kGreen);
  EXPECT_EQ(At(8.9, 6.9), kGreen);
  EXPECT_EQ(At(8.9, -0.9), kGreen);
  EXPECT_EQ(At(-1.2, 0.0), 0u);  // half the width beyond the end, no further
  EXPECT_EQ(At(4.0, 1.2), 0u);
  wnd_.board.Undo();  // one figure, one step
  EXPECT_EQ(wnd_.board.LiveCount(), 0);
}

TEST_F(BoardWindowTest, PadsRectanglesAndCirclesBecomeObjects) {
  d_->AllDeactiveCmd();
  CQVIS_DrawFlashCircleCmd* pad = d_->m_pDrawFlashCircleCmd;
  pad->SetDiameter(2.0);
  pad->Active();
  Click(3.0, 4.0);
  ASSERT_EQ(wnd_.board.LiveCount(), 1);
  const ArtObject& f = wnd_.board.object({0, 0});
  EXPECT_EQ(f.kind, ObjectKind::kFlash);
  EXPECT_EQ(f.end, (qvis::ArtPoint{3 * kNmPerMm, -4 * kNmPerMm}));  // board y is up
  EXPECT_EQ(wnd_.board.layer(0).apertures.at(f.aperture).size_x, 2 * kNmPerMm);
  port_.Key(VK_ESCAPE);

  wnd_.OnDrawRectangle();
  Click(10.0, 2.0);
  Click(14.0, 5.0);
  ASSERT_EQ(wnd_.board.LiveCount(), 2);
  EXPECT_EQ(wnd_.board.object({0, 1}).kind, ObjectKind::kRegion);
  port_.Key(VK_ESCAPE);
  d_->AllDeactiveCmd();
  d_->m_pCursorMgr->Off();
  port_.RedrawNow();
  EXPECT_EQ(At(12.0, 3.5), kGreen);   // inside the rectangle
  EXPECT_EQ(At(3.0, 4.0), kGreen);    // the pad's centre
  EXPECT_EQ(At(3.0, 5.6), 0u);        // beyond its radius
  EXPECT_EQ(counter_.kinds.size(), 2u);
  // One undo step per figure.
  wnd_.board.Undo();
  EXPECT_EQ(wnd_.board.LiveCount(), 1);
}

TEST_F(BoardWindowTest, ClearObjectsEraseOnlyTheirLayerAndSelectionShows) {
  qvis::Layer under;
  under.name = "under";
  under.colour = 0xFF0000;
  under.order = -1;
  qvis::Aperture big;
  big.kind = qvis::ApertureKind::kRectangle;
  big.size_x = big.size_y = 8 * kNmPerMm;
  under.apertures[10] = big;
  ArtObject o;
  o.kind = ObjectKind::kFlash;
  o.aperture = 10;
  o.end = qvis::WorldToBoard(5.0, 5.0, 1e6);
  under.objects.push_back(o);
  const int li = wnd_.board.AddLayer(under);
  // On the top layer: a dark pad over the same place, and a clear one cutting its middle.
  qvis::Aperture mid = big;
  mid.size_x = mid.size_y = 6 * kNmPerMm;
  const int dark = wnd_.board.EnsureAperture(0, mid);
  mid.size_x = mid.size_y = 2 * kNmPerMm;
  const int hole = wnd_.board.EnsureAperture(0, mid);
  o.aperture = dark;
  wnd_.board.AddObject(0, o);
  o.aperture = hole;
  o.polarity = qvis::Polarity::kClear;
  wnd_.board.AddObject(0, o);
  port_.RedrawNow();
  EXPECT_EQ(At(5.0, 5.0), 0x0000FFu);   // the hole shows "under" (red, as a COLORREF 0x0000FF)
  EXPECT_EQ(At(7.0, 5.0), kGreen);      // top over under
  EXPECT_EQ(At(8.5, 5.0), 0x0000FFu);   // only under
  EXPECT_EQ(At(9.5, 5.0), 0u);          // nothing
  wnd_.board.Select({{li, 0}});
  port_.RedrawNow();
  EXPECT_EQ(At(8.5, 5.0), 0x8080FFu);   // red with white at half
}

// A board drawn area by area is, pixel for pixel, the board drawn whole, at a zoom with no
// whole number of nanometres per pixel; pixels outside the areas drawn stay as they were.
TEST_F(BoardWindowTest, DrawingInAreasGivesTheWholeFramesPixels) {
  c_->SetZoom(7.3);
  c_->SetScreenViewPosition(-3.17, -4.41);
  qvis::Aperture round;
  round.size_x = kNmPerMm * 13 / 10;
  const int r = wnd_.board.EnsureAperture(0, round);
  round.kind = qvis::ApertureKind::kObround;
  round.size_x = 3 * kNmPerMm;
  round.size_y = kNmPerMm * 17 / 10;
  const int ob = wnd_.board.EnsureAperture(0, round);
  for (int i = 0; i < 12; ++i) {
    ArtObject o;
    o.kind = i % 3 == 2 ? ObjectKind::kFlash : ObjectKind::kTrack;
    o.aperture = i % 3 == 2 ? ob : r;
    o.start = qvis::WorldToBoard(1.1 * i, 0.7 * i, 1e6);
    o.end = qvis::WorldToBoard(30.0 - 2.3 * i, 2.9 * i + 0.4, 1e6);
    wnd_.board.AddObject(0, o);
  }
  ArtObject arc;
  arc.kind = ObjectKind::kArc;
  arc.aperture = r;
  arc.centre = qvis::WorldToBoard(15.0, 12.0, 1e6);
  arc.start = arc.end = qvis::WorldToBoard(22.0, 12.0, 1e6);
  wnd_.board.AddObject(0, arc);
  auto frame = [&] {
    port_.RedrawNow();
    std::vector<COLORREF> px;
    for (int y = 0; y < 200; ++y) {
      for (int x = 0; x < 300; ++x) px.push_back(port_.FrontPixel(x, y));
    }
    return px;
  };
  const std::vector<COLORREF> whole = frame();
  EXPECT_GT(std::count(whole.begin(), whole.end(), kGreen), 3000);
  for (int tile : {1, 37, 64, 299}) {
    wnd_.tile = tile;
    EXPECT_EQ(frame(), whole) << "tiles of " << tile;
  }
  wnd_.tile = 50;
  wnd_.area = CRect(-20, 30, 120, 90);
  const std::vector<COLORREF> part = frame();
  for (int y = 0; y < 200; ++y) {
    for (int x = 0; x < 300; ++x) {
      const std::size_t i = static_cast<std::size_t>(y) * 300 + x;
      const bool inside = x < 120 && y >= 30 && y < 90;
      ASSERT_EQ(part[i], inside ? whole[i] : 0u) << x << "," << y;
    }
  }
}

}  // namespace
