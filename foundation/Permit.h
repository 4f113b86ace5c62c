#pragma once

#include <tessel/foundation/semaphore.h>

namespace tessel {

/// Acquires a permit of a semaphore, or a lock, for a scope, unless that times out.
class Permit {
public:
    /// Waits for the permit.
    /// @param semaphore  semaphore or lock, which outlives this object
    /// @param timeoutMs  milliseconds; INFINITE waits indefinitely, and fails only when the semaphore is broken
    Permit(CSemaphore& semaphore, unsigned long timeoutMs)
        : m_semaphore(semaphore), m_held(semaphore.WaitOnSemaphore(timeoutMs) == 0) {}
    ~Permit() {
        if (m_held) (void)m_semaphore.ReleaseSemaphore(1); // held until now
    }
    Permit(const Permit&) = delete;
    Permit& operator=(const Permit&) = delete;

    /// Whether the permit is held.
    explicit operator bool() const { return m_held; }

private:
    CSemaphore& m_semaphore;
    bool m_held;
};

} // namespace tessel
