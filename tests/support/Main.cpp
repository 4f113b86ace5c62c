#include "ChildProcess.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <future>
#include <thread>

namespace {

/// Ends a program that is stuck. Returns once the watchdog runs, because Wine crashes one process in a hundred that
/// ends while one of its threads is starting.
void StartWatchdog() {
    static std::promise<void> started;
    std::thread([] {
        started.set_value();
        constexpr DWORD kLimitMs = 90000;
        Sleep(kLimitMs);
        std::fprintf(stderr, "still running after %lu s: ended by the watchdog\n", kLimitMs / 1000);
        TerminateProcess(GetCurrentProcess(), 97);
    }).detach();
    started.get_future().wait();
}

/// Ends all programs that this one has started together with it, also when the watchdog ends it.
void KeepProgramsInJob() {
    const HANDLE job = CreateJobObjectW(nullptr, nullptr); // closed, and so ended, with this program
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
