#pragma once

#include <tessel/foundation/platform.h>

namespace tessel {

/// Remembers the library's module and makes it the string module unless one is set.
/// Called by the entry point for every reason.
/// @param module   the handle that the system passes
/// @param attaches whether the process is loading the library
void KeepModule(HINSTANCE module, bool attaches);

} // namespace tessel
