// qvis::RenderBuffer: the design's off-screen frame. The window paints into its back-buffer
// DC and presents the finished frame to the window's front buffer in one copy.
// Owned by CQVIS_Design; attached to the window when the window is created.
#ifndef QVIS_DESIGN_RENDER_BUFFER_H_
#define QVIS_DESIGN_RENDER_BUFFER_H_

#include "qvis/compat/cpoint.h"
#include "qvis/compat/export.h"
#include "qvis/compat/handles.h"
#include "qvis/compat/types.h"

namespace qvis {

class QVIS_API RenderBuffer {
 public:
  // RenderBuffer: a detached buffer with a back-buffer DC over an empty bitmap.
  RenderBuffer();
  ~RenderBuffer();
  RenderBuffer(const RenderBuffer&) = delete;
  RenderBuffer& operator=(const RenderBuffer&) = delete;

  // Attach: binds the buffer to a window whose own DC is `front` and whose client area is
  // width x height pixels; the back buffer takes that size. Negative sizes count as 0.
  void Attach(HWND window, HDC front, int width, int height);
  HWND GetWindow() const { return window_; }

  // GetDC: the back-buffer DC. The handle stays the same for the life of the buffer, also
  // across viewport changes, so the surface may keep it.
  HDC GetDC() const { return back_dc_; }
  // GetBitmap: the back-buffer bitmap (32 bpp, top-down).
  HBITMAP GetBitmap() const { return back_bitmap_; }

  // BeginFrame: fills the whole viewport with the background colour.
  void BeginFrame(COLORREF background);
  // Present: copies the viewport to the front DC at the same place. Does nothing while
  // detached.
  void Present();

  // SetViewport: the client area the buffer covers. The back bitmap is resized to
  // (x + width) x (y + height) and cleared; negative sizes count as 0.
  void SetViewport(int x, int y, int width, int height);
  CRect GetViewport() const { return viewport_; }

 private:
  void Resize(int width, int height);
  // Free deletes the back buffer and its DC (the destructor, and a constructor that throws).
  void Free();

  HWND window_ = nullptr;
  HDC front_dc_ = nullptr;
  HDC back_dc_ = nullptr;
  HBITMAP back_bitmap_ = nullptr;
  HGDIOBJ original_bitmap_ = nullptr;
  CRect viewport_;
};

}  // namespace qvis

#endif  // QVIS_DESIGN_RENDER_BUFFER_H_
