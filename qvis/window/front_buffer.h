// qvis::FrontBuffer: the bitmap a window port shows, selected into the port's own device context
// (the DC the window's FrontDC hands out). Shared by the headless and Qt ports; owned by the port.
#ifndef QVIS_WINDOW_FRONT_BUFFER_H_
#define QVIS_WINDOW_FRONT_BUFFER_H_

#include "qvis/compat/export.h"
#include "qvis/compat/handles.h"

namespace qvis {

class QVIS_API FrontBuffer {
 public:
  // Sides are clamped to this: an 8K screen, 256 MB a buffer.
  static constexpr int kMaxSide = 8192;

  // FrontBuffer: the DC with no bitmap of its own yet (0 x 0).
  FrontBuffer();
  // ~FrontBuffer: puts the DC's original bitmap back, frees the buffer and the DC.
  ~FrontBuffer();
  FrontBuffer(const FrontBuffer&) = delete;
  FrontBuffer& operator=(const FrontBuffer&) = delete;

  // Resize: a new buffer of width x height (each clamped to 0..kMaxSide), cleared, or, with
  // `keep_pixels`, holding what of the old one fits, as a real window keeps its pixels until
  // the next paint. When the bitmap cannot be made the old buffer and size stay.
  void Resize(int width, int height, bool keep_pixels);

  HDC dc() const { return dc_; }
  HBITMAP bitmap() const { return bitmap_; }
  int width() const { return width_; }
  int height() const { return height_; }

 private:
  HDC dc_ = nullptr;
  HBITMAP bitmap_ = nullptr;
  HGDIOBJ original_bitmap_ = nullptr;
  int width_ = 0;
  int height_ = 0;
};

}  // namespace qvis

#endif  // QVIS_WINDOW_FRONT_BUFFER_H_
