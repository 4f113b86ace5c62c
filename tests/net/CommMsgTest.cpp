#include "support/Loopback.h"

#include <gtest/gtest.h>

#include <cstring>

TEST(CommMsg, KeepsTheLengthOfItsAllocationAndLiesOnTheWireInOneRun) {
    for (const unsigned int n : {0U, 1U, 5U, 70000U}) {
        const auto message = Message(std::string(n, 'x'));
        EXPECT_EQ(message->GetLength(), n);
        EXPECT_EQ(message->GetXmitLength(), n + 4);
        EXPECT_EQ(std::string(reinterpret_cast<char*>(message->GetMsg()), n + 4), Wire(std::string(n, 'x')));
        const auto between = Message(std::string(n + 1, 'y'));
        EXPECT_EQ(message->GetLength(), n);
    }
}

TEST(CommMsg, CopiesItsLengthOnly) {
    const auto first = Message("abc");
    const CCommMsg copy(*first);
    EXPECT_EQ(copy.GetLength(), 3u);
    *first = *Message("xy");
    EXPECT_EQ(first->GetLength(), 2u);
    EXPECT_EQ(std::memcmp(first->GetData(), "abc", 3), 0);
}

TEST(CommMsg, IsNullWhereMemoryCannotHoldIt) {
    if (sizeof(void*) != 4) GTEST_SKIP() << "64-bit processes have room for 4 GB";
    for (const unsigned int n : {0xFFFFFFFFU, 0xFFFFFFF8U, 0xC0000000U}) {
        EXPECT_EQ(std::unique_ptr<CCommMsg>(new (n) CCommMsg), nullptr) << n;
    }
}
