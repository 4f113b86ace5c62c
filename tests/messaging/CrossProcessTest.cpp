#include "support/ChildProcess.h"
#include "support/MessageWindow.h"
#include "support/OpenPostOffice.h"

#include <gtest/gtest.h>
#include <tessel/messaging/mail.h>
#include <tessel/messaging/resource.h>

#include <algorithm>
#include <array>
#include <map>

namespace {

constexpr ORCAOBJID kTest{31};
constexpr ORCAOBJID kShared{32};
constexpr unsigned long kLastMessage = 0xFFFFFFFF;
constexpr unsigned long kFewest = 100;
constexpr unsigned long kMost = 5000;
constexpr ULONGLONG kSendingMs = 10000;

ORCAOBJID IdOf(const std::string& argument) {
    return ORCAOBJID{std::stoul(argument)};
}

/// A process's post office with one registered mailbox.
struct Station {
    explicit Station(ORCAOBJID id) : mailbox(id) { EXPECT_EQ(mailbox.RegisterMailbox(window.Get()), 0); }
    SBLOCK* Wait() { return mailbox.GetMessageBlock(static_cast<unsigned>(window.Wait(MAILBOX_NOTIFICATION))); }
    OpenPostOffice office;
    MessageWindow window;
    CMailBox mailbox;
};

/// The bytes of a message, determined by its sender and its number.
std::vector<unsigned char> Content(unsigned long sender, unsigned long number) {
    return std::vector<unsigned char>((sender * 131 + number * 7919) % SMALL_BLOCK_SIZE,
                                      static_cast<unsigned char>(sender ^ number));
}

/// Registers, sends a message to a second id and then does nothing but fetch on demand. Arguments: id, if any a second.
int Stall(const std::vector<std::string>& arguments) {
    Station station(IdOf(arguments[0]));
    CResource().AddResource(RESOURCE_TYPE{1}, RESOURCE_ID{2}, station.window.Get(), GetCurrentProcessId());
    if (arguments.size() > 1) station.mailbox.Send(IdOf(arguments[1]), 1, 0, nullptr, 0, nullptr);
    Say("registered");
    while (Hear() == "fetch") {
        station.Wait();
        Say("fetched");
    }
    return 0;
}

/// Checks content and order of all messages, until each sender has sent its last. Arguments: id, senders.
int CheckAll(const std::vector<std::string>& arguments) {
    Station station(IdOf(arguments[0]));
    Say("registered");
    // Each sender numbers its messages and sends every second one here.
    const unsigned long first = std::stoul(arguments[0]) % 2;
    std::map<unsigned long, unsigned long> next;
    unsigned long right = 0;
    for (unsigned long open = std::stoul(arguments[1]); open > 0;) {
        SBLOCK* const block = station.Wait();
        unsigned long& number = next.try_emplace(block->Sender, first).first->second;
        const auto expected = Content(block->Sender, number);
        if (block->MsgId == kLastMessage) {
            --open;
        } else if (block->MsgId == number && block->Length == expected.size() + 1 &&
                   std::equal(expected.begin(), expected.end(), block->Data)) {
            ++right;
        }
        number += 2;
        station.mailbox.ReleaseMemory(block);
    }
    Say("right " + std::to_string(right));
    return 0;
}

/// Sends messages to two receivers in turn, fewer on a slow machine. Arguments: own id, receiver, receiver.
int SendMany(const std::vector<std::string>& arguments) {
    Station station(IdOf(arguments[0]));
    const std::array receivers{IdOf(arguments[1]), IdOf(arguments[2])};
    const auto send = [&](ORCAOBJID to, unsigned long number, const std::vector<unsigned char>& bytes) {
        const auto half = static_cast<unsigned long>(bytes.size() / 2);
        const auto rest = static_cast<unsigned long>(bytes.size()) - half;
        int status = ERROR_BUSY;
        while (status == ERROR_BUSY) {
            status = station.mailbox.Send(to, number, half, bytes.data(), rest, bytes.data() + half);
        }
        if (status != 0) Say("failed " + std::to_string(status));
    };
    Hear();
    const ULONGLONG start = GetTickCount64();
    unsigned long number = 0;
    for (; number < kFewest || (number < kMost && GetTickCount64() - start < kSendingMs); ++number) {
        send(receivers[number % 2], number, Content(IdOf(arguments[0]), number));
    }
    for (const ORCAOBJID to : receivers) send(to, kLastMessage, {});
    Say("sent " + std::to_string(number));
    return 0;
}

const Role roles[] = {{"stall", Stall}, {"check-all", CheckAll}, {"send-many", SendMany}};

ChildProcess PeerChild(const std::string& role, const std::vector<std::string>& arguments) {
    return ChildProcess(role, arguments, PeerProgram());
}

} // namespace

