#pragma once

#include <tessel/foundation/platform.h>

#include <memory>
#include <type_traits>

namespace tessel {

struct GdiObjectDeleter {
    void operator()(HGDIOBJ object) const { (void)DeleteObject(object); } // nothing can be done about a failure
};

/// Owns a GDI object, such as a bitmap or a brush.
template <class Handle> using GdiObject = std::unique_ptr<std::remove_pointer_t<Handle>, GdiObjectDeleter>;

struct DeviceContextDeleter {
    void operator()(HDC context) const { (void)DeleteDC(context); } // nothing can be done about a failure
};

/// Owns a device context that was created.
using DeviceContext = std::unique_ptr<std::remove_pointer_t<HDC>, DeviceContextDeleter>;

/// The device context of a window, for a scope.
class WindowContext {
public:
    explicit WindowContext(HWND hWnd) : m_hWnd(hWnd), m_context(GetDC(hWnd)) {}
    ~WindowContext() {
        if (m_context != nullptr) (void)ReleaseDC(m_hWnd, m_context); // fails only when the window is gone
    }
    WindowContext(const WindowContext&) = delete;
    WindowContext& operator=(const WindowContext&) = delete;

    /// @return null: the window has none
    HDC Get() const { return m_context; }

private:
    HWND m_hWnd;
    HDC m_context;
};

/// Selects an object into a device context for a scope.
class SelectedObject {
public:
    SelectedObject(HDC context, HGDIOBJ object) : m_context(context), m_former(SelectObject(context, object)) {}
    ~SelectedObject() { (void)SelectObject(m_context, m_former); } // it was selected before, so it can be again
    SelectedObject(const SelectedObject&) = delete;
    SelectedObject& operator=(const SelectedObject&) = delete;

    explicit operator bool() const { return m_former != nullptr; }

private:
    HDC m_context;
    HGDIOBJ m_former;
};

} // namespace tessel
