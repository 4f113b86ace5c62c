#pragma once

#include <tessel/foundation/platform.h>

namespace tessel {

/// Bytes that are really mapped from the start of a view on.
/// @param view  address that MapViewOfFile gave
/// @return the size, whole pages, at most 2^32 - 1; 0 when nothing is mapped there
unsigned long MappedBytes(const void* view);

} // namespace tessel
