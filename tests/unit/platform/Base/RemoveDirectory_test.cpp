#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include "FileText.h"
#include "Public/Base/ErrorInfo.h"
#include "Public/Base/File.h"
#include "TempDir.h"
#include "WithoutRights.h"

using namespace Public::Base;
using support::readText;
using support::writeText;

namespace {

class RemoveDirectory : public testing::Test {
protected:
    std::string at(const std::string& name) const { return mDir.path() + "/" + name; }
    support::TempDir mDir;
};

TEST_F(RemoveDirectory, TakesAllThatItHolds) {
    writeText(at("d/x/y/f"), "1");
    writeText(at("d/.hidden"), "1");
    ::chmod(at("d/x/y/f").c_str(), 0444);
    EXPECT_TRUE(File::removeDirectory(at("d")));
    EXPECT_FALSE(File::access(at("d"), AccessMode_Exists));
}

TEST_F(RemoveDirectory, NeverFollowsALink) {
    writeText(at("outside/f"), "kept");
    writeText(at("d/x"), "1");
    std::filesystem::create_directory_symlink(at("outside"), at("d/link"));
    EXPECT_TRUE(File::removeDirectory(at("d")));
    EXPECT_EQ(readText(at("outside/f")), "kept");
}

TEST_F(RemoveDirectory, OfALinkTakesTheLinkAlone) {
    writeText(at("outside/f"), "kept");
    std::filesystem::create_directory_symlink(at("outside"), at("link"));
    EXPECT_TRUE(File::removeDirectory(at("link")));
    EXPECT_FALSE(std::filesystem::is_symlink(at("link")));
    EXPECT_EQ(readText(at("outside/f")), "kept");
}

TEST_F(RemoveDirectory, OfAnAbsentOneFails) {
    EXPECT_FALSE(File::removeDirectory(at("none")));
    EXPECT_EQ(ErrorInfo::getLastError().errorCode(), -(10000 + ENOENT));
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
    EXPECT_EQ(support::filesBelow(mDir.path()), std::set<std::string>{"d2/f"});
}

TEST_F(RemoveDirectory, BearsAnyDepthWithFewDescriptors) {
    std::string deep = "d";
    for (int level = 0; level < 1500; ++level) deep += "/x";
    ASSERT_TRUE(File::makeDirectory(at(deep)));
    rlimit before{};
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &before), 0);
    const rlimit few{std::min<rlim_t>(before.rlim_max, 64), before.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &few), 0);
    EXPECT_TRUE(File::removeDirectory(at("d")));
    ::setrlimit(RLIMIT_NOFILE, &before);
    EXPECT_FALSE(File::access(at("d"), AccessMode_Exists));
}

TEST_F(RemoveDirectory, TakesManyEntries) {
    for (int i = 0; i < 1200; ++i) writeText(at("d/" + std::to_string(i % 40) + "/" + std::to_string(i)), "");
    EXPECT_TRUE(File::removeDirectory(at("d")));
    EXPECT_FALSE(File::access(at("d"), AccessMode_Exists));
}

TEST_F(RemoveDirectory, TakesLinksToNowhereAndQueues) {
    std::filesystem::create_directory(at("d"));
    std::filesystem::create_symlink("none", at("d/link"));
    std::filesystem::create_symlink("loop", at("d/loop"));
    ASSERT_EQ(::mkfifo(at("d/queue").c_str(), 0666), 0);
    EXPECT_TRUE(File::removeDirectory(at("d")));
    EXPECT_FALSE(File::access(at("d"), AccessMode_Exists));
}

TEST_F(RemoveDirectory, RefusesOneThatIsNamedByPoints) {
    writeText(at("d/f"), "kept");
    writeText(at("d/sub/f"), "kept");
    for (const char* name : {"d/.", "d/./", "d\\.", "d/sub/..", "d\\sub\\..\\"}) {
        EXPECT_FALSE(File::removeDirectory(at(name))) << name;
        EXPECT_EQ(ErrorInfo::getLastError().errorCode(), -(10000 + EINVAL));
    }
    EXPECT_EQ(support::filesBelow(mDir.path()), (std::set<std::string>{"d/f", "d/sub/f"}));
}

TEST_F(RemoveDirectory, FailsAtWhatMayNotBeReadAndRemovesTheRest) {
    support::openToAll(mDir.path());
    const support::WithoutRights nobody;
    writeText(at("d/a/f"), "");
    writeText(at("d/closed/f"), "kept");
    writeText(at("d/z"), "");
    ::chmod(at("d/closed").c_str(), 0);
    EXPECT_FALSE(File::removeDirectory(at("d")));
    EXPECT_EQ(ErrorInfo::getLastError().errorCode(), -(10000 + EACCES));
    ::chmod(at("d/closed").c_str(), 0700);
    EXPECT_EQ(support::filesBelow(at("d")), std::set<std::string>{"closed/f"});
}

TEST_F(RemoveDirectory, FailsAtWhatMayNotBeChangedAndRemovesTheRest) {
    support::openToAll(mDir.path());
    const support::WithoutRights nobody;
    writeText(at("d/locked/f"), "kept");
    writeText(at("d/z"), "");
    ::chmod(at("d/locked").c_str(), 0500);
    EXPECT_FALSE(File::removeDirectory(at("d")));
    EXPECT_EQ(ErrorInfo::getLastError().errorCode(), -(10000 + EACCES));
    ::chmod(at("d/locked").c_str(), 0700);
    EXPECT_EQ(support::filesBelow(at("d")), std::set<std::string>{"locked/f"});
}

TEST_F(RemoveDirectory, FailsAtOneThatMayNotBeOpenedAtAll) {
    writeText(at("d/f"), "kept");
    ::chmod(at("d").c_str(), 0);
    {
        const support::WithoutRights nobody;
        EXPECT_FALSE(File::removeDirectory(at("d")));
        EXPECT_EQ(ErrorInfo::getLastError().errorCode(), -(10000 + EACCES));
    }
    ::chmod(at("d").c_str(), 0755);
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

}  // namespace
