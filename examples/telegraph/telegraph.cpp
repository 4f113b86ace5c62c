#include <tessel/tessel.h>

#include <cstdio>
#include <cstring>

int main() {
    constexpr unsigned short kPort = 40404;
    constexpr char kText[] = "what was sent";
    CSocket listener;
    CMsgSocket receiver; // blocking, for records of up to 4,092 bytes
    CSocket* sender = nullptr;
    unsigned long address = CSocket::GetLocalNetInterfaceAddress(0UL, 0UL); // where the listener will be
    if (address == 0) address = CIpAddress("127.0.0.1");
    if (listener.InitAsync(kPort, nullptr, nullptr) != 0) return 1;
    if (receiver.Connect(address, kPort) != 0 || listener.Accept(&sender) != 0) return 1;

    CCommMsg* const message = new (sizeof kText) CCommMsg;
    std::memcpy(message->GetData(), kText, sizeof kText);
    int result = sender->Send(message->GetMsg(), message->GetXmitLength(), nullptr, 0);
    delete message;

    CCommMsg* received = nullptr;
    if (result == 0) result = receiver.Read(&received);
    if (result == 0) { // the text need not be terminated
        const unsigned int length = received->GetLength();
        std::printf("%u bytes: %.*s\n", length, static_cast<int>(length), reinterpret_cast<char*>(received->GetData()));
    }
    delete received;
    delete sender;
    return result;
}
