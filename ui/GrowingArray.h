#pragma once

#include <algorithm>
#include <cstddef>
#include <memory>
#include <new>
#include <type_traits>

namespace tessel {

/// Capacity that an array gets when it has to hold more than it has room for: it grows by an eighth of what it
/// holds, by 4 at least and by 1024 at most.
/// @param needed    elements that it is to hold
/// @param capacity  elements that it has room for
/// @param size      elements that it holds
/// @return the new capacity, at least @p needed
constexpr std::size_t GrownCapacity(std::size_t needed, std::size_t capacity, std::size_t size) {
    return std::max(needed, capacity + std::clamp<std::size_t>(size / 8, 4, 1024));
}
static_assert(GrownCapacity(1, 0, 0) == 4);
static_assert(GrownCapacity(81, 80, 80) == 90);
static_assert(GrownCapacity(80001, 80000, 80000) == 81024);

/// A growing array of plain records; those that are not filled yet are all zero. It takes no lock.
template <class T> class GrowingArray {
    static_assert(std::is_trivially_copyable_v<T>);

public:
    /// Elements in the array.
    std::size_t Size() const { return m_size; }

    /// Adds an element at the end.
    /// @return true: added; false: no memory, nothing changed
    bool Append(const T& element) {
        if (m_size == m_capacity && !Grow(m_size + 1)) return false;
        m_elements[m_size] = element;
        ++m_size; // last: a reader takes no lock
        return true;
    }

    /// Empties the array and frees its memory.
    void Clear() {
        m_size = 0;
        m_capacity = 0;
        m_elements.reset();
    }

    const T* begin() const { return m_elements.get(); }
    const T* end() const { return m_elements.get() + m_size; }

private:
    bool Grow(std::size_t needed) {
        const std::size_t capacity = GrownCapacity(needed, m_capacity, m_size);
        std::unique_ptr<T[]> larger(new (std::nothrow) T[capacity]());
        if (larger == nullptr) return false;
        std::copy(begin(), end(), larger.get());
        m_elements = std::move(larger);
        m_capacity = capacity;
        return true;
    }

    std::unique_ptr<T[]> m_elements;
    std::size_t m_size = 0;
    std::size_t m_capacity = 0;
};

} // namespace tessel
