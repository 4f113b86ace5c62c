#include "BoxResources.h"

#include <fenestra/dialog.h>
#include <gtest/gtest.h>
#include <tessel/views.h>

#include <commctrl.h>

namespace {

/// A view that keeps the code of the last notification that reached its base.
template <class View> struct Listening : View {
    unsigned long OnNotification(NMHDR& header) override {
        code = header.code;
        return 77;
    }
    UINT code = 0;
};

template <class View> class Views : public testing::Test {
protected:
    Listening<View> view;
};
using BothViews = testing::Types<CListViewOrca, CTreeViewOrca>;
TYPED_TEST_SUITE(Views, BothViews, );

/// A dialog that hands its list's notifications to a view.
class ListDialog : public CDialog {
public:
    Listening<CListViewOrca> view;
    int ended = 0;

protected:
    bool OnNotify(int id, NMHDR* header, unsigned long& result) override {
        NOTIFY notify{};
        notify.Kind = NK_CONTROL;
        notify.Data2 = reinterpret_cast<LPARAM>(header);
        result = view.OnNotify(&notify);
        return id == IDC_LIST;
    }
    bool OnCommand(unsigned int, int id, HWND) override {
        ended = id;
        return End(id);
    }
};

} // namespace

TYPED_TEST(Views, PassANotificationOnToTheBaseAndItsResultBack) {
    NMHDR header{nullptr, 1, 0xFFFFFFF0};
    NOTIFY notify{};
    notify.Kind = NK_CONTROL;
    notify.Data2 = reinterpret_cast<LPARAM>(&header);
    EXPECT_EQ(this->view.OnNotify(&notify), 77u);
    EXPECT_EQ(this->view.code, header.code);
    EXPECT_EQ(this->view.GetHandle(), nullptr);
}

TYPED_TEST(Views, IgnoreRecordsOfOtherKinds) {
    NMHDR header{nullptr, 1, 5};
    NOTIFY notify{};
    notify.Data2 = reinterpret_cast<LPARAM>(&header);
    for (unsigned kind = 0; kind <= NK_SPOOLER; ++kind) {
        if (kind == NK_CONTROL) continue;
        notify.Kind = kind;
        EXPECT_EQ(this->view.OnNotify(&notify), 0u);
    }
    EXPECT_EQ(this->view.code, 0u);
}

TYPED_TEST(Views, Odd55PassTheNullHeaderOfAScrollRequestOn) {
    NOTIFY notify{};
    notify.Kind = NK_CONTROL;
    EXPECT_EQ(this->view.OnNotify(&notify), 0u);
    EXPECT_EQ(this->view.code, 0u);
}

TEST(Dialog, RunsModelessAndAnswersTheNotificationsOfItsList) {
    const INITCOMMONCONTROLSEX controls{sizeof controls, ICC_LISTVIEW_CLASSES};
    InitCommonControlsEx(&controls);
    ListDialog dialog;
    const HWND window = dialog.RunModeless(GetModuleHandleW(nullptr), IDD_BOX, nullptr);
    ASSERT_EQ(dialog.GetHandle(), window);
    NMHDR header{GetDlgItem(window, IDC_LIST), IDC_LIST, static_cast<UINT>(NM_CLICK)};
    SendMessageW(window, WM_NOTIFY, IDC_LIST, reinterpret_cast<LPARAM>(&header));
    EXPECT_EQ(GetWindowLongPtrW(window, DWLP_MSGRESULT), 77);
    EXPECT_EQ(dialog.view.code, static_cast<UINT>(NM_CLICK));
    SendMessageW(window, WM_COMMAND, 8, 0);
    EXPECT_EQ(dialog.ended, 8);
    EXPECT_EQ(dialog.GetHandle(), nullptr);
    EXPECT_FALSE(IsWindow(window));
}
