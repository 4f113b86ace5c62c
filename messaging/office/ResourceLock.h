#pragma once

#include <tessel/foundation/semaphore.h>

namespace tessel {

/// Serialises adding to and deleting from the resource table within this process.
extern CSemaphore resourceTableLock;

} // namespace tessel
