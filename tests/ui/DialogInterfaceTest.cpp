#include "dialog.h"

#include "support/ImportPatch.h"
#include "support/Reports.h"

#include <gtest/gtest.h>
#include <tessel/ui/dialoginterface.h>

#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace {

constexpr LPARAM kData = static_cast<LPARAM>(0x1234567889ABCDEFULL); // keeps its upper half on 64 bits

/// The test program, with the classes of all controls registered.
HINSTANCE Module() {
    InitCommonControls();
    LoadLibraryW(L"Riched20.dll");
    return GetModuleHandleW(nullptr);
}

DIALOG_INTERFACE* used = nullptr;

/// Uses the dialog's object whenever a control sends a notification.
INT_PTR CALLBACK Procedure(HWND window, UINT message, WPARAM, LPARAM lParam) {
    if (message == WM_INITDIALOG) SetWindowLongPtrW(window, GWLP_USERDATA, lParam);
    if (used != nullptr && (message == WM_COMMAND || message == WM_NOTIFY)) used->Get(CTL_STATIC, nullptr, 0);
    return FALSE;
}

struct Dialog : testing::Test {
    Dialog() { used = &dialog; }
    ~Dialog() override { used = nullptr; }
    HWND Item(int id) { return GetDlgItem(dialog.GetHandle(), id); }
    LRESULT Ask(int id, UINT message, WPARAM wParam = 0, LPARAM lParam = 0) {
        return SendDlgItemMessageW(dialog.GetHandle(), id, message, wParam, lParam);
    }
    std::wstring Text(int id) {
        wchar_t text[100];
        return {text, static_cast<std::size_t>(GetDlgItemTextW(dialog.GetHandle(), id, text, 100))};
    }
    /// The result of Get, as text, index and data.
    std::tuple<std::wstring, int, LPARAM> Get(int id, int index, int room = 20) {
        wchar_t text[20] = L"untouched";
        LPARAM data = 1;
        EXPECT_EQ(dialog.Get(id, index, text, room, data), 0);
        return {text, index, data};
    }
    /// The result of Get after an operation that returns success.
    std::tuple<std::wstring, int, LPARAM> After(int result, int id, int index) {
        EXPECT_EQ(result, 0);
        return Get(id, index);
    }
    using Got = std::tuple<std::wstring, int, LPARAM>;

    DIALOG_INTERFACE dialog{Module(), DLG_ALL, nullptr, Procedure, 42};
    Reports reports;
};

struct OfEachKind : Dialog, testing::WithParamInterface<int> {};
using TextControls = OfEachKind;
using Lists = OfEachKind;
using Gauges = OfEachKind;
using Pair = std::pair<long, long>;

} // namespace

TEST_P(TextControls, TakeTheirTextFromSetAddAndReset) {
    const int id = GetParam();
    const int noIndex = id == CTL_CHECK ? 0 : 5;
    SetWindowLongPtrW(Item(id), GWLP_USERDATA, static_cast<LONG_PTR>(kData));
    EXPECT_EQ(After(dialog.Set(id, 0, L"set", 7), id, noIndex), Got(L"set", noIndex, kData));
    EXPECT_EQ(Get(id, noIndex, 3), Got(L"se", noIndex, kData));
    EXPECT_EQ(Get(id, noIndex, 0), Got(L"untouched", noIndex, kData));
    EXPECT_EQ(After(dialog.Set(id, 5, nullptr, 7), id, 5), Got(L"set", id == CTL_CHECK ? 1 : 5, kData));
    EXPECT_EQ(dialog.Add(id, 3, L"added", 7), 3);
    EXPECT_EQ(Text(id), L"added");
    EXPECT_EQ(dialog.Reset(id, L"a,b"), 0);
    EXPECT_EQ(Text(id), L"a,b");
    int value = 0;
    EXPECT_FALSE(dialog.Set(id, -2147483647 - 1) || dialog.Get(id, value));
    EXPECT_EQ(value, -2147483647 - 1);
}

