#include <ui/DialogInterfaceCommands.h>

using tessel::DialogRequest;

namespace {

constexpr LPARAM kFromTheStart = -1;
constexpr LPARAM kNoSelection = -1;
constexpr int kLastOwnText = -2;

int Text(DialogRequest& request) {
    return request.text == nullptr ? 0 : tessel::commands::SetText(request);
}

int Button(DialogRequest& request) {
    request.Send(BM_SETCHECK, request.index != 0);
    return Text(request);
}

int Tab(DialogRequest& request) {
    const TCITEMW item = tessel::TabItem(request.text, request.data);
    const bool set = request.SendData(TCM_SETITEMW, request.index, &item) != 0;
    request.Send(TCM_SETCURSEL, request.index);
    return set ? 0 : 1;
}

int Item(const DialogRequest& request) {
    const tessel::ListMessages& messages = tessel::MessagesOf(request.control);
    request.Send(messages.setData, request.index, request.data);
    return request.Send(messages.select, request.index) == LB_ERR ? 1 : 0;
}

int ListBox(DialogRequest& request) {
    if (request.index >= 0) return Item(request);
    if (request.text != nullptr && request.SendData(LB_SELECTSTRING, kFromTheStart, request.text) == LB_ERR) {
        request.Send(LB_SETCURSEL, kNoSelection);
    }
    return 0;
}

int ComboBox(DialogRequest& request) {
    if (request.index >= 0) return Item(request);
    if (request.index >= kLastOwnText || request.text == nullptr) return Text(request);
    const LRESULT found = request.SendData(CB_FINDSTRINGEXACT, kFromTheStart, request.text);
    if (found != CB_ERR) request.Send(CB_SETCURSEL, found);
    return 0;
}

int Gauge(DialogRequest& request) {
    tessel::MoveGauge(request.control, request.index);
    return 0;
}

// ODD-49: a list view gets the text but not the item data.
int ListView(DialogRequest& request) {
    if (request.text == nullptr) return 0; // GUARD-40
    LVITEMW item{};
    item.mask = LVIF_TEXT;
    item.iItem = request.y;
    item.iSubItem = request.x;
    item.pszText = tessel::Writable(request.text);
    return request.SendData(LVM_SETITEMW, 0, &item) != 0 ? 0 : 1;
}

} // namespace

int tessel::commands::Set(DialogRequest& request) {
    static constexpr CommandForType kByType[] = {
        {FT_STATIC, Text},   {FT_EDIT, Text},         {FT_RICHEDIT, Text},   {FT_UNKNOWN, Text},
        {FT_BUTTON, Button}, {FT_TAB, Tab},           {FT_LISTBOX, ListBox}, {FT_COMBOBOX, ComboBox},
        {FT_SLIDER, Gauge},  {FT_PROGRESSBAR, Gauge}, {FT_SCROLLBAR, Gauge}, {FT_LISTVIEW, ListView},
    };
    return tessel::RunForType(kByType, request);
}
