#include <foundation/ProcessObjects.h>
#include <ui/BrushTable.h>

namespace tessel {

// They exist from before the entry point runs on attach until after it has run on detach, and are
// constructed in this order; all are unnamed, so no other process shares them.
CMutex errorModeMutex;
CThreadLock brushTableLock;
BrushTable brushTable;
CSemaphore resourceTableLock(nullptr, 1, 1);

} // namespace tessel
