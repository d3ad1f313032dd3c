// Where the update cloud is asked, and under which name.
#include "CloudRequestFixture.h"
#include "FileText.h"
#include "Public/Base/Host.h"

using namespace Tarnwick::OrvUpdate;
using Access = VersionRequestAccess;

namespace {

class CloudDomain : public CloudRequest {};
class CloudUrl : public CloudRequest {};

constexpr char kDefaultHost[] = "update.orv.example";

}  // namespace

// --- The host

TEST_F(CloudDomain, IsTheDefaultWithoutAFile) {
    mCloud.removeDomainFile();
    EXPECT_EQ(Access::upgradeDomain(*mRequest), kDefaultHost);
    EXPECT_EQ(versionUrl().rfind("http://update.orv.example/version?platform=", 0), 0U);
}

TEST_F(CloudDomain, IsWhatTheFileNames) {
    mCloud.domainFile(R"({"domain":"cloud.site.local:8081"})");
    EXPECT_EQ(Access::upgradeDomain(*mRequest), "cloud.site.local:8081");
    EXPECT_EQ(versionUrl().rfind("http://cloud.site.local:8081/version?platform=", 0), 0U);
    EXPECT_EQ(historyUrl().rfind("http://cloud.site.local:8081/api/v1/orvNewVersions?oemid=", 0), 0U);
}

TEST_F(CloudDomain, IsReadAtEachRequest) {
    mCloud.domainFile(R"({"domain":"first"})");
    EXPECT_EQ(Access::upgradeDomain(*mRequest), "first");
    mCloud.domainFile(R"({"domain":"second"})");
    EXPECT_EQ(Access::upgradeDomain(*mRequest), "second");
}

TEST_F(CloudDomain, IsUsedAsItStands) {
    mCloud.domainFile(R"({"domain":" a/b ?c"})");
    EXPECT_EQ(Access::upgradeDomain(*mRequest), " a/b ?c");
}

TEST_F(CloudDomain, MayBeEmpty) {
    mCloud.domainFile(R"({"domain":""})");
    EXPECT_EQ(Access::upgradeDomain(*mRequest), "");
    EXPECT_EQ(versionUrl().rfind("http:///version?platform=", 0), 0U);
}

TEST_F(CloudDomain, StandsBesideOtherMembers) {
    mCloud.domainFile(R"({"other":1,"domain":"host","more":{}})");
    EXPECT_EQ(Access::upgradeDomain(*mRequest), "host");
}

TEST_F(CloudDomain, ThatIsANumberIsItsText) {
    mCloud.domainFile(R"({"domain":5})");
    EXPECT_EQ(Access::upgradeDomain(*mRequest), "5");
}

namespace {

struct BadDomainFile {
    const char* name;
    const char* text;
};
void PrintTo(const BadDomainFile& one, std::ostream* out) { *out << one.name; }
class CloudDomainFile : public CloudRequest, public testing::WithParamInterface<BadDomainFile> {};

}  // namespace

TEST_P(CloudDomainFile, ThatNamesNoHostGivesTheDefault) {
    mCloud.domainFile(GetParam().text);
    EXPECT_EQ(Access::upgradeDomain(*mRequest), kDefaultHost);
}

INSTANTIATE_TEST_SUITE_P(Table, CloudDomainFile,
                         testing::Values(BadDomainFile{"Empty", ""}, BadDomainFile{"NoJson", "domain=host"},
                                         BadDomainFile{"CutJson", R"({"domain":"ho)"},
                                         BadDomainFile{"NoMember", R"({"host":"a"})"},
                                         BadDomainFile{"OtherCase", R"({"Domain":"a"})"},
                                         BadDomainFile{"EmptyObject", "{}"}, BadDomainFile{"Array", R"(["domain"])"},
                                         BadDomainFile{"Text", R"("domain")"}, BadDomainFile{"Number", "5"},
                                         BadDomainFile{"Null", "null"}),
                         [](const auto& one) { return one.param.name; });

// --- The addresses

