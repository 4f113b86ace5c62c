#include <tessel/ui/cursor.h>
#include <ui/DialogInterfaceCommands.h>
#include <ui/GdiHandles.h>

namespace {

constexpr unsigned char kTagMark = 0xDA;
constexpr int kByteBits = 8;
constexpr int kNoBrush = 0xFF;

unsigned char ByteOf(DWORD tag, int number) {
    return static_cast<unsigned char>(tag >> (number * kByteBits));
}

} // namespace

int DIALOG_INTERFACE::GetCoordinates(int id, RECT& area) {
    const HWND control = Select(id).hWnd;
    return control != nullptr && GetWindowRect(control, &area) ? 1 : 0;
}

int DIALOG_INTERFACE::GetScreenCoordinates(int id, RECT& area) {
    return GetCoordinates(id, area);
}

int DIALOG_INTERFACE::GetClientCoordinates(int id, RECT& area) {
    const HWND control = Select(id).hWnd;
    return control != nullptr && GetClientRect(control, &area) ? 1 : 0;
}

int DIALOG_INTERFACE::GetSize(int id, int& width, int& height) {
    RECT area{};
    const int result = GetCoordinates(id, area);
    width = area.right - area.left;
    height = area.bottom - area.top;
    return result;
}

int DIALOG_INTERFACE::GetClientSize(int id, int& width, int& height) {
    RECT area{};
    const int result = GetClientCoordinates(id, area);
    width = area.right;
    height = area.bottom;
    return result;
}

int DIALOG_INTERFACE::GetPosition(int id, int& x, int& y) {
    const HWND control = Select(id).hWnd;
    RECT area{};
    RECT origin{};
    bool found = control != nullptr && GetWindowRect(control, &area);
    if (found && control != hDialog) found = GetWindowRect(hDialog, &origin);
    x = area.left - origin.left;
    y = area.top - origin.top;
    return found ? 1 : 0;
}

int DIALOG_INTERFACE::MoveFocus(int id) {
    RECT area{};
    if (GetCoordinates(id, area) == 0) return 0;
    return CCURSOR::SetCursorPos(area.left + (area.right - area.left) / 2, area.top + (area.bottom - area.top) / 2);
}

int DIALOG_INTERFACE::FillCtrlRect(int id, COLORREF colour, const RECT* area) {
    const HWND item = GetHandle(id);
    RECT whole{};
    if (item == nullptr || !GetClientRect(item, &whole)) return 0;
    const tessel::GdiObject<HBRUSH> brush(CreateSolidBrush(colour));
    const tessel::WindowContext context(item);
    return FillRect(context.Get(), area == nullptr ? &whole : area, brush.get());
}

int DIALOG_INTERFACE::ValidateCtrl(int id) {
    const HWND control = Select(id).hWnd;
    return control != nullptr ? ValidateRect(control, nullptr) : 0;
}

long DIALOG_INTERFACE::PackLong(unsigned char b1, unsigned char b2, unsigned char b3, unsigned char b4) {
    return static_cast<long>(MAKELONG(MAKEWORD(b4, b3), MAKEWORD(b2, b1)));
}

int DIALOG_INTERFACE::SetColor(int id, int colourIndex, int flag) {
    // GUARD-271: a larger index does not fit the tag; its low byte is the index of another brush.
    if (flag < -1 || flag >= kNoBrush) return 1;
    const HWND control = Select(id).hWnd;
    if (control == nullptr) return 1;
    const long tag =
        PackLong(kTagMark, static_cast<unsigned char>(colourIndex), static_cast<unsigned char>(flag), kTagMark);
    SetWindowLongPtrW(control, GWLP_USERDATA, tag);
    return 0;
}

int DIALOG_INTERFACE::GetColor(HWND hWnd, int& colourIndex, int& flag) {
    const auto tag = static_cast<DWORD>(GetWindowLongPtrW(hWnd, GWLP_USERDATA));
    if (ByteOf(tag, 3) != kTagMark || ByteOf(tag, 0) != kTagMark) return 1;
    colourIndex = ByteOf(tag, 2);
    flag = ByteOf(tag, 1) == kNoBrush ? -1 : ByteOf(tag, 1);
    return 0;
}
