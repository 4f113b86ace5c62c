#include <foundation/ReadableMemory.h>
#include <messaging/host/HostRequest.h>
#include <messaging/office/DialogEntries.h>
#include <tessel/messaging/host.h>
#include <tessel/messaging/mailbox.h>

#include <algorithm>
#include <iterator>

namespace {

using tessel::HostRequest;

/// Messages of the frame window that are passed to the program.
constexpr UINT kFrameMessages[] = {WM_PAINT,         WM_NOTIFY,      WM_TIMER,         WM_MENUSELECT,
                                   WM_MOUSEMOVE,     WM_LBUTTONDOWN, WM_LBUTTONDBLCLK, WM_RBUTTONDOWN,
                                   WM_RBUTTONDBLCLK, WM_MBUTTONDOWN, WM_MBUTTONDBLCLK};

/// Messages of a dialog that are passed to the program and count as handled.
constexpr UINT kDialogMessages[] = {
    WM_SIZE,          WM_NOTIFY,      WM_INITDIALOG,    WM_HSCROLL,     WM_VSCROLL,       WM_MOUSEMOVE,  WM_LBUTTONDOWN,
    WM_LBUTTONDBLCLK, WM_RBUTTONDOWN, WM_RBUTTONDBLCLK, WM_MBUTTONDOWN, WM_MBUTTONDBLCLK, WM_PRINTCLIENT};

/// Messages that request a control's colours.
constexpr UINT kColorMessages[] = {WM_CTLCOLOREDIT, WM_CTLCOLORLISTBOX, WM_CTLCOLORDLG, WM_CTLCOLORSTATIC};

template <std::size_t Count> bool IsOneOf(const UINT (&messages)[Count], UINT message) {
    return std::find(std::begin(messages), std::end(messages), message) != std::end(messages);
}

} // namespace

LRESULT CALLBACK OSClass::WindowProc(HWND hWnd, UINT message, WPARAM wParam, LPARAM lParam) {
    int handled = 0;
    if (m_pHost == nullptr) {
        // GUARD-22: there is no host.
    } else if (message == WM_COMMAND || message == MAILBOX_NOTIFICATION) {
        handled = ProcessOsAPIs(hWnd, message, wParam, lParam);
    } else if (IsOneOf(kFrameMessages, message)) {
        handled = WmCommand(hWnd, message, wParam, lParam);
    } else if (IsOneOf(kColorMessages, message)) {
        const LRESULT brush = ControlColorMsg(lParam, wParam);
        if (brush != 0) return brush;
    } else if (message == WM_CLOSE) {
        m_pHost->OnClose();
        PostQuitMessage(0);
    }
    return handled != 0 ? lParam : DefWindowProcW(hWnd, message, wParam, lParam);
}

INT_PTR CALLBACK OSClass::DlgProc(HWND hDlg, UINT message, WPARAM wParam, LPARAM lParam) {
    if (m_pHost == nullptr) return FALSE; // GUARD-22
    if (IsOneOf(kColorMessages, message)) return ControlColorMsg(lParam, wParam);
    if (IsOneOf(kDialogMessages, message)) {
        (void)WmCommand(hDlg, message, wParam, lParam); // always 0
        return TRUE;
    }
    switch (message) {
    case WM_COMMAND: (void)ProcessOsAPIs(hDlg, message, wParam, lParam); return TRUE;
    case WM_SETCURSOR: return OnDialogCursor(hDlg, wParam, lParam);
    case WM_SETFOCUS: return TRUE;
    case WM_CLOSE:
        if (GetParent(hDlg) != nullptr) (void)DestroyWindow(hDlg); // cannot fail: it belongs to this thread
        (void)WmCommand(hDlg, message, wParam, lParam);
        return TRUE;
    case WM_DRAWITEM: (void)WmCommand(hDlg, message, wParam, lParam); return FALSE;
    case WM_NCDESTROY: // GUARD-205: its handle may be reused
        if (m_pHost->m_hActiveDialog == hDlg) m_pHost->m_hActiveDialog = nullptr;
        tessel::RemoveDialogEntry(hDlg);
        return FALSE;
    case WM_PALETTECHANGED:
    case WM_QUERYNEWPALETTE: return OnPaletteMessage(hDlg, message, wParam);
    default: return FALSE;
    }
}

