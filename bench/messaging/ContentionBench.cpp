#include "Transports.h"

#include "support/ChildProcess.h"

#include <benchmark/benchmark.h>

#include <deque>
#include <memory>
#include <string>
#include <vector>

namespace {

constexpr std::size_t kSize = 64;
/// Those of four senders fit into the pool.
constexpr int kVolley = 100;

/// Signalled to let one sender send its messages.
HANDLE Signal(const std::string& sender) {
    return CreateEventA(nullptr, FALSE, FALSE, ("Tessel bench volley " + sender).c_str());
}

/// Sends a volley each time it is told to, until it is ended. Arguments: kind, number of the sender, the receiver's
/// address.
int SendVolleys(const std::vector<std::string>& arguments) {
    const auto transport = MakeTransport(arguments[0], false);
    transport->Connect(arguments.size() > 2 ? arguments[2] : "");
    HANDLE const signal = Signal(arguments[1]);
    Say("ready");
    const unsigned char data[kSize] = {};
    while (WaitForSingleObject(signal, INFINITE) == WAIT_OBJECT_0) {
        for (int i = 0; i < kVolley; ++i) transport->Send(data, kSize);
    }
    return 0;
}
const Role sendVolleys("send-volleys", SendVolleys);

/// Processes that send to one receiver at the same time; the time is that of one message.
void Contention(benchmark::State& state, const std::string& kind) {
    const auto receiver = MakeTransport(kind, true);
    std::deque<ChildProcess> senders;
    std::vector<HANDLE> signals;
    for (int64_t i = 0; i < state.range(0); ++i) {
        const std::string number = std::to_string(i);
        signals.push_back(Signal(number));
        senders.emplace_back("send-volleys", std::vector{kind, number, receiver->Address()}).WaitUntil("ready");
    }
    const int64_t messages = state.range(0) * kVolley;
    unsigned char data[kSize];
    while (state.KeepRunningBatch(messages)) {
        for (HANDLE const signal : signals) SetEvent(signal);
        for (int64_t i = 0; i < messages; ++i) receiver->Receive(data, kSize);
    }
    state.SetItemsProcessed(state.iterations());
    for (HANDLE const signal : signals) CloseHandle(signal);
}

const bool registered = [] {
    for (const char* kind : {"Tessel", "Bare"}) {
        const std::string name = std::string("Contention: message to one receiver from processes/") + kind;
        benchmark::RegisterBenchmark(name.c_str(), Contention, std::string(kind))
            ->Arg(1)
            ->Arg(2)
            ->Arg(4)
            ->UseRealTime();
    }
    return true;
}();

} // namespace
