// Process-wide hooks of the compat layer: the key-state source and the message box handler.
#include <cstdio>
#include <utility>

#include "qvis/compat/key_state.h"
#include "qvis/compat/message_box.h"

namespace qvis {
namespace {
KeyStateSource* g_key_source = nullptr;
MessageBoxHandler& Handler() {
  static MessageBoxHandler handler;
  return handler;
}
}  // namespace

KeyStateSource* SetKeyStateSource(KeyStateSource* source) {
  return std::exchange(g_key_source, source);
}
KeyStateSource* GetKeyStateSource() { return g_key_source; }

short GetKeyState(int virtual_key) {
  return g_key_source ? g_key_source->KeyState(virtual_key) : 0;
}
short GetAsyncKeyState(int virtual_key) {
  return g_key_source ? g_key_source->AsyncKeyState(virtual_key) : 0;
}

MessageBoxHandler SetMessageBoxHandler(MessageBoxHandler handler) {
  return std::exchange(Handler(), std::move(handler));
}

int ShowMessageBox(const char* text) {
  if (Handler()) return Handler()(text ? text : "");
  std::fprintf(stderr, "%s\n", text ? text : "");
  return 1;
}

}  // namespace qvis
