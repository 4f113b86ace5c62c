#pragma once

#include <tessel/foundation/platform.h>

namespace tessel {

/// The error of a Windows call; call it directly after that.
/// @param succeeded  result of the call
/// @return 0: it succeeded; else GetLastError()
inline DWORD LastErrorUnless(BOOL succeeded) {
    return succeeded ? ERROR_SUCCESS : GetLastError();
}

} // namespace tessel
