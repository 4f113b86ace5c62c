#include "ChildProcess.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <thread>

namespace {

/// Ends a program that is stuck, so that nothing is left running.
void Watch() {
    constexpr DWORD kLimitMs = 90000;
    Sleep(kLimitMs);
    std::fprintf(stderr, "still running after %lu s: ended by the watchdog\n", kLimitMs / 1000);
    TerminateProcess(GetCurrentProcess(), 97);
}

} // namespace

int main(int argc, char** argv) {
    std::thread(Watch).detach();
    int exitCode = 0;
    if (RunRole(argc, argv, exitCode)) return exitCode;
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
