#include "FakeEventLog.h"
#include "support/OwnLocalMachine.h"
#include "support/Reports.h"

#include <gtest/gtest.h>
#include <tessel/system/eventlog.h>

#include <algorithm>
#include <cstdlib>
#include <optional>

namespace {

const std::wstring kLogs = L"System\\CurrentControlSet\\Services\\EventLog";

/// A number as returned by the registry's test tree.
std::wstring Number(unsigned long value) {
    return L"4:" + std::wstring{static_cast<wchar_t>(value & 0xFFFF), static_cast<wchar_t>(value >> 16)};
}

/// A registry with the three logs.
struct Logs : OwnLocalMachine {
    Logs() {
        for (const wchar_t* log : {L"\\Application", L"\\Security", L"\\System"})
            Set(kLogs + log, L"File", REG_SZ, L"x");
    }
};

TEST(EventLog, Odd184SizeAndRetentionGoToTheKeyOfTheChosenLog) {
    Logs machine;
    CNtEventLog log(APPLICATION_LOG);
    log.SetRetention(7);
    EXPECT_EQ(machine.Get(kLogs + L"\\Application", L"Retention"), Number(604800));
    log.SetLog(SECURITY_LOG);
    log.SetRetention(CNtEventLog::NEVER_OVERWRITE);
    EXPECT_EQ(machine.Get(kLogs + L"\\Security", L"Retention"), Number(0xFFFFFFFF));
    log.SetLog(SYSTEM_LOG);
    log.SetRetention(49711);
    EXPECT_EQ(machine.Get(kLogs + L"\\System", L"Retention"), Number(63104)) << "beyond 32 bits";
}

TEST(EventLog, AnInvalidTypeIsReportedAndChangesNothing) {
    Logs machine;
    Reports reports;
    CNtEventLog(static_cast<EVENT_LOG_TYPE>(3)).SetMaxSize(5);
    EXPECT_EQ(machine.Get(kLogs, L"MaxSize"), L"none");
    CNtEventLog log(SYSTEM_LOG);
    log.SetLog(static_cast<EVENT_LOG_TYPE>(-1));
    EXPECT_EQ(reports.Take(), Texts(2, "NtEventLog:39 !_T(\"Invalid Nt Event Log type specified.\")"));
    log.SetMaxSize(0x10000);
    EXPECT_EQ(machine.Get(kLogs + L"\\System", L"MaxSize"), Number(0x10000));
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

struct EventLogSource : testing::Test {
    EventLogSource() { EXPECT_EQ(log.Take(), Lines{L"Scanner"}); }

    FakeEventLog log;
    std::optional<TestSource> source{std::in_place, L"Scanner", static_cast<unsigned short>(3)};
    const std::wstring user = _wgetenv(L"USERNAME");
};

TEST_F(EventLogSource, WritesEventsOfEveryTypeWithTheUser) {
    wchar_t data[3] = L"de";
    const wchar_t* texts[2] = {L"one", L"two"};
    EXPECT_EQ(source->ReportEventError(10, 2, texts, 4, data, nullptr), 0u);
    EXPECT_EQ(source->ReportEventWarning(11, 1, texts, 2, data, nullptr), 0u);
    EXPECT_EQ(source->ReportEventInfo(12, 0, nullptr, 0, nullptr, nullptr), 0u);
    log.error = ERROR_LOG_FILE_FULL;
    const ImportPatch nobody(Failing("GetUserNameW", &GetUserNameW, FALSE));
    EXPECT_EQ(source->ReportEventW(16, 13, 0, nullptr, 0, nullptr, nullptr), DWORD{ERROR_LOG_FILE_FULL});
    EXPECT_EQ(log.lines, (Lines{L"Scanner 1 3 10 " + user + L" de|one|two", L"Scanner 2 3 11 " + user + L" d|one",
                                L"Scanner 4 3 12 " + user + L" ", L"Scanner 16 3 13 nobody "}));
}

TEST_F(EventLogSource, Odd185TheCallersIdentifierIsUsedAsItIsAndFreed) {
    std::vector<void*> freed;
    const ImportPatch release("free", &std::free, [&](void* block) { freed.push_back(block), std::free(block); });
    DWORD size = SECURITY_MAX_SID_SIZE;
    auto* const sid = static_cast<void**>(std::malloc(size));
    ASSERT_TRUE(CreateWellKnownSid(WinWorldSid, nullptr, sid, &size));
    log.error = ERROR_ACCESS_DENIED;
    EXPECT_EQ(source->ReportEventInfo(1, 0, nullptr, 0, nullptr, sid), DWORD{ERROR_ACCESS_DENIED});
    EXPECT_EQ(log.lines, Lines{L"Scanner 4 3 1 Everyone "});
    EXPECT_EQ(freed, std::vector<void*>{sid});
    source->ReportEventInfo(1, 0, nullptr, 0, nullptr, nullptr);
    EXPECT_NE(std::find(freed.begin(), freed.end(), log.lastSid), freed.end()) << "the own one, too";
}

TEST_F(EventLogSource, Odd186ACodeWithoutTextIsFollowedByAnEight) {
    const std::wstring start = L"Scanner 1 3 7 " + user + L" |";
    for (const unsigned long code : {0xABCul, 0xFEDCBA98ul, DWORD{ERROR_ACCESS_DENIED}, DWORD{ERROR_BAD_EXE_FORMAT}})
        source->ReportEventErrorSystemCode(7, code);
    ASSERT_EQ(log.lines.size(), 4u);
    EXPECT_EQ(log.lines[0], start + L"ABC8");
    EXPECT_EQ(log.lines[1], start + L"FEDCBA988");
    EXPECT_GT(log.lines[2].size(), start.size() + 10) << "the system's text";
    EXPECT_NE(log.lines[3].find(L"%1"), std::wstring::npos) << "there is nothing to insert";
}

TEST_F(EventLogSource, TheLastCopyEndsTheRegistration) {
    std::optional<TestSource> other{std::in_place, L"Other", static_cast<unsigned short>(4)};
    std::optional<TestSource> copy{*source};
    source.reset();
    *other = *copy;
    copy.reset();
    EXPECT_EQ(log.Take(), (Lines{L"Other", L"end of Other"}));
    EXPECT_EQ(other->ReportEventErrorSystemCode(1, 0xABC), 0u);
    EXPECT_EQ(log.Take().at(0).find(L"Scanner 1 3 1"), 0u);
    other.reset();
    EXPECT_EQ(log.lines, Lines{L"end of Scanner"});
}

TEST_F(EventLogSource, Odd187IsAlwaysRegisteredUnderTheApplicationLog) {
    Logs machine;
    const std::wstring key = kLogs + L"\\Application\\Scanner";
    const CNtEventLogSource::InstallData description{2, 7, L"events.dll", L"categories.dll", nullptr};
    source->Install(description);
    EXPECT_EQ(machine.Get(key, L"CategoryCount") + machine.Get(key, L"TypesSupported"), Number(2) + Number(7));
    EXPECT_EQ(machine.Get(key, L"EventMessageFile"), std::wstring(L"1:events.dll\0", 13));
    EXPECT_EQ(machine.Get(key, L"CategoryMessageFile"), std::wstring(L"1:categories.dll\0", 17));
    EXPECT_EQ(machine.Get(key, L"ParameterMessageFile"), L"none");
    TestSource(L"", 0).Install(description);
    EXPECT_EQ(machine.Get(kLogs + L"\\Application", L"CategoryCount"), L"none");
}

} // namespace
