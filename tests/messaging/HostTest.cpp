#include "support/ChildProcess.h"
#include "support/ImportPatch.h"
#include "support/OpenPostOffice.h"
#include "support/Reports.h"

#include <gtest/gtest.h>
#include <tessel/foundation/event.h>
#include <tessel/foundation/message.h>
#include <tessel/foundation/semaphore.h>
#include <tessel/messaging/host.h>
#include <tessel/messaging/hostrequest.h>
#include <tessel/messaging/mailbox.h>
#include <tessel/ui/brush.h>
#include <tessel/ui/dialoginterface.h>

#include <algorithm>
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
    bool Sees(UINT message) {
        seen.clear();
        SendMessageW(GetFrameWindow(), message, 0, 0);
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

std::uintptr_t NoThread(void (*)(void*), unsigned, void*) {
    return static_cast<std::uintptr_t>(-1);
}

struct Timer {
    HWND window;
    UINT_PTR id;
    UINT intervalMs;
    TIMERPROC procedure;
} timer{};

UINT_PTR WINAPI NoteTimer(HWND window, UINT_PTR id, UINT intervalMs, TIMERPROC procedure) {
    timer = {window, id, intervalMs, procedure};
    return id;
}

std::wstring startedLine;

BOOL WINAPI NoteStart(LPCWSTR program, LPWSTR line, LPSECURITY_ATTRIBUTES own, LPSECURITY_ATTRIBUTES thread,
                      BOOL inherit, DWORD flags, LPVOID environment, LPCWSTR directory, LPSTARTUPINFOW startup,
                      LPPROCESS_INFORMATION process) {
    EXPECT_TRUE(startup->wShowWindow == SW_SHOW && startup->lpDesktop == nullptr && startup->lpTitle == nullptr);
    startedLine = line;
    return CreateProcessW(program, line, own, thread, inherit, flags, environment, directory, startup, process);
}

HWND released = nullptr;

int WINAPI NoteRelease(HWND window, HDC context) {
    released = window;
    return ReleaseDC(window, context);
}

POINT textAt;

BOOL WINAPI NoteText(HDC, int x, int y, LPCWSTR, int) {
    textAt = {x, y};
    return TRUE;
}

class Host : public testing::Test {
protected:
    Host() { boxes.clear(); }
    OpenPostOffice office;
    Program program;
};

LRESULT CALLBACK QuitWhenDestroyed(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_DESTROY) PostQuitMessage(0);
    return DefWindowProcW(window, message, wParam, lParam);
}

/// A program that ends when its frame window is told to.
int RunHost(const std::vector<std::string>&) {
    const OpenPostOffice office;
    Program program;
    SetWindowLongPtrW(program.GetFrameWindow(), GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&QuitWhenDestroyed));
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

TEST_F(Host, Odd36And38RegistersItsFrameWindowUntilTheFirstCopyGoes) {
    const HWND frame = CResource().GetResource(RESOURCE_TYPE{1}, RESOURCE_ID{2}, GetCurrentProcessId());
    EXPECT_EQ(frame, program.GetFrameWindow());
    EXPECT_FALSE(IsWindowVisible(frame));
    ShutDown(0);
    MSG message;
    EXPECT_FALSE(PeekMessageW(&message, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE)) << "that is up to the program";
    EXPECT_EQ(RequestNotify(frame, 1), 1);
    CResource().AddResource(RESOURCE_TYPE{3}, RESOURCE_ID{3}, frame, 3);
    const int brush = CBrush().Add(RGB(1, 2, 3));
    { const Program copy(program); }
    EXPECT_EQ(RequestNotify(frame, 1), 0);
    EXPECT_EQ(CResource().GetResource(RESOURCE_TYPE{3}, RESOURCE_ID{3}, 3), nullptr);
    EXPECT_EQ(CBrush().GetBrush(brush), nullptr);
    EXPECT_EQ(LoadResourceDialog(kDialog, nullptr, nullptr), nullptr);
    EXPECT_EQ(Program(std::string(1000, 'x').c_str(), L"Tessel other host").GetCommandLineText(),
              std::wstring(259, L'x'));
    Reports reports;
    EXPECT_EQ(program.CreateWindowFrame(GetModuleHandleW(nullptr), nullptr), nullptr);
    EXPECT_EQ(reports.Take(), Texts{"COSClass:239 hParent"});
}

TEST_F(Host, TakesThePlaceOfEntriesThatAKilledProcessOfItsIdLeft) {
    CResource table;
    const HWND strangers = GetDesktopWindow();
    ASSERT_EQ(table.DeleteResource(RESOURCE_TYPE{1}, RESOURCE_ID{2}, GetCurrentProcessId()), 0);
    table.AddResource(RESOURCE_TYPE{1}, RESOURCE_ID{2}, strangers, GetCurrentProcessId());
    EXPECT_EQ(RequestNotify(strangers, 1), 0) << "not sent to the stranger";
    const Program next("", L"Tessel other host");
    EXPECT_EQ(RequestNotify(strangers, 1), 1);
}

