#pragma once

namespace tessel {

/// Result of a wait that ended without its object being signalled: a time-out, or an abandoned mutex.
inline constexpr unsigned long kNotSignalled = 0xFFFFFFFF;

} // namespace tessel
