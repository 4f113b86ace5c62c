#include "support/ChildProcess.h"
#include "support/ImportPatch.h"

#include <gtest/gtest.h>
#include <tessel/channels.h>

#include <optional>
#include <string>
#include <vector>

namespace {

constexpr const wchar_t* kLibrary = L"Tessel.dll";
constexpr auto kReadWrite = CClientNamedPipe::MODE_READ_WRITE;

constexpr unsigned long Code(long error) {
    return static_cast<unsigned long>(error);
}

struct Event {
    HANDLE handle = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    ~Event() { CloseHandle(handle); }
    bool Comes() const { return WaitForSingleObject(handle, 10000) == WAIT_OBJECT_0; }
};

unsigned char* Bytes(std::string& text) {
    return reinterpret_cast<unsigned char*>(text.data());
}

int WriteToMailslot(const std::vector<std::string>&) {
    CMailslot slot;
    std::string text = "hello";
    unsigned long written = 0;
    const bool sent = slot.Open(L"Tessel test slot", L".") && slot.Write(Bytes(text), 5, &written) &&
                      slot.Write(Bytes(text), 1, nullptr);
    Say(sent && written == 5 ? "sent" : "failed");
    return 0;
}
const Role writer("write-to-mailslot", WriteToMailslot);

/// Connects, then does as it is told: any line is written to the pipe, "read" reads.
int TalkToPipe(const std::vector<std::string>&) {
    CClientNamedPipe pipe(L"Tessel test pipe");
    if (!pipe.Open(L".", kReadWrite, false)) Say("no pipe: " + std::to_string(pipe.GetStatus()));
    Say("connected");
    for (std::string line = Hear(); !line.empty() && line != "end"; line = Hear()) {
        char buffer[8]{};
        const bool done = line == "read" ? pipe.Read(buffer, 4, nullptr)
                                         : pipe.Write(line.data(), static_cast<unsigned int>(line.size()), nullptr);
        Say(done ? std::string("done ") + buffer : "failed " + std::to_string(pipe.GetStatus()));
    }
    return 0;
}
const Role talker("talk-to-pipe", TalkToPipe);

using Numbers = std::vector<DWORD>;

DWORD transferError = 0; ///< what the patched transfer and its result give; 0: success
std::wstring seenPath;
Numbers seenNumbers;
int leaves = 0;

BOOL TransferResult() {
    SetLastError(transferError);
    return transferError == 0;
}

BOOL WINAPI TransferAsTold(HANDLE, void*, DWORD, DWORD*, OVERLAPPED*) {
    return TransferResult();
}

BOOL WINAPI ResultAsTold(HANDLE, OVERLAPPED*, DWORD* transferred, BOOL) {
    *transferred = 7;
    return TransferResult();
}

HANDLE WINAPI SeeFile(LPCWSTR path, DWORD access, DWORD share, SECURITY_ATTRIBUTES*, DWORD how, DWORD flags, HANDLE) {
    seenPath = path;
    seenNumbers = {access, share, how, flags};
    SetLastError(ERROR_ACCESS_DENIED);
    return INVALID_HANDLE_VALUE;
}

HANDLE WINAPI SeePipe(LPCWSTR path, DWORD open, DWORD mode, DWORD most, DWORD out, DWORD in, DWORD timeOut,
                      SECURITY_ATTRIBUTES*) {
    seenPath = path;
    seenNumbers = {open, mode, most, out, in, timeOut};
    SetLastError(ERROR_ACCESS_DENIED);
    return INVALID_HANDLE_VALUE;
}

BOOL WINAPI CountLeave(HANDLE) {
    ++leaves;
    return TRUE;
}

constexpr DWORD kShared = FILE_SHARE_READ | FILE_SHARE_WRITE;
constexpr DWORD kMessages = PIPE_TYPE_MESSAGE | PIPE_READMODE_MESSAGE;

struct Mailslot : testing::Test {
    CMailslot slot;
    std::string buffer = std::string(16, '-');
    unsigned long count = 99;
};

struct NamedPipe : testing::Test {
    CServerNamedPipe server{L"Tessel test pipe"};
    CClientNamedPipe client{L"Tessel test pipe"};
    Event event;
    char buffer[16]{};
    std::optional<ChildProcess> peer;

    void Connect() {
        ASSERT_TRUE(server.Open(kReadWrite, false));
        peer.emplace("talk-to-pipe");
        server.AwaitConnection(nullptr);
        peer->WaitUntil("connected");
    }
};

} // namespace

