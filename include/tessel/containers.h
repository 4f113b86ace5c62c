#pragma once

#include <cstddef>
#include <list>
#include <unordered_map>

/// An ordered list over the standard one; it owns its elements but not what they point to.
///
/// Threads: none is excluded; whoever shares a list locks it. An iterator stays valid until its element goes.
/// @tparam Element  what is stored; copied
template <class Element> class CList {
public:
    /// Walks through the elements without changing them.
    using const_iterator = typename std::list<Element>::const_iterator;

    /// Puts an element in front of the others. Throws std::bad_alloc, and changes nothing then.
    /// @param element  what to add
    void AddHead(const Element& element) { m_elements.push_front(element); }

    /// Puts an element behind the others. Throws std::bad_alloc, and changes nothing then.
    /// @param element  what to add
    void AddTail(const Element& element) { m_elements.push_back(element); }

    /// Removes the elements that a condition holds for; the others keep their order.
    /// @param condition  is given an element and tells whether it goes
    /// @return elements removed
    template <class Condition> std::size_t RemoveIf(Condition condition) { return m_elements.remove_if(condition); }

    /// Removes all elements.
    void RemoveAll() { m_elements.clear(); }

    /// How many elements there are.
    /// @return number of elements
    std::size_t GetCount() const { return m_elements.size(); }

    /// The first element, for walking through the list in order.
    /// @return iterator; end() when the list is empty
    const_iterator begin() const { return m_elements.begin(); }

    /// Where a walk through the list ends.
    /// @return iterator behind the last element
    const_iterator end() const { return m_elements.end(); }

private:
    std::list<Element> m_elements;
};

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
