#pragma once

#include <winsock2.h> // before windows.h, which the other headers include
#include <ws2tcpip.h>

#include "ImportPatch.h"

#include <tessel/net/commmsg.h>
#include <tessel/net/msgsocket.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

constexpr wchar_t kOwn[] = L"127.0.0.1";
constexpr wchar_t kOwnMask[] = L"255.0.0.0";

/// A port of an IPv4 address: by default of this machine.
inline sockaddr_in Endpoint(u_short port, const char* address = "127.0.0.1") {
    return {AF_INET, htons(port), {{.S_addr = inet_addr(address)}}, {}};
}

/// A listening socket, or a bound one for datagrams, on 127.0.0.1 with a port that the system chose.
class LoopbackListener {
public:
    explicit LoopbackListener(int type = SOCK_STREAM) : m_listener(socket(AF_INET, type, 0)) {
        sockaddr_in address = Endpoint(0);
        int size = sizeof address;
        bind(m_listener, reinterpret_cast<sockaddr*>(&address), size);
        getsockname(m_listener, reinterpret_cast<sockaddr*>(&address), &size);
        m_port = ntohs(address.sin_port);
        listen(m_listener, SOMAXCONN); // fails for datagrams
    }
    ~LoopbackListener() { closesocket(m_listener); }
    LoopbackListener(LoopbackListener&&) = delete;

    static u_long Address() { return htonl(INADDR_LOOPBACK); }
    u_short Port() const { return m_port; }

    /// The next connection, without delays in sending.
    SOCKET Accept() const { return WithoutDelay(accept(m_listener, nullptr, nullptr)); }

    /// A new connection to a port on 127.0.0.1, without delays in sending.
    static SOCKET Connect(u_short port) {
        const SOCKET connected = socket(AF_INET, SOCK_STREAM, 0);
        const sockaddr_in address = Endpoint(port);
        connect(connected, reinterpret_cast<const sockaddr*>(&address), sizeof address);
        return WithoutDelay(connected);
    }

private:
    static SOCKET WithoutDelay(SOCKET socket) {
        const int noDelay = 1;
        setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, reinterpret_cast<const char*>(&noDelay), sizeof noDelay);
        return socket;
    }

    const CSocket m_startsWinsock;
    SOCKET m_listener;
    u_short m_port;
};

/// An unused port.
inline unsigned short FreePort(int type = SOCK_STREAM) {
    return LoopbackListener(type).Port();
}

/// Everything that arrives at a socket up to the end of the stream.
inline std::string ReceiveAll(SOCKET socket) {
    std::string all;
    char piece[4096];
    for (int got = 0; (got = recv(socket, piece, sizeof piece, 0)) > 0;) all.append(piece, piece + got);
    return all;
}

/// Writes down its events.
class Recorder : public CSocket {
public:
    using CSocket::CSocket;
    using CSocket::m_pExtra;
    std::string events;

protected:
    void OnAccept() override { events += "accept "; }
    void OnConnect() override { events += "connect "; }
    void OnRead() override { events += "read "; }
    void OnWrite() override { events += "write "; }
    void OnClose() override { events += "close "; }
};

/// A connection over loopback. Its near end is a handle to adopt, or a socket of the library in the wanted mode; the
/// far end is a bare socket.
class Connection {
public:
    Connection() {
        const LoopbackListener listener;
        bare = LoopbackListener::Connect(listener.Port());
        handle = listener.Accept();
    }
    explicit Connection(CSocket::MODE mode, HWND window = nullptr) : Connection() {
        own = std::make_unique<Recorder>(handle, mode, window);
        own->InitConnected();
    }
    ~Connection() { Close(); }
    Connection(Connection&&) = delete;

    void Send(const std::string& bytes) const { send(bare, bytes.data(), static_cast<int>(bytes.size()), 0); }
    void Close() { closesocket(std::exchange(bare, INVALID_SOCKET)); }

    const CSocket keepsWinsockStarted;
    SOCKET bare;
    SOCKET handle; ///< of the near end
    std::unique_ptr<Recorder> own;
};

/// One entry of the list of network interfaces.
inline INTERFACE_INFO Interface(const char* address, const char* mask, unsigned long flags = IFF_UP) {
    return {flags, {.AddressIn = Endpoint(0, address)}, {}, {.AddressIn = Endpoint(0, mask)}};
}

/// Replaces the machine's interfaces: by default with loopback, not marked as loopback.
struct Interfaces {
    std::vector<INTERFACE_INFO> list{Interface("127.0.0.1", "255.0.0.0")};
    const ImportPatch patch{
        "WSAIoctl", &WSAIoctl,
        [this](SOCKET socket, DWORD code, auto in, DWORD inSize, void* out, DWORD room, DWORD* size, auto... rest) {
            if (code != static_cast<DWORD>(SIO_GET_INTERFACE_LIST)) {
                return WSAIoctl(socket, code, in, inSize, out, room, size, rest...);
            }
            *size = static_cast<DWORD>(list.size() * sizeof(INTERFACE_INFO));
            if (*size > room) return SOCKET_ERROR;
            std::copy(list.begin(), list.end(), static_cast<INTERFACE_INFO*>(out));
            return 0;
        }};
};

/// A record with the text as its data.
inline std::unique_ptr<CCommMsg> Message(const std::string& text) {
    std::unique_ptr<CCommMsg> message(new (static_cast<unsigned int>(text.size())) CCommMsg);
    text.copy(reinterpret_cast<char*>(message->GetData()), text.size());
    return message;
}

/// The wire form of records: each one's length in four bytes, the lowest first, and its data.
template <class... Texts> std::string Wire(const Texts&... records) {
    std::string wire;
    const auto add = [&wire](const std::string& data) {
        for (unsigned int shift = 0; shift < 32; shift += 8) wire += static_cast<char>(data.size() >> shift & 0xFF);
        wire += data;
    };
    (add(records), ...);
    return wire;
}

/// A record in its wire form; deletes the record.
inline std::string TakeWire(CCommMsg* record) {
    std::string wire(reinterpret_cast<const char*>(record->GetMsg()), record->GetXmitLength());
    delete record;
    return wire;
}

/// Keeps the delivered records in their wire form.
class RecordReceiver : public CMsgSocket {
public:
    using CMsgSocket::CMsgSocket;

    std::string delivered;
    int closes = 0;
    std::function<void()> afterwards = [] {}; ///< called after each record

private:
    void OnReadMsg(CCommMsg* record) override {
        delivered += TakeWire(record);
        afterwards();
    }
    void OnClose() override { ++closes; }
};
