// Pixel tests of the cursor display: hide nesting, the figure of each type, extension lines
// and their extents, the target line, and persistence.
#include <cstring>
#include <vector>

#include "gtest/gtest.h"
#include "qvis/compat/archive.h"
#include "qvis/render/cursor_display.h"
#include "qvis/render/render_test_canvas.h"
#include "qvis/render/surface.h"

namespace {

using qvis::testing::Canvas;

constexpr COLORREF kBg = 0x204060;

struct Scene {
  Scene(int w, int h) : canvas(w, h, kBg) {
    surface.SetHandles(nullptr, nullptr, canvas.dc());  // the cursor draws into the origin DC
    cursor = std::make_unique<CQVIS_CursorMgr>(&surface);
    background = canvas.Snapshot();
  }
  bool Clean() const { return canvas.Snapshot() == background; }
  Canvas canvas;
  CQVIS_GDI surface;
  std::unique_ptr<CQVIS_CursorMgr> cursor;
  std::vector<std::uint32_t> background;
};

TEST(CursorTest, HidingNestsAndEachOffNeedsItsOn) {
  Scene s(100, 100);
  s.cursor->ExtCrossOff();
  s.cursor->DrawCursor(50, 50);
  EXPECT_TRUE(s.cursor->IsDrawn());
  EXPECT_FALSE(s.Clean());
  const std::vector<std::uint32_t> shown = s.canvas.Snapshot();

  s.cursor->Off();
  EXPECT_TRUE(s.Clean());
  s.cursor->Off();
  EXPECT_EQ(s.cursor->GetHideCount(), 2);
  s.cursor->DrawCursor(70, 70);  // hidden: only remembered
  EXPECT_TRUE(s.Clean());
  s.cursor->DrawCursor(50, 50);
  s.cursor->On();
  EXPECT_FALSE(s.cursor->IsOn());
  EXPECT_TRUE(s.Clean());
  s.cursor->On();
  EXPECT_TRUE(s.cursor->IsOn());
  EXPECT_EQ(s.canvas.Snapshot(), shown);
}

TEST(CursorTest, MovingErasesTheOldFigureAndTheSamePointDrawsOnce) {
  Scene s(100, 100);
  s.cursor->ExtCrossOff();
  s.cursor->DrawCursor(30, 30);
  const std::vector<std::uint32_t> once = s.canvas.Snapshot();
  s.cursor->DrawCursor(30, 30);
  EXPECT_EQ(s.canvas.Snapshot(), once);
  s.cursor->DrawCursor(60, 40);
  EXPECT_EQ(s.canvas.Box().left, 50);  // nothing left at the old place
  s.cursor->Off();
  EXPECT_TRUE(s.Clean());
}

TEST(CursorTest, FigureOfEachType) {
  struct Row {
    int type;
    CRect box;  // of the figure at (50, 50) without extension lines; empty: nothing
  } rows[] = {
      {1, CRect(40, 40, 61, 60)},  // diagonals, the second one runs from (60, 40)
      {2, CRect(40, 40, 61, 61)},  // Ellipse(40, 40, 61, 61)
      {3, CRect(40, 40, 60, 60)},  // upright cross
      {4, CRect(40, 40, 61, 61)},  // box, four lines round the square
      {5, CRect()},  {6, CRect()}, {7, CRect()}, {9, CRect()},
  };
  for (const Row& r : rows) {
    Scene s(100, 100);
    s.cursor->ExtCrossOff();
    s.cursor->SetCursorType(static_cast<CursorType>(r.type));
    s.cursor->DrawCursor(50.7, 50.2);  // figures use the truncated position
    const CRect box = s.canvas.Box();
    if (r.box.IsRectNull()) {
      EXPECT_TRUE(s.Clean()) << r.type;
      continue;
    }
    // The dotted pen may leave the last pixels of a stroke out.
    EXPECT_EQ(box.left, r.box.left) << r.type;
    EXPECT_EQ(box.top, r.box.top) << r.type;
    EXPECT_LE(box.right, r.box.right) << r.type;
    EXPECT_GE(box.right, r.box.right - 3) << r.type;
    EXPECT_LE(box.bottom, r.box.bottom) << r.type;
    EXPECT_GE(box.bottom, r.box.bottom - 3) << r.type;
    s.cursor->DrawCursor();  // the same figure again: XOR erases it
    EXPECT_TRUE(s.Clean()) << r.type;
  }
}

// Extent of the pixels changed on row y (or column x): first and last index, or -1.
std::pair<int, int> RowExtent(const Scene& s, int y) {
  int first = -1, last = -1;
  for (int x = 0; x < s.canvas.width(); ++x)
    if (s.canvas.At(x, y) != kBg) (first < 0 ? first : last) = x, last = x;
  return {first, last};
}
std::pair<int, int> ColumnExtent(const Scene& s, int x) {
  int first = -1, last = -1;
  for (int y = 0; y < s.canvas.height(); ++y)
    if (s.canvas.At(x, y) != kBg) (first < 0 ? first : last) = y, last = y;
  return {first, last};
}

TEST(CursorTest, ExtensionLinesUseCrossedExtents) {
  // Size 800 x 600, cursor at (100, 50): the horizontal line runs 1 .. 599, the vertical one
  // 1 .. 799 (the far ends use the other extent).
  for (int style : {0, 1}) {
    Scene s(900, 900);
    s.cursor->SetSize(800, 600);
    s.cursor->SetExtLineStyle(style);
    s.cursor->SetCursorType(QVIS_CURSOR_EXT_ONLY);
    s.cursor->DrawCursor(100, 50);
    const auto row = RowExtent(s, 50);
    const auto col = ColumnExtent(s, 100);
    EXPECT_EQ(row.first, 1) << style;
    EXPECT_LE(row.second, 598) << style;
    EXPECT_GE(row.second, 593) << style;
    EXPECT_EQ(col.first, 1) << style;
    EXPECT_LE(col.second, 798) << style;
    EXPECT_GE(col.second, 793) << style;
    // Solid: every pixel once, except the crossing, which XOR hits twice.
    if (style == 1) {
      EXPECT_EQ(s.canvas.Drawn(), 598 + 798 - 2);
    }
    s.cursor->Off();
    EXPECT_TRUE(s.Clean());
  }
}

TEST(CursorTest, WhichExtensionLinesAreLeftOut) {
  struct Row {
    int type;
    double x, y;
    int style;
    bool horizontal, vertical;
  } rows[] = {
      {5, 100, 50, 1, false, true},  {6, 100, 50, 1, true, false},
      {1, -3, 50, 1, false, true},   {1, 100, -3, 1, true, false},
      {1, 100, 50, 2, false, false}, {7, 100, 50, 1, true, true},
  };
  for (const Row& r : rows) {
    Scene s(300, 300);
    s.cursor->SetSize(300, 300);
    s.cursor->SetExtLineStyle(r.style);
    s.cursor->SetCursorType(static_cast<CursorType>(r.type));
    s.cursor->DrawCursor(r.x, r.y);
    // Only lines on the canvas can be seen: a negative position puts its own line off it.
    if (r.y >= 0) {
      EXPECT_EQ(s.canvas.At(250, static_cast<int>(r.y)) != kBg, r.horizontal)
          << r.type << " at " << r.x << "," << r.y;
    }
    if (r.x >= 0) {
      EXPECT_EQ(s.canvas.At(static_cast<int>(r.x), 250) != kBg, r.vertical)
          << r.type << " at " << r.x << "," << r.y;
    }
  }
}

TEST(CursorTest, DiagonalExtensionAndTargetLine) {
  Scene s(200, 200);
  s.cursor->SetSize(200, 200);
  s.cursor->ExtCrossOff();
  s.cursor->ExtXCrossOn();
  s.cursor->SetExtLineStyle(1);
  s.cursor->SetCursorType(QVIS_CURSOR_EXT_ONLY);
  s.cursor->DrawCursor(60, 80);
  EXPECT_NE(s.canvas.At(160, 180), kBg);  // down-right diagonal
  EXPECT_NE(s.canvas.At(1, 21), kBg);     // its upper-left end at the box edge
  EXPECT_NE(s.canvas.At(130, 10), kBg);   // up-right diagonal
  EXPECT_NE(s.canvas.At(10, 130), kBg);
  EXPECT_EQ(s.canvas.At(60, 150), kBg);   // no straight lines
  s.cursor->Off();
  EXPECT_TRUE(s.Clean());

  Scene t(200, 200);
  t.cursor->SetCursorType(static_cast<CursorType>(0));  // no figure
  t.cursor->DrawCursor(20, 20);
  t.cursor->SetTargetXY(120, 20);
  t.cursor->DrawTarget();
  EXPECT_TRUE(t.Clean());  // target off
  t.cursor->TargetOn();
  t.cursor->DrawTarget();
  EXPECT_EQ(RowExtent(t, 20).first, 20);
  EXPECT_LE(RowExtent(t, 20).second, 119);
  t.cursor->DrawTarget();
  EXPECT_TRUE(t.Clean());
}

TEST(CursorStateTest, PersistsFiftyEightBytesAndStopsAtVersionZero) {
  CQVIS_CursorMgr a(nullptr), b(nullptr);
  EXPECT_EQ(a, b);
  a.ExtCrossOff();
  a.ExtXCrossOn();
  a.SetSize(800, 600);
  a.SetColor(0x0000FF);
  a.SetExtLineStyle(1);
  a.SetCursorType(QVIS_CURSOR_BOX);  // not saved
  EXPECT_NE(a, b);
  qvis::MemFile file;
  {
    CArchive ar(&file, CArchive::store);
    a.Serialize(ar);
    ar.Close();
  }
  ASSERT_EQ(file.bytes().size(), 58u);
  file.Rewind();
  {
    CArchive ar(&file, CArchive::load);
    b.Serialize(ar);
  }
  EXPECT_EQ(a, b);
  EXPECT_EQ(b.GetCursorType(), QVIS_CURSOR_XCROSS);
  EXPECT_EQ(b.GetColor(), 0x0000FFu);

  std::vector<std::uint8_t> bytes = file.bytes();
  std::memset(bytes.data(), 0, 4);
  qvis::MemFile old(bytes);
  CQVIS_CursorMgr c(nullptr);
  {
    CArchive ar(&old, CArchive::load);
    c.Serialize(ar);
  }
  EXPECT_EQ(c, CQVIS_CursorMgr(nullptr));
  a.Clear();
  EXPECT_EQ(a, CQVIS_CursorMgr(nullptr));
  EXPECT_EQ(a.GetCursorType(), QVIS_CURSOR_XCROSS);
}

}  // namespace
