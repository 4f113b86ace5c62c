#include <foundation/SharedOwners.h>
#include <net/Winsock.h>
#include <tessel/net/socket.h>

using tessel::ErrorOf;
using tessel::SetOf;

namespace {

template <class Value> bool HasOption(SOCKET socket, int name, Value wanted) {
    Value value{};
    int size = sizeof value;
    return getsockopt(socket, SOL_SOCKET, name, reinterpret_cast<char*>(&value), &size) == 0 && value == wanted;
}

/// Finds out what happened to a socket in MODE_WINDOW, for which the system records no events.
/// @return FD_ACCEPT, FD_READ or FD_CLOSE; 0 for none
long PollEvents(SOCKET socket) {
    fd_set readable = SetOf(socket);
    timeval none{0, 0};
    u_long waiting = 0;
    if (select(0, &readable, nullptr, nullptr, &none) <= 0) return 0;
    if (HasOption<BOOL>(socket, SO_ACCEPTCONN, TRUE)) return FD_ACCEPT;
    if (HasOption<int>(socket, SO_TYPE, SOCK_DGRAM)) return FD_READ;
    return ioctlsocket(socket, static_cast<long>(FIONREAD), &waiting) == 0 && waiting > 0 ? FD_READ : FD_CLOSE;
}

} // namespace

int CSocket::SetMode(MODE mode, unsigned int message, long events) {
    m_Mode = mode;
    return ErrorOf(ConfigureMode(message, events));
}

int CSocket::ConfigureMode(unsigned int message, long events) {
    u_long blocking = 0;
    switch (m_Mode) {
    case MODE_BLOCKING:
        WSAEventSelect(m_Socket, nullptr, 0);
        WSAAsyncSelect(m_Socket, nullptr, 0, 0);
        return ioctlsocket(m_Socket, static_cast<long>(FIONBIO), &blocking);
    case MODE_NONBLOCKING:
        WSAEventSelect(m_Socket, nullptr, 0); // also makes it non-blocking
        WSAAsyncSelect(m_Socket, nullptr, 0, 0);
        return 0;
    case MODE_WINDOW: return WSAAsyncSelect(m_Socket, m_hWindow, message, events);
    case MODE_EVENT: return SelectNewEvent(events);
    }
    return 0;
}

int CSocket::SelectNewEvent(long events) {
    const HANDLE event = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    if (event == nullptr) return SOCKET_ERROR;
    // ODD-80: an earlier event stays open.
    (void)tessel::RemoveOwner(m_hEvent);
    m_hEvent = event;
    return WSAEventSelect(m_Socket, m_hEvent, events);
}

void CSocket::CancelNotification() {
    if (m_Mode == MODE_WINDOW) WSAAsyncSelect(m_Socket, m_hWindow, 0, 0);
    if (m_Mode == MODE_EVENT) WSAEventSelect(m_Socket, nullptr, 0);
}

int CSocket::Select(timeval* timeout) {
    fd_set readable = SetOf(m_Socket);
    fd_set writable = SetOf(m_Socket);
    fd_set exceptional = SetOf(m_Socket);
    const int ready = select(0, &readable, &writable, &exceptional, timeout);
    if (ready == SOCKET_ERROR) return WSAGetLastError();
    return static_cast<int>(readable.fd_count | writable.fd_count << 1 | exceptional.fd_count << 2);
}

int CSocket::WaitUntilWritable(timeval* timeout) const {
    fd_set writable = SetOf(m_Socket);
    return select(0, nullptr, &writable, nullptr, timeout);
}

int CSocket::GetNetworkEvents(WSANETWORKEVENTS* events) const {
    if (events == nullptr) return WSAEFAULT;
    const HANDLE event = m_hEvent == INVALID_HANDLE_VALUE ? nullptr : m_hEvent; // MODE_WINDOW has none to reset
    return ErrorOf(WSAEnumNetworkEvents(m_Socket, event, events));
}

int CSocket::ProcessEvents() {
    WSANETWORKEVENTS events{};
    const int error = GetNetworkEvents(&events);
    if (error != 0) return error;
    if (m_Mode == MODE_WINDOW) events.lNetworkEvents |= PollEvents(m_Socket);
    if ((events.lNetworkEvents & FD_ACCEPT) != 0) OnAccept();
    if ((events.lNetworkEvents & FD_CONNECT) != 0) OnConnect();
    if ((events.lNetworkEvents & FD_READ) != 0) OnRead();
    if ((events.lNetworkEvents & FD_WRITE) != 0) OnWrite();
    if ((events.lNetworkEvents & FD_CLOSE) != 0) OnClose();
    return 0;
}

void CSocket::OnAccept() {}

void CSocket::OnConnect() {}

void CSocket::OnRead() {}

void CSocket::OnWrite() {}

void CSocket::OnClose() {}
