#include "OrvInstaller.h"

#include <csignal>
#include <future>
#include <sys/resource.h>

#include "FileText.h"
#include "LogRecorder.h"
#include "OrvBackup.h"
#include "PackageMaker.h"
#include "TempDir.h"

using namespace Tarnwick::OrvUpdate;
using support::filesBelow;
using support::PackageSpec;
using support::readText;
using support::writeText;
using Names = std::set<std::string>;

namespace {

constexpr int kError = 2;
constexpr int kProgress = 4;
constexpr int kDetail = 6;

/// A backup that notes what it is asked for and gives the result that a test wants.
class NotingBackup : public IBackup {
public:
    ErrorInfo backup(const std::string& name, const std::string& dir) override {
        if (onBackup) onBackup(name);
        std::lock_guard lock(mMutex);
        mSaved.emplace_back(name, dir);
        return name == failing ? ErrorInfo(-10099, "") : ErrorInfo();
    }
    ErrorInfo backup(const std::string&, const FileCallback&) override { return {}; }
    ErrorInfo restore(const std::string&, const FileCallback&) override { return {}; }
    ErrorInfo restore(const std::string&, const std::string&) override { return {}; }
    ErrorInfo clear() override { return {}; }

    std::vector<std::pair<std::string, std::string>> saved() {
        std::lock_guard lock(mMutex);
        return mSaved;
    }

    std::string failing;
    std::function<void(const std::string&)> onBackup;  // runs on the install thread

private:
    std::mutex mMutex;
    std::vector<std::pair<std::string, std::string>> mSaved;
};

/// Waits until the run has ended.
void waitFor(const std::shared_ptr<OrvInstaller>& installer) {
    while (!installer->finish()) std::this_thread::yield();
}

float progressOf(IInstaller& installer) {
    float progress = -1.0F;
    EXPECT_EQ(installer.getProgress(progress).errorCode(), 0);
    return progress;
}

class OrvInstallerTest : public testing::Test {
protected:
    std::string package(const PackageSpec& spec = {}) { return support::makePackage(spec, mRoot + "/package.exe"); }

    std::shared_ptr<OrvInstaller> make(const std::string& path, VersionType role = VersionType_All) {
        return std::make_shared<OrvInstaller>(mBackup, path, role);
    }
    /// Unpacks to the end and gives the files.
    Names unpack(const PackageSpec& spec, VersionType role) {
        mInstaller = make(package(spec), role);
        EXPECT_EQ(mInstaller->start(mInstall, true, {}).errorCode(), 0);
        waitFor(mInstaller);
        return filesBelow(mInstall);
    }
    /// Opens one item by hand. @return what the sink says
    bool open(const std::shared_ptr<OrvInstaller>& installer, const std::string& name) {
        return static_cast<IExtractOutFile&>(*installer).open(name, false);
    }

    support::TempDir mDir;
    const std::string mRoot = mDir.path();
    const std::string mInstall = mRoot + "/install";
    const std::shared_ptr<NotingBackup> mBackup = std::make_shared<NotingBackup>();
    std::shared_ptr<OrvInstaller> mInstaller;
};

PackageSpec packageOf(const std::vector<std::string>& names) {
    PackageSpec spec;
    for (const std::string& name : names) spec.files.emplace_back(name, "content of " + name);
    return spec;
}

PackageSpec tree() {
    return packageOf({"win64.sysbits", "Orv Client\\c.exe", "Orv Client\\lang\\zh.dll", "Orv Server\\s.exe",
                      "Orv VideoWall\\v.exe", "Orv Analytics\\a.exe"});
}
const Names kWholeTree = {"Orv Analytics/a.exe", "Orv Client/c.exe",    "Orv Client/lang/zh.dll",
                          "Orv Server/s.exe",    "Orv VideoWall/v.exe", "win64.sysbits"};
PackageSpec msi() {
    return packageOf({"win64.sysbits", "OrvClient.msi", "OrvServer.msi", "OrvVideoWall.msi", "OrvAnalytics.msi"});
}
const Names kWholeMsi = {"OrvAnalytics.msi", "OrvClient.msi", "OrvServer.msi", "OrvVideoWall.msi", "win64.sysbits"};

struct LayoutCase {
    const char* title;
    std::vector<std::string> names;
    int layout;
};
void PrintTo(const LayoutCase& one, std::ostream* out) { *out << one.title; }
class OrvInstallerLayout : public OrvInstallerTest, public testing::WithParamInterface<LayoutCase> {};

struct RoleCase {
    const char* title;
    bool isMsi;
    int role;
    Names files;
};
void PrintTo(const RoleCase& one, std::ostream* out) { *out << one.title; }
class OrvInstallerRole : public OrvInstallerTest, public testing::WithParamInterface<RoleCase> {};

}  // namespace

