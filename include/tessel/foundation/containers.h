#pragma once

#include <tessel/foundation/platform.h>

#include <climits>
#include <cstddef>
#include <new>
#include <typeindex> // std::hash; much smaller than <functional>
#include <utility>

// The library passes these containers to programs, so their layout must not depend on how the C++ library was
// configured, as that of the standard containers does.

namespace tessel {

/// Memory of the containers, from the heap of the process, so that one module can free what another has allocated.
struct ContainerMemory {
    /// Allocates memory. Throws std::bad_alloc.
    /// @param size  bytes
    /// @return the memory, to be freed with operator delete
    static void* operator new(std::size_t size) {
        void* const memory = HeapAlloc(GetProcessHeap(), 0, size);
        if (memory == nullptr) throw std::bad_alloc();
        return memory;
    }
    /// Frees memory.
    /// @param memory  from operator new; may be null
    static void operator delete(void* memory) { HeapFree(GetProcessHeap(), 0, memory); }

    /// Allocates memory for several objects, which it does not construct. Throws std::bad_alloc.
    /// @param count  objects
    /// @return the memory, to be freed with operator delete
    template <class Object> static Object* Allocate(std::size_t count) {
        static_assert(alignof(Object) <= MEMORY_ALLOCATION_ALIGNMENT);
        if (count > static_cast<std::size_t>(-1) / sizeof(Object)) throw std::bad_alloc();
        return static_cast<Object*>(operator new(count * sizeof(Object)));
    }
};

} // namespace tessel

/// An ordered list. It owns its elements but not what they point to.
///
/// Threads: not synchronised; lock a list that threads share. An iterator stays valid until its element is removed.
/// @tparam Element  what is stored; copied
template <class Element> class CList {
    struct Link : tessel::ContainerMemory {
        Link* previous = this;
        Link* next = this;
    };
    struct Node : Link {
        explicit Node(const Element& value) : element(value) {}
        Element element;
    };
    static_assert(alignof(Element) <= MEMORY_ALLOCATION_ALIGNMENT);

public:
    /// Iterates over the elements, in both directions, without changing them.
    class const_iterator {
    public:
        /// @name As the standard library's algorithms expect of a bidirectional iterator
        ///@{
        using value_type = Element;             ///< what the iterator points to
        using difference_type = std::ptrdiff_t; ///< distance of two iterators

        /// Makes an iterator that points nowhere.
        const_iterator() = default;
        /// Returns the element.
        /// @return the element, still the list's
        const Element& operator*() const { return static_cast<const Node*>(m_link)->element; }
        /// Returns the element.
        /// @return the element, still the list's
        const Element* operator->() const { return &**this; }
        /// Moves to the next element.
        /// @return this iterator
        const_iterator& operator++() { return *this = const_iterator(m_link->next); }
        /// Moves to the next element.
        /// @return the iterator as it was
        const_iterator operator++(int) { return std::exchange(*this, const_iterator(m_link->next)); }
        /// Moves to the previous element.
        /// @return this iterator
        const_iterator& operator--() { return *this = const_iterator(m_link->previous); }
        /// Moves to the previous element.
        /// @return the iterator as it was
        const_iterator operator--(int) { return std::exchange(*this, const_iterator(m_link->previous)); }
        /// Compares two iterators.
        /// @param other  iterator of the same list
        /// @return true: both point to the same place
        bool operator==(const const_iterator& other) const = default;

    private:
        friend CList;
        explicit const_iterator(const Link* link) : m_link(link) {}

        const Link* m_link = nullptr;
    };

    /// Creates an empty list.
    CList() = default;

    /// Copies each element of another list. Throws std::bad_alloc.
    /// @param other  list to copy
    CList(const CList& other) : CList() {
        for (const Element& element : other) AddTail(element);
    }

    /// Moves the elements of another list.
    /// @param other  list that is empty afterwards
    CList(CList&& other) noexcept : CList() { Swap(other); }

    /// Replaces the elements by those of another list. Throws std::bad_alloc, and changes nothing then.
    /// @param other  list to copy
    /// @return this list
    CList& operator=(CList other) noexcept {
        Swap(other);
        return *this;
    }

    /// Removes all elements.
    ~CList() { RemoveAll(); }

    /// Inserts an element before the others. Throws std::bad_alloc, and changes nothing then.
    /// @param element  what to add
    void AddHead(const Element& element) { InsertBefore(m_ends.next, element); }

    /// Inserts an element after the others. Throws std::bad_alloc, and changes nothing then.
    /// @param element  what to add
    void AddTail(const Element& element) { InsertBefore(&m_ends, element); }

    /// Removes the elements that satisfy a condition; the others keep their order.
    /// @param condition  takes an element and returns true to remove it
    /// @return elements removed
    template <class Condition> std::size_t RemoveIf(Condition condition) {
        const std::size_t before = m_count;
        for (Link* link = m_ends.next; link != &m_ends;) {
            Node* const node = static_cast<Node*>(std::exchange(link, link->next));
            if (condition(std::as_const(node->element))) Remove(node);
        }
        return before - m_count;
    }

    /// Removes all elements.
    void RemoveAll() {
        while (m_count > 0) Remove(static_cast<Node*>(m_ends.next));
    }

    /// Counts the elements.
    /// @return number of elements
    std::size_t GetCount() const { return m_count; }

    /// Iterator at the first element.
    /// @return the iterator; end() if the list is empty
    const_iterator begin() const { return const_iterator(m_ends.next); }

    /// Iterator after the last element.
    /// @return the iterator
    const_iterator end() const { return const_iterator(&m_ends); }

private:
    void InsertBefore(Link* next, const Element& element) {
        Link* const node = new Node(element);
        node->next = next;
        node->previous = next->previous;
        node->previous->next = next->previous = node;
        ++m_count;
    }
    void Remove(Node* node) {
        node->previous->next = node->next;
        node->next->previous = node->previous;
        --m_count;
        delete node;
    }
    void Swap(CList& other) {
        std::swap(m_ends, other.m_ends);
        std::swap(m_count, other.m_count);
        Reconnect();
        other.Reconnect();
    }
    /// Connects the elements with the ends, which have moved.
    void Reconnect() {
        if (m_count == 0) m_ends.next = m_ends.previous = &m_ends;
        m_ends.next->previous = m_ends.previous->next = &m_ends;
    }

    Link m_ends; ///< next: the first element; previous: the last
    std::size_t m_count = 0;
};

