#pragma once

#include <cstddef>

namespace tessel {

/// The views of the post office's region that are mapped in this process. Objects store addresses in them.
/// Any thread may call these functions.

/// Adds a view.
/// @param base  its address
/// @param size  its size in bytes
/// @return true: added; false: out of memory
bool AddRegion(const void* base, std::size_t size);

/// Removes a view that is about to be unmapped.
/// @param base  its address
void RemoveRegion(const void* base);

/// Whether an address lies in a mapped view.
/// @param address  any address, or null
bool IsInRegion(const void* address);

} // namespace tessel
