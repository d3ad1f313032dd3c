// Saving and restoring whole directories.
#include "FileKinds.h"
#include "LogRecorder.h"
#include "OrvBackupFixture.h"

using namespace Tarnwick::OrvUpdate;
using support::filesBelow;
using support::readText;
using support::writeText;

namespace {

constexpr int kDetail = 6;

}  // namespace

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
    support::makeDirectoryLink(app(), app("sub/back"));
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

TEST_F(OrvBackupTest, AWalkWhereAFileStandsForTheDirectoryCallsNothing) {
    writeText(app(), "a file");
    EXPECT_EQ(mBackup.backup(app(), note()).errorCode(), 0);
    EXPECT_TRUE(mResults.empty());
}
