#include "support/ImportPatch.h"
#include "support/MessageWindow.h"
#include "support/OpenPostOffice.h"
#include "support/Reports.h"

#include <gtest/gtest.h>
#include <tessel/messaging/mailbox.h>

#include <cstring>
#include <utility>

namespace {

constexpr ORCAOBJID kSender{21};
constexpr ORCAOBJID kReceiver{22};
constexpr ORCAOBJID kNobody{23};

const unsigned char kData[SMALL_BLOCK_SIZE] = {'d', 'a', 't', 'a'};

int sleeps = 0;

void WINAPI CountSleep(DWORD) {
    ++sleeps;
}

CMailBox* leaving = nullptr;

void WINAPI LeaveMeanwhile(DWORD) {
    leaving->UnregisterMailbox();
}

class Mailbox : public testing::Test {
protected:
    Mailbox() { EXPECT_EQ(receiver.RegisterMailbox(window.Get()), 0); }
    int Send(unsigned long length) { return sender.Send(kReceiver, 1, length, kData, 0, nullptr); }
    SBLOCK* Take() { return receiver.GetMessageBlock(static_cast<unsigned>(window.Take(MAILBOX_NOTIFICATION))); }
    FILE_HEADER& Header() { return *CPostOffice().GetHeaderAddr(); }
    /// Nothing is allocated and nobody holds the lock.
    void ExpectUntouched() {
        EXPECT_EQ(sender.GetFreeBlockCount(), 500u);
        EXPECT_EQ(window.Take(MAILBOX_NOTIFICATION), 0);
        CPostOffice post;
        EXPECT_EQ(post.LockThreadSafe(0), 0);
        post.UnlockThreadSafe();
    }

    OpenPostOffice office;
    MessageWindow window;
    CMailBox sender{kSender};
    CMailBox receiver{kReceiver};
    Reports reports;
};

} // namespace

TEST_F(Mailbox, DeliversBothPartsAsOneMessage) {
    const unsigned char more[] = "more";
    ASSERT_EQ(sender.Send(kReceiver, 0xABCD1234, 4, kData, 5, more), 0);
    EXPECT_EQ(sender.GetFreeBlockCount(), 499u);
    SBLOCK* const block = Take();
    ASSERT_EQ(block, receiver.GetDirectMessage(2)) << "the cursor starts at 1 and moves first";
    EXPECT_EQ(block->MsgId, 0xABCD1234u);
    EXPECT_EQ(block->Length, 10u);
    EXPECT_EQ(block->Sender, static_cast<unsigned>(kSender));
    EXPECT_EQ(block->Receiver, static_cast<unsigned>(kReceiver));
    EXPECT_EQ(block->RefCount, 1u);
    EXPECT_STREQ(reinterpret_cast<char*>(block->Data), "datamore");
    EXPECT_EQ(receiver.ReleaseMemory(block), 0);
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
    receiver.ReleaseMemory(first);
    EXPECT_EQ(sender.Send(kReceiver, 1, 0, nullptr, 7, nullptr), 0);
    SBLOCK* const second = Take();
    EXPECT_EQ(second->Length, 8u);
    receiver.ReleaseMemory(second);
    EXPECT_TRUE(reports.Take().empty());
    EXPECT_EQ(Send(5120), ERROR_NOT_ENOUGH_MEMORY);
    EXPECT_EQ(reports.Take(),
              (Texts{"CMailbox:59 SMALL_BLOCK_SIZE >= Len", "CMailbox:189 !\"Message size > pHeader->SmallBlkSize\""}));
    ExpectUntouched();
}

TEST_F(Mailbox, LengthsThatWrapAndMissingDataAreRefusedAndLeaveThePoolAsItWas) {
    for (const auto& [first, second] : {std::pair{0xFFFFFFFFUL, 0UL}, {4UL, 0xFFFFFFFBUL}}) {
        EXPECT_EQ(sender.Send(kReceiver, 1, first, kData, second, kData), ERROR_NOT_ENOUGH_MEMORY) << first;
    }
    EXPECT_EQ(sender.Send(kReceiver, 1, 4, nullptr, 0, nullptr), ERROR_INVALID_PARAMETER);
    ExpectUntouched();
}

