#include <ui/DialogInterfaceCommands.h>

#include <cwchar>

// ODD-42: except where the header says so, an operation gives 0 whatever its command reported.

namespace {

constexpr int kNumberLength = 32;
constexpr int kDecimal = 10;
constexpr int kOwnValue = -1;
constexpr int kStringLength = 512;

} // namespace

int DIALOG_INTERFACE::Size(int id, int width, int height) {
    X = width;
    Y = height;
    (void)Run(CMD_SIZE, id);
    return 0;
}

int DIALOG_INTERFACE::Position(int id, int x, int y) {
    X = x;
    Y = y;
    (void)Run(CMD_POSITION, id);
    return 0;
}

int DIALOG_INTERFACE::Set(int id, int index, int value) {
    wchar_t number[kNumberLength];
    return Set(id, index, _itow(value, number, kDecimal), 0);
}

int DIALOG_INTERFACE::Set(int id, int index, const wchar_t* text, LPARAM data) {
    X = 0;
    Y = index;
    Index = index;
    Data = data;
    (void)Run(CMD_SET, id, text);
    return 0;
}

int DIALOG_INTERFACE::Set(int id, int index, int subItem, const wchar_t* text) {
    X = subItem;
    Y = index;
    Index = index;
    Data = 0;
    (void)Run(CMD_SET, id, text);
    return 0;
}

int DIALOG_INTERFACE::Set(int id, int value) {
    return Set(id, kOwnValue, value); // ODD-48: a gauge takes its position from the index and so goes to -1
}

/// Gets into the buffer and the fields; both are empty when there is nothing to get.
void DIALOG_INTERFACE::Fetch(int id, wchar_t* buffer, int bufferLen) {
    // GUARD-41: without room for the terminator nothing is written.
    BufferLen = buffer == nullptr || bufferLen < 0 ? 0 : bufferLen;
    if (BufferLen > 0) buffer[0] = L'\0';
    Data = 0;
    (void)Run(CMD_GET, id, BufferLen > 0 ? buffer : nullptr);
}

int DIALOG_INTERFACE::Get(int id, int& index, wchar_t* buffer, int bufferLen, LPARAM& data) {
    X = 0;
    Index = index;
    Fetch(id, buffer, bufferLen);
    index = Index;
    data = Data;
    return 0;
}

int DIALOG_INTERFACE::Get(int id, int index, int subItem, wchar_t* buffer, int bufferLen, LPARAM& data) {
    X = subItem;
    Index = index;
    Fetch(id, buffer, bufferLen);
    data = Data;
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
    Data = 0;
    const int result = Run(CMD_GETCOUNT, id);
    count = static_cast<int>(Data);
    return result;
}

int DIALOG_INTERFACE::SetEditSelection(int id, int start, int end) {
    X = start;
    Y = end;
    return Run(CMD_EDITSELECTION, id);
}

int DIALOG_INTERFACE::Add(int id, int index, const wchar_t* text, LPARAM data) {
    Index = index;
    Data = data;
    (void)Run(CMD_ADD, id, text);
    return Index;
}

int DIALOG_INTERFACE::LVAdd(int id, int index, const wchar_t* text, LPARAM data, int imageIndex) {
    ImageIndex = imageIndex;
    return Add(id, index, text, data);
}

int DIALOG_INTERFACE::LVDeleteAllItems(int id) {
    X = 0;
    (void)Run(CMD_RESET, id);
    return 0;
}

int DIALOG_INTERFACE::Reset(int id, const wchar_t* text) {
    X = 1;
    (void)Run(CMD_RESET, id, text);
    return 0;
}

int DIALOG_INTERFACE::Range(int id, int low, int high, int position) {
    X = low;
    Y = high;
    Index = position;
    (void)Run(CMD_RANGE, id);
    return 0;
}

int DIALOG_INTERFACE::Display(int id, DISPLAY_ACTION action, int item) {
    Action = action;
    Index = item;
    return Run(CMD_DISPLAY, id);
}

int DIALOG_INTERFACE::Delete(int id, int index) {
    Index = index;
    (void)Run(CMD_DELETE, id);
    return 0;
}

int DIALOG_INTERFACE::ColorStaticText(int id, int red, int green, int blue) {
    Color = RGB(red, green, blue);
    (void)Run(CMD_TEXTCOLOUR, id);
    return 0;
}

int DIALOG_INTERFACE::LoadControlString(HINSTANCE instance, const CONTROL_STRING* table, int count) {
    for (int i = 0; table != nullptr && i < count; ++i) { // GUARD-40
        wchar_t text[kStringLength];
        if (LoadStringW(instance, table[i].StringId, text, kStringLength) == 0) continue;
        if (Select(table[i].ControlId, FT_BUTTON)) {
            (void)Commands::SetText(*this, text); // Set would change the check mark too
        } else {
            (void)Set(table[i].ControlId, kOwnValue, text, 0);
        }
    }
    return 0;
}
