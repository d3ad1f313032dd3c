#include "OrvInstallerFixture.h"

#include <future>

#include "OrvBackup.h"

using namespace Tarnwick::OrvUpdate;
using support::filesBelow;
using support::PackageSpec;
using support::readText;
using support::writeText;

namespace {

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

INSTANTIATE_TEST_SUITE_P(Roles, OrvInstallerRole,
                         testing::Values(RoleCase{"TreeAll", false, 1, kWholeTree},
                                         RoleCase{"TreeClient", false, 2, {"c.exe", "lang/zh.dll"}},
                                         RoleCase{"TreeServer", false, 3, {"s.exe"}},
                                         RoleCase{"TreeVideoWall", false, 4, {"v.exe"}},
                                         RoleCase{"TreeAnalyticsTakesEverything", false, 5, kWholeTree},
                                         RoleCase{"TreeUnknownTakesEverything", false, 0, kWholeTree},
                                         RoleCase{"TreeNumberOutOfRangeTakesEverything", false, 77, kWholeTree},
                                         RoleCase{"MsiAll", true, 1, kWholeMsi},
                                         RoleCase{"MsiClient", true, 2, {"Client.msi"}},
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

TEST_F(OrvInstallerTest, RefusesAStartFromTheRunsOwnThread) {
    const auto installer = make(package(packageOf({"a"})));
    std::atomic<int> code{0};
    mBackup->onBackup = [&](const std::string&) { code = installer->start(mInstall, true, {}).errorCode(); };
    installer->start(mInstall, true, {});
    waitFor(installer);
    EXPECT_EQ(code.load(), -1);
    EXPECT_EQ(filesBelow(mInstall), Names{"a"});
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
    const std::vector<std::pair<std::string, std::string>> expected = {{"c.exe", mInstall}, {"lang\\zh.dll", mInstall}};
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
    EXPECT_EQ(unpack(packageOf({"Orv Client\\a.exe", "Orv Client\\b.exe"}), VersionType_All),
              Names{"Orv Client/a.exe"});
    EXPECT_EQ(progressOf(*mInstaller), 0.5F);
}

TEST_F(OrvInstallerTest, RunsBesideThePackageTestOfTheSameFile) {
    const std::string path = package();
    const auto installer = make(path);
    installer->start(mInstall, true, {});
    EXPECT_EQ(OrvInstaller::checkPackage(path, "1.11.0.8", 64).errorCode(), 0);
    waitFor(installer);
    EXPECT_EQ(progressOf(*installer), 1.0F);
}
