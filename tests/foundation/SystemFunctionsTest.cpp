#include "support/ImportPatch.h"
#include "support/MessageWindow.h"

#include <gtest/gtest.h>
#include <tessel/foundation/clock.h>
#include <tessel/foundation/drive.h>
#include <tessel/foundation/message.h>
#include <tessel/foundation/module.h>
#include <tessel/foundation/process.h>
#include <tessel/foundation/window.h>

#include <cstring>
#include <string>
#include <vector>

namespace {

std::vector<SYSTEMTIME> clockSettings;
std::vector<DWORD> classes;
std::vector<std::vector<DWORD>> keys;
std::wstring volumeRoot;

BOOL WINAPI NoteLocalTime(const SYSTEMTIME* time) {
    clockSettings.push_back(*time);
    return TRUE;
}

BOOL WINAPI NoteClass(HANDLE, DWORD priorityClass) {
    classes.push_back(priorityClass);
    return 7;
}

void WINAPI NoteKey(BYTE key, BYTE scan, DWORD flags, ULONG_PTR) {
    keys.push_back({key, scan, flags});
}

BOOL WINAPI NoteVolume(LPCWSTR root, LPWSTR, DWORD, DWORD* serial, DWORD*, DWORD*, LPWSTR, DWORD) {
    volumeRoot = root;
    *serial = 1234;
    return TRUE;
}

int ticks = 0;

void CALLBACK QuitOnTick(HWND, UINT, UINT_PTR, DWORD) {
    ++ticks;
    QuitManager();
}

void WINAPI TellTime(SYSTEMTIME* time) {
    *time = {2004, 5, 1, 31, 23, 58, 59, 7};
}

using Steps = std::vector<std::wstring>;
Steps steps;
HWND foreground = nullptr;
DWORD foregroundThread = 0;
BOOL attaches = TRUE;

HWND WINAPI TellForeground() {
    return foreground;
}

DWORD WINAPI TellThread(HWND, DWORD*) {
    return foregroundThread;
}

BOOL WINAPI NoteAttach(DWORD from, DWORD to, BOOL attach) {
    EXPECT_EQ(from, GetCurrentThreadId());
    EXPECT_EQ(to, foregroundThread);
    steps.push_back(attach ? L"attach" : L"detach");
    return attaches;
}

BOOL WINAPI NoteForeground(HWND) {
    steps.push_back(L"set");
    return 7;
}

} // namespace

TEST(Clock, Odd60IsSetToTimesThatExistButNeverTo29February) {
    const ImportPatch set(L"Tessel.dll", "SetLocalTime", NoteLocalTime);
    for (WORD month = 0; month <= 13; ++month) {
        for (WORD day = 0; day <= 32; ++day) {
            const SYSTEMTIME time{2004, month, 0, day, 23, 58, 59, 0};
            FILETIME any;
            const bool exists = SystemTimeToFileTime(&time, &any) && !(month == 2 && day == 29);
            clockSettings.clear();
            SetDateTime(day, month, 2004, 23, 58, 59);
            ASSERT_EQ(clockSettings.size(), exists ? 1u : 0u) << day << '.' << month;
            EXPECT_TRUE(!exists || std::memcmp(&clockSettings[0], &time, sizeof time) == 0) << day << '.' << month;
        }
    }
    clockSettings.clear();
    SetDateTime(1, 1, 2004, 24, 0, 0);
    SetDateTime(1, 1, 2004, 0, 60, 0);
    SetDateTime(1, 1, 2004, 0, 0, 60);
    EXPECT_TRUE(clockSettings.empty());
}

TEST(Clock, IsReadFieldByField) {
    const ImportPatch get(L"Tessel.dll", "GetLocalTime", TellTime);
    unsigned short t[6];
    GetDateTime(t[0], t[1], t[2], t[3], t[4], t[5]);
    EXPECT_EQ(std::vector(t, t + 6), (std::vector<unsigned short>{31, 5, 2004, 23, 58, 59}));
}

TEST(ProcessFunctions, EachPriorityHasItsClass) {
    const ImportPatch set(L"Tessel.dll", "SetPriorityClass", NoteClass);
    for (const int priority : {-3, -2, -1, 0, 1, 2, 3}) EXPECT_EQ(SetProcess(static_cast<PRIORITY>(priority)), 7);
    EXPECT_EQ(classes, (std::vector<DWORD>{NORMAL_PRIORITY_CLASS, IDLE_PRIORITY_CLASS, IDLE_PRIORITY_CLASS,
                                           NORMAL_PRIORITY_CLASS, HIGH_PRIORITY_CLASS, REALTIME_PRIORITY_CLASS,
                                           NORMAL_PRIORITY_CLASS}));
    EXPECT_EQ(SetPriority(PRIORITY_BELOW_NORMAL), 0);
    EXPECT_EQ(GetPriority(), -1);
    EXPECT_EQ(SetPriority(static_cast<PRIORITY>(99)), ERROR_INVALID_PARAMETER);
}

TEST(ProcessFunctions, OnlyTheFirstInstanceIsSingle) {
    EXPECT_EQ(SingleInstance(L"Tessel test instance"), 0);
    EXPECT_EQ(SingleInstance(L"Tessel test instance"), 1);
    const HANDLE event = CreateEventW(nullptr, FALSE, FALSE, L"Tessel test taken");
    EXPECT_EQ(SingleInstance(L"Tessel test taken"), 1) << "the check failed";
    CloseHandle(event);
}