TEST_P(OrvInstallerLayout, IsToldByTheNames) {
    EXPECT_EQ(make(package(packageOf(GetParam().names)))->getPackageVersion(), GetParam().layout);
}

INSTANTIATE_TEST_SUITE_P(Packages, OrvInstallerLayout,
                         testing::Values(LayoutCase{"Tree", {"Orv Client\\a.exe", "Orv Server\\b.exe"}, 1},
                                         LayoutCase{"ServerBesideClient", {"Server.msi", "Client.msi"}, 2},
                                         LayoutCase{"VideoWallAlone", {"VideoWall.msi"}, 2},
                                         LayoutCase{"AnalyticsAlone", {"x.txt", "Analytics.msi"}, 2},
                                         LayoutCase{"AnyNameOfThatEnding", {"OrvClient.msi"}, 2},
                                         LayoutCase{"InADirectory", {"pkg\\Server.msi"}, 2},
                                         LayoutCase{"OtherCaseIsNone", {"server.MSI"}, 1},
                                         LayoutCase{"OtherMsiIsNone", {"Tools.msi"}, 1},
                                         LayoutCase{"ShorterThanTheEnding", {"a", "msi", ".msi"}, 1}),
                         [](const auto& one) { return one.param.title; });

TEST_P(OrvInstallerRole, GetsItsItems) {
    EXPECT_EQ(unpack(GetParam().isMsi ? msi() : tree(), static_cast<VersionType>(GetParam().role)), GetParam().files);
    EXPECT_EQ(mInstaller->getError().errorCode(), 0);
    EXPECT_EQ(progressOf(*mInstaller), 1.0F);
}

INSTANTIATE_TEST_SUITE_P(
    Roles, OrvInstallerRole,
    testing::Values(RoleCase{"TreeAll", false, 1, kWholeTree},
                    RoleCase{"TreeClient", false, 2, {"c.exe", "lang/zh.dll"}},
                    RoleCase{"TreeServer", false, 3, {"s.exe"}}, RoleCase{"TreeVideoWall", false, 4, {"v.exe"}},
                    RoleCase{"TreeAnalyticsTakesEverything", false, 5, kWholeTree},
                    RoleCase{"TreeUnknownTakesEverything", false, 0, kWholeTree},
                    RoleCase{"TreeNumberOutOfRangeTakesEverything", false, 77, kWholeTree},
                    RoleCase{"MsiAll", true, 1, kWholeMsi}, RoleCase{"MsiClient", true, 2, {"Client.msi"}},
                    RoleCase{"MsiServer", true, 3, {"Server.msi"}},
                    RoleCase{"MsiVideoWall", true, 4, {"VideoWall.msi"}},
                    RoleCase{"MsiAnalytics", true, 5, {"Analytics.msi"}},
                    RoleCase{"MsiUnknownTakesEverything", true, 0, kWholeMsi}),
    [](const auto& one) { return one.param.title; });

TEST_F(OrvInstallerTest, UnpacksTheContentUnderTheShortenedName) {
    unpack(tree(), VersionType_Client);
    EXPECT_EQ(readText(mInstall + "/lang/zh.dll"), "content of Orv Client\\lang\\zh.dll");
}

TEST_F(OrvInstallerTest, UnpacksAnEmptyItemAsAnEmptyFile) {
    PackageSpec spec;
    spec.files = {{"Orv Client\\empty.txt", ""}, {"Orv Client\\a.txt", "A"}};
    EXPECT_EQ(unpack(spec, VersionType_Client), (Names{"a.txt", "empty.txt"}));
    EXPECT_EQ(readText(mInstall + "/empty.txt"), "");
}

