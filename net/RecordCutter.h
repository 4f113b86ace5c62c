#pragma once

#include <algorithm>
#include <cstring>
#include <optional>

namespace tessel {

/// Bytes of the length word in front of a record's data on a stream.
constexpr unsigned int kRecordHead = 4;

/// Looks for a whole record at the front of a stream. Any bytes are safe to be looked at.
/// @param stream  bytes of the stream, from the start of a record on; little-endian like this machine
/// @param count   how many there are
/// @return length of the record's data, which begins kRecordHead bytes in; nothing while the record is incomplete
inline std::optional<unsigned int> WholeRecord(const unsigned char* stream, unsigned int count) {
    if (count < kRecordHead) return std::nullopt;
    unsigned int length = 0;
    std::memcpy(&length, stream, kRecordHead);
    if (length > count - kRecordHead) return std::nullopt; // GUARD-80: length + 4 would wrap near 2^32
    return length;
}

/// Takes a record off the front of a stream; what follows moves there.
/// @param stream  bytes of the stream
/// @param count   how many there are; becomes less
/// @param length  length of the record's data
inline void DropRecord(unsigned char* stream, unsigned int& count, unsigned int length) {
    // GUARD-80: a handler may have taken the record off already.
    const unsigned int dropped = std::min(count, length + kRecordHead);
    count -= dropped;
    std::memmove(stream, stream + dropped, count);
}

} // namespace tessel
