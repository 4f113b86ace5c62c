#include "support/ImportPatch.h"

#include <gtest/gtest.h>
#include <tessel/foundation/event.h>
#include <tessel/foundation/semaphore.h>

constexpr unsigned long kNotSignalled = 0xFFFFFFFF;

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
        BOOL present = FALSE, defaulted = FALSE;
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
    EXPECT_EQ(event.WaitOnEvent(0), static_cast<unsigned long>(ERROR_INVALID_HANDLE));
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
