// What the launched installer does to an install directory.
#include "Upgrade.h"

#include <future>

#include "AnnouncedBackup.h"
#include "FileLinks.h"
#include "FileText.h"
#include "Journal.h"
#include "LogRecorder.h"
#include "PackageMaker.h"
#include "Program.h"
#include "Public/Base/File.h"
#include "Public/Base/JsonValue.h"
#include "Public/Base/Process.h"
#include "TempDir.h"
#include "TreeSnapshot.h"

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

TEST_F(UpgradeTest, PackageThatIsNoneLeavesTheBackupOfAnEarlierUpgrade) {
    writeText(order.package, "no package");
    writeText(at("backup/saved.dll"), "from before");
    upgrade(order);
    EXPECT_EQ(filesBelow(at("backup")), std::set<std::string>{"saved.dll"});
}

TEST_F(UpgradeTest, FailureHalfWayPutsBackAllThatWasDone) {
    PackageSpec spec;
    spec.files = {{"Orv Client\\OrvClient.exe", "client"},
                  {"Orv Server\\OrvServer.exe", "new server"},
                  {"Orv Server\\link.dll", "new link"},
                  {"Orv Server\\lib\\core.dll", "new core"},
                  {"Orv Server\\zz", "a file, so that the next one cannot lie in a directory of that name"},
                  {"Orv Server\\zz\\last.dll", "last"}};
    makePackage(spec, order.package);
    if (support::linksCanBeMade()) {
        support::makeLink("own.cfg", at("installed/link.dll"));
    } else {
        writeText(at("installed/link.dll"), "old");
    }
    const support::Tree before = support::snapshot(order.installDir);
    const UpgradeOutcome outcome = upgrade(order);
    EXPECT_EQ(outcome.result, UpgradeOutcome::Result::Restored);
    EXPECT_EQ(outcome.error.errorCode(), -602);
    EXPECT_EQ(outcome.filesReplaced, 2U);
    EXPECT_GE(outcome.filesAdded, 2U);
    EXPECT_TRUE(support::snapshot(order.installDir) == before)
        << support::difference(before, support::snapshot(order.installDir));
    EXPECT_FALSE(JournalFile(order.backupDir).exists());
    EXPECT_FALSE(outcome.recovered);
}

TEST_F(UpgradeTest, NewFileInThePlaceOfALinkIsAFile) {
    support::makeLink("own.cfg", at("installed/zz.dll"));
    EXPECT_EQ(upgrade(order).result, UpgradeOutcome::Result::Installed);
    EXPECT_FALSE(std::filesystem::is_symlink(at("installed/zz.dll")));
    EXPECT_EQ(readText(at("installed/zz.dll")), "new zz");
    EXPECT_EQ(readText(at("installed/own.cfg")), "settings");
}

TEST_F(UpgradeTest, HostThatDoesNotEndLeavesEverythingAsItWas) {
    order.hostProcess = Public::Base::Process::getProcessId();
    order.hostEndsWithinMs = 1;
    const auto before = installed();
    const UpgradeOutcome outcome = upgrade(order);
    EXPECT_EQ(outcome.result, UpgradeOutcome::Result::Restored);
    EXPECT_EQ(outcome.error.errorMessage(), "the host did not end");
    EXPECT_EQ(installed(), before);
}

