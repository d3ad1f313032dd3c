// Files that take another one's place, with the permissions and links of POSIX.
#include <sys/stat.h>

#include "../FileFixture.h"

using namespace Public::Base;
using namespace support;

namespace {

mode_t modeOf(const std::string& path) {
    struct stat status {};
    EXPECT_EQ(::stat(path.c_str(), &status), 0);
    return status.st_mode & 07777;
}

TEST_F(ReplacedFile, SaveKeepsItsPermissions) {
    writeText(at("a"), "old");
    ::chmod(at("a").c_str(), 0640);
    EXPECT_TRUE(File::save(at("a"), SharedBuffer("new")));
    EXPECT_EQ(modeOf(at("a")), 0640U);
}

TEST_F(ReplacedFile, CopyFollowsALinkToItsFile) {
    writeText(at("a"), "new");
    writeText(at("d/real"), "old");
    std::filesystem::create_symlink("d/real", at("link"));
    EXPECT_TRUE(File::copy(at("a"), at("link")));
    EXPECT_TRUE(std::filesystem::is_symlink(at("link")));
    EXPECT_EQ(readText(at("d/real")), "new");
    EXPECT_EQ(filesBelow(at("d")), std::set<std::string>{"real"});
}

TEST_F(ReplacedFile, SaveMakesTheFileThatALinkNames) {
    std::filesystem::create_symlink("none", at("link"));
    EXPECT_TRUE(File::save(at("link"), SharedBuffer("new")));
    EXPECT_EQ(readText(at("none")), "new");
    EXPECT_TRUE(std::filesystem::is_symlink(at("link")));
}

TEST_F(ReplacedFile, AbsenceIsToldFromWhatCannotBeLookedAt) {
    writeText(at("a"), "x");
    std::filesystem::create_symlink("loop", at("loop"));
    std::filesystem::create_symlink("none", at("link"));
    EXPECT_FALSE(File::isAbsent(at("a")));
    EXPECT_FALSE(File::isAbsent(mDir.path()));
    EXPECT_TRUE(File::isAbsent(at("none")));
    EXPECT_TRUE(File::isAbsent(at("link")));
    EXPECT_TRUE(File::isAbsent(at("a/below")));
    EXPECT_TRUE(File::isAbsent(""));
    EXPECT_FALSE(File::isAbsent(at("loop")));
    EXPECT_EQ(lastError(), -(10000 + ELOOP));
}

}  // namespace
