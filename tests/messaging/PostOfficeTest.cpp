#include "support/ChildProcess.h"
#include "support/ImportPatch.h"
#include "support/Reports.h"
#include "support/ShownBoxes.h"

#include <gtest/gtest.h>
#include <tessel/foundation/event.h>
#include <tessel/foundation/semaphore.h>
#include <tessel/messaging/mailbox.h>

#include <algorithm>
#include <cstring>
#include <thread>

namespace {

constexpr ORCAOBJID kFirst{11};
constexpr ORCAOBJID kSecond{12};
constexpr FILE_HEADER kHeader{
    POST_OFFICE_REGION_SIZE, 24, 100, 0, 0, 48, 24, 1024, 0, 0, 2448, 5120, 500, 0, 0, 27024, 500, 0};

/// Creates the post office in each round at the same moment as its sibling, and leaves a mark in it.
int CreateAtOnce(const std::vector<std::string>& arguments) {
    while (Hear() == "go") {
        CPostOffice::CreateGlobalPostOffice();
        {
            CMailBox mailbox(ORCAOBJID{std::stoul(arguments[0])});
            mailbox.RegisterMailbox(nullptr);
            Say("registered");
            Hear();
            MONITOR_LEVEL list[4];
            Say("sees " + std::to_string(mailbox.BuildDirectoryList(list, 4)) + " of " +
                std::to_string(CPostOffice().GetHeaderAddr()->MailboxesInUse));
            Hear();
        }
        CPostOffice::DestroyGlobalPostOffice();
        Say("gone");
    }
    return 0;
}
const Role createAtOnce("create-at-once", CreateAtOnce);

/// A region created by another program.
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

/// A thread that acquires the lock, signals an event and does not end.
DWORD WINAPI LockAndStay(void* event) {
    CPostOffice().LockThreadSafe(INFINITE);
    SetEvent(event);
    Sleep(INFINITE);
    return 0;
}

bool RegionExists() {
    return OpenFileMappingW(FILE_MAP_READ, FALSE, POST_OFFICE_REGION_NAME) != nullptr;
}

class PostOffice : public testing::Test {
protected:
    ~PostOffice() override { CPostOffice::DestroyGlobalPostOffice(); }
    CPostOffice office;
};

} // namespace

TEST_F(PostOffice, TheFirstProcessWritesTheHeaderAndAZeroedRegion) {
    CPostOffice::CreateGlobalPostOffice();
    const auto* const base = reinterpret_cast<unsigned char*>(office.GetHeaderAddr());
    EXPECT_EQ(std::memcmp(base, &kHeader, sizeof kHeader), 0);
    EXPECT_EQ(std::count(base + 48, base + POST_OFFICE_REGION_SIZE, 0), POST_OFFICE_REGION_SIZE - 48);
    EXPECT_EQ(reinterpret_cast<unsigned char*>(office.GetPostOfficeAddr()), base + 48);
    EXPECT_EQ(reinterpret_cast<unsigned char*>(office.GetResourceAddr()), base + 2448);
    EXPECT_EQ(reinterpret_cast<unsigned char*>(office.GetSmallBlockAddr()), base + 27024);
    EXPECT_EQ(office.LockThreadSafe(0), 0);
    EXPECT_EQ(office.LockThreadSafe(0), 1);
    office.UnlockThreadSafe();
    CPostOffice::DestroyGlobalPostOffice();
    EXPECT_FALSE(RegionExists());
    EXPECT_EQ(OpenSemaphoreW(SYNCHRONIZE, FALSE, POST_OFFICE_LOCK_NAME), nullptr);
}

