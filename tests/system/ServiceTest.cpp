#include "support/ChildProcess.h"
#include "support/ImportPatch.h"

#include <gtest/gtest.h>
#include <tessel/foundation/event.h>
#include <tessel/system/service.h>

#include <algorithm>
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
    Lines seen;

protected:
    void OnServiceRun() override {
        seen.push_back(L"run");
        ReportStatus(SERVICE_RUNNING, 0, 0);
        stop.WaitOnEvent(stops ? INFINITE : 0);
        ReportStatus(SERVICE_STOPPED, 5, 7);
    }
    void OnServiceStop() override {
        seen.push_back(L"stop");
        stop.SetEvent();
    }
    const wchar_t** GetStartArgs() override {
        EXPECT_EQ(GetStartMode(), START_MANUAL) << "with the handles that Start() has opened";
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

/// The manager forgets a removed service once its process has ended.
void WaitUntilGone() {
    while (CNtService::IsInstalled(nullptr)) SwitchToThread();
}

struct Service : testing::Test {
    ImportPatch show{L"Tessel.dll", "MessageBoxW", Show};
    ImportPatch pause{L"Tessel.dll", "Sleep", Pause};
    std::optional<TestService> service{std::in_place};

    Service() {
        service->Remove(); // what a run that was cut off left
        WaitUntilGone();
        service->EnableErrorReports(true);
    }
    ~Service() override {
        service.emplace();
        service->Remove();
        WaitUntilGone();
    }
    /// What the service manager has written down.
    static std::wstring Stored(const wchar_t* value) {
        wchar_t data[2000] = L"none";
        DWORD size = sizeof data;
        DWORD type = 0;
        RegGetValueW(HKEY_LOCAL_MACHINE, L"System\\CurrentControlSet\\Services\\TesselTest", value, RRF_RT_ANY, &type,
                     data, &size);
        return type == REG_DWORD ? std::to_wstring(data[0]) : data;
    }
};

} // namespace

TEST_F(Service, IsInstalledStartedStoppedAndRemovedAndAskedForWhateverTheNameOdd181) {
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
    EXPECT_EQ(Stored(L"Type") + Stored(L"Start") + Stored(L"ErrorControl"), L"27231");
    EXPECT_EQ(Stored(L"DependOnService") + Stored(L"DisplayName"), L"RpcSsTessel test");
    EXPECT_TRUE(CNtService::IsInstalled(nullptr));

    ASSERT_TRUE(CNtService::Start());
    while (!CNtService::IsRunning(L"MSIServer")) SwitchToThread();
    EXPECT_TRUE(CNtService::IsRunning(nullptr));
    EXPECT_FALSE(CNtService::Start());
    EXPECT_FALSE(CNtService::IsRunning(L"Tessel has no such service"));
    TakeCalls();
    EXPECT_TRUE(CNtService::Stop());
    EXPECT_FALSE(CNtService::IsRunning(L"MSIServer"));
    EXPECT_EQ(calls.front(), L"TesselTest/0: Stopping Tessel test.");
    EXPECT_EQ(calls.back(), L"TesselTest/0: \nTessel test stopped.\n");
    TakeCalls();
    service->Remove();
    EXPECT_EQ(TakeCalls(), (Lines{L"TesselTest/0: \nTessel test stopped.\n", L"TesselTest/0: Tessel test removed.\n"}));
    WaitUntilGone();
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
    EXPECT_EQ(Stored(L"Type") + Stored(L"Start"), L"2722");
    EXPECT_EQ(CNtService::GetStartMode(), START_MANUAL);
    {
        const ImportPatch answer(L"Tessel.dll", "QueryServiceConfigW", AnswerInPart);
        EXPECT_EQ(CNtService::GetStartMode(), START_AUTO);
    }
    EXPECT_TRUE(CNtService::SetStartMode(static_cast<START_MODE>(7)));
    EXPECT_EQ(Stored(L"Start"), L"3");
}

