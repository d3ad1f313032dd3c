#include "FileFixture.h"
#include "FileKinds.h"

using namespace Public::Base;
using namespace support;

namespace {

TEST_F(RemoveDirectory, TakesAllThatItHolds) {
    writeText(at("d/x/y/f"), "1");
    writeText(at("d/.hidden"), "1");
    std::filesystem::permissions(at("d/x/y/f"), std::filesystem::perms::owner_read);
    EXPECT_TRUE(File::removeDirectory(at("d")));
    EXPECT_FALSE(File::access(at("d"), AccessMode_Exists));
}

TEST_F(RemoveDirectory, NeverFollowsALink) {
    writeText(at("outside/f"), "kept");
    writeText(at("d/x"), "1");
    makeDirectoryLink(at("outside"), at("d/link"));
    EXPECT_TRUE(File::removeDirectory(at("d")));
    EXPECT_EQ(readText(at("outside/f")), "kept");
}

TEST_F(RemoveDirectory, OfALinkTakesTheLinkAlone) {
    writeText(at("outside/f"), "kept");
    makeDirectoryLink(at("outside"), at("link"));
    EXPECT_TRUE(File::removeDirectory(at("link")));
    EXPECT_FALSE(File::access(at("link"), AccessMode_Exists));
    EXPECT_EQ(readText(at("outside/f")), "kept");
}

TEST_F(RemoveDirectory, OfAnAbsentOneFails) {
    EXPECT_FALSE(File::removeDirectory(at("none")));
    EXPECT_EQ(lastError(), errorOf(SystemError::NotThere));
}

TEST_F(RemoveDirectory, RefusesAFileAndTheRootAndNothing) {
    writeText(at("f"), "kept");
    EXPECT_FALSE(File::removeDirectory(at("f")));
    EXPECT_FALSE(File::removeDirectory("/"));
    EXPECT_FALSE(File::removeDirectory("\\"));
    EXPECT_FALSE(File::removeDirectory(""));
    EXPECT_EQ(readText(at("f")), "kept");
}

TEST_F(RemoveDirectory, BearsATrailingSeparator) {
    writeText(at("d/f"), "");
    EXPECT_TRUE(File::removeDirectory(at("d/")));
    EXPECT_FALSE(File::access(at("d"), AccessMode_Exists));
}

TEST_F(RemoveDirectory, TakesAnEmptyOne) {
    std::filesystem::create_directory(at("d"));
    EXPECT_TRUE(File::removeDirectory(at("d")));
    EXPECT_FALSE(File::access(at("d"), AccessMode_Exists));
}

TEST_F(RemoveDirectory, TakesBackslashes) {
    writeText(at("d/e/f"), "");
    EXPECT_TRUE(File::removeDirectory(mDir.path() + "\\d\\e\\"));
    EXPECT_TRUE(std::filesystem::is_empty(at("d")));
}

TEST_F(RemoveDirectory, KeepsItsNeighbours) {
    writeText(at("d/f"), "");
    writeText(at("d2/f"), "kept");
    EXPECT_TRUE(File::removeDirectory(at("d")));
    EXPECT_EQ(filesBelow(mDir.path()), std::set<std::string>{"d2/f"});
}

TEST_F(RemoveDirectory, TakesManyEntries) {
    for (int i = 0; i < 1200; ++i) writeText(at("d/" + std::to_string(i % 40) + "/" + std::to_string(i)), "");
    EXPECT_TRUE(File::removeDirectory(at("d")));
    EXPECT_FALSE(File::access(at("d"), AccessMode_Exists));
}

TEST_F(RemoveDirectory, RefusesOneThatIsNamedByPoints) {
    writeText(at("d/f"), "kept");
    writeText(at("d/sub/f"), "kept");
    for (const char* name : {"d/.", "d/./", "d\\.", "d/sub/..", "d\\sub\\..\\"}) {
        EXPECT_FALSE(File::removeDirectory(at(name))) << name;
        EXPECT_EQ(lastError(), errorOf(SystemError::BadPath));
    }
    EXPECT_EQ(filesBelow(mDir.path()), (std::set<std::string>{"d/f", "d/sub/f"}));
}

TEST_F(RemoveDirectory, FailsAtOneThatMayNotBeOpenedAtAll) {
    writeText(at("d/f"), "kept");
    {
        const WithheldFile withheld(at("d"));
        EXPECT_FALSE(File::removeDirectory(at("d")));
        EXPECT_EQ(lastError(), errorOf(SystemError::Withheld));
    }
    EXPECT_EQ(readText(at("d/f")), "kept");
}

TEST_F(RemoveDirectory, OfOneTwiceAtOnceIsGoneInTheEnd) {
    for (int i = 0; i < 200; ++i) writeText(at("d/" + std::to_string(i % 10) + "/" + std::to_string(i)), "");
    std::thread other([&] { File::removeDirectory(at("d")); });
    File::removeDirectory(at("d"));
    other.join();
    File::removeDirectory(at("d"));
    EXPECT_FALSE(File::access(at("d"), AccessMode_Exists));
}

TEST_F(RemoveDirectory, LeavesWhatALinkLeadsTo) {
    writeText(at("outside/f"), "kept");
    writeText(at("outside/g/h"), "kept too");
    writeText(at("d/x"), "1");
    makeDirectoryLink(at("outside"), at("d/link"));
    File::removeDirectory(at("d"));
    EXPECT_EQ(filesBelow(at("outside")), (std::set<std::string>{"f", "g/h"}));
    EXPECT_TRUE(File::isAbsent(at("d/x")));
    makeDirectoryLink(at("outside"), at("second"));
    File::removeDirectory(at("second"));
    EXPECT_EQ(filesBelow(at("outside")), (std::set<std::string>{"f", "g/h"}));
}

TEST_F(RemoveDirectory, BearsADeepTreeWithFilesOnEachLevel) {
    std::string deep = "d";
    for (int level = 0; level < 60; ++level) {
        deep += "/level";
        ASSERT_TRUE(File::makeDirectory(at(deep)));
        ASSERT_TRUE(File::save(at(deep) + "/f", SharedBuffer("1")));
    }
    EXPECT_TRUE(File::removeDirectory(at("d")));
    EXPECT_TRUE(File::isAbsent(at("d")));
}

TEST_F(RemoveDirectory, TakesWhatOthersHaveOpenForSharing) {
    writeText(at("d/f"), "old");
    File reader(at("d/f"));
    ASSERT_TRUE(reader.open(OpenMode_Read));
    File::removeDirectory(at("d"));
    char text[4] = {};
    EXPECT_EQ(reader.read(text, 3), 3U);
    EXPECT_STREQ(text, "old");
    reader.close();
    EXPECT_TRUE(File::isAbsent(at("d/f")));
}

}  // namespace
