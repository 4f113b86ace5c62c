#pragma once

#include <tessel/foundation/platform.h>

/// Controls the screen pointer.
class TESSEL_API CCURSOR {
public:
    /// Moves the pointer (SetCursorPos). Any thread of the interactive desktop may call it.
    /// @param x  pixels from the left edge of the primary screen
    /// @param y  pixels from its top edge
    /// @return not 0: moved; 0: failure (GetLastError())
    static int SetCursorPos(int x, int y);
};
