#include "ChildProcess.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <future>
#include <thread>

namespace {

/// Ends a stuck program. Returns once the watchdog runs, because Wine crashes one in a hundred processes that end while
/// one of their threads is starting.
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

/// Makes all programs that this one has started end together with it, even if the watchdog ends it.
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
