#include "support/Loopback.h" // Winsock, before windows.h

#include "support/ChildProcess.h"

#include <benchmark/benchmark.h>
#include <tessel/net/commmsg.h>
#include <tessel/net/msgsocket.h>

#include <array>
#include <cstring>
#include <deque>
#include <memory>
#include <utility>
#include <vector>

// Both sides make the same calls: each send has its own time-out, each record received its own block.

namespace {

constexpr unsigned int kTimeoutMs = 5000;

/// A socket with records by the library.
class TesselEnd : public CMsgSocket {
public:
    TesselEnd(SOCKET socket, MODE mode) : CMsgSocket(socket, BUFFER_SIZE, mode, nullptr) { InitConnected(); }
    bool Send(const CCommMsg& record) { return Write(&record, kTimeoutMs) == 0; }
    bool Receive() {
        CCommMsg* record = nullptr;
        const bool received = Read(&record) == 0;
        delete record;
        return received;
    }
    HANDLE Event() { return GetEventHandle(); }
    /// @return whether a record was delivered
    bool Deliver() { return ProcessEvents() == 0 && std::exchange(m_delivered, false); }

private:
    void OnReadMsg(CCommMsg* record) override {
        delete record;
        m_delivered = true;
    }
    bool m_delivered = false;
};

/// A socket with records by bare Winsock calls.
class BareEnd {
public:
    BareEnd(SOCKET socket, CSocket::MODE mode) : m_socket(socket) {
        if (mode == CSocket::MODE_EVENT) WSAEventSelect(m_socket, m_event, FD_READ | FD_CLOSE);
    }
    ~BareEnd() {
        closesocket(m_socket);
        CloseHandle(m_event);
    }
    BareEnd(const BareEnd&) = delete;
    BareEnd& operator=(const BareEnd&) = delete;

    bool Send(const CCommMsg& record) {
        DWORD before = 0;
        int size = sizeof before;
        getsockopt(m_socket, SOL_SOCKET, SO_SNDTIMEO, reinterpret_cast<char*>(&before), &size);
        SetTimeout(kTimeoutMs);
        const bool sent = SendAlone(record);
        SetTimeout(before);
        return sent;
    }
    bool SendAlone(const CCommMsg& record) {
        const auto length = static_cast<int>(record.GetXmitLength());
        return send(m_socket, reinterpret_cast<const char*>(record.GetMsg()), length, 0) == length;
    }
    bool Receive() {
        do {
            if (!Fill()) return false;
        } while (!TakeRecord());
        return true;
    }
    HANDLE Event() { return m_event; }
    bool Deliver() {
        WSANETWORKEVENTS events;
        if (WSAEnumNetworkEvents(m_socket, m_event, &events) != 0 || !Fill()) return false;
        bool delivered = false;
        while (TakeRecord()) delivered = true;
        return delivered;
    }

private:
    void SetTimeout(DWORD milliseconds) {
        setsockopt(m_socket, SOL_SOCKET, SO_SNDTIMEO, reinterpret_cast<const char*>(&milliseconds),
                   sizeof milliseconds);
    }
    bool Fill() {
        const int got = recv(m_socket, m_buffer.data() + m_filled, static_cast<int>(m_buffer.size() - m_filled), 0);
        if (got > 0) m_filled += static_cast<unsigned int>(got);
        return got > 0;
    }
    bool TakeRecord() {
        unsigned int length = 0;
        if (m_filled < sizeof length) return false;
        std::memcpy(&length, m_buffer.data(), sizeof length);
        if (m_filled - sizeof length < length) return false;
        const std::unique_ptr<char[]> record(new char[sizeof length + length]);
        std::memcpy(record.get(), m_buffer.data(), sizeof length + length);
        benchmark::DoNotOptimize(record.get());
        m_filled -= static_cast<unsigned int>(sizeof length) + length;
        std::memmove(m_buffer.data(), m_buffer.data() + sizeof length + length, m_filled);
        return true;
    }

