#include "support/Loopback.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <optional>

namespace {

constexpr std::size_t kLongest = CMsgSocket::BUFFER_SIZE - 4;

Stub NoMemoryForKilobytes() {
    return Replacing("malloc", &malloc, [](std::size_t size) { return size > 1000 ? nullptr : std::malloc(size); });
}

struct MsgSocket : testing::Test {
    std::optional<Connection> connection;
    std::optional<RecordReceiver> receiver;

    void Connect(CSocket::MODE mode) {
        connection.emplace();
        receiver.emplace(connection->handle, CMsgSocket::BUFFER_SIZE, mode, nullptr);
        ASSERT_EQ(receiver->InitConnected(), 0);
    }
    void Hear() {
        ASSERT_EQ(WaitForSingleObject(receiver->GetEventHandle(), 10000), WAIT_OBJECT_0);
        ASSERT_EQ(receiver->ProcessEvents(), 0);
    }
    void Send(const std::string& bytes) const { connection->Send(bytes); }
    std::string Read() {
        CCommMsg* record = nullptr;
        const int result = receiver->Read(&record);
        return result == 0 ? TakeWire(record) : "error " + std::to_string(result);
    }
};

} // namespace

TEST_F(MsgSocket, WhatComesWhileAHandlerProcessesEventsIsDeliveredBehindItsRecord) {
    Connect(CSocket::MODE_EVENT);
    receiver->afterwards = [this] {
        if (receiver->delivered != Wire("one")) return;
        Send(Wire("two"));
        Hear();
    };
    Send(Wire("one"));
    Hear();
    EXPECT_EQ(receiver->delivered, Wire("one"));
    Hear();
    EXPECT_EQ(receiver->delivered, Wire("one", "two"));
}

TEST_F(MsgSocket, Odd87AHandlerThatDisconnectsLeavesTheBufferAsItIs) {
    Connect(CSocket::MODE_EVENT);
    receiver->afterwards = [this] {
        if (receiver->delivered == Wire("one", "two")) receiver->Disconnect();
    };
    Send(Wire("one", "two", "three"));
    Hear();
    EXPECT_EQ(receiver->delivered, Wire("one", "two"));
    const Connection next;
    static_cast<CSocket&>(*receiver) = CSocket(next.handle, CSocket::MODE_EVENT, nullptr);
    ASSERT_EQ(receiver->InitConnected(), 0);
    next.Send(Wire("four"));
    Hear();
    EXPECT_EQ(receiver->delivered, Wire("one", "two", "two", "three", "four"));
}

TEST_F(MsgSocket, Odd86ReadReceivesFirstEvenWhenARecordIsThere) {
    Connect(CSocket::MODE_BLOCKING);
    Send(Wire("one", "two"));
    EXPECT_EQ(Read(), Wire("one"));
    Send(Wire("three").substr(0, 1));
    EXPECT_EQ(Read(), Wire("two"));
    Send(Wire("three").substr(1));
    EXPECT_EQ(Read(), Wire("three"));
    EXPECT_EQ(receiver->Read(nullptr), WSAEFAULT);
}

TEST_F(MsgSocket, Odd105ARecordLargerThanTheBufferEndsTheDelivery) {
    Connect(CSocket::MODE_EVENT);
    Send(Wire("whole", std::string(kLongest + 1, 'x')) + "more");
    while (receiver->closes == 0) Hear();
    EXPECT_EQ(receiver->delivered, Wire("whole"));
}

TEST_F(MsgSocket, ARecordWithoutMemoryStaysInTheBuffer) {
    const std::string longest(kLongest, 'x');
    Connect(CSocket::MODE_BLOCKING);
    Send(Wire(longest));
    {
        const ImportPatch allocation(NoMemoryForKilobytes());
        EXPECT_EQ(Read(), "error 10055");
        RecordReceiver without;
        CCommMsg* record = nullptr;
        EXPECT_EQ(without.Read(&record), WSAEFAULT) << "no memory for the buffer";
    }
    EXPECT_EQ(Read(), Wire(longest)) << "without a receive, for which there is no room";

    Connect(CSocket::MODE_EVENT);
    {
        const ImportPatch allocation(NoMemoryForKilobytes());
        Send(Wire(longest));
        Hear();
        EXPECT_EQ(receiver->delivered, "");
    }
    Send(Wire("more"));
    Hear();
    Hear();
    EXPECT_EQ(receiver->delivered, Wire(longest, "more"));
}

TEST_F(MsgSocket, WritingEndsInTimeAndRestoresTheTimeOut) {
    Connect(CSocket::MODE_BLOCKING);
    ASSERT_EQ(receiver->SetSendTimeout(1234), 0);
    const auto large = Message(std::string(1 << 20, 'x'));
    int result = 0;
    while (result == 0) result = receiver->Write(large.get(), 50);
    EXPECT_EQ(result, WSAETIMEDOUT) << "nobody reads";
    unsigned int timeout = 0;
    EXPECT_EQ(receiver->GetSendTimeout(&timeout), 0);
    EXPECT_EQ(timeout, 1234u);

    const auto endless = Message("x");
    std::memset(endless->GetMsg(), 0xFF, 4); // its length word
    EXPECT_EQ(receiver->Write(endless.get(), 50), WSAENOBUFS);
    const ImportPatch set(Failing("setsockopt", &setsockopt, SOCKET_ERROR, WSAENOPROTOOPT));
    EXPECT_EQ(receiver->Write(large.get(), 50), WSAENOPROTOOPT);
    const ImportPatch get(Failing("getsockopt", &getsockopt, SOCKET_ERROR, WSAENOTSOCK));
    EXPECT_EQ(receiver->Write(large.get(), 50), WSAENOTSOCK);
}

TEST_F(MsgSocket, NothingFollowsAnIncompleteRecord) {
    for (const auto& [taken, error] : {std::pair(6, 0), {6, WSAETIMEDOUT}, {9, 0}, {0, WSAEWOULDBLOCK}}) {
        const bool incomplete = taken == 6;
        SCOPED_TRACE(testing::Message() << taken << " bytes, error " << error);
        Connect(CSocket::MODE_EVENT);
        {
            const ImportPatch patch("send", &send,
                                    [taken = taken, error = error](SOCKET socket, const char* bytes, int, int flags) {
                                        send(socket, bytes, taken, flags);
                                        WSASetLastError(error);
                                        return error == 0 ? taken : SOCKET_ERROR;
                                    });
            EXPECT_EQ(receiver->Write(Message("first").get(), 50), error);
        }
        EXPECT_EQ(receiver->Write(Message("second").get(), 50), incomplete ? WSAESHUTDOWN : 0);
        Send(Wire("received"));
        Hear();
        EXPECT_EQ(receiver->delivered, Wire("received"));
        EXPECT_EQ(receiver->Disconnect(), 0);
        const std::string sent = Wire("first").substr(0, static_cast<std::size_t>(taken));
        EXPECT_EQ(ReceiveAll(connection->bare), incomplete ? sent : sent + Wire("second"));
    }
}

TEST_F(MsgSocket, CopiesShareTheBufferAndTheLastFreesIt) {
    Connect(CSocket::MODE_EVENT);
    Send(Wire("hello").substr(0, 6));
    Hear();
    RecordReceiver assigned;
    assigned = RecordReceiver(*receiver);
    receiver.emplace(assigned);
    assigned = RecordReceiver();
    Send(Wire("hello").substr(6));
    Hear();
    EXPECT_EQ(receiver->delivered, Wire("hello"));
}
