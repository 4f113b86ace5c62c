#pragma once

#include "Protocol.h"

#include <deque>

/// Saved images that are still to be announced. Announcing never waits for room: all blocks may hold messages that only
/// this thread releases.
class SavedImages {
public:
    void Add(std::uint32_t image) { m_images.push_back(image); }

    /// Announces as many as there is room for.
    /// @param send  sends an image's number; returns the result of CMailBox::Send()
    /// @return whether none is left
    template <class SendNumber> bool Announce(SendNumber send) {
        // Announced, or there is no receiver.
        while (!m_images.empty() && send(BytesOf(m_images.front())) != ERROR_BUSY) m_images.pop_front();
        return m_images.empty();
    }

private:
    std::deque<std::uint32_t> m_images;
};
