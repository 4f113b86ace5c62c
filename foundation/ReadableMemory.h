#pragma once

#include <tessel/foundation/platform.h>

#include <cstddef>
#include <cstring>

namespace tessel {

/// Whether memory that a message points to can be read: anyone can post a message.
/// @param address  the address; null cannot
/// @param size     bytes
/// @return true: all of it can be read
bool IsReadable(const void* address, std::size_t size);

/// Copies the record that a message points to, wherever it lies.
/// @param address  its address, as the message gives it
/// @param record   receives it
/// @return true: copied; false: it cannot be read
template <class Record> bool ReadRecord(LPARAM address, Record& record) {
    const auto* const source = reinterpret_cast<const void*>(address);
    if (!IsReadable(source, sizeof record)) return false;
    std::memcpy(&record, source, sizeof record);
    return true;
}

} // namespace tessel
