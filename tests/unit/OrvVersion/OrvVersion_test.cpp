#include "OrvVersion.h"

#include "ForeignVersion.h"
#include "OrvVersionAccess.h"
#include "ServerIdSource.h"

using namespace Tarnwick::OrvUpdate;
using namespace Public::Base;

namespace {

struct Fields {
    std::string version = "1.11.0.8";
    int bits = 64;
    int systemType = 1;
    int versionType = 1;
    int source = 1;
};

std::shared_ptr<OrvVersion> makeVersion(const Fields& fields) {
    auto version = std::make_shared<OrvVersion>(nullptr, "/store", "S1");
    version->setVersion(fields.version);
    version->setSystemBits(static_cast<SystemBits>(fields.bits));
    version->setSystemType(static_cast<SystemType>(fields.systemType));
    version->setVersionType(static_cast<VersionType>(fields.versionType));
    version->setVersionSource(static_cast<VersionSource>(fields.source));
    return version;
}

std::shared_ptr<OrvVersion> cloudVersion(const std::string& url) {
    auto version = std::make_shared<OrvVersion>(nullptr, "/store", "S1");
    JsonValue document;
    document["softversion"] = "1.11.0.8";
    document["description"] = "";
    document["url"] = url;
    version->parseVersionFromHttp(document);
    return version;
}

}  // namespace

TEST(OrvVersion, BeginsAsAnOnlinePackageOf64BitWindowsForEveryRole) {
    const auto version = std::make_shared<OrvVersion>(nullptr, "/store", "S1");
    EXPECT_EQ(version->getSystemType(), SystemType_Windows);
    EXPECT_EQ(version->getSystemBits(), SystemBits_64);
    EXPECT_EQ(version->getVersionType(), VersionType_All);
    EXPECT_EQ(version->getVersionSource(), VersionSource_Online);
    EXPECT_EQ(version->getProjectType(), ProjectType_Unknown);
    EXPECT_EQ(version->getStoragePosition(), StoragePosition_None);
    EXPECT_EQ(version->getVersion().toString(), "");
    EXPECT_EQ(version->getDescribe(), "");
    EXPECT_EQ(version->getUrl(), "");
    EXPECT_EQ(version->getServerid(), "S1");
}

TEST(OrvVersion, WithoutStoreHasNeitherDirectoryNorServerId) {
    const auto version = std::make_shared<OrvVersion>(nullptr);
    version->setVersion("2.0");
    EXPECT_EQ(version->getServerid(), "");
    EXPECT_EQ(version->getPackageFile(), "/Online/Windows x64 All/2.0/2.0.exe");
}

TEST(OrvVersion, AsksTheProviderForTheServerIdAtEveryRead) {
    auto source = std::make_shared<support::ServerIdSource>("first");
    const auto version = std::make_shared<OrvVersion>(nullptr, "/store", source);
    EXPECT_EQ(version->getServerid(), "first");
    source->id = "second";
    EXPECT_EQ(version->getServerid(), "second");
}

TEST(OrvVersion, HasNoServerIdWithANullProvider) {
    const auto version = std::make_shared<OrvVersion>(nullptr, "/store", std::shared_ptr<IGetServerId>());
    EXPECT_EQ(version->getServerid(), "");
}

TEST(OrvVersion, ProviderWinsOverTheServerIdOfADocument) {
    const auto version =
        std::make_shared<OrvVersion>(nullptr, "/store", std::make_shared<support::ServerIdSource>("provided"));
    ASSERT_FALSE(version->parseVersion(
        std::string(R"({"softversion":"1.0","serverid":"written","description":"","systemType":1,"systemBits":64,)"
                    R"("versionType":1,"versionSource":1})")));
    EXPECT_EQ(version->getServerid(), "provided");
}

