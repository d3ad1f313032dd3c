// Files as a whole where POSIX has links to them, and files that are none.
#include "../FileFixture.h"
#include "MemoryFile.h"

using namespace Public::Base;
using namespace support;

namespace {

TEST_F(FileTest, SaveToAFullDiskFails) { EXPECT_FALSE(File::save("/dev/full", SharedBuffer("x"))); }

TEST_F(FileTest, LoadOfMoreThanMemoryHoldsIsEmptyAndThrowsNothing) {
    const MemoryFile file;
    ASSERT_EQ(::ftruncate(file.fd(), INT64_MAX), 0);
    EXPECT_TRUE(File::load(file.path()).empty());
    EXPECT_EQ(lastError(), ErrorCode_Failed);
}

TEST_F(FileTest, LoadOfWhatFaultsIsEmptyAndTellsWhy) {
    EXPECT_TRUE(File::load("/proc/self/mem").empty());
    EXPECT_EQ(lastError(), -(10000 + EIO));
}

TEST_F(FileTest, LoadReadsFilesThatTellNoLength) {
    EXPECT_EQ(File::getLength("/proc/self/status"), 0U);
    EXPECT_EQ(File::load("/proc/self/status").toStdString().rfind("Name:", 0), 0U);
}

TEST_F(FileTest, SaveFollowsALinkToItsFile) {
    writeText(at("real"), "old");
    std::filesystem::create_symlink("real", at("link"));
    EXPECT_TRUE(File::save(at("link"), SharedBuffer("new")));
    EXPECT_EQ(readText(at("real")), "new");
    EXPECT_TRUE(std::filesystem::is_symlink(at("link")));
}

TEST_F(FileTest, RemoveOfALinkKeepsItsFile) {
    writeText(at("real"), "kept");
    std::filesystem::create_symlink("real", at("link"));
    EXPECT_TRUE(File::remove(at("link")));
    EXPECT_EQ(readText(at("real")), "kept");
}

TEST_F(FileTest, LengthFollowsALink) {
    writeText(at("real"), "12345");
    std::filesystem::create_symlink("real", at("link"));
    EXPECT_EQ(File::getLength(at("link")), 5U);
}

TEST_F(FileTest, AccessOfALinkThatLeadsNowhereFails) {
    std::filesystem::create_symlink("none", at("link"));
    EXPECT_FALSE(File::access(at("link"), AccessMode_Exists));
}

}  // namespace
