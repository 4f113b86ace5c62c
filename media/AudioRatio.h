#pragma once

#include <cstdint>

namespace tessel {

/// Converts a length in one format to the length in another.
/// @param bytes  length in bytes
/// @param from   number of bytes that become @p to
/// @param to     see @p from
inline unsigned long InRatio(unsigned long bytes, unsigned long from, unsigned long to) {
    return static_cast<unsigned long>(std::uint64_t{bytes} * to / from);
}

} // namespace tessel