TEST(CrossProcess, Guard292TheOwnProcessIsPreferredElseTheHighestSlotWhoseProcessRuns) {
    const OpenPostOffice office;
    const MessageWindow window;
    CMailBox sender(kTest);
    CMailBox own(kShared);
    ChildProcess low("stall", {"32"});
    low.WaitUntil("registered");
    unsigned short slot = 0;
    own.RegisterMailbox(window.Get());
    ChildProcess high = PeerChild("stall", {"32"});
    high.WaitUntil("registered");
    EXPECT_EQ(sender.GetMailBox(kShared, slot), window.Get());
    EXPECT_EQ(slot, 2);
    own.UnregisterMailbox();
    const auto send = [&] { return sender.Send(kShared, 1, 0, nullptr, 0, nullptr); };
    EXPECT_NE(sender.GetMailBox(kShared, slot), nullptr);
    EXPECT_TRUE(slot == 3 && send() == 0);
    high.Kill();
    EXPECT_NE(sender.GetMailBox(kShared, slot), nullptr);
    EXPECT_TRUE(slot == 1 && send() == 0) << "although the dead one is still registered";
    low.Kill();
    EXPECT_NE(sender.GetMailBox(kShared, slot), nullptr);
    EXPECT_TRUE(slot == 3 && send() == ERROR_INVALID_WINDOW_HANDLE);
}

TEST(CrossProcess, AReceiverKilledWithMessagesPendingLeavesNothingBehindAfterTheSweep) {
    Station supervisor(kTest);
    const unsigned long freeBefore = supervisor.mailbox.GetFreeBlockCount();
    ChildProcess receiver = PeerChild("stall", {"32"});
    receiver.WaitUntil("registered");
    const auto frame = [&] { return CResource().GetResource(RESOURCE_TYPE{1}, RESOURCE_ID{2}, receiver.Id()); };
    EXPECT_NE(frame(), nullptr);
    for (int i = 0; i < 5; ++i) ASSERT_EQ(supervisor.mailbox.Send(kShared, 1, 0, nullptr, 0, nullptr), 0);
    receiver.Kill();
    EXPECT_EQ(supervisor.mailbox.Send(kShared, 1, 0, nullptr, 0, nullptr), ERROR_INVALID_WINDOW_HANDLE);
    EXPECT_EQ(supervisor.mailbox.GetFreeBlockCount(), freeBefore - 5);
    supervisor.mailbox.CleanUp(kTest);
    EXPECT_EQ(supervisor.mailbox.GetFreeBlockCount(), freeBefore);
    EXPECT_EQ(supervisor.mailbox.Send(kShared, 1, 0, nullptr, 0, nullptr), ERROR_SERVICE_NOT_FOUND);
    EXPECT_EQ(frame(), nullptr);
}

