#include <net/DottedText.h>
#include <net/Winsock.h>
#include <tessel/net/socket.h>

#include <new>

using tessel::Endpoint;
using tessel::ErrorOf;
using tessel::SetOf;

namespace {

constexpr std::size_t kDropSize = 2048;
constexpr long kStreamEvents = FD_READ | FD_CLOSE;

template <class Value> int SetOption(SOCKET socket, int level, int name, const Value& value) {
    return setsockopt(socket, level, name, reinterpret_cast<const char*>(&value), sizeof value);
}

timeval TimeValue(unsigned int milliseconds) {
    return {static_cast<long>(milliseconds / 1000), static_cast<long>(milliseconds % 1000 * 1000)};
}

/// Receives once and drops the bytes.
/// @return number of bytes; 0 when the peer has closed; else SOCKET_ERROR
int DropReceived(SOCKET socket) {
    char dropped[kDropSize];
    return recv(socket, dropped, sizeof dropped, 0);
}

/// Drops what the peer sends, until it closes.
/// @return 0: it closed; WAIT_TIMEOUT: it did not within the time; else a Winsock error
int DrainWithin(SOCKET socket, unsigned int milliseconds) {
    const ULONGLONG start = GetTickCount64();
    for (;;) {
        const ULONGLONG spent = GetTickCount64() - start;
        // GUARD-241: there is always something to drop when a peer sends without a pause.
        if (spent > milliseconds && milliseconds != INFINITE) return WAIT_TIMEOUT;
        const unsigned int left = spent < milliseconds ? milliseconds - static_cast<unsigned int>(spent) : 0;
        fd_set readable = SetOf(socket);
        timeval wait = TimeValue(left);
        const int ready = select(0, &readable, nullptr, nullptr, milliseconds == INFINITE ? nullptr : &wait);
        if (ready == 0) return WAIT_TIMEOUT;
        const int received = ready == SOCKET_ERROR ? SOCKET_ERROR : DropReceived(socket);
        if (received <= 0) return ErrorOf(received);
    }
}

} // namespace

int CSocket::InitAsync(unsigned short port, const wchar_t* interfaceAddress, const wchar_t* mask) {
    const HANDLE earlierEvent = m_hEvent;
    m_ulLocalAddress = GetLocalNetInterfaceAddress(interfaceAddress, mask);
    // ODD-77: success without a socket, unlike the other set-up operations.
    if (OpenSocket(SOCK_STREAM, 0) == SOCKET_ERROR) return 0;
    int result = BindTo(m_ulLocalAddress, port);
    if (result == 0) result = listen(m_Socket, SOMAXCONN);
    if (result == 0) result = ConfigureMode(WM_SOCKET_ACCEPT, FD_ACCEPT);
    return ResultOfSetUp(result, earlierEvent);
}

int CSocket::InitBroadcast(unsigned short port, const wchar_t* interfaceAddress, const wchar_t* mask) {
    const HANDLE earlierEvent = m_hEvent;
    m_ulLocalAddress = GetLocalNetInterfaceAddress(interfaceAddress, mask);
    int result = OpenSocket(SOCK_DGRAM, IPPROTO_UDP);
    m_usPort = port;
    constexpr BOOL kOn = TRUE;
    if (result == 0) result = SetOption(m_Socket, SOL_SOCKET, SO_BROADCAST, kOn);
    if (result == 0) result = BindTo(INADDR_ANY, port);
    if (result == 0) result = ConfigureMode(WM_SOCKET_DATA, FD_READ);
    return ResultOfSetUp(result, earlierEvent);
}

int CSocket::InitMulticast(unsigned short port, const wchar_t* group, unsigned int ttl, const wchar_t* interfaceAddress,
                           const wchar_t* mask) {
    const HANDLE earlierEvent = m_hEvent;
    m_ulLocalAddress = GetLocalNetInterfaceAddress(interfaceAddress, mask);
    int result = OpenSocket(SOCK_DGRAM, IPPROTO_UDP);
    m_usPort = port;
    if (result == 0) result = BindTo(INADDR_ANY, port);
    if (result == 0) result = ConfigureMode(WM_SOCKET_DATA, FD_READ);
    if (result == 0) result = SetScope(ttl);
    if (result == 0) result = JoinGroup(group);
    return ResultOfSetUp(result, earlierEvent);
}

