#include "support/ChildProcess.h"
#include "support/OpenPostOffice.h"
#include "support/Reports.h"
#include "support/ShownBoxes.h"

#include <gtest/gtest.h>
#include <tessel/foundation.h>
#include <tessel/messaging.h>
#include <tessel/ui.h>

#include <algorithm>
#include <functional>
#include <span>
#include <thread>

namespace {

constexpr int kDialog = 101;
constexpr int kText = 1001;
constexpr int kButton = 1002;
constexpr RESOURCE_TYPE kFrameType{1};
constexpr RESOURCE_TYPE kDialogType{2};
constexpr RESOURCE_ID kFrameId{2};
constexpr RESOURCE_ID kDialogId{0};
constexpr WPARAM kRequests[] = {0xFFAB, 0xFFAD};

using Strings = std::vector<std::wstring>;
using Messages = std::vector<UINT>;

/// Records the host's calls; the test defines what it does at the start.
class Program : public OSClass {
public:
    explicit Program(const char* arguments = "", const wchar_t* name = L"Tessel test host")
        : OSClass(GetModuleHandleW(nullptr), name, 0, arguments) {}
    void OnStart() override {
        events.push_back(L"start");
        if (atStart) atStart();
    }
    void OnClose() override { events.push_back(L"close"); }
    void OnMessage(HWND, UINT message, WPARAM, LPARAM) override { seen.push_back(message); }
    void OnPumpExit(int code, const wchar_t* text) override { events.push_back(std::to_wstring(code) + L" " + text); }
    int Run(std::function<void()> start) {
        events.clear();
        atStart = std::move(start);
        return OS_Pump();
    }

    std::function<void()> atStart;
    Strings events;
    Messages seen;
};

class Host : public testing::Test {
protected:
    HWND MakeDialog(HWND parent = nullptr) {
        return program.CreateDialogWindow(GetModuleHandleW(nullptr), parent, kDialog);
    }
    OpenPostOffice office;
    Program program;
    const HWND frame = program.GetFrameWindow();
    CResource table;
};

} // namespace

TEST_F(Host, RunsFromStartToExitAndReturnsTheCode) {
    EXPECT_EQ(program.Run([this] { program.ExitApplication(5); }), 5);
    EXPECT_EQ(program.events, (Strings{L"start", L"0 OS_Pump exiting"}));
    program.SetExitCode(7);
    EXPECT_EQ(program.Run([this] { program.ExitApplication(0); }), 7);
    EXPECT_EQ(program.Run([this] { PostMessageW(frame, WM_CLOSE, 0, 0); }), 7);
    EXPECT_EQ(program.events, (Strings{L"start", L"close", L"0 OS_Pump exiting"}));
}

TEST_F(Host, Odd36And38RegistersItsFrameWindowUntilTheFirstCopyGoes) {
    EXPECT_EQ(table.GetResource(kFrameType, kFrameId, GetCurrentProcessId()), frame);
    EXPECT_FALSE(IsWindowVisible(frame));
    int destroyed = 0;
    const ImportPatch send("SendMessageW", &SendMessageW, [&](HWND window, UINT message, auto... more) {
        return destroyed += window == frame && message == WM_DESTROY, SendMessageW(window, message, more...);
    });
    for (const DWORD process : {DWORD{0}, GetCurrentProcessId()}) ShutDown(process);
    EXPECT_EQ(destroyed, 2);
    EXPECT_EQ(RequestNotify(frame, 1), 1) << "it lives on";
    MSG message;
    EXPECT_FALSE(PeekMessageW(&message, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE)) << "that is up to the program";
    table.AddResource(RESOURCE_TYPE{3}, RESOURCE_ID{3}, frame, 3);
    const int brush = CBrush().Add(RGB(1, 2, 3));
    { const Program copy(program); }
    EXPECT_EQ(RequestNotify(frame, 1), 0);
    EXPECT_EQ(table.GetResource(RESOURCE_TYPE{3}, RESOURCE_ID{3}, 3), nullptr);
    EXPECT_EQ(CBrush().GetBrush(brush), nullptr);
    EXPECT_EQ(LoadResourceDialog(kDialog, nullptr, nullptr), nullptr);
    EXPECT_EQ(Program(std::string(1000, 'x').c_str(), L"Tessel other host").GetCommandLineText(),
              std::wstring(259, L'x'));
    Reports reports;
    EXPECT_EQ(program.CreateWindowFrame(GetModuleHandleW(nullptr), nullptr), nullptr);
    EXPECT_EQ(reports.Take(), Texts{"COSClass:239 hParent"});
}