TEST_F(OrvInstallerTest, KeepsAVariableInFrontAsALiteralDirectory) {
    PackageSpec spec = packageOf({"a.txt"});
    spec.extraScript = "SetOutPath \"$PLUGINSDIR\"\nFile \"/oname=x.dll\" \"${__FILE__}\"\n";
    const Names files = unpack(spec, VersionType_All);
    EXPECT_EQ(files.count("$PLUGINSDIR/x.dll"), 1U);
    EXPECT_EQ(files.count("a.txt"), 1U);
}

TEST_F(OrvInstallerTest, AnUnreadablePackageGivesLayoutZeroAndStartFails) {
    writeText(mRoot + "/bad.exe", "no package");
    const auto installer = make(mRoot + "/bad.exe");
    EXPECT_EQ(installer->getPackageVersion(), 0);
    EXPECT_EQ(installer->start(mInstall, true, {}).errorCode(), -1);
    EXPECT_FALSE(installer->finish());
    EXPECT_FALSE(std::filesystem::exists(mInstall));
}

TEST_F(OrvInstallerTest, AnAbsentPackageGivesLayoutZeroAndStartFails) {
    const auto installer = make(mRoot + "/gone.exe");
    EXPECT_EQ(installer->getPackageVersion(), 0);
    EXPECT_EQ(installer->start(mInstall, true, {}).errorCode(), -1);
    EXPECT_EQ(installer->stop().errorCode(), 0);
}

TEST_F(OrvInstallerTest, BeginsWithNothingDone) {
    const auto installer = make(package());
    EXPECT_EQ(progressOf(*installer), 0.0F);
    EXPECT_FALSE(installer->finish());
    EXPECT_EQ(installer->getError().errorCode(), 0);
}

TEST_F(OrvInstallerTest, DoesNotUseTheCallback) {
    bool called = false;
    const auto installer = make(package());
    installer->start(mInstall, false, [&] { called = true; });
    waitFor(installer);
    installer->stop();
    EXPECT_FALSE(called);
}

TEST_F(OrvInstallerTest, CancelIsNotOfferedAndDoesNotStopTheThread) {
    const auto installer = make(package(tree()));
    EXPECT_EQ(installer->cancel().errorCode(), -2);
    installer->start(mInstall, true, {});
    EXPECT_EQ(installer->cancel().errorCode(), -2);
    waitFor(installer);
    EXPECT_EQ(filesBelow(mInstall), kWholeTree);
}

TEST_F(OrvInstallerTest, StopBeforeAStartDoesNothing) { EXPECT_EQ(make(package())->stop().errorCode(), 0); }

TEST_F(OrvInstallerTest, StopEndsTheRunAfterTheItemThatItIsAt) {
    const auto installer = make(package(packageOf({"a", "b", "c"})));
    mBackup->onBackup = [&](const std::string&) { installer->stop(); };
    installer->start(mInstall, true, {});
    waitFor(installer);
    EXPECT_EQ(filesBelow(mInstall).size(), 1U);
    EXPECT_EQ(mBackup->saved().size(), 1U);
    EXPECT_EQ(installer->getError().errorCode(), 0);
    mBackup->onBackup = nullptr;
}

TEST_F(OrvInstallerTest, StopWaitsUntilTheThreadHasEnded) {
    const auto installer = make(package(tree()));
    std::promise<void> started;
    std::atomic<bool> told{false};
    mBackup->onBackup = [&](const std::string&) {
        if (!told.exchange(true)) started.set_value();
    };
    installer->start(mInstall, true, {});
    started.get_future().wait();
    EXPECT_EQ(installer->stop().errorCode(), 0);
    EXPECT_TRUE(installer->finish());
}

TEST_F(OrvInstallerTest, TakesNoFurtherItemOnceStopped) {
    const auto installer = make(package(tree()));
    installer->stop();
    EXPECT_FALSE(open(installer, "Orv Client\\c.exe"));
    EXPECT_FALSE(std::filesystem::exists(mInstall));
}

TEST_F(OrvInstallerTest, RunsAgainAfterAStop) {
    const auto installer = make(package(tree()));
    installer->stop();
    EXPECT_EQ(installer->start(mInstall, true, {}).errorCode(), 0);
    waitFor(installer);
    EXPECT_EQ(filesBelow(mInstall), kWholeTree);
}

