#pragma once

#include <tessel/foundation/platform.h>

namespace tessel {

/// Whether a window exists and belongs to a process.
/// @param hWnd       the window; may be null or destroyed
/// @param processId  the process
/// @return true: it exists and does
inline bool IsWindowOfProcess(HWND hWnd, DWORD processId) {
    DWORD owner = 0;
    return GetWindowThreadProcessId(hWnd, &owner) != 0 && owner == processId;
}

} // namespace tessel
