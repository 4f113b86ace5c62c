#include "support/ImportPatch.h"

#include <gtest/gtest.h>
#include <tessel/foundation/clock.h>

#include <cstring>
#include <vector>

TEST(Clock, Odd60IsSetToTimesThatExistButNeverTo29February) {
    std::vector<SYSTEMTIME> set;
    const ImportPatch patch("SetLocalTime", &SetLocalTime, [&](auto* time) { return set.push_back(*time), TRUE; });
    for (WORD month = 0; month <= 13; ++month) {
        for (WORD day = 0; day <= 32; ++day) {
            const SYSTEMTIME time{2004, month, 0, day, 23, 58, 59, 0};
            FILETIME any;
            const bool exists = SystemTimeToFileTime(&time, &any) && !(month == 2 && day == 29);
            set.clear();
            SetDateTime(day, month, 2004, 23, 58, 59);
            ASSERT_EQ(set.size(), exists ? 1u : 0u) << day << '.' << month;
            EXPECT_TRUE(!exists || std::memcmp(&set[0], &time, sizeof time) == 0) << day << '.' << month;
        }
    }
    set.clear();
    SetDateTime(1, 1, 2004, 24, 0, 0);
    SetDateTime(1, 1, 2004, 0, 60, 0);
    SetDateTime(1, 1, 2004, 0, 0, 60);
    EXPECT_TRUE(set.empty());
}

TEST(Clock, IsReadFieldByField) {
    const ImportPatch get("GetLocalTime", &GetLocalTime,
                          [](SYSTEMTIME* time) { *time = {2004, 5, 1, 31, 23, 58, 59, 7}; });
    unsigned short t[6];
    GetDateTime(t[0], t[1], t[2], t[3], t[4], t[5]);
    EXPECT_EQ(std::vector(t, t + 6), (std::vector<unsigned short>{31, 5, 2004, 23, 58, 59}));
}
