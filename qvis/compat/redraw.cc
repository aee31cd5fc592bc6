#include "qvis/compat/redraw.h"

#include <utility>

namespace qvis {
namespace {
RedrawHandler& Handler() {
  static RedrawHandler handler;
  return handler;
}
}  // namespace

RedrawHandler SetRedrawHandler(RedrawHandler handler) {
  return std::exchange(Handler(), std::move(handler));
}

BOOL RedrawWindow(HWND hwnd, UINT flags) {
  if (!hwnd || !Handler()) return 0;
  return Handler()(hwnd, flags);
}

}  // namespace qvis
