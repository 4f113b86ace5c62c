#include "support/Loopback.h"

#include <gtest/gtest.h>

#include <cstring>
#include <initializer_list>
#include <random>
#include <string_view>

namespace {

constexpr int kStreams = 30000; ///< of records, and of typed messages
constexpr int kConnections = 300;
constexpr unsigned int kBuffer = 64;
constexpr unsigned int kPatience = 9; ///< pauses after which a message in parts is given up

std::mt19937 chance(20011117);

unsigned int Below(unsigned int limit) {
    return static_cast<unsigned int>(chance() % limit);
}

template <class T> T OneOf(std::initializer_list<T> values) {
    return values.begin()[Below(static_cast<unsigned int>(values.size()))];
}

/// What a hostile peer sends, handed out in pieces of any size; then the connection closes, breaks or stalls.
struct HostileWire {
    std::string bytes{};
    std::size_t at = 0;
    int end = 0; ///< what follows the bytes: 0 closes, else an error
    bool hesitant = false;
    unsigned int receives = 0, sleeps = 0;
    std::size_t due = 0; ///< end of the last record that one receive, one record can have returned by now
} wire;

/// The end of the record at a place in a stream, found without the library.
/// @return the same place when there is no whole record that fits the buffer
std::size_t RecordEnd(std::string_view stream, std::size_t at) {
    unsigned int length = 0;
    if (stream.size() - at < sizeof length) return at;
    std::memcpy(&length, stream.data() + at, sizeof length);
    const std::size_t left = stream.size() - at - sizeof length;
    return length > kBuffer - sizeof length || length > left ? at : at + sizeof length + length;
}

int ReceiveFromWire(SOCKET, char* buffer, int size, int flags) {
    ++wire.receives;
    const std::size_t left = wire.bytes.size() - wire.at;
    WSASetLastError(left == 0 ? wire.end : WSAEWOULDBLOCK);
    if (left == 0 && wire.end == 0) return 0;
    if (left == 0 || (wire.hesitant && Below(4) == 0)) return SOCKET_ERROR;
    const std::size_t most = std::min(left, static_cast<std::size_t>(size));
    const std::size_t got = most == 0 || Below(2) == 0 ? most : 1 + Below(static_cast<unsigned int>(most));
    wire.bytes.copy(buffer, got, wire.at);
    if ((flags & MSG_PEEK) == 0) wire.at += got;
    const std::size_t next = RecordEnd(wire.bytes, wire.due);
    if (next <= wire.at) wire.due = next;
    return static_cast<int>(got);
}

void AddNoise(std::string& bytes, unsigned int length) {
    for (; length > 0; --length) bytes += static_cast<char>(chance());
}

void AddWord(std::string& bytes, unsigned int value) {
    bytes.append(reinterpret_cast<const char*>(&value), sizeof value);
}

/// Lengths that a receiver may stumble over, besides small ones.
unsigned int HostileLength() {
    return Below(3) != 0 ? Below(40)
                         : OneOf({0U, kBuffer - 5, kBuffer - 4, kBuffer - 3, kBuffer, 0xFFFFU, 0x7FFFFFFFU, 0x80000000U,
                                  0xFFFFFFF6U, 0xFFFFFFFBU, 0xFFFFFFFCU, 0xFFFFFFFFU});
}

/// Begins a stream; its bytes are added next.
std::string& StartWire() {
    wire = {.end = OneOf({0, WSAECONNRESET, WSAEWOULDBLOCK})};
    return wire.bytes;
}

void AddHostileRecords(std::string& stream) {
    for (unsigned int records = Below(8); records > 0; --records) {
        const unsigned int length = HostileLength();
        AddWord(stream, length);
        AddNoise(stream, Below(8) == 0 ? Below(100) : std::min(length, 2 * kBuffer));
    }
    stream.resize(stream.size() - std::min<std::size_t>(stream.size(), Below(6)));
}

/// The whole records at the front of a stream that fit.
std::string_view SoundPart(std::string_view stream) {
    std::size_t at = 0;
    for (std::size_t next = 0; (next = RecordEnd(stream, at)) != at;) at = next;
    return stream.substr(0, at);
}

/// Adds a typed record: its two lengths, its type and its data, each of which may lie.
void AddHostileMessage(std::string& stream) {
    const unsigned int data = Below(256) == 0 ? 5000 + Below(3000) : HostileLength();
    AddWord(stream, Below(3) == 0 ? HostileLength() : data + 10);
    AddWord(stream, data);
    AddNoise(stream, 2 + std::min(data, Below(16) == 0 ? 9000u : 60u));
    if (Below(4) == 0) stream.resize(Below(static_cast<unsigned int>(stream.size())));
    AddNoise(stream, Below(2) * Below(20));
}

/// Whether a stream begins with a whole message whose lengths agree.
bool BeginsWithMessage(const std::string& stream) {
    MESSAGE head;
    if (stream.size() < sizeof head) return false;
    std::memcpy(&head, stream.data(), sizeof head);
    return head.ulTotalLength >= sizeof head && head.ulTotalLength <= stream.size() &&
           head.ulDataLength <= head.ulTotalLength - sizeof head;
}

/// Replaces what Winsock receives and reports. Checked builds find what is written beyond a record's memory.
struct HostilePeer : testing::Test {
    ImportPatch receive{"recv", &recv, ReceiveFromWire};
    ImportPatch events{"WSAEnumNetworkEvents", &WSAEnumNetworkEvents,
                       [](SOCKET, WSAEVENT, auto* due) { return due->lNetworkEvents = FD_READ, 0; }};
    ImportPatch sleep{"Sleep", &Sleep, [](DWORD) { ++wire.sleeps; }};
};

} // namespace

