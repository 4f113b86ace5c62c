#pragma once

#include <tessel/foundation/platform.h>

#include <cstdint>

namespace tessel {

/// A window handle as the shared region holds it: 32 bits, which Windows guarantees to be enough.
/// @param hWnd  the window
/// @return its 32 bits
inline std::uint32_t ToShared(HWND hWnd) {
    return HandleToULong(hWnd);
}

/// The window that a field of the shared region names; handles extend by their sign.
/// @param field  the 32 bits
/// @return the window
inline HWND FromShared(std::uint32_t field) {
    return static_cast<HWND>(LongToHandle(static_cast<long>(field)));
}

/// Whether a window is there and belongs to a process.
/// @param hWnd       the window; may be null or gone
/// @param processId  the process
/// @return true: it does
inline bool IsOfProcess(HWND hWnd, unsigned long processId) {
    DWORD owner = 0;
    (void)GetWindowThreadProcessId(hWnd, &owner); // 0 when the window is gone
    return owner == processId;
}

} // namespace tessel
