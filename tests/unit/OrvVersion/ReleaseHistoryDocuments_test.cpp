#include "OrvVersion/ReleaseHistory.h"

using namespace Tarnwick::OrvUpdate;
using namespace Public::Base;

namespace {

std::string cloudRecord(const std::string& version, const std::string& time = "2024-01-31 08:00:00") {
    return R"({"softversion":")" + version + R"(","updateTime":")" + time + R"(","versionInfo":"about )" + version +
           R"("})";
}

std::string cloudList(const std::vector<std::string>& records) {
    std::string text;
    for (const auto& record : records) text += (text.empty() ? "" : ",") + record;
    return R"({"data":{"orvVersionInfo":[)" + text + "]}}";
}

ReleaseHistorySet readCloud(const std::string& text, int code = 0, const std::string& running = "1.0") {
    ReleaseHistorySet found;
    const ErrorInfo error = ReleaseHistory::parseReleaseHistoryFromHttp(text, "/store", found, Version(running, 0));
    EXPECT_EQ(static_cast<int>(error.errorCode()), code);
    EXPECT_EQ(error.errorMessage(), "");
    return found;
}

ReleaseHistorySet readNode(const std::string& text, int code = 0) {
    ReleaseHistorySet found;
    const ErrorInfo error = ReleaseHistory::parseReleaseHistory(text, found, Version("1.0-oem9", 0));
    EXPECT_EQ(static_cast<int>(error.errorCode()), code);
    EXPECT_EQ(error.errorMessage(), "");
    return found;
}

/// Version and place of each record, in set order.
std::vector<std::pair<std::string, int>> places(const ReleaseHistorySet& histories) {
    std::vector<std::pair<std::string, int>> list;
    for (const auto& history : histories)
        list.emplace_back(history->getVersion().toString(), history->getDisplayIndex());
    return list;
}
using Places = std::vector<std::pair<std::string, int>>;

JsonValue nodeDocument(const std::string& version = "1.11.0.8") {
    JsonValue value;
    value["softversion"] = version;
    value["systemType"] = 2;
    value["systemBits"] = 32;
    value["versionType"] = 3;
    value["versionInfo"] = "faster";
    value["updateTime"] = "1706659200";
    value["displayIndex"] = 4;
    return value;
}

std::string textOf(const JsonValue& value) { return value.toStyledString(WriteStyle_Indented).toStdString(); }

}  // namespace

// The cloud's list

TEST(CloudReleaseNotes, AreReadWithTheFieldsThatTheyLackAssumed) {
    const auto found = readCloud(cloudList({cloudRecord("1.11.0.8")}));
    ASSERT_EQ(found.size(), 1U);
    const auto& history = *found.begin();
    EXPECT_EQ(history->getVersion().toString(), "1.11.0.8");
    EXPECT_EQ(history->getVersionInfo(), "about 1.11.0.8");
    EXPECT_EQ(history->getSystemType(), SystemType_Windows);
    EXPECT_EQ(history->getSystemBits(), SystemBits_64);
    EXPECT_EQ(history->getVersionType(), VersionType_All);
    EXPECT_EQ(history->getProjectType(), ProjectType_Unknown);
    EXPECT_EQ(history->getDisplayIndex(), 0);
}

struct CloudDate {
    std::string name;
    std::string text;
    unsigned long long seconds;
};

class CloudReleaseNotesDate : public testing::TestWithParam<CloudDate> {};

TEST_P(CloudReleaseNotesDate, IsTakenEightHoursEastOfUtc) {
    const auto found = readCloud(cloudList({cloudRecord("1.0", GetParam().text)}));
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ((*found.begin())->getUpdateTime(), GetParam().seconds);
}

INSTANTIATE_TEST_SUITE_P(Dates, CloudReleaseNotesDate,
                         testing::Values(CloudDate{"Winter", "2024-01-31 08:00:00", 1706659200ULL},
                                         CloudDate{"Summer", "2024-07-31 08:00:00", 1722384000ULL},
                                         CloudDate{"LeapDay", "2024-02-29 23:59:59", 1709222399ULL},
                                         CloudDate{"Epoch", "1970-01-01 08:00:00", 0ULL},
                                         CloudDate{"BeyondThirtyTwoBits", "2040-01-01 00:00:00", 2208960000ULL}),
                         [](const auto& test) { return test.param.name; });