TEST(CrossProcess, ASweepRemovesWhatTheDeadLeftAndNothingOfTheLiving) {
    Station station(kTest);
    ChildProcess dead = PeerChild("stall", {"32", "31"});
    ChildProcess living("stall", {"33", "31"});
    for (ChildProcess* const child : {&dead, &living}) EXPECT_EQ(child->WaitUntil("registered"), "");
    for (const unsigned long id : {32UL, 33UL, 32UL}) station.mailbox.Send(ORCAOBJID{id}, 1, 0, nullptr, 0, nullptr);
    dead.Tell("fetch");
    dead.WaitUntil("fetched");
    for (const bool removes : {false, true, false}) {
        const SWEPT swept = station.mailbox.SweepDead();
        EXPECT_TRUE(swept.registrations == removes && swept.resources == removes && swept.blocks == 2 * removes);
        dead.Kill();
    }
    EXPECT_TRUE(CPostOffice::IsManager(kShared, 0) == 0 && CPostOffice::IsManager(ORCAOBJID{33}, 0) == 1);
    EXPECT_EQ(station.mailbox.GetFreeBlockCount(), 497u) << "one for the living, one from each to this one";
}

TEST(CrossProcess, ASuccessorTakesOverWhatWaitsInTheOrderOfSendingAndTheRestIsSweptWhenThePoolIsFull) {
    Station station(kTest);
    ChildProcess dead("stall", {"32"});
    ChildProcess other("stall", {"33"});
    for (ChildProcess* const child : {&dead, &other}) EXPECT_EQ(child->WaitUntil("registered"), "");
    const std::vector<OUTGOING_MESSAGE> batch(497); // so that the next messages get the last block and the first ones
    unsigned short sent = 0;
    EXPECT_EQ(station.mailbox.SendMany(kTest, batch.data(), 497, sent), 0);
    CMail::ReleaseWaiting(station.mailbox, kTest, station.window.Get());
    for (unsigned long word = 1; word <= 3; ++word) station.mailbox.Send(kShared, word, 0, nullptr, 0, nullptr);
    dead.Tell("fetch");
    dead.WaitUntil("fetched");
    dead.Kill();
    const MessageWindow window;
    CMailBox successor(kShared);
    successor.RegisterMailbox(window.Get());
    EXPECT_EQ(successor.TakeOver(), 3);
    EXPECT_EQ(CPostOffice::IsManager(kShared, dead.Id()), 0);
    for (unsigned long word = 1; word <= 3; ++word) {
        MSG message{};
        PeekMessageW(&message, window.Get(), 0, 0, PM_REMOVE);
        const CMail mail(successor, kShared, message.wParam, message.lParam);
        EXPECT_TRUE(mail.MsgId() == word && mail.IsAgain() == (word == 1)) << word;
    }
    while (station.mailbox.Send(ORCAOBJID{33}, 1, 0, nullptr, 0, nullptr) != ERROR_BUSY) {
    }
    other.Kill();
    EXPECT_EQ(station.mailbox.Send(kTest, 1, 0, nullptr, 0, nullptr), 0);
    EXPECT_EQ(station.mailbox.GetFreeBlockCount(), 499u);
}

TEST(CrossProcess, FourSendersAndTwoReceiversOfBothBitnessesLoseNothing) {
    Station station(kTest);
    const unsigned long freeBefore = station.mailbox.GetFreeBlockCount();
    ChildProcess receivers[] = {ChildProcess("check-all", {"40", "4"}), PeerChild("check-all", {"41", "4"})};
    for (ChildProcess& receiver : receivers) ASSERT_EQ(receiver.WaitUntil("registered"), "");
    ChildProcess senders[] = {ChildProcess("send-many", {"51", "40", "41"}),
                              ChildProcess("send-many", {"52", "40", "41"}), PeerChild("send-many", {"53", "40", "41"}),
                              PeerChild("send-many", {"54", "40", "41"})};
    for (ChildProcess& sender : senders) sender.Tell("go");
    unsigned long missing = 0;
    for (ChildProcess& sender : senders) missing += std::stoul(sender.WaitUntil("sent "));
    for (ChildProcess& receiver : receivers) missing -= std::stoul(receiver.WaitUntil("right "));
    EXPECT_EQ(missing, 0u);
    for (ChildProcess& child : senders) EXPECT_EQ(child.ExitCode(), 0u);
    for (ChildProcess& child : receivers) EXPECT_EQ(child.ExitCode(), 0u);
    EXPECT_EQ(station.mailbox.GetFreeBlockCount(), freeBefore);
}
