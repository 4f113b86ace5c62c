#include <foundation/Permit.h>
#include <tessel/ui/cursor.h>
#include <tessel/ui/notify.h>
#include <ui/ControlMessage.h>

#include <memory>
#include <new>

namespace {

constexpr unsigned long kLockTimeoutMs = 100;

/// The middle of an item on the screen.
/// @return false: the list box has no such item
bool ItemCentre(HWND hListBox, int index, POINT& centre) {
    RECT item{};
    const auto area = reinterpret_cast<LPARAM>(&item);
    if (tessel::QueryControl(hListBox, LB_GETITEMRECT, static_cast<WPARAM>(index), area).value_or(LB_ERR) == LB_ERR) {
        return false;
    }
    centre = {(item.left + item.right) / 2, (item.top + item.bottom) / 2};
    return ClientToScreen(hListBox, &centre) != FALSE;
}

} // namespace

int FormatSysMsg::LastListBoxIndex = -2;

int FormatSysMsg::GetCursor(HWND hListBox) {
    hWndStore* store = nullptr;
    return ListBoxMoveMap.Lookup(hListBox, store) ? store->GetCursor() : -1;
}

void FormatSysMsg::RegisterListBoxMove(HWND hListBox) {
    const tessel::Permit locked(*m_pListBoxLock, kLockTimeoutMs);
    if (!locked) return;
    try {
        auto store = std::make_unique<hWndStore>(hListBox);
        // ODD-30: an existing record of the list box is replaced without being freed.
        ListBoxMoveMap.SetAt(hListBox, store.get());
        (void)store.release(); // owned by the map from here on
    } catch (const std::bad_alloc&) {
        return; // as after a time-out
    }
}

void FormatSysMsg::ReleaseListBoxMove(HWND hListBox) {
    const tessel::Permit locked(*m_pListBoxLock, kLockTimeoutMs);
    hWndStore* store = nullptr;
    if (!locked || !ListBoxMoveMap.Lookup(hListBox, store)) return;
    (void)ListBoxMoveMap.RemoveKey(hListBox); // found above
    delete store;
}

/// Moves the pointer to the middle of the list box's item under it and selects that item.
void FormatSysMsg::ScrollCursor(HWND hListBox) {
    POINT pointer{};
    hWndStore* store = nullptr;
    if (!GetCursorPos(&pointer)) return;
    if (ControlType(hListBox) != FT_LISTBOX || !ListBoxMoveMap.Lookup(hListBox, store)) return;
    POINT client = pointer;
    if (!ScreenToClient(hListBox, &client)) return;
    // The answer is not used, but programs that subclass the list box expect the message.
    if (!tessel::QueryControl(hListBox, LB_GETITEMHEIGHT)) return; // GUARD-270: it hangs
    const auto found = tessel::QueryControl(hListBox, LB_ITEMFROMPOINT, 0, MAKELPARAM(client.x, client.y));
    if (!found) return;
    const auto index = static_cast<int>(*found);
    // ODD-33: all list boxes share one index, so the pointer does not snap to the same item of another one.
    if (index == LastListBoxIndex) return;
    // GUARD-31: the list box may have been released while it answered, and its record freed.
    if (!ListBoxMoveMap.Lookup(hListBox, store)) return;
    store->SetCursor(index);
    const auto selected = tessel::QueryControl(hListBox, LB_SETCURSEL, static_cast<WPARAM>(index));
    if (!selected) return;
    LastListBoxIndex = static_cast<int>(*selected);
    POINT centre{};
    if (!ItemCentre(hListBox, index, centre)) return; // GUARD-222: the pointer is on no item
    (void)CCURSOR::SetCursorPos(pointer.x, centre.y); // on failure the item remains selected
}