// A tree view represents the unknown kinds.
INSTANTIATE_TEST_SUITE_P(Kinds, TextControls, testing::Values(CTL_STATIC, CTL_EDIT, CTL_RICH, CTL_TREE, CTL_CHECK));

TEST_P(Lists, Odd47AddInsertAndDeleteItemsAndAppendAtIndex0) {
    const int id = GetParam();
    EXPECT_EQ(dialog.Reset(id, L",a,b,,c,"), 0);
    EXPECT_EQ(dialog.Add(id, 0, L"last", kData), 3);
    EXPECT_EQ(dialog.Add(id, 1, L"second", 5), 1);
    EXPECT_EQ(dialog.Add(id, 99, L"nowhere", 5), -1);
    EXPECT_EQ(dialog.Add(id, -1, nullptr, 6), 5);
    EXPECT_EQ(Get(id, 1, 4), Got(L"sec", 1, 5));
    EXPECT_EQ(Get(id, 4), Got(L"last", 4, kData));
    EXPECT_EQ(Get(id, 5), Got(L"", 5, 6));
    EXPECT_EQ(Get(id, 7), Got(L"", id == CTL_LIST ? -1 : 7, -1));
    EXPECT_EQ(After(dialog.Delete(id, 1), id, 1), Got(L"b", 1, 0));
    EXPECT_EQ(After(dialog.Set(id, 3, L"not looked at", 9), id, -1), Got(L"last", 3, 9));
}

INSTANTIATE_TEST_SUITE_P(Kinds, Lists, testing::Values(CTL_LIST, CTL_COMBO));

TEST_F(Dialog, Odd46AListBoxWithoutASelectionReturnsItsTextAndItsCount) {
    EXPECT_EQ(After(dialog.Reset(CTL_LIST, L"apple,banana"), CTL_LIST, -1), Got(L"list", -1, 2));
    EXPECT_EQ(After(dialog.Set(CTL_LIST, -1, L"ban", 7), CTL_LIST, -5), Got(L"banana", 1, 0));
    EXPECT_EQ(After(dialog.Set(CTL_LIST, -1, L"cherry", 7), CTL_LIST, -1), Got(L"list", -1, 2));
    int width = 0, wider = 0, height = 0;
    EXPECT_EQ(dialog.GetLBItemSize(CTL_LIST, 0, width, height), 1);
    EXPECT_EQ(dialog.GetLBItemSize(CTL_LIST, 1, wider, height), 1);
    EXPECT_GT(wider, width);
    EXPECT_EQ(dialog.GetLBItemSize(CTL_LIST, 9, width, height), 0);
    EXPECT_EQ(Pair(width, height), Pair(0, 0));
}

TEST_F(Dialog, CountsItemsAndCharacters) {
    for (const auto& [id, expected] : {std::pair(CTL_LIST, 3), {CTL_COMBO, 3}, {CTL_EDIT, 4}, {CTL_LISTVIEW, 1}}) {
        dialog.Reset(id, L"a,b");
        dialog.Add(id, 0, L"text", 0);
        int count = 0;
        EXPECT_EQ(dialog.GetCount(id, count), 0) << id;
        EXPECT_EQ(count, expected) << id;
    }
}

TEST_F(Dialog, AComboBoxHasItsOwnText) {
    dialog.Reset(CTL_COMBO, L"apple,banana");
    EXPECT_EQ(After(dialog.Set(CTL_COMBO, -2, L"own", 7), CTL_COMBO, -2), Got(L"own", -2, 0));
    EXPECT_EQ(Get(CTL_COMBO, -1), Got(L"", -1, 0));
    EXPECT_EQ(After(dialog.Set(CTL_COMBO, -3, L"BANANA", 7), CTL_COMBO, -1), Got(L"banana", 1, 0));
    EXPECT_EQ(dialog.Insert(CTL_COMBO, 1, L"fig", kData), 1);
    EXPECT_EQ(Get(CTL_COMBO, 1), Got(L"fig", 1, kData));
    int index = 5;
    EXPECT_EQ(dialog.FindExactMatch(CTL_COMBO, L"banana", index), 1);
    EXPECT_EQ(index, 2);
    EXPECT_EQ(dialog.FindExactMatch(CTL_COMBO, L"ban", index) + dialog.FindExactMatch(CTL_COMBO, nullptr, index), 0);
    EXPECT_EQ(index, -1);
    for (const int shown : {1, 0}) {
        EXPECT_EQ(dialog.ShowDropDown(CTL_COMBO, shown), 1);
        EXPECT_EQ(Ask(CTL_COMBO, CB_GETDROPPEDSTATE), shown);
    }
}

