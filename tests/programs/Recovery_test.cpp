// What an installer finds at its start, and what it makes of it.
#include "Recovery.h"

#include "FileLinks.h"
#include "FilePermissions.h"
#include "FileText.h"
#include "FileTimes.h"
#include "Journal.h"
#include "LogRecorder.h"
#include "PackageMaker.h"
#include "Public/Base/DirectoryLock.h"
#include "Public/Base/FileEntry.h"
#include "Public/Base/Process.h"
#include "Rollback.h"
#include "TempDir.h"
#include "TreeSnapshot.h"
#include "Upgrade.h"

namespace fs = std::filesystem;
using Public::Base::DirectoryLock;
using support::readText;
using support::writeText;
using Kind = JournalEntry::Kind;
using Result = UpgradeOutcome::Result;

namespace {

/// An upgrade of the past that came some way.
class RecoveryTest : public testing::Test {
protected:
    RecoveryTest() {
        writeText(mInstalled + "/app.exe", "half of the ne");
        writeText(mInstalled + "/made/added.dll", "new");
        writeText(mInstalled + "/own.cfg", "settings");
        writeText(mBackup + "/app.exe", "old");
        mJournal = {mInstalled,
                    {{Kind::MadeDirectory, "made", 0, 0, {}},
                     {Kind::AddedFile, "made/added.dll", 0, 0, {}},
                     {Kind::AddedFile, "made/not-yet.dll", 0, 0, {}},
                     {Kind::ReplacedFile, "app.exe", support::kUnusualPermissions, kTime, {}}}};
        if (support::linksCanBeMade()) {
            mJournal.entries.push_back({Kind::ReplacedLink, "link.dll", 0, 0, "app.exe"});
            support::makeLink("app.exe", mInstalled + "/link.dll");
            support::makeLink("nowhere", mInstalled + "/other-link");
        }
        EXPECT_FALSE(mFile.write(mJournal));
        mOrder.package = at("package.exe");  // is not there
        mOrder.installDir = mInstalled;
        mOrder.role = 3;
        mOrder.backupDir = mBackup;
    }
    std::string at(const std::string& name) const { return mDir.path() + "/" + name; }
    void makePackage() {
        support::PackageSpec spec;
        spec.files = {{"Orv Server\\app.exe", "new"}, {"Orv Client\\client.exe", "client"}};
        support::makePackage(spec, mOrder.package);
    }
    void expectUndone() {
        EXPECT_EQ(readText(mInstalled + "/app.exe"), "old");
        EXPECT_EQ(Public::Base::FileEntry::at(mInstalled + "/app.exe").permissions, support::kUnusualPermissions);
        EXPECT_EQ(support::modifiedTime(mInstalled + "/app.exe"), kTime);
        expectLinks();
        EXPECT_EQ(readText(mInstalled + "/own.cfg"), "settings");
        EXPECT_FALSE(fs::exists(mInstalled + "/made"));
        EXPECT_FALSE(mFile.exists());
    }

    void expectLinks() {
        if (!support::linksCanBeMade()) return;
        EXPECT_EQ(fs::read_symlink(mInstalled + "/link.dll"), "app.exe");
        EXPECT_EQ(fs::read_symlink(mInstalled + "/other-link"), "nowhere");
    }

