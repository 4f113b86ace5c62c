#include "Transports.h"

#include "BareOffice.h"
#include "support/MessageWindow.h"
#include "support/OpenPostOffice.h"

#include <benchmark/benchmark.h>
#include <tessel/messaging/mailbox.h>

#include <cstring>

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

BENCHMARK(MessageTessel)->Name("Message within a process/Tessel")->Arg(64)->Arg(5000)->UseRealTime();
BENCHMARK(MessageBare)->Name("Message within a process/Bare")->Arg(64)->Arg(5000)->UseRealTime();

} // namespace
