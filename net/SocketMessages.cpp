#include <net/Winsock.h>
#include <tessel/net/socket.h>

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <new>

static_assert(sizeof(MESSAGE) == 10 && offsetof(MESSAGE, ulDataLength) == 4 && offsetof(MESSAGE, usType) == 8);

namespace {

constexpr int kFailed = 1;
constexpr int kLengths = offsetof(MESSAGE, usType); // what a head must hold to be followed
constexpr unsigned int kFirstCapacity = 5130;
constexpr unsigned int kLongestRecord = std::numeric_limits<int>::max();
constexpr int kPatience = 10;
constexpr DWORD kPauseMs = 100;
constexpr long kSettleSeconds = 3;

/// The record that was received last. It is never given back, so messages stay valid for as long as they can.
struct {
    char* bytes;
    unsigned int capacity;
} lastRecord;

bool HasBuffer() {
    if (lastRecord.bytes == nullptr) lastRecord = {new (std::nothrow) char[kFirstCapacity], kFirstCapacity};
    return lastRecord.bytes != nullptr;
}

/// Looks at the lengths of the next record.
/// @return true: they are there; false: the peer closed, an error, or they have not come in time
bool PeekLengths(SOCKET socket, MESSAGE& head) {
    for (int patience = kPatience;; Sleep(kPauseMs)) {
        const int got = recv(socket, lastRecord.bytes, kFirstCapacity, MSG_PEEK);
        if (got <= 0) return false;
        std::memcpy(&head, lastRecord.bytes, kLengths);
        if (got >= kLengths) return true;
        // GUARD-70: lengths that came in part are awaited.
        if (--patience == 0) return false;
    }
}

/// Whether the lengths agree: the data lies inside a record that is at least a head long.
bool IsSound(const MESSAGE& head) {
    return head.ulTotalLength >= sizeof head && head.ulDataLength <= head.ulTotalLength - sizeof head;
}

bool ReceiveAll(SOCKET socket, char* bytes, unsigned int size) {
    int patience = kPatience;
    while (size > 0) {
        const int got = recv(socket, bytes, tessel::SizeForWinsock(size), 0);
        if (got > 0) {
            bytes += got;
            size -= static_cast<unsigned int>(got);
            patience = kPatience;
        } else if (got == SOCKET_ERROR && WSAGetLastError() == WSAEWOULDBLOCK && --patience > 0) {
            Sleep(kPauseMs);
        } else {
            return false;
        }
    }
    return true;
}

/// Receives a record into the buffer, or into a longer one that takes its place.
bool ReceiveRecord(SOCKET socket, unsigned int size) {
    if (size <= lastRecord.capacity) return ReceiveAll(socket, lastRecord.bytes, size);
    // GUARD-72: the longer buffer stays only once the whole record came; a bare claim would occupy memory for ever.
    std::unique_ptr<char[]> longer(new (std::nothrow) char[size]);
    if (longer == nullptr || !ReceiveAll(socket, longer.get(), size)) return false;
    delete[] lastRecord.bytes;
    lastRecord = {longer.release(), size};
    return true;
}

} // namespace

// ODD-76: the socket to read from is an argument; the object's own plays no part.
int CSocket::ReadMessage(SOCKET socket, MESSAGE** message, unsigned long& dataLength) {
    MESSAGE head{};
    if (message == nullptr || !HasBuffer() || !PeekLengths(socket, head)) return kFailed;
    dataLength = head.ulDataLength; // also of a record that then fails
    // GUARD-71: the caller would read behind the record, or find one that never came.
    if (!IsSound(head) || !ReceiveRecord(socket, head.ulTotalLength)) return kFailed;
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
    // ODD-83: what a non-blocking socket does not take at once is lost.
    const int result = tessel::ErrorOf(send(m_Socket, record.get(), static_cast<int>(size), 0));
    timeval settle{kSettleSeconds, 0};
    (void)WaitUntilWritable(&settle); // a pause for the peer; the send has decided already
    return result;
}
