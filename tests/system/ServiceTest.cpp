#include "support/ChildProcess.h"
#include "support/ImportPatch.h"

#include <gtest/gtest.h>
#include <tessel/service.h>
#include <tessel/synchronisation.h>

#include <array>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace {

using Lines = std::vector<std::wstring>;

constexpr wchar_t kName[] = L"TesselTest";
constexpr wchar_t kDisplayName[] = L"Tessel test";

class TestService : public CNtService {
public:
    explicit TestService(const wchar_t* displayName = kDisplayName, const wchar_t* exePath = nullptr,
                         const wchar_t* args = L"--role service")
        : CNtService(kName, displayName, L"RpcSs\0", exePath, args) {}
    using CNtService::AddToMessageLog;

    const wchar_t** startArgs = argument.data();
    bool stops = true;
    bool asksBeforeStart = false;
    Lines seen;

protected:
    void OnServiceRun() override {
        seen.push_back(L"run");
        ReportStatus(SERVICE_RUNNING, 0, 0);
        stop.WaitOnEvent(stops ? INFINITE : 0);
        ReportStatus(SERVICE_STOPPED, 5, 0);
    }
    void OnServiceStop() override {
        seen.push_back(L"stop");
        stop.SetEvent();
    }
    const wchar_t** GetStartArgs() override {
        EXPECT_TRUE(!asksBeforeStart || GetStartMode() == START_MANUAL);
        return startArgs;
    }

private:
    std::array<const wchar_t*, 1> argument{L"argument"};
    CEvent stop{nullptr, 1};
};

const Role service("service", [](const std::vector<std::string>&) {
    TestService().Run();
    return 0;
});

Lines calls;

int WINAPI Show(HWND, LPCWSTR text, LPCWSTR title, UINT type) {
    calls.push_back(title + (L"/" + std::to_wstring(type) + L": ") + text);
    return IDOK;
}
void WINAPI Pause(DWORD milliseconds) {
    EXPECT_EQ(milliseconds, 1000u);
    SwitchToThread();
}
Lines TakeCalls() {
    return std::exchange(calls, {});
}
bool EndsWith(const std::wstring& text, const std::wstring& end) {
    return text.size() >= end.size() && text.substr(text.size() - end.size()) == end;
}

struct Service : testing::Test {
    ImportPatch show{L"Tessel.dll", "MessageBoxW", Show};
    ImportPatch pause{L"Tessel.dll", "Sleep", Pause};
    std::optional<TestService> service{std::in_place};

    Service() {
        service->Remove(); // what a run that was cut off left
        service->EnableErrorReports(true);
    }
    ~Service() override {
        service.emplace();
        service->Remove();
    }
    /// What the service manager has: type, start type and command.
    static std::wstring Installed() {
        struct {
            QUERY_SERVICE_CONFIGW config;
            wchar_t texts[2000];
        } answer{};
        DWORD needed = 0;
        const SC_HANDLE manager = OpenSCManagerW(nullptr, nullptr, SC_MANAGER_ALL_ACCESS);
        const SC_HANDLE handle = OpenServiceW(manager, kName, SERVICE_ALL_ACCESS);
        const bool told = handle != nullptr && QueryServiceConfigW(handle, &answer.config, sizeof answer, &needed);
        if (handle != nullptr) CloseServiceHandle(handle);
        CloseServiceHandle(manager);
        if (!told) return L"none";
        return std::to_wstring(answer.config.dwServiceType) + L" " + std::to_wstring(answer.config.dwStartType) + L" " +
               answer.config.lpBinaryPathName;
    }
};

} // namespace

