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
#include "qvis/window/drawing_window.h"

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

}  // namespace

int main(int argc, char** argv) {
  setenv("QT_QPA_PLATFORM", "offscreen", 0);
  QApplication app(argc, argv);
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