TEST_P(Gauges, Odd44And48MoveByPositionAndStep) {
    const int id = GetParam();
    const bool steps = id != CTL_PROGRESS;
    EXPECT_EQ(After(dialog.Range(id, 0, 200, 10), id, 0), Got(L"", id == CTL_SLIDER ? 0 : 10, 0));
    dialog.Set(id, 40, L"", 0);
    EXPECT_EQ(dialog.Add(id, 5, nullptr, 0), steps ? 45 : 5);
    EXPECT_EQ(Get(id, 0), Got(L"", 45, 0));
    EXPECT_EQ(After(dialog.Delete(id, 15), id, 0), Got(L"", steps ? 30 : 45, 0));
    EXPECT_LE(std::get<int>(After(dialog.Set(id, 150), id, 0)), 0);
    dialog.Set(id, 40, L"", 0);
    EXPECT_EQ(dialog.Add(id, 2147483647, nullptr, 0), 2147483647);
    EXPECT_EQ(After(dialog.Reset(id, L"a"), id, 9), Got(L"", 0, 0));
    EXPECT_EQ(id == CTL_SLIDER ? Ask(id, TBM_GETPAGESIZE) : 10, 10);
    EXPECT_EQ(id == CTL_SLIDER ? Ask(id, TBM_GETNUMTICS) : 21, 21);
    EXPECT_EQ(After(dialog.Range(id, 50, 60, 1), id, 9), Got(L"", 50, 0));
}

INSTANTIATE_TEST_SUITE_P(Kinds, Gauges, testing::Values(CTL_SLIDER, CTL_PROGRESS, CTL_SCROLL));

TEST_F(Dialog, ATabControlHoldsTextAndDataAndSelectsWhatIsSet) {
    EXPECT_EQ(After(dialog.Reset(CTL_TAB, L"a,b,,c"), CTL_TAB, 2), Got(L"c", 2, 2));
    EXPECT_EQ(dialog.Add(CTL_TAB, 0, L"first", kData), 0);
    EXPECT_EQ(Get(CTL_TAB, 0, 3), Got(L"fi", 0, kData));
    EXPECT_EQ(After(dialog.Set(CTL_TAB, 3, nullptr, 8), CTL_TAB, -1), Got(L"c", 3, 8));
    EXPECT_EQ(After(dialog.Delete(CTL_TAB, 0), CTL_TAB, 2), Got(L"c", 2, 8));
}

