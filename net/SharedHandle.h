#pragma once

#include <foundation/SharedOwners.h>
#include <tessel/platform.h>

namespace tessel {

/// Whether a field holds a handle that can be closed: neither none nor the mark of a failed or closed one.
inline bool IsHandle(HANDLE handle) {
    return handle != nullptr && handle != INVALID_HANDLE_VALUE;
}

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

/// Cancels an overlapped operation and waits until the system does not write to its record any more.
/// @param handle  the handle that it runs on, if any
/// @param record  its record; one of which nothing is under way is left alone
inline void CancelOverlapped(HANDLE handle, OVERLAPPED& record) {
    // GUARD-77: the system would write to the record when the object is no more.
    if (!IsHandle(handle) || !CancelIoEx(handle, &record)) return; // it ended, or has another object's record
    // The event is the caller's, who may have closed it or may take its signal: the record itself tells.
    while (!HasOverlappedIoCompleted(&record)) Sleep(1);
}

} // namespace tessel
