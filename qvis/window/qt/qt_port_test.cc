// Tests of the Qt window port on Qt's offscreen platform: Qt events in, the design's state and
// the widget's pixels out.
#include "qvis/window/qt/qt_port.h"

#include <QApplication>
#include <QImage>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QWheelEvent>
#include <cstdlib>
#include <vector>

#include <gtest/gtest.h>

#include "qvis/compat/win32_names.h"
#include "qvis/design/design.h"
#include "qvis/design/design_objects.h"
#include "qvis/gdi/gdi.h"
#include "qvis/window/drawing_window.h"
#include "qvis/window/headless/headless_port.h"

namespace {

using qvis::QtWindowPort;

void SendMouse(QWidget* w, QEvent::Type type, QPoint p, Qt::MouseButton button,
               Qt::MouseButtons buttons) {
  QMouseEvent event(type, QPointF(p), QPointF(w->mapToGlobal(p)), button, buttons,
                    Qt::NoModifier);
  QCoreApplication::sendEvent(w, &event);
}

void Click(QWidget* w, QPoint p) {
  SendMouse(w, QEvent::MouseMove, p, Qt::NoButton, Qt::NoButton);
  SendMouse(w, QEvent::MouseButtonPress, p, Qt::LeftButton, Qt::LeftButton);
  SendMouse(w, QEvent::MouseButtonRelease, p, Qt::LeftButton, Qt::NoButton);
}

void Key(QWidget* w, int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier,
         const QString& text = QString()) {
  QKeyEvent press(QEvent::KeyPress, key, modifiers, text);
  QCoreApplication::sendEvent(w, &press);
  QKeyEvent release(QEvent::KeyRelease, key, modifiers, text);
  QCoreApplication::sendEvent(w, &release);
}

class QtPortTest : public testing::Test {
 protected:
  QtPortTest() {
    port_.resize(300, 200);
    wnd_.Create(&port_);
    port_.show();
    d_ = wnd_.GetDesign();
    d_->m_pCoords->SetScreenViewPosition(-10.0, -10.0);
    d_->m_pGridSnapMgr->SetShowGrid(0);
    d_->m_pGridSnapMgr->SetShowSnap(0);
    d_->m_pGridSnapMgr->SetShowOrigin(0);
    d_->m_pCursorMgr->Off();
    port_.SetParentHandler([this](UINT message, WPARAM wparam, LPARAM lparam) -> LRESULT {
      parent_.push_back({message, wparam, lparam});
      return 0;
    });
    port_.RedrawNow();
  }
  struct Sent {
    UINT message;
    WPARAM wparam;
    LPARAM lparam;
  };
  QtWindowPort port_;
  CQVIS_Wnd wnd_;
  CQVIS_Design* d_ = nullptr;
  std::vector<Sent> parent_;
};

TEST_F(QtPortTest, ClickPlacesAPadThatTheWidgetShows) {
  d_->AllDeactiveCmd();
  d_->m_pDrawFlashCircleCmd->SetDiameter(2.0);
  d_->m_pDrawFlashCircleCmd->Active();
  Click(&port_, QPoint(150, 100));  // world (5, 0), snapped to the 2 mm pitch: (6, 0)
  EXPECT_EQ(d_->m_pDrawFlashCircleCmd->m_dPlacedX, 6.0);
  EXPECT_EQ(d_->m_pDrawFlashCircleCmd->m_dPlacedY, 0.0);
  const QImage shown = port_.grab().toImage();
  EXPECT_EQ(shown.pixel(160, 100) & 0xFFFFFF, 0xFF0000u);  // the pad, red
  EXPECT_EQ(shown.pixel(20, 20) & 0xFFFFFF, 0x000000u);
}

TEST_F(QtPortTest, EscTellsTheParentAndEndsTheCommand) {
  d_->AllDeactiveCmd();
  d_->m_pDrawCircleCmd->Active();
  Key(&port_, Qt::Key_Escape);
  ASSERT_EQ(parent_.size(), 1u);
  EXPECT_EQ(parent_[0].message, UINT(WM_KEYDOWN));
  EXPECT_EQ(parent_[0].wparam, 0u);
  EXPECT_EQ(parent_[0].lparam, 0);
  EXPECT_STREQ(d_->GetCurrentProcInfo().GetString(), "Select Command");
}

TEST_F(QtPortTest, WheelUpAndPlusZoomInAboutTheCursor) {
  const QPoint p(120, 80);
  const double wx = d_->m_pCoords->ScreenXToWorld(p.x());
  QWheelEvent wheel(QPointF(p), QPointF(port_.mapToGlobal(p)), QPoint(), QPoint(0, 120),
                    Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
  QCoreApplication::sendEvent(&port_, &wheel);
  EXPECT_DOUBLE_EQ(d_->m_pCoords->m_dZoom, 15.0);
  EXPECT_NEAR(d_->m_pCoords->ScreenXToWorld(p.x()), wx, 1e-9);
  Key(&port_, Qt::Key_Plus, Qt::NoModifier, "+");
  EXPECT_DOUBLE_EQ(d_->m_pCoords->m_dZoom, 18.0);
}

// The same gestures through Qt events and through the headless port leave the same design
// and the same front-buffer pixels: a track of three clicks ended with Enter, then a pad.
TEST_F(QtPortTest, QtEventsMatchTheHeadlessPort) {
  qvis::HeadlessPort headless(300, 200);
  CQVIS_Wnd hwnd;
  hwnd.Create(&headless);
  CQVIS_Design* h = hwnd.GetDesign();
  h->m_pCursorMgr->Off();  // as in the fixture's window
  h->m_pGridSnapMgr->SetShowOrigin(0);
  for (CQVIS_Design* d : {d_, h}) {
    d->m_pCoords->SetScreenViewPosition(-10.0, -10.0);
    d->m_pGridSnapMgr->SetShowGrid(1);
    d->m_pGridSnapMgr->SetShowSnap(0);
    d->m_pCoords->SetGrid(5.0);
    d->m_pCoords->SetSnap(1.0);
    d->AllDeactiveCmd();
    d->m_pDrawLineCmd->SetWidth(0.5, true);
    d->m_pDrawLineCmd->Active();
  }
  port_.RedrawNow();
  headless.RedrawNow();
  const QPoint clicks[] = {QPoint(40, 40), QPoint(120, 40), QPoint(160, 110)};
  for (QPoint p : clicks) {
    Click(&port_, p);
    headless.Mouse(WM_MOUSEMOVE, CPoint(p.x(), p.y()));
    headless.Mouse(WM_LBUTTONDOWN, CPoint(p.x(), p.y()));
    headless.Mouse(WM_LBUTTONUP, CPoint(p.x(), p.y()));
  }
  SendMouse(&port_, QEvent::MouseMove, QPoint(200, 150), Qt::NoButton, Qt::NoButton);
  headless.Mouse(WM_MOUSEMOVE, CPoint(200, 150));
  EXPECT_EQ(d_->m_pDrawLineCmd->m_nProgress, h->m_pDrawLineCmd->m_nProgress);
  EXPECT_EQ(d_->m_pDrawLineCmd->m_dAnchorX, h->m_pDrawLineCmd->m_dAnchorX);
  EXPECT_EQ(d_->m_pDrawLineCmd->m_dAnchorY, h->m_pDrawLineCmd->m_dAnchorY);
  EXPECT_EQ(d_->m_pDrawLineCmd->m_dAnchorX, 6.0);  // 160 px / 10 px per unit - 10
  QCoreApplication::processEvents();
  headless.PaintIfNeeded();
  const qvis::gdi::BitmapView a = qvis::gdi::BitmapPixels(port_.FrontBitmap());
  const qvis::gdi::BitmapView b = qvis::gdi::BitmapPixels(headless.FrontBitmap());
  ASSERT_EQ(a.width, b.width);
  ASSERT_EQ(a.height, b.height);
  int differing = 0, inked = 0;
  for (int y = 0; y < a.height; ++y) {
    for (int x = 0; x < a.width; ++x) {
      if (a.Row32(y)[x] != b.Row32(y)[x] && differing++ < 5) {
        ADD_FAILURE() << x << "," << y << " qt " << std::hex << a.Row32(y)[x] << " headless " << b.Row32(y)[x];
      }
      inked += (a.Row32(y)[x] & 0xFFFFFF) != 0;
    }
  }
  EXPECT_EQ(differing, 0);
  EXPECT_GT(inked, 500);  // the rubber band and the grid are there to compare
  // The widget shows the front buffer.
  const QImage shown = port_.grab().toImage();
  EXPECT_EQ(shown.pixel(100, 40) & 0xFFFFFF, a.Row32(40)[100] & 0xFFFFFF);
}

// A mouse move with a rubber band repaints a rectangle around the band, not the widget.
TEST_F(QtPortTest, RubberBandRepaintsOnlyWhatChanged) {
  d_->AllDeactiveCmd();
  d_->m_pCoords->SetSnap(1.0);
  d_->m_pDrawLineCmd->SetWidth(0.2, true);
  d_->m_pDrawLineCmd->Active();
  Click(&port_, QPoint(50, 50));
  SendMouse(&port_, QEvent::MouseMove, QPoint(60, 55), Qt::NoButton, Qt::NoButton);
  const long before = port_.RepaintCount();
  SendMouse(&port_, QEvent::MouseMove, QPoint(70, 60), Qt::NoButton, Qt::NoButton);
  EXPECT_EQ(port_.RepaintCount(), before + 1);
  const QRect r = port_.LastRepaint();
  EXPECT_FALSE(r.isEmpty());
  EXPECT_TRUE(r.contains(QPoint(65, 57)));
  EXPECT_LT(r.width() * r.height(), 300 * 200 / 10);
  EXPECT_GT(port_.LastRepaintArea(), 0);
  EXPECT_LE(port_.LastRepaintArea(), r.width() * r.height());
  // A move that changes nothing on screen repaints nothing.
  SendMouse(&port_, QEvent::MouseMove, QPoint(70, 60), Qt::NoButton, Qt::NoButton);
  EXPECT_TRUE(port_.LastRepaint().isEmpty());
}

// The full-window crosshair changes two lines per move: the region repainted is those lines,
// not their bounding box (the whole widget).
TEST_F(QtPortTest, CrosshairRepaintsItsLinesNotTheFrame) {
  d_->m_pCursorMgr->On();
  d_->m_pCursorMgr->ExtCrossOn();
  SendMouse(&port_, QEvent::MouseMove, QPoint(100, 80), Qt::NoButton, Qt::NoButton);
  SendMouse(&port_, QEvent::MouseMove, QPoint(180, 140), Qt::NoButton, Qt::NoButton);
  ASSERT_GT(port_.LastRepaintArea(), 0);
  EXPECT_GT(port_.LastRepaint().width() * port_.LastRepaint().height(), 300 * 200 / 2);
  EXPECT_LT(port_.LastRepaintArea(), 300 * 200 / 5);
}

TEST_F(QtPortTest, MiddleDragReportsLivePanSteps) {
  std::vector<QPoint> steps;
  port_.SetPanHandler([&](int dx, int dy) { steps.emplace_back(dx, dy); });
  SendMouse(&port_, QEvent::MouseButtonPress, QPoint(100, 100), Qt::MiddleButton, Qt::MiddleButton);
  SendMouse(&port_, QEvent::MouseMove, QPoint(110, 95), Qt::NoButton, Qt::MiddleButton);
  SendMouse(&port_, QEvent::MouseMove, QPoint(130, 95), Qt::NoButton, Qt::MiddleButton);
  SendMouse(&port_, QEvent::MouseButtonRelease, QPoint(130, 95), Qt::MiddleButton, Qt::NoButton);
  SendMouse(&port_, QEvent::MouseMove, QPoint(140, 95), Qt::NoButton, Qt::NoButton);
  ASSERT_EQ(steps.size(), 2u);
  EXPECT_EQ(steps[0], QPoint(10, -5));
  EXPECT_EQ(steps[1], QPoint(20, 0));
}

TEST_F(QtPortTest, WheelDirectionPreferenceFlipsTheZoom) {
  port_.SetWheelUpZoomsIn(false);
  const QPoint p(120, 80);
  QWheelEvent wheel(QPointF(p), QPointF(port_.mapToGlobal(p)), QPoint(), QPoint(0, 120),
                    Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
  const double zoom = d_->m_pCoords->m_dZoom;
  QCoreApplication::sendEvent(&port_, &wheel);
  EXPECT_LT(d_->m_pCoords->m_dZoom, zoom);
}

}  // namespace

int main(int argc, char** argv) {
  setenv("QT_QPA_PLATFORM", "offscreen", 0);
  QApplication app(argc, argv);
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
