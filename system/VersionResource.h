#pragma once

#include <cstddef>

namespace tessel {

/// How much of a version resource the system can read without leaving it.
enum class VersionResource {
    DAMAGED,    ///< nothing
    FIXED_PART, ///< the value of the root; a block below it leaves its parent
    COMPLETE    ///< every value
};

/// Checks the lengths of a version resource, as GetFileVersionInfoW fills it in, down to the texts.
/// @param info  aligned to 4 bytes
/// @param size  bytes in @p info
/// @return how much can be read
VersionResource CheckVersionResource(const unsigned char* info, std::size_t size);

} // namespace tessel
