#include "support/ImportPatch.h"
#include "support/MessageWindow.h"
#include "support/OpenPostOffice.h"
#include "support/Reports.h"

#include <gtest/gtest.h>
#include <tessel/foundation/semaphore.h>
#include <tessel/messaging/mailbox.h>

#include <cstring>
#include <tuple>
#include <utility>

namespace {

constexpr ORCAOBJID kSender{21};
constexpr ORCAOBJID kReceiver{22};
constexpr ORCAOBJID kNobody{23};
constexpr unsigned long kBlocks = SMALL_BLOCK_COUNT - 1;

const unsigned char kData[SMALL_BLOCK_SIZE] = {'d', 'a', 't', 'a'};

class Mailbox : public testing::Test {
protected:
    Mailbox() { EXPECT_EQ(receiver.RegisterMailbox(window.Get()), 0); }
    int Send(unsigned long length) { return sender.Send(kReceiver, 1, length, kData, 0, nullptr); }
    SBLOCK* Take() { return receiver.GetMessageBlock(static_cast<unsigned>(window.Take(MAILBOX_NOTIFICATION))); }
    int Release(SBLOCK* block) { return receiver.ReleaseMemory(block); }
    int Registered() { return CPostOffice().GetHeaderAddr()->MailboxesInUse; }
    /// Fills the pool. @return a block whose release makes room; not the last one (ODD-20)
    SBLOCK* Fill() {
        for (unsigned long i = 0; i < kBlocks; ++i) EXPECT_EQ(Send(0), 0);
        return Take();
    }
    /// Nothing is allocated and the lock is free.
    void ExpectUntouched() {
        EXPECT_EQ(sender.GetFreeBlockCount(), 500u);
        EXPECT_EQ(window.Take(MAILBOX_NOTIFICATION), 0);
        EXPECT_EQ(CThreadLock(POST_OFFICE_LOCK_NAME).IsLocked(), 0);
    }

    OpenPostOffice office;
    MessageWindow window;
    CMailBox sender{kSender};
    CMailBox receiver{kReceiver};
    CMailBox other{kNobody};
    MAILBOX* const mailboxes = CPostOffice().GetPostOfficeAddr();
    Reports reports;
};

} // namespace

TEST_F(Mailbox, DeliversBothPartsAsOneMessage) {
    const unsigned char more[] = "more";
    ASSERT_EQ(sender.Send(kReceiver, 0xABCD1234, 4, kData, 5, more), 0);
    EXPECT_EQ(sender.GetFreeBlockCount(), kBlocks);
    SBLOCK* const block = Take();
    ASSERT_EQ(block, receiver.GetDirectMessage(2)) << "the cursor starts at 1 and moves first";
    EXPECT_TRUE(block->MsgId == 0xABCD1234 && block->Length == 10 && block->RefCount == 1);
    EXPECT_TRUE(block->Sender == kSender && block->Receiver == kReceiver);
    EXPECT_STREQ(reinterpret_cast<char*>(block->Data), "datamore");
    EXPECT_EQ(Release(block), 0);
    EXPECT_EQ(block->RefCount, 0u);
    ExpectUntouched();
}

TEST_F(Mailbox, Odd24TakesMessagesUpTo5119BytesAndCountsOneMore) {
    SBLOCK* const first = receiver.GetMessageBlock(2);
    std::memset(first->Data, '#', SMALL_BLOCK_SIZE);
    EXPECT_EQ(Send(5119), 0);
    ASSERT_EQ(Take(), first);
    EXPECT_EQ(first->Length, 5120u);
    EXPECT_EQ(std::memcmp(first->Data, kData, 5119), 0);
    EXPECT_EQ(first->Data[5119], '#');
    EXPECT_EQ(receiver.GetMessageBlock(3)->BlkNum, 0);
    Release(first);
    EXPECT_EQ(sender.Send(kReceiver, 1, 0, nullptr, 7, nullptr), 0);
    SBLOCK* const second = Take();
    EXPECT_EQ(second->Length, 8u);
    Release(second);
    EXPECT_TRUE(reports.Take().empty());
    EXPECT_EQ(Send(5120), ERROR_NOT_ENOUGH_MEMORY);
    EXPECT_EQ(reports.Take(),
              (Texts{"CMailbox:59 SMALL_BLOCK_SIZE >= Len", "CMailbox:189 !\"Message size > pHeader->SmallBlkSize\""}));
    ExpectUntouched();
}

