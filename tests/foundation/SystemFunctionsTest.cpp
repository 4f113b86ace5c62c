#include "support/ImportPatch.h"

#include <gtest/gtest.h>
#include <tessel/foundation.h>

#include <cstring>
#include <vector>

namespace {

int ticks = 0;

void CALLBACK QuitOnTick(HWND, UINT, UINT_PTR, DWORD) {
    ++ticks;
    QuitManager();
}

} // namespace

TEST(Clock, Odd60IsSetToTimesThatExistButNeverTo29February) {
    std::vector<SYSTEMTIME> set;
    const ImportPatch patch("SetLocalTime", &SetLocalTime, [&set](const SYSTEMTIME* time) {
        set.push_back(*time);
        return TRUE;
    });
    for (WORD month = 0; month <= 13; ++month) {
        for (WORD day = 0; day <= 32; ++day) {
            const SYSTEMTIME time{2004, month, 0, day, 23, 58, 59, 0};
            FILETIME any;
            const bool exists = SystemTimeToFileTime(&time, &any) && !(month == 2 && day == 29);
            set.clear();
            SetDateTime(day, month, 2004, 23, 58, 59);
            ASSERT_EQ(set.size(), exists ? 1u : 0u) << day << '.' << month;
            EXPECT_TRUE(!exists || std::memcmp(&set[0], &time, sizeof time) == 0) << day << '.' << month;
        }
    }
    set.clear();
    SetDateTime(1, 1, 2004, 24, 0, 0);
    SetDateTime(1, 1, 2004, 0, 60, 0);
    SetDateTime(1, 1, 2004, 0, 0, 60);
    EXPECT_TRUE(set.empty());
}

TEST(Clock, IsReadFieldByField) {
    const ImportPatch get("GetLocalTime", &GetLocalTime,
                          [](SYSTEMTIME* time) { *time = {2004, 5, 1, 31, 23, 58, 59, 7}; });
    unsigned short t[6];
    GetDateTime(t[0], t[1], t[2], t[3], t[4], t[5]);
    EXPECT_EQ(std::vector(t, t + 6), (std::vector<unsigned short>{31, 5, 2004, 23, 58, 59}));
}

TEST(ProcessFunctions, APriorityHasItsClassAndAnUnknownOneTheNormalClass) {
    std::vector<DWORD> classes;
    const ImportPatch set("SetPriorityClass", &SetPriorityClass, [&classes](HANDLE, DWORD priorityClass) {
        classes.push_back(priorityClass);
        return 7;
    });
    for (const int priority : {-3, -2, 1}) EXPECT_EQ(SetProcess(static_cast<PRIORITY>(priority)), 7);
    EXPECT_EQ(classes, (std::vector<DWORD>{NORMAL_PRIORITY_CLASS, IDLE_PRIORITY_CLASS, HIGH_PRIORITY_CLASS}));
    EXPECT_EQ(SetPriority(PRIORITY_BELOW_NORMAL), 0);
    EXPECT_EQ(GetPriority(), -1);
    EXPECT_EQ(SetPriority(static_cast<PRIORITY>(99)), ERROR_INVALID_PARAMETER);
}

TEST(ProcessFunctions, OnlyTheFirstInstanceIsSingle) {
    EXPECT_EQ(SingleInstance(L"Tessel test instance"), 0);
    EXPECT_EQ(SingleInstance(L"Tessel test instance"), 1);
    const CEvent event(L"Tessel test taken");
    EXPECT_EQ(SingleInstance(L"Tessel test taken"), 1) << "the check failed";
}

TEST(ProcessFunctions, AThreadIsStarted) {
    CEvent ran;
    EXPECT_NE(BeginThread([](void* event) { static_cast<CEvent*>(event)->SetEvent(); }, 0, &ran), 0xFFFFFFFFu);
    EXPECT_EQ(ran.WaitOnEvent(INFINITE), 0u);
}

TEST(MessageFunctions, Odd27AKeypressUsesTheCharacterAsScanCode) {
    for (const auto& [flags, expected] : {std::pair{0, 0u}, {1 | 2, 0}, {8, 1}, {16, 2}, {8 | 16, 3}}) {
        std::vector<DWORD> key;
        const ImportPatch press("keybd_event", &keybd_event, [&key](BYTE code, BYTE scan, DWORD sent, ULONG_PTR) {
            key = {code, scan, sent};
        });
        EXPECT_EQ(SimulatedKeypress('A', flags), 0);
        EXPECT_EQ(key, (std::vector<DWORD>{'A', 'A', expected})) << flags;
    }
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
    HWND foreground = nullptr;
    DWORD owner = GetCurrentThreadId();
    BOOL attaches = TRUE;
    std::string steps;
    const ImportPatch get("GetForegroundWindow", &GetForegroundWindow, [&] { return foreground; });
    const ImportPatch thread("GetWindowThreadProcessId", &GetWindowThreadProcessId, [&](auto...) { return owner; });
    const ImportPatch attach("AttachThreadInput", &AttachThreadInput, [&](DWORD from, DWORD to, BOOL begins) {
        EXPECT_TRUE(from == GetCurrentThreadId() && to == owner);
        steps += begins ? "attach " : "detach ";
        return attaches;
    });
    const ImportPatch set("SetForegroundWindow", &SetForegroundWindow, [&](HWND) { return steps += "set ", 7; });
    const auto take = [&steps] {
        steps.clear();
        return std::to_string(SetForegroundWindowEx(nullptr)) + " " + steps;
    };
    EXPECT_EQ(take(), "0 ") << "no window has it";
    foreground = GetDesktopWindow();
    EXPECT_EQ(take(), "7 set ");
    owner = 77;
    EXPECT_EQ(take(), "7 attach set detach ");
    attaches = FALSE;
    EXPECT_EQ(take(), "0 attach ");
}

TEST(DriveFunctions, Odd29ModulesVolumesAndSpace) {
    const HINSTANCE module = LoadImageW(L"version.dll");
    EXPECT_NE(module, nullptr);
    EXPECT_NE(UnLoadImage(module), 0u);
    unsigned long long free = 0;
    unsigned long long total = 0;
    EXPECT_NE(GetDriveFreeSpace(L"C:\\", &free, &total), 0);
    EXPECT_TRUE(total >= free && free > 0);
    total = 5;
    EXPECT_EQ(GetDriveFreeSpace(L"Q:\\nowhere", &free, &total), 0);
    EXPECT_EQ(total, 5u);
    std::wstring root;
    const ImportPatch volume("GetVolumeInformationW", &GetVolumeInformationW,
                             [&root](LPCWSTR asked, LPWSTR, DWORD, DWORD* serial, auto...) {
                                 root = asked;
                                 *serial = 1234;
                                 return TRUE;
                             });
    EXPECT_EQ(GetVolumeSerialNumber(L"c:\\folder\\file"), 1234u);
    EXPECT_EQ(root, L"c:\\");
    EXPECT_EQ(GetVolumeSerialNumber(L"no drive"), 1234u);
    EXPECT_EQ(root, L"\\");
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
    for (const HANDLE end : {read, write}) CloseHandle(end);
    EXPECT_EQ(WriteTarget(static_cast<HWND>(write), L"ab", 3), 1);
}
