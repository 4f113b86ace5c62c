#include "ChildProcess.h"

#include <gtest/gtest.h>

#include <cstdio>

namespace {

/// Ends a program that is stuck, so that nothing is left running.
DWORD WINAPI Watch(void* started) {
    SetEvent(static_cast<HANDLE>(started));
    constexpr DWORD kLimitMs = 90000;
    Sleep(kLimitMs);
    std::fprintf(stderr, "still running after %lu s: ended by the watchdog\n", kLimitMs / 1000);
    TerminateProcess(GetCurrentProcess(), 97);
    return 97;
}

/// Returns once the watchdog runs: Wine crashes one process in a hundred that ends while a thread of it is starting.
void StartWatchdog() {
    const HANDLE started = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    CloseHandle(CreateThread(nullptr, 0, Watch, started, 0, nullptr));
    WaitForSingleObject(started, INFINITE);
    CloseHandle(started);
}

/// Whatever this program starts ends with it, also when the watchdog ends it.
void KeepProgramsInJob() {
    const HANDLE job = CreateJobObjectW(nullptr, nullptr); // its closing, at the end of this program, ends them
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits{};
    limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
    SetInformationJobObject(job, JobObjectExtendedLimitInformation, &limits, sizeof limits);
    AssignProcessToJobObject(job, GetCurrentProcess());
}

} // namespace

int main(int argc, char** argv) {
    StartWatchdog();
    int exitCode = 0;
    if (RunRole(argc, argv, exitCode)) return exitCode;
    KeepProgramsInJob();
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
