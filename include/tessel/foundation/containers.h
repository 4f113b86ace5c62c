#pragma once

#include <algorithm>
#include <cstddef>
#include <limits>
#include <list>
#include <unordered_map>
#include <utility>
#include <vector>

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

/// A growable array over the standard one; elements are copied whole.
///
/// Threads: none is excluded; whoever shares an array locks it. A reference to an element is valid until the array
/// grows or shrinks.
/// @tparam Element   what is stored; it has a default value
/// @tparam Argument  how an element is passed to the array
template <class Element, class Argument = const Element&> class CArray {
public:
    /// Puts an element behind the others. Throws std::bad_alloc or std::length_error, and changes nothing then.
    /// @param element  what to add; may be one of the array's
    /// @return its index
    int Add(Argument element) {
        Element copy(element); // the array's own move when it grows
        MakeRoom(m_elements.size() + 1);
        m_elements.push_back(std::move(copy));
        return GetSize() - 1;
    }

    /// Stores an element, after the array has grown to it with elements of the default value where it is shorter.
    /// Throws std::bad_alloc or std::length_error, and changes nothing then.
    /// @param index    where; with a negative one, or the greatest, nothing is stored
    /// @param element  what; may be one of the array's
    void SetAtGrow(int index, Argument element) {
        if (index < 0 || index == std::numeric_limits<int>::max()) return;
        Element copy(element); // the array's own move when it grows
        if (index >= GetSize()) SetSize(index + 1);
        ElementAt(index) = std::move(copy);
    }

    /// Cuts the array, or lengthens it with elements of the default value. Throws std::bad_alloc or
    /// std::length_error, and changes no element then.
    /// @param count  elements that there are afterwards; below 1: none, and the memory is freed
    /// @param grow   elements that memory is had for at a time from now on; 0: left to the array; below 0: as before
    void SetSize(int count, int grow = -1) {
        if (grow >= 0) m_grow = static_cast<std::size_t>(grow);
        if (count < 1) return RemoveAll();
        MakeRoom(static_cast<std::size_t>(count));
        m_elements.resize(static_cast<std::size_t>(count));
    }

    /// How many elements there are.
    /// @return number of elements
    int GetSize() const { return static_cast<int>(m_elements.size()); }

    /// An element to be read or changed.
    /// @param index  0 to GetSize() - 1
    /// @return the element, still the array's
    Element& ElementAt(int index) { return m_elements[static_cast<std::size_t>(index)]; }

    /// An element to be read or changed.
    /// @param index  0 to GetSize() - 1
    /// @return the element, still the array's
    Element& operator[](int index) { return ElementAt(index); }

    /// An element to be read.
    /// @param index  0 to GetSize() - 1
    /// @return the element, still the array's
    const Element& operator[](int index) const { return m_elements[static_cast<std::size_t>(index)]; }

    /// Removes all elements and frees the memory.
    void RemoveAll() { std::vector<Element>().swap(m_elements); }

private:
    void MakeRoom(std::size_t count) {
        const std::size_t room = m_elements.capacity();
        if (m_grow > 0 && count > room) m_elements.reserve(std::max(count, room + m_grow));
    }

    std::vector<Element> m_elements;
    std::size_t m_grow = 0;
};
