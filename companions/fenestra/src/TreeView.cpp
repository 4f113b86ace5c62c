#include "AddStyles.h"

#include <fenestra/treeview.h>

#include <commctrl.h>

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
