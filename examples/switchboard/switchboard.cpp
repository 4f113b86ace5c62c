#include <winsock2.h> // before windows.h, which the library includes

#include <tessel/net.h>

#include <cstdio>
#include <cstring>
#include <memory>
#include <thread>
#include <vector>

namespace {

/// The server's end of a connection. It sends every record back.
class Line : public CMsgSocket {
public:
    Line() : CMsgSocket(BUFFER_SIZE, MODE_EVENT) {}

    bool IsOver() const { return m_over; }

private:
    void OnReadMsg(CCommMsg* record) override {
        const std::unique_ptr<CCommMsg> owned(record);
        unsigned int sent = 0;
        const int result = Send(owned->GetMsg(), owned->GetXmitLength(), &sent, 0);
        // Nothing can follow a part of a record: a client that is too slow to take a whole one is dropped.
        if (result != 0 || sent != owned->GetXmitLength()) m_over = true;
    }
    void OnClose() override { m_over = true; }

    bool m_over = false;
};

/// Accepts clients and serves all of them on one thread.
class Switchboard : public CSocket {
public:
    explicit Switchboard(SOCKET listening) : CSocket(listening, MODE_EVENT, nullptr) {}

    /// Serves until as many clients have gone as were expected.
    /// @return true: they have; false: a Winsock call failed
    bool Serve(std::size_t clients) {
        if (SetMode(MODE_EVENT, 0, FD_ACCEPT) != 0) return false;
        for (std::size_t gone = 0; gone < clients;) {
            std::vector<HANDLE> events{GetEventHandle()};
            for (const auto& line : m_lines) events.push_back(line->GetEventHandle());
            const DWORD first =
                WaitForMultipleObjects(static_cast<DWORD>(events.size()), events.data(), FALSE, INFINITE);
            if (first >= events.size()) return false;
            CSocket& signalled = first == 0 ? static_cast<CSocket&>(*this) : *m_lines[first - 1];
            if (signalled.ProcessEvents() != 0) return false;
            gone += std::erase_if(m_lines, [](const auto& line) { return line->IsOver(); }); // closes them, too
        }
        return true;
    }

private:
    void OnAccept() override {
        CSocket* accepted = nullptr;
        if (Accept(&accepted) != 0) return; // the client has left already
        auto line = std::make_unique<Line>();
        line->CSocket::operator=(*accepted); // the connection passes to an object that cuts records
        delete accepted;
        const bool canWait = m_lines.size() + 1 < MAXIMUM_WAIT_OBJECTS; // else the client finds itself disconnected
        if (canWait && line->InitConnected() == 0) m_lines.push_back(std::move(line));
    }

    std::vector<std::unique_ptr<Line>> m_lines;
};

/// A socket that listens for programs of this machine. InitAsync() would listen on a network card.
SOCKET Listen(sockaddr_in& address) {
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    int size = sizeof address;
    const SOCKET listening = socket(AF_INET, SOCK_STREAM, 0);
    if (bind(listening, reinterpret_cast<sockaddr*>(&address), size) != 0 || listen(listening, SOMAXCONN) != 0 ||
        getsockname(listening, reinterpret_cast<sockaddr*>(&address), &size) != 0) {
        return INVALID_SOCKET;
    }
    return listening;
}

/// A client that waits for each answer.
void Call(const sockaddr_in& address, const char* text) {
    CMsgSocket client; // blocking
    if (client.Connect(address.sin_addr.s_addr, ntohs(address.sin_port)) != 0) return;
    const auto length = static_cast<unsigned int>(std::strlen(text));
    const std::unique_ptr<CCommMsg> record(new (length) CCommMsg);
    std::memcpy(record->GetData(), text, length);
    CCommMsg* received = nullptr;
    if (client.Write(record.get(), 1000) == 0 && client.Read(&received) == 0) {
        const auto* const data = reinterpret_cast<const char*>(received->GetData());
        std::printf("answer: %.*s\n", static_cast<int>(received->GetLength()), data);
    }
    delete received;
    (void)client.DisconnectWithin(1000); // the answer is here, so nothing can be lost
}

} // namespace

int main() {
    const CSocket startsWinsock;
    sockaddr_in address{};
    const SOCKET listening = Listen(address);
    if (listening == INVALID_SOCKET) return 1;
    Switchboard switchboard(listening);
    std::thread first(Call, address, "from the first client");
    std::thread second(Call, address, "from the second client");
    const bool served = switchboard.Serve(2);
    first.join();
    second.join();
    if (served) std::printf("served 2 clients\n");
    return served ? 0 : 1;
}
