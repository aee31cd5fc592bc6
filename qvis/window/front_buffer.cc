#include "qvis/window/front_buffer.h"

#include <algorithm>

#include "qvis/compat/win32_names.h"
#include "qvis/gdi/gdi.h"

namespace qvis {

FrontBuffer::FrontBuffer() : dc_(gdi::CreateCompatibleDC(nullptr)) {}

FrontBuffer::~FrontBuffer() {
  if (dc_ != nullptr && original_bitmap_ != nullptr) gdi::SelectObject(dc_, original_bitmap_);
  if (bitmap_ != nullptr) gdi::DeleteObject(reinterpret_cast<HGDIOBJ>(bitmap_));
  if (dc_ != nullptr) gdi::DeleteDC(dc_);
}

void FrontBuffer::Resize(int width, int height, bool keep_pixels) {
  if (dc_ == nullptr) return;
  width = std::clamp(width, 0, kMaxSide);
  height = std::clamp(height, 0, kMaxSide);
  HBITMAP bitmap = gdi::CreateBitmap32(width, height);
  if (bitmap == nullptr) return;
  if (keep_pixels && bitmap_ != nullptr) {
    HDC copy_dc = gdi::CreateCompatibleDC(nullptr);
    HGDIOBJ prev = gdi::SelectObject(copy_dc, reinterpret_cast<HGDIOBJ>(bitmap));
    gdi::BitBlt(copy_dc, 0, 0, std::min(width, width_), std::min(height, height_), dc_, 0, 0,
                SRCCOPY);
    gdi::SelectObject(copy_dc, prev);
    gdi::DeleteDC(copy_dc);
  }
  HGDIOBJ previous = gdi::SelectObject(dc_, reinterpret_cast<HGDIOBJ>(bitmap));
  if (original_bitmap_ == nullptr) original_bitmap_ = previous;
  if (bitmap_ != nullptr) gdi::DeleteObject(reinterpret_cast<HGDIOBJ>(bitmap_));
  bitmap_ = bitmap;
  width_ = width;
  height_ = height;
}

}  // namespace qvis
