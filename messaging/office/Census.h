#pragma once

#include <messaging/office/Identity.h>

#include <array>
#include <cstddef>

namespace tessel {

/// Which processes have ended, asked once for each and before the lock is acquired, because asking takes long.
class Census {
public:
    /// Finds out about a process.
    /// @param process  its identity, or WithoutStartTime(); other bits are ignored
    void Ask(std::uint64_t process);

    /// Whether a process had ended when it was asked about. One that was not counts as running: the next sweep will
    /// ask.
    bool HasEnded(std::uint64_t process) const;

private:
    struct Answer {
        Identity process;
        bool ended;
    };
    const Answer* Find(Identity process) const;

    std::array<Answer, 256> m_answers{}; ///< more processes than can register
    std::size_t m_count = 0;
};

} // namespace tessel
