#include "support/ImportPatch.h"
#include "support/MessageWindow.h"
#include "support/Reports.h"

#include <gtest/gtest.h>
#include <tessel/mailbox.h>

#include <cstring>

namespace {

constexpr ORCAOBJID kSender{21};
constexpr ORCAOBJID kReceiver{22};
constexpr ORCAOBJID kNobody{23};

const unsigned char kData[SMALL_BLOCK_SIZE] = {'d', 'a', 't', 'a'};

int sleeps = 0;

void WINAPI CountSleep(DWORD) {
    ++sleeps;
}

class Mailbox : public testing::Test {
protected:
    Mailbox() {
        CPostOffice::CreateGlobalPostOffice();
        sender.emplace(kSender);
        receiver.emplace(kReceiver);
        EXPECT_EQ(receiver->RegisterMailbox(window.Get()), 0);
    }
    ~Mailbox() override {
        receiver.reset();
        sender.reset();
        CPostOffice::DestroyGlobalPostOffice();
    }
    int Send(unsigned long length) { return sender->Send(kReceiver, 1, length, kData, 0, nullptr); }
    SBLOCK* Take() { return receiver->GetMessageBlock(static_cast<unsigned>(window.Take(MAILBOX_NOTIFICATION))); }
    FILE_HEADER& Header() { return *CPostOffice().GetHeaderAddr(); }
    /// Nothing is allocated and nobody holds the lock.
    void ExpectUntouched() {
        EXPECT_EQ(sender->GetFreeBlockCount(), 500u);
        EXPECT_EQ(window.Take(MAILBOX_NOTIFICATION), 0);
        CPostOffice office;
        EXPECT_EQ(office.LockThreadSafe(0), 0);
        office.UnlockThreadSafe();
    }

    MessageWindow window;
    std::optional<CMailBox> sender;
    std::optional<CMailBox> receiver;
    Reports reports;
};

} // namespace

TEST_F(Mailbox, DeliversBothPartsAsOneMessage) {
    const unsigned char more[] = "more";
    ASSERT_EQ(sender->Send(kReceiver, 0xABCD1234, 4, kData, 5, more), 0);
    EXPECT_EQ(sender->GetFreeBlockCount(), 499u);
    SBLOCK* const block = Take();
    ASSERT_EQ(block, receiver->GetDirectMessage(2)) << "the cursor starts at 1 and moves first";
    EXPECT_EQ(block->MsgId, 0xABCD1234u);
    EXPECT_EQ(block->Length, 10u);
    EXPECT_EQ(block->Sender, static_cast<unsigned>(kSender));
    EXPECT_EQ(block->Receiver, static_cast<unsigned>(kReceiver));
    EXPECT_EQ(block->RefCount, 1u);
    EXPECT_STREQ(reinterpret_cast<char*>(block->Data), "datamore");
    EXPECT_EQ(receiver->ReleaseMemory(block), 0);
    EXPECT_EQ(block->RefCount, 0u);
    ExpectUntouched();
}

TEST_F(Mailbox, TakesMessagesUpTo5119Bytes) {
    EXPECT_EQ(Send(5119), 0);
    SBLOCK* const block = Take();
    EXPECT_EQ(block->Length, 5120u);
    EXPECT_EQ(std::memcmp(block->Data, kData, 5119), 0);
    receiver->ReleaseMemory(block);
    EXPECT_EQ(Send(0), 0);
    receiver->ReleaseMemory(Take());
    EXPECT_TRUE(reports.Take().empty());
    EXPECT_EQ(Send(5120), ERROR_NOT_ENOUGH_MEMORY);
    EXPECT_EQ(reports.Take(),
              (Texts{"CMailbox:59 SMALL_BLOCK_SIZE >= Len", "CMailbox:189 !\"Message size > pHeader->SmallBlkSize\""}));
    ExpectUntouched();
}

struct BadSend {
    unsigned long firstLength;
    const unsigned char* firstData;
    unsigned long secondLength;
    int status;
};

class BadSends : public Mailbox, public testing::WithParamInterface<BadSend> {};

TEST_P(BadSends, AreRefusedAndLeaveThePoolAsItWas) {
    const BadSend& bad = GetParam();
    EXPECT_EQ(sender->Send(kReceiver, 1, bad.firstLength, bad.firstData, bad.secondLength, kData), bad.status);
    ExpectUntouched();
}

