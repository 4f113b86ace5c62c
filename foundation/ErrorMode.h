#pragma once

#include <fenestra/mutex.h>

namespace tessel {

/// Guards the error-mode counter and the saved mode.
extern CMutex errorModeMutex;

} // namespace tessel
