#pragma once

#include <fenestra/export.h>

/// A window by its handle.
///
/// The handle is copied by value and the window is not destroyed with the object; the classes derived from this one
/// say what else they do. Threads: as for the window itself.
class FENESTRA_API CWnd {
public:
    /// Stands for a window.
    /// @param window  the window, which stays its owner's; null for none
    explicit CWnd(HWND window = nullptr) : m_hWnd(window) {}

    /// Stands for the same window.
    CWnd(const CWnd&) = default;

    /// Stands for the same window.
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
