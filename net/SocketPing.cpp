#include <net/Winsock.h>
#include <tessel/net/socket.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <numeric>

namespace {

constexpr WORD kPingWinsockVersion = MAKEWORD(1, 1);
constexpr unsigned char kEchoRequest = 8;
constexpr unsigned char kFirstFill = 0x20;
constexpr long kTimeoutSeconds = 5;
constexpr int kLongestReply = 321;
constexpr std::size_t kIpHeader = 20;
constexpr int kOctets = 4;

#pragma pack(push, 1)
/// An ICMP echo request on the wire.
struct EchoRequest {
    std::uint8_t type;
    std::uint8_t code;
    std::uint16_t checksum;
    std::uint16_t identifier;
    std::uint16_t sequence;
    std::uint8_t spare;
    std::uint32_t sendTime;
    std::uint8_t fill[32];
};
#pragma pack(pop)
static_assert(sizeof(EchoRequest) == 45 && offsetof(EchoRequest, sendTime) == 9);

unsigned int nextIdentifier = 1;
unsigned int nextSequence = 1;

bool FindHost(const char* host, in_addr& address) {
    if (host == nullptr) return false;
    int parts[kOctets] = {};
    if (std::sscanf(host, "%d.%d.%d.%d", &parts[0], &parts[1], &parts[2], &parts[3]) == kOctets) {
        unsigned char bytes[kOctets];
        for (int i = 0; i < kOctets; ++i) bytes[i] = static_cast<unsigned char>(parts[i]);
        std::memcpy(&address, bytes, sizeof bytes);
        return true;
    }
    return tessel::FirstAddress(gethostbyname(host), address);
}

} // namespace

int CSocket::Ping(const char* host, int count) {
    const tessel::WinsockSession session(kPingWinsockVersion);
    CSocket raw(MODE_BLOCKING);
    sockaddr_in to = tessel::Endpoint(INADDR_ANY, 0);
    if (raw.OpenSocket(SOCK_RAW, IPPROTO_ICMP) == SOCKET_ERROR || !FindHost(host, to.sin_addr)) return 0;
    int replies = 0;
    while (replies < count) {
        SendEchoRequest(raw.m_Socket, to);
        if (WaitForEchoReply(raw.m_Socket) <= 0) break;
        // ODD-84: any ICMP message counts, on loopback even the request itself.
        ++replies;
        (void)RecvEchoReply(raw.m_Socket); // the round-trip time is not returned
    }
    return replies;
}

void CSocket::SendEchoRequest(SOCKET socket, const sockaddr_in& to) {
    EchoRequest request{};
    request.type = kEchoRequest;
    request.identifier = static_cast<std::uint16_t>(nextIdentifier++);
    request.sequence = static_cast<std::uint16_t>(nextSequence++);
    request.sendTime = GetTickCount();
    std::iota(request.fill, request.fill + sizeof request.fill, kFirstFill);
    request.checksum = in_cksum(reinterpret_cast<const unsigned char*>(&request), sizeof request);
    // A failure shows as a missing reply.
    (void)sendto(socket, reinterpret_cast<const char*>(&request), sizeof request, 0,
                 reinterpret_cast<const sockaddr*>(&to), sizeof to);
}

int CSocket::WaitForEchoReply(SOCKET socket) {
    fd_set readable = tessel::SetOf(socket);
    timeval timeout{kTimeoutSeconds, 0};
    return select(0, &readable, nullptr, nullptr, &timeout);
}

unsigned long CSocket::RecvEchoReply(SOCKET socket) {
    char reply[kLongestReply];
    const int received = recvfrom(socket, reply, sizeof reply, 0, nullptr, nullptr);
    constexpr std::size_t kSendTime = kIpHeader + offsetof(EchoRequest, sendTime);
    std::uint32_t sendTime = 0;
    // GUARD-75: a reply may be shorter than the request.
    if (received < static_cast<int>(kSendTime + sizeof sendTime)) return 0;
    std::memcpy(&sendTime, reply + kSendTime, sizeof sendTime);
    return GetTickCount() - sendTime;
}

unsigned short CSocket::in_cksum(const unsigned char* data, unsigned int size) {
    unsigned int sum = 0;
    for (unsigned int i = 0; i + 1 < size; i += 2) sum += data[i] | static_cast<unsigned int>(data[i + 1]) << 8;
    if (size % 2 != 0) sum += data[size - 1];
    sum = (sum >> 16) + (sum & 0xFFFF);
    sum += sum >> 16;
    return static_cast<unsigned short>(~sum);
}
