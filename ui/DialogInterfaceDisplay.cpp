#include <foundation/Report.h>
#include <ui/DialogInterfaceCommands.h>
#include <ui/GdiHandles.h>

#include <algorithm>
#include <iterator>

using tessel::CommandForType;
using tessel::DialogRequest;

namespace {

constexpr tessel::ReportSite kUnknownAction{"CDialog", 440};

/// A display action that changes the z-order.
struct ZOrder {
    DISPLAY_ACTION action;
    HWND behind;
    UINT flags;
};

constexpr UINT kInPlace = SWP_NOSIZE | SWP_NOMOVE;

const ZOrder kZOrders[] = {
    {DA_TOP, HWND_TOP, kInPlace | SWP_SHOWWINDOW | SWP_NOOWNERZORDER},
    {DA_TOPMOST_ASYNC, HWND_TOPMOST, kInPlace | SWP_SHOWWINDOW | SWP_ASYNCWINDOWPOS},
    {DA_TOPMOST, HWND_TOPMOST, kInPlace | SWP_SHOWWINDOW | SWP_ASYNCWINDOWPOS | SWP_NOOWNERZORDER},
    {DA_TOPMOST_HIDE, HWND_TOPMOST, kInPlace | SWP_HIDEWINDOW},
    {DA_BOTTOM, HWND_BOTTOM, kInPlace},
    {DA_SHOW_IN_PLACE, HWND_NOTOPMOST, kInPlace | SWP_NOZORDER | SWP_NOACTIVATE | SWP_SHOWWINDOW | SWP_NOOWNERZORDER},
};

/// Whether a window or one of its children, as in a combo box, has the focus; also for another thread's window.
bool HasFocus(HWND hWnd) {
    GUITHREADINFO info{};
    info.cbSize = sizeof info;
    if (!GetGUIThreadInfo(GetWindowThreadProcessId(hWnd, nullptr), &info)) return false;
    return info.hwndFocus == hWnd || IsChild(hWnd, info.hwndFocus);
}

/// ShowWindow and EnableWindow return the previous state: they fail only if the window does not exist.
int ShowOrEnable(HWND control, DISPLAY_ACTION action) {
    switch (action) {
    case DA_SHOW: ShowWindow(control, SW_SHOW); break;
    case DA_HIDE: ShowWindow(control, SW_HIDE); break;
    default: EnableWindow(control, action == DA_ENABLE);
    }
    return IsWindow(control) ? 0 : 1;
}

int ChangeZOrder(HWND control, const ZOrder& order) {
    const bool isTopmost = (GetWindowLongPtrW(control, GWL_EXSTYLE) & WS_EX_TOPMOST) != 0;
    const HWND behind = order.action == DA_TOP && isTopmost ? HWND_NOTOPMOST : order.behind;
    return SetWindowPos(control, behind, 0, 0, 0, 0, order.flags) ? 0 : 1;
}

int Refresh(const DialogRequest& request) {
    (void)request.dialog->RefreshWindow(request.control.hWnd);
    UpdateWindow(request.control.hWnd);
    return 1; // ODD-41: reports failure even after success
}

int SelectTab(DialogRequest& request) {
    request.Send(TCM_SETCURSEL, request.index);
    return request.Send(TCM_GETCURSEL) == request.index ? 0 : 1;
}

/// Clearing the selection returns the same value as an error.
int SelectInList(DialogRequest& request) {
    return request.Send(tessel::MessagesOf(request.control).select, request.index) == LB_ERR && request.index != LB_ERR
               ? 1
               : 0;
}

int SelectInListView(DialogRequest& request) {
    if (request.images != nullptr) {
        return tessel::SetListViewState(request.control, request.index, 1, LVIS_FOCUSED | LVIS_SELECTED);
    }
    return request.Send(LVM_UPDATE, request.index) != 0 ? 0 : 1;
}

int TakeFocus(HWND target, HWND control) {
    SetFocus(control);
    if (HasFocus(control)) return 0;
    SendMessageW(target, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(control), TRUE);
    return HasFocus(control) ? 0 : 1;
}

int Focus(DialogRequest& request) {
    static constexpr CommandForType kByType[] = {
        {FT_TAB, SelectTab},
        {FT_LISTBOX, SelectInList},
        {FT_COMBOBOX, SelectInList},
        {FT_LISTVIEW, SelectInListView},
    };
    const int selected = tessel::RunForType(kByType, request);
    return TakeFocus(request.dialog->GetHandle(), request.control.hWnd) == 0 ? selected : 1;
}

} // namespace

int tessel::commands::Display(DialogRequest& request) {
    const auto order = std::find_if(std::begin(kZOrders), std::end(kZOrders),
                                    [&request](const ZOrder& candidate) { return candidate.action == request.action; });
    if (order != std::end(kZOrders)) return ChangeZOrder(request.control.hWnd, *order);
    switch (request.action) {
    case DA_SHOW:
    case DA_HIDE:
    case DA_ENABLE:
    case DA_DISABLE: return ShowOrEnable(request.control.hWnd, request.action);
    case DA_REFRESH: return Refresh(request);
    case DA_FOCUS: return Focus(request);
    default: tessel::ReportUnless(false, "Invalid Display action specified.", kUnknownAction); return 1;
    }
}

int tessel::commands::Position(DialogRequest& request) {
    constexpr UINT kFlags = SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE;
    return SetWindowPos(request.control.hWnd, nullptr, request.x, request.y, 0, 0, kFlags) ? 0 : 1;
}

int tessel::commands::Size(DialogRequest& request) {
    constexpr UINT kFlags = SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE;
    return SetWindowPos(request.control.hWnd, nullptr, 0, 0, request.x, request.y, kFlags) ? 0 : 1;
}

int tessel::commands::TextColour(DialogRequest& request) {
    const tessel::WindowContext context(request.control.hWnd);
    return context.Get() != nullptr && SetTextColor(context.Get(), request.color) != CLR_INVALID ? 0 : 1;
}

int tessel::commands::SetEditSelection(DialogRequest& request) {
    const LPARAM positions = MAKELPARAM(request.x, request.y);
    if (request.control.type == FT_COMBOBOX) return request.Send(CB_SETEDITSEL, 0, positions) != CB_ERR ? 0 : 1;
    // ODD-43: an edit takes both packed positions for the end of a selection that starts at 0.
    if (request.control.type == FT_EDIT) request.Send(EM_SETSEL, 0, positions);
    return 0;
}
