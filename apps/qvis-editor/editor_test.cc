// Tests of the editor window on Qt's offscreen platform: Qt events and the menus' actions in,
// the board, the status bar and the canvas's pixels out.
#include <QAction>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QSpinBox>
#include <QApplication>
#include <QImage>
#include <QKeyEvent>
#include <QListWidget>
#include <QPushButton>
#include <QMouseEvent>
#include <QStandardPaths>
#include <QWheelEvent>
#include <cstdlib>
#include <filesystem>
#include <set>
#include <tuple>
#include <vector>
#include <fstream>

#include <gtest/gtest.h>

#include "apps/qvis-editor/editor_window.h"
#include "qvis/design/design.h"
#include "qvis/design/design_objects.h"

namespace {

using qvis::editor::EditorWindow;
namespace fs = std::filesystem;

void SendMouse(QWidget* w, QEvent::Type type, QPoint p, Qt::MouseButton button,
               Qt::MouseButtons buttons, Qt::KeyboardModifiers mods = Qt::NoModifier) {
  QMouseEvent event(type, QPointF(p), QPointF(w->mapToGlobal(p)), button, buttons, mods);
  QCoreApplication::sendEvent(w, &event);
}

void Click(QWidget* w, QPoint p) {
  SendMouse(w, QEvent::MouseMove, p, Qt::NoButton, Qt::NoButton);
  SendMouse(w, QEvent::MouseButtonPress, p, Qt::LeftButton, Qt::LeftButton);
  SendMouse(w, QEvent::MouseButtonRelease, p, Qt::LeftButton, Qt::NoButton);
}

void Drag(QWidget* w, QPoint from, QPoint to) {
  SendMouse(w, QEvent::MouseMove, from, Qt::NoButton, Qt::NoButton);
  SendMouse(w, QEvent::MouseButtonPress, from, Qt::LeftButton, Qt::LeftButton);
  SendMouse(w, QEvent::MouseMove, (from + to) / 2, Qt::NoButton, Qt::LeftButton);
  SendMouse(w, QEvent::MouseMove, to, Qt::NoButton, Qt::LeftButton);
  SendMouse(w, QEvent::MouseButtonRelease, to, Qt::LeftButton, Qt::NoButton);
}

void Key(QWidget* w, int key, Qt::KeyboardModifiers mods = Qt::NoModifier) {
  QKeyEvent press(QEvent::KeyPress, key, mods);
  QCoreApplication::sendEvent(w, &press);
  QKeyEvent release(QEvent::KeyRelease, key, mods);
  QCoreApplication::sendEvent(w, &release);
}

std::string Example(const char* name) {
  return std::string(QVIS_SOURCE_DIR) + "/examples/gerber/" + name;
}

class EditorTest : public testing::Test {
 protected:
  EditorTest() {
    w_.SetQuiet(true);
    w_.SetCloseAnswerForTests(1);
    w_.resize(1000, 700);
    w_.show();
    QCoreApplication::processEvents();
    port_ = w_.port();
    d_ = w_.design();
    // A known view: 10 px per mm, the screen's top left at world (0, 0), snap 1 mm.
    d_->m_pCoords->SetZoom(10.0);
    d_->m_pCoords->SetScreenViewPosition(0.0, 0.0);
    w_.SetSnap(1.0);
    w_.Refresh();
    QCoreApplication::processEvents();
  }
  void Trigger(const char* name) {
    QAction* a = w_.Action(name);
    ASSERT_NE(a, nullptr) << name;
    a->trigger();
  }
  std::size_t Objects(int layer = 0) { return w_.board().document().layers[static_cast<std::size_t>(layer)].objects.size(); }