    SOCKET m_socket;
    HANDLE m_event = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    std::array<char, CMsgSocket::BUFFER_SIZE> m_buffer;
    std::size_t m_filled = 0;
};

/// Returns everything it receives.
int Echo(const std::vector<std::string>& arguments) {
    WSADATA data;
    WSAStartup(MAKEWORD(2, 2), &data);
    const SOCKET peer = LoopbackListener::Connect(static_cast<u_short>(std::stoul(arguments.at(0))));
    char buffer[8192];
    for (int got = 0; (got = recv(peer, buffer, sizeof buffer, 0)) > 0;) send(peer, buffer, got, 0);
    closesocket(peer);
    return 0;
}
const Role echo("bench-echo", Echo);

std::unique_ptr<CCommMsg> Record(const benchmark::State& state) {
    std::unique_ptr<CCommMsg> record(new (static_cast<unsigned int>(state.range(0))) CCommMsg);
    std::memset(record->GetData(), 0x5A, record->GetLength());
    return record;
}

template <class End> void OneWay(benchmark::State& state) {
    const LoopbackListener loopback;
    End sender(LoopbackListener::Connect(loopback.Port()), CSocket::MODE_BLOCKING);
    End receiver(loopback.Accept(), CSocket::MODE_BLOCKING);
    const auto record = Record(state);
    for (auto _ : state) {
        if (!sender.Send(*record) || !receiver.Receive()) state.SkipWithError("a record was lost");
    }
}

/// What the time-out of each send costs.
void OneWayWithoutTimeout(benchmark::State& state) {
    const LoopbackListener loopback;
    BareEnd sender(LoopbackListener::Connect(loopback.Port()), CSocket::MODE_BLOCKING);
    BareEnd receiver(loopback.Accept(), CSocket::MODE_BLOCKING);
    const auto record = Record(state);
    for (auto _ : state) {
        if (!sender.SendAlone(*record) || !receiver.Receive()) state.SkipWithError("a record was lost");
    }
}

template <class End> void RoundTrip(benchmark::State& state) {
    const LoopbackListener loopback;
    const ChildProcess peer("bench-echo", {std::to_string(loopback.Port())});
    End end(loopback.Accept(), CSocket::MODE_BLOCKING);
    const auto record = Record(state);
    for (auto _ : state) {
        if (!end.Send(*record) || !end.Receive()) state.SkipWithError("a record was lost");
    }
}

/// A server that waits for all its connections, of which one after the other gets a record.
template <class End> void Connections(benchmark::State& state) {
    const auto count = static_cast<DWORD>(state.range(0));
    const LoopbackListener loopback;
    std::deque<End> clients;
    std::deque<End> server;
    std::vector<HANDLE> events;
    for (DWORD i = 0; i < count; ++i) {
        clients.emplace_back(LoopbackListener::Connect(loopback.Port()), CSocket::MODE_BLOCKING);
        events.push_back(server.emplace_back(loopback.Accept(), CSocket::MODE_EVENT).Event());
    }
    const std::unique_ptr<CCommMsg> record(new (256) CCommMsg);
    std::memset(record->GetData(), 0x5A, record->GetLength());
    DWORD next = 0;
    for (auto _ : state) {
        bool delivered = clients[next].Send(*record);
        const DWORD signalled = WaitForMultipleObjects(count, events.data(), FALSE, 5000);
        delivered = delivered && signalled == next && server[signalled].Deliver();
        if (!delivered) state.SkipWithError("a record was lost");
        next = (next + 1) % count;
    }
}

BENCHMARK(OneWay<TesselEnd>)->Name("Record one way/Tessel")->Arg(64)->Arg(1024)->Arg(4000)->UseRealTime();
BENCHMARK(OneWay<BareEnd>)->Name("Record one way/Bare")->Arg(64)->Arg(1024)->Arg(4000)->UseRealTime();
BENCHMARK(OneWayWithoutTimeout)->Name("Record one way/no time-out")->Arg(64)->Arg(1024)->Arg(4000)->UseRealTime();
BENCHMARK(RoundTrip<TesselEnd>)->Name("Record round trip/Tessel")->Arg(64)->Arg(1024)->Arg(4000)->UseRealTime();
BENCHMARK(RoundTrip<BareEnd>)->Name("Record round trip/Bare")->Arg(64)->Arg(1024)->Arg(4000)->UseRealTime();
BENCHMARK(Connections<TesselEnd>)->Name("Record by event, connections/Tessel")->Arg(1)->Arg(10)->Arg(50)->UseRealTime();
BENCHMARK(Connections<BareEnd>)->Name("Record by event, connections/Bare")->Arg(1)->Arg(10)->Arg(50)->UseRealTime();

} // namespace
