#include "Transports.h"

#include "support/ChildProcess.h"

#include <benchmark/benchmark.h>

#include <cstring>

namespace {

constexpr unsigned char kQuit = 0xFF;

/// Returns every message until one starts with kQuit. Arguments: kind, size, the other side's address.
int Echo(const std::vector<std::string>& arguments) {
    const auto transport = MakeTransport(arguments[0], false);
    const std::size_t size = std::stoul(arguments[1]);
    Say("address " + transport->Address());
    transport->Connect(arguments.size() > 2 ? arguments[2] : "");
    unsigned char data[Transport::kMaximum] = {};
    while (data[0] != kQuit) {
        transport->Receive(data, size);
        if (data[0] != kQuit) transport->Send(data, size);
    }
    return 0;
}
const Role echo("echo", Echo);

/// A message to a second process and back.
void RoundTrip(benchmark::State& state, const std::string& kind) {
    const auto size = static_cast<std::size_t>(state.range(0));
    const auto transport = MakeTransport(kind, true);
    ChildProcess peer("echo", {kind, std::to_string(size), transport->Address()});
    transport->Connect(peer.WaitUntil("address "));
    unsigned char data[Transport::kMaximum] = {1, 2, 3};
    unsigned char back[Transport::kMaximum] = {};
    for (auto _ : state) {
        transport->Send(data, size);
        transport->Receive(back, size);
    }
    if (std::memcmp(data, back, size) != 0) state.SkipWithError("the message came back changed");
    data[0] = kQuit;
    transport->Send(data, size);
    peer.ExitCode();
    state.SetBytesProcessed(state.iterations() * 2 * state.range(0));
}

const bool registered = [] {
    for (const char* kind : {"Tessel", "Bare", "WM_COPYDATA", "Pipe", "Mailslot", "TCP"}) {
        const std::string name = std::string("Round trip between processes/") + kind;
        benchmark::RegisterBenchmark(name.c_str(), RoundTrip, std::string(kind))->Arg(64)->Arg(5000)->UseRealTime();
    }
    return true;
}();

} // namespace
