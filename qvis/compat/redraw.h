// Repainting a window at once: the mouse pan asks for it after it moved the view. The active
// window port installs the handler that repaints (invalidate, erase, update now); with none
// installed the request does nothing, so the layers below the window never need a window.
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

// SetRedrawHandler installs the handler and returns the previous one (empty: none).
QVIS_API RedrawHandler SetRedrawHandler(RedrawHandler handler);

// RedrawWindow asks the installed handler to repaint `hwnd` with the RDW_* `flags` (0x105 is
// invalidate | erase | update now). A null window or no handler: nothing, result 0.
QVIS_API BOOL RedrawWindow(HWND hwnd, UINT flags);

}  // namespace qvis

#endif  // QVIS_COMPAT_REDRAW_H_
