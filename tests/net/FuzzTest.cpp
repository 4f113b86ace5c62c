#include "RecordReceiver.h"
#include "support/ImportPatch.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <random>

namespace {

constexpr const wchar_t* kLibrary = L"Tessel.dll";
constexpr int kStreams = 80000; ///< for each of the three readers
constexpr unsigned int kBuffer = 64;

std::mt19937 chance(20011117);

unsigned int Below(unsigned int limit) {
    return static_cast<unsigned int>(chance() % limit);
}

template <class T, std::size_t Size> T OneOf(const T (&values)[Size]) {
    return values[Below(Size)];
}

/// What a hostile peer sends, handed out in pieces of any size; then the connection closes, breaks or stalls.
struct HostileWire {
    std::string bytes;
    std::size_t at = 0;
    int end = 0; ///< what follows the bytes: 0 closes, else an error
    bool hesitant = false;
    unsigned int receives = 0;
    unsigned int sleeps = 0;
} wire;

int Fail(int error) {
    WSASetLastError(error);
    return SOCKET_ERROR;
}

int WINAPI ReceiveFromWire(SOCKET, char* buffer, int size, int flags) {
    ++wire.receives;
    const std::size_t left = wire.bytes.size() - wire.at;
    if (left == 0) return wire.end == 0 ? 0 : Fail(wire.end);
    if (wire.hesitant && Below(4) == 0) return Fail(WSAEWOULDBLOCK);
    const std::size_t most = std::min(left, static_cast<std::size_t>(size));
    const std::size_t got = most == 0 || Below(2) == 0 ? most : 1 + Below(static_cast<unsigned int>(most));
    wire.bytes.copy(buffer, got, wire.at);
    if ((flags & MSG_PEEK) == 0) wire.at += got;
    return static_cast<int>(got);
}

int WINAPI ReadIsDue(SOCKET, WSAEVENT, WSANETWORKEVENTS* events) {
    *events = {};
    events->lNetworkEvents = FD_READ;
    return 0;
}

int WINAPI StartNothing(WORD, WSADATA*) {
    return 0;
}

int WINAPI EndNothing() {
    return 0;
}

int WINAPI SelectNothing(SOCKET, WSAEVENT, long) {
    return 0;
}

int WINAPI PostNothing(SOCKET, HWND, unsigned int, long) {
    return 0;
}

void WINAPI CountSleep(DWORD) {
    ++wire.sleeps;
}

std::string Noise(unsigned int length) {
    std::string noise(length, '\0');
    for (char& byte : noise) byte = static_cast<char>(chance());
    return noise;
}

std::string Word(unsigned int value) {
    std::string word(4, '\0');
    std::memcpy(word.data(), &value, 4);
    return word;
}

/// Lengths that a receiver may stumble over, besides small ones.
unsigned int HostileLength() {
    static constexpr unsigned int kLengths[] = {0,          kBuffer - 5, kBuffer - 4, kBuffer - 3,
                                                kBuffer,    0xFFFF,      0x7FFFFFFF,  0x80000000,
                                                0xFFFFFFF6, 0xFFFFFFFB,  0xFFFFFFFC,  0xFFFFFFFF};
    return Below(3) != 0 ? Below(40) : OneOf(kLengths);
}

void StartWire(std::string bytes) {
    static constexpr int kEnds[] = {0, WSAECONNRESET, WSAEWOULDBLOCK};
    wire = {std::move(bytes), 0, OneOf(kEnds), false, 0, 0};
}

std::string HostileRecords() {
    std::string stream;
    for (unsigned int records = Below(8); records > 0; --records) {
        const unsigned int length = HostileLength();
        stream += Word(length) + Noise(Below(8) == 0 ? Below(100) : std::min(length, 2 * kBuffer));
    }
    stream.resize(stream.size() - std::min<std::size_t>(stream.size(), Below(6)));
    return stream;
}

/// The records of a stream up to the first one that is too large, told without the library.
std::vector<std::string> RecordsOf(const std::string& stream) {
    std::vector<std::string> records;
    for (std::size_t at = 0; at + 4 <= stream.size();) {
        unsigned int length = 0;
        std::memcpy(&length, stream.data() + at, 4);
        if (length > kBuffer - 4 || length > stream.size() - at - 4) break;
        records.push_back(stream.substr(at + 4, length));
        at += 4 + length;
    }
    return records;
}

/// A typed record: its two lengths, its type and its data, each of which may lie.
std::string HostileMessage() {
    const unsigned int data = Below(16) == 0 ? 5000 + Below(3000) : HostileLength();
    const unsigned int total = Below(3) == 0 ? HostileLength() : data + 10;
    std::string stream = Word(total) + Word(data) + Noise(2) + Noise(std::min(data, 9000u));
    stream.resize(stream.size() - (Below(4) == 0 ? Below(static_cast<unsigned int>(stream.size())) : 0));
    return stream + Noise(Below(2) * Below(20));
}

/// A length is not worth gigabytes of the machine that runs the test.
void* __cdecl ModestMemory(std::size_t size) {
    return size > 1 << 20 ? nullptr : std::malloc(size);
}

struct HostilePeer : testing::Test {
    ImportPatch receive{kLibrary, "recv", ReceiveFromWire};
    ImportPatch events{kLibrary, "WSAEnumNetworkEvents", ReadIsDue};
    ImportPatch start{kLibrary, "WSAStartup", StartNothing};
    ImportPatch end{kLibrary, "WSACleanup", EndNothing};
    ImportPatch select{kLibrary, "WSAEventSelect", SelectNothing};
    ImportPatch post{kLibrary, "WSAAsyncSelect", PostNothing};
    ImportPatch sleep{kLibrary, "Sleep", CountSleep};
    ImportPatch memory{kLibrary, "malloc", ModestMemory};
};

} // namespace

