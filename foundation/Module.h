#pragma once

#include <tessel/foundation/platform.h>

namespace tessel {

/// Stores the library's module and makes it the string module unless one is set.
/// The entry point calls it for every reason.
/// @param module   module handle passed by the system
/// @param attaches whether the process is loading the library
void KeepModule(HINSTANCE module, bool attaches);

} // namespace tessel