  EditorWindow w_;
  qvis::QtWindowPort* port_ = nullptr;
  CQVIS_Design* d_ = nullptr;
};

TEST_F(EditorTest, TrackEndsAtItsLastClickOnEnterAndIsDrawnOnTheCanvas) {
  Trigger("track");
  Click(port_, QPoint(100, 100));
  Click(port_, QPoint(300, 100));
  SendMouse(port_, QEvent::MouseMove, QPoint(350, 240), Qt::NoButton, Qt::NoButton);
  Key(port_, Qt::Key_Return);
  ASSERT_EQ(Objects(), 1u);
  // The crosshair follows the mouse; it is moved off the track to look at its pixels.
  SendMouse(port_, QEvent::MouseMove, QPoint(500, 400), Qt::NoButton, Qt::NoButton);
  const qvis::ArtObject t = w_.board().document().layers[0].objects[0];
  EXPECT_EQ(t.start, (qvis::ArtPoint{10000000, -10000000}));
  EXPECT_EQ(t.end, (qvis::ArtPoint{30000000, -10000000}));  // not at the cursor
  // A new track is 0.25 mm wide.
  EXPECT_EQ(w_.board().document().layers[0].apertures.at(t.aperture).size_x, 250000);
  port_->RedrawNow();
  const QImage shown = port_->grab().toImage();
  const QRgb colour = w_.board().document().layers[0].colour;
  EXPECT_EQ(shown.pixel(200, 100) & 0xFFFFFF, colour & 0xFFFFFF);
  EXPECT_NE(shown.pixel(200, 110) & 0xFFFFFF, colour & 0xFFFFFF);
  EXPECT_NE(shown.pixel(330, 170) & 0xFFFFFF, colour & 0xFFFFFF);
}

int DifferingPixels(const QImage& a, const QImage& b);

qvis::ArtBox ContourBox(const qvis::ArtObject& o) {
  qvis::ArtBox b;
  b.Add(o.contour.start.x, o.contour.start.y);
  for (const auto& seg : o.contour.segments) b.Add(seg.end.x, seg.end.y);
  return b;
}

// Values set in the properties panel reach the board: the next track's end cap and bend, the
// next pad's size, hole and side count, and the selected pads and tracks; the rubber band is
// drawn with the new values at once.
TEST_F(EditorTest, PropertyPanelValuesReachTheNextFigureAndTheSelection) {
  auto combo = [&](const char* name) { return w_.findChild<QComboBox*>(name); };
  auto length = [&](const char* name) { return w_.findChild<QDoubleSpinBox*>(name); };
  ASSERT_NE(combo("end-cap"), nullptr);
  const auto& art = w_.board().art();
  auto last = [&] { return art.object({0, static_cast<std::uint32_t>(art.layer(0).objects.size() - 1)}); };
  auto aperture = [&](const qvis::ArtObject& o) { return art.layer(0).apertures.at(o.aperture); };

  Trigger("track");
  length("width")->setValue(1.0);
  // Flat and square ends: the line command paints a square of the width swept along each
  // segment, so the board keeps that area, half the width past each click.
  combo("end-cap")->setCurrentIndex(2);  // flat
  Click(port_, QPoint(100, 100));
  Click(port_, QPoint(200, 100));
  Key(port_, Qt::Key_Return);
  ASSERT_EQ(art.LiveCount(), 1);
  EXPECT_EQ(last().kind, qvis::ObjectKind::kRegion);
  EXPECT_EQ(ContourBox(last()), (qvis::ArtBox{9500000, -10500000, 20500000, -9500000}));
  combo("end-cap")->setCurrentIndex(1);  // square
  Click(port_, QPoint(100, 150));
  Click(port_, QPoint(200, 150));
  Key(port_, Qt::Key_Return);
  EXPECT_EQ(ContourBox(last()), (qvis::ArtBox{9500000, -15500000, 20500000, -14500000}));
  combo("end-cap")->setCurrentIndex(0);
  combo("bend")->setCurrentIndex(4);  // horizontal leg first: one click, two segments
  Click(port_, QPoint(100, 300));
  Click(port_, QPoint(200, 400));
  Key(port_, Qt::Key_Return);
  ASSERT_EQ(art.LiveCount(), 4);
  const qvis::ArtObject leg1 = art.object({0, 2}), leg2 = art.object({0, 3});
  EXPECT_EQ(leg1.kind, qvis::ObjectKind::kTrack);
  EXPECT_EQ(leg1.end, (qvis::ArtPoint{20000000, -30000000}));
  EXPECT_EQ(leg2.end, (qvis::ArtPoint{20000000, -40000000}));
  EXPECT_EQ(aperture(leg2).size_x, 1000000);

  // The rubber band follows the panel: a wider band, flat ends, then the band drawn as a pen
  // line instead of the end cap's rectangle, each change what the canvas shows.
  combo("bend")->setCurrentIndex(0);
  Click(port_, QPoint(100, 450));
  SendMouse(port_, QEvent::MouseMove, QPoint(300, 450), Qt::NoButton, Qt::NoButton);
  SendMouse(port_, QEvent::MouseMove, QPoint(300, 455), Qt::NoButton, Qt::NoButton);
  auto band = [&] {
    QCoreApplication::processEvents();
    return port_->grab().toImage().copy(60, 400, 200, 100);
  };
  auto inked = [](const QImage& img) {
    int n = 0;
    for (int y = 0; y < img.height(); ++y) {
      for (int x = 0; x < img.width(); ++x) n += (img.pixel(x, y) & 0xFFFFFF) != 0;
    }
    return n;
  };
  const QImage thin = band();
  length("width")->setValue(3.0);
  const QImage wide = band();
  EXPECT_GT(inked(thin), 100);
  EXPECT_GT(inked(wide), inked(thin) + 2000);  // 3 mm is 30 px across 150 px of band
  combo("end-cap")->setCurrentIndex(2);
  const QImage flat = band();
  EXPECT_GT(DifferingPixels(wide, flat), 100);  // the round start is cut off at the click
  combo("line-style")->setCurrentIndex(1);
  EXPECT_GT(DifferingPixels(flat, band()), 100);
  Key(port_, Qt::Key_Escape);
  Key(port_, Qt::Key_Escape);
  combo("line-style")->setCurrentIndex(0);
  combo("end-cap")->setCurrentIndex(0);

  Trigger("pad-octagon");
  length("pad-width")->setValue(3.0);
  length("hole")->setValue(1.0);
  w_.findChild<QSpinBox*>("sides")->setValue(6);
  Click(port_, QPoint(450, 250));
  const qvis::ObjectRef pad_ref{0, static_cast<std::uint32_t>(art.layer(0).objects.size() - 1)};
  const qvis::ArtObject pad = last();
  ASSERT_EQ(pad.kind, qvis::ObjectKind::kFlash);
  EXPECT_EQ(aperture(pad).kind, qvis::ApertureKind::kPolygon);
  EXPECT_EQ(aperture(pad).size_x, 3000000);
  EXPECT_EQ(aperture(pad).hole, 1000000);
  EXPECT_EQ(aperture(pad).vertices, 6);

  // The selection: the pad's size changes (shape, hole and sides kept) as one undo step.
  Trigger("select");
  Click(port_, QPoint(450, 250));
  ASSERT_EQ(w_.board().selection().size(), 1u);
  EXPECT_DOUBLE_EQ(length("pad-width")->value(), 3.0);
  length("pad-width")->setValue(2.0);
  ASSERT_EQ(w_.board().selection()[0], pad_ref);
  const qvis::Aperture changed = aperture(art.object(pad_ref));
  EXPECT_EQ(changed.size_x, 2000000);
  EXPECT_EQ(changed.hole, 1000000);
  EXPECT_EQ(changed.vertices, 6);
  w_.board().Undo();
  EXPECT_EQ(aperture(art.object(pad_ref)).size_x, 3000000);
  // A track and the pad selected together: the width goes to the track, the pad keeps its.
  w_.board().SelectBox(5, 25, 50, 45, false);
  w_.board().SelectBox(40, 20, 50, 30, true);
  w_.Refresh();
  ASSERT_EQ(w_.board().selection().size(), 3u);
  length("width")->setValue(0.5);
  EXPECT_EQ(aperture(art.object({0, 2})).size_x, 500000);
  EXPECT_EQ(aperture(art.object({0, 3})).size_x, 500000);
  EXPECT_EQ(aperture(art.object(pad_ref)).size_x, 3000000);
  // With a placing tool the panel sets the tool, even while objects are selected.
  Trigger("track");
  ASSERT_FALSE(w_.board().selection().empty());
  length("width")->setValue(0.8);
  EXPECT_EQ(aperture(art.object({0, 2})).size_x, 500000);
  Click(port_, QPoint(300, 50));
  Click(port_, QPoint(400, 50));
  Key(port_, Qt::Key_Return);
  EXPECT_EQ(aperture(last()).size_x, 800000);
}

// While selected objects are dragged, a translucent ghost of them follows the snapped cursor
// over the unchanged board; the board changes only on release, and the ghost goes.
TEST_F(EditorTest, DraggingShowsAGhostOfTheMovedObjects) {
  Trigger("pad-round");
  Click(port_, QPoint(200, 200));
  Trigger("select");
  d_->m_pCursorMgr->Off();
  Click(port_, QPoint(200, 200));
  ASSERT_EQ(w_.board().selection().size(), 1u);
  port_->RedrawNow();
  const QImage before = port_->grab().toImage();  // sampled on the ring, off the hole and grid
  const QRgb pad = before.pixel(205, 203);
  const QRgb empty = before.pixel(265, 203);
  ASSERT_NE(pad, empty);

  SendMouse(port_, QEvent::MouseButtonPress, QPoint(200, 200), Qt::LeftButton, Qt::LeftButton);
  SendMouse(port_, QEvent::MouseMove, QPoint(230, 201), Qt::NoButton, Qt::LeftButton);
  SendMouse(port_, QEvent::MouseMove, QPoint(262, 203), Qt::NoButton, Qt::LeftButton);  // snaps to (26, 20)
  const QImage dragging = port_->grab().toImage();
  const QRgb ghost = dragging.pixel(265, 203);
  EXPECT_NE(ghost, empty);
  EXPECT_NE(ghost, pad);
  EXPECT_EQ(qRed(ghost), qGreen(ghost));  // the highlight colour, part covering the frame
  EXPECT_EQ(dragging.pixel(205, 203), pad);  // the board is as it was
  EXPECT_EQ(dragging.pixel(235, 203), before.pixel(235, 203));  // no trail where it passed
  EXPECT_EQ(w_.board().document().layers[0].objects[0].end, (qvis::ArtPoint{20000000, -20000000}));

  SendMouse(port_, QEvent::MouseButtonRelease, QPoint(262, 203), Qt::LeftButton, Qt::NoButton);
  EXPECT_EQ(w_.board().document().layers[0].objects[0].end, (qvis::ArtPoint{26000000, -20000000}));
  port_->RedrawNow();
  const QImage after = port_->grab().toImage();
  EXPECT_EQ(after.pixel(265, 203), pad);
  EXPECT_NE(after.pixel(205, 203), pad);
  EXPECT_FALSE(w_.canvas().HasGhost());
}

TEST_F(EditorTest, EscLeavesEveryCommandIncludingTheThreePointCircle) {
  for (const char* tool : {"track", "arc", "circle", "circle3", "rectangle", "polygon", "pad-round",
                           "pad-square", "pad-obround", "pad-octagon", "zoombox"}) {
    Trigger(tool);
    if (std::string(tool) == "circle3") {
      Click(port_, QPoint(100, 100));  // one point fixed
      Key(port_, Qt::Key_Escape);       // the step ends
      EXPECT_EQ(d_->m_pDraw3PCircleCmd->m_nProgress, 0);
    }
    Key(port_, Qt::Key_Escape);
    EXPECT_STREQ(d_->GetCurrentProcInfo().GetString(), "Select Command") << tool;
    EXPECT_TRUE(d_->m_pSelectCmd->IsActived()) << tool;
  }
  EXPECT_EQ(Objects(), 0u);
}

TEST_F(EditorTest, PadsAndSelectionDragMoveArrowKeysDeleteUndo) {
  Trigger("pad-round");
  Click(port_, QPoint(200, 200));
  Click(port_, QPoint(400, 200));
  ASSERT_EQ(Objects(), 2u);
  Key(port_, Qt::Key_Escape);
  ASSERT_TRUE(d_->m_pSelectCmd->IsActived());
  // Drag the first pad by 5 mm to the right.
  Drag(port_, QPoint(200, 200), QPoint(250, 200));
  ASSERT_EQ(w_.board().selection().size(), 1u);
  EXPECT_EQ(w_.board().document().layers[0].objects[0].end, (qvis::ArtPoint{25000000, -20000000}));
  // The arrow keys move it by the snap step (1 mm); board y is up.
  Key(port_, Qt::Key_Up);
  EXPECT_EQ(w_.board().document().layers[0].objects[0].end, (qvis::ArtPoint{25000000, -19000000}));
  // The selection is highlighted on the canvas.
  port_->RedrawNow();
  const std::uint32_t colour = w_.board().document().layers[0].colour;
  SendMouse(port_, QEvent::MouseMove, QPoint(500, 400), Qt::NoButton, Qt::NoButton);
  // Pads of 1.6 mm with a 0.8 mm hole: the ring is 4 to 8 px from the centre.
  const QImage shown = port_->grab().toImage();
  EXPECT_NE(shown.pixel(256, 190) & 0xFFFFFF, colour);
  EXPECT_NE(shown.pixel(256, 190) & 0xFFFFFF, 0u);
  EXPECT_EQ(shown.pixel(406, 200) & 0xFFFFFF, colour);  // not selected
  EXPECT_NE(shown.pixel(400, 200) & 0xFFFFFF, colour);  // the hole shows what is under it
  Key(port_, Qt::Key_Delete);
  EXPECT_EQ(Objects(), 1u);
  Trigger("undo");
  EXPECT_EQ(Objects(), 2u);
  Trigger("undo");
  Trigger("undo");
  EXPECT_EQ(w_.board().document().layers[0].objects[0].end, (qvis::ArtPoint{20000000, -20000000}));
  Trigger("redo");
  EXPECT_EQ(w_.board().document().layers[0].objects[0].end, (qvis::ArtPoint{25000000, -20000000}));
  // A box round both pads selects both.
  Drag(port_, QPoint(150, 150), QPoint(450, 250));
  EXPECT_EQ(w_.board().selection().size(), 2u);
}

TEST_F(EditorTest, ViewWheelZoomsInAboutTheCursorFitAndAdaptiveGrid) {
  const QPoint p(300, 200);
  const double wx = d_->m_pCoords->ScreenXToWorld(p.x());
  QWheelEvent up(QPointF(p), QPointF(port_->mapToGlobal(p)), QPoint(), QPoint(0, 120), Qt::NoButton,
                 Qt::NoModifier, Qt::NoScrollPhase, false);
  QCoreApplication::sendEvent(port_, &up);
  EXPECT_GT(d_->m_pCoords->m_dZoom, 10.0);
  // To a nanometre: the canvas keeps its view's corner on a nanometre lattice (see Canvas).
  EXPECT_NEAR(d_->m_pCoords->ScreenXToWorld(p.x()), wx, 1e-6);
  // The grid coarsens by powers of ten to stay at least 8 px apart.
  d_->m_pCoords->SetZoom(10.0);
  w_.SetBaseGrid(0.1);
  EXPECT_DOUBLE_EQ(w_.DisplayedGrid(), 1.0);
  d_->m_pCoords->SetZoom(0.5);
  EXPECT_DOUBLE_EQ(w_.DisplayedGrid(), 100.0);
  d_->m_pCoords->SetZoom(200.0);
  EXPECT_DOUBLE_EQ(w_.DisplayedGrid(), 0.1);
  // Fit frames the board.
  ASSERT_TRUE(w_.OpenFiles({QString::fromStdString(Example("board-Edge_Cuts.gbr"))}));
  w_.FitView();
  double x1, y1, x2, y2;
  ASSERT_TRUE(w_.board().Extent(&x1, &y1, &x2, &y2));
  const CRect r = port_->GetClientRect();
  EXPECT_GE(d_->m_pCoords->WorldXToScreen(x1), 0);
  EXPECT_LE(d_->m_pCoords->WorldXToScreen(x2), r.right);
  EXPECT_GE(d_->m_pCoords->WorldYToScreen(y1), 0);
  EXPECT_LE(d_->m_pCoords->WorldYToScreen(y2), r.bottom);
  EXPECT_GT((d_->m_pCoords->WorldXToScreen(x2) - d_->m_pCoords->WorldXToScreen(x1)) * 1.0 / r.Width() +
                (d_->m_pCoords->WorldYToScreen(y2) - d_->m_pCoords->WorldYToScreen(y1)) * 1.0 / r.Height(),
            0.9);
  // Middle drag pans live: the world point under the press follows the mouse.
  const double before = d_->m_pCoords->ScreenXToWorld(100);
  SendMouse(port_, QEvent::MouseButtonPress, QPoint(100, 100), Qt::MiddleButton, Qt::MiddleButton);
  SendMouse(port_, QEvent::MouseMove, QPoint(160, 100), Qt::NoButton, Qt::MiddleButton);
  EXPECT_NEAR(d_->m_pCoords->ScreenXToWorld(160), before, 1e-6);
  SendMouse(port_, QEvent::MouseButtonRelease, QPoint(160, 100), Qt::MiddleButton, Qt::NoButton);
}

int DifferingPixels(const QImage& a, const QImage& b) {
  if (a.size() != b.size()) return -1;
  int n = 0;
  for (int y = 0; y < a.height(); ++y) {
    for (int x = 0; x < a.width(); ++x) n += a.pixel(x, y) != b.pixel(x, y);
  }
  return n;
}

// A live pan frame (the last frame shifted by whole pixels, the board drawn only in the strips
// it uncovered) is the frame a full redraw of the same view gives: after every step of a
// middle-button drag, after a pan by a world amount that is a fraction of a pixel (drawn
// whole) and one that is whole pixels (shifted), and back where the pan began.
TEST_F(EditorTest, PanFramesMatchAFullRedraw) {
  ASSERT_TRUE(w_.OpenFiles({QString::fromStdString(Example("board-F_Cu.gbr")),
                            QString::fromStdString(Example("board-Edge_Cuts.gbr"))}));
  d_->m_pCursorMgr->Off();
  CQVIS_Coords* c = d_->m_pCoords;
  // Any zoom asked for (the canvas then draws at the nearest odd number of nanometres per
  // pixel).
  c->SetZoom(2.0 * c->m_dZoom);
  port_->RedrawNow();
  qvis::editor::Canvas& canvas = w_.canvas();
  auto full_redraw = [&] {
    canvas.SetKeepPicture(false);
    port_->RedrawNow();
    const QImage full = port_->grab().toImage();
    canvas.SetKeepPicture(true);
    port_->RedrawNow();  // the kept picture again, drawn whole
    return full;
  };
  const QImage start = full_redraw();
  const double x0 = c->m_dViewX, y0 = c->m_dViewY;
  int inked = 0;
  const QRgb colour = w_.board().document().layers[0].colour;
  for (int y = 0; y < start.height(); ++y) {
    for (int x = 0; x < start.width(); ++x) inked += (start.pixel(x, y) & 0xFFFFFF) == (colour & 0xFFFFFF);
  }
  EXPECT_GT(inked, 2000);

  // The drag's frames follow one another, each shifted from the last (never redrawn whole);
  // each is then compared with a full redraw of its view.
  struct Shown {
    double x, y;
    QImage image;
  };
  std::vector<Shown> frames;
  SendMouse(port_, QEvent::MouseButtonPress, QPoint(300, 300), Qt::MiddleButton, Qt::MiddleButton);
  QPoint last(300, 300);
  for (QPoint p : {QPoint(320, 290), QPoint(250, 330), QPoint(260, 200), QPoint(140, 240),
                   QPoint(141, 240), QPoint(500, 600), QPoint(480, 610)}) {
    SendMouse(port_, QEvent::MouseMove, p, Qt::NoButton, Qt::MiddleButton);
    EXPECT_EQ(canvas.last_frame(), qvis::editor::Canvas::Frame::kShifted) << p.x() << "," << p.y();
    EXPECT_EQ(canvas.last_shift_x(), p.x() - last.x());
    EXPECT_EQ(canvas.last_shift_y(), p.y() - last.y());
    last = p;
    frames.push_back({c->m_dViewX, c->m_dViewY, port_->grab().toImage()});
  }
  SendMouse(port_, QEvent::MouseButtonRelease, last, Qt::MiddleButton, Qt::NoButton);
  const double end_x = c->m_dViewX, end_y = c->m_dViewY;
  canvas.SetKeepPicture(false);
  for (const Shown& f : frames) {
    c->SetScreenViewPosition(f.x, f.y);
    port_->RedrawNow();
    EXPECT_EQ(DifferingPixels(f.image, port_->grab().toImage()), 0) << "view " << f.x << "," << f.y;
  }
  c->SetScreenViewPosition(end_x, end_y);
  canvas.SetKeepPicture(true);
  port_->RedrawNow();

  // 0.37 mm is no whole number of pixels at this zoom: the frame is drawn whole.
  c->SetScreenViewPosition(c->m_dViewX + 0.37, c->m_dViewY - 0.37);
  port_->RedrawNow();
  EXPECT_EQ(canvas.last_frame(), qvis::editor::Canvas::Frame::kFull);
  EXPECT_EQ(DifferingPixels(port_->grab().toImage(), full_redraw()), 0);
  // Seven pixels' worth of world, a fraction of a millimetre, rounds to a shift of 7.
  c->SetScreenViewPosition(c->m_dViewX - 7.0 / c->m_dZoom, c->m_dViewY + 3.0 / c->m_dZoom);
  port_->RedrawNow();
  EXPECT_EQ(canvas.last_frame(), qvis::editor::Canvas::Frame::kShifted);
  EXPECT_EQ(canvas.last_shift_x(), 7);
  EXPECT_EQ(canvas.last_shift_y(), -3);
  EXPECT_EQ(DifferingPixels(port_->grab().toImage(), full_redraw()), 0);
  // Back where the pan began, by a shift: the first frame again.
  c->SetScreenViewPosition(x0 + 150.0 / c->m_dZoom, y0);
  port_->RedrawNow();
  c->SetScreenViewPosition(x0, y0);
  port_->RedrawNow();
  EXPECT_EQ(canvas.last_frame(), qvis::editor::Canvas::Frame::kShifted);
  EXPECT_EQ(DifferingPixels(port_->grab().toImage(), start), 0);
}

// The same over random artwork (straight and slanting tracks, full circles, round, rectangular
// and turned seven-sided pads at micrometre positions) at zooms asked for without regard to
// the pixel size: a run of shifted frames never drifts from what full redraws of their views
// show. (Without the canvas keeping its view on the lattice, single pixels of edges differ
// here; without it comparing the marks under the board, snap points at 34 px/mm do.)
TEST_F(EditorTest, PanFramesOverRandomArtworkAtAnyZoomMatchFullRedraws) {
  qvis::ArtDocument doc;
  qvis::Layer l;
  l.name = "Top";
  l.colour = 0xC83434;
  l.apertures[10].size_x = 200000;
  l.apertures[11].size_x = 600000;
  l.apertures[12].kind = qvis::ApertureKind::kRectangle;
  l.apertures[12].size_x = 700000;
  l.apertures[12].size_y = 300000;
  l.apertures[13].kind = qvis::ApertureKind::kPolygon;
  l.apertures[13].size_x = 900000;
  l.apertures[13].vertices = 7;
  unsigned seed = 12345;
  auto rnd = [&](int n) {
    seed = seed * 1103515245u + 12345u;
    return static_cast<qvis::Coord>((seed >> 8) % static_cast<unsigned>(n));
  };
  for (int i = 0; i < 2000; ++i) {
    qvis::ArtObject o;
    const qvis::Coord x = rnd(60000) * 1000, y = rnd(40000) * 1000;
    if (i % 7 == 3) {  // a full circle
      o.kind = qvis::ObjectKind::kArc;
      o.aperture = 10;
      o.start = o.end = {x, y};
      o.centre = {x + rnd(2000000), y + rnd(2000000)};
      l.objects.push_back(o);
      continue;
    }
    if (i % 7 == 5) {  // a turned heptagon
      o.kind = qvis::ObjectKind::kFlash;
      o.aperture = 13;
      o.end = {x, y};
      o.transform.rotation = static_cast<double>(rnd(360));
      l.objects.push_back(o);
      continue;
    }
    if (i % 5 == 4) {
      o.kind = qvis::ObjectKind::kFlash;
      o.aperture = i % 10 == 4 ? 11 : 12;
      o.end = {x, y};
    } else {
      o.kind = qvis::ObjectKind::kTrack;
      o.aperture = 10;
      o.start = {x, y};
      o.end = i % 3 == 0 ? qvis::ArtPoint{x + rnd(3000000), y + rnd(2000000)}
                         : qvis::ArtPoint{x + rnd(2) * 2000000, y + (1 - rnd(2)) * 2000000};
    }
    l.objects.push_back(o);
  }
  doc.layers.push_back(std::move(l));
  w_.board().Reset(std::move(doc));
  d_->m_pCursorMgr->Off();
  qvis::editor::Canvas& canvas = w_.canvas();
  CQVIS_Coords* c = d_->m_pCoords;
  int shifted = 0, frames_drawn = 0;
  for (double zoom_factor : {0.3, 1.0, 3.7, 11.3}) {
    w_.FitView();
    c->SetZoom(c->m_dZoom * zoom_factor);
    canvas.SetKeepPicture(true);
    port_->RedrawNow();
    SendMouse(port_, QEvent::MouseButtonPress, QPoint(300, 300), Qt::MiddleButton, Qt::MiddleButton);
    std::vector<std::tuple<double, double, QImage>> frames;
    for (int i = 1; i <= 30; ++i) {
      const QPoint p(300 + (i * 37) % 90 - 45, 300 + (i * 23) % 60 - 30);
      SendMouse(port_, QEvent::MouseMove, p, Qt::NoButton, Qt::MiddleButton);
      ++frames_drawn;
      shifted += canvas.last_frame() == qvis::editor::Canvas::Frame::kShifted;
      frames.emplace_back(c->m_dViewX, c->m_dViewY, port_->grab().toImage());
    }
    SendMouse(port_, QEvent::MouseButtonRelease, QPoint(300, 300), Qt::MiddleButton, Qt::NoButton);
    canvas.SetKeepPicture(false);
    for (const auto& [x, y, image] : frames) {
      c->SetScreenViewPosition(x, y);
      port_->RedrawNow();
      EXPECT_EQ(DifferingPixels(image, port_->grab().toImage()), 0)
          << "zoom " << c->m_dZoom << ", view " << x << "," << y;
    }
  }
  // Most frames of a pan are shifted; a few are drawn whole where the marks under the board
  // (snap points, the origin) did not move with it.
  EXPECT_GT(shifted, frames_drawn * 3 / 4);
}

// What is not a pan draws the whole frame: a zoom, an edit, undo, the selection, a layer's
// opacity or visibility, a resize. The frame after each shows the change.
TEST_F(EditorTest, ChangesOtherThanAPanRedrawTheWholeFrame) {
  ASSERT_TRUE(w_.OpenFiles({QString::fromStdString(Example("board-F_Cu.gbr"))}));
  d_->m_pCursorMgr->Off();
  qvis::editor::Canvas& canvas = w_.canvas();
  using Frame = qvis::editor::Canvas::Frame;
  port_->RedrawNow();
  port_->RedrawNow();
  ASSERT_EQ(canvas.last_frame(), Frame::kShifted);  // nothing changed: the picture again
  QImage before = port_->grab().toImage();
  auto expect_full_and_changed = [&](const char* what) {
    port_->RedrawNow();
    EXPECT_EQ(canvas.last_frame(), Frame::kFull) << what;
    const QImage now = port_->grab().toImage();
    EXPECT_GT(DifferingPixels(before, now), 0) << what;
    before = now;
  };
  Trigger("select-all");
  expect_full_and_changed("select all");
  w_.board().ClearSelection();
  expect_full_and_changed("selection cleared");
  w_.board().MoveSelection(0, 0);  // nothing selected: no change, the picture stays
  port_->RedrawNow();
  EXPECT_EQ(canvas.last_frame(), Frame::kShifted);
  w_.board().SelectAll();
  w_.board().DeleteSelection();
  expect_full_and_changed("delete");
  w_.board().Undo();
  expect_full_and_changed("undo");
  w_.board().SetOpacity(0, 40);
  expect_full_and_changed("opacity");
  w_.board().SetLayerVisible(0, false);
  expect_full_and_changed("hidden layer");
  w_.board().SetLayerVisible(0, true);
  expect_full_and_changed("shown layer");
  d_->m_pCoords->SetZoom(d_->m_pCoords->m_dZoom * 1.5);
  expect_full_and_changed("zoom");
  const QSize size = port_->size();
  w_.resize(w_.width() - 100, w_.height() - 50);
  QCoreApplication::processEvents();
  ASSERT_NE(port_->size(), size);
  // The resize drew a whole frame; the next one is the kept picture, and it is what a full
  // redraw at the new size gives.
  EXPECT_EQ(canvas.last_frame(), Frame::kFull) << "resize";
  port_->RedrawNow();
  const QImage kept = port_->grab().toImage();
  canvas.SetKeepPicture(false);
  port_->RedrawNow();
  EXPECT_EQ(DifferingPixels(kept, port_->grab().toImage()), 0);
  canvas.SetKeepPicture(true);
}

TEST_F(EditorTest, ZoomBoxReturnsToThePreviousTool) {
  Trigger("track");
  Trigger("zoombox");
  EXPECT_TRUE(d_->m_pZoomMgr->IsActived());
  Drag(port_, QPoint(100, 100), QPoint(300, 250));
  EXPECT_GT(d_->m_pCoords->m_dZoom, 10.0);
  EXPECT_TRUE(d_->m_pDrawLineCmd->IsActived());
}

TEST_F(EditorTest, StatusBarShowsTheSnappedPositionInTheChosenUnitAndThePrompt) {
  Trigger("track");
  SendMouse(port_, QEvent::MouseMove, QPoint(254, 101), Qt::NoButton, Qt::NoButton);
  EXPECT_TRUE(w_.StatusText().contains("X 25.000 mm")) << w_.StatusText().toStdString();
  EXPECT_TRUE(w_.StatusText().contains("Y -10.000 mm")) << w_.StatusText().toStdString();
  EXPECT_TRUE(w_.StatusText().contains(QString(d_->GetCurrentProcInfo().GetString())));
  Trigger("unit-mil");
  EXPECT_TRUE(w_.StatusText().contains("X 984.3 mil")) << w_.StatusText().toStdString();
  Trigger("unit-inch");
  EXPECT_TRUE(w_.StatusText().contains("X 0.9843 in"));
  Trigger("unit-um");
  EXPECT_TRUE(w_.StatusText().contains("X 25000 µm"));
  Trigger("unit-cm");
  EXPECT_TRUE(w_.StatusText().contains("X 2.5000 cm"));
  // The crosshair sits on the snapped point: the cursor is drawn at world (25, 10).
  EXPECT_EQ(d_->m_nMouseScreenX, 250);
  EXPECT_EQ(d_->m_nMouseScreenY, 100);
}

void ShiftClick(QWidget* w, QPoint p) {
  SendMouse(w, QEvent::MouseMove, p, Qt::NoButton, Qt::NoButton, Qt::ShiftModifier);
  SendMouse(w, QEvent::MouseButtonPress, p, Qt::LeftButton, Qt::LeftButton, Qt::ShiftModifier);
  SendMouse(w, QEvent::MouseButtonRelease, p, Qt::LeftButton, Qt::NoButton, Qt::ShiftModifier);
}

// Measuring snaps each point to the 1 mm snap step, except while Shift is held: then the
// point is where the cursor is (0.1 mm per pixel here). The prompt names the key.
TEST_F(EditorTest, MeasureGivesDistanceAndAngleAndShiftSuspendsSnapping) {
  Trigger("measure");
  EXPECT_TRUE(w_.StatusText().contains("hold Shift")) << w_.StatusText().toStdString();
  Click(port_, QPoint(100, 100));
  Click(port_, QPoint(133, 56));  // snaps to (130, 60)
  EXPECT_TRUE(w_.Measurement().contains("distance 5.000 mm")) << w_.Measurement().toStdString();
  EXPECT_TRUE(w_.Measurement().contains("dx 3.000 mm"));
  EXPECT_TRUE(w_.Measurement().contains("dy 4.000 mm"));
  EXPECT_TRUE(w_.Measurement().contains("angle 53.13"));

  ShiftClick(port_, QPoint(102, 97));   // (10.2, 9.7), not snapped
  EXPECT_TRUE(w_.StatusText().contains("X 10.200 mm")) << w_.StatusText().toStdString();
  EXPECT_TRUE(w_.StatusText().contains("Snap off")) << w_.StatusText().toStdString();
  // While the second point is sought, the measurement follows the cursor.
  SendMouse(port_, QEvent::MouseMove, QPoint(135, 97), Qt::NoButton, Qt::NoButton, Qt::ShiftModifier);
  EXPECT_TRUE(w_.Measurement().contains("dx 3.300 mm")) << w_.Measurement().toStdString();
  ShiftClick(port_, QPoint(135, 53));   // (13.5, 5.3)
  EXPECT_TRUE(w_.Measurement().contains("dx 3.300 mm")) << w_.Measurement().toStdString();
  EXPECT_TRUE(w_.Measurement().contains("dy 4.400 mm"));
  EXPECT_TRUE(w_.Measurement().contains("distance 5.500 mm"));
  // Shift on one click only: that point alone is free.
  ShiftClick(port_, QPoint(102, 97));
  Click(port_, QPoint(133, 56));
  EXPECT_TRUE(w_.Measurement().contains("dx 2.800 mm")) << w_.Measurement().toStdString();
  EXPECT_TRUE(w_.Measurement().contains("dy 3.700 mm"));
  EXPECT_FALSE(w_.StatusText().contains("Snap off"));
}

TEST_F(EditorTest, FilesOpenSaveExportAndErrorsLeaveTheBoard) {
  const fs::path dir = fs::temp_directory_path() / ("qvis_editor_test_" + std::to_string(::getpid()));
  fs::create_directories(dir);
  ASSERT_TRUE(w_.OpenFiles({QString::fromStdString(Example("board-F_Cu.gbr")),
                            QString::fromStdString(Example("board.drl"))}));
  EXPECT_EQ(w_.board().document().layers.size(), 2u);
  EXPECT_TRUE(w_.RecentFiles().first().contains("board-F_Cu.gbr"));
  const qvis::ArtDocument before = w_.board().document();
  std::ofstream(dir / "broken.drl") << "M48\nMETRIC\nT1C0.8\n%\nT9\nX1Y1\n";
  EXPECT_FALSE(w_.OpenFiles({QString::fromStdString((dir / "broken.drl").string())}));
  EXPECT_TRUE(w_.Error().contains("broken.drl")) << w_.Error().toStdString();
  EXPECT_EQ(w_.board().document(), before);

  const QString saved = QString::fromStdString((dir / "b.qvb").string());
  ASSERT_TRUE(w_.SaveAs(saved));
  EXPECT_FALSE(w_.SaveAs(QString::fromStdString((dir / "none" / "x.qvb").string())));
  EXPECT_TRUE(w_.Error().contains("old file is unchanged"));
  ASSERT_TRUE(w_.OpenFiles({saved}));
  EXPECT_EQ(w_.board().document().layers[0].objects, before.layers[0].objects);
  EXPECT_TRUE(w_.ExportGerberLayer(0, QString::fromStdString((dir / "l.gbr").string())));
  EXPECT_TRUE(w_.ExportPng(QString::fromStdString((dir / "v.png").string())));
  EXPECT_TRUE(w_.ExportSvg(QString::fromStdString((dir / "v.svg").string())));
  QImage png(QString::fromStdString((dir / "v.png").string()));
  EXPECT_EQ(png.size(), port_->size());
  EXPECT_GT(fs::file_size(dir / "v.svg"), 1000u);
  // Unsaved changes: "cancel" keeps the window open, "discard" lets it close.
  Trigger("pad-round");
  Click(port_, QPoint(300, 300));
  EXPECT_TRUE(w_.board().modified());
  w_.SetCloseAnswerForTests(2);
  EXPECT_FALSE(w_.MaybeKeepChanges());
  w_.SetCloseAnswerForTests(1);
  EXPECT_TRUE(w_.MaybeKeepChanges());
  fs::remove_all(dir);
}

// The layers list runs front first, and Up brings the active layer over the one drawn above it.
// Opened together, the front copper stacks over the back copper whatever the order of the files.
TEST_F(EditorTest, LayersListIsInDrawingOrderAndUpBringsALayerForward) {
  ASSERT_TRUE(w_.OpenFiles({QString::fromStdString(Example("board-F_Cu.gbr")),
                            QString::fromStdString(Example("board-B_Cu.gbr"))}));
  Trigger("fit");
  QCoreApplication::processEvents();
  auto* list = w_.findChild<QListWidget*>();
  ASSERT_NE(list, nullptr);
  ASSERT_EQ(list->count(), 2);
  EXPECT_TRUE(list->item(0)->text().startsWith("board-F_Cu.gbr"));  // the front copper: in front
  EXPECT_TRUE(list->item(1)->text().startsWith("board-B_Cu.gbr"));
  const QRgb front_colour = w_.board().document().layers[0].colour | 0xFF000000u;
  auto count_front = [&] {
    const QImage img = port_->grab().toImage().convertToFormat(QImage::Format_RGB32);
    int n = 0;
    for (int y = 0; y < img.height(); ++y) {
      for (int x = 0; x < img.width(); ++x) n += img.pixel(x, y) == front_colour ? 1 : 0;
    }
    return n;
  };
  const int shown = count_front();
  list->setCurrentRow(1);
  EXPECT_EQ(w_.board().active_layer(), 1);
  QPushButton* up = nullptr;
  for (QPushButton* b : w_.findChildren<QPushButton*>()) {
    if (b->text() == "Up") up = b;
  }
  ASSERT_NE(up, nullptr);
  up->click();
  QCoreApplication::processEvents();
  EXPECT_TRUE(list->item(0)->text().startsWith("board-B_Cu.gbr"));
  EXPECT_EQ(list->currentRow(), 0);
  EXPECT_EQ(w_.board().active_layer(), 1);
  // The back layer's pour now lies over the front copper: far less of its colour shows.
  EXPECT_LT(count_front() + 1000, shown);
  // Hiding a layer from its row hides it on the canvas.
  list->item(0)->setCheckState(Qt::Unchecked);
  EXPECT_FALSE(w_.board().document().layers[1].visible);
  EXPECT_TRUE(w_.board().document().layers[0].visible);
  EXPECT_EQ(count_front(), shown);
}

// Every action of the menus that needs no dialog runs, and the board stays consistent.
TEST_F(EditorTest, EveryMenuActionRuns) {
  const std::set<std::string> dialogs = {"open", "add-layers", "save", "save-as", "export-gerber",
                                         "export-png", "export-svg", "quit"};
  Trigger("pad-round");
  Click(port_, QPoint(200, 200));
  Key(port_, Qt::Key_Escape);
  Trigger("select-all");
  EXPECT_EQ(w_.board().selection().size(), 1u);
  Trigger("copy");
  Trigger("paste");
  EXPECT_EQ(Objects(), 2u);
  int ran = 0;
  for (const std::string& name : w_.ActionNames()) {
    if (dialogs.count(name) != 0) continue;
    Trigger(name.c_str());
    Key(port_, Qt::Key_Escape);
    ++ran;
  }
  EXPECT_GT(ran, 25);
  EXPECT_TRUE(w_.Action("wheel-direction")->isChecked() == !port_->WheelUpZoomsIn());
  Trigger("wheel-direction");  // back as it was
}

}  // namespace

int main(int argc, char** argv) {
  setenv("QT_QPA_PLATFORM", "offscreen", 0);
  QStandardPaths::setTestModeEnabled(true);
  QApplication app(argc, argv);
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
