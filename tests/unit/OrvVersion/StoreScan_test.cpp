// What a scan of the store finds.
#include "Archive/NSISDecompile.h"
#include "FileKinds.h"
#include "LogRecorder.h"
#include "ServerIdSource.h"
#include "StoreScanFixture.h"

using namespace Tarnwick::OrvUpdate;
using namespace Public::Base;

TEST_F(StoreScan, FindsNothingInAMissingDirectory) {
    VersionSet found;
    EXPECT_EQ(OrvVersion::parseVersionFromCache(nullptr, mStore.path("missing"), found, nullptr).errorCode(), 0);
    EXPECT_TRUE(found.empty());
}

TEST_F(StoreScan, FindsNothingWithoutADirectory) {
    VersionSet found;
    const ErrorInfo error = OrvVersion::parseVersionFromCache(nullptr, "", found, nullptr);
    EXPECT_EQ(error.errorCode(), 0);
    EXPECT_EQ(error.errorMessage(), "");
    EXPECT_TRUE(found.empty());
}

TEST_F(StoreScan, FindsNothingWhereTheStoreIsAFile) {
    VersionSet found;
    const std::string file = mStore.putText("file", "x");
    EXPECT_EQ(OrvVersion::parseVersionFromCache(nullptr, file, found, nullptr).errorCode(), 0);
    EXPECT_TRUE(found.empty());
}

TEST_F(StoreScan, RebuildsAnEntryFromPathAndPackage) {
    const std::string path = mStore.put("Manual/Linux x86 All/1.11.0.8/1.11.0.8.exe");
    const auto entry = only();
    ASSERT_TRUE(entry);
    EXPECT_EQ(entry->getVersion().toString(), "1.11.0.8");
    EXPECT_EQ(entry->getSystemType(), SystemType_Linux);
    EXPECT_EQ(entry->getSystemBits(), SystemBits_32);
    EXPECT_EQ(entry->getVersionType(), VersionType_All);
    EXPECT_EQ(entry->getVersionSource(), VersionSource_Manual);
    EXPECT_EQ(entry->getStoragePosition(), StoragePosition_Local);
    EXPECT_EQ(entry->getPackageFile(), path);
    EXPECT_EQ(entry->getDescribe(), "");
    EXPECT_EQ(entry->getUrl(), "");
    EXPECT_EQ(entry->getServerid(), "");
}

class StoreScanRole : public StoreScan, public testing::WithParamInterface<std::string> {};

TEST_P(StoreScanRole, ComesBackAsAllWhateverRoleTheDirectoryNames) {
    mStore.put("Online/Windows x64 " + GetParam() + "/1.11.0.8/1.11.0.8.exe");
    const auto entry = only();
    ASSERT_TRUE(entry);
    EXPECT_EQ(entry->getVersionType(), VersionType_All);
    EXPECT_EQ(entry->getStoragePosition(), StoragePosition_Local);
}

INSTANTIATE_TEST_SUITE_P(Roles, StoreScanRole, testing::Values("All", "Client", "Server", "VideoWall", "Analytics"),
                         [](const auto& test) { return test.param; });

TEST_F(StoreScan, TakesTheVersionFromThePackageAndNotFromItsPath) {
    const std::string path = mStore.put("Online/Windows x64 All/9.9.9.9/other.exe", "1.11.0.8");
    const auto entry = only();
    ASSERT_TRUE(entry);
    EXPECT_EQ(entry->getVersion().toString(), "1.11.0.8");
    EXPECT_EQ(entry->getPackageFile(), path);
}

TEST_F(StoreScan, EntersVersionDirectoriesOfAnyName) {
    mStore.put("Online/Windows x64 All/no version at all/1.11.0.8.exe");
    EXPECT_TRUE(only());
}

TEST_F(StoreScan, FindsEverySoundPackageOfADirectory) {
    mStore.put("Online/Windows x64 All/1.0/a.exe", "1.0");
    mStore.put("Online/Windows x64 All/1.0/b.exe", "2.0");
    mStore.put("Online/Windows x86 All/1.0/a.exe", "1.0");
    mStore.put("Manual/Windows x64 All/1.0/a.exe", "1.0");
    EXPECT_EQ(mStore.scan().size(), 4U);
}

TEST_F(StoreScan, MakesOneEntryOfTwoRolesOfOneVersion) {
    mStore.put("Online/Windows x64 Client/1.11.0.8/1.11.0.8.exe");
    mStore.put("Online/Windows x64 Server/1.11.0.8/1.11.0.8.exe");
    EXPECT_TRUE(only());
}

