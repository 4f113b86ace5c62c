#include <tessel/tessel.h>

#include <cstdio>

int main() {
    const HWND dialog = CreateWindowExW(0, L"STATIC", L"", WS_POPUP, 0, 0, 100, 50, nullptr, nullptr, nullptr, nullptr);
    const HWND edit =
        CreateWindowExW(0, L"EDIT", L"", WS_CHILD, 0, 0, 80, 20, dialog, reinterpret_cast<HMENU>(42), nullptr, nullptr);
    DIALOG_INTERFACE controls(dialog);
    controls.Set(42, 0, L"typed", 0);

    FormatSysMsg translator;
    const WPARAM changed = MAKEWPARAM(42, EN_CHANGE);
    const NOTIFY* const record = translator.NaturalizeMsg(dialog, WM_COMMAND, changed, reinterpret_cast<LPARAM>(edit));
    if (record == nullptr || record->Function != FN_CHANGE) return 1;
    wchar_t text[16] = L"";
    controls.Get(record->CtrlId, text, 16);
    std::printf("control %d changed: %ls\n", static_cast<int>(record->CtrlId), text);
    return 0;
}
