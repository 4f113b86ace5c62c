#include <ui/DialogInterfaceCommands.h>

#include <cwchar>

// ODD-42: unless the header says otherwise, an operation returns 0 even if its command failed.

using tessel::DialogRequest;

namespace {

constexpr int kNumberLength = 32;
constexpr int kDecimal = 10;
constexpr int kOwnValue = -1;
constexpr int kStringLength = 512;
constexpr int kKeepColumns = 0;
constexpr int kRemoveColumns = 1;

} // namespace

int DIALOG_INTERFACE::Size(int id, int width, int height) {
    (void)Run(id, CMD_SIZE, {.x = width, .y = height});
    return 0;
}

int DIALOG_INTERFACE::Position(int id, int x, int y) {
    (void)Run(id, CMD_POSITION, {.x = x, .y = y});
    return 0;
}

int DIALOG_INTERFACE::Set(int id, int index, int value) {
    wchar_t number[kNumberLength];
    return Set(id, index, _itow(value, number, kDecimal), 0);
}

int DIALOG_INTERFACE::Set(int id, int index, const wchar_t* text, LPARAM data) {
    (void)Run(id, CMD_SET, {.text = text, .y = index, .index = index, .data = data});
    return 0;
}

int DIALOG_INTERFACE::Set(int id, int index, int subItem, const wchar_t* text) {
    (void)Run(id, CMD_SET, {.text = text, .x = subItem, .y = index, .index = index});
    return 0;
}

int DIALOG_INTERFACE::Set(int id, int value) {
    return Set(id, kOwnValue, value); // ODD-48: a gauge takes the index for the position and moves to -1
}

/// Reads into the buffer and the request; both are empty if there is nothing to read.
void DIALOG_INTERFACE::Fetch(int id, DialogRequest& request, wchar_t* buffer, int bufferLen) {
    // GUARD-41: without room for the terminator nothing is written.
    if (buffer != nullptr && bufferLen > 0) {
        buffer[0] = L'\0';
        request.buffer = buffer;
        request.bufferLen = bufferLen;
    }
    (void)ProcessMessage(id, CMD_GET, request);
}

int DIALOG_INTERFACE::Get(int id, int& index, wchar_t* buffer, int bufferLen, LPARAM& data) {
    DialogRequest request{.index = index};
    Fetch(id, request, buffer, bufferLen);
    index = request.index;
    data = request.data;
    return 0;
}

int DIALOG_INTERFACE::Get(int id, int index, int subItem, wchar_t* buffer, int bufferLen, LPARAM& data) {
    DialogRequest request{.x = subItem, .index = index};
    Fetch(id, request, buffer, bufferLen);
    data = request.data;
    return 0;
}

int DIALOG_INTERFACE::Get(int id, int& index, wchar_t* buffer, int bufferLen) {
    LPARAM data = 0;
    return Get(id, index, buffer, bufferLen, data);
}

int DIALOG_INTERFACE::Get(int id, wchar_t* buffer, int bufferLen) {
    int index = kOwnValue;
    return Get(id, index, buffer, bufferLen);
}

int DIALOG_INTERFACE::Get(int id, int& value) {
    wchar_t number[kNumberLength];
    (void)Get(id, number, kNumberLength);
    value = _wtoi(number);
    return 0;
}

int DIALOG_INTERFACE::GetCount(int id, int& count) {
    DialogRequest request;
    const int result = ProcessMessage(id, CMD_GETCOUNT, request);
    count = static_cast<int>(request.data);
    return result;
}

int DIALOG_INTERFACE::SetEditSelection(int id, int start, int end) {
    return Run(id, CMD_EDITSELECTION, {.x = start, .y = end});
}

int DIALOG_INTERFACE::Add(int id, int index, const wchar_t* text, LPARAM data) {
    DialogRequest request{.text = text, .index = index, .data = data};
    (void)ProcessMessage(id, CMD_ADD, request);
    return request.index;
}

int DIALOG_INTERFACE::LVAdd(int id, int index, const wchar_t* text, LPARAM data, int imageIndex) {
    ImageIndex = imageIndex;
    return Add(id, index, text, data);
}

int DIALOG_INTERFACE::LVDeleteAllItems(int id) {
    (void)Run(id, CMD_RESET, {.x = kKeepColumns});
    return 0;
}

int DIALOG_INTERFACE::Reset(int id, const wchar_t* text) {
    (void)Run(id, CMD_RESET, {.text = text, .x = kRemoveColumns});
    return 0;
}

int DIALOG_INTERFACE::Range(int id, int low, int high, int position) {
    (void)Run(id, CMD_RANGE, {.x = low, .y = high, .index = position});
    return 0;
}

int DIALOG_INTERFACE::Display(int id, DISPLAY_ACTION action, int item) {
    return Run(id, CMD_DISPLAY, {.index = item, .action = action});
}

int DIALOG_INTERFACE::Delete(int id, int index) {
    (void)Run(id, CMD_DELETE, {.index = index});
    return 0;
}

int DIALOG_INTERFACE::ColorStaticText(int id, int red, int green, int blue) {
    (void)Run(id, CMD_TEXTCOLOUR, {.color = RGB(red, green, blue)});
    return 0;
}

int DIALOG_INTERFACE::LoadControlString(HINSTANCE instance, const CONTROL_STRING* table, int count) {
    for (int i = 0; table != nullptr && i < count; ++i) { // GUARD-40
        const int id = table[i].ControlId;
        wchar_t text[kStringLength];
        if (LoadStringW(instance, table[i].StringId, text, kStringLength) == 0) continue;
        const tessel::DialogControl control = Select(id);
        if (control.type == FT_BUTTON) {
            (void)SetWindowTextW(control.hWnd, text); // Set would change the check mark too
        } else {
            (void)Set(id, kOwnValue, text, 0);
        }
    }
    return 0;
}
