#include "support/ImportPatch.h"

#include <gtest/gtest.h>
#include <tessel/foundation/event.h>
#include <tessel/foundation/process.h>

#include <vector>

TEST(ProcessFunctions, APriorityHasItsClassAndAnUnknownOneTheNormalClass) {
    std::vector<DWORD> classes;
    const ImportPatch set("SetPriorityClass", &SetPriorityClass, [&classes](HANDLE, DWORD priorityClass) {
        classes.push_back(priorityClass);
        return 7;
    });
    for (const int priority : {-3, -2, 1}) EXPECT_EQ(SetProcess(static_cast<PRIORITY>(priority)), 7);
    EXPECT_EQ(classes, (std::vector<DWORD>{NORMAL_PRIORITY_CLASS, IDLE_PRIORITY_CLASS, HIGH_PRIORITY_CLASS}));
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

TEST(ProcessFunctions, AThreadIsStarted) {
    CEvent ran;
    EXPECT_NE(BeginThread([](void* event) { static_cast<CEvent*>(event)->SetEvent(); }, 0, &ran), 0xFFFFFFFFu);
    EXPECT_EQ(ran.WaitOnEvent(INFINITE), 0u);
}