TEST_F(Dialog, Odd49AListViewHasColumnsAndKeepsItsDataWhenTextIsSet) {
    EXPECT_EQ(dialog.Reset(CTL_LISTVIEW, L"one,,two"), 0);
    EXPECT_EQ(Ask(CTL_LISTVIEW, LVM_GETCOLUMNWIDTH, 1), 100);
    EXPECT_EQ(dialog.Add(CTL_LISTVIEW, 0, L"row", kData), 0);
    EXPECT_EQ(dialog.LVAdd(CTL_LISTVIEW, 1, nullptr, 0, 1), 1);
    dialog.Set(CTL_LISTVIEW, 0, L"changed", 5);
    for (const wchar_t* const column : {L"sub", LPCWSTR{}}) EXPECT_EQ(dialog.Set(CTL_LISTVIEW, 0, 1, column), 0);
    EXPECT_EQ(Get(CTL_LISTVIEW, 0), Got(L"changed", 0, kData));
    wchar_t text[20] = L"";
    LPARAM data = 0;
    EXPECT_EQ(dialog.Get(CTL_LISTVIEW, 0, 1, text, 20, data), 0);
    EXPECT_EQ(std::pair(std::wstring(text), data), std::pair(std::wstring(L"sub"), kData));
    EXPECT_EQ(After(dialog.SetLVFocus(CTL_LISTVIEW, 0, 1), CTL_LISTVIEW, -1), Got(L"changed", 0, kData));
    EXPECT_EQ(dialog.ClearLVFocus(CTL_LISTVIEW, 0, 0), 0);
    EXPECT_EQ(Ask(CTL_LISTVIEW, LVM_GETITEMSTATE, 0, 3), LVIS_SELECTED);
    EXPECT_EQ(dialog.Delete(CTL_LISTVIEW, 0), 0);
    EXPECT_EQ(Ask(CTL_LISTVIEW, LVM_GETITEMCOUNT), 1);
    dialog.LVDeleteAllItems(CTL_LISTVIEW);
    EXPECT_EQ(Ask(CTL_LISTVIEW, LVM_GETITEMCOUNT), 0);
    const std::tuple<int, int, LRESULT> widths[] = {{-3, 0, 100}, {50, 1, 50}, {65535, 1, 32767}};
    for (const auto& [width, result, shown] : widths) {
        EXPECT_EQ(dialog.LVSetColumnWidth(CTL_LISTVIEW, 1, width), result) << width;
        EXPECT_EQ(Ask(CTL_LISTVIEW, LVM_GETCOLUMNWIDTH, 1), shown) << width;
    }
    dialog.Reset(CTL_LISTVIEW, L"only");
    EXPECT_EQ(Ask(CTL_LISTVIEW, LVM_GETCOLUMNWIDTH, 1), 0);
}

TEST_F(Dialog, Odd45AnIconListStartsWithWmDestroyAndIsFreedOnce) {
    dialog.Reset(CTL_LISTVIEW, L"one");
    dialog.Add(CTL_LISTVIEW, 0, L"row", 0);
    EXPECT_EQ(dialog.InitIconList(nullptr, Module(), CTL_LISTVIEW), 1);
    EXPECT_EQ(Ask(CTL_LISTVIEW, LVM_GETITEMCOUNT), 0) << "the list view has taken it for its end";
    DIALOG_INTERFACE other(dialog.GetHandle());
    const unsigned int incomplete[] = {1, 1, 9, 1, 0};
    EXPECT_EQ(other.InitIconList(incomplete + 3, Module(), CTL_LISTVIEW), 1);
    EXPECT_EQ(other.InitIconList(incomplete, Module(), CTL_LISTVIEW), 1);
    LVITEMW item{};
    item.mask = LVIF_IMAGE;
    item.iItem = other.LVAdd(CTL_LISTVIEW, 0, L"row", 0, 1);
    Ask(CTL_LISTVIEW, LVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&item));
    EXPECT_EQ(item.iImage, 1);
    EXPECT_EQ(other.Display(CTL_LISTVIEW, DA_FOCUS, 0), 0);
    EXPECT_EQ(Ask(CTL_LISTVIEW, LVM_GETITEMSTATE, 0, 3), LVIS_FOCUSED | LVIS_SELECTED);
    const auto images = reinterpret_cast<HIMAGELIST>(Ask(CTL_LISTVIEW, LVM_GETIMAGELIST, LVSIL_SMALL));
    EXPECT_EQ(ImageList_GetImageCount(images), 2);
    {
        DIALOG_INTERFACE copy(other);
        other = DIALOG_INTERFACE(copy);
    }
    EXPECT_EQ(ImageList_GetImageCount(images), 2);
    other.SetTargetDialog(nullptr);
    other = DIALOG_INTERFACE(other);
    std::vector<HIMAGELIST> destroyed;
    const ImportPatch destroy("ImageList_Destroy", &ImageList_Destroy,
                              [&](auto list) { return destroyed.push_back(list), ImageList_Destroy(list); });
    { const DIALOG_INTERFACE last(std::exchange(other, DIALOG_INTERFACE(nullptr))); }
    EXPECT_EQ(Ask(CTL_LISTVIEW, LVM_GETIMAGELIST, LVSIL_SMALL), 0);
    EXPECT_EQ(destroyed, std::vector{images});
    for (int time = 0; time < 2; ++time) { // the second list takes the place of one that the list view owns
        other = DIALOG_INTERFACE(dialog.GetHandle());
        other.InitIconList(incomplete, Module(), CTL_LISTVIEW);
    }
    EXPECT_EQ(destroyed.size(), 2u);
}

