#include "OrvVersion/ReleaseHistory.h"

using namespace Tarnwick::OrvUpdate;
using namespace Public::Base;

namespace {

struct Fields {
    std::string version = "1.11.0.8";
    int bits = 64;
    int systemType = 1;
    int versionType = 1;
    std::string updateTime = "100";
    int displayIndex = 0;
};

std::shared_ptr<IReleaseHistory> makeHistory(const Fields& fields) {
    JsonValue document;
    document["softversion"] = fields.version;
    document["systemType"] = fields.systemType;
    document["systemBits"] = fields.bits;
    document["versionType"] = fields.versionType;
    document["versionInfo"] = "note";
    document["updateTime"] = fields.updateTime;
    document["displayIndex"] = fields.displayIndex;
    ReleaseHistorySet found;
    ReleaseHistory::parseReleaseHistory(document.toStyledString(WriteStyle_Indented), found, Version());
    return found.empty() ? nullptr : *found.begin();
}

/// A record of another class, of a 64-bit Windows package for every role.
class ForeignHistory : public IReleaseHistory {
public:
    bool operator<(const std::shared_ptr<IReleaseHistory>& other) const override {
        return other && getVersion() < other->getVersion();
    }
    SystemType getSystemType() const override { return SystemType_Windows; }
    SystemBits getSystemBits() const override { return SystemBits_64; }
    ProjectType getProjectType() const override { return ProjectType_Unknown; }
    VersionType getVersionType() const override { return VersionType_All; }
    Version getVersion() const override { return Version("1.11.0.8", 0); }
    unsigned long long getUpdateTime() const override { return 7; }
    std::string getVersionInfo() const override { return "foreign"; }
    int getDisplayIndex() const override { return 3; }
};

}  // namespace

TEST(ReleaseHistory, BeginsEmpty) {
    const ReleaseHistory history;
    EXPECT_EQ(history.getSystemType(), SystemType_Unknown);
    EXPECT_EQ(history.getSystemBits(), SystemBits_Unknown);
    EXPECT_EQ(history.getProjectType(), ProjectType_Unknown);
    EXPECT_EQ(history.getVersionType(), VersionType_Unknown);
    EXPECT_EQ(history.getVersion().toString(), "");
    EXPECT_EQ(history.getUpdateTime(), 0U);
    EXPECT_EQ(history.getVersionInfo(), "");
    EXPECT_EQ(history.getDisplayIndex(), 0);
}

TEST(ReleaseHistory, StoresEachFieldAndReportsSuccess) {
    ReleaseHistory history;
    EXPECT_EQ(history.setSystemType(SystemType_Mac).errorCode(), 0);
    EXPECT_EQ(history.setSystemBits(SystemBits_32).errorCode(), 0);
    EXPECT_EQ(history.setProjectType(static_cast<ProjectType>(5)).errorCode(), 0);
    EXPECT_EQ(history.setVersionType(VersionType_Server).errorCode(), 0);
    history.setDisplayIndex(-4);
    EXPECT_EQ(history.getSystemType(), SystemType_Mac);
    EXPECT_EQ(history.getSystemBits(), SystemBits_32);
    EXPECT_EQ(static_cast<int>(history.getProjectType()), 5);
    EXPECT_EQ(history.getVersionType(), VersionType_Server);
    EXPECT_EQ(history.getDisplayIndex(), -4);
}

struct HistoryOrderCase {
    std::string name;
    Fields first;
    Fields second;
};

class ReleaseHistoryOrder : public testing::TestWithParam<HistoryOrderCase> {};

TEST_P(ReleaseHistoryOrder, FirstComesBeforeSecondOnly) {
    const auto first = makeHistory(GetParam().first);
    const auto second = makeHistory(GetParam().second);
    EXPECT_TRUE(*first < second);
    EXPECT_FALSE(*second < first);
}

INSTANTIATE_TEST_SUITE_P(
    Fields, ReleaseHistoryOrder,
    testing::Values(HistoryOrderCase{"VersionAboveAll",
                                     {.version = "1.9", .bits = 64, .systemType = 5, .versionType = 5},
                                     {.version = "1.10", .bits = 32, .systemType = 1, .versionType = 1}},
                    HistoryOrderCase{"BitsBeforeSystem", {.bits = 32, .systemType = 5}, {.bits = 64, .systemType = 1}},
                    HistoryOrderCase{
                        "SystemBeforeType", {.systemType = 1, .versionType = 5}, {.systemType = 2, .versionType = 1}},
                    HistoryOrderCase{"TypeLast", {.versionType = 2}, {.versionType = 3}},
                    HistoryOrderCase{"BitsAreSigned", {.bits = -1}, {}}),
    [](const auto& test) { return test.param.name; });

TEST(ReleaseHistory, NeverComesBeforeItselfOrNull) {
    const auto history = makeHistory({});
    EXPECT_FALSE(*history < history);
    EXPECT_FALSE(*history < nullptr);
}

TEST(ReleaseHistory, SetKeepsTheFirstOfTwoThatDifferInTimeAndIndexAlone) {
    const auto first = makeHistory({.updateTime = "100", .displayIndex = 1});
    const auto second = makeHistory({.updateTime = "200", .displayIndex = 0});
    const ReleaseHistorySet histories{first, second};
    ASSERT_EQ(histories.size(), 1U);
    EXPECT_EQ(*histories.begin(), first);
}

TEST(ReleaseHistory, ProjectTypeTakesNoPartInTheOrder) {
    const auto first = std::make_shared<ReleaseHistory>();
    const auto second = std::make_shared<ReleaseHistory>();
    second->setProjectType(static_cast<ProjectType>(5));
    EXPECT_EQ((ReleaseHistorySet{first, second}).size(), 1U);
}

TEST(ReleaseHistory, SetRunsFromOldestToNewestWithNullFirst) {
    const ReleaseHistorySet histories{makeHistory({.version = "1.10"}), makeHistory({.version = "1.9"}), nullptr};
    ASSERT_EQ(histories.size(), 3U);
    auto entry = histories.begin();
    EXPECT_EQ(*entry++, nullptr);
    EXPECT_EQ((*entry++)->getVersion().toString(), "1.9");
    EXPECT_EQ((*entry)->getVersion().toString(), "1.10");
}

TEST(ReleaseHistory, ComparesWithRecordsOfAnotherClass) {
    const std::shared_ptr<IReleaseHistory> foreign = std::make_shared<ForeignHistory>();
    EXPECT_TRUE(*makeHistory({.version = "1.0"}) < foreign);
    EXPECT_FALSE(*makeHistory({.version = "2.0"}) < foreign);
    EXPECT_FALSE(*makeHistory({}) < foreign);
    EXPECT_TRUE(*makeHistory({.bits = 32}) < foreign);
}

TEST(ReleaseHistory, WritesRecordsOfAnotherClassAndLeavesNullOut) {
    std::string text;
    EXPECT_EQ(ReleaseHistory::buildReleaseHistory({nullptr, std::make_shared<ForeignHistory>()}, text).errorCode(), 0);
    JsonValue document;
    ASSERT_FALSE(document.read(SharedBuffer(text)));
    ASSERT_EQ(document.size(), 1U);
    EXPECT_EQ(document[0]["versionInfo"]->toString(), "foreign");
    EXPECT_EQ(document[0]["updateTime"]->toString(), "7");
    EXPECT_EQ(document[0]["displayIndex"]->toInt(), 3);
}