DWORD WINAPI GiveLongPath(HMODULE module, LPWSTR path, DWORD size) {
    EXPECT_EQ(module, nullptr);
    std::fill_n(path, size, L'x');
    return size;
}

TEST_F(Service, Odd183ThePathHasNoMarksAndALongOneIsRefused) {
    service.emplace(kDisplayName, L"C:\\My service.exe");
    service->Install();
    EXPECT_EQ(Stored(L"ImagePath"), L"C:\\My service.exe --role service");
    service->Remove();
    TakeCalls();
    const std::wstring longText(5000, L'x');
    const ImportPatch ownPath(L"Tessel.dll", "GetModuleFileNameW", GiveLongPath);
    const std::array<const wchar_t*, 2> rows[] = {{longText.c_str(), nullptr}, {L"a", longText.c_str()}, {}};
    for (const auto& [path, arguments] : rows) {
        service.emplace(kDisplayName, path, arguments);
        service->Install();
        EXPECT_EQ(calls.front().find(L"TesselTest/0: Unable to install Tessel test - "), 0u);
        EXPECT_TRUE(EndsWith(TakeCalls().front(), L" (0x7a)\n"));
    }
    EXPECT_EQ(Stored(L"ImagePath"), L"none");
    service.emplace(longText.c_str());
    service->Install();
    EXPECT_EQ(TakeCalls().front(), L"TesselTest/0: " + (L"Unable to install " + longText).substr(0, 2047));
}

/// A service manager that notes what is asked of it.
struct Fake {
    static inline bool managerOpens;
    static inline bool serviceOpens;
    static inline int object;

    static BOOL Note(const std::wstring& call) { return calls.push_back(call), TRUE; }
    static SC_HANDLE Handle() { return reinterpret_cast<SC_HANDLE>(&object); }
    static SC_HANDLE WINAPI OpenManager(LPCWSTR machine, LPCWSTR, DWORD) {
        EXPECT_EQ(machine, nullptr);
        SetLastError(ERROR_ACCESS_DENIED);
        return Note(L"manager") && managerOpens ? Handle() : nullptr;
    }
    static SC_HANDLE WINAPI Open(SC_HANDLE, LPCWSTR name, DWORD) {
        Note(name);
        return serviceOpens ? Handle() : nullptr;
    }
    static BOOL WINAPI Close(SC_HANDLE) { return Note(L"close"); }
    static BOOL WINAPI Start(SC_HANDLE, DWORD count, LPCWSTR* texts) { return Note(std::to_wstring(count) + texts[0]); }
    static BOOL WINAPI QueryConfig(SC_HANDLE, QUERY_SERVICE_CONFIGW*, DWORD, DWORD*) { return FALSE; }
    static BOOL WINAPI Control(SC_HANDLE, DWORD control, SERVICE_STATUS*) { return control == SERVICE_CONTROL_STOP; }
    static void WINAPI NotePause(DWORD milliseconds) { Note(std::to_wstring(milliseconds)); }
    static BOOL WINAPI Query(SC_HANDLE, SERVICE_STATUS* status) {
        status->dwCurrentState = status->dwCurrentState == 0 ? SERVICE_STOP_PENDING : SERVICE_PAUSED;
        return TRUE;
    }
};

struct ServiceHandles : testing::Test {
    ImportPatch manager{L"Tessel.dll", "OpenSCManagerW", Fake::OpenManager};
    ImportPatch open{L"Tessel.dll", "OpenServiceW", Fake::Open};
    ImportPatch close{L"Tessel.dll", "CloseServiceHandle", Fake::Close};
    ImportPatch start{L"Tessel.dll", "StartServiceW", Fake::Start};
    ImportPatch query{L"Tessel.dll", "QueryServiceConfigW", Fake::QueryConfig};
    ImportPatch control{L"Tessel.dll", "ControlService", Fake::Control};
    ImportPatch status{L"Tessel.dll", "QueryServiceStatus", Fake::Query};
    ImportPatch show{L"Tessel.dll", "MessageBoxW", Show};
    ImportPatch pause{L"Tessel.dll", "Sleep", Fake::NotePause};
    TestService service;

