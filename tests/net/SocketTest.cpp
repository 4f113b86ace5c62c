#include "support/Loopback.h"

#include "support/MessageWindow.h"

#include <gtest/gtest.h>
#include <tessel/net/ipaddress.h>

#include <thread>

namespace {

unsigned char oneByte = 'x';

/// @return WSAETIMEDOUT on a blocking socket, WSAEWOULDBLOCK on a non-blocking one
int ReceiveNothing(const Connection& connection) {
    const DWORD brief = 20;
    setsockopt(connection.handle, SOL_SOCKET, SO_RCVTIMEO, reinterpret_cast<const char*>(&brief), sizeof brief);
    return connection.own->Recv(&oneByte, 1, nullptr, 0);
}

} // namespace

TEST(Socket, ServesAClientByItsWindowsMessagesUntilBothClose) {
    const MessageWindow window;
    Interfaces machine;
    const unsigned short port = FreePort();
    Recorder server(window.Get());
    ASSERT_EQ(server.InitAsync(port, kOwn, kOwnMask), 0);
    EXPECT_TRUE(CSocket(server).HasIpAddress(kOwn));
    EXPECT_FALSE(server.AddrChanged());
    machine.list = {Interface("10.1.2.3", "255.0.0.0"), Interface("127.0.0.1", "255.0.0.0", IFF_LOOPBACK)};
    EXPECT_TRUE(server.AddrChanged());
    CSocket client;
    ASSERT_EQ(client.Connect(LoopbackListener::Address(), port), 0);
    EXPECT_EQ(WSAGETSELECTEVENT(window.Wait(WM_SOCKET_ACCEPT)), FD_ACCEPT);
    EXPECT_EQ(server.ProcessEvents(), 0);
    EXPECT_EQ(server.events, "accept ");
    CSocket* accepted = nullptr;
    ASSERT_EQ(server.Accept(&accepted), 0);
    Recorder peer;
    peer.CSocket::operator=(*std::unique_ptr<CSocket>(accepted));
    EXPECT_FALSE(peer.IsConnected());
    EXPECT_EQ(peer.InitConnected(), 0);

    EXPECT_EQ(client.Send(&oneByte, 1, nullptr, 0), 0);
    EXPECT_EQ(WSAGETSELECTEVENT(window.Wait(WM_SOCKET_DATA)), FD_READ);
    EXPECT_EQ(peer.ProcessEvents(), 0);
    unsigned char got[10] = {};
    unsigned int count = 0;
    EXPECT_EQ(peer.Recv(got, 10, &count, 0), 0);
    EXPECT_EQ(count, 1u);
    EXPECT_EQ(got[0], oneByte);
    EXPECT_EQ(client.SetMode(CSocket::MODE_NONBLOCKING, 0, 0), 0); // does not wait for the peer's close
    EXPECT_EQ(client.Disconnect(), 0);
    EXPECT_FALSE(client.IsConnected());
    EXPECT_EQ(client.Disconnect(), 0) << "again";
    EXPECT_EQ(WSAGETSELECTEVENT(window.Wait(WM_SOCKET_DATA)), FD_CLOSE);
    EXPECT_EQ(peer.ProcessEvents(), 0);
    EXPECT_EQ(peer.events, "read close ");
    EXPECT_EQ(peer.Recv(got, 10, &count, 0), WSAEDISCON);
    EXPECT_EQ(peer.Disconnect(), 0);
    EXPECT_TRUE(peer.IsSocket(INVALID_SOCKET));
}

TEST(Socket, Odd206DropsWhatHasArrivedAndClosesAtOnceUnlessItBlocks) {
    const MessageWindow window;
    const Connection connection(CSocket::MODE_WINDOW, window.Get());
    connection.Send(std::string(5000, 'x'));
    window.Wait(WM_SOCKET_DATA);
    EXPECT_EQ(connection.own->Disconnect(), 0);
    EXPECT_EQ(window.Take(WM_SOCKET_DATA), 0) << "no event for dropped data";
    char end = 0;
    EXPECT_EQ(recv(connection.bare, &end, 1, 0), 0) << "a close with unread data would reset the connection";
}

