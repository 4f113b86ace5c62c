#include "Channels.h"
#include "support/ChildProcess.h"

#include <gtest/gtest.h>
#include <tessel/net/namedpipe.h>

#include <functional>
#include <optional>
#include <tuple>

namespace {

constexpr auto kReadWrite = CClientNamedPipe::MODE_READ_WRITE;

const Role talker("talk-to-pipe", [](const std::vector<std::string>&) {
    CClientNamedPipe pipe(kName);
    while (!pipe.Open(L".", kReadWrite, false)) Sleep(1);
    char answer[8]{};
    pipe.Write("a message", 9, nullptr) && pipe.Read(answer, 4, nullptr);
    Say(answer);
    pipe.Read(answer, 4, nullptr);
    Say("failed " + std::to_string(pipe.GetStatus()));
    return 0;
});

struct NamedPipe : testing::Test {
    CServerNamedPipe server{kName};
    CClientNamedPipe client{kName};
    Event event;
    char buffer[16]{};
};

} // namespace

TEST_F(NamedPipe, AServerTalksToOneProcessAfterTheOther) {
    ASSERT_TRUE(server.Open(kReadWrite, false));
    for (int peers = 2; peers > 0; --peers) {
        ChildProcess peer("talk-to-pipe");
        server.AwaitConnection(nullptr);
        EXPECT_FALSE(server.Read(buffer, 4, nullptr));
        EXPECT_EQ(server.GetStatus(), Code(ERROR_MORE_DATA));
        EXPECT_TRUE(server.Read(buffer + 4, 12, nullptr));
        EXPECT_EQ(server.GetStatus(), PIPE_CONNECTED);
        EXPECT_STREQ(buffer, "a message");
        EXPECT_TRUE(server.Write("pong", 4, nullptr));
        peer.WaitUntil("pong");
        server.CloseInstance();
        EXPECT_EQ(server.GetStatus(), PIPE_CLOSED);
        EXPECT_EQ(peer.WaitUntil("failed "), std::to_string(ERROR_PIPE_NOT_CONNECTED));
    }
}

TEST_F(NamedPipe, Odd88AnOverlappedTransferThatStartsReturnsFalseAndACopyHasARecordOfItsOwn) {
    std::optional<CServerNamedPipe> first(kName);
    ASSERT_TRUE(first->Open(kReadWrite, true));
    first->AwaitConnection(event.handle);
    EXPECT_EQ(first->GetStatus(), Code(ERROR_IO_PENDING));
    ASSERT_TRUE(client.Open(L".", kReadWrite, false));
    EXPECT_TRUE(event.Comes());
    EXPECT_EQ(first->GetStatus(), PIPE_CONNECTED);
    server = *first;
    EXPECT_EQ(server.GetStatus(), PIPE_CONNECTED);
    first.reset();
    EXPECT_FALSE(server.Read(buffer, 16, event.handle));
    EXPECT_EQ(server.GetStatus(), Code(ERROR_IO_PENDING));
    EXPECT_TRUE(client.Write("ping", 4, nullptr));
    EXPECT_TRUE(event.Comes());
    EXPECT_EQ(server.GetStatus(), PIPE_CONNECTED);
    EXPECT_STREQ(buffer, "ping");
    EXPECT_TRUE(server.Write("pong", 4, event.handle)) << "there is room: it ends at once";
}

TEST_F(NamedPipe, TheSystemsAnswerAboutAPendingOperationBecomesTheStatus) {
    ASSERT_TRUE(server.Open(kReadWrite, true));
    SystemAnswers system{ERROR_IO_PENDING};
    EXPECT_FALSE(server.Read(buffer, 16, event.handle));
    for (const auto& [reply, status] : {std::pair(ERROR_PIPE_LISTENING, PIPE_LISTENING),
                                        {ERROR_IO_INCOMPLETE, 997ul},
                                        {ERROR_IO_PENDING, 997ul},
                                        {ERROR_BROKEN_PIPE, 109ul},
                                        {ERROR_PIPE_CONNECTED, PIPE_CONNECTED},
                                        {ERROR_BROKEN_PIPE, PIPE_CONNECTED}}) { // nothing is pending any more
        system.answer = reply;
        EXPECT_EQ(server.GetStatus(), status);
    }
}

