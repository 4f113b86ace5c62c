#include "support/ChildProcess.h"
#include "support/ImportPatch.h"
#include "support/OpenPostOffice.h"
#include "support/Reports.h"

#include <gtest/gtest.h>
#include <tessel/brush.h>
#include <tessel/dialog.h>
#include <tessel/host.h>
#include <tessel/mailbox.h>
#include <tessel/synchronisation.h>
#include <tessel/system.h>

#include <functional>
#include <thread>

namespace {

constexpr int kDialog = 101;
constexpr int kText = 1001;
constexpr int kButton = 1002;

/// Notes what the host tells it; what it does at the start is the test's.
class Program : public OSClass {
public:
    explicit Program(const char* arguments = "", const wchar_t* name = L"Tessel test host")
        : OSClass(GetModuleHandleW(nullptr), name, 0, arguments) {}
    void OnStart() override {
        events.push_back(L"start");
        if (atStart) atStart();
    }
    void OnClose() override { events.push_back(L"close"); }
    void OnMessage(HWND, UINT message, WPARAM, LPARAM lParam) override {
        seen.push_back(message);
        if (message == MAILBOX_NOTIFICATION && atMail) atMail(lParam);
    }
    void OnPumpExit(int code, const wchar_t* text) override { events.push_back(std::to_wstring(code) + L" " + text); }
    bool Sees(UINT message, WPARAM wParam = 0, LPARAM lParam = 0) {
        seen.clear();
        SendMessageW(GetFrameWindow(), message, wParam, lParam);
        return seen == std::vector<UINT>{message};
    }

    std::function<void()> atStart;
    std::function<void(LPARAM)> atMail;
    std::vector<std::wstring> events;
    std::vector<UINT> seen;
};

std::vector<std::wstring> boxes;

int WINAPI NoteBox(HWND, LPCWSTR text, LPCWSTR title, UINT) {
    boxes.push_back(std::wstring(title) + L": " + text);
    return IDOK;
}

class Host : public testing::Test {
protected:
    Host() { boxes.clear(); }
    OpenPostOffice office;
    Program program;
};

/// Tells the test that it was started. Arguments: the name of an event.
int Tell(const std::vector<std::string>& arguments) {
    const HANDLE event = OpenEventA(EVENT_ALL_ACCESS, FALSE, arguments[0].c_str());
    SetEvent(event);
    return 0;
}
const Role tell("tell", Tell);

WNDPROC frameProcedure = nullptr;

LRESULT CALLBACK QuitWhenDestroyed(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_DESTROY) PostQuitMessage(0);
    return CallWindowProcW(frameProcedure, window, message, wParam, lParam);
}

/// A program that ends when its frame window is told to.
int RunHost(const std::vector<std::string>&) {
    const OpenPostOffice office;
    Program program;
    const auto replaced =
        SetWindowLongPtrW(program.GetFrameWindow(), GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&QuitWhenDestroyed));
    frameProcedure = reinterpret_cast<WNDPROC>(replaced);
    program.atStart = [] { Say("running"); };
    return program.OS_Pump();
}
const Role runHost("run-host", RunHost);

} // namespace

TEST_F(Host, RunsFromStartToExitAndReturnsTheCode) {
    program.atStart = [this] { program.ExitApplication(5); };
    EXPECT_EQ(program.OS_Pump(), 5);
    EXPECT_EQ(program.events, (std::vector<std::wstring>{L"start", L"0 OS_Pump exiting"}));
    program.SetExitCode(7);
    program.atStart = [this] { program.ExitApplication(0); };
    EXPECT_EQ(program.OS_Pump(), 7);
    program.atStart = [this] { PostMessageW(program.GetFrameWindow(), WM_CLOSE, 0, 0); };
    program.events.clear();
    EXPECT_EQ(program.OS_Pump(), 7);
    EXPECT_EQ(program.events, (std::vector<std::wstring>{L"start", L"close", L"0 OS_Pump exiting"}));
}