TEST_F(PostOffice, Odd25FindsManagersByIdAndProcess) {
    CPostOffice::CreateGlobalPostOffice();
    CMailBox mailbox(kFirst);
    ASSERT_EQ(mailbox.RegisterMailbox(nullptr), 0);
    const DWORD own = GetCurrentProcessId();
    for (const auto& [id, process, found] :
         {std::tuple{kFirst, DWORD{0}, 1}, {kFirst, own, 1}, {kFirst, own + 4, 0}, {kSecond, 0, 0}}) {
        EXPECT_EQ(CPostOffice::IsManager(id, process), found) << id << ' ' << process;
    }
    EXPECT_EQ(CPostOffice::IsManager(ORCAOBJID{0}, 0), 1) << "free records";
    MAILBOX record;
    EXPECT_EQ(CPostOffice::GetManagerInfo(kFirst, &record), 0);
    EXPECT_EQ(record.ThreadId, GetCurrentThreadId());
    EXPECT_EQ(CPostOffice::GetManagerInfo(kSecond, &record), 1);
    const MAILBOX zero{};
    EXPECT_EQ(std::memcmp(&record, &zero, sizeof zero), 0);
}

TEST_F(PostOffice, TwoProcessesThatCreateItAtTheSameMomentShareOneRegion) {
    ChildProcess children[2] = {ChildProcess("create-at-once", {"11"}), ChildProcess("create-at-once", {"12"})};
    const std::pair<const char*, const char*> kSteps[] = {
        {"go", "registered"}, {"look", "sees 2 of 2"}, {"leave", "gone"}};
    for (int round = 0; round < 50; ++round) {
        for (const auto& [order, answer] : kSteps) {
            for (ChildProcess& child : children) child.Tell(order);
            for (ChildProcess& child : children) ASSERT_EQ(child.WaitUntil(answer), "");
        }
    }
}

TEST_F(PostOffice, Odd17ALockThatIsNotToBeHadIsReportedAndFreed) {
    CThreadLock holder(POST_OFFICE_LOCK_NAME);
    ASSERT_EQ(holder.Lock(0), 0);
    const ImportPatch clock("GetTickCount64", &GetTickCount64, [] { return 1; });
    const ImportPatch noWait("WaitForMultipleObjects", &WaitForMultipleObjects, [](DWORD, auto, BOOL, DWORD timeout) {
        EXPECT_EQ(timeout, 5000u);
        return WAIT_TIMEOUT;
    });
    Reports reports;
    CPostOffice::CreateGlobalPostOffice();
    EXPECT_EQ(reports.Take(), Texts{"CPost:50 !LockTimeout && _T(\"Failed to get semaphore named:\") SEMAPHORE_NAME"});
    EXPECT_NE(office.GetHeaderAddr(), nullptr);
    EXPECT_EQ(WaitForSingleObject(holder.GetHandle(), 0), WAIT_OBJECT_0);
}

TEST_F(PostOffice, ALockWhoseHolderRunsIsNotFreedByAnotherCreation) {
    CPostOffice::CreateGlobalPostOffice();
    ASSERT_EQ(office.LockThreadSafe(0), 0);
    ULONGLONG now = 0;
    const ImportPatch clock("GetTickCount64", &GetTickCount64, [&now] { return now += 5000; });
    Reports reports;
    CPostOffice::CreateGlobalPostOffice();
    EXPECT_EQ(reports.Take().size(), 1u) << "waited in vain";
    EXPECT_EQ(CThreadLock(POST_OFFICE_LOCK_NAME).IsLocked(), 1);
    office.UnlockThreadSafe();
    EXPECT_EQ(CThreadLock(POST_OFFICE_LOCK_NAME).IsLocked(), 0);
}

TEST_F(PostOffice, TheLockOfAThreadThatIsTerminatedIsTakenOver) {
    CPostOffice::CreateGlobalPostOffice();
    const CEvent locked;
    const HANDLE holder = CreateThread(nullptr, 0, LockAndStay, locked.GetHandle(), 0, nullptr);
    WaitForSingleObject(locked.GetHandle(), INFINITE);
    EXPECT_EQ(office.LockThreadSafe(0), 1);
    TerminateThread(holder, 0);
    CloseHandle(holder);
    Reports reports;
    EXPECT_EQ(office.LockThreadSafe(INFINITE), 0);
    office.UnlockThreadSafe();
    ASSERT_EQ(reports.Take().size(), 1u);
    EXPECT_EQ(office.LockThreadSafe(0), 0);
    office.UnlockThreadSafe();
    EXPECT_TRUE(reports.Take().empty()) << "reported once";
}