TEST_F(Dialog, MovesAndOrdersWindows) {
    EXPECT_EQ(dialog.Position(CTL_EDIT, 3, 4) + dialog.Size(CTL_EDIT, 50, 60), 0);
    RECT area{};
    GetWindowRect(Item(CTL_EDIT), &area);
    MapWindowPoints(nullptr, dialog.GetHandle(), reinterpret_cast<POINT*>(&area), 2);
    EXPECT_EQ(std::tuple(area.left, area.top, area.right, area.bottom), std::tuple(3, 4, 53, 64));
    EXPECT_EQ(dialog.Display(CTL_EDIT, DA_BOTTOM, 0), 0);
    EXPECT_EQ(GetWindow(Item(CTL_EDIT), GW_HWNDNEXT), nullptr);
    EXPECT_EQ(dialog.Display(CTL_EDIT, DA_TOP, 0), 0);
    EXPECT_EQ(GetWindow(Item(CTL_EDIT), GW_HWNDPREV), nullptr);
    for (const DISPLAY_ACTION action : {DA_TOPMOST, DA_TOP}) {
        EXPECT_EQ(dialog.Display(CTL_MISSING, action, 0), 0);
        const LONG_PTR style = GetWindowLongPtrW(dialog.GetHandle(), GWL_EXSTYLE);
        EXPECT_EQ((style & WS_EX_TOPMOST) != 0, action == DA_TOPMOST);
    }
    for (const DISPLAY_ACTION action : {DA_TOPMOST_HIDE, DA_TOPMOST_ASYNC, DA_TOPMOST_HIDE, DA_SHOW_IN_PLACE}) {
        EXPECT_EQ(dialog.Display(CTL_MISSING, action, 0), 0);
        EXPECT_EQ(IsWindowVisible(dialog.GetHandle()) != 0, action != DA_TOPMOST_HIDE) << action;
    }
    const ImportPatch patch(Failing("SetWindowPos", &SetWindowPos, FALSE));
    EXPECT_EQ(dialog.Display(CTL_EDIT, DA_TOP, 0), 1);
}

TEST_F(Dialog, Odd41ShowsEnablesAndRefreshesButReportsARefreshAsFailed) {
    const std::pair<DISPLAY_ACTION, LONG_PTR> rows[] = {
        {DA_HIDE, 0}, {DA_SHOW, WS_VISIBLE}, {DA_ENABLE, WS_VISIBLE}, {DA_DISABLE, WS_VISIBLE | WS_DISABLED}};
    for (const auto& [action, style] : rows) {
        EXPECT_EQ(dialog.Display(CTL_EDIT, action, 0), 0) << action;
        EXPECT_EQ(GetWindowLongPtrW(Item(CTL_EDIT), GWL_STYLE) & (WS_VISIBLE | WS_DISABLED), style) << action;
    }
    EXPECT_EQ(dialog.Display(CTL_EDIT, DA_FOCUS, 0), 1) << "disabled";
    dialog.Display(CTL_MISSING, DA_SHOW, 0);
    struct Refreshing : DIALOG_INTERFACE {
        using DIALOG_INTERFACE::DIALOG_INTERFACE;
        int RefreshWindow(HWND window) override { return SetWindowTextW(window, L"refreshed"); }
    } refreshing(dialog.GetHandle());
    EXPECT_EQ(refreshing.Display(CTL_EDIT, DA_REFRESH, 0), 1);
    EXPECT_EQ(Text(CTL_EDIT), L"refreshed");
    dialog.RefreshWindow(Item(CTL_EDIT));
    EXPECT_TRUE(GetUpdateRect(Item(CTL_EDIT), nullptr, FALSE));
    EXPECT_NE(dialog.ValidateCtrl(CTL_EDIT), 0);
    EXPECT_FALSE(GetUpdateRect(Item(CTL_EDIT), nullptr, FALSE));
    for (const int unknown : {-1, 12}) EXPECT_EQ(dialog.Display(CTL_EDIT, static_cast<DISPLAY_ACTION>(unknown), 0), 1);
    EXPECT_EQ(reports.Take(), Texts(2, "CDialog:440 Invalid Display action specified."));
}

