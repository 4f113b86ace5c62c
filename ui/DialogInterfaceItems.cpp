#include <ui/DialogInterfaceCommands.h>

#include <algorithm>
#include <limits>
#include <new>

using tessel::DialogRequest;

namespace {

/// GUARD-46: the sum is limited to the range of int instead of wrapping.
int Sum(int position, long long step) {
    constexpr long long kLowest = std::numeric_limits<int>::min();
    constexpr long long kHighest = std::numeric_limits<int>::max();
    return static_cast<int>(std::clamp(position + step, kLowest, kHighest));
}

const wchar_t* OrEmpty(const wchar_t* text) {
    return text == nullptr ? L"" : text; // GUARD-40
}

int Added(DialogRequest& request, LRESULT index) {
    request.index = static_cast<int>(index);
    return request.index >= 0 ? 0 : 1;
}

int AddTab(DialogRequest& request) {
    const TCITEMW item = tessel::TabItem(request.text, request.data);
    return Added(request, request.SendData(TCM_INSERTITEMW, request.index, &item));
}

int AddToList(DialogRequest& request) {
    const tessel::ListMessages& messages = tessel::MessagesOf(request.control);
    // ODD-47: index 0 appends or sorts in; only other indices insert.
    const UINT message = request.index != 0 ? messages.insert : messages.append;
    return Added(request, tessel::AddString(request.control, message, request.index, request.text, request.data));
}

int AddListView(DialogRequest& request) {
    LVITEMW item{};
    item.iItem = request.index;
    if (request.text != nullptr) item.mask |= LVIF_TEXT;
    if (request.images != nullptr) item.mask |= LVIF_IMAGE;
    if (request.data != 0) item.mask |= LVIF_PARAM;
    item.pszText = tessel::Writable(request.text);
    item.iImage = request.imageIndex;
    item.lParam = request.data;
    return Added(request, request.SendData(LVM_INSERTITEMW, 0, &item));
}

int StepForward(DialogRequest& request) {
    request.index = Sum(tessel::ReadGauge(request.control), request.index);
    tessel::MoveGauge(request.control, request.index);
    return 0;
}

int StepProgress(DialogRequest& request) {
    request.Send(PBM_DELTAPOS, request.index);
    return 0;
}

int StepBack(DialogRequest& request) {
    tessel::MoveGauge(request.control, Sum(tessel::ReadGauge(request.control), -static_cast<long long>(request.index)));
    return 0;
}

template <UINT message> int DeleteItem(DialogRequest& request) {
    request.Send(message, request.index);
    return 0;
}

/// An error counts as 0.
template <UINT message> int CountItems(DialogRequest& request) {
    request.data = std::max<LRESULT>(request.Send(message), 0);
    return 0;
}

} // namespace

const tessel::ListMessages& tessel::MessagesOf(const DialogControl& control) {
    static constexpr ListMessages kListBox = {LB_INSERTSTRING, LB_ADDSTRING, LB_RESETCONTENT, LB_SETITEMDATA,
                                              LB_GETITEMDATA,  LB_GETTEXT,   LB_GETTEXTLEN,   LB_SETCURSEL};
    static constexpr ListMessages kComboBox = {CB_INSERTSTRING, CB_ADDSTRING, CB_RESETCONTENT, CB_SETITEMDATA,
                                               CB_GETITEMDATA,  CB_GETLBTEXT, CB_GETLBTEXTLEN, CB_SETCURSEL};
    return control.type == FT_COMBOBOX ? kComboBox : kListBox;
}

int tessel::AddString(const DialogControl& control, UINT message, int index, const wchar_t* text, LPARAM data) {
    const auto added = static_cast<int>(control.SendData(message, index, OrEmpty(text)));
    if (added >= 0) control.Send(MessagesOf(control).setData, added, data);
    return added;
}