TEST_F(Service, IsInstalledStartedStoppedAndRemoved) {
    EXPECT_FALSE(CNtService::Start());
    EXPECT_FALSE(CNtService::Stop());
    EXPECT_FALSE(CNtService::IsRunning(nullptr));
    for (const std::wstring& line : TakeCalls()) EXPECT_TRUE(EndsWith(line, L" (0x424)\n")) << line;

    service->Install();
    service->Install();
    const Lines installed = TakeCalls();
    ASSERT_EQ(installed.size(), 2u);
    EXPECT_EQ(installed[0], L"TesselTest/0: Tessel test installed.\n");
    EXPECT_EQ(installed[1].find(L"TesselTest/0: CreateService failed - "), 0u);
    EXPECT_TRUE(EndsWith(installed[1], L" (0x431)\n")) << installed[1];
    EXPECT_EQ(Installed().find(L"272 3 "), 0u) << Installed();
    wchar_t needs[20];
    DWORD size = sizeof needs;
    EXPECT_EQ(RegGetValueW(HKEY_LOCAL_MACHINE, L"System\\CurrentControlSet\\Services\\TesselTest", L"DependOnService",
                           RRF_RT_REG_MULTI_SZ, nullptr, needs, &size),
              0);
    EXPECT_STREQ(needs, L"RpcSs");
    EXPECT_TRUE(CNtService::IsInstalled(nullptr));

    ASSERT_TRUE(CNtService::Start());
    while (!CNtService::IsRunning(nullptr)) SwitchToThread();
    EXPECT_FALSE(CNtService::Start());
    EXPECT_FALSE(CNtService::IsRunning(L"Tessel has no such service"));
    TakeCalls();
    EXPECT_TRUE(CNtService::Stop());
    EXPECT_EQ(calls.front(), L"TesselTest/0: Stopping Tessel test.");
    EXPECT_EQ(calls.back(), L"TesselTest/0: \nTessel test stopped.\n");
    TakeCalls();
    service->Remove();
    EXPECT_EQ(TakeCalls(), (Lines{L"TesselTest/0: \nTessel test stopped.\n", L"TesselTest/0: Tessel test removed.\n"}));
    EXPECT_FALSE(CNtService::IsInstalled(nullptr));
}

TEST_F(Service, Odd181TheOwnServiceIsAskedWhateverTheName) {
    service->Install();
    ASSERT_TRUE(CNtService::Start());
    while (!CNtService::IsRunning(L"MSIServer")) SwitchToThread();
    EXPECT_TRUE(CNtService::Stop());
    EXPECT_FALSE(CNtService::IsRunning(L"MSIServer"));
}

BOOL WINAPI AnswerInPart(SC_HANDLE, QUERY_SERVICE_CONFIGW* config, DWORD size, DWORD*) {
    EXPECT_EQ(size, sizeof *config);
    EXPECT_EQ(config->dwErrorControl, 0u);
    config->dwStartType = SERVICE_AUTO_START;
    return FALSE;
}

TEST_F(Service, Odd180TheStartModeIsSetButReadAsManual) {
    EXPECT_FALSE(CNtService::SetStartMode(START_AUTO)) << "not installed";
    service->Install();
    EXPECT_TRUE(CNtService::SetStartMode(START_AUTO));
    EXPECT_EQ(Installed().find(L"272 2 "), 0u) << Installed();
    EXPECT_EQ(CNtService::GetStartMode(), START_MANUAL);
    {
        const ImportPatch answer(L"Tessel.dll", "QueryServiceConfigW", AnswerInPart);
        EXPECT_EQ(CNtService::GetStartMode(), START_AUTO);
    }
    EXPECT_TRUE(CNtService::SetStartMode(static_cast<START_MODE>(7)));
    EXPECT_EQ(Installed().find(L"272 3 "), 0u) << Installed();
}

TEST_F(Service, Odd183ThePathHasNoMarksAndALongOneIsRefused) {
    service.emplace(kDisplayName, L"C:\\My service.exe");
    service->Install();
    EXPECT_TRUE(EndsWith(Installed(), L" C:\\My service.exe --role service")) << Installed();
    service->Remove();
    TakeCalls();
    const std::wstring longText(5000, L'x');
    for (const wchar_t* arguments : {static_cast<const wchar_t*>(nullptr), longText.c_str()}) {
        service.emplace(longText.c_str(), arguments == nullptr ? longText.c_str() : L"short", arguments);
        service->Install();
        EXPECT_TRUE(TakeCalls() == Lines{L"TesselTest/0: " + (L"Unable to install " + longText).substr(0, 2047)});
    }
    EXPECT_EQ(Installed(), L"none");
}