TEST_F(HostilePeer, GetsWholeRecordsAndNothingElseByEventAndByReading) {
    for (int stream = 0; stream < kStreams; ++stream) {
        AddHostileRecords(StartWire());
        RecordReceiver receiver(kBuffer, CSocket::MODE_NONBLOCKING);
        receiver.InitConnected();
        while (receiver.closes == 0 && wire.receives <= wire.bytes.size() + 1) receiver.ProcessEvents();
        ASSERT_EQ(receiver.closes, 1) << "stream " << stream;
        ASSERT_EQ(receiver.delivered, SoundPart(wire.bytes)) << "stream " << stream;

        wire.at = wire.due = wire.receives = 0;
        CMsgSocket reader(kBuffer, CSocket::MODE_BLOCKING);
        std::string delivered;
        CCommMsg* record = nullptr;
        int result = 0;
        while ((result = reader.Read(&record)) == 0) delivered += TakeWire(record);
        ASSERT_EQ(delivered, std::string_view(wire.bytes).substr(0, wire.due)) << "stream " << stream;
        ASSERT_TRUE(result == WSAEDISCON || result == wire.end) << result << " in stream " << stream;
        ASSERT_LE(wire.receives, wire.bytes.size() + 1);
    }
}

TEST_F(HostilePeer, TypedMessagesLieInsideTheBufferOrFail) {
    const ImportPatch memory("malloc", &malloc,
                             [](std::size_t size) { return size > 1 << 14 ? nullptr : std::malloc(size); });
    CSocket reader;
    for (int stream = 0; stream < kStreams; ++stream) {
        AddHostileMessage(StartWire());
        wire.hesitant = Below(2) == 0;
        MESSAGE* message = nullptr;
        unsigned long length = 0;
        const int result = reader.ReadMessage(INVALID_SOCKET, &message, length);
        ASSERT_LE(wire.sleeps, 10 * (wire.receives + 1)) << "stream " << stream;
        const bool awaited = !wire.hesitant && wire.sleeps < kPatience;
        ASSERT_TRUE(result == 0 ? BeginsWithMessage(wire.bytes) : !awaited || !BeginsWithMessage(wire.bytes)) << stream;
        ASSERT_EQ(message == nullptr, result == 1) << "stream " << stream;
        if (result != 0) continue;
        ASSERT_EQ(message->ulDataLength, length);
        ASSERT_EQ(wire.at, message->ulTotalLength) << "stream " << stream;
        ASSERT_EQ(std::memcmp(message, wire.bytes.data(), wire.at), 0) << "stream " << stream;
    }
}

TEST(HostileConnection, GetsWholeRecordsDeliveredByEventAndNothingElse) {
    for (int stream = 0; stream < kConnections; ++stream) {
        AddHostileRecords(StartWire());
        Connection connection;
        RecordReceiver receiver(connection.handle, kBuffer, CSocket::MODE_EVENT, nullptr);
        ASSERT_EQ(receiver.InitConnected(), 0);
        connection.Send(wire.bytes);
        connection.Close();
        while (receiver.closes == 0) {
            ASSERT_EQ(WaitForSingleObject(receiver.GetEventHandle(), 10000), WAIT_OBJECT_0) << "stream " << stream;
            receiver.ProcessEvents();
        }
        ASSERT_EQ(receiver.delivered, SoundPart(wire.bytes)) << "stream " << stream;
    }
}
