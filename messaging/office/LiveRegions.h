#pragma once

#include <cstddef>

namespace tessel {

/// Which views of the post office's region are mapped in this process: objects keep addresses in them.
/// Any thread may call these functions.

/// Notes a view.
/// @param base  where it starts
/// @param size  its bytes
/// @return true: noted; false: no memory
bool AddRegion(const void* base, std::size_t size);

/// Forgets a view that is about to be unmapped.
/// @param base  where it starts
void RemoveRegion(const void* base);

/// Whether an address lies in a mapped view.
/// @param address  any address, or null
bool IsInRegion(const void* address);

} // namespace tessel
