#include "support/ImportPatch.h"

#include <gtest/gtest.h>
#include <tessel/foundation.h>

#include <memory>
#include <thread>

namespace {

constexpr unsigned long kNotSignalled = 0xFFFFFFFF;
constexpr auto kInvalidHandle = static_cast<unsigned long>(ERROR_INVALID_HANDLE);

} // namespace

TEST(Semaphore, Odd05ResultConventionsDifferFromOperationToOperation) {
    CSemaphore semaphore(nullptr, 1, 2);
    EXPECT_EQ(semaphore.WaitOnSemaphore(0), 0);
    EXPECT_EQ(semaphore.WaitOnSemaphore(0), 1);
    EXPECT_EQ(semaphore.WaitOnSemaphoreA(0, nullptr), WAIT_TIMEOUT);
    EXPECT_EQ(semaphore.ReleaseSemaphore(2), 1);
    EXPECT_EQ(semaphore.ReleaseSemaphore(1), 0);
    EXPECT_EQ(semaphore.GetKeptError(), static_cast<unsigned long>(ERROR_TOO_MANY_POSTS));
    EXPECT_EQ(semaphore.ReleaseSemaphoreA(), ERROR_TOO_MANY_POSTS);
    EXPECT_EQ(semaphore.WaitOnSemaphoreA(0, nullptr), 0);
    EXPECT_EQ(semaphore.ReleaseSemaphoreA(), 0);

    HANDLE abandoned = nullptr;
    std::thread([&abandoned] { abandoned = CreateMutexW(nullptr, TRUE, nullptr); }).join();
    EXPECT_EQ(semaphore.WaitOnSemaphoreA(0, abandoned), 0);
    CloseHandle(abandoned);
    EXPECT_EQ(semaphore.WaitOnSemaphoreA(0, ULongToHandle(0xDEAD)), ERROR_INVALID_HANDLE);
    CSemaphore impossible(nullptr, 2, 1);
    EXPECT_EQ(impossible.GetKeptError(), static_cast<unsigned long>(ERROR_INVALID_PARAMETER));
    EXPECT_EQ(impossible.WaitOnSemaphore(0), 1);
    EXPECT_EQ(impossible.GetKeptError(), kInvalidHandle);
}

TEST(Semaphore, TheSignallingFormGivesItsPermitOnlyWhenItCreates) {
    CSemaphore first(L"Tessel test signal", 1);
    CSemaphore second(L"Tessel test signal", 1);
    EXPECT_EQ(second.WaitOnSemaphore(0), 0);
    EXPECT_EQ(first.WaitOnSemaphore(0), 1);
    EXPECT_EQ(CSemaphore(L"Tessel test signal", 5, 5).WaitOnSemaphore(0), 1) << "opened, not created";
    CSemaphore large(L"Tessel test maximum", 1);
    EXPECT_EQ(large.ReleaseSemaphore(9999), 1);
    EXPECT_EQ(large.ReleaseSemaphore(1), 0) << "the form's maximum";
    const ImportPatch open(Failing("OpenSemaphoreW", &OpenSemaphoreW, nullptr));
    const CSemaphore between(L"Tessel test signal", 5, 5);
    EXPECT_EQ(between.GetKeptError(), static_cast<unsigned long>(ERROR_ALREADY_EXISTS));
    EXPECT_EQ(CSemaphore(L"Tessel test signal", 1).WaitOnSemaphore(0), 1) << "made by another in between";
}

TEST(ThreadLock, TellsWhetherItIsLockedAndLeavesItSo) {
    CThreadLock lock;
    for (const int locked : {0, 1}) {
        EXPECT_EQ(lock.IsLocked(), locked);
        EXPECT_EQ(lock.Lock(0), locked);
    }
    EXPECT_EQ(lock.Unlock(), 1);
    EXPECT_EQ(lock.Unlock(), 0);
}

TEST(Event, SignalsAndResets) {
    CEvent automatic;
    EXPECT_EQ(automatic.WaitOnEvent(0), kNotSignalled);
    EXPECT_EQ(automatic.SetEvent(), 0u);
    EXPECT_EQ(automatic.IsSignalled(), 1);
    EXPECT_EQ(automatic.IsSignalled(), 0) << "the question took the signal";
    CEvent manual(L"Tessel test event", 1, 1, 1);
    CEvent same(L"Tessel test event");
    EXPECT_EQ(same.WaitOnEvent(0), 0u);
    EXPECT_EQ(same.IsSignalled(), 1);
    EXPECT_EQ(manual.ResetEvent() + manual.PulseEvent(), 0u);
    EXPECT_EQ(same.IsSignalled(), 0);
}

TEST(Event, OnlyOneThatIsOpenToAllHasAnEmptyAccessList) {
    bool nullDacl = false;
    const ImportPatch create("CreateEventW", &CreateEventW, [&](SECURITY_ATTRIBUTES* attributes, auto... others) {
        BOOL present = FALSE;
        BOOL defaulted = FALSE;
        ACL* acl = nullptr;
        nullDacl = attributes != nullptr && !attributes->bInheritHandle &&
                   GetSecurityDescriptorDacl(attributes->lpSecurityDescriptor, &present, &acl, &defaulted) && present &&
                   acl == nullptr;
        return CreateEventW(attributes, others...);
    });
    const CEvent open(nullptr, 0, 0, 1);
    EXPECT_TRUE(nullDacl);
    const CEvent closed;
    EXPECT_FALSE(nullDacl);
}

TEST(Event, Odd08AFailedOpenIsMarkedAndWaitedOn) {
    const CSemaphore semaphore(L"Tessel test kind", 1, 1);
    CEvent event(L"Tessel test kind");
    EXPECT_EQ(event.GetHandle(), INVALID_HANDLE_VALUE);
    EXPECT_FALSE(event.IsOpen());
    const ImportPatch wait(Failing("WaitForSingleObjectEx", &WaitForSingleObjectEx, WAIT_FAILED, ERROR_INVALID_HANDLE));
    EXPECT_EQ(event.WaitOnEvent(0), kInvalidHandle);
}

TEST(Event, Odd07ADuplicateIsAFreshEvent) {
    CEvent original(nullptr, 1, 1);
    CEvent copy(HandleToULong(original.GetHandle()));
    EXPECT_TRUE(copy.IsOpen() && !copy.IsSignalled());
}

TEST(Event, Odd06WaitingWithMessagesDispatchesThemAll) {
    CEvent event;
    EXPECT_EQ(event.WaitOnEventMsg(0), kNotSignalled);
    PostThreadMessageW(GetCurrentThreadId(), WM_APP, 0, 0);
    PostQuitMessage(3);
    EXPECT_EQ(event.WaitOnEventMsg(INFINITE), kNotSignalled);
    MSG message;
    EXPECT_FALSE(PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE));
    event.SetEvent();
    EXPECT_EQ(event.WaitOnEventMsg(INFINITE), 0u);
}

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
