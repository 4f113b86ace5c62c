#include "support/ChildProcess.h"
#include "support/ImportPatch.h"

#include <commctrl.h>
#include <gtest/gtest.h>
#include <tessel/ui.h>

#include <tuple>

namespace {

/// A record's fields in their order; those left out are 0.
using Fields = std::tuple<unsigned, int, HWND, HWND, int, LPARAM, LPARAM, LPARAM, int, int>;

Fields FieldsOf(const NOTIFY& n) {
    return {n.Kind, n.Function, n.hWnd, n.hCtrl, n.CtrlId, n.Data1, n.Data2, n.Data3, n.Data4, n.Data5};
}

using Row = std::pair<unsigned int, MSG_FUNCTION>;

/// Codes of each class and their meaning: the ends of each range, and exceptions.
const std::pair<std::vector<std::wstring>, std::vector<Row>> kControls[] = {
    {{L"Button"}, {Row(BN_CLICKED, FN_CLICK), Row(BN_KILLFOCUS, FN_KILLFOCUS), Row(17, FN_CLICK)}},
    {{L"Edit"}, {Row(EN_UPDATE, FN_UPDATE), Row(EN_KILLFOCUS, FN_KILLFOCUS)}},
    {{L"ListBox"}, {Row(LBN_SELCHANGE, FN_CHANGE), Row(LBN_SELCANCEL, FN_SELCANCEL)}},
    {{L"ComboBox"}, {Row(CBN_SELCHANGE, FN_CHANGE), Row(CBN_SELENDCANCEL, FN_SELCANCEL), Row(CBN_DBLCLK, FN_CLICK)}},
    {{L"SysTabControl32"}, {Row(TCN_SELCHANGING, FN_UPDATE), Row(TCN_SELCHANGE, FN_CHANGE), Row(NM_CLICK, FN_CLICK)}},
    {{L"msctls_trackbar32"},
     {Row(TB_LINEUP, FN_CHANGE), Row(TB_BOTTOM, FN_CHANGE), Row(TB_ENDTRACK, FN_NONE), Row(TB_THUMBTRACK, FN_TRACK)}},
    {{L"SysTreeView32", L"SysListView32"},
     {Row(TVN_SELCHANGINGW, FN_CHANGE), Row(TVN_SELCHANGEDW, FN_UPDATE), Row(LVN_ITEMCHANGED, FN_UPDATE),
      Row(LVN_COLUMNCLICK, FN_COLUMNCLICK), Row(NM_CLICK, FN_CLICK), Row(NM_CUSTOMDRAW, FN_CUSTOMDRAW)}},
    {{L"SysHeader32"}, {Row(HDN_ENDTRACKW, FN_TRACK), Row(NM_SETFOCUS, FN_SETFOCUS), Row(NM_RCLICK, FN_NONE)}},
    {{L"ScrollBar", L"RichEdit20W", L"Static", L"msctls_progress32"},
     {Row(EN_CHANGE, FN_NONE), Row(NM_CLICK, FN_NONE)}},
};

template <class Data = int> LRESULT Send(HWND hCtrl, UINT message, WPARAM wParam = 0, Data lParam = {}) {
    return SendMessageW(hCtrl, message, wParam, (LPARAM)lParam);
}

LRESULT CALLBACK ReleaseAsItAnswers(HWND list, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR, DWORD_PTR self) {
    if (message == LB_ITEMFROMPOINT) reinterpret_cast<FormatSysMsg*>(self)->ReleaseListBoxMove(list);
    return DefSubclassProc(list, message, wParam, lParam);
}

/// Creates a window of a class and handles no message until it is asked to end.
const Role hang("hang", [](const std::vector<std::string>& arguments) {
    const HWND hWnd = CreateWindowExA(WS_EX_TOOLWINDOW, arguments[0].c_str(), "", WS_POPUP | WS_VISIBLE, 0, 0, 50, 50,
                                      nullptr, nullptr, nullptr, nullptr);
    Say("window " + std::to_string(HandleToULong(hWnd)));
    Hear();
    return 0;
});

/// A visible window whose controls' messages are translated.
struct Notify : testing::Test {
    Notify() { ShowWindow(window, SW_SHOWNOACTIVATE); }
    ~Notify() override { DestroyWindow(window); }