TEST_F(OrvInstallerTest, ASecondStartIsANewRun) {
    const auto installer = make(package(tree()));
    mBackup->failing = "Orv Client\\c.exe";
    installer->start(mInstall, true, {});
    waitFor(installer);
    EXPECT_EQ(installer->getError().errorCode(), -10099);
    mBackup->failing.clear();
    EXPECT_EQ(installer->start(mRoot + "/second", true, {}).errorCode(), 0);
    waitFor(installer);
    EXPECT_EQ(installer->getError().errorCode(), 0);
    EXPECT_EQ(progressOf(*installer), 1.0F);
    EXPECT_EQ(filesBelow(mRoot + "/second"), kWholeTree);
}

TEST_F(OrvInstallerTest, AStartDuringARunWaitsForIt) {
    const auto installer = make(package(tree()));
    installer->start(mInstall, true, {});
    EXPECT_EQ(installer->start(mRoot + "/second", true, {}).errorCode(), 0);
    waitFor(installer);
    EXPECT_EQ(filesBelow(mInstall), kWholeTree);
    EXPECT_EQ(filesBelow(mRoot + "/second"), kWholeTree);
}

TEST_F(OrvInstallerTest, AnObjectThatIsLetGoDuringARunEndsOnItsOwnThread) {
    const std::string path = package(tree());
    std::weak_ptr<OrvInstaller> watched;
    {
        const auto installer = make(path);
        watched = installer;
        installer->start(mInstall, true, {});
    }
    while (!watched.expired()) std::this_thread::yield();
    EXPECT_EQ(filesBelow(mInstall), kWholeTree);
}

TEST_F(OrvInstallerTest, AStartOfAnObjectThatNoSharedPointerOwnsThrows) {
    OrvInstaller installer(mBackup, package(), VersionType_All);
    EXPECT_THROW(installer.start(mInstall, true, {}), std::bad_weak_ptr);
}

TEST_F(OrvInstallerTest, WorksWithoutABackup) {
    const auto installer = std::make_shared<OrvInstaller>(nullptr, package(tree()), VersionType_Client);
    installer->start(mInstall, true, {});
    waitFor(installer);
    EXPECT_EQ(filesBelow(mInstall), (Names{"c.exe", "lang/zh.dll"}));
}

// The backup of replaced files.

TEST_F(OrvInstallerTest, BacksUpEachKeptItemUnderItsShortenedName) {
    unpack(tree(), VersionType_Client);
    const std::vector<std::pair<std::string, std::string>> expected = {{"c.exe", mInstall},
                                                                       {"lang\\zh.dll", mInstall}};
    EXPECT_EQ(mBackup->saved(), expected);
}

TEST_F(OrvInstallerTest, SavesReplacedFilesSoThatTheyCanBeRestored) {
    writeText(mInstall + "/c.exe", "old program, longer than what replaces it");
    const auto backup = std::make_shared<OrvBackup>(mRoot + "/backup");
    const auto installer = std::make_shared<OrvInstaller>(backup, package(tree()), VersionType_Client);
    installer->start(mInstall, true, {});
    waitFor(installer);
    EXPECT_EQ(readText(mInstall + "/c.exe"), "content of Orv Client\\c.exe");
    EXPECT_EQ(filesBelow(mRoot + "/backup"), Names{"c.exe"});
    EXPECT_FALSE(backup->restore("c.exe", mInstall));
    EXPECT_EQ(readText(mInstall + "/c.exe"), "old program, longer than what replaces it");
}

TEST_F(OrvInstallerTest, AFailedBackupEndsTheRunAndLeavesTheItemAlone) {
    writeText(mInstall + "/Orv Client/c.exe", "old");
    mBackup->failing = "Orv Client\\c.exe";
    support::LogRecorder log;
    unpack(packageOf({"Orv Client\\a.exe", "Orv Client\\c.exe", "Orv Client\\d.exe"}), VersionType_All);
    EXPECT_EQ(mInstaller->getError().errorCode(), -10099);
    EXPECT_EQ(readText(mInstall + "/Orv Client/c.exe"), "old");
    EXPECT_EQ(filesBelow(mInstall).count("Orv Client/d.exe"), 0U);
    EXPECT_TRUE(mInstaller->finish());
    EXPECT_TRUE(log.has(kError, "backup fail! filename:Orv Client\\c.exe"));
}

