#include <foundation/SharedOwners.h>
#include <ui/ControlClass.h>
#include <ui/DialogInterfaceImages.h>

namespace {

/// Property of a list view that has to destroy an image list: the image list.
constexpr const wchar_t* kImagesToDestroy = L"Tessel image list";

/// Property of a list view whose style of sharing image lists was set here.
constexpr const wchar_t* kMadeToShare = L"Tessel shares image lists";

/// A search for the current thread's list views that show an image list.
struct ListViewSearch {
    HIMAGELIST images;
    bool remove;             ///< remove the image list from them
    HWND listView = nullptr; ///< the last one found
    int count = 0;
};

HIMAGELIST ImagesOf(HWND listView, WPARAM which) {
    return reinterpret_cast<HIMAGELIST>(SendMessageW(listView, LVM_GETIMAGELIST, which, 0));
}

BOOL CALLBACK CheckListView(HWND hWnd, LPARAM search) {
    auto& found = *reinterpret_cast<ListViewSearch*>(search);
    if (tessel::ClassifyControl(hWnd) != FT_LISTVIEW || ImagesOf(hWnd, LVSIL_SMALL) != found.images) return TRUE;
    found.listView = hWnd;
    ++found.count;
    // GUARD-45: a list view that outlives the image list would draw from freed memory.
    if (found.remove) SendMessageW(hWnd, LVM_SETIMAGELIST, LVSIL_SMALL, 0);
    return TRUE;
}

BOOL CALLBACK CheckDescendants(HWND hWnd, LPARAM search) {
    EnumChildWindows(hWnd, CheckListView, search);
    return CheckListView(hWnd, search);
}

ListViewSearch Search(HIMAGELIST images, bool remove) {
    ListViewSearch found{images, remove};
    EnumThreadWindows(GetCurrentThreadId(), CheckDescendants, reinterpret_cast<LPARAM>(&found));
    return found;
}

/// GUARD-45: otherwise the list view would destroy the image list, and the object would do so again.
void MakeShare(HWND listView) {
    const LONG_PTR style = GetWindowLongPtrW(listView, GWL_STYLE);
    if ((style & LVS_SHAREIMAGELISTS) != 0) return;
    (void)SetPropW(listView, kMadeToShare, listView); // without the property it shares permanently
    SetWindowLongPtrW(listView, GWL_STYLE, style | LVS_SHAREIMAGELISTS);
}

/// Whether Search() finds a window: it must be in a top-level window of the current thread.
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

void tessel::HandOverImages(HIMAGELIST images, HWND dialog) {
    const DWORD thread = GetWindowThreadProcessId(dialog, nullptr); // 0: it no longer exists
    if (thread != 0 && thread != GetCurrentThreadId()) return;
    const ListViewSearch found = Search(images, false);
    if (found.count == 0) {
        ImageList_Destroy(images);
        return;
    }
    // A list view frees all of its image lists or none; with several list views the first would free this one.
    const bool hasOthers =
        ImagesOf(found.listView, LVSIL_NORMAL) != nullptr || ImagesOf(found.listView, LVSIL_STATE) != nullptr;
    const bool shares = GetPropW(found.listView, kMadeToShare) != nullptr;
    if (found.count > 1 || hasOthers || !shares || !SetPropW(found.listView, kImagesToDestroy, images)) return;
    (void)RemovePropW(found.listView, kMadeToShare);
    const LONG_PTR style = GetWindowLongPtrW(found.listView, GWL_STYLE);
    SetWindowLongPtrW(found.listView, GWL_STYLE, style & ~LONG_PTR{LVS_SHAREIMAGELISTS});
}

HIMAGELIST tessel::ShowImages(HWND listView, HIMAGELIST images) {
    MakeShare(listView);
    // GUARD-45: a list view that cannot be found may draw from the image list at any time, so it is never freed.
    if (!IsFound(listView)) (void)AddOwner(images); // without memory it may be freed too early
    const auto toDestroy = reinterpret_cast<HIMAGELIST>(RemovePropW(listView, kImagesToDestroy));
    const auto before = reinterpret_cast<HIMAGELIST>(
        SendMessageW(listView, LVM_SETIMAGELIST, LVSIL_SMALL, reinterpret_cast<LPARAM>(images)));
    if (toDestroy == nullptr || toDestroy != before) return before;
    ImageList_Destroy(toDestroy);
    return nullptr;
}
