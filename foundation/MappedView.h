#pragma once

#include <tessel/foundation/platform.h>

namespace tessel {

/// Number of bytes that are actually mapped from the start of a view.
/// @param view  result of MapViewOfFile
/// @return the size, whole pages, at most 2^32 - 1; 0 if nothing is mapped there
unsigned long MappedBytes(const void* view);

} // namespace tessel
