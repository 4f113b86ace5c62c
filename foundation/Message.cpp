#include <tessel/foundation/message.h>

int GetAMessage(MSG* message, HWND hWnd, UINT first, UINT last) {
    return GetMessageW(message, hWnd, first, last);
}

LRESULT DispatchAMessage(MSG* message) {
    return DispatchMessageW(message);
}

int PostAThreadMessage(unsigned long thread, UINT message, WPARAM wParam, LPARAM lParam) {
    return PostThreadMessageW(thread, message, wParam, lParam);
}

LRESULT SendAMessage(HWND hWnd, UINT message, WPARAM wParam, LPARAM lParam) {
    return SendMessageW(hWnd, message, wParam, lParam);
}

int Dispatch_Pump() {
    MSG message{};
    while (GetMessageW(&message, nullptr, 0, 0) != 0)
        (void)DispatchMessageW(&message); // the result is meaningless here
    return 0;
}

UINT RegisterThisWindowMessage(const wchar_t* name) {
    return RegisterWindowMessageW(name);
}

void QuitManager() {
    PostQuitMessage(0);
}

void MsgBox(const wchar_t* text) {
    (void)MessageBoxW(nullptr, text, L"Varda Message", MB_OK); // OK is the only button
}

// ODD-27: passes the character as the scan code. The flags 1 (shift) and 2 (control) have no effect, because the event
// takes only the low byte of the virtual key.
int SimulatedKeypress(unsigned char character, int flags) {
    constexpr int kExtended = 8;
    constexpr int kReleased = 16;
    DWORD eventFlags = 0;
    if (flags & kExtended) eventFlags |= KEYEVENTF_EXTENDEDKEY;
    if (flags & kReleased) eventFlags |= KEYEVENTF_KEYUP;
    keybd_event(LOBYTE(VkKeyScanW(character)), character, eventFlags, 0);
    return 0;
}

UINT_PTR SetATimer(HWND hWnd, UINT_PTR id, UINT ms, TIMERPROC procedure) {
    return SetTimer(hWnd, id, ms, procedure);
}

int KillATimer(HWND hWnd, UINT_PTR id) {
    return KillTimer(hWnd, id);
}
