#pragma once

#include <tessel/foundation/platform.h>

#include <cstdint>

namespace tessel {

/// A window handle as stored in the shared region: 32 bits, which Windows guarantees to be sufficient.
/// @param hWnd  the window
/// @return its 32 bits
inline std::uint32_t ToShared(HWND hWnd) {
    return HandleToULong(hWnd);
}

/// The window handle stored in a field of the shared region. Handles are sign-extended.
/// @param field  the 32 bits
/// @return the window
inline HWND FromShared(std::uint32_t field) {
    return static_cast<HWND>(LongToHandle(static_cast<long>(field)));
}

/// Whether a window exists and belongs to a process.
/// @param hWnd       the window; may be null or destroyed
/// @param processId  the process
/// @return true: it exists and does
inline bool IsOfProcess(HWND hWnd, unsigned long processId) {
    DWORD owner = 0;
    (void)GetWindowThreadProcessId(hWnd, &owner); // 0 if the window is gone
    return owner == processId;
}

} // namespace tessel
