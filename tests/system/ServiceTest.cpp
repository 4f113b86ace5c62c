#include "FakeEventLog.h"
#include "support/ChildProcess.h"
#include "support/ShownBoxes.h"

#include <gtest/gtest.h>
#include <tessel/foundation/event.h>
#include <tessel/system/service.h>

#include <algorithm>
#include <optional>

namespace {

constexpr wchar_t kName[] = L"TesselTest";
constexpr wchar_t kDisplayName[] = L"Tessel test";

class TestService : public CNtService {
public:
    explicit TestService(const wchar_t* displayName = kDisplayName, const wchar_t* exePath = nullptr,
                         const wchar_t* args = L"--role service")
        : CNtService(kName, displayName, L"RpcSs\0", exePath, args) {}
    using CNtService::AddToMessageLog;

    const wchar_t* argument = L"argument";
    const wchar_t** startArgs = &argument;
    bool stops = true;
    Lines seen;

protected:
    void OnServiceRun() override {
        seen.push_back(L"run");
        ReportStatus(SERVICE_RUNNING, 0, 0);
        stop.WaitOnEvent(stops ? INFINITE : 0);
        ReportStatus(SERVICE_STOPPED, 5, 7);
    }
    void OnServiceStop() override { seen.push_back(L"stop"), stop.SetEvent(); }
    const wchar_t** GetStartArgs() override {
        EXPECT_EQ(GetStartMode(), START_MANUAL) << "with the handles that Start() has opened";
        return startArgs;
    }

private:
    CEvent stop{nullptr, 1};
};

const Role service("service", [](const std::vector<std::string>&) {
    TestService().Run();
    return 0;
});

struct Service : testing::Test {
    ShownBoxes shown;
    ImportPatch pause{"Sleep", &Sleep, [](DWORD milliseconds) {
                          EXPECT_EQ(milliseconds, 1000u);
                          SwitchToThread();
                      }};
    std::optional<TestService> service{std::in_place};

    Service() {
        Remove(); // left by an interrupted run
        service->EnableErrorReports(true);
    }
    ~Service() override {
        service.emplace();
        Remove();
    }
    /// Waits until the manager has dropped the service, which it does once the process has ended.
    void Remove() {
        service->Remove();
        while (CNtService::IsInstalled(nullptr)) SwitchToThread();
    }
    Lines Shown() { return std::exchange(shown.texts, {}); }
    /// The service manager's record.
    static std::wstring Stored(const wchar_t* value) {
        wchar_t data[2000] = L"none";
        DWORD size = sizeof data;
        DWORD type = 0;
        RegGetValueW(HKEY_LOCAL_MACHINE, L"System\\CurrentControlSet\\Services\\TesselTest", value, RRF_RT_ANY, &type,
                     data, &size);
        return type == REG_DWORD ? std::to_wstring(data[0]) : data;
    }
};

TEST_F(Service, IsInstalledStartedStoppedRemovedAndQueriedWhateverTheNameOdd181) {
    EXPECT_FALSE(CNtService::Start() || CNtService::Stop() || CNtService::IsRunning(nullptr));
    for (const std::wstring& line : Shown()) EXPECT_TRUE(line.ends_with(L" (0x424)\n")) << line;

    service->Install();
    service->Install();
    EXPECT_EQ(shown.texts.back().find(L"TesselTest: CreateService failed - "), 0u);
    EXPECT_EQ(Shown().front(), L"TesselTest: Tessel test installed.\n");
    EXPECT_EQ(Stored(L"Type") + Stored(L"Start") + Stored(L"ErrorControl"), L"27231");
    EXPECT_EQ(Stored(L"DependOnService") + Stored(L"DisplayName"), L"RpcSsTessel test");
    EXPECT_TRUE(CNtService::IsInstalled(nullptr));

    ASSERT_TRUE(CNtService::Start());
    while (!CNtService::IsRunning(L"MSIServer")) SwitchToThread();
    EXPECT_TRUE(CNtService::IsRunning(nullptr));
    EXPECT_FALSE(CNtService::Start());
    EXPECT_FALSE(CNtService::IsRunning(L"Tessel has no such service"));
    Shown();
    EXPECT_TRUE(CNtService::Stop());
    EXPECT_FALSE(CNtService::IsRunning(L"MSIServer"));
    EXPECT_EQ(shown.texts.front(), L"TesselTest: Stopping Tessel test.");
    EXPECT_EQ(shown.texts.back(), L"TesselTest: \nTessel test stopped.\n");
    Shown();
    Remove();
    EXPECT_EQ(Shown(), (Lines{L"TesselTest: \nTessel test stopped.\n", L"TesselTest: Tessel test removed.\n"}));
}

TEST_F(Service, Odd180TheStartModeIsSetButReadAsManual) {
    EXPECT_FALSE(CNtService::SetStartMode(START_AUTO)) << "not installed";
    service->Install();
    EXPECT_TRUE(CNtService::SetStartMode(START_AUTO));
    EXPECT_EQ(Stored(L"Type") + Stored(L"Start"), L"2722");
    EXPECT_EQ(CNtService::GetStartMode(), START_MANUAL);
    const ImportPatch answer("QueryServiceConfigW", &QueryServiceConfigW, [](auto, auto* config, auto...) {
        return config->dwStartType = SERVICE_AUTO_START, FALSE;
    });
    EXPECT_EQ(CNtService::GetStartMode(), START_AUTO);
    EXPECT_TRUE(CNtService::SetStartMode(static_cast<START_MODE>(7)));
    EXPECT_EQ(Stored(L"Start"), L"3");
}

TEST_F(Service, Odd183ThePathHasNoQuotationMarksAndALongOneIsRefused) {
    service.emplace(kDisplayName, L"C:\\My service.exe");
    service->Install();
    EXPECT_EQ(Stored(L"ImagePath"), L"C:\\My service.exe --role service");
    service->Remove();
    Shown();
    const std::wstring longText(5000, L'x');
    const ImportPatch ownPath("GetModuleFileNameW", &GetModuleFileNameW,
                              [](HMODULE, wchar_t* path, DWORD size) { return std::fill_n(path, size, L'x'), size; });
    const std::pair<const wchar_t*, const wchar_t*> rows[] = {
        {longText.c_str(), nullptr}, {L"a", longText.c_str()}, {}};
    for (const auto& [path, arguments] : rows) {
        service.emplace(kDisplayName, path, arguments);
        service->Install();
        EXPECT_EQ(shown.texts.front().find(L"TesselTest: Unable to install Tessel test - "), 0u);
        EXPECT_TRUE(Shown().front().ends_with(L" (0x7a)\n"));
    }
    EXPECT_EQ(Stored(L"ImagePath"), L"none");
    service.emplace(longText.c_str());
    service->Install();
    EXPECT_EQ(Shown().front(), L"TesselTest: " + (L"Unable to install " + longText).substr(0, 2047));
}

/// A service manager that logs its requests.
struct ServiceHandles : testing::Test {
    Lines calls;