INSTANTIATE_TEST_SUITE_P(Lengths, BadSends,
                         testing::Values(BadSend{0xFFFFFFFF, kData, 0, ERROR_NOT_ENOUGH_MEMORY},
                                         BadSend{0xFFFFFFFF, kData, 1, ERROR_NOT_ENOUGH_MEMORY},
                                         BadSend{0x80000000, kData, 0x80000000, ERROR_NOT_ENOUGH_MEMORY},
                                         BadSend{4, kData, 0xFFFFFFFB, ERROR_NOT_ENOUGH_MEMORY},
                                         BadSend{5119, kData, 0xFFFFFFFF, ERROR_NOT_ENOUGH_MEMORY},
                                         BadSend{4, nullptr, 0, ERROR_INVALID_PARAMETER}));

TEST_F(Mailbox, ANullSecondPartIsCountedAndArrivesAsZeros) {
    ASSERT_EQ(Send(100), 0);
    SBLOCK* block = Take();
    std::memset(block->Data, 'x', SMALL_BLOCK_SIZE);
    receiver->ReleaseMemory(block);
    for (int i = 0; i < 499; ++i) {
        ASSERT_EQ(sender->Send(kReceiver, 1, 1, kData, 3, nullptr), 0);
        block = Take();
        receiver->ReleaseMemory(block);
    }
    EXPECT_EQ(block->Length, 5u);
    EXPECT_STREQ(reinterpret_cast<char*>(block->Data), "d");
}

TEST_F(Mailbox, AWindowThatIsGoneGivesItsErrorAndTheBlockBack) {
    EXPECT_EQ(sender->Send(kNobody, 1, 0, nullptr, 0, nullptr), ERROR_SERVICE_NOT_FOUND);
    window.Destroy();
    EXPECT_EQ(Send(4), ERROR_INVALID_WINDOW_HANDLE);
    ExpectUntouched();
}

TEST_F(Mailbox, ReportsALowPoolOnceUntilItHasBeenHighAgain) {
    for (int i = 0; i < 499; ++i) ASSERT_EQ(Send(1), 0);
    EXPECT_EQ(reports.Take(), Texts{"CMailbox:76 !\"Message resources low\""});
    EXPECT_EQ(sender->MsgResourcesLow(), 1);
    for (int free = 1; free < 250; ++free) receiver->ReleaseMemory(Take());
    ASSERT_EQ(Send(1), 0);
    EXPECT_EQ(sender->MsgResourcesHigh(), 0);
    for (int free = 249; free < 252; ++free) receiver->ReleaseMemory(Take());
    EXPECT_EQ(sender->GetFreeBlockCount(), 252u);
    EXPECT_EQ(sender->MsgResourcesHigh(), 1);
    ASSERT_EQ(Send(1), 0);
    for (int free = 251; free > 49; --free) ASSERT_EQ(Send(1), 0);
    EXPECT_EQ(reports.Take(), Texts{"CMailbox:76 !\"Message resources low\""});
}

TEST_F(Mailbox, Odd15And20AFullPoolIsBusyAlsoWhileOnlyTheLastBlockIsFree) {
    SBLOCK* last = nullptr;
    SBLOCK* other = nullptr;
    for (int i = 0; i < 499; ++i) {
        ASSERT_EQ(Send(1), 0);
        other = std::exchange(last, Take());
    }
    EXPECT_EQ(sender->GetFreeBlockCount(), 1u);
    const ImportPatch sleep(L"Tessel.dll", "Sleep", CountSleep);
    EXPECT_EQ(Send(1), ERROR_BUSY);
    EXPECT_EQ(sleeps, 100);
    receiver->ReleaseMemory(last);
    EXPECT_EQ(Send(1), ERROR_BUSY);
    receiver->ReleaseMemory(other);
    EXPECT_EQ(Send(1), 0);
    EXPECT_EQ(Take(), other);
}

TEST_F(Mailbox, OnlyAnAllocatedBlockOfThePoolIsReleased) {
    ASSERT_EQ(Send(1), 0);
    SBLOCK* const block = Take();
    const auto inside = reinterpret_cast<SBLOCK*>(reinterpret_cast<unsigned char*>(block) + 1);
    for (SBLOCK* const bad : {static_cast<SBLOCK*>(nullptr), inside, receiver->GetDirectMessage(500),
                              receiver->GetDirectMessage(0xFFFF), reinterpret_cast<SBLOCK*>(&Header())}) {
        EXPECT_EQ(receiver->ReleaseMemory(bad), 1);
        EXPECT_EQ(reports.Take(), Texts{"CMailbox:206 pBlock"});
    }
    EXPECT_EQ(receiver->ReleaseMemory(block + 1), 1);
    EXPECT_EQ(reports.Take(), Texts{"CMailbox:207 pBlock->BlkNum"});
    block->RefCount = 2;
    EXPECT_EQ(receiver->ReleaseMemory(block), 0);
    EXPECT_EQ(reports.Take(), Texts{"CMailbox:199 pBlock->RefCount == 0"});
    SBLOCK* again = nullptr;
    for (int i = 0; i < 499; ++i) EXPECT_EQ(sender->AllocateSmallBlock(1, 1, again), 0);
    EXPECT_EQ(again, block);
    EXPECT_EQ(reports.Take(), Texts{"CMailbox:182 pSmall[cnt].RefCount == 1"});
}

