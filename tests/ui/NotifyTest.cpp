#include "support/ChildProcess.h"
#include "support/ImportPatch.h"

#include <commctrl.h>
#include <gtest/gtest.h>
#include <tessel/ui.h>

#include <algorithm>
#include <functional>
#include <map>
#include <tuple>

namespace {

/// A record's fields in their order; those left out are 0.
using Fields = std::tuple<unsigned, int, HWND, HWND, int, LPARAM, LPARAM, LPARAM, int, int>;

Fields FieldsOf(const NOTIFY& n) {
    return {n.Kind, n.Function, n.hWnd, n.hCtrl, n.CtrlId, n.Data1, n.Data2, n.Data3, n.Data4, n.Data5};
}

/// A visible window that translates what its controls tell it and keeps the records.
struct NotifyWindow {
    NotifyWindow() {
        SetWindowSubclass(window, &Listen, 0, reinterpret_cast<DWORD_PTR>(this));
        ShowWindow(window, SW_SHOWNOACTIVATE);
    }
    ~NotifyWindow() { DestroyWindow(window); }

    HWND Add(const wchar_t* className, DWORD style = 0, int x = 0, INT_PTR id = 77) const {
        return CreateWindowExW(0, className, L"", WS_CHILD | WS_VISIBLE | style, x, 0, 150, 100, window,
                               reinterpret_cast<HMENU>(id), nullptr, nullptr);
    }

