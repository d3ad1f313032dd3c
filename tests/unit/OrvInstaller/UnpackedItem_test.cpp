// What the installer does with a single item, and where it refuses to write.
#include "FileKinds.h"
#include "FileSizeLimit.h"
#include "OrvInstallerFixture.h"

using namespace Tarnwick::OrvUpdate;
using support::filesBelow;
using support::PackageSpec;
using support::readText;
using support::writeText;

// The sink's steps, one by one.

TEST_F(OrvInstallerTest, ASkippedItemGoesOnAndRefusesItsBytes) {
    const auto installer = make(package(tree()), VersionType_Client);
    EXPECT_TRUE(open(installer, "Orv Server\\s.exe"));
    EXPECT_FALSE(static_cast<IExtractOutFile&>(*installer).write("x", 1));
    EXPECT_TRUE(static_cast<IExtractOutFile&>(*installer).close());
    EXPECT_EQ(installer->getError().errorCode(), 0);
    EXPECT_TRUE(mBackup->saved().empty());
}

TEST_F(OrvInstallerTest, ASkippedItemCountsForTheProgress) {
    const auto installer = make(package(packageOf({"a", "b", "c", "d"})), VersionType_Client);
    EXPECT_TRUE(open(installer, "a"));
    static_cast<IExtractOutFile&>(*installer).close();
    EXPECT_EQ(progressOf(*installer), 0.25F);
}

TEST_F(OrvInstallerTest, ForwardSeparatorsKeepNoItemForASingleRole) {
    // Raw names decide: this is how it has always been.
    const auto installer = make(package(tree()), VersionType_Client);
    EXPECT_TRUE(open(installer, "Orv Client/c.exe"));
    EXPECT_FALSE(static_cast<IExtractOutFile&>(*installer).write("x", 1));
    EXPECT_FALSE(std::filesystem::exists(mInstall));
}

TEST_F(OrvInstallerTest, RefusesBytesBeforeAnyItem) {
    EXPECT_FALSE(static_cast<IExtractOutFile&>(*make(package())).write("x", 1));
}

TEST_F(OrvInstallerTest, RefusesBytesAfterAnItemWasClosed) {
    const auto installer = make(package(tree()));
    installer->start(mInstall, true, {});
    waitFor(installer);
    installer->stop();
    EXPECT_FALSE(static_cast<IExtractOutFile&>(*installer).write("x", 1));
}

TEST_F(OrvInstallerTest, AnErrorOfTheReaderDoesNotReachTheResult) {
    const auto installer = make(package());
    static_cast<IExtractOutFile&>(*installer).setError(IExtractOutFile::ErrorCode_Data);
    EXPECT_EQ(installer->getError().errorCode(), 0);
}

TEST_F(OrvInstallerTest, ADamagedPackageFinishesWithoutAnError) {
    // The reader tells of the damage through setError, which this sink does not keep.
    const std::string path = package(tree());
    std::string bytes = *readText(path);
    for (size_t i = bytes.size() - 24; i < bytes.size() - 4; ++i) bytes[i] = static_cast<char>(~bytes[i]);
    writeText(path, bytes);
    const auto installer = make(path);
    ASSERT_EQ(installer->start(mInstall, true, {}).errorCode(), 0);
    waitFor(installer);
    EXPECT_TRUE(installer->finish());
    EXPECT_EQ(installer->getError().errorCode(), 0);
    EXPECT_LT(filesBelow(mInstall).size(), kWholeTree.size());
}

TEST_F(OrvInstallerTest, LogsEachStepOfAnItem) {
    support::LogRecorder log;
    PackageSpec spec;
    spec.files = {{"Orv Client\\a.txt", "12345"}};
    unpack(spec, VersionType_Client);
    EXPECT_TRUE(log.has(kProgress, "File::Open()! file:" + mInstall + "/a.txt\r\n"));
    EXPECT_TRUE(log.has(kProgress, "File::Write()! file:" + mInstall + "/a.txt size:5\r\n"));
    EXPECT_TRUE(log.has(kProgress, "File::close()! file:" + mInstall + "/a.txt\r\n"));
    for (const auto& entry : log.entries()) EXPECT_EQ(entry.file, "OrvUpdate/Src/OrvInstaller") << entry.text;
}

TEST_F(OrvInstallerTest, ClosingASkippedItemNamesTheOneThatWasWrittenBefore) {
    const auto installer = make(package(tree()), VersionType_Client);
    installer->start(mInstall, true, {});
    waitFor(installer);
    EXPECT_TRUE(open(installer, "Orv Server\\s.exe"));
    support::LogRecorder log;
    EXPECT_TRUE(static_cast<IExtractOutFile&>(*installer).close());
    ASSERT_EQ(log.entries().size(), 1U);
    EXPECT_EQ(log.entries()[0].text, "File::close()! file:" + mInstall + "/lang\\zh.dll\r\n");
}

