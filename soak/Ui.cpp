#include "Subject.h"

#include <windows.h>

#include <commctrl.h>
#include <tessel/brush.h>
#include <tessel/dialog.h>
#include <tessel/notify.h>

namespace {

enum CONTROL { EDIT = 1, LIST, TABLE };

/// A dialog that is made of windows.
class Dialog {
public:
    Dialog() {
        static const bool initialised = (InitCommonControls(), true);
        Require(initialised && m_window != nullptr, "there is a window");
        Add(L"EDIT", EDIT, 0);
        Add(L"LISTBOX", LIST, LBS_HASSTRINGS);
        Add(L"SysListView32", TABLE, LVS_REPORT);
    }
    ~Dialog() { DestroyWindow(m_window); }
    Dialog(const Dialog&) = delete;
    Dialog& operator=(const Dialog&) = delete;

    HWND Window() const { return m_window; }

private:
    void Add(const wchar_t* className, INT_PTR id, DWORD style) const {
        CreateWindowExW(0, className, L"", WS_CHILD | style, 0, 0, 80, 40, m_window, reinterpret_cast<HMENU>(id),
                        nullptr, nullptr);
    }

    HWND m_window = CreateWindowExW(0, L"STATIC", L"", WS_POPUP, 0, 0, 100, 50, nullptr, nullptr, nullptr, nullptr);
};

void UseDialog() {
    const Dialog dialog;
    DIALOG_INTERFACE controls(dialog.Window());
    DIALOG_INTERFACE copy(controls);
    wchar_t text[16] = L"";
    copy.Set(EDIT, 0, L"typed", 0);
    controls.Get(EDIT, text, 16);
    Require(std::wstring(text) == L"typed", "a text is read");
    controls.Reset(LIST, L"a,b,c");
    Require(SendDlgItemMessageW(dialog.Window(), LIST, LB_GETCOUNT, 0, 0) == 3, "a list is filled");
    Require(controls.LVAdd(TABLE, 0, L"row", 0, 0) == 0, "a row is added");
    controls.ColorStaticText(EDIT, 1, 2, 3);
    controls.FillCtrlRect(EDIT, RGB(1, 2, 3), nullptr);
}

void TranslateNotifications() {
    const Dialog dialog;
    const HWND edit = GetDlgItem(dialog.Window(), EDIT);
    FormatSysMsg translator;
    const NOTIFY* const record = translator.NaturalizeMsg(dialog.Window(), WM_COMMAND, MAKEWPARAM(EDIT, EN_CHANGE),
                                                          reinterpret_cast<LPARAM>(edit));
    Require(record != nullptr && record->Function == FN_CHANGE, "a notification is translated");
    translator.RegisterListBoxMove(GetDlgItem(dialog.Window(), LIST));
    translator.ReleaseListBoxMove(GetDlgItem(dialog.Window(), LIST));
}

void UseBrushes() {
    CBrush brushes;
    for (unsigned long grey = 0; grey < 20; ++grey) {
        const int index = brushes.Add(RGB(grey, grey, grey));
        Require(brushes.GetBrush(index) != nullptr, "there is a brush");
    }
    brushes.RemoveAll();
}

const Subject dialogs("dialogs", UseDialog);
const Subject notifications("notifications", TranslateNotifications);
const Subject brushes("brushes", UseBrushes);

} // namespace
