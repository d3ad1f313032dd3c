// The paths of the store, and writing a package into it.
#include <climits>

#include "FileSizeLimit.h"
#include "FileText.h"
#include "OrvVersionAccess.h"
#include "SystemErrors.h"
#include "TempDir.h"

using namespace Tarnwick::OrvUpdate;
using namespace Public::Base;

namespace {

std::string pathOf(int systemType, int bits, int versionType) {
    return OrvVersionAccess::path(systemType, bits, versionType, "1.0");
}

}  // namespace

TEST(VersionStore, NamesEverySystem) {
    EXPECT_EQ(pathOf(0, 64, 1), "Unknown x64 All/1.0");
    EXPECT_EQ(pathOf(1, 64, 1), "Windows x64 All/1.0");
    EXPECT_EQ(pathOf(2, 64, 1), "Linux x64 All/1.0");
    EXPECT_EQ(pathOf(3, 64, 1), "Mac x64 All/1.0");
    EXPECT_EQ(pathOf(4, 64, 1), "Android x64 All/1.0");
    EXPECT_EQ(pathOf(5, 64, 1), "IOS x64 All/1.0");
}

TEST(VersionStore, NamesEveryWordSize) {
    EXPECT_EQ(pathOf(1, 0, 1), "Windows Unknown All/1.0");
    EXPECT_EQ(pathOf(1, 32, 1), "Windows x86 All/1.0");
    EXPECT_EQ(pathOf(1, 64, 1), "Windows x64 All/1.0");
}

TEST(VersionStore, NamesEveryRole) {
    EXPECT_EQ(pathOf(1, 64, 0), "Windows x64 Unknown/1.0");
    EXPECT_EQ(pathOf(1, 64, 1), "Windows x64 All/1.0");
    EXPECT_EQ(pathOf(1, 64, 2), "Windows x64 Client/1.0");
    EXPECT_EQ(pathOf(1, 64, 3), "Windows x64 Server/1.0");
    EXPECT_EQ(pathOf(1, 64, 4), "Windows x64 VideoWall/1.0");
    EXPECT_EQ(pathOf(1, 64, 5), "Windows x64 Analytics/1.0");
}

TEST(VersionStore, NamesNumbersOutsideOfTheTablesUnknown) {
    for (const int number : {-1, 6, 16, 1000000, INT_MIN, INT_MAX}) {
        EXPECT_EQ(pathOf(number, number, number), "Unknown Unknown Unknown/1.0") << number;
    }
}

TEST(VersionStore, AppendsTheVersionTextAsGiven) {
    EXPECT_EQ(OrvVersionAccess::path(1, 64, 2, ""), "Windows x64 Client/");
    EXPECT_EQ(OrvVersionAccess::path(1, 64, 2, "any text"), "Windows x64 Client/any text");
}

TEST(VersionStore, BuildsPackagePaths) {
    EXPECT_EQ(OrvVersionAccess::fileName("C:/store", 2, 1, 64, 3, "1.11.0.8"),
              "C:/store/Manual/Windows x64 Server/1.11.0.8/1.11.0.8.exe");
    EXPECT_EQ(OrvVersionAccess::fileName("C:/store", 1, 1, 64, 2, "1.11.0.8"),
              "C:/store/Online/Windows x64 Client/1.11.0.8/1.11.0.8.exe");
    EXPECT_EQ(OrvVersionAccess::fileName("C:/store", 2, 1, 64, 1, "1.11.0.8"),
              "C:/store/Manual/Windows x64 All/1.11.0.8/1.11.0.8.exe");
    EXPECT_EQ(OrvVersionAccess::fileName("C:/store", 1, 1, 32, 4, "1.11.0.8"),
              "C:/store/Online/Windows x86 VideoWall/1.11.0.8/1.11.0.8.exe");
}

TEST(VersionStore, EndsEveryPackageWithExeWhateverTheSystem) {
    EXPECT_EQ(OrvVersionAccess::fileName("/s", 1, 2, 64, 1, "2.0"), "/s/Online/Linux x64 All/2.0/2.0.exe");
}

TEST(VersionStore, PutsOtherSourcesUnderUnknown) {
    EXPECT_EQ(OrvVersionAccess::fileName("/s", 0, 1, 64, 1, "2.0"), "/s/Unknown/Windows x64 All/2.0/2.0.exe");
    EXPECT_EQ(OrvVersionAccess::fileName("/s", 7, 1, 64, 1, "2.0"), "/s/Unknown/Windows x64 All/2.0/2.0.exe");
}

TEST(VersionStore, NormalisesNothingInTheDirectory) {
    EXPECT_EQ(OrvVersionAccess::fileName("/s/", 1, 1, 64, 1, "2.0"), "/s//Online/Windows x64 All/2.0/2.0.exe");
    EXPECT_EQ(OrvVersionAccess::fileName("", 1, 1, 64, 1, "2.0"), "/Online/Windows x64 All/2.0/2.0.exe");
    EXPECT_EQ(OrvVersionAccess::fileName("C:\\s", 1, 1, 64, 1, "2.0"), "C:\\s/Online/Windows x64 All/2.0/2.0.exe");
}

// Reading a directory name

TEST(VersionStore, ReadsBackEveryDirectoryNameThatItBuilds) {
    for (int system = 1; system <= 5; ++system) {
        for (const int bits : {32, 64}) {
            for (int type = 1; type <= 5; ++type) {
                const std::string path = pathOf(system, bits, type);
                const std::string name = path.substr(0, path.find('/'));
                SystemType systemType{};
                SystemBits systemBits{};
                VersionType versionType{};
                EXPECT_TRUE(OrvVersionAccess::parsePath(name, systemType, systemBits, versionType)) << name;
                EXPECT_EQ(systemType, system) << name;
                EXPECT_EQ(systemBits, bits) << name;
                EXPECT_EQ(versionType, type) << name;
            }
        }
    }
}