TEST_F(StoreScan, LeavesAnEqualEntryInTheSet) {
    const auto earlier = std::make_shared<OrvVersion>(nullptr, "/elsewhere", "");
    earlier->setVersion("1.11.0.8");
    mStore.put(sPlace);
    VersionSet found{earlier};
    EXPECT_FALSE(OrvVersion::parseVersionFromCache(nullptr, mStore.path(), found, nullptr));
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ(*found.begin(), earlier);
}

TEST_F(StoreScan, EntriesAskTheProviderForTheServerId) {
    mStore.put(sPlace);
    const auto source = std::make_shared<support::ServerIdSource>("before");
    const VersionSet found = mStore.scan(source);
    ASSERT_EQ(found.size(), 1U);
    source->id = "now";
    EXPECT_EQ((*found.begin())->getServerid(), "now");
}

TEST_F(StoreScan, WorksOnAStoreWhoseNameEndsInASeparator) {
    mStore.put(sPlace);
    VersionSet found;
    EXPECT_FALSE(OrvVersion::parseVersionFromCache(nullptr, mStore.path() + "/", found, nullptr));
    EXPECT_EQ(found.size(), 1U);
}

TEST_F(StoreScan, FindsInAStoreOfAnyName) {
    mStore.put("läger 库/" + sPlace);
    VersionSet found;
    EXPECT_FALSE(OrvVersion::parseVersionFromCache(nullptr, mStore.path("läger 库"), found, nullptr));
    EXPECT_EQ(found.size(), 1U);
}

TEST_F(StoreScan, GivesAnEntryOfTheEmptyVersionForAPackageWhoseVersionIsNone) {
    PackageSpec spec;
    spec.version = "1.0 beta";
    mStore.put(sPlace, spec);
    const auto entry = only();
    ASSERT_TRUE(entry);
    EXPECT_EQ(entry->getVersion().toString(), "");
}

TEST_F(StoreScan, TwoScansAtOnceDoNotDisturbEachOther) {
    for (const char* version : {"1.0", "2.0", "3.0"}) {
        mStore.put(std::string("Online/Windows x64 All/") + version + "/p.exe", version);
        mStore.put(std::string("Manual/Windows x86 All/") + version + "/p.exe", version);
    }
    std::array<size_t, 2> sizes{};
    std::thread first([&] { sizes[0] = mStore.scan().size(); });
    std::thread second([&] { sizes[1] = mStore.scan().size(); });
    first.join();
    second.join();
    EXPECT_EQ(sizes, (std::array<size_t, 2>{6, 6}));
}

// Places that are not looked at

struct Place {
    std::string name;
    std::string path;
};

class StoreScanPlace : public StoreScan, public testing::WithParamInterface<Place> {};

TEST_P(StoreScanPlace, IsNotLookedAt) {
    const std::string path = mStore.put(GetParam().path);
    EXPECT_TRUE(mStore.scan().empty());
    EXPECT_TRUE(std::filesystem::exists(path));
}

INSTANTIATE_TEST_SUITE_P(Places, StoreScanPlace,
                         testing::Values(Place{"OtherSource", "Temp/Windows x64 All/1.11.0.8/1.11.0.8.exe"},
                                         Place{"UnknownSource", "Unknown/Windows x64 All/1.11.0.8/1.11.0.8.exe"},
                                         Place{"LowerCaseSource", "online/Windows x64 All/1.11.0.8/1.11.0.8.exe"},
                                         Place{"LowerCaseSystem", "Online/windows x64 All/1.11.0.8/1.11.0.8.exe"},
                                         Place{"NoRole", "Online/Windows x64/1.11.0.8/1.11.0.8.exe"},
                                         Place{"TooManyWords", "Online/Windows x64 All Extra/1.11.0.8/1.11.0.8.exe"},
                                         Place{"UpperCaseSuffix", "Online/Windows x64 All/1.11.0.8/1.11.0.8.EXE"},
                                         Place{"NoSuffix", "Online/Windows x64 All/1.11.0.8/package"},
                                         Place{"LongerSuffix", "Online/Windows x64 All/1.11.0.8/1.11.0.8.exe1"},
                                         Place{"OtherSuffix", "Online/Windows x64 All/1.11.0.8/1.11.0.8.exe.part"},
                                         Place{"RootOfTheStore", "1.11.0.8.exe"},
                                         Place{"OneLevelTooHigh", "Online/Windows x64 All/1.11.0.8.exe"},
                                         Place{"OneLevelTooDeep", "Online/Windows x64 All/1/1.11.0.8/1.11.0.8.exe"}),
                         [](const auto& test) { return test.param.name; });

