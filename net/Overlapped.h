#pragma once

#include <foundation/Handle.h>
#include <tessel/foundation/platform.h>

namespace tessel {

/// Cancels overlapped operations and waits until the system no longer writes to their record.
/// @param handle  the handle that they run on, if any
/// @param record  their record, for which several may have been started
inline void CancelOverlapped(HANDLE handle, OVERLAPPED& record) {
    constexpr DWORD kPollMs = 1;
    // GUARD-77: the system would write to the record after the object is gone.
    while (IsHandle(handle) && CancelIoEx(handle, &record)) { // fails when nothing is pending for this record
        // The caller may have closed the event, or reset it: only the record shows the end.
        do {
            Sleep(kPollMs);
        } while (!HasOverlappedIoCompleted(&record));
    }
}

} // namespace tessel