TEST_F(PostOffice, ItsLockHasNoOwner) {
    CPostOffice::CreateGlobalPostOffice();
    CThreadLock semaphore(POST_OFFICE_LOCK_NAME);
    std::thread([this] { office.LockThreadSafe(INFINITE); }).join();
    EXPECT_EQ(office.LockThreadSafe(20), 1) << "left by a thread that ended by itself";
    office.UnlockThreadSafe();
    ASSERT_EQ(office.LockThreadSafe(0), 0);
    semaphore.Unlock();
    EXPECT_EQ(office.LockThreadSafe(0), 0) << "released by a program that knows the semaphore only";
    EXPECT_EQ(semaphore.IsLocked(), 1);
    office.UnlockThreadSafe();
    EXPECT_EQ(semaphore.IsLocked(), 0);
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
    EXPECT_TRUE(RegionExists());
}

TEST_F(PostOffice, Odd16WithoutARegionABoxSaysSoAndTheLockStaysTaken) {
    const ShownBoxes boxes;
    {
        const ImportPatch view(Failing("MapViewOfFile", &MapViewOfFile, nullptr));
        CPostOffice::CreateGlobalPostOffice();
        EXPECT_FALSE(RegionExists()) << "nobody finds it empty";
        EXPECT_EQ(office.LockThreadSafe(0), 1);
    }
    CMailBox mailbox(kFirst);
    EXPECT_EQ(boxes.texts, (std::vector<std::wstring>{L"System Error: Unable to Create Memory Map.",
                                                      L"System Error: Post Office not found"}));
    EXPECT_EQ(CPostOffice::IsManager(kFirst, 0), 0);
    EXPECT_EQ(mailbox.RegisterMailbox(nullptr), 1);
    EXPECT_EQ(mailbox.Send(kFirst, 0, 0, nullptr, 0, nullptr), ERROR_SERVICE_NOT_FOUND);
}

TEST_F(PostOffice, AMailboxThatOutlivesItHasNoBlocks) {
    CPostOffice::CreateGlobalPostOffice();
    CMailBox left(kFirst);
    ASSERT_EQ(left.RegisterMailbox(nullptr), 0);
    CPostOffice::DestroyGlobalPostOffice();
    EXPECT_EQ(office.LockThreadSafe(0), 1);
    EXPECT_EQ(left.GetMessageBlock(1), nullptr);
    EXPECT_EQ(left.GetMailboxAddr(), nullptr);
    EXPECT_EQ(left.CleanUp(kFirst), 0);
}

TEST_F(PostOffice, ARegionWhoseTablesDoNotLieInsideItIsLeftAlone) {
    const auto isLeftAlone = [this] {
        CPostOffice::CreateGlobalPostOffice();
        const bool unmapped = office.GetHeaderAddr() == nullptr && office.LockThreadSafe(0) == 0;
        office.UnlockThreadSafe();
        CPostOffice::DestroyGlobalPostOffice();
        return unmapped;
    };
    {
        const Region tooSmall(0x10000);
        EXPECT_TRUE(isLeftAlone());
    }
    const Region region(POST_OFFICE_REGION_SIZE);
    for (std::uint32_t FILE_HEADER::*const table :
         {&FILE_HEADER::MailboxOffset, &FILE_HEADER::ResourceOffset, &FILE_HEADER::SmallBlkOffset}) {
        for (const std::uint32_t offset : {0u, 49u, 2'605'052u, 0xFFFFFFF0u}) {
            *region.header = kHeader;
            region.header->*table = offset;
            EXPECT_TRUE(isLeftAlone()) << offset;
        }
    }
}

TEST_F(PostOffice, AHeaderThatClaimsMoreThanTheTablesHoldIsNotBelieved) {
    const Region region(POST_OFFICE_REGION_SIZE);
    *region.header = kHeader;
    region.header->MailboxCount = region.header->SmallBlkSize = region.header->SmallBlkCount = 0xFFFF;
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
