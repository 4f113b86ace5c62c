#pragma once

#include <tessel/foundation/platform.h>
#include <winsock2.h>
#include <ws2tcpip.h>

#include <algorithm>
#include <cstring>
#include <limits>

namespace tessel {

constexpr WORD kWinsockVersion = MAKEWORD(2, 0);

/// Starts Winsock, and ends it with the object.
class WinsockSession {
public:
    explicit WinsockSession(WORD version) : m_started(WSAStartup(version, &m_data) == 0) {}
    ~WinsockSession() {
        const int error = WSAGetLastError(); // the cleanup must not change the caller's error
        if (m_started) WSACleanup();
        WSASetLastError(error);
    }
    WinsockSession(const WinsockSession&) = delete;
    WinsockSession& operator=(const WinsockSession&) = delete;

private:
    WSADATA m_data{};
    bool m_started;
};

/// The error code for the result of a Winsock call; call it directly after that.
/// @return 0 or a Winsock error
inline int ErrorOf(int result) {
    return result == SOCKET_ERROR ? WSAGetLastError() : 0;
}

/// Limits a size to what Winsock takes.
inline int SizeForWinsock(unsigned int size) {
    return static_cast<int>(std::min(size, static_cast<unsigned int>(std::numeric_limits<int>::max())));
}

/// An IPv4 endpoint.
/// @param address  in network byte order
/// @param port     in host byte order
inline sockaddr_in Endpoint(unsigned long address, unsigned short port) {
    sockaddr_in endpoint{};
    endpoint.sin_family = AF_INET;
    endpoint.sin_addr.s_addr = address;
    endpoint.sin_port = htons(port);
    return endpoint;
}

/// A set of one socket for select.
inline fd_set SetOf(SOCKET socket) {
    fd_set set{};
    set.fd_count = 1;
    set.fd_array[0] = socket;
    return set;
}

/// Reads the first address of a host.
/// @param host     result of a look-up, or null
/// @param address  receives the address
/// @return true: read; false: unknown host, or no IPv4 address
inline bool FirstAddress(const hostent* host, in_addr& address) {
    if (host == nullptr || host->h_addrtype != AF_INET || host->h_length != sizeof address) return false;
    if (host->h_addr_list[0] == nullptr) return false;
    std::memcpy(&address, host->h_addr_list[0], sizeof address);
    return true;
}

} // namespace tessel
