#include "support/ImportPatch.h"
#include "support/OwnLocalMachine.h"
#include "support/Reports.h"

#include <gtest/gtest.h>
#include <tessel/eventlog.h>

#include <sddl.h>

#include <cstdlib>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace {

using Lines = std::vector<std::wstring>;

const std::wstring kLogs = L"System\\CurrentControlSet\\Services\\EventLog";

/// A number as the registry's test tree gives it.
std::wstring Number(unsigned long value) {
    return L"4:" + std::wstring{static_cast<wchar_t>(value & 0xFFFF), static_cast<wchar_t>(value >> 16)};
}

struct EventLog : testing::Test {
    EventLog() {
        for (const wchar_t* log : {L"\\Application", L"\\Security", L"\\System"}) {
            machine.Set(kLogs + log, L"File", REG_SZ, std::wstring_view(L"x", 2));
        }
    }
    OwnLocalMachine machine;
    Reports reports;
};

} // namespace

TEST_F(EventLog, SizeAndRetentionGoToTheKeyOfTheChosenLog) {
    CNtEventLog log(APPLICATION_LOG);
    log.SetRetention(7);
    EXPECT_EQ(machine.Get(kLogs + L"\\Application", L"Retention"), Number(604800));
    log.SetLog(SECURITY_LOG);
    log.SetRetention(CNtEventLog::NEVER_OVERWRITE);
    EXPECT_EQ(machine.Get(kLogs + L"\\Security", L"Retention"), Number(0xFFFFFFFF));
    CNtEventLog copy(SYSTEM_LOG);
    copy.SetMaxSize(0x10000);
    EXPECT_EQ(machine.Get(kLogs + L"\\System", L"MaxSize"), Number(0x10000));
    copy = log;
    copy.SetMaxSize(1);
    EXPECT_EQ(machine.Get(kLogs + L"\\Security", L"MaxSize"), Number(1));
}

TEST_F(EventLog, Odd184TheSecondsStartAnewBeyond32Bits) {
    CNtEventLog log(SYSTEM_LOG);
    log.SetRetention(49711);
    EXPECT_EQ(machine.Get(kLogs + L"\\System", L"Retention"), Number(63104));
}

TEST_F(EventLog, AnInvalidTypeIsReportedAndChangesNothing) {
    const Texts report{"NtEventLog:39 !_T(\"Invalid Nt Event Log type specified.\")"};
    CNtEventLog none(static_cast<EVENT_LOG_TYPE>(3));
    EXPECT_EQ(reports.Take(), report);
    none.SetMaxSize(5);
    EXPECT_EQ(machine.Get(kLogs, L"MaxSize"), L"none");
    CNtEventLog log(SYSTEM_LOG);
    log.SetLog(static_cast<EVENT_LOG_TYPE>(-1));
    EXPECT_EQ(reports.Take(), report);
    log.SetMaxSize(6);
    EXPECT_EQ(machine.Get(kLogs + L"\\System", L"MaxSize"), Number(6));
}

namespace {

Lines events;
std::vector<void*> freed;
DWORD writeError = 0;
int sources[10];
int sourceCount = 0;

std::wstring IndexOf(HANDLE source) {
    return std::to_wstring(static_cast<int*>(source) - sources);
}
HANDLE WINAPI Register(LPCWSTR server, LPCWSTR name) {
    EXPECT_EQ(server, nullptr);
    events.push_back(name);
    return &sources[sourceCount++];
}
BOOL WINAPI Deregister(HANDLE source) {
    events.push_back(L"end of " + IndexOf(source));
    return TRUE;
}
std::wstring SidText(PSID sid) {
    if (sid == nullptr) return L"nobody";
    wchar_t* text = nullptr;
    ConvertSidToStringSidW(sid, &text);
    std::wstring copy = text;
    LocalFree(text);
    return copy;
}
BOOL WINAPI Write(HANDLE source, WORD type, WORD category, DWORD id, PSID sid, WORD count, DWORD size, LPCWSTR* texts,
                  void* data) {
    std::wstring line = IndexOf(source);
    for (const DWORD part : {DWORD{type}, DWORD{category}, id}) line += L" " + std::to_wstring(part);
    line += L" " + SidText(sid) + L" " + std::wstring(static_cast<wchar_t*>(data), size / sizeof(wchar_t));
    for (WORD i = 0; i < count; ++i) line += std::wstring(L"|") + texts[i];
    events.push_back(line);
    SetLastError(writeError);
    return writeError == 0;
}
void __cdecl Free(void* block) {
    freed.push_back(block);
    std::free(block);
}
BOOL WINAPI NoUser(LPWSTR, DWORD*) {
    return FALSE;
}

std::wstring CurrentUser() {
    HANDLE token = nullptr;
    OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &token);
    alignas(TOKEN_USER) unsigned char user[200];
    DWORD size = 0;
    GetTokenInformation(token, TokenUser, user, sizeof user, &size);
    CloseHandle(token);
    return SidText(reinterpret_cast<TOKEN_USER*>(user)->User.Sid);
}
void** WorldSid() {
    DWORD size = SECURITY_MAX_SID_SIZE;
    void* const sid = std::malloc(size);
    CreateWellKnownSid(WinWorldSid, nullptr, sid, &size);
    return static_cast<void**>(sid);
}

