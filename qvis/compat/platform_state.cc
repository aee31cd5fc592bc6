// The host's message box hook: the one process-wide setting of the compat layer. It is guarded,
// so that windows on different threads may show a message while the host swaps the handler.
#include <cstdio>
#include <mutex>
#include <utility>

#include "qvis/compat/message_box.h"

namespace qvis {
namespace {
struct MessageBoxHook {
  std::mutex mutex;
  MessageBoxHandler handler;
};
MessageBoxHook& Hook() {
  static MessageBoxHook hook;
  return hook;
}
}  // namespace

MessageBoxHandler SetMessageBoxHandler(MessageBoxHandler handler) {
  MessageBoxHook& hook = Hook();
  std::lock_guard<std::mutex> lock(hook.mutex);
  return std::exchange(hook.handler, std::move(handler));
}

int ShowMessageBox(const char* text) {
  MessageBoxHandler handler;
  {
    MessageBoxHook& hook = Hook();
    std::lock_guard<std::mutex> lock(hook.mutex);
    handler = hook.handler;
  }
  // The handler runs outside the lock: it may show a modal box or set another handler.
  if (handler) return handler(text ? text : "");
  std::fprintf(stderr, "%s\n", text ? text : "");
  return 1;
}

}  // namespace qvis
