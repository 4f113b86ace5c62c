#include "Transports.h"

#include "BareOffice.h"
#include "support/MessageWindow.h"
#include "support/OpenPostOffice.h"

#include <benchmark/benchmark.h>
#include <tessel/messaging/mailbox.h>

#include <cstring>
#include <vector>

namespace {

constexpr ORCAOBJID kOwn{71};

void MessageTessel(benchmark::State& state) {
    const OpenPostOffice office;
    const MessageWindow window;
    CMailBox mailbox(kOwn);
    mailbox.RegisterMailbox(window.Get());
    unsigned char data[Transport::kMaximum] = {};
    const auto size = static_cast<unsigned long>(state.range(0));
    for (auto _ : state) {
        mailbox.Send(kOwn, 1, size, data, 0, nullptr);
        const LPARAM number = window.Wait(MAILBOX_NOTIFICATION);
        SBLOCK* const block = mailbox.GetMessageBlock(static_cast<unsigned int>(number));
        std::memcpy(data, block->Data, size);
        mailbox.ReleaseMemory(block);
    }
}

void MessageBare(benchmark::State& state) {
    const MessageWindow window;
    BareOffice office;
    unsigned char data[Transport::kMaximum] = {};
    const auto size = static_cast<std::size_t>(state.range(0));
    for (auto _ : state) {
        office.Send(window.Get(), data, size);
        office.Receive(window.Get(), data, size);
    }
}

constexpr unsigned short kBatch = 16;

/// Sixteen messages of 64 bytes within a process, received before the next sixteen.
class BatchFixture {
public:
    BatchFixture() : m_mailbox(kOwn) { m_mailbox.RegisterMailbox(m_window.Get()); }

    CMailBox& Mailbox() { return m_mailbox; }
    const OUTGOING_MESSAGE* Messages() const { return m_messages.data(); }
    SBLOCK* Take() { return m_mailbox.GetMessageBlock(static_cast<unsigned int>(m_window.Wait(MAILBOX_NOTIFICATION))); }

private:
    static constexpr unsigned char kData[64] = {};

    OpenPostOffice m_office;
    MessageWindow m_window;
    CMailBox m_mailbox;
    std::vector<OUTGOING_MESSAGE> m_messages{kBatch, {1, sizeof kData, kData}};
};

void BatchSingle(benchmark::State& state) {
    BatchFixture fixture;
    for (auto _ : state) {
        for (int i = 0; i < kBatch; ++i) fixture.Mailbox().Send(kOwn, 1, 64, fixture.Messages()[i].data, 0, nullptr);
        for (int i = 0; i < kBatch; ++i) fixture.Mailbox().ReleaseMemory(fixture.Take());
    }
}

void BatchMany(benchmark::State& state) {
    BatchFixture fixture;
    unsigned short sent = kBatch;
    unsigned short released = kBatch;
    SBLOCK* blocks[kBatch];
    for (auto _ : state) {
        fixture.Mailbox().SendMany(kOwn, fixture.Messages(), kBatch, sent);
        for (SBLOCK*& block : blocks) block = fixture.Take();
        released = fixture.Mailbox().ReleaseMany(blocks, kBatch);
    }
    if (sent != kBatch || released != kBatch) state.SkipWithError("messages are missing");
}

BENCHMARK(BatchMany)->Name("16 messages within a process/Many")->UseRealTime();
BENCHMARK(BatchSingle)->Name("16 messages within a process/Single")->UseRealTime();
BENCHMARK(MessageTessel)->Name("Message within a process/Tessel")->Arg(64)->Arg(5000)->UseRealTime();
BENCHMARK(MessageBare)->Name("Message within a process/Bare")->Arg(64)->Arg(5000)->UseRealTime();

} // namespace
