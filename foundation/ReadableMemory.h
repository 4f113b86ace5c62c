#pragma once

#include <tessel/foundation/platform.h>

#include <cstddef>
#include <cstring>

namespace tessel {

/// Whether memory that a message points to is readable. Any process can post a message with any address.
/// @param address  the address; null is not readable
/// @param size     bytes
/// @return true: all of it is readable
bool IsReadable(const void* address, std::size_t size);

/// Copies the record that a message points to, at any alignment.
/// @param address  its address from the message
/// @param record   receives the record
/// @return true: copied; false: not readable
template <class Record> bool ReadRecord(LPARAM address, Record& record) {
    const auto* const source = reinterpret_cast<const void*>(address);
    if (!IsReadable(source, sizeof record)) return false;
    std::memcpy(&record, source, sizeof record);
    return true;
}

} // namespace tessel
