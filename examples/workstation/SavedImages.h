#pragma once

#include "Protocol.h"

#include <deque>

/// The images that are saved, until somebody has been told. Telling never waits for room: all blocks may hold messages
/// that only the one who tells gives back.
class SavedImages {
public:
    void Add(std::uint32_t image) { m_untold.push_back(image); }

    /// Tells as many as there is room for.
    /// @param send  sends an image's number; gives what CMailBox::Send() says
    /// @return whether none is left
    template <class SendNumber> bool Tell(SendNumber send) {
        // Told, or nobody is there to be told.
        while (!m_untold.empty() && send(BytesOf(m_untold.front())) != ERROR_BUSY) m_untold.pop_front();
        return m_untold.empty();
    }

private:
    std::deque<std::uint32_t> m_untold;
};
