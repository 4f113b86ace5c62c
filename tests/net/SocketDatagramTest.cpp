#include "support/Loopback.h"

#include <gtest/gtest.h>

namespace {

constexpr wchar_t kGroup[] = L"239.1.2.3";

std::string ReceiveText(CSocket& socket, int result = 0) {
    char text[100];
    unsigned int count = 0;
    sockaddr_in from{};
    unsigned int fromLength = sizeof from;
    EXPECT_EQ(WaitForSingleObject(socket.GetEventHandle(), 10000), WAIT_OBJECT_0);
    EXPECT_EQ(socket.ReceiveFrom(reinterpret_cast<unsigned char*>(text), sizeof text, &from, &fromLength, &count, 0),
              result);
    EXPECT_EQ(fromLength, sizeof from);
    EXPECT_TRUE(from.sin_family == AF_INET && from.sin_port != 0);
    return {text, count};
}

} // namespace

TEST(SocketDatagrams, Odd81ABroadcastReachesTheSubnetWithoutTheLengthWord) {
    const Interfaces loopback;
    CSocket socket(CSocket::MODE_EVENT);
    ASSERT_EQ(socket.InitBroadcast(FreePort(SOCK_DGRAM), kOwn, kOwnMask), 0);
    EXPECT_EQ(socket.Broadcast(Message("to all").get(), 0, true), 0);
    EXPECT_EQ(ReceiveText(socket), "to all");
    EXPECT_EQ(socket.Broadcast(Message("").get(), 0, true), 0);
    EXPECT_EQ(ReceiveText(socket, WSAEDISCON), "");
}

TEST(SocketDatagrams, GoToTheAddressesOfTheChosenInterface) {
    Interfaces machine{{Interface("127.0.0.1", "255.0.0.0", IFF_LOOPBACK), Interface("10.1.2.3", "255.255.0.0")}};
    std::string destination;
    const ImportPatch patch("sendto", &sendto, [&](SOCKET, const char*, int size, int, const sockaddr* to, int) {
        const auto* const address = reinterpret_cast<const sockaddr_in*>(to);
        destination = std::string(inet_ntoa(address->sin_addr)) + ":" + std::to_string(ntohs(address->sin_port));
        return size;
    });
    CSocket socket;
    const unsigned short port = FreePort(SOCK_DGRAM);
    const std::string own = ":" + std::to_string(port);
    ASSERT_EQ(socket.InitBroadcast(port, kOwn, kOwnMask), 0);
    const auto message = Message("x");
    EXPECT_EQ(CSocket(socket).Broadcast(message.get(), 0, true), 0);
    EXPECT_EQ(destination, "10.1.255.255" + own);
    EXPECT_EQ(socket.Broadcast(message.get(), 7, false), 0);
    EXPECT_EQ(destination, "255.255.255.255:7");
    machine.list.clear();
    EXPECT_EQ(socket.Broadcast(message.get(), 0, true), 0);
    EXPECT_EQ(destination, "255.255.255.255" + own);
    EXPECT_EQ(socket.Multicast(message.get(), L"239.255.255.255 and more than fits", 9), 0);
    EXPECT_EQ(destination, "239.255.255.255:9");
    sockaddr_in to{};
    unsigned int sent = 0;
    EXPECT_EQ(socket.SendTo(message.get(), &to, sizeof to, 8, &sent), 0);
    EXPECT_EQ(ntohs(to.sin_port), 8);
    EXPECT_EQ(sent, 1u);
}

TEST(SocketDatagrams, AGroupIsJoinedAndReachedOrLeavesNeitherSocketNorEvent) {
    const Interfaces loopback;
    std::vector<int> options;
    const ImportPatch set("setsockopt", &setsockopt, [&](SOCKET socket, int level, int name, auto... value) {
        return options.push_back(name), setsockopt(socket, level, name, value...);
    });
    CSocket socket(CSocket::MODE_EVENT);
    ASSERT_EQ(socket.InitMulticast(FreePort(SOCK_DGRAM), kGroup, 1, kOwn, kOwnMask), 0);
    EXPECT_EQ(options, (std::vector{IP_MULTICAST_TTL, IP_MULTICAST_IF, IP_ADD_MEMBERSHIP})); // no scope
    EXPECT_EQ(socket.Multicast(Message("to the group").get(), kGroup, 0), 0);
    EXPECT_EQ(ReceiveText(socket), "to the group");

    options.clear();
    const ImportPatch scope(Failing("WSAIoctl", &WSAIoctl, 0));
    HANDLE event = nullptr;
    const ImportPatch create("CreateEventW", &CreateEventW, [&](auto... a) { return event = CreateEventW(a...); });
    CSocket failing(CSocket::MODE_EVENT);
    EXPECT_NE(failing.InitMulticast(FreePort(SOCK_DGRAM), L"no group", 1, kOwn, kOwnMask), 0);
    EXPECT_TRUE(failing.IsSocket(INVALID_SOCKET));
    EXPECT_EQ(failing.GetEventHandle(), INVALID_HANDLE_VALUE);
    EXPECT_FALSE(CloseHandle(event)) << "it is closed already";
    EXPECT_EQ(options, (std::vector{IP_MULTICAST_IF, IP_ADD_MEMBERSHIP}));
}
