// What the launched installer does to an install directory.
#include "Upgrade.h"

#include "FileText.h"
#include "LogRecorder.h"
#include "PackageMaker.h"
#include "Public/Base/JsonValue.h"
#include "Public/Base/Process.h"
#include "RecordingBackup.h"
#include "TempDir.h"

using support::filesBelow;
using support::makePackage;
using support::PackageSpec;
using support::readText;
using support::writeText;

namespace {

class UpgradeTest : public testing::Test {
protected:
    UpgradeTest() {
        PackageSpec spec;
        spec.files = {{"Orv Client\\OrvClient.exe", "client"},
                      {"Orv Server\\OrvServer.exe", "new server"},
                      {"Orv Server\\lib\\core.dll", "new core"},
                      {"Orv Server\\zz.dll", "new zz"}};
        order.package = makePackage(spec, at("package.exe"));
        order.installDir = at("installed");
        order.role = 3;
        order.backupDir = at("backup");
        writeText(at("installed/OrvServer.exe"), "old server");
        writeText(at("installed/own.cfg"), "settings");
    }
    std::string at(const std::string& name) const { return mDir.path() + "/" + name; }
    std::map<std::string, std::string> installed() const {
        std::map<std::string, std::string> files;
        for (const auto& name : filesBelow(at("installed")))
            files[name] = readText(at("installed/" + name)).value_or("");
        return files;
    }