struct BadRecord {
    std::string name;
    std::string text;
};

class CloudReleaseNotesBad : public testing::TestWithParam<BadRecord> {};

TEST_P(CloudReleaseNotesBad, RecordIsDroppedAloneAndTakesNoPlace) {
    const auto found = readCloud(cloudList({cloudRecord("3.0"), GetParam().text, cloudRecord("1.0")}));
    EXPECT_EQ(places(found), (Places{{"1.0", 1}, {"3.0", 0}}));
}

INSTANTIATE_TEST_SUITE_P(
    Records, CloudReleaseNotesBad,
    testing::Values(BadRecord{"OtherDateFormat", cloudRecord("2.0", "31/01/2024")},
                    BadRecord{"DateAlone", cloudRecord("2.0", "2024-01-31")},
                    BadRecord{"NoSuchDay", cloudRecord("2.0", "2024-02-30 00:00:00")},
                    BadRecord{"EmptyDate", cloudRecord("2.0", "")},
                    BadRecord{"DateAsNumber", R"({"softversion":"2.0","updateTime":1706659200,"versionInfo":"x"})"},
                    BadRecord{"DateAsObject", R"({"softversion":"2.0","updateTime":{},"versionInfo":"x"})"},
                    BadRecord{"NoVersion", R"({"updateTime":"2024-01-31 08:00:00","versionInfo":"x"})"},
                    BadRecord{"NoDate", R"({"softversion":"2.0","versionInfo":"x"})"},
                    BadRecord{"NoNote", R"({"softversion":"2.0","updateTime":"2024-01-31 08:00:00"})"},
                    BadRecord{"Null", "null"}, BadRecord{"Number", "5"}, BadRecord{"Array", "[]"},
                    BadRecord{"OtherEdition", cloudRecord("2.0-oem5")}),
    [](const auto& test) { return test.param.name; });

TEST(CloudReleaseNotes, AreNumberedInTheCloudsOrder) {
    const auto found = readCloud(cloudList({cloudRecord("2.0"), cloudRecord("3.0"), cloudRecord("1.0")}));
    EXPECT_EQ(places(found), (Places{{"1.0", 2}, {"2.0", 0}, {"3.0", 1}}));
}

TEST(CloudReleaseNotes, UseUpAPlaceForARecordThatIsThereAlready) {
    const auto found = readCloud(cloudList({cloudRecord("2.0"), cloudRecord("2.0"), cloudRecord("1.0")}));
    EXPECT_EQ(places(found), (Places{{"1.0", 2}, {"2.0", 0}}));
}

TEST(CloudReleaseNotes, OfTheRunningEditionAreTaken) {
    const auto found = readCloud(cloudList({cloudRecord("2.0"), cloudRecord("3.0-oem5")}), 0, "1.0-oem5");
    EXPECT_EQ(places(found), (Places{{"3.0-oem5", 0}}));
}

TEST(CloudReleaseNotes, MayBeNone) { EXPECT_TRUE(readCloud(cloudList({})).empty()); }

class CloudReleaseNotesDocument : public testing::TestWithParam<BadRecord> {};

TEST_P(CloudReleaseNotesDocument, WithoutAListFails) { EXPECT_TRUE(readCloud(GetParam().text, -301).empty()); }

INSTANTIATE_TEST_SUITE_P(Documents, CloudReleaseNotesDocument,
                         testing::Values(BadRecord{"NoJson", "<html>"}, BadRecord{"Empty", ""},
                                         BadRecord{"NotUtf8", "\"\xff\""}, BadRecord{"EmptyObject", "{}"},
                                         BadRecord{"Null", "null"}, BadRecord{"Number", "1"}, BadRecord{"Array", "[]"},
                                         BadRecord{"NoList", R"({"data":{}})"},
                                         BadRecord{"DataIsNull", R"({"data":null})"},
                                         BadRecord{"DataIsText", R"({"data":"orvVersionInfo"})"},
                                         BadRecord{"DataIsArray", R"({"data":["orvVersionInfo"]})"},
                                         BadRecord{"ListIsObject", R"({"data":{"orvVersionInfo":{}}})"},
                                         BadRecord{"ListIsNull", R"({"data":{"orvVersionInfo":null}})"},
                                         BadRecord{"ListIsText", R"({"data":{"orvVersionInfo":"x"}})"},
                                         BadRecord{"NestedWithoutEnd", std::string(100000, '[')}),
                         [](const auto& test) { return test.param.name; });

