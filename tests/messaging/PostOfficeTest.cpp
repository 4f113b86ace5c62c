#include "support/ChildProcess.h"
#include "support/ImportPatch.h"
#include "support/Reports.h"
#include "support/ShownBoxes.h"

#include <gtest/gtest.h>
#include <tessel/foundation/semaphore.h>
#include <tessel/messaging/mailbox.h>

#include <algorithm>
#include <cstring>

namespace {

constexpr ORCAOBJID kFirst{11};
constexpr ORCAOBJID kSecond{12};

/// Creates the post office in each round at the same moment as its sibling, and leaves a mark in it.
int CreateAtOnce(const std::vector<std::string>& arguments) {
    const ORCAOBJID id{std::stoul(arguments[0])};
    for (std::string round = Hear(); round == "go"; round = Hear()) {
        CPostOffice::CreateGlobalPostOffice();
        {
            CMailBox mailbox(id);
            mailbox.RegisterMailbox(nullptr);
            Say("registered");
            Hear();
            MONITOR_LEVEL list[4];
            const unsigned short count = mailbox.BuildDirectoryList(list, 4);
            const unsigned short inUse = CPostOffice().GetHeaderAddr()->MailboxesInUse;
            Say(count == 2 && inUse == 2 ? "sees both" : "sees " + std::to_string(count));
            Hear();
        }
        CPostOffice::DestroyGlobalPostOffice();
        Say("gone");
    }
    return 0;
}
const Role createAtOnce("create-at-once", CreateAtOnce);

/// The regions that a post office must not trust.
struct Region {
    explicit Region(DWORD size)
        : handle(CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, size, POST_OFFICE_REGION_NAME)),
          header(static_cast<FILE_HEADER*>(MapViewOfFile(handle, FILE_MAP_WRITE, 0, 0, 0))) {}
    ~Region() {
        UnmapViewOfFile(header);
        CloseHandle(handle);
    }
    HANDLE handle;
    FILE_HEADER* header;
};

class PostOffice : public testing::Test {
protected:
    ~PostOffice() override { CPostOffice::DestroyGlobalPostOffice(); }
    CPostOffice office;
};

} // namespace

TEST_F(PostOffice, TheFirstProcessWritesTheHeaderAndAZeroedRegion) {
    CPostOffice::CreateGlobalPostOffice();
    const std::uint32_t expected[12] = {2601024, 24 | 100 << 16, 0,   48, 24 | 1024 << 16, 0, 2448, 5120 | 500 << 16,
                                        0,       27024,          500, 0};
    const auto* const base = reinterpret_cast<unsigned char*>(office.GetHeaderAddr());
    EXPECT_EQ(std::memcmp(base, expected, 48), 0);
    EXPECT_EQ(std::count(base + 48, base + POST_OFFICE_REGION_SIZE, 0), POST_OFFICE_REGION_SIZE - 48);
    EXPECT_EQ(reinterpret_cast<unsigned char*>(office.GetPostOfficeAddr()), base + 48);
    EXPECT_EQ(reinterpret_cast<unsigned char*>(office.GetResourceAddr()), base + 2448);
    EXPECT_EQ(reinterpret_cast<unsigned char*>(office.GetSmallBlockAddr()), base + 27024);
    EXPECT_EQ(office.LockThreadSafe(0), 0);
    EXPECT_EQ(office.LockThreadSafe(0), 1);
    office.UnlockThreadSafe();
    CPostOffice::DestroyGlobalPostOffice();
    EXPECT_EQ(OpenFileMappingW(FILE_MAP_READ, FALSE, POST_OFFICE_REGION_NAME), nullptr);
    EXPECT_EQ(OpenSemaphoreW(SYNCHRONIZE, FALSE, POST_OFFICE_LOCK_NAME), nullptr);
}

