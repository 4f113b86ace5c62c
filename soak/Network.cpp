#include "Subject.h"

#include "support/Loopback.h" // Winsock, before windows.h

#include <tessel/foundation/event.h>
#include <tessel/net/commmsg.h>
#include <tessel/net/mailslot.h>
#include <tessel/net/msgsocket.h>
#include <tessel/net/namedpipe.h>
#include <tessel/net/networkid.h>

#include <cstring>
#include <memory>

namespace {

unsigned char kBytes[] = "soak";

void Connect() {
    const LoopbackListener listener;
    CSocket client(LoopbackListener::Connect(listener.Port()), CSocket::MODE_BLOCKING, nullptr);
    CSocket server(listener.Accept(), CSocket::MODE_EVENT, nullptr);
    Require(client.InitConnected() == 0 && server.InitConnected() == 0, "the ends are set up");
    unsigned int done = 0;
    unsigned char buffer[sizeof kBytes];
    Require(client.Send(kBytes, sizeof kBytes, &done, 0) == 0 && done == sizeof kBytes, "bytes are sent");
    Require(WaitForSingleObject(server.GetEventHandle(), 5000) == WAIT_OBJECT_0, "bytes arrive");
    Require(server.Recv(buffer, sizeof buffer, &done, 0) == 0 && done == sizeof kBytes, "bytes are received");
    Require(server.Disconnect() == 0 && client.Disconnect() == 0, "the ends part"); // the client waits for the server
}

void SendRecords() {
    const LoopbackListener listener;
    CMsgSocket client(LoopbackListener::Connect(listener.Port()), CMsgSocket::BUFFER_SIZE, CSocket::MODE_BLOCKING,
                      nullptr);
    CMsgSocket server(listener.Accept(), CMsgSocket::BUFFER_SIZE, CSocket::MODE_BLOCKING, nullptr);
    Require(client.InitConnected() == 0 && server.InitConnected() == 0, "the ends are set up");
    const std::unique_ptr<CCommMsg> record(new (1000) CCommMsg);
    std::memset(record->GetData(), 'x', record->GetLength());
    for (int i = 0; i < 5; ++i) {
        CCommMsg* received = nullptr;
        Require(client.Write(record.get(), 5000) == 0 && server.Read(&received) == 0, "a record arrives");
        const std::unique_ptr<CCommMsg> owned(received);
        Require(owned->GetLength() == record->GetLength(), "a record keeps its length");
    }
}

void UsePipe() {
    CEvent done(nullptr, 1);
    CServerNamedPipe server(L"Tessel soak");
    CClientNamedPipe client(L"Tessel soak");
    Require(server.Open(CClientNamedPipe::MODE_READ_WRITE, true), "there is a pipe");
    server.AwaitConnection(done.GetHandle());
    Require(client.Open(L".", CClientNamedPipe::MODE_READ_WRITE, false), "the pipe is there to open");
    Require(done.WaitOnEvent(5000) == 0, "the client arrives");
    unsigned char buffer[sizeof kBytes];
    Require(client.Write(kBytes, sizeof kBytes, nullptr), "bytes are written");
    done.ResetEvent();
    Require(server.Read(buffer, sizeof buffer, done.GetHandle()) && done.WaitOnEvent(5000) == 0, "bytes are read");
    client.Close();
    server.Close();
}

void UseMailslot() {
    CMailslot reader;
    CMailslot writer;
    Require(reader.Create(L"Tessel soak", 100, 1000, nullptr) && writer.Open(L"Tessel soak", L"."), "there is a slot");
    unsigned long done = 0;
    unsigned char buffer[100];
    Require(writer.Write(kBytes, sizeof kBytes, &done), "a message is written");
    Require(reader.Read(buffer, sizeof buffer, &done, nullptr) && done == sizeof kBytes, "a message is read");
}

void AskForIdentity() {
    wchar_t name[256];
    unsigned long size = 256;
    CNetworkId identity;
    Require(identity.GetComputerNameW(name, &size) == 0, "the machine has a name");
    Require(identity.ValidateName(name) == VN_VALID, "the name is valid");
    identity.GetIpAddress(name);
    const CSocket startsWinsock;
    Require(CSocket::GetLocalHostName(name, 256) == 0, "the host has a name");
    (void)CSocket::GetNumberOfNetInterfaces(); // there may be none but loopback
}

const Subject connections("connections", Connect);
const Subject records("framed records", SendRecords);
const Subject pipes("pipes", UsePipe);
const Subject mailslots("mailslots", UseMailslot);
const Subject identity("network identity", AskForIdentity);

} // namespace
