#pragma once

#include <foundation/Handle.h>
#include <foundation/SharedOwners.h>
#include <tessel/foundation/platform.h>

namespace tessel {

/// Makes a copy one more owner of a handle.
/// @return the handle; INVALID_HANDLE_VALUE when there is no memory to note the owner
inline HANDLE ShareHandle(HANDLE handle) {
    return !IsHandle(handle) || AddOwner(handle) ? handle : INVALID_HANDLE_VALUE;
}

/// Gives a handle up; the last owner closes it.
/// @return true: closed, or left to the other owners; false: the system refused (GetLastError())
inline bool ReleaseHandle(HANDLE handle) {
    if (IsHandle(handle) && !RemoveOwner(handle)) return true;
    return CloseHandle(handle) != 0;
}

/// Cancels overlapped operations and waits until the system does not write to their record any more.
/// @param handle  the handle that they run on, if any
/// @param record  their record: several may have been started on it; one of which nothing is under way is left alone
inline void CancelOverlapped(HANDLE handle, OVERLAPPED& record) {
    // GUARD-77: the system would write to the record when the object is no more.
    while (IsHandle(handle) && CancelIoEx(handle, &record)) { // else it ended, or has another object's record
        // The event is the caller's, who may have closed it or may take its signal: the record itself tells.
        do {
            Sleep(1);
        } while (!HasOverlappedIoCompleted(&record));
    }
}

} // namespace tessel