    BOOL Note(const std::wstring& call) { return calls.push_back(call), TRUE; }
    Lines Calls() { return std::exchange(calls, {}); }
    SC_HANDLE Opened(const std::wstring& what) { return Note(what), reinterpret_cast<SC_HANDLE>(this); }

    const ImportPatch patches[8] = {
        ImportPatch("OpenSCManagerW", &OpenSCManagerW, [this](auto...) { return Opened(L"manager"); }),
        ImportPatch("OpenServiceW", &OpenServiceW, [this](auto, auto* name, auto) { return Opened(name); }),
        ImportPatch("CloseServiceHandle", &CloseServiceHandle, [this](auto) { return Note(L"close"); }),
        ImportPatch("StartServiceW", &StartServiceW,
                    [this](auto, DWORD count, auto* texts) { return Note(std::to_wstring(count) + texts[0]); }),
        ImportPatch(Failing("QueryServiceConfigW", &QueryServiceConfigW, FALSE)),
        ImportPatch("ControlService", &ControlService,
                    [](auto, DWORD control, auto*) { return control == SERVICE_CONTROL_STOP; }),
        ImportPatch("QueryServiceStatus", &QueryServiceStatus,
                    [](auto, auto* status) {
                        const bool first = status->dwCurrentState == 0;
                        return status->dwCurrentState = first ? SERVICE_STOP_PENDING : SERVICE_PAUSED, TRUE;
                    }),
        ImportPatch("Sleep", &Sleep, [this](DWORD milliseconds) { Note(std::to_wstring(milliseconds)); })};
    const ImportPatch show{"MessageBoxW", &MessageBoxW, [this](auto, auto* text, auto...) { return Note(text); }};
    TestService service;
};

TEST_F(ServiceHandles, AreSharedUntilTheLastUserClosesThem) {
    EXPECT_TRUE(CNtService::Start());
    EXPECT_EQ(Calls(), (Lines{L"manager", kName, L"1argument", L"close", L"close"}));
    service.startArgs = nullptr;
    EXPECT_FALSE(CNtService::Start());
    EXPECT_EQ(Calls(), (Lines{L"manager", kName, L"close", L"close"}));
}

TEST_F(ServiceHandles, StoppingFailsWhenTheServiceEndsUpInAnotherState) {
    service.EnableErrorReports(true);
    service.Remove();
    EXPECT_EQ(Calls(), (Lines{L"manager", kName, L"Stopping Tessel test.", L"1000", L".", L"1000",
                              L"\nTessel test failed to stop.\n", L"close", L"close"}));
    EXPECT_FALSE(CNtService::IsRunning(nullptr));
}

TEST_F(ServiceHandles, NothingIsDoneWithoutAServiceManagerWhichIsShown) {
    const ImportPatch denied(Failing("OpenSCManagerW", &OpenSCManagerW, nullptr, ERROR_ACCESS_DENIED));
    EXPECT_FALSE(CNtService::Stop()) << "and nothing is shown yet";
    service.EnableErrorReports(true);
    EXPECT_FALSE(CNtService::Start() || CNtService::IsInstalled(nullptr));
    service.Install();
    EXPECT_EQ(calls.size(), 2u);
    for (const std::wstring& shown : calls) {
        EXPECT_EQ(shown.find(L"OpenSCManager failed - "), 0u) << shown;
        EXPECT_TRUE(shown.ends_with(L" (0x5)\n")) << shown;
    }
}

/// The service manager and the event log as a service sees them.
struct ServiceDispatch : testing::Test {
    Lines states;
    LPHANDLER_FUNCTION handler = nullptr;
    bool accepts = true;

