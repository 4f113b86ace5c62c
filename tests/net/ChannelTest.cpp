#include "support/ChildProcess.h"
#include "support/ImportPatch.h"

#include <gtest/gtest.h>
#include <tessel/net/mailslot.h>
#include <tessel/net/namedpipe.h>

#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace {

constexpr const wchar_t* kLibrary = L"Tessel.dll";
constexpr const wchar_t* kName = L"Tessel test";
constexpr auto kReadWrite = CClientNamedPipe::MODE_READ_WRITE;

constexpr unsigned long Code(long error) {
    return static_cast<unsigned long>(error);
}

struct Event {
    HANDLE handle = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    ~Event() { CloseHandle(handle); }
    bool Comes(DWORD within = 10000) const { return WaitForSingleObject(handle, within) == WAIT_OBJECT_0; }
};

unsigned char* Bytes(std::string& text) {
    return reinterpret_cast<unsigned char*>(text.data());
}

int WriteToMailslot(const std::vector<std::string>&) {
    CMailslot slot;
    std::string text = "hello";
    unsigned long written = 0;
    const bool sent =
        slot.Open(kName, L".") && slot.Write(Bytes(text), 5, &written) && slot.Write(Bytes(text), 1, nullptr);
    Say(sent && written == 5 ? "sent" : "failed");
    return 0;
}
const Role writer("write-to-mailslot", WriteToMailslot);

/// Connects, then does as it is told: any line is written to the pipe, "read" reads.
int TalkToPipe(const std::vector<std::string>&) {
    CClientNamedPipe pipe(kName);
    Say(pipe.Open(L".", kReadWrite, false) ? "connected" : "no pipe");
    for (std::string line = Hear(); !line.empty() && line != "end"; line = Hear()) {
        char buffer[8]{};
        const bool done = line == "read" ? pipe.Read(buffer, 4, nullptr)
                                         : pipe.Write(line.data(), static_cast<unsigned int>(line.size()), nullptr);
        Say(done ? std::string("done ") + buffer : "failed " + std::to_string(pipe.GetStatus()));
    }
    return 0;
}
const Role talker("talk-to-pipe", TalkToPipe);

DWORD answer = 0; ///< the system's, to a transfer and about one; 0: success

BOOL Answer() {
    SetLastError(answer);
    return answer == 0;
}

BOOL WINAPI AnswerTransfer(HANDLE, void*, DWORD, DWORD*, OVERLAPPED*) {
    return Answer();
}

BOOL WINAPI AnswerAbout(HANDLE, OVERLAPPED*, DWORD* transferred, BOOL) {
    *transferred = 7;
    return Answer();
}

using Numbers = std::vector<DWORD>;
std::wstring seenPath;
Numbers seen;

HANDLE See(LPCWSTR path, const Numbers& numbers) {
    seenPath = path;
    seen = numbers;
    SetLastError(ERROR_ACCESS_DENIED);
    return INVALID_HANDLE_VALUE;
}

HANDLE WINAPI SeeFile(LPCWSTR path, DWORD access, DWORD share, SECURITY_ATTRIBUTES*, DWORD how, DWORD flags, HANDLE) {
    return See(path, {access, share, how, flags});
}

HANDLE WINAPI SeePipe(LPCWSTR path, DWORD open, DWORD mode, DWORD most, DWORD out, DWORD in, DWORD timeOut,
                      SECURITY_ATTRIBUTES*) {
    return See(path, {open, mode, most, out, in, timeOut});
}

SECURITY_ATTRIBUTES* seenAttributes;

HANDLE WINAPI SeeMailslot(LPCWSTR path, DWORD size, DWORD timeOut, SECURITY_ATTRIBUTES* attributes) {
    seenAttributes = attributes;
    return See(path, {size, timeOut});
}

std::string leave;

BOOL NoteLeave(HANDLE pipe, char step) {
    DWORD flags = 0;
    leave += GetHandleInformation(pipe, &flags) ? step : '!';
    return TRUE;
}

BOOL WINAPI NoteFlush(HANDLE pipe) {
    return NoteLeave(pipe, 'f');
}

BOOL WINAPI NoteDisconnect(HANDLE pipe) {
    return NoteLeave(pipe, 'd');
}

constexpr DWORD kShared = FILE_SHARE_READ | FILE_SHARE_WRITE;

struct Mailslot : testing::Test {
    CMailslot slot, other;
    Event event;
    std::string buffer = std::string(16, '-');
    unsigned long count = 99;

    bool IsOpen(CMailslot& one) { return one.GetInfo(nullptr, nullptr, &count, nullptr) == 0; }
};

struct NamedPipe : testing::Test {
    CServerNamedPipe server{kName};
    CClientNamedPipe client{kName};
    Event event;
    char buffer[16]{};
    std::optional<ChildProcess> peer;
};

} // namespace

