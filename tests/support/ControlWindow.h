#pragma once

#include <windows.h>

#include <commctrl.h>

/// An invisible window whose controls are found by identifier, as in a dialog.
class ControlWindow {
public:
    ControlWindow() { InitCommonControls(); }
    ~ControlWindow() { DestroyWindow(m_window); }
    ControlWindow(ControlWindow&&) = delete;

    HWND Handle() const { return m_window; }
    /// Adds a control, 20 pixels below the one with the previous identifier.
    HWND Add(const wchar_t* className, int id, DWORD style) const {
        return CreateWindowExW(0, className, L"", WS_CHILD | WS_VISIBLE | style, 0, 20 * id, 100, 20, m_window,
                               reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)), nullptr, nullptr);
    }

private:
    HWND m_window =
        CreateWindowExW(WS_EX_TOOLWINDOW, L"STATIC", L"", WS_POPUP, 0, 0, 200, 200, nullptr, nullptr, nullptr, nullptr);
};
