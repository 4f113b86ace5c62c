#include "support/ImportPatch.h"

#include <gtest/gtest.h>
#include <tessel/foundation/event.h>
#include <tessel/foundation/process.h>

#include <vector>

TEST(ProcessFunctions, APriorityHasItsClassAndAnUnknownOneTheNormalClass) {
    std::vector<DWORD> classes;
    const ImportPatch set("SetPriorityClass", &SetPriorityClass,
                          [&](HANDLE, DWORD priorityClass) { return classes.push_back(priorityClass), 7; });
    for (const int priority : {-3, -2, 1}) EXPECT_EQ(SetProcess(static_cast<PRIORITY>(priority)), 7);
    EXPECT_EQ(classes, (std::vector<DWORD>{NORMAL_PRIORITY_CLASS, IDLE_PRIORITY_CLASS, HIGH_PRIORITY_CLASS}));
    EXPECT_EQ(GetPriorityOfClass(GetCurrentProcess()), DWORD{NORMAL_PRIORITY_CLASS});
    EXPECT_EQ(SetPriority(PRIORITY_BELOW_NORMAL), 0);
    EXPECT_EQ(GetPriority(), -1);
    EXPECT_EQ(SetPriority(static_cast<PRIORITY>(99)), ERROR_INVALID_PARAMETER);
}

TEST(ProcessFunctions, OnlyTheFirstInstanceIsSingle) {
    EXPECT_EQ(SingleInstance(L"Tessel test instance"), 0);
    EXPECT_EQ(SingleInstance(L"Tessel test instance"), 1);
    const CEvent event(L"Tessel test taken");
    EXPECT_EQ(SingleInstance(L"Tessel test taken"), 1) << "the check failed";
}

TEST(ProcessFunctions, AThreadIsStartedAndEnded) {
    CEvent ran;
    static HANDLE thread;
    static bool returned = false;
    const auto run = [](void* event) {
        thread = OpenThread(SYNCHRONIZE, FALSE, GetMyThread());
        static_cast<CEvent*>(event)->SetEvent();
        EndThread();
        returned = true;
    };
    EXPECT_NE(BeginThread(run, 0, &ran), 0xFFFFFFFFu);
    EXPECT_EQ(ran.WaitOnEvent(INFINITE), 0u);
    EXPECT_EQ(WaitForSingleObject(thread, INFINITE), WAIT_OBJECT_0);
    EXPECT_FALSE(returned);
}
