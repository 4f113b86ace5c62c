#include "support/ImportPatch.h"
#include "ui/NotifyWindow.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

namespace {

using Drive = std::function<void(HWND)>;

struct Row {
    unsigned int code;
    MSG_FUNCTION function;
    Drive drive = nullptr; // without one the test sends the notification itself
};

struct Control {
    const wchar_t* className;
    DWORD style;
    std::vector<Row> rows;
};

template <class Data = int> Drive Sent(UINT message, WPARAM wParam = 0, Data lParam = {}) {
    return [=](HWND hCtrl) { SendMessageW(hCtrl, message, wParam, (LPARAM)lParam); };
}

Drive Key(WPARAM key) {
    return Sent(WM_KEYDOWN, key);
}

Drive Then(const Drive& first, const Drive& second) {
    return [=](HWND hCtrl) { first(hCtrl), second(hCtrl); };
}

Drive Tree(UINT message, WPARAM wParam) {
    return [=](HWND hCtrl) { SendMessageW(hCtrl, message, wParam, (LPARAM)TreeView_GetRoot(hCtrl)); };
}

void ClickSecondTab(HWND hCtrl) {
    RECT tab{};
    TabCtrl_GetItemRect(hCtrl, 1, &tab);
    for (const UINT message : {WM_LBUTTONDOWN, WM_LBUTTONUP}) {
        SendMessageW(hCtrl, message, 0, MAKELPARAM(tab.left + 3, tab.top + 3));
    }
}

void ChangeListItem(HWND hCtrl) {
    ListView_SetItemState(hCtrl, 0, LVIS_SELECTED, LVIS_SELECTED);
}

void ReadListItem(HWND hCtrl) {
    wchar_t text[8];
    ListView_GetItemText(hCtrl, 0, 0, text, 8);
}

void ClickColumn(HWND hCtrl) {
    for (const UINT message : {WM_LBUTTONDOWN, WM_LBUTTONUP}) {
        SendMessageW(ListView_GetHeader(hCtrl), message, 0, MAKELPARAM(40, 5));
    }
}

void Fill(HWND hCtrl) {
    wchar_t text[] = L"one";
    TCITEMW tab{TCIF_TEXT, 0, 0, text, 0, 0, 0};
    TVINSERTSTRUCTW node{TVI_ROOT, TVI_LAST, {}};
    node.item.mask = TVIF_TEXT;
    node.item.pszText = text;
    LVCOLUMNW column{};
    column.mask = LVCF_WIDTH;
    column.cx = 80;
    LVITEMW item{};
    item.mask = LVIF_TEXT;
    item.pszText = LPSTR_TEXTCALLBACKW;
    wchar_t name[32];
    GetClassNameW(hCtrl, name, 32);
    const std::wstring className = name;
    for (int i = 0; i < 3; ++i) {
        if (className == L"ListBox") Sent(LB_ADDSTRING, 0, text)(hCtrl);
        if (className == L"ComboBox") Sent(CB_ADDSTRING, 0, text)(hCtrl);
        if (className == L"SysTabControl32") Sent(TCM_INSERTITEMW, 0, &tab)(hCtrl);
        if (className == L"SysTreeView32") {
            node.hParent = (HTREEITEM)SendMessageW(hCtrl, TVM_INSERTITEMW, 0, (LPARAM)&node);
        }
        if (className == L"SysListView32" && i == 0) Sent(LVM_INSERTCOLUMNW, 0, &column)(hCtrl);
        if (className == L"SysListView32") Sent(LVM_INSERTITEMW, 0, &item)(hCtrl);
    }
    if (className == L"msctls_trackbar32") Sent(TBM_SETPOS, 1, 50)(hCtrl);
}

const Drive kFocus = [](HWND hCtrl) { SetFocus(hCtrl); };
const Drive kUnfocus = Then(kFocus, [](HWND hCtrl) { SetFocus(GetParent(hCtrl)); });
const Drive kDraw = [](HWND hCtrl) { RedrawWindow(hCtrl, nullptr, nullptr, RDW_INVALIDATE | RDW_UPDATENOW); };
const Drive kOpen = Sent(CB_SHOWDROPDOWN, 1);
const Drive kDoubleClick = Sent(WM_LBUTTONDBLCLK, 0, MAKELPARAM(25, 8));
const Drive kEditTreeLabel = Then(kFocus, Tree(TVM_EDITLABELW, 0));
const Drive kEditListLabel = Then(kFocus, Sent(LVM_EDITLABELW));

const Control kControls[] = {
    {L"Button", BS_NOTIFY | BS_RADIOBUTTON,
     {{BN_CLICKED, FN_CLICK, Sent(BM_CLICK)}, {BN_DOUBLECLICKED, FN_DBLCLK, kDoubleClick},
      {BN_SETFOCUS, FN_SETFOCUS, kFocus}, {BN_KILLFOCUS, FN_KILLFOCUS, kUnfocus},
      {16, FN_SETFOCUS}, {17, FN_CLICK}, {BN_PAINT, FN_NONE}}},
    {L"Edit", 0,
     {{EN_UPDATE, FN_UPDATE, Sent(WM_CHAR, 'a')}, {EN_CHANGE, FN_CHANGE, Sent(EM_REPLACESEL, 0, L"a")},
      {EN_MAXTEXT, FN_MAXTEXT, Then(Sent(EM_LIMITTEXT, 1), Sent(EM_REPLACESEL, 0, L"ab"))},
      {EN_SETFOCUS, FN_SETFOCUS, kFocus}, {EN_KILLFOCUS, FN_KILLFOCUS, kUnfocus}, {EN_HSCROLL, FN_NONE}}},
    {L"ListBox", LBS_NOTIFY,
     {{LBN_SELCHANGE, FN_CHANGE, Key(VK_DOWN)}, {LBN_DBLCLK, FN_DBLCLK, kDoubleClick},
      {LBN_SETFOCUS, FN_SETFOCUS, kFocus}, {LBN_KILLFOCUS, FN_KILLFOCUS, kUnfocus},
      {LBN_SELCANCEL, FN_SELCANCEL}, {0xFFFE, FN_NONE}}},
    {L"ComboBox", CBS_DROPDOWN,
     {{CBN_SELCHANGE, FN_CHANGE, Key(VK_DOWN)}, {CBN_EDITUPDATE, FN_UPDATE, Sent(WM_CHAR, 'a')},
      {CBN_EDITCHANGE, FN_EDIT, Sent(WM_CHAR, 'a')}, {CBN_DROPDOWN, FN_DROPDOWN, kOpen},
      {CBN_CLOSEUP, FN_CLOSEUP, Then(kOpen, Sent(CB_SHOWDROPDOWN, 0))},
      {CBN_SELENDOK, FN_SELENDOK, Then(kOpen, Key(VK_RETURN))},
      {CBN_SELENDCANCEL, FN_SELCANCEL, Then(kOpen, Key(VK_ESCAPE))}, {CBN_SETFOCUS, FN_SETFOCUS, kFocus},
      {CBN_KILLFOCUS, FN_KILLFOCUS, kUnfocus}, {CBN_DBLCLK, FN_CLICK}}},
    {L"SysTabControl32", 0,
     {{TCN_SELCHANGING, FN_UPDATE, ClickSecondTab}, {TCN_SELCHANGE, FN_CHANGE, ClickSecondTab},
      {NM_CLICK, FN_CLICK, ClickSecondTab}, {NM_DBLCLK, FN_NONE}, {NM_CUSTOMDRAW, FN_NONE}}},
    {L"msctls_trackbar32", 0,
     {{TB_LINEUP, FN_CHANGE, Key(VK_LEFT)}, {TB_LINEDOWN, FN_CHANGE, Key(VK_RIGHT)},
      {TB_PAGEUP, FN_CHANGE, Key(VK_PRIOR)}, {TB_PAGEDOWN, FN_CHANGE, Key(VK_NEXT)},
      {TB_TOP, FN_CHANGE, Key(VK_HOME)}, {TB_BOTTOM, FN_CHANGE, Key(VK_END)},
      {TB_ENDTRACK, FN_NONE, Sent(WM_KEYUP, VK_LEFT)}, {NM_CUSTOMDRAW, FN_CUSTOMDRAW, kDraw},
      {TB_THUMBPOSITION, FN_UPDATE}, {TB_THUMBTRACK, FN_TRACK}}},
    {L"SysTreeView32", TVS_EDITLABELS | TVS_HASBUTTONS,
     {{TVN_SELCHANGINGW, FN_CHANGE, Tree(TVM_SELECTITEM, TVGN_CARET)},
      {TVN_SELCHANGEDW, FN_UPDATE, Tree(TVM_SELECTITEM, TVGN_CARET)},
      {TVN_ITEMEXPANDINGW, FN_EXPAND, Tree(TVM_EXPAND, TVE_EXPAND)},
      {TVN_ITEMEXPANDEDW, FN_EXPAND, Tree(TVM_EXPAND, TVE_EXPAND)},
      {TVN_DELETEITEMW, FN_DELETEITEM, Tree(TVM_DELETEITEM, 0)}, {TVN_KEYDOWN, FN_CLICK, Key(VK_DOWN)},
      {TVN_BEGINLABELEDITW, FN_EDIT, kEditTreeLabel},
      {TVN_ENDLABELEDITW, FN_UPDATE, Then(kEditTreeLabel, Sent(TVM_ENDEDITLABELNOW))},
      {NM_SETFOCUS, FN_SETFOCUS, kFocus}, {NM_KILLFOCUS, FN_KILLFOCUS, kUnfocus},
      {NM_CUSTOMDRAW, FN_CUSTOMDRAW, kDraw}, {NM_DBLCLK, FN_DBLCLK, kDoubleClick}, {NM_CLICK, FN_CLICK},
      {NM_RCLICK, FN_NONE}}},
    {L"SysListView32", LVS_REPORT | LVS_EDITLABELS,
     {{LVN_ITEMCHANGING, FN_CHANGE, ChangeListItem}, {LVN_ITEMCHANGED, FN_UPDATE, ChangeListItem},
      {LVN_DELETEITEM, FN_DELETEITEM, Sent(LVM_DELETEITEM)}, {LVN_KEYDOWN, FN_CLICK, Key(VK_DOWN)},
      {LVN_BEGINLABELEDITW, FN_EDIT, kEditListLabel},
      {LVN_ENDLABELEDITW, FN_UPDATE, Then(kEditListLabel, Sent(LVM_CANCELEDITLABEL))},
      {LVN_GETDISPINFOW, FN_GETDISPINFO, ReadListItem}, {LVN_COLUMNCLICK, FN_COLUMNCLICK, ClickColumn},
      {NM_SETFOCUS, FN_SETFOCUS, kFocus}, {NM_KILLFOCUS, FN_KILLFOCUS, kUnfocus},
      {NM_DBLCLK, FN_DBLCLK, kDoubleClick}, {NM_CLICK, FN_CLICK}, {NM_CUSTOMDRAW, FN_CUSTOMDRAW, kDraw}}},
    {L"SysHeader32", 0, {{HDN_ENDTRACKW, FN_TRACK}, {HDN_ITEMCLICKW, FN_NONE}, {NM_CUSTOMDRAW, FN_NONE, kDraw}}},
    {L"ScrollBar", SBS_HORZ, {{SB_LINERIGHT, FN_NONE, Key(VK_RIGHT)}}},
    {L"Static", SS_NOTIFY, {{STN_CLICKED, FN_NONE, Sent(WM_LBUTTONDOWN)}, {STN_DBLCLK, FN_NONE, kDoubleClick}}},
    {L"msctls_progress32", 0, {{NM_CLICK, FN_NONE}}},
    {L"RichEdit20W", 0, {{EN_CHANGE, FN_NONE}}},
};

struct NotifyControls : testing::TestWithParam<Control> {
    NotifyWindow window;
};

void SendDirectly(HWND parent, HWND hCtrl, const Row& row, bool scrolls) {
    NMHDR header{hCtrl, 77, row.code};
    if (row.code >= 0x80000000) Sent(WM_NOTIFY, 77, &header)(parent);
    else Sent(scrolls ? WM_HSCROLL : WM_COMMAND, scrolls ? row.code : MAKEWPARAM(77, row.code), hCtrl)(parent);
}

} // namespace

