#pragma once

#include <tessel/foundation/platform.h>

namespace tessel {

/// Holds a slim lock for a scope. Unlike a std::mutex it needs no construction and cannot throw.
class SlimLock {
public:
    /// Takes the lock.
    /// @param lock  the lock, which outlives this object
    explicit SlimLock(SRWLOCK& lock) : m_lock(lock) { AcquireSRWLockExclusive(&m_lock); }
    ~SlimLock() { ReleaseSRWLockExclusive(&m_lock); }
    SlimLock(const SlimLock&) = delete;
    SlimLock& operator=(const SlimLock&) = delete;

private:
    SRWLOCK& m_lock;
};

} // namespace tessel
