#include <net/DottedText.h>
#include <net/Winsock.h>
#include <tessel/net/commmsg.h>
#include <tessel/net/socket.h>

#include <algorithm>

int CSocket::SendTo(const CCommMsg* message, sockaddr_in* to, unsigned int toLength, unsigned short port,
                    unsigned int* sent) {
    if (message == nullptr || to == nullptr) return WSAEFAULT;
    to->sin_port = htons(port != 0 ? port : m_usPort);
    const int length = static_cast<int>(std::min<unsigned int>(toLength, sizeof *to));
    const int count = sendto(m_Socket, reinterpret_cast<const char*>(message->GetData()),
                             tessel::SizeForWinsock(message->GetLength()), 0, reinterpret_cast<sockaddr*>(to), length);
    if (count == SOCKET_ERROR) return WSAGetLastError();
    if (sent != nullptr) *sent = static_cast<unsigned int>(count);
    return 0;
}

int CSocket::Broadcast(const CCommMsg* message, unsigned short port, bool subnet) {
    sockaddr_in to = tessel::Endpoint(subnet ? SubnetBroadcast() : INADDR_BROADCAST, 0);
    return SendTo(message, &to, sizeof to, port, nullptr);
}

int CSocket::Multicast(const CCommMsg* message, const wchar_t* group, unsigned short port) {
    if (group == nullptr) return WSAEFAULT;
    sockaddr_in to = tessel::Endpoint(tessel::ReadDotted<tessel::kSocketText>(group), 0);
    return SendTo(message, &to, sizeof to, port, nullptr);
}