TEST_F(Dialog, FocusesAControlAndSelectsAnItem) {
    dialog.Display(CTL_MISSING, DA_SHOW, 0);
    for (const int id : {CTL_LIST, CTL_COMBO, CTL_TAB}) {
        dialog.Reset(id, L"a,b");
        EXPECT_EQ(dialog.Display(id, DA_FOCUS, 1), 0) << id;
        EXPECT_EQ(std::get<1>(Get(id, -1)), 1) << id;
        EXPECT_TRUE(GetFocus() == Item(id) || IsChild(Item(id), GetFocus())) << id;
        EXPECT_EQ(dialog.Display(id, DA_FOCUS, 2), 1) << id;
    }
    EXPECT_EQ(dialog.Display(CTL_LIST, DA_FOCUS, -1), 0);
    dialog.Add(CTL_LISTVIEW, 0, L"row", 0);
    for (const int row : {0, 1}) EXPECT_EQ(dialog.Display(CTL_LISTVIEW, DA_FOCUS, row), row) << "is there or not";
    const ImportPatch refusing(Failing("SetFocus", &SetFocus, nullptr));
    EXPECT_EQ(dialog.Display(CTL_CHECK, DA_FOCUS, 0), 0) << "the dialog moves it";
    EXPECT_EQ(GetFocus(), Item(CTL_CHECK));
}

TEST_F(Dialog, Odd43AnEditSelectsFromItsStartAndAComboBoxTheGivenRange) {
    dialog.Set(CTL_EDIT, 0, L"0123456789", 0);
    dialog.Set(CTL_COMBO, -1, L"0123456789", 0);
    EXPECT_EQ(dialog.SetEditSelection(CTL_EDIT, 2, 5), 0);
    EXPECT_EQ(Ask(CTL_EDIT, EM_GETSEL), MAKELONG(0, 10));
    EXPECT_EQ(dialog.SetEditSelection(CTL_COMBO, 2, 5), 0);
    EXPECT_EQ(Ask(CTL_COMBO, CB_GETEDITSEL), MAKELONG(2, 5));
    EXPECT_EQ(dialog.SetTextLimit(CTL_EDIT, 7) + dialog.SetTextLimit(CTL_COMBO, 7), 2);
    for (const HWND edit : {Item(CTL_EDIT), GetWindow(Item(CTL_COMBO), GW_CHILD)})
        EXPECT_EQ(SendMessageW(edit, EM_GETLIMITTEXT, 0, 0), 7);
    EXPECT_EQ(dialog.SetReadOnly(CTL_EDIT, 1), 1);
    EXPECT_NE(GetWindowLongPtrW(Item(CTL_EDIT), GWL_STYLE) & ES_READONLY, 0);
    for (const int other : {CTL_RICH, CTL_LIST})
        EXPECT_EQ(dialog.SetTextLimit(other, 7) + dialog.SetReadOnly(other, 1), 0);
}