    // Nothing for a window manager: where there is none, the system waits for it in vain.
    const HWND window = CreateWindowExW(WS_EX_TOOLWINDOW, L"Static", L"", WS_POPUP, 40, 40, 400, 300, nullptr, nullptr,
                                        nullptr, nullptr);
    FormatSysMsg formatter;
    std::map<std::pair<HWND, unsigned int>, NOTIFY> records; // by control and code

private:
    static LRESULT CALLBACK Listen(HWND hWnd, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR, DWORD_PTR self) {
        if (message == WM_COMMAND || message == WM_NOTIFY || message == WM_HSCROLL || message == WM_VSCROLL) {
            auto* const host = reinterpret_cast<NotifyWindow*>(self);
            const NOTIFY& record = *host->formatter.NaturalizeMsg(hWnd, message, wParam, lParam);
            EXPECT_EQ(record.Kind, message == WM_COMMAND ? NK_COMMAND : NK_CONTROL);
            EXPECT_EQ(record.Data2, message == WM_NOTIFY ? lParam : 0);
            const unsigned int code = message == WM_COMMAND ? HIWORD(wParam) : static_cast<unsigned int>(record.Data1);
            host->records[{record.hCtrl, code}] = record;
        }
        return DefSubclassProc(hWnd, message, wParam, lParam);
    }
};

using Drive = std::function<void(HWND)>;
using Row = std::pair<unsigned int, MSG_FUNCTION>;

struct Control {
    const wchar_t* className;
    DWORD style;
    std::vector<Drive> drives;
    std::vector<Row> rows;
};

void PrintTo(const Control& control, std::ostream* out) {
    *out << std::string(control.className, control.className + std::wcslen(control.className));
}

template <class Data = int> Drive Send(UINT message, WPARAM wParam = 0, Data lParam = {}) {
    return [=](HWND hCtrl) { SendMessageW(hCtrl, message, wParam, (LPARAM)lParam); };
}

/// Sends on the control's behalf what it sends too rarely.
void SendFor(HWND hCtrl, unsigned int code) {
    NMHDR header{hCtrl, 77, code};
    if (code < 0x80000000) Send(code < 8 ? WM_VSCROLL : WM_COMMAND, code | code << 16, hCtrl)(GetParent(hCtrl));
    if (code >= 0x80000000) Send(WM_NOTIFY, 77, &header)(GetParent(hCtrl));
}

Drive Key(WPARAM key) {
    return Send(WM_KEYDOWN, key);
}

Drive Tree(UINT message, WPARAM wParam = 0) {
    return [=](HWND hCtrl) { Send(message, wParam, TreeView_GetRoot(hCtrl))(hCtrl); };
}

void AddNode(HWND hTree) {
    TVINSERTSTRUCTW node{TreeView_GetRoot(hTree), nullptr, {}};
    Send(TVM_INSERTITEMW, 0, &node)(hTree);
}

TCITEMW emptyTab{};
LVCOLUMNW emptyColumn{};
LVITEMW emptyItem{};
const Drive kAddTab = Send(TCM_INSERTITEMW, 0, &emptyTab);
const Drive kAddItem = Send(LVM_INSERTITEMW, 0, &emptyItem);
const Drive kPress = Send(WM_LBUTTONDOWN, 0, MAKELPARAM(5, 5));
const Drive kRelease = Send(WM_LBUTTONUP, 0, MAKELPARAM(5, 5));
const Drive kDoubleClick = Send(WM_LBUTTONDBLCLK, 0, MAKELPARAM(25, 8));
const Drive kFocus = [](HWND hCtrl) { SetFocus(hCtrl); };
const Drive kUnfocus = [](HWND hCtrl) { SetFocus(GetParent(hCtrl)); };
const Drive kDraw = [](HWND hCtrl) { RedrawWindow(hCtrl, nullptr, nullptr, RDW_INVALIDATE | RDW_UPDATENOW); };
const Drive kOpen = Send(CB_SHOWDROPDOWN, 1);

const Control kControls[] = {
    Control(L"Button", BS_NOTIFY | BS_RADIOBUTTON, {Send(BM_CLICK), kDoubleClick, kFocus, kUnfocus},
            {Row(BN_CLICKED, FN_CLICK), Row(BN_DBLCLK, FN_DBLCLK), Row(BN_SETFOCUS, FN_SETFOCUS),
             Row(BN_KILLFOCUS, FN_KILLFOCUS), Row(16, FN_SETFOCUS), Row(17, FN_CLICK)}),
    Control(L"Edit", 0, {Send(EM_LIMITTEXT, 1), kFocus, Send(WM_CHAR, 'a'), Send(EM_REPLACESEL, 0, L"b"), kUnfocus},
            {Row(EN_UPDATE, FN_UPDATE), Row(EN_CHANGE, FN_CHANGE), Row(EN_MAXTEXT, FN_MAXTEXT),
             Row(EN_SETFOCUS, FN_SETFOCUS), Row(EN_KILLFOCUS, FN_KILLFOCUS)}),
    Control(L"ListBox", LBS_NOTIFY, {Send(LB_ADDSTRING, 0, L"a"), kFocus, Key(VK_DOWN), kDoubleClick, kUnfocus},
            {Row(LBN_SELCHANGE, FN_CHANGE), Row(LBN_DBLCLK, FN_DBLCLK), Row(LBN_SETFOCUS, FN_SETFOCUS),
             Row(LBN_KILLFOCUS, FN_KILLFOCUS), Row(LBN_SELCANCEL, FN_SELCANCEL)}),
    Control(L"ComboBox", CBS_DROPDOWN,
            {Send(CB_ADDSTRING, 0, L"a"), kFocus, Send(WM_CHAR, 'a'), Key(VK_DOWN), kOpen, Key(VK_RETURN), kOpen,
             Key(VK_ESCAPE), kUnfocus},
            {Row(CBN_SELCHANGE, FN_CHANGE), Row(CBN_EDITUPDATE, FN_UPDATE), Row(CBN_EDITCHANGE, FN_EDIT),
             Row(CBN_DROPDOWN, FN_DROPDOWN), Row(CBN_CLOSEUP, FN_CLOSEUP), Row(CBN_SELENDOK, FN_SELENDOK),
             Row(CBN_SELENDCANCEL, FN_SELCANCEL), Row(CBN_SETFOCUS, FN_SETFOCUS), Row(CBN_KILLFOCUS, FN_KILLFOCUS),
             Row(CBN_DBLCLK, FN_CLICK)}),
    Control(L"SysTabControl32", 0, {kAddTab, kAddTab, Send(TCM_SETCURSEL, 1), kPress, kRelease},
            {Row(TCN_SELCHANGING, FN_UPDATE), Row(TCN_SELCHANGE, FN_CHANGE), Row(NM_CLICK, FN_CLICK),
             Row(NM_SETFOCUS, FN_SETFOCUS), Row(NM_KILLFOCUS, FN_KILLFOCUS), Row(NM_DBLCLK, FN_NONE),
             Row(NM_CUSTOMDRAW, FN_NONE)}),
    Control(L"msctls_trackbar32", 0,
            {Send(TBM_SETPOS, 1, 50), Key(VK_LEFT), Key(VK_RIGHT), Key(VK_PRIOR), Key(VK_NEXT), Key(VK_HOME),
             Key(VK_END), Send(WM_KEYUP, VK_END), kDraw},
            {Row(TB_LINEUP, FN_CHANGE), Row(TB_LINEDOWN, FN_CHANGE), Row(TB_PAGEUP, FN_CHANGE),
             Row(TB_PAGEDOWN, FN_CHANGE), Row(TB_TOP, FN_CHANGE), Row(TB_BOTTOM, FN_CHANGE), Row(TB_ENDTRACK, FN_NONE),
             Row(NM_CUSTOMDRAW, FN_CUSTOMDRAW), Row(TB_THUMBPOSITION, FN_UPDATE), Row(TB_THUMBTRACK, FN_TRACK),
             Row(NM_SETFOCUS, FN_SETFOCUS), Row(NM_KILLFOCUS, FN_KILLFOCUS)}),
    Control(L"SysTreeView32", TVS_EDITLABELS,
            {AddNode, AddNode, kFocus, Tree(TVM_SELECTITEM, TVGN_CARET), kDraw, Tree(TVM_EXPAND, TVE_EXPAND),
             Key(VK_DOWN), kDoubleClick, Tree(TVM_EDITLABELW), Send(TVM_ENDEDITLABELNOW, 1), kFocus, kUnfocus,
             Tree(TVM_DELETEITEM)},
            {Row(TVN_SELCHANGINGW, FN_CHANGE), Row(TVN_SELCHANGEDW, FN_UPDATE), Row(TVN_ITEMEXPANDINGW, FN_EXPAND),
             Row(TVN_ITEMEXPANDEDW, FN_EXPAND), Row(TVN_KEYDOWN, FN_CLICK), Row(TVN_BEGINLABELEDITW, FN_EDIT),
             Row(TVN_ENDLABELEDITW, FN_UPDATE), Row(TVN_DELETEITEMW, FN_DELETEITEM), Row(NM_SETFOCUS, FN_SETFOCUS),
             Row(NM_KILLFOCUS, FN_KILLFOCUS), Row(NM_CUSTOMDRAW, FN_CUSTOMDRAW), Row(NM_DBLCLK, FN_DBLCLK),
             Row(NM_CLICK, FN_CLICK), Row(NM_RCLICK, FN_NONE)}),
    Control(L"SysListView32", LVS_REPORT | LVS_EDITLABELS,
            {Send(LVM_INSERTCOLUMNW, 0, &emptyColumn), Send(LVM_SETCOLUMNWIDTH, 0, 80), kAddItem, kAddItem, kFocus,
             kDraw, Key(VK_DOWN), Send(WM_LBUTTONDBLCLK, 0, MAKELPARAM(25, 30)), Send(LVM_EDITLABELW),
             Send(LVM_CANCELEDITLABEL), kFocus, kUnfocus, Send(LVM_DELETEITEM)},
            {Row(LVN_ITEMCHANGING, FN_CHANGE), Row(LVN_ITEMCHANGED, FN_UPDATE), Row(LVN_KEYDOWN, FN_CLICK),
             Row(LVN_BEGINLABELEDITW, FN_EDIT), Row(LVN_ENDLABELEDITW, FN_UPDATE),
             Row(LVN_GETDISPINFOW, FN_GETDISPINFO), Row(LVN_DELETEITEM, FN_DELETEITEM), Row(NM_SETFOCUS, FN_SETFOCUS),
             Row(NM_KILLFOCUS, FN_KILLFOCUS), Row(NM_CUSTOMDRAW, FN_CUSTOMDRAW), Row(NM_DBLCLK, FN_DBLCLK),
             Row(NM_CLICK, FN_CLICK), Row(LVN_COLUMNCLICK, FN_COLUMNCLICK)}),
    Control(L"SysHeader32", 0, {kDraw},
            {Row(NM_CUSTOMDRAW, FN_NONE), Row(HDN_ENDTRACKW, FN_TRACK), Row(HDN_ITEMCLICKW, FN_NONE),
             Row(NM_SETFOCUS, FN_SETFOCUS), Row(NM_KILLFOCUS, FN_KILLFOCUS)}),
    Control(L"ScrollBar", SBS_HORZ, {Key(VK_RIGHT)}, {Row(SB_LINERIGHT, FN_NONE)}),
    Control(L"Static", SS_NOTIFY, {kPress, kRelease}, {Row(STN_CLICKED, FN_NONE)}),
    Control(L"msctls_progress32", 0, {}, {Row(NM_CLICK, FN_NONE)}),
    Control(L"RichEdit20W", 0, {}, {Row(EN_CHANGE, FN_NONE)}),
};

using NotifyControls = testing::TestWithParam<Control>;

LRESULT CALLBACK ReleaseAsItAnswers(HWND list, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR, DWORD_PTR self) {
    if (message == LB_ITEMFROMPOINT) reinterpret_cast<FormatSysMsg*>(self)->ReleaseListBoxMove(list);
    return DefSubclassProc(list, message, wParam, lParam);
}

/// Makes a window of a class and handles no message until it is told to end.
int Hang(const std::vector<std::string>& arguments) {
    const HWND hWnd = CreateWindowExA(WS_EX_TOOLWINDOW, arguments[0].c_str(), "", WS_POPUP | WS_VISIBLE, 0, 0, 50, 50,
                                      nullptr, nullptr, nullptr, nullptr);
    Say("window " + std::to_string(HandleToULong(hWnd)));
    Hear();
    return 0;
}
const Role hang("hang", Hang);

DWORD WINAPI TimeOut(HANDLE, DWORD timeoutMs, BOOL) {
    EXPECT_EQ(timeoutMs, 100u);
    return WAIT_TIMEOUT;
}

struct Notify : testing::Test {
    NOTIFY* Translate(UINT message, WPARAM wParam = 0, LPARAM lParam = 0) {
        return host.formatter.NaturalizeMsg(host.window, message, wParam, lParam);
    }
    NOTIFY* Point(HWND hCtrl) { return Translate(WM_SETCURSOR, reinterpret_cast<WPARAM>(hCtrl), HTCLIENT); }
    NotifyWindow host;
    const HWND window = host.window;
};

} // namespace

