#include <net/Winsock.h>
#include <tessel/net/socket.h>

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <new>

namespace {

constexpr int kFailed = 1;
constexpr int kLengthsSize = offsetof(MESSAGE, usType); // bytes of both lengths
constexpr unsigned int kFirstCapacity = 5130;
constexpr unsigned int kLongestRecord = std::numeric_limits<int>::max();
constexpr int kRetries = 10;
constexpr DWORD kPauseMs = 100;
constexpr long kSettleSeconds = 3;

/// The buffer of the last record. It is never freed, so that the record stays valid until the next call.
struct {
    char* bytes;
    unsigned int capacity;
} lastRecord;

bool HasBuffer() {
    if (lastRecord.bytes == nullptr) lastRecord = {new (std::nothrow) char[kFirstCapacity], kFirstCapacity};
    return lastRecord.bytes != nullptr;
}

/// Peeks at the lengths of the next record.
/// @return true: both are there; false: the peer closed, an error, or a time-out
bool PeekLengthsSize(SOCKET socket, MESSAGE& head) {
    for (int retries = kRetries;; Sleep(kPauseMs)) {
        const int received = recv(socket, lastRecord.bytes, kFirstCapacity, MSG_PEEK);
        if (received <= 0) return false;
        std::memcpy(&head, lastRecord.bytes, kLengthsSize);
        if (received >= kLengthsSize) return true;
        // GUARD-70: the rest of incomplete lengths is awaited.
        if (--retries == 0) return false;
    }
}

/// Whether the lengths agree: the record holds its head and its data.
bool LengthsAgree(const MESSAGE& head) {
    return head.ulTotalLength >= sizeof head && head.ulDataLength <= head.ulTotalLength - sizeof head;
}

bool ReceiveAll(SOCKET socket, char* bytes, unsigned int size) {
    int retries = kRetries;
    while (size > 0) {
        const int received = recv(socket, bytes, tessel::SizeForWinsock(size), 0);
        if (received > 0) {
            bytes += received;
            size -= static_cast<unsigned int>(received);
            retries = kRetries;
        } else if (received == SOCKET_ERROR && WSAGetLastError() == WSAEWOULDBLOCK && --retries > 0) {
            Sleep(kPauseMs);
        } else {
            return false;
        }
    }
    return true;
}

/// Receives a record into the buffer, or into a longer one that replaces it.
bool ReceiveRecord(SOCKET socket, unsigned int size) {
    if (size <= lastRecord.capacity) return ReceiveAll(socket, lastRecord.bytes, size);
    // GUARD-72: a length alone must not occupy memory indefinitely, so the record has to arrive first.
    std::unique_ptr<char[]> longer(new (std::nothrow) char[size]);
    if (longer == nullptr || !ReceiveAll(socket, longer.get(), size)) return false;
    delete[] lastRecord.bytes;
    lastRecord = {longer.release(), size};
    return true;
}

} // namespace

// ODD-76: reads from the argument, not from the object's own socket.
int CSocket::ReadMessage(SOCKET socket, MESSAGE** message, unsigned long& dataLength) {
    MESSAGE head{};
    if (message == nullptr || !HasBuffer() || !PeekLengthsSize(socket, head)) return kFailed;
    dataLength = head.ulDataLength; // also when the record then fails
    // GUARD-71: the caller would read beyond the record.
    if (!LengthsAgree(head) || !ReceiveRecord(socket, head.ulTotalLength)) return kFailed;
    *message = reinterpret_cast<MESSAGE*>(lastRecord.bytes);
    return 0;
}

int CSocket::WriteMessage(unsigned short type, const char* data, unsigned long dataLength) {
    if (data == nullptr && dataLength != 0) return WSAEFAULT;
    // GUARD-73: longer records would wrap, or not fit one send.
    if (dataLength > kLongestRecord - sizeof(MESSAGE)) return WSAENOBUFS;
    if (WaitUntilWritable(nullptr) == SOCKET_ERROR) {
        m_bConnected = false;
        return WSAGetLastError();
    }
    const auto size = static_cast<unsigned int>(sizeof(MESSAGE) + dataLength);
    const std::unique_ptr<char[]> record(new (std::nothrow) char[size]);
    if (record == nullptr) return WSAENOBUFS;
    const MESSAGE head{size, static_cast<unsigned int>(dataLength), type};
    std::memcpy(record.get(), &head, sizeof head);
    if (dataLength != 0) std::memcpy(record.get() + sizeof head, data, dataLength);
    // ODD-83: the part that a non-blocking socket does not take at once is lost.
    const int result = tessel::ErrorOf(send(m_Socket, record.get(), static_cast<int>(size), 0));
    timeval settle{kSettleSeconds, 0};
    (void)WaitUntilWritable(&settle); // a pause for the peer; the result is that of sending
    return result;
}