/// A hash table from keys to values. It owns neither what a key nor what a value points to.
///
/// Threads: not synchronised; lock a map that threads share.
/// @tparam Key    key of a value; copied
/// @tparam Value  what is stored; copied
/// @tparam Hash   hash function object for the keys
template <class Key, class Value, class Hash = std::hash<Key>> class CMap {
public:
    /// Creates an empty map, which has no table yet.
    /// @param tableSize  least number of buckets, once there is a table
    explicit CMap(std::size_t tableSize) : m_tableSize(tableSize) {}

    /// Copies each entry of another map. Throws std::bad_alloc.
    /// @param other  map to copy
    CMap(const CMap& other) : CMap(other.m_tableSize) {
        other.ForEachEntry([this](Entry* entry) { SetAt(entry->key, entry->value); });
    }

    /// Moves the entries of another map.
    /// @param other  map that is empty afterwards
    CMap(CMap&& other) noexcept : CMap(other.m_tableSize) { Swap(other); }

    /// Replaces the entries by those of another map. Throws std::bad_alloc, and changes nothing then.
    /// @param other  map to copy
    /// @return this map
    CMap& operator=(CMap other) noexcept {
        Swap(other);
        return *this;
    }

    /// Removes all entries.
    ~CMap() {
        ForEachEntry([](Entry* entry) { delete entry; });
        tessel::ContainerMemory::operator delete(m_buckets);
    }

    /// Finds the value of a key.
    /// @param key    key to look up
    /// @param value  receives the value; unchanged if there is none
    /// @return true: found; false: not there
    bool Lookup(const Key& key, Value& value) const {
        if (m_bucketCount == 0) return false;
        const Entry* const entry = *Find(key);
        if (entry == nullptr) return false;
        value = entry->value;
        return true;
    }

    /// Stores a value under a key and replaces an earlier one. Throws std::bad_alloc, and changes nothing then.
    /// @param key    the key
    /// @param value  the value
    void SetAt(const Key& key, const Value& value) {
        if (m_count >= m_bucketCount) MakeTable(m_bucketCount == 0 ? m_tableSize : 2 * m_bucketCount);
        Entry** const link = Find(key);
        if (*link != nullptr) {
            (*link)->value = value;
            return;
        }
        *link = new Entry{{}, nullptr, key, value};
        ++m_count;
    }

    /// Removes a key; removing the last one also frees the table.
    /// @param key  key to remove
    /// @return true: removed; false: not there
    bool RemoveKey(const Key& key) {
        if (m_bucketCount == 0) return false;
        Entry** const link = Find(key);
        Entry* const entry = *link;
        if (entry == nullptr) return false;
        *link = entry->next;
        delete entry;
        if (--m_count == 0) CMap(m_tableSize).Swap(*this);
        return true;
    }

private:
    struct Entry : tessel::ContainerMemory {
        Entry* next;
        Key key;
        Value value;
    };

    /// Where the pointer to a key's entry is, or would be; there must be a table.
    Entry** Find(const Key& key) const {
        Entry** link = &m_buckets[Hash()(key) % m_bucketCount];
        while (*link != nullptr && !((*link)->key == key)) link = &(*link)->next;
        return link;
    }
    /// The action may delete or move the entry.
    template <class Action> void ForEachEntry(Action action) const {
        for (std::size_t bucket = 0; bucket < m_bucketCount; ++bucket) {
            for (Entry* entry = m_buckets[bucket]; entry != nullptr;) action(std::exchange(entry, entry->next));
        }
    }
    void MakeTable(std::size_t bucketCount) {
        if (bucketCount == 0) bucketCount = 1;
        CMap larger(m_tableSize);
        larger.m_buckets = tessel::ContainerMemory::Allocate<Entry*>(bucketCount);
        larger.m_bucketCount = bucketCount;
        for (std::size_t bucket = 0; bucket < bucketCount; ++bucket) larger.m_buckets[bucket] = nullptr;
        ForEachEntry([&larger](Entry* entry) {
            Entry*& bucket = larger.m_buckets[Hash()(entry->key) % larger.m_bucketCount];
            entry->next = std::exchange(bucket, entry);
        });
        larger.m_count = std::exchange(m_count, 0);
        m_bucketCount = 0; // its entries belong to the larger table
        Swap(larger);
    }
    void Swap(CMap& other) {
        std::swap(m_tableSize, other.m_tableSize);
        std::swap(m_buckets, other.m_buckets);
        std::swap(m_bucketCount, other.m_bucketCount);
        std::swap(m_count, other.m_count);
    }

    std::size_t m_tableSize;
    Entry** m_buckets = nullptr;
    std::size_t m_bucketCount = 0;
    std::size_t m_count = 0;
};