TEST_F(PostOffice, Odd25FindsManagersByIdAndProcess) {
    CPostOffice::CreateGlobalPostOffice();
    CMailBox mailbox(kFirst);
    ASSERT_EQ(mailbox.RegisterMailbox(nullptr), 0);
    EXPECT_EQ(CPostOffice::IsManager(kFirst, 0), 1);
    EXPECT_EQ(CPostOffice::IsManager(kFirst, GetCurrentProcessId()), 1);
    EXPECT_EQ(CPostOffice::IsManager(kFirst, GetCurrentProcessId() + 4), 0);
    EXPECT_EQ(CPostOffice::IsManager(kSecond, 0), 0);
    EXPECT_EQ(CPostOffice::IsManager(ORCAOBJID{0}, 0), 1) << "free records";
    MAILBOX record;
    EXPECT_EQ(CPostOffice::GetManagerInfo(kFirst, &record), 0);
    EXPECT_EQ(record.ThreadId, GetCurrentThreadId());
    EXPECT_EQ(CPostOffice::GetManagerInfo(kSecond, &record), 1);
    const MAILBOX zero{};
    EXPECT_EQ(std::memcmp(&record, &zero, sizeof zero), 0);
    EXPECT_EQ(CPostOffice::GetManagerInfo(kFirst, nullptr), 1);
}

TEST_F(PostOffice, TwoProcessesThatCreateItAtTheSameMomentShareOneRegion) {
    ChildProcess children[2] = {ChildProcess("create-at-once", {"11"}), ChildProcess("create-at-once", {"12"})};
    const auto both = [&children](const char* tell, const char* answer) {
        for (ChildProcess& child : children) child.Tell(tell);
        for (ChildProcess& child : children) ASSERT_EQ(child.WaitUntil(answer), "");
    };
    for (int round = 0; round < 50; ++round) {
        both("go", "registered");
        both("look", "sees both");
        both("leave", "gone");
        if (HasFatalFailure()) break;
    }
}

TEST_F(PostOffice, Odd17ALockThatIsNotToBeHadIsReportedAndFreed) {
    CThreadLock holder(POST_OFFICE_LOCK_NAME);
    ASSERT_EQ(holder.Lock(0), 0);
    const ImportPatch noWait("WaitForSingleObjectEx", &WaitForSingleObjectEx, [](HANDLE, DWORD timeout, BOOL) {
        EXPECT_EQ(timeout, 5000u);
        return WAIT_TIMEOUT;
    });
    Reports reports;
    CPostOffice::CreateGlobalPostOffice();
    EXPECT_EQ(reports.Take(), Texts{"CPost:50 !LockTimeout && _T(\"Failed to get semaphore named:\") SEMAPHORE_NAME"});
    EXPECT_NE(office.GetHeaderAddr(), nullptr);
    EXPECT_EQ(WaitForSingleObject(holder.GetHandle(), 0), WAIT_OBJECT_0);
}

TEST_F(PostOffice, Odd18ASecondCreationLosesTheFirst) {
    CPostOffice::CreateGlobalPostOffice();
    {
        CMailBox before(kFirst);
        ASSERT_EQ(before.RegisterMailbox(nullptr), 0);
        CPostOffice::CreateGlobalPostOffice();
        EXPECT_EQ(before.UpdateMonitorLevel(LEVEL{1}), 0) << "goes on";
    }
    EXPECT_EQ(CPostOffice::IsManager(kFirst, 0), 0) << "could unregister";
    CPostOffice::DestroyGlobalPostOffice();
    const Region left(1);
    EXPECT_EQ(left.header->FileSize, POST_OFFICE_REGION_SIZE);
}

TEST_F(PostOffice, Odd16WithoutARegionABoxSaysSoAndTheLockStaysTaken) {
    const ShownBoxes boxes;
    const ImportPatch mapping(Failing("CreateFileMappingW", &CreateFileMappingW, nullptr));
    CPostOffice::CreateGlobalPostOffice();
    EXPECT_EQ(boxes.texts, std::vector<std::wstring>{L"System Error: Unable to Create Memory Map."});
    EXPECT_EQ(office.LockThreadSafe(0), 1);
    CMailBox mailbox(kFirst);
    EXPECT_EQ(boxes.texts.back(), L"System Error: Post Office not found");
    EXPECT_EQ(CPostOffice::IsManager(kFirst, 0), 0);
    EXPECT_EQ(mailbox.RegisterMailbox(nullptr), 1);
    EXPECT_EQ(mailbox.Send(kFirst, 0, 0, nullptr, 0, nullptr), ERROR_SERVICE_NOT_FOUND);
}

TEST_F(PostOffice, ARegionThatCannotBeSeenIsGivenUpAtOnce) {
    const ShownBoxes boxes;
    const ImportPatch view(Failing("MapViewOfFile", &MapViewOfFile, nullptr));
    CPostOffice::CreateGlobalPostOffice();
    EXPECT_EQ(boxes.texts.size(), 1u);
    EXPECT_EQ(OpenFileMappingW(FILE_MAP_READ, FALSE, POST_OFFICE_REGION_NAME), nullptr) << "nobody finds it empty";
}

