#pragma once

#include <foundation/SlimLock.h>

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <memory>
#include <new>
#include <span>
#include <type_traits>
#include <utility>

namespace tessel {

/// Computes the capacity of an array that has to grow: it grows by an eighth of its size, but at least by 4 and at most
/// by 1024 elements.
/// @param needed    elements that the array must hold
/// @param capacity  current capacity in elements
/// @param size      current size in elements
/// @return the new capacity, at least @p needed
constexpr std::size_t GrownCapacity(std::size_t needed, std::size_t capacity, std::size_t size) {
    return std::max(needed, capacity + std::clamp<std::size_t>(size / 8, 4, 1024));
}
static_assert(GrownCapacity(1, 0, 0) == 4);
static_assert(GrownCapacity(81, 80, 80) == 90);
static_assert(GrownCapacity(80001, 80000, 80000) == 81024);

/// A growing array of plain records; unused ones are all zero. Any thread may add and read, but no thread may read
/// while the array is being emptied.
template <class T> class GrowingArray {
    static_assert(std::is_trivially_copyable_v<T>);

    struct Block {
        std::unique_ptr<T[]> elements;
        std::size_t capacity;
        std::atomic<std::size_t> size;
        std::unique_ptr<Block> former; ///< outgrown blocks that may still be read
    };

public:
    /// The present elements, readable for the lifetime of this object. Takes no lock.
    class Reader {
    public:
        explicit Reader(const GrowingArray& array) : m_readers(array.m_readers) {
            ++m_readers; // before the block is read: from here on none is freed
            const Block* const block = array.m_shown;
            if (block != nullptr) m_elements = {block->elements.get(), block->size.load(std::memory_order_acquire)};
        }
        ~Reader() { --m_readers; }
        Reader(const Reader&) = delete;
        Reader& operator=(const Reader&) = delete;

        std::span<const T> Elements() const { return m_elements; }

    private:
        std::atomic<unsigned long>& m_readers;
        std::span<const T> m_elements;
    };

    /// Adds an element at the end.
    /// @return its index; -1: no memory, nothing changed
    int Append(const T& element) {
        const SlimLock lock(m_lock);
        const std::size_t size = m_newest == nullptr ? 0 : m_newest->size.load(std::memory_order_relaxed);
        if ((m_newest == nullptr || size == m_newest->capacity) && !Grow(size)) return -1;
        m_newest->elements[size] = element;
        m_newest->size.store(size + 1, std::memory_order_release); // last, because readers take no lock
        return static_cast<int>(size);
    }

    /// Empties the array and frees its memory.
    void Clear() {
        const SlimLock lock(m_lock);
        m_shown = nullptr;
        m_newest.reset();
    }

private:
    bool Grow(std::size_t size) {
        const std::size_t capacity = GrownCapacity(size + 1, size, size);
        std::unique_ptr<T[]> elements(new (std::nothrow) T[capacity]());
        std::unique_ptr<Block> larger(elements == nullptr ? nullptr : new (std::nothrow) Block{});
        if (larger == nullptr) return false;
        if (size != 0) std::copy_n(m_newest->elements.get(), size, elements.get());
        larger->elements = std::move(elements);
        larger->capacity = capacity;
        larger->size = size;
        larger->former = std::move(m_newest);
        m_newest = std::move(larger);
        m_shown = m_newest.get();
        // GUARD-221: a reader that started before the exchange may still read an outgrown block.
        if (m_readers == 0) m_newest->former.reset();
        return true;
    }

    std::unique_ptr<Block> m_newest;
    std::atomic<const Block*> m_shown = nullptr;
    mutable std::atomic<unsigned long> m_readers = 0;
    SRWLOCK m_lock = SRWLOCK_INIT;
};

} // namespace tessel
