#include "BoxResources.h"

#include <fenestra/dialog.h>
#include <gtest/gtest.h>
#include <tessel/ui/views.h>

#include <commctrl.h>

namespace {

/// A view whose base answers a notification with its code.
template <class View> struct Listening : View {
    unsigned long OnNotification(NMHDR& header) override { return header.code; }
};

template <class View> void ExpectForwarding() {
    Listening<View> view;
    NMHDR header{nullptr, 1, 5};
    NOTIFY notify{};
    notify.Data2 = reinterpret_cast<LPARAM>(&header);
    for (notify.Kind = 0; notify.Kind <= NK_SPOOLER; ++notify.Kind) {
        EXPECT_EQ(view.OnNotify(&notify), notify.Kind == NK_CONTROL ? 5u : 0u) << notify.Kind;
    }
    notify.Kind = NK_CONTROL;
    notify.Data2 = 0;
    EXPECT_EQ(view.OnNotify(&notify), 0u);
}

class ListDialog : public CDialog {
    bool OnNotify(int id, NMHDR* header, unsigned long& result) override {
        result = header->code;
        return id == IDC_LIST;
    }
    bool OnCommand(unsigned int, int id, HWND) override { return End(id); }
};

} // namespace

TEST(Views, Odd55PassControlRecordsOnToTheBaseAlsoThoseWithoutAHeader) {
    ExpectForwarding<CListViewOrca>();
    ExpectForwarding<CTreeViewOrca>();
}

TEST(CompanionDialog, RunsModelessAndAnswersTheNotificationsOfItsList) {
    const INITCOMMONCONTROLSEX controls{sizeof controls, ICC_LISTVIEW_CLASSES};
    InitCommonControlsEx(&controls);
    ListDialog dialog;
    const HWND window = dialog.RunModeless(GetModuleHandleW(nullptr), IDD_BOX, nullptr);
    dialog = ListDialog();
    ASSERT_EQ(dialog.GetHandle(), window) << "kept";
    NMHDR header{GetDlgItem(window, IDC_LIST), IDC_LIST, 77};
    SendMessageW(window, WM_NOTIFY, IDC_LIST, reinterpret_cast<LPARAM>(&header));
    EXPECT_EQ(GetWindowLongPtrW(window, DWLP_MSGRESULT), 77);
    SendMessageW(window, WM_COMMAND, 8, 0);
    EXPECT_EQ(dialog.GetHandle(), nullptr);
}
