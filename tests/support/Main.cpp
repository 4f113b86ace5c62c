#include "ChildProcess.h"

#include <gtest/gtest.h>

#include <cstdio>

namespace {

/// Ends a program that is stuck, so that nothing is left running. A bare thread: one of the runtime's may still be
/// starting when a short test ends.
DWORD WINAPI Watch(void*) {
    constexpr DWORD kLimitMs = 90000;
    Sleep(kLimitMs);
    std::fprintf(stderr, "still running after %lu s: ended by the watchdog\n", kLimitMs / 1000);
    TerminateProcess(GetCurrentProcess(), 97);
    return 97;
}

} // namespace

int main(int argc, char** argv) {
    CloseHandle(CreateThread(nullptr, 0, Watch, nullptr, 0, nullptr));
    int exitCode = 0;
    if (RunRole(argc, argv, exitCode)) return exitCode;
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
