// FrontBuffer, checked on its pixels: what a resize keeps, clears and clamps.
#include "qvis/window/front_buffer.h"

#include "gtest/gtest.h"
#include "qvis/compat/win32_names.h"
#include "qvis/gdi/gdi.h"

namespace qvis {
namespace {

constexpr COLORREF kMark = 0x00336699;

TEST(FrontBufferTest, ResizeKeepsWhatFitsOnlyWhenAsked) {
  struct Case {
    const char* name;
    int width, height;
    bool keep;
    COLORREF at_mark;  // the pixel (5, 3) marked before the resize
  };
  const Case cases[] = {
      {"grown, kept", 40, 30, true, kMark},
      {"shrunk, kept", 6, 4, true, kMark},
      {"grown, cleared", 40, 30, false, 0},
      {"shrunk past the mark", 5, 3, true, gdi::kClrInvalid},
  };
  for (const Case& c : cases) {
    FrontBuffer front;
    front.Resize(20, 10, false);
    const HDC dc = front.dc();
    ASSERT_NE(dc, nullptr);
    gdi::SetPixel(dc, 5, 3, kMark);
    gdi::SetPixel(dc, 19, 9, kMark);
    front.Resize(c.width, c.height, c.keep);
    EXPECT_EQ(front.dc(), dc) << c.name << ": the DC handed out stays valid";
    EXPECT_EQ(front.width(), c.width) << c.name;
    EXPECT_EQ(front.height(), c.height) << c.name;
    EXPECT_EQ(gdi::GetPixel(dc, 5, 3), c.at_mark) << c.name;
    if (c.width > 20) {
      // Beyond the old buffer the new one starts black; the old far corner keeps its mark
      // only when asked.
      EXPECT_EQ(gdi::GetPixel(dc, 25, 15), 0u) << c.name;
      EXPECT_EQ(gdi::GetPixel(dc, 19, 9), c.keep ? kMark : 0u) << c.name;
    }
  }
}

TEST(FrontBufferTest, SidesAreClampedToTheirRange) {
  FrontBuffer front;
  front.Resize(9000, 2, false);
  EXPECT_EQ(front.width(), FrontBuffer::kMaxSide);
  EXPECT_EQ(front.height(), 2);
  const gdi::BitmapView view = gdi::BitmapPixels(front.bitmap());
  EXPECT_EQ(view.width, FrontBuffer::kMaxSide);

  front.Resize(-3, -1, true);  // clamped to an empty buffer
  EXPECT_EQ(front.width(), 0);
  EXPECT_EQ(front.height(), 0);
  EXPECT_EQ(gdi::GetPixel(front.dc(), 0, 0), gdi::kClrInvalid);
}

}  // namespace
}  // namespace qvis
