// Steady-state drawing allocates nothing: after a warm-up frame, a frame of every primitive the
// canvas issues (pens and brushes selected per primitive, as it does) makes no heap allocation.
// Scratch memory belongs to the DC and is reused from call to call (see ScratchArena in dc.h).
// This binary's operator new counts calls while a frame is being measured.
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdio>
#include <random>
#include <vector>

#include "qvis/compat/win32_names.h"
#include "qvis/gdi/alpha.h"
#include "qvis/gdi/counting_new.h"
#include "qvis/gdi/gdi.h"

namespace qvis::gdi {
namespace {

using qvis::testing::AllocationCount;

constexpr int kW = 640, kH = 480;

// Frame holds the objects of a canvas frame and draws one frame with them.
class Frame {
 public:
  Frame() : dc_(CreateCompatibleDC(nullptr)), bitmap_(CreateBitmap32(kW, kH)),
            window_dc_(CreateCompatibleDC(nullptr)), window_(CreateBitmap32(kW, kH)) {
    SelectObject(dc_, bitmap_);
    SelectObject(window_dc_, window_);
    background_ = CreateSolidBrush(0);
    fill_ = CreateSolidBrush(0x40A040);
    hatch_ = CreateHatchBrush(HS_DIAGCROSS, 0x2020C0);
    thin_ = CreatePen(PS_SOLID, 1, 0x00FFFF);
    dashed_ = CreatePen(PS_DASH, 1, 0xFFFF00);
    LOGBRUSH lb;
    lb.lbStyle = BS_SOLID;
    lb.lbColor = 0x3080FF;
    huge_pen_ = ExtCreatePen(PS_GEOMETRIC | PS_SOLID | PS_ENDCAP_ROUND | PS_JOIN_ROUND, 5000, &lb, 0, nullptr);
    for (int w = 2; w <= 12; ++w) {
      wide_.push_back(ExtCreatePen(PS_GEOMETRIC | PS_SOLID | PS_ENDCAP_ROUND | PS_JOIN_ROUND,
                                   static_cast<DWORD>(w), &lb, 0, nullptr));
    }
    // Dashed tracks, as the surface's pen cache makes them from 2 units up.
    const DWORD styles[] = {PS_DASH, PS_DOT, PS_DASHDOT, PS_DASHDOTDOT};
    const DWORD caps[] = {PS_ENDCAP_ROUND, PS_ENDCAP_SQUARE, PS_ENDCAP_FLAT};
    const DWORD joins[] = {PS_JOIN_ROUND, PS_JOIN_BEVEL, PS_JOIN_MITER};
    for (int k = 0; k < 12; ++k) {
      dashed_wide_.push_back(ExtCreatePen(PS_GEOMETRIC | styles[k % 4] | caps[k % 3] | PS_JOIN_MITER,
                                          static_cast<DWORD>(2 + k), &lb, 0, nullptr));
    }
    // Outline pens of closed shapes: every style, cap and join, a user style and a hatched
    // pen brush.
    const DWORD all_styles[] = {PS_SOLID, PS_DASH, PS_DOT, PS_DASHDOT, PS_DASHDOTDOT, PS_INSIDEFRAME};
    for (int k = 0; k < 18; ++k) {
      outline_.push_back(ExtCreatePen(PS_GEOMETRIC | all_styles[k % 6] | caps[k % 3] | joins[(k / 3) % 3],
                                      static_cast<DWORD>(2 + k % 9), &lb, 0, nullptr));
    }
    const DWORD user[] = {5, 3, 1, 3};
    outline_.push_back(ExtCreatePen(PS_GEOMETRIC | PS_USERSTYLE | PS_ENDCAP_FLAT | PS_JOIN_BEVEL,
                                    3, &lb, 4, user));
    LOGBRUSH hatched_lb;
    hatched_lb.lbStyle = BS_HATCHED;
    hatched_lb.lbColor = 0xC0C0C0;
    hatched_lb.lbHatch = HS_CROSS;
    outline_.push_back(ExtCreatePen(PS_GEOMETRIC | PS_SOLID | PS_ENDCAP_SQUARE | PS_JOIN_MITER, 7,
                                    &hatched_lb, 0, nullptr));
    lb.lbColor = 0xFFFFFF;
    band_ = ExtCreatePen(PS_GEOMETRIC | PS_SOLID | PS_ENDCAP_ROUND, 10, &lb, 0, nullptr);
    std::mt19937 rng(3);
    auto uni = [&](int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(rng); };
    for (int i = 0; i < 300; ++i) {
      coords_.push_back({uni(-60, kW + 60), uni(-60, kH + 60), uni(-200, 200), uni(-200, 200)});
    }
    for (int i = 0; i < 40; ++i) {
      std::vector<CPoint> star;
      const int n = uni(8, 40), cx = uni(0, kW), cy = uni(0, kH), r = uni(10, 120);
      for (int k = 0; k < n; ++k) {
        const double a = 6.283185307179586 * ((k * ((n - 1) / 2)) % n) / n;
        star.emplace_back(cx + static_cast<int>(r * std::cos(a)), cy + static_cast<int>(r * std::sin(a)));
      }
      stars_.push_back(std::move(star));
    }
    // Regions the frame combines, moves, paints and clips with.
    region_a_ = CreateEllipticRgn(100, 80, 380, 300);
    region_b_ = CreatePolygonRgn(stars_[0].data(), static_cast<int>(stars_[0].size()), WINDING);
    region_c_ = CreateRectRgn(0, 0, 1, 1);
    LOGFONTA lf;
    lf.lfHeight = 18;
    std::snprintf(lf.lfFaceName, sizeof lf.lfFaceName, "Arial");
    font_ = CreateFontIndirectA(&lf);
    lf.lfEscapement = 450;
    turned_font_ = CreateFontIndirectA(&lf);
  }
  ~Frame() {
    DeleteDC(dc_);
    DeleteDC(window_dc_);
    DeleteObject(bitmap_);
    DeleteObject(window_);
    for (HGDIOBJ o : {HGDIOBJ(background_), HGDIOBJ(fill_), HGDIOBJ(hatch_), HGDIOBJ(thin_),
                      HGDIOBJ(dashed_), HGDIOBJ(band_), HGDIOBJ(region_a_), HGDIOBJ(region_b_),
                      HGDIOBJ(region_c_), HGDIOBJ(font_), HGDIOBJ(turned_font_)}) {
      DeleteObject(o);
    }
    DeleteObject(huge_pen_);
    for (HPEN p : wide_) DeleteObject(p);
    for (HPEN p : dashed_wide_) DeleteObject(p);
    for (HPEN p : outline_) DeleteObject(p);
  }

