// Removing directories with the rights, links and queues of POSIX.
#include <sys/resource.h>
#include <sys/stat.h>

#include "../FileFixture.h"
#include "WithoutRights.h"

using namespace Public::Base;
using namespace support;

namespace {

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

TEST_F(RemoveDirectory, TakesLinksToNowhereAndQueues) {
    std::filesystem::create_directory(at("d"));
    std::filesystem::create_symlink("none", at("d/link"));
    std::filesystem::create_symlink("loop", at("d/loop"));
    ASSERT_EQ(::mkfifo(at("d/queue").c_str(), 0666), 0);
    EXPECT_TRUE(File::removeDirectory(at("d")));
    EXPECT_FALSE(File::access(at("d"), AccessMode_Exists));
}

TEST_F(RemoveDirectory, FailsAtWhatMayNotBeReadAndRemovesTheRest) {
    openToAll(mDir.path());
    const WithoutRights nobody;
    writeText(at("d/a/f"), "");
    writeText(at("d/closed/f"), "kept");
    writeText(at("d/z"), "");
    ::chmod(at("d/closed").c_str(), 0);
    EXPECT_FALSE(File::removeDirectory(at("d")));
    EXPECT_EQ(lastError(), -(10000 + EACCES));
    ::chmod(at("d/closed").c_str(), 0700);
    EXPECT_EQ(filesBelow(at("d")), std::set<std::string>{"closed/f"});
}

TEST_F(RemoveDirectory, FailsAtWhatMayNotBeChangedAndRemovesTheRest) {
    openToAll(mDir.path());
    const WithoutRights nobody;
    writeText(at("d/locked/f"), "kept");
    writeText(at("d/z"), "");
    ::chmod(at("d/locked").c_str(), 0500);
    EXPECT_FALSE(File::removeDirectory(at("d")));
    EXPECT_EQ(lastError(), -(10000 + EACCES));
    ::chmod(at("d/locked").c_str(), 0700);
    EXPECT_EQ(filesBelow(at("d")), std::set<std::string>{"locked/f"});
}

}  // namespace
