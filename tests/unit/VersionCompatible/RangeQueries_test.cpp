// The three questions for what goes with a component.
#include "CompatibilityFixture.h"

namespace Tarnwick::OrvUpdate {

namespace {

class RangeQuery : public testing::TestWithParam<ArrayCase> {
protected:
    std::string forward(const std::string& elements, const std::string& version,
                        SystemType system = SystemType_Windows) {
        return fromFirst(loaded(documentOf(mKeys, elements)), mKeys, component(version, system));
    }
    const ArrayCase& mKeys = GetParam();
};

class RoleQuery : public RangeQuery {};

/// Of a document whose rules let everything of these roles meet.
VersionCompatible everyRole() {
    const Side all{"0.1", "9.0"};
    return loaded(R"({"Version":"1.0","ClientCompatibles":[)" + rule(kClients, all, all) +
                  R"(],"VideoWallCompatibles":[)" + rule(kVideoWalls, all, all) + R"(],"VanticServerCompatibles":[)" +
                  rule(kVanticServers, all, all) + "]}");
}

}  // namespace

INSTANTIATE_TEST_SUITE_P(Of, RangeQuery, testing::Values(kClients, kServers, kVideoWalls, kVanticServers), nameOf);
INSTANTIATE_TEST_SUITE_P(Of, RoleQuery, testing::Values(kClients, kVideoWalls, kVanticServers), nameOf);

TEST_P(RangeQuery, HoldsTheLowVersionAndNotTheHighOne) {
    const std::string all = "1 1.2.0.0 1.3.0.0";
    EXPECT_EQ(forward(rule(mKeys), "1.1.2147483647.2147483647"), "");
    EXPECT_EQ(forward(rule(mKeys), "1.2.0.0"), all);
    EXPECT_EQ(forward(rule(mKeys), "1.2.5.0"), all);
    EXPECT_EQ(forward(rule(mKeys), "1.2.2147483647.2147483647"), all);
    EXPECT_EQ(forward(rule(mKeys), "1.3.0.0"), "");
}

TEST_P(RangeQuery, TakesEditionBuildAndRevisionAsTheyStand) {
    const std::string ranges = rule(mKeys, {"1.2-b5", "1.3-rK"});
    EXPECT_EQ(forward(ranges, "1.2-b4"), "");
    EXPECT_NE(forward(ranges, "1.2-b5"), "");
    EXPECT_NE(forward(ranges, "1.3"), "");
    EXPECT_NE(forward(ranges, "1.3-rJ"), "");
    EXPECT_EQ(forward(ranges, "1.3-rK"), "");
    EXPECT_EQ(forward(ranges, "1.3-oem1"), "");
}

TEST_P(RangeQuery, AsksForTheSystemItself) {
    EXPECT_EQ(forward(rule(mKeys), "1.2.0.0", SystemType_Linux), "");
    EXPECT_EQ(forward(rule(mKeys), "1.2.0.0", SystemType_Unknown), "");
    EXPECT_EQ(forward(rule(mKeys), "1.2.0.0", static_cast<SystemType>(99)), "");
    EXPECT_EQ(forward(rule(mKeys), "1.2.0.0", static_cast<SystemType>(-1)), "");
}

TEST_P(RangeQuery, StopsAtTheFirstMatchingKeyThoughOthersMatchToo) {
    const std::string overlapping = rule(mKeys, {"1.0", "3.0"}, {"7.0", "8.0"}) + "," +
                                    rule(mKeys, {"1.0", "2.0"}, {"5.0", "6.0"}) + "," +
                                    rule(mKeys, {"1.5", "2.5"}, {"9.0", "9.9"});
    EXPECT_EQ(forward(overlapping, "1.7"), "1 5.0 6.0");  // by low, then by high
    EXPECT_EQ(forward(overlapping, "2.2"), "1 7.0 8.0");
    EXPECT_EQ(forward(overlapping, "2.7"), "1 7.0 8.0");
}

TEST_P(RangeQuery, FindsARangeBehindShorterOnes) {
    const std::string nested = rule(mKeys, {"1.0", "1.1"}, {"7.0", "8.0"}) + "," +
                               rule(mKeys, {"1.2", "9.0"}, {"5.0", "6.0"}) + "," +
                               rule(mKeys, {"1.3", "1.4"}, {"3.0", "4.0"});
    EXPECT_EQ(forward(nested, "1.35"), "1 5.0 6.0");
    EXPECT_EQ(forward(nested, "5.0"), "1 5.0 6.0");
    EXPECT_EQ(forward(nested, "1.15"), "1 5.0 6.0");
}

TEST_P(RangeQuery, ReplacesWhatTheResultHeld) {
    RangeSet result{{SystemType_Mac, 0, Version("1", 0), Version("2", 0)}};
    const VersionCompatible document = loaded(documentOf(mKeys, rule(mKeys)));
    const auto item = component("1.2.0.0");
    const ErrorInfo error = mKeys.type == VersionType_Server
                                ? document.queryServerCompatibleFromServer(item, result)
                                : document.queryClientCompatibleFromSystem(mKeys.type, item, result);
    EXPECT_EQ(error.errorCode(), 0);
    EXPECT_EQ(told(result), "1 1.2.0.0 1.3.0.0");
}

TEST_P(RangeQuery, LeavesTheResultAsItWasOnAMiss) {
    RangeSet result{{SystemType_Mac, 0, Version("1", 0), Version("2", 0)}};
    const VersionCompatible document = loaded(documentOf(mKeys, rule(mKeys)));
    const auto item = component("1.3.0.0");
    const ErrorInfo error = mKeys.type == VersionType_Server
                                ? document.queryServerCompatibleFromServer(item, result)
                                : document.queryClientCompatibleFromSystem(mKeys.type, item, result);
    EXPECT_EQ(error.errorCode(), 0);
    EXPECT_EQ(told(result), "3 1 2");
}

TEST_P(RoleQuery, FromTheOtherSideGivesTheSystems) {
    const VersionCompatible document = loaded(documentOf(
        mKeys, rule(mKeys, {"1.0", "2.0"}, {"3.0", "4.0"}) + "," + rule(mKeys, {"5.0", "6.0"}, {"3.0", "4.0"})));
    EXPECT_EQ(fromSecond(document, mKeys, component("3.0")), "1 1.0 2.0; 1 5.0 6.0");
    EXPECT_EQ(fromSecond(document, mKeys, component("4.0")), "");
}

TEST_P(RoleQuery, FromTheOtherSideLeavesTheResultAsItWasOnAMiss) {
    RangeSet result{{SystemType_Mac, 0, Version("1", 0), Version("2", 0)}};
    const VersionCompatible document = loaded(documentOf(mKeys, rule(mKeys)));
    EXPECT_FALSE(document.querySystemCompatibleFromClient(mKeys.type, component("9.9"), result));
    EXPECT_EQ(told(result), "3 1 2");
}

class QueryOfNoRole : public testing::TestWithParam<int> {};

TEST_P(QueryOfNoRole, GivesCode0AndLeavesTheResult) {
    const auto type = static_cast<VersionType>(GetParam());
    const VersionCompatible document = everyRole();
    RangeSet result{{SystemType_Mac, 0, Version("1", 0), Version("2", 0)}};
    EXPECT_EQ(document.queryClientCompatibleFromSystem(type, component("1.2"), result).errorCode(), 0);
    EXPECT_EQ(document.querySystemCompatibleFromClient(type, component("1.2"), result).errorCode(), 0);
    EXPECT_EQ(told(result), "3 1 2");
}

INSTANTIATE_TEST_SUITE_P(Type, QueryOfNoRole, testing::Values(0, 1, 3, 6, -1, 1000), numberOf);

}  // namespace Tarnwick::OrvUpdate