TEST_F(HostilePeer, DeliversWholeRecordsByEventAndNothingElse) {
    for (int stream = 0; stream < kStreams; ++stream) {
        StartWire(HostileRecords());
        RecordReceiver receiver(kBuffer, CSocket::MODE_NONBLOCKING);
        receiver.InitConnected();
        while (receiver.closes == 0 && wire.receives <= wire.bytes.size() + 1) receiver.ProcessEvents();
        ASSERT_EQ(receiver.closes, 1) << "stream " << stream;
        ASSERT_EQ(receiver.records, RecordsOf(wire.bytes)) << "stream " << stream;
    }
}

TEST_F(HostilePeer, ReadsWholeRecordsInOrderAndEnds) {
    for (int stream = 0; stream < kStreams; ++stream) {
        StartWire(HostileRecords());
        RecordReceiver receiver(kBuffer, CSocket::MODE_BLOCKING);
        std::vector<std::string> records;
        CCommMsg* record = nullptr;
        int result = receiver.Read(&record);
        for (; result == 0; result = receiver.Read(&record)) records.push_back(TakeText(record));
        const auto expected = RecordsOf(wire.bytes);
        ASSERT_LE(records.size(), expected.size()) << "stream " << stream;
        ASSERT_TRUE(std::equal(records.begin(), records.end(), expected.begin())) << "stream " << stream;
        ASSERT_TRUE(result == WSAEDISCON || result == wire.end) << result << " in stream " << stream;
        ASSERT_LE(wire.receives, wire.bytes.size() + 1);
    }
}

TEST_F(HostilePeer, TypedMessagesLieInsideTheBufferOrFail) {
    CSocket reader;
    for (int stream = 0; stream < kStreams; ++stream) {
        StartWire(HostileMessage());
        wire.hesitant = Below(2) == 0;
        MESSAGE* message = nullptr;
        unsigned long length = 0;
        const int result = reader.ReadMessage(INVALID_SOCKET, &message, length);
        ASSERT_LE(wire.sleeps, 10 * (wire.receives + 1)) << "stream " << stream;
        if (result != 0) {
            ASSERT_EQ(result, 1);
            ASSERT_EQ(message, nullptr);
            continue;
        }
        ASSERT_EQ(message->ulDataLength, length);
        ASSERT_LE(length + sizeof(MESSAGE), message->ulTotalLength) << "stream " << stream;
        ASSERT_EQ(wire.at, message->ulTotalLength) << "stream " << stream;
        ASSERT_EQ(std::memcmp(message, wire.bytes.data(), wire.at), 0) << "stream " << stream;
    }
}
