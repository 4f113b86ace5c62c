#include "support/ImportPatch.h"

#include <gtest/gtest.h>
#include <tessel/foundation/wait.h>

#include <string>
#include <utility>

constexpr unsigned long kNotSignalled = 0xFFFFFFFF;

class WaitTest : public testing::Test {
protected:
    /// Which of the three the set waits for, found by signalling them one by one.
    std::string Members(CWait& waited) {
        std::string members;
        for (auto [event, name] : {std::pair{&a, 'A'}, {&b, 'B'}, {&c, 'C'}}) {
            event->SetEvent();
            if (waited.WaitOnAnyObject(0) == 0) members += name;
            event->ResetEvent();
        }
        return members;
    }
    void AddAll() {
        for (const CEvent* event : {&a, &b, &c}) set.AddObject(*event);
    }
    CEvent a, b, c;
    CWait set;
    void* signalled = &set;
    MSG message{};
};

TEST_F(WaitTest, AnEmptySetReturnsAtOnce) {
    EXPECT_EQ(set.WaitOnAnyObject(signalled, INFINITE), 0u);
    EXPECT_EQ(signalled, &set) << "it stays as it was";
    message.message = 7;
    EXPECT_EQ(set.WaitOnAnyObjectOrMsg(signalled, message, INFINITE), 0u);
    EXPECT_TRUE(signalled == nullptr && message.message == 0);
}

TEST_F(WaitTest, AnyAndAllOfOneAndOfMany) {
    set.AddObject(a);
    EXPECT_EQ(set.WaitOnAnyObject(signalled, 0), kNotSignalled);
    EXPECT_EQ(signalled, nullptr);
    CSemaphore semaphore(nullptr, 0, 1);
    set.AddObject(b);
    set.AddObject(semaphore);
    EXPECT_EQ(set.WaitOnAnyObject(signalled, 0), kNotSignalled);
    semaphore.ReleaseSemaphoreA();
    EXPECT_EQ(set.WaitOnAnyObject(signalled, 0), 0u);
    EXPECT_EQ(signalled, semaphore.GetHandle());
    a.SetEvent();
    b.SetEvent();
    EXPECT_EQ(set.WaitOnAllObjects(0), kNotSignalled);
    semaphore.ReleaseSemaphoreA();
    EXPECT_EQ(set.WaitOnAllObjects(0), 0u);
    EXPECT_EQ(a.IsSignalled(), 0);
    semaphore.ReleaseSemaphoreA();
    set.DeleteObject(semaphore);
    EXPECT_EQ(set.WaitOnAnyObject(0), kNotSignalled);
}

TEST_F(WaitTest, Odd09DeletingKeepsTheRemovedHandleAndLosesItsFollowers) {
    AddAll();
    const auto membersWithout = [this](const CEvent& object) {
        set.DeleteObject(object);
        return Members(set);
    };
    EXPECT_EQ(membersWithout(b), "AB");
    EXPECT_EQ(membersWithout(b), "A") << "the last entry goes cleanly";
    EXPECT_EQ(membersWithout(c), "A") << "it was not there";
    set.DeleteObject(a);
    set.DeleteObject(a);
    EXPECT_EQ(set.WaitOnAnyObject(INFINITE), 0u) << "empty";
    AddAll();
    EXPECT_EQ(membersWithout(a), "A");
}

TEST_F(WaitTest, MessagesEndAWaitAndAreHandedOver) {
    set.AddObject(a);
    EXPECT_EQ(set.WaitOnAnyObjectOrMsg(signalled, message, 0), kNotSignalled);
    PostThreadMessageW(GetCurrentThreadId(), WM_APP + 1, 2, 3);
    PeekMessageW(&message, nullptr, 0, 0, PM_NOREMOVE); // a message already peeked at counts, too
    EXPECT_EQ(set.WaitOnAnyObjectOrMsg(signalled, message, 10'000), 0u);
    EXPECT_EQ(message.message, static_cast<UINT>(WM_APP + 1));
    EXPECT_EQ(signalled, nullptr);
    a.SetEvent();
    EXPECT_EQ(set.WaitOnAnyObjectOrMsg(signalled, message, INFINITE), 0u);
    EXPECT_EQ(signalled, a.GetHandle());
}

TEST_F(WaitTest, CopiesHaveTheirOwnArray) {
    AddAll();
    CWait copy(set);
    copy.DeleteObject(c);
    EXPECT_EQ(Members(set), "ABC");
    copy = set;
    set.DeleteObject(c);
    EXPECT_EQ(Members(copy), "ABC");
}

TEST_F(WaitTest, AFailureIsTheSystemsErrorAndAnyOtherEndATimeOut) {
    AddAll();
    for (const DWORD end : {DWORD{WAIT_ABANDONED}, DWORD{WAIT_ABANDONED + 1}, DWORD{WAIT_IO_COMPLETION}, DWORD{3}}) {
        const ImportPatch wait(Failing("WaitForMultipleObjectsEx", &WaitForMultipleObjectsEx, end));
        signalled = &set;
        EXPECT_EQ(set.WaitOnAnyObject(signalled, 0), kNotSignalled) << end;
        EXPECT_EQ(signalled, nullptr);
    }
    for (int i = 3; i < 65; ++i) set.AddObject(a);
    signalled = &set;
    EXPECT_EQ(set.WaitOnAnyObject(signalled, 0), static_cast<unsigned long>(ERROR_INVALID_PARAMETER));
    EXPECT_EQ(signalled, nullptr);
}