TEST_F(OrvInstallerTest, FilesOfARunThatFailedHalfWayStay) {
    mBackup->failing = "Orv Client\\b.exe";
    EXPECT_EQ(unpack(packageOf({"Orv Client\\a.exe", "Orv Client\\b.exe"}), VersionType_All), Names{"Orv Client/a.exe"});
    EXPECT_EQ(progressOf(*mInstaller), 0.5F);
}

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

    struct rlimit before {};
    getrlimit(RLIMIT_FSIZE, &before);
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    const struct rlimit small = {4096, before.rlim_max};
    setrlimit(RLIMIT_FSIZE, &small);
    limited->start(mInstall, true, {});
    waitFor(limited);
    setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, handler);

    EXPECT_EQ(limited->getError().errorCode(), -603);
    EXPECT_TRUE(log.has(kDetail, "write file fail! name:Orv Client\\big.bin"));
    EXPECT_EQ(readText(mInstall + "/small.txt"), "S");  // the items behind it are unpacked all the same
}

// Items that lead elsewhere.

namespace {

class OrvInstallerOutside : public OrvInstallerTest, public testing::WithParamInterface<std::string> {};

}  // namespace

TEST_P(OrvInstallerOutside, FailsTheItemAndWritesNothing) {
    const auto installer = make(package(tree()));
    std::filesystem::create_directories(mInstall);
    const Names before = filesBelow(mRoot);
    IExtractOutFile& sink = *installer;
    // The thread sets the directory; by hand an item is opened afterwards.
    installer->start(mInstall, true, {});
    waitFor(installer);
    EXPECT_FALSE(sink.open(GetParam(), false));
    EXPECT_EQ(installer->getError().errorCode(), -602);
    EXPECT_FALSE(sink.write("evil", 4));
    Names after = filesBelow(mRoot);
    for (const std::string& name : kWholeTree) after.erase("install/" + name);
    EXPECT_EQ(after, before);
}

INSTANTIATE_TEST_SUITE_P(Names, OrvInstallerOutside,
                         testing::Values("..\\evil.exe", "Orv Client\\..\\..\\evil.exe", "../evil.exe", "\\evil.exe",
                                         "/evil.exe", "C:\\evil.exe", "Orv Client\\nul", "com1.txt", ".. \\evil.exe", ""),
                         [](const auto& one) { return "Name" + std::to_string(one.index); });

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
    std::filesystem::create_directory_symlink(mRoot + "/outside", mInstall + "/lang");
    support::LogRecorder log;
    unpack(tree(), VersionType_Client);
    EXPECT_EQ(mInstaller->getError().errorCode(), -602);
    EXPECT_TRUE(filesBelow(mRoot + "/outside").empty());
    EXPECT_TRUE(log.has(kDetail, "create file fail! name:" + mInstall + "/lang\\zh.dll"));
}

TEST_F(OrvInstallerTest, ALinkInThePlaceOfAnItemIsReplaced) {
    writeText(mRoot + "/outside.txt", "kept");
    std::filesystem::create_directories(mInstall);
    std::filesystem::create_symlink(mRoot + "/outside.txt", mInstall + "/c.exe");
    unpack(tree(), VersionType_Client);
    EXPECT_EQ(mInstaller->getError().errorCode(), 0);
    EXPECT_EQ(readText(mRoot + "/outside.txt"), "kept");
    EXPECT_EQ(readText(mInstall + "/c.exe"), "content of Orv Client\\c.exe");
}

TEST_F(OrvInstallerTest, KeepsThePermissionsOfAReplacedFile) {
    writeText(mInstall + "/c.exe", "old");
    std::filesystem::permissions(mInstall + "/c.exe", std::filesystem::perms(0750));
    unpack(tree(), VersionType_Client);
    EXPECT_EQ(std::filesystem::status(mInstall + "/c.exe").permissions(), std::filesystem::perms(0750));
}

TEST_F(OrvInstallerTest, AnEmptyInstallDirectoryIsRefusedItemByItem) {
    const auto installer = make(package(tree()));
    EXPECT_EQ(installer->start("", true, {}).errorCode(), 0);
    waitFor(installer);
    EXPECT_EQ(installer->getError().errorCode(), -602);
}

TEST_F(OrvInstallerTest, RunsBesideThePackageTestOfTheSameFile) {
    const std::string path = package();
    const auto installer = make(path);
    installer->start(mInstall, true, {});
    EXPECT_EQ(OrvInstaller::checkPackage(path, "1.11.0.8", 64).errorCode(), 0);
    waitFor(installer);
    EXPECT_EQ(progressOf(*installer), 1.0F);
}
