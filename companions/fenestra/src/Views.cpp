#include <fenestra/listview.h>
#include <fenestra/treeview.h>

#include <commctrl.h>

namespace {

void AddStyles(HWND control, unsigned long style, UINT extendedMessage, unsigned long extendedStyle) {
    if (control == nullptr) return;
    if (style != 0) {
        const LONG former = GetWindowLongW(control, GWL_STYLE);
        (void)SetWindowLongW(control, GWL_STYLE,
                             former | static_cast<LONG>(style)); // fails only if the control no longer exists
    }
    if (extendedStyle != 0) {
        (void)SendMessageW(control, extendedMessage, extendedStyle,
                           static_cast<LPARAM>(extendedStyle)); // returns the previous style
    }
}

} // namespace

CListView::CListView(int id, HWND parent, unsigned long style, unsigned long extendedStyle)
    : CWnd(parent == nullptr ? nullptr : GetDlgItem(parent, id)) {
    AddStyles(m_hWnd, style, LVM_SETEXTENDEDLISTVIEWSTYLE, extendedStyle);
}

bool CListView::OnNotify(NMHDR* header, unsigned long& result) {
    if (header == nullptr) return false;
    result = OnNotification(*header);
    return true;
}

unsigned long CListView::OnNotification(NMHDR& /*header*/) {
    return 0;
}

CTreeView::CTreeView(HWND window, unsigned long style, unsigned long extendedStyle) : CWnd(window) {
    AddStyles(m_hWnd, style, TVM_SETEXTENDEDSTYLE, extendedStyle);
}

bool CTreeView::OnNotify(NMHDR* header, unsigned long& result) {
    if (header == nullptr) return false;
    result = OnNotification(*header);
    return true;
}

unsigned long CTreeView::OnNotification(NMHDR& /*header*/) {
    return 0;
}
