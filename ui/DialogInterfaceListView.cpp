#include <foundation/SharedOwners.h>
#include <ui/DialogInterfaceCommands.h>
#include <ui/DialogInterfaceImages.h>
#include <ui/GdiHandles.h>

#include <algorithm>
#include <iterator>
#include <utility>

using tessel::DialogControl;

namespace {

constexpr int kImageWidth = 6;
constexpr int kImageHeight = 14;
constexpr int kWidestColumn = 0x7FFF; // the message has 16 bits: a greater width is negative

/// Adds the bitmaps up to the first that does not load.
/// @return whether all of them were added
bool AddImages(HIMAGELIST images, const unsigned int* bitmapIds, HINSTANCE instance) {
    bool complete = true;
    for (; *bitmapIds != 0; ++bitmapIds) {
        const tessel::GdiObject<HBITMAP> bitmap(LoadBitmapW(instance, MAKEINTRESOURCEW(*bitmapIds)));
        if (bitmap == nullptr) return false;
        complete = ImageList_Add(images, bitmap.get(), nullptr) >= 0 && complete;
    }
    return complete;
}

/// @return the image list that the control had
HIMAGELIST SetSmallImages(const DialogControl& control, HIMAGELIST images) {
    if (control.type == FT_LISTVIEW) return tessel::ShowImages(control.hWnd, images);
    return reinterpret_cast<HIMAGELIST>(control.SendData(LVM_SETIMAGELIST, LVSIL_SMALL, images));
}

} // namespace

int DIALOG_INTERFACE::InitIconList(const unsigned int* bitmapIds, HINSTANCE instance, int id) {
    const DialogControl control = Select(id);
    const bool selected = control.hWnd != nullptr;
    if (selected) control.Send(WM_DESTROY); // ODD-45: even without a list of bitmaps
    if (bitmapIds == nullptr) return 1;
    const HIMAGELIST images = ImageList_Create(kImageWidth, kImageHeight, ILC_COLOR, 1, 1);
    if (images == nullptr) return 0;
    const HIMAGELIST before = std::exchange(hImageList, images);
    const bool complete = AddImages(images, bitmapIds, instance);
    if (selected && !complete) control.Send(LVM_GETIMAGELIST, LVSIL_SMALL);
    const HIMAGELIST replaced = selected ? SetSmallImages(control, images) : nullptr;
    if (before == nullptr || !tessel::RemoveOwner(before)) return 1;
    if (before == replaced) {
        ImageList_Destroy(before);
    } else {
        tessel::HandOverImages(before, hDialog); // the control of an earlier call may still draw from it
    }
    return 1;
}

int tessel::SetListViewState(const DialogControl& control, int index, int withSelection, UINT state) {
    LVITEMW item{};
    item.mask = LVIF_STATE;
    item.iItem = index;
    item.stateMask = LVIS_FOCUSED | (withSelection != 0 ? LVIS_SELECTED : 0U);
    item.state = state & item.stateMask;
    return control.SendData(LVM_SETITEMW, 0, &item) != 0 ? 0 : 1;
}

int DIALOG_INTERFACE::SetLVFocus(int id, int index, int flag) {
    const DialogControl control = Select(id);
    if (control.type != FT_LISTVIEW) return 1;
    return tessel::SetListViewState(control, index, flag, LVIS_FOCUSED | LVIS_SELECTED);
}

int DIALOG_INTERFACE::ClearLVFocus(int id, int index, int flag) {
    const DialogControl control = Select(id);
    return control.type == FT_LISTVIEW ? tessel::SetListViewState(control, index, flag, 0) : 1;
}

int DIALOG_INTERFACE::GetLVSelected(int slot) {
    // GUARD-43: there are four slots.
    return slot >= 0 && slot < static_cast<int>(std::size(LVSelected)) ? LVSelected[slot] : -1;
}

int DIALOG_INTERFACE::SetLVSelected(int value, int slot) {
    const int before = GetLVSelected(slot);
    if (slot >= 0 && slot < static_cast<int>(std::size(LVSelected))) LVSelected[slot] = value; // GUARD-43
    return before;
}

int DIALOG_INTERFACE::LVSetColumnWidth(int id, int column, int width) {
    const DialogControl control = Select(id);
    if (width < LVSCW_AUTOSIZE_USEHEADER || control.type != FT_LISTVIEW) return 0;
    return control.Send(LVM_SETCOLUMNWIDTH, column, MAKELPARAM(std::min(width, kWidestColumn), 0)) != 0 ? 1 : 0;
}