TEST_F(PostOffice, WithoutOneEveryOperationGivesItsFailureValue) {
    const ShownBoxes boxes;
    MAILBOX record;
    EXPECT_EQ(office.LockThreadSafe(0), 1);
    office.UnlockThreadSafe();
    EXPECT_EQ(office.GetHeaderAddr(), nullptr);
    EXPECT_EQ(CPostOffice::GetManagerInfo(kFirst, &record), 1);
    CPostOffice::CreateGlobalPostOffice();
    CMailBox left(kFirst);
    ASSERT_EQ(left.RegisterMailbox(nullptr), 0);
    CPostOffice::DestroyGlobalPostOffice();
    SBLOCK* block = nullptr;
    EXPECT_EQ(left.AllocateSmallBlock(1, 1, block), ERROR_NOT_ENOUGH_MEMORY);
    EXPECT_EQ(left.GetMessageBlock(1), nullptr);
    EXPECT_EQ(left.GetDirectMessage(1), nullptr);
    EXPECT_EQ(left.GetMailboxAddr(), nullptr);
    EXPECT_EQ(left.GetFreeBlockCount(), 0u);
    EXPECT_EQ(left.CleanUp(kFirst), 0);
}

TEST_F(PostOffice, ARegionWhoseTablesDoNotLieInsideItIsLeftAlone) {
    {
        const Region tooSmall(0x10000);
        CPostOffice::CreateGlobalPostOffice();
        EXPECT_EQ(office.GetHeaderAddr(), nullptr);
        EXPECT_EQ(office.LockThreadSafe(0), 0) << "the lock is free";
        office.UnlockThreadSafe();
        CPostOffice::DestroyGlobalPostOffice();
    }
    const Region region(POST_OFFICE_REGION_SIZE);
    const FILE_HEADER good = {
        POST_OFFICE_REGION_SIZE, 24, 100, 0, 0, 48, 24, 1024, 0, 0, 2448, 5120, 500, 0, 0, 27024, 500, 0};
    for (std::uint32_t FILE_HEADER::*const table :
         {&FILE_HEADER::MailboxOffset, &FILE_HEADER::ResourceOffset, &FILE_HEADER::SmallBlkOffset}) {
        for (const std::uint32_t offset : {0u, 49u, 2'605'052u, 0xFFFFFFF0u}) {
            *region.header = good;
            region.header->*table = offset;
            CPostOffice::CreateGlobalPostOffice();
            EXPECT_EQ(office.GetHeaderAddr(), nullptr) << offset;
            CPostOffice::DestroyGlobalPostOffice();
        }
    }
}

TEST_F(PostOffice, AHeaderThatClaimsMoreThanTheTablesHoldIsNotBelieved) {
    const Region region(POST_OFFICE_REGION_SIZE);
    *region.header = {
        POST_OFFICE_REGION_SIZE, 24, 0xFFFF, 0, 0, 48, 24, 1024, 0, 0, 2448, 0xFFFF, 0xFFFF, 0, 0, 27024, 500, 0};
    {
        const ImportPatch open(Failing("OpenFileMappingW", &OpenFileMappingW, nullptr));
        CPostOffice::CreateGlobalPostOffice();
        EXPECT_EQ(region.header->FreeSmallBlks, 500u) << "made by another meanwhile, and not cleared";
        CPostOffice::DestroyGlobalPostOffice();
    }
    CPostOffice::CreateGlobalPostOffice();
    CMailBox mailbox(kFirst);
    EXPECT_EQ(mailbox.GetMessageBlock(500), nullptr);
    EXPECT_NE(mailbox.GetMessageBlock(499), nullptr);
    MONITOR_LEVEL list[200];
    EXPECT_EQ(mailbox.BuildDirectoryList(list, 200), 0);
    SBLOCK* block = nullptr;
    EXPECT_EQ(mailbox.AllocateSmallBlock(5121, 1, block), ERROR_NOT_ENOUGH_MEMORY);
    EXPECT_EQ(mailbox.AllocateSmallBlock(1, 100, block), ERROR_SERVICE_NOT_FOUND);
    EXPECT_EQ(mailbox.AllocateSmallBlock(1, 1, block), 0);
}
