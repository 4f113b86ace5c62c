#include <ui/DialogInterfaceCommands.h>

#include <cwchar>
#include <new>

using tessel::DialogControl;
using tessel::DialogRequest;

namespace {

constexpr int kColumnWidth = 100;

using AddPart = void (*)(const DialogControl& control, int position, wchar_t* part);

void AddTab(const DialogControl& control, int position, wchar_t* part) {
    const TCITEMW item = tessel::TabItem(part, position);
    control.SendData(TCM_INSERTITEMW, position, &item);
}

void AddToList(const DialogControl& control, int, wchar_t* part) {
    control.SendData(tessel::MessagesOf(control).append, 0, part);
}

void AddColumn(const DialogControl& control, int position, wchar_t* part) {
    LVCOLUMNW column{};
    column.mask = LVCF_TEXT | LVCF_WIDTH;
    column.cx = kColumnWidth;
    column.pszText = part;
    control.SendData(LVM_INSERTCOLUMNW, position, &column);
}

/// Adds the parts of the text, which are separated by commas; empty ones are skipped.
int AddParts(const DialogRequest& request, AddPart add) {
    if (request.text == nullptr) return 0;
    const std::size_t size = std::wcslen(request.text) + 1;
    const std::unique_ptr<wchar_t[]> copy(new (std::nothrow) wchar_t[size]);
    if (copy == nullptr) return 1;
    wchar_t* part = std::wmemcpy(copy.get(), request.text, size);
    for (int position = 0; *(part += std::wcsspn(part, L",")) != L'\0'; ++position) {
        wchar_t* const end = part + std::wcscspn(part, L",");
        wchar_t* const next = *end == L'\0' ? end : end + 1;
        *end = L'\0';
        add(request.control, position, part);
        part = next;
    }
    return 0;
}

int Tab(DialogRequest& request) {
    request.Send(TCM_DELETEALLITEMS);
    return AddParts(request, AddTab);
}

int List(DialogRequest& request) {
    request.Send(tessel::MessagesOf(request.control).clear);
    return AddParts(request, AddToList);
}

int ListView(DialogRequest& request) {
    request.Send(LVM_DELETEALLITEMS);
    while (request.x != 0 && request.Send(LVM_DELETECOLUMN, 0) != 0) {
    }
    return AddParts(request, AddColumn);
}

int Gauge(DialogRequest& request) {
    tessel::MoveGauge(request.control, 0);
    return 0;
}

LPARAM Limits(const DialogRequest& request) {
    return MAKELPARAM(request.x, request.y);
}

int Slider(DialogRequest& request) {
    request.Send(TBM_SETRANGE, TRUE, Limits(request));
    // ODD-44: the position argument becomes the tick spacing and the page size; the position becomes 0.
    request.Send(TBM_SETTICFREQ, request.index);
    request.Send(TBM_SETPOS, TRUE, 0);
    request.Send(TBM_SETPAGESIZE, 0, request.index);
    return 0;
}

int Progress(DialogRequest& request) {
    request.Send(PBM_SETRANGE, 0, Limits(request));
    request.Send(PBM_SETSTEP, 1);
    request.Send(PBM_SETPOS, request.index);
    return 0;
}

int ScrollBar(DialogRequest& request) {
    request.Send(SBM_SETRANGE, request.x, request.y);
    request.Send(SBM_SETPOS, request.index, TRUE);
    return 0;
}

} // namespace

int tessel::commands::Reset(DialogRequest& request) {
    static constexpr CommandForType kByType[] = {
        {FT_STATIC, SetText},    {FT_BUTTON, SetText}, {FT_EDIT, SetText},      {FT_RICHEDIT, SetText},
        {FT_UNKNOWN, SetText},   {FT_TAB, Tab},        {FT_LISTBOX, List},      {FT_COMBOBOX, List},
        {FT_LISTVIEW, ListView}, {FT_SLIDER, Gauge},   {FT_PROGRESSBAR, Gauge}, {FT_SCROLLBAR, Gauge},
    };
    return tessel::RunForType(kByType, request);
}

int tessel::commands::Range(DialogRequest& request) {
    static constexpr CommandForType kByType[] = {
        {FT_SLIDER, Slider},
        {FT_PROGRESSBAR, Progress},
        {FT_SCROLLBAR, ScrollBar},
    };
    return tessel::RunForType(kByType, request, 1);
}
