#include "KilledPrograms.h"

#include "WhatIsLeft.h"
#include "support/ChildProcess.h"
#include "support/MessageWindow.h"
#include "support/OpenPostOffice.h"

#include <tessel/foundation/status.h>
#include <tessel/messaging/mailbox.h>

#include <array>
#include <functional>
#include <map>
#include <memory>
#include <random>
#include <sstream>
#include <thread>

namespace {

constexpr ORCAOBJID kSupervisor{100};
constexpr std::array kExchangers{ORCAOBJID{101}, ORCAOBJID{102}, ORCAOBJID{103}, ORCAOBJID{104}};
constexpr unsigned int kFirstVictim = 1000;
constexpr unsigned int kVictims = 4; ///< at a time
constexpr unsigned long kLast = 0xFFFFFFFF;
constexpr unsigned short kWaiting = 50;
constexpr unsigned long kRetryMs = 20;
constexpr unsigned long kEndsMs = 10000;

/// A registered program that checks what it receives.
struct Member {
    explicit Member(ORCAOBJID id) : mailbox(id), self(id) {
        mailbox.RegisterMailbox(window.Get());
        mailbox.LimitWaiting(kWaiting);
    }
    /// @return whether it was sent
    bool Send(ORCAOBJID to, unsigned long number) {
        const auto content = Content(self, number);
        return mailbox.SendWithin(kRetryMs, to, number, sizeof content, content.data(), 0, nullptr) == STATUS_OK;
    }
    /// Takes all messages that have arrived.
    void Receive() {
        while (const LPARAM number = window.Take(MAILBOX_NOTIFICATION)) {
            SBLOCK* const block = mailbox.GetMessageBlock(static_cast<unsigned int>(number));
            const auto content = Content(block->Sender, block->MsgId);
            const bool last = block->MsgId == kLast;
            unsigned long& expected = next[block->Sender];
            const bool right = block->BlkNum == number && block->Receiver == self &&
                               (last || block->MsgId == expected++) &&
                               std::equal(content.begin(), content.end(), block->Data);
            if (last) ++lasts;
            if (mailbox.ReleaseMemory(block) != 0 || !right) ++wrong;
        }
    }
    static std::array<unsigned char, 600> Content(unsigned long sender, unsigned long number) {
        std::array<unsigned char, 600> content;
        content.fill(static_cast<unsigned char>(sender * 131 + number));
        return content;
    }