    ServiceHandles() { Fake::managerOpens = Fake::serviceOpens = true; }
};

TEST_F(ServiceHandles, Odd182AreSharedUntilTheLastUserClosesThemButTheManagerStaysOpenWithoutTheService) {
    Fake::serviceOpens = false;
    EXPECT_FALSE(CNtService::Start());
    Fake::serviceOpens = true;
    EXPECT_TRUE(CNtService::Start());
    EXPECT_EQ(TakeCalls(), (Lines{L"manager", kName, kName, L"1argument", L"close", L"close"}))
        << "and nothing is shown unless asked for";
    service.startArgs = nullptr;
    EXPECT_FALSE(CNtService::Start());
    EXPECT_EQ(TakeCalls(), (Lines{L"manager", kName, L"close", L"close"}));
}

TEST_F(ServiceHandles, StoppingFailsWhenTheServiceEndsUpInAnotherState) {
    service.EnableErrorReports(true);
    service.Remove();
    EXPECT_EQ(TakeCalls(),
              (Lines{L"manager", kName, L"TesselTest/0: Stopping Tessel test.", L"1000", L"TesselTest/0: .", L"1000",
                     L"TesselTest/0: \nTessel test failed to stop.\n", L"close", L"close"}));
    EXPECT_FALSE(CNtService::IsRunning(nullptr));
    EXPECT_EQ(TakeCalls(), (Lines{L"manager", kName, L"close", L"close", L"manager", kName, L"close", L"close"}));
}

TEST_F(ServiceHandles, NothingIsDoneWithoutAServiceManagerWhichIsTold) {
    Fake::managerOpens = false;
    service.EnableErrorReports(true);
    EXPECT_FALSE(CNtService::Start() || CNtService::IsInstalled(nullptr));
    service.Install();
    const Lines asked = TakeCalls();
    ASSERT_EQ(asked.size(), 5u);
    for (const std::size_t shown : {1u, 4u}) {
        EXPECT_EQ(asked[shown].find(L"TesselTest/0: OpenSCManager failed - "), 0u) << asked[shown];
        EXPECT_TRUE(EndsWith(asked[shown], L" (0x5)\n")) << asked[shown];
    }
}

/// The service manager and the event log as a service sees them.
struct FakeSystem {
    static inline LPHANDLER_FUNCTION handler;
    static inline bool accepts;
    static inline bool registers;

    static BOOL WINAPI Dispatch(const SERVICE_TABLE_ENTRYW* table) {
        Fake::Note(table[0].lpServiceName);
        EXPECT_TRUE(table[1].lpServiceName == nullptr && table[1].lpServiceProc == nullptr);
        table[0].lpServiceProc(0, nullptr);
        SetLastError(ERROR_FAILED_SERVICE_CONTROLLER_CONNECT);
        return accepts;
    }
    static SERVICE_STATUS_HANDLE WINAPI Register(LPCWSTR name, LPHANDLER_FUNCTION function) {
        Fake::Note(name);
        handler = function;
        return registers ? reinterpret_cast<SERVICE_STATUS_HANDLE>(&handler) : nullptr;
    }
    static BOOL WINAPI Set(SERVICE_STATUS_HANDLE, SERVICE_STATUS* s) {
        std::wstring line;
        for (const DWORD part : {s->dwServiceType, s->dwCurrentState, s->dwControlsAccepted, s->dwWin32ExitCode,
                                 s->dwServiceSpecificExitCode, s->dwCheckPoint, s->dwWaitHint}) {
            line += std::to_wstring(part) + L" ";
        }
        Fake::Note(line);
        SetLastError(ERROR_INVALID_HANDLE);
        return accepts;
    }
    static HANDLE WINAPI OpenLog(LPCWSTR machine, LPCWSTR name) {
        EXPECT_EQ(machine, nullptr);
        return const_cast<wchar_t*>(name);
    }
    static BOOL WINAPI CloseLog(HANDLE log) {
        return Fake::Note(static_cast<wchar_t*>(log) + std::wstring(L" closed"));
    }
    static BOOL WINAPI WriteLog(HANDLE, WORD type, WORD category, DWORD id, PSID sid, WORD count, DWORD, LPCWSTR* texts,
                                void*) {
        EXPECT_TRUE(type == 1 && category == 0 && id == 0 && sid == nullptr && count == 2);
        return Fake::Note(texts[0]) && Fake::Note(texts[1]);
    }
};