TEST_F(Host, RegistersItsFrameWindowForItsLife) {
    CResource resources;
    const auto frame = [&] { return resources.GetResource(RESOURCE_TYPE{1}, RESOURCE_ID{2}, GetCurrentProcessId()); };
    EXPECT_EQ(frame(), program.GetFrameWindow());
    EXPECT_FALSE(IsWindowVisible(frame()));
    { const Program copy(program); }
    EXPECT_EQ(frame(), nullptr);
    EXPECT_EQ(Program(std::string(1000, 'x').c_str(), L"Tessel other host").GetCommandLineText(),
              std::wstring(259, L'x'));
}

TEST_F(Host, HandsOnWhatIsOfInterestAndNothingElse) {
    for (const UINT message : {WM_PAINT, WM_TIMER, WM_MENUSELECT, WM_MOUSEMOVE, WM_LBUTTONDOWN, WM_LBUTTONDBLCLK,
                               WM_RBUTTONDOWN, WM_RBUTTONDBLCLK, WM_MBUTTONDOWN, WM_MBUTTONDBLCLK, WM_COMMAND}) {
        EXPECT_TRUE(program.Sees(message)) << message;
    }
    NMHDR header{};
    EXPECT_TRUE(program.Sees(WM_NOTIFY, 0, reinterpret_cast<LPARAM>(&header)));
    for (const UINT message : {WM_LBUTTONUP, WM_RBUTTONUP, WM_MBUTTONUP, WM_SIZE, WM_DRAWITEM, WM_USER}) {
        EXPECT_FALSE(program.Sees(message)) << message;
    }
}

TEST_F(Host, GetsTheMessagesOfItsMailbox) {
    CMailBox mailbox(ORCAOBJID{90});
    ASSERT_EQ(mailbox.RegisterMailbox(program.GetFrameWindow()), 0);
    program.atStart = [&] { mailbox.Send(ORCAOBJID{90}, 42, 0, nullptr, 0, nullptr); };
    unsigned long received = 0;
    program.atMail = [&](LPARAM number) {
        SBLOCK* const block = mailbox.GetMessageBlock(static_cast<unsigned>(number));
        received = block->MsgId;
        mailbox.ReleaseMemory(block);
        program.ExitApplication(0);
    };
    program.OS_Pump();
    EXPECT_EQ(received, 42u);
}

TEST_F(Host, AnswersRequestsOfOtherThreads) {
    HWND dialog = nullptr;
    HWND missing = program.GetFrameWindow();
    int noted = 0;
    const DWORD thread = GetCurrentThreadId();
    std::thread other;
    program.atStart = [&] {
        other = std::thread([&] {
            dialog = LoadResourceDialog(kDialog, nullptr, nullptr);
            missing = LoadResourceDialog(999, nullptr, nullptr);
            noted = RequestNotify(dialog, 3);
            PostThreadMessageW(thread, WM_QUIT, 0, 0);
        });
    };
    program.OS_Pump();
    other.join();
    EXPECT_EQ(GetWindowThreadProcessId(dialog, nullptr), GetCurrentThreadId());
    EXPECT_EQ(CResource().GetResource(RESOURCE_TYPE{2}, RESOURCE_ID{0}, kDialog), dialog);
    EXPECT_EQ(missing, nullptr);
    EXPECT_EQ(noted, 1);
    EXPECT_EQ(program.IsWindowNotify(dialog, 1), 1);
}

TEST_F(Host, RequestsWithoutAReadableRecordAreAnsweredWith0) {
    for (const LPARAM address : {LPARAM{0}, LPARAM{8}, LPARAM{-1}}) {
        EXPECT_EQ(SendMessageW(program.GetFrameWindow(), WM_COMMAND, 0xFFAB, address), 0);
        EXPECT_EQ(SendMessageW(program.GetFrameWindow(), WM_COMMAND, 0xFFAD, address), 0);
        OSClass::PaintWithOwnerBrush(address);
    }
    EXPECT_TRUE(program.seen.empty());
}

