#include "support/MessageWindow.h"
#include "support/OpenPostOffice.h"

#include <benchmark/benchmark.h>
#include <tessel/messaging/mailbox.h>

#include <tessel/foundation/event.h>

#include <memory>
#include <thread>
#include <vector>

namespace {

constexpr ORCAOBJID kReceiver{81};
constexpr ORCAOBJID kOthers{82};
constexpr UINT kStop = WM_APP;

/// A receiver on another thread that releases every message.
class Drain {
public:
    Drain() {
        const CEvent ready;
        m_thread = std::thread([this, ready = ready.GetHandle()] { Run(ready); });
        WaitForSingleObject(ready.GetHandle(), INFINITE);
    }
    ~Drain() {
        PostMessageW(m_window, kStop, 0, 0);
        m_thread.join();
    }
    Drain(const Drain&) = delete;
    Drain& operator=(const Drain&) = delete;

private:
    void Run(HANDLE ready) {
        const MessageWindow window;
        m_window = window.Get();
        CMailBox mailbox(kReceiver);
        mailbox.RegisterMailbox(m_window);
        SetEvent(ready);
        MSG message;
        while (GetMessageW(&message, m_window, 0, 0) > 0 && message.message != kStop) {
            if (message.message != MAILBOX_NOTIFICATION) continue;
            mailbox.ReleaseMemory(mailbox.GetMessageBlock(static_cast<unsigned int>(message.lParam)));
        }
    }

    HWND m_window = nullptr;
    std::thread m_thread;
};

void SendOne(CMailBox& mailbox, ORCAOBJID to = kReceiver) {
    const unsigned char data[64] = {};
    while (mailbox.Send(to, 1, sizeof data, data, 0, nullptr) == ERROR_BUSY) {
    }
}

/// Sends a message and takes it on the same thread, so that only the post office's state differs.
class SelfSender {
public:
    explicit SelfSender(ORCAOBJID id) : m_id(id), m_mailbox(id) { m_mailbox.RegisterMailbox(m_window.Get()); }

    void SendAndTake() {
        Send();
        Take();
    }
    void Send() { SendOne(m_mailbox, m_id); }
    void Take() {
        const LPARAM number = m_window.Wait(MAILBOX_NOTIFICATION);
        m_mailbox.ReleaseMemory(m_mailbox.GetMessageBlock(static_cast<unsigned int>(number)));
    }

private:
    MessageWindow m_window;
    ORCAOBJID m_id;
    CMailBox m_mailbox;
};

void RegisteredMailboxes(benchmark::State& state) {
    const OpenPostOffice office;
    std::vector<std::unique_ptr<CMailBox>> others;
    for (int64_t i = 1; i < state.range(0); ++i) {
        others.emplace_back(std::make_unique<CMailBox>(kOthers))->RegisterMailbox(GetDesktopWindow());
    }
    SelfSender sender(kReceiver);
    for (auto _ : state) sender.SendAndTake();
}

/// Messages that are not fetched fill the pool, and the search for a free block has to pass them.
void PoolFullness(benchmark::State& state) {
    const OpenPostOffice office;
    SelfSender behind(kOthers);
    SelfSender sender(kReceiver);
    const int64_t used = SMALL_BLOCK_COUNT * state.range(0) / 100;
    for (int64_t i = 0; i < used; ++i) behind.Send();
    for (auto _ : state) sender.SendAndTake();
    for (int64_t i = 0; i < used; ++i) behind.Take();
}

/// Threads that send to one receiver at the same time. Only sending is measured: when the clock stops, up to a whole
/// pool of messages may still be waiting for the receiver.
void Senders(benchmark::State& state) {
    static std::unique_ptr<Drain> drain;
    if (state.thread_index() == 0) {
        CPostOffice::CreateGlobalPostOffice();
        drain = std::make_unique<Drain>();
    }
    std::unique_ptr<CMailBox> mailbox;
    for (auto _ : state) {
        if (mailbox == nullptr) mailbox = std::make_unique<CMailBox>(kOthers);
        SendOne(*mailbox);
    }
    state.SetItemsProcessed(state.iterations());
    mailbox.reset();
    if (state.thread_index() == 0) {
        drain.reset();
        CPostOffice::DestroyGlobalPostOffice();
    }
}

/// Threads that look up a receiver in the last slot at the same time.
void LookUps(benchmark::State& state) {
    static std::vector<std::unique_ptr<CMailBox>> mailboxes;
    if (state.thread_index() == 0) {
        CPostOffice::CreateGlobalPostOffice();
        for (int slot = 1; slot < POST_OFFICE_MAILBOXES; ++slot) {
            const ORCAOBJID id = slot + 1 == POST_OFFICE_MAILBOXES ? kReceiver : kOthers;
            mailboxes.emplace_back(std::make_unique<CMailBox>(id))->RegisterMailbox(GetDesktopWindow());
        }
    }
    unsigned short slot = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(mailboxes.back()->GetMailBox(kReceiver, slot));
    }
    if (slot + 1 != POST_OFFICE_MAILBOXES) state.SkipWithError("not found");
    if (state.thread_index() == 0) {
        mailboxes.clear();
        CPostOffice::DestroyGlobalPostOffice();
    }
}

BENCHMARK(RegisteredMailboxes)->Name("Growth: mailboxes")->Arg(1)->Arg(10)->Arg(50)->Arg(99)->UseRealTime();
BENCHMARK(PoolFullness)->Name("Growth: pool used, per cent")->Arg(0)->Arg(50)->Arg(90)->Arg(99)->UseRealTime();
BENCHMARK(Senders)->Name("Growth: senders, sending only")->ThreadRange(1, 8)->UseRealTime();
BENCHMARK(LookUps)->Name("Growth: threads looking up a receiver")->ThreadRange(1, 4)->UseRealTime();

} // namespace
