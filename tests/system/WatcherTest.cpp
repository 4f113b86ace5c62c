#include "support/ChildProcess.h"

#include <gtest/gtest.h>
#include <tessel/system/service.h>

TEST(Watcher, IsInstalledRunsAndIsRemoved) {
    /// Queries the watcher.
    struct Asker : CNtService {
        Asker() : CNtService(L"TesselWatcher", nullptr, nullptr, nullptr, nullptr) {}
        void OnServiceRun() override {}
        void OnServiceStop() override {}
        const wchar_t** GetStartArgs() override { return nullptr; }
    };
    const Asker asker;
    const std::wstring watcher = Quoted(Beside(L"watcher.exe"));
    ASSERT_EQ(ChildProcess(watcher + L"install").ExitCode(), 0u);
    while (!CNtService::IsRunning(nullptr)) SwitchToThread();
    EXPECT_EQ(ChildProcess(watcher + L"remove").ExitCode(), 0u);
    EXPECT_FALSE(CNtService::IsInstalled(nullptr));
    EXPECT_EQ(ChildProcess(watcher + L"remove").ExitCode(), 1u) << "there is none";
}