TEST(OrvVersion, StoresEachFieldAndReportsSuccess) {
    const auto version = std::make_shared<OrvVersion>(nullptr);
    EXPECT_EQ(version->setSystemType(SystemType_Linux).errorCode(), 0);
    EXPECT_EQ(version->setSystemBits(SystemBits_32).errorCode(), 0);
    EXPECT_EQ(version->setVersionType(VersionType_VideoWall).errorCode(), 0);
    EXPECT_EQ(version->setVersionSource(VersionSource_Manual).errorCode(), 0);
    EXPECT_EQ(version->setStoragePosition(StoragePosition_Node).errorCode(), 0);
    EXPECT_EQ(version->setDescribe("text").errorCode(), 0);
    EXPECT_EQ(version->setVersion("1.11.0.8").errorCode(), 0);
    EXPECT_EQ(version->getSystemType(), SystemType_Linux);
    EXPECT_EQ(version->getSystemBits(), SystemBits_32);
    EXPECT_EQ(version->getVersionType(), VersionType_VideoWall);
    EXPECT_EQ(version->getVersionSource(), VersionSource_Manual);
    EXPECT_EQ(version->getStoragePosition(), StoragePosition_Node);
    EXPECT_EQ(version->getDescribe(), "text");
    EXPECT_EQ(version->getVersion().toString(), "1.11.0.8");
}

TEST(OrvVersion, StoresNumbersOutsideOfTheEnumerationsAsTheyAre) {
    const auto version = makeVersion({.bits = -7, .systemType = 99, .versionType = -1, .source = 12});
    EXPECT_EQ(static_cast<int>(version->getSystemBits()), -7);
    EXPECT_EQ(static_cast<int>(version->getSystemType()), 99);
    EXPECT_EQ(static_cast<int>(version->getVersionType()), -1);
    EXPECT_EQ(static_cast<int>(version->getVersionSource()), 12);
}

TEST(OrvVersion, AcceptsAProjectTypeAndKeepsNone) {
    const auto version = std::make_shared<OrvVersion>(nullptr);
    EXPECT_EQ(version->setProjectType(static_cast<ProjectType>(5)).errorCode(), 0);
    EXPECT_EQ(version->getProjectType(), ProjectType_Unknown);
}

TEST(OrvVersion, AcceptsAFileSizeAndKeepsNone) {
    const auto version = std::make_shared<OrvVersion>(nullptr);
    EXPECT_EQ(version->setFileSize(1000).errorCode(), 0);
    EXPECT_EQ(version->getFileSize(), 0U);
}

TEST(OrvVersion, AcceptsAChangeLogAndKeepsNone) {
    const auto version = std::make_shared<OrvVersion>(nullptr);
    EXPECT_EQ(version->setChangeLog("fixed").errorCode(), 0);
    EXPECT_EQ(version->getChangeLog(), "");
}

TEST(OrvVersion, TakesATextThatIsNoVersionAsTheEmptyVersion) {
    const auto version = makeVersion({});
    EXPECT_EQ(version->setVersion("no version").errorCode(), 0);
    EXPECT_EQ(version->getVersion().toString(), "");
    EXPECT_TRUE(version->getVersion() == Version());
}

struct HostileText {
    std::string name;
    std::string text;
};

class OrvVersionHostile : public testing::TestWithParam<HostileText> {};

TEST_P(OrvVersionHostile, KeepsThePackageInsideTheStore) {
    const auto version = makeVersion({});
    version->setVersion(GetParam().text);
    EXPECT_EQ(version->getPackageFile(), "/store/Online/Windows x64 All//.exe");
}

INSTANTIATE_TEST_SUITE_P(Texts, OrvVersionHostile,
                         testing::Values(HostileText{"Empty", ""}, HostileText{"Parent", ".."},
                                         HostileText{"ParentPath", "../../../etc/cron.d/x"},
                                         HostileText{"NumbersThenPath", "1.2.3.4/../../x"},
                                         HostileText{"Backslashes", "1.2\\..\\x"}, HostileText{"Drive", "C:\\x"},
                                         HostileText{"RevisionWithPath", "1.2-r../x"},
                                         HostileText{"ZeroByte", std::string("1.2\0/x", 6)},
                                         HostileText{"FiveNumbers", "1.2.3.4.5"}),
                         [](const auto& test) { return test.param.name; });

// Order

struct OrderCase {
    std::string name;
    Fields first;
    Fields second;
};

