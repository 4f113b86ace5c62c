#pragma once

#include <array>

/// System resources that a process holds.
enum USAGE : unsigned int {
    HANDLES,       ///< kernel handles
    THREADS,       ///< threads
    OBJECTS,       ///< windows, menus, brushes and other user-interface objects
    HEAP_BYTES,    ///< bytes allocated in its heaps
    ADDRESS_SPACE, ///< bytes of address space in use
    USAGE_COUNT
};
using Usage = std::array<long long, USAGE_COUNT>;

/// @return what this process holds now
Usage UsageNow();