TEST_F(Host, TakesThePlaceOfEntriesThatAKilledProcessOfItsIdLeft) {
    const HWND strangers = GetDesktopWindow();
    ASSERT_EQ(table.DeleteResource(kFrameType, kFrameId, GetCurrentProcessId()), 0);
    table.AddResource(kFrameType, kFrameId, strangers, GetCurrentProcessId());
    EXPECT_EQ(RequestNotify(strangers, 1), 0) << "not sent to the stranger";
    const Program next("", L"Tessel other host");
    EXPECT_EQ(RequestNotify(strangers, 1), 1);
}

TEST(HostProcedures, RegisterTheFrameInAPostOfficeThatComesLater) {
    Reports reports;
    Program program;
    EXPECT_TRUE(reports.Take().at(0).ends_with(" pRes")) << "there is no table";
    const OpenPostOffice office;
    for (int time = 0; time < 2; ++time) {
        program.Run([&program] {
            EXPECT_EQ(RequestNotify(program.GetFrameWindow(), 1), 1);
            program.ExitApplication(0);
        });
    }
    CResource table;
    for (const int result : {0, 1}) { // it is there once
        EXPECT_EQ(table.DeleteResource(kFrameType, kFrameId, GetCurrentProcessId()), result);
    }
}

TEST(HostProcedures, DoNothingWithoutAHost) {
    const OpenPostOffice office;
    const HWND frame = Program().GetFrameWindow();
    const UINT_PTR request[5] = {};
    auto address = reinterpret_cast<LPARAM>(request);
    for (const WPARAM number : kRequests) {
        EXPECT_EQ(OSClass::ProcessOsAPIs(frame, WM_COMMAND, number, address), 0);
        EXPECT_EQ(OSClass::DlgProc(frame, WM_COMMAND, number, address), FALSE);
    }
    for (const UINT message : Messages{WM_COMMAND, WM_PAINT, WM_CTLCOLORDLG, WM_CLOSE})
        SendMessageW(frame, message, 0, 0);
    EXPECT_FALSE(IsWindow(frame)) << "the system closes it";
}

TEST_F(Host, HandsOnWhatIsOfInterestAndNothingElse) {
    const Messages interesting{WM_PAINT, WM_TIMER, WM_COMMAND, MAILBOX_NOTIFICATION};
    for (const UINT message : interesting) SendMessageW(frame, message, 0, 0);
    for (const UINT message : Messages{WM_LBUTTONUP, WM_SIZE, WM_DRAWITEM}) SendMessageW(frame, message, 0, 0);
    EXPECT_EQ(program.seen, interesting);
}

TEST_F(Host, Odd37AnswersRequestsOfOtherThreads) {
    HWND dialog = nullptr;
    const DWORD thread = GetCurrentThreadId();
    std::thread other;
    program.Run([&] {
        other = std::thread([&] {
            dialog = LoadResourceDialog(kDialog, nullptr, nullptr);
            EXPECT_EQ(LoadResourceDialog(kDialog, nullptr, GetModuleHandleW(L"Tessel.dll")), nullptr) << "not there";
            EXPECT_EQ(GetParent(LoadResourceDialog(kDialog, dialog, nullptr)), dialog);
            EXPECT_EQ(RequestNotify(dialog, 3), 1);
            PostThreadMessageW(thread, WM_QUIT, 0, 0);
        });
    });
    other.join();
    EXPECT_EQ(GetWindowThreadProcessId(dialog, nullptr), thread);
    EXPECT_EQ(GetParent(dialog), frame);
    EXPECT_EQ(table.GetResource(kDialogType, kDialogId, kDialog), dialog);
    DestroyWindow(dialog);
    EXPECT_EQ(program.IsWindowNotify(dialog, 1), 1);
}

