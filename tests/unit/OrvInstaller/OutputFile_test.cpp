#include "OrvInstaller/OutputFile.h"

#include "FileText.h"
#include "TempDir.h"

using Tarnwick::OrvUpdate::liesInside;
using Tarnwick::OrvUpdate::removeLink;
namespace fs = std::filesystem;

namespace {

class OutputFile : public testing::Test {
protected:
    OutputFile() {
        fs::create_directories(mInstall);
        fs::create_directories(mOutside);
    }

    support::TempDir mDir;
    const std::string mRoot = mDir.path();
    const std::string mInstall = mRoot + "/install";
    const std::string mOutside = mRoot + "/outside";
};

}  // namespace

TEST_F(OutputFile, LiesInsideUnderAPlainName) {
    EXPECT_TRUE(liesInside(mInstall, "a.txt"));
    EXPECT_TRUE(liesInside(mInstall, "sub\\deep\\a.txt"));
    EXPECT_TRUE(liesInside(mInstall + "/", "sub/a.txt"));
}

TEST_F(OutputFile, LiesInsideADirectoryThatIsNotThereYet) {
    EXPECT_TRUE(liesInside(mRoot + "/new\\install", "sub\\a.txt"));
    EXPECT_TRUE(liesInside(mRoot + "/new/", "sub\\a.txt"));
    EXPECT_TRUE(liesInside(mRoot + "/new\\", "a.txt"));
    EXPECT_TRUE(liesInside("relative-and-not-there", "sub\\a.txt"));
}

TEST_F(OutputFile, LiesOutsideUnderANameThatClimbs) { EXPECT_FALSE(liesInside(mInstall, "..\\a.txt")); }

TEST_F(OutputFile, NothingLiesInsideAnEmptyDirectoryName) { EXPECT_FALSE(liesInside("", "a.txt")); }

TEST_F(OutputFile, LiesOutsideBehindALinkedDirectory) {
    fs::create_directory_symlink(mOutside, mInstall + "/sub");
    EXPECT_FALSE(liesInside(mInstall, "sub\\a.txt"));
    EXPECT_FALSE(liesInside(mInstall, "sub\\new\\a.txt"));
}

TEST_F(OutputFile, ANeighbourOfALongerNameIsOutside) {
    fs::create_directories(mInstall + "-old");
    fs::create_directory_symlink(mInstall + "-old", mInstall + "/sub");
    EXPECT_FALSE(liesInside(mInstall, "sub\\a.txt"));
}

TEST_F(OutputFile, LiesInsideBehindALinkThatStaysInside) {
    fs::create_directories(mInstall + "/real");
    fs::create_directory_symlink(mInstall + "/real", mInstall + "/sub");
    EXPECT_TRUE(liesInside(mInstall, "sub\\a.txt"));
}

TEST_F(OutputFile, LiesInsideWhenTheDirectoryItselfIsALink) {
    fs::create_directory_symlink(mOutside, mRoot + "/link");
    EXPECT_TRUE(liesInside(mRoot + "/link", "sub\\a.txt"));
}

TEST_F(OutputFile, ALoopOfLinksLiesNowhere) {
    fs::create_directory_symlink("b", mInstall + "/a");
    fs::create_directory_symlink("a", mInstall + "/b");
    EXPECT_FALSE(liesInside(mInstall, "a\\x.txt"));
}

TEST_F(OutputFile, RemovesALinkAndNotWhatItLeadsTo) {
    support::writeText(mOutside + "/a.txt", "kept");
    fs::create_symlink(mOutside + "/a.txt", mInstall + "/a.txt");
    removeLink(mInstall + "\\a.txt");
    EXPECT_FALSE(fs::is_symlink(fs::symlink_status(mInstall + "/a.txt")));
    EXPECT_EQ(support::readText(mOutside + "/a.txt"), "kept");
}

TEST_F(OutputFile, LeavesAFileThatIsNoLink) {
    support::writeText(mInstall + "/a.txt", "kept");
    removeLink(mInstall + "/a.txt");
    removeLink(mInstall + "/gone.txt");
    EXPECT_EQ(support::readText(mInstall + "/a.txt"), "kept");
}
