#pragma once

#include <tessel/foundation/platform.h>

#include <utility>

namespace tessel {

/// Whether a value is a handle that can be closed: neither null nor INVALID_HANDLE_VALUE.
/// @param handle  what a Windows call returned, or what a field holds
inline bool IsHandle(HANDLE handle) {
    return handle != nullptr && handle != INVALID_HANDLE_VALUE;
}

/// Owns a kernel handle and closes it (CloseHandle) at the end of its scope, so that every exit closes it.
///
/// For handles inside an operation. The exported classes copy their handles by value, as their contracts state.
class Handle {
public:
    /// Takes a handle over.
    /// @param handle  what a Windows call returned; null and INVALID_HANDLE_VALUE are kept as they are, never closed
    explicit Handle(HANDLE handle = nullptr) noexcept : m_handle(handle) {}
    Handle(Handle&& other) noexcept : m_handle(other.Release()) {}
    Handle& operator=(Handle&& other) noexcept {
        Reset(other.Release());
        return *this;
    }
    ~Handle() { Reset(); }

    /// Whether a handle is held.
    explicit operator bool() const { return IsHandle(m_handle); }

    /// The value as the Windows call returned it.
    HANDLE Get() const { return m_handle; }

    /// Gives the handle to the caller.
    /// @return the value, which this object no longer closes
    [[nodiscard]] HANDLE Release() { return std::exchange(m_handle, nullptr); }

    /// Closes the handle and takes another one over.
    /// @param handle  the new value; null for none
    void Reset(HANDLE handle = nullptr) {
        if (*this) (void)CloseHandle(m_handle); // open until now, so it cannot fail
        m_handle = handle;
    }

private:
    HANDLE m_handle;
};

} // namespace tessel
