#include "RoundTripBench.h"

#include "Transports.h"

#include "support/ChildProcess.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <thread>

namespace {

constexpr unsigned char kQuit = 0xFF;
constexpr std::size_t kTailBytes = 64;

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

/// A second process that returns every message.
class EchoPeer {
public:
    EchoPeer(const std::string& kind, std::size_t size)
        : m_size(size), m_transport(MakeTransport(kind, true)),
          m_process("echo", {kind, std::to_string(size), m_transport->Address()}) {
        m_transport->Connect(m_process.WaitUntil("address "));
    }
    /// A message to the process and back.
    void RoundTrip() {
        m_transport->Send(m_data, m_size);
        m_transport->Receive(m_back, m_size);
    }
    /// Ends the process.
    void Quit(benchmark::State& state) {
        if (std::memcmp(m_data, m_back, m_size) != 0) state.SkipWithError("the message came back changed");
        m_data[0] = kQuit;
        m_transport->Send(m_data, m_size);
        m_process.ExitCode();
    }

private:
    std::size_t m_size;
    std::unique_ptr<Transport> m_transport;
    ChildProcess m_process;
    unsigned char m_data[Transport::kMaximum] = {1, 2, 3};
    unsigned char m_back[Transport::kMaximum] = {};
};

void RoundTrip(benchmark::State& state, const std::string& kind) {
    EchoPeer peer(kind, static_cast<std::size_t>(state.range(0)));
    for (auto _ : state) peer.RoundTrip();
    peer.Quit(state);
    state.SetBytesProcessed(state.iterations() * 2 * state.range(0));
}

/// Times every round trip by itself, in seconds. Its counters are what the report prints as a table of tails.
/// @param pause  from the end of one to the start of the next
void Tails(benchmark::State& state, const std::string& kind, std::chrono::milliseconds pause) {
    using Clock = std::chrono::steady_clock;
    EchoPeer peer(kind, kTailBytes);
    std::vector<double> times;
    for (auto _ : state) {
        if (pause.count() > 0) std::this_thread::sleep_for(pause);
        const Clock::time_point start = Clock::now();
        peer.RoundTrip();
        times.push_back(std::chrono::duration<double>(Clock::now() - start).count());
        state.SetIterationTime(times.back());
    }
    peer.Quit(state);
    std::ranges::sort(times);
    const auto count = static_cast<double>(times.size());
    const auto share = [&](double part) { return times[static_cast<std::size_t>(part * (count - 1))]; };
    state.counters = {{"trips", count},     {"p50", share(0.5)},     {"p90", share(0.9)},
                      {"p99", share(0.99)}, {"p99.9", share(0.999)}, {"longest", times.back()}};
}

void RegisterTails(const std::string& speed, std::int64_t trips, std::chrono::milliseconds pause) {
    for (const char* kind : {"Tessel", "Bare"}) {
        const std::string name = "Single round trips, " + speed + "/" + kind;
        benchmark::RegisterBenchmark(name.c_str(), Tails, std::string(kind), pause)
            ->Iterations(trips)
            ->Repetitions(1)
            ->UseManualTime();
    }
}

const bool registered = [] {
    for (const char* kind : {"Tessel", "Reply", "Dialogue", "Bare", "WM_COPYDATA", "Pipe", "Mailslot", "TCP"}) {
        const std::string name = std::string("Round trip between processes/") + kind;
        benchmark::RegisterBenchmark(name.c_str(), RoundTrip, std::string(kind))->Arg(64)->Arg(5000)->UseRealTime();
    }
    return true;
}();

} // namespace

void RegisterTails(int slowTrips) {
    RegisterTails("as fast as possible", 20000, std::chrono::milliseconds(0));
    RegisterTails("10 a second", slowTrips, std::chrono::milliseconds(100));
}