TEST_F(Mailbox, Odd21ABlockNumberIsCheckedByOneLookUpOnly) {
    EXPECT_EQ(receiver->GetMessageBlock(500), nullptr);
    EXPECT_EQ(receiver->GetMessageBlock(499), receiver->GetDirectMessage(499));
    const auto distance = reinterpret_cast<char*>(receiver->GetDirectMessage(0xFFFF)) -
                          reinterpret_cast<char*>(receiver->GetMessageBlock(0));
    EXPECT_EQ(distance, 0xFFFF * 5148);
}

TEST_F(Mailbox, RegistersInTheFirstFreeSlotAndForgetsAnEarlierOne) {
    CMailBox second(kNobody);
    EXPECT_EQ(second.UnregisterMailbox(), 1);
    EXPECT_EQ(second.GetMailboxAddr(), CPostOffice().GetPostOfficeAddr());
    EXPECT_EQ(second.RegisterMailbox(window.Get()), 0);
    EXPECT_EQ(second.RegisterMailbox(window.Get()), 0);
    EXPECT_EQ(second.GetMailboxAddr(), CPostOffice().GetPostOfficeAddr() + 3);
    EXPECT_EQ(Header().MailboxesInUse, 3u);
    EXPECT_EQ(second.UnregisterMailbox(), 0);
    EXPECT_EQ(second.UnregisterMailbox(), 1);
    EXPECT_EQ(CPostOffice::IsManager(kNobody, 0), 1) << "the first slot is still there";
    for (int i = 3; i < 100; ++i) ASSERT_EQ(second.RegisterMailbox(window.Get()), 0);
    EXPECT_EQ(second.RegisterMailbox(window.Get()), 1);
}

TEST_F(Mailbox, ListsTheDirectoryWithItsLevels) {
    CMailBox second(kNobody);
    EXPECT_EQ(second.UpdateMonitorLevel(LEVEL{3}), 1);
    ASSERT_EQ(second.RegisterMailbox(window.Get()), 0);
    EXPECT_EQ(second.UpdateMonitorLevel(LEVEL{3}), 0);
    MONITOR_LEVEL list[3] = {};
    EXPECT_EQ(sender->BuildDirectoryList(list, 3), 2);
    EXPECT_EQ(list[0].ObjId, static_cast<unsigned>(kReceiver));
    EXPECT_EQ(list[1].ObjId, static_cast<unsigned>(kNobody));
    EXPECT_EQ(list[1].Level, 3u);
    EXPECT_EQ(sender->BuildDirectoryList(list, 1), 1);
    EXPECT_EQ(sender->BuildDirectoryList(list, -1), 0);
    EXPECT_EQ(sender->BuildDirectoryList(nullptr, 3), 0);
    EXPECT_EQ(sender->SetRecordFlag(-5), 0);
    EXPECT_EQ(second.GetRecordFlag(), -5);
}

TEST_F(Mailbox, Odd19TheSweepFreesBlocksButDoesNotCountRegistrationsDown) {
    CMailBox kept(kNobody);
    ASSERT_EQ(kept.RegisterMailbox(window.Get()), 0);
    ASSERT_EQ(sender->Send(kNobody, 1, 0, nullptr, 0, nullptr), 0);
    for (int i = 0; i < 20; ++i) ASSERT_EQ(Send(1), 0);
    EXPECT_EQ(kept.CleanUp(kNobody), 0);
    EXPECT_EQ(sender->GetFreeBlockCount(), 499u);
    EXPECT_EQ(CPostOffice::IsManager(kReceiver, 0), 0);
    EXPECT_EQ(CPostOffice::IsManager(kNobody, 0), 1);
    EXPECT_EQ(Header().MailboxesInUse, 2u);
    EXPECT_EQ(receiver->UnregisterMailbox(), 0);
    EXPECT_EQ(Header().MailboxesInUse, 1u);
}