class OrvVersionOrder : public testing::TestWithParam<OrderCase> {};

TEST_P(OrvVersionOrder, FirstComesBeforeSecondOnly) {
    const std::shared_ptr<IVersion> first = makeVersion(GetParam().first);
    const std::shared_ptr<IVersion> second = makeVersion(GetParam().second);
    EXPECT_TRUE(*first < second);
    EXPECT_FALSE(*second < first);
}

INSTANTIATE_TEST_SUITE_P(
    Fields, OrvVersionOrder,
    testing::Values(
        OrderCase{"VersionAboveAll",
                  {.version = "1.9", .bits = 64, .systemType = 5, .versionType = 5, .source = 2},
                  {.version = "1.10", .bits = 32, .systemType = 1, .versionType = 1, .source = 1}},
        OrderCase{"EmptyVersionFirst", {.version = ""}, {.version = "0.0.0.1"}},
        OrderCase{"BitsBeforeSystem", {.bits = 32, .systemType = 5}, {.bits = 64, .systemType = 1}},
        OrderCase{"SystemBeforeType", {.systemType = 1, .versionType = 5}, {.systemType = 2, .versionType = 1}},
        OrderCase{"TypeBeforeSource", {.versionType = 2, .source = 2}, {.versionType = 3, .source = 1}},
        OrderCase{"ClientBeforeServer", {.versionType = 2}, {.versionType = 3}},
        OrderCase{"AllBeforeClient", {.versionType = 1}, {.versionType = 2}},
        OrderCase{"OnlineBeforeManual", {.source = 1}, {.source = 2}},
        OrderCase{"BitsAreSigned", {.bits = -1}, {.bits = 32}}, OrderCase{"TypeIsSigned", {.versionType = -1}, {}},
        OrderCase{"SystemIsSigned", {.systemType = -1}, {}}, OrderCase{"SourceIsSigned", {.source = -1}, {}}),
    [](const auto& test) { return test.param.name; });

TEST(OrvVersion, NeverComesBeforeItself) {
    const std::shared_ptr<IVersion> version = makeVersion({});
    EXPECT_FALSE(*version < version);
}

TEST(OrvVersion, NeverComesBeforeNull) {
    const auto version = makeVersion({});
    EXPECT_FALSE(*version < nullptr);
}

TEST(OrvVersion, NullComesFirstInASetAndOnce) {
    const VersionSet versions{makeVersion({}), nullptr, nullptr};
    ASSERT_EQ(versions.size(), 2U);
    EXPECT_EQ(*versions.begin(), nullptr);
}

TEST(OrvVersion, SetKeepsTheFirstOfTwoEntriesThatDifferInUrlAlone) {
    const auto first = cloudVersion("http://a/1");
    const VersionSet versions{first, cloudVersion("http://b/2")};
    ASSERT_EQ(versions.size(), 1U);
    EXPECT_EQ((*versions.begin())->getUrl(), "http://a/1");
}

TEST(OrvVersion, SetKeepsTheFirstOfTwoEntriesThatDifferInPositionAndServerAlone) {
    const auto local = makeVersion({});
    local->setStoragePosition(StoragePosition_Local);
    const auto node = std::make_shared<OrvVersion>(nullptr, "/elsewhere", "S2");
    node->setVersion("1.11.0.8");
    node->setStoragePosition(StoragePosition_Node);
    const VersionSet versions{local, node};
    ASSERT_EQ(versions.size(), 1U);
    EXPECT_EQ(*versions.begin(), local);
}

TEST(OrvVersion, SetKeepsTheLocalAndTheCloudEntryApartWhenTheSourceDiffers) {
    const VersionSet versions{makeVersion({.source = 2}), cloudVersion("http://a/1")};
    EXPECT_EQ(versions.size(), 2U);
}

