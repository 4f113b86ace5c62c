#pragma once

#include <algorithm>
#include <cstring>
#include <optional>

namespace tessel {

/// Bytes of the length word before a record's data on a stream.
constexpr unsigned int kRecordHead = 4;

/// Looks for a complete record at the start of a stream. Safe for any bytes.
/// @param stream  received bytes, starting with a record; little-endian
/// @param count   number of bytes
/// @return length of the record's data, which follows the length word; nothing while the record is incomplete
inline std::optional<unsigned int> CompleteRecord(const unsigned char* stream, unsigned int count) {
    if (count < kRecordHead) return std::nullopt;
    unsigned int length = 0;
    std::memcpy(&length, stream, kRecordHead);
    if (length > count - kRecordHead) return std::nullopt; // GUARD-80: length + 4 would wrap near 2^32
    return length;
}

/// Removes the record at the start of a stream; the rest moves there.
/// @param stream  bytes of the stream
/// @param count   number of bytes; decreases
/// @param length  length of the record's data
inline void DropRecord(unsigned char* stream, unsigned int& count, unsigned int length) {
    // GUARD-80: a handler may have removed the record already.
    const unsigned int dropped = std::min(count, length + kRecordHead);
    count -= dropped;
    std::memmove(stream, stream + dropped, count);
}

} // namespace tessel