    HWND Add(const wchar_t* className, DWORD style = 0, int x = 0, INT_PTR id = 77) const {
        return CreateWindowExW(0, className, L"", WS_CHILD | WS_VISIBLE | style, x, 0, 150, 100, window,
                               reinterpret_cast<HMENU>(id), nullptr, nullptr);
    }
    NOTIFY* Translate(UINT message, WPARAM wParam = 0, LPARAM lParam = 0) {
        return formatter.NaturalizeMsg(window, message, wParam, lParam);
    }
    NOTIFY* Point(HWND hCtrl) { return Translate(WM_SETCURSOR, reinterpret_cast<WPARAM>(hCtrl), HTCLIENT); }

    /// Translates a notification as a control of the class sends it.
    void ExpectFunction(const std::wstring& className, unsigned int code, MSG_FUNCTION function) {
        const HWND hCtrl = Add(className.c_str());
        NMHDR header{hCtrl, 77, code};
        const bool isCommon = static_cast<int>(code) < 0;
        const bool isCommand = !isCommon && className != L"msctls_trackbar32" && className != L"ScrollBar";
        const UINT message = isCommon ? WM_NOTIFY : isCommand ? WM_COMMAND : WM_VSCROLL;
        const WPARAM wParam = isCommon ? 77 : isCommand ? MAKEWPARAM(77, code) : code;
        const auto lParam = isCommon ? reinterpret_cast<LPARAM>(&header) : reinterpret_cast<LPARAM>(hCtrl);
        EXPECT_EQ(FieldsOf(*Translate(message, wParam, lParam)),
                  Fields(isCommand ? NK_COMMAND : NK_CONTROL, function, window, hCtrl, 77,
                         isCommand ? 0 : static_cast<int>(code), isCommon ? lParam : 0, 0, 0, 0))
            << className << code;
    }

    // A window that needs no window manager: where there is none, the system would wait for it in vain.
    const HWND window = CreateWindowExW(WS_EX_TOOLWINDOW, L"Static", L"", WS_POPUP, 40, 40, 400, 300, nullptr, nullptr,
                                        nullptr, nullptr);
    FormatSysMsg formatter;
};

} // namespace

TEST_F(Notify, Odd31NotificationsBecomeTheFunctionOfTheirControl) {
    InitCommonControls();
    LoadLibraryW(L"riched20.dll");
    for (const auto& [classNames, rows] : kControls)
        for (const std::wstring& className : classNames)
            for (const auto& [code, function] : rows) ExpectFunction(className, code, function);
}

TEST_F(Notify, MessagesFillWhatTheirKindUsesAndNothingElse) {
    DRAWITEMSTRUCT item{ODT_BUTTON, 9, 0, ODA_FOCUS, 0, window, nullptr, {1, 2, 3, 4}, 0};
    const std::tuple<UINT, WPARAM, LPARAM, Fields> rows[] = {
        {WM_ACTIVATE, MAKEWPARAM(2, 3), 7, {8, 0, window, nullptr, 0, 0x30001, 1, 7, 0, 0}},
        {WM_CLOSE, 0, 0, {9, 0, window, nullptr, 8, 0, 0, 0, 0, 0}},
        {WM_SPOOLERSTATUS, 3, 2, {10, 0, nullptr, nullptr, 0, 0x20003, 0, 0, 0, 0}},
        {WM_DRAWITEM, 5, reinterpret_cast<LPARAM>(&item), {3, 14, window, window, 9, 4, 1, 2, 3, 4}},
        {WM_KEYDOWN, 'A', 0, {5, 27, nullptr, nullptr, 0, 1, 'A', 0, 0, 0}},
        {WM_COMMAND, MAKEWPARAM(300, 1), 0, {5, 26, nullptr, nullptr, 0, 0, 300, 0, 0, 0}},
        {WM_COMMAND, 300, 0, {1, 0, window, nullptr, 0, 0, 0, 0, 0, 0}},
        {WM_TIMER, 42, 0, {6, 0, nullptr, nullptr, 42, 0, 0, 0, 0, 0}},
        {WM_HSCROLL, MAKEWPARAM(5, 99), 0, {4, 0, window, nullptr, 0, 5, 0, 0, 0, 0}},
        {0x800B, 0, 17, {7, 30, nullptr, nullptr, 0, 17, 0, 0, 0, 0}},
    };
    for (const auto& [message, wParam, lParam, fields] : rows) {
        EXPECT_EQ(FieldsOf(*Translate(message, wParam, lParam)), fields) << message;
    }
    for (const UINT message : std::vector<UINT>{WM_LBUTTONUP, WM_SIZE, WM_DRAWITEM, WM_NOTIFY}) {
        for (const LPARAM record : {0, 16}) EXPECT_EQ(Translate(message, 0, record), nullptr) << message;
    }
}

