#include "OrvBackup.h"

#include "FileSizeLimit.h"
#include "FileText.h"
#include "LogRecorder.h"
#include "TempDir.h"

using namespace Tarnwick::OrvUpdate;
using support::filesBelow;
using support::readText;
using support::writeText;

namespace {

/// A directory to be saved, a place for the backup that is not there yet, and what a walk told.
class OrvBackupTest : public testing::Test {
protected:
    std::string app(const std::string& name = {}) const { return mRoot + "/app" + (name.empty() ? "" : "/" + name); }
    std::string saved(const std::string& name = {}) const {
        return mRoot + "/saved" + (name.empty() ? "" : "/" + name);
    }

    IBackup::FileCallback note() {
        return [this](const std::string& name, const ErrorInfo& result) { mResults[name] = result; };
    }

    support::TempDir mDir;
    const std::string mRoot = mDir.path();
    OrvBackup mBackup{saved()};
    std::map<std::string, ErrorInfo> mResults;
};

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

TEST_F(OrvBackupTest, WalkSavesEveryFile) {
    writeText(app("a.txt"), "A");
    writeText(app("b.txt"), "B");
    std::filesystem::create_directories(saved());
    EXPECT_EQ(mBackup.backup(app(), note()).errorCode(), 0);
    EXPECT_EQ(filesBelow(saved()), (std::set<std::string>{"a.txt", "b.txt"}));
    EXPECT_EQ(readText(saved("b.txt")), "B");
}

TEST_F(OrvBackupTest, WalkFlattensTheTree) {
    writeText(app("one.txt"), "1");
    writeText(app("sub/two.txt"), "2");
    writeText(app("sub/deeper/three.txt"), "3");
    std::filesystem::create_directories(saved());
    mBackup.backup(app(), note());
    EXPECT_EQ(filesBelow(saved()), (std::set<std::string>{"one.txt", "three.txt", "two.txt"}));
}

TEST_F(OrvBackupTest, WalkTellsNamesWithALeadingSeparatorAndNoDirectories) {
    writeText(app("one.txt"), "1");
    writeText(app("sub/two.txt"), "2");
    std::filesystem::create_directories(saved());
    mBackup.backup(app(), note());
    ASSERT_EQ(mResults.size(), 2U);
    EXPECT_EQ(mResults.begin()->first, "/one.txt");
    EXPECT_EQ(mResults.rbegin()->first, "/two.txt");
}

TEST_F(OrvBackupTest, WalkTellsSuccessWithCodeZeroAndEmptyText) {
    writeText(app("one.txt"), "1");
    std::filesystem::create_directories(saved());
    mBackup.backup(app(), note());
    ASSERT_EQ(mResults.size(), 1U);
    EXPECT_EQ(mResults.begin()->second.errorCode(), 0);
    EXPECT_EQ(mResults.begin()->second.errorMessage(), "");
}

TEST_F(OrvBackupTest, OfTwoFilesOfOneNameOneCopyIsLeftAndBothAreTold) {
    writeText(app("same.txt"), "outer");
    writeText(app("sub/same.txt"), "inner");
    std::filesystem::create_directories(saved());
    std::vector<std::string> order;
    mBackup.backup(app(), [&](const std::string& name, const ErrorInfo& result) {
        EXPECT_EQ(name, "/same.txt");
        EXPECT_FALSE(result);
        order.push_back(*readText(saved("same.txt")));
    });
    EXPECT_EQ(std::set<std::string>(order.begin(), order.end()), (std::set<std::string>{"inner", "outer"}));
    ASSERT_FALSE(order.empty());
    EXPECT_EQ(readText(saved("same.txt")), order.back());  // the last one copied wins
}

TEST_F(OrvBackupTest, WalkWithoutABackupDirectoryFailsForEachFileAndReturnsZero) {
    writeText(app("a.txt"), "A");
    writeText(app("sub/b.txt"), "B");
    EXPECT_EQ(mBackup.backup(app(), note()).errorCode(), 0);
    ASSERT_EQ(mResults.size(), 2U);
    for (const auto& [name, result] : mResults) EXPECT_LT(result.errorCode(), -10000) << name;
    EXPECT_FALSE(std::filesystem::exists(saved()));
}

TEST_F(OrvBackupTest, AFailedCopyOfAWalkIsLogged) {
    writeText(app("a.txt"), "A");
    support::LogRecorder log;
    mBackup.backup(app(), note());
    ASSERT_FALSE(log.entries().empty());
    EXPECT_EQ(log.entries().back().level, kDetail);
    EXPECT_EQ(log.entries().back().text, "backup fail, name:/a.txt");
}

TEST_F(OrvBackupTest, AFailedCopyDoesNotStopTheWalk) {
    writeText(app("a.txt"), "A");
    writeText(app("b.txt"), "B");
    writeText(app("c.txt"), "C");
    std::filesystem::create_directories(saved("b.txt"));  // a directory where the copy should go
    mBackup.backup(app(), note());
    ASSERT_EQ(mResults.size(), 3U);
    EXPECT_TRUE(mResults["/b.txt"]);
    EXPECT_EQ(readText(saved("a.txt")), "A");
    EXPECT_EQ(readText(saved("c.txt")), "C");
}

TEST_F(OrvBackupTest, WalkOverAnAbsentDirectoryCallsNothing) {
    EXPECT_EQ(mBackup.backup(app("nowhere"), note()).errorCode(), 0);
    EXPECT_TRUE(mResults.empty());
}

TEST_F(OrvBackupTest, WalkWithAnEmptyCallbackStillCopies) {
    writeText(app("a.txt"), "A");
    std::filesystem::create_directories(saved());
    EXPECT_EQ(mBackup.backup(app(), IBackup::FileCallback()).errorCode(), 0);
    EXPECT_EQ(readText(saved("a.txt")), "A");
}

TEST_F(OrvBackupTest, WalkRunsItsCallbackOnTheCallersThreadBeforeItReturns) {
    writeText(app("a.txt"), "A");
    std::filesystem::create_directories(saved());
    std::thread::id thread;
    mBackup.backup(app(), [&](const std::string&, const ErrorInfo&) { thread = std::this_thread::get_id(); });
    EXPECT_EQ(thread, std::this_thread::get_id());
}

TEST_F(OrvBackupTest, WalkOverATreeThatHoldsTheBackupItselfEnds) {
    OrvBackup inside(app("saved"));
    writeText(app("a.txt"), "A");
    std::filesystem::create_directories(app("saved"));
    EXPECT_EQ(inside.backup(app(), note()).errorCode(), 0);
    EXPECT_EQ(readText(app("saved/a.txt")), "A");
    EXPECT_EQ(readText(app("a.txt")), "A");
}

TEST_F(OrvBackupTest, WalkDoesNotFollowALoopOfLinks) {
    writeText(app("sub/a.txt"), "A");
    std::filesystem::create_directory_symlink(app(), app("sub/back"));
    std::filesystem::create_directories(saved());
    EXPECT_EQ(mBackup.backup(app(), note()).errorCode(), 0);
    EXPECT_EQ(readText(saved("a.txt")), "A");
    EXPECT_EQ(mResults.count("/a.txt"), 1U);
}

TEST_F(OrvBackupTest, WalkTakesADirectoryWithASeparatorAtItsEnd) {
    writeText(app("a.txt"), "A");
    writeText(app("sub/b.txt"), "B");
    std::filesystem::create_directories(saved());
    EXPECT_EQ(mBackup.backup(app() + "/", note()).errorCode(), 0);
    EXPECT_EQ(filesBelow(saved()), (std::set<std::string>{"a.txt", "b.txt"}));
}

TEST_F(OrvBackupTest, WalkOfADeepTreeReachesItsEnd) {
    std::string level;
    for (int i = 0; i < 60; ++i) level += "d/";
    writeText(app(level + "deep.txt"), "D");
    std::filesystem::create_directories(saved());
    mBackup.backup(app(), note());
    EXPECT_EQ(readText(saved("deep.txt")), "D");
}

TEST_F(OrvBackupTest, RestoreWalkKeepsTheSubDirectoriesOfTheBackup) {
    writeText(app("lib/a.dll"), "old");
    writeText(app("b.txt"), "B");
    mBackup.backup("lib/a.dll", app());
    mBackup.backup("b.txt", app());
    writeText(app("lib/a.dll"), "new");
    writeText(app("b.txt"), "new");
    EXPECT_EQ(mBackup.restore(app(), note()).errorCode(), 0);
    EXPECT_EQ(readText(app("lib/a.dll")), "old");
    EXPECT_EQ(readText(app("b.txt")), "B");
}

TEST_F(OrvBackupTest, RestoreWalkTellsNamesRelativeToTheBackup) {
    writeText(saved("lib/a.dll"), "old");
    writeText(saved("b.txt"), "B");
    std::filesystem::create_directories(app("lib"));
    mBackup.restore(app(), note());
    ASSERT_EQ(mResults.size(), 2U);
    EXPECT_EQ(mResults.begin()->first, "/b.txt");
    EXPECT_EQ(mResults.rbegin()->first, "/lib/a.dll");
}

TEST_F(OrvBackupTest, RestoreWalkFailsForAFileWithoutItsDirectoryAndGoesOn) {
    writeText(saved("lib/a.dll"), "old");
    writeText(saved("b.txt"), "B");
    std::filesystem::create_directories(app());
    support::LogRecorder log;
    EXPECT_EQ(mBackup.restore(app(), note()).errorCode(), 0);
    EXPECT_TRUE(mResults["/lib/a.dll"]);
    EXPECT_FALSE(mResults["/b.txt"]);
    EXPECT_EQ(filesBelow(app()), (std::set<std::string>{"b.txt"}));
    ASSERT_FALSE(log.entries().empty());
    EXPECT_EQ(log.entries().back().text, "backup fail, name:/lib/a.dll");
}

TEST_F(OrvBackupTest, RestoreWalkOfAnAbsentBackupCallsNothing) {
    EXPECT_EQ(mBackup.restore(app(), note()).errorCode(), 0);
    EXPECT_TRUE(mResults.empty());
}

TEST_F(OrvBackupTest, RestoreWalkWithAnEmptyCallbackStillCopies) {
    writeText(saved("a.txt"), "A");
    std::filesystem::create_directories(app());
    EXPECT_EQ(mBackup.restore(app(), IBackup::FileCallback()).errorCode(), 0);
    EXPECT_EQ(readText(app("a.txt")), "A");
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
    const std::string name = app("a.txt").substr(1);
    writeText(app("a.txt"), "old");
    OrvBackup nowhere("");
    EXPECT_EQ(nowhere.backup("a.txt", app()).errorCode(), -602);
    EXPECT_EQ(nowhere.restore(name, app("sub")).errorCode(), -602);
    EXPECT_EQ(mBackup.backup(name, "").errorCode(), -602);
    EXPECT_EQ(mBackup.restore(name, "").errorCode(), -602);
    EXPECT_FALSE(std::filesystem::exists("/a.txt"));
    EXPECT_EQ(filesBelow(mRoot), (std::set<std::string>{"app/a.txt"}));
    EXPECT_EQ(readText(app("a.txt")), "old");
}

TEST_F(OrvBackupTest, WalksWithoutADirectoryTellEachFileAndCopyNone) {
    writeText(app("walked.txt"), "A");
    writeText(saved("walked.txt"), "A");
    EXPECT_EQ(OrvBackup("").backup(app(), note()).errorCode(), 0);
    EXPECT_EQ(mResults["/walked.txt"].errorCode(), -602);
    mResults.clear();
    EXPECT_EQ(mBackup.restore("", note()).errorCode(), 0);
    EXPECT_EQ(mResults["/walked.txt"].errorCode(), -602);
    EXPECT_FALSE(std::filesystem::exists("/walked.txt"));
    mResults.clear();
    EXPECT_EQ(OrvBackup("").restore(app(), note()).errorCode(), 0);
    EXPECT_EQ(mBackup.backup("", note()).errorCode(), 0);
    EXPECT_TRUE(mResults.empty());
    EXPECT_TRUE(OrvBackup("").clear());
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
        EXPECT_EQ(mBackup.backup("big.bin", app()).errorCode(), -(10000 + EFBIG));
        EXPECT_EQ(mBackup.backup(app(), note()).errorCode(), 0);
    }
    EXPECT_EQ(mResults["/big.bin"].errorCode(), -(10000 + EFBIG));
    EXPECT_EQ(mResults["/small.txt"].errorCode(), 0);
    EXPECT_EQ(readText(app("big.bin")), content);
    EXPECT_TRUE(std::filesystem::exists(saved("big.bin")));  // what a copy left half-way stays
}

TEST_F(OrvBackupTest, AWalkWhereAFileStandsForTheDirectoryCallsNothing) {
    writeText(app(), "a file");
    EXPECT_EQ(mBackup.backup(app(), note()).errorCode(), 0);
    EXPECT_TRUE(mResults.empty());
}
