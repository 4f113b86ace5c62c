#include "KilledOperations.h"

#include "WhatIsLeft.h"
#include "support/MessageWindow.h"
#include "support/OpenPostOffice.h"
#include "support/Stepping.h"

#include <tessel/foundation/semaphore.h>
#include <tessel/messaging/mailbox.h>
#include <tessel/messaging/resource.h>

#include <algorithm>
#include <array>
#include <optional>
#include <sstream>
#include <string_view>

namespace {

constexpr ORCAOBJID kReceiver{61};
constexpr ORCAOBJID kVictim{62};
constexpr ORCAOBJID kContender{63};
constexpr ORCAOBJID kSpare{64};
constexpr RESOURCE_TYPE kType{1};
constexpr RESOURCE_ID kVictims{2};
constexpr RESOURCE_ID kSurvivors{3};
constexpr unsigned long kEvery = 3000;
constexpr ULONGLONG kMostMs = 10000;
constexpr double kTicksPerMs = 10000;
const unsigned char kData[100] = "of the victim";

/// What is to be done before the operation.
enum Setting : unsigned int {
    NO_OFFICE = 1,  ///< no program has a post office
    OPEN = 2,       ///< the victim has created its post office
    REGISTERED = 4, ///< the victim has registered
    FETCHED = 8,    ///< the victim has fetched its first request
    RESOURCE_ADDED = 16,
    CORPSE = 32, ///< another program with the id of the victim was killed before
    SPARE = 64,  ///< the survivor has a second registration with a message, and a resource
};

} // namespace

struct Victim {
    std::optional<OpenPostOffice> office;
    MessageWindow window;
    std::optional<CMailBox> mailbox;
    std::optional<CResource> resources;
    unsigned int request = 0;
    SBLOCK* block = nullptr;
};

struct KilledOperation {
    const char* name;
    void (*call)(Victim& victim);
    unsigned int setting;
    unsigned int requests = 0;  ///< messages that wait for the victim, or for the one that was killed before
    unsigned int inherited = 0; ///< how many of them an heir gets at least
    unsigned int sends = 0;     ///< messages of the victim that arrive at most
};