TEST_F(Mailslot, AnotherProcessWritesMessagesThatAreReadOneByOne) {
    ASSERT_TRUE(slot.Create(kName, 100, 0, nullptr));
    EXPECT_EQ(std::wstring(slot.GetName()), kName);
    EXPECT_EQ(slot.GetNameLen(), 12u);
    unsigned long size = 0, next = 0, timeOut = 99;
    EXPECT_EQ(slot.GetInfo(&size, &next, nullptr, &timeOut), 0u);
    EXPECT_EQ((Numbers{size, next, timeOut}), (Numbers{100, MAILSLOT_NO_MESSAGE, 0}));

    EXPECT_EQ(ChildProcess("write-to-mailslot").WaitUntil("sent"), "");
    EXPECT_EQ(slot.GetInfo(nullptr, &next, &count, nullptr), 0u);
    EXPECT_EQ(next, 5u);
    EXPECT_GE(count, 1u) << "Wine counts no further";
    EXPECT_TRUE(slot.Read(Bytes(buffer), 16, &count, nullptr));
    EXPECT_EQ(buffer.substr(0, count), "hello");
    EXPECT_TRUE(slot.Read(Bytes(buffer), 16, nullptr, nullptr));
    EXPECT_EQ(slot.SetInfo(1), 0u);
    EXPECT_FALSE(slot.Read(Bytes(buffer), 16, &count, nullptr));
    count = 99;
    EXPECT_EQ(slot.GetStatus(&count), Code(ERROR_SEM_TIMEOUT)) << "kept";
    EXPECT_EQ(count, 99u) << "nothing was pending";
}

TEST_F(Mailslot, EachFailureIsKeptAndSuccessClearsIt) {
    ASSERT_TRUE(other.Create(kName, 0, 0, nullptr));
    const std::pair<std::function<bool()>, unsigned long> steps[] = {
        {[&] { return slot.GetName() == nullptr; }, 0},
        {[&] { return !slot.Close(); }, ERROR_INVALID_HANDLE},
        {[&] { return !slot.Create(nullptr, 0, 0, nullptr); }, ERROR_INVALID_PARAMETER},
        {[&] { return !slot.Open(L"Tessel missing", L"."); }, ERROR_FILE_NOT_FOUND},
        {[&] { return !slot.Open(kName, nullptr); }, ERROR_INVALID_PARAMETER},
        {[&] { return !IsOpen(slot); }, ERROR_INVALID_HANDLE},
        {[&] { return !slot.Create(kName, 0, 0, nullptr); }, ERROR_ALREADY_EXISTS},
        {[&] { return slot.SetInfo(1) == ERROR_INVALID_HANDLE; }, ERROR_INVALID_HANDLE},
        {[&] { return other.Close() && slot.Create(kName, 0, 0, nullptr); }, 0},
        {[&] { return slot.Create(slot.GetName(), 0, 0, nullptr); }, 0}, // the one held before is closed
        {[&] { return !slot.Read(Bytes(buffer), 1, nullptr, INVALID_HANDLE_VALUE); }, ERROR_INVALID_HANDLE},
        {[&] { return !slot.Write(Bytes(buffer), 1, &count) && slot.Close(); }, 0},
        {[&] { return !slot.Read(Bytes(buffer), 1, &count, nullptr); }, ERROR_INVALID_HANDLE},
    };
    for (const auto& step : steps) {
        EXPECT_TRUE(step.first()) << &step - steps;
        EXPECT_EQ(slot.GetStatus(nullptr), step.second) << &step - steps;
    }
    EXPECT_TRUE(other.Create(kName, 0, 0, nullptr));
}

TEST_F(Mailslot, Odd104AnOverlappedReadIsPendingUntilItSucceedsOrTheNextStarts) {
    SetEvent(event.handle);
    ASSERT_TRUE(slot.Create(kName, 0, 0, nullptr));
    const ImportPatch read(kLibrary, "ReadFile", AnswerTransfer);
    const ImportPatch result(kLibrary, "GetOverlappedResult", AnswerAbout);
    answer = ERROR_IO_PENDING;
    EXPECT_FALSE(slot.Read(Bytes(buffer), 16, nullptr, nullptr)) << "not overlapped";
    EXPECT_TRUE(slot.Read(Bytes(buffer), 16, &count, event.handle));
    EXPECT_FALSE(event.Comes(0)) << "it was reset";
    for (const long told : {ERROR_IO_PENDING, ERROR_IO_INCOMPLETE, ERROR_OPERATION_ABORTED, ERROR_SUCCESS}) {
        EXPECT_EQ(count, 0u);
        answer = Code(told);
        EXPECT_TRUE(told != ERROR_OPERATION_ABORTED || slot.Close());
        EXPECT_EQ(slot.GetStatus(&count), Code(told == ERROR_IO_INCOMPLETE ? ERROR_IO_PENDING : told));
    }
    EXPECT_EQ(count, 7u);
    answer = ERROR_BROKEN_PIPE;
    EXPECT_EQ(slot.GetStatus(nullptr), 0u) << "nothing is pending any more";
    EXPECT_FALSE(slot.Read(Bytes(buffer), 16, &count, event.handle));
    EXPECT_EQ(slot.GetStatus(nullptr), 109u);
    answer = ERROR_IO_PENDING;
    EXPECT_TRUE(slot.Read(Bytes(buffer), 16, &count, event.handle));
    ASSERT_TRUE(slot.Create(kName, 0, 0, nullptr));
    EXPECT_EQ(slot.GetStatus(nullptr), 0u) << "opened anew";
}

