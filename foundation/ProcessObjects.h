#pragma once

#include <fenestra/mutex.h>
#include <tessel/synchronisation.h>

namespace tessel {

class BrushTable;

/// Guards the error-mode counter and the saved mode.
extern CMutex errorModeMutex;

/// Serialises appending to the brush table.
extern CThreadLock brushTableLock;

/// The brushes that all parts of the process share.
extern BrushTable brushTable;

/// Serialises adding to and deleting from the resource table within this process.
extern CSemaphore resourceTableLock;

} // namespace tessel
