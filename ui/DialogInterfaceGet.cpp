#include <ui/DialogInterfaceCommands.h>

#include <cwchar>

using tessel::DialogRequest;

namespace {

constexpr int kNone = -1;
constexpr int kOwnText = -2;

/// Copies a text into the caller's buffer, truncated to fit. A control may have returned a pointer to its own text.
void CopyTruncated(wchar_t* buffer, int room, const wchar_t* text) {
    if (buffer == nullptr || text == nullptr || text == buffer || text == LPSTR_TEXTCALLBACKW) return;
    const std::size_t length = wcsnlen(text, static_cast<std::size_t>(room) - 1);
    std::wmemcpy(buffer, text, length);
    buffer[length] = L'\0';
}

int WindowText(const DialogRequest& request) {
    if (request.buffer != nullptr) GetWindowTextW(request.control.hWnd, request.buffer, request.bufferLen);
    return 0;
}

int Text(DialogRequest& request) {
    request.data = GetWindowLongPtrW(request.control.hWnd, GWLP_USERDATA);
    return WindowText(request);
}

int Button(DialogRequest& request) {
    request.index = static_cast<int>(request.Send(BM_GETCHECK));
    return Text(request);
}

int Tab(DialogRequest& request) {
    if (request.index <= kNone) request.index = static_cast<int>(request.Send(TCM_GETCURSEL));
    TCITEMW item{};
    item.mask = request.buffer == nullptr ? TCIF_PARAM : TCIF_PARAM | TCIF_TEXT;
    item.pszText = request.buffer;
    item.cchTextMax = request.bufferLen;
    if (request.SendData(TCM_GETITEMW, request.index, &item) == 0) return 1;
    request.data = item.lParam;
    CopyTruncated(request.buffer, request.bufferLen, item.pszText);
    return 0;
}

bool Item(DialogRequest& request) {
    request.data = request.Send(tessel::MessagesOf(request.control).getData, request.index);
    const std::size_t room = tessel::TextRoom(request.control, request.index);
    if (room == 0) return false;
    if (room <= static_cast<std::size_t>(request.bufferLen)) {
        return tessel::ReadText(request.control, request.index, request.buffer, room);
    }
    const auto item = tessel::ItemText(request.control, request.index);
    CopyTruncated(request.buffer, request.bufferLen, item.get());
    return item != nullptr;
}

int ListBox(DialogRequest& request) {
    if (request.index <= kNone) request.index = static_cast<int>(request.Send(LB_GETCURSEL));
    if (request.index == LB_ERR) {
        request.data = request.Send(LB_GETCOUNT); // ODD-46: without a selection, the item count is the data
        return WindowText(request);
    }
    if (Item(request)) return 0;
    request.index = kNone;
    return 1;
}

int ComboBox(DialogRequest& request) {
    if (request.index == kOwnText) return WindowText(request);
    if (request.index == kNone) request.index = static_cast<int>(request.Send(CB_GETCURSEL));
    if (request.index == CB_ERR) return 0;
    return Item(request) ? 0 : 1;
}

int Gauge(DialogRequest& request) {
    request.index = tessel::ReadGauge(request.control);
    return 0;
}

int ListView(DialogRequest& request) {
    if (request.index <= kNone) {
        request.index = static_cast<int>(request.Send(LVM_GETNEXTITEM, kNone, LVNI_SELECTED));
    }
    LVITEMW item{};
    item.mask = request.buffer == nullptr ? LVIF_PARAM : LVIF_PARAM | LVIF_TEXT;
    item.iItem = request.index;
    item.iSubItem = request.x;
    item.pszText = request.buffer;
    item.cchTextMax = request.bufferLen;
    if (request.SendData(LVM_GETITEMW, 0, &item) == 0) return 1;
    request.data = item.lParam;
    CopyTruncated(request.buffer, request.bufferLen, item.pszText);
    return 0;
}

} // namespace

int tessel::commands::Get(DialogRequest& request) {
    static constexpr CommandForType kByType[] = {
        {FT_STATIC, Text},   {FT_EDIT, Text},         {FT_RICHEDIT, Text},   {FT_UNKNOWN, Text},
        {FT_BUTTON, Button}, {FT_TAB, Tab},           {FT_LISTBOX, ListBox}, {FT_COMBOBOX, ComboBox},
        {FT_SLIDER, Gauge},  {FT_PROGRESSBAR, Gauge}, {FT_SCROLLBAR, Gauge}, {FT_LISTVIEW, ListView},
    };
    return tessel::RunForType(kByType, request);
}
