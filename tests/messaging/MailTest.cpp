#include "support/ImportPatch.h"
#include "support/MessageWindow.h"
#include "support/OpenPostOffice.h"
#include "support/Reports.h"

#include <gtest/gtest.h>
#include <tessel/messaging/mail.h>

#include <string>

namespace {

constexpr ORCAOBJID kSender{61};
constexpr ORCAOBJID kReceiver{62};
const unsigned char kData[SMALL_BLOCK_SIZE] = {'d', 'a', 't', 'a'};

class Mail : public testing::Test {
protected:
    Mail() { EXPECT_EQ(sender.RegisterMailbox(answers.Get()) + receiver.RegisterMailbox(window.Get()), 0); }
    ~Mail() override { EXPECT_TRUE(reports.Take().empty()) << "no block was released twice"; }
    CMail Receive(unsigned long msgId = 7) {
        EXPECT_EQ(sender.Send(kReceiver, msgId, 4, kData, 0, nullptr), 0);
        return {receiver, kReceiver, 0, window.Take(MAILBOX_NOTIFICATION)};
    }
    unsigned long InUse() { return 500 - sender.GetFreeBlockCount(); }

    OpenPostOffice office;
    MessageWindow window;
    MessageWindow answers;
    CMailBox sender{kSender};
    CMailBox receiver{kReceiver};
    Reports reports;
};

} // namespace

TEST_F(Mail, IsReadOnceAndReleasedOnceWhoeverHoldsItAtTheEnd) {
    {
        CMail mail = Receive();
        SBLOCK* const block = receiver.GetMessageBlock(2);
        block->Length = block->MsgId = block->Sender = 99;
        EXPECT_TRUE(mail && mail.Sender() == kSender && mail.MsgId() == 7 && !mail.IsAgain());
        EXPECT_TRUE(mail.Data().size() == 4 && mail.Data().data() == block->Data);
        char copy[9] = "########";
        EXPECT_EQ(mail.Copy(copy, 3) + mail.Copy(copy + 4, 5), 7u);
        EXPECT_STREQ(copy, "dat#data");
        std::uint16_t tooShort = 1;
        std::uint32_t record = 0;
        EXPECT_TRUE(!mail.Read(tooShort) && tooShort == 1 && mail.Read(record) && record == 0x61746164);
        CMail moved(std::move(mail));
        EXPECT_TRUE(moved && !mail && mail.Data().empty());
        mail = Receive(8);
        EXPECT_EQ(InUse(), 2u);
        mail = std::move(moved);
        EXPECT_TRUE(InUse() == 1 && mail.MsgId() == 7);
    }
    EXPECT_EQ(InUse(), 0u);
    SBLOCK* const kept = Receive().Keep();
    EXPECT_EQ(InUse(), 1u);
    EXPECT_TRUE(CMail(receiver, kReceiver, MAILBOX_AGAIN, kept->BlkNum).IsAgain());
    EXPECT_EQ(InUse(), 0u);
}

TEST_F(Mail, AForgedNotificationHoldsNothingAndReleasesNothing) {
    SBLOCK* const block = Receive().Keep();
    const SBLOCK genuine = *block;
    const struct {
        const char* what;
        LPARAM number;
        void (*forge)(SBLOCK&);
    } rows[] = {
        {"zero", 0, [](SBLOCK&) {}},
        {"negative", -1, [](SBLOCK&) {}},
        {"beyond the pool", 500, [](SBLOCK&) {}},
        {"with a high word", 0x10002, [](SBLOCK&) {}},
        {"a free block", 3, [](SBLOCK&) {}},
        {"not the block's number", 2, [](SBLOCK& shared) { shared.BlkNum = 3; }},
        {"another's message", 2, [](SBLOCK& shared) { shared.Receiver = kSender; }},
        {"without the extra byte", 2, [](SBLOCK& shared) { shared.Length = 0; }},
        {"longer than a block", 2, [](SBLOCK& shared) { shared.Length = SMALL_BLOCK_SIZE + 1; }},
    };
    for (const auto& [what, number, forge] : rows) {
        forge(*block);
        CMail mail(receiver, kReceiver, 0, number);
        EXPECT_TRUE(!mail && mail.Sender() == 0 && mail.MsgId() == 0 && mail.Data().empty()) << what;
        EXPECT_EQ(mail.Reply(1, 0, nullptr), ERROR_INVALID_PARAMETER) << what;
        *block = genuine;
    }
    EXPECT_EQ(InUse(), 1u);
    EXPECT_TRUE(CMail(receiver, kReceiver, 0, 2));
}

TEST_F(Mail, IsAnsweredInItsOwnBlockWhichIsReleasedIfThatFails) {
    CMail mail = Receive();
    {
        const ImportPatch noLock(Failing("WaitForSingleObjectEx", &WaitForSingleObjectEx, WAIT_FAILED));
        EXPECT_EQ(mail.Reply(9, 2, mail.Data().data() + 1, 3, kData), 0);
    }
    EXPECT_TRUE(!mail && mail.Data().empty());
    EXPECT_EQ(mail.Reply(9, 0, nullptr), ERROR_INVALID_PARAMETER);
    {
        const CMail answer(sender, kSender, 0, answers.Take(MAILBOX_NOTIFICATION));
        EXPECT_TRUE(answer.Sender() == kReceiver && answer.MsgId() == 9 && InUse() == 1);
        EXPECT_EQ(std::string(answer.Data().begin(), answer.Data().end()), "atdat");
    }
    const auto fails = [this](unsigned long length, const unsigned char* data, int status) {
        EXPECT_EQ(Receive().Reply(9, length, data), status);
        EXPECT_EQ(InUse(), 0u) << status;
    };
    fails(1, nullptr, ERROR_INVALID_PARAMETER);
    fails(SMALL_BLOCK_SIZE, kData, ERROR_NOT_ENOUGH_MEMORY);
    EXPECT_EQ(reports.Take(), Texts{"CMailbox:59 SMALL_BLOCK_SIZE >= Len"});
    answers.Destroy();
    fails(1, kData, ERROR_INVALID_WINDOW_HANDLE);
    EXPECT_EQ(sender.UnregisterMailbox(), 0);
    fails(1, kData, ERROR_SERVICE_NOT_FOUND);
    SBLOCK* const block = Receive().Keep();
    SBLOCK* const null = nullptr;
    for (SBLOCK* const bad : {null, block + 1, receiver.GetDirectMessage(500)}) {
        EXPECT_EQ(receiver.Reply(bad, 1, 0, nullptr, 0, nullptr), ERROR_INVALID_PARAMETER);
    }
    EXPECT_EQ(sender.Reply(block, 1, 0, nullptr, 0, nullptr), ERROR_INVALID_PARAMETER) << "not the receiver";
    EXPECT_EQ(receiver.ReleaseMemory(block), 0);
}

TEST_F(Mail, WhatWaitsIsReleasedAndTheEndOfTheProgramKept) {
    for (const LPARAM forged : {3, 500}) PostMessageW(window.Get(), MAILBOX_NOTIFICATION, 0, forged);
    for (int i = 0; i < 3; ++i) EXPECT_EQ(sender.Send(kReceiver, 1, 0, nullptr, 0, nullptr), 0);
    PostQuitMessage(5);
    CMail::ReleaseWaiting(receiver, kReceiver, window.Get());
    EXPECT_EQ(InUse(), 0u);
    MSG last{};
    EXPECT_TRUE(PeekMessageW(&last, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE) && last.wParam == 5);
}
