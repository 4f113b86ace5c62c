#include "BoxResources.h"
#include "support/ImportPatch.h"
#include "support/Reports.h"

#include <gtest/gtest.h>
#include <tessel/ui/messagebox.h>

#include <tuple>

namespace {

std::wstring TextOf(HWND window) {
    wchar_t text[1100] = L"";
    GetWindowTextW(window, text, 1100);
    return text;
}

/// A hook of the thread that waits for the next box to be activated, inspects it and presses buttons.
class Press {
public:
    explicit Press(std::vector<int> buttons) : m_buttons(std::move(buttons)) {
        current = this;
        m_hook = SetWindowsHookExW(WH_CBT, &Hook, nullptr, GetCurrentThreadId());
    }
    ~Press() { UnhookWindowsHookEx(m_hook); }

    std::wstring message, caption, buttonTexts;
    bool centred = false;
    HWND owner = nullptr;
    int firstCode = -1;
    bool hearsOfTheEnd = false;

private:
    static LRESULT CALLBACK Hook(int code, WPARAM wParam, LPARAM lParam) {
        if (current->firstCode == -1) current->firstCode = code;
        if (code == HCBT_DESTROYWND) current->hearsOfTheEnd = true;
        if (code == HCBT_ACTIVATE && current->message.empty()) current->Look(reinterpret_cast<HWND>(wParam));
        return CallNextHookEx(current->m_hook, code, wParam, lParam);
    }
    void Look(HWND box) {
        RECT area{};
        GetWindowRect(box, &area);
        centred = area.left == (GetSystemMetrics(SM_CXSCREEN) - (area.right - area.left)) / 2 &&
                  area.top == (GetSystemMetrics(SM_CYSCREEN) - (area.bottom - area.top)) / 2;
        for (HWND label = nullptr; message.empty();)
            message = TextOf(label = FindWindowExW(box, label, L"Static", nullptr));
        caption = TextOf(box);
        owner = GetWindow(box, GW_OWNER);
        for (int id = IDOK; id <= IDNO; ++id) {
            const std::wstring text = TextOf(GetDlgItem(box, id));
            if (text != L"-") buttonTexts += std::to_wstring(id) + L':' + text + L' ';
        }
        for (const int button : m_buttons) PostMessageW(box, WM_COMMAND, static_cast<WPARAM>(button), 0);
    }

    static inline Press* current = nullptr;
    std::vector<int> m_buttons;
    HHOOK m_hook;
};

constexpr unsigned int kButtonTexts[] = {IDS_MISSING, IDS_SECOND, IDS_MISSING};

/// What the system's box last had to show, joined by bars, and its owner.
std::wstring shown;
HWND shownOwner;

int KeepTexts(HWND owner, const wchar_t* text, const wchar_t* caption, UINT type) {
    shownOwner = owner;
    shown = std::wstring(text) + L'|' + (caption == nullptr ? L"" : caption);
    return static_cast<int>(type);
}

/// Activates a new window.
/// @return its left edge; any other than 1: a hook has centred it
long LeftOfActivated() {
    const HWND window = CreateWindowW(L"Static", L"", WS_POPUP, 1, 2, 30, 40, nullptr, nullptr, nullptr, nullptr);
    SetActiveWindow(window);
    RECT area{};
    GetWindowRect(window, &area);
    DestroyWindow(window);
    return area.left;
}

/// When button 8 is pressed, forges the message that names the object of a new dialog, and runs itself again.
struct Again : CMessageBox {
    bool OnCommand(unsigned int, int id, HWND) override {
        if (id != 8) return End(id);
        SendMessageW(GetHandle(), WM_INITDIALOG, 0, reinterpret_cast<LPARAM>(&other));
        return Run() == IDNO;
    }
    CMessageBox other;
};

} // namespace

