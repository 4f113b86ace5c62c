#include <ui/DialogInterfaceCommands.h>

#include <cwchar>

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
    if (Select(id)) Send(WM_SETFONT, reinterpret_cast<LPARAM>(font), TRUE);
    return 0;
}

int DIALOG_INTERFACE::ShowDropDown(int id, int show) {
    if (!Select(id, FT_COMBOBOX)) return 0;
    Send(CB_SHOWDROPDOWN, show != 0);
    return 1;
}

int DIALOG_INTERFACE::FindExactMatch(int id, const wchar_t* text, int& index) {
    index = CB_ERR;
    if (text == nullptr || !Select(id, FT_COMBOBOX)) return 0; // GUARD-40
    index = static_cast<int>(SendData(CB_FINDSTRINGEXACT, kFromTheStart, text));
    return index == CB_ERR ? 0 : 1;
}

int DIALOG_INTERFACE::Insert(int id, int index, const wchar_t* text, LPARAM data) {
    if (!Select(id, FT_COMBOBOX)) return 0;
    Data = data;
    Index = Commands::AddString(*this, CB_INSERTSTRING, index, text);
    return Index >= 0 ? 1 : 0;
}

int DIALOG_INTERFACE::GetLBItemSize(int id, int index, int& width, int& height) {
    width = 0;
    height = 0;
    if (!Select(id, FT_LISTBOX)) return 0;
    const auto text = Commands::ItemText(*this, index);
    const HDC context = text == nullptr ? nullptr : GetDC(hCtrl);
    if (context == nullptr) return 0;
    SIZE size{};
    const BOOL measured = GetTextExtentPoint32W(context, text.get(), static_cast<int>(std::wcslen(text.get())), &size);
    ReleaseDC(hCtrl, context);
    width = size.cx;
    height = size.cy;
    return measured ? 1 : 0;
}

int DIALOG_INTERFACE::SetTextLimit(int id, int limit) {
    if (!Select(id) || (CtrlType != FT_COMBOBOX && CtrlType != FT_EDIT)) return 0;
    Send(CtrlType == FT_COMBOBOX ? CB_LIMITTEXT : EM_LIMITTEXT, limit);
    return 1;
}

int DIALOG_INTERFACE::SetReadOnly(int id, int flag) {
    if (!Select(id, FT_EDIT)) return 0;
    return Send(EM_SETREADONLY, flag != 0) != 0 ? 1 : 0;
}
