// The canvas as a real child window, under Wine or Windows: the host frame creates it, real
// window messages go to the child HWND, and the figures and the screen (front buffer) must come
// out exactly as the same input through the headless port gives them. The parent must hear of
// Esc and Enter.
#include <windows.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <vector>

#include "apps/qvis-session/host_document.h"
#include "apps/qvis-session/session.h"
#include "apps/qvis-win32/host_frame.h"
#include "qvis/compat/key_state.h"
#include "qvis/compat/win32_names.h"
#include "qvis/coords/view_coords.h"
#include "qvis/design/design.h"
#include "qvis/gdi/gdi.h"
#include "qvis/window/headless/headless_port.h"

namespace {

using qvis::session::FigureTaker;
using qvis::session::HostDocument;
using win32host::HostFrame;

std::vector<std::uint32_t> Pixels(qvis::HBITMAP bitmap) {
  const qvis::gdi::BitmapView v = qvis::gdi::BitmapPixels(bitmap);
  std::vector<std::uint32_t> out;
  for (int y = 0; y < v.height; ++y) {
    const std::uint32_t* row = v.Row32(y);
    out.insert(out.end(), row, row + v.width);
  }
  return out;
}

// One input step, given to both sides.
struct Step {
  enum Kind { kMove, kLeftDown, kLeftUp, kWheel, kKey, kCommand } kind;
  int x = 0;
  int y = 0;
  int value = 0;  // wheel delta, virtual key or menu command
};

// The real side: messages sent to the child window as the system would deliver them, each
// followed by the paint the system would deliver before the next input.
class RealSide {
 public:
  RealSide() : frame_(640, 420) {
    frame_.SetQuitOnClose(false);
    ::ShowWindow(frame_.frame(), SW_SHOWNORMAL);
    ::UpdateWindow(frame_.frame());
  }
  HostFrame& frame() { return frame_; }
  void Run(const Step& s) {
    HWND canvas = frame_.canvas();
    const LPARAM at = MAKELPARAM(s.x, s.y);
    switch (s.kind) {
      case Step::kMove:
        ::SendMessageA(canvas, WM_MOUSEMOVE, 0, at);
        break;
      case Step::kLeftDown:
        ::SendMessageA(canvas, WM_LBUTTONDOWN, MK_LBUTTON, at);
        break;
      case Step::kLeftUp:
        ::SendMessageA(canvas, WM_LBUTTONUP, 0, at);
        break;
      case Step::kWheel: {
        POINT p{s.x, s.y};
        ::ClientToScreen(canvas, &p);
        ::SendMessageA(canvas, WM_MOUSEWHEEL,
                       MAKEWPARAM(0, static_cast<WORD>(static_cast<short>(s.value))),
                       MAKELPARAM(p.x, p.y));
        break;
      }
      case Step::kKey: {
        // The key is down (in the thread's key state, as the system's queue keeps it) while
        // its WM_KEYDOWN is handled, and up again for its WM_KEYUP.
        BYTE keys[256];
        ::GetKeyboardState(keys);
        keys[s.value & 0xFF] |= 0x80;
        ::SetKeyboardState(keys);
        ::SendMessageA(canvas, WM_KEYDOWN, static_cast<WPARAM>(s.value), 1);
        keys[s.value & 0xFF] &= 0x7F;
        ::SetKeyboardState(keys);
        ::SendMessageA(canvas, WM_KEYUP, static_cast<WPARAM>(s.value),
                       static_cast<LPARAM>(0xC0000001u));
        break;
      }
      case Step::kCommand:
        ::SendMessageA(frame_.frame(), WM_COMMAND, MAKEWPARAM(s.value, 0), 0);
        break;
    }
    ::UpdateWindow(canvas);
  }

