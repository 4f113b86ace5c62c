#pragma once

#include <windows.h>

/// A message-only window of the calling thread. Tests read the messages posted to it.
class MessageWindow {
public:
    MessageWindow()
        : m_window(CreateWindowExW(0, L"STATIC", L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr)) {}
    ~MessageWindow() { Destroy(); }
    MessageWindow(MessageWindow&&) = delete;

    HWND Get() const { return m_window; }
    void Destroy() { DestroyWindow(m_window); }

    /// Removes the next message of that number. @return its lParam; 0 if there is none
    LPARAM Take(UINT message) const {
        MSG taken;
        return PeekMessageW(&taken, m_window, message, message, PM_REMOVE) ? taken.lParam : 0;
    }
    /// Waits for the next message of that number. @return its lParam
    LPARAM Wait(UINT message) const {
        MSG taken{};
        GetMessageW(&taken, m_window, message, message);
        return taken.lParam;
    }

private:
    HWND m_window;
};