    Lines States() { return std::exchange(states, {}); }
    BOOL Answer(DWORD error) {
        SetLastError(error);
        return accepts;
    }

    FakeEventLog log;
    const ImportPatch dispatch{"StartServiceCtrlDispatcherW", &StartServiceCtrlDispatcherW, [this](auto* table) {
                                   EXPECT_STREQ(table[0].lpServiceName, kName);
                                   EXPECT_EQ(table[1].lpServiceName, nullptr);
                                   table[0].lpServiceProc(0, nullptr);
                                   return Answer(ERROR_FAILED_SERVICE_CONTROLLER_CONNECT);
                               }};
    const ImportPatch registration{"RegisterServiceCtrlHandlerW", &RegisterServiceCtrlHandlerW,
                                   [this](auto* name, auto* function) {
                                       EXPECT_STREQ(name, kName);
                                       handler = function;
                                       return reinterpret_cast<SERVICE_STATUS_HANDLE>(this);
                                   }};
    const ImportPatch set{"SetServiceStatus", &SetServiceStatus, [this](auto, SERVICE_STATUS* s) {
                              states.push_back(ArgumentText(s->dwServiceType, s->dwCurrentState, s->dwControlsAccepted,
                                                            s->dwWin32ExitCode, s->dwCheckPoint, s->dwWaitHint));
                              return Answer(ERROR_INVALID_HANDLE);
                          }};
    std::optional<TestService> service{std::in_place};
};

TEST_F(ServiceDispatch, ReportsEveryStateToTheServiceManager) {
    service->stops = false;
    service->Run();
    EXPECT_EQ(States(), (Lines{L" 16 2 0 0 1 3000", L" 16 4 1 0 0 0", L" 16 1 1 5 0 7"}));
    handler(SERVICE_CONTROL_INTERROGATE);
    handler(SERVICE_CONTROL_STOP);
    EXPECT_EQ(States(), (Lines{L" 16 1 1 5 0 7", L" 16 3 1 0 2 0"}));
    EXPECT_EQ(service->seen, (Lines{L"run", L"stop"}));
    service.reset();
    handler(SERVICE_CONTROL_STOP);
    EXPECT_EQ(States(), Lines{L" 16 3 1 0 3 0"});
}

TEST_F(ServiceDispatch, WritesFailuresToTheEventLogAndDoesNotRun) {
    accepts = false;
    service->Run();
    ASSERT_EQ(log.lines.size(), 6u);
    EXPECT_EQ(log.lines[1].find(L"TesselTest 1 0 0 nobody |TesselTest error: "), 0u) << log.lines[1];
    EXPECT_TRUE(log.lines[1].ends_with(L" (0x6)|SetServiceStatus")) << log.lines[1];
    EXPECT_EQ(log.lines[1].find_first_of(L"\r\n"), std::wstring::npos);
    EXPECT_EQ(log.lines[2], L"end of TesselTest");
    EXPECT_TRUE(log.lines[4].ends_with(L" (0x427)|StartServiceCtrlDispatcher failed.")) << log.lines[4];
    handler(SERVICE_CONTROL_STOP);
    log.Take();
    const ImportPatch refused(Failing("RegisterServiceCtrlHandlerW", &RegisterServiceCtrlHandlerW, nullptr));
    accepts = true;
    service->Run();
    EXPECT_EQ(log.Take().size() + service->seen.size(), 0u);
    service->AddToMessageLog(L"text", false);
    EXPECT_EQ(log.lines[1], L"TesselTest 1 0 0 nobody |TesselTest error.|text");
}

} // namespace
