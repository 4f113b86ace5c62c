#include "support/ImportPatch.h"
#include "support/OwnLocalMachine.h"
#include "support/Reports.h"

#include <gtest/gtest.h>
#include <tessel/system/eventlog.h>

#include <algorithm>
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
    log.SetMaxSize(0x10000);
    EXPECT_EQ(machine.Get(kLogs + L"\\System", L"MaxSize"), Number(0x10000));
}

namespace {

/// An event log that notes what goes to it.
struct Log {
    static inline Lines events;
    static inline std::vector<void*> freed;
    static inline void* lastSid;
    static inline DWORD writeError;
    static inline int sources[10];
    static inline int sourceCount;

    static std::wstring IndexOf(HANDLE source) { return std::to_wstring(static_cast<int*>(source) - sources); }
    static HANDLE WINAPI Register(LPCWSTR machine, LPCWSTR name) {
        EXPECT_EQ(machine, nullptr);
        return events.push_back(name), &sources[sourceCount++];
    }
    static BOOL WINAPI Deregister(HANDLE source) { return events.push_back(L"end of " + IndexOf(source)), TRUE; }
    static BOOL WINAPI Write(HANDLE source, WORD type, WORD category, DWORD id, PSID sid, WORD count, DWORD size,
                             LPCWSTR* texts, void* data) {
        lastSid = sid;
        std::wstring line = IndexOf(source);
        for (const DWORD part : {DWORD{type}, DWORD{category}, id}) line += L" " + std::to_wstring(part);
        line += L" " + Account(sid) + L" " + std::wstring(static_cast<wchar_t*>(data), size / sizeof(wchar_t));
        for (WORD i = 0; i < count; ++i) line += std::wstring(L"|") + texts[i];
        events.push_back(line);
        SetLastError(writeError);
        return writeError == 0;
    }
    static std::wstring Account(PSID sid) {
        wchar_t name[200] = L"nobody";
        wchar_t domain[200];
        DWORD sizes[] = {200, 200};
        SID_NAME_USE use;
        if (sid != nullptr) LookupAccountSidW(nullptr, sid, name, &sizes[0], domain, &sizes[1], &use);
        return name;
    }
    static std::wstring User() {
        wchar_t name[200];
        DWORD size = 200;
        GetUserNameW(name, &size);
        return name;
    }
    static BOOL WINAPI NoUser(LPWSTR, DWORD*) { return FALSE; }
    static void __cdecl Free(void* block) { freed.push_back(block), std::free(block); }
};

struct TestSource : CNtEventLogSource {
    using CNtEventLogSource::CNtEventLogSource;
    using CNtEventLogSource::Install;
    using CNtEventLogSource::ReportEventError;
    using CNtEventLogSource::ReportEventErrorSystemCode;
    using CNtEventLogSource::ReportEventInfo;
    using CNtEventLogSource::ReportEventW;
    using CNtEventLogSource::ReportEventWarning;
};

struct EventLogSource : testing::Test {
    EventLogSource() { EXPECT_EQ(std::exchange(Log::events, {}), Lines{L"Scanner"}); }
    ImportPatch registration{L"Tessel.dll", "RegisterEventSourceW", Log::Register};
    ImportPatch end{L"Tessel.dll", "DeregisterEventSource", Log::Deregister};
    ImportPatch write{L"Tessel.dll", "ReportEventW", Log::Write};
    std::optional<TestSource> source{std::in_place, L"Scanner", static_cast<unsigned short>(3)};
    wchar_t data[3] = L"de";
    const wchar_t* texts[2] = {L"one", L"two"};
};

} // namespace

TEST_F(EventLogSource, WritesEventsOfEveryTypeWithTheUser) {
    const std::wstring user = Log::User();
    EXPECT_EQ(source->ReportEventError(10, 2, texts, 4, data, nullptr), 0u);
    EXPECT_EQ(source->ReportEventWarning(11, 1, texts, 2, data, nullptr), 0u);
    EXPECT_EQ(source->ReportEventInfo(12, 0, nullptr, 0, nullptr, nullptr), 0u);
    Log::writeError = ERROR_LOG_FILE_FULL;
    const ImportPatch nobody(L"Tessel.dll", "GetUserNameW", Log::NoUser);
    EXPECT_EQ(source->ReportEventW(16, 13, 0, nullptr, 0, nullptr, nullptr), DWORD{ERROR_LOG_FILE_FULL});
    EXPECT_EQ(Log::events, (Lines{L"0 1 3 10 " + user + L" de|one|two", L"0 2 3 11 " + user + L" d|one",
                                  L"0 4 3 12 " + user + L" ", L"0 16 3 13 nobody "}));
}

TEST_F(EventLogSource, Odd185TheCallersIdentifierIsUsedAsItIsAndFreed) {
    const ImportPatch release(L"Tessel.dll", "free", Log::Free);
    DWORD size = SECURITY_MAX_SID_SIZE;
    auto* const sid = static_cast<void**>(std::malloc(size));
    ASSERT_TRUE(CreateWellKnownSid(WinWorldSid, nullptr, sid, &size));
    Log::writeError = ERROR_ACCESS_DENIED;
    EXPECT_EQ(source->ReportEventInfo(1, 0, nullptr, 0, nullptr, sid), DWORD{ERROR_ACCESS_DENIED});
    EXPECT_EQ(Log::events, Lines{L"0 4 3 1 Everyone "});
    EXPECT_EQ(Log::freed, std::vector<void*>{sid});
    source->ReportEventInfo(1, 0, nullptr, 0, nullptr, nullptr);
    EXPECT_NE(std::find(Log::freed.begin(), Log::freed.end(), Log::lastSid), Log::freed.end()) << "the own one too";
}

TEST_F(EventLogSource, Odd186ACodeWithoutTextIsFollowedByAnEight) {
    const std::wstring start = L"0 1 3 7 " + Log::User() + L" |";
    source->ReportEventErrorSystemCode(7, 0xABC);
    source->ReportEventErrorSystemCode(7, 0xFEDCBA98);
    EXPECT_EQ(Log::events, (Lines{start + L"ABC8", start + L"FEDCBA988"}));
    source->ReportEventErrorSystemCode(7, ERROR_ACCESS_DENIED);
    EXPECT_GT(Log::events.back().size(), start.size() + 10) << "the system's text";
    source->ReportEventErrorSystemCode(7, ERROR_BAD_EXE_FORMAT);
    EXPECT_NE(Log::events.back().find(L"%1"), std::wstring::npos) << "there is nothing to insert";
}

TEST_F(EventLogSource, TheLastCopyEndsTheRegistration) {
    std::optional<TestSource> other{std::in_place, L"Other", static_cast<unsigned short>(4)};
    std::optional<TestSource> copy{*source};
    source.reset();
    *other = *copy;
    EXPECT_EQ(Log::events, (Lines{L"Other", L"end of 1"}));
    copy.reset();
    Log::events.clear();
    EXPECT_EQ(other->ReportEventErrorSystemCode(1, 0xABC), 0u);
    EXPECT_EQ(Log::events.back().substr(0, 7), L"0 1 3 1");
    other.reset();
    EXPECT_EQ(Log::events.back(), L"end of 0");
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