TEST(CloudReleaseNotes, ReadsMembersOfAWrongKindAsEmpty) {
    const auto found =
        readCloud(cloudList({R"({"softversion":[],"updateTime":"2024-01-31 08:00:00","versionInfo":{}})"}));
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ((*found.begin())->getVersion().toString(), "");
    EXPECT_EQ((*found.begin())->getVersionInfo(), "");
}

TEST(CloudReleaseNotes, LeaveWhatTheSetHeld) {
    auto found = readCloud(cloudList({cloudRecord("1.0")}));
    const auto earlier = *found.begin();
    EXPECT_FALSE(ReleaseHistory::parseReleaseHistoryFromHttp(cloudList({cloudRecord("2.0"), cloudRecord("1.0")}), "",
                                                             found, Version("1.0", 0)));
    EXPECT_EQ(found.size(), 2U);
    EXPECT_EQ(*found.begin(), earlier);
    EXPECT_TRUE(ReleaseHistory::parseReleaseHistoryFromHttp("", "", found, Version("1.0", 0)));
    EXPECT_EQ(found.size(), 2U);
}

TEST(CloudReleaseNotes, MayBeTenThousand) {
    std::vector<std::string> records;
    for (int number = 0; number < 10000; ++number) records.push_back(cloudRecord("1." + std::to_string(number)));
    const auto found = readCloud(cloudList(records));
    ASSERT_EQ(found.size(), 10000U);
    EXPECT_EQ((*found.rbegin())->getDisplayIndex(), 9999);
}

// The cluster's document

TEST(NodeReleaseNotes, AreReadFieldByField) {
    const auto found = readNode(textOf(nodeDocument()));
    ASSERT_EQ(found.size(), 1U);
    const auto& history = *found.begin();
    EXPECT_EQ(history->getVersion().toString(), "1.11.0.8");
    EXPECT_EQ(history->getSystemType(), SystemType_Linux);
    EXPECT_EQ(history->getSystemBits(), SystemBits_32);
    EXPECT_EQ(history->getVersionType(), VersionType_Server);
    EXPECT_EQ(history->getVersionInfo(), "faster");
    EXPECT_EQ(history->getUpdateTime(), 1706659200U);
    EXPECT_EQ(history->getDisplayIndex(), 4);
}

class NodeReleaseNotesMember : public testing::TestWithParam<std::string> {};

TEST_P(NodeReleaseNotesMember, WhenMissingFailsAloneAndIsDroppedFromAnArray) {
    JsonValue lacking;
    const JsonValue whole = nodeDocument("2.0");
    for (const std::string& key : whole.keys()) {
        if (key != GetParam()) lacking[key.c_str()] = whole[key.c_str()];
    }
    EXPECT_TRUE(readNode(textOf(lacking), -301).empty());
    JsonValue array;
    array.append(lacking);
    array.append(nodeDocument());
    EXPECT_EQ(readNode(textOf(array)).size(), 1U);
}

TEST_P(NodeReleaseNotesMember, OfAWrongKindReadsAsZeroOrEmpty) {
    JsonValue document = nodeDocument();
    JsonValue wrong;
    wrong.append("1");
    document[GetParam().c_str()] = wrong;
    const auto found = readNode(textOf(document));
    ASSERT_EQ(found.size(), 1U);
    const auto history = std::dynamic_pointer_cast<ReleaseHistory>(*found.begin());
    const JsonValue built = history->buildReleaseHistoryInfo();
    const std::string text = built[GetParam().c_str()]->toString();
    EXPECT_TRUE(text.empty() || text == "0") << text;
}

