#include <net/DottedText.h>
#include <net/Winsock.h>
#include <tessel/net/socket.h>

#include <algorithm>

namespace {

constexpr int kFewInterfaces = 10;
constexpr int kManyInterfaces = 20;

unsigned long AddressOf(const INTERFACE_INFO& entry) {
    return entry.iiAddress.AddressIn.sin_addr.s_addr;
}

unsigned long MaskOf(const INTERFACE_INFO& entry) {
    return entry.iiNetmask.AddressIn.sin_addr.s_addr;
}

bool IsLoopback(const INTERFACE_INFO& entry) {
    return (entry.iiFlags & IFF_LOOPBACK) != 0;
}

unsigned long Read(const wchar_t* text) {
    return text == nullptr ? INADDR_ANY : tessel::ReadDotted<tessel::kSocketText>(text);
}

} // namespace

int CSocket::GetInterfaceList(INTERFACE_INFO* list, unsigned int size) {
    CSocket temporary(MODE_EVENT);
    if (temporary.OpenSocket(SOCK_STREAM, 0) == SOCKET_ERROR) return 0;
    DWORD returned = 0;
    const int result =
        WSAIoctl(temporary.m_Socket, SIO_GET_INTERFACE_LIST, nullptr, 0, list, size, &returned, nullptr, nullptr);
    if (result == SOCKET_ERROR) return 0;
    return static_cast<int>(std::min<DWORD>(returned, size) / sizeof *list);
}

int CSocket::GetNumberOfNetInterfaces() {
    const tessel::WinsockSession session(tessel::kWinsockVersion);
    INTERFACE_INFO list[kManyInterfaces];
    const int count = GetInterfaceList(list, sizeof list);
    return count - static_cast<int>(std::count_if(list, list + count, IsLoopback));
}

unsigned long CSocket::GetLocalNetInterfaceAddress(const wchar_t* interfaceAddress, const wchar_t* mask) {
    return GetLocalNetInterfaceAddress(Read(interfaceAddress), Read(mask));
}

unsigned long CSocket::GetLocalNetInterfaceAddress(unsigned long interfaceAddress, unsigned long mask) {
    INTERFACE_INFO list[kFewInterfaces];
    const INTERFACE_INFO* const end = std::remove_if(list, list + GetInterfaceList(list, sizeof list), IsLoopback);
    if (end == list) return 0;
    if (end - list == 1 || interfaceAddress == 0) return AddressOf(list[0]);
    const auto* found = std::find_if(static_cast<const INTERFACE_INFO*>(list), end,
                                     [&](const INTERFACE_INFO& entry) { return AddressOf(entry) == interfaceAddress; });
    if (found != end) return AddressOf(*found);
    found = std::find_if(static_cast<const INTERFACE_INFO*>(list), end, [&](const INTERFACE_INFO& entry) {
        return MaskOf(entry) == mask && (AddressOf(entry) & mask) == (interfaceAddress & mask);
    });
    return AddressOf(found != end ? *found : list[0]);
}

bool CSocket::AddrChanged() const {
    INTERFACE_INFO list[kFewInterfaces];
    return std::none_of(list, list + GetInterfaceList(list, sizeof list), [this](const INTERFACE_INFO& entry) {
        return !IsLoopback(entry) && AddressOf(entry) == m_ulLocalAddress;
    });
}

unsigned long CSocket::SubnetBroadcast() const {
    INTERFACE_INFO list[kManyInterfaces];
    const INTERFACE_INFO* const end = list + GetInterfaceList(list, sizeof list);
    const auto* const own =
        std::find_if(static_cast<const INTERFACE_INFO*>(list), end,
                     [this](const INTERFACE_INFO& entry) { return AddressOf(entry) == m_ulLocalAddress; });
    if (own == end) return INADDR_BROADCAST;
    return (m_ulLocalAddress & MaskOf(*own)) | ~MaskOf(*own);
}
