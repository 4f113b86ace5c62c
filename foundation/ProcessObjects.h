#pragma once

#include <fenestra/mutex.h>
#include <tessel/synchronisation.h>

namespace tessel {

/// Guards the error-mode counter and the saved mode.
extern CMutex errorModeMutex;

/// Serialises adding to and deleting from the resource table within this process.
extern CSemaphore resourceTableLock;

} // namespace tessel
