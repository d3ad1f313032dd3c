// Saving and restoring single files, and clearing a backup.
#include "OrvBackup.h"

#include "FileSizeLimit.h"
#include "LogRecorder.h"
#include "OrvBackupFixture.h"
#include "SystemErrors.h"

using namespace Tarnwick::OrvUpdate;
using support::filesBelow;
using support::readText;
using support::writeText;

namespace {

constexpr int kDetail = 6;
constexpr int kError = 2;

}  // namespace

TEST_F(OrvBackupTest, SavesAFileByName) {
    writeText(app("a.txt"), "old");
    EXPECT_EQ(mBackup.backup("a.txt", app()).errorCode(), 0);
    EXPECT_EQ(readText(saved("a.txt")), "old");
    EXPECT_EQ(readText(app("a.txt")), "old");
}

TEST_F(OrvBackupTest, SavesANameOfTwoLevelsAndMakesItsDirectory) {
    writeText(app("lib/a.dll"), "old");
    EXPECT_EQ(mBackup.backup("lib/a.dll", app()).errorCode(), 0);
    EXPECT_EQ(readText(saved("lib/a.dll")), "old");
}

TEST_F(OrvBackupTest, SavesANameWithBackslashes) {
    writeText(app("lib/deep/a.dll"), "old");
    EXPECT_EQ(mBackup.backup("lib\\deep\\a.dll", app()).errorCode(), 0);
    EXPECT_EQ(readText(saved("lib/deep/a.dll")), "old");
}

TEST_F(OrvBackupTest, SavingAnAbsentFileIsNoFailureAndCreatesNothing) {
    std::filesystem::create_directories(app());
    EXPECT_EQ(mBackup.backup("gone.txt", app()).errorCode(), 0);
    EXPECT_FALSE(std::filesystem::exists(saved()));
}

TEST_F(OrvBackupTest, SavingAnAbsentFileLogsNothing) {
    support::LogRecorder log;
    mBackup.backup("gone.txt", app());
    EXPECT_TRUE(log.entries().empty());
}

TEST_F(OrvBackupTest, SavingAgainReplacesWhatWasSaved) {
    writeText(app("a.txt"), "first and longer");
    mBackup.backup("a.txt", app());
    writeText(app("a.txt"), "second");
    EXPECT_EQ(mBackup.backup("a.txt", app()).errorCode(), 0);
    EXPECT_EQ(readText(saved("a.txt")), "second");
}

TEST_F(OrvBackupTest, SavesAnEmptyFile) {
    writeText(app("empty"), "");
    EXPECT_EQ(mBackup.backup("empty", app()).errorCode(), 0);
    EXPECT_EQ(readText(saved("empty")), "");
}

TEST_F(OrvBackupTest, SavesAFileOfAChineseName) {
    writeText(app("中文/文件.txt"), "old");
    EXPECT_EQ(mBackup.backup("中文/文件.txt", app()).errorCode(), 0);
    EXPECT_EQ(readText(saved("中文/文件.txt")), "old");
}

TEST_F(OrvBackupTest, AFailedSaveGivesTheSystemsErrorAndIsLogged) {
    writeText(app("a.txt"), "old");
    writeText(saved(), "a file where the backup directory should be");
    support::LogRecorder log;
    const ErrorInfo error = mBackup.backup("a.txt", app());
    EXPECT_LT(error.errorCode(), -10000);
    ASSERT_FALSE(log.entries().empty());
    EXPECT_EQ(log.entries().back().level, kDetail);
    EXPECT_EQ(log.entries().back().text, "backup fail, name:a.txt");
    EXPECT_EQ(log.entries().back().file, "OrvUpdate/Src/OrvBackup");
}

TEST_F(OrvBackupTest, SavingADirectoryByNameFails) {
    writeText(app("sub/a.txt"), "old");
    EXPECT_TRUE(mBackup.backup("sub", app()));
    EXPECT_TRUE(filesBelow(saved()).empty());
}

