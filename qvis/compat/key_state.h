// Keyboard and mouse-button state as the active window port keeps it. The zoom box, the select
// command and the mouse pan ask whether a button or key is held; the port (or a test) answers.
#ifndef QVIS_COMPAT_KEY_STATE_H_
#define QVIS_COMPAT_KEY_STATE_H_

#include "qvis/compat/export.h"

namespace qvis {

// KeyStateSource: what a window port implements to answer key-state questions.
class QVIS_API KeyStateSource {
 public:
  virtual ~KeyStateSource() = default;
  // KeyState returns the state of a virtual key as GetKeyState does: bit 15 set when down,
  // bit 0 the toggle state.
  virtual short KeyState(int virtual_key) const = 0;
  // AsyncKeyState returns the state as GetAsyncKeyState does: bit 15 set when down now.
  virtual short AsyncKeyState(int virtual_key) const = 0;
};

// SetKeyStateSource installs the source that answers; null restores "nothing is down".
// Returns the previous source. Not thread-safe: everything runs on the window's thread.
QVIS_API KeyStateSource* SetKeyStateSource(KeyStateSource* source);
QVIS_API KeyStateSource* GetKeyStateSource();

// GetKeyState and GetAsyncKeyState ask the installed source; with none, every key is up (0).
QVIS_API short GetKeyState(int virtual_key);
QVIS_API short GetAsyncKeyState(int virtual_key);

}  // namespace qvis

#endif  // QVIS_COMPAT_KEY_STATE_H_
