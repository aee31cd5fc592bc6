// The core device-layer calls on real bitmaps: object lifetime, DC state, XOR reversibility over
// random scenes, blits between formats, regions through the API, and hostile arguments.
#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <cstring>
#include <random>
#include <vector>

#include "qvis/compat/win32_names.h"
#include "qvis/gdi/dc.h"
#include "qvis/gdi/gdi.h"

namespace qvis::gdi {
namespace {

// Canvas: a memory DC over a fresh 32-bpp bitmap.
struct Canvas {
  Canvas(int w, int h) : dc(CreateCompatibleDC(nullptr)), bitmap(CreateBitmap32(w, h)) {
    SelectObject(dc, bitmap);
  }
  ~Canvas() {
    DeleteDC(dc);
    DeleteObject(bitmap);
  }
  std::vector<std::uint32_t> Pixels() const {
    BitmapView v = BitmapPixels(bitmap);
    std::vector<std::uint32_t> out;
    for (int y = 0; y < v.height; ++y) out.insert(out.end(), v.Row32(y), v.Row32(y) + v.width);
    return out;
  }
  void Noise(std::mt19937& rng) {
    BitmapView v = BitmapPixels(bitmap);
    for (int y = 0; y < v.height; ++y) {
      for (int x = 0; x < v.width; ++x) v.Row32(y)[x] = rng() & 0xFFFFFFu;
    }
  }
  HDC dc;
  HBITMAP bitmap;
};

TEST(GdiObjectsTest, SelectReturnsThePreviousObjectAndRefusesBadOnes) {
  Canvas c(8, 8);
  HPEN red = CreatePen(PS_SOLID, 1, 0x0000FF);
  HGDIOBJ old = SelectObject(c.dc, red);
  EXPECT_EQ(old, GetStockObject(BLACK_PEN));
  EXPECT_EQ(SelectObject(c.dc, old), red);
  EXPECT_EQ(SelectObject(c.dc, nullptr), nullptr);
  EXPECT_EQ(SelectObject(nullptr, red), nullptr);
  EXPECT_TRUE(DeleteObject(red));
  // A deleted handle is refused and the DC keeps its pen.
  EXPECT_EQ(SelectObject(c.dc, red), nullptr);
  EXPECT_EQ(GetCurrentPen(c.dc), GetStockObject(BLACK_PEN));
  EXPECT_FALSE(DeleteObject(red));
  EXPECT_FALSE(DeleteObject(nullptr));
  // Stock objects survive DeleteObject.
  EXPECT_TRUE(DeleteObject(GetStockObject(WHITE_BRUSH)));
  EXPECT_NE(SelectObject(c.dc, GetStockObject(WHITE_BRUSH)), nullptr);
  EXPECT_EQ(GetStockObject(-1), nullptr);
  EXPECT_EQ(GetStockObject(9), nullptr);
  EXPECT_EQ(GetStockObject(1000), nullptr);
}

// A deleted handle stays refused after its memory (or its table slot) holds a new object, and
// a made-up handle is refused without being read.
TEST(GdiObjectsTest, StaleAndMadeUpHandlesAreRefused) {
  Canvas c(8, 8);
  HPEN stale = CreatePen(PS_SOLID, 1, 0x0000FF);
  HBRUSH stale_brush = CreateSolidBrush(0x00FF00);
  ASSERT_TRUE(DeleteObject(stale));
  ASSERT_TRUE(DeleteObject(stale_brush));
  // New objects of the same kinds and sizes, created and deleted in turn, take the freed
  // memory and, sooner or later, the freed slots.
  std::vector<HGDIOBJ> made;
  for (int i = 0; i < 300; ++i) {
    HPEN pen = CreatePen(PS_SOLID, 1, 0x0000FF);
    HBRUSH brush = CreateSolidBrush(0x00FF00);
    ASSERT_NE(pen, stale) << i;
    ASSERT_NE(reinterpret_cast<HGDIOBJ>(brush), reinterpret_cast<HGDIOBJ>(stale_brush)) << i;
    EXPECT_EQ(SelectObject(c.dc, stale), nullptr) << i;
    EXPECT_EQ(SelectObject(c.dc, stale_brush), nullptr) << i;
    EXPECT_EQ(GetObjectType(stale), 0u);
    EXPECT_EQ(GetObjectType(pen), 1u);
    EXPECT_EQ(GetObjectType(brush), 2u);
    made.push_back(pen);
    made.push_back(brush);
    if (i % 3 != 0) {
      EXPECT_TRUE(DeleteObject(pen));
      EXPECT_TRUE(DeleteObject(brush));
    }
  }
  EXPECT_FALSE(DeleteObject(stale));
  EXPECT_EQ(GetCurrentPen(c.dc), GetStockObject(BLACK_PEN));
  EXPECT_EQ(GetCurrentBrush(c.dc), GetStockObject(WHITE_BRUSH));
  // Every handle ever given out is distinct; the ones deleted are refused.
  for (std::size_t i = 0; i < made.size(); ++i) {
    for (std::size_t j = i + 1; j < made.size(); ++j) ASSERT_NE(made[i], made[j]);
    const bool alive = (i / 2) % 3 == 0;
    EXPECT_EQ(DeleteObject(made[i]), alive ? TRUE : FALSE) << i;
  }
  // Values that were never handles: nothing is read through them.
  int local = 0;
  for (HGDIOBJ fake : {reinterpret_cast<HGDIOBJ>(&local), reinterpret_cast<HGDIOBJ>(std::uintptr_t{1}),
                       reinterpret_cast<HGDIOBJ>(std::uintptr_t{0x7FFFFFF0}),
                       reinterpret_cast<HGDIOBJ>(~std::uintptr_t{0} << 4)}) {
    EXPECT_EQ(SelectObject(c.dc, fake), nullptr);
    EXPECT_FALSE(DeleteObject(fake));
    EXPECT_EQ(GetObjectType(fake), 0u);
    EXPECT_EQ(BitmapPixels(reinterpret_cast<HBITMAP>(fake)).bits, nullptr);
  }
}

TEST(GdiObjectsTest, DeletingSelectedObjectsIsDeferredUntilDeselected) {
  Canvas c(8, 8);
  HPEN pen = CreatePen(PS_SOLID, 1, 0x00FF00);
  HBRUSH brush = CreateSolidBrush(0xFF0000);
  SelectObject(c.dc, pen);
  SelectObject(c.dc, brush);
  EXPECT_TRUE(DeleteObject(pen));
  EXPECT_TRUE(DeleteObject(brush));
  // Still drawing with them.
  Rectangle(c.dc, 0, 0, 4, 4);
  EXPECT_EQ(GetPixel(c.dc, 0, 0), 0x00FF00u);
  EXPECT_EQ(GetPixel(c.dc, 1, 1), 0xFF0000u);
  // Deselecting frees them (the sanitizer build checks that nothing reads them afterwards).
  SelectObject(c.dc, GetStockObject(BLACK_PEN));
  SelectObject(c.dc, GetStockObject(WHITE_BRUSH));
  // A bitmap deleted while selected lives until its DC goes.
  HDC dc = CreateCompatibleDC(nullptr);
  HBITMAP bm = CreateBitmap32(4, 4);
  SelectObject(dc, bm);
  EXPECT_TRUE(DeleteObject(bm));
  SetPixel(dc, 1, 1, 0x123456);
  EXPECT_EQ(GetPixel(dc, 1, 1), 0x123456u);
  DeleteDC(dc);
}

TEST(GdiObjectsTest, ABitmapLivesInOneDcAtATime) {
  Canvas a(4, 4);
  HDC other = CreateCompatibleDC(nullptr);
  EXPECT_EQ(SelectObject(other, a.bitmap), nullptr);
  EXPECT_NE(GetCurrentBitmap(other), a.bitmap);
  DeleteDC(other);
}

TEST(GdiObjectsTest, CreationRejectsBadArguments) {
  EXPECT_EQ(CreatePen(99, 1, 0), nullptr);
  EXPECT_EQ(CreateHatchBrush(6, 0), nullptr);
  EXPECT_EQ(CreateHatchBrush(-1, 0), nullptr);
  EXPECT_EQ(ExtCreatePen(PS_GEOMETRIC, 3, nullptr, 0, nullptr), nullptr);
  EXPECT_EQ(CreateFontIndirectA(nullptr), nullptr);
  EXPECT_EQ(CreateBitmap(4, 4, 1, 24, nullptr), nullptr);
  EXPECT_EQ(CreateBitmap(-1, 4, 1, 32, nullptr), nullptr);
  EXPECT_EQ(CreateBitmap32(1 << 30, 1 << 30), nullptr);  // beyond what we allocate
  HBITMAP empty = CreateBitmap32(0, 0);
  ASSERT_NE(empty, nullptr);
  EXPECT_EQ(BitmapPixels(empty).width, 0);
  DeleteObject(empty);
  EXPECT_EQ(BitmapPixels(nullptr).bits, nullptr);
}

TEST(GdiObjectsTest, MonochromeBitmapRowsArePaddedTo16BitsOnInput) {
  const std::uint8_t bits[] = {0xA0, 0x00, 0x40, 0x00};  // 3 x 2: 101 / 010
  HBITMAP bm = CreateBitmap(3, 2, 1, 1, bits);
  HDC dc = CreateCompatibleDC(nullptr);
  SelectObject(dc, bm);
  EXPECT_EQ(GetPixel(dc, 0, 0), 0xFFFFFFu);
  EXPECT_EQ(GetPixel(dc, 1, 0), 0u);
  EXPECT_EQ(GetPixel(dc, 2, 0), 0xFFFFFFu);
  EXPECT_EQ(GetPixel(dc, 1, 1), 0xFFFFFFu);
  EXPECT_EQ(GetPixel(dc, 3, 0), kClrInvalid);
  DeleteDC(dc);
  DeleteObject(bm);
}

TEST(GdiStateTest, SettersReturnThePreviousValueAndIgnoreBadValues) {
  Canvas c(2, 2);
  struct Row {
    int (*set)(HDC, int);
    int (*get)(HDC);
    int initial, good, bad;
  } rows[] = {
      {SetROP2, GetROP2, R2_COPYPEN, R2_XORPEN, 17},
      {SetBkMode, GetBkMode, OPAQUE, TRANSPARENT, 3},
      {SetPolyFillMode, GetPolyFillMode, ALTERNATE, WINDING, 0},
      {SetArcDirection, GetArcDirection, AD_COUNTERCLOCKWISE, AD_CLOCKWISE, 3},
  };
  for (const Row& r : rows) {
    EXPECT_EQ(r.get(c.dc), r.initial);
    EXPECT_EQ(r.set(c.dc, r.good), r.initial);
    EXPECT_EQ(r.set(c.dc, r.bad), 0);
    EXPECT_EQ(r.get(c.dc), r.good);
    EXPECT_EQ(r.set(nullptr, r.good), 0);
    EXPECT_EQ(r.get(nullptr), 0);
  }
  EXPECT_EQ(SetBkColor(c.dc, 0x123456), 0xFFFFFFu);
  EXPECT_EQ(GetBkColor(c.dc), 0x123456u);
  EXPECT_EQ(SetTextColor(c.dc, 0x654321), 0u);
  EXPECT_EQ(SetTextColor(nullptr, 1), kClrInvalid);
  CPoint p;
  EXPECT_TRUE(MoveToEx(c.dc, 5, -7, nullptr));
  EXPECT_TRUE(MoveToEx(c.dc, 1, 2, &p));
  EXPECT_EQ(p, CPoint(5, -7));
  EXPECT_TRUE(LineTo(c.dc, 9, 9));
  GetCurrentPositionEx(c.dc, &p);
  EXPECT_EQ(p, CPoint(9, 9));
  EXPECT_TRUE(SetBrushOrgEx(c.dc, 3, 4, nullptr));
  EXPECT_TRUE(SetBrushOrgEx(c.dc, 0, 0, &p));
  EXPECT_EQ(p, CPoint(3, 4));
  float old = 0;
  EXPECT_FALSE(SetMiterLimit(c.dc, 0.5f, &old));
  EXPECT_TRUE(SetMiterLimit(c.dc, 4.0f, &old));
  EXPECT_EQ(old, 10.0f);
}

// Draws one random primitive of the core with random state; `kind` picks which.
void RandomPrimitive(HDC dc, std::mt19937& rng, int kind, int w, int h) {
  std::uniform_int_distribution<int> x(-20, w + 20), y(-20, h + 20);
  auto pt = [&] { return CPoint(x(rng), y(rng)); };
  switch (kind) {
    case 0: {  // line
      MoveToEx(dc, x(rng), y(rng), nullptr);
      LineTo(dc, x(rng), y(rng));
      break;
    }
    case 1: {  // polyline
      CPoint p[6] = {pt(), pt(), pt(), pt(), pt(), pt()};
      Polyline(dc, p, 2 + static_cast<int>(rng() % 5));
      break;
    }
    case 2: {  // polygon
      CPoint p[7] = {pt(), pt(), pt(), pt(), pt(), pt(), pt()};
      SetPolyFillMode(dc, 1 + static_cast<int>(rng() % 2));
      Polygon(dc, p, 3 + static_cast<int>(rng() % 5));
      break;
    }
    case 3:
      Rectangle(dc, x(rng), y(rng), x(rng), y(rng));
      break;
    case 4: {  // region fill and frame
      HRGN a = CreateRectRgn(x(rng), y(rng), x(rng), y(rng));
      CPoint p[5] = {pt(), pt(), pt(), pt(), pt()};
      HRGN b = CreatePolygonRgn(p, 5, ALTERNATE);
      CombineRgn(a, a, b, RGN_XOR);
      PaintRgn(dc, a);
      DeleteObject(a);
      DeleteObject(b);
      break;
    }
    default: {
      CPoint p[4] = {pt(), pt(), pt(), pt()};
      const int counts[2] = {2, 2};
      PolyPolygon(dc, p, counts, 2);
      break;
    }
  }
}

void RandomPenAndBrush(HDC dc, std::mt19937& rng, std::vector<HGDIOBJ>* made) {
  const int styles[] = {PS_SOLID, PS_DASH, PS_DOT, PS_DASHDOT, PS_DASHDOTDOT, PS_NULL};
  HPEN pen = CreatePen(styles[rng() % 6], 1, rng() & 0xFFFFFF);
  HBRUSH brush = (rng() % 3 == 0) ? CreateHatchBrush(static_cast<int>(rng() % 6), rng() & 0xFFFFFF)
                                  : CreateSolidBrush(rng() & 0xFFFFFF);
  SelectObject(dc, pen);
  SelectObject(dc, (rng() % 4 == 0) ? GetStockObject(NULL_BRUSH) : brush);
  SetBkMode(dc, 1 + static_cast<int>(rng() % 2));
  SetBkColor(dc, rng() & 0xFFFFFF);
  SetBrushOrgEx(dc, static_cast<int>(rng() % 16) - 8, static_cast<int>(rng() % 16) - 8, nullptr);
  made->push_back(pen);
  made->push_back(brush);
}

TEST(GdiXorTest, EveryPrimitiveDrawnTwiceInXorLeavesTheBackground) {
  std::mt19937 rng(77);
  Canvas c(48, 40);
  for (int scene = 0; scene < 400; ++scene) {
    c.Noise(rng);
    // A clip region half the time.
    HRGN clip = nullptr;
    if (scene % 2) {
      clip = CreateRectRgn(5, 5, 40, 30);
      HRGN hole = CreateRectRgn(15, 10, 25, 20);
      CombineRgn(clip, clip, hole, RGN_DIFF);
      DeleteObject(hole);
    }
    SelectClipRgn(c.dc, clip);
    const std::vector<std::uint32_t> before = c.Pixels();
    std::vector<HGDIOBJ> made;
    RandomPenAndBrush(c.dc, rng, &made);
    SetROP2(c.dc, R2_XORPEN);
    const int kind = scene % 6;
    const std::mt19937 replay = rng;
    RandomPrimitive(c.dc, rng, kind, 48, 40);
    std::mt19937 again = replay;
    RandomPrimitive(c.dc, again, kind, 48, 40);
    ASSERT_EQ(c.Pixels(), before) << "scene " << scene << " kind " << kind;
    SelectObject(c.dc, GetStockObject(BLACK_PEN));
    SelectObject(c.dc, GetStockObject(WHITE_BRUSH));
    for (HGDIOBJ o : made) DeleteObject(o);
    SelectClipRgn(c.dc, nullptr);
    if (clip) DeleteObject(clip);
  }
}

TEST(GdiXorTest, OnePassInXorOverBlackEqualsCopyWhereEachPixelIsTouchedOnce) {
  // Lines, rectangles and polygons without a pen touch each pixel once, so XOR over black shows
  // exactly what copy mode paints.
  std::mt19937 rng(5);
  Canvas xor_canvas(40, 40), copy_canvas(40, 40);
  for (int scene = 0; scene < 300; ++scene) {
    std::vector<HGDIOBJ> made;
    const std::uint32_t seed = static_cast<std::uint32_t>(rng());
    for (int pass = 0; pass < 2; ++pass) {
      Canvas& c = pass == 0 ? xor_canvas : copy_canvas;
      PatBlt(c.dc, 0, 0, 40, 40, BLACKNESS);
      std::mt19937 r(seed);
      RandomPenAndBrush(c.dc, r, &made);
      // 0: a line; 1: a rectangle with pen and brush (the brush fills inside the outline);
      // 2: a rectangle outline; 3: a polygon without pen; 4: a rectangle without pen.
      const int kind = static_cast<int>(seed % 5);
      if (kind == 2) SelectObject(c.dc, GetStockObject(NULL_BRUSH));
      if (kind >= 3) SelectObject(c.dc, GetStockObject(NULL_PEN));
      SetROP2(c.dc, pass == 0 ? R2_XORPEN : R2_COPYPEN);
      if (kind == 1 || kind == 2) {
        // A box one pixel wide or high runs its outline over the same pixels twice, as the
        // reference does; those are left to the golden scenes.
        std::uniform_int_distribution<int> v(-10, 50), d(2, 30);
        const int x0 = v(r), y0 = v(r);
        const int x1 = x0 + ((r() & 1) ? d(r) : -d(r)), y1 = y0 + ((r() & 1) ? d(r) : -d(r));
        Rectangle(c.dc, x0, y0, x1, y1);
      } else {
        RandomPrimitive(c.dc, r, kind == 0 ? 0 : kind == 3 ? 2 : 3, 40, 40);
      }
    }
    ASSERT_EQ(xor_canvas.Pixels(), copy_canvas.Pixels()) << "scene " << scene;
    for (Canvas* c : {&xor_canvas, &copy_canvas}) {
      SelectObject(c->dc, GetStockObject(BLACK_PEN));
      SelectObject(c->dc, GetStockObject(WHITE_BRUSH));
    }
    for (HGDIOBJ o : made) DeleteObject(o);
  }
}

TEST(GdiBlitTest, MonochromeAndColourConvertThroughTheDcColours) {
  Canvas colour(8, 2);
  const std::uint8_t bits[] = {0xF0, 0x00, 0x0F, 0x00};
  HBITMAP mono = CreateBitmap(8, 2, 1, 1, bits);
  HDC mdc = CreateCompatibleDC(nullptr);
  SelectObject(mdc, mono);
  SetTextColor(colour.dc, 0x0000FF);  // 0 bits
  SetBkColor(colour.dc, 0x00FF00);    // 1 bits
  ASSERT_TRUE(BitBlt(colour.dc, 0, 0, 8, 2, mdc, 0, 0, SRCCOPY));
  EXPECT_EQ(GetPixel(colour.dc, 0, 0), 0x00FF00u);
  EXPECT_EQ(GetPixel(colour.dc, 7, 0), 0x0000FFu);
  EXPECT_EQ(GetPixel(colour.dc, 0, 1), 0x0000FFu);
  // Colour to monochrome: the source DC's background colour becomes 1, the rest 0.
  SetBkColor(colour.dc, 0x0000FF);
  ASSERT_TRUE(BitBlt(mdc, 0, 0, 8, 2, colour.dc, 0, 0, SRCCOPY));
  EXPECT_EQ(GetPixel(mdc, 7, 0), 0xFFFFFFu);
  EXPECT_EQ(GetPixel(mdc, 0, 0), 0u);
  // A source operation without a source fails; a pattern-only one works.
  EXPECT_FALSE(BitBlt(colour.dc, 0, 0, 8, 2, nullptr, 0, 0, SRCCOPY));
  EXPECT_FALSE(PatBlt(colour.dc, 0, 0, 8, 2, SRCCOPY));
  EXPECT_TRUE(BitBlt(colour.dc, 0, 0, 8, 2, nullptr, 0, 0, WHITENESS));
  EXPECT_EQ(GetPixel(colour.dc, 3, 1), 0xFFFFFFu);
  DeleteDC(mdc);
  DeleteObject(mono);
}

TEST(GdiBlitTest, ColoursBecomeBitsOnMonochromeBitmapsByTheirOwnRules) {
  HBITMAP mono = CreateBitmap(8, 4, 1, 1, nullptr);
  HDC dc = CreateCompatibleDC(nullptr);
  SelectObject(dc, mono);
  SetBkColor(dc, 0x000000);
  HPEN pen = CreatePen(PS_SOLID, 1, 0x202020);
  HBRUSH brush = CreateSolidBrush(0xE0E0E0);
  SelectObject(dc, pen);
  SelectObject(dc, brush);
  // A pen colour other than the background colour takes the opposite of the background's bit,
  // however close to it the colour is.
  Rectangle(dc, 0, 0, 8, 4);
  EXPECT_EQ(GetPixel(dc, 0, 0), 0xFFFFFFu);
  SetBkColor(dc, 0xE0E0E0);
  Rectangle(dc, 0, 0, 8, 4);
  EXPECT_EQ(GetPixel(dc, 0, 0), 0u);
  SetBkColor(dc, 0x202020);
  Rectangle(dc, 0, 0, 8, 4);
  EXPECT_EQ(GetPixel(dc, 0, 0), 0u);  // the background colour itself: its own (black) bit
  SelectObject(dc, GetStockObject(BLACK_BRUSH));
  Rectangle(dc, 0, 0, 8, 4);
  EXPECT_EQ(GetPixel(dc, 3, 2), 0u);
  SetPixel(dc, 3, 2, 0x909090);  // a single pixel: the nearer of black and white
  EXPECT_EQ(GetPixel(dc, 3, 2), 0xFFFFFFu);
  SelectObject(dc, GetStockObject(BLACK_PEN));
  SelectObject(dc, GetStockObject(WHITE_BRUSH));
  DeleteObject(pen);
  DeleteObject(brush);
  DeleteDC(dc);
  DeleteObject(mono);
}

// A whole-frame copy between two bitmaps of one size takes the block path: every pixel arrives,
// including the tail of an odd-sized frame and a copy shifted by whole rows.
TEST(GdiBlitTest, WholeFrameCopyBetweenBitmapsIsExact) {
  for (const int w : {1, 17, 333}) {
    const int h = 7;
    HDC a = CreateCompatibleDC(nullptr);
    HDC b = CreateCompatibleDC(nullptr);
    HBITMAP ba = CreateBitmap32(w, h);
    HBITMAP bb = CreateBitmap32(w, h);
    SelectObject(a, ba);
    SelectObject(b, bb);
    std::mt19937 rng(static_cast<unsigned>(w));
    const BitmapView va = BitmapPixels(ba), vb = BitmapPixels(bb);
    for (int y = 0; y < h; ++y) {
      for (int x = 0; x < w; ++x) {
        va.Row32(y)[x] = rng() & 0xFFFFFFu;
        vb.Row32(y)[x] = 0x123456;
      }
    }
    ASSERT_TRUE(BitBlt(b, 0, 0, w, h, a, 0, 0, SRCCOPY));
    for (int y = 0; y < h; ++y) {
      ASSERT_EQ(std::memcmp(va.Row32(y), vb.Row32(y), static_cast<std::size_t>(w) * 4), 0) << w;
    }
    ASSERT_TRUE(BitBlt(b, 0, 2, w, h, a, 0, 0, SRCCOPY));  // rows 0..4 land on rows 2..6
    for (int y = 2; y < h; ++y) {
      ASSERT_EQ(std::memcmp(va.Row32(y - 2), vb.Row32(y), static_cast<std::size_t>(w) * 4), 0);
    }
    DeleteDC(a);
    DeleteDC(b);
    DeleteObject(ba);
    DeleteObject(bb);
  }
}

TEST(GdiBlitTest, OverlappingCopyWithinOneBitmapReadsTheOriginal) {
  Canvas c(6, 6);
  for (int y = 0; y < 6; ++y) {
    for (int x = 0; x < 6; ++x) SetPixel(c.dc, x, y, static_cast<COLORREF>(y * 16 + x));
  }
  ASSERT_TRUE(BitBlt(c.dc, 1, 1, 5, 5, c.dc, 0, 0, SRCCOPY));
  for (int y = 1; y < 6; ++y) {
    for (int x = 1; x < 6; ++x) {
      ASSERT_EQ(GetPixel(c.dc, x, y), static_cast<COLORREF>((y - 1) * 16 + (x - 1)));
    }
  }
  // And back up again, through the general path (SRCINVERT over black is a copy).
  ASSERT_TRUE(BitBlt(c.dc, 0, 0, 5, 5, c.dc, 1, 1, SRCCOPY));
  PatBlt(c.dc, 0, 5, 6, 1, BLACKNESS);
  ASSERT_TRUE(BitBlt(c.dc, 0, 5, 5, 1, c.dc, 0, 4, SRCINVERT));
  for (int y = 0; y < 5; ++y) {
    for (int x = 0; x < 5; ++x) ASSERT_EQ(GetPixel(c.dc, x, y), static_cast<COLORREF>(y * 16 + x));
  }
  EXPECT_EQ(GetPixel(c.dc, 3, 5), static_cast<COLORREF>(4 * 16 + 3));
}

TEST(GdiRegionTest, CombineReportsKindsAndErrors) {
  HRGN a = CreateRectRgn(0, 0, 10, 10);
  HRGN b = CreateRectRgn(20, 0, 30, 10);
  HRGN d = CreateRectRgn(0, 0, 0, 0);
  struct Row {
    int mode;
    int result;
  } rows[] = {{RGN_AND, kNullRegion},   {RGN_OR, kComplexRegion}, {RGN_XOR, kComplexRegion},
              {RGN_DIFF, kSimpleRegion}, {RGN_COPY, kSimpleRegion}, {0, kRegionError},
              {6, kRegionError}};
  for (const Row& r : rows) EXPECT_EQ(CombineRgn(d, a, b, r.mode), r.result) << r.mode;
  EXPECT_EQ(CombineRgn(d, a, nullptr, RGN_COPY), kSimpleRegion);
  EXPECT_EQ(CombineRgn(d, a, nullptr, RGN_OR), kRegionError);
  EXPECT_EQ(CombineRgn(nullptr, a, b, RGN_OR), kRegionError);
  CRect box;
  CombineRgn(d, a, b, RGN_OR);
  EXPECT_EQ(GetRgnBox(d, &box), kComplexRegion);
  EXPECT_EQ(box, CRect(0, 0, 30, 10));
  EXPECT_TRUE(PtInRegion(d, 25, 5));
  EXPECT_FALSE(PtInRegion(d, 15, 5));
  EXPECT_FALSE(PtInRegion(d, 30, 5));
  CRect probe(12, 2, 19, 8);
  EXPECT_FALSE(RectInRegion(d, &probe));
  EXPECT_EQ(OffsetRgn(d, 5, 0), kComplexRegion);
  EXPECT_TRUE(PtInRegion(d, 14, 5));
  HRGN g = CreateRectRgn(35, 10, 5, 0);  // corners in any order
  HRGN gap = CreateRectRgn(15, 0, 25, 10);
  CombineRgn(g, g, gap, RGN_DIFF);
  EXPECT_TRUE(EqualRgn(d, g));
  EXPECT_FALSE(EqualRgn(a, g));
  EXPECT_EQ(CreatePolygonRgn(nullptr, 3, ALTERNATE), nullptr);
  CPoint two[2] = {{0, 0}, {5, 5}};
  EXPECT_EQ(CreatePolygonRgn(two, 2, ALTERNATE), nullptr);
  CPoint tri[3] = {{0, 0}, {5, 5}, {0, 5}};
  EXPECT_EQ(CreatePolygonRgn(tri, 3, 7), nullptr);
  for (HRGN r : {a, b, d, g, gap}) DeleteObject(r);
}

TEST(GdiRegionTest, SelectClipRgnCopiesTheRegionAndFrameNeedsPositiveSizes) {
  Canvas c(10, 10);
  HRGN r = CreateRectRgn(2, 2, 5, 5);
  EXPECT_EQ(SelectClipRgn(c.dc, r), kSimpleRegion);
  SetRectRgn(r, 0, 0, 10, 10);  // changing the region later does not move the clip
  HBRUSH white = CreateSolidBrush(0xFFFFFF);
  EXPECT_TRUE(FillRgn(c.dc, r, white));
  EXPECT_EQ(GetPixel(c.dc, 2, 2), 0xFFFFFFu);
  EXPECT_EQ(GetPixel(c.dc, 5, 5), kClrInvalid);  // outside the clip
  CRect box;
  EXPECT_EQ(GetClipBox(c.dc, &box), kSimpleRegion);
  EXPECT_EQ(box, CRect(2, 2, 5, 5));
  SelectClipRgn(c.dc, nullptr);
  EXPECT_EQ(GetPixel(c.dc, 5, 5), 0u);
  EXPECT_FALSE(FrameRgn(c.dc, r, white, 0, 1));
  EXPECT_FALSE(FrameRgn(c.dc, r, white, 1, -1));
  EXPECT_TRUE(FrameRgn(c.dc, r, white, 1, 1));
  EXPECT_EQ(GetPixel(c.dc, 9, 9), 0xFFFFFFu);
  EXPECT_EQ(GetPixel(c.dc, 8, 8), 0u);
  DeleteObject(white);
  DeleteObject(r);
}

TEST(GdiRobustnessTest, HostileArgumentsDoNothingAndReturnPromptly) {
  // Null DCs.
  EXPECT_FALSE(LineTo(nullptr, 1, 1));
  EXPECT_FALSE(Rectangle(nullptr, 0, 0, 5, 5));
  EXPECT_FALSE(Polygon(nullptr, nullptr, 3));
  EXPECT_EQ(GetPixel(nullptr, 0, 0), kClrInvalid);
  EXPECT_FALSE(BitBlt(nullptr, 0, 0, 1, 1, nullptr, 0, 0, SRCCOPY));
  EXPECT_EQ(SelectClipRgn(nullptr, nullptr), kRegionError);
  // A DC with no bitmap of its own and a zero-size bitmap draw nothing.
  HDC bare = CreateCompatibleDC(nullptr);
  EXPECT_TRUE(Rectangle(bare, -5, -5, 50, 50));
  HBITMAP empty = CreateBitmap32(0, 7);
  SelectObject(bare, empty);
  EXPECT_TRUE(Rectangle(bare, 0, 0, 50, 50));
  EXPECT_TRUE(PatBlt(bare, 0, 0, 10, 10, WHITENESS));
  EXPECT_EQ(SetPixel(bare, 0, 0, 1), kClrInvalid);
  DeleteDC(bare);
  DeleteObject(empty);
  // The full 32-bit range on a small bitmap: work bounded by the bitmap.
  Canvas c(64, 64);
  SelectObject(c.dc, GetStockObject(WHITE_PEN));
  SelectObject(c.dc, GetStockObject(GRAY_BRUSH));
  MoveToEx(c.dc, INT_MIN, INT_MIN, nullptr);
  EXPECT_TRUE(LineTo(c.dc, INT_MAX, INT_MAX));
  EXPECT_EQ(GetPixel(c.dc, 10, 10), 0xFFFFFFu);
  EXPECT_TRUE(Rectangle(c.dc, INT_MIN, INT_MIN, INT_MAX, INT_MAX));
  CPoint huge[4] = {{INT_MIN, 0}, {INT_MAX, INT_MIN}, {INT_MAX, INT_MAX}, {0, INT_MAX}};
  EXPECT_TRUE(Polygon(c.dc, huge, 4));
  const int counts[2] = {2, -1};
  EXPECT_FALSE(PolyPolygon(c.dc, huge, counts, 2));
  EXPECT_TRUE(PatBlt(c.dc, INT_MAX, INT_MAX, INT_MIN, INT_MIN, PATINVERT));
  EXPECT_TRUE(BitBlt(c.dc, INT_MIN, INT_MIN, INT_MAX, INT_MAX, c.dc, INT_MAX, 0, SRCCOPY));
  HRGN big = CreateRectRgn(INT_MIN, INT_MIN, INT_MAX, INT_MAX);
  HBRUSH brush = CreateHatchBrush(HS_DIAGCROSS, 0x00FF00);
  EXPECT_TRUE(FrameRgn(c.dc, big, brush, INT_MAX, INT_MAX));
  EXPECT_TRUE(FillRgn(c.dc, big, brush));
  EXPECT_EQ(OffsetRgn(big, INT_MAX, INT_MAX), kSimpleRegion);
  DeleteObject(brush);
  DeleteObject(big);
  // A geometric pen a million pixels wide.
  LOGBRUSH lb;
  lb.lbColor = 0x0000FF;
  HPEN wide = ExtCreatePen(PS_GEOMETRIC | PS_ENDCAP_ROUND | PS_JOIN_ROUND, 1000000, &lb, 0, nullptr);
  ASSERT_NE(wide, nullptr);
  SelectObject(c.dc, wide);
  MoveToEx(c.dc, -3, 5, nullptr);
  EXPECT_TRUE(LineTo(c.dc, 70, 60));
  SelectObject(c.dc, GetStockObject(BLACK_PEN));
  DeleteObject(wide);
}

}  // namespace
}  // namespace qvis::gdi