TEST_F(Mailslot, AnotherProcessWritesMessagesThatAreReadOneByOne) {
    ASSERT_TRUE(slot.Create(L"Tessel test slot", 100, 0, nullptr));
    EXPECT_EQ(std::wstring(slot.GetName()), L"Tessel test slot");
    EXPECT_EQ(slot.GetNameLen(), 17u);
    unsigned long size = 0, next = 0, timeOut = 99;
    EXPECT_EQ(slot.GetInfo(&size, &next, nullptr, &timeOut), 0u);
    EXPECT_EQ(size, 100u);
    EXPECT_EQ(next, MAILSLOT_NO_MESSAGE);
    EXPECT_EQ(timeOut, 0u);

    EXPECT_EQ(ChildProcess("write-to-mailslot").WaitUntil("sent"), "");
    EXPECT_EQ(slot.GetInfo(nullptr, &next, &count, nullptr), 0u);
    EXPECT_EQ(next, 5u);
    EXPECT_GE(count, 1u) << "Wine counts no further";
    EXPECT_TRUE(slot.Read(Bytes(buffer), 16, &count, nullptr));
    EXPECT_EQ(buffer.substr(0, count), "hello");
    EXPECT_TRUE(slot.Read(Bytes(buffer), 16, nullptr, nullptr));
    EXPECT_EQ(slot.SetInfo(1), 0u);
    EXPECT_FALSE(slot.Read(Bytes(buffer), 16, &count, nullptr));
    EXPECT_EQ(slot.GetStatus(&count), Code(ERROR_SEM_TIMEOUT)) << "kept";
    EXPECT_EQ(count, 0u) << "nothing was pending";
}

TEST_F(Mailslot, EachFailureIsKeptAndSuccessClearsIt) {
    EXPECT_EQ(slot.GetStatus(nullptr), 0u);
    EXPECT_EQ(slot.GetName(), nullptr);
    EXPECT_FALSE(slot.Close());
    EXPECT_EQ(slot.GetStatus(nullptr), Code(ERROR_INVALID_HANDLE));
    EXPECT_FALSE(slot.Create(nullptr, 0, 0, nullptr));
    EXPECT_FALSE(slot.Open(L"name", nullptr));
    EXPECT_EQ(slot.GetStatus(nullptr), Code(ERROR_INVALID_PARAMETER));
    EXPECT_FALSE(slot.Open(L"Tessel missing", L"."));
    EXPECT_EQ(slot.GetStatus(nullptr), Code(ERROR_FILE_NOT_FOUND));
    EXPECT_EQ(slot.GetInfo(nullptr, nullptr, nullptr, nullptr), Code(ERROR_INVALID_HANDLE));
    EXPECT_EQ(slot.SetInfo(1), Code(ERROR_INVALID_HANDLE));
    EXPECT_FALSE(slot.Write(Bytes(buffer), 1, &count));
    EXPECT_FALSE(slot.Read(Bytes(buffer), 1, &count, nullptr));
    EXPECT_TRUE(slot.Create(L"Tessel test slot", 0, 0, nullptr));
    EXPECT_EQ(slot.GetStatus(nullptr), 0u);
    CMailslot second;
    EXPECT_FALSE(second.Create(L"Tessel test slot", 0, 0, nullptr));
    EXPECT_EQ(second.GetStatus(nullptr), Code(ERROR_ALREADY_EXISTS));
    EXPECT_TRUE(slot.Create(slot.GetName(), 0, 0, nullptr)) << "the one held before is closed";
    EXPECT_FALSE(slot.Read(Bytes(buffer), 1, nullptr, INVALID_HANDLE_VALUE)) << "an event that cannot be reset";
    EXPECT_TRUE(slot.Close());
    EXPECT_EQ(slot.GetStatus(nullptr), 0u);
    EXPECT_TRUE(second.Create(L"Tessel test slot", 0, 0, nullptr));
}