namespace {

void SendFive(Victim& victim) {
    OUTGOING_MESSAGE batch[5];
    for (unsigned long i = 0; i < 5; ++i) batch[i] = {i, sizeof kData, kData};
    unsigned short sent = 0;
    victim.mailbox->SendMany(kReceiver, batch, 5, sent);
}

unsigned long ProcessOf(RESOURCE_ID id) {
    const std::span records(CPostOffice().GetResourceAddr(), POST_OFFICE_RESOURCES);
    const auto found = std::find_if(records.begin(), records.end(), [id](const RESOURCE& r) { return r.Id == id; });
    return found == records.end() ? 0 : found->ProcessId;
}

const KilledOperation kOperations[] = {
    {"CreateGlobalPostOffice", [](Victim&) { CPostOffice::CreateGlobalPostOffice(); }, NO_OFFICE},
    {"CreateGlobalPostOffice again", [](Victim&) { CPostOffice::CreateGlobalPostOffice(); }, 0},
    {"LockThreadSafe", [](Victim&) { CPostOffice().LockThreadSafe(INFINITE), CPostOffice().UnlockThreadSafe(); }, OPEN},
    {"RegisterMailbox", [](Victim& v) { v.mailbox->RegisterMailbox(v.window.Get()); }, OPEN},
    {"UnregisterMailbox", [](Victim& v) { v.mailbox->UnregisterMailbox(); }, OPEN | REGISTERED, 2, 2},
    {"Send", [](Victim& v) { v.mailbox->Send(kReceiver, 0, sizeof kData, kData, 0, nullptr); }, OPEN, 0, 0, 1},
    {"SendMany", SendFive, OPEN, 0, 0, 5},
    {"GetMessageBlock", [](Victim& v) { v.mailbox->GetMessageBlock(v.request); }, OPEN | REGISTERED, 2, 2},
    {"ReleaseMemory", [](Victim& v) { v.mailbox->ReleaseMemory(v.block); }, OPEN | REGISTERED | FETCHED, 2, 1},
    {"Reply", [](Victim& v) { v.mailbox->Reply(v.block, 0, sizeof kData, kData, 0, nullptr); },
     OPEN | REGISTERED | FETCHED, 2, 1, 1},
    {"TakeOver", [](Victim& v) { v.mailbox->TakeOver(); }, OPEN | REGISTERED | CORPSE, 3, 3},
    {"SweepDead", [](Victim& v) { v.mailbox->SweepDead(); }, OPEN | CORPSE, 3},
    {"CleanUp", [](Victim& v) { v.mailbox->CleanUp(kReceiver); }, OPEN | SPARE},
    {"AddResource", [](Victim& v) { v.resources->AddResource(kType, kVictims, v.window.Get(), 1); }, OPEN},
    {"DeleteResource", [](Victim& v) { v.resources->DeleteResource(kType, kVictims, 1); }, OPEN | RESOURCE_ADDED},
    {"DeleteResource of another", [](Victim& v) { v.resources->DeleteResource(kType, kSurvivors, 1); }, OPEN | SPARE},
    {"FreeThreadResources", [](Victim& v) { v.resources->FreeThreadResources(); }, OPEN | RESOURCE_ADDED},
    {"ResetProcess", [](Victim& v) { v.resources->ResetProcess(ProcessOf(kVictims)); }, OPEN | CORPSE, 3, 3},
};
const KilledOperation kCorpse{"", [](Victim&) {}, OPEN | REGISTERED | FETCHED | RESOURCE_ADDED, 3};

const KilledOperation& Find(const std::string& name) {
    const auto* const found =
        std::find_if(std::begin(kOperations), std::end(kOperations),
                     [&name](const KilledOperation& operation) { return operation.name == name; });
    return found == std::end(kOperations) ? kCorpse : *found;
}

long long Now() {
    LARGE_INTEGER now;
    QueryPerformanceCounter(&now);
    return now.QuadPart;
}

std::string_view Bytes(const void* data, std::size_t size) {
    return {static_cast<const char*>(data), size};
}

/// What others can see of a program.
class Visible {
public:
    /// A number that changes with the shared memory, except the data of blocks.
    std::size_t State() {
        const std::hash<std::string_view> hash;
        if (m_journal == nullptr) m_journal = MapJournal();
        std::size_t state = m_journal == nullptr ? 0 : hash(Bytes(m_journal, m_journalSize));
        const SBLOCK* const blocks = CPostOffice().GetSmallBlockAddr();
        if (blocks == nullptr) return state;
        state = state * 31 + hash(Bytes(CPostOffice().GetHeaderAddr(), SMALL_BLOCK_OFFSET));
        for (const SBLOCK& block : std::span(blocks, SMALL_BLOCK_COUNT))
            state = state * 31 + hash(Bytes(&block, offsetof(SBLOCK, Data)));
        return state;
    }
    bool IsLocked() {
        if (m_semaphore == nullptr) m_semaphore = OpenSemaphoreW(SEMAPHORE_ALL_ACCESS, FALSE, POST_OFFICE_LOCK_NAME);
        if (m_semaphore == nullptr) return false;
        return WaitForSingleObject(m_semaphore, 0) != WAIT_OBJECT_0 || !ReleaseSemaphore(m_semaphore, 1, nullptr);
    }

private:
    const void* MapJournal() {
        const HANDLE mapping = OpenFileMappingW(FILE_MAP_READ, FALSE, L"SysVarda.Journal");
        const void* const view = mapping == nullptr ? nullptr : MapViewOfFile(mapping, FILE_MAP_READ, 0, 0, 0);
        MEMORY_BASIC_INFORMATION memory{};
        VirtualQuery(view, &memory, sizeof memory);
        m_journalSize = memory.RegionSize;
        return view;
    }
    const void* m_journal = nullptr;
    std::size_t m_journalSize = 0;
    HANDLE m_semaphore = nullptr;
};

void Prepare(Victim& victim, const KilledOperation& operation) {
    const unsigned int setting = operation.setting;
    if ((setting & OPEN) != 0) {
        victim.office.emplace();
        victim.mailbox.emplace(kVictim);
        victim.resources.emplace();
    }
    if ((setting & RESOURCE_ADDED) != 0) victim.resources->AddResource(kType, kVictims, victim.window.Get(), 1);
    if ((setting & REGISTERED) != 0) victim.mailbox->RegisterMailbox(victim.window.Get());
    Say("ready");
    Hear();
    if ((setting & REGISTERED) != 0 && (setting & CORPSE) == 0 && operation.requests > 0)
        victim.request = static_cast<unsigned int>(victim.window.Wait(MAILBOX_NOTIFICATION));
    if ((setting & FETCHED) != 0) victim.block = victim.mailbox->GetMessageBlock(victim.request);
}

/// Tells the length, the first instruction with the lock, and, which takes long, those after which others may see
/// something new.
void ObserveCall(const std::function<void()>& call, bool all) {
    Visible visible;
    std::ostringstream seen;
    std::size_t state = all ? visible.State() : 0;
    unsigned long locked = 0;
    const unsigned long length = RunInSteps(call, [&](unsigned long number, bool returned) {
        if (returned && locked == 0 && visible.IsLocked()) locked = number;
        const std::size_t now = all ? visible.State() : 0;
        if (now != state || returned) seen << ' ' << number;
        state = now;
    });
    std::ostringstream line;
    line << "observed " << length << ' ' << locked << seen.str();
    Say(line.str());
}

/// Ends itself after an instruction. Hears the operation's name, then the numbers of the last instruction and of that
/// at which it stops before; 0: none.
int Die(const std::vector<std::string>&) {
    const KilledOperation& operation = Find(Hear());
    Victim victim;
    Prepare(victim, operation);
    const auto call = [&] { operation.call(victim); };
    unsigned long last = 0;
    unsigned long pause = 0;
    std::istringstream(Hear()) >> last >> pause;
    const auto end = [] {
        Say("died " + std::to_string(Now()));
        TerminateProcess(GetCurrentProcess(), 0);
    };
    if (last == ~0UL)
        ObserveCall(call, pause != 0);
    else if (last > 0)
        RunInSteps(call, [&](unsigned long number, bool) {
            if (number == pause) {
                Say("paused");
                Hear();
            }
            if (number == last) end();
        });
    end();
    return 0;
}

/// Registers and sends a message whenever it is told to. Hears the message's number.
int Contend(const std::vector<std::string>&) {
    const OpenPostOffice office;
    const MessageWindow window;
    CMailBox mailbox(kContender);
    Say("ready");
    for (std::string number = Hear(); !number.empty(); number = Hear()) {
        const int registered = mailbox.RegisterMailbox(window.Get());
        const int unregistered = mailbox.UnregisterMailbox();
        const int sent = mailbox.Send(kReceiver, std::stoul(number), sizeof kData, kData, 0, nullptr);
        const bool done = registered == 0 && unregistered == 0 && sent == 0;
        Say("done " + std::to_string(done ? Now() : 0));
    }
    return 0;
}

/// Creates a post office whenever it is told to, and uses it.
int Visit(const std::vector<std::string>&) {
    Say("ready");
    while (!Hear().empty()) {
        std::string fault;
        {
            const OpenPostOffice office;
            const MessageWindow window;
            CMailBox mailbox(kContender);
            mailbox.RegisterMailbox(window.Get());
            if (mailbox.Send(kContender, 1, 0, nullptr, 0, nullptr) != 0 ||
                mailbox.ReleaseMemory(
                    mailbox.GetMessageBlock(static_cast<unsigned int>(window.Take(MAILBOX_NOTIFICATION)))) != 0)
                fault = " not usable";
            mailbox.UnregisterMailbox();
            fault += WhatIsLeft(0);
        }
        Say("done " + std::to_string(Now()) + fault);
    }
    return 0;
}

const Role roles[] = {{"die", Die}, {"contend", Contend}, {"visit", Visit}};

} // namespace

