#include <ui/DialogInterfaceCommands.h>
#include <ui/GdiHandles.h>

#include <cwchar>

using tessel::DialogControl;

namespace {

constexpr LPARAM kFromTheStart = -1;

} // namespace

int DIALOG_INTERFACE::SetButtonImage(int id, HBITMAP bitmap) {
    const HWND item = GetHandle(id);
    if (item == nullptr) return 0;
    SendMessageW(item, BM_SETIMAGE, IMAGE_BITMAP, reinterpret_cast<LPARAM>(bitmap));
    return 1;
}

int DIALOG_INTERFACE::SetFont(int id, HFONT font) {
    const DialogControl control = Select(id);
    if (control.hWnd != nullptr) control.Send(WM_SETFONT, reinterpret_cast<LPARAM>(font), TRUE);
    return 0;
}

int DIALOG_INTERFACE::ShowDropDown(int id, int show) {
    const DialogControl control = Select(id);
    if (control.type != FT_COMBOBOX) return 0;
    control.Send(CB_SHOWDROPDOWN, show != 0);
    return 1;
}

int DIALOG_INTERFACE::FindExactMatch(int id, const wchar_t* text, int& index) {
    index = CB_ERR;
    const DialogControl control = Select(id);
    if (text == nullptr || control.type != FT_COMBOBOX) return 0; // GUARD-40
    index = static_cast<int>(control.SendData(CB_FINDSTRINGEXACT, kFromTheStart, text));
    return index == CB_ERR ? 0 : 1;
}

int DIALOG_INTERFACE::Insert(int id, int index, const wchar_t* text, LPARAM data) {
    const DialogControl control = Select(id);
    if (control.type != FT_COMBOBOX) return 0;
    return tessel::AddString(control, CB_INSERTSTRING, index, text, data) >= 0 ? 1 : 0;
}

int DIALOG_INTERFACE::GetLBItemSize(int id, int index, int& width, int& height) {
    width = 0;
    height = 0;
    const DialogControl control = Select(id);
    if (control.type != FT_LISTBOX) return 0;
    const auto text = tessel::ItemText(control, index);
    const tessel::WindowContext context(control.hWnd);
    if (text == nullptr || context.Get() == nullptr) return 0;
    SIZE size{};
    const auto length = static_cast<int>(std::wcslen(text.get()));
    if (!GetTextExtentPoint32W(context.Get(), text.get(), length, &size)) return 0;
    width = size.cx;
    height = size.cy;
    return 1;
}

int DIALOG_INTERFACE::SetTextLimit(int id, int limit) {
    const DialogControl control = Select(id);
    if (control.type != FT_COMBOBOX && control.type != FT_EDIT) return 0;
    control.Send(control.type == FT_COMBOBOX ? CB_LIMITTEXT : EM_LIMITTEXT, limit);
    return 1;
}

int DIALOG_INTERFACE::SetReadOnly(int id, int flag) {
    const DialogControl control = Select(id);
    return control.type == FT_EDIT && control.Send(EM_SETREADONLY, flag != 0) != 0 ? 1 : 0;
}