TEST_F(Host, Odd37DialogsThatAreGoneLeaveNoEntryInTheResourceTable) {
    const auto entries = [records = table.GetResourceAddress()] {
        return std::count_if(records, records + POST_OFFICE_RESOURCES,
                             [](const RESOURCE& record) { return record.Type == kDialogType; });
    };
    for (int time = 0; time < 3; ++time) DestroyWindow(LoadResourceDialog(kDialog, nullptr, nullptr));
    EXPECT_EQ(entries(), 0);
    for (int time = 0; time < 3; ++time) EXPECT_EQ(LoadResourceDialog(999, nullptr, nullptr), nullptr);
    EXPECT_EQ(entries(), 1) << "the last that could not be made";
    EXPECT_EQ(table.DeleteResource(kDialogType, kDialogId, 999), 0);
    ChildProcess other(L"cmd /c set /p answer="); // waits for a line
    const auto leaveEntries = [&] {
        for (RESOURCE& record : std::span(table.GetResourceAddress(), POST_OFFICE_RESOURCES)) {
            if (record.ThreadId == 0) record = {kDialogType, kDialog, 1, other.Id(), kDialogId, 0};
        }
    };
    leaveEntries();
    EXPECT_EQ(table.AddResource(RESOURCE_TYPE{3}, RESOURCE_ID{3}, frame, 3), 1) << "their process lives";
    other.Kill();
    DestroyWindow(LoadResourceDialog(kDialog, nullptr, nullptr));
    EXPECT_EQ(entries(), 0) << "not those of an ended process either";
    leaveEntries();
    EXPECT_EQ(table.AddResource(RESOURCE_TYPE{3}, RESOURCE_ID{3}, frame, 3), 0);
    EXPECT_EQ(entries(), 0);
}

TEST_F(Host, RequestsWithoutAReadableRecordAreAnsweredWith0) {
    for (const LPARAM address : {LPARAM{0}, LPARAM{8}, LPARAM{-1}}) {
        for (const WPARAM number : kRequests) EXPECT_EQ(SendMessageW(frame, WM_COMMAND, number, address), 0);
        OSClass::PaintWithOwnerBrush(address);
    }
    EXPECT_TRUE(program.seen.empty());

    auto* const pages = static_cast<char*>(VirtualAlloc(nullptr, 0x2000, MEM_COMMIT | MEM_RESERVE, PAGE_READWRITE));
    const auto across = reinterpret_cast<LPARAM>(pages + 0x1000 - 7); // odd, too
    for (const DWORD protection : {DWORD{PAGE_READONLY}, DWORD{PAGE_NOACCESS}}) {
        DWORD before = 0;
        VirtualProtect(pages + 0x1000, 1, protection, &before);
        EXPECT_EQ(SendMessageW(frame, WM_COMMAND, 0xFFAD, across), protection == PAGE_READONLY ? 1 : 0);
    }
    VirtualFree(pages, 0, MEM_RELEASE);
}