  void Draw(int step) {
    const CRect all(0, 0, kW, kH);
    FillRect(dc_, &all, background_);
    DrawTracks();
    DrawThinShapes();
    DrawWideShapes();
    DrawPaths();
    DrawRegions(step);
    DrawText();
    DrawAlpha();
    DrawZoomedIn();
    const int old = SetROP2(dc_, R2_XORPEN);  // a rubber band: erase and draw
    SelectObject(dc_, band_);
    for (int k = 0; k < 20; ++k) {
      MoveToEx(dc_, 100, 100, nullptr);
      LineTo(dc_, 300 + k + step, 200 + 2 * k);
      MoveToEx(dc_, 100, 100, nullptr);
      LineTo(dc_, 301 + k + step, 202 + 2 * k);
    }
    SetROP2(dc_, old);
    BitBlt(window_dc_, 0, 0, kW, kH, dc_, 0, 0, SRCCOPY);
  }

  std::uint32_t Checksum() const {
    BitmapView v = BitmapPixels(window_);
    std::uint32_t h = 0;
    for (int y = 0; y < v.height; ++y) {
      for (int x = 0; x < v.width; ++x) h = h * 31 + v.Row32(y)[x];
    }
    return h;
  }

 private:
  void DrawTracks() {
    std::size_t i = 0;
    for (const auto& c : coords_) {  // tracks of every width, some leaving the frame
      SelectObject(dc_, i % 12 == 0 ? thin_ : wide_[i % 11]);
      MoveToEx(dc_, c[0], c[1], nullptr);
      LineTo(dc_, c[0] + c[2], c[1] + c[3]);
      ++i;
    }
    i = 0;
    for (const auto& c : coords_) {  // dashed wide polylines and arcs
      SelectObject(dc_, dashed_wide_[i++ % dashed_wide_.size()]);
      const CPoint pts[] = {{c[0], c[1]}, {c[0] + c[2], c[1]}, {c[0] + c[2], c[1] + c[3]}};
      Polyline(dc_, pts, 3);
      Arc(dc_, c[0] - 30, c[1] - 20, c[0] + 30, c[1] + 20, c[0] + c[2], c[1], c[0], c[1] + c[3]);
    }
    SelectObject(dc_, dashed_);
    for (const auto& c : coords_) {  // styled one-pixel polylines
      MoveToEx(dc_, c[0], c[1], nullptr);
      LineTo(dc_, c[0] + c[3], c[1] + c[2]);
      LineTo(dc_, c[0], c[1] + c[2]);
    }
    for (int y = 0; y < kH; y += 20) {  // the grid
      for (int x = 0; x < kW; x += 5) SetPixel(dc_, x, y, 0x646464);
      SelectObject(dc_, thin_);
      MoveToEx(dc_, 0, y, nullptr);
      LineTo(dc_, kW, y);
    }
  }