TEST(Socket, DisconnectingWithinATimeLosesNothing) {
    const MessageWindow window;
    for (const auto mode :
         {CSocket::MODE_BLOCKING, CSocket::MODE_NONBLOCKING, CSocket::MODE_WINDOW, CSocket::MODE_EVENT}) {
        Connection connection(mode, window.Get());
        CSocket& own = *connection.own;
        std::size_t arrived = 0;
        std::thread peer([&] { // answers while it receives, so closing at once would reset the connection
            char piece[4096];
            for (int got = 0; (got = recv(connection.bare, piece, sizeof piece, 0)) > 0;) {
                arrived += static_cast<std::size_t>(got);
                connection.Send("answer");
            }
            connection.Close();
        });
        const std::vector<unsigned char> data(3000000);
        unsigned int count = 0;
        for (std::size_t sent = 0; sent < data.size(); sent += std::exchange(count, 0)) {
            (void)own.Send(&data[sent], static_cast<unsigned int>(data.size() - sent), &count, 0);
        }
        EXPECT_EQ(own.DisconnectWithin(INFINITE), 0);
        peer.join();
        EXPECT_EQ(arrived, data.size()) << "mode " << mode;
        EXPECT_FALSE(own.IsConnected());
        EXPECT_EQ(own.DisconnectWithin(0), 0) << "without a socket";
    }
}

TEST(Socket, AfterATimeOutDisconnectingCanBeTriedAgain) {
    Connection connection(CSocket::MODE_EVENT);
    CSocket& own = *connection.own;
    EXPECT_EQ(own.DisconnectWithin(20), WSAETIMEDOUT);
    EXPECT_TRUE(own.IsConnected() && own.IsSocket(connection.handle));
    connection.Send("x");
    {
        const ImportPatch flood("recv", &recv, [](SOCKET, char*, int, int) { return 1; });
        EXPECT_EQ(own.DisconnectWithin(20), WSAETIMEDOUT) << "although the peer sends without a pause (GUARD-241)";
    }
    connection.Close();
    EXPECT_EQ(own.DisconnectWithin(10000), 0);
    EXPECT_TRUE(own.IsSocket(INVALID_SOCKET));
    Connection resetting(CSocket::MODE_EVENT);
    resetting.Close();
    const ImportPatch patch(Failing("recv", &recv, SOCKET_ERROR, WSAECONNRESET));
    EXPECT_EQ(resetting.own->DisconnectWithin(10000), WSAECONNRESET);
    EXPECT_TRUE(resetting.own->IsSocket(INVALID_SOCKET));
}

TEST(Socket, BlocksInModeBlockingOnly) {
    const Connection connection(CSocket::MODE_NONBLOCKING);
    EXPECT_EQ(ReceiveNothing(connection), WSAEWOULDBLOCK);
    for (const auto mode :
         {CSocket::MODE_BLOCKING, CSocket::MODE_EVENT, CSocket::MODE_BLOCKING, CSocket::MODE_NONBLOCKING}) {
        const bool blocks = mode == CSocket::MODE_BLOCKING;
        EXPECT_EQ(connection.own->SetMode(mode, 0, blocks ? 0 : FD_READ), 0);
        EXPECT_EQ(connection.own->IsBlockingMode(), blocks);
        EXPECT_EQ(ReceiveNothing(connection), blocks ? WSAETIMEDOUT : WSAEWOULDBLOCK);
    }
}

TEST(Socket, ProcessesEventsThatCameTogetherInAFixedOrder) {
    const Connection connection(CSocket::MODE_EVENT);
    const ImportPatch patch("WSAEnumNetworkEvents", &WSAEnumNetworkEvents, [](SOCKET, WSAEVENT, auto* all) {
        return all->lNetworkEvents = FD_CLOSE | FD_WRITE | FD_READ | FD_CONNECT | FD_ACCEPT, 0;
    });
    EXPECT_EQ(connection.own->ProcessEvents(), 0);
    EXPECT_EQ(connection.own->events, "accept connect read write close ");
}

TEST(Socket, Odd80AnEarlierEventStaysOpen) {
    Connection connection(CSocket::MODE_EVENT);
    const HANDLE earlier = connection.own->GetEventHandle();
    EXPECT_EQ(connection.own->SetMode(CSocket::MODE_EVENT, 0, FD_READ), 0);
    const HANDLE last = connection.own->GetEventHandle();
    EXPECT_NE(last, earlier);
    connection.own.reset();
    EXPECT_TRUE(CloseHandle(earlier));
    EXPECT_FALSE(CloseHandle(last)) << "it is closed already";
}

