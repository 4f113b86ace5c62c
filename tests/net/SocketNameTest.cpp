#include "support/Loopback.h"

#include <gtest/gtest.h>

#include <cstring>

namespace {

std::string Chosen(const wchar_t* address, const wchar_t* mask) {
    in_addr chosen;
    chosen.s_addr = CSocket::GetLocalNetInterfaceAddress(address, mask);
    return inet_ntoa(chosen);
}

/// Sum of the 16-bit words with the carries added, 0xFFFF for a packet whose checksum is right.
unsigned int Sum(const std::vector<unsigned char>& bytes) {
    unsigned int sum = 0;
    for (std::size_t i = 0; i < bytes.size(); ++i) sum += static_cast<unsigned int>(bytes[i]) << i % 2 * 8;
    while (sum > 0xFFFF) sum = (sum >> 16) + (sum & 0xFFFF);
    return sum;
}

} // namespace

TEST(SocketInterfaces, ChoosesByAddressThenBySubnetThenTheFirst) {
    const auto loopback = Interface("127.0.0.1", "255.0.0.0", IFF_LOOPBACK);
    Interfaces machine{{loopback, Interface("10.1.2.3", "255.255.0.0"), Interface("10.2.0.1", "255.255.255.0"),
                        Interface("10.2.0.2", "255.255.255.0")}};
    EXPECT_EQ(CSocket::GetNumberOfNetInterfaces(), 3);
    EXPECT_EQ(Chosen(L"0.0.0.0", L"255.255.255.0"), "10.1.2.3");
    EXPECT_EQ(Chosen(nullptr, nullptr), "10.1.2.3");
    EXPECT_EQ(Chosen(L"10.2.0.2", L"255.255.0.0"), "10.2.0.2");
    EXPECT_EQ(Chosen(L"10.2.0.77", L"255.255.255.0"), "10.2.0.1");
    EXPECT_EQ(Chosen(L"10.2.0.77", L"255.255.0.0"), "10.1.2.3");
    EXPECT_EQ(Chosen(L"127.0.0.1", L"255.0.0.0"), "10.1.2.3");
    machine.list = {Interface("10.2.0.1", "255.0.0.0"), loopback};
    EXPECT_EQ(Chosen(L"10.9.9.9", L"255.255.255.0"), "10.2.0.1");
    machine.list = {loopback};
    EXPECT_EQ(Chosen(L"127.0.0.1", L"255.0.0.0"), "0.0.0.0");
    machine.list.assign(15, Interface("10.2.0.1", "255.0.0.0"));
    EXPECT_EQ(Chosen(L"10.2.0.1", L"255.0.0.0"), "0.0.0.0");
    EXPECT_EQ(CSocket::GetNumberOfNetInterfaces(), 15);
    machine.list.clear();
    EXPECT_EQ(CSocket::GetNumberOfNetInterfaces(), 0);
}

TEST(SocketNames, KnowsThisMachine) {
    char text[NI_MAXHOST] = "unchanged";
    EXPECT_TRUE(CSocket::GetHostAddressByName("localhost", text));
    EXPECT_STREQ(text, "127.0.0.1");
    EXPECT_TRUE(CSocket::GetHostNameByAddress("127.0.0.1", text));
    EXPECT_STREQ(text, "localhost");
    EXPECT_FALSE(CSocket::GetHostNameByAddress(nullptr, text) || CSocket::GetHostNameByAddress("127.0.0.1", nullptr));
    wchar_t name[NI_MAXHOST] = {};
    EXPECT_EQ(CSocket::GetLocalHostName(name, 0xFFFFFFFF), 0);
    EXPECT_NE(name[0], L'\0');
    name[1] = L'#';
    EXPECT_EQ(CSocket::GetLocalHostName(name, 1), SOCKET_ERROR);
    EXPECT_EQ(name[1], L'#');
    const ImportPatch unknown(Failing("gethostbyname", &gethostbyname, nullptr));
    EXPECT_FALSE(CSocket::GetHostAddressByName("nobody", text));
    EXPECT_EQ(CSocket::Ping("nobody", 1) + CSocket::Ping(nullptr, 1), 0);
}

TEST(SocketPing, Odd84SendsARequestOf45BytesAndCountsAnyReply) {
    EXPECT_EQ(CSocket::Ping("127.0.0.1", 3), 3) << "the request and its reply count";
    EXPECT_EQ(CSocket::Ping("127.0.0.1", -1), 0);
    std::vector<unsigned char> request;
    std::vector<unsigned int> identifiers;
    int ready = 1, replySize = 0;
    const ImportPatch sending("sendto", &sendto, [&](SOCKET, const char* data, int size, auto...) {
        request.assign(data, data + size);
        identifiers.push_back(request[4] + request[5] * 256U);
        return size;
    });
    const ImportPatch waiting("select", &select, [&](auto...) { return ready; });
    const ImportPatch receiving("recvfrom", &recvfrom, [&](auto...) { return replySize; });
    for (const int size : {SOCKET_ERROR, 0, 32}) {
        replySize = size;
        EXPECT_EQ(CSocket::Ping("127.0.0.1", 1), 1);
    }
    ready = 0;
    EXPECT_EQ(CSocket::Ping("127.0.0.1", 2), 0);
    EXPECT_EQ(identifiers.size(), 4u) << "a missing reply ends it";
    ASSERT_EQ(request.size(), 45u);
    EXPECT_EQ(Sum(request), 0xFFFFu);
    EXPECT_EQ(request[0], 8);
    EXPECT_EQ(std::memcmp(&request[4], &request[6], 2), 0) << "the sequence number counts alike";
    EXPECT_EQ(identifiers[0] + 2, identifiers[2]);
    EXPECT_EQ(request[44], 0x3F);
}
