#include <foundation/SharedOwners.h>
#include <ui/ControlClass.h>
#include <ui/DialogInterfaceImages.h>

namespace {

/// Marks a list view that an image list was left to, which is the property's value.
constexpr const wchar_t* kLeft = L"Tessel image list";

/// Marks a list view that was made to share its image lists, as it did not by itself.
constexpr const wchar_t* kMadeToShare = L"Tessel shares image lists";

/// The current thread's list views that show an image list.
struct Shown {
    HIMAGELIST images;
    bool takesAway;
    HWND listView = nullptr; ///< the last one
    int count = 0;
};

HIMAGELIST ImagesOf(HWND listView, WPARAM which) {
    return reinterpret_cast<HIMAGELIST>(SendMessageW(listView, LVM_GETIMAGELIST, which, 0));
}

BOOL CALLBACK Note(HWND hWnd, LPARAM search) {
    auto& shown = *reinterpret_cast<Shown*>(search);
    if (tessel::ClassifyControl(hWnd) != FT_LISTVIEW || ImagesOf(hWnd, LVSIL_SMALL) != shown.images) return TRUE;
    shown.listView = hWnd;
    ++shown.count;
    // GUARD-45: a list view that outlives the image list would draw from freed memory.
    if (shown.takesAway) SendMessageW(hWnd, LVM_SETIMAGELIST, LVSIL_SMALL, 0);
    return TRUE;
}

BOOL CALLBACK NoteBelow(HWND hWnd, LPARAM search) {
    EnumChildWindows(hWnd, Note, search);
    return Note(hWnd, search);
}

Shown Search(HIMAGELIST images, bool takesAway) {
    Shown shown{images, takesAway};
    EnumThreadWindows(GetCurrentThreadId(), NoteBelow, reinterpret_cast<LPARAM>(&shown));
    return shown;
}

/// GUARD-45: else it would destroy the image list, and the object would once more.
void MakeShare(HWND listView) {
    const LONG_PTR style = GetWindowLongPtrW(listView, GWL_STYLE);
    if ((style & LVS_SHAREIMAGELISTS) != 0) return;
    (void)SetPropW(listView, kMadeToShare, listView); // without the mark it shares for good
    SetWindowLongPtrW(listView, GWL_STYLE, style | LVS_SHAREIMAGELISTS);
}

/// Whether a search finds a window: in one of the current thread's windows on the desktop.
bool IsFound(HWND hWnd) {
    const HWND top = GetAncestor(hWnd, GA_ROOT);
    const DWORD own = GetCurrentThreadId();
    return GetWindowThreadProcessId(hWnd, nullptr) == own && GetWindowThreadProcessId(top, nullptr) == own &&
           GetAncestor(top, GA_PARENT) == GetDesktopWindow();
}

} // namespace

void tessel::DestroyImages(HIMAGELIST images) {
    (void)Search(images, true);
    ImageList_Destroy(images);
}

void tessel::LeaveImages(HIMAGELIST images, HWND dialog) {
    const DWORD thread = GetWindowThreadProcessId(dialog, nullptr); // 0: it is gone
    if (thread != 0 && thread != GetCurrentThreadId()) return;
    const Shown shown = Search(images, false);
    if (shown.count == 0) {
        ImageList_Destroy(images);
        return;
    }
    // A list view frees all of its image lists or none, and of several the first would free this one.
    const bool hasOthers =
        ImagesOf(shown.listView, LVSIL_NORMAL) != nullptr || ImagesOf(shown.listView, LVSIL_STATE) != nullptr;
    const bool shares = GetPropW(shown.listView, kMadeToShare) != nullptr;
    if (shown.count > 1 || hasOthers || !shares || !SetPropW(shown.listView, kLeft, images)) return;
    (void)RemovePropW(shown.listView, kMadeToShare);
    const LONG_PTR style = GetWindowLongPtrW(shown.listView, GWL_STYLE);
    SetWindowLongPtrW(shown.listView, GWL_STYLE, style & ~LONG_PTR{LVS_SHAREIMAGELISTS});
}

HIMAGELIST tessel::ShowImages(HWND listView, HIMAGELIST images) {
    MakeShare(listView);
    // GUARD-45: what no search finds may draw from the image list at any time, so that it stays for good.
    if (!IsFound(listView)) (void)AddOwner(images); // without memory for that it may go too early
    const auto left = reinterpret_cast<HIMAGELIST>(RemovePropW(listView, kLeft));
    const auto before = reinterpret_cast<HIMAGELIST>(
        SendMessageW(listView, LVM_SETIMAGELIST, LVSIL_SMALL, reinterpret_cast<LPARAM>(images)));
    if (left == nullptr || left != before) return before;
    ImageList_Destroy(left);
    return nullptr;
}