std::vector<unsigned long> Course::Instructions() const {
    std::vector<unsigned long> all = length > kEvery ? visible : std::vector<unsigned long>();
    for (unsigned long number = 1; number <= length; number += length / kEvery + 1) all.push_back(number);
    std::sort(all.begin(), all.end());
    all.erase(std::unique(all.begin(), all.end()), all.end());
    return all;
}

std::vector<Contention> Course::Contentions(unsigned long instruction) const {
    std::vector<Contention> all{Contention::AFTER_THE_DEATH, Contention::AT_THE_LAST_INSTRUCTION,
                                Contention::AS_SOON_AS_LOCKED};
    if (locked == 0 || instruction <= locked) all.pop_back();
    if (!IsVisible(instruction)) all = {all[instruction % all.size()]};
    return all;
}

bool Course::IsVisible(unsigned long instruction) const {
    return std::binary_search(visible.begin(), visible.end(), instruction);
}

/// The receiver, and what else this process has in the post office.
struct Killing::Survivor {
    Survivor() { receiver.RegisterMailbox(window.Get()); }

    void MakeSpare() {
        spare.RegisterMailbox(spareWindow.Get());
        receiver.Send(kSpare, 0, 0, nullptr, 0, nullptr);
        CResource().AddResource(kType, kSurvivors, window.Get(), 1);
    }
    /// Takes what has not been cleaned up.
    void RemoveSpare() {
        const auto number = static_cast<unsigned int>(spareWindow.Take(MAILBOX_NOTIFICATION));
        SBLOCK* const block = spare.GetMessageBlock(number);
        if (block->BlkNum == number && block->Receiver == kSpare) spare.ReleaseMemory(block);
        spare.UnregisterMailbox();
        CResource().DeleteResource(kType, kSurvivors, 1);
    }
    void SendRequests(unsigned int count) {
        for (unsigned int i = 0; i < count; ++i) receiver.Send(kVictim, i, 0, nullptr, 0, nullptr);
    }
    /// Receives until a message of a sender, and checks that the victim's before it are complete and in order.
    std::string ReceiveUntil(ORCAOBJID sender, unsigned long msgId) {
        const ULONGLONG start = GetTickCount64();
        while (GetTickCount64() - start < kMostMs) {
            MsgWaitForMultipleObjectsEx(0, nullptr, 100, QS_ALLINPUT, MWMO_INPUTAVAILABLE);
            while (const LPARAM number = window.Take(MAILBOX_NOTIFICATION)) {
                SBLOCK* const block = receiver.GetMessageBlock(static_cast<unsigned int>(number));
                const bool last = block->Sender == sender && block->MsgId == msgId;
                const bool right = last || (block->Sender == kVictim && block->MsgId == received++);
                const bool whole = block->BlkNum == number && block->Receiver == kReceiver &&
                                   block->Length == sizeof kData + 1 &&
                                   std::equal(std::begin(kData), std::end(kData), block->Data);
                if (receiver.ReleaseMemory(block) != 0) return "a message cannot be released";
                if (!right || !whole) return "a wrong message";
                if (last) return "";
            }
        }
        return "no message from " + std::to_string(sender);
    }
    std::string Inherit(unsigned int least, unsigned int most) {
        const MessageWindow heirWindow;
        CMailBox heir(kVictim);
        heir.RegisterMailbox(heirWindow.Get());
        heir.TakeOver();
        std::string order;
        unsigned int count = 0;
        unsigned long before = 0;
        while (const LPARAM number = heirWindow.Take(MAILBOX_NOTIFICATION)) {
            SBLOCK* const block = heir.GetMessageBlock(static_cast<unsigned int>(number));
            if (block->MsgId < before) order = "inherited out of order";
            before = block->MsgId + 1;
            heir.ReleaseMemory(block);
            ++count;
        }
        return count >= least && count <= most ? order : std::to_string(count) + " requests inherited";
    }
    /// Removes what the dead have left.
    std::string Sweep() {
        receiver.SweepDead();
        receiver.Send(kReceiver, 0, sizeof kData, kData, 0, nullptr);
        const std::string fault = ReceiveUntil(kReceiver, 0);
        receiver.SweepDead();
        return fault + WhatIsLeft(1);
    }

