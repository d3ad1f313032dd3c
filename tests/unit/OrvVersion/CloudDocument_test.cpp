// The document of the update cloud: the versions that it offers.
#include "OrvVersion.h"

using namespace Tarnwick::OrvUpdate;
using namespace Public::Base;

namespace {

std::string offer(const std::string& version, const std::string& url = "http://cloud/p.exe") {
    return R"({"softversion":")" + version + R"(","description":"x","url":")" + url + R"("})";
}

VersionSet readAll(const std::string& text, int code = 0, const std::string& running = "1.0") {
    VersionSet found;
    const ErrorInfo error = OrvVersion::parseVersionFromHttp(nullptr, text, "/store", found, "S1", Version(running, 0));
    EXPECT_EQ(static_cast<int>(error.errorCode()), code);
    EXPECT_EQ(error.errorMessage(), "");
    return found;
}

JsonValue parsed(const std::string& text) {
    JsonValue value;
    if (value.read(SharedBuffer(text))) throw std::runtime_error("the document must be readable");
    return value;
}

}  // namespace

TEST(CloudDocument, ReadsThreeMembersAndAssumesTheRest) {
    const auto version = std::make_shared<OrvVersion>(nullptr, "/store", "S1");
    version->setVersionSource(VersionSource_Manual);
    version->setSystemType(SystemType_Linux);
    version->setSystemBits(SystemBits_32);
    version->setVersionType(VersionType_Client);
    EXPECT_EQ(version->parseVersionFromHttp(parsed(offer("1.11.0.8"))).errorCode(), 0);
    EXPECT_EQ(version->getVersion().toString(), "1.11.0.8");
    EXPECT_EQ(version->getDescribe(), "x");
    EXPECT_EQ(version->getUrl(), "http://cloud/p.exe");
    EXPECT_EQ(version->getVersionSource(), VersionSource_Online);
    EXPECT_EQ(version->getSystemType(), SystemType_Windows);
    EXPECT_EQ(version->getSystemBits(), SystemBits_64);
    EXPECT_EQ(version->getVersionType(), VersionType_All);
    EXPECT_EQ(version->getStoragePosition(), StoragePosition_Cloud);
    EXPECT_EQ(version->getServerid(), "S1");
}

TEST(CloudDocument, IgnoresEveryOtherMember) {
    const auto version = std::make_shared<OrvVersion>(nullptr, "/store", "S1");
    EXPECT_FALSE(version->parseVersionFromHttp(
        parsed(R"({"softversion":"1.0","description":"x","url":"u","systemType":2,"systemBits":32,"versionType":3,)"
               R"("versionSource":2,"serverid":"S9","fileName":"other.exe"})")));
    EXPECT_EQ(version->getSystemType(), SystemType_Windows);
    EXPECT_EQ(version->getSystemBits(), SystemBits_64);
    EXPECT_EQ(version->getVersionType(), VersionType_All);
    EXPECT_EQ(version->getVersionSource(), VersionSource_Online);
    EXPECT_EQ(version->getServerid(), "S1");
    EXPECT_EQ(version->getPackageFile(), "/store/Online/Windows x64 All/1.0/1.0.exe");
}

struct MissingMember {
    std::string name;
    std::string text;
};

class CloudDocumentMissing : public testing::TestWithParam<MissingMember> {};

TEST_P(CloudDocumentMissing, FailsAlone) { EXPECT_TRUE(readAll(GetParam().text, -301).empty()); }

TEST_P(CloudDocumentMissing, WritesNothing) {
    const auto version = std::make_shared<OrvVersion>(nullptr, "/store", "S1");
    version->setVersion("7.0");
    version->setDescribe("before");
    EXPECT_EQ(version->parseVersionFromHttp(parsed(GetParam().text)).errorCode(), -301);
    EXPECT_EQ(version->getVersion().toString(), "7.0");
    EXPECT_EQ(version->getDescribe(), "before");
    EXPECT_EQ(version->getUrl(), "");
    EXPECT_EQ(version->getStoragePosition(), StoragePosition_None);
}

TEST_P(CloudDocumentMissing, IsSkippedInAnArrayAndTheOthersAreTaken) {
    EXPECT_EQ(readAll("[" + offer("1.0") + "," + GetParam().text + "," + offer("2.0") + "]").size(), 2U);
}