TEST_F(Mailslot, Odd22CopiesShareTheHandleAndAssignmentLeavesTheOldOneOpen) {
    ASSERT_TRUE(slot.Create(kName, 0, 0, nullptr));
    ASSERT_TRUE(other.Create(L"Tessel other", 0, 0, nullptr));
    {
        CMailslot copy(slot);
        EXPECT_TRUE(CMailslot(copy).Close());
        EXPECT_EQ(copy.GetName(), slot.GetName());
    }
    EXPECT_TRUE(IsOpen(slot));
    other = slot;
    CMailslot third;
    EXPECT_FALSE(third.Create(L"Tessel other", 0, 0, nullptr));
    EXPECT_TRUE(slot.Close());
    EXPECT_TRUE(IsOpen(other) && other.Close());
    EXPECT_TRUE(third.Create(kName, 0, 0, nullptr)) << "the last owner closed it";
}

TEST_F(NamedPipe, AServerTalksToOneProcessAfterTheOther) {
    ASSERT_TRUE(server.Open(kReadWrite, false));
    peer.emplace("talk-to-pipe");
    server.AwaitConnection(nullptr);
    EXPECT_EQ(server.GetStatus(), PIPE_CONNECTED);
    peer->WaitUntil("connected");
    peer->Tell("a message");
    EXPECT_FALSE(server.Read(buffer, 4, nullptr));
    EXPECT_EQ(server.GetStatus(), Code(ERROR_MORE_DATA));
    EXPECT_TRUE(server.Read(buffer + 4, 12, nullptr));
    EXPECT_STREQ(buffer, "a message");
    EXPECT_TRUE(server.Write("pong", 4, nullptr));
    EXPECT_EQ(server.GetStatus(), PIPE_CONNECTED);
    peer->Tell("read");
    EXPECT_EQ(peer->WaitUntil("done p"), "ong");

    server.CloseInstance();
    EXPECT_EQ(server.GetStatus(), PIPE_CLOSED);
    peer->Tell("read");
    EXPECT_EQ(peer->WaitUntil("failed "), std::to_string(ERROR_PIPE_NOT_CONNECTED));
    peer.emplace("talk-to-pipe");
    server.AwaitConnection(nullptr);
    peer->WaitUntil("connected");
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
    const ImportPatch read(kLibrary, "ReadFile", AnswerTransfer);
    const ImportPatch result(kLibrary, "GetOverlappedResult", AnswerAbout);
    answer = ERROR_IO_PENDING;
    EXPECT_FALSE(server.Read(buffer, 16, event.handle));
    for (const auto& [told, status] : {std::pair(ERROR_PIPE_LISTENING, PIPE_LISTENING),
                                       {ERROR_IO_INCOMPLETE, 997ul},
                                       {ERROR_IO_PENDING, 997ul},
                                       {ERROR_BROKEN_PIPE, 109ul},
                                       {ERROR_PIPE_CONNECTED, PIPE_CONNECTED}}) {
        answer = Code(told);
        EXPECT_EQ(server.GetStatus(), status);
    }
    answer = ERROR_BROKEN_PIPE;
    EXPECT_EQ(server.GetStatus(), PIPE_CONNECTED) << "nothing is pending any more";
    for (const long told : {ERROR_IO_PENDING, ERROR_BROKEN_PIPE}) {
        answer = Code(told);
        EXPECT_FALSE(server.Read(buffer, 16, event.handle));
    }
    answer = ERROR_IO_INCOMPLETE;
    EXPECT_EQ(server.GetStatus(), 109u) << "it ended at once";
}

TEST_F(NamedPipe, Odd89OpeningLeavesTheServersStatusAsItWas) {
    for (const unsigned long before : {PIPE_CLOSED, Code(ERROR_PIPE_CONNECTED)}) {
        ASSERT_TRUE(server.Open(kReadWrite, false));
        EXPECT_EQ(server.GetStatus(), before);
        ASSERT_TRUE(client.Open(L".", kReadWrite, false));
        server.AwaitConnection(nullptr);
        EXPECT_EQ(server.GetStatus(), Code(ERROR_PIPE_CONNECTED)) << "it came before the call";
    }
}

