#include <net/Winsock.h>
#include <tessel/socket.h>

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace {

constexpr WORD kVersion = MAKEWORD(2, 0);

bool HasAddress(const hostent* host) {
    return host != nullptr && host->h_addrtype == AF_INET && host->h_length == 4 && host->h_addr_list[0] != nullptr;
}

} // namespace

bool CSocket::GetHostAddressByName(const char* name, char* dottedOut) {
    if (name == nullptr || dottedOut == nullptr) return false;
    const tessel::WinsockSession session(kVersion);
    const hostent* const host = gethostbyname(name);
    if (!HasAddress(host)) return false;
    unsigned char bytes[4];
    std::memcpy(bytes, host->h_addr_list[0], sizeof bytes);
    std::snprintf(dottedOut, sizeof "255.255.255.255", "%d.%d.%d.%d", bytes[0], bytes[1], bytes[2], bytes[3]);
    return true;
}

bool CSocket::GetHostNameByAddress(const char* dotted, char* nameOut) {
    if (dotted == nullptr || nameOut == nullptr) return false;
    const tessel::WinsockSession session(kVersion);
    const unsigned long address = inet_addr(dotted);
    const hostent* const host = gethostbyaddr(reinterpret_cast<const char*>(&address), 4, AF_INET);
    if (host == nullptr || host->h_name == nullptr) return false;
    std::memcpy(nameOut, host->h_name, std::strlen(host->h_name) + 1);
    return true;
}

int CSocket::GetLocalHostName(wchar_t* out, unsigned int size) {
    const tessel::WinsockSession session(kVersion);
    char name[NI_MAXHOST] = {};
    // GUARD-74: no name is longer than this, whatever room the caller has.
    const unsigned int room = std::min<unsigned int>(size, sizeof name);
    if (out == nullptr || room == 0) {
        WSASetLastError(WSAEFAULT);
        return SOCKET_ERROR;
    }
    const int result = gethostname(name, static_cast<int>(room));
    if (result != 0) return result;
    std::transform(name, name + room, out, [](char c) { return static_cast<wchar_t>(static_cast<unsigned char>(c)); });
    return result;
}