 private:
  HostFrame frame_;
};

// The headless side: the same host pieces on the in-memory port.
class HeadlessSide {
 public:
  HeadlessSide(int width, int height, CPoint origin)
      : port_(width, height, origin), window_(&document_) {
    window_.Create(&port_);
    window_.SetFigureListener(&taker_);
  }
  void Run(const Step& s, HostFrame& commands_of) {
    switch (s.kind) {
      case Step::kMove: Around(WM_MOUSEMOVE, 0, [&] { port_.Mouse(WM_MOUSEMOVE, CPoint(s.x, s.y)); }); break;
      case Step::kLeftDown:
        Around(WM_LBUTTONDOWN, MK_LBUTTON, [&] { port_.Mouse(WM_LBUTTONDOWN, CPoint(s.x, s.y)); });
        break;
      case Step::kLeftUp:
        Around(WM_LBUTTONUP, 0, [&] { port_.Mouse(WM_LBUTTONUP, CPoint(s.x, s.y)); });
        break;
      case Step::kWheel:
        Around(WM_MOUSEWHEEL, 0, [&] { port_.Wheel(s.value, CPoint(s.x, s.y)); });
        break;
      case Step::kKey: {
        const auto vk = static_cast<WPARAM>(s.value);
        Around(WM_KEYDOWN, vk, [&] { port_.Post(WM_KEYDOWN, vk, 1); });
        Around(WM_KEYUP, vk, [&] { port_.Post(WM_KEYUP, vk, static_cast<LPARAM>(0xC0000001u)); });
        break;
      }
      case Step::kCommand:
        // The host's command table, run against this side's window.
        RunCommand(s.value, commands_of);
        break;
    }
  }
  qvis::HeadlessPort& port() { return port_; }
  HostDocument& document() { return document_; }
  CQVIS_Design* design() { return window_.GetDesign(); }

 private:
  // The window tells the taker of a finished figure and repaints itself, as it does in the
  // Win32 frame; the message and its wparam are kept to read as the real side does.
  void Around(UINT /*message*/, WPARAM /*wparam*/, const std::function<void()>& post) {
    post();
    port_.PaintIfNeeded();
  }
  void RunCommand(int command, HostFrame&) {
    switch (command) {
      case win32host::kTrack: window_.OnDrawLine(); break;
      case win32host::kSelect: window_.OnEditSelect(); break;
      case win32host::kZoomIn: window_.OnZoomZoomin(); break;
      default: FAIL() << "command " << command << " has no headless twin in this test";
    }
    port_.Invalidate(true);
    port_.PaintIfNeeded();
  }