    OpenPostOffice office;
    MessageWindow window;
    CMailBox mailbox;
    ORCAOBJID self;
    std::map<unsigned long, unsigned long> next; ///< numbers by sender
    unsigned int lasts = 0;
    unsigned long wrong = 0;
};

ORCAOBJID IdOf(const std::string& argument) {
    return ORCAOBJID{std::stoul(argument)};
}

/// Exchanges messages with a partner until the supervisor says that it is the last. Arguments: own id, partner,
/// after how many to report.
int Exchange(const std::vector<std::string>& arguments) {
    Member member(IdOf(arguments[0]));
    const ORCAOBJID partner = IdOf(arguments[1]);
    const unsigned long least = std::stoul(arguments[2]);
    Say("registered");
    Hear();
    unsigned long sent = 0;
    while (member.lasts == 0) {
        if (member.Send(partner, sent) && ++sent == least) Say("enough");
        member.Receive();
    }
    while (!member.Send(partner, kLast)) member.Receive();
    while (member.lasts < 2) {
        member.Receive();
        Sleep(1);
    }
    std::ostringstream result;
    result << "result " << sent << ' ' << member.next[partner] << ' ' << member.wrong;
    Say(result.str());
    return 0;
}

/// Sends to everybody until it is killed. Arguments: own id.
int Bustle(const std::vector<std::string>& arguments) {
    Member member(IdOf(arguments[0]));
    std::map<ORCAOBJID, unsigned long> sent;
    Say("registered");
    for (unsigned int round = 0;; ++round) {
        const ORCAOBJID neighbour{member.self - 1 - round % kVictims};
        const ORCAOBJID to = round % 2 == 0 ? kExchangers[round / 2 % kExchangers.size()] : neighbour;
        if (member.Send(to, sent[to])) ++sent[to];
        member.Receive();
    }
}

/// Returns while two threads send. Arguments: how many milliseconds later.
int Return(const std::vector<std::string>& arguments) {
    static CMailBox* mailbox = nullptr;
    CPostOffice::CreateGlobalPostOffice();
    mailbox = new CMailBox(ORCAOBJID{99});
    for (int thread = 0; thread < 2; ++thread) {
        std::thread([] {
            for (;;) mailbox->Send(kSupervisor, 1, 0, nullptr, 0, nullptr);
        }).detach();
    }
    Sleep(std::stoul(arguments[0]));
    Say("returns");
    return 0;
}

const Role roles[] = {{"exchange", Exchange}, {"bustle", Bustle}, {"return", Return}};

using Child = std::unique_ptr<ChildProcess>;

/// Starts a program in one bitness or the other.
Child Start(const std::string& role, const std::vector<std::string>& arguments, unsigned int number) {
    return std::make_unique<ChildProcess>(role, arguments, number % 2 == 0 ? OwnProgram() : PeerProgram());
}

/// Keeps the supervisor's queue empty until a condition holds.
bool ReceiveUntil(Member& supervisor, unsigned long mostMs, const std::function<bool()>& done) {
    const ULONGLONG start = GetTickCount64();
    while (!done()) {
        if (GetTickCount64() - start > mostMs) return false;
        while (const LPARAM number = supervisor.window.Take(MAILBOX_NOTIFICATION))
            supervisor.mailbox.ReleaseMemory(supervisor.mailbox.GetMessageBlock(static_cast<unsigned int>(number)));
        Sleep(1);
    }
    return true;
}

std::string Results(std::array<Child, kExchangers.size()>& exchangers) {
    unsigned long sent = 0;
    unsigned long received = 0;
    unsigned long wrong = 0;
    for (const Child& exchanger : exchangers) {
        unsigned long numbers[3]{};
        std::istringstream line(exchanger->WaitUntil("result "));
        for (unsigned long& number : numbers) line >> number;
        sent += numbers[0];
        received += numbers[1];
        wrong += numbers[2];
        exchanger->ExitCode();
    }
    const bool right = sent == received && sent > 0 && wrong == 0;
    return right ? ""
                 : std::to_string(sent) + " sent, " + std::to_string(received) + " received, " + std::to_string(wrong) +
                       " wrong";
}

} // namespace

std::string KillBusyPrograms(unsigned int kills, unsigned long messages, unsigned int seed) {
    Member supervisor(kSupervisor);
    std::array<Child, kExchangers.size()> exchangers;
    for (unsigned int i = 0; i < exchangers.size(); ++i) {
        const unsigned long least = messages / exchangers.size();
        exchangers[i] = Start(
            "exchange", {std::to_string(kExchangers[i]), std::to_string(kExchangers[i ^ 3]), std::to_string(least)}, i);
        exchangers[i]->WaitUntil("registered");
    }
    for (const Child& exchanger : exchangers) exchanger->Tell("go");
    std::minstd_rand random(seed);
    std::array<Child, kVictims> victims;
    for (unsigned int kill = 0; kill < kills + kVictims; ++kill) {
        Child& victim = victims[kill % kVictims];
        if (victim) Sleep(random() % 30);
        victim.reset(); // killed
        if (kill % 10 == 0) supervisor.mailbox.SweepDead();
        if (kill >= kills) continue;
        victim = Start("bustle", {std::to_string(kFirstVictim + kill)}, random());
        victim->WaitUntil("registered");
    }
    for (const Child& exchanger : exchangers) exchanger->WaitUntil("enough");
    for (const ORCAOBJID exchanger : kExchangers) {
        while (!supervisor.Send(exchanger, kLast)) {
        }
    }
    const std::string fault = Results(exchangers);
    supervisor.mailbox.SweepDead();
    return fault + WhatIsLeft(1);
}

std::string ReturnWhileSending(unsigned int programs) {
    Member supervisor(kSupervisor);
    for (unsigned int i = 0; i < programs; ++i) {
        const Child program = Start("return", {std::to_string(i % 20)}, i);
        const HANDLE process = OpenProcess(SYNCHRONIZE, FALSE, program->Id());
        const auto hasEnded = [process] { return WaitForSingleObject(process, 0) == WAIT_OBJECT_0; };
        const bool ends = ReceiveUntil(supervisor, kEndsMs, hasEnded);
        CloseHandle(process);
        if (!ends) return "program " + std::to_string(i) + " does not end";
    }
    supervisor.mailbox.SweepDead();
    supervisor.Send(kSupervisor, 0);
    supervisor.Receive();
    supervisor.mailbox.SweepDead();
    return WhatIsLeft(1);
}