TEST_F(Mailslot, AnOverlappedReadIsPendingUntilItsResultIsThere) {
    const Event event;
    SetEvent(event.handle);
    ASSERT_TRUE(slot.Create(L"Tessel test slot", 0, 0, nullptr));
    const ImportPatch read(kLibrary, "ReadFile", TransferAsTold);
    const ImportPatch result(kLibrary, "GetOverlappedResult", ResultAsTold);
    transferError = ERROR_IO_PENDING;
    EXPECT_FALSE(slot.Read(Bytes(buffer), 16, nullptr, nullptr)) << "not overlapped";
    EXPECT_TRUE(slot.Read(Bytes(buffer), 16, &count, event.handle));
    EXPECT_EQ(WaitForSingleObject(event.handle, 0), static_cast<DWORD>(WAIT_TIMEOUT)) << "it was reset";
    struct {
        DWORD error;
        unsigned long status;
    } const answers[] = {{ERROR_IO_PENDING, 997}, {ERROR_IO_INCOMPLETE, 997}, {ERROR_BROKEN_PIPE, 109}, {0, 0}};
    for (const auto& answer : answers) {
        EXPECT_EQ(count, 0u);
        transferError = answer.error;
        EXPECT_EQ(slot.GetStatus(&count), answer.status);
    }
    EXPECT_EQ(count, 7u);
    transferError = ERROR_BROKEN_PIPE;
    EXPECT_EQ(slot.GetStatus(nullptr), 0u) << "nothing is pending any more";
    EXPECT_FALSE(slot.Read(Bytes(buffer), 16, &count, event.handle));
    EXPECT_EQ(slot.GetStatus(nullptr), 109u);
}

TEST_F(Mailslot, ALongPathIsCutAndOpenedForWritingOnly) {
    const ImportPatch open(kLibrary, "CreateFileW", SeeFile);
    EXPECT_FALSE(slot.Open(std::wstring(600, L'n').c_str(), L"domain"));
    EXPECT_EQ(seenPath, L"\\\\domain\\mailslot\\" + std::wstring(501, L'n'));
    EXPECT_EQ(seenNumbers, (Numbers{GENERIC_WRITE, kShared, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL}));
    EXPECT_EQ(slot.GetNameLen(), 601u);
}

TEST_F(Mailslot, Odd22CopiesShareTheHandleAndAssignmentLeavesTheOldOneOpen) {
    ASSERT_TRUE(slot.Create(L"Tessel test slot", 0, 0, nullptr));
    CMailslot other;
    ASSERT_TRUE(other.Create(L"Tessel other slot", 0, 0, nullptr));
    {
        CMailslot copy(slot);
        EXPECT_TRUE(CMailslot(copy).Close());
        EXPECT_EQ(copy.GetName(), slot.GetName());
    }
    EXPECT_EQ(slot.GetInfo(nullptr, nullptr, nullptr, nullptr), 0u) << "still open";
    other = slot;
    CMailslot third;
    EXPECT_FALSE(third.Create(L"Tessel other slot", 0, 0, nullptr));
    EXPECT_TRUE(slot.Close());
    EXPECT_EQ(other.GetInfo(nullptr, nullptr, nullptr, nullptr), 0u);
    EXPECT_TRUE(other.Close());
    EXPECT_TRUE(third.Create(L"Tessel test slot", 0, 0, nullptr)) << "the last owner closed it";
}

TEST_F(NamedPipe, AServerTalksToOneProcessAfterTheOther) {
    Connect();
    EXPECT_EQ(server.GetStatus(), PIPE_CONNECTED);
    peer->Tell("ping");
    EXPECT_TRUE(server.Read(buffer, 16, nullptr));
    EXPECT_STREQ(buffer, "ping");
    peer->Tell("a message");
    EXPECT_FALSE(server.Read(buffer, 4, nullptr));
    EXPECT_EQ(server.GetStatus(), Code(ERROR_MORE_DATA));
    EXPECT_TRUE(server.Read(buffer, 16, nullptr));
    EXPECT_EQ(server.GetStatus(), PIPE_CONNECTED);
    EXPECT_TRUE(server.Write("pong", 4, nullptr));
    peer->Tell("read");
    EXPECT_EQ(peer->WaitUntil("done p"), "ong");

    server.CloseInstance();
    EXPECT_EQ(server.GetStatus(), PIPE_CLOSED);
    peer->Tell("read");
    EXPECT_EQ(peer->WaitUntil("failed "), std::to_string(ERROR_PIPE_NOT_CONNECTED));
    peer.emplace("talk-to-pipe");
    server.AwaitConnection(nullptr);
    peer->WaitUntil("connected");
    peer->Kill();
    EXPECT_FALSE(server.Read(buffer, 16, nullptr));
    EXPECT_EQ(server.GetStatus(), Code(ERROR_BROKEN_PIPE));
}