  void DrawThinShapes() {
    SelectObject(dc_, thin_);
    SelectObject(dc_, hatch_);
    for (const auto& c : coords_) {  // thin-outlined round rectangles, pies and chords
      RoundRect(dc_, c[0], c[1], c[0] + (c[2] & 127), c[1] + (c[3] & 63), 12, 9);
      Pie(dc_, c[0], c[1], c[0] + 40, c[1] + 30, c[0] + c[2], c[1], c[0], c[1] + c[3]);
    }
    for (const auto& c : coords_) {  // pads and circle outlines
      const int r = (c[2] & 63) + 2;
      SelectObject(dc_, (c[3] & 1) ? GetStockObject(NULL_PEN) : thin_);
      SelectObject(dc_, (c[3] & 1) ? fill_ : HBRUSH(GetStockObject(NULL_BRUSH)));
      Ellipse(dc_, c[0] - r, c[1] - r, c[0] + r + 1, c[1] + r + 1);
    }
    SetPolyFillMode(dc_, ALTERNATE);
    for (const auto& s : stars_) {
      SelectObject(dc_, thin_);
      SelectObject(dc_, (s.size() & 1) ? hatch_ : fill_);
      Polygon(dc_, s.data(), static_cast<int>(s.size()));
    }
  }

  // Every closed figure outlined with every kind of wide pen, filled and hollow.
  void DrawWideShapes() {
    for (std::size_t k = 0; k < 3 * outline_.size(); ++k) {
      const auto& c = coords_[(k * 7) % coords_.size()];
      SelectObject(dc_, outline_[k % outline_.size()]);
      SelectObject(dc_, (k & 1) ? HBRUSH(GetStockObject(NULL_BRUSH)) : (k & 2) ? hatch_ : fill_);
      const int x = c[0], y = c[1], w = (c[2] & 63) + 6, h = (c[3] & 63) + 6;
      Rectangle(dc_, x, y, x + w, y + h);
      Ellipse(dc_, x + 10, y - 20, x + 10 + h, y - 20 + w);
      RoundRect(dc_, x - 30, y + 15, x - 30 + w, y + 15 + h, w / 3, h / 2);
      Chord(dc_, x, y, x + 2 * w, y + h, x + c[2], y, x, y + c[3]);
      Pie(dc_, x - 40, y - 40, x - 40 + w, y - 40 + 2 * h, x, y + c[3], x + c[2], y);
      const auto& s = stars_[k % stars_.size()];
      SetPolyFillMode(dc_, (k & 4) ? WINDING : ALTERNATE);
      Polygon(dc_, s.data(), static_cast<int>(s.size()));
      const auto& t = stars_[(k + 1) % stars_.size()];
      std::vector<CPoint>& both = poly_poly_;
      both.assign(s.begin(), s.end());
      both.insert(both.end(), t.begin(), t.end());
      const int counts[] = {static_cast<int>(s.size()), static_cast<int>(t.size())};
      PolyPolygon(dc_, both.data(), counts, 2);
    }
  }

