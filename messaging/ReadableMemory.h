#pragma once

#include <cstddef>

namespace tessel {

/// Whether memory that a message points to can be read: anyone can post a message.
/// @param address  the address; null cannot
/// @param size     bytes
/// @return true: all of it can be read
bool IsReadable(const void* address, std::size_t size);

} // namespace tessel
