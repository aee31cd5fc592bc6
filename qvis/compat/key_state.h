// Keyboard and mouse-button state as a window port keeps it. The zoom box, the select command
// and the mouse pan ask whether a button is held in the window they are shown in; each port
// (or a test) answers for its own window. Nothing here is process-wide.
#ifndef QVIS_COMPAT_KEY_STATE_H_
#define QVIS_COMPAT_KEY_STATE_H_

#include "qvis/compat/export.h"

namespace qvis {

// KeyStateSource: what a window port implements to answer key-state questions for its window.
class QVIS_API KeyStateSource {
 public:
  virtual ~KeyStateSource() = default;
  // KeyState returns the state of a virtual key as GetKeyState does: bit 15 set when down,
  // bit 0 the toggle state.
  virtual short KeyState(int virtual_key) const = 0;
  // AsyncKeyState returns the state as GetAsyncKeyState does: bit 15 set when down now.
  virtual short AsyncKeyState(int virtual_key) const = 0;
};

// GetKeyState and GetAsyncKeyState ask `source`, the key state of one window; a null source
// (no window) answers that every key is up (0).
inline short GetKeyState(const KeyStateSource* source, int virtual_key) {
  return source != nullptr ? source->KeyState(virtual_key) : 0;
}
inline short GetAsyncKeyState(const KeyStateSource* source, int virtual_key) {
  return source != nullptr ? source->AsyncKeyState(virtual_key) : 0;
}

}  // namespace qvis

#endif  // QVIS_COMPAT_KEY_STATE_H_
