// Steady-state drawing allocates nothing: after a warm-up frame, a frame of every primitive the
// canvas issues (pens and brushes selected per primitive, as it does) makes no heap allocation.
// Scratch memory belongs to the DC and to the scan converters and is reused from call to call.
// This binary's operator new counts calls while a frame is being measured.
#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <cmath>
#include <cstdlib>
#include <new>
#ifdef _WIN32
#include <malloc.h>
#endif
#include <random>
#include <vector>

#include "qvis/compat/win32_names.h"
#include "qvis/gdi/gdi.h"

namespace {
std::atomic<bool> g_counting{false};
std::atomic<long> g_allocations{0};

void* Allocate(std::size_t n) {
  if (g_counting.load(std::memory_order_relaxed)) g_allocations.fetch_add(1, std::memory_order_relaxed);
  if (void* p = std::malloc(n == 0 ? 1 : n)) return p;
  throw std::bad_alloc();
}
void* AllocateAligned(std::size_t n, std::size_t align) {
  if (g_counting.load(std::memory_order_relaxed)) g_allocations.fetch_add(1, std::memory_order_relaxed);
  const std::size_t size = (n + align - 1) / align * align;
#ifdef _WIN32  // the Windows C runtime has no aligned_alloc; its aligned blocks have their own free
  if (void* p = _aligned_malloc(size == 0 ? align : size, align)) return p;
#else
  if (void* p = std::aligned_alloc(align, size == 0 ? align : size)) return p;
#endif
  throw std::bad_alloc();
}
void FreeAligned(void* p) {
#ifdef _WIN32
  _aligned_free(p);
#else
  std::free(p);
#endif
}
}  // namespace

void* operator new(std::size_t n) { return Allocate(n); }
void* operator new[](std::size_t n) { return Allocate(n); }
void* operator new(std::size_t n, const std::nothrow_t&) noexcept {
  try {
    return Allocate(n);
  } catch (...) {
    return nullptr;
  }
}
void* operator new[](std::size_t n, const std::nothrow_t&) noexcept {
  try {
    return Allocate(n);
  } catch (...) {
    return nullptr;
  }
}
void* operator new(std::size_t n, std::align_val_t a) { return AllocateAligned(n, static_cast<std::size_t>(a)); }
void* operator new[](std::size_t n, std::align_val_t a) { return AllocateAligned(n, static_cast<std::size_t>(a)); }
void operator delete(void* p) noexcept { std::free(p); }
void operator delete[](void* p) noexcept { std::free(p); }
void operator delete(void* p, std::size_t) noexcept { std::free(p); }
void operator delete[](void* p, std::size_t) noexcept { std::free(p); }
void operator delete(void* p, std::align_val_t) noexcept { FreeAligned(p); }
void operator delete[](void* p, std::align_val_t) noexcept { FreeAligned(p); }
void operator delete(void* p, std::size_t, std::align_val_t) noexcept { FreeAligned(p); }
void operator delete[](void* p, std::size_t, std::align_val_t) noexcept { FreeAligned(p); }

namespace qvis::gdi {
namespace {

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
    for (int w = 2; w <= 12; ++w) {
      wide_.push_back(ExtCreatePen(PS_GEOMETRIC | PS_SOLID | PS_ENDCAP_ROUND | PS_JOIN_ROUND,
                                   static_cast<DWORD>(w), &lb, 0, nullptr));
    }
    // Dashed tracks, as the surface's pen cache makes them from 2 units up.
    const DWORD styles[] = {PS_DASH, PS_DOT, PS_DASHDOT, PS_DASHDOTDOT};
    const DWORD caps[] = {PS_ENDCAP_ROUND, PS_ENDCAP_SQUARE, PS_ENDCAP_FLAT};
    for (int k = 0; k < 12; ++k) {
      dashed_wide_.push_back(ExtCreatePen(PS_GEOMETRIC | styles[k % 4] | caps[k % 3] | PS_JOIN_MITER,
                                          static_cast<DWORD>(2 + k), &lb, 0, nullptr));
    }
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
  }
  ~Frame() {
    DeleteDC(dc_);
    DeleteDC(window_dc_);
    DeleteObject(bitmap_);
    DeleteObject(window_);
    for (HGDIOBJ o : {HGDIOBJ(background_), HGDIOBJ(fill_), HGDIOBJ(hatch_), HGDIOBJ(thin_),
                      HGDIOBJ(dashed_), HGDIOBJ(band_)}) {
      DeleteObject(o);
    }
    for (HPEN p : wide_) DeleteObject(p);
    for (HPEN p : dashed_wide_) DeleteObject(p);
  }

  void Draw(int step) {
    const CRect all(0, 0, kW, kH);
    FillRect(dc_, &all, background_);
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
    SelectObject(dc_, thin_);
    SelectObject(dc_, hatch_);
    for (const auto& c : coords_) {  // thin-outlined round rectangles, pies and chords
      RoundRect(dc_, c[0], c[1], c[0] + (c[2] & 127), c[1] + (c[3] & 63), 12, 9);
      Pie(dc_, c[0], c[1], c[0] + 40, c[1] + 30, c[0] + c[2], c[1], c[0], c[1] + c[3]);
    }
    SelectObject(dc_, dashed_);
    for (const auto& c : coords_) {  // styled one-pixel polylines
      MoveToEx(dc_, c[0], c[1], nullptr);
      LineTo(dc_, c[0] + c[3], c[1] + c[2]);
      LineTo(dc_, c[0], c[1] + c[2]);
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
    for (int y = 0; y < kH; y += 20) {  // the grid
      for (int x = 0; x < kW; x += 5) SetPixel(dc_, x, y, 0x646464);
      SelectObject(dc_, thin_);
      MoveToEx(dc_, 0, y, nullptr);
      LineTo(dc_, kW, y);
    }
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
  HDC dc_;
  HBITMAP bitmap_;
  HDC window_dc_;
  HBITMAP window_;
  HBRUSH background_, fill_, hatch_;
  HPEN thin_, dashed_, band_;
  std::vector<HPEN> wide_;
  std::vector<HPEN> dashed_wide_;
  std::vector<std::array<int, 4>> coords_;
  std::vector<std::vector<CPoint>> stars_;
};

TEST(SteadyStateAllocation, AFrameOfEveryPrimitiveAllocatesNothing) {
  Frame frame;
  frame.Draw(0);  // warm: scratch memory grows to what a frame needs
  const std::uint32_t first = frame.Checksum();
  g_allocations = 0;
  g_counting = true;
  frame.Draw(0);
  g_counting = false;
  EXPECT_EQ(g_allocations.load(), 0);
  // The measured frame really drew: the same picture again.
  EXPECT_EQ(frame.Checksum(), first);
  EXPECT_NE(first, 0u);
}

TEST(SteadyStateAllocation, TheCounterSeesAllocations) {
  // Guards the test above against a counter that never counts.
  g_allocations = 0;
  g_counting = true;
  auto* v = new std::vector<int>(100);
  g_counting = false;
  delete v;
  EXPECT_EQ(g_allocations.load(), 2);
}

}  // namespace
}  // namespace qvis::gdi