INSTANTIATE_TEST_SUITE_P(Members, CloudDocumentMissing,
                         testing::Values(MissingMember{"Url", R"({"softversion":"3.0","description":"x"})"},
                                         MissingMember{"Description", R"({"softversion":"3.0","url":"u"})"},
                                         MissingMember{"Version", R"({"description":"x","url":"u"})"},
                                         MissingMember{"All", "{}"}, MissingMember{"Null", "null"},
                                         MissingMember{"Number", "5"}, MissingMember{"Text", "\"softversion\""},
                                         MissingMember{"OtherCase",
                                                       R"({"SoftVersion":"3.0","description":"x","url":"u"})"}),
                         [](const auto& test) { return test.param.name; });

TEST(CloudDocument, PutsASingleOfferIntoTheSet) {
    const VersionSet found = readAll(offer("2.0"));
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ((*found.begin())->getUrl(), "http://cloud/p.exe");
    EXPECT_EQ((*found.begin())->getServerid(), "S1");
}

TEST(CloudDocument, DropsASingleOfferWithAnEmptyUrlAndSucceeds) { EXPECT_TRUE(readAll(offer("1.0.0.1", "")).empty()); }

TEST(CloudDocument, TakesAnOfferWithAnEmptyUrlInAnArray) {
    const VersionSet found = readAll("[" + offer("1.0.0.1", "") + "]");
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ((*found.begin())->getUrl(), "");
}

TEST(CloudDocument, DropsASingleOfferOfAnotherEditionAndSucceeds) {
    EXPECT_TRUE(readAll(offer("2.0-oem5")).empty());
    EXPECT_TRUE(readAll(offer("2.0"), 0, "1.0-oem5").empty());
    EXPECT_EQ(readAll(offer("2.0-oem5"), 0, "1.0-oem5").size(), 1U);
}

TEST(CloudDocument, DropsOffersOfAnotherEditionFromAnArray) {
    const VersionSet found = readAll("[" + offer("2.0") + "," + offer("3.0-oem5") + "," + offer("4.0") + "]");
    EXPECT_EQ(found.size(), 2U);
    EXPECT_TRUE(readAll("[" + offer("3.0-oem5") + "]").empty());
}

TEST(CloudDocument, SucceedsForAnArrayInWhichEveryElementFails) {
    EXPECT_TRUE(readAll("[{},1,null,\"x\",[]]").empty());
    EXPECT_TRUE(readAll("[]").empty());
}

TEST(CloudDocument, FailsForTextThatIsNoJson) {
    for (const char* text : {"", "<html>", "{\"softversion\":", "\xff"})
        EXPECT_TRUE(readAll(text, -301).empty()) << text;
    EXPECT_TRUE(readAll(std::string(100000, '['), -301).empty());
}

TEST(CloudDocument, KeepsTheFirstOfTwoOffersOfOneVersion) {
    const VersionSet found = readAll("[" + offer("2.0", "http://a") + "," + offer("2.0", "http://b") + "]");
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ((*found.begin())->getUrl(), "http://a");
}

TEST(CloudDocument, LeavesWhatTheSetHeldAlsoOnFailure) {
    VersionSet found = readAll(offer("1.0"));
    EXPECT_TRUE(OrvVersion::parseVersionFromHttp(nullptr, "{}", "/store", found, "S1", Version("1.0", 0)));
    EXPECT_FALSE(OrvVersion::parseVersionFromHttp(nullptr, offer("2.0"), "/store", found, "S1", Version("1.0", 0)));
    EXPECT_EQ(found.size(), 2U);
}

TEST(CloudDocument, ReadsMembersOfAWrongKindAsEmpty) {
    const VersionSet found = readAll(R"([{"softversion":{},"description":[1],"url":{"a":1}}])");
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ((*found.begin())->getVersion().toString(), "");
    EXPECT_EQ((*found.begin())->getDescribe(), "");
    EXPECT_EQ((*found.begin())->getUrl(), "");
}

TEST(CloudDocument, KeepsAVersionWithAPathInsideTheStore) {
    const VersionSet found = readAll(offer("../../etc/x"));
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ((*found.begin())->getPackageFile(), "/store/Online/Windows x64 All//.exe");
}

TEST(CloudDocument, ReadsAnArrayOfTwentyThousandOffers) {
    std::string text = "[";
    for (int number = 0; number < 20000; ++number)
        text += (number > 0 ? "," : "") + offer("1." + std::to_string(number));
    EXPECT_EQ(readAll(text + "]").size(), 20000U);
}
