#include "Transports.h"

#include "BareOffice.h"

#include <benchmark/benchmark.h>
#include <tessel/mailbox.h>

#include <cstring>

namespace {

constexpr ORCAOBJID kOwn{71};

HWND MakeWindow() {
    return CreateWindowExW(0, L"STATIC", L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr);
}

void MessageTessel(benchmark::State& state) {
    CPostOffice::CreateGlobalPostOffice();
    const HWND window = MakeWindow();
    {
        CMailBox mailbox(kOwn);
        mailbox.RegisterMailbox(window);
        unsigned char data[Transport::kMaximum] = {};
        const auto size = static_cast<unsigned long>(state.range(0));
        for (auto _ : state) {
            mailbox.Send(kOwn, 1, size, data, 0, nullptr);
            MSG message;
            GetMessageW(&message, window, MAILBOX_NOTIFICATION, MAILBOX_NOTIFICATION);
            SBLOCK* const block = mailbox.GetMessageBlock(static_cast<unsigned int>(message.lParam));
            std::memcpy(data, block->Data, size);
            mailbox.ReleaseMemory(block);
        }
    }
    DestroyWindow(window);
    CPostOffice::DestroyGlobalPostOffice();
}

void MessageBare(benchmark::State& state) {
    const HWND window = MakeWindow();
    BareOffice office;
    unsigned char data[Transport::kMaximum] = {};
    const auto size = static_cast<std::size_t>(state.range(0));
    for (auto _ : state) {
        office.Send(window, data, size);
        office.Receive(window, data, size);
    }
    DestroyWindow(window);
}

BENCHMARK(MessageTessel)->Name("Message within a process/Tessel")->Arg(64)->Arg(5000)->UseRealTime();
BENCHMARK(MessageBare)->Name("Message within a process/Bare")->Arg(64)->Arg(5000)->UseRealTime();

} // namespace
