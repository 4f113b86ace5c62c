#pragma once

#include <winsock2.h>

#include <ws2tcpip.h>

#include <string>

/// A listening socket on 127.0.0.1 with a port of the system's choice, by bare Winsock calls.
class LoopbackListener {
public:
    LoopbackListener() {
        WSADATA data;
        WSAStartup(MAKEWORD(2, 2), &data);
        m_listener = socket(AF_INET, SOCK_STREAM, 0);
        sockaddr_in address = Endpoint(0);
        int size = sizeof address;
        bind(m_listener, reinterpret_cast<sockaddr*>(&address), size);
        getsockname(m_listener, reinterpret_cast<sockaddr*>(&address), &size);
        m_port = ntohs(address.sin_port);
        listen(m_listener, SOMAXCONN);
    }
    ~LoopbackListener() {
        closesocket(m_listener);
        WSACleanup();
    }
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

    /// A port on 127.0.0.1.
    static sockaddr_in Endpoint(u_short port) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(port);
        address.sin_addr.s_addr = Address();
        return address;
    }

private:
    static SOCKET WithoutDelay(SOCKET socket) {
        const int noDelay = 1;
        setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, reinterpret_cast<const char*>(&noDelay), sizeof noDelay);
        return socket;
    }

    SOCKET m_listener;
    u_short m_port;
};

/// The wire form of a record: its length in four bytes, the lowest first, and its data.
inline std::string Wire(const std::string& data) {
    std::string wire;
    for (unsigned int shift = 0; shift < 32; shift += 8) wire += static_cast<char>(data.size() >> shift & 0xFF);
    return wire + data;
}