    OpenPostOffice office;
    MessageWindow window;
    MessageWindow spareWindow;
    CMailBox receiver{kReceiver};
    CMailBox spare{kSpare};
    unsigned long received = 0; ///< messages of the victim
    unsigned long sent = 0;     ///< messages of the contender
};

Killing::Killing(const std::string& name) : m_operation(Find(name)) {
    Begin();
}

Killing::~Killing() = default;

std::vector<std::string> Killing::Names() {
    std::vector<std::string> names;
    for (const KilledOperation& operation : kOperations) names.emplace_back(operation.name);
    return names;
}

/// Starts the survivors anew.
void Killing::Begin() {
    const bool none = (m_operation.setting & NO_OFFICE) != 0;
    m_contender.reset();
    m_survivor.reset(); // before there is another
    if (!none) m_survivor = std::make_unique<Survivor>();
    m_contender = std::make_unique<ChildProcess>(none ? "visit" : "contend", std::vector<std::string>{}, PeerProgram());
    m_contender->WaitUntil("ready");
}

/// A victim that has everything but the order to begin.
Killing::Child Killing::NextVictim(const KilledOperation& operation) {
    while (m_spares.size() < 3) m_spares.push_back(std::make_unique<ChildProcess>("die"));
    Child victim = std::move(m_spares.front());
    m_spares.pop_front();
    victim->Tell(operation.name);
    victim->WaitUntil("ready");
    const bool forCorpse = (operation.setting & CORPSE) != 0;
    if (m_survivor && !forCorpse) m_survivor->SendRequests(operation.requests);
    victim->Tell("go");
    return victim;
}

