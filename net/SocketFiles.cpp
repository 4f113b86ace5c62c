#include <foundation/Handle.h>
#include <net/Winsock.h>
#include <tessel/net/commmsg.h>
#include <tessel/net/socket.h>

#include <mswsock.h>

#include <cstddef>
#include <new>
#include <vector>

using tessel::ErrorOf;
using tessel::Handle;

namespace {

constexpr int kFailed = 1;
constexpr std::size_t kChunk = 65536;

Handle OpenFile(const wchar_t* path, DWORD access, DWORD disposition, DWORD flags) {
    return Handle(CreateFileW(path, access, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, disposition, flags, nullptr));
}

/// How receiving all available bytes ended.
struct Burst {
    int lastReceived;
    DWORD writeError;
};

/// Writes received bytes to a file until no more are available.
/// @param total  increases by the number of bytes written
Burst ReceiveBurst(SOCKET socket, HANDLE file, std::vector<char>& chunk, unsigned long long& total) {
    for (;;) {
        const int received = recv(socket, chunk.data(), static_cast<int>(chunk.size()), 0);
        if (received <= 0) return {received, ERROR_SUCCESS};
        DWORD written = 0;
        if (::WriteFile(file, chunk.data(), static_cast<DWORD>(received), &written, nullptr) == FALSE) {
            return {received, GetLastError()};
        }
        total += written;
        if (written != static_cast<DWORD>(received)) return {received, ERROR_DISK_FULL};
    }
}

/// The result of receiving a file after a set of events; the last test that applies decides.
int ResultOf(const WSANETWORKEVENTS& events) {
    int result = 0;
    if ((events.lNetworkEvents & FD_READ) != 0) result = events.iErrorCode[FD_READ_BIT];
    if ((events.lNetworkEvents & FD_CLOSE) != 0) result = events.iErrorCode[FD_CLOSE_BIT];
    if ((events.lNetworkEvents & (FD_ACCEPT | FD_WRITE)) != 0) result = kFailed;
    return result;
}

} // namespace

int CSocket::WriteFile(const CCommMsg* head, const wchar_t* path) {
    if (head == nullptr) return WSAEFAULT;
    const Handle file = OpenFile(path, GENERIC_READ, OPEN_EXISTING, FILE_FLAG_SEQUENTIAL_SCAN);
    if (!file) return static_cast<int>(GetLastError());
    TRANSMIT_FILE_BUFFERS buffers{head->GetMsg(), head->GetXmitLength(), nullptr, 0};
    if (TransmitFile(m_Socket, file.Get(), 0, 0, nullptr, &buffers, 0) == FALSE) return WSAGetLastError();
    return 0;
}

int CSocket::ReadFile(const wchar_t* path, unsigned int expectedSize) {
    const Handle file = OpenFile(path, GENERIC_WRITE, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL);
    if (!file) return static_cast<int>(GetLastError());
    try {
        return ReceiveFile(file.Get(), expectedSize);
    } catch (const std::bad_alloc&) {
        return ERROR_NOT_ENOUGH_MEMORY;
    }
}

int CSocket::ReceiveFile(HANDLE file, unsigned int expectedSize) {
    std::vector<char> chunk(kChunk);
    unsigned long long total = 0;
    int result = 0;
    while (result == 0) {
        const Burst burst = ReceiveBurst(m_Socket, file, chunk, total);
        const int error = ErrorOf(burst.lastReceived);
        if (burst.writeError != ERROR_SUCCESS) return static_cast<int>(burst.writeError);
        // ODD-82: tested only when no more bytes are available, so the file also has bytes beyond the expected ones.
        if (total >= expectedSize) return 0;
        if (burst.lastReceived == 0) return kFailed;
        result = error == WSAEWOULDBLOCK ? WaitForMoreOfFile() : error;
    }
    return result;
}

int CSocket::WaitForMoreOfFile() {
    if (m_hEvent == INVALID_HANDLE_VALUE) return kFailed; // as a handle, this value means the current process
    if (WaitForMultipleObjects(1, &m_hEvent, FALSE, m_ulTimeout) != WAIT_OBJECT_0) return kFailed;
    WSANETWORKEVENTS events{};
    const int error = GetNetworkEvents(&events);
    return error != 0 ? error : ResultOf(events);
}