// GUARD-42: the control ignores the size of the buffer, so it gets one that holds the whole text. For an item without
// text it copies a number.
std::size_t tessel::TextRoom(const DialogControl& control, int index) {
    const LRESULT length = control.Send(MessagesOf(control).getTextLength, index);
    return length < 0 ? 0 : std::max(static_cast<std::size_t>(length), sizeof(ULONG_PTR)) + 1;
}

bool tessel::ReadText(const DialogControl& control, int index, wchar_t* text, std::size_t room) {
    std::fill_n(text, room, L'\0'); // a number has no terminator
    return control.SendData(MessagesOf(control).getText, index, text) >= 0;
}

std::unique_ptr<wchar_t[]> tessel::ItemText(const DialogControl& control, int index) {
    const std::size_t room = TextRoom(control, index);
    if (room == 0) return nullptr;
    std::unique_ptr<wchar_t[]> text(new (std::nothrow) wchar_t[room]);
    if (text != nullptr && !ReadText(control, index, text.get(), room)) text.reset();
    return text;
}

int tessel::ReadGauge(const DialogControl& control) {
    if (control.type != FT_PROGRESSBAR) {
        return static_cast<int>(control.Send(control.type == FT_SLIDER ? TBM_GETPOS : SBM_GETPOS));
    }
    const LRESULT position = control.Send(PBM_DELTAPOS, 0);
    control.Send(PBM_SETPOS, position);
    return static_cast<int>(position);
}

void tessel::MoveGauge(const DialogControl& control, int position) {
    switch (control.type) {
    case FT_SLIDER: control.Send(TBM_SETPOS, TRUE, position); break;
    case FT_PROGRESSBAR: control.Send(PBM_SETPOS, position); break;
    default: control.Send(SBM_SETPOS, position, TRUE);
    }
}

TCITEMW tessel::TabItem(const wchar_t* text, LPARAM data) {
    TCITEMW item{};
    item.mask = text == nullptr ? TCIF_PARAM : TCIF_PARAM | TCIF_TEXT;
    item.pszText = Writable(text);
    item.lParam = data;
    return item;
}

int tessel::commands::SetText(DialogRequest& request) {
    return SetWindowTextW(request.control.hWnd, OrEmpty(request.text)) ? 0 : 1;
}

int tessel::commands::Add(DialogRequest& request) {
    static constexpr CommandForType kByType[] = {
        {FT_STATIC, SetText},        {FT_BUTTON, SetText},           {FT_EDIT, SetText},
        {FT_RICHEDIT, SetText},      {FT_UNKNOWN, SetText},          {FT_TAB, AddTab},
        {FT_LISTBOX, AddToList},     {FT_COMBOBOX, AddToList},       {FT_SLIDER, StepForward},
        {FT_SCROLLBAR, StepForward}, {FT_PROGRESSBAR, StepProgress}, {FT_LISTVIEW, AddListView},
    };
    return tessel::RunForType(kByType, request);
}

int tessel::commands::Delete(DialogRequest& request) {
    static constexpr CommandForType kByType[] = {
        {FT_TAB, DeleteItem<TCM_DELETEITEM>},
        {FT_LISTBOX, DeleteItem<LB_DELETESTRING>},
        {FT_COMBOBOX, DeleteItem<CB_DELETESTRING>},
        {FT_LISTVIEW, DeleteItem<LVM_DELETEITEM>},
        {FT_SLIDER, StepBack},
        {FT_SCROLLBAR, StepBack},
    };
    return tessel::RunForType(kByType, request);
}

int tessel::commands::GetCount(DialogRequest& request) {
    static constexpr CommandForType kByType[] = {
        {FT_LISTBOX, CountItems<LB_GETCOUNT>},
        {FT_COMBOBOX, CountItems<CB_GETCOUNT>},
        {FT_EDIT, CountItems<WM_GETTEXTLENGTH>},
        {FT_LISTVIEW, CountItems<LVM_GETITEMCOUNT>},
    };
    return tessel::RunForType(kByType, request);
}