TEST_F(Host, ItsNotificationTableHolds1999Windows) {
    const auto window = [](unsigned long number) { return static_cast<HWND>(ULongToHandle(number * 16)); };
    for (unsigned long number = 1; number < 2000; ++number) ASSERT_EQ(program.RequestWndNotify(window(number), 2), 0);
    const ImportPatch box(L"Tessel.dll", "MessageBoxW", NoteBox);
    EXPECT_EQ(program.RequestWndNotify(window(2000), 2), 1);
    EXPECT_EQ(boxes, std::vector<std::wstring>{L"Varda Message: Unable to ADD Window Message Notification\n"
                                               L"(Enlarge Array)"});
    EXPECT_EQ(program.RequestWndNotify(window(1999), 6), 0);
    EXPECT_EQ(program.IsWindowNotify(window(1999), 4), 4);
    EXPECT_EQ(program.RequestWndNotify(window(7), 0), 0);
    EXPECT_EQ(program.IsWindowNotify(window(7), 2), 0);
    EXPECT_EQ(program.RequestWndNotify(window(2000), 3), 0);
    EXPECT_EQ(program.IsWindowNotify(window(2000), 1), 1);
    EXPECT_EQ(program.IsWindowNotify(nullptr, 5), 5);
    EXPECT_EQ(program.IsWindowNotify(nullptr, 6), 6);
}

TEST_F(Host, ManagersLiveAsLongAsTheirMainAndSeveralAtOnce) {
    CSemaphore started(L"Tessel test manager started", 0, 10);
    CEvent stop(L"Tessel test manager stop", 1);
    HINSTANCE modules[3] = {};
    for (HINSTANCE& module : modules) {
        EXPECT_NE(program.CreateThreadedManager(L"manager_runs.dll", &module), 0xFFFFFFFFu);
        EXPECT_EQ(started.WaitOnSemaphore(INFINITE), 0);
    }
    EXPECT_EQ(GetModuleHandleW(L"manager_runs.dll"), modules[0]);
    stop.SetEvent();
    while (GetModuleHandleW(L"manager_runs.dll") != nullptr) Sleep(1);

    EXPECT_NE(program.CreateThreadedManager(L"manager_empty.dll", modules), 0xFFFFFFFFu);
    while (GetModuleHandleW(L"manager_empty.dll") != nullptr) Sleep(1);

    const ImportPatch box(L"Tessel.dll", "MessageBoxW", NoteBox);
    EXPECT_EQ(program.CreateThreadedManager(L"no such.dll", modules), 0xFFFFFFFFu);
    EXPECT_EQ(modules[0], nullptr);
    EXPECT_EQ(program.OpenResourceFile(L"no such.dll"), nullptr);
    EXPECT_EQ(boxes, std::vector<std::wstring>(2, L"LoadLibrary failed: DllName: no such.dll\nErrorCode:126"));
}

TEST_F(Host, Odd62StartsAProcessUnderTheNameOfTheConsoleProgram) {
    CEvent told(L"TesselTestTold");
    wchar_t own[MAX_PATH];
    GetModuleFileNameW(nullptr, own, MAX_PATH);
    const auto* const arguments = reinterpret_cast<const unsigned char*>(L"--role tell TesselTestTold");
    void* const process = program.StartProcess(own, arguments);
    ASSERT_NE(process, nullptr);
    EXPECT_EQ(told.WaitOnEvent(INFINITE), 0u);
    WaitForSingleObject(process, INFINITE);
    CloseHandle(process);
    EXPECT_EQ(program.StartProcess(L"no such.exe", nullptr), nullptr);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_FILE_NOT_FOUND));
}

TEST(HostProcess, IsShutDownThroughItsFrameWindow) {
    const OpenPostOffice office;
    ChildProcess host("run-host");
    ASSERT_EQ(host.WaitUntil("running"), "");
    ShutDown(host.Id());
    EXPECT_EQ(host.ExitCode(), 0u);
}

TEST_F(Host, SendsItsHeartbeatToAllTopLevelWindows) {
    const HWND listener = CreateWindowExW(0, L"STATIC", L"", WS_POPUP, 0, 0, 1, 1, nullptr, nullptr, nullptr, nullptr);
    const UINT beat = RegisterThisWindowMessage(L"Tessel test heartbeat");
    program.SetVardaMsgId(beat);
    EXPECT_EQ(OSClass::GetVardaMsgId(), beat);
    MSG message{};
    ASSERT_TRUE(GetMessageW(&message, listener, beat, beat));
    EXPECT_EQ(message.wParam, 40039u);
    EXPECT_EQ(message.lParam, reinterpret_cast<LPARAM>(program.GetFrameWindow()));
    program.SetVardaMsgId(0);
    EXPECT_FALSE(PeekMessageW(&message, listener, beat, beat, PM_REMOVE));
    DestroyWindow(listener);
}

