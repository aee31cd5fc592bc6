// Test support for the command tests (header only, used by *_test.cc): a surface drawing into a
// 32-bit bitmap that is both its drawing and its origin context, a patterned background so that
// XOR restoration is meaningful, and a settable mouse-button state.
#ifndef QVIS_COMMANDS_TEST_CANVAS_H_
#define QVIS_COMMANDS_TEST_CANVAS_H_

#include <cstdint>
#include <memory>
#include <vector>

#include "qvis/compat/key_state.h"
#include "qvis/compat/win32_names.h"
#include "qvis/coords/view_coords.h"
#include "qvis/gdi/gdi.h"
#include "qvis/render/surface.h"

namespace qvis::testing {

using Pixels = std::vector<std::uint32_t>;

// Canvas: a width x height bitmap behind a surface. World (0, 0) maps to pixel (0, 0) and one
// world unit is `zoom` pixels.
class Canvas {
 public:
  explicit Canvas(int width = 160, int height = 120, double zoom = 4.0)
      : width_(width), height_(height) {
    bitmap_ = gdi::CreateBitmap32(width, height);
    dc_ = gdi::CreateCompatibleDC(nullptr);
    gdi::SelectObject(dc_, bitmap_);
    surface_ = std::make_unique<CQVIS_GDI>();
    surface_->SetHandles(nullptr, dc_, dc_);
    surface_->GetCoords()->m_dZoom = zoom;
    surface_->GetCoords()->m_dViewX = 0.0;
    surface_->GetCoords()->m_dViewY = 0.0;
    FillPattern();
  }
  ~Canvas() {
    surface_.reset();
    gdi::DeleteDC(dc_);
    gdi::DeleteObject(bitmap_);
  }
  Canvas(const Canvas&) = delete;
  Canvas& operator=(const Canvas&) = delete;

  CQVIS_GDI* surface() { return surface_.get(); }
  HDC dc() const { return dc_; }
  int width() const { return width_; }
  int height() const { return height_; }

  // FillPattern paints a deterministic multi-colour background (no two neighbours equal), so a
  // figure that is not erased exactly shows up whatever its colour.
  void FillPattern() {
    const gdi::BitmapView v = gdi::BitmapPixels(bitmap_);
    for (int y = 0; y < v.height; ++y) {
      for (int x = 0; x < v.width; ++x) {
        v.Row32(y)[x] = static_cast<std::uint32_t>((x * 37 + y * 91) * 2654435761u) & 0xFFFFFFu;
      }
    }
  }
  void Clear(std::uint32_t pixel = 0) {
    const gdi::BitmapView v = gdi::BitmapPixels(bitmap_);
    for (int y = 0; y < v.height; ++y) {
      for (int x = 0; x < v.width; ++x) v.Row32(y)[x] = pixel;
    }
  }

  Pixels Snapshot() const {
    const gdi::BitmapView v = gdi::BitmapPixels(bitmap_);
    Pixels out;
    out.reserve(static_cast<size_t>(v.width) * v.height);
    for (int y = 0; y < v.height; ++y) {
      for (int x = 0; x < v.width; ++x) out.push_back(v.Row32(y)[x]);
    }
    return out;
  }
  void Restore(const Pixels& p) {
    const gdi::BitmapView v = gdi::BitmapPixels(bitmap_);
    size_t i = 0;
    for (int y = 0; y < v.height; ++y) {
      for (int x = 0; x < v.width; ++x) v.Row32(y)[x] = p[i++];
    }
  }
  std::uint32_t At(int x, int y) const { return gdi::BitmapPixels(bitmap_).Row32(y)[x]; }

  static int CountDiff(const Pixels& a, const Pixels& b) {
    int n = 0;
    for (size_t i = 0; i < a.size() && i < b.size(); ++i) n += a[i] != b[i];
    return n;
  }

 private:
  int width_;
  int height_;
  HBITMAP bitmap_ = nullptr;
  HDC dc_ = nullptr;
  std::unique_ptr<CQVIS_GDI> surface_;
};

// Buttons: a key-state source whose left and right buttons tests press and release. Given a
// surface, it is that surface's window key state for its lifetime (the surface must outlive it).
class Buttons : public KeyStateSource {
 public:
  Buttons() = default;
  explicit Buttons(CQVIS_GDI* surface) : surface_(surface) {
    surface_->SetWindowLink(this, surface_->GetRedrawHandler());
  }
  ~Buttons() override {
    if (surface_ != nullptr) surface_->SetWindowLink(nullptr, surface_->GetRedrawHandler());
  }
  Buttons(const Buttons&) = delete;
  Buttons& operator=(const Buttons&) = delete;

  bool left = false;
  bool right = false;

  short KeyState(int vk) const override { return Down(vk) ? static_cast<short>(0x8000) : 0; }
  short AsyncKeyState(int vk) const override { return KeyState(vk); }

 private:
  bool Down(int vk) const { return (vk == VK_LBUTTON && left) || (vk == VK_RBUTTON && right); }
  CQVIS_GDI* surface_ = nullptr;
};

}  // namespace qvis::testing

#endif  // QVIS_COMMANDS_TEST_CANVAS_H_
