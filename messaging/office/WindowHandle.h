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

} // namespace tessel