int CSocket::Connect(unsigned long address, unsigned short port) {
    if (OpenSocket(SOCK_STREAM, 0) == SOCKET_ERROR) return WSAGetLastError();
    const sockaddr_in peer = Endpoint(address, port);
    // ODD-78: after a failure the socket stays open.
    if (connect(m_Socket, reinterpret_cast<const sockaddr*>(&peer), sizeof peer) == SOCKET_ERROR) {
        return WSAGetLastError();
    }
    return InitConnected();
}

int CSocket::Accept(CSocket** out) {
    if (out == nullptr) return WSAEFAULT;
    const SOCKET accepted = accept(m_Socket, nullptr, nullptr);
    if (accepted == INVALID_SOCKET) return WSAGetLastError();
    auto* const connection = new (std::nothrow) CSocket(accepted, m_Mode, m_hWindow);
    if (connection == nullptr) {
        closesocket(accepted);
        return WSAENOBUFS;
    }
    *out = connection;
    return 0;
}

int CSocket::InitConnected() {
    m_bConnected = true;
    return ErrorOf(ConfigureMode(WM_SOCKET_DATA, kStreamEvents));
}

int CSocket::Disconnect() {
    if (m_Socket == INVALID_SOCKET) {
        m_bConnected = false;
        return 0;
    }
    CancelNotification();
    // ODD-79: a socket that cannot be shut down stays open, and connected if it was.
    const int error = StopSending();
    if (error != 0) return error;
    // ODD-206: a socket that does not block is closed at once, although data may still be in transit.
    while (DropReceived(m_Socket) > 0) continue;
    m_bConnected = false;
    return ErrorOf(CloseSocket());
}

int CSocket::DisconnectWithin(unsigned int milliseconds) {
    if (m_Socket == INVALID_SOCKET) {
        m_bConnected = false;
        return 0;
    }
    CancelNotification();
    int error = StopSending();
    if (error == 0) error = DrainWithin(m_Socket, milliseconds);
    if (error == WAIT_TIMEOUT) return WSAETIMEDOUT;
    m_bConnected = false;
    const int closing = ErrorOf(CloseSocket());
    return error != 0 ? error : closing;
}

int CSocket::StopSending() {
    return ErrorOf(shutdown(m_Socket, SD_SEND));
}

int CSocket::BindTo(unsigned long address, unsigned short port) {
    const sockaddr_in own = Endpoint(address, port);
    return bind(m_Socket, reinterpret_cast<const sockaddr*>(&own), sizeof own);
}

int CSocket::ResultOfSetUp(int result, HANDLE earlierEvent) {
    const int error = ErrorOf(result);
    if (error == 0) return 0;
    (void)CloseSocket();
    if (m_hEvent != earlierEvent) {
        (void)CloseHandle(m_hEvent); // created for this socket alone, so it is open
        m_hEvent = INVALID_HANDLE_VALUE;
    }
    return error;
}

int CSocket::SetScope(unsigned int ttl) {
    DWORD returned = 0;
    const int result =
        WSAIoctl(m_Socket, SIO_MULTICAST_SCOPE, &ttl, sizeof ttl, nullptr, 0, &returned, nullptr, nullptr);
    if (result == 0 || WSAGetLastError() != WSAEOPNOTSUPP) return result;
    return SetOption(m_Socket, IPPROTO_IP, IP_MULTICAST_TTL, ttl); // the same on systems without the former
}

int CSocket::JoinGroup(const wchar_t* group) {
    // It fails on an interface without multicast; joining then reports it.
    (void)SetOption(m_Socket, IPPROTO_IP, IP_MULTICAST_IF, m_ulLocalAddress);
    ip_mreq membership{};
    membership.imr_multiaddr.s_addr = group == nullptr ? INADDR_NONE : tessel::ReadDotted<tessel::kSocketText>(group);
    membership.imr_interface.s_addr = m_ulLocalAddress;
    return SetOption(m_Socket, IPPROTO_IP, IP_ADD_MEMBERSHIP, membership);
}