    support::TempDir mDir;
    support::LogRecorder mLog;
    UpgradeOrder order;
};

TEST_F(UpgradeTest, InstallsTheFilesOfItsRole) {
    const UpgradeOutcome outcome = upgrade(order);
    EXPECT_EQ(outcome.result, UpgradeOutcome::Result::Installed);
    EXPECT_FALSE(outcome.error);
    EXPECT_EQ(installed(), (std::map<std::string, std::string>{{"OrvServer.exe", "new server"},
                                                               {"lib/core.dll", "new core"},
                                                               {"own.cfg", "settings"},
                                                               {"zz.dll", "new zz"}}));
    EXPECT_EQ(outcome.filesReplaced, 1U);
    EXPECT_EQ(outcome.filesAdded, 2U);
}

TEST_F(UpgradeTest, SavesEachReplacedFile) {
    upgrade(order);
    EXPECT_EQ(filesBelow(at("backup")), std::set<std::string>{"OrvServer.exe"});
    EXPECT_EQ(readText(at("backup/OrvServer.exe")), "old server");
}

TEST_F(UpgradeTest, RestoresReplacedAndRemovesAddedFilesOnAFailure) {
    std::filesystem::create_directories(at("installed/zz.dll"));  // the last item cannot be written
    const auto before = installed();
    const UpgradeOutcome outcome = upgrade(order);
    EXPECT_EQ(outcome.result, UpgradeOutcome::Result::Restored);
    EXPECT_TRUE(outcome.error);
    EXPECT_EQ(installed(), before);
}

TEST_F(UpgradeTest, PackageThatIsNoneLeavesEverythingAsItWas) {
    writeText(order.package, "no package");
    const auto before = installed();
    const UpgradeOutcome outcome = upgrade(order);
    EXPECT_EQ(outcome.result, UpgradeOutcome::Result::Restored);
    EXPECT_EQ(outcome.error.errorCode(), -1);
    EXPECT_EQ(installed(), before);
}

TEST_F(UpgradeTest, DamagedPackageLeavesEverythingAsItWas) {
    std::string bytes = readText(order.package).value();
    bytes[bytes.size() - 10] = static_cast<char>(bytes[bytes.size() - 10] ^ 1);
    writeText(order.package, bytes);
    const auto before = installed();
    const UpgradeOutcome outcome = upgrade(order);
    EXPECT_EQ(outcome.result, UpgradeOutcome::Result::Restored);
    EXPECT_EQ(outcome.error.errorCode(), -302);
    EXPECT_EQ(installed(), before);
}

TEST_F(UpgradeTest, BackupOfAnEarlierUpgradeIsThrownAway) {
    writeText(at("backup/stale.dll"), "from before");
    upgrade(order);
    EXPECT_EQ(filesBelow(at("backup")), std::set<std::string>{"OrvServer.exe"});
}

TEST_F(UpgradeTest, BackupThatCannotBeClearedLeavesEverythingAsItWas) {
    writeText(at("backup"), "a file");
    const auto before = installed();
    const UpgradeOutcome outcome = upgrade(order);
    EXPECT_EQ(outcome.result, UpgradeOutcome::Result::Restored);
    EXPECT_TRUE(outcome.error);
    EXPECT_EQ(installed(), before);
}

TEST_F(UpgradeTest, FailureLeavesNoNewDirectoryBehindAndTakesNoOldOne) {
    std::filesystem::create_directories(at("installed/empty"));
    std::filesystem::create_directories(at("installed/zz.dll"));
    EXPECT_EQ(upgrade(order).result, UpgradeOutcome::Result::Restored);
    EXPECT_FALSE(std::filesystem::exists(at("installed/lib")));
    EXPECT_TRUE(std::filesystem::exists(at("installed/empty")));
}

TEST_F(UpgradeTest, FailureTakesAnInstallDirectoryThatWasNotThere) {
    std::string bytes = readText(order.package).value();
    bytes[bytes.size() - 10] = static_cast<char>(bytes[bytes.size() - 10] ^ 1);
    writeText(order.package, bytes);
    order.installDir = at("fresh/installed");
    EXPECT_EQ(upgrade(order).result, UpgradeOutcome::Result::Restored);
    EXPECT_FALSE(std::filesystem::exists(order.installDir));
}

TEST_F(UpgradeTest, ItemThatComesTwiceDoesNotSpoilWhatWasSaved) {
    RecordingBackup backup(at("backup"), at("installed"));
    for (const char* content : {"new", "newer"}) {
        ASSERT_FALSE(
            backup.backup(content == std::string("new") ? "OrvServer.exe" : ".\\OrvServer.exe", at("installed")));
        ASSERT_FALSE(backup.backup("added.dll", at("installed")));
        writeText(at("installed/OrvServer.exe"), content);
        writeText(at("installed/added.dll"), content);
    }
    EXPECT_EQ(backup.saved(), 1U);
    EXPECT_EQ(backup.added(), 1U);
    EXPECT_FALSE(backup.undo());
    EXPECT_EQ(installed(),
              (std::map<std::string, std::string>{{"OrvServer.exe", "old server"}, {"own.cfg", "settings"}}));
}

TEST_F(UpgradeTest, EveryRoleOfATreePackageGetsItsOwnFiles) {
    order.role = 2;
    upgrade(order);
    EXPECT_EQ(readText(at("installed/OrvClient.exe")), "client");
    EXPECT_EQ(readText(at("installed/OrvServer.exe")), "old server");
}

struct ReportCase {
    const char* name;
    UpgradeOutcome outcome;
    const char* result;
    int error;
    const char* reason;
};

class Report : public testing::TestWithParam<ReportCase> {};

TEST_P(Report, TellsTheOutcome) {
    const support::TempDir dir;
    const std::string path = dir.path() + "/report.json";
    ASSERT_TRUE(writeReport(path, GetParam().outcome));
    Public::Base::JsonValue report;
    ASSERT_FALSE(report.read(Public::Base::SharedBuffer(readText(path).value_or(""))));
    EXPECT_EQ(report["result"]->toString(), GetParam().result);
    EXPECT_EQ(report["error"]->toInt(), GetParam().error);
    EXPECT_EQ(report["reason"]->toString(), GetParam().reason);
    EXPECT_EQ(report["replaced"]->toInt(), 3);
    EXPECT_EQ(report["added"]->toInt(), 4);
}

using Result = UpgradeOutcome::Result;
INSTANTIATE_TEST_SUITE_P(
    Upgrade, Report,
    testing::Values(
        ReportCase{"Installed", {Result::Installed, {}, 3, 4}, "installed", 0, ""},
        ReportCase{
            "Restored", {Result::Restored, {-602, ""}, 3, 4}, "restored", -602, "an output file cannot be opened"},
        ReportCase{
            "ShortWrite", {Result::Restored, {-603, ""}, 3, 4}, "restored", -603, "an output file cannot be written"},
        ReportCase{"Damaged",
                   {Result::Damaged, {-10028, "No space left on device"}, 3, 4},
                   "damaged",
                   -10028,
                   "No space left on device"}),
    [](const auto& each) { return each.param.name; });

TEST(Upgrade, ReportThatCannotBeWrittenIsTold) { EXPECT_FALSE(writeReport("/dev/null/report.json", {})); }

}  // namespace
