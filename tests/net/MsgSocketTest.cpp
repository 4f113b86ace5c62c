#include "support/LoopbackListener.h" // Winsock, before windows.h

#include "RecordReceiver.h"
#include "support/ChildProcess.h"
#include "support/ImportPatch.h"
#include "support/UnixTool.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <optional>

namespace {

using Records = std::vector<std::string>;
constexpr const wchar_t* kLibrary = L"Tessel.dll";
constexpr std::size_t kLongest = CMsgSocket::BUFFER_SIZE - 4;

void* __cdecl NoMemoryForKilobytes(std::size_t size) {
    return size > 1000 ? nullptr : std::malloc(size);
}

int setTimeouts = 0;

int WINAPI CountSetTimeouts(SOCKET, int, int, const char*, int) {
    ++setTimeouts;
    WSASetLastError(WSAENOPROTOOPT);
    return SOCKET_ERROR;
}

int WINAPI NoOption(SOCKET, int, int, char*, int*) {
    WSASetLastError(WSAENOTSOCK);
    return SOCKET_ERROR;
}

/// What the next send does: takes so many bytes, then reports the error if there is one.
struct {
    int taken;
    int error;
} nextSend;

int WINAPI SendPart(SOCKET socket, const char* bytes, int, int flags) {
    send(socket, bytes, nextSend.taken, flags);
    WSASetLastError(nextSend.error);
    return nextSend.error == 0 ? nextSend.taken : SOCKET_ERROR;
}

/// The Unix path of the peer beside this program; empty where programs are not run by Wine.
std::wstring PeerScript() {
    return UnixPath(Beside(L"peer.sh"));
}

std::unique_ptr<CCommMsg> Message(const std::string& text) {
    std::unique_ptr<CCommMsg> message(new (static_cast<unsigned int>(text.size())) CCommMsg);
    text.copy(reinterpret_cast<char*>(message->GetData()), text.size());
    return message;
}

/// Everything up to the end of the stream.
std::string ReceiveAll(SOCKET from) {
    std::string all;
    for (char byte = 0; recv(from, &byte, 1, 0) == 1;) all += byte;
    return all;
}

std::string Line(SOCKET from) {
    std::string line;
    for (char byte = 0; recv(from, &byte, 1, 0) == 1 && byte != '\n';) line += byte;
    return line;
}

struct MsgSocket : testing::Test {
    LoopbackListener loopback;
    std::optional<RecordReceiver> receiver{std::in_place};
    SOCKET peer = INVALID_SOCKET;

    void Connect(CSocket::MODE mode, unsigned int bufferSize = CMsgSocket::BUFFER_SIZE) {
        receiver.emplace(bufferSize, mode);
        ASSERT_EQ(receiver->Connect(LoopbackListener::Address(), loopback.Port()), 0);
        peer = loopback.Accept();
    }
    void Hear() {
        ASSERT_EQ(WaitForSingleObject(receiver->GetEventHandle(), 10000), WAIT_OBJECT_0);
        ASSERT_EQ(receiver->ProcessEvents(), 0);
    }
    void Send(const std::string& bytes) const { send(peer, bytes.data(), static_cast<int>(bytes.size()), 0); }
    std::string ReadText() {
        CCommMsg* record = nullptr;
        const int result = receiver->Read(&record);
        return result == 0 ? TakeText(record) : "error " + std::to_string(result);
    }
    void TearDown() override { closesocket(peer); }
};

} // namespace

TEST_F(MsgSocket, RecordsCutAtAnyByteArriveWhole) {
    Connect(CSocket::MODE_EVENT);
    const std::string stream = Wire("hello") + Wire("") + Wire("abc");
    for (std::size_t cut = 1; cut < stream.size(); ++cut) {
        Send(stream.substr(0, cut));
        Hear();
        EXPECT_EQ(receiver->records.size(), cut < 9 ? 0u : cut < 13 ? 1u : 2u) << cut;
        Send(stream.substr(cut));
        Hear();
        EXPECT_EQ(receiver->records, (Records{"hello", "", "abc"})) << cut;
        receiver->records.clear();
    }
}

