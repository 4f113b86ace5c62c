#include <foundation/Launcher.h>

#include <foundation/Handle.h>

namespace tessel {

namespace {

void ReadOwnStartup(STARTUPINFOA& startup) {
    GetStartupInfoA(&startup);
}

void ReadOwnStartup(STARTUPINFOW& startup) {
    GetStartupInfoW(&startup);
}

bool Create(const char* application, char* commandLine, bool inherits, const char* directory, STARTUPINFOA& startup,
            PROCESS_INFORMATION& process) {
    return CreateProcessA(application, commandLine, nullptr, nullptr, inherits, NORMAL_PRIORITY_CLASS, nullptr,
                          directory, &startup, &process) != FALSE;
}

bool Create(const wchar_t* application, wchar_t* commandLine, bool inherits, const wchar_t* directory,
            STARTUPINFOW& startup, PROCESS_INFORMATION& process) {
    return CreateProcessW(application, commandLine, nullptr, nullptr, inherits, NORMAL_PRIORITY_CLASS, nullptr,
                          directory, &startup, &process) != FALSE;
}

/// @param keptFlags  those start-up flags of this process that the program gets, too
template <class Startup, class Character>
bool StartShown(const Character* application, Character* commandLine, const Character* directory, DWORD keptFlags,
                PROCESS_INFORMATION& process) {
    Startup startup{};
    ReadOwnStartup(startup);
    startup.lpDesktop = nullptr;
    startup.lpTitle = nullptr;
    startup.dwFlags = (startup.dwFlags & keptFlags) | STARTF_USESHOWWINDOW;
    startup.wShowWindow = SW_SHOW;
    if (!Create(application, commandLine, false, directory, startup, process)) return false;
    Sleep(0);
    return true;
}

/// @return exit code; STILL_ACTIVE: the process was terminated
DWORD WaitForEnd(HANDLE process, DWORD timeoutMs) {
    DWORD exitCode = STILL_ACTIVE;
    if (WaitForSingleObject(process, timeoutMs) == WAIT_TIMEOUT) {
        (void)TerminateProcess(process, STILL_ACTIVE); // fails only if it has just ended
    } else {
        (void)GetExitCodeProcess(process, &exitCode); // an open process has one
    }
    return exitCode;
}

} // namespace

bool StartShown(const wchar_t* application, wchar_t* commandLine, PROCESS_INFORMATION& process) {
    return StartShown<STARTUPINFOW>(application, commandLine, static_cast<const wchar_t*>(nullptr), MAXDWORD, process);
}

bool StartShown(char* commandLine, const char* directory, PROCESS_INFORMATION& process) {
    return StartShown<STARTUPINFOA>(static_cast<const char*>(nullptr), commandLine,
                                    *directory == '\0' ? nullptr : directory, 0, process);
}

bool RunHidden(wchar_t* commandLine, const StandardStreams* streams, DWORD timeoutMs, DWORD& exitCode) {
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESHOWWINDOW;
    startup.wShowWindow = SW_HIDE;
    if (streams != nullptr) {
        startup.dwFlags |= STARTF_USESTDHANDLES;
        startup.hStdInput = streams->input;
        startup.hStdOutput = streams->output;
    }
    PROCESS_INFORMATION process{};
    if (!Create(nullptr, commandLine, true, nullptr, startup, process)) return false;
    const Handle thread(process.hThread);
    const Handle program(process.hProcess);
    exitCode = WaitForEnd(program.Get(), timeoutMs);
    return true;
}

} // namespace tessel