TEST_F(Mailbox, WhatCannotBeSentLeavesThePoolAsItWas) {
    for (const auto& [first, second] : {std::pair{0xFFFFFFFFUL, 0UL}, {4UL, 0xFFFFFFFBUL}}) {
        EXPECT_EQ(sender.Send(kReceiver, 1, first, kData, second, kData), ERROR_NOT_ENOUGH_MEMORY) << first;
    }
    EXPECT_EQ(sender.Send(kReceiver, 1, 4, nullptr, 0, nullptr), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(sender.Send(kNobody, 1, 0, nullptr, 0, nullptr), ERROR_SERVICE_NOT_FOUND);
    ASSERT_EQ(other.RegisterMailbox(window.Get()) + other.UnregisterMailbox(), 0);
    EXPECT_EQ(sender.Send(ORCAOBJID{0}, 1, 0, nullptr, 0, nullptr), ERROR_SERVICE_NOT_FOUND) << "GUARD-293";
    ExpectUntouched();
    window.Destroy();
    EXPECT_EQ(Send(4), ERROR_INVALID_WINDOW_HANDLE);
    ExpectUntouched();
}

TEST_F(Mailbox, ReportsAPoolBelow50OnceUntilItHasBeenAbove250) {
    // The pool is looked at when a message is sent: after 251, that finds 250, which is not above 250.
    for (const auto& [free, reported] :
         {std::pair{50, 0u}, {49, 1u}, {251, 0u}, {250, 0u}, {1, 0u}, {252, 0u}, {50, 0u}, {49, 1u}}) {
        const auto wanted = static_cast<unsigned long>(free);
        while (sender.GetFreeBlockCount() > wanted) EXPECT_EQ(Send(1), 0);
        while (sender.GetFreeBlockCount() < wanted) Release(Take());
        EXPECT_EQ(reports.Take(), Texts(reported, "CMailbox:76 !\"Message resources low\"")) << free;
        EXPECT_EQ(sender.MsgResourcesLow(), free < 50) << free;
        EXPECT_EQ(sender.MsgResourcesHigh(), free > 250) << free;
    }
}

TEST_F(Mailbox, Odd15And20AFullPoolIsBusyAlsoWhileOnlyTheLastBlockIsFree) {
    SBLOCK* last = nullptr;
    SBLOCK* earlier = nullptr;
    for (unsigned long i = 0; i < kBlocks; ++i) {
        ASSERT_EQ(Send(1), 0);
        earlier = std::exchange(last, Take());
    }
    EXPECT_EQ(sender.GetFreeBlockCount(), 1u);
    {
        int pauses = 0;
        const ImportPatch sleep("Sleep", &Sleep, [&pauses](DWORD) { ++pauses; });
        EXPECT_EQ(Send(1), ERROR_BUSY);
        EXPECT_EQ(pauses, 100);
        const ImportPatch leave("Sleep", &Sleep, [this](DWORD) { receiver.UnregisterMailbox(); });
        EXPECT_EQ(Send(1), ERROR_SERVICE_NOT_FOUND);
    }
    ASSERT_EQ(receiver.RegisterMailbox(window.Get()), 0);
    Release(last);
    EXPECT_EQ(Send(1), ERROR_BUSY);
    Release(earlier);
    EXPECT_EQ(Send(1), 0);
    EXPECT_EQ(Take(), earlier);
}

TEST_F(Mailbox, Odd21OnlyAnAllocatedBlockOfThePoolIsReleasedAndItsNumberIsCheckedByOneLookUpOnly) {
    ASSERT_EQ(Send(1), 0);
    SBLOCK* const block = Take();
    SBLOCK* const none = nullptr;
    SBLOCK* const inside = reinterpret_cast<SBLOCK*>(reinterpret_cast<unsigned char*>(block) + 1);
    SBLOCK* const before = reinterpret_cast<SBLOCK*>(CPostOffice().GetHeaderAddr());
    for (SBLOCK* const bad :
         {none, inside, before, receiver.GetDirectMessage(500), receiver.GetDirectMessage(0xFFFF)}) {
        EXPECT_EQ(Release(bad), 1);
        EXPECT_EQ(reports.Take(), Texts{"CMailbox:206 pBlock"});
    }
    EXPECT_EQ(Release(block + 1), 1);
    EXPECT_EQ(reports.Take(), Texts{"CMailbox:207 pBlock->BlkNum"});
    block->RefCount = 2;
    EXPECT_EQ(Release(block), 0);
    EXPECT_EQ(reports.Take(), Texts{"CMailbox:199 pBlock->RefCount == 0"});
    EXPECT_EQ(CPostOffice().LockThreadSafe(0), 0) << "free after every refusal";
    SBLOCK* again = nullptr;
    for (unsigned long i = 0; i < kBlocks; ++i) EXPECT_EQ(sender.AllocateSmallBlock(1, 1, again), 0);
    EXPECT_EQ(again, block);
    EXPECT_EQ(reports.Take(), Texts{"CMailbox:182 pSmall[cnt].RefCount == 1"});
    CPostOffice().UnlockThreadSafe();
    EXPECT_EQ(receiver.GetMessageBlock(500), nullptr);
    EXPECT_EQ(reinterpret_cast<char*>(receiver.GetDirectMessage(0xFFFF)),
              reinterpret_cast<char*>(receiver.GetMessageBlock(0)) + 0xFFFF * 5148);
}

TEST_F(Mailbox, Odd23RegistersInTheFirstFreeSlotAndForgetsAnEarlierOne) {
    EXPECT_EQ(other.UnregisterMailbox(), 1);
    EXPECT_EQ(other.GetMailboxAddr(), mailboxes);
    EXPECT_EQ(other.RegisterMailbox(window.Get()) + other.RegisterMailbox(window.Get()), 0);
    EXPECT_EQ(other.GetMailboxAddr(), mailboxes + 3);
    EXPECT_EQ(Registered(), 3);
    EXPECT_EQ(other.UnregisterMailbox(), 0);
    EXPECT_EQ(other.UnregisterMailbox(), 1);
    EXPECT_EQ(CPostOffice::IsManager(kNobody, 0), 1) << "the first slot is still there";
    for (int i = 3; i < 100; ++i) ASSERT_EQ(other.RegisterMailbox(window.Get()), 0);
    EXPECT_EQ(other.RegisterMailbox(window.Get()), 1);
}

TEST_F(Mailbox, ListsTheDirectoryWithItsLevels) {
    EXPECT_EQ(other.UpdateMonitorLevel(LEVEL{3}), 1);
    ASSERT_EQ(other.RegisterMailbox(window.Get()), 0);
    EXPECT_EQ(other.UpdateMonitorLevel(LEVEL{3}), 0);
    MONITOR_LEVEL list[3] = {};
    EXPECT_EQ(sender.BuildDirectoryList(list, 3), 2);
    EXPECT_TRUE(list[0].ObjId == kReceiver && list[1].ObjId == kNobody && list[1].Level == 3);
    for (const int max : {1, 0, -1}) EXPECT_EQ(sender.BuildDirectoryList(list, max), max > 0 ? max : 0);
    EXPECT_EQ(sender.SetRecordFlag(-5), 0);
    EXPECT_EQ(other.GetRecordFlag(), -5);
}

TEST_F(Mailbox, Odd19TheSweepFreesBlocksButDoesNotCountRegistrationsDown) {
    ASSERT_EQ(other.RegisterMailbox(window.Get()), 0);
    ASSERT_EQ(sender.Send(kNobody, 1, 0, nullptr, 0, nullptr), 0);
    for (int i = 0; i < 20; ++i) ASSERT_EQ(Send(1), 0);
    EXPECT_EQ(other.CleanUp(kNobody), 0);
    EXPECT_EQ(sender.GetFreeBlockCount(), kBlocks) << "the message to the one that stays";
    EXPECT_EQ(CPostOffice::IsManager(kReceiver, 0), 0);
    EXPECT_EQ(CPostOffice::IsManager(kNobody, 0), 1);
    EXPECT_EQ(Registered(), 2);
    const MAILBOX zero{};
    EXPECT_EQ(std::memcmp(receiver.GetMailboxAddr(), &zero, sizeof zero), 0);
    CMailBox next(kSender);
    ASSERT_EQ(next.RegisterMailbox(window.Get()), 0);
    ASSERT_EQ(next.GetMailboxAddr(), receiver.GetMailboxAddr());
    EXPECT_EQ(receiver.UnregisterMailbox(), 0);
    EXPECT_EQ(Registered(), 2);
    EXPECT_EQ(CPostOffice::IsManager(kSender, 0), 1) << "the slot is another's by now";
}

TEST_F(Mailbox, WithoutTheLockNothingIsChanged) {
    ASSERT_EQ(Send(1), 0);
    SBLOCK* const block = Take();
    {
        const ImportPatch broken(Failing("WaitForSingleObjectEx", &WaitForSingleObjectEx, WAIT_FAILED));
        EXPECT_EQ(Send(1), ERROR_INVALID_HANDLE);
        EXPECT_EQ(sender.RegisterMailbox(window.Get()) + receiver.UnregisterMailbox() + Release(block), 3);
        EXPECT_EQ(sender.CleanUp(kSender), 0);
    }
    EXPECT_EQ(CPostOffice::IsManager(kReceiver, 0), 1);
    EXPECT_EQ(Release(block), 0);
    ExpectUntouched();
}

TEST_F(Mailbox, WaitsForRoomUntilATimeOutUnlessAReleaseWakesIt) {
    SBLOCK* const block = Fill();
    for (const unsigned long timeout : {0UL, 30UL}) {
        const ULONGLONG start = GetTickCount64();
        EXPECT_EQ(sender.SendWithin(timeout, kReceiver, 1, 4, kData, 0, nullptr), ERROR_BUSY);
        EXPECT_GE(GetTickCount64() - start, timeout);
    }
    bool woken = false;
    const ImportPatch wait("WaitForSingleObject", &WaitForSingleObject, [&](HANDLE object, DWORD timeout) {
        if (timeout == 0 || woken) return WaitForSingleObject(object, timeout);
        EXPECT_EQ(Release(block), 0);
        woken = WaitForSingleObject(object, 10000) == WAIT_OBJECT_0;
        return DWORD{WAIT_TIMEOUT};
    });
    EXPECT_EQ(sender.SendWithin(INFINITE, kReceiver, 2, 4, kData, 0, nullptr), 0);
    EXPECT_TRUE(woken && block->MsgId == 2);
}

TEST_F(Mailbox, SendsABatchInOrderAndReleasesOneWithOneLockEach) {
    const OUTGOING_MESSAGE batch[] = {{1, 1, kData}, {2, 0, nullptr}, {3, 5119, kData}};
    int locks = 0;
    const auto count = [&locks](auto... arguments) { return ++locks, WaitForSingleObjectEx(arguments...); };
    const ImportPatch counted("WaitForSingleObjectEx", &WaitForSingleObjectEx, count);
    unsigned short sent = 0;
    EXPECT_TRUE(sender.SendMany(kReceiver, batch, 3, sent) == 0 && sent == 3 && locks == 1);
    SBLOCK* blocks[] = {Take(), nullptr, Take(), receiver.GetMessageBlock(400), Take(), nullptr};
    blocks[5] = blocks[0];
    EXPECT_TRUE(blocks[0]->MsgId == 1 && blocks[2]->MsgId == 2 && blocks[4]->MsgId == 3 && blocks[4]->Length == 5120);
    EXPECT_TRUE(receiver.ReleaseMany(blocks, 6) == 3 && locks == 2);
    EXPECT_EQ(reports.Take(),
              (Texts{"CMailbox:206 pBlock", "CMailbox:207 pBlock->BlkNum", "CMailbox:207 pBlock->BlkNum"}));
    EXPECT_EQ(receiver.ReleaseMany(blocks + 1, 1) + receiver.ReleaseMany(nullptr, 2), 0);
}

TEST_F(Mailbox, SendsABatchAsFarAsItGoesAndNothingOfAWrongOne) {
    const OUTGOING_MESSAGE batch[] = {{1, 1, kData}, {2, 1, kData}, {3, 5120, kData}, {4, 1, nullptr}};
    const std::tuple<ORCAOBJID, const OUTGOING_MESSAGE*, unsigned short, int> rows[] = {
        {kReceiver, batch, 3, ERROR_NOT_ENOUGH_MEMORY},
        {kReceiver, batch + 3, 1, ERROR_INVALID_PARAMETER},
        {kReceiver, nullptr, 1, ERROR_INVALID_PARAMETER},
        {kReceiver, nullptr, 0, 0},
        {kNobody, batch, 1, ERROR_SERVICE_NOT_FOUND}};
    for (const auto& [to, messages, count, status] : rows) {
        unsigned short sent = 9;
        EXPECT_TRUE(sender.SendMany(to, messages, count, sent) == status && sent == 0) << status;
        ExpectUntouched();
    }
    unsigned short sent = 9;
    const ImportPatch second(Failing("PostMessageW", &PostMessageW, FALSE, ERROR_NOT_ENOUGH_QUOTA, 2));
    EXPECT_TRUE(sender.SendMany(kReceiver, batch, 2, sent) == ERROR_NOT_ENOUGH_QUOTA && sent == 1);
    Release(Take());
    ExpectUntouched();
    Release(Fill());
    EXPECT_TRUE(sender.SendMany(kReceiver, batch, 2, sent) == ERROR_BUSY && sent == 1);
}

TEST_F(Mailbox, AReceiverThatLimitsWhatWaitsIsBusyAtOnceAndNobodyElseIs) {
    EXPECT_EQ(other.LimitWaiting(2), 1) << "not registered";
    ASSERT_EQ(other.RegisterMailbox(window.Get()) + receiver.LimitWaiting(2), 0);
    const ImportPatch sleep("Sleep", &Sleep, [](DWORD) { ADD_FAILURE() << "waits"; });
    const OUTGOING_MESSAGE batch[3] = {};
    unsigned short sent = 0;
    EXPECT_TRUE(sender.SendMany(kReceiver, batch, 3, sent) == ERROR_BUSY && sent == 2);
    EXPECT_EQ(sender.SendWithin(INFINITE, kReceiver, 1, 0, nullptr, 0, nullptr), ERROR_BUSY);
    EXPECT_EQ(sender.Send(kNobody, 1, 0, nullptr, 0, nullptr), 0);
    EXPECT_EQ(Release(Take()), 0);
    EXPECT_TRUE(Send(1) == 0 && Send(1) == ERROR_BUSY);
    EXPECT_EQ(receiver.LimitWaiting(0) + Send(1), 0);
}