TEST_F(OrvBackupTest, RestoresAFileByName) {
    writeText(app("a.txt"), "old");
    mBackup.backup("a.txt", app());
    writeText(app("a.txt"), "new and longer");
    EXPECT_EQ(mBackup.restore("a.txt", app()).errorCode(), 0);
    EXPECT_EQ(readText(app("a.txt")), "old");
}

TEST_F(OrvBackupTest, RestoresANameOfTwoLevelsAndMakesItsDirectory) {
    writeText(app("lib/a.dll"), "old");
    mBackup.backup("lib/a.dll", app());
    std::filesystem::remove_all(app());
    EXPECT_EQ(mBackup.restore("lib/a.dll", app()).errorCode(), 0);
    EXPECT_EQ(readText(app("lib/a.dll")), "old");
}

TEST_F(OrvBackupTest, RestoringAnUnsavedNameFailsAfterMakingItsDirectory) {
    const ErrorInfo error = mBackup.restore("lib/gone.dll", app());
    EXPECT_LT(error.errorCode(), -10000);
    EXPECT_TRUE(std::filesystem::is_directory(app("lib")));
    EXPECT_TRUE(filesBelow(app()).empty());
}

TEST_F(OrvBackupTest, AFailedRestoreIsLoggedWithTheWordsOfAFailedBackup) {
    support::LogRecorder log;
    mBackup.restore("gone.txt", app());
    ASSERT_FALSE(log.entries().empty());
    EXPECT_EQ(log.entries().back().level, kDetail);
    EXPECT_EQ(log.entries().back().text, "backup fail, name:gone.txt");
}

TEST_F(OrvBackupTest, RestoreKeepsTheSavedFile) {
    writeText(app("a.txt"), "old");
    mBackup.backup("a.txt", app());
    mBackup.restore("a.txt", app());
    EXPECT_EQ(readText(saved("a.txt")), "old");
}

TEST_F(OrvBackupTest, RestoreLeavesAFileThatIsNewSinceTheBackup) {
    writeText(app("a.txt"), "old");
    mBackup.backup("a.txt", app());
    mBackup.backup("b.txt", app());
    writeText(app("b.txt"), "came with the upgrade");
    mBackup.restore(app(), note());
    EXPECT_EQ(readText(app("b.txt")), "came with the upgrade");
}

TEST_F(OrvBackupTest, ClearRemovesTheBackupWithAllThatItHolds) {
    writeText(saved("lib/a.dll"), "old");
    EXPECT_EQ(mBackup.clear().errorCode(), 0);
    EXPECT_FALSE(std::filesystem::exists(saved()));
}

TEST_F(OrvBackupTest, ClearLogsTheDirectoryBeforeTheAttempt) {
    support::LogRecorder log;
    mBackup.clear();
    ASSERT_FALSE(log.entries().empty());
    EXPECT_EQ(log.entries().front().level, kError);
    EXPECT_EQ(log.entries().front().text, "removeDirectory() fileName:" + saved() + "\r\n");
}

TEST_F(OrvBackupTest, ClearOfAnAbsentBackupGivesTheSystemsError) { EXPECT_LT(mBackup.clear().errorCode(), -10000); }

TEST_F(OrvBackupTest, AWalkAfterClearFailsUntilSomethingIsSavedByName) {
    writeText(app("a.txt"), "A");
    mBackup.backup("a.txt", app());
    mBackup.clear();
    mBackup.backup(app(), note());
    EXPECT_TRUE(mResults["/a.txt"]);
    mBackup.backup("a.txt", app());
    mBackup.backup(app(), note());
    EXPECT_FALSE(mResults["/a.txt"]);
}

TEST_F(OrvBackupTest, ABackupSurvivesInItsDirectoryAlone) {
    writeText(app("a.txt"), "old");
    OrvBackup(saved()).backup("a.txt", app());
    writeText(app("a.txt"), "new");
    EXPECT_FALSE(OrvBackup(saved()).restore("a.txt", app()));
    EXPECT_EQ(readText(app("a.txt")), "old");
}

