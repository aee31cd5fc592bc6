// Pixel tests of the curved shapes, wide pens, paths and alpha drawing through the public API.
#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "qvis/compat/win32_names.h"
#include "qvis/gdi/alpha.h"
#include "qvis/gdi/dc.h"
#include "qvis/gdi/gdi.h"
#include "qvis/gdi/shapes/shape_paint.h"

namespace qvis::gdi {
namespace {

// A memory DC over a 32-bpp bitmap; deletes what it created.
class Canvas {
 public:
  Canvas(int w, int h) : w_(w), h_(h) {
    dc_ = CreateCompatibleDC(nullptr);
    bitmap_ = CreateBitmap32(w, h);
    SelectObject(dc_, bitmap_);
  }
  ~Canvas() {
    DeleteDC(dc_);
    DeleteObject(bitmap_);
    for (HGDIOBJ o : objects_) DeleteObject(o);
  }
  Canvas(const Canvas&) = delete;
  Canvas& operator=(const Canvas&) = delete;

  HDC dc() const { return dc_; }
  std::vector<std::uint32_t> Pixels() const {
    const BitmapView v = BitmapPixels(bitmap_);
    std::vector<std::uint32_t> out;
    for (int y = 0; y < v.height; ++y) out.insert(out.end(), v.Row32(y), v.Row32(y) + v.width);
    return out;
  }
  std::uint32_t At(int x, int y) const { return BitmapPixels(bitmap_).Row32(y)[x]; }
  void Fill(std::uint32_t pixel) {
    const BitmapView v = BitmapPixels(bitmap_);
    for (int y = 0; y < v.height; ++y) std::fill(v.Row32(y), v.Row32(y) + v.width, pixel);
  }
  void FillRandom(std::mt19937& rng) {
    const BitmapView v = BitmapPixels(bitmap_);
    for (int y = 0; y < v.height; ++y) {
      for (int x = 0; x < v.width; ++x) v.Row32(y)[x] = rng() & 0xFFFFFFu;
    }
  }
  // Select keeps the object alive until the canvas goes.
  void Select(HGDIOBJ o) {
    objects_.push_back(o);
    SelectObject(dc_, o);
  }
  int w() const { return w_; }
  int h() const { return h_; }

