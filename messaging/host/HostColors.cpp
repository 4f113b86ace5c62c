#include <foundation/ReadableMemory.h>
#include <tessel/messaging/host.h>
#include <tessel/ui/brush.h>
#include <tessel/ui/dialoginterface.h>

namespace {

constexpr int kTextLength = 256;
/// A button's brush is followed by the brushes of its other states.
constexpr int kPressedBrush = 1;
constexpr int kFocusedBrush = 2;

int BrushOfState(const DRAWITEMSTRUCT& item, int index) {
    if (item.CtlType != ODT_BUTTON || CBrush().IsColor(index)) return index;
    if (item.itemState & ODS_SELECTED) return index + kPressedBrush;
    return item.itemState & ODS_FOCUS ? index + kFocusedBrush : index;
}

} // namespace

LRESULT OSClass::ControlColorMsg(LPARAM control, WPARAM dc) {
    int text = 0;
    int background = 0;
    if (DIALOG_INTERFACE::GetColor(reinterpret_cast<HWND>(control), text, background) != 0) return 0;
    const HDC context = reinterpret_cast<HDC>(dc);
    (void)SelectPalette(context, m_pHost->m_Palette.GetPalette(), FALSE); // if it fails, the context keeps its palette
    (void)SetTextColor(context, m_pHost->m_Palette.GetColor(static_cast<COLOR_IDX>(text)));
    (void)SetBkColor(context, CBrush().GetColor(background));
    return reinterpret_cast<LRESULT>(CBrush().GetBrush(background));
}

void OSClass::ControlPaletteChanged(HWND hWnd) {
    const HDC context = GetDC(hWnd);
    const HPALETTE previous = SelectPalette(context, m_pHost->m_Palette.GetPalette(), FALSE);
    (void)RealizePalette(context); // the number of changed entries does not matter
    (void)InvalidateRect(hWnd, nullptr, TRUE);
    (void)UpdateWindow(hWnd);
    if (previous != nullptr) (void)SelectPalette(context, previous, FALSE);
    (void)ReleaseDC(nullptr, context); // ODD-63: released without its window
}

void OSClass::PaintWithOwnerBrush(LPARAM drawItem) {
    DRAWITEMSTRUCT item;
    if (!tessel::ReadRecord(drawItem, item)) return; // GUARD-24
    int text = 0;
    int background = 0;
    if (m_pHost == nullptr || DIALOG_INTERFACE::GetColor(item.hwndItem, text, background) != 0) return;
    const int brush = BrushOfState(item, background);
    (void)SelectPalette(item.hDC, m_pHost->m_Palette.GetPalette(), FALSE); // if it fails, the context keeps its palette
    if (CBrush().GetRefId(brush) != CI_TRANSPARENT) (void)FillRect(item.hDC, &item.rcItem, CBrush().GetBrush(brush));
    PaintText(item, m_pHost->m_Palette.GetColor(static_cast<COLOR_IDX>(text)));
}

void OSClass::PaintText(const DRAWITEMSTRUCT& item, COLORREF color) {
    wchar_t text[kTextLength];
    const int length = GetWindowTextW(item.hwndItem, text, kTextLength);
    if (length == 0) return;
    (void)SetBkMode(item.hDC, TRANSPARENT);
    (void)SetTextColor(item.hDC, color);
    SIZE size;
    if (!GetTextExtentPoint32W(item.hDC, text, length, &size)) return;
    // ODD-64: centred as if the rectangle started at 0, 0.
    (void)TextOutW(item.hDC, (item.rcItem.right - size.cx) / 2, (item.rcItem.bottom - size.cy) / 2, text, length);
}
