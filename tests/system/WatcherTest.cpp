#include "support/ChildProcess.h"

#include <gtest/gtest.h>
#include <tessel/system/service.h>

namespace {

std::wstring Order(const wchar_t* order) {
    return Quoted(Beside(L"watcher.exe")) + order;
}

/// Queries the watcher.
struct Asker : CNtService {
    Asker() : CNtService(L"TesselWatcher", nullptr, nullptr, nullptr, nullptr) {}
    void OnServiceRun() override {}
    void OnServiceStop() override {}
    const wchar_t** GetStartArgs() override { return nullptr; }
};

} // namespace

TEST(Watcher, IsInstalledRunsAndIsRemoved) {
    const Asker asker;
    ASSERT_EQ(ChildProcess(Order(L"install")).ExitCode(), 0u);
    while (!CNtService::IsRunning(nullptr)) SwitchToThread();
    EXPECT_EQ(ChildProcess(Order(L"remove")).ExitCode(), 0u);
    EXPECT_FALSE(CNtService::IsInstalled(nullptr));
    EXPECT_EQ(ChildProcess(Order(L"remove")).ExitCode(), 1u) << "there is none";
}
