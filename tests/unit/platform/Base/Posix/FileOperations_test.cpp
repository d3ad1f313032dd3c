// What is done to files by path, with the rights, links and special files of POSIX.
#include <sys/stat.h>

#include <cstdio>

#include "../FileFixture.h"
#include "MemoryFile.h"
#include "WithoutRights.h"

using namespace Public::Base;
using namespace support;

namespace {

mode_t modeOf(const std::string& path) {
    struct stat status {};
    EXPECT_EQ(::stat(path.c_str(), &status), 0);
    return status.st_mode & 0777;
}

TEST_F(FileOperations, CopyToAFullDiskFailsWithTheSystemsError) {
    writeText(at("a"), "x");
    EXPECT_FALSE(File::copy(at("a"), "/dev/full"));
    EXPECT_EQ(lastError(), -(10000 + ENOSPC));
}

TEST_F(FileOperations, CopyReadsSpecialFilesToo) {
    EXPECT_TRUE(File::copy("/proc/self/cmdline", at("b")));
    EXPECT_NE(readText(at("b")).value_or(""), "");
}

TEST_F(FileOperations, MakeDirectoryTellsWhatRefusedIt) {
    ::chmod(mDir.path().c_str(), 0555);
    {
        const WithoutRights nobody;
        EXPECT_FALSE(File::makeDirectory(at("x/y")));
        EXPECT_EQ(lastError(), -(10000 + EACCES));
    }
    ::chmod(mDir.path().c_str(), 0755);
}

TEST_F(FileOperations, MakeDirectoryNeedsNoRightOnWhatIsThereAlready) {
    ASSERT_TRUE(File::makeDirectory(at("x/y")));
    openToAll(at("x/y"));
    const WithoutRights nobody;
    EXPECT_TRUE(File::makeDirectory(at("x/y/z")));
}

TEST_F(FileOperations, MakeDirectoryFailsWhereALinkLeadsNowhere) {
    std::filesystem::create_symlink("none", at("link"));
    EXPECT_FALSE(File::makeDirectory(at("link")));
    EXPECT_EQ(lastError(), -(10000 + ENOTDIR));
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
    openToAll(mDir.path());
    const WithoutRights nobody;
    EXPECT_TRUE(File::copy(at("a"), at("b")));
    EXPECT_EQ(readText(at("b")), "new");
    EXPECT_EQ(modeOf(at("b")), 0644U);
}

TEST_F(FileOperations, CopyIntoADirectoryWithoutTheRightFails) {
    writeText(at("a"), "x");
    std::filesystem::create_directory(at("d"));
    ::chmod(at("d").c_str(), 0555);
    const WithoutRights nobody;
    EXPECT_FALSE(File::copy(at("a"), at("d/b")));
    EXPECT_EQ(lastError(), -(10000 + EACCES));
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
    EXPECT_EQ(lastError(), -(10000 + EEXIST));
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
    EXPECT_EQ(lastError(), -(10000 + ENOSPC));
    EXPECT_EQ(File::getLength(at("a")), 1U << 20);
}

}  // namespace