TEST_F(MsgSocket, WhatComesWhileAHandlerProcessesEventsIsDeliveredBehindItsRecord) {
    Connect(CSocket::MODE_EVENT);
    receiver->meanwhile = [this] {
        Send(Wire("two"));
        Hear();
    };
    Send(Wire("one"));
    Hear();
    EXPECT_EQ(receiver->records, Records{"one"});
    Hear();
    EXPECT_EQ(receiver->records, (Records{"one", "two"}));
}

TEST_F(MsgSocket, Odd87AHandlerThatDisconnectsLeavesTheBufferAsItIs) {
    Connect(CSocket::MODE_EVENT);
    receiver->disconnectAt = 2;
    Send(Wire("one") + Wire("two") + Wire("three"));
    Hear();
    EXPECT_EQ(receiver->records, (Records{"one", "two"}));
    closesocket(peer);
    ASSERT_EQ(receiver->Connect(LoopbackListener::Address(), loopback.Port()), 0);
    peer = loopback.Accept();
    Send(Wire("four"));
    Hear();
    EXPECT_EQ(receiver->records, (Records{"one", "two", "two", "three", "four"}));
}

TEST_F(MsgSocket, Odd86ReadReceivesFirstEvenWhenARecordIsThere) {
    Connect(CSocket::MODE_BLOCKING);
    Send(Wire("one") + Wire("two"));
    EXPECT_EQ(ReadText(), "one");
    Send(Wire("three").substr(0, 1));
    EXPECT_EQ(ReadText(), "two");
    Send(Wire("three").substr(1));
    EXPECT_EQ(ReadText(), "three");
    EXPECT_EQ(receiver->Read(nullptr), WSAEFAULT);
}

TEST_F(MsgSocket, Odd105ARecordLargerThanTheBufferEndsTheDelivery) {
    for (const unsigned int length : {4093u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFBu, 0xFFFFFFFCu, 0xFFFFFFFFu}) {
        std::string stream(5000, 'x');
        std::memcpy(stream.data(), &length, sizeof length);
        Connect(CSocket::MODE_EVENT);
        Send(Wire("whole") + stream);
        while (receiver->closes == 0) Hear();
        EXPECT_EQ(receiver->records, Records{"whole"}) << length;
        closesocket(peer);
        Connect(CSocket::MODE_BLOCKING);
        Send(stream);
        EXPECT_EQ(ReadText(), "error 10101") << length;
        EXPECT_EQ(ReadText(), "error 10101") << length;
        closesocket(peer);
    }
    Connect(CSocket::MODE_BLOCKING, 0);
    Send("x");
    EXPECT_EQ(ReadText(), "error 10101") << "no room for anything";
}

TEST_F(MsgSocket, ARecordWithoutMemoryStaysInTheBuffer) {
    const std::string longest(kLongest, 'x');
    Connect(CSocket::MODE_BLOCKING);
    Send(Wire(longest));
    {
        const ImportPatch allocation(kLibrary, "malloc", NoMemoryForKilobytes);
        EXPECT_EQ(ReadText(), "error 10055");
        RecordReceiver without;
        CCommMsg* record = nullptr;
        EXPECT_EQ(without.Read(&record), WSAEFAULT) << "no memory for the buffer";
    }
    EXPECT_EQ(ReadText(), longest) << "without a receive, for which there is no room";
    closesocket(peer);

    Connect(CSocket::MODE_EVENT);
    {
        const ImportPatch allocation(kLibrary, "malloc", NoMemoryForKilobytes);
        Send(Wire(longest));
        Hear();
        EXPECT_TRUE(receiver->records.empty());
    }
    Send(Wire("more"));
    Hear();
    Hear();
    EXPECT_EQ(receiver->records, (Records{longest, "more"}));
}