struct BadName {
    std::string name;
    std::string text;
    std::array<int, 3> read;  // what is written until the failure; 7 stands for untouched
};

class VersionStoreBadName : public testing::TestWithParam<BadName> {};

TEST_P(VersionStoreBadName, FailsAndKeepsWhatWasReadBefore) {
    auto systemType = static_cast<SystemType>(7);
    auto bits = static_cast<SystemBits>(7);
    auto versionType = static_cast<VersionType>(7);
    EXPECT_FALSE(OrvVersionAccess::parsePath(GetParam().text, systemType, bits, versionType));
    EXPECT_EQ((std::array<int, 3>{systemType, bits, versionType}), GetParam().read);
}

INSTANTIATE_TEST_SUITE_P(Names, VersionStoreBadName,
                         testing::Values(BadName{"Empty", "", {7, 7, 7}}, BadName{"NoBlank", "Windows", {7, 7, 7}},
                                         BadName{"LowerCaseSystem", "windows x64 Client", {0, 7, 7}},
                                         BadName{"UnknownSystem", "Unknown x64 Client", {0, 7, 7}},
                                         BadName{"LeadingBlank", " Windows x64 Client", {0, 7, 7}},
                                         BadName{"OnlyABlank", " ", {0, 7, 7}},
                                         BadName{"OneBlank", "Windows x64", {1, 7, 7}},
                                         BadName{"DoubleBlank", "Windows  x64 Client", {1, 0, 7}},
                                         BadName{"UpperCaseBits", "Linux X64 Client", {2, 0, 7}},
                                         BadName{"BitsAsNumber", "Windows 64 Client", {1, 0, 7}},
                                         BadName{"UnknownBits", "Windows Unknown Client", {1, 0, 7}},
                                         BadName{"NoRole", "Windows x86 ", {1, 32, 0}},
                                         BadName{"LowerCaseRole", "Windows x64 client", {1, 64, 0}},
                                         BadName{"UnknownRole", "Windows x64 Unknown", {1, 64, 0}},
                                         BadName{"ThirdBlank", "Windows x64 Client Extra", {1, 64, 0}},
                                         BadName{"TrailingBlank", "Windows x64 Client ", {1, 64, 0}},
                                         BadName{"ZeroByte", std::string("Windows x64 Client\0", 19), {1, 64, 0}}),
                         [](const auto& test) { return test.param.name; });

// Saving

namespace {

class SaveVersion : public testing::Test {
protected:
    SaveVersion() {
        mVersion->setVersion("1.11.0.8");
        mVersion->setVersionSource(VersionSource_Manual);
        mVersion->setVersionType(VersionType_Client);
    }

    support::TempDir mStore;
    std::shared_ptr<OrvVersion> mVersion = std::make_shared<OrvVersion>(nullptr, mStore.path(), "");
    std::string mDirectory = mStore.path() + "/Manual/Windows x64 Client/1.11.0.8";
    std::string mPackage = mDirectory + "/1.11.0.8.exe";
};

}  // namespace

TEST_F(SaveVersion, WritesTheContentAsThePackage) {
    std::filesystem::create_directories(mDirectory);
    const std::string content("MZ\0\x01\xff\r\n", 7);
    EXPECT_EQ(mVersion->saveVersion(content).errorCode(), 0);
    EXPECT_EQ(support::readText(mPackage), content);
}

TEST_F(SaveVersion, ReplacesAPackageThatIsThere) {
    support::writeText(mPackage, "a longer package than the next one");
    EXPECT_EQ(mVersion->saveVersion("short").errorCode(), 0);
    EXPECT_EQ(support::readText(mPackage), "short");
}

TEST_F(SaveVersion, WritesAnEmptyPackage) {
    std::filesystem::create_directories(mDirectory);
    EXPECT_EQ(mVersion->saveVersion("").errorCode(), 0);
    EXPECT_EQ(support::readText(mPackage), "");
}

TEST_F(SaveVersion, IgnoresTheLocalFileName) {
    std::filesystem::create_directories(mDirectory);
    mVersion->setLocalFileName(mStore.path() + "/other.exe");
    EXPECT_EQ(mVersion->saveVersion("content").errorCode(), 0);
    EXPECT_EQ(support::filesBelow(mStore.path()),
              std::set<std::string>{"Manual/Windows x64 Client/1.11.0.8/1.11.0.8.exe"});
}

TEST_F(SaveVersion, MakesNoDirectoryAndReportsTheSystemsError) {
    const ErrorInfo error = mVersion->saveVersion("content");
    EXPECT_EQ(static_cast<int>(error.errorCode()), support::errorOf(support::SystemError::DirectoryNotThere));
    EXPECT_NE(error.errorMessage(), "");
    EXPECT_TRUE(std::filesystem::is_empty(mStore.path()));
}

TEST_F(SaveVersion, FailsWhereADirectoryStandsInThePlaceOfThePackage) {
    std::filesystem::create_directories(mPackage);
    EXPECT_TRUE(mVersion->saveVersion("content"));
    EXPECT_TRUE(std::filesystem::is_directory(mPackage));
}

TEST_F(SaveVersion, OnAFullDiskGivesTheSystemsError) {
    std::filesystem::create_directories(mDirectory);
    ErrorInfo error;
    {
        const support::FileSizeLimit full(4096);
        error = mVersion->saveVersion(std::string(1 << 20, 'x'));
    }
    EXPECT_EQ(static_cast<int>(error.errorCode()), support::errorOf(support::SystemError::FileLimit));
    EXPECT_TRUE(support::filesBelow(mDirectory).empty());  // nothing half-way
}
