#include "AddStyles.h"

#include <fenestra/listview.h>

#include <commctrl.h>

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