/// A growable array. Elements are copied whole.
///
/// Threads: not synchronised; lock an array that threads share. A reference to an element is valid until the array
/// grows or shrinks.
/// @tparam Element   what is stored; it has a default value
/// @tparam Argument  how an element is passed to the array
template <class Element, class Argument = const Element&> class CArray {
public:
    /// Creates an empty array.
    CArray() = default;

    /// Copies each element of another array. Throws std::bad_alloc.
    /// @param other  array to copy
    CArray(const CArray& other) : CArray() {
        MakeRoom(other.m_count);
        for (std::size_t i = 0; i < other.m_count; ++i) Append(std::as_const(other.m_elements[i]));
        m_grow = other.m_grow;
    }

    /// Moves the elements of another array.
    /// @param other  array that is empty afterwards
    CArray(CArray&& other) noexcept : CArray() { Swap(other); }

    /// Replaces the elements by those of another array. Throws std::bad_alloc, and changes nothing then.
    /// @param other  array to copy
    /// @return this array
    CArray& operator=(CArray other) noexcept {
        Swap(other);
        return *this;
    }

    /// Removes all elements.
    ~CArray() { RemoveAll(); }

    /// Appends an element. Throws std::bad_alloc, and changes nothing then.
    /// @param element  what to add; may be one of the array's
    /// @return its index
    int Add(Argument element) {
        Element copy(element); // the array's own move when it grows
        MakeRoom(m_count + 1);
        Append(std::move(copy));
        return GetSize() - 1;
    }

    /// Stores an element. A shorter array first grows with default values. Throws std::bad_alloc, and changes nothing
    /// then.
    /// @param index    position; if it is negative or INT_MAX, nothing is stored
    /// @param element  the element; may be one of the array's
    void SetAtGrow(int index, Argument element) {
        if (index < 0 || index == INT_MAX) return;
        Element copy(element); // the array's own move when it grows
        if (index >= GetSize()) SetSize(index + 1);
        ElementAt(index) = std::move(copy);
    }

    /// Shortens the array, or lengthens it with default values. Throws std::bad_alloc, and changes no element then.
    /// @param count  new number of elements; below 1: none, and the memory is freed
    /// @param grow   elements to allocate memory for at a time from now on; 0: chosen by the array; below 0: unchanged
    void SetSize(int count, int grow = -1) {
        if (grow >= 0) m_grow = static_cast<std::size_t>(grow);
        if (count < 1) return RemoveAll();
        const std::size_t wanted = static_cast<std::size_t>(count);
        const std::size_t before = m_count;
        MakeRoom(wanted);
        try {
            while (m_count < wanted) Append();
        } catch (...) {
            Cut(before);
            throw;
        }
        Cut(wanted);
    }

    /// Counts the elements.
    /// @return number of elements
    int GetSize() const { return static_cast<int>(m_count); }

    /// Returns an element for reading or writing.
    /// @param index  0 to GetSize() - 1
    /// @return the element, owned by the array
    Element& ElementAt(int index) { return m_elements[index]; }

    /// Returns an element for reading or writing.
    /// @param index  0 to GetSize() - 1
    /// @return the element, owned by the array
    Element& operator[](int index) { return m_elements[index]; }

    /// Returns an element for reading.
    /// @param index  0 to GetSize() - 1
    /// @return the element, owned by the array
    const Element& operator[](int index) const { return m_elements[index]; }

    /// Removes all elements and frees the memory.
    void RemoveAll() {
        Cut(0);
        tessel::ContainerMemory::operator delete(std::exchange(m_elements, nullptr));
        m_room = 0;
    }

private:
    void MakeRoom(std::size_t count) {
        if (count <= m_room) return;
        const std::size_t grown = m_room + (m_grow > 0 ? m_grow : m_room);
        CArray larger;
        larger.m_elements = tessel::ContainerMemory::Allocate<Element>(count > grown ? count : grown);
        larger.m_room = count > grown ? count : grown;
        for (std::size_t i = 0; i < m_count; ++i) larger.Append(std::move_if_noexcept(m_elements[i]));
        larger.m_grow = m_grow;
        Swap(larger);
    }
    /// Adds an element at the end, where there is room.
    template <class... Source> void Append(Source&&... source) {
        ::new (static_cast<void*>(m_elements + m_count)) Element(std::forward<Source>(source)...);
        ++m_count;
    }
    void Cut(std::size_t count) {
        while (m_count > count) m_elements[--m_count].~Element();
    }
    void Swap(CArray& other) {
        std::swap(m_elements, other.m_elements);
        std::swap(m_count, other.m_count);
        std::swap(m_room, other.m_room);
        std::swap(m_grow, other.m_grow);
    }

    Element* m_elements = nullptr;
    std::size_t m_count = 0;
    std::size_t m_room = 0;
    std::size_t m_grow = 0; ///< elements to allocate memory for at a time; 0: as many as there are
};