TEST_F(CloudUrl, OfVersionsHasEveryKeyInItsPlace) {
    mCloud.domainFile(R"({"domain":"host"})");
    startAt(*mRequest, "1.11.0.8-oem7");
    EXPECT_EQ(versionUrl(),
              "http://host/version?platform=0&softversion=1.11.0.8-oem7&apptype=5&AIType=0&actived=1&oemid=7");
}

TEST_F(CloudUrl, OfNotesHasEveryKeyInItsPlace) {
    mCloud.domainFile(R"({"domain":"host"})");
    startAt(*mRequest, "1.11.0.8-oem7");
    EXPECT_EQ(historyUrl(), "http://host/api/v1/orvNewVersions?oemid=7&actived=1&platform=0&lastVersionNums=5");
}

TEST_F(CloudUrl, PlatformTellsTheWordSizeOfThisProgram) {
    const bool wide = Public::Base::Host::getSoftwareSystemBits() == 64;
    EXPECT_NE(versionUrl().find(wide ? "platform=0&" : "platform=1&"), std::string::npos);
    EXPECT_NE(historyUrl().find(wide ? "platform=0&" : "platform=1&"), std::string::npos);
}

TEST_F(CloudUrl, StandsAloneInItsListAndBearsThePlatform) {
    for (const auto& urls : {Access::versionUrls(*mRequest), Access::historyUrls(*mRequest)}) {
        ASSERT_EQ(urls.size(), 1U);
        EXPECT_EQ(urls.front()->systemType, Public::Base::SystemType_Windows);
        EXPECT_EQ(urls.front()->systemBits, Public::Base::Host::getSoftwareSystemBits());
    }
}

TEST_F(CloudUrl, RequestVersionChangesVersionAndEdition) {
    startAt(*mRequest, "1.0-oem7");
    mRequest->setRequestVersion(Version("2.5-oem9-b12-rabc", 0));
    EXPECT_NE(versionUrl().find("&softversion=2.5-oem9-b12-rabc&"), std::string::npos);
    EXPECT_TRUE(versionUrl().ends_with("&oemid=9"));
    EXPECT_NE(historyUrl().find("?oemid=9&"), std::string::npos);
}

TEST_F(CloudUrl, EmptyRequestVersionGivesWayToTheRunningOne) {
    startAt(*mRequest, "1.0-oem7");
    mRequest->setRequestVersion(Version());
    EXPECT_NE(versionUrl().find("&softversion=1.0-oem7&"), std::string::npos);
    EXPECT_TRUE(versionUrl().ends_with("&oemid=0"));
}

TEST_F(CloudUrl, BeforeAStartHasNoVersionToSend) {
    EXPECT_NE(versionUrl().find("&softversion=&apptype"), std::string::npos);
}

// --- The agent's name

namespace {

struct AgentCase {
    int role;
    const char* agent;
};
void PrintTo(const AgentCase& one, std::ostream* out) { *out << one.role; }
class CloudAgent : public CloudRequest, public testing::WithParamInterface<AgentCase> {};

}  // namespace

TEST_P(CloudAgent, TellsTheRoleOfTheProgram) {
    mRequest = makeRequest(std::shared_ptr<TWMQClient>(), static_cast<VersionType>(GetParam().role));
    askVersions();
    askNotes(true);
    ASSERT_EQ(mCloud.requests().size(), 2U);
    EXPECT_EQ(mCloud.requests()[0].header("User-Agent"), GetParam().agent);
    EXPECT_EQ(mCloud.requests()[1].header("User-Agent"), GetParam().agent);
}

INSTANTIATE_TEST_SUITE_P(Table, CloudAgent,
                         testing::Values(AgentCase{0, "Orv"}, AgentCase{1, "Orv"}, AgentCase{2, "OrvClient"},
                                         AgentCase{3, "OrvServer"}, AgentCase{4, "VideoWall"},
                                         AgentCase{5, "Analytics"}, AgentCase{6, "Orv"}),
                         [](const auto& one) { return "Role" + std::to_string(one.param.role); });
