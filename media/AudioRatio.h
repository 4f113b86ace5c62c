#pragma once

#include <cstdint>

namespace tessel {

/// Bytes of one format as bytes of another.
/// @param bytes  bytes
/// @param from   bytes that become @p to
/// @param to     see @p from
inline unsigned long InRatio(unsigned long bytes, unsigned long from, unsigned long to) {
    return static_cast<unsigned long>(std::uint64_t{bytes} * to / from);
}

} // namespace tessel