INT_PTR OSClass::OnDialogCursor(HWND hDlg, WPARAM wParam, LPARAM lParam) {
    m_pHost->m_hActiveDialog = hDlg;
    if (m_iActivated == 0) { // ODD-61: the first time in the process is not handled
        m_iActivated = 1;
        return FALSE;
    }
    (void)ProcessOsAPIs(hDlg, WM_SETCURSOR, wParam, lParam);
    return TRUE;
}

INT_PTR OSClass::OnPaletteMessage(HWND hDlg, UINT message, WPARAM wParam) {
    if (message == WM_PALETTECHANGED) {
        DWORD changer = 0;
        DWORD own = 0;
        (void)GetWindowThreadProcessId(reinterpret_cast<HWND>(wParam), &changer); // 0 if the window is gone
        (void)GetWindowThreadProcessId(hDlg, &own);
        if (changer != own) PaletteFlag = 1;
        return TRUE;
    }
    if (PaletteFlag == 0) return FALSE;
    ControlPaletteChanged(hDlg);
    PaletteFlag = 0;
    return TRUE;
}

int OSClass::ProcessOsAPIs(HWND hWnd, UINT message, WPARAM wParam, LPARAM& lParam) {
    if (wParam != tessel::kCreateDialogRequest && wParam != tessel::kNotifyRequest) {
        return WmCommand(hWnd, message, wParam, lParam);
    }
    if (m_pHost == nullptr) return 0; // GUARD-22
    HostRequest request;
    if (!tessel::ReadRecord(lParam, request)) { // GUARD-24: any process can post the request
        lParam = 0;
    } else if (wParam == tessel::kCreateDialogRequest) {
        lParam = reinterpret_cast<LPARAM>(m_pHost->MakeRequestedDialog(static_cast<int>(request.dialogId), request.hWnd,
                                                                       reinterpret_cast<HINSTANCE>(request.argument)));
    } else {
        (void)m_pHost->RequestWndNotify(request.hWnd,
                                        static_cast<unsigned long>(request.argument)); // shows a box when full
        lParam = 1;
    }
    return 1;
}

HWND OSClass::MakeRequestedDialog(int dialogId, HWND parent, HINSTANCE module) {
    const HWND dialog =
        CreateDialogWindow(module == nullptr ? m_hInstance : module, parent == nullptr ? m_hFrame : parent, dialogId);
    tessel::AddDialogEntry(dialog, static_cast<unsigned long>(dialogId)); // ODD-37: even if it could not be created
    return dialog;
}

HWND OSClass::CreateDialogWindow(HINSTANCE module, HWND parent, int dialogId) {
    return CreateDialogParamW(module, MAKEINTRESOURCEW(dialogId), parent, &DlgProc, dialogId);
}

int OSClass::WmCommand(HWND hWnd, UINT message, WPARAM wParam, LPARAM& lParam) {
    if (m_pHost == nullptr) return 0; // GUARD-22
    if (message == WM_PAINT) {
        DRAWITEMSTRUCT item{};
        item.hwndItem = hWnd;
        (void)GetClientRect(hWnd, &item.rcItem); // empty if the window is gone
        item.hDC = GetDC(hWnd);
        PaintWithOwnerBrush(reinterpret_cast<LPARAM>(&item));
        (void)ReleaseDC(hWnd, item.hDC);
    } else if (message == WM_DRAWITEM) {
        PaintWithOwnerBrush(lParam);
    }
    m_pHost->OnMessage(hWnd, message, wParam, lParam);
    return 0;
}
