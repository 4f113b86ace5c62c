#include <windows.h>

#include <cstdio>
#include <cwchar>

/// Stands in for the system's format command: prints its arguments. For drive 8 it takes a minute.
int main() {
    STARTUPINFOW startup{};
    GetStartupInfoW(&startup);
    char input[8];
    DWORD got = 0;
    const HANDLE in = GetStdHandle(STD_INPUT_HANDLE);
    const BOOL readable = ReadFile(in, input, sizeof input, &got, nullptr);
    const DWORD position = SetFilePointer(in, 0, nullptr, FILE_CURRENT);
    std::printf("%ls|read %d %lu at %lu|show %d", GetCommandLineW(), readable, got, position, startup.wShowWindow);
    if (std::wcsstr(GetCommandLineW(), L"8:") != nullptr) Sleep(60000);
    return 7;
}
