#pragma once

#include <tessel/notify.h>

#include <commctrl.h>

#include <vector>

/// A visible window that translates what its controls tell it and keeps the records.
class NotifyWindow {
public:
    struct Event {
        UINT message;
        unsigned int code;
        LPARAM lParam;
        NOTIFY record;
    };

    NotifyWindow() {
        WNDCLASSW windowClass{};
        windowClass.lpfnWndProc = &Procedure;
        windowClass.lpszClassName = L"NotifyWindow";
        RegisterClassW(&windowClass);
        m_window = CreateWindowExW(0, L"NotifyWindow", L"", WS_POPUP | WS_VISIBLE, 40, 40, 400, 300, nullptr, nullptr,
                                   nullptr, this);
        SetWindowLongPtrW(m_window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
        SetActiveWindow(m_window);
    }
    ~NotifyWindow() {
        SetWindowLongPtrW(m_window, GWLP_USERDATA, 0);
        DestroyWindow(m_window);
    }
    NotifyWindow(const NotifyWindow&) = delete;
    NotifyWindow& operator=(const NotifyWindow&) = delete;

    HWND Add(const wchar_t* className, DWORD style = 0, int id = 77, int x = 10, int y = 10) const {
        return CreateWindowExW(0, className, L"", WS_CHILD | WS_VISIBLE | style, x, y, 150, 100, m_window,
                               reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)), nullptr, nullptr);
    }
    HWND Get() const { return m_window; }

    std::vector<Event> events;
    FormatSysMsg formatter;

private:
    static LRESULT CALLBACK Procedure(HWND hWnd, UINT message, WPARAM wParam, LPARAM lParam) {
        auto* const self = reinterpret_cast<NotifyWindow*>(GetWindowLongPtrW(hWnd, GWLP_USERDATA));
        const bool scroll = message == WM_HSCROLL || message == WM_VSCROLL;
        if (self != nullptr && (message == WM_COMMAND || message == WM_NOTIFY || scroll)) {
            unsigned int code = scroll ? LOWORD(wParam) : HIWORD(wParam);
            if (message == WM_NOTIFY) code = reinterpret_cast<NMHDR*>(lParam)->code;
            self->events.push_back({message, code, lParam, *self->formatter.NaturalizeMsg(hWnd, message, wParam, lParam)});
        }
        return DefWindowProcW(hWnd, message, wParam, lParam);
    }

    HWND m_window;
};
