#pragma once

#include <atomic>

namespace tessel {

/// Reads a field that other threads, or processes in the shared region, may be writing.
/// @param field  the field
/// @return its value; what was written before this value is visible to later reads
template <class Field> Field LoadShared(const Field& field) {
    static_assert(std::atomic_ref<Field>::is_always_lock_free); // else it would not hold between processes
    return std::atomic_ref<Field>(const_cast<Field&>(field)).load(std::memory_order_acquire);
}

/// Writes a field that others may be reading or writing. Earlier writes become visible first.
/// @param field  the field
/// @param value  its new value
template <class Field> void StoreShared(Field& field, Field value) {
    std::atomic_ref<Field>(field).store(value, std::memory_order_release);
}

} // namespace tessel
