// Repainting a window at once: the mouse pan asks for it after it moved the view. The window
// gives its design's surface a handler that repaints its own port (invalidate, erase, update
// now); without one the request does nothing, so the layers below the window never need a
// window.
#ifndef QVIS_COMPAT_REDRAW_H_
#define QVIS_COMPAT_REDRAW_H_

#include <functional>

#include "qvis/compat/export.h"
#include "qvis/compat/handles.h"
#include "qvis/compat/types.h"

namespace qvis {

// RedrawHandler repaints `hwnd` as RedrawWindow(hwnd, nullptr, nullptr, flags) would and
// returns nonzero when it did.
using RedrawHandler = std::function<BOOL(HWND hwnd, UINT flags)>;

// RedrawWindow asks `handler` to repaint `hwnd` with the RDW_* `flags` (0x105 is invalidate |
// erase | update now). A null window or an empty handler: nothing, result 0.
inline BOOL RedrawWindow(const RedrawHandler& handler, HWND hwnd, UINT flags) {
  if (hwnd == nullptr || !handler) return 0;
  return handler(hwnd, flags);
}

}  // namespace qvis

#endif  // QVIS_COMPAT_REDRAW_H_