TEST_F(Notify, Odd34APaintMessageIsTranslatedOnceAndIsThenValid) {
    const HWND child = Add(L"Static");
    const RECT part{3, 4, 50, 60};
    ValidateRect(child, nullptr);
    InvalidateRect(child, &part, FALSE);
    EXPECT_EQ(FieldsOf(*formatter.NaturalizeMsg(child, WM_PAINT, 0, 0)),
              Fields(3, 14, window, child, 77, 0, 3, 4, 50, 60));
    EXPECT_FALSE(GetUpdateRect(child, nullptr, FALSE));
}

TEST_F(Notify, Odd32And35ThePointerIsReportedToLeaveAndToEnterBeforeItActs) {
    const HWND a = Add(L"Edit"), b = Add(L"Edit", 0, 200, 78);
    Add(L"Edit", 0, -150, 79);
    const std::tuple<LPARAM, int, HWND, int> steps[] = {{9, 3, a, 77},          {9, 19, a, 77},   {209, 4, a, 77},
                                                        {209, 3, b, 78},        {209, 19, b, 78}, {0xFFFF, 4, b, 78},
                                                        {0xFFFF, 3, nullptr, 0}};
    for (const auto& [x, function, hCtrl, id] : steps) {
        const int keys = function == FN_KILLFOCUS ? 0 : MK_LBUTTON;
        EXPECT_EQ(FieldsOf(*Translate(WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(x, 5))),
                  Fields(2, function, window, hCtrl, id, keys, x | 0x50000, 0, 0, 0));
    }
    Translate(WM_MOUSEMOVE, 0, MAKELPARAM(9, 5));
    int function = FN_MOUSEMOVE;
    for (const UINT message : std::vector<UINT>{WM_MOUSEMOVE, WM_LBUTTONDOWN, WM_RBUTTONDOWN, WM_MBUTTONDOWN,
                                                WM_LBUTTONDBLCLK, WM_RBUTTONDBLCLK, WM_MBUTTONDBLCLK}) {
        EXPECT_EQ(Translate(message, 0, MAKELPARAM(9, 5))->Function, function++);
    }
}

TEST_F(Notify, FocusFollowsThePointerAndPlacesTheCaret) {
    const HWND text = Add(L"Static"), button = Add(L"Button");
    const HWND line = Add(L"Edit"), lines = Add(L"Edit", ES_MULTILINE);
    for (const HWND edit : {line, lines}) Send(edit, WM_SETTEXT, 0, L"abc");
    SetFocus(nullptr);
    Point(line);
    EXPECT_EQ(GetFocus(), nullptr);
    SetFocus(line);
    const std::pair<HWND, HWND> steps[] = {{text, line}, {lines, lines}, {line, line}, {button, button}, {text, text}};
    for (const auto& [pointed, focus] : steps) {
        Point(pointed);
        EXPECT_EQ(GetFocus(), focus);
    }
    EXPECT_EQ(SendMessageW(lines, EM_GETSEL, 0, 0), MAKELPARAM(3, 3));
    EXPECT_EQ(SendMessageW(line, EM_GETSEL, 0, 0), MAKELPARAM(0, 3));
    FormatSysMsg::SetCommonDlgActive(1);
    EXPECT_EQ(FieldsOf(*Point(line)), Fields(2, 25, window, line, 77, 1, 0, 0, 0, 0));
    EXPECT_EQ(GetFocus(), text);
    FormatSysMsg::SetCommonDlgActive(0);
}