 private:
  int w_;
  int h_;
  HDC dc_ = nullptr;
  HBITMAP bitmap_ = nullptr;
  std::vector<HGDIOBJ> objects_;
};

HPEN WidePen(int width, DWORD caps_and_join, COLORREF color) {
  LOGBRUSH brush;
  brush.lbStyle = BS_SOLID;
  brush.lbColor = color;
  return ExtCreatePen(PS_GEOMETRIC | PS_SOLID | caps_and_join, static_cast<DWORD>(width), &brush, 0,
                      nullptr);
}

HPEN StyledPen(DWORD style, int width, DWORD caps_and_join, COLORREF color, DWORD entries = 0,
               const DWORD* entry = nullptr) {
  LOGBRUSH brush;
  brush.lbStyle = BS_SOLID;
  brush.lbColor = color;
  return ExtCreatePen(PS_GEOMETRIC | style | caps_and_join, static_cast<DWORD>(width), &brush,
                      entries, entry);
}

// One random primitive of the shapes code, drawn with whatever is selected.
using Draw = std::function<void(HDC)>;

Draw RandomShape(std::mt19937& rng, int size) {
  std::uniform_int_distribution<int> c(-20, size + 20);
  const int l = c(rng), t = c(rng), r = c(rng), b = c(rng);
  const int xs = c(rng), ys = c(rng), xe = c(rng), ye = c(rng);
  switch (rng() % 7) {
    case 0:
      return [=](HDC dc) { Ellipse(dc, l, t, r, b); };
    case 1:
      return [=](HDC dc) { Arc(dc, l, t, r, b, xs, ys, xe, ye); };
    case 2:
      return [=](HDC dc) { Pie(dc, l, t, r, b, xs, ys, xe, ye); };
    case 3:
      return [=](HDC dc) { Chord(dc, l, t, r, b, xs, ys, xe, ye); };
    case 4:
      return [=](HDC dc) { RoundRect(dc, l, t, r, b, xs - l, ys - t); };
    case 5:
      return [=](HDC dc) {
        MoveToEx(dc, xs, ys, nullptr);
        ArcTo(dc, l, t, r, b, xe, ye, xs, ye);
      };
    default:
      return [=](HDC dc) {
        BeginPath(dc);
        MoveToEx(dc, xs, ys, nullptr);
        LineTo(dc, xe, ye);
        ArcTo(dc, l, t, r, b, xs, ye, xe, ys);
        CloseFigure(dc);
        EndPath(dc);
        StrokeAndFillPath(dc);
      };
  }
}

void SelectRandomTools(Canvas& canvas, std::mt19937& rng, bool wide_only) {
  const COLORREF color = rng() & 0xFFFFFFu;
  const int kind = wide_only ? 1 : static_cast<int>(rng() % 3);
  if (kind == 0) {
    canvas.Select(CreatePen(static_cast<int>(rng() % 5), 1, color));
  } else if (kind == 1) {
    const DWORD caps[] = {PS_ENDCAP_ROUND, PS_ENDCAP_SQUARE, PS_ENDCAP_FLAT};
    const DWORD joins[] = {PS_JOIN_ROUND, PS_JOIN_BEVEL, PS_JOIN_MITER};
    // Dashed as often as solid: the dashes of one stroke must paint each pixel once too.
    const DWORD styles[] = {PS_SOLID, PS_SOLID, PS_SOLID, PS_DASH, PS_DOT, PS_DASHDOT,
                            PS_DASHDOTDOT};
    canvas.Select(StyledPen(styles[rng() % 7], 2 + static_cast<int>(rng() % 14),
                            caps[rng() % 3] | joins[rng() % 3], color));
  } else {
    canvas.Select(CreatePen(PS_SOLID, 2 + static_cast<int>(rng() % 6), color));
  }
  const int brush = static_cast<int>(rng() % 3);
  if (brush == 0) {
    canvas.Select(CreateSolidBrush(rng() & 0xFFFFFFu));
  } else if (brush == 1) {
    canvas.Select(CreateHatchBrush(static_cast<int>(rng() % 6), rng() & 0xFFFFFFu));
  } else {
    SelectObject(canvas.dc(), GetStockObject(NULL_BRUSH));
  }
  SetArcDirection(canvas.dc(), rng() % 2 ? AD_CLOCKWISE : AD_COUNTERCLOCKWISE);
  SetBkMode(canvas.dc(), rng() % 2 ? OPAQUE : TRANSPARENT);
}

TEST(ShapesXorTest, DrawingTwiceRestoresAnyBackground) {
  std::mt19937 rng(20261122);
  for (int scene = 0; scene < 150; ++scene) {
    Canvas canvas(64, 48);
    canvas.FillRandom(rng);
    SelectRandomTools(canvas, rng, false);
    SetROP2(canvas.dc(), R2_XORPEN);
    const Draw draw = RandomShape(rng, 64);
    const std::vector<std::uint32_t> before = canvas.Pixels();
    draw(canvas.dc());
    draw(canvas.dc());
    ASSERT_EQ(canvas.Pixels(), before) << "scene " << scene;
  }
}

// With a wide pen every pixel of a shape is painted once (outline and interior never overlap),
// so XOR over black gives what copy mode gives.
TEST(ShapesXorTest, WideOutlinesPaintEachPixelOnce) {
  std::mt19937 rng(7);
  for (int scene = 0; scene < 150; ++scene) {
    const std::uint32_t seed = rng();
    std::vector<std::uint32_t> results[2];
    for (int mode = 0; mode < 2; ++mode) {
      std::mt19937 local(seed);
      Canvas canvas(64, 48);
      SelectRandomTools(canvas, local, true);
      SetBkMode(canvas.dc(), OPAQUE);
      SetROP2(canvas.dc(), mode == 0 ? R2_XORPEN : R2_COPYPEN);
      RandomShape(local, 64)(canvas.dc());
      results[mode] = canvas.Pixels();
    }
    ASSERT_EQ(results[0], results[1]) << "scene " << scene;
  }
}

// Polygons under a wide pen: the outline's pixels leave the interior, so XOR over black gives
// the copy-mode picture, for one polygon and for several sharing the fill.
TEST(PaintPolygonsTest, WideOutlinesAndInteriorPaintEachPixelOnce) {
  const PointI pts[] = {{5, 5}, {50, 8}, {30, 40}, {40, 20}, {60, 30}, {45, 44}};
  const int counts[] = {3, 3};
  for (int polygons : {1, 2}) {
    std::vector<std::uint32_t> results[2];
    for (int mode = 0; mode < 2; ++mode) {
      Canvas canvas(64, 48);
      canvas.Select(CreateSolidBrush(0xFF0000));
      canvas.Select(WidePen(7, PS_ENDCAP_FLAT | PS_JOIN_MITER, 0x00FF00));
      SetROP2(canvas.dc(), mode == 0 ? R2_XORPEN : R2_COPYPEN);
      DeviceContext& dc = *canvas.dc();
      RegionBuilder interior;
      dc.scanner.Fill(pts, counts, polygons, FillRule::kAlternate, ClipBox(dc), interior);
      PaintPolygons(dc, interior.Build(), pts, counts, polygons);
      results[mode] = canvas.Pixels();
    }
    EXPECT_EQ(results[0], results[1]) << polygons;
  }
}

TEST(ShapesRobustnessTest, ExtremeInputFinishesAndDrawsTheVisiblePart) {
  const int kMin = INT_MIN;
  const int kMax = INT_MAX;
  struct Row {
    std::string name;
    std::function<void(HDC)> draw;
    bool covers_canvas;  // every pixel painted with the brush or pen colour
  };
  const std::vector<Row> rows = {
      {"ellipse over the whole range", [&](HDC dc) { Ellipse(dc, kMin, kMin, kMax, kMax); }, true},
      {"huge ellipse far away", [](HDC dc) { Ellipse(dc, 1 << 30, 1 << 30, INT_MAX, INT_MAX); },
       false},
      {"pie over the whole range",
       [&](HDC dc) { Pie(dc, kMin, kMin, kMax, kMax, kMax, 0, kMax, 0); }, true},
      {"chord and arc",
       [&](HDC dc) {
         Chord(dc, kMin, -5, kMax, 100000, 0, kMin, 0, kMax);
         Arc(dc, kMin, kMin, kMax, kMax, 0, 0, 1, 1);
       },
       false},
      {"round rect",
       [&](HDC dc) { RoundRect(dc, -1000000, -1000000, 1000000, 1000000, kMax, kMax); }, true},
      {"million pixel pen",
       [](HDC dc) {
         HPEN pen = WidePen(1000000, PS_ENDCAP_ROUND | PS_JOIN_ROUND, 0x00FF00);
         HGDIOBJ old = SelectObject(dc, pen);
         const CPoint pts[] = {{-5000000, 20}, {30, 20}, {30, 5000000}, {INT_MAX, INT_MIN}};
         Polyline(dc, pts, 4);
         SelectObject(dc, old);
         DeleteObject(pen);
       },
       true},
      {"path at the range ends",
       [&](HDC dc) {
         BeginPath(dc);
         MoveToEx(dc, kMax, 0, nullptr);
         ArcTo(dc, kMin, kMin, kMax, kMax, kMax, 0, kMax, 0);  // the whole ellipse
         LineTo(dc, kMax, kMax);
         LineTo(dc, kMin, kMax);
         CloseFigure(dc);
         EndPath(dc);
         StrokeAndFillPath(dc);
       },
       true},
      {"alpha",
       [&](HDC dc) {
         GpFillRect(dc, kMin, kMin, kMax, kMax, 0xFF0000FF);
         GpDrawLine(dc, 0xFF00FF00, 3e9f, kMin, kMin, kMax, kMax);
         GpDrawEllipse(dc, 0xFF00FF00, 5, kMin, kMin, kMax, kMax);
         GpDrawArc(dc, 0xFF00FF00, std::numeric_limits<float>::quiet_NaN(), 0, 0, 10, 10, 0, 90);
         GpDrawPie(dc, 0xFF00FF00, 2, 0, 0, 10, 10, std::numeric_limits<float>::infinity(), 1e30f);
       },
       false},
  };
  for (const Row& row : rows) {
    Canvas canvas(40, 30);
    canvas.Fill(0x123456);
    canvas.Select(CreateSolidBrush(0x0000FF));  // red
    canvas.Select(WidePen(3, PS_ENDCAP_ROUND, 0x00FF00));
    row.draw(canvas.dc());
    const std::vector<std::uint32_t> px = canvas.Pixels();
    if (row.covers_canvas) {
      for (std::uint32_t p : px) ASSERT_TRUE(p == 0xFF0000 || p == 0x00FF00) << row.name;
    } else if (row.name == "huge ellipse far away") {
      for (std::uint32_t p : px) ASSERT_EQ(p, 0x123456u) << row.name;
    }
  }
}

TEST(ShapesDegenerateTest, NullDcAndEmptyBoxes) {
  EXPECT_FALSE(Ellipse(nullptr, 0, 0, 10, 10));
  EXPECT_FALSE(Arc(nullptr, 0, 0, 10, 10, 0, 0, 1, 1));
  EXPECT_FALSE(Pie(nullptr, 0, 0, 10, 10, 0, 0, 1, 1));
  EXPECT_FALSE(Chord(nullptr, 0, 0, 10, 10, 0, 0, 1, 1));
  EXPECT_FALSE(RoundRect(nullptr, 0, 0, 10, 10, 3, 3));
  EXPECT_FALSE(BeginPath(nullptr));
  EXPECT_FALSE(GpFillRect(nullptr, 0, 0, 1, 1, 0xFFFFFFFF));
  EXPECT_FALSE(GpFillRegion(nullptr, nullptr, 0xFFFFFFFF));

  Canvas canvas(20, 20);
  canvas.Select(CreatePen(PS_SOLID, 1, 0xFFFFFF));
  const std::vector<std::uint32_t> before = canvas.Pixels();
  EXPECT_TRUE(Ellipse(canvas.dc(), 5, 5, 5, 15));          // zero width
  EXPECT_TRUE(Ellipse(canvas.dc(), 5, 5, 6, 6));           // a single pixel box
  EXPECT_TRUE(Pie(canvas.dc(), 3, 9, 13, 9, 0, 0, 1, 1));  // zero height
  EXPECT_TRUE(GpFillRect(canvas.dc(), 2, 2, 0, 5, 0xFFFFFFFF));
  EXPECT_TRUE(GpDrawLine(canvas.dc(), 0xFFFFFFFF, 5, 7, 7, 7, 7));  // zero length
  EXPECT_FALSE(GpFillPolygon(canvas.dc(), nullptr, 3, 0xFFFFFFFF));
  EXPECT_EQ(canvas.Pixels(), before);
}

TEST(ShapesDegenerateTest, ThinEllipsesAreRectangles) {
  // Boxes two pixels thin or less leave no room for a curve: the whole box is the outline.
  Canvas canvas(20, 10);
  canvas.Select(CreatePen(PS_SOLID, 1, 0xFFFFFF));
  SelectObject(canvas.dc(), GetStockObject(NULL_BRUSH));
  Ellipse(canvas.dc(), 2, 2, 9, 4);
  for (int y = 0; y < 10; ++y) {
    for (int x = 0; x < 20; ++x) {
      const bool in = x >= 2 && x < 9 && y >= 2 && y < 4;
      EXPECT_EQ(canvas.At(x, y), in ? 0xFFFFFFu : 0u) << x << "," << y;
    }
  }
}

TEST(ArcToTest, LineToTheStartThenTheArcAndThePositionMovesToItsEnd) {
  Canvas canvas(40, 40);
  canvas.Select(CreatePen(PS_SOLID, 1, 0xFFFFFF));
  MoveToEx(canvas.dc(), 0, 0, nullptr);
  // Box 10..30 (centre 20, 20): from the ray to the right to the ray downward, clockwise.
  SetArcDirection(canvas.dc(), AD_CLOCKWISE);
  ASSERT_TRUE(ArcTo(canvas.dc(), 10, 10, 30, 30, 40, 20, 20, 40));
  CPoint pos;
  GetCurrentPositionEx(canvas.dc(), &pos);
  EXPECT_EQ(pos, CPoint(20, 30));
  EXPECT_EQ(canvas.At(0, 0), 0xFFFFFFu);    // the line from the old position
  EXPECT_EQ(canvas.At(29, 20), 0xFFFFFFu);  // the arc's first pixel
  EXPECT_EQ(canvas.At(10, 20), 0u);         // the left side is not part of the arc
}

TEST(EllipticRegionTest, LeavesOutOneMoreRowAndColumnThanEllipse) {
  HRGN rgn = CreateEllipticRgn(20, 10, 0, 0);  // inverted corners
  ASSERT_NE(rgn, nullptr);
  CRect box;
  EXPECT_EQ(GetRgnBox(rgn, &box), kComplexRegion);
  EXPECT_EQ(box, CRect(0, 0, 19, 9));
  EXPECT_TRUE(PtInRegion(rgn, 9, 4));
  EXPECT_FALSE(PtInRegion(rgn, 0, 0));
  DeleteObject(rgn);
  // Too big to step: the flattened ellipse, its rows kept near the origin.
  HRGN big = CreateEllipticRgn(-3000000, -1000000, 3000000, 1000000);
  EXPECT_TRUE(PtInRegion(big, 0, 0));
  EXPECT_TRUE(PtInRegion(big, 30000, 30000));
  EXPECT_EQ(GetRgnBox(big, &box), kSimpleRegion);  // the ellipse covers all the rows kept
  EXPECT_EQ(box, CRect(-(1 << 15), -(1 << 15), 1 << 15, 1 << 15));
  DeleteObject(big);
  big = CreateEllipticRgn(INT_MIN, 0, INT_MAX, 2000000);  // its top tip reaches y = 0
  EXPECT_TRUE(PtInRegion(big, 0, 30000));
  EXPECT_FALSE(PtInRegion(big, 0, -5));
  DeleteObject(big);
  HRGN empty = CreateEllipticRgn(5, 5, 6, 30);
  EXPECT_EQ(GetRgnBox(empty, &box), kNullRegion);
  DeleteObject(empty);
}

TEST(PathTest, RecordingBracketsAndRendering) {
  Canvas canvas(30, 30);
  HDC dc = canvas.dc();
  canvas.Select(CreateSolidBrush(0x0000FF));
  SelectObject(dc, GetStockObject(NULL_PEN));
  EXPECT_FALSE(EndPath(dc));   // nothing open
  EXPECT_FALSE(FillPath(dc));  // nothing closed
  EXPECT_FALSE(CloseFigure(dc));
  ASSERT_TRUE(BeginPath(dc));
  MoveToEx(dc, 5, 5, nullptr);
  LineTo(dc, 25, 5);
  LineTo(dc, 25, 25);
  LineTo(dc, 5, 25);
  EXPECT_EQ(canvas.At(10, 5), 0u);  // recorded, not drawn
  EXPECT_FALSE(FillPath(dc));       // still open
  ASSERT_TRUE(EndPath(dc));
  ASSERT_TRUE(FillPath(dc));
  EXPECT_EQ(canvas.At(5, 5), 0xFF0000u);
  EXPECT_EQ(canvas.At(24, 24), 0xFF0000u);
  EXPECT_EQ(canvas.At(25, 25), 0u);
  EXPECT_FALSE(FillPath(dc));  // the path is gone after rendering
  // AbortPath throws the recording away.
  BeginPath(dc);
  Ellipse(dc, 0, 0, 30, 30);
  AbortPath(dc);
  EXPECT_FALSE(EndPath(dc));
}

TEST(AlphaTest, FillsBlendAndKeepTheClip) {
  Canvas canvas(20, 20);
  canvas.Fill(0x000000);
  // Opaque fill paints the exact box; a transparent one changes nothing.
  ASSERT_TRUE(GpFillRect(canvas.dc(), 2, 3, 5, 4, 0xFF102030));
  ASSERT_TRUE(GpFillRect(canvas.dc(), 0, 0, 20, 20, 0x00FFFFFF));
  for (int y = 0; y < 20; ++y) {
    for (int x = 0; x < 20; ++x) {
      const bool in = x >= 2 && x < 7 && y >= 3 && y < 7;
      ASSERT_EQ(canvas.At(x, y), in ? 0x102030u : 0u) << x << "," << y;
    }
  }
  // Blending ignores ROP2 and respects the clip region.
  SetROP2(canvas.dc(), R2_XORPEN);
  HRGN clip = CreateRectRgn(10, 0, 20, 20);
  SelectClipRgn(canvas.dc(), clip);
  DeleteObject(clip);
  ASSERT_TRUE(GpFillRect(canvas.dc(), 0, 10, 20, 5, 0xFFFFFFFF));
  EXPECT_EQ(canvas.At(5, 12), 0u);
  EXPECT_EQ(canvas.At(15, 12), 0xFFFFFFu);
}

TEST(AlphaTest, RoundCappedLineCoversItsStadium) {
  Canvas canvas(40, 30);
  ASSERT_TRUE(GpDrawLine(canvas.dc(), 0xFFFFFFFF, 8, 10, 15, 30, 15));
  EXPECT_EQ(canvas.At(20, 15), 0xFFFFFFu);
  EXPECT_EQ(canvas.At(20, 12), 0xFFFFFFu);
  EXPECT_EQ(canvas.At(7, 15), 0xFFFFFFu);  // inside the round cap
  EXPECT_EQ(canvas.At(7, 11), 0u);         // outside the round cap's corner
  EXPECT_EQ(canvas.At(20, 21), 0u);
  EXPECT_EQ(ArgbFromColor(0x0000FF, 128), 0x80FF0000u);
  EXPECT_EQ(ArgbFromColor(0x123456, 0x1FF), 0xFF563412u);
}


// --- Dashed geometric pens --------------------------------------------------------------------

// Row: which pixels of row y differ from the background (0).
std::string Row(const Canvas& c, int y, int x0, int x1) {
  std::string r;
  for (int x = x0; x < x1; ++x) r += c.At(x, y) != 0 ? '#' : '.';
  return r;
}

// Rows: Row for the n rows from y on.
std::vector<std::string> Rows(const Canvas& c, int y, int x0, int x1, int n) {
  std::vector<std::string> rows;
  for (int k = 0; k < n; ++k) rows.push_back(Row(c, y + k, x0, x1));
  return rows;
}

// Clears the canvas to black and draws one line from (x0, y0) to (x1, y1) with `pen`.
void DrawLineWith(Canvas& c, HPEN pen, int x0, int y0, int x1, int y1) {
  c.Fill(0);
  c.Select(pen);
  MoveToEx(c.dc(), x0, y0, nullptr);
  LineTo(c.dc(), x1, y1);
}

// Clears the canvas to black and draws the polyline with `pen`.
void DrawPolylineWith(Canvas& c, HPEN pen, std::initializer_list<CPoint> pts) {
  c.Fill(0);
  c.Select(pen);
  const std::vector<CPoint> v(pts);
  Polyline(c.dc(), v.data(), static_cast<int>(v.size()));
}

// The rows below were read off the reference renderer's pictures of the same polylines.
TEST(WideJoinTest, RightAngleBevelIsCutFromTheLastRowOfTheIncomingBody) {
  // East then south, 11 wide: the bevel starts one pixel short of the corner column, so its
  // staircase is 1, 2, 4, 5 pixels rather than an even 45-degree one.
  Canvas a(60, 50), b(60, 50);
  DrawPolylineWith(a, WidePen(11, PS_ENDCAP_FLAT | PS_JOIN_BEVEL, 0xFFFFFF),
                   {{5, 20}, {25, 20}, {25, 40}});
  EXPECT_EQ(Rows(a, 15, 20, 32, 6),
            (std::vector<std::string>{
                "#####.......",
                "######......",
                "#######.....",
                "#########...",
                "##########..",
                "###########."}));
  // The same corner walked north then west: now the vertical body comes in and is cut one
  // row short, so the staircase is the 1, 2, 3, 4 one and the two pictures differ.
  DrawPolylineWith(b, WidePen(11, PS_ENDCAP_FLAT | PS_JOIN_BEVEL, 0xFFFFFF),
                   {{25, 40}, {25, 20}, {5, 20}});
  EXPECT_EQ(Rows(b, 16, 20, 32, 5),
            (std::vector<std::string>{
                "######......",
                "#######.....",
                "########....",
                "#########...",
                "###########."}));
  // East then north: the lower corner is the even staircase 5, 4, 3, 2, 1.
  DrawPolylineWith(a, WidePen(11, PS_ENDCAP_FLAT | PS_JOIN_BEVEL, 0xFFFFFF),
                   {{5, 30}, {25, 30}, {25, 10}});
  EXPECT_EQ(Rows(a, 31, 20, 32, 6),
            (std::vector<std::string>{
                "##########..",
                "#########...",
                "########....",
                "#######.....",
                "######......",
                "............"}));
}

TEST(WideJoinTest, ShortSegmentsLeaveNoGapOnTheInnerSide) {
  // Segments shorter than the pen: beyond both body ends on the inside of the turn lies a patch
  // that the join covers (the bevel spans the incoming end to both outgoing start corners).
  for (DWORD join : {DWORD{PS_JOIN_BEVEL}, DWORD{PS_JOIN_MITER}}) {
    Canvas c(60, 60);
    DrawPolylineWith(c, WidePen(9, PS_ENDCAP_FLAT | join, 0xFFFFFF), {{40, 42}, {41, 45}, {43, 45}});
    EXPECT_EQ(Row(c, 44, 40, 47), "######.") << join;
    EXPECT_EQ(Row(c, 45, 40, 47), "#####..") << join;
    EXPECT_EQ(Row(c, 46, 40, 47), "####...") << join;
    EXPECT_EQ(Row(c, 47, 40, 47), "####...") << join;
  }
}

TEST(WideJoinTest, AReversalPaintsNoExtraCornerPixel) {
  // A thin pen turning almost straight back: the corner pixel itself is outside both bodies
  // and the join does not add it.
  Canvas c(60, 60);
  DrawPolylineWith(c, WidePen(4, PS_ENDCAP_FLAT | PS_JOIN_BEVEL, 0xFFFFFF),
                   {{38, 25}, {43, 38}, {37, 31}});
  EXPECT_EQ(c.At(43, 38), 0u);
  EXPECT_NE(c.At(42, 37), 0u);
}

TEST(DashedPenTest, FlatDashesScaleWithTheWidth) {
  Canvas c(80, 20);
  DrawLineWith(c, StyledPen(PS_DASHDOT, 2, PS_ENDCAP_FLAT, 0xFFFFFF), 0, 5, 40, 5);
  // dash 3 widths, gap, dot 1 width, gap: 6 on, 2 off, 2 on, 2 off.
  EXPECT_EQ(Row(c, 5, 0, 40), "######..##..######..##..######..##..####");
  EXPECT_EQ(Row(c, 4, 0, 12), "######..##..");  // the extra row of an even width goes up
  EXPECT_EQ(Row(c, 6, 0, 12), "............");
}

TEST(DashedPenTest, CappedDashesKeepTheStyleLength) {
  Canvas c(80, 20);
  DrawLineWith(c, StyledPen(PS_DASH, 4, PS_ENDCAP_SQUARE, 0xFFFFFF), 2, 5, 62, 5);
  // Each dash is 2 widths between caps of half a width: 12 pixels from 2 - 2, then 4 off.
  EXPECT_EQ(Row(c, 5, 0, 62), "############....############....############....############..");
}

TEST(DashedPenTest, RoundDotsAreLoneCaps) {
  Canvas c(60, 20);
  DrawLineWith(c, StyledPen(PS_DOT, 5, PS_ENDCAP_ROUND, 0xFFFFFF), 5, 10, 45, 10);
  // A dot's on length gives all of itself to its caps: discs every 2 widths.
  for (int x = 5; x < 45; x += 10) {
    EXPECT_NE(c.At(x, 10), 0u) << x;
    EXPECT_NE(c.At(x, 8), 0u) << x;
    EXPECT_EQ(c.At(x + 5, 10), 0u) << x + 5;
  }
}

TEST(DashedPenTest, UserStyleEntriesArePixels) {
  const DWORD dash[] = {12, 4};
  Canvas a(120, 40), b(120, 40);
  a.Fill(0);
  b.Fill(0);
  a.Select(StyledPen(PS_DASH, 4, PS_ENDCAP_FLAT | PS_JOIN_MITER, 0xFFFFFF));
  b.Select(StyledPen(PS_USERSTYLE, 4, PS_ENDCAP_FLAT | PS_JOIN_MITER, 0xFFFFFF, 2, dash));
  const CPoint pts[] = {{3, 3}, {100, 10}, {20, 35}, {110, 30}};
  Polyline(a.dc(), pts, 4);
  Polyline(b.dc(), pts, 4);
  EXPECT_EQ(a.Pixels(), b.Pixels());
  // An odd count runs twice: {5} is 5 on, 5 off.
  const DWORD odd[] = {5};
  Canvas d(40, 10);
  DrawLineWith(d, StyledPen(PS_USERSTYLE, 2, PS_ENDCAP_FLAT, 0xFFFFFF, 1, odd), 0, 5, 30, 5);
  EXPECT_EQ(Row(d, 5, 0, 30), "#####.....#####.....#####.....");
  // With caps a user dash keeps its length and the caps reach beyond it (a standard style
  // gives its caps one width of each dash): 6 on from x = 10, round caps of half of 3.
  const DWORD six_four[] = {6, 4};
  Canvas e(40, 10);
  DrawLineWith(e, StyledPen(PS_USERSTYLE, 3, PS_ENDCAP_ROUND, 0xFFFFFF, 2, six_four), 10, 5, 39, 5);
  EXPECT_EQ(Row(e, 5, 8, 30), ".#########.#########.#");
}

// One-pixel pens step their pattern pixel by pixel: a cosmetic pen's user style counts three
// pixels a unit, a geometric pen of width 1 takes its style's units (or its entries) as pixels.
TEST(DashedPenTest, OnePixelPensStepTheirPattern) {
  LOGBRUSH white{BS_SOLID, 0xFFFFFF, 0};
  const DWORD two_one_three[] = {2, 1, 3};
  Canvas c(60, 10);
  DrawLineWith(c, ExtCreatePen(PS_COSMETIC | PS_USERSTYLE, 1, &white, 3, two_one_three), 0, 5, 60, 5);
  EXPECT_EQ(Row(c, 5, 0, 36), "######...#########......###.........");
  DrawLineWith(c, StyledPen(PS_DASH, 1, PS_ENDCAP_ROUND, 0xFFFFFF), 0, 5, 12, 5);
  EXPECT_EQ(Row(c, 5, 0, 12), "###.###.###.");
  DrawLineWith(c, StyledPen(PS_DASHDOTDOT, 1, PS_ENDCAP_FLAT, 0xFFFFFF), 0, 5, 12, 5);
  EXPECT_EQ(Row(c, 5, 0, 12), "###.#.#.###.");
  const DWORD three_one_one_two[] = {3, 1, 1, 2};
  DrawLineWith(c, StyledPen(PS_USERSTYLE, 1, PS_ENDCAP_FLAT, 0xFFFFFF, 4, three_one_one_two), 0, 5, 14, 5);
  EXPECT_EQ(Row(c, 5, 0, 14), "###.#..###.#..");
  // A length of zero is passed over; lengths far past a pixel mask's 32 bits still count.
  const DWORD long_runs[] = {0, 2, 40, 3};
  DrawLineWith(c, ExtCreatePen(PS_COSMETIC | PS_USERSTYLE, 1, &white, 4, long_runs), 0, 5, 60, 5);
  EXPECT_EQ(Row(c, 5, 0, 60), std::string(6, '.') + std::string(54, '#'));
  // Pens made by ExtCreatePen leave their gaps alone in OPAQUE mode; CreatePen's paint them.
  Canvas g(30, 10);
  g.Fill(0);
  SetBkMode(g.dc(), OPAQUE);
  SetBkColor(g.dc(), 0x0000FF);
  g.Select(ExtCreatePen(PS_COSMETIC | PS_DASH, 1, &white, 0, nullptr));
  MoveToEx(g.dc(), 0, 2, nullptr);
  LineTo(g.dc(), 30, 2);
  g.Select(CreatePen(PS_DASH, 1, 0xFFFFFF));
  MoveToEx(g.dc(), 0, 4, nullptr);
  LineTo(g.dc(), 30, 4);
  EXPECT_EQ(g.At(20, 2), 0u);                    // x = 20 is in the gap (18 on, 6 off)
  EXPECT_EQ(g.At(20, 4) & 0xFFFFFFu, 0xFF0000u);  // the background colour, red
}

TEST(DashedPenTest, TheDashRunsOnRoundACorner) {
  Canvas c(40, 40);
  c.Fill(0);
  c.Select(StyledPen(PS_DASH, 2, PS_ENDCAP_FLAT | PS_JOIN_MITER, 0xFFFFFF));
  const CPoint pts[] = {{0, 5}, {10, 5}, {10, 30}};
  Polyline(c.dc(), pts, 3);
  // 6 on, 2 off, then a dash of 6: 2 along the top, the corner, 4 down.
  EXPECT_EQ(Row(c, 5, 0, 12), "######..###.");
  EXPECT_NE(c.At(10, 8), 0u);
  EXPECT_EQ(c.At(10, 9), 0u);
  EXPECT_EQ(c.At(10, 10), 0u);
  EXPECT_NE(c.At(10, 11), 0u);
}

// Rows read off the reference renderer's pictures of the same polylines: the one-pixel steps of
// a dashed ellipse are full of both cases.
TEST(DashedPenTest, ADashCutOnACornerStillTurnsIt) {
  Canvas c(60, 60);
  // 4 wide, 12 on: 11 up, then the one pixel the diagonal moves the pattern on by is cut back
  // to the corner; the dash keeps that piece of no length, so the miter's tip is drawn.
  DrawPolylineWith(c, StyledPen(PS_DASH, 4, PS_ENDCAP_FLAT | PS_JOIN_MITER, 0xFFFFFF),
                   {{40, 51}, {40, 40}, {30, 30}});
  EXPECT_EQ(Rows(c, 38, 36, 45, 3),
            (std::vector<std::string>{".........", ".....#...", "..####..."}));
  // 2 wide, 6 on and 2 off: the second dash starts right at the straight-on corner and gets
  // the top-row pixel behind it; the bottom row does not.
  DrawPolylineWith(c, StyledPen(PS_DASH, 2, PS_ENDCAP_FLAT | PS_JOIN_MITER, 0xFFFFFF),
                   {{48, 40}, {40, 40}, {30, 40}});
  EXPECT_EQ(Rows(c, 39, 30, 48, 2),
            (std::vector<std::string>{"##..#######.######", "##..######..######"}));
}

TEST(DashedPenTest, ASegmentMovesThePatternOnByItsWholePixels) {
  Canvas c(40, 20);
  c.Fill(0);
  c.Select(StyledPen(PS_DASH, 2, PS_ENDCAP_FLAT | PS_JOIN_MITER, 0xFFFFFF));
  const CPoint pts[] = {{2, 2}, {9, 9}, {36, 9}};
  Polyline(c.dc(), pts, 3);
  // The diagonal is 9.9 long and moves the pattern (6 on, 2 off) on by 9, not 10: the
  // horizontal starts with 5 pixels of dash left (to x = 13), then every 8.
  EXPECT_EQ(Row(c, 9, 12, 30), "##..######..######");
}

TEST(DashedPenTest, FarOffscreenPatternIsSkippedNotWalked) {
  // The pattern position is kept by arithmetic across the invisible part: a line starting a
  // whole number of periods to the left draws exactly what the short one does.
  Canvas a(100, 12), b(100, 12);
  DrawLineWith(a, StyledPen(PS_DASHDOT, 4, PS_ENDCAP_FLAT, 0xFFFFFF), 0, 6, 100, 6);
  // The second line starts a million periods (24 pixels each) further left.
  DrawLineWith(b, StyledPen(PS_DASHDOT, 4, PS_ENDCAP_FLAT, 0xFFFFFF), -24 * 1000000, 6, 100, 6);
  EXPECT_EQ(a.Pixels(), b.Pixels());
  EXPECT_EQ(Row(a, 6, 0, 26), "############....####....##");
}

TEST(DashedPenTest, CreatePenWideDashesDrawSolid) {
  Canvas c(40, 10);
  DrawLineWith(c, CreatePen(PS_DASH, 3, 0xFFFFFF), 5, 5, 35, 5);
  EXPECT_EQ(Row(c, 5, 5, 35), std::string(30, '#'));
}

}  // namespace
}  // namespace qvis::gdi
