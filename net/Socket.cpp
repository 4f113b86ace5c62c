#include <foundation/SharedOwners.h>
#include <net/Winsock.h>
#include <tessel/net/ipaddress.h>
#include <tessel/net/socket.h>

#include <cstddef>

struct CSocketLayout {
    static constexpr bool kOn32Bits = sizeof(void*) == 4;
    static_assert(offsetof(CSocket, m_Mode) == sizeof(void*));
    static_assert(!kOn32Bits || offsetof(CSocket, m_hEvent) == 8);
    static_assert(!kOn32Bits || offsetof(CSocket, m_hWindow) == 12);
    static_assert(!kOn32Bits || offsetof(CSocket, m_ulLocalAddress) == 16);
    static_assert(!kOn32Bits || offsetof(CSocket, m_Socket) == 20);
    static_assert(!kOn32Bits || offsetof(CSocket, m_bConnected) == 24);
    static_assert(!kOn32Bits || offsetof(CSocket, m_usPort) == 26);
    static_assert(!kOn32Bits || offsetof(CSocket, m_ulTimeout) == 28);
    static_assert(!kOn32Bits || offsetof(CSocket, m_pExtra) == 32);
    static_assert(!kOn32Bits || sizeof(CSocket) == 36);
};

namespace {

using tessel::AddOwner;
using tessel::RemoveOwner;

constexpr unsigned long kTimeoutMs = 30000;

void StartWinsock() {
    WSADATA data;
    (void)WSAStartup(tessel::kWinsockVersion, &data); // a failure shows in the first call that needs it
}

const void* AsResource(SOCKET socket) {
    return reinterpret_cast<const void*>(socket); // NOLINT(performance-no-int-to-ptr): a handle value, never followed
}

/// Makes a copy an owner of the resource, or leaves it with nothing.
template <class Resource> Resource Share(Resource resource, Resource nothing) {
    return resource == nothing || AddOwner(resource) ? resource : nothing;
}

} // namespace

CSocket::CSocket(SOCKET socket, MODE mode, HWND window) {
    Create(socket, mode, window);
}

CSocket::CSocket(HWND window) {
    Create(INVALID_SOCKET, MODE_WINDOW, window);
}

CSocket::CSocket(MODE mode) {
    Create(INVALID_SOCKET, mode, nullptr);
}

CSocket::CSocket(const CSocket& other) {
    // GUARD-69: a copy starts Winsock too, for its destructor to end, and shares what only the last copy closes.
    StartWinsock();
    ShareWith(other);
}

CSocket& CSocket::operator=(const CSocket& other) {
    if (this == &other) return *this;
    Forget(); // ODD-85: what was held is neither closed nor freed.
    ShareWith(other);
    return *this;
}

CSocket::~CSocket() {
    LetGo();
    WSACleanup();
    m_hWindow = nullptr;
}

void CSocket::Create(SOCKET socket, MODE mode, HWND window) {
    Forget();
    m_hWindow = window;
    m_Socket = socket;
    m_Mode = mode;
    m_bConnected = false;
    m_usPort = 0;
    m_hEvent = INVALID_HANDLE_VALUE;
    m_ulTimeout = kTimeoutMs;
    m_pExtra = nullptr;
    StartWinsock();
    m_ulLocalAddress = 0;
}

bool CSocket::HasIpAddress(const CIpAddress& address) const {
    return static_cast<unsigned long>(address) == m_ulLocalAddress;
}

void CSocket::ShareWith(const CSocket& other) {
    m_Mode = other.m_Mode;
    m_hEvent = Share<HANDLE>(other.m_hEvent, INVALID_HANDLE_VALUE);
    m_hWindow = other.m_hWindow;
    m_ulLocalAddress = other.m_ulLocalAddress;
    m_Socket = other.m_Socket;
    if (m_Socket != INVALID_SOCKET && !AddOwner(AsResource(m_Socket))) m_Socket = INVALID_SOCKET;
    m_bConnected = other.m_bConnected && m_Socket == other.m_Socket;
    m_usPort = other.m_usPort;
    m_ulTimeout = other.m_ulTimeout;
    m_pExtra = Share<void*>(other.m_pExtra, nullptr);
}

void CSocket::Forget() {
    (void)RemoveOwner(m_hEvent);
    (void)RemoveOwner(AsResource(m_Socket));
    (void)RemoveOwner(m_pExtra);
}

void CSocket::LetGo() {
    if (m_hEvent != INVALID_HANDLE_VALUE && RemoveOwner(m_hEvent)) {
        ResetEvent(m_hEvent);
        CloseHandle(m_hEvent);
    }
    (void)CloseSocket();
    if (m_pExtra != nullptr && RemoveOwner(m_pExtra)) HeapFree(GetProcessHeap(), 0, m_pExtra);
}

int CSocket::OpenSocket(int type, int protocol) {
    (void)CloseSocket();
    m_bConnected = false;
    m_Socket = socket(AF_INET, type, protocol);
    return m_Socket == INVALID_SOCKET ? SOCKET_ERROR : 0;
}

int CSocket::CloseSocket() {
    const SOCKET closing = m_Socket;
    m_Socket = INVALID_SOCKET;
    if (closing == INVALID_SOCKET || !RemoveOwner(AsResource(closing))) return 0;
    return closesocket(closing);
}