TEST_F(Dialog, MeasuresControlsAndFallsBackToTheDialog) {
    const auto measure = [this](auto operation, int id) {
        std::pair<int, int> size;
        EXPECT_EQ((dialog.*operation)(id, size.first, size.second), 1);
        return Pair(size);
    };
    RECT whole, item, client;
    GetWindowRect(dialog.GetHandle(), &whole);
    GetWindowRect(Item(CTL_EDIT), &client);
    EXPECT_EQ(dialog.GetScreenCoordinates(CTL_EDIT, item), 1);
    EXPECT_TRUE(EqualRect(&item, &client));
    EXPECT_EQ(measure(&DIALOG_INTERFACE::GetPosition, CTL_EDIT), Pair(item.left - whole.left, item.top - whole.top));
    EXPECT_EQ(measure(&DIALOG_INTERFACE::GetPosition, CTL_MISSING), Pair(whole.left, whole.top));
    EXPECT_EQ(measure(&DIALOG_INTERFACE::GetSize, CTL_EDIT), Pair(item.right - item.left, item.bottom - item.top));
    for (const auto& [id, window] : {std::pair(CTL_MISSING, dialog.GetHandle()), {CTL_EDIT, Item(CTL_EDIT)}}) {
        GetClientRect(window, &client);
        EXPECT_EQ(measure(&DIALOG_INTERFACE::GetClientSize, id), Pair(client.right, client.bottom));
    }
    POINT pointer{};
    EXPECT_NE(dialog.MoveFocus(CTL_EDIT), 0);
    GetCursorPos(&pointer);
    EXPECT_EQ(Pair(pointer.x, pointer.y), Pair((item.left + item.right) / 2, (item.top + item.bottom) / 2));
}

TEST_F(Dialog, TagsAWindowWithAColour) {
    int colour = 0, flag = 0;
    EXPECT_EQ(DIALOG_INTERFACE::GetColor(Item(CTL_EDIT), colour, flag), 1);
    EXPECT_EQ(dialog.SetColor(CTL_EDIT, 0x12, 0x34), 0);
    EXPECT_EQ(static_cast<DWORD>(GetWindowLongPtrW(Item(CTL_EDIT), GWLP_USERDATA)), 0xDA1234DAu);
    for (const int tooLarge : {255, 256, -2}) EXPECT_EQ(dialog.SetColor(CTL_EDIT, 0x12, tooLarge), 1);
    EXPECT_EQ(dialog.SetColor(CTL_MISSING, 255, -1), 0);
    EXPECT_EQ(DIALOG_INTERFACE::GetColor(dialog.GetHandle(), colour, flag), 0);
    EXPECT_EQ(Pair(colour, flag), Pair(255, -1));
    SetWindowLongPtrW(Item(CTL_EDIT), GWLP_USERDATA, 0x5A1234DA);
    EXPECT_EQ(DIALOG_INTERFACE::GetColor(Item(CTL_EDIT), colour, flag), 1);
    const RECT part{0, 0, 2, 2};
    EXPECT_NE(dialog.FillCtrlRect(CTL_STATIC, RGB(1, 2, 3), &part), 0);
    EXPECT_EQ(dialog.FillCtrlRect(CTL_MISSING, RGB(1, 2, 3), nullptr), 0);
    COLORREF textColour = 0;
    const ImportPatch patch("SetTextColor", &SetTextColor, [&](HDC, COLORREF value) { return textColour = value; });
    EXPECT_EQ(dialog.ColorStaticText(CTL_STATIC, 1, 2, 3), 0);
    EXPECT_EQ(textColour, 0x030201u);
}

TEST_F(Dialog, LoadsTextsAndGivesFontsAndPictures) {
    Ask(CTL_CHECK, BM_SETCHECK, BST_CHECKED);
    const CONTROL_STRING table[] = {{CTL_STATIC, 1}, {CTL_COMBO, 1}, {CTL_CHECK, 1}, {CTL_EDIT, 9}, {CTL_RICH, 1}};
    EXPECT_EQ(dialog.LoadControlString(Module(), table, 4), 0);
    EXPECT_EQ(Text(CTL_STATIC) + Text(CTL_COMBO) + Text(CTL_CHECK), L"hellohellohello");
    EXPECT_EQ(Text(CTL_EDIT) + Text(CTL_RICH), L"editrich");
    EXPECT_EQ(Get(CTL_CHECK, 0), Got(L"hello", 1, 0));
    const auto font = static_cast<HFONT>(GetStockObject(ANSI_FIXED_FONT));
    EXPECT_EQ(dialog.SetFont(CTL_EDIT, font), 0);
    EXPECT_EQ(Ask(CTL_EDIT, WM_GETFONT), reinterpret_cast<LRESULT>(font));
    const HBITMAP bitmap = LoadBitmapW(Module(), MAKEINTRESOURCEW(1));
    EXPECT_EQ(dialog.SetButtonImage(CTL_CHECK, bitmap), 1);
    EXPECT_EQ(Ask(CTL_CHECK, BM_GETIMAGE, IMAGE_BITMAP), reinterpret_cast<LRESULT>(bitmap));
    DeleteObject(bitmap);
}