TEST_P(NotifyControls, Odd31NotificationsBecomeTheFunctionOfTheirControl) {
    LoadLibraryW(L"riched20.dll");
    NotifyWindow host;
    const HWND hCtrl = host.Add(GetParam().className, GetParam().style);
    for (const Drive& drive : GetParam().drives) drive(hCtrl);
    for (const auto& [code, function] : GetParam().rows) {
        if (!host.records.contains({hCtrl, code})) SendFor(hCtrl, code);
        const NOTIFY& record = host.records.at({hCtrl, code});
        EXPECT_EQ(record.Function, function) << code;
        EXPECT_EQ(record.hWnd, host.window);
        EXPECT_EQ(record.CtrlId, 77);
    }
}

INSTANTIATE_TEST_SUITE_P(Each, NotifyControls, testing::ValuesIn(kControls), [](const auto& control) {
    const std::string name = testing::PrintToString(control.param);
    return name.substr(name.rfind('_') + 1);
});

TEST_F(Notify, MessagesFillWhatTheirKindUsesAndNothingElse) {
    DRAWITEMSTRUCT item{ODT_BUTTON, 9, 0, ODA_FOCUS, 0, window, nullptr, {1, 2, 3, 4}, 0};
    const std::tuple<UINT, WPARAM, LPARAM, Fields> rows[] = {
        {WM_ACTIVATE, MAKEWPARAM(2, 3), 7, {8, 0, window, nullptr, 0, 0x30001, 1, 7, 0, 0}},
        {WM_ACTIVATE, MAKEWPARAM(0, 1), 7, {8, 0, window, nullptr, 0, 0x10000, 0, 7, 0, 0}},
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
    for (const UINT message : {WM_LBUTTONUP, WM_RBUTTONUP, WM_MBUTTONUP, WM_SIZE, WM_DRAWITEM, WM_NOTIFY}) {
        for (const LPARAM record : {0, 16}) EXPECT_EQ(Translate(message, 0, record), nullptr) << message;
    }
}

TEST_F(Notify, Odd34APaintMessageIsTranslatedOnceAndIsThenValid) {
    const HWND child = host.Add(L"Static");
    const RECT part{3, 4, 50, 60};
    ValidateRect(child, nullptr);
    InvalidateRect(child, &part, FALSE);
    const NOTIFY* const record = host.formatter.NaturalizeMsg(child, WM_PAINT, 0, 0);
    EXPECT_EQ(FieldsOf(*record), Fields(3, 14, window, child, 77, 0, 3, 4, 50, 60));
    EXPECT_FALSE(GetUpdateRect(child, nullptr, FALSE));
}

TEST_F(Notify, Odd32And35ThePointerIsReportedToLeaveAndToEnterBeforeItActs) {
    const HWND a = host.Add(L"Edit");
    const HWND b = host.Add(L"Edit", 0, 200, 78);
    host.Add(L"Edit", 0, -150, 79);
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
    for (const UINT message : {WM_MOUSEMOVE, WM_LBUTTONDOWN, WM_RBUTTONDOWN, WM_MBUTTONDOWN, WM_LBUTTONDBLCLK,
                               WM_RBUTTONDBLCLK, WM_MBUTTONDBLCLK}) {
        EXPECT_EQ(Translate(message, 0, MAKELPARAM(9, 5))->Function, function++);
    }
}

TEST_F(Notify, FocusFollowsThePointerAndPlacesTheCaret) {
    const HWND text = host.Add(L"Static");
    const HWND line = host.Add(L"Edit");
    const HWND lines = host.Add(L"Edit", ES_MULTILINE);
    const HWND button = host.Add(L"Button");
    for (const HWND edit : {line, lines}) Send(WM_SETTEXT, 0, L"abc")(edit);
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

TEST_F(Notify, WindowsOfAProcessThatHangsAreNotWaitedFor) {
    for (const char* const className : {"Edit", "ListBox"}) {
        ChildProcess other("hang", {className});
        const HWND hung = reinterpret_cast<HWND>(std::stoul(other.WaitUntil("window ")));
        host.formatter.RegisterListBoxMove(hung);
        SetFocus(host.Add(L"Button"));
        CCURSOR::SetCursorPos(20, 20);
        EXPECT_EQ(Point(hung)->hCtrl, hung);
        EXPECT_EQ(host.formatter.GetCursor(hung), -1);
        host.formatter.ReleaseListBoxMove(hung);
        other.Tell("end"); // on a wait for its answer, this line is never reached
    }
}

TEST_F(Notify, ListBoxThatIsReleasedWhileItAnswersIsNotSnappedTo) {
    const HWND list = host.Add(L"ListBox");
    Send(LB_ADDSTRING, 0, L"a")(list);
    host.formatter.RegisterListBoxMove(list);
    SetWindowSubclass(list, &ReleaseAsItAnswers, 0, reinterpret_cast<DWORD_PTR>(&host.formatter));
    SetCursorPos(45, 45);
    Point(list);
    EXPECT_EQ(host.formatter.GetCursor(list), -1);
    EXPECT_EQ(SendMessageW(list, LB_GETCURSEL, 0, 0), LB_ERR);
}

TEST_F(Notify, ThePointerStaysWhereNoItemOfAListBoxIs) {
    const HWND list = host.Add(L"ListBox");
    host.formatter.RegisterListBoxMove(list);
    SetCursorPos(45, 60);
    Point(list);
    POINT pointer;
    GetCursorPos(&pointer);
    EXPECT_EQ(pointer.y, 60);
    host.formatter.ReleaseListBoxMove(list);
}

TEST_F(Notify, Odd30And33ThePointerSnapsToTheItemsOfARegisteredListBox) {
    HWND lists[] = {host.Add(L"ListBox"), host.Add(L"ListBox", 0, 200)};
    for (const HWND list : lists) {
        for (int i = 0; i < 3; ++i) Send(LB_ADDSTRING, 0, L"a")(list);
        host.formatter.RegisterListBoxMove(list);
        EXPECT_EQ(host.formatter.GetCursor(list), -1);
    }
    RECT item;
    Send(LB_GETITEMRECT, 1, &item)(lists[0]);
    POINT corner{9, item.top + 1};
    ClientToScreen(lists[0], &corner);
    SetCursorPos(corner.x, corner.y);
    EXPECT_EQ(Translate(WM_SETCURSOR, reinterpret_cast<WPARAM>(lists[0]), HTVSCROLL)->Data1, HTVSCROLL);
    FormatSysMsg::SetCommonDlgActive(1);
    Point(lists[0]);
    EXPECT_EQ(host.formatter.GetCursor(lists[0]), -1) << "on the scroll bar, or below a common dialog";
    FormatSysMsg::SetCommonDlgActive(0);
    Point(lists[0]);
    POINT pointer;
    GetCursorPos(&pointer);
    EXPECT_EQ(pointer.x, corner.x);
    EXPECT_EQ(pointer.y, corner.y - 1 + (item.bottom - item.top) / 2);
    EXPECT_EQ(SendMessageW(lists[0], LB_GETCURSEL, 0, 0), host.formatter.GetCursor(lists[0]));
    SetCursorPos(corner.x + 200, corner.y);
    Point(lists[1]);
    EXPECT_EQ(host.formatter.GetCursor(lists[1]), -1) << "the same index again";
    {
        const ImportPatch busy(L"Tessel.dll", "WaitForSingleObjectEx", &TimeOut);
        host.formatter.ReleaseListBoxMove(lists[0]);
        host.formatter.RegisterListBoxMove(lists[0]);
        EXPECT_EQ(host.formatter.GetCursor(lists[0]), 1);
    }
    host.formatter.RegisterListBoxMove(lists[0]);
    EXPECT_EQ(host.formatter.GetCursor(lists[0]), -1);
    Point(lists[0]); // the pointer is outside it
    SetCursorPos(corner.x + 200, corner.y);
    Point(lists[1]);
    EXPECT_EQ(host.formatter.GetCursor(lists[1]), 1);
    host.formatter.ReleaseListBoxMove(lists[1]);
    EXPECT_EQ(host.formatter.GetCursor(lists[1]), -1);
    SetCursorPos(corner.x + 200, corner.y);
    Point(lists[1]);
    GetCursorPos(&pointer);
    EXPECT_EQ(pointer.y, corner.y) << "released, the list box leaves the pointer alone";
}

TEST(NotifyDefaults, InitialTgcIsThePrograms) {
    EXPECT_EQ(FormatSysMsg::GetInitialTgc(0), -1);
    FormatSysMsg::InitialTgc[5] = 4;
    EXPECT_EQ(FormatSysMsg::GetInitialTgc(5), 4);
    EXPECT_EQ(FormatSysMsg::GetInitialTgc(6), -1);
}
