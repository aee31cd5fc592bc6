// Start-up bookkeeping of the translucent drawing path.
#include "qvis/render/alpha_startup.h"

#include <algorithm>
#include <mutex>
#include <vector>

namespace qvis {
namespace {

// AlphaState: the one table of the process. Surfaces of windows on different threads start and
// stop the path at the same time, so every access holds the mutex.
struct AlphaState {
  std::mutex mutex;
  std::vector<UINT_PTR> live;  // tokens of the start-ups not yet shut down
  UINT_PTR next = 1;
  bool fail = false;
};

AlphaState& State() {
  static AlphaState state;
  return state;
}

}  // namespace

int AlphaStartup(UINT_PTR* token) {
  if (token == nullptr) return 2;
  AlphaState& s = State();
  std::lock_guard<std::mutex> lock(s.mutex);
  if (s.fail) {
    *token = 0;
    return 1;
  }
  *token = s.next++;
  s.live.push_back(*token);
  return 0;
}

void AlphaShutdown(UINT_PTR token) {
  AlphaState& s = State();
  std::lock_guard<std::mutex> lock(s.mutex);
  auto it = std::find(s.live.begin(), s.live.end(), token);
  if (it != s.live.end()) s.live.erase(it);
}

bool AlphaIsRunning() {
  AlphaState& s = State();
  std::lock_guard<std::mutex> lock(s.mutex);
  return !s.live.empty();
}

void SetAlphaStartupFailsForTesting(bool fail) {
  AlphaState& s = State();
  std::lock_guard<std::mutex> lock(s.mutex);
  s.fail = fail;
}

}  // namespace qvis
