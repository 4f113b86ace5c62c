#include <windows.h>

#include <cstdio>
#include <string>

/// Stands in for the system's format command: tells what it was started with and, where an event is named, sets it
/// and does not end by itself for a minute.
int main() {
    STARTUPINFOW startup{};
    GetStartupInfoW(&startup);
    char input[8];
    DWORD got = 0;
    const HANDLE in = GetStdHandle(STD_INPUT_HANDLE);
    const BOOL readable = ReadFile(in, input, sizeof input, &got, nullptr);
    const DWORD position = SetFilePointer(in, 0, nullptr, FILE_CURRENT);
    std::printf("%ls|read %d %lu at %lu|show %d|class %lx", GetCommandLineW(), readable, got, position,
                startup.wShowWindow, GetPriorityClass(GetCurrentProcess()));
    std::fflush(stdout);
    wchar_t started[100];
    if (GetEnvironmentVariableW(L"TESSEL_FORMAT_STARTED", started, 100) == 0) return 7;
    const HANDLE event = OpenEventW(EVENT_MODIFY_STATE, FALSE, started);
    SetEvent(event);
    Sleep(60000);
    return 8;
}