  // Paths of lines, curves and several figures, stroked, filled and both, with thin and wide
  // pens.
  void DrawPaths() {
    for (std::size_t k = 0; k < 24; ++k) {
      const auto& c = coords_[(k * 11) % coords_.size()];
      SelectObject(dc_, k % 4 == 0 ? thin_ : outline_[k % outline_.size()]);
      SelectObject(dc_, (k & 1) ? hatch_ : fill_);
      const int x = c[0], y = c[1];
      BeginPath(dc_);
      MoveToEx(dc_, x, y, nullptr);
      LineTo(dc_, x + c[2], y + 10);
      LineTo(dc_, x + c[2] / 2, y + c[3]);
      CloseFigure(dc_);
      MoveToEx(dc_, x + 20, y - 40, nullptr);
      ArcTo(dc_, x - 30, y - 60, x + 50, y + 20, x + 50, y, x, y - 60);
      LineTo(dc_, x - 20, y + 30);
      EndPath(dc_);
      switch (k % 3) {
        case 0: StrokeAndFillPath(dc_); break;
        case 1: StrokePath(dc_); break;
        default: FillPath(dc_); break;
      }
    }
  }

  // Region objects made once and reshaped, combined, moved, painted and clipped to each frame.
  void DrawRegions(int step) {
    for (int op : {RGN_AND, RGN_OR, RGN_XOR, RGN_DIFF, RGN_COPY}) {
      CombineRgn(region_c_, region_a_, region_b_, op);
      FillRgn(dc_, region_c_, op & 1 ? hatch_ : fill_);
    }
    CombineRgn(region_c_, region_c_, region_a_, RGN_DIFF);  // the destination as a source
    OffsetRgn(region_b_, 7 + step, -5);
    FrameRgn(dc_, region_b_, fill_, 2, 3);
    OffsetRgn(region_b_, -7 - step, 5);
    SelectObject(dc_, hatch_);
    PaintRgn(dc_, region_a_);
    InvertRgn(dc_, region_b_);
    SetRectRgn(region_c_, 40, 30, 200 + step, 160);
    CombineRgn(region_c_, region_c_, region_b_, RGN_XOR);
    SelectClipRgn(dc_, region_c_);
    SelectObject(dc_, wide_[5]);
    for (const auto& c : coords_) {
      MoveToEx(dc_, c[0], c[1], nullptr);
      LineTo(dc_, c[0] + c[3], c[1] + c[2]);
    }
    SelectClipRgn(dc_, nullptr);
    CRect box;
    GetRgnBox(region_c_, &box);
    if (PtInRegion(region_a_, box.left, box.top) || RectInRegion(region_b_, &box)) {
      SetPixel(dc_, 0, 0, 0xFFFFFF);
    }
  }

