#include "support/ChildProcess.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace {

std::wstring Order(const wchar_t* order) {
    wchar_t own[MAX_PATH];
    GetModuleFileNameW(nullptr, own, MAX_PATH);
    return L"\"" + std::filesystem::path(own).replace_filename(L"watcher.exe").wstring() + L"\" " + order;
}

/// @return the service's state; 0: it is not installed
DWORD State() {
    SERVICE_STATUS status{};
    const SC_HANDLE manager = OpenSCManagerW(nullptr, nullptr, SC_MANAGER_CONNECT);
    const SC_HANDLE service = OpenServiceW(manager, L"TesselWatcher", SERVICE_QUERY_STATUS);
    if (service != nullptr) {
        QueryServiceStatus(service, &status);
        CloseServiceHandle(service);
    }
    CloseServiceHandle(manager);
    return status.dwCurrentState;
}

} // namespace

TEST(Watcher, IsInstalledRunsAndIsRemoved) {
    ASSERT_EQ(ChildProcess(Order(L"install")).ExitCode(), 0u);
    while (State() == SERVICE_START_PENDING) SwitchToThread();
    EXPECT_EQ(State(), DWORD{SERVICE_RUNNING});
    EXPECT_EQ(ChildProcess(Order(L"remove")).ExitCode(), 0u);
    while (State() != 0) SwitchToThread(); // the manager forgets it once its process has ended
}