TEST_F(Dialog, FindsAControlThatReplacesTheOneUsedLast) {
    constexpr void (*kChanges[])(HWND) = {[](HWND control) { DestroyWindow(control); },
                                          [](HWND control) { SetWindowLongPtrW(control, GWLP_ID, CTL_MISSING); },
                                          [](HWND control) { SetParent(control, GetDesktopWindow()); }};
    dialog.Reset(CTL_LIST, L"a");
    for (const auto change : kChanges) {
        change(Item(CTL_LIST));
        const auto id = reinterpret_cast<HMENU>(CTL_LIST);
        CreateWindowW(L"Edit", L"", WS_CHILD, 0, 0, 9, 9, dialog.GetHandle(), id, nullptr, nullptr);
        dialog.Reset(CTL_LIST, L"found");
        EXPECT_EQ(Text(CTL_LIST), L"found");
    }
    DIALOG_INTERFACE other(Module(), DLG_ALL, nullptr, Procedure, 0);
    dialog.SetTargetDialog(other.GetHandle());
    dialog.Reset(CTL_LIST, L"a");
    EXPECT_EQ(Ask(CTL_LIST, LB_GETCOUNT), 1);
}

TEST_F(Dialog, OperationsForOneKindRefuseAnother) {
    int number = 0, other = 0;
    EXPECT_EQ(dialog.ShowDropDown(CTL_EDIT, 1) + dialog.Insert(CTL_EDIT, 0, L"", 0), 0);
    EXPECT_EQ(dialog.FindExactMatch(CTL_EDIT, L"", number) + dialog.GetLBItemSize(CTL_EDIT, 0, number, other), 0);
    EXPECT_EQ(dialog.LVSetColumnWidth(CTL_EDIT, 0, 5) + dialog.SetButtonImage(CTL_MISSING, nullptr), 0);
    EXPECT_EQ(dialog.SetLVFocus(CTL_EDIT, 0, 0) + dialog.ClearLVFocus(CTL_EDIT, 0, 0), 2);
}

TEST_F(Dialog, RemembersFourSelectionsAndTakesNoOtherSlot) {
    EXPECT_EQ(dialog.SetLVSelected(7, 3), 0);
    EXPECT_EQ(dialog.SetLVSelected(8, 3), 7);
    for (const int slot : {-1, 4}) EXPECT_EQ(dialog.SetLVSelected(9, slot) + dialog.GetLVSelected(slot), -2);
}

TEST_F(Dialog, Odd40DestroyingTheFirstCopyDestroysTheDialog) {
    const HWND window = dialog.GetHandle();
    EXPECT_EQ(GetWindowLongPtrW(window, GWLP_USERDATA), 42);
    { const DIALOG_INTERFACE copy(dialog); }
    EXPECT_FALSE(IsWindow(window));
}

TEST_F(Dialog, Odd42WithoutATargetDialogMostOperationsStillReturn0) {
    dialog.SetTargetDialog(nullptr);
    int count = 5;
    EXPECT_EQ(dialog.GetCount(CTL_EDIT, count), 1);
    EXPECT_EQ(dialog.Set(CTL_EDIT, 0, L"", 0), 0);
    EXPECT_EQ(Get(CTL_EDIT, 3), Got(L"", 3, 0));
}
