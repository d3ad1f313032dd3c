#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>

#include "FileText.h"
#include "Public/Base/ErrorInfo.h"
#include "Public/Base/File.h"
#include "TempDir.h"
#include "WithoutRights.h"

using namespace Public::Base;
using support::readText;
using support::writeText;

namespace {

class FileOperations : public testing::Test {
protected:
    std::string at(const std::string& name) const { return mDir.path() + "/" + name; }
    support::TempDir mDir;
};

mode_t modeOf(const std::string& path) {
    struct stat status {};
    ::stat(path.c_str(), &status);
    return status.st_mode & 0777;
}

TEST_F(FileOperations, CopyTakesContentAndPermissions) {
    writeText(at("a"), "content");
    ::chmod(at("a").c_str(), 0751);
    EXPECT_TRUE(File::copy(at("a"), at("b")));
    EXPECT_EQ(readText(at("b")), "content");
    EXPECT_EQ(modeOf(at("b")), 0751U);
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
    ::chmod(at("b").c_str(), 0444);
    EXPECT_TRUE(File::copy(at("a"), at("b")));
    EXPECT_EQ(readText(at("b")), "new");
}

TEST_F(FileOperations, CopyOfAReadOnlySourceCanBeCopiedOver) {
    writeText(at("a"), "1");
    ::chmod(at("a").c_str(), 0444);
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
    EXPECT_EQ(ErrorInfo::getLastError().errorCode(), -(10000 + ENOENT));
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

TEST_F(FileOperations, CopyToAFullDiskFailsWithTheSystemsError) {
    writeText(at("a"), "x");
    EXPECT_FALSE(File::copy(at("a"), "/dev/full"));
    EXPECT_EQ(ErrorInfo::getLastError().errorCode(), -(10000 + ENOSPC));
}

TEST_F(FileOperations, CopyReadsSpecialFilesToo) {
    EXPECT_TRUE(File::copy("/proc/self/cmdline", at("b")));
    EXPECT_NE(readText(at("b")).value_or(""), "");
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

TEST_F(FileOperations, MakeDirectoryTellsWhatRefusedIt) {
    ::chmod(mDir.path().c_str(), 0555);
    {
        const support::WithoutRights nobody;
        EXPECT_FALSE(File::makeDirectory(at("x/y")));
        EXPECT_EQ(ErrorInfo::getLastError().errorCode(), -(10000 + EACCES));
    }
    ::chmod(mDir.path().c_str(), 0755);
}

TEST_F(FileOperations, MakeDirectoryNeedsNoRightOnWhatIsThereAlready) {
    ASSERT_TRUE(File::makeDirectory(at("x/y")));
    support::openToAll(at("x/y"));
    const support::WithoutRights nobody;
    EXPECT_TRUE(File::makeDirectory(at("x/y/z")));
}

TEST_F(FileOperations, MakeDirectoryGoesThroughALinkToADirectory) {
    std::filesystem::create_directory(at("real"));
    std::filesystem::create_directory_symlink("real", at("link"));
    EXPECT_TRUE(File::makeDirectory(at("link")));
    EXPECT_TRUE(File::makeDirectory(at("link/x")));
    EXPECT_TRUE(std::filesystem::is_directory(at("real/x")));
}

TEST_F(FileOperations, MakeDirectoryFailsWhereALinkLeadsNowhere) {
    std::filesystem::create_symlink("none", at("link"));
    EXPECT_FALSE(File::makeDirectory(at("link")));
    EXPECT_EQ(ErrorInfo::getLastError().errorCode(), -(10000 + ENOTDIR));
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
    EXPECT_TRUE(std::filesystem::is_directory(at("\xE4\xB8\xAD/\xC3\xA4")));
}

TEST_F(FileOperations, CopyLendsNobodyTheOwnersRights) {
    writeText(at("a"), "program");
    ASSERT_EQ(::chmod(at("a").c_str(), 06755), 0);
    EXPECT_TRUE(File::copy(at("a"), at("b")));
    struct stat status {};
    ASSERT_EQ(::stat(at("b").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0755U);
}

TEST_F(FileOperations, CopyOverAReadOnlyTargetMakesItAnewWhereTheOwnerHasNoRight) {
    writeText(at("a"), "new");
    writeText(at("b"), "old");
    ::chmod(at("a").c_str(), 0644);
    ::chmod(at("b").c_str(), 0444);
    support::openToAll(mDir.path());
    const support::WithoutRights nobody;
    EXPECT_TRUE(File::copy(at("a"), at("b")));
    EXPECT_EQ(readText(at("b")), "new");
    EXPECT_EQ(modeOf(at("b")), 0644U);
}

TEST_F(FileOperations, CopyOfAnUnreadableSourceLeavesTheTargetWhole) {
    writeText(at("a"), "secret");
    writeText(at("b"), "kept");
    ::chmod(at("a").c_str(), 0);
    support::openToAll(mDir.path());
    const support::WithoutRights nobody;
    EXPECT_FALSE(File::copy(at("a"), at("b")));
    EXPECT_EQ(ErrorInfo::getLastError().errorCode(), -(10000 + EACCES));
    EXPECT_EQ(readText(at("b")), "kept");
}

TEST_F(FileOperations, CopyIntoADirectoryWithoutTheRightFails) {
    writeText(at("a"), "x");
    std::filesystem::create_directory(at("d"));
    ::chmod(at("d").c_str(), 0555);
    const support::WithoutRights nobody;
    EXPECT_FALSE(File::copy(at("a"), at("d/b")));
    EXPECT_EQ(ErrorInfo::getLastError().errorCode(), -(10000 + EACCES));
}

TEST_F(FileOperations, CopyTakesThePlaceOfARunningProgram) {
    ASSERT_TRUE(File::copy("/bin/cat", at("program")));
    writeText(at("new"), "next version");
    FILE* const running = ::popen(("'" + at("program") + "' > '" + at("out") + "'").c_str(), "w");
    ASSERT_NE(running, nullptr);
    ::fputs("runs", running);
    ::fflush(running);
    while (readText(at("out")) != "runs") std::this_thread::yield();
    EXPECT_TRUE(File::copy(at("new"), at("program")));
    EXPECT_EQ(readText(at("program")), "next version");
    ::pclose(running);
}

TEST_F(FileOperations, CopyWaitsForNobodyAtAQueue) {
    writeText(at("a"), "kept");
    ASSERT_EQ(::mkfifo(at("queue").c_str(), 0666), 0);
    EXPECT_FALSE(File::copy(at("queue"), at("b")));
    EXPECT_FALSE(File::copy(at("a"), at("queue")));
    EXPECT_FALSE(File::access(at("b"), AccessMode_Exists));
    EXPECT_EQ(readText(at("a")), "kept");
}

TEST_F(FileOperations, CopyOntoItselfThroughALinkIsRefused) {
    writeText(at("a"), "kept");
    std::filesystem::create_symlink("a", at("link"));
    EXPECT_FALSE(File::copy(at("a"), at("link")));
    EXPECT_FALSE(File::copy(at("link"), at("a")));
    EXPECT_FALSE(File::copy(at("a"), mDir.path() + "\\.\\a"));
    EXPECT_EQ(readText(at("a")), "kept");
    EXPECT_EQ(ErrorInfo::getLastError().errorCode(), -(10000 + EEXIST));
}

TEST_F(FileOperations, CopyOfALinkIsACopyOfItsFile) {
    writeText(at("real"), "content");
    std::filesystem::create_symlink("real", at("link"));
    EXPECT_TRUE(File::copy(at("link"), at("b")));
    EXPECT_FALSE(std::filesystem::is_symlink(at("b")));
    EXPECT_EQ(readText(at("b")), "content");
}

TEST_F(FileOperations, CopyGoesFromOneFileSystemToAnother) {
    std::string content(300000, 'x');
    content += "end";
    writeText(at("a"), content);
    const int memory = ::memfd_create("test", MFD_CLOEXEC);
    ASSERT_GE(memory, 0);
    const std::string path = "/proc/self/fd/" + std::to_string(memory);
    EXPECT_TRUE(File::copy(at("a"), path));
    EXPECT_TRUE(File::copy(path, at("b")));
    ::close(memory);
    EXPECT_EQ(readText(at("b")), content);
}

TEST_F(FileOperations, CopyOfMoreThanAPieceToAFullDiskFails) {
    writeText(at("a"), std::string(1 << 20, 'x'));
    EXPECT_FALSE(File::copy(at("a"), "/dev/full"));
    EXPECT_EQ(ErrorInfo::getLastError().errorCode(), -(10000 + ENOSPC));
    EXPECT_EQ(File::getLength(at("a")), 1U << 20);
}

TEST_F(FileOperations, CopyLeavesNothingOpen) {
    writeText(at("a"), "x");
    const auto open = [] {
        return std::distance(std::filesystem::directory_iterator("/proc/self/fd"),
                             std::filesystem::directory_iterator());
    };
    const auto before = open();
    EXPECT_TRUE(File::copy(at("a"), at("b")));
    EXPECT_FALSE(File::copy(at("a"), at("a")));
    EXPECT_FALSE(File::copy(at("a"), "/dev/full"));
    EXPECT_FALSE(File::copy(at("a"), mDir.path()));
    EXPECT_EQ(open(), before);
}

}  // namespace
