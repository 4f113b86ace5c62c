#pragma once

#include <winsock2.h> // before windows.h, which the others bring
#include <ws2tcpip.h>

#include "support/ImportPatch.h"
#include "support/LoopbackListener.h"

#include <tessel/net/socket.h>

#include <algorithm>
#include <memory>
#include <vector>

constexpr wchar_t kOwn[] = L"127.0.0.1";
constexpr wchar_t kOwnMask[] = L"255.0.0.0";

inline const unsigned long kLoopback = htonl(INADDR_LOOPBACK);

inline INTERFACE_INFO Interface(const char* address, const char* mask, unsigned long flags = IFF_UP) {
    INTERFACE_INFO entry{};
    entry.iiFlags = flags;
    entry.iiAddress.AddressIn.sin_addr.s_addr = inet_addr(address);
    entry.iiNetmask.AddressIn.sin_addr.s_addr = inet_addr(mask);
    return entry;
}

/// The machine's interfaces as a test wants them, for as long as the object lives: by default loopback, which does not
/// say that it is loopback.
class Interfaces {
public:
    explicit Interfaces(std::vector<INTERFACE_INFO> wanted = {Interface("127.0.0.1", "255.0.0.0")})
        : m_patch(L"Tessel.dll", "WSAIoctl", &Answer) {
        list = std::move(wanted);
    }
    static inline std::vector<INTERFACE_INFO> list;

private:
    static int WSAAPI Answer(SOCKET socket, DWORD code, void* in, DWORD inSize, void* out, DWORD outSize,
                             DWORD* returned, WSAOVERLAPPED* overlapped, LPWSAOVERLAPPED_COMPLETION_ROUTINE done) {
        if (code != static_cast<DWORD>(SIO_GET_INTERFACE_LIST)) {
            return WSAIoctl(socket, code, in, inSize, out, outSize, returned, overlapped, done);
        }
        *returned = static_cast<DWORD>(list.size() * sizeof(INTERFACE_INFO));
        if (*returned > outSize || list.empty()) {
            WSASetLastError(WSAEFAULT);
            return SOCKET_ERROR;
        }
        std::copy(list.begin(), list.end(), static_cast<INTERFACE_INFO*>(out));
        return 0;
    }
    ImportPatch m_patch;
};

/// A port that nobody uses.
inline unsigned short FreePort(int type = SOCK_STREAM) {
    const CSocket startsWinsock;
    const SOCKET probe = socket(AF_INET, type, 0);
    sockaddr_in own{};
    int size = sizeof own;
    own.sin_family = AF_INET;
    own.sin_addr.s_addr = kLoopback;
    bind(probe, reinterpret_cast<sockaddr*>(&own), size);
    getsockname(probe, reinterpret_cast<sockaddr*>(&own), &size);
    closesocket(probe);
    return ntohs(own.sin_port);
}

/// What AnswerReady() says of any socket; 0: nothing in time.
inline int readySockets = 1;

inline int WSAAPI AnswerReady(int, fd_set*, fd_set*, fd_set*, const timeval*) {
    return readySockets;
}

/// A connection over loopback. Its near end is a bare handle to adopt, or of the library's in the mode in question; the
/// far end is bare.
class Connection {
public:
    Connection() {
        const LoopbackListener listener;
        bare = LoopbackListener::Connect(listener.Port());
        handle = listener.Accept();
    }
    explicit Connection(CSocket::MODE mode) : Connection() {
        own = std::make_unique<CSocket>(handle, mode, nullptr);
        own->InitConnected();
    }
    ~Connection() { Close(); }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    void Send(const void* data, std::size_t size) const {
        send(bare, static_cast<const char*>(data), static_cast<int>(size), 0);
    }
    void Close() {
        if (bare != INVALID_SOCKET) closesocket(bare);
        bare = INVALID_SOCKET;
    }
    void Reset() {
        const linger atOnce{1, 0};
        setsockopt(bare, SOL_SOCKET, SO_LINGER, reinterpret_cast<const char*>(&atOnce), sizeof atOnce);
        Close();
    }

    const CSocket keepsWinsockStarted;
    SOCKET bare;
    SOCKET handle; ///< of the near end
    std::unique_ptr<CSocket> own;
};