TEST(HostProcedures, RegisterTheFrameInAPostOfficeThatComesLater) {
    Reports reports;
    Program program;
    EXPECT_EQ(reports.Take().size(), 1u) << "there is no table";
    const OpenPostOffice office;
    program.atStart = [&program] {
        EXPECT_EQ(RequestNotify(program.GetFrameWindow(), 1), 1);
        program.ExitApplication(0);
    };
    for (int time = 0; time < 2; ++time) program.OS_Pump();
    CResource table;
    EXPECT_EQ(table.DeleteResource(RESOURCE_TYPE{1}, RESOURCE_ID{2}, GetCurrentProcessId()), 0);
    EXPECT_EQ(table.DeleteResource(RESOURCE_TYPE{1}, RESOURCE_ID{2}, GetCurrentProcessId()), 1) << "once";
}

TEST(HostProcedures, DoNothingWithoutAHost) {
    const OpenPostOffice office;
    const HWND frame = Program().GetFrameWindow();
    const UINT_PTR request[5] = {};
    auto address = reinterpret_cast<LPARAM>(request);
    EXPECT_EQ(OSClass::ProcessOsAPIs(frame, WM_COMMAND, 0xFFAB, address), 0);
    EXPECT_EQ(OSClass::DlgProc(frame, WM_COMMAND, 0xFFAD, address), FALSE);
    for (const UINT message : {WM_COMMAND, WM_PAINT, WM_CTLCOLORDLG, WM_CLOSE}) SendMessageW(frame, message, 0, 0);
    EXPECT_FALSE(IsWindow(frame)) << "the system closes it";
}