  qvis::HeadlessPort port_;
  HostDocument document_;
  FigureTaker taker_{&document_};
  qvis::session::SessionWindow window_;
};

TEST(Win32WindowTest, RealMessagesGiveTheHeadlessFiguresAndPixels) {
  RealSide real;
  HostFrame& frame = real.frame();
  ASSERT_TRUE(frame.ok());
  const CRect client = frame.port().GetClientRect();
  ASSERT_GT(client.Width(), 100);
  ASSERT_GT(client.Height(), 100);
  RECT native;
  ::GetClientRect(frame.canvas(), &native);
  EXPECT_EQ(native.right, client.Width());
  EXPECT_EQ(native.bottom, client.Height());
  POINT origin{0, 0};
  ::ClientToScreen(frame.canvas(), &origin);
  HeadlessSide headless(client.Width(), client.Height(), CPoint(origin.x, origin.y));

  const std::vector<Step> steps = {
      {Step::kMove, 300, 200, 0},
      {Step::kWheel, 300, 200, -120},   // zoom in about the cursor
      {Step::kWheel, 320, 210, 120},    // and out again elsewhere
      {Step::kCommand, 0, 0, win32host::kTrack},
      {Step::kMove, 100, 300, 0},
      {Step::kLeftDown, 100, 300, 0},
      {Step::kLeftUp, 100, 300, 0},
      {Step::kMove, 250, 300, 0},
      {Step::kLeftDown, 250, 300, 0},
      {Step::kLeftUp, 250, 300, 0},
      {Step::kMove, 400, 150, 0},       // the rubber band follows the mouse
      {Step::kLeftDown, 400, 150, 0},
      {Step::kLeftUp, 400, 150, 0},
      {Step::kMove, 450, 160, 0},
      {Step::kKey, 0, 0, VK_RETURN},    // ends the track
      {Step::kMove, 120, 100, 0},
      {Step::kLeftDown, 120, 100, 0},
      {Step::kLeftUp, 120, 100, 0},
      {Step::kMove, 200, 120, 0},
      {Step::kKey, 0, 0, VK_ESCAPE},    // abandons the second one
      {Step::kKey, 0, 0, VK_ADD},       // "+" zooms in
  };
  int parent_keys_before = frame.ParentKeyMessages();
  for (std::size_t i = 0; i < steps.size(); ++i) {
    // Each side reads key and button state from its own port.
    real.Run(steps[i]);
    headless.Run(steps[i], frame);
    ASSERT_TRUE(Pixels(frame.port().FrontBitmap()) == Pixels(headless.port().FrontBitmap()))
        << "the screens differ after step " << i;
  }

  // The same figures: one track through the three clicks.
  const auto& got = frame.document().figures();
  const auto& want = headless.document().figures();
  ASSERT_EQ(got.size(), want.size());
  ASSERT_EQ(got.size(), 1u);
  ASSERT_GE(got[0].points.size(), 3u);
  ASSERT_EQ(got[0].points.size(), want[0].points.size());
  for (std::size_t i = 0; i < got[0].points.size(); ++i) {
    EXPECT_EQ(got[0].points[i].x, want[0].points[i].x);
    EXPECT_EQ(got[0].points[i].y, want[0].points[i].y);
  }
  EXPECT_EQ(frame.design()->m_pCoords->m_dZoom, headless.design()->m_pCoords->m_dZoom);

  // Enter and Esc each told the frame (WM_KEYDOWN 0, 0), as they told the headless parent.
  int headless_keys = 0;
  for (const qvis::MSG& m : headless.port().ParentMessages()) {
    headless_keys += m.message == WM_KEYDOWN && m.wParam == 0 && m.lParam == 0 ? 1 : 0;
  }
  EXPECT_GE(frame.ParentKeyMessages() - parent_keys_before, 2);
  EXPECT_EQ(frame.ParentKeyMessages() - parent_keys_before, headless_keys);

  // The status line names the active command.
  EXPECT_EQ(frame.StatusText(), std::string(frame.design()->GetCurrentProcInfo().GetString()));
}

TEST(Win32WindowTest, RubberBandShowsOnlyTheChangedRectangleAndPaintsReachTheScreen) {
  RealSide real;
  HostFrame& frame = real.frame();
  ASSERT_TRUE(frame.ok());
  real.Run({Step::kCommand, 0, 0, win32host::kTrack});
  real.Run({Step::kMove, 50, 50, 0});
  real.Run({Step::kLeftDown, 50, 50, 0});
  real.Run({Step::kLeftUp, 50, 50, 0});
  const int before = frame.port().PresentCount();
  real.Run({Step::kMove, 90, 70, 0});
  ASSERT_GT(frame.port().PresentCount(), before);
  const CRect client = frame.port().GetClientRect();
  EXPECT_GT(frame.port().LastChangedPixels(), 0);
  EXPECT_LT(frame.port().LastChangedPixels(), client.Width() * client.Height() / 4)
      << "a moving rubber band copies only its own area to the screen";

  // What the window shows on the screen is the front buffer: read it back through the
  // system's own DC of the canvas.
  ::RedrawWindow(frame.canvas(), nullptr, nullptr, RDW_INVALIDATE | RDW_UPDATENOW);
  HDC dc = ::GetDC(frame.canvas());
  const std::vector<std::uint32_t> front = Pixels(frame.port().FrontBitmap());
  int compared = 0, same = 0;
  for (int y = 5; y < client.Height(); y += 37) {
    for (int x = 5; x < client.Width(); x += 41) {
      const COLORREF c = ::GetPixel(dc, x, y);
      if (c == CLR_INVALID) continue;
      const std::uint32_t p = front[static_cast<std::size_t>(y) * client.Width() + x];
      const COLORREF want = RGB((p >> 16) & 0xFF, (p >> 8) & 0xFF, p & 0xFF);
      ++compared;
      same += c == want ? 1 : 0;
    }
  }
  ::ReleaseDC(frame.canvas(), dc);
  EXPECT_GT(compared, 50);
  EXPECT_EQ(same, compared);
}

}  // namespace