namespace fake {

int object;
bool serviceOpens = true;
DWORD state = SERVICE_STOPPED;

SC_HANDLE Handle() {
    return reinterpret_cast<SC_HANDLE>(&object);
}
SC_HANDLE WINAPI OpenManager(LPCWSTR, LPCWSTR, DWORD) {
    calls.push_back(L"manager");
    return Handle();
}
SC_HANDLE WINAPI OpenOne(SC_HANDLE, LPCWSTR name, DWORD) {
    calls.push_back(name);
    SetLastError(ERROR_SERVICE_DOES_NOT_EXIST);
    return serviceOpens ? Handle() : nullptr;
}
BOOL WINAPI CloseOne(SC_HANDLE) {
    calls.push_back(L"close");
    return TRUE;
}
BOOL WINAPI StartOne(SC_HANDLE, DWORD count, LPCWSTR* arguments) {
    calls.push_back(std::to_wstring(count) + arguments[0]);
    return TRUE;
}
BOOL WINAPI QueryConfig(SC_HANDLE, QUERY_SERVICE_CONFIGW*, DWORD, DWORD*) {
    return FALSE;
}
BOOL WINAPI Control(SC_HANDLE, DWORD, SERVICE_STATUS*) {
    return FALSE;
}
BOOL WINAPI Query(SC_HANDLE, SERVICE_STATUS* status) {
    status->dwCurrentState = std::exchange(state, SERVICE_PAUSED);
    return TRUE;
}

} // namespace fake

struct ServiceHandles : testing::Test {
    ImportPatch manager{L"Tessel.dll", "OpenSCManagerW", fake::OpenManager};
    ImportPatch open{L"Tessel.dll", "OpenServiceW", fake::OpenOne};
    ImportPatch close{L"Tessel.dll", "CloseServiceHandle", fake::CloseOne};
    ImportPatch start{L"Tessel.dll", "StartServiceW", fake::StartOne};
    ImportPatch query{L"Tessel.dll", "QueryServiceConfigW", fake::QueryConfig};
    ImportPatch control{L"Tessel.dll", "ControlService", fake::Control};
    ImportPatch status{L"Tessel.dll", "QueryServiceStatus", fake::Query};
    ImportPatch show{L"Tessel.dll", "MessageBoxW", Show};
    ImportPatch pause{L"Tessel.dll", "Sleep", Pause};
    TestService service;
};

TEST_F(ServiceHandles, AreSharedUntilTheLastUserClosesThem) {
    service.asksBeforeStart = true;
    EXPECT_TRUE(CNtService::Start());
    EXPECT_EQ(TakeCalls(), (Lines{L"manager", kName, L"1argument", L"close", L"close"}));
    service.startArgs = nullptr;
    EXPECT_FALSE(CNtService::Start());
    EXPECT_EQ(TakeCalls(), (Lines{L"manager", kName, L"close", L"close"}));
}

TEST_F(ServiceHandles, Odd182TheManagerStaysOpenWithoutTheService) {
    fake::serviceOpens = false;
    EXPECT_FALSE(CNtService::Start());
    fake::serviceOpens = true;
    EXPECT_TRUE(CNtService::Start());
    EXPECT_EQ(TakeCalls(), (Lines{L"manager", kName, kName, L"1argument", L"close", L"close"}))
        << "and nothing is shown unless asked for";
}

TEST_F(ServiceHandles, StoppingFailsWhenTheServiceEndsUpInAnotherState) {
    service.EnableErrorReports(true);
    fake::state = SERVICE_STOP_PENDING;
    service.Remove();
    EXPECT_EQ(TakeCalls(), (Lines{L"manager", kName, L"TesselTest/0: .",
                                  L"TesselTest/0: \nTessel test failed to stop.\n", L"close", L"close"}));
}

