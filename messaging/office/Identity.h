#pragma once

#include <foundation/Handle.h>

#include <cstdint>

namespace tessel {

/// A process or a thread as records in shared memory name it: its id and a stamp of the time when it started, by which
/// it differs from an earlier one with the same id. The bits between them belong to the record.
using Identity = std::uint64_t;

/// The bits that a record may use for its own state.
inline constexpr Identity kRecordBits = 0x00000FFF00000000;

/// The identity in a record, without the record's own bits.
/// @param record  a value of shared memory
constexpr Identity IdentityIn(std::uint64_t record) {
    return record & ~kRecordBits;
}

/// The process or thread id in a record.
/// @param record  a value of shared memory
constexpr std::uint32_t IdIn(std::uint64_t record) {
    return static_cast<std::uint32_t>(record);
}

/// The identity of a process of which only the id is known; it matches any process with that id.
/// @param processId  a Win32 process id
constexpr Identity WithoutStartTime(unsigned long processId) {
    return processId;
}

/// The calling thread. The first call of a thread asks the system, which the thread's later calls do not.
Identity ThisThread();

/// This process.
Identity ThisProcess();

/// What the system says about a process or thread of a record.
struct Watched {
    Handle handle; ///< signalled when it ends; null if it has ended or may not be opened
    bool ended;    ///< whether it has ended
};

/// Opens a thread of any process to wait for its end.
/// @param thread  its identity; other bits are ignored
Watched WatchThread(std::uint64_t thread);

/// Opens a process to wait for its end. One that may not be opened counts as running.
/// @param process  its identity, or WithoutStartTime(); other bits are ignored
Watched WatchProcess(std::uint64_t process);

/// Whether a process has ended, also if its id belongs to a later process now.
/// @param process  its identity, or WithoutStartTime(); other bits are ignored
inline bool HasProcessEnded(std::uint64_t process) {
    return WatchProcess(process).ended;
}

} // namespace tessel