  void DrawText() {
    static const char kLabel[] = "U12 pin 3.14";
    SetBkMode(dc_, TRANSPARENT);
    SetTextColor(dc_, 0xE0E0E0);
    SelectObject(dc_, font_);
    for (std::size_t k = 0; k < 40; ++k) {
      const auto& c = coords_[(k * 13) % coords_.size()];
      SetTextAlign(dc_, k & 1 ? TA_CENTER | TA_BASELINE : 0);
      TextOutA(dc_, c[0], c[1], kLabel, static_cast<int>(k % 12) + 1);
    }
    SetBkMode(dc_, OPAQUE);
    SetTextAlign(dc_, 0);
    const CRect box(20, 400, 300, 440);
    ExtTextOutA(dc_, 22, 402, ETO_OPAQUE | ETO_CLIPPED, &box, kLabel, 12, nullptr);
    CRect text_box(320, 400, 620, 470);
    DrawTextA(dc_, "net GND\nlayer 2", -1, &text_box, DT_CENTER);
    CRect line_box(320, 440, 620, 470);
    DrawTextA(dc_, kLabel, -1, &line_box, DT_CENTER | DT_VCENTER | DT_SINGLELINE);
    CSize size;
    GetTextExtentPoint32A(dc_, kLabel, 12, &size);
    SelectObject(dc_, turned_font_);
    TextOutA(dc_, 300, 300, kLabel, 12);
  }

  void DrawAlpha() {
    const std::uint32_t argb = 0x80FF8040;
    for (std::size_t k = 0; k < 20; ++k) {
      const auto& c = coords_[(k * 17) % coords_.size()];
      GpDrawLine(dc_, argb, 1.0f + static_cast<float>(k % 6), c[0], c[1], c[0] + c[2], c[1] + c[3]);
      GpDrawEllipse(dc_, argb, 1.0f + static_cast<float>(k % 3), c[0], c[1], 40, 30);
      GpDrawArc(dc_, argb, 2.0f, c[0], c[1], 60, 50, 30.0f, 200.0f);
      GpDrawPie(dc_, argb, 1.5f, c[0], c[1], 50, 60, -20.0f, 120.0f);
      GpFillRect(dc_, c[0], c[1], 25, 15, argb);
      const auto& s = stars_[k % stars_.size()];
      GpFillPolygon(dc_, s.data(), static_cast<int>(s.size()), argb);
    }
    GpFillRegion(dc_, region_b_, 0x4000FF00);
  }

  // Deep zoom: a pad outline millions of pixels across whose edge crosses the view, an arc of
  // it, and a track end wider than the view (its dot past the stepped size).
  void DrawZoomedIn() {
    constexpr int kR = 3000000;
    SelectObject(dc_, thin_);
    SelectObject(dc_, GetStockObject(NULL_BRUSH));
    Ellipse(dc_, 320 - 2 * kR, 240 - kR, 320, 240 + kR);
    Arc(dc_, 330 - 2 * kR, 250 - kR, 330, 250 + kR, 400, 480, 400, 0);
    SelectObject(dc_, fill_);
    Ellipse(dc_, 600, 200 - kR, 600 + 2 * kR, 200 + kR);
    SelectObject(dc_, outline_[4]);
    Pie(dc_, 620, 260 - kR, 620 + 2 * kR, 260 + kR, 0, 480, 0, 0);
    SelectObject(dc_, huge_pen_);
    MoveToEx(dc_, -2400, 200, nullptr);
    LineTo(dc_, -2500, 260);
  }

