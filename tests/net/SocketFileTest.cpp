#include "support/Loopback.h"

#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <fstream>
#include <thread>

namespace {

struct SocketFiles : testing::Test {
    TemporaryFolder folder;
    std::filesystem::path source = folder / L"source", target = folder / L"target";
};

} // namespace

TEST_F(SocketFiles, AFileOfAnySizeArrivesBehindItsHead) {
    for (const unsigned int size : {0U, 1U, 50000000U}) {
        std::string content(size, '\0');
        for (std::size_t i = 0; i < content.size(); ++i) content[i] = static_cast<char>(i * 7 >> 3);
        std::ofstream(source, std::ios::binary) << content;
        Connection connection(CSocket::MODE_EVENT);
        CSocket peer(std::exchange(connection.bare, INVALID_SOCKET), CSocket::MODE_BLOCKING, nullptr);
        std::thread sending([&] { EXPECT_EQ(peer.WriteFile(Message("head").get(), source.c_str()), 0); });
        EXPECT_EQ(connection.own->ReadFile(target.c_str(), size + 8), 0);
        sending.join();
        EXPECT_TRUE(BytesOf(target) == Wire("head") + content) << size;
    }
}

TEST_F(SocketFiles, Odd82BytesBeyondTheExpectedOnesAreInTheFileToo) {
    Connection connection(CSocket::MODE_BLOCKING);
    connection.Send("more than expected");
    connection.Close();
    EXPECT_EQ(connection.own->ReadFile(target.c_str(), 4), 0);
    EXPECT_EQ(BytesOf(target), "more than expected");
}

TEST_F(SocketFiles, APeerThatClosesOrFallsSilentEndsTheReceive) {
    Connection closing(CSocket::MODE_EVENT);
    closing.Send("part");
    closing.Close();
    EXPECT_EQ(closing.own->ReadFile(target.c_str(), 100), 1);
    EXPECT_EQ(BytesOf(target), "part");
    const ImportPatch patch(
        "WaitForMultipleObjects", &WaitForMultipleObjects,
        [](DWORD, const HANDLE*, BOOL, DWORD ms) { return ms == 30000 ? WAIT_TIMEOUT : WAIT_OBJECT_0; });
    const Connection silent(CSocket::MODE_EVENT);
    EXPECT_EQ(silent.own->ReadFile(target.c_str(), 100), 1);
    EXPECT_EQ(silent.own->ReadFile(target.c_str(), 0), 0);
    const Connection unselected(CSocket::MODE_BLOCKING);
    u_long on = 1;
    ioctlsocket(unselected.handle, static_cast<long>(FIONBIO), &on);
    EXPECT_EQ(unselected.own->ReadFile(target.c_str(), 100), 1) << "no event to wait for";
}

TEST_F(SocketFiles, TheLaterEventDecidesHowAReceiveEnds) {
    const Connection connection(CSocket::MODE_EVENT);
    long reported = 0;
    const ImportPatch patch("WSAEnumNetworkEvents", &WSAEnumNetworkEvents, [&](SOCKET, WSAEVENT, auto* events) {
        *events = {};
        events->lNetworkEvents = reported;
        events->iErrorCode[FD_READ_BIT] = WSAENETDOWN;
        events->iErrorCode[FD_CLOSE_BIT] = WSAECONNABORTED;
        return 0;
    });
    for (const auto& [events, result] : {std::pair(FD_READ, WSAENETDOWN),
                                         {FD_READ | FD_CLOSE, WSAECONNABORTED},
                                         {FD_CLOSE | FD_ACCEPT, 1},
                                         {FD_READ | FD_WRITE, 1}}) {
        reported = events;
        SetEvent(connection.own->GetEventHandle());
        EXPECT_EQ(connection.own->ReadFile(target.c_str(), 100), result) << events;
    }
}

TEST_F(SocketFiles, FilesThatCannotBeUsedGiveTheirError) {
    Connection connection(CSocket::MODE_BLOCKING);
    const auto head = Message("");
    EXPECT_EQ(connection.own->WriteFile(head.get(), source.c_str()), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(connection.own->ReadFile((target / L"below").c_str(), 1), ERROR_PATH_NOT_FOUND);
    connection.Send("x");
    const ImportPatch patch(Failing("WriteFile", &WriteFile, FALSE, ERROR_DISK_FULL));
    EXPECT_EQ(connection.own->ReadFile(target.c_str(), 1), ERROR_DISK_FULL);
    std::ofstream(source) << "x";
    EXPECT_EQ(CSocket().WriteFile(head.get(), source.c_str()), WSAENOTSOCK);
}
