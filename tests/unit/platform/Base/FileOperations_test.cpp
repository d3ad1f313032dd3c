#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "FileText.h"
#include "Public/Base/ErrorInfo.h"
#include "Public/Base/File.h"
#include "TempDir.h"

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

TEST_F(FileOperations, RemoveDirectoryTakesAllThatItHolds) {
    writeText(at("d/x/y/f"), "1");
    writeText(at("d/.hidden"), "1");
    ::chmod(at("d/x/y/f").c_str(), 0444);
    EXPECT_TRUE(File::removeDirectory(at("d")));
    EXPECT_FALSE(File::access(at("d"), AccessMode_Exists));
}

TEST_F(FileOperations, RemoveDirectoryNeverFollowsALink) {
    writeText(at("outside/f"), "kept");
    writeText(at("d/x"), "1");
    std::filesystem::create_directory_symlink(at("outside"), at("d/link"));
    EXPECT_TRUE(File::removeDirectory(at("d")));
    EXPECT_EQ(readText(at("outside/f")), "kept");
}

TEST_F(FileOperations, RemoveDirectoryOfALinkTakesTheLinkAlone) {
    writeText(at("outside/f"), "kept");
    std::filesystem::create_directory_symlink(at("outside"), at("link"));
    EXPECT_TRUE(File::removeDirectory(at("link")));
    EXPECT_FALSE(std::filesystem::is_symlink(at("link")));
    EXPECT_EQ(readText(at("outside/f")), "kept");
}

TEST_F(FileOperations, RemoveDirectoryOfAnAbsentOneFails) {
    EXPECT_FALSE(File::removeDirectory(at("none")));
    EXPECT_EQ(ErrorInfo::getLastError().errorCode(), -(10000 + ENOENT));
}

TEST_F(FileOperations, RemoveDirectoryRefusesAFileAndTheRootAndNothing) {
    writeText(at("f"), "kept");
    EXPECT_FALSE(File::removeDirectory(at("f")));
    EXPECT_FALSE(File::removeDirectory("/"));
    EXPECT_FALSE(File::removeDirectory("\\"));
    EXPECT_FALSE(File::removeDirectory(""));
    EXPECT_EQ(readText(at("f")), "kept");
}

TEST_F(FileOperations, RemoveDirectoryBearsATrailingSeparator) {
    writeText(at("d/f"), "");
    EXPECT_TRUE(File::removeDirectory(at("d/")));
    EXPECT_FALSE(File::access(at("d"), AccessMode_Exists));
}

TEST_F(FileOperations, CopyByRootDropsTheRightsOfAnotherOwner) {
    writeText(at("a"), "x");
    const bool root = ::geteuid() == 0;
    if (root) {
        ASSERT_EQ(::chown(at("a").c_str(), 4321, 4321), 0);
    }
    ASSERT_EQ(::chmod(at("a").c_str(), 06755), 0);
    ASSERT_TRUE(File::copy(at("a"), at("b")));
    struct stat status {};
    ASSERT_EQ(::stat(at("b").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, root ? 0755U : 06755U);
}

TEST_F(FileOperations, PipesAreRefusedAndHoldNobodyUp) {
    ASSERT_EQ(::mkfifo(at("pipe").c_str(), 0600), 0);
    writeText(at("a"), "x");
    EXPECT_FALSE(File::copy(at("pipe"), at("b")));
    EXPECT_EQ(ErrorInfo::getLastError().errorCode(), -(10000 + ENXIO));
    EXPECT_FALSE(File::copy(at("a"), at("pipe")));
    EXPECT_FALSE(File().open(at("pipe"), OpenMode_Read));
    EXPECT_TRUE(File::load(at("pipe")).empty());
}

TEST_F(FileOperations, MakeDirectoryTellsThatItHasNoRightToIt) {
    ASSERT_TRUE(File::makeDirectory(at("locked")));
    ::chmod(mDir.path().c_str(), 0755);
    ::chmod(at("locked").c_str(), 0555);
    const pid_t child = ::fork();  // root would have the right
    if (child == 0) {
        if (::geteuid() == 0 && ::setuid(65534) != 0) ::_exit(0);
        const bool made = File::makeDirectory(at("locked/a/b"));
        ::_exit(made ? 0 : -(ErrorInfo::getLastError().errorCode() + 10000));
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(WEXITSTATUS(status), EACCES);
}

TEST_F(FileOperations, RemoveDirectoryRefusesThePoints) {
    writeText(at("d/a"), "x");
    for (const char* path : {"d/.", "d/./", "d/../d/..", "d/.."}) {
        EXPECT_FALSE(File::removeDirectory(at(path))) << path;
        EXPECT_EQ(ErrorInfo::getLastError().errorCode(), -(10000 + EINVAL)) << path;
    }
    EXPECT_EQ(readText(at("d/a")), "x");
}

}  // namespace
