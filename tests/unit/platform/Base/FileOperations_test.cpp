// What is done to files and directories by path.
#include "FileFixture.h"
#include "FileKinds.h"
#include "FileSizeLimit.h"
#include "OpenFiles.h"

using namespace Public::Base;
using namespace support;

namespace {

TEST_F(FileOperations, CopyTakesContentAndPermissions) {
    writeText(at("a"), "content");
    for (const unsigned mode : {0751U, 0440U}) {
        std::filesystem::permissions(at("a"), std::filesystem::perms{mode});
        EXPECT_TRUE(File::copy(at("a"), at("b")));
        EXPECT_EQ(readText(at("b")), "content");
        EXPECT_EQ(std::filesystem::status(at("b")).permissions(), std::filesystem::status(at("a")).permissions());
    }
}

TEST_F(FileOperations, CopyOverwritesALongerTarget) {
    writeText(at("a"), "new");
    writeText(at("b"), "much longer content");
    EXPECT_TRUE(File::copy(at("a"), at("b")));
    EXPECT_EQ(readText(at("b")), "new");
}

TEST_F(FileOperations, CopyOverwritesAReadOnlyTarget) {
    writeText(at("a"), "new");
    writeText(at("b"), "old");
    std::filesystem::permissions(at("b"), std::filesystem::perms::owner_read);
    EXPECT_TRUE(File::copy(at("a"), at("b")));
    EXPECT_EQ(readText(at("b")), "new");
}

TEST_F(FileOperations, CopyOfAReadOnlySourceCanBeCopiedOver) {
    writeText(at("a"), "1");
    std::filesystem::permissions(at("a"), std::filesystem::perms::owner_read);
    EXPECT_TRUE(File::copy(at("a"), at("b")));
    EXPECT_TRUE(File::copy(at("a"), at("b")));
    EXPECT_EQ(readText(at("b")), "1");
}

TEST_F(FileOperations, CopyOfAnEmptyFile) {
    writeText(at("a"), "");
    EXPECT_TRUE(File::copy(at("a"), at("b")));
    EXPECT_EQ(readText(at("b")), "");
}

TEST_F(FileOperations, CopyOfALargeFileIsWhole) {
    std::string big;
    for (int i = 0; i < 400000; ++i) big += std::to_string(i);
    writeText(at("a"), big);
    EXPECT_TRUE(File::copy(at("a"), at("b")));
    EXPECT_EQ(readText(at("b")), big);
}

TEST_F(FileOperations, CopyOfAMissingSourceLeavesTheTargetWhole) {
    writeText(at("b"), "kept");
    EXPECT_FALSE(File::copy(at("none"), at("b")));
    EXPECT_EQ(readText(at("b")), "kept");
    EXPECT_EQ(lastError(), errorOf(SystemError::NotThere));
}

TEST_F(FileOperations, CopyOntoItselfIsRefusedAndLosesNothing) {
    writeText(at("a"), "kept");
    std::filesystem::create_hard_link(at("a"), at("same"));
    EXPECT_FALSE(File::copy(at("a"), at("a")));
    EXPECT_FALSE(File::copy(at("a"), at("same")));
    EXPECT_EQ(readText(at("a")), "kept");
}

TEST_F(FileOperations, CopyOfADirectoryIsRefused) {
    std::filesystem::create_directory(at("d"));
    EXPECT_FALSE(File::copy(at("d"), at("b")));
    EXPECT_FALSE(File::access(at("b"), AccessMode_Exists));
}

TEST_F(FileOperations, CopyOntoADirectoryFails) {
    writeText(at("a"), "x");
    std::filesystem::create_directory(at("d"));
    EXPECT_FALSE(File::copy(at("a"), at("d")));
}

TEST_F(FileOperations, CopyIntoAMissingDirectoryFails) {
    writeText(at("a"), "x");
    EXPECT_FALSE(File::copy(at("a"), at("none/b")));
}

TEST_F(FileOperations, MakeDirectoryMakesTheWholeChain) {
    EXPECT_TRUE(File::makeDirectory(at("x/y/z")));
    EXPECT_TRUE(std::filesystem::is_directory(at("x/y/z")));
}

TEST_F(FileOperations, MakeDirectoryOfOneThatIsThereSucceeds) {
    EXPECT_TRUE(File::makeDirectory(mDir.path()));
    EXPECT_TRUE(File::makeDirectory("/"));
}

TEST_F(FileOperations, MakeDirectoryBearsTrailingAndDoubledSeparators) {
    EXPECT_TRUE(File::makeDirectory(at("x//y/")));
    EXPECT_TRUE(std::filesystem::is_directory(at("x/y")));
}

TEST_F(FileOperations, MakeDirectoryFailsWhereAFileIsInTheWay) {
    writeText(at("f"), "kept");
    EXPECT_FALSE(File::makeDirectory(at("f")));
    EXPECT_FALSE(File::makeDirectory(at("f/below")));
    EXPECT_EQ(readText(at("f")), "kept");
}

TEST_F(FileOperations, MakeDirectoryRefusesAnEmptyPath) { EXPECT_FALSE(File::makeDirectory("")); }

TEST_F(FileOperations, MakeDirectoryGoesThroughALinkToADirectory) {
    std::filesystem::create_directory(at("real"));
    makeDirectoryLink(at("real"), at("link"));
    EXPECT_TRUE(File::makeDirectory(at("link")));
    EXPECT_TRUE(File::makeDirectory(at("link/x")));
    EXPECT_TRUE(std::filesystem::is_directory(at("real/x")));
}

TEST_F(FileOperations, MakeDirectoryMayRaceWithItself) {
    std::atomic<int> failed{0};
    std::vector<std::thread> makers;
    for (int i = 0; i < 8; ++i) {
        makers.emplace_back([&] {
            for (int turn = 0; turn < 20; ++turn) {
                if (!File::makeDirectory(at(std::to_string(turn) + "/a/b/c"))) ++failed;
            }
        });
    }
    for (auto& maker : makers) maker.join();
    EXPECT_EQ(failed, 0);
    EXPECT_TRUE(std::filesystem::is_directory(at("19/a/b/c")));
}

TEST_F(FileOperations, MakeDirectoryTakesNonAsciiNames) {
    EXPECT_TRUE(File::makeDirectory(at("\xE4\xB8\xAD\\\xC3\xA4")));
    EXPECT_TRUE(std::filesystem::is_directory(pathOf(at("\xE4\xB8\xAD/\xC3\xA4"))));
}

TEST_F(FileOperations, CopyOfAnUnreadableSourceLeavesTheTargetWhole) {
    writeText(at("a"), "secret");
    writeText(at("b"), "kept");
    const WithheldFile withheld(at("a"));
    EXPECT_FALSE(File::copy(at("a"), at("b")));
    EXPECT_EQ(lastError(), errorOf(SystemError::Withheld));
    EXPECT_EQ(readText(at("b")), "kept");
}

TEST_F(FileOperations, CopyLeavesNothingOpen) {
    writeText(at("a"), "x");
    const size_t before = countOpenHere();
    EXPECT_TRUE(File::copy(at("a"), at("b")));
    EXPECT_FALSE(File::copy(at("a"), at("a")));
    {
        const FileSizeLimit full(0);
        EXPECT_FALSE(File::copy(at("a"), at("c")));
    }
    EXPECT_FALSE(File::copy(at("a"), mDir.path()));
    EXPECT_EQ(countOpenHere(), before);
}

TEST_F(FileOperations, CopyThatFindsNoRoomKeepsTheOldFileAndLeavesNothing) {
    writeText(at("a"), std::string(1 << 20, 'x'));
    writeText(at("b"), "old");
    {
        const FileSizeLimit full(1 << 19);
        EXPECT_FALSE(File::copy(at("a"), at("b")));
        EXPECT_EQ(lastError(), errorOf(SystemError::FileLimit));
        EXPECT_FALSE(File::copy(at("a"), at("c")));
    }
    EXPECT_EQ(readText(at("b")), "old");
    EXPECT_EQ(filesBelow(mDir.path()), (std::set<std::string>{"a", "b"}));
}

TEST_F(FileOperations, CopyOfAFileThatIsOpenAndGrowing) {
    File file(at("a"));
    ASSERT_TRUE(file.open(OpenMode_Create));
    ASSERT_TRUE(file.puts("abc"));
    EXPECT_TRUE(File::copy(at("a"), at("b")));
    EXPECT_EQ(readText(at("b")), "abc");
    EXPECT_TRUE(file.puts("def"));
    EXPECT_EQ(readText(at("b")), "abc");
}

TEST_F(FileOperations, CopyOntoItselfThroughALinkedDirectoryIsRefused) {
    std::filesystem::create_directory(at("real"));
    makeDirectoryLink(at("real"), at("link"));
    EXPECT_TRUE(File::save(at("link/f"), SharedBuffer("1")));
    EXPECT_EQ(readText(at("real/f")), "1");
    EXPECT_FALSE(File::copy(at("link/f"), at("real/f")));
    EXPECT_EQ(File::getLength(at("link/f")), 1U);
}

}  // namespace
