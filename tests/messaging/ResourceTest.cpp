#include "support/OpenPostOffice.h"
#include "support/Reports.h"

#include <gtest/gtest.h>
#include <tessel/messaging/resource.h>

#include <thread>

namespace {

constexpr RESOURCE_TYPE kFrame{1};
constexpr RESOURCE_ID kManager{1};
constexpr RESOURCE_ID kOther{2};

HWND Window(unsigned long number) {
    return static_cast<HWND>(ULongToHandle(number));
}

int Add(CResource& resources, RESOURCE_ID id, unsigned long window, unsigned long owner) {
    return resources.AddResource(kFrame, id, Window(window), owner);
}

class Resources : public testing::Test {
protected:
    OpenPostOffice office;
    CResource resources;
    Reports reports;
};

} // namespace

TEST_F(Resources, TheLowestEntryOfAKeyIsFoundAndDeletedFirst) {
    for (const unsigned long window : {0x10ul, 0x20ul}) EXPECT_EQ(Add(resources, kOther, window, 5), 0);
    EXPECT_EQ(resources.GetResource(kFrame, kOther, 5), Window(0x10));
    EXPECT_EQ(resources.DeleteResource(kFrame, kOther, 5), 0);
    EXPECT_EQ(resources.GetResource(kFrame, kOther, 5), Window(0x20));
    EXPECT_EQ(resources.DeleteResource(kFrame, kOther, 6), 1);
    EXPECT_EQ(resources.GetResource(kFrame, kManager, 5), nullptr);
    const RESOURCE& second = resources.GetResourceAddress()[1];
    EXPECT_TRUE(second.ThreadId == GetCurrentThreadId() && second.ProcessId == GetCurrentProcessId());
}

TEST_F(Resources, Odd26EntriesAreDeletedByThreadAndByProcess) {
    Add(resources, kManager, 0x10, 1);
    EXPECT_EQ(resources.GetManagerFromThread(), 1u);
    std::thread([] {
        CResource own;
        Add(own, kOther, 0x20, 2);
        EXPECT_EQ(own.GetManagerFromThread(), 0xFFFFFFFFu);
        own.FreeThreadResources();
        EXPECT_EQ(own.GetResource(kFrame, kOther, 2), nullptr);
    }).join();
    RESOURCE& beingFilled = resources.GetResourceAddress()[9];
    beingFilled.ThreadId = 7;
    for (const unsigned long other : {0UL, GetCurrentProcessId() + 1}) EXPECT_EQ(resources.ResetProcess(other), 0);
    EXPECT_EQ(beingFilled.ThreadId, 7u);
    EXPECT_EQ(resources.GetResource(kFrame, kManager, 1), Window(0x10));
    EXPECT_EQ(resources.ResetProcess(GetCurrentProcessId()), 0);
    EXPECT_EQ(resources.GetResource(kFrame, kManager, 1), nullptr);
}

TEST_F(Resources, AFullTableIsReported) {
    for (unsigned long i = 1; i <= POST_OFFICE_RESOURCES; ++i) ASSERT_EQ(Add(resources, kOther, i, i), 0);
    EXPECT_EQ(Add(resources, kOther, 9, 9), 1);
    const Texts texts = reports.Take();
    ASSERT_EQ(texts.size(), 1u);
    EXPECT_TRUE(texts[0].starts_with("CRes:") && texts[0].ends_with(" !result")) << texts[0];
    EXPECT_EQ(resources.GetResource(kFrame, kOther, POST_OFFICE_RESOURCES), Window(POST_OFFICE_RESOURCES));
    EXPECT_EQ(resources.DeleteResource(kFrame, kOther, 5), 0);
    EXPECT_EQ(Add(resources, kOther, 5, 5), 0) << "a deleted one is free";
}