TEST_F(Mailbox, AWindowThatIsGoneGivesItsErrorAndTheBlockBack) {
    EXPECT_EQ(sender.Send(kNobody, 1, 0, nullptr, 0, nullptr), ERROR_SERVICE_NOT_FOUND);
    window.Destroy();
    EXPECT_EQ(Send(4), ERROR_INVALID_WINDOW_HANDLE);
    ExpectUntouched();
}

TEST_F(Mailbox, ReportsAPoolBelow50OnceUntilItHasBeenAbove250) {
    const auto sendDownTo = [this](unsigned long free) {
        while (sender.GetFreeBlockCount() > free) ASSERT_EQ(Send(1), 0);
    };
    const auto releaseUpTo = [this](unsigned long free) {
        while (sender.GetFreeBlockCount() < free) receiver.ReleaseMemory(Take());
    };
    const Texts low{"CMailbox:76 !\"Message resources low\""};
    sendDownTo(50);
    EXPECT_TRUE(reports.Take().empty());
    EXPECT_EQ(sender.MsgResourcesLow(), 0);
    sendDownTo(49);
    EXPECT_EQ(reports.Take(), low);
    EXPECT_EQ(sender.MsgResourcesLow(), 1);
    releaseUpTo(251);
    EXPECT_EQ(sender.MsgResourcesHigh(), 1);
    sendDownTo(250); // looked at when a message is sent: 250 is not above 250
    EXPECT_EQ(sender.MsgResourcesHigh(), 0);
    sendDownTo(1);
    EXPECT_TRUE(reports.Take().empty());
    releaseUpTo(252);
    sendDownTo(50);
    EXPECT_TRUE(reports.Take().empty());
    sendDownTo(49);
    EXPECT_EQ(reports.Take(), low);
}

TEST_F(Mailbox, Odd15And20AFullPoolIsBusyAlsoWhileOnlyTheLastBlockIsFree) {
    SBLOCK* last = nullptr;
    SBLOCK* other = nullptr;
    for (int i = 0; i < 499; ++i) {
        ASSERT_EQ(Send(1), 0);
        other = std::exchange(last, Take());
    }
    EXPECT_EQ(sender.GetFreeBlockCount(), 1u);
    const ImportPatch sleep(L"Tessel.dll", "Sleep", CountSleep);
    EXPECT_EQ(Send(1), ERROR_BUSY);
    EXPECT_EQ(sleeps, 100);
    {
        leaving = &receiver;
        const ImportPatch leave(L"Tessel.dll", "Sleep", LeaveMeanwhile);
        EXPECT_EQ(Send(1), ERROR_SERVICE_NOT_FOUND);
        ASSERT_EQ(receiver.RegisterMailbox(window.Get()), 0);
    }
    receiver.ReleaseMemory(last);
    EXPECT_EQ(Send(1), ERROR_BUSY);
    receiver.ReleaseMemory(other);
    EXPECT_EQ(Send(1), 0);
    EXPECT_EQ(Take(), other);
}

TEST_F(Mailbox, Odd21OnlyAnAllocatedBlockOfThePoolIsReleasedAndItsNumberIsCheckedByOneLookUpOnly) {
    ASSERT_EQ(Send(1), 0);
    SBLOCK* const block = Take();
    const auto inside = reinterpret_cast<SBLOCK*>(reinterpret_cast<unsigned char*>(block) + 1);
    for (SBLOCK* const bad : {static_cast<SBLOCK*>(nullptr), inside, receiver.GetDirectMessage(500),
                              receiver.GetDirectMessage(0xFFFF), reinterpret_cast<SBLOCK*>(&Header())}) {
        EXPECT_EQ(receiver.ReleaseMemory(bad), 1);
        EXPECT_EQ(reports.Take(), Texts{"CMailbox:206 pBlock"});
    }
    EXPECT_EQ(receiver.ReleaseMemory(block + 1), 1);
    EXPECT_EQ(reports.Take(), Texts{"CMailbox:207 pBlock->BlkNum"});
    block->RefCount = 2;
    EXPECT_EQ(receiver.ReleaseMemory(block), 0);
    EXPECT_EQ(reports.Take(), Texts{"CMailbox:199 pBlock->RefCount == 0"});
    EXPECT_EQ(CPostOffice().LockThreadSafe(0), 0) << "free after every refusal";
    SBLOCK* again = nullptr;
    for (int i = 0; i < 499; ++i) EXPECT_EQ(sender.AllocateSmallBlock(1, 1, again), 0);
    EXPECT_EQ(again, block);
    EXPECT_EQ(reports.Take(), Texts{"CMailbox:182 pSmall[cnt].RefCount == 1"});
    CPostOffice().UnlockThreadSafe();
    EXPECT_EQ(receiver.GetMessageBlock(500), nullptr);
    EXPECT_EQ(reinterpret_cast<char*>(receiver.GetDirectMessage(0xFFFF)),
              reinterpret_cast<char*>(receiver.GetMessageBlock(0)) + 0xFFFF * 5148);
}