namespace dispatcher {

LPHANDLER_FUNCTION handler;
bool accepts = true;

BOOL WINAPI Dispatch(const SERVICE_TABLE_ENTRYW* table) {
    EXPECT_EQ(table[1].lpServiceName, nullptr);
    EXPECT_EQ(table[1].lpServiceProc, nullptr);
    calls.push_back(table[0].lpServiceName);
    table[0].lpServiceProc(0, nullptr);
    SetLastError(ERROR_FAILED_SERVICE_CONTROLLER_CONNECT);
    return accepts;
}
SERVICE_STATUS_HANDLE WINAPI Register(LPCWSTR name, LPHANDLER_FUNCTION function) {
    calls.push_back(name);
    handler = function;
    return reinterpret_cast<SERVICE_STATUS_HANDLE>(&handler);
}
BOOL WINAPI Set(SERVICE_STATUS_HANDLE, SERVICE_STATUS* s) {
    std::wstring line;
    for (const DWORD part : {s->dwServiceType, s->dwCurrentState, s->dwControlsAccepted, s->dwWin32ExitCode,
                             s->dwServiceSpecificExitCode, s->dwCheckPoint, s->dwWaitHint}) {
        line += std::to_wstring(part) + L" ";
    }
    calls.push_back(line);
    SetLastError(ERROR_INVALID_HANDLE);
    return accepts;
}
HANDLE WINAPI OpenLog(LPCWSTR, LPCWSTR name) {
    return const_cast<wchar_t*>(name);
}
BOOL WINAPI CloseLog(HANDLE source) {
    calls.push_back(L"closed " + std::wstring(static_cast<const wchar_t*>(source)));
    return TRUE;
}
BOOL WINAPI WriteLog(HANDLE, WORD type, WORD category, DWORD id, PSID sid, WORD count, DWORD, LPCWSTR* texts, void*) {
    EXPECT_TRUE(type == 1 && category == 0 && id == 0 && sid == nullptr && count == 2);
    calls.push_back(texts[0]);
    calls.push_back(texts[1]);
    return TRUE;
}

} // namespace dispatcher

struct ServiceDispatch : testing::Test {
    ImportPatch dispatch{L"Tessel.dll", "StartServiceCtrlDispatcherW", dispatcher::Dispatch};
    ImportPatch registration{L"Tessel.dll", "RegisterServiceCtrlHandlerW", dispatcher::Register};
    ImportPatch set{L"Tessel.dll", "SetServiceStatus", dispatcher::Set};
    ImportPatch openLog{L"Tessel.dll", "RegisterEventSourceW", dispatcher::OpenLog};
    ImportPatch closeLog{L"Tessel.dll", "DeregisterEventSource", dispatcher::CloseLog};
    ImportPatch writeLog{L"Tessel.dll", "ReportEventW", dispatcher::WriteLog};
    std::optional<TestService> service{std::in_place};
};

TEST_F(ServiceDispatch, ReportsEveryStateToTheServiceManager) {
    service->stops = false;
    service->Run();
    EXPECT_EQ(TakeCalls(), (Lines{kName, kName, L"16 2 0 0 0 1 3000 ", L"16 4 1 0 0 0 0 ", L"16 1 1 5 0 0 0 "}));
    dispatcher::handler(SERVICE_CONTROL_INTERROGATE);
    dispatcher::handler(SERVICE_CONTROL_STOP);
    EXPECT_EQ(TakeCalls(), (Lines{L"16 1 1 5 0 0 0 ", L"16 3 1 0 0 2 0 "}));
    EXPECT_EQ(service->seen, (Lines{L"run", L"stop"}));
    service.reset();
    dispatcher::handler(SERVICE_CONTROL_STOP);
    EXPECT_EQ(TakeCalls(), Lines{L"16 3 1 0 0 3 0 "});
}

TEST_F(ServiceDispatch, WritesFailuresToTheEventLogAndDoesNotRun) {
    dispatcher::accepts = false;
    service->Run();
    const Lines log = TakeCalls();
    ASSERT_EQ(log.size(), 9u);
    EXPECT_EQ(log[3].find(L"TesselTest error: "), 0u);
    EXPECT_TRUE(EndsWith(log[3], L" (0x6)")) << log[3];
    EXPECT_EQ(log[3].find_first_of(L"\r\n"), std::wstring::npos);
    EXPECT_EQ(log[4], L"SetServiceStatus");
    EXPECT_EQ(log[5], L"closed TesselTest");
    EXPECT_TRUE(EndsWith(log[6], L" (0x427)")) << log[6];
    EXPECT_EQ(log[7], L"StartServiceCtrlDispatcher failed.");
    EXPECT_EQ(service->seen, Lines{});
    service->AddToMessageLog(L"told", false);
    EXPECT_EQ(TakeCalls(), (Lines{L"TesselTest error.", L"told", L"closed TesselTest"}));
}