TEST_F(NamedPipe, Odd88AnOverlappedTransferThatStartsReturnsFalse) {
    ASSERT_TRUE(server.Open(kReadWrite, true));
    server.AwaitConnection(event.handle);
    EXPECT_EQ(server.GetStatus(), Code(ERROR_IO_PENDING));
    peer.emplace("talk-to-pipe");
    EXPECT_TRUE(event.Comes());
    EXPECT_EQ(server.GetStatus(), PIPE_CONNECTED);
    ResetEvent(event.handle);
    EXPECT_FALSE(server.Read(buffer, 16, event.handle));
    EXPECT_EQ(server.GetStatus(), Code(ERROR_IO_PENDING));
    peer->Tell("ping");
    EXPECT_TRUE(event.Comes());
    EXPECT_EQ(server.GetStatus(), PIPE_CONNECTED);
    EXPECT_STREQ(buffer, "ping");
    EXPECT_TRUE(server.Write("pong", 4, event.handle)) << "there is room: it ends at once";
    peer->Tell("end");
    EXPECT_EQ(peer->ExitCode(), 0u);
    server.Close();
    EXPECT_EQ(server.GetStatus(), PIPE_CLOSED);
}

TEST_F(NamedPipe, TheSystemsAnswerAboutAPendingOperationBecomesTheStatus) {
    ASSERT_TRUE(server.Open(kReadWrite, true));
    const ImportPatch result(kLibrary, "GetOverlappedResult", ResultAsTold);
    {
        const ImportPatch read(kLibrary, "ReadFile", TransferAsTold);
        transferError = ERROR_IO_PENDING;
        EXPECT_FALSE(server.Read(buffer, 16, event.handle));
    }
    struct {
        DWORD error;
        unsigned long status;
    } const answers[] = {{ERROR_PIPE_LISTENING, PIPE_LISTENING},
                         {ERROR_IO_INCOMPLETE, ERROR_IO_PENDING},
                         {ERROR_IO_PENDING, ERROR_IO_PENDING},
                         {ERROR_BROKEN_PIPE, ERROR_BROKEN_PIPE},
                         {ERROR_PIPE_CONNECTED, PIPE_CONNECTED}};
    for (const auto& answer : answers) {
        transferError = answer.error;
        EXPECT_EQ(server.GetStatus(), answer.status);
    }
    transferError = ERROR_BROKEN_PIPE;
    EXPECT_EQ(server.GetStatus(), PIPE_CONNECTED) << "nothing is pending any more";
}

TEST_F(NamedPipe, Odd89OpeningLeavesTheServersStatusAsItWas) {
    ASSERT_TRUE(server.Open(kReadWrite, false));
    EXPECT_EQ(server.GetStatus(), PIPE_CLOSED);
    ASSERT_TRUE(client.Open(L".", kReadWrite, false));
    server.AwaitConnection(nullptr);
    EXPECT_EQ(server.GetStatus(), Code(ERROR_PIPE_CONNECTED)) << "it came before the call";
    ASSERT_TRUE(server.Open(kReadWrite, false));
    EXPECT_EQ(server.GetStatus(), Code(ERROR_PIPE_CONNECTED));
}

TEST_F(NamedPipe, WhatCannotBeOpenedIsRefusedOrTheSystemsError) {
    EXPECT_FALSE(client.Open(L".", kReadWrite, false));
    EXPECT_EQ(client.GetStatus(), Code(ERROR_FILE_NOT_FOUND));
    for (const int mode : {-1, 3}) {
        EXPECT_FALSE(client.Open(L".", static_cast<CClientNamedPipe::MODE>(mode), false));
        EXPECT_FALSE(server.Open(static_cast<CClientNamedPipe::MODE>(mode), false));
    }
    EXPECT_FALSE(client.Open(nullptr, kReadWrite, false));
    EXPECT_EQ(client.GetStatus(), Code(ERROR_FILE_NOT_FOUND));
    EXPECT_EQ(server.GetStatus(), PIPE_CLOSED);
    ASSERT_TRUE(server.Open(kReadWrite, false));
    ASSERT_TRUE(client.Open(L".", kReadWrite, false));
    CClientNamedPipe second(L"Tessel test pipe");
    EXPECT_FALSE(second.Open(L".", kReadWrite, false));
    EXPECT_EQ(second.GetStatus(), Code(ERROR_PIPE_BUSY));
}

