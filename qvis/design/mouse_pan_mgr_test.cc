// The Win32 macro names come first: the public header must compile under them.
#include "qvis/compat/win32_names.h"
#include "qvis/design/mouse_pan_mgr.h"

#include <algorithm>
#include <cmath>
#include <random>

#include "gtest/gtest.h"
#include "qvis/commands/test_canvas.h"
#include "qvis/compat/redraw.h"
#include "qvis/coords/view_coords.h"
#include "qvis/coords/zoom_range.h"

namespace qvis {
namespace {

using testing::Canvas;

class MousePanTest : public ::testing::Test {
 protected:
  void SetUp() override {
    canvas.surface()->SetWindowLink(&buttons, [this](HWND, UINT flags) {
      ++redraws;
      last_flags = flags;
      return 1;
    });
  }
  int Changed() const { return Canvas::CountDiff(canvas.Snapshot(), background); }
  CQVIS_Coords* coords() { return canvas.surface()->GetCoords(); }

  Canvas canvas{120, 100, 2.0};
  testing::Pixels background = canvas.Snapshot();
  testing::Buttons buttons{canvas.surface()};
  CQVIS_MousePanMgr pan{canvas.surface()};
  // A window handle is only compared with null and handed to the redraw hook.
  HWND window = reinterpret_cast<HWND>(&pan);
  int redraws = 0;
  UINT last_flags = 0;
};

TEST_F(MousePanTest, ScrollModes) {
  struct Case {
    int mode;
    double dx, dy;
  };
  for (const Case c : {Case{0, -30.0, 15.0}, Case{1, 30.0, -15.0}, Case{7, 0.0, 0.0}}) {
    coords()->m_dViewX = 10.0;
    coords()->m_dViewY = 20.0;
    CQVIS_MousePanMgr p(canvas.surface());
    p.Active(window, nullptr, 100, 100);
    const int before = redraws;
    EXPECT_EQ(p.Scroll(160, 70, c.mode), 1) << c.mode;
    EXPECT_DOUBLE_EQ(coords()->m_dViewX, 10.0 + c.dx) << c.mode;
    EXPECT_DOUBLE_EQ(coords()->m_dViewY, 20.0 + c.dy) << c.mode;
    EXPECT_EQ(redraws, before + 1);
    EXPECT_EQ(last_flags, 0x105u);
    EXPECT_EQ(p.m_nScrollCount, 1);
    EXPECT_EQ(p.m_nLastX, 160);
  }
}

TEST_F(MousePanTest, NoMovementNoReferenceOrInactiveDoesNotPan) {
  EXPECT_EQ(pan.Scroll(5, 5, 0), -1);  // not active
  pan.Active(window, coords(), 100, 100);
  EXPECT_EQ(pan.Scroll(100, 100, 0), -1);  // released at the press pixel
  pan.m_nLastX = pan.m_nLastY = -1;
  EXPECT_EQ(pan.Scroll(120, 100, 0), -1);  // no reference position
  EXPECT_EQ(coords()->m_dViewX, 0.0);
  EXPECT_EQ(redraws, 0);
}

TEST_F(MousePanTest, ScrollDelta) {
  coords()->m_dZoom = 4.0;
  pan.ScrollDelta(0, 0);
  EXPECT_EQ(coords()->m_dViewX, 0.0);
  pan.ScrollDelta(10, 0);
  EXPECT_DOUBLE_EQ(coords()->m_dViewX, -2.5);
  EXPECT_EQ(coords()->m_dViewY, 0.0);
  CQVIS_MousePanMgr bare;  // neither surface nor coordinate system: nothing to move
  bare.ScrollDelta(3, 3);
  bare.Active(nullptr, nullptr, 1, 1);
  EXPECT_EQ(bare.Scroll(5, 5, 0), 1);
}

// Pans at the zoom floor with the largest steps a long holds saturate at the view bound: the
// view stays finite and usable, and a pan back moves it again.
TEST_F(MousePanTest, HugePansSaturateInsteadOfRunningAway) {
  coords()->m_dZoom = qvis::kMinZoom;
  for (int i = 0; i < 1000; ++i) pan.ScrollDelta(-2147483647L, 2147483647L);
  EXPECT_EQ(coords()->m_dViewX, qvis::kMaxViewOffset);
  EXPECT_EQ(coords()->m_dViewY, -qvis::kMaxViewOffset);
  pan.Active(window, coords(), 0, 0);
  for (int i = 0; i < 1000; ++i) {
    pan.Scroll((i % 2) ? -2147483647L : 2147483647L, 0, 1);
  }
  EXPECT_TRUE(std::isfinite(coords()->m_dViewX));
  EXPECT_LE(std::fabs(coords()->m_dViewX), qvis::kMaxViewOffset);
  pan.ScrollDelta(1000, -1000);
  EXPECT_LT(coords()->m_dViewY, 0.0);
  EXPECT_GT(coords()->m_dViewY, -qvis::kMaxViewOffset);
}

TEST_F(MousePanTest, PressMoveAndReleaseDrawTheLine) {
  EXPECT_EQ(pan.MouseDown(2, 5, 5), 0);  // not armed
  pan.Active(window, coords(), 10, 10);
  EXPECT_EQ(pan.MouseDown(1, 5, 5), 0);
  EXPECT_EQ(pan.MouseDown(2, 5, 5), 1);
  EXPECT_EQ(pan.MouseDown(2, 6, 6), 0);  // already pressed
  EXPECT_EQ(pan.MouseMove(30, 20, 0), 0);  // right button not held
  EXPECT_EQ(Changed(), 0);
  buttons.right = true;
  EXPECT_EQ(pan.MouseMove(30, 20, 0), 1);
  EXPECT_GT(Changed(), 0);
  EXPECT_EQ(pan.MouseMove(35, 25, 1), 1);  // hidden line: the old one is taken away
  EXPECT_EQ(Changed(), 0);
  EXPECT_EQ(pan.MouseMove(30, 20, 0), 1);
  EXPECT_EQ(pan.MouseUp(1, 0, 0), 2);
  EXPECT_EQ(Changed(), 0);
  EXPECT_EQ(pan.m_nPressed, 0);
  EXPECT_EQ(pan.MouseUp(2, 0, 0), 0);
}

TEST_F(MousePanTest, InitAndReleaseKeepWhatTheyShould) {
  pan.Active(window, coords(), 10, 10);
  pan.MouseDown(2, 5, 5);
  pan.m_crColor = 0x123456;
  pan.Release();
  EXPECT_EQ(pan.m_nActive, 0);
  EXPECT_EQ(pan.m_nPressed, 0);
  EXPECT_EQ(pan.m_nLastX, -1);
  EXPECT_EQ(pan.m_hWnd, window);
  EXPECT_EQ(pan.m_crColor, 0x123456u);
  pan.Init();
  EXPECT_EQ(pan.m_hWnd, nullptr);
  EXPECT_EQ(pan.m_pCoords, nullptr);
  EXPECT_EQ(pan.m_pSurface, canvas.surface());
  EXPECT_EQ(pan.m_crColor, 0xFFFFFFu);
}

}  // namespace
}  // namespace qvis

