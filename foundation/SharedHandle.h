#pragma once

#include <foundation/Handle.h>
#include <foundation/SharedOwners.h>

namespace tessel {

/// Gives up a handle that copies may share; the last owner closes it (CloseHandle).
/// @param handle  the handle; null and INVALID_HANDLE_VALUE have no owners
/// @return true: closed, or still held by other owners; false: see GetLastError()
inline bool ReleaseHandle(HANDLE handle) {
    if (IsHandle(handle) && !RemoveOwner(handle)) return true;
    return CloseHandle(handle) != 0;
}

} // namespace tessel
