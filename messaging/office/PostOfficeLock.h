#pragma once

#include <tessel/messaging/postoffice.h>

namespace tessel {

/// Holds the post office's lock for a scope. Waits for it without a time-out.
class PostOfficeLock {
public:
    /// Acquires the lock.
    /// @param postOffice  the post office, which outlives this object
    explicit PostOfficeLock(CPostOffice& postOffice)
        : m_postOffice(postOffice), m_held(postOffice.LockThreadSafe(INFINITE) == 0) {}
    ~PostOfficeLock() {
        if (m_held) m_postOffice.UnlockThreadSafe();
    }
    PostOfficeLock(const PostOfficeLock&) = delete;
    PostOfficeLock& operator=(const PostOfficeLock&) = delete;

    /// Whether the lock is held. GUARD-20: it is not if the semaphore is missing or broken.
    explicit operator bool() const { return m_held; }

private:
    CPostOffice& m_postOffice;
    bool m_held;
};

} // namespace tessel
