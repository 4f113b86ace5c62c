#include "support/Reports.h"

#include <gtest/gtest.h>

TEST(AssertLog, KeepsTheNewestReportsOldestFirstAndTruncatesLongTexts) {
    const std::string longText(1000, 'x');
    WndLogAssert(longText.c_str(), longText.c_str(), 7);
    WND_ASSERT_RECORD record{};
    ASSERT_EQ(WndReadAsserts(&record, 1), 1u);
    EXPECT_EQ(record.szExpression, longText.substr(0, 255));
    EXPECT_EQ(record.szFile, longText.substr(0, 63));
    EXPECT_EQ(record.ulThreadId, GetCurrentThreadId());

    for (unsigned int line = 0; line < WND_ASSERT_RING_SIZE + 10; ++line) WndLogAssert("e", nullptr, line);
    std::vector<WND_ASSERT_RECORD> records(WND_ASSERT_RING_SIZE * 2);
    ASSERT_EQ(WndReadAsserts(records.data(), WND_ASSERT_RING_SIZE * 2), WND_ASSERT_RING_SIZE);
    EXPECT_EQ(records[0].ulLine, 10u);
    EXPECT_EQ(records[WND_ASSERT_RING_SIZE - 1].ulNumber, WndGetAssertCount());
}

TEST(AssertLog, HandsEachReportToTheSinkButNotWhatTheSinkReports) {
    static int calls = 0;
    WndSetAssertSink([](const WND_ASSERT_RECORD&, void*) { ++calls, WndLogAssert("inner", "Sink", 1); }, nullptr);
    SetLastError(1234);
    WndLogAssert(nullptr, nullptr, 1);
    EXPECT_EQ(GetLastError(), 1234u);
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(WndGetAssertCount(), 2u);
}
