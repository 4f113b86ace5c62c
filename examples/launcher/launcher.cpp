#include <tessel/tessel.h>

#include <cstdio>

int main() {
    char description[] = "[Application - 0]\r\n"
                         "WorkDir=%SystemRoot%\r\n"
                         "PathFileName=%ComSpec%\r\n"
                         "Arguments=/c exit $CODE\r\n";
    CCommand command;
    command.InitializeFromText(description);
    command.SubstituteArgument("$CODE", "42");

    const unsigned long id = command.Execute();
    if (id == 0) return 1; // the user has read why
    DWORD code = 0;
    const HANDLE process = OpenProcess(SYNCHRONIZE | PROCESS_QUERY_INFORMATION, FALSE, id);
    if (process == nullptr) return 2; // it has ended already, or is not ours to open
    WaitForSingleObject(process, INFINITE);
    GetExitCodeProcess(process, &code);
    CloseHandle(process);
    std::printf("process %lu ended with %lu\n", id, code);
    return 0;
}
