#include <foundation/Report.h>
#include <ui/DialogInterfaceCommands.h>

#include <algorithm>
#include <iterator>

namespace {

constexpr unsigned int kUnknownActionLine = 440;

/// A display action that moves a window in the order of windows.
struct Order {
    DISPLAY_ACTION action;
    HWND (*behind)(HWND hWnd);
    UINT flags;
};

HWND Top(HWND hWnd) {
    return (GetWindowLongPtrW(hWnd, GWL_EXSTYLE) & WS_EX_TOPMOST) != 0 ? HWND_NOTOPMOST : HWND_TOP;
}

HWND Topmost(HWND) {
    return HWND_TOPMOST;
}

HWND NotTopmost(HWND) {
    return HWND_NOTOPMOST;
}

HWND Bottom(HWND) {
    return HWND_BOTTOM;
}

constexpr UINT kInPlace = SWP_NOSIZE | SWP_NOMOVE;

constexpr Order kOrders[] = {
    {DA_TOP, Top, kInPlace | SWP_SHOWWINDOW | SWP_NOOWNERZORDER},
    {DA_TOPMOST_ASYNC, Topmost, kInPlace | SWP_SHOWWINDOW | SWP_ASYNCWINDOWPOS},
    {DA_TOPMOST, Topmost, kInPlace | SWP_SHOWWINDOW | SWP_ASYNCWINDOWPOS | SWP_NOOWNERZORDER},
    {DA_TOPMOST_HIDE, Topmost, kInPlace | SWP_HIDEWINDOW},
    {DA_BOTTOM, Bottom, kInPlace},
    {DA_SHOW_IN_PLACE, NotTopmost, kInPlace | SWP_NOZORDER | SWP_NOACTIVATE | SWP_SHOWWINDOW | SWP_NOOWNERZORDER},
};

/// Whether the keyboard is with a window or inside it, as in a combo box; also for another thread's window.
bool HasFocus(HWND hWnd) {
    GUITHREADINFO info{};
    info.cbSize = sizeof info;
    if (!GetGUIThreadInfo(GetWindowThreadProcessId(hWnd, nullptr), &info)) return false;
    return info.hwndFocus == hWnd || IsChild(hWnd, info.hwndFocus);
}

} // namespace

struct DIALOG_INTERFACE::Commands::Showing {
    /// ShowWindow and EnableWindow answer with the earlier state: they fail only when there is no window.
    static int ShowOrEnable(HWND control, DISPLAY_ACTION action) {
        switch (action) {
        case DA_SHOW: ShowWindow(control, SW_SHOW); break;
        case DA_HIDE: ShowWindow(control, SW_HIDE); break;
        default: EnableWindow(control, action == DA_ENABLE);
        }
        return IsWindow(control) ? 0 : 1;
    }

    static int ReOrder(const DIALOG_INTERFACE& dialog, const Order& order) {
        return SetWindowPos(dialog.hCtrl, order.behind(dialog.hCtrl), 0, 0, 0, 0, order.flags) ? 0 : 1;
    }

    static int Refresh(DIALOG_INTERFACE& dialog) {
        const HWND control = dialog.hCtrl; // the program's own refresh may use the object
        (void)dialog.RefreshWindow(control);
        UpdateWindow(control);
        return 1; // ODD-41: reported as failed even when it worked
    }

    static int SelectTab(DIALOG_INTERFACE& dialog, wchar_t*) {
        dialog.Send(TCM_SETCURSEL, dialog.Index);
        return dialog.Send(TCM_GETCURSEL) == dialog.Index ? 0 : 1;
    }

    /// Taking the selection away is answered like an error.
    static int SelectInList(DIALOG_INTERFACE& dialog, wchar_t*) {
        return dialog.Send(Messages(dialog).select, dialog.Index) == LB_ERR && dialog.Index != LB_ERR ? 1 : 0;
    }

    static int SelectInListView(DIALOG_INTERFACE& dialog, wchar_t*) {
        if (dialog.hImageList != nullptr) return dialog.SetListViewFocus(dialog.Index, 1);
        return dialog.Send(LVM_UPDATE, dialog.Index) != 0 ? 0 : 1;
    }

    static int TakeFocus(HWND target, HWND control) {
        SetFocus(control);
        if (HasFocus(control)) return 0;
        SendMessageW(target, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(control), TRUE);
        return HasFocus(control) ? 0 : 1;
    }

    static int Focus(DIALOG_INTERFACE& dialog) {
        static constexpr ForType kByType[] = {
            {FT_TAB, SelectTab},
            {FT_LISTBOX, SelectInList},
            {FT_COMBOBOX, SelectInList},
            {FT_LISTVIEW, SelectInListView},
        };
        const int selected = Run(kByType, dialog, nullptr);
        return TakeFocus(dialog.hDialog, dialog.hCtrl) == 0 ? selected : 1;
    }
};

int DIALOG_INTERFACE::Commands::Display(DIALOG_INTERFACE& dialog, wchar_t*) {
    const auto order = std::find_if(std::begin(kOrders), std::end(kOrders),
                                    [&dialog](const Order& candidate) { return candidate.action == dialog.Action; });
    if (order != std::end(kOrders)) return Showing::ReOrder(dialog, *order);
    switch (dialog.Action) {
    case DA_SHOW:
    case DA_HIDE:
    case DA_ENABLE:
    case DA_DISABLE: return Showing::ShowOrEnable(dialog.hCtrl, dialog.Action);
    case DA_REFRESH: return Showing::Refresh(dialog);
    case DA_FOCUS: return Showing::Focus(dialog);
    default: tessel::ReportUnless(false, "Invalid Display action specified.", "CDialog", kUnknownActionLine); return 1;
    }
}

int DIALOG_INTERFACE::Commands::Position(DIALOG_INTERFACE& dialog, wchar_t*) {
    constexpr UINT kFlags = SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE;
    return SetWindowPos(dialog.hCtrl, nullptr, dialog.X, dialog.Y, 0, 0, kFlags) ? 0 : 1;
}

int DIALOG_INTERFACE::Commands::Size(DIALOG_INTERFACE& dialog, wchar_t*) {
    constexpr UINT kFlags = SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE;
    return SetWindowPos(dialog.hCtrl, nullptr, 0, 0, dialog.X, dialog.Y, kFlags) ? 0 : 1;
}

int DIALOG_INTERFACE::Commands::TextColour(DIALOG_INTERFACE& dialog, wchar_t*) {
    const HDC context = GetDC(dialog.hCtrl);
    if (context == nullptr) return 1;
    const bool set = SetTextColor(context, dialog.Color) != CLR_INVALID;
    ReleaseDC(dialog.hCtrl, context);
    return set ? 0 : 1;
}

int DIALOG_INTERFACE::Commands::SetEditSelection(DIALOG_INTERFACE& dialog, wchar_t*) {
    const LPARAM positions = MAKELPARAM(dialog.X, dialog.Y);
    if (dialog.CtrlType == FT_COMBOBOX) return dialog.Send(CB_SETEDITSEL, 0, positions) != CB_ERR ? 0 : 1;
    // ODD-43: an edit takes both positions, packed, for the end of a selection that starts at 0.
    if (dialog.CtrlType == FT_EDIT) dialog.Send(EM_SETSEL, 0, positions);
    return 0;
}
