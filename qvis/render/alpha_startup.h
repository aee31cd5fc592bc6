// Start-up and shut-down of the surface's translucent (GP_) drawing path, with a seam that
// lets a test make the start fail. The surface starts it in its constructor and keeps the
// token; the GP_ members draw only while at least one start-up is alive.
#ifndef QVIS_RENDER_ALPHA_STARTUP_H_
#define QVIS_RENDER_ALPHA_STARTUP_H_

#include "qvis/compat/types.h"

namespace qvis {

// AlphaStartup starts the path and stores a fresh nonzero token; returns 0 (success) or a
// nonzero status (then *token is 0). A null token pointer fails with status 2.
int AlphaStartup(UINT_PTR* token);
// AlphaShutdown ends the start-up of `token`; an unknown or zero token is ignored.
void AlphaShutdown(UINT_PTR token);
// AlphaIsRunning tells whether any start-up is alive.
bool AlphaIsRunning();
// SetAlphaStartupFailsForTesting makes every later AlphaStartup fail (status 1) while set.
void SetAlphaStartupFailsForTesting(bool fail);

}  // namespace qvis

#endif  // QVIS_RENDER_ALPHA_STARTUP_H_