INSTANTIATE_TEST_SUITE_P(Keys, NodeReleaseNotesMember,
                         testing::Values("softversion", "systemType", "systemBits", "versionType", "versionInfo",
                                         "updateTime", "displayIndex"),
                         [](const auto& test) { return test.param; });

TEST(NodeReleaseNotes, ComeBackAsTheyWere) {
    std::string again;
    EXPECT_EQ(ReleaseHistory::buildReleaseHistory(readNode(textOf(nodeDocument())), again).errorCode(), 0);
    JsonValue array;
    array.append(nodeDocument());
    EXPECT_EQ(again, textOf(array));
}

TEST(NodeReleaseNotes, CarrySecondsAsDecimalText) {
    const auto found = readCloud(cloudList({cloudRecord("1.0", "2024-01-31 08:00:00")}));
    std::string text;
    ASSERT_FALSE(ReleaseHistory::buildReleaseHistory(found, text));
    EXPECT_NE(text.find("\"updateTime\": \"1706659200\""), std::string::npos) << text;
    ASSERT_EQ(readNode(text).size(), 1U);
    EXPECT_EQ((*readNode(text).begin())->getUpdateTime(), 1706659200U);
}

TEST(NodeReleaseNotes, TakeTheSecondsAsANumberToo) {
    JsonValue document = nodeDocument();
    document["updateTime"] = 12;
    const auto found = readNode(textOf(document));
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ((*found.begin())->getUpdateTime(), 12U);
}

TEST(NodeReleaseNotes, TakeATimeOfAllSixtyFourBits) {
    JsonValue document = nodeDocument();
    document["updateTime"] = "18446744073709551615";
    const auto found = readNode(textOf(document));
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ((*found.begin())->getUpdateTime(), 18446744073709551615ULL);
}

TEST(NodeReleaseNotes, AreNotFilteredByEditionOrRange) {
    JsonValue document = nodeDocument("2.0-oem5");
    document["versionType"] = 99;
    document["systemBits"] = -1;
    const auto found = readNode(textOf(document));
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ(static_cast<int>((*found.begin())->getVersionType()), 99);
    EXPECT_EQ(static_cast<int>((*found.begin())->getSystemBits()), -1);
}

TEST(NodeReleaseNotes, FailForTextThatIsNoJsonOrNoRecord) {
    for (const char* text : {"", "{", "<html>", "\"\xff\"", "{}", "null", "5"}) {
        EXPECT_TRUE(readNode(text, -301).empty()) << text;
    }
}

TEST(NodeReleaseNotes, SucceedForAnArrayWithoutAGoodElement) {
    EXPECT_TRUE(readNode("[]").empty());
    EXPECT_TRUE(readNode("[{},null,4,[]]").empty());
}

TEST(NodeReleaseNotes, BuildNullForAnEmptySet) {
    std::string text = "left over";
    EXPECT_EQ(ReleaseHistory::buildReleaseHistory({}, text).errorCode(), 0);
    EXPECT_EQ(text, "null");
}

TEST(NodeReleaseNotes, BuildSevenMembersInTheirOrder) {
    const auto found = readNode(textOf(nodeDocument()));
    ASSERT_EQ(found.size(), 1U);
    const auto history = std::dynamic_pointer_cast<ReleaseHistory>(*found.begin());
    ASSERT_TRUE(history);
    EXPECT_EQ(
        textOf(history->buildReleaseHistoryInfo()),
        "{\n\t\"softversion\": \"1.11.0.8\",\n\t\"systemType\": 2,\n\t\"systemBits\": 32,\n\t\"versionType\": 3,\n"
        "\t\"versionInfo\": \"faster\",\n\t\"updateTime\": \"1706659200\",\n\t\"displayIndex\": 4\n}");
}

TEST(NodeReleaseNotes, BuildAnArrayInSetOrder) {
    JsonValue array;
    array.append(nodeDocument("2.0"));
    array.append(nodeDocument("1.0"));
    std::string text;
    ASSERT_FALSE(ReleaseHistory::buildReleaseHistory(readNode(textOf(array)), text));
    EXPECT_LT(text.find("\"1.0\""), text.find("\"2.0\""));
    EXPECT_NE(text.find("\"2.0\""), std::string::npos);
}
