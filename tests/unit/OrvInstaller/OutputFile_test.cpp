// Whether an unpacked file stays inside of the install directory.
#include "OutputFileFixture.h"

#include "FileKinds.h"

using namespace Tarnwick::OrvUpdate;

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
    support::makeDirectoryLink(mOutside, mInstall + "/sub");
    EXPECT_FALSE(liesInside(mInstall, "sub\\a.txt"));
    EXPECT_FALSE(liesInside(mInstall, "sub\\new\\a.txt"));
}

TEST_F(OutputFile, ANeighbourOfALongerNameIsOutside) {
    std::filesystem::create_directories(mInstall + "-old");
    support::makeDirectoryLink(mInstall + "-old", mInstall + "/sub");
    EXPECT_FALSE(liesInside(mInstall, "sub\\a.txt"));
}

TEST_F(OutputFile, LiesInsideBehindALinkThatStaysInside) {
    std::filesystem::create_directories(mInstall + "/real");
    support::makeDirectoryLink(mInstall + "/real", mInstall + "/sub");
    EXPECT_TRUE(liesInside(mInstall, "sub\\a.txt"));
}

TEST_F(OutputFile, LiesInsideWhenTheDirectoryItselfIsALink) {
    support::makeDirectoryLink(mOutside, mRoot + "/link");
    EXPECT_TRUE(liesInside(mRoot + "/link", "sub\\a.txt"));
}

TEST_F(OutputFile, LeavesAFileThatIsNoLink) {
    support::writeText(mInstall + "/a.txt", "kept");
    removeLink(mInstall + "/a.txt");
    removeLink(mInstall + "/gone.txt");
    EXPECT_EQ(support::readText(mInstall + "/a.txt"), "kept");
}
