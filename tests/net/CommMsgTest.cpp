#include <gtest/gtest.h>
#include <tessel/net/commmsg.h>

#include <cstring>
#include <memory>
#include <new>

namespace {

using Message = std::unique_ptr<CCommMsg>;

Message Make(unsigned int n) {
    return Message(new (n) CCommMsg);
}

} // namespace

TEST(CommMsg, KeepsTheLengthOfItsAllocationAndLiesOnTheWireInOneRun) {
    for (const unsigned int n : {0U, 1U, 5U, 70000U}) {
        const Message message = Make(n);
        ASSERT_NE(message, nullptr);
        std::memset(message->GetData(), 0xAB, n);
        unsigned int wire = 0;
        std::memcpy(&wire, message->GetMsg(), sizeof wire);
        EXPECT_EQ(wire, n);
        EXPECT_EQ(message->GetLength(), n);
        EXPECT_EQ(message->GetXmitLength(), n + 4);
        EXPECT_EQ(message->GetMsg() + 4, message->GetData());
        const Message between = Make(n + 1);
        EXPECT_EQ(message->GetLength(), n);
    }
}

TEST(CommMsg, TakesNoLengthFromAnAllocationThatWasNotItsOwn) {
    void* const block = CCommMsg::operator new(sizeof(CCommMsg), 7);
    alignas(CCommMsg) unsigned char other[sizeof(CCommMsg)] = {};
    EXPECT_EQ(static_cast<CCommMsg*>(block)->GetLength(), 7u);
    EXPECT_NE((::new (static_cast<void*>(other)) CCommMsg)->GetLength(), 7u);
    CCommMsg::operator delete(block);
}

TEST(CommMsg, CopiesItsLengthOnly) {
    const Message first = Make(3);
    const Message second = Make(2);
    std::memcpy(first->GetData(), "abc", 3);
    std::memcpy(second->GetData(), "xy", 2);
    const CCommMsg copy(*first);
    EXPECT_EQ(copy.GetLength(), 3u);
    *first = *second;
    EXPECT_EQ(first->GetLength(), 2u);
    EXPECT_EQ(std::memcmp(first->GetData(), "abc", 3), 0);
}

TEST(CommMsg, IsNullWhereMemoryCannotHoldIt) {
    if (sizeof(void*) != 4) GTEST_SKIP() << "64-bit processes have room for 4 GB";
    for (const unsigned int n : {0xFFFFFFFFU, 0xFFFFFFF8U, 0xC0000000U}) EXPECT_EQ(Make(n), nullptr);
}
