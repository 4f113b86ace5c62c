#include "Screen.h"

#include "Bitmap.h"

#include <uxtheme.h>

#include <algorithm>
#include <cwchar>

namespace {

constexpr auto kBackground = COLOR_IDX{CI_INTERFACE};
constexpr auto kRaised = COLOR_IDX{CI_INTERFACE + 2};
constexpr auto kQuiet = COLOR_IDX{CI_INTERFACE + 9};
constexpr auto kBright = COLOR_IDX{CI_INTERFACE + 15};
constexpr auto kTitle = COLOR_IDX{CI_INTERFACE + 7};

/// A control and its two colours.
struct ControlColours {
    int id;
    COLOR_IDX text;
    COLOR_IDX background;
};

/// An id that no control has refers to the dialog.
constexpr ControlColours kColours[] = {
    {0, kBright, kBackground},
    {IDC_MANAGERS_TITLE, kTitle, kBackground},
    {IDC_POST_TITLE, kTitle, kBackground},
    {IDC_IMAGES_TITLE, kTitle, kBackground},
    {IDC_POST, kQuiet, kBackground},
    {IDC_IMAGES, kQuiet, kBackground},
    {IDC_START, kBright, kRaised},
    {IDC_STOP, kBright, kRaised},
    {IDC_EXIT, kBright, kRaised},
};

constexpr int kColumnWidths[] = {96, 78, 64, 64, 48};

HWND MakeDialog(OSClass& host) {
    return host.CreateDialogWindow(GetModuleHandleW(nullptr), nullptr, IDD_WORKSTATION);
}

} // namespace

Screen::Screen(OSClass& host) : m_controls(MakeDialog(host)) {
    (void)m_controls.Reset(IDC_MANAGERS, L"Manager,State,Sent,Received,Lost");
    for (int column = 0; const int width : kColumnWidths) {
        (void)m_controls.LVSetColumnWidth(IDC_MANAGERS, column++, width);
    }
    (void)m_controls.Range(IDC_POOL, 0, SMALL_BLOCK_COUNT, 0);
    SetColours(host);
}

void Screen::SetColours(OSClass& host) {
    CBrush brushes;
    for (const ControlColours& colours : kColours) {
        (void)m_controls.SetColor(colours.id, static_cast<int>(colours.text), brushes.Add(colours.background));
    }
    SetControlColours(host.GetPalette());
}

void Screen::SetControlColours(const COrcaPalette& palette) {
    const HWND list = m_controls.GetHandle(IDC_MANAGERS);
    (void)SendAMessage(list, LVM_SETBKCOLOR, 0, static_cast<LPARAM>(palette.GetColor(kRaised)));
    (void)SendAMessage(list, LVM_SETTEXTBKCOLOR, 0, static_cast<LPARAM>(palette.GetColor(kRaised)));
    (void)SendAMessage(list, LVM_SETTEXTCOLOR, 0, static_cast<LPARAM>(palette.GetColor(kBright)));
    const HWND pool = m_controls.GetHandle(IDC_POOL);
    (void)SetWindowTheme(pool, L" ", L" "); // a themed bar takes no colours
    (void)SendAMessage(pool, PBM_SETBKCOLOR, 0, static_cast<LPARAM>(palette.GetColor(kRaised)));
    (void)SendAMessage(pool, PBM_SETBARCOLOR, 0, static_cast<LPARAM>(palette.GetColor(kTitle)));
}

void Screen::AddManager(int row, const wchar_t* name) {
    (void)m_controls.Add(IDC_MANAGERS, row, name, 0);
}

void Screen::ShowManager(int row, const wchar_t* state, const ManagerStatus& status) {
    (void)m_controls.Set(IDC_MANAGERS, row, 1, state);
    for (int column = 2; const std::uint32_t count : {status.sent, status.received, status.lost}) {
        (void)m_controls.Set(IDC_MANAGERS, row, column++, std::to_wstring(count).c_str());
    }
}

void Screen::SetLine(std::uint32_t line, std::span<const std::uint8_t> pixels) {
    std::copy(pixels.begin(), pixels.end(), m_image.data() + line * kImageWidth);
}

void Screen::RefreshImage() {
    (void)m_controls.Display(IDC_IMAGE, DA_REFRESH, 0); // always returns failure
}

void Screen::DrawImage(const DRAWITEMSTRUCT& item) const {
    const GreyBitmapInfo info = DescribeImage();
    const int side = std::min(item.rcItem.right, item.rcItem.bottom);
    (void)SetStretchBltMode(item.hDC, HALFTONE);
    (void)StretchDIBits(item.hDC, 0, 0, side, side, 0, 0, kImageWidth, kImageHeight, m_image.data(),
                        reinterpret_cast<const BITMAPINFO*>(&info), DIB_RGB_COLORS, SRCCOPY);
}

void Screen::ShowPostOffice(CMailBox& mailbox) {
    MONITOR_LEVEL receivers[POST_OFFICE_MAILBOXES];
    const unsigned registered = mailbox.BuildDirectoryList(receivers, POST_OFFICE_MAILBOXES);
    const auto free = static_cast<int>(mailbox.GetFreeBlockCount());
    wchar_t text[128];
    (void)_snwprintf(text, 128, L"%u of %u mailboxes registered\n%d of %u blocks free", registered,
                     POST_OFFICE_MAILBOXES - 1u, free, unsigned{SMALL_BLOCK_COUNT});
    (void)m_controls.Set(IDC_POST, 0, text, 0);
    (void)m_controls.Set(IDC_POOL, SMALL_BLOCK_COUNT - free, nullptr, 0);
}
