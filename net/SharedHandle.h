#pragma once

#include <foundation/Handle.h>
#include <foundation/SharedOwners.h>
#include <tessel/foundation/platform.h>

namespace tessel {

constexpr DWORD kPollMs = 1;

/// Gives up a handle; the last owner closes it.
/// @return true: closed, or still held by other owners; false: see GetLastError()
inline bool ReleaseHandle(HANDLE handle) {
    if (IsHandle(handle) && !RemoveOwner(handle)) return true;
    return CloseHandle(handle) != 0;
}

/// Cancels overlapped operations and waits until the system no longer writes to their record.
/// @param handle  the handle that they run on, if any
/// @param record  their record, for which several may have been started
inline void CancelOverlapped(HANDLE handle, OVERLAPPED& record) {
    // GUARD-77: the system would write to the record after the object is gone.
    while (IsHandle(handle) && CancelIoEx(handle, &record)) { // fails when nothing is pending for this record
        // The caller may have closed the event, or reset it: only the record shows the end.
        do {
            Sleep(kPollMs);
        } while (!HasOverlappedIoCompleted(&record));
    }
}

} // namespace tessel