TEST(MessageBoxes, Odd52And53And56OwnDialogHasTheButtonsOfThePlainTypesAndEndsWithOneOfThem) {
    const std::tuple<unsigned int, int, const unsigned int*, const wchar_t*> rows[] = {
        {MB_OK, IDOK, kButtonTexts, L"1:Yes "},
        {MB_OKCANCEL, IDCANCEL, kButtonTexts, L"1:Yes 2:Second "},
        {MB_ABORTRETRYIGNORE, IDIGNORE, kButtonTexts, L"3:Yes 4:Second 5:Cancel "},
        {MB_YESNOCANCEL, IDNO, kButtonTexts, L"2:Cancel 6:Yes 7:Second "},
        {MB_YESNO, IDCANCEL, kButtonTexts, L"6:Yes 7:Second "},
        {MB_RETRYCANCEL, IDRETRY, kButtonTexts, L"2:Second 4:Yes "},
        {MB_YESNOCANCEL, IDABORT, nullptr, L"2:Cancel 6:Yes 7:No "},
        {MB_ICONWARNING, IDYES, kButtonTexts, L""},
    };
    Reports reports;
    const HWND owner = CreateWindowW(L"Static", L"", WS_POPUP, 0, 0, 1, 1, nullptr, nullptr, nullptr, nullptr);
    for (const auto& [type, pressed, ids, texts] : rows) {
        CMessageBox box(owner, L"Text", L"Caption", type, MESSAGEBOX_NO_ERROR);
        const CMessageBox::RESOURCES own{IDD_BOX, IDC_MESSAGE, ids};
        box.SetResources(&own);
        CMessageBox assigned;
        assigned = CMessageBox(box);
        const Press press({8, pressed});
        EXPECT_EQ(assigned.Run(), pressed) << type;
        EXPECT_EQ(press.owner, owner);
        EXPECT_EQ(press.buttonTexts, texts) << type;
        EXPECT_EQ(press.message + L'|' + press.caption, L"Text|Caption");
        EXPECT_TRUE(press.centred);
    }
    DestroyWindow(owner);
    EXPECT_EQ(reports.Take(), Texts{"MessageBox:289 Unsupported MessageBox type!"});
}

TEST(MessageBoxes, Odd54OtherHooksSeeOnlyTheActivationOfTheCentredSystemBox) {
    const Press press({IDNO});
    EXPECT_EQ(CMessageBox().Run(L"Text", L"Caption", MB_YESNO, MESSAGEBOX_NO_ERROR), IDNO);
    EXPECT_TRUE(press.centred);
    EXPECT_EQ(press.firstCode, HCBT_ACTIVATE);
    EXPECT_TRUE(press.hearsOfTheEnd);
}

TEST(MessageBoxes, LeavesNoHookBehindWhenOneBoxOpensAnother) {
    const ImportPatch patch("MessageBoxW", &MessageBoxW, [](HWND, auto, auto, UINT type) {
        if (type != MB_OK) CMessageBox().Run(L"", L"", MB_OK, MESSAGEBOX_NO_ERROR);
        EXPECT_NE(LeftOfActivated(), 1);
        EXPECT_EQ(LeftOfActivated(), 1) << "the hook of the other box";
        return MB_OK;
    });
    EXPECT_EQ(CMessageBox().Run(L"", L"", MB_YESNO, MESSAGEBOX_NO_ERROR), MB_OK);
    EXPECT_EQ(LeftOfActivated(), 1);
}

TEST(MessageBoxes, AnOwnDialogKeepsItsObjectWhenAMessageIsForgedAndWhenItRunsAgain) {
    Again box;
    const CMessageBox::RESOURCES own{IDD_BOX, IDC_MESSAGE, nullptr};
    box.SetResources(&own);
    const Press press({8, IDNO, IDYES}); // the second one ends the inner dialog
    EXPECT_EQ(box.Run(L"Text", L"", MB_YESNO, MESSAGEBOX_NO_ERROR), IDYES);
    EXPECT_EQ(box.other.GetHandle(), nullptr);
}

TEST(MessageBoxes, AppendsTheTextOfAnErrorThatTheSystemKnows) {
    const ImportPatch patch("MessageBoxW", &MessageBoxW, KeepTexts);
    CMessageBox box(GetDesktopWindow(), L"Text ", nullptr, MB_ICONWARNING, ERROR_ACCESS_DENIED);
    const CMessageBox copy(box);
    for (CMessageBox each : {box, copy}) {
        EXPECT_EQ(each.Run(), MB_ICONWARNING);
        EXPECT_TRUE(shown.starts_with(L"Text 00000005: "));
        EXPECT_GT(shown.find(L'|'), 15u) << "the system's text";
        EXPECT_EQ(shownOwner, GetDesktopWindow());
    }
    for (const unsigned long error : {0xDEADBEEFUL, MESSAGEBOX_NO_ERROR}) {
        box.Run(L"Text", nullptr, MESSAGEBOX_SAME_TYPE, error);
        EXPECT_EQ(shown, L"Text|");
    }
    EXPECT_EQ(box.Run(nullptr, L"Caption", MB_OK, MESSAGEBOX_NO_ERROR), MB_OK);
    EXPECT_EQ(shown, L"Text|Caption");
}

TEST(MessageBoxes, ReadsTextsByNumberFromTheProgram) {
    const ImportPatch patch("MessageBoxW", &MessageBoxW, KeepTexts);
    CMessageBox box(nullptr, IDS_MESSAGE, IDS_MISSING, MB_OK, MESSAGEBOX_NO_ERROR);
    box.Run();
    EXPECT_EQ(shown, L"Message by number|Caption text not found.");
    box.Run(IDS_MISSING, IDS_SECOND, MESSAGEBOX_SAME_TYPE, MESSAGEBOX_NO_ERROR);
    EXPECT_EQ(shown, L"Message text not found.|Second");
}
