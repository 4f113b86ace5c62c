#pragma once

#include <array>

/// What a process holds of the system's.
enum USAGE : unsigned int {
    HANDLES,       ///< handles of the kernel
    THREADS,       ///< its threads
    OBJECTS,       ///< windows, menus, brushes and other objects of the user interface
    HEAP_BYTES,    ///< bytes that are allocated in its heaps
    ADDRESS_SPACE, ///< bytes of its addresses that are in use
    USAGE_COUNT
};
using Usage = std::array<long long, USAGE_COUNT>;

/// @return what this process holds now
Usage UsageNow();