TEST_F(Mailbox, Odd23RegistersInTheFirstFreeSlotAndForgetsAnEarlierOne) {
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
    EXPECT_EQ(sender.BuildDirectoryList(list, 3), 2);
    EXPECT_EQ(list[0].ObjId, static_cast<unsigned>(kReceiver));
    EXPECT_EQ(list[1].ObjId, static_cast<unsigned>(kNobody));
    EXPECT_EQ(list[1].Level, 3u);
    EXPECT_EQ(sender.BuildDirectoryList(list, 1), 1);
    EXPECT_EQ(sender.BuildDirectoryList(list, -1), 0);
    EXPECT_EQ(sender.BuildDirectoryList(nullptr, 3), 0);
    EXPECT_EQ(sender.SetRecordFlag(-5), 0);
    EXPECT_EQ(second.GetRecordFlag(), -5);
}

TEST_F(Mailbox, Odd19TheSweepFreesBlocksButDoesNotCountRegistrationsDown) {
    CMailBox kept(kNobody);
    ASSERT_EQ(kept.RegisterMailbox(window.Get()), 0);
    ASSERT_EQ(sender.Send(kNobody, 1, 0, nullptr, 0, nullptr), 0);
    for (int i = 0; i < 20; ++i) ASSERT_EQ(Send(1), 0);
    EXPECT_EQ(kept.CleanUp(kNobody), 0);
    EXPECT_EQ(sender.GetFreeBlockCount(), 499u);
    EXPECT_EQ(CPostOffice::IsManager(kReceiver, 0), 0);
    EXPECT_EQ(CPostOffice::IsManager(kNobody, 0), 1);
    EXPECT_EQ(Header().MailboxesInUse, 2u);
    const MAILBOX zero{};
    EXPECT_EQ(std::memcmp(receiver.GetMailboxAddr(), &zero, sizeof zero), 0);
    CMailBox next(kSender);
    ASSERT_EQ(next.RegisterMailbox(window.Get()), 0);
    ASSERT_EQ(next.GetMailboxAddr(), receiver.GetMailboxAddr());
    EXPECT_EQ(receiver.UnregisterMailbox(), 0);
    EXPECT_EQ(Header().MailboxesInUse, 2u);
    EXPECT_EQ(CPostOffice::IsManager(kSender, 0), 1) << "the slot is another's by now";
}

DWORD WINAPI IsBroken(HANDLE, DWORD, BOOL) {
    return WAIT_FAILED;
}

TEST_F(Mailbox, WithoutTheLockNothingIsChanged) {
    ASSERT_EQ(Send(1), 0);
    SBLOCK* const block = Take();
    {
        const ImportPatch broken(L"Tessel.dll", "WaitForSingleObjectEx", IsBroken);
        EXPECT_EQ(Send(1), ERROR_INVALID_HANDLE);
        EXPECT_EQ(sender.RegisterMailbox(window.Get()) + receiver.UnregisterMailbox(), 2);
        EXPECT_EQ(receiver.ReleaseMemory(block), 1);
        EXPECT_EQ(sender.CleanUp(kSender), 0);
    }
    EXPECT_EQ(CPostOffice::IsManager(kReceiver, 0), 1);
    EXPECT_EQ(receiver.ReleaseMemory(block), 0);
    ExpectUntouched();
}