TEST_F(MsgSocket, WritingSendsTheWireFormAndRestoresTheTimeOut) {
    Connect(CSocket::MODE_BLOCKING);
    ASSERT_EQ(receiver->SetSendTimeout(1234), 0);
    EXPECT_EQ(receiver->Write(Message("hello").get(), 50), 0);
    char wire[16];
    EXPECT_EQ(std::string(wire, static_cast<std::size_t>(recv(peer, wire, sizeof wire, 0))), Wire("hello"));
    const auto large = Message(std::string(1 << 20, 'x'));
    int result = 0;
    for (int i = 0; i < 100 && result == 0; ++i) result = receiver->Write(large.get(), 50);
    EXPECT_EQ(result, WSAETIMEDOUT) << "nobody reads";
    unsigned int timeout = 0;
    EXPECT_EQ(receiver->GetSendTimeout(&timeout), 0);
    EXPECT_EQ(timeout, 1234u);

    EXPECT_EQ(receiver->Write(nullptr, 50), WSAEFAULT);
    const auto endless = Message("x");
    std::memset(endless->GetMsg(), 0xFF, 4); // its length word
    EXPECT_EQ(receiver->Write(endless.get(), 50), WSAENOBUFS);
    const ImportPatch set(kLibrary, "setsockopt", CountSetTimeouts);
    EXPECT_EQ(receiver->Write(large.get(), 50), WSAENOPROTOOPT);
    const ImportPatch get(kLibrary, "getsockopt", NoOption);
    EXPECT_EQ(receiver->Write(large.get(), 50), WSAENOTSOCK);
    EXPECT_EQ(setTimeouts, 1);
}

TEST_F(MsgSocket, NothingFollowsARecordThatWasCut) {
    const struct {
        int taken, error, result;
        bool cut;
    } rows[] = {{6, 0, 0, true},
                {6, WSAETIMEDOUT, WSAETIMEDOUT, true},
                {9, 0, 0, false},
                {0, WSAEWOULDBLOCK, WSAEWOULDBLOCK, false}};
    for (const auto& [taken, error, result, cut] : rows) {
        SCOPED_TRACE(testing::Message() << taken << " bytes, error " << error);
        Connect(CSocket::MODE_EVENT);
        nextSend = {taken, error};
        {
            const ImportPatch patch(kLibrary, "send", SendPart);
            EXPECT_EQ(receiver->Write(Message("first").get(), 50), result);
        }
        EXPECT_EQ(receiver->Write(Message("second").get(), 50), cut ? WSAESHUTDOWN : 0);
        Send(Wire("received"));
        Hear();
        EXPECT_EQ(receiver->records, Records{"received"});
        EXPECT_EQ(receiver->Disconnect(), 0);
        EXPECT_EQ(ReceiveAll(peer),
                  Wire("first").substr(0, static_cast<std::size_t>(taken)) + (cut ? "" : Wire("second")));
        closesocket(peer);
    }
}

TEST_F(MsgSocket, CopiesShareTheBufferAndTheLastFreesIt) {
    Connect(CSocket::MODE_EVENT);
    Send(Wire("hello").substr(0, 6));
    Hear();
    RecordReceiver assigned;
    assigned = RecordReceiver(*receiver);
    receiver.reset();
    Send(Wire("hello").substr(6));
    ASSERT_EQ(WaitForSingleObject(assigned.GetEventHandle(), 10000), WAIT_OBJECT_0);
    ASSERT_EQ(assigned.ProcessEvents(), 0);
    EXPECT_EQ(assigned.records, Records{"hello"});
}

TEST_F(MsgSocket, APeerThatSharesNoCodeIsUnderstood) {
    const std::wstring script = PeerScript();
    if (script.empty()) GTEST_SKIP() << "the peer is a Unix script, which only Wine can start";
    // Wine does not hand its pipes to a Unix program: a second connection takes their place.
    const ChildProcess bash(L"\\\\?\\unix\\bin\\bash \"" + script + L"\" " + std::to_wstring(loopback.Port()));
    receiver.emplace(loopback.Accept(), CMsgSocket::BUFFER_SIZE, CSocket::MODE_EVENT, nullptr);
    peer = loopback.Accept();
    ASSERT_EQ(receiver->InitConnected(), 0);
    for (int part = 0; part < 3; ++part) {
        ASSERT_EQ(Line(peer), "sent");
        Hear();
        EXPECT_EQ(receiver->records.size(), part < 2 ? 0u : 4u);
        Send("next\n");
    }
    EXPECT_EQ(receiver->records, (Records{"hello", "", std::string("\0\xFF\r\n", 4), std::string(300, ' ')}));
    EXPECT_EQ(receiver->Write(Message("\x7F to you").get(), 1000), 0);
    EXPECT_EQ(Line(peer), "got 08 00 00 00 7f 20 74 6f 20 79 6f 75");
    Send("next\n");
    while (receiver->closes == 0) Hear();
    EXPECT_EQ(receiver->records.size(), 4u) << "the length of nearly 4 GiB ends it";
}
