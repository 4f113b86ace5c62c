#pragma once

#include <cstddef>
#include <unordered_map>

/// A hash table from keys to values, over the standard one; it owns neither what a key nor what a value points to.
///
/// Threads: none is excluded; whoever shares a map locks it.
/// @tparam Key    what values are found by; copied
/// @tparam Value  what is stored; copied
/// @tparam Hash   function object that spreads keys over the buckets
template <class Key, class Value, class Hash = std::hash<Key>> class CMap {
public:
    /// Makes an empty map, which has no table yet.
    /// @param tableSize  buckets that the table has at least, once there is one
    explicit CMap(std::size_t tableSize) : m_tableSize(tableSize) {}

    /// Finds the value of a key.
    /// @param key    what to look for
    /// @param value  receives the value; unchanged when there is none
    /// @return true: found; false: not there
    bool Lookup(const Key& key, Value& value) const {
        const auto found = m_entries.find(key);
        if (found == m_entries.end()) return false;
        value = found->second;
        return true;
    }

    /// Stores a value under a key, in place of an earlier one. Throws std::bad_alloc, and changes nothing then.
    /// @param key    where
    /// @param value  what
    void SetAt(const Key& key, const Value& value) {
        if (m_entries.empty()) m_entries.rehash(m_tableSize);
        m_entries.insert_or_assign(key, value);
    }

    /// Removes a key; with the last one the table is freed too.
    /// @param key  what to remove
    /// @return true: removed; false: not there
    bool RemoveKey(const Key& key) {
        if (m_entries.erase(key) == 0) return false;
        if (m_entries.empty()) Entries().swap(m_entries);
        return true;
    }

private:
    using Entries = std::unordered_map<Key, Value, Hash>;

    std::size_t m_tableSize;
    Entries m_entries;
};
