// The one user-visible message of the library goes through this hook, so a host can show it in
// its own message box and a test can catch it. With no handler the text goes to stderr. The hook
// is the host's and process-wide (it is not a window's); setting and showing are thread-safe.
#ifndef QVIS_COMPAT_MESSAGE_BOX_H_
#define QVIS_COMPAT_MESSAGE_BOX_H_

#include <functional>

#include "qvis/compat/export.h"

namespace qvis {

using MessageBoxHandler = std::function<int(const char* text)>;

// SetMessageBoxHandler installs the handler and returns the previous one (empty: none).
QVIS_API MessageBoxHandler SetMessageBoxHandler(MessageBoxHandler handler);

// ShowMessageBox shows text (like AfxMessageBox with the default style) and returns the
// handler's answer; 1 (IDOK) when there is no handler.
QVIS_API int ShowMessageBox(const char* text);

}  // namespace qvis

#endif  // QVIS_COMPAT_MESSAGE_BOX_H_
