// As many runs as someone asks for.
#include <gtest/gtest.h>

#include <iostream>

#include "Run.h"

namespace {

using namespace cluster;

}  // namespace

TEST(ClusterSoak, PlaysTheSeedsOfTheEnvironment) {
    const auto first = fromEnvironment("ORV_SEED", 1000);
    const auto runs = fromEnvironment("ORV_RUNS", 2);
    std::map<std::string, size_t> tally;
    for (uint64_t seed = first; seed < first + runs; ++seed) {
        const auto report = run(seed);
        EXPECT_TRUE(report.violations.empty()) << report.text();
        if (fromEnvironment("ORV_LOG", 0)) std::cout << report.text();
        for (const auto& what : report.counted) ++tally[what];
        if (runs > 20 && (seed - first + 1) % 20 == 0) std::cout << "\n" << seed - first + 1 << " runs\n" << std::flush;
    }
    std::cout << "\n";
    for (const auto& [what, times] : tally) std::cout << times << " x " << what << "\n";
}
