// A seed gives the same run again.
#include <gtest/gtest.h>

#include "Run.h"

namespace {

using namespace cluster;

class ClusterReplay : public testing::TestWithParam<uint64_t> {};

INSTANTIATE_TEST_SUITE_P(Seed, ClusterReplay, testing::Range<uint64_t>(100, 116));

}  // namespace

TEST_P(ClusterReplay, GivesTheSameLogTwice) {
    const auto first = run(GetParam(), Pace::Steps).log;
    const auto second = run(GetParam(), Pace::Steps).log;
    ASSERT_FALSE(first.empty());
    for (size_t i = 0; i < std::min(first.size(), second.size()); ++i) {
        ASSERT_EQ(second[i], first[i]) << "after " << (i ? first[i - 1] : "the beginning");
    }
    EXPECT_EQ(second.size(), first.size());
}

TEST(ClusterRun, AnotherSeedGivesAnotherRun) { EXPECT_NE(run(1, Pace::Steps).log, run(2, Pace::Steps).log); }

TEST(ClusterRun, TellsHowToHaveARunAgain) { EXPECT_NE(run(5).text().find("again: ./dev soak 1 5"), std::string::npos); }
