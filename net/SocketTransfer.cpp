#include <net/Winsock.h>
#include <tessel/net/socket.h>

using tessel::ErrorOf;
using tessel::SizeForWinsock;

namespace {

/// The result of a receive or send; call it directly after that.
/// @param counted  receives the number of bytes; may be null
int ResultOf(int count, unsigned int* counted) {
    if (count == SOCKET_ERROR) return WSAGetLastError();
    if (counted != nullptr) *counted = static_cast<unsigned int>(count);
    return 0;
}

int ResultOfReceiving(int count, unsigned int* received) {
    const int result = ResultOf(count, received);
    return count == 0 ? WSAEDISCON : result;
}

} // namespace

int CSocket::Recv(unsigned char* buffer, unsigned int size, unsigned int* received, int flags) {
    if (buffer == nullptr) return WSAEFAULT;
    return ResultOfReceiving(recv(m_Socket, reinterpret_cast<char*>(buffer), SizeForWinsock(size), flags), received);
}

int CSocket::ReceiveFrom(unsigned char* buffer, unsigned int size, sockaddr_in* from, unsigned int* fromLength,
                         unsigned int* received, int flags) {
    if (buffer == nullptr) return WSAEFAULT;
    int length = fromLength == nullptr ? static_cast<int>(sizeof *from) : SizeForWinsock(*fromLength);
    const int count = recvfrom(m_Socket, reinterpret_cast<char*>(buffer), SizeForWinsock(size), flags,
                               reinterpret_cast<sockaddr*>(from), from == nullptr ? nullptr : &length);
    // ODD-81: an empty datagram looks like a peer that closed.
    const int result = ResultOfReceiving(count, received);
    if (count != SOCKET_ERROR && fromLength != nullptr) *fromLength = static_cast<unsigned int>(length);
    return result;
}

int CSocket::Send(const unsigned char* buffer, unsigned int size, unsigned int* sent, int flags) {
    if (buffer == nullptr) return WSAEFAULT;
    return ResultOf(send(m_Socket, reinterpret_cast<const char*>(buffer), SizeForWinsock(size), flags), sent);
}

int CSocket::SetSendTimeout(unsigned int milliseconds) {
    return ErrorOf(setsockopt(m_Socket, SOL_SOCKET, SO_SNDTIMEO, reinterpret_cast<const char*>(&milliseconds),
                              sizeof milliseconds));
}

int CSocket::GetSendTimeout(unsigned int* milliseconds) {
    if (milliseconds == nullptr) return WSAEFAULT;
    int size = sizeof *milliseconds;
    return ErrorOf(getsockopt(m_Socket, SOL_SOCKET, SO_SNDTIMEO, reinterpret_cast<char*>(milliseconds), &size));
}
