#include <foundation/ProcessObjects.h>

namespace tessel {

// They exist from before the entry point runs on attach until after it has run on detach, and are
// constructed in this order; all are unnamed, so no other process shares them.
CMutex errorModeMutex;
CSemaphore resourceTableLock(nullptr, 1, 1);

} // namespace tessel