  HDC dc_;
  HBITMAP bitmap_;
  HDC window_dc_;
  HBITMAP window_;
  HBRUSH background_, fill_, hatch_;
  HPEN thin_, dashed_, band_, huge_pen_;
  HRGN region_a_, region_b_, region_c_;
  HFONT font_, turned_font_;
  std::vector<HPEN> wide_;
  std::vector<HPEN> dashed_wide_;
  std::vector<HPEN> outline_;
  std::vector<std::array<int, 4>> coords_;
  std::vector<std::vector<CPoint>> stars_;
  std::vector<CPoint> poly_poly_;
};

TEST(SteadyStateAllocation, AFrameOfEveryPrimitiveAllocatesNothing) {
  Frame frame;
  // Warm: scratch memory grows to what the frames need (the second frame moves the band, the
  // clip region and a region outline).
  frame.Draw(3);
  const std::uint32_t moved = frame.Checksum();
  frame.Draw(0);
  const std::uint32_t first = frame.Checksum();
  for (int step : {0, 3, 0}) {
    AllocationCount::Start();
    frame.Draw(step);
    EXPECT_EQ(AllocationCount::Stop(), 0) << "frame at step " << step;
    // The measured frame really drew: the same picture again.
    EXPECT_EQ(frame.Checksum(), step == 0 ? first : moved);
  }
  EXPECT_NE(first, moved);
}

// A region reshaped in place (SetEllipticRgn, SetPolygonRgn, SetRectRgn) is the region the
// Create functions make, and once it has grown to the shapes it takes, reshaping allocates
// nothing.
TEST(SteadyStateAllocation, RegionsReshapedInPlace) {
  struct Box {
    int l, t, r, b;
  };
  // Small, flat, reversed, empty, and one too big to step (the flattened path).
  const Box boxes[] = {{10, 10, 60, 40}, {-5, 3, 200, 7}, {90, 80, 20, 15}, {5, 5, 5, 9},
                       {-70000, -30, 70000, 90000}};
  std::vector<CPoint> star;
  for (int k = 0; k < 9; ++k) {
    const double a = 6.283185307179586 * ((k * 4) % 9) / 9;
    star.emplace_back(100 + static_cast<int>(80 * std::cos(a)), 90 + static_cast<int>(60 * std::sin(a)));
  }
  std::vector<HRGN> made;
  for (const Box& b : boxes) made.push_back(CreateEllipticRgn(b.l, b.t, b.r, b.b));
  for (int mode : {ALTERNATE, WINDING}) {
    made.push_back(CreatePolygonRgn(star.data(), static_cast<int>(star.size()), mode));
  }
  made.push_back(CreateRectRgn(30, 40, 5, 9));
  HRGN reshaped = CreateRectRgn(0, 0, 0, 0);
  const auto reshape_all = [&](std::vector<int>* equal) {
    std::size_t i = 0;
    for (const Box& b : boxes) {
      SetEllipticRgn(reshaped, b.l, b.t, b.r, b.b);
      equal->push_back(EqualRgn(reshaped, made[i++]));
    }
    for (int mode : {ALTERNATE, WINDING}) {
      SetPolygonRgn(reshaped, star.data(), static_cast<int>(star.size()), mode);
      equal->push_back(EqualRgn(reshaped, made[i++]));
    }
    SetRectRgn(reshaped, 30, 40, 5, 9);
    equal->push_back(EqualRgn(reshaped, made[i++]));
  };
  std::vector<int> equal;
  equal.reserve(64);
  reshape_all(&equal);  // warm
  AllocationCount::Start();
  reshape_all(&equal);
  EXPECT_EQ(AllocationCount::Stop(), 0);
  for (std::size_t i = 0; i < equal.size(); ++i) EXPECT_TRUE(equal[i]) << "shape " << i % made.size();
  // A polygon the Create function refuses leaves the region as it was.
  EXPECT_FALSE(SetPolygonRgn(reshaped, star.data(), 2, WINDING));
  EXPECT_FALSE(SetPolygonRgn(reshaped, star.data(), 5, 7));
  EXPECT_TRUE(EqualRgn(reshaped, made.back()));
  EXPECT_FALSE(SetEllipticRgn(nullptr, 0, 0, 5, 5));
  DeleteObject(reshaped);
  for (HRGN r : made) DeleteObject(r);
}

TEST(SteadyStateAllocation, TheCounterSeesAllocations) {
  // Guards the test above against a counter that never counts.
  AllocationCount::Start();
  auto* v = new std::vector<int>(100);
  const long made = AllocationCount::Stop();
  delete v;
  EXPECT_EQ(made, 2);
}

}  // namespace
}  // namespace qvis::gdi