TEST_F(Host, ItsNotificationTableHolds1999Windows) {
    const auto window = [](unsigned long number) { return static_cast<HWND>(ULongToHandle(number * 16)); };
    for (unsigned long number = 1; number < 2000; ++number) ASSERT_EQ(program.RequestWndNotify(window(number), 2), 0);
    const ShownBoxes boxes;
    EXPECT_EQ(program.RequestWndNotify(window(2000), 2), 1);
    EXPECT_EQ(RequestNotify(window(2000), 2), 1) << "handled all the same";
    EXPECT_EQ(boxes.texts, Strings(2, L"Varda Message: Unable to ADD Window Message Notification\n(Enlarge Array)"));
    EXPECT_EQ(program.IsWindowNotify(window(2000), 2), 0);
    for (const auto& [number, mask] : {std::pair{1999ul, 6}, {7, 0}, {2000, 3}}) { // the last in place of the 7th
        EXPECT_EQ(program.RequestWndNotify(window(number), static_cast<unsigned long>(mask)), 0) << number;
        EXPECT_EQ(program.IsWindowNotify(window(number), 7), mask) << number;
    }
    for (const UINT always : {5u, 6u}) EXPECT_EQ(program.IsWindowNotify(nullptr, always), static_cast<int>(always));
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
    EXPECT_NE(program.CreateThreadedManager(L"manager_empty.dll", modules), 0xFFFFFFFFu);
    for (const wchar_t* ended : {L"manager_runs.dll", L"manager_empty.dll"}) {
        while (GetModuleHandleW(ended) != nullptr) Sleep(1);
    }

    const ImportPatch threads(Failing("_beginthread", &_beginthread, -1));
    EXPECT_EQ(program.CreateThreadedManager(L"manager_empty.dll", modules), 0xFFFFFFFFu);
    EXPECT_EQ(GetModuleHandleW(L"manager_empty.dll"), nullptr);
    EXPECT_EQ(program.CreateThread(nullptr), 0u);

    const ShownBoxes boxes;
    EXPECT_EQ(program.CreateThreadedManager(L"no such.dll", modules), 0xFFFFFFFFu);
    EXPECT_EQ(modules[0], nullptr);
    EXPECT_EQ(program.OpenResourceFile(L"no such.dll"), nullptr);
    EXPECT_EQ(boxes.texts, Strings(2, L"LoadLibrary failed: DllName: no such.dll\nErrorCode:126"));
}

TEST_F(Host, Odd62StartsAProcessUnderTheNameOfTheConsoleProgram) {
    std::wstring line;
    const ImportPatch start("CreateProcessW", &CreateProcessW, [&line](auto file, auto arguments, auto... others) {
        return line = arguments, CreateProcessW(file, arguments, others...);
    });
    const auto* const arguments = reinterpret_cast<const unsigned char*>(L"--role none");
    void* const process = program.StartProcess(OwnProgram().c_str(), arguments);
    EXPECT_EQ(line, L"ConsoleApp.exe --role none");
    EXPECT_EQ(WaitForSingleObject(process, INFINITE), WAIT_OBJECT_0);
    CloseHandle(process);
    EXPECT_EQ(program.StartProcess(L"no such.exe", nullptr), nullptr);
}

TEST_F(Host, SendsItsHeartbeatToAllTopLevelWindows) {
    constexpr UINT_PTR kTimer = 40039;
    const HWND listener = CreateWindowExW(0, L"STATIC", L"", WS_POPUP, 0, 0, 1, 1, nullptr, nullptr, nullptr, nullptr);
    const UINT beat = RegisterThisWindowMessage(L"Tessel test heartbeat");
    const auto wasHeard = [&] {
        MSG message{};
        const BOOL heard = GetMessageW(&message, listener, beat, beat);
        return heard && message.wParam == kTimer && message.lParam == reinterpret_cast<LPARAM>(frame);
    };
    program.SetVardaMsgId(beat);
    EXPECT_TRUE(wasHeard());
    TIMERPROC onTimer = nullptr;
    const ImportPatch set("SetTimer", &SetTimer, [&](HWND window, UINT_PTR id, UINT intervalMs, TIMERPROC procedure) {
        EXPECT_TRUE(window == frame && id == kTimer && intervalMs == 2500);
        onTimer = procedure;
        return id;
    });
    program.Run([this] { program.ExitApplication(0); });
    onTimer(frame, WM_TIMER, kTimer, 0);
    EXPECT_TRUE(wasHeard());
    program.SetVardaMsgId(0);
    MSG message;
    EXPECT_FALSE(PeekMessageW(&message, listener, beat, beat, PM_REMOVE));
    DestroyWindow(listener);
}