TEST_F(Host, Odd61DialogsGoThroughItAndBecomeActiveUnderThePointer) {
    const HWND dialog = program.CreateDialogWindow(GetModuleHandleW(nullptr), program.GetFrameWindow(), kDialog);
    ASSERT_NE(dialog, nullptr);
    EXPECT_EQ(program.seen.back(), static_cast<UINT>(WM_INITDIALOG));
    program.seen.clear();
    SendMessageW(dialog, WM_SETCURSOR, reinterpret_cast<WPARAM>(dialog), HTCLIENT);
    EXPECT_TRUE(program.seen.empty());
    SendMessageW(dialog, WM_SETCURSOR, reinterpret_cast<WPARAM>(dialog), HTCLIENT);
    SendMessageW(GetDlgItem(dialog, kButton), BM_CLICK, 0, 0);
    EXPECT_EQ(program.seen, (std::vector<UINT>{WM_SETCURSOR, WM_COMMAND}));
    SendMessageW(dialog, WM_CLOSE, 0, 0);
    EXPECT_FALSE(IsWindow(dialog));
    EXPECT_EQ(program.seen.back(), static_cast<UINT>(WM_CLOSE));
}

TEST_F(Host, Odd63And64PaintsControlsInTheColoursOfTheirTag) {
    const HWND dialog = program.CreateDialogWindow(GetModuleHandleW(nullptr), nullptr, kDialog);
    const HWND control = GetDlgItem(dialog, kText);
    const HDC context = GetDC(control);
    const auto ask = [&] {
        return OSClass::DlgProc(dialog, WM_CTLCOLORSTATIC, reinterpret_cast<WPARAM>(context),
                                reinterpret_cast<LPARAM>(control));
    };
    EXPECT_EQ(ask(), 0);
    CBrush brushes;
    const int background = brushes.Add(RGB(10, 200, 30));
    DIALOG_INTERFACE(dialog).SetColor(kText, 1, background);
    EXPECT_EQ(ask(), reinterpret_cast<INT_PTR>(brushes.GetBrush(background)));
    EXPECT_EQ(GetBkColor(context), RGB(10, 200, 30));
    EXPECT_EQ(GetTextColor(context), program.GetPalette().GetColor(COLOR_IDX{1}));

    const HBITMAP bitmap = CreateCompatibleBitmap(context, 100, 40);
    const HDC memory = CreateCompatibleDC(context);
    SelectObject(memory, bitmap);
    DRAWITEMSTRUCT item{};
    item.hwndItem = control;
    item.hDC = memory;
    item.rcItem = {0, 0, 100, 40};
    OSClass::PaintWithOwnerBrush(reinterpret_cast<LPARAM>(&item));
    EXPECT_EQ(GetPixel(memory, 1, 1), RGB(10, 200, 30));
    DeleteDC(memory);
    DeleteObject(bitmap);
    ReleaseDC(control, context);

    OSClass::PaletteFlag = 0;
    EXPECT_EQ(OSClass::DlgProc(dialog, WM_QUERYNEWPALETTE, 0, 0), FALSE);
    SendMessageW(dialog, WM_PALETTECHANGED, reinterpret_cast<WPARAM>(dialog), 0);
    EXPECT_EQ(OSClass::PaletteFlag, 0) << "the own process";
    SendMessageW(dialog, WM_PALETTECHANGED, reinterpret_cast<WPARAM>(GetDesktopWindow()), 0);
    EXPECT_EQ(OSClass::PaletteFlag, 1);
    EXPECT_EQ(OSClass::DlgProc(dialog, WM_QUERYNEWPALETTE, 0, 0), TRUE);
    EXPECT_EQ(OSClass::PaletteFlag, 0);
}
