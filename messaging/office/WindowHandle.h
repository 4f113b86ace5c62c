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

} // namespace tessel
