// The design's off-screen frame: a 32-bpp memory DC that the window paints into and then copies
// to the front buffer in one blit.
#include "qvis/design/render_buffer.h"

#include <algorithm>

#include "qvis/gdi/gdi.h"

namespace qvis {
namespace {
// Raster operation of a plain copy (SRCCOPY); spelled here so that this file needs no
// Win32 macro names.
constexpr DWORD kSourceCopy = 0x00CC0020;
// The largest side a back buffer may take; larger requests (a corrupt size message) are
// clamped so that one frame never asks for gigabytes.
constexpr int kMaxSide = 8192;
}  // namespace

RenderBuffer::RenderBuffer() {
  back_dc_ = gdi::CreateCompatibleDC(nullptr);
  try {
    Resize(0, 0);
  } catch (...) {
    Free();  // the destructor does not run for a constructor that throws
    throw;
  }
}

RenderBuffer::~RenderBuffer() { Free(); }

void RenderBuffer::Free() {
  if (back_dc_ != nullptr && original_bitmap_ != nullptr) {
    gdi::SelectObject(back_dc_, original_bitmap_);
  }
  if (back_bitmap_ != nullptr) gdi::DeleteObject(reinterpret_cast<HGDIOBJ>(back_bitmap_));
  if (back_dc_ != nullptr) gdi::DeleteDC(back_dc_);
  back_bitmap_ = nullptr;
  back_dc_ = nullptr;
  original_bitmap_ = nullptr;
}

void RenderBuffer::Attach(HWND window, HDC front, int width, int height) {
  window_ = window;
  front_dc_ = front;
  SetViewport(0, 0, width, height);
}

void RenderBuffer::Resize(int width, int height) {
  width = std::clamp(width, 0, kMaxSide);
  height = std::clamp(height, 0, kMaxSide);
  HBITMAP bitmap = gdi::CreateBitmap32(width, height);
  if (bitmap == nullptr || back_dc_ == nullptr) return;
  HGDIOBJ previous = gdi::SelectObject(back_dc_, reinterpret_cast<HGDIOBJ>(bitmap));
  if (original_bitmap_ == nullptr) original_bitmap_ = previous;
  if (back_bitmap_ != nullptr) gdi::DeleteObject(reinterpret_cast<HGDIOBJ>(back_bitmap_));
  back_bitmap_ = bitmap;
}

void RenderBuffer::SetViewport(int x, int y, int width, int height) {
  width = std::max(width, 0);
  height = std::max(height, 0);
  viewport_ = CRect(x, y, x + width, y + height);
  Resize(std::max(0, x) + width, std::max(0, y) + height);
}

void RenderBuffer::BeginFrame(COLORREF background) {
  if (back_dc_ == nullptr) return;
  HBRUSH brush = gdi::CreateSolidBrush(background);
  gdi::FillRect(back_dc_, &viewport_, brush);
  gdi::DeleteObject(reinterpret_cast<HGDIOBJ>(brush));
}

void RenderBuffer::Present() {
  if (front_dc_ == nullptr || back_dc_ == nullptr) return;
  gdi::BitBlt(front_dc_, viewport_.left, viewport_.top, viewport_.Width(), viewport_.Height(),
              back_dc_, viewport_.left, viewport_.top, kSourceCopy);
}

}  // namespace qvis