TEST_F(Host, Odd61DialogsGoThroughItAndBecomeActiveUnderThePointer) {
    const HWND dialog = MakeDialog(frame);
    EXPECT_EQ(program.seen.back(), static_cast<UINT>(WM_INITDIALOG));
    program.seen.clear();
    SendMessageW(dialog, WM_SETCURSOR, reinterpret_cast<WPARAM>(dialog), HTCLIENT);
    EXPECT_TRUE(program.seen.empty());
    SendMessageW(dialog, WM_SETCURSOR, reinterpret_cast<WPARAM>(dialog), HTCLIENT);
    SendMessageW(GetDlgItem(dialog, kButton), BM_CLICK, 0, 0);
    EXPECT_EQ(OSClass::DlgProc(dialog, WM_HSCROLL, 0, 0), TRUE);
    EXPECT_EQ(program.seen, (Messages{WM_SETCURSOR, WM_COMMAND, WM_HSCROLL}));
    program.seen.clear();
    program.Run([this, dialog] {
        PostMessageW(dialog, WM_KEYDOWN, VK_ESCAPE, 0);
        program.ExitApplication(0);
    });
    EXPECT_EQ(program.seen, Messages{WM_COMMAND}) << "Escape is a button of the active dialog";
    SendMessageW(dialog, WM_CLOSE, 0, 0);
    EXPECT_FALSE(IsWindow(dialog));
    EXPECT_EQ(program.seen.back(), static_cast<UINT>(WM_CLOSE));
}

TEST_F(Host, Odd64PaintsControlsInTheColoursOfTheirTag) {
    const HWND dialog = MakeDialog();
    const HWND control = GetDlgItem(dialog, kText);
    const HDC context = CreateCompatibleDC(nullptr);
    const HBITMAP bitmap = CreateBitmap(100, 40, 1, 32, nullptr);
    SelectObject(context, bitmap);
    const auto askForBrush = [&] {
        return reinterpret_cast<HBRUSH>(OSClass::DlgProc(dialog, WM_CTLCOLORSTATIC, reinterpret_cast<WPARAM>(context),
                                                         reinterpret_cast<LPARAM>(control)));
    };
    EXPECT_EQ(askForBrush(), nullptr);
    CBrush brushes;
    const int background = brushes.Add(RGB(10, 200, 30));
    DIALOG_INTERFACE(dialog).SetColor(kText, 1, background);
    EXPECT_EQ(askForBrush(), brushes.GetBrush(background));
    EXPECT_EQ(GetBkColor(context), RGB(10, 200, 30));
    EXPECT_EQ(GetTextColor(context), program.GetPalette().GetColor(COLOR_IDX{1}));

    SIZE size;
    GetTextExtentPoint32W(context, L"text", 4, &size);
    const ImportPatch text("TextOutW", &TextOutW, [&size](HDC, int x, int y, auto...) {
        EXPECT_TRUE(x == (100 - size.cx) / 2 && y == (40 - size.cy) / 2);
        return TRUE;
    });
    DRAWITEMSTRUCT item{ODT_BUTTON, 0, 0, 0, 0, control, context, {20, 10, 100, 40}, 0};
    for (const COLORREF color : {RGB(1, 0, 0), RGB(2, 0, 0), RGB(3, 0, 0)}) brushes.Add(CreateSolidBrush(color), 5);
    const int button = brushes.GetBrushIndex(5);
    const int transparent = brushes.Add(CreateSolidBrush(0), 30);
    for (const auto& [brush, state, color] : {std::tuple{background, ODS_SELECTED, RGB(10, 200, 30)},
                                              {button, 0, RGB(1, 0, 0)},
                                              {button, ODS_SELECTED | ODS_FOCUS, RGB(2, 0, 0)},
                                              {button, ODS_FOCUS, RGB(3, 0, 0)},
                                              {transparent, 0, RGB(3, 0, 0)}}) {
        DIALOG_INTERFACE(dialog).SetColor(kText, 1, brush);
        item.itemState = static_cast<UINT>(state);
        EXPECT_EQ(OSClass::DlgProc(dialog, WM_DRAWITEM, 0, reinterpret_cast<LPARAM>(&item)), FALSE);
        EXPECT_EQ(GetPixel(context, 20, 10), color) << brush << ' ' << state;
    }
    DeleteDC(context);
    DeleteObject(bitmap);
}

TEST_F(Host, Odd63ADialogRealisesThePaletteOnceAnotherProgramChangedIt) {
    const HWND dialog = MakeDialog();
    HWND released = dialog;
    const ImportPatch release("ReleaseDC", &ReleaseDC,
                              [&](HWND window, HDC context) { return released = window, ReleaseDC(window, context); });
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
