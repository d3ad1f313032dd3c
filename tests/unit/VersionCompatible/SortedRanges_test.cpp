// The search among ranges gives what looking at each gives.
#include "VersionCompatible/CompatibilityRules.h"

#include <random>

#include "CompatibilityFixture.h"

namespace Tarnwick::OrvUpdate {

namespace {

std::string someVersion(std::mt19937& random) {
    std::string text = std::to_string(random() % 4);
    if (random() % 2 != 0) text += "." + std::to_string(random() % 4);
    if (random() % 5 == 0) text += "-oem" + std::to_string(1 + random() % 2);
    if (random() % 5 == 0) text += "-b" + std::to_string(1 + random() % 2);
    if (random() % 5 == 0) text += random() % 2 != 0 ? "-rA" : "-rB";
    return random() % 40 == 0 ? std::string() : text;
}

CompatibleRange someRange(std::mt19937& random) {
    return {static_cast<SystemType>(random() % 3), 0, Version(someVersion(random), 0), Version(someVersion(random), 0)};
}

class Search : public testing::TestWithParam<unsigned> {
protected:
    Search() {
        for (size_t i = 0, count = mRandom() % 40; i < count; ++i) mSet.insert(someRange(mRandom));
        for (const CompatibleRange& range : mSet) mRanges.append(range);
    }
    std::mt19937 mRandom{GetParam()};
    RangeSet mSet;
    SortedRanges mRanges;
};

}  // namespace

INSTANTIATE_TEST_SUITE_P(Seed, Search, testing::Range(0u, 20u));

TEST_P(Search, LeavesOutNoRangeThatHoldsTheComponent) {
    for (int question = 0; question < 500; ++question) {
        const VersionCompatibles item{static_cast<SystemType>(mRandom() % 4), 0, Version(someVersion(mRandom), 0)};
        const SortedRanges::Places places = mRanges.candidates(item);
        bool any = false;
        for (size_t i = 0; i < mRanges.all().size(); ++i) {
            if (!rangeContains(mRanges.all()[i], item)) continue;
            any = true;
            EXPECT_TRUE(places.first <= i && i < places.last) << item.version.toString() << " at " << i;
        }
        EXPECT_EQ(mRanges.hold(item), any);
    }
    EXPECT_EQ(told({mRanges.all().begin(), mRanges.all().end()}), told(mSet));
}

TEST(SortedRangesSearch, OfNoRangesFindsNone) {
    const SortedRanges none;
    const auto places = none.candidates(component("1.0"));
    EXPECT_EQ(places.first, places.last);
    EXPECT_FALSE(none.hold(component("1.0")));
}

TEST(SortedRangesSearch, AmongRangesThatDoNotOverlapLooksAtOne) {
    SortedRanges ranges;
    for (int i = 0; i < 1000; ++i) {
        ranges.append(
            {SystemType_Windows, 0, Version("1." + std::to_string(i), 0), Version("1." + std::to_string(i + 1), 0)});
    }
    const auto places = ranges.candidates(component("1.777.5"));
    EXPECT_EQ(places.first, 777u);
    EXPECT_EQ(places.last, 778u);
}

}  // namespace Tarnwick::OrvUpdate
