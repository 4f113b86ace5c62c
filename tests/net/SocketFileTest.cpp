#include "Loopback.h"

#include "support/ChildProcess.h"

#include <gtest/gtest.h>
#include <tessel/net/commmsg.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace {

std::filesystem::path Temporary(const wchar_t* name) {
    return std::filesystem::temp_directory_path() / (name + std::to_wstring(GetCurrentProcessId()));
}

std::string Content(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

class SocketFiles : public testing::Test {
protected:
    ~SocketFiles() override {
        std::filesystem::remove(source);
        std::filesystem::remove(target);
    }
    std::filesystem::path source = Temporary(L"tessel source ");
    std::filesystem::path target = Temporary(L"tessel target ");
};

/// Accepts one connection, takes the head and the file whose size it tells, and answers with a byte.
const Role receiveFile("receive-file", [](const std::vector<std::string>& arguments) {
    const Interfaces loopback;
    const unsigned short port = FreePort();
    CSocket server;
    server.InitAsync(port, kOwn, kOwnMask);
    Say("listening " + std::to_string(port));
    CSocket* accepted = nullptr;
    server.Accept(&accepted);
    const std::unique_ptr<CSocket> peer(accepted);
    unsigned int head[2] = {}; // length word and data
    peer->Recv(reinterpret_cast<unsigned char*>(head), sizeof head, nullptr, MSG_WAITALL);
    peer->SetMode(CSocket::MODE_EVENT, WM_SOCKET_DATA, FD_READ | FD_CLOSE);
    const auto path = std::filesystem::temp_directory_path() / arguments[0];
    const int result = peer->ReadFile(path.c_str(), head[1]);
    Say("received " + std::to_string(head[0]) + " " + std::to_string(result));
    return peer->Disconnect();
});

DWORD WINAPI NoSignal(DWORD, const HANDLE*, BOOL, DWORD milliseconds) {
    return milliseconds == 30000 ? WAIT_TIMEOUT : WAIT_OBJECT_0;
}

BOOL WINAPI FullDisk(HANDLE, const void*, DWORD, DWORD* written, OVERLAPPED*) {
    *written = 0;
    return TRUE;
}

long eventsToReport;

int WSAAPI ReportEvents(SOCKET, WSAEVENT, WSANETWORKEVENTS* events) {
    *events = {};
    events->lNetworkEvents = eventsToReport;
    events->iErrorCode[FD_READ_BIT] = WSAENETDOWN;
    events->iErrorCode[FD_CLOSE_BIT] = WSAECONNABORTED;
    return 0;
}

} // namespace

TEST_F(SocketFiles, AFileReachesAnotherProcessBehindItsHead) {
    for (const unsigned int size : {0U, 1U, 50000000U}) {
        std::string content(size, '\0');
        for (std::size_t i = 0; i < content.size(); ++i) content[i] = static_cast<char>(i * 7 >> 3);
        std::ofstream(source, std::ios::binary) << content;
        ChildProcess receiver("receive-file", {"tessel-received"});
        const auto port = static_cast<unsigned short>(std::stoul(receiver.WaitUntil("listening ")));
        CSocket client;
        ASSERT_EQ(client.Connect(kLoopback, port), 0);
        const std::unique_ptr<CCommMsg> head(new (4) CCommMsg);
        std::memcpy(head->GetData(), &size, sizeof size);
        EXPECT_EQ(client.WriteFile(head.get(), source.c_str()), 0);
        if (size == 0) client.Disconnect(); // nothing else wakes who waits for nothing
        EXPECT_EQ(receiver.WaitUntil("received "), "4 0");
        EXPECT_EQ(receiver.ExitCode(), 0u);
        const auto received = std::filesystem::temp_directory_path() / "tessel-received";
        EXPECT_TRUE(Content(received) == content) << size;
        std::filesystem::remove(received);
    }
}

TEST_F(SocketFiles, Odd82BytesBeyondTheExpectedOnesAreInTheFileToo) {
    Connection connection(CSocket::MODE_BLOCKING);
    connection.Send("more than expected", 18);
    connection.Close();
    EXPECT_EQ(connection.own->ReadFile(target.c_str(), 4), 0);
    EXPECT_EQ(Content(target), "more than expected");
}

TEST_F(SocketFiles, APeerThatClosesResetsOrFallsSilentEndsTheReceive) {
    Connection closing(CSocket::MODE_EVENT);
    closing.Send("part", 4);
    closing.Close();
    EXPECT_EQ(closing.own->ReadFile(target.c_str(), 100), 1);
    EXPECT_EQ(Content(target), "part");
    Connection resetting(CSocket::MODE_EVENT);
    resetting.Send("part", 4);
    resetting.Reset();
    EXPECT_NE(resetting.own->ReadFile(target.c_str(), 100),
              0); // the error, or 1 where the system lets it pass for a close
    const ImportPatch patch(L"Tessel.dll", "WaitForMultipleObjects", &NoSignal);
    const Connection silent(CSocket::MODE_EVENT);
    EXPECT_EQ(silent.own->ReadFile(target.c_str(), 100), 1);
    EXPECT_EQ(silent.own->ReadFile(target.c_str(), 0), 0);
    const Connection unselected(CSocket::MODE_BLOCKING);
    u_long on = 1;
    ioctlsocket(unselected.handle, static_cast<long>(FIONBIO), &on);
    EXPECT_EQ(unselected.own->ReadFile(target.c_str(), 100), 1); // no event to wait for
}

TEST_F(SocketFiles, TheLaterEventDecidesHowAReceiveEnds) {
    const Connection connection(CSocket::MODE_EVENT);
    const ImportPatch patch(L"Tessel.dll", "WSAEnumNetworkEvents", &ReportEvents);
    const struct {
        long events;
        int result;
    } cases[] = {{FD_READ, WSAENETDOWN},
                 {FD_READ | FD_CLOSE, WSAECONNABORTED},
                 {FD_CLOSE | FD_ACCEPT, 1},
                 {FD_READ | FD_WRITE, 1}};
    for (const auto& [events, result] : cases) {
        eventsToReport = events;
        SetEvent(connection.own->GetEventHandle());
        EXPECT_EQ(connection.own->ReadFile(target.c_str(), 100), result) << events;
    }
}

TEST_F(SocketFiles, FilesThatCannotBeUsedGiveTheirError) {
    Connection connection(CSocket::MODE_BLOCKING);
    const std::unique_ptr<CCommMsg> head(new (0) CCommMsg);
    EXPECT_EQ(connection.own->WriteFile(head.get(), source.c_str()), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(connection.own->WriteFile(head.get(), nullptr), ERROR_PATH_NOT_FOUND);
    EXPECT_EQ(connection.own->ReadFile((target / L"below").c_str(), 1), ERROR_PATH_NOT_FOUND);
    connection.Send("x", 1);
    const ImportPatch patch(L"Tessel.dll", "WriteFile", &FullDisk);
    EXPECT_EQ(connection.own->ReadFile(target.c_str(), 1), ERROR_DISK_FULL);
    std::ofstream(source) << "x";
    EXPECT_EQ(CSocket().WriteFile(head.get(), source.c_str()), WSAENOTSOCK);
}