namespace qvis {
namespace {

// The XOR convention over seeded random drags: once the press ends, the line is gone.
TEST(MousePanXorTest, RandomDragsLeaveNothingBehind) {
  for (unsigned seed = 1; seed <= 8; ++seed) {
    testing::Canvas canvas(120, 100, 4.0);
    const testing::Pixels background = canvas.Snapshot();
    testing::Buttons buttons(canvas.surface());
    CQVIS_MousePanMgr pan(canvas.surface());
    std::mt19937 rng(seed);
    auto coord = [&] { return static_cast<int>(rng() % 70) * 0.5 - 2.0; };
    pan.Active(nullptr, nullptr, 10, 10);
    int shown = 0;
    for (int i = 0; i < 300; ++i) {
      switch (rng() % 6) {
        case 0: buttons.right = rng() % 3 != 0; break;
        case 1: pan.MouseDown(rng() % 2 + 1, coord(), coord()); break;
        case 2: if (rng() % 4 == 0) pan.MouseUp(2, 0, 0); break;
        case 3:  // the colour is a plain member: changed with the line erased
          pan.Draw();
          pan.m_crColor = rng() % 2 ? 0xFFFFFF : 0x00FF00;
          pan.Draw();
          break;
        default: pan.MouseMove(coord(), coord(), rng() % 4 == 0 ? 1 : 0); break;
      }
      shown = std::max(shown, testing::Canvas::CountDiff(canvas.Snapshot(), background));
      if (i % 16 == 15) {  // a repaint shows exactly what was on screen
        const testing::Pixels on_screen = canvas.Snapshot();
        canvas.Restore(background);
        pan.OnDraw();
        ASSERT_EQ(testing::Canvas::CountDiff(canvas.Snapshot(), on_screen), 0) << seed << " " << i;
      }
    }
    pan.MouseUp(2, 0, 0);
    EXPECT_EQ(testing::Canvas::CountDiff(canvas.Snapshot(), background), 0) << seed;
    EXPECT_GT(shown, 0) << seed;
  }
}

}  // namespace
}  // namespace qvis
