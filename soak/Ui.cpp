#include "Subject.h"

#include "support/ControlWindow.h"

#include <tessel/ui/brush.h>
#include <tessel/ui/dialoginterface.h>
#include <tessel/ui/notify.h>

#include <string>

namespace {

enum CONTROL { EDIT = 1, LIST, TABLE };

/// A dialog with an edit control, a list box and a list view.
struct Dialog : ControlWindow {
    Dialog() {
        Add(L"EDIT", EDIT, 0);
        Add(L"LISTBOX", LIST, LBS_HASSTRINGS);
        Add(L"SysListView32", TABLE, LVS_REPORT);
    }
};

void UseDialog() {
    Dialog dialog;
    DIALOG_INTERFACE controls(dialog.Handle());
    DIALOG_INTERFACE copy(controls);
    wchar_t text[16] = L"";
    copy.Set(EDIT, 0, L"typed", 0);
    controls.Get(EDIT, text, 16);
    Require(std::wstring(text) == L"typed", "a text is read");
    controls.Reset(LIST, L"a,b,c");
    Require(SendDlgItemMessageW(dialog.Handle(), LIST, LB_GETCOUNT, 0, 0) == 3, "a list is filled");
    Require(controls.LVAdd(TABLE, 0, L"row", 0, 0) == 0, "a row is added");
    int width = 0;
    int height = 0;
    Require(controls.GetLBItemSize(LIST, 1, width, height) == 1, "an item is measured");
    controls.ColorStaticText(EDIT, 1, 2, 3);
    controls.FillCtrlRect(EDIT, RGB(1, 2, 3), nullptr);
}

/// Bitmaps are not among the resources of this program: the image lists stay empty.
void UseIconLists() {
    const unsigned int bitmaps[] = {1, 0};
    const HINSTANCE program = GetModuleHandleW(nullptr);
    Dialog dialog;
    DIALOG_INTERFACE first(dialog.Handle());
    Require(first.InitIconList(bitmaps, program, TABLE) == 1, "an icon list is made");
    Require(first.InitIconList(bitmaps, program, TABLE) == 1, "an icon list is replaced");
    static DIALOG_INTERFACE lasting(nullptr);
    lasting.SetTargetDialog(dialog.Handle());
    Require(lasting.InitIconList(bitmaps, program, TABLE) == 1, "a lasting object replaces its icon list");
    for (int left = 0; left < 2; ++left) { // the list view keeps the list of an object that is gone
        DIALOG_INTERFACE leaving(dialog.Handle());
        Require(leaving.InitIconList(bitmaps, program, TABLE) == 1, "an icon list is made");
        leaving = DIALOG_INTERFACE(nullptr);
    }
}

void TranslateNotifications() {
    Dialog dialog;
    const HWND edit = GetDlgItem(dialog.Handle(), EDIT);
    FormatSysMsg translator;
    const NOTIFY* const record = translator.NaturalizeMsg(dialog.Handle(), WM_COMMAND, MAKEWPARAM(EDIT, EN_CHANGE),
                                                          reinterpret_cast<LPARAM>(edit));
    Require(record != nullptr && record->Function == FN_CHANGE, "a notification is translated");
    translator.RegisterListBoxMove(GetDlgItem(dialog.Handle(), LIST));
    translator.ReleaseListBoxMove(GetDlgItem(dialog.Handle(), LIST));
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
const Subject iconLists("icon lists", UseIconLists);
const Subject notifications("notifications", TranslateNotifications);
const Subject brushes("brushes", UseBrushes);

} // namespace
