#include "BoxResources.h"
#include "support/ImportPatch.h"
#include "support/Reports.h"

#include <gtest/gtest.h>
#include <tessel/messagebox.h>

namespace {

std::wstring TextOf(HWND window) {
    wchar_t text[1100] = L"";
    GetWindowTextW(window, text, 1100);
    return text;
}

std::wstring MessageIn(HWND box) {
    std::wstring text;
    for (HWND label = nullptr; text.empty() && (label = FindWindowExW(box, label, L"Static", nullptr));) {
        text = TextOf(label);
    }
    return text;
}

/// Waits, as a hook of the thread, for the next box to be activated; looks at it and presses buttons.
class Press {
public:
    explicit Press(std::vector<int> buttons) : m_buttons(std::move(buttons)) {
        current = this;
        m_hook = SetWindowsHookExW(WH_CBT, &Hook, nullptr, GetCurrentThreadId());
    }
    ~Press() { UnhookWindowsHookEx(m_hook); }
    Press(const Press&) = delete;
    Press& operator=(const Press&) = delete;

    std::wstring message, caption, buttonTexts;
    bool centred = false;
    int firstCode = -1;

private:
    static LRESULT CALLBACK Hook(int code, WPARAM wParam, LPARAM lParam) {
        if (current->firstCode == -1) current->firstCode = code;
        if (code == HCBT_ACTIVATE && current->message.empty()) current->Look(reinterpret_cast<HWND>(wParam));
        return CallNextHookEx(current->m_hook, code, wParam, lParam);
    }
    void Look(HWND box) {
        RECT area{};
        GetWindowRect(box, &area);
        centred = area.left == (GetSystemMetrics(SM_CXSCREEN) - (area.right - area.left)) / 2 &&
                  area.top == (GetSystemMetrics(SM_CYSCREEN) - (area.bottom - area.top)) / 2;
        message = MessageIn(box);
        caption = TextOf(box);
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

constexpr unsigned int kButtonTexts[] = {IDS_FIRST, IDS_MISSING, IDS_MISSING};
constexpr CMessageBox::RESOURCES kOwnDialog = {IDD_BOX, IDC_MESSAGE, kButtonTexts};

struct ButtonSet {
    unsigned int type;
    int pressed;
    const wchar_t* texts;
};

class MessageBoxButtons : public testing::TestWithParam<ButtonSet> {};

unsigned int passedType = 0;
int WINAPI KeepType(HWND, LPCWSTR, LPCWSTR, UINT type) {
    passedType = type;
    return IDOK;
}

} // namespace

TEST_P(MessageBoxButtons, OfTheOwnDialogAreTheSetOfTheTypeAndEndIt) {
    CMessageBox box(nullptr, L"Text", L"Caption", GetParam().type, MESSAGEBOX_NO_ERROR);
    box.SetResources(&kOwnDialog);
    const Press press({GetParam().pressed});
    EXPECT_EQ(box.Run(), GetParam().pressed);
    EXPECT_EQ(press.buttonTexts, GetParam().texts);
    EXPECT_EQ(press.message, L"Text");
    EXPECT_EQ(press.caption, L"Caption");
    EXPECT_TRUE(press.centred);
    EXPECT_EQ(box.GetHandle(), nullptr);
}

TEST_P(MessageBoxButtons, OfTheSystemBoxEndItToo) {
    const Press press({GetParam().pressed});
    EXPECT_EQ(CMessageBox().Run(L"Text", L"Caption", GetParam().type, MESSAGEBOX_NO_ERROR), GetParam().pressed);
    EXPECT_EQ(press.message, L"Text");
    EXPECT_EQ(press.caption, L"Caption");
    EXPECT_TRUE(press.centred);
}

INSTANTIATE_TEST_SUITE_P(Types, MessageBoxButtons,
                         testing::Values(ButtonSet{MB_OK, IDOK, L"1:First "},
                                         ButtonSet{MB_OKCANCEL, IDCANCEL, L"1:First 2:No "},
                                         ButtonSet{MB_ABORTRETRYIGNORE, IDIGNORE, L"3:First 4:No 5:Cancel "},
                                         ButtonSet{MB_YESNOCANCEL, IDNO, L"2:Cancel 6:First 7:No "},
                                         ButtonSet{MB_YESNO, IDYES, L"6:First 7:No "},
                                         ButtonSet{MB_RETRYCANCEL, IDRETRY, L"2:No 4:First "}));

TEST(MessageBoxes, AppendsTheTextOfAnErrorThatTheSystemKnows) {
    CMessageBox box(nullptr, L"Text ", nullptr, MB_OK, ERROR_ACCESS_DENIED);
    const CMessageBox copy(box);
    for (CMessageBox shown : {box, copy}) {
        const Press press({IDOK});
        shown.Run();
        EXPECT_TRUE(press.message.starts_with(L"Text 00000005: ")) << press.message.size();
        EXPECT_GT(press.message.size(), 20u);
    }
    for (const unsigned long error : {0xDEADBEEFUL, MESSAGEBOX_NO_ERROR}) {
        const Press press({IDOK});
        box.Run(L"Text", nullptr, MESSAGEBOX_SAME_TYPE, error);
        EXPECT_EQ(press.message, L"Text");
    }
}

TEST(MessageBoxes, ReadsTextsByNumberFromTheProgram) {
    CMessageBox box(nullptr, IDS_MESSAGE, IDS_MISSING, MB_OK, MESSAGEBOX_NO_ERROR);
    {
        const Press press({IDOK});
        box.Run();
        EXPECT_EQ(press.message, L"Message by number");
        EXPECT_EQ(press.caption, L"Caption text not found.");
    }
    const Press press({IDOK});
    box.Run(IDS_MISSING, IDS_FIRST, MESSAGEBOX_SAME_TYPE, MESSAGEBOX_NO_ERROR);
    EXPECT_EQ(press.message, L"Message text not found.");
    EXPECT_EQ(press.caption, L"First");
}

TEST(MessageBoxes, Odd52ButtonWithoutItsTextIsNamedByItsPosition) {
    CMessageBox box(nullptr, L"Text", L"Caption", MB_OKCANCEL, MESSAGEBOX_NO_ERROR);
    const CMessageBox::RESOURCES withoutTexts = {IDD_BOX, IDC_MESSAGE, nullptr};
    box.SetResources(&withoutTexts);
    const Press press({IDOK});
    EXPECT_EQ(box.Run(), IDOK);
    EXPECT_EQ(press.buttonTexts, L"1:Yes 2:No ");
}

TEST(MessageBoxes, Odd53TypeWithAnIconIsForTheSystemBoxOnly) {
    Reports reports;
    CMessageBox box(nullptr, L"Text", L"Caption", MB_ICONWARNING, MESSAGEBOX_NO_ERROR);
    {
        const ImportPatch patch(L"Tessel.dll", "MessageBoxW", &KeepType);
        box.Run();
        EXPECT_EQ(passedType, static_cast<unsigned>(MB_ICONWARNING));
    }
    EXPECT_TRUE(reports.Take().empty());
    box.SetResources(&kOwnDialog);
    const Press press({IDYES});
    EXPECT_EQ(box.Run(), IDYES);
    EXPECT_EQ(press.buttonTexts, L"");
    EXPECT_EQ(reports.Take(), Texts{"MessageBox:289 Unsupported MessageBox type!"});
}

TEST(MessageBoxes, Odd54OtherHooksOfTheThreadHearOnlyOfTheActivation) {
    const Press press({IDOK});
    CMessageBox().Run(L"Text", L"Caption", MB_OK, MESSAGEBOX_NO_ERROR);
    EXPECT_EQ(press.firstCode, HCBT_ACTIVATE);
}

TEST(MessageBoxes, IsNotEndedByAButtonBeyondTheSeven) {
    CMessageBox box(nullptr, L"Text", L"Caption", MB_OK, MESSAGEBOX_NO_ERROR);
    box.SetResources(&kOwnDialog);
    const Press press({8, IDNO});
    EXPECT_EQ(box.Run(), IDNO);
}