TEST(OrvVersion, SetRunsFromOldestToNewestWhateverTheOrderOfInsertion) {
    const std::vector<Fields> ordered{
        {.version = "1.2"},
        {.version = "1.10", .bits = 32},
        {.version = "1.10", .versionType = 1, .source = 1},
        {.version = "1.10", .versionType = 1, .source = 2},
        {.version = "1.10", .versionType = 2},
        {.version = "1.10", .versionType = 3},
        {.version = "1.10", .systemType = 2},
        {.version = "2.0"},
    };
    std::vector<std::shared_ptr<IVersion>> expected;
    for (const auto& fields : ordered) expected.push_back(makeVersion(fields));
    const VersionSet versions(expected.rbegin(), expected.rend());
    EXPECT_EQ(std::vector<std::shared_ptr<IVersion>>(versions.begin(), versions.end()), expected);
}

TEST(OrvVersion, ComparesWithVersionsOfAnotherClass) {
    const std::shared_ptr<IVersion> foreign = std::make_shared<support::ForeignVersion>("1.11.0.8");
    EXPECT_TRUE(*makeVersion({.version = "1.10"}) < foreign);
    EXPECT_FALSE(*makeVersion({.version = "1.12"}) < foreign);
    EXPECT_FALSE(*makeVersion({}) < foreign);
    EXPECT_TRUE(*makeVersion({.bits = 32}) < foreign);
    EXPECT_FALSE(*makeVersion({.versionType = 2}) < foreign);
}

// Names

TEST(OrvVersion, NamesItsSources) {
    EXPECT_EQ(OrvVersionAccess::sourceName(0), "Unknown");
    EXPECT_EQ(OrvVersionAccess::sourceName(1), "Online");
    EXPECT_EQ(OrvVersionAccess::sourceName(2), "Manual");
    EXPECT_EQ(OrvVersionAccess::sourceName(3), "Unknown");
    EXPECT_EQ(OrvVersionAccess::sourceName(-1), "Unknown");
}

TEST(OrvVersion, ReadsTheTwoSourcesByTheirExactNameOnly) {
    EXPECT_EQ(OrvVersionAccess::sourceNumber("Online"), 1);
    EXPECT_EQ(OrvVersionAccess::sourceNumber("Manual"), 2);
    for (const char* other : {"", "online", "MANUAL", "Online ", " Online", "Onlin", "Unknown", "Online/Manual"}) {
        EXPECT_EQ(OrvVersionAccess::sourceNumber(other), 0) << other;
    }
    EXPECT_EQ(OrvVersionAccess::sourceNumber(std::string("Online\0", 7)), 0);
}

// Package file

TEST(OrvVersion, ComputesThePackageFileAfreshFromItsFields) {
    const auto version = makeVersion({});
    EXPECT_EQ(version->getPackageFile(), "/store/Online/Windows x64 All/1.11.0.8/1.11.0.8.exe");
    version->setVersionType(VersionType_Client);
    version->setVersionSource(VersionSource_Manual);
    version->setVersion("2.0");
    EXPECT_EQ(version->getPackageFile(), "/store/Manual/Windows x64 Client/2.0/2.0.exe");
}

TEST(OrvVersion, ReturnsTheLocalFileNameAsItStands) {
    const auto version = makeVersion({});
    EXPECT_EQ(version->setLocalFileName("D:\\any where/../p.exe").errorCode(), 0);
    EXPECT_EQ(version->getPackageFile(), "D:\\any where/../p.exe");
}

TEST(OrvVersion, ComputesThePackageFileAgainAfterAReset) {
    const auto version = makeVersion({});
    version->setLocalFileName("/elsewhere/p.exe");
    version->resetDownload();
    EXPECT_EQ(version->getPackageFile(), "/store/Online/Windows x64 All/1.11.0.8/1.11.0.8.exe");
}

TEST(OrvVersion, GivesAWholeFileNameToReadersWhileItIsSet) {
    const auto version = makeVersion({});
    const std::string longName(300, 'x');
    const std::string computed = version->getPackageFile();
    std::atomic<bool> done{false};
    std::thread writer([&] {
        for (int round = 0; round < 500; ++round) version->setLocalFileName(round % 2 ? longName : "");
        done = true;
    });
    bool whole = true;
    while (!done) {
        const std::string name = version->getPackageFile();
        whole = whole && (name == longName || name == computed);
    }
    writer.join();
    EXPECT_TRUE(whole);
}
