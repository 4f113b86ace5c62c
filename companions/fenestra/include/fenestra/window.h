#pragma once

#include <fenestra/export.h>

/// Wraps a window handle.
///
/// The handle is copied by value and the window is not destroyed with the object; derived classes say what else they
/// do. Threads: as for the window itself.
class FENESTRA_API CWnd {
public:
    /// Wraps a window.
    /// @param window  the window, which stays with its owner; null for none
    explicit CWnd(HWND window = nullptr) : m_hWnd(window) {}

    /// Refers to the same window.
    CWnd(const CWnd&) = default;

    /// Refers to the same window.
    /// @return this object
    CWnd& operator=(const CWnd&) = default;

    /// Leaves the window as it is.
    virtual ~CWnd() = default;

    /// The window.
    /// @return the handle; null for none
    HWND GetHandle() const { return m_hWnd; }

protected:
    /// The window; null for none.
    HWND m_hWnd;
};