TEST(ProcessFunctions, AThreadIsStarted) {
    const HANDLE ran = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    EXPECT_NE(BeginThread([](void* event) { SetEvent(event); }, 0, ran), 0xFFFFFFFFu);
    EXPECT_EQ(WaitForSingleObject(ran, INFINITE), WAIT_OBJECT_0);
    CloseHandle(ran);
}

TEST(MessageFunctions, Odd27AKeypressUsesTheCharacterAsScanCode) {
    const ImportPatch press(L"Tessel.dll", "keybd_event", NoteKey);
    for (const int flags : {0, 1 | 2, 8, 16, 8 | 16}) EXPECT_EQ(SimulatedKeypress('A', flags), 0);
    const std::vector<DWORD> plain{'A', 'A', 0};
    EXPECT_EQ(keys, (std::vector<std::vector<DWORD>>{plain, plain, {'A', 'A', 1}, {'A', 'A', 2}, {'A', 'A', 3}}));
}

TEST(MessageFunctions, TheBarePumpDispatchesUntilQuit) {
    SetTimer(nullptr, 0, 0, QuitOnTick);
    EXPECT_EQ(Dispatch_Pump(), 0);
    EXPECT_EQ(ticks, 1);
}

TEST(WindowFunctions, Odd28RectanglesAreReadAndInvalidated) {
    const HWND window = CreateWindowExW(WS_EX_TOOLWINDOW, L"STATIC", L"Tessel test window", WS_POPUP | WS_VISIBLE, 10,
                                        20, 30, 40, nullptr, nullptr, nullptr, nullptr);
    RECT rectangle{};
    EXPECT_EQ(GetRect(window, rectangle), 0);
    EXPECT_EQ(rectangle.right, 30);
    ValidateRect(window, nullptr);
    EXPECT_EQ(SetRect(window, rectangle), 0);
    EXPECT_TRUE(GetUpdateRect(window, nullptr, FALSE));
    EXPECT_EQ(IsWindowFound(L"STATIC", L"Tessel test window", true), 1);
    EXPECT_EQ(IsWindowFound(nullptr, L"Tessel no such window", false), 0);
    EXPECT_EQ(CloseDialog(window), 0);
    EXPECT_EQ(IsThisAWindow(window), 0);
    EXPECT_EQ(CloseDialog(window), 0);
    EXPECT_EQ(GetRect(window, rectangle), 1);
    EXPECT_EQ(SetRect(HWND_MESSAGE, rectangle), 1);
}

TEST(WindowFunctions, TheForegroundIsTakenFromAnotherThreadWithItsInput) {
    const ImportPatch get(L"Tessel.dll", "GetForegroundWindow", TellForeground);
    const ImportPatch thread(L"Tessel.dll", "GetWindowThreadProcessId", TellThread);
    const ImportPatch attach(L"Tessel.dll", "AttachThreadInput", NoteAttach);
    const ImportPatch set(L"Tessel.dll", "SetForegroundWindow", NoteForeground);
    const auto take = [] {
        steps.clear();
        return SetForegroundWindowEx(nullptr);
    };
    EXPECT_EQ(take(), 0);
    EXPECT_EQ(steps, Steps{}) << "no window has it";
    foreground = GetDesktopWindow();
    foregroundThread = GetCurrentThreadId();
    EXPECT_EQ(take(), 7);
    EXPECT_EQ(steps, Steps{L"set"});
    foregroundThread = 77;
    EXPECT_EQ(take(), 7);
    EXPECT_EQ(steps, (Steps{L"attach", L"set", L"detach"}));
    attaches = FALSE;
    EXPECT_EQ(take(), 0);
    EXPECT_EQ(steps, Steps{L"attach"});
}

TEST(DriveFunctions, Odd29ModulesVolumesAndSpace) {
    const HINSTANCE module = LoadImageW(L"version.dll");
    EXPECT_NE(module, nullptr);
    EXPECT_NE(UnLoadImage(module), 0u);
    unsigned long long free = 0;
    unsigned long long total = 0;
    EXPECT_NE(GetDriveFreeSpace(L"C:\\", &free, &total), 0);
    EXPECT_GE(total, free);
    EXPECT_GT(free, 0u);
    total = 5;
    EXPECT_EQ(GetDriveFreeSpace(L"Q:\\nowhere", &free, &total), 0);
    EXPECT_EQ(total, 5u);
    const ImportPatch volume(L"Tessel.dll", "GetVolumeInformationW", NoteVolume);
    EXPECT_EQ(GetVolumeSerialNumber(L"c:\\folder\\file"), 1234u);
    EXPECT_EQ(volumeRoot, L"c:\\");
    EXPECT_EQ(GetVolumeSerialNumber(L"no drive"), 1234u);
    EXPECT_EQ(volumeRoot, L"\\");
    EXPECT_EQ(GetVolumeSerialNumber(nullptr), 0u);
}

TEST(DriveFunctions, AHandleIsWrittenToWhateverItsType) {
    HANDLE read = nullptr;
    HANDLE write = nullptr;
    CreatePipe(&read, &write, nullptr, 0);
    EXPECT_EQ(WriteTarget(static_cast<HWND>(write), L"ab", 3), 0);
    char got[8] = {};
    DWORD size = 0;
    ReadFile(read, got, 8, &size, nullptr);
    EXPECT_EQ(std::string(got, size), std::string("a\0b", 3));
    CloseHandle(read);
    EXPECT_EQ(WriteTarget(static_cast<HWND>(write), L"ab", 3), 1);
    CloseHandle(write);
}
