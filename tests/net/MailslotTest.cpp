#include "Channels.h"

#include <gtest/gtest.h>
#include <tessel/net/mailslot.h>

#include <functional>

namespace {

unsigned char* Bytes(std::string& text) {
    return reinterpret_cast<unsigned char*>(text.data());
}

struct Mailslot : testing::Test {
    CMailslot slot, other;
    Event event;
    std::string buffer = std::string(16, '-');
    unsigned long count = 99;

    bool IsOpen(CMailslot& one) { return one.GetInfo(nullptr, nullptr, &count, nullptr) == 0; }
};

} // namespace

TEST_F(Mailslot, MessagesAreReadOneByOne) {
    ASSERT_TRUE(slot.Create(kName, 100, 0, nullptr));
    EXPECT_EQ(std::wstring(slot.GetName()), kName);
    EXPECT_EQ(slot.GetNameLen(), 12u);
    std::string text = "hello";
    ASSERT_TRUE(other.Open(kName, L"."));
    EXPECT_TRUE(other.Write(Bytes(text), 5, &count) && other.Write(Bytes(text), 1, nullptr));
    EXPECT_EQ(count, 5u);
    unsigned long size = 0, next = 0, timeOut = 99;
    EXPECT_EQ(slot.GetInfo(&size, &next, &count, &timeOut), 0u);
    EXPECT_EQ((std::vector{size, next, timeOut}), (std::vector{100UL, 5UL, 0UL}));
    EXPECT_TRUE(count == 1 || count == 2) << "Wine counts no further than 1";
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
        {[] { return true; }, 0}, // as it is made
        {[&] { return !slot.Close(); }, ERROR_INVALID_HANDLE},
        {[&] { return !slot.Open(L"Tessel missing", L"."); }, ERROR_FILE_NOT_FOUND},
        {[&] { return !slot.Open(kName, nullptr) && !slot.Create(nullptr, 0, 0, nullptr); }, ERROR_INVALID_PARAMETER},
        {[&] { return !IsOpen(slot); }, ERROR_INVALID_HANDLE},
        {[&] { return !slot.Create(kName, 0, 0, nullptr); }, ERROR_ALREADY_EXISTS},
        {[&] { return other.Close() && slot.Create(kName, 0, 0, nullptr); }, 0},
        {[&] { return slot.Create(slot.GetName(), 0, 0, nullptr); }, 0}, // the one held before is closed
        {[&] { return !slot.Read(Bytes(buffer), 1, nullptr, INVALID_HANDLE_VALUE); }, ERROR_INVALID_HANDLE},
        {[&] { return !slot.Write(Bytes(buffer), 1, &count) && slot.Close(); }, 0},
        {[&] { return !slot.Read(Bytes(buffer), 1, &count, nullptr); }, ERROR_INVALID_HANDLE},
    };
    for (const auto& step : steps) {
        EXPECT_TRUE(step.first()) << &step - steps;
        EXPECT_EQ(CMailslot(slot).GetStatus(nullptr), step.second) << &step - steps;
    }
    EXPECT_TRUE(other.Create(kName, 0, 0, nullptr));
}

TEST_F(Mailslot, Odd104AnOverlappedReadIsPendingUntilItSucceedsOrTheNextStarts) {
    SetEvent(event.handle);
    ASSERT_TRUE(slot.Create(kName, 0, 0, nullptr));
    SystemAnswers system{ERROR_IO_PENDING};
    EXPECT_FALSE(slot.Read(Bytes(buffer), 16, nullptr, nullptr)) << "not overlapped";
    EXPECT_TRUE(slot.Read(Bytes(buffer), 16, &count, event.handle));
    EXPECT_FALSE(event.Comes(0)) << "it was reset";
    for (const long reply : {ERROR_IO_PENDING, ERROR_IO_INCOMPLETE, ERROR_OPERATION_ABORTED, ERROR_SUCCESS}) {
        EXPECT_EQ(count, 0u);
        system.answer = reply;
        EXPECT_TRUE(reply != ERROR_OPERATION_ABORTED || slot.Close());
        EXPECT_EQ(slot.GetStatus(&count), Code(reply == ERROR_IO_INCOMPLETE ? ERROR_IO_PENDING : reply));
    }
    EXPECT_EQ(count, 7u);
    system.answer = ERROR_BROKEN_PIPE;
    EXPECT_EQ(slot.GetStatus(nullptr), 0u) << "nothing is pending any more";
    system.answer = ERROR_IO_PENDING;
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

TEST_F(Mailslot, NamesAndLimitsReachTheSystem) {
    CallLog calls;
    const ImportPatch open(calls.Adding("CreateFileW", &CreateFileW, INVALID_HANDLE_VALUE, ERROR_ACCESS_DENIED));
    const ImportPatch create(
        calls.Adding("CreateMailslotW", &CreateMailslotW, INVALID_HANDLE_VALUE, ERROR_ACCESS_DENIED));
    EXPECT_FALSE(slot.Open(std::wstring(600, L'n').c_str(), L"domain"));
    EXPECT_EQ(slot.GetNameLen(), 601u);
    SECURITY_ATTRIBUTES attributes{};
    EXPECT_FALSE(slot.Create(kName, 5, 6, &attributes));
    EXPECT_EQ(calls.Take(), L"CreateFileW \\\\domain\\mailslot\\" + std::wstring(501, L'n') +
                                L" 1073741824 3 - 3 128 -\n" + L"CreateMailslotW \\\\.\\mailslot\\Tessel test 5 6 *\n");
}