struct TestSource : CNtEventLogSource {
    using CNtEventLogSource::CNtEventLogSource;
    using CNtEventLogSource::Install;
    using CNtEventLogSource::ReportEventError;
    using CNtEventLogSource::ReportEventErrorSystemCode;
    using CNtEventLogSource::ReportEventInfo;
    using CNtEventLogSource::ReportEventW;
    using CNtEventLogSource::ReportEventWarning;
};

void Forget() {
    events.clear();
    freed.clear();
    writeError = 0;
    sourceCount = 0;
}

struct EventLogSource : testing::Test {
    EventLogSource() { EXPECT_EQ(std::exchange(events, {}), Lines{L"Scanner"}); }
    ~EventLogSource() override {
        source.reset();
        Forget();
    }
    ImportPatch registration{L"Tessel.dll", "RegisterEventSourceW", Register};
    ImportPatch end{L"Tessel.dll", "DeregisterEventSource", Deregister};
    ImportPatch write{L"Tessel.dll", "ReportEventW", Write};
    std::optional<TestSource> source{std::in_place, L"Scanner", static_cast<unsigned short>(3)};
    wchar_t data[3] = L"de";
    const wchar_t* texts[2] = {L"one", L"two"};
};

} // namespace

TEST_F(EventLogSource, WritesEventsOfEveryTypeWithTheUser) {
    const std::wstring user = CurrentUser();
    EXPECT_EQ(source->ReportEventError(10, 2, texts, 4, data, nullptr), 0u);
    EXPECT_EQ(source->ReportEventWarning(11, 1, texts, 2, data, nullptr), 0u);
    EXPECT_EQ(source->ReportEventInfo(12, 0, nullptr, 0, nullptr, nullptr), 0u);
    writeError = ERROR_LOG_FILE_FULL;
    const ImportPatch nobody(L"Tessel.dll", "GetUserNameW", NoUser);
    EXPECT_EQ(source->ReportEventW(16, 13, 0, nullptr, 0, nullptr, nullptr), DWORD{ERROR_LOG_FILE_FULL});
    EXPECT_EQ(events, (Lines{L"0 1 3 10 " + user + L" de|one|two", L"0 2 3 11 " + user + L" d|one",
                             L"0 4 3 12 " + user + L" ", L"0 16 3 13 nobody "}));
}

TEST_F(EventLogSource, Odd185TheCallersIdentifierIsUsedAsItIsAndFreed) {
    const ImportPatch release(L"Tessel.dll", "free", Free);
    void** const sid = WorldSid();
    EXPECT_EQ(source->ReportEventInfo(1, 0, nullptr, 0, nullptr, sid), 0u);
    EXPECT_EQ(events, Lines{L"0 4 3 1 S-1-1-0 "});
    EXPECT_EQ(freed, std::vector<void*>{sid});
}

TEST_F(EventLogSource, Odd186ACodeWithoutTextIsFollowedByAnEight) {
    const std::wstring start = L"0 1 3 7 " + CurrentUser() + L" |";
    source->ReportEventErrorSystemCode(7, 0xABC);
    source->ReportEventErrorSystemCode(7, 0xFEDCBA98);
    EXPECT_EQ(events, (Lines{start + L"ABC8", start + L"FEDCBA988"}));
    source->ReportEventErrorSystemCode(7, ERROR_ACCESS_DENIED);
    EXPECT_GT(events.back().size(), start.size() + 10) << "the system's text";
    source->ReportEventErrorSystemCode(7, ERROR_BAD_EXE_FORMAT);
    EXPECT_NE(events.back().find(L"%1"), std::wstring::npos) << "there is nothing to insert";
}

TEST_F(EventLogSource, TheLastCopyEndsTheRegistration) {
    std::optional<TestSource> other{std::in_place, L"Other", static_cast<unsigned short>(4)};
    std::optional<TestSource> copy{*source};
    source.reset();
    *other = *copy;
    EXPECT_EQ(events, (Lines{L"Other", L"end of 1"}));
    copy.reset();
    events.clear();
    EXPECT_EQ(other->ReportEventErrorSystemCode(1, 0xABC), 0u);
    EXPECT_EQ(events.back().substr(0, 7), L"0 1 3 1");
    other.reset();
    EXPECT_EQ(events.back(), L"end of 0");
}

TEST_F(EventLogSource, Odd187IsAlwaysDescribedUnderTheApplicationLog) {
    OwnLocalMachine machine;
    const std::wstring log = kLogs + L"\\Application";
    machine.Set(log, L"File", REG_SZ, std::wstring_view(L"x", 2));
    const CNtEventLogSource::InstallData description{2, 7, L"events.dll", L"categories.dll", nullptr};
    source->Install(description);
    EXPECT_EQ(machine.Get(log + L"\\Scanner", L"CategoryCount"), Number(2));
    EXPECT_EQ(machine.Get(log + L"\\Scanner", L"TypesSupported"), Number(7));
    EXPECT_EQ(machine.Get(log + L"\\Scanner", L"EventMessageFile"), std::wstring(L"1:events.dll\0", 13));
    EXPECT_EQ(machine.Get(log + L"\\Scanner", L"CategoryMessageFile"), std::wstring(L"1:categories.dll\0", 17));
    EXPECT_EQ(machine.Get(log + L"\\Scanner", L"ParameterMessageFile"), L"none");
    for (const wchar_t* name : {static_cast<const wchar_t*>(nullptr), L""}) TestSource(name, 0).Install(description);
    EXPECT_EQ(machine.Get(log, L"CategoryCount"), L"none");
}