TEST_F(StoreScan, LooksAtNoTextFileBesideAPackage) {
    mStore.put(sPlace);
    mStore.putText("Online/Windows x64 Client/1.11.0.8/readme.txt", "read me");
    EXPECT_TRUE(only());
}

TEST_F(StoreScan, TakesNoDirectoryForAPackage) {
    std::filesystem::create_directories(mStore.path(sPlace));
    EXPECT_TRUE(mStore.scan().empty());
}

TEST_F(StoreScan, TakesNoFileForADirectory) {
    mStore.putText("Online", "x");
    mStore.putText("Manual/Windows x64 All", "x");
    EXPECT_TRUE(mStore.scan().empty());
}

TEST_F(StoreScan, FollowsNoLinkOutOfTheStore) {
    support::PackageStore other;
    other.put(sPlace);
    support::makeDirectoryLink(other.path("Online"), mStore.path("Online"));
    EXPECT_TRUE(mStore.scan().empty());
}

// Files that are no sound packages: skipped, left where they are, without a word

TEST_P(StoreScanDamage, SkipsTheFileSilentlyAndKeepsIt) {
    const std::string path = mStore.put(sPlace);
    const std::string sound = mStore.put("Online/Windows x64 Client/2.0/2.0.exe", "2.0");
    GetParam().apply(path);
    support::LogRecorder log;
    const auto entry = only();
    ASSERT_TRUE(entry);
    EXPECT_EQ(entry->getPackageFile(), sound);
    EXPECT_TRUE(log.entries().empty());
    EXPECT_TRUE(std::filesystem::exists(std::filesystem::symlink_status(path)));
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, StoreScanDamage,
    testing::Values(Damage{"ByteAppended", [](const std::string& path) { support::appendBytes(path, "x"); }},
                    Damage{"ByteCutOff", [](const std::string& path) { support::cutBytes(path, 1); }},
                    Damage{
                        "HalfCutOff",
                        [](const std::string& path) { support::cutBytes(path, std::filesystem::file_size(path) / 2); }},
                    Damage{"Empty", [](const std::string& path) { support::writeText(path, ""); }},
                    Damage{"Text", [](const std::string& path) { support::writeText(path, "no package"); }},
                    Damage{"ProgramWithoutPackage",
                           [](const std::string& path) { support::writeText(path, support::programImage(64, "x")); }}),
    [](const auto& test) { return test.param.name; });

TEST_F(StoreScan, TakesAnUnsignedFileAgainOnceTheAppendedByteIsGone) {
    const std::string path = mStore.put(sPlace);
    support::appendBytes(path, "x");
    EXPECT_FALSE(only());
    support::cutBytes(path, 1);
    EXPECT_TRUE(only());
}

TEST_F(StoreScan, SkipsAPackageWithoutAVersion) {
    PackageSpec spec;
    spec.versionResource = false;
    mStore.put(sPlace, spec);
    EXPECT_TRUE(mStore.scan().empty());
}

// Signatures

TEST_F(SignedStoreScan, TakesASignedPackage) {
    mStore.putSigned(sPlace);
    const auto entry = only();
    ASSERT_TRUE(entry);
    EXPECT_EQ(entry->getVersion().toString(), "1.11.0.8");
}

TEST_F(SignedStoreScan, SkipsASignedPackageThatWasAltered) {
    support::flipMiddleByte(mStore.putSigned(sPlace));
    EXPECT_TRUE(mStore.scan().empty());
}

TEST_F(SignedStoreScan, SkipsABadlySignedPackageWhoseArchiveClaimsEveryByte) {
    const std::string path = mStore.putSigned(sPlace);
    support::claimAllBytes(path);
    NSISDecompile reader;
    uint64_t size = 0;
    ASSERT_TRUE(reader.open(path, ""));
    ASSERT_TRUE(reader.getSize(size));
    ASSERT_EQ(size, std::filesystem::file_size(path));
    EXPECT_TRUE(mStore.scan().empty());
}

TEST_F(SignedStoreScan, SkipsAWholePackageOfAnUntrustedSigner) {
    mStore.putSigned(sPlace, SigningKit::Untrusted);
    EXPECT_TRUE(mStore.scan().empty());
}

TEST_F(SignedStoreScan, SkipsASignedPackageWhoseSignatureWasCutOffHalfway) {
    support::cutBytes(mStore.putSigned(sPlace), 100);
    EXPECT_TRUE(mStore.scan().empty());
}

TEST_F(SignedStoreScan, SkipsASignedPackageWithoutAVersion) {
    PackageSpec spec;
    spec.versionResource = false;
    mStore.putSigned(sPlace, SigningKit::Publisher, spec);
    EXPECT_TRUE(mStore.scan().empty());
}
