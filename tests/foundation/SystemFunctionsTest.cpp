#include "support/ImportPatch.h"
#include "support/MessageWindow.h"

#include <gtest/gtest.h>
#include <tessel/system.h>

#include <thread>
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

struct Date {
    unsigned short day, month, year, hour, minute, second;
    bool exists;

    friend void PrintTo(const Date& d, std::ostream* out) {
        *out << d.year << '-' << d.month << '-' << d.day << ' ' << d.hour << ':' << d.minute << ':' << d.second;
    }
};

class Odd60ClockTest : public testing::TestWithParam<Date> {};

TEST_P(Odd60ClockTest, IsSetToDatesThatExistButNeverTo29February) {
    const ImportPatch set(L"Tessel.dll", "SetLocalTime", NoteLocalTime);
    clockSettings.clear();
    const Date& date = GetParam();
    SetDateTime(date.day, date.month, date.year, date.hour, date.minute, date.second);
    ASSERT_EQ(clockSettings.size(), date.exists ? 1u : 0u);
    if (!date.exists) return;
    const SYSTEMTIME& time = clockSettings[0];
    EXPECT_EQ(time.wDay, date.day);
    EXPECT_EQ(time.wMonth, date.month);
    EXPECT_EQ(time.wYear, date.year);
    EXPECT_EQ(time.wSecond, date.second);
    EXPECT_EQ(time.wMilliseconds, 0);
}

INSTANTIATE_TEST_SUITE_P(Dates, Odd60ClockTest,
                         testing::Values(Date{31, 5, 2004, 23, 59, 59, true}, Date{28, 2, 2003, 0, 0, 0, true},
                                         Date{29, 2, 2004, 12, 0, 0, false}, Date{31, 4, 2004, 12, 0, 0, false},
                                         Date{30, 11, 2004, 12, 0, 0, true}, Date{0, 1, 2004, 12, 0, 0, false},
                                         Date{1, 0, 2004, 12, 0, 0, false}, Date{1, 13, 2004, 12, 0, 0, false},
                                         Date{32, 12, 2004, 12, 0, 0, false}, Date{1, 1, 2004, 24, 0, 0, false},
                                         Date{1, 1, 2004, 0, 60, 0, false}, Date{1, 1, 2004, 0, 0, 60, false}));

} // namespace

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
    const HWND window = CreateWindowExW(0, L"STATIC", L"Tessel test window", WS_POPUP | WS_VISIBLE, 10, 20, 30, 40,
                                        nullptr, nullptr, nullptr, nullptr);
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