TEST_F(Notify, DoesNotWaitForWindowsOfAHungProcess) {
    for (const char* const className : {"Edit", "ListBox"}) {
        ChildProcess other("hang", {className});
        const HWND hung = reinterpret_cast<HWND>(std::stoul(other.WaitUntil("window ")));
        formatter.RegisterListBoxMove(hung);
        SetFocus(Add(L"Button"));
        CCURSOR::SetCursorPos(20, 20);
        EXPECT_EQ(Point(hung)->hCtrl, hung);
        EXPECT_EQ(formatter.GetCursor(hung), -1);
        formatter.ReleaseListBoxMove(hung);
        other.Tell("end"); // a wait for its answer would never get here
    }
}

TEST_F(Notify, DoesNotSnapWhereNoItemIsNorToAListBoxReleasedWhileItAnswers) {
    const HWND list = Add(L"ListBox");
    const auto point = [&] {
        SetCursorPos(45, 60);
        Point(list);
        POINT pointer{};
        GetCursorPos(&pointer);
        EXPECT_EQ(pointer.y, 60);
    };
    formatter.RegisterListBoxMove(list);
    point();
    Send(list, LB_ADDSTRING, 0, L"a");
    SetWindowSubclass(list, &ReleaseAsItAnswers, 0, reinterpret_cast<DWORD_PTR>(&formatter));
    formatter.RegisterListBoxMove(list);
    point();
    EXPECT_EQ(Send(list, LB_GETCURSEL), LB_ERR);
}

TEST_F(Notify, Odd30And33ThePointerSnapsToTheItemsOfARegisteredListBox) {
    HWND lists[] = {Add(L"ListBox"), Add(L"ListBox", 0, 200)};
    for (const HWND list : lists) {
        for (int i = 0; i < 3; ++i) Send(list, LB_ADDSTRING, 0, L"a");
        formatter.RegisterListBoxMove(list);
        EXPECT_EQ(formatter.GetCursor(list), -1);
    }
    RECT item;
    Send(lists[0], LB_GETITEMRECT, 1, &item);
    POINT corner{9, item.top + 1};
    ClientToScreen(lists[0], &corner);
    SetCursorPos(corner.x, corner.y);
    EXPECT_EQ(Translate(WM_SETCURSOR, reinterpret_cast<WPARAM>(lists[0]), HTVSCROLL)->Data1, HTVSCROLL);
    FormatSysMsg::SetCommonDlgActive(1);
    Point(lists[0]);
    EXPECT_EQ(formatter.GetCursor(lists[0]), -1) << "on the scroll bar, or below a common dialog";
    FormatSysMsg::SetCommonDlgActive(0);
    Point(lists[0]);
    POINT pointer;
    GetCursorPos(&pointer);
    EXPECT_EQ(pointer.x, corner.x);
    EXPECT_EQ(pointer.y, corner.y - 1 + (item.bottom - item.top) / 2);
    EXPECT_EQ(SendMessageW(lists[0], LB_GETCURSEL, 0, 0), formatter.GetCursor(lists[0]));
    const auto pointAtSecond = [&] {
        SetCursorPos(corner.x + 200, corner.y);
        Point(lists[1]);
    };
    pointAtSecond();
    EXPECT_EQ(formatter.GetCursor(lists[1]), -1) << "the same index again";
    {
        const ImportPatch busy(Failing("WaitForSingleObjectEx", &WaitForSingleObjectEx, WAIT_TIMEOUT));
        formatter.ReleaseListBoxMove(lists[0]);
        formatter.RegisterListBoxMove(lists[0]);
        EXPECT_EQ(formatter.GetCursor(lists[0]), 1);
    }
    formatter.RegisterListBoxMove(lists[0]);
    EXPECT_EQ(formatter.GetCursor(lists[0]), -1);
    Point(lists[0]); // the pointer is outside it
    pointAtSecond();
    EXPECT_EQ(formatter.GetCursor(lists[1]), 1);
    formatter.ReleaseListBoxMove(lists[1]);
    pointAtSecond();
    EXPECT_EQ(formatter.GetCursor(lists[1]), -1) << "released, the list box leaves the pointer alone";
}

TEST(NotifyDefaults, InitialTgcIsThePrograms) {
    FormatSysMsg::InitialTgc[5] = 4;
    EXPECT_EQ(FormatSysMsg::GetInitialTgc(5), 4);
    EXPECT_EQ(FormatSysMsg::GetInitialTgc(6), -1);
}