TEST_F(NamedPipe, WhatCannotBeOpenedIsRefusedOrTheSystemsError) {
    EXPECT_FALSE(client.Open(L".", kReadWrite, false));
    EXPECT_FALSE(client.Open(nullptr, kReadWrite, false));
    for (const auto mode : {static_cast<CClientNamedPipe::MODE>(-1), static_cast<CClientNamedPipe::MODE>(3)}) {
        EXPECT_FALSE(client.Open(L".", mode, false));
        EXPECT_FALSE(server.Open(mode, false));
    }
    EXPECT_EQ(client.GetStatus(), Code(ERROR_FILE_NOT_FOUND));
    EXPECT_EQ(server.GetStatus(), PIPE_CLOSED);
}

TEST_F(NamedPipe, ModesAndCutNamesReachTheSystem) {
    const ImportPatch open(kLibrary, "CreateFileW", SeeFile);
    const ImportPatch create(kLibrary, "CreateNamedPipeW", SeePipe);
    constexpr DWORD kSides[][2] = {{GENERIC_READ, PIPE_ACCESS_INBOUND},
                                   {GENERIC_WRITE, PIPE_ACCESS_OUTBOUND},
                                   {GENERIC_READ | GENERIC_WRITE, PIPE_ACCESS_DUPLEX}};
    CServerNamedPipe longServer(std::wstring(30, L'n').c_str());
    CClientNamedPipe nameless(nullptr);
    for (int i = 0; i < 3; ++i) {
        const auto mode = static_cast<CClientNamedPipe::MODE>(i);
        const DWORD flag = i == 1 ? FILE_FLAG_OVERLAPPED : 0;
        EXPECT_FALSE(longServer.Open(mode, flag != 0));
        EXPECT_EQ(seen,
                  (Numbers{kSides[i][1] | flag, PIPE_TYPE_MESSAGE | PIPE_READMODE_MESSAGE, 255, 4096, 4096, INFINITE}));
        EXPECT_EQ(seenPath, L"\\\\.\\PIPE\\" + std::wstring(19, L'n'));
        EXPECT_FALSE(nameless.Open(L".", mode, flag != 0));
        EXPECT_EQ(seen, (Numbers{kSides[i][0], kShared, OPEN_EXISTING, flag != 0 ? flag : FILE_ATTRIBUTE_NORMAL}));
        EXPECT_EQ(seenPath, L"\\\\.\\PIPE\\");
    }
    EXPECT_EQ(longServer.GetStatus(), Code(ERROR_ACCESS_DENIED));
    EXPECT_FALSE(client.Open(std::wstring(300, L's').c_str(), kReadWrite, false));
    EXPECT_EQ(seenPath, L"\\\\" + std::wstring(257, L's'));
    CMailslot slot;
    EXPECT_FALSE(slot.Open(std::wstring(600, L'n').c_str(), L"domain"));
    EXPECT_EQ(seenPath, L"\\\\domain\\mailslot\\" + std::wstring(501, L'n'));
    EXPECT_EQ(seen, (Numbers{GENERIC_WRITE, kShared, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL}));
    EXPECT_EQ(slot.GetNameLen(), 601u);
    const ImportPatch mailslot(kLibrary, "CreateMailslotW", SeeMailslot);
    SECURITY_ATTRIBUTES attributes{};
    EXPECT_FALSE(slot.Create(kName, 5, 6, &attributes));
    EXPECT_EQ(seen, (Numbers{5, 6}));
    EXPECT_EQ(seenAttributes, &attributes);
}

TEST_F(NamedPipe, Odd90ClosingTakesLeaveUnlessTheErrorSharesNoBit) {
    const ImportPatch read(kLibrary, "ReadFile", AnswerTransfer);
    const ImportPatch flush(kLibrary, "FlushFileBuffers", NoteFlush);
    const ImportPatch disconnect(kLibrary, "DisconnectNamedPipe", NoteDisconnect);
    for (const auto& [told, steps] :
         {std::pair(ERROR_SUCCESS, "fd"), {ERROR_MORE_DATA, "fd"}, {ERROR_BROKEN_PIPE, ""}}) {
        ASSERT_TRUE(server.Open(kReadWrite, false));
        answer = Code(told);
        server.Read(buffer, 1, nullptr);
        leave.clear();
        server.Close();
        EXPECT_EQ(leave, steps) << told;
        EXPECT_EQ(server.GetStatus(), PIPE_CLOSED);
    }
    server.Close();
    EXPECT_EQ(leave.size(), 2u) << "a closed one has a bit in common too";
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
