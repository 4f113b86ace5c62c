#include "support/ImportPatch.h"
#include "support/MessageWindow.h"
#include "support/OpenPostOffice.h"
#include "support/Reports.h"

#include <gtest/gtest.h>
#include <tessel/messaging/mail.h>

#include <string>
#include <tuple>

namespace {

constexpr ORCAOBJID kSender{61};
constexpr ORCAOBJID kReceiver{62};
const unsigned char kData[SMALL_BLOCK_SIZE] = {'d', 'a', 't', 'a'};

class Mail : public testing::Test {
protected:
    Mail() { EXPECT_EQ(sender.RegisterMailbox(answers.Get()) + receiver.RegisterMailbox(window.Get()), 0); }
    ~Mail() override { EXPECT_TRUE(reports.Take().empty()) << "no block was released twice"; }
    CMail Receive() {
        EXPECT_EQ(sender.Send(kReceiver, 7, 4, kData, 0, nullptr), 0);
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
        char part[6] = "#####";
        char whole[4];
        EXPECT_TRUE(!mail.Read(part) && mail.Copy(part, 3) == 3 && std::string(part) == "dat##");
        EXPECT_TRUE(mail.Read(whole) && std::string(whole, 4) == "data" && mail.Copy(part, 6) == 4);
        CMail other = Receive();
        other = std::move(mail);
        EXPECT_TRUE(InUse() == 1 && other.Data().data() == block->Data);
    }
    EXPECT_EQ(InUse(), 0u);
    SBLOCK* const kept = Receive().Keep();
    EXPECT_TRUE(InUse() == 1 && CMail(receiver, kReceiver, MAILBOX_AGAIN, kept->BlkNum).IsAgain());
    EXPECT_EQ(InUse(), 0u);
}

TEST_F(Mail, AForgedNotificationHoldsNothingAndReleasesNothing) {
    SBLOCK* const block = Receive().Keep();
    constexpr ORCAOBJID kOwn = kReceiver;
    const std::tuple<LPARAM, std::uint16_t, ORCAOBJID, std::uint32_t> rows[] = {
        {0, 2, kOwn, 5}, {-1, 2, kOwn, 5}, {500, 2, kOwn, 5},  {3, 2, kOwn, 5},   {0x10002, 2, kOwn, 5},
        {2, 3, kOwn, 5}, {2, 2, kOwn, 0},  {2, 2, kSender, 5}, {2, 2, kOwn, 5121}};
    for (const auto& [number, blockNumber, to, length] : rows) {
        *block = {blockNumber, 1, 0, 0, 7, length, to, kSender, {}};
        CMail mail(receiver, kReceiver, 0, number);
        EXPECT_TRUE(!mail && mail.Sender() == 0 && mail.MsgId() == 0 && mail.Data().empty()) << number << ' ' << length;
    }
    EXPECT_EQ(InUse(), 1u);
}

TEST_F(Mail, IsAnsweredInItsOwnBlockWhichIsReleasedIfThatFails) {
    CMail mail = Receive();
    {
        const ImportPatch noLock(Failing("WaitForSingleObjectEx", &WaitForSingleObjectEx, WAIT_FAILED));
        EXPECT_EQ(mail.Reply(9, 2, mail.Data().data() + 1, 3, kData), 0);
    }
    EXPECT_TRUE(!mail && InUse() == 1 && mail.Reply(9, 0, nullptr) == ERROR_INVALID_PARAMETER);
    mail = CMail(sender, kSender, 0, answers.Take(MAILBOX_NOTIFICATION));
    EXPECT_TRUE(mail.Sender() == kReceiver && mail.MsgId() == 9);
    EXPECT_EQ(std::string(mail.Data().begin(), mail.Data().end()), "atdat");
    mail = CMail(sender, kSender, 0, 0);
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
    const auto misused = [](CMailBox& mailbox, SBLOCK* block) {
        return mailbox.Reply(block, 1, 0, nullptr, 0, nullptr);
    };
    SBLOCK* const block = Receive().Keep();
    EXPECT_EQ(misused(sender, block), ERROR_INVALID_PARAMETER) << "not the receiver";
    EXPECT_EQ(misused(receiver, block - 1), ERROR_INVALID_PARAMETER) << "free";
    EXPECT_EQ(misused(receiver, receiver.GetDirectMessage(500)), ERROR_INVALID_PARAMETER) << "not of the pool";
}

TEST_F(Mail, WhatWaitsIsReleasedAndTheEndOfTheProgramKept) {
    PostMessageW(window.Get(), MAILBOX_NOTIFICATION, 0, 500);
    for (int i = 0; i < 2; ++i) EXPECT_EQ(sender.Send(kReceiver, 1, 0, nullptr, 0, nullptr), 0);
    PostQuitMessage(5);
    CMail::ReleaseWaiting(receiver, kReceiver, window.Get());
    EXPECT_EQ(InUse(), 0u);
    MSG last{};
    EXPECT_TRUE(PeekMessageW(&last, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE) && last.wParam == 5);
}