/// What is in the post office before the operation.
void Killing::SetScene() {
    if ((m_operation.setting & CORPSE) != 0) {
        const Child corpse = NextVictim(kCorpse);
        corpse->Tell("0 0");
        corpse->ExitCode();
    }
    if ((m_operation.setting & SPARE) != 0) m_survivor->MakeSpare();
}

Course Killing::Observe(bool all) {
    SetScene();
    const Child victim = NextVictim(m_operation);
    victim->Tell(std::to_string(~0UL) + (all ? " 1" : " 0"));
    std::istringstream line(victim->WaitUntil("observed "));
    Course course;
    line >> course.length >> course.locked;
    for (unsigned long number = 0; line >> number;) course.visible.push_back(number);
    victim->ExitCode();
    Begin();
    return course;
}

Death Killing::Kill(unsigned long instruction, const Course& course, Contention contention) {
    SetScene();
    const Child victim = NextVictim(m_operation);
    unsigned long pause = contention == Contention::AFTER_THE_DEATH ? 0 : instruction;
    if (contention == Contention::AS_SOON_AS_LOCKED) pause = std::min(pause, course.locked);
    victim->Tell(std::to_string(instruction) + " " + std::to_string(pause));
    HANDLE region = nullptr; // the system may close the victim's only later
    std::string said = victim->WaitUntil("");
    if (said == "paused") {
        region = OpenFileMappingW(FILE_MAP_READ, FALSE, POST_OFFICE_REGION_NAME);
        StartContender();
        Sleep(instruction % 3 * 2);
        victim->Tell("go on");
        said = victim->WaitUntil("");
    }
    const long long died = said.starts_with("died ") ? std::stoll(said.substr(5)) : 0;
    if (pause == 0) StartContender();
    Death death;
    const long long recovered = AwaitContender(death.fault);
    if (region != nullptr) CloseHandle(region);
    victim->ExitCode();
    death.recoveryMs = static_cast<double>(recovered - died) / kTicksPerMs;
    if (died == 0) death.fault = "the victim said " + said;
    if (death.fault.empty() && m_survivor) death.fault = Settle();
    if (!death.fault.empty()) Begin();
    return death;
}

void Killing::StartContender() {
    m_contender->Tell(std::to_string(m_survivor ? ++m_survivor->sent : 1));
}

/// @return when the contender and the receiver were done
long long Killing::AwaitContender(std::string& fault) {
    if (m_survivor) fault = m_survivor->ReceiveUntil(kContender, m_survivor->sent);
    const long long received = Now();
    if (!fault.empty()) return received;
    std::istringstream line(m_contender->WaitUntil("done "));
    long long done = 0;
    line >> done;
    std::getline(line, fault);
    if (done == 0) fault += "the contender failed";
    return m_survivor ? std::max(done, received) : done;
}

/// Takes over and removes what the victim has left.
std::string Killing::Settle() {
    std::string fault;
    if (m_operation.requests > 0) fault = m_survivor->Inherit(m_operation.inherited, m_operation.requests);
    if ((m_operation.setting & SPARE) != 0) m_survivor->RemoveSpare();
    fault += m_survivor->Sweep();
    if (m_survivor->received > m_operation.sends) fault += " doubled";
    m_survivor->received = 0;
    return fault;
}