TEST_F(NamedPipe, ModesAndCutNamesReachTheSystem) {
    const ImportPatch open(kLibrary, "CreateFileW", SeeFile);
    const ImportPatch create(kLibrary, "CreateNamedPipeW", SeePipe);
    constexpr DWORD kSides[][2] = {{GENERIC_READ, PIPE_ACCESS_INBOUND},
                                   {GENERIC_WRITE, PIPE_ACCESS_OUTBOUND},
                                   {GENERIC_READ | GENERIC_WRITE, PIPE_ACCESS_DUPLEX}};
    const std::wstring name(30, L'n');
    CServerNamedPipe longServer(name.c_str());
    CClientNamedPipe longClient(name.c_str());
    for (int mode = 0; mode < 3; ++mode) {
        const bool overlapped = mode == 1;
        const DWORD flag = overlapped ? FILE_FLAG_OVERLAPPED : 0;
        EXPECT_FALSE(longServer.Open(static_cast<CClientNamedPipe::MODE>(mode), overlapped));
        EXPECT_EQ(seenPath, L"\\\\.\\PIPE\\" + name.substr(0, 19));
        EXPECT_EQ(seenNumbers, (Numbers{kSides[mode][1] | flag, kMessages, 255, 4096, 4096, INFINITE}));
        EXPECT_FALSE(
            longClient.Open(std::wstring(300, L's').c_str(), static_cast<CClientNamedPipe::MODE>(mode), overlapped));
        EXPECT_EQ(seenPath, L"\\\\" + std::wstring(257, L's'));
        EXPECT_EQ(seenNumbers,
                  (Numbers{kSides[mode][0], kShared, OPEN_EXISTING, overlapped ? flag : FILE_ATTRIBUTE_NORMAL}));
    }
    EXPECT_EQ(longServer.GetStatus(), Code(ERROR_ACCESS_DENIED));
    CClientNamedPipe nameless(nullptr);
    EXPECT_FALSE(nameless.Open(L".", kReadWrite, false));
    EXPECT_EQ(seenPath, L"\\\\.\\PIPE\\");
}

TEST_F(NamedPipe, Odd90ClosingTakesLeaveUnlessTheErrorSharesNoBit) {
    const ImportPatch read(kLibrary, "ReadFile", TransferAsTold);
    const ImportPatch flush(kLibrary, "FlushFileBuffers", CountLeave);
    const ImportPatch disconnect(kLibrary, "DisconnectNamedPipe", CountLeave);
    struct {
        DWORD error;
        int calls;
    } const cases[] = {{0, 2}, {ERROR_MORE_DATA, 2}, {ERROR_BROKEN_PIPE, 0}};
    for (const auto& [error, calls] : cases) {
        ASSERT_TRUE(server.Open(kReadWrite, false));
        transferError = error;
        server.Read(buffer, 1, nullptr);
        leaves = 0;
        server.Close();
        EXPECT_EQ(leaves, calls) << error;
        EXPECT_EQ(server.GetStatus(), PIPE_CLOSED);
    }
    server.Close();
    EXPECT_EQ(leaves, 2) << "a closed one has a bit in common too";
}

TEST_F(NamedPipe, AnOperationUnderWayEndsBeforeItsObject) {
    {
        CServerNamedPipe leaving(L"Tessel test pipe");
        ASSERT_TRUE(leaving.Open(kReadWrite, true));
        leaving.AwaitConnection(event.handle);
        const CServerNamedPipe copy(leaving); // keeps the handle open, not the operation under way
        leaving.Close();
        EXPECT_EQ(WaitForSingleObject(event.handle, 0), WAIT_OBJECT_0);
        EXPECT_EQ(leaving.GetStatus(), PIPE_CLOSED);
    }
    EXPECT_FALSE(client.Open(L".", kReadWrite, false)) << "the last copy closed it";
}

TEST_F(NamedPipe, ACopyGoesOnWithARecordOfItsOwn) {
    ASSERT_TRUE(server.Open(kReadWrite, true));
    ASSERT_TRUE(client.Open(L".", kReadWrite, false));
    std::optional<CServerNamedPipe> first(server);
    first->AwaitConnection(event.handle);
    CServerNamedPipe second(L"other");
    second = *first;
    first.reset();
    EXPECT_FALSE(second.Read(buffer, 16, event.handle));
    EXPECT_TRUE(client.Write("ping", 4, nullptr));
    EXPECT_TRUE(event.Comes());
    EXPECT_EQ(second.GetStatus(), PIPE_CONNECTED);
    EXPECT_STREQ(buffer, "ping");
}