TEST_F(Host, HandsOnWhatIsOfInterestAndNothingElse) {
    for (const UINT message :
         {WM_PAINT, WM_TIMER, WM_MENUSELECT, WM_MOUSEMOVE, WM_LBUTTONDOWN, WM_LBUTTONDBLCLK, WM_RBUTTONDOWN,
          WM_RBUTTONDBLCLK, WM_MBUTTONDOWN, WM_MBUTTONDBLCLK, WM_NOTIFY, WM_COMMAND}) {
        EXPECT_TRUE(program.Sees(message)) << message;
    }
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

TEST_F(Host, Odd37AnswersRequestsOfOtherThreads) {
    HWND dialog = nullptr;
    const DWORD thread = GetCurrentThreadId();
    std::thread other;
    program.atStart = [&] {
        other = std::thread([&] {
            dialog = LoadResourceDialog(kDialog, nullptr, nullptr);
            EXPECT_EQ(LoadResourceDialog(999, nullptr, nullptr), nullptr);
            EXPECT_EQ(LoadResourceDialog(kDialog, nullptr, GetModuleHandleW(L"Tessel.dll")), nullptr) << "not there";
            EXPECT_EQ(GetParent(LoadResourceDialog(kDialog, dialog, nullptr)), dialog);
            EXPECT_EQ(RequestNotify(dialog, 3), 1);
            PostThreadMessageW(thread, WM_QUIT, 0, 0);
        });
    };
    program.OS_Pump();
    other.join();
    EXPECT_EQ(GetWindowThreadProcessId(dialog, nullptr), thread);
    EXPECT_EQ(GetParent(dialog), program.GetFrameWindow());
    EXPECT_EQ(CResource().GetResource(RESOURCE_TYPE{2}, RESOURCE_ID{0}, kDialog), dialog);
    DestroyWindow(dialog);
    EXPECT_EQ(program.IsWindowNotify(dialog, 1), 1);
}

TEST_F(Host, Odd37DialogsThatAreGoneLeaveNoEntryInTheResourceTable) {
    CResource table;
    const auto entries = [records = table.GetResourceAddress()] {
        return std::count_if(records, records + POST_OFFICE_RESOURCES,
                             [](const RESOURCE& record) { return record.Type == RESOURCE_TYPE{2}; });
    };
    for (int time = 0; time < 3; ++time) DestroyWindow(LoadResourceDialog(kDialog, nullptr, nullptr));
    EXPECT_EQ(entries(), 0);
    for (int time = 0; time < 3; ++time) EXPECT_EQ(LoadResourceDialog(999, nullptr, nullptr), nullptr);
    EXPECT_EQ(entries(), 1) << "the last that could not be made";
    EXPECT_EQ(table.DeleteResource(RESOURCE_TYPE{2}, RESOURCE_ID{0}, 999), 0);
}

TEST_F(Host, RequestsWithoutAReadableRecordAreAnsweredWith0) {
    for (const LPARAM address : {LPARAM{0}, LPARAM{8}, LPARAM{-1}}) {
        EXPECT_EQ(SendMessageW(program.GetFrameWindow(), WM_COMMAND, 0xFFAB, address), 0);
        EXPECT_EQ(SendMessageW(program.GetFrameWindow(), WM_COMMAND, 0xFFAD, address), 0);
        OSClass::PaintWithOwnerBrush(address);
    }
    EXPECT_TRUE(program.seen.empty());

    auto* const pages = static_cast<char*>(VirtualAlloc(nullptr, 0x2000, MEM_COMMIT | MEM_RESERVE, PAGE_READWRITE));
    const auto across = reinterpret_cast<LPARAM>(pages + 0x1000 - 7); // odd, too
    DWORD before = 0;
    VirtualProtect(pages + 0x1000, 1, PAGE_READONLY, &before);
    EXPECT_EQ(SendMessageW(program.GetFrameWindow(), WM_COMMAND, 0xFFAD, across), 1);
    VirtualProtect(pages + 0x1000, 1, PAGE_NOACCESS, &before);
    EXPECT_EQ(SendMessageW(program.GetFrameWindow(), WM_COMMAND, 0xFFAD, across), 0);
    VirtualFree(pages, 0, MEM_RELEASE);
}

TEST_F(Host, ItsNotificationTableHolds1999Windows) {
    const auto window = [](unsigned long number) { return static_cast<HWND>(ULongToHandle(number * 16)); };
    for (unsigned long number = 1; number < 2000; ++number) ASSERT_EQ(program.RequestWndNotify(window(number), 2), 0);
    const ImportPatch box(L"Tessel.dll", "MessageBoxW", NoteBox);
    EXPECT_EQ(program.RequestWndNotify(window(2000), 2), 1);
    EXPECT_EQ(RequestNotify(window(2000), 2), 1) << "handled all the same";
    EXPECT_EQ(boxes, std::vector<std::wstring>(2, L"Varda Message: Unable to ADD Window Message Notification\n"
                                                  L"(Enlarge Array)"));
    EXPECT_EQ(program.IsWindowNotify(window(2000), 2), 0);
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
    EXPECT_NE(program.CreateThread([](void*) { CEvent(L"Tessel test manager stop").SetEvent(); }), 0u);
    while (GetModuleHandleW(L"manager_runs.dll") != nullptr) Sleep(1);

    EXPECT_NE(program.CreateThreadedManager(L"manager_empty.dll", modules), 0xFFFFFFFFu);
    while (GetModuleHandleW(L"manager_empty.dll") != nullptr) Sleep(1);

    const ImportPatch threads(L"Tessel.dll", "_beginthread", NoThread);
    EXPECT_EQ(program.CreateThreadedManager(L"manager_empty.dll", modules), 0xFFFFFFFFu);
    EXPECT_EQ(GetModuleHandleW(L"manager_empty.dll"), nullptr);
    EXPECT_EQ(program.CreateThread(nullptr), 0u);

    const ImportPatch box(L"Tessel.dll", "MessageBoxW", NoteBox);
    EXPECT_EQ(program.CreateThreadedManager(L"no such.dll", modules), 0xFFFFFFFFu);
    EXPECT_EQ(modules[0], nullptr);
    EXPECT_EQ(program.OpenResourceFile(L"no such.dll"), nullptr);
    EXPECT_EQ(boxes, std::vector<std::wstring>(2, L"LoadLibrary failed: DllName: no such.dll\nErrorCode:126"));
}

TEST_F(Host, Odd62StartsAProcessUnderTheNameOfTheConsoleProgram) {
    constexpr DWORD kNoSuchRole = 98;
    const std::wstring own = OwnProgram();
    const ImportPatch start(L"Tessel.dll", "CreateProcessW", NoteStart);
    void* const process = program.StartProcess(own.c_str(), reinterpret_cast<const unsigned char*>(L"--role none"));
    EXPECT_EQ(startedLine, L"ConsoleApp.exe --role none");
    EXPECT_EQ(WaitForSingleObject(process, INFINITE), WAIT_OBJECT_0);
    DWORD code = 0;
    EXPECT_TRUE(GetExitCodeProcess(process, &code));
    EXPECT_EQ(code, kNoSuchRole) << "its second argument";
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
    const ImportPatch set(L"Tessel.dll", "SetTimer", NoteTimer);
    program.atStart = [this] { program.ExitApplication(0); };
    program.OS_Pump();
    EXPECT_TRUE(timer.window == program.GetFrameWindow() && timer.id == 40039 && timer.intervalMs == 2500);
    timer.procedure(program.GetFrameWindow(), WM_TIMER, timer.id, 0);
    ASSERT_TRUE(GetMessageW(&message, listener, beat, beat));
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
    for (const UINT message :
         {WM_SIZE, WM_HSCROLL, WM_VSCROLL, WM_NOTIFY, WM_MOUSEMOVE, WM_LBUTTONDOWN, WM_LBUTTONDBLCLK, WM_RBUTTONDOWN,
          WM_RBUTTONDBLCLK, WM_MBUTTONDOWN, WM_MBUTTONDBLCLK, WM_PRINTCLIENT}) {
        EXPECT_EQ(OSClass::DlgProc(dialog, message, 0, 0), TRUE);
        EXPECT_EQ(program.seen.back(), message);
    }
    program.atStart = [this, dialog] {
        PostMessageW(dialog, WM_KEYDOWN, VK_ESCAPE, 0);
        program.ExitApplication(0);
    };
    program.seen.clear();
    program.OS_Pump();
    EXPECT_EQ(program.seen, std::vector<UINT>{WM_COMMAND}) << "Escape is a button of the active dialog";
    SendMessageW(dialog, WM_CLOSE, 0, 0);
    EXPECT_FALSE(IsWindow(dialog));
    EXPECT_EQ(program.seen.back(), static_cast<UINT>(WM_CLOSE));
}

TEST_F(Host, Odd64PaintsControlsInTheColoursOfTheirTag) {
    const HWND dialog = program.CreateDialogWindow(GetModuleHandleW(nullptr), nullptr, kDialog);
    const HWND control = GetDlgItem(dialog, kText);
    const HDC context = CreateCompatibleDC(nullptr);
    const HBITMAP bitmap = CreateBitmap(100, 40, 1, 32, nullptr);
    SelectObject(context, bitmap);
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

    const ImportPatch text(L"Tessel.dll", "TextOutW", NoteText);
    DRAWITEMSTRUCT item{};
    item.CtlType = ODT_BUTTON;
    item.hwndItem = control;
    item.hDC = context;
    item.rcItem = {20, 10, 100, 40};
    const auto paint = [&](UINT state) {
        item.itemState = state;
        EXPECT_EQ(OSClass::DlgProc(dialog, WM_DRAWITEM, 0, reinterpret_cast<LPARAM>(&item)), FALSE);
        return GetPixel(context, 20, 10);
    };
    EXPECT_EQ(paint(ODS_SELECTED), RGB(10, 200, 30));
    SIZE size;
    GetTextExtentPoint32W(context, L"text", 4, &size);
    EXPECT_EQ(textAt.x, (100 - size.cx) / 2);
    EXPECT_EQ(textAt.y, (40 - size.cy) / 2);
    const COLORREF colors[] = {RGB(1, 0, 0), RGB(2, 0, 0), RGB(3, 0, 0)};
    for (const COLORREF color : colors) brushes.Add(CreateSolidBrush(color), 5);
    DIALOG_INTERFACE(dialog).SetColor(kText, 1, brushes.GetBrushIndex(5));
    EXPECT_EQ(paint(0), colors[0]);
    EXPECT_EQ(paint(ODS_SELECTED | ODS_FOCUS), colors[1]);
    EXPECT_EQ(paint(ODS_FOCUS), colors[2]);
    DIALOG_INTERFACE(dialog).SetColor(kText, 1, brushes.Add(CreateSolidBrush(0), 30));
    EXPECT_EQ(paint(0), colors[2]) << "transparent";
    DeleteDC(context);
    DeleteObject(bitmap);
}

TEST_F(Host, Odd63ADialogRealisesThePaletteOnceAnotherProgramChangedIt) {
    const HWND dialog = program.CreateDialogWindow(GetModuleHandleW(nullptr), nullptr, kDialog);
    const ImportPatch release(L"Tessel.dll", "ReleaseDC", NoteRelease);
    released = dialog;
    OSClass::PaletteFlag = 0;
    EXPECT_EQ(OSClass::DlgProc(dialog, WM_QUERYNEWPALETTE, 0, 0), FALSE);
    SendMessageW(dialog, WM_PALETTECHANGED, reinterpret_cast<WPARAM>(dialog), 0);
    EXPECT_EQ(OSClass::PaletteFlag, 0) << "the own process";
    SendMessageW(dialog, WM_PALETTECHANGED, reinterpret_cast<WPARAM>(GetDesktopWindow()), 0);
    EXPECT_EQ(OSClass::PaletteFlag, 1);
    EXPECT_EQ(OSClass::DlgProc(dialog, WM_QUERYNEWPALETTE, 0, 0), TRUE);
    EXPECT_EQ(OSClass::PaletteFlag, 0);
    EXPECT_EQ(released, nullptr);
}
