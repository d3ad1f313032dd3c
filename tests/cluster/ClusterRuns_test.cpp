// Whole upgrades in clusters whose links and nodes fail, from many seeds.
#include "Run.h"

#include <gtest/gtest.h>

namespace {

using namespace cluster;

constexpr uint64_t kRunsOfABatch = 10;

/// What happened in many runs.
using Tally = std::map<std::string, size_t>;

/// Plays the seeds; a run that breaks an invariant fails the test with all that it takes to have it again.
Tally playAll(uint64_t first, uint64_t runs) {
    Tally tally;
    for (uint64_t seed = first; seed < first + runs; ++seed) {
        const auto report = run(seed);
        EXPECT_TRUE(report.violations.empty()) << report.text();
        for (const auto& what : report.counted) ++tally[what];
    }
    return tally;
}

class ClusterRuns : public testing::TestWithParam<int> {};

INSTANTIATE_TEST_SUITE_P(Batch, ClusterRuns, testing::Range(0, 24));

}  // namespace

TEST_P(ClusterRuns, KeepEveryInvariant) {
    const auto first = 1 + static_cast<uint64_t>(GetParam()) * kRunsOfABatch;
    EXPECT_GT(playAll(first, kRunsOfABatch)["question answered"], 0U);
}

/// Else the runs would hold for want of anything that happens.
TEST(ClusterRun, MeetsEveryKindOfEnd) {
    Tally tally;
    for (uint64_t seed = 1; seed <= 16; ++seed) {
        for (const auto& what : run(seed, Pace::Steps).counted) ++tally[what];
    }
    for (const char* what :
         {"question answered", "question failed", "pull finished", "pull failed", "push finished", "push failed",
          "download finished", "upload finished", "upload failed", "install downloaded", "install installing",
          "install error", "transfer seen finished", "arrival seen", "cancelled under way", "upgraded"}) {
        EXPECT_GT(tally[what], 0U) << what;
    }
}