TEST_P(NotifyControls, Odd31NotificationsBecomeTheFunctionOfTheirControl) {
    LoadLibraryW(L"riched20.dll");
    for (const Row& row : GetParam().rows) {
        SCOPED_TRACE(row.code);
        const HWND hCtrl = window.Add(GetParam().className, GetParam().style);
        Fill(hCtrl);
        window.events.clear();
        if (row.drive) row.drive(hCtrl);
        else SendDirectly(window.Get(), hCtrl, row, GetParam().className == std::wstring(L"msctls_trackbar32"));
        const auto event = std::find_if(window.events.begin(), window.events.end(), [&](const auto& candidate) {
            return candidate.code == row.code && candidate.record.hCtrl == hCtrl;
        });
        ASSERT_NE(event, window.events.end()) << "the control did not send it";
        EXPECT_EQ(event->record.Function, row.function);
        EXPECT_EQ(event->record.Kind, event->message == WM_COMMAND ? NK_COMMAND : NK_CONTROL);
        EXPECT_EQ(event->record.hWnd, window.Get());
        EXPECT_EQ(event->record.CtrlId, 77);
        EXPECT_EQ(event->record.Data1, event->message == WM_COMMAND ? 0 : static_cast<int>(row.code));
        EXPECT_EQ(event->record.Data2, event->message == WM_NOTIFY ? event->lParam : 0);
        DestroyWindow(hCtrl);
    }
}

INSTANTIATE_TEST_SUITE_P(Each, NotifyControls, testing::ValuesIn(kControls), [](const auto& control) {
    const std::wstring name = control.param.className;
    return std::string(name.begin() + static_cast<int>(name.rfind(L'_') + 1), name.end());
});