TEST_F(OrvBackupTest, ACopyOfTheObjectIsTheSameBackup) {
    writeText(app("a.txt"), "old");
    OrvBackup copy(mBackup);
    OrvBackup assigned("elsewhere");
    assigned = copy;
    copy.backup("a.txt", app());
    writeText(app("a.txt"), "new");
    EXPECT_FALSE(assigned.restore("a.txt", app()));
    EXPECT_EQ(readText(app("a.txt")), "old");
}

TEST_F(OrvBackupTest, ANameThatClimbsIsNotSavedOutsideOfTheBackup) {
    writeText(mRoot + "/secret.txt", "S");
    std::filesystem::create_directories(app());
    OrvBackup inside(saved("inner/most"));
    EXPECT_EQ(inside.backup("../secret.txt", app()).errorCode(), -602);
    EXPECT_FALSE(std::filesystem::exists(saved()));
}

TEST_F(OrvBackupTest, ANameThatClimbsIsNotRestoredOutsideOfTheDirectory) {
    writeText(mRoot + "/evil.txt", "E");
    std::filesystem::create_directories(saved());
    EXPECT_EQ(mBackup.restore("..\\evil.txt", app("sub")).errorCode(), -602);
    EXPECT_FALSE(std::filesystem::exists(app()));
}

TEST_F(OrvBackupTest, ADirectoryWithoutANameDoesNotStandForTheRoot) {
    // Behind an empty text the names would be taken from the root, or put there.
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(mRoot);  // a root is that of the drive at hand
    const std::string name = std::filesystem::path(app("a.txt")).relative_path().generic_string();
    writeText(app("a.txt"), "old");
    OrvBackup nowhere("");
    EXPECT_EQ(nowhere.backup("a.txt", app()).errorCode(), -602);
    EXPECT_EQ(nowhere.restore(name, app("sub")).errorCode(), -602);
    EXPECT_EQ(mBackup.backup(name, "").errorCode(), -602);
    EXPECT_EQ(mBackup.restore(name, "").errorCode(), -602);
    EXPECT_FALSE(std::filesystem::exists("/a.txt"));
    std::filesystem::current_path(before);
    EXPECT_EQ(filesBelow(mRoot), (std::set<std::string>{"app/a.txt"}));
    EXPECT_EQ(readText(app("a.txt")), "old");
}

TEST_F(OrvBackupTest, AnEmptyNameIsADirectoryAndIsNotCopied) {
    writeText(app("a.txt"), "old");
    EXPECT_LT(mBackup.backup("", app()).errorCode(), -10000);
    EXPECT_LT(mBackup.restore("", app()).errorCode(), -10000);
    EXPECT_TRUE(filesBelow(saved()).empty());
    EXPECT_EQ(readText(app("a.txt")), "old");
}

TEST_F(OrvBackupTest, AFullDiskGivesTheSystemsErrorAndKeepsTheSource) {
    const std::string content(1 << 20, 'x');
    writeText(app("big.bin"), content);
    writeText(app("small.txt"), "S");
    std::filesystem::create_directories(saved());
    {
        const support::FileSizeLimit full(4096);
        EXPECT_EQ(mBackup.backup("big.bin", app()).errorCode(), support::errorOf(support::SystemError::FileLimit));
        EXPECT_EQ(mBackup.backup(app(), note()).errorCode(), 0);
    }
    EXPECT_EQ(mResults["/big.bin"].errorCode(), support::errorOf(support::SystemError::FileLimit));
    EXPECT_EQ(mResults["/small.txt"].errorCode(), 0);
    EXPECT_EQ(readText(app("big.bin")), content);
    EXPECT_FALSE(std::filesystem::exists(saved("big.bin")));  // a copy leaves nothing half-way
}
