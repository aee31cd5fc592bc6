// Platform handle types of the public API. They are our own: a device context, a graphics object
// of the device layer, or a window port. A null handle is always accepted and means "none".
#ifndef QVIS_COMPAT_HANDLES_H_
#define QVIS_COMPAT_HANDLES_H_

#include "qvis/compat/cpoint.h"
#include "qvis/compat/types.h"

namespace qvis {

namespace gdi {
struct DeviceContext;
struct GdiObject;
struct Pen;
struct Brush;
struct Font;
struct Bitmap;
struct Region;
struct EnhMetaFile;
}  // namespace gdi

class WindowPort;

using HDC = gdi::DeviceContext*;
using HGDIOBJ = gdi::GdiObject*;
using HPEN = gdi::Pen*;
using HBRUSH = gdi::Brush*;
using HFONT = gdi::Font*;
using HBITMAP = gdi::Bitmap*;
using HRGN = gdi::Region*;
using HENHMETAFILE = gdi::EnhMetaFile*;
using HWND = WindowPort*;

// MSG: one window message as a message loop hands it to the window.
struct MSG {
  HWND hwnd = nullptr;
  UINT message = 0;
  WPARAM wParam = 0;
  LPARAM lParam = 0;
  DWORD time = 0;
  CPoint pt;
};

}  // namespace qvis

#endif  // QVIS_COMPAT_HANDLES_H_