TEST_F(OrvInstallerTest, AnOutputFileThatCannotBeOpenedEndsTheRun) {
    std::filesystem::create_directories(mInstall + "/b.txt");  // a directory in the item's place
    support::LogRecorder log;
    EXPECT_EQ(unpack(packageOf({"Orv Client\\a.txt", "Orv Client\\b.txt", "Orv Client\\c.txt"}), VersionType_Client),
              Names{"a.txt"});
    EXPECT_EQ(mInstaller->getError().errorCode(), -602);
    EXPECT_TRUE(log.has(kDetail, "create file fail! name:" + mInstall + "/b.txt"));
}

TEST_F(OrvInstallerTest, AShortWriteIsRecorded) {
    const std::string block(1 << 20, 'x');
    PackageSpec spec;
    spec.files = {{"Orv Client\\big.bin", block}, {"Orv Client\\small.txt", "S"}};
    const auto limited = make(support::makePackage(spec, mRoot + "/limited.exe"), VersionType_Client);
    support::LogRecorder log;

    {
        const support::FileSizeLimit full(4096);
        limited->start(mInstall, true, {});
        waitFor(limited);
    }
    EXPECT_EQ(limited->getError().errorCode(), -603);
    EXPECT_TRUE(log.has(kDetail, "write file fail! name:Orv Client\\big.bin"));
    EXPECT_EQ(readText(mInstall + "/small.txt"), "S");  // the items behind it are unpacked all the same
}

// Items that lead elsewhere.

namespace {

struct OutsideCase {
    const char* title;
    std::string name;
};
void PrintTo(const OutsideCase& one, std::ostream* out) { *out << one.title; }
class OrvInstallerOutside : public OrvInstallerTest, public testing::WithParamInterface<OutsideCase> {};

}  // namespace

TEST_P(OrvInstallerOutside, FailsTheItemAndWritesNothing) {
    const auto installer = make(package(tree()));
    std::filesystem::create_directories(mInstall);
    const Names before = filesBelow(mRoot);
    IExtractOutFile& sink = *installer;
    // The thread sets the directory; by hand an item is opened afterwards.
    installer->start(mInstall, true, {});
    waitFor(installer);
    EXPECT_FALSE(sink.open(GetParam().name, false));
    EXPECT_EQ(installer->getError().errorCode(), -602);
    EXPECT_FALSE(sink.write("evil", 4));
    Names after = filesBelow(mRoot);
    for (const std::string& name : kWholeTree) after.erase("install/" + name);
    EXPECT_EQ(after, before);
}

INSTANTIATE_TEST_SUITE_P(Names, OrvInstallerOutside,
                         testing::Values(OutsideCase{"Climbs", "..\\evil.exe"},
                                         OutsideCase{"ClimbsWithForwardSeparator", "../evil.exe"},
                                         OutsideCase{"ClimbsInside", "Orv Client\\..\\..\\evil.exe"},
                                         OutsideCase{"ClimbsWithBlank", ".. \\evil.exe"},
                                         OutsideCase{"LeadingBackslash", "\\evil.exe"},
                                         OutsideCase{"LeadingSlash", "/evil.exe"}, OutsideCase{"Drive", "C:\\evil.exe"},
                                         OutsideCase{"Device", "Orv Client\\nul"},
                                         OutsideCase{"DeviceWithExtension", "com1.txt"}, OutsideCase{"Empty", ""}),
                         [](const auto& one) { return one.param.title; });

TEST_F(OrvInstallerTest, AComponentDirectoryAloneIsNoItem) {
    const auto installer = make(package(tree()), VersionType_Client);
    installer->start(mInstall, true, {});
    waitFor(installer);
    EXPECT_FALSE(open(installer, "Orv Client\\"));
    EXPECT_EQ(installer->getError().errorCode(), -602);
}

TEST_F(OrvInstallerTest, AClimbBehindTheComponentDirectoryIsRefused) {
    const auto installer = make(package(tree()), VersionType_Client);
    installer->start(mInstall, true, {});
    waitFor(installer);
    EXPECT_FALSE(open(installer, "Orv Client\\..\\evil.exe"));
    EXPECT_EQ(installer->getError().errorCode(), -602);
    EXPECT_FALSE(std::filesystem::exists(mRoot + "/evil.exe"));
}

TEST_F(OrvInstallerTest, ALinkedDirectoryThatLeadsOutEndsTheRun) {
    std::filesystem::create_directories(mRoot + "/outside");
    std::filesystem::create_directories(mInstall);
    support::makeDirectoryLink(mRoot + "/outside", mInstall + "/lang");
    support::LogRecorder log;
    unpack(tree(), VersionType_Client);
    EXPECT_EQ(mInstaller->getError().errorCode(), -602);
    EXPECT_TRUE(filesBelow(mRoot + "/outside").empty());
    EXPECT_TRUE(log.has(kDetail, "create file fail! name:" + mInstall + "/lang\\zh.dll"));
}

TEST_F(OrvInstallerTest, AnEmptyInstallDirectoryIsRefusedItemByItem) {
    const auto installer = make(package(tree()));
    EXPECT_EQ(installer->start("", true, {}).errorCode(), 0);
    waitFor(installer);
    EXPECT_EQ(installer->getError().errorCode(), -602);
}
