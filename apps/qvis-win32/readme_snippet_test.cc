// The README's "Windows" snippet, compiled from README.md and run: it puts the canvas as a child
// window into a frame, starts a command, and the frame hears of Esc as the README says.
#include <gtest/gtest.h>
#include <windows.h>

#include "apps/qvis-win32/readme_snippet.h"

namespace {

int g_parent_key_zero = 0;  // WM_KEYDOWN (0, 0) messages the frame received

LRESULT CALLBACK FrameProc(HWND hwnd, UINT message, WPARAM wparam, LPARAM lparam) {
  if (message == WM_KEYDOWN && wparam == 0 && lparam == 0) ++g_parent_key_zero;
  return DefWindowProcA(hwnd, message, wparam, lparam);
}

TEST(ReadmeWindowsSnippetTest, EmbedsTheCanvasAsAChildAndTellsTheFrameOfEsc) {
  WNDCLASSA wc{};
  wc.lpfnWndProc = FrameProc;
  wc.hInstance = GetModuleHandleA(nullptr);
  wc.lpszClassName = "qvisReadmeFrame";
  ASSERT_NE(RegisterClassA(&wc), 0);
  HWND frame = CreateWindowExA(0, wc.lpszClassName, "frame", WS_OVERLAPPEDWINDOW, 0, 0, 900, 700,
                               nullptr, nullptr, wc.hInstance, nullptr);
  ASSERT_NE(frame, nullptr);
  {
    ReadmeCanvas canvas;
    canvas.Embed(frame);
    ASSERT_TRUE(canvas.port && canvas.port->ok());
    const auto child = static_cast<HWND>(canvas.port->native_handle());
    EXPECT_EQ(GetParent(child), frame);
    EXPECT_EQ(GetDlgCtrlID(child), 1);
    RECT client{};
    ASSERT_TRUE(GetClientRect(child, &client));
    EXPECT_EQ(client.right - client.left, 800);
    EXPECT_EQ(client.bottom - client.top, 600);
    EXPECT_EQ(canvas.wnd.GetSafeHwnd(), canvas.port.get());
    // The line command the snippet started takes a first point; Esc ends that step and the
    // frame hears of it. Before the click, nothing had begun and the frame heard nothing.
    g_parent_key_zero = 0;
    SendMessageA(child, WM_MOUSEMOVE, 0, MAKELPARAM(100, 100));
    SendMessageA(child, WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(100, 100));
    SendMessageA(child, WM_LBUTTONUP, 0, MAKELPARAM(100, 100));
    SendMessageA(child, WM_MOUSEMOVE, 0, MAKELPARAM(220, 160));
    EXPECT_EQ(g_parent_key_zero, 0);
    BYTE keys[256];
    GetKeyboardState(keys);
    keys[VK_ESCAPE] |= 0x80;  // down while its WM_KEYDOWN is handled, as the queue keeps it
    SetKeyboardState(keys);
    SendMessageA(child, WM_KEYDOWN, VK_ESCAPE, 1);
    keys[VK_ESCAPE] &= 0x7F;
    SetKeyboardState(keys);
    SendMessageA(child, WM_KEYUP, VK_ESCAPE, static_cast<LPARAM>(0xC0000001u));
    EXPECT_EQ(g_parent_key_zero, 1);
  }
  DestroyWindow(frame);
}

}  // namespace
