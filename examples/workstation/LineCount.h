#pragma once

#include "Protocol.h"
#include "TestImage.h"

#include <optional>

/// A line as it arrives.
struct Line {
    LineHead head;
    std::span<const std::uint8_t> pixels;
};

/// Reads a WORK_LINE; empty for any other message or sender.
inline std::optional<Line> ReadLine(const CMail& mail) {
    Line line{};
    if (mail.MsgId() != WORK_LINE || mail.Sender() != kAcquisitionId) return std::nullopt;
    if (mail.Data().size() != sizeof line.head + kImageWidth) return std::nullopt;
    (void)mail.Copy(&line.head, sizeof line.head); // all of it
    line.pixels = mail.Data().subspan(sizeof line.head);
    if (line.head.image == 0 || line.head.line >= kImageHeight) return std::nullopt;
    return line;
}

/// Counts lines that arrive, and those that should have arrived in between.
class LineCount {
public:
    /// A line has arrived.
    void Count(const LineHead& head) {
        const std::uint32_t number = (head.image - 1) * kImageHeight + head.line;
        lost += number - m_next;
        m_next = number + 1;
        ++received;
    }

    std::uint32_t received = 0;
    std::uint32_t lost = 0;

private:
    std::uint32_t m_next = 0;
};