TEST(Socket, Odd77WithoutASocketAServerReportsSuccess) {
    const Connection connection(CSocket::MODE_BLOCKING);
    const ImportPatch patch(Failing("socket", &socket, INVALID_SOCKET, WSAEMFILE));
    CSocket& socket = *connection.own;
    EXPECT_EQ(socket.InitAsync(1, kOwn, kOwnMask), 0);
    EXPECT_TRUE(socket.IsSocket(INVALID_SOCKET));
    EXPECT_FALSE(socket.IsConnected());
    EXPECT_EQ(socket.InitBroadcast(1, kOwn, kOwnMask), WSAEMFILE);
    EXPECT_EQ(socket.InitMulticast(1, L"239.1.2.3", 1, kOwn, kOwnMask), WSAEMFILE);
    EXPECT_EQ(socket.Connect(LoopbackListener::Address(), 1), WSAEMFILE);
}

TEST(Socket, Odd78And79TheSocketOfAFailedConnectStaysOpenUnlikeAServers) {
    const Interfaces loopback;
    const LoopbackListener busy;
    CSocket socket;
    EXPECT_EQ(socket.InitAsync(busy.Port(), kOwn, kOwnMask), WSAEADDRINUSE);
    EXPECT_TRUE(socket.IsSocket(INVALID_SOCKET));
    EXPECT_EQ(socket.Connect(LoopbackListener::Address(), FreePort()), WSAECONNREFUSED);
    EXPECT_FALSE(socket.IsConnected());
    EXPECT_EQ(socket.Disconnect(), WSAENOTCONN);
    EXPECT_EQ(socket.Disconnect(), WSAENOTCONN) << "it is still open";
}

TEST(Socket, Odd85CopiesShareAndAnAssignmentClosesNothing) {
    Connection connection(CSocket::MODE_EVENT);
    Recorder& first = *connection.own;
    first.m_pExtra = HeapAlloc(GetProcessHeap(), 0, 1000);
    {
        Recorder copy(first);
        copy = first;
        EXPECT_TRUE(copy.IsSocket(connection.handle));
    }
    EXPECT_EQ(first.Send(&oneByte, 1, nullptr, 0), 0);
    EXPECT_NE(ResetEvent(first.GetEventHandle()), FALSE);
    CSocket copy(first);
    EXPECT_EQ(copy.Disconnect(), 0);
    CSocket(first).Create(INVALID_SOCKET, CSocket::MODE_BLOCKING, nullptr);
    EXPECT_EQ(first.Recv(&oneByte, 1, nullptr, 0), WSAEWOULDBLOCK) << "it is still open";
    const Connection held;
    CSocket target(held.handle, CSocket::MODE_BLOCKING, nullptr);
    target = first;
    EXPECT_TRUE(target.IsSocket(connection.handle));
    EXPECT_EQ(closesocket(held.handle), 0) << "left open";
    for (int i = 0; i < 3; ++i) (void)CSocket(first); // each ends Winsock as often as it started it
    EXPECT_EQ(closesocket(socket(AF_INET, SOCK_STREAM, 0)), 0);
    target = CSocket();
    connection.own.reset();
    EXPECT_NE(closesocket(connection.handle), 0) << "the last owner closed it";
}

TEST(Socket, SelectsWhatCanBeDoneAndRefusesWhatCannot) {
    const Connection connection(CSocket::MODE_BLOCKING);
    timeval wait{10, 0};
    EXPECT_EQ(connection.own->Select(&wait), 2);
    connection.Send("x");
    EXPECT_EQ(recv(connection.handle, reinterpret_cast<char*>(&oneByte), 1, MSG_PEEK), 1);
    EXPECT_EQ(connection.own->Select(&wait), 3);
    CSocket none;
    EXPECT_EQ(none.Select(&wait), WSAENOTSOCK);
    EXPECT_EQ(none.ProcessEvents(), WSAENOTSOCK);
    EXPECT_EQ(none.Recv(nullptr, 1, nullptr, 0), WSAEFAULT);
}
