#pragma once

#include <tessel/platform.h>
#include <winsock2.h>
#include <ws2tcpip.h>

#include <algorithm>
#include <limits>

namespace tessel {

/// Keeps Winsock started for as long as the object lives.
class WinsockSession {
public:
    explicit WinsockSession(WORD version) : m_started(WSAStartup(version, &m_data) == 0) {}
    ~WinsockSession() {
        if (m_started) WSACleanup();
    }
    WinsockSession(const WinsockSession&) = delete;
    WinsockSession& operator=(const WinsockSession&) = delete;

private:
    WSADATA m_data{};
    bool m_started;
};

/// Turns the result of a Winsock call into a code; to be called next after it.
/// @return 0, or the error of the call
inline int ErrorOf(int result) {
    return result == SOCKET_ERROR ? WSAGetLastError() : 0;
}

/// A size as Winsock takes it, cut to what it can take.
inline int SizeForWinsock(unsigned int size) {
    return static_cast<int>(std::min(size, static_cast<unsigned int>(std::numeric_limits<int>::max())));
}

} // namespace tessel
