#pragma once

#include "Protocol.h"
#include "TestImage.h"

#include <common/Mail.h>

#include <cstring>
#include <optional>

/// A line as it arrives.
struct Line {
    LineHead head;
    std::span<const std::uint8_t> pixels;
};

/// Reads a WORK_LINE; empty for any other message or sender.
inline std::optional<Line> ReadLine(const Mail& mail) {
    Line line{};
    if (mail.id != WORK_LINE || mail.from != kAcquisitionId) return std::nullopt;
    if (mail.data.size() != sizeof line.head + kImageWidth) return std::nullopt;
    std::memcpy(&line.head, mail.data.data(), sizeof line.head);
    line.pixels = mail.data.subspan(sizeof line.head);
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
