#include <net/Winsock.h>
#include <tessel/net/socket.h>

#include <algorithm>
#include <cstdio>
#include <cstring>

using tessel::kWinsockVersion;

bool CSocket::GetHostAddressByName(const char* name, char* dottedOut) {
    if (name == nullptr || dottedOut == nullptr) return false;
    const tessel::WinsockSession session(kWinsockVersion);
    in_addr address;
    if (!tessel::FirstAddress(gethostbyname(name), address)) return false;
    unsigned char bytes[sizeof address];
    std::memcpy(bytes, &address, sizeof bytes);
    std::snprintf(dottedOut, sizeof "255.255.255.255", "%d.%d.%d.%d", bytes[0], bytes[1], bytes[2], bytes[3]);
    return true;
}

bool CSocket::GetHostNameByAddress(const char* dotted, char* nameOut) {
    if (dotted == nullptr || nameOut == nullptr) return false;
    const tessel::WinsockSession session(kWinsockVersion);
    const unsigned long address = inet_addr(dotted);
    const hostent* const host = gethostbyaddr(reinterpret_cast<const char*>(&address), sizeof address, AF_INET);
    if (host == nullptr || host->h_name == nullptr) return false;
    std::memcpy(nameOut, host->h_name, std::strlen(host->h_name) + 1);
    return true;
}

int CSocket::GetLocalHostName(wchar_t* out, unsigned int size) {
    const tessel::WinsockSession session(kWinsockVersion);
    char name[NI_MAXHOST] = {};
    // GUARD-74: no name is longer than this buffer.
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