struct ServiceDispatch : testing::Test {
    ImportPatch dispatch{L"Tessel.dll", "StartServiceCtrlDispatcherW", FakeSystem::Dispatch};
    ImportPatch registration{L"Tessel.dll", "RegisterServiceCtrlHandlerW", FakeSystem::Register};
    ImportPatch set{L"Tessel.dll", "SetServiceStatus", FakeSystem::Set};
    ImportPatch openLog{L"Tessel.dll", "RegisterEventSourceW", FakeSystem::OpenLog};
    ImportPatch closeLog{L"Tessel.dll", "DeregisterEventSource", FakeSystem::CloseLog};
    ImportPatch writeLog{L"Tessel.dll", "ReportEventW", FakeSystem::WriteLog};
    std::optional<TestService> service{std::in_place};

    ServiceDispatch() { FakeSystem::accepts = FakeSystem::registers = true; }
};

TEST_F(ServiceDispatch, ReportsEveryStateToTheServiceManager) {
    service->stops = false;
    service->Run();
    EXPECT_EQ(TakeCalls(), (Lines{kName, kName, L"16 2 0 0 0 1 3000 ", L"16 4 1 0 0 0 0 ", L"16 1 1 5 0 0 7 "}));
    FakeSystem::handler(SERVICE_CONTROL_INTERROGATE);
    FakeSystem::handler(SERVICE_CONTROL_STOP);
    EXPECT_EQ(TakeCalls(), (Lines{L"16 1 1 5 0 0 7 ", L"16 3 1 0 0 2 0 "}));
    EXPECT_EQ(service->seen, (Lines{L"run", L"stop"}));
    service.reset();
    FakeSystem::handler(SERVICE_CONTROL_STOP);
    EXPECT_EQ(TakeCalls(), Lines{L"16 3 1 0 0 3 0 "});
}

TEST_F(ServiceDispatch, WritesFailuresToTheEventLogAndDoesNotRun) {
    FakeSystem::accepts = false;
    service->Run();
    const Lines log = TakeCalls();
    ASSERT_EQ(log.size(), 9u);
    EXPECT_EQ(log[3].find(L"TesselTest error: "), 0u);
    EXPECT_TRUE(EndsWith(log[3], L" (0x6)")) << log[3];
    EXPECT_EQ(log[3].find_first_of(L"\r\n"), std::wstring::npos);
    EXPECT_EQ(log[4], L"SetServiceStatus");
    EXPECT_EQ(log[5], L"TesselTest closed");
    EXPECT_TRUE(EndsWith(log[6], L" (0x427)")) << log[6];
    EXPECT_EQ(log[7], L"StartServiceCtrlDispatcher failed.");
    FakeSystem::handler(SERVICE_CONTROL_STOP);
    TakeCalls();
    FakeSystem::registers = false;
    FakeSystem::accepts = true;
    service->Run();
    EXPECT_EQ(TakeCalls(), (Lines{kName, kName}));
    EXPECT_EQ(service->seen, Lines{});
    service->AddToMessageLog(L"told", false);
    EXPECT_EQ(TakeCalls(), (Lines{L"TesselTest error.", L"told", L"TesselTest closed"}));
}
