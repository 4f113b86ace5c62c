#include "common/Arguments.h"

#include <tessel/tessel.h>

#include <cstdio>

int main() {
    CEvent opened(L"Tessel launcher", 1);
    const std::vector<std::wstring> arguments = Arguments();
    if (!arguments.empty()) { // this is the application: it runs until its starter has opened it
        constexpr unsigned long patienceMs = 10000;
        (void)opened.WaitOnEvent(patienceMs); // after that, no process watches it
        return static_cast<int>(Number(arguments[0]));
    }
    char description[] = "[Application - 0]\r\n"
                         "PathFileName=launcher.exe\r\n"
                         "Arguments=$CODE\r\n";
    CCommand command;
    command.InitializeFromText(description);
    command.SubstituteArgument("$CODE", "42");

    const unsigned long id = command.Execute();
    if (id == 0) return 1; // a message box has shown the reason
    DWORD code = 0;
    const HANDLE process = OpenProcess(SYNCHRONIZE | PROCESS_QUERY_INFORMATION, FALSE, id);
    opened.SetEvent();
    if (process == nullptr) {
        std::fprintf(stderr, "launcher: process %lu is not ours to open\n", id);
        return 2;
    }
    WaitForSingleObject(process, INFINITE);
    GetExitCodeProcess(process, &code);
    CloseHandle(process);
    std::printf("process %lu ended with %lu\n", id, code);
    return 0;
}