    static constexpr int64_t kTime = 131'000'000'123'456'789;  // a time on either system's clock
    support::TempDir mDir;
    support::LogRecorder mLog;
    const std::string mInstalled = at("installed"), mBackup = at("backup");
    const JournalFile mFile{mBackup};
    Journal mJournal;
    UpgradeOrder mOrder;
};

TEST_F(RecoveryTest, WithoutAJournalDoesNothing) {
    ASSERT_FALSE(mFile.remove());
    const auto before = support::snapshot(mDir.path());
    const Recovery recovery = recover(mBackup, mInstalled);
    EXPECT_FALSE(recovery.undone);
    EXPECT_FALSE(recovery.error);
    EXPECT_TRUE(support::snapshot(mDir.path()) == before);
}

TEST_F(RecoveryTest, PutsBackWhatWasThereAndRemovesWhatWasNot) {
    const Recovery recovery = recover(mBackup, mInstalled);
    EXPECT_TRUE(recovery.undone);
    EXPECT_FALSE(recovery.error);
    expectUndone();
}

TEST_F(RecoveryTest, HalfWrittenJournalMeansThatNothingWasTouched) {
    fs::rename(mBackup + "/orvinstaller.journal", mBackup + "/orvinstaller.journal.new");
    const auto before = support::snapshot(mInstalled);
    EXPECT_FALSE(recover(mBackup, mInstalled).undone);
    EXPECT_TRUE(support::snapshot(mInstalled) == before);
}

TEST_F(RecoveryTest, NeedsNoPackage) {
    const UpgradeOutcome outcome = upgrade(mOrder);
    EXPECT_EQ(outcome.result, Result::Restored);
    EXPECT_EQ(outcome.error.errorCode(), -1);
    EXPECT_TRUE(outcome.recovered);
    expectUndone();
}

TEST_F(RecoveryTest, IsFollowedByTheUpgrade) {
    makePackage();
    const UpgradeOutcome outcome = upgrade(mOrder);
    EXPECT_EQ(outcome.result, Result::Installed);
    EXPECT_TRUE(outcome.recovered);
    EXPECT_EQ(readText(mInstalled + "/app.exe"), "new");
    EXPECT_EQ(readText(mBackup + "/app.exe"), "old");
    EXPECT_FALSE(fs::exists(mInstalled + "/made"));
    EXPECT_FALSE(mFile.exists());
}

TEST_F(RecoveryTest, IsDoneAlsoUnderAHostThatDoesNotEnd) {
    makePackage();
    mOrder.hostProcess = Public::Base::Process::getProcessId();
    mOrder.hostEndsWithinMs = 1;
    const UpgradeOutcome outcome = upgrade(mOrder);
    EXPECT_EQ(outcome.result, Result::Restored);
    EXPECT_EQ(outcome.error.errorMessage(), "the host did not end");
    EXPECT_TRUE(outcome.recovered);
    expectUndone();
}

TEST_F(RecoveryTest, IsDoneInTheDirectoryOfTheJournalWhenTheOrderNamesAnother) {
    makePackage();
    mOrder.installDir = at("other");
    const UpgradeOutcome outcome = upgrade(mOrder);
    EXPECT_EQ(outcome.result, Result::Installed);
    EXPECT_TRUE(outcome.recovered);
    expectUndone();
    EXPECT_EQ(support::filesBelow(at("other")), std::set<std::string>{"app.exe"});
}

TEST_F(RecoveryTest, WaitsForNoOtherInstallerInTheDirectoryOfTheJournal) {
    DirectoryLock other;
    ASSERT_EQ(other.take(mInstalled), DirectoryLock::Result::Taken);
    mOrder.installDir = at("other");
    const auto before = support::snapshot(mDir.path());
    const UpgradeOutcome outcome = upgrade(mOrder);
    EXPECT_EQ(outcome.result, Result::Damaged);
    EXPECT_EQ(outcome.error.errorMessage(),
              "another installer is at work on " + mInstalled + ", where an upgrade is unfinished");
    EXPECT_TRUE(support::snapshot(mDir.path()) == before);
}

TEST_F(RecoveryTest, RefusesADamagedJournalAndLosesNothing) {
    makePackage();
    const std::string whole = readText(mBackup + "/orvinstaller.journal").value();
    for (size_t length = 0; length < whole.size(); ++length) {
        writeText(mBackup + "/orvinstaller.journal", whole.substr(0, length));
        const auto before = support::snapshot(mDir.path());
        const UpgradeOutcome outcome = upgrade(mOrder);
        ASSERT_EQ(outcome.result, Result::Damaged) << "after " << length;
        ASSERT_FALSE(outcome.recovered);
        ASSERT_EQ(outcome.error.errorMessage(),
                  "the journal of an unfinished upgrade, " + mBackup + "/orvinstaller.journal, is damaged");
        ASSERT_TRUE(support::snapshot(mDir.path()) == before) << "after " << length;
    }
}

TEST_F(RecoveryTest, WithoutASavedFileKeepsTheJournalAndDoesTheRest) {
    fs::remove(mBackup + "/app.exe");
    const UpgradeOutcome outcome = upgrade(mOrder);
    EXPECT_EQ(outcome.result, Result::Damaged);
    EXPECT_EQ(outcome.error.errorCode(), -10002);  // no such file, on either system
    EXPECT_FALSE(outcome.recovered);
    EXPECT_TRUE(mFile.exists());
    EXPECT_FALSE(fs::exists(mInstalled + "/made"));
    expectLinks();

    writeText(mBackup + "/app.exe", "old");  // somebody has found it
    EXPECT_TRUE(upgrade(mOrder).recovered);
    expectUndone();
}

TEST_F(RecoveryTest, DirectoryThatHasGoneIsNotMadeOfAFewOldFiles) {
    fs::remove_all(mInstalled);
    const UpgradeOutcome outcome = upgrade(mOrder);
    EXPECT_EQ(outcome.result, Result::Damaged);
    EXPECT_EQ(outcome.error.errorMessage(), "the directory of an unfinished upgrade, " + mInstalled + ", has gone");
    EXPECT_TRUE(mFile.exists());
    EXPECT_FALSE(fs::exists(mInstalled));
}

TEST_F(RecoveryTest, TakesADirectoryThatTheUpgradeMade) {
    fs::remove_all(mInstalled);
    writeText(mInstalled + "/app.exe", "new");
    ASSERT_FALSE(
        mFile.write({mInstalled, {{Kind::MadeDirectory, "", 0, 0, {}}, {Kind::AddedFile, "app.exe", 0, 0, {}}}}));
    EXPECT_TRUE(recover(mBackup, mInstalled).undone);
    EXPECT_FALSE(fs::exists(mInstalled));
}

TEST_F(RecoveryTest, LeavesSomebodyElsesFileInANewDirectory) {
    writeText(mInstalled + "/made/log.txt", "of the host, since");
    EXPECT_TRUE(recover(mBackup, mInstalled).undone);
    EXPECT_EQ(support::filesBelow(mInstalled + "/made"), std::set<std::string>{"log.txt"});
}

TEST_F(RecoveryTest, MakesTheLinkAgainWhereAFileWasPut) {
    fs::remove(mInstalled + "/link.dll");
    writeText(mInstalled + "/link.dll", "new");
    EXPECT_TRUE(recover(mBackup, mInstalled).undone);
    expectUndone();
}

TEST_F(RecoveryTest, MakesTheLinkAgainWhereNothingIsLeft) {
    fs::remove(mInstalled + "/link.dll");
    EXPECT_TRUE(recover(mBackup, mInstalled).undone);
    expectUndone();
}

TEST_F(RecoveryTest, WritesNoFileThroughALink) {
    writeText(at("outside"), "kept");
    fs::remove(mInstalled + "/app.exe");
    support::makeLink(at("outside"), mInstalled + "/app.exe");
    EXPECT_TRUE(recover(mBackup, mInstalled).undone);
    EXPECT_EQ(readText(at("outside")), "kept");
    expectUndone();
}

TEST_F(RecoveryTest, KeepsTheOwnersRightsOfAFileThatStayed) {
    mJournal.entries[3].permissions = 04755;
    ASSERT_FALSE(mFile.write(mJournal));
    EXPECT_TRUE(recover(mBackup, mInstalled).undone);
    EXPECT_EQ(support::permissionsText(fs::status(mInstalled + "/app.exe")), "4755");
}

TEST_F(RecoveryTest, LendsNoOwnersRightsToAFileThatIsMadeAnew) {
    mJournal.entries[3].permissions = 04755;
    ASSERT_FALSE(mFile.write(mJournal));
    fs::remove(mInstalled + "/app.exe");
    EXPECT_TRUE(recover(mBackup, mInstalled).undone);
    EXPECT_EQ(support::permissionsText(fs::status(mInstalled + "/app.exe")), "755");
}

TEST_F(RecoveryTest, KeepsTheFileItselfWithAllItsNames) {
    fs::create_hard_link(mInstalled + "/app.exe", at("other-name"));
    EXPECT_TRUE(recover(mBackup, mInstalled).undone);
    EXPECT_EQ(readText(at("other-name")), "old");
}

TEST_F(RecoveryTest, OfADamagedDirectoryIsInTheLog) {
    writeText(mBackup + "/orvinstaller.journal", "x");
    upgrade(mOrder);
    const auto entries = mLog.entries();
    ASSERT_EQ(entries.size(), 1U);
    EXPECT_EQ(entries[0].level, 2);
    EXPECT_EQ(entries[0].text, "an unfinished upgrade cannot be undone: the journal of an unfinished upgrade, " +
                                   mBackup + "/orvinstaller.journal, is damaged");
}

/// Two at once.
class UpgradeLock : public testing::Test {
protected:
    UpgradeLock() {
        mOrder.package = mDir.path() + "/package.exe";
        support::makePackage({}, mOrder.package);
        mOrder.installDir = mDir.path() + "/installed";
        mOrder.role = 3;
        mOrder.backupDir = mDir.path() + "/backup";
        writeText(mOrder.installDir + "/own.cfg", "settings");
        writeText(mOrder.backupDir + "/saved.dll", "of the other one");
    }
    void expectRefused(const std::string& directory) {
        const auto before = support::snapshot(mDir.path());
        DirectoryLock other;
        ASSERT_EQ(other.take(directory), DirectoryLock::Result::Taken);
        const UpgradeOutcome outcome = upgrade(mOrder);
        EXPECT_EQ(outcome.result, Result::Restored);
        EXPECT_EQ(outcome.error.errorMessage(), "another installer is at work on " + directory);
        EXPECT_TRUE(support::snapshot(mDir.path()) == before);
        other.release();
        EXPECT_EQ(upgrade(mOrder).result, Result::Installed);
    }

    support::TempDir mDir;
    support::LogRecorder mLog;
    UpgradeOrder mOrder;
};

TEST_F(UpgradeLock, SecondInstallerOfADirectoryIsRefused) { expectRefused(mOrder.installDir); }

TEST_F(UpgradeLock, SecondInstallerWithABackupDirectoryIsRefused) { expectRefused(mOrder.backupDir); }

TEST_F(UpgradeLock, SecondInstallerIsRefusedBeforeItWaitsForTheHost) {
    DirectoryLock other;
    ASSERT_EQ(other.take(mOrder.installDir), DirectoryLock::Result::Taken);
    mOrder.hostProcess = Public::Base::Process::getProcessId();  // would be waited for a minute
    EXPECT_EQ(upgrade(mOrder).error.errorMessage(), "another installer is at work on " + mOrder.installDir);
}

}  // namespace
