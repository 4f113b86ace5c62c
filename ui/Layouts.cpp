#include <foundation/Layout.h>
#include <tessel/ui.h>
#include <ui/BrushTable.h>

using tessel::kOn32Bits;

static_assert(!kOn32Bits || sizeof(tessel::BrushEntry) == 40);

struct CMessageBoxLayout {
    static_assert(offsetof(CMessageBox, m_hOwner) == sizeof(CDialog));
    static_assert(offsetof(CMessageBox, m_pText) == sizeof(CDialog) + sizeof(void*));
    static_assert(offsetof(CMessageBox, m_pCaption) == sizeof(CDialog) + 2 * sizeof(void*));
    static_assert(offsetof(CMessageBox, m_uiType) == sizeof(CDialog) + 3 * sizeof(void*));
    static_assert(offsetof(CMessageBox, m_Resources) == sizeof(CDialog) + 4 * sizeof(void*));
    static_assert(offsetof(CMessageBox::RESOURCES, TextId) == 4);
    static_assert(offsetof(CMessageBox::RESOURCES, ButtonIds) == 8);
    static_assert(!kOn32Bits || sizeof(CMessageBox) == sizeof(CDialog) + 28);
};

struct DialogInterfaceLayout {
    static_assert(offsetof(DIALOG_INTERFACE, hOwnDialog) == sizeof(void*));
    static_assert(offsetof(DIALOG_INTERFACE, hCtrl) == 3 * sizeof(void*));
    static_assert(offsetof(DIALOG_INTERFACE, CtrlId) == 4 * sizeof(void*));
    static_assert(!kOn32Bits || offsetof(DIALOG_INTERFACE, Action) == 28);
    static_assert(!kOn32Bits || offsetof(DIALOG_INTERFACE, Index) == 40);
    static_assert(!kOn32Bits || offsetof(DIALOG_INTERFACE, Data) == 48);
    static_assert(!kOn32Bits || offsetof(DIALOG_INTERFACE, hImageList) == 56);
    static_assert(!kOn32Bits || offsetof(DIALOG_INTERFACE, LVSelected) == 64);
    static_assert(!kOn32Bits || sizeof(DIALOG_INTERFACE) == 80);
};

static_assert(offsetof(NOTIFY, Function) == 4);
static_assert(offsetof(NOTIFY, hWnd) == 8);
static_assert(!kOn32Bits || offsetof(NOTIFY, hCtrl) == 12);
static_assert(!kOn32Bits || offsetof(NOTIFY, CtrlId) == 16);
static_assert(!kOn32Bits || offsetof(NOTIFY, Data1) == 20);
static_assert(offsetof(NOTIFY, Data1Hi) == offsetof(NOTIFY, Data1) + 2);
static_assert(!kOn32Bits || offsetof(NOTIFY, Data2) == 24);
static_assert(offsetof(NOTIFY, Data2Hi) == offsetof(NOTIFY, Data2) + 2);
static_assert(!kOn32Bits || offsetof(NOTIFY, Data3) == 28);
static_assert(!kOn32Bits || offsetof(NOTIFY, Data4) == 32);
static_assert(!kOn32Bits || offsetof(NOTIFY, Data5) == 36);
static_assert(!kOn32Bits || sizeof(NOTIFY) == 40);

struct hWndStoreLayout {
    static_assert(offsetof(hWndStore, m_hWnd) == 0);
    static_assert(offsetof(hWndStore, Cursor) == sizeof(void*));
    static_assert(sizeof(hWndStore) == 2 * sizeof(void*));
};

struct FormatSysMsgLayout {
    static_assert(offsetof(FormatSysMsg, m_Notify) == sizeof(void*));
    static_assert(offsetof(FormatSysMsg, m_pListBoxLock) == sizeof(void*) + sizeof(NOTIFY));
    static_assert(sizeof(FormatSysMsg) == 2 * sizeof(void*) + sizeof(NOTIFY));
};

static_assert(sizeof(CListViewOrca) == sizeof(CListView));
static_assert(sizeof(CTreeViewOrca) == sizeof(CTreeView));
