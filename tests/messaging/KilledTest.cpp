#include "KilledOperations.h"
#include "KilledPrograms.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <algorithm>

namespace {

constexpr std::size_t kKills = 4;

/// A number that differs from run to run, and is printed because a failure may depend on it.
unsigned int Chance() {
    const auto chance = static_cast<unsigned int>(GetTickCount());
    std::printf("chance: %u\n", chance);
    return chance;
}

class KilledOperationTest : public testing::TestWithParam<std::string> {};

std::string Name(const testing::TestParamInfo<std::string>& parameter) {
    std::string name = parameter.param;
    name.erase(std::remove(name.begin(), name.end(), ' '), name.end());
    return name;
}

} // namespace

TEST_P(KilledOperationTest, OthersGoOnAndNothingIsLeft) {
    Killing killing(GetParam());
    const Course course = killing.Observe(false);
    const std::vector<unsigned long> all = course.Instructions();
    ASSERT_FALSE(all.empty());
    const std::size_t stride = all.size() / kKills + 1;
    for (std::size_t i = Chance() % stride; i < all.size(); i += stride) {
        for (const Contention contention : course.Contentions(all[i])) {
            EXPECT_EQ(killing.Kill(all[i], course, contention).fault, "") << "after instruction " << all[i];
        }
    }
}

INSTANTIATE_TEST_SUITE_P(All, KilledOperationTest, testing::ValuesIn(Killing::Names()), Name);

TEST(KilledProgram, WhileOthersExchangeMessagesNothingIsLost) {
    EXPECT_EQ(KillBusyPrograms(20, 2000, Chance()), "");
}

TEST(KilledProgram, ReturningFromMainWhileThreadsSendEndsTheProgram) {
    EXPECT_EQ(ReturnWhileSending(10), "");
}