TEST_F(UpgradeTest, UnpackingTouchesOnlyWhatWasAnnounced) {
    AnnouncedBackup backup(at("backup"));
    using Kind = JournalEntry::Kind;
    backup.announce({at("installed"),
                     {{Kind::MadeDirectory, "lib", 0, 0, {}},
                      {Kind::AddedFile, "lib/a.dll", 0, 0, {}},
                      {Kind::ReplacedFile, "b.dll", 0644, 0, {}},
                      {Kind::ReplacedLink, "c.dll", 0, 0, "x"}}});
    for (const char* name : {"lib\\a.dll", ".\\lib/a.dll", "b.dll", "b.dll", "c.dll"}) {
        EXPECT_FALSE(backup.backup(name, at("installed"))) << name;
    }
    EXPECT_EQ(backup.added(), 1U);
    EXPECT_EQ(backup.replaced(), 2U);
    EXPECT_EQ(backup.backup("lib", at("installed")).errorCode(), -602);
    EXPECT_EQ(backup.backup("d.dll", at("installed")).errorMessage(), "d.dll was not announced");
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

TEST_F(UpgradeTest, EveryRoleOfATreePackageGetsItsOwnFiles) {
    order.role = 2;
    upgrade(order);
    EXPECT_EQ(readText(at("installed/OrvClient.exe")), "client");
    EXPECT_EQ(readText(at("installed/OrvServer.exe")), "old server");
}

TEST_F(UpgradeTest, WorksBelowNamesOfAnyScriptAndLength) {
    using Public::Base::File;
    std::string deep = at("\xE5\xAE\x89\xE8\xA3\x85 \xC3\xA9");
    for (int level = 0; level < 4; ++level) deep += "/" + std::string(80, static_cast<char>('a' + level));
    const auto read = [](const std::string& path) {
        const auto content = File::load(path);
        return std::string(content.buf(), content.size());
    };
    order.installDir = deep + "/installed";
    order.backupDir = deep + "/backup";
    ASSERT_TRUE(File::makeDirectory(order.installDir));
    ASSERT_TRUE(File::save(order.installDir + "/OrvServer.exe", Public::Base::SharedBuffer("old server")));
    EXPECT_EQ(upgrade(order).result, UpgradeOutcome::Result::Installed);
    EXPECT_EQ(read(order.installDir + "/OrvServer.exe"), "new server");
    EXPECT_EQ(read(order.installDir + "/lib/core.dll"), "new core");
    EXPECT_EQ(read(order.backupDir + "/OrvServer.exe"), "old server");
    // And back, at something in the way.
    ASSERT_TRUE(File::remove(order.installDir + "/zz.dll"));
    ASSERT_TRUE(File::makeDirectory(order.installDir + "/zz.dll/in the way"));
    ASSERT_TRUE(File::save(order.installDir + "/OrvServer.exe", Public::Base::SharedBuffer("old server")));
    EXPECT_EQ(upgrade(order).result, UpgradeOutcome::Result::Restored);
    EXPECT_EQ(read(order.installDir + "/OrvServer.exe"), "old server");
    EXPECT_TRUE(File::removeDirectory(at("\xE5\xAE\x89\xE8\xA3\x85 \xC3\xA9")));
}

/// A program that lies in the directory and is run from there, in the place of one of the package's files.
class UpgradeOfRunningProgram : public UpgradeTest {
protected:
    UpgradeOfRunningProgram() {
        PackageSpec spec;
        spec.files = {{"Orv Client\\OrvClient.exe", "client"},
                      {"Orv Server\\OrvServer.exe", "new server"},
                      {"Orv Server\\" + mName, "new program"}};
        makePackage(spec, order.package);
    }

    const std::string mProgram = support::copyProgram(ORV_INSTALLER, at("installed"));
    const std::string mName = mProgram.substr(mProgram.rfind('/') + 1);
    // Waits for this process to end.
    support::RunningProgram mRunning{{{mProgram, order.package, at("elsewhere"), "3",
                                       std::to_string(Public::Base::Process::getProcessId()), "", at("saved"), "1"}}};
};

TEST_F(UpgradeOfRunningProgram, ThatDoesNotEndIsRefusedAndNothingIsTouched) {
    while (!std::filesystem::exists(at("saved"))) std::this_thread::yield();
    order.filesFreeWithinMs = 20;
    const auto before = support::snapshot(order.installDir);
    const UpgradeOutcome outcome = upgrade(order);
    EXPECT_EQ(outcome.result, UpgradeOutcome::Result::Restored);
    EXPECT_EQ(outcome.error.errorCode(), -602);
    EXPECT_EQ(outcome.error.errorMessage(), mName + " is in use by another program");
    EXPECT_EQ(outcome.filesReplaced + outcome.filesAdded, 0U);
    EXPECT_TRUE(support::snapshot(order.installDir) == before);
}

TEST_F(UpgradeOfRunningProgram, ThatEndsSoonIsWaitedFor) {
    while (!std::filesystem::exists(at("saved"))) std::this_thread::yield();
    order.filesFreeWithinMs = 60000;
    auto outcome = std::async(std::launch::async, [this] { return upgrade(order); });
    EXPECT_EQ(outcome.wait_for(std::chrono::milliseconds(50)), std::future_status::timeout);
    EXPECT_TRUE(mRunning.kill());
    EXPECT_EQ(outcome.get().result, UpgradeOutcome::Result::Installed);
    EXPECT_EQ(readText(mProgram), "new program");
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
    EXPECT_EQ(report["recovered"]->toBool(), GetParam().outcome.recovered);
}

using Result = UpgradeOutcome::Result;
INSTANTIATE_TEST_SUITE_P(
    Upgrade, Report,
    testing::Values(
        ReportCase{"Installed", {Result::Installed, {}, 3, 4}, "installed", 0, ""},
        ReportCase{"Recovered", {Result::Installed, {}, 3, 4, true}, "installed", 0, ""},
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

TEST(Upgrade, ReportThatCannotBeWrittenIsTold) {
    const support::TempDir dir;
    writeText(dir.path() + "/file", "no directory");
    EXPECT_FALSE(writeReport(dir.path() + "/file/report.json", {}));
}

}  // namespace