TEST_F(NamedPipe, Odd89OpeningLeavesTheServersStatusAsItWas) {
    EXPECT_FALSE(client.Open(L".", kReadWrite, false));
    EXPECT_FALSE(server.Open(static_cast<CClientNamedPipe::MODE>(3), false));
    EXPECT_EQ(client.GetStatus(), Code(ERROR_FILE_NOT_FOUND));
    for (const unsigned long before : {PIPE_CLOSED, Code(ERROR_PIPE_CONNECTED)}) {
        EXPECT_EQ(server.GetStatus(), before);
        ASSERT_TRUE(server.Open(kReadWrite, false));
        EXPECT_EQ(server.GetStatus(), before);
        ASSERT_TRUE(client.Open(L".", kReadWrite, false));
        server.AwaitConnection(nullptr);
        EXPECT_EQ(server.GetStatus(), Code(ERROR_PIPE_CONNECTED)) << "it came before the call";
    }
}

TEST_F(NamedPipe, ModesAndTruncatedNamesReachTheSystem) {
    CallLog calls;
    const ImportPatch file(calls.Adding("CreateFileW", &CreateFileW, INVALID_HANDLE_VALUE, ERROR_ACCESS_DENIED));
    const ImportPatch pipe(
        calls.Adding("CreateNamedPipeW", &CreateNamedPipeW, INVALID_HANDLE_VALUE, ERROR_ACCESS_DENIED));
    CServerNamedPipe longServer(std::wstring(30, L'n').c_str());
    CClientNamedPipe nameless(nullptr);
    const std::tuple<CClientNamedPipe::MODE, bool, LPCWSTR, LPCWSTR> rows[] = {
        {CClientNamedPipe::MODE_READ, false, L"1", L"2147483648 3 - 3 128"},
        {CClientNamedPipe::MODE_WRITE, true, L"1073741826", L"1073741824 3 - 3 1073741824"},
        {kReadWrite, false, L"3", L"3221225472 3 - 3 128"}};
    for (const auto& [mode, overlapped, ofServer, ofClient] : rows) {
        EXPECT_FALSE(longServer.Open(mode, overlapped) || nameless.Open(L".", mode, overlapped));
        EXPECT_EQ(calls.Take(), L"CreateNamedPipeW \\\\.\\PIPE\\" + std::wstring(19, L'n') + L" " + ofServer +
                                    L" 6 255 4096 4096 4294967295 -\nCreateFileW \\\\.\\PIPE\\ " + ofClient + L" -\n");
    }
    EXPECT_EQ(longServer.GetStatus(), Code(ERROR_ACCESS_DENIED));
    EXPECT_FALSE(client.Open(std::wstring(300, L's').c_str(), kReadWrite, false));
    EXPECT_EQ(calls.Take().substr(0, 272), L"CreateFileW \\\\" + std::wstring(257, L's') + L" ");
}

TEST_F(NamedPipe, Odd90ClosingDisconnectsUnlessTheErrorSharesNoBit) {
    SystemAnswers system;
    CallLog calls;
    const ImportPatch flush(calls.Adding("FlushFileBuffers", &FlushFileBuffers, TRUE));
    const ImportPatch disconnect(calls.Adding("DisconnectNamedPipe", &DisconnectNamedPipe, TRUE));
    const std::wstring both = L"FlushFileBuffers *\nDisconnectNamedPipe *\n";
    for (const long error : {ERROR_SUCCESS, ERROR_MORE_DATA, ERROR_BROKEN_PIPE}) {
        ASSERT_TRUE(server.Open(kReadWrite, false));
        system.answer = error;
        server.Read(buffer, 1, nullptr);
        server.Close();
        EXPECT_EQ(calls.Take(), error == ERROR_BROKEN_PIPE ? L"" : both) << error;
        EXPECT_EQ(server.GetStatus(), PIPE_CLOSED);
    }
    server.Close();
    EXPECT_EQ(calls.Take(), both) << "PIPE_CLOSED shares a bit, too";
}

TEST_F(NamedPipe, Odd104AnOperationUnderWayEndsBeforeItsObjectAndHidesTheClosing) {
    using Pipe = std::optional<CServerNamedPipe>;
    const std::function<void(Pipe&)> ends[] = {[](Pipe& pipe) { pipe->Close(); },
                                               [](Pipe& pipe) { EXPECT_TRUE(pipe->Open(kReadWrite, true)); },
                                               [](Pipe& pipe) { pipe.reset(); }};
    for (const auto& end : ends) {
        Pipe leaving(kName);
        ASSERT_TRUE(leaving->Open(kReadWrite, true));
        leaving->AwaitConnection(event.handle);
        const CServerNamedPipe copy(*leaving); // keeps the handle open, not the operation under way
        end(leaving);
        EXPECT_TRUE(event.Comes(0)) << &end - ends;
        EXPECT_TRUE(!leaving || leaving->GetStatus() == Code(ERROR_OPERATION_ABORTED)) << &end - ends;
    }
    EXPECT_FALSE(client.Open(L".", kReadWrite, false)) << "the last copy closed it";
}
