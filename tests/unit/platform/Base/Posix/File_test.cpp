// An open file where POSIX has an answer of its own.
#include <fcntl.h>

#include "../FileFixture.h"

using namespace Public::Base;
using namespace support;

namespace {

TEST_F(FileTest, WritingToAFullDiskIsAShortWriteWithTheSystemsError) {
    File file;
    ASSERT_TRUE(file.open("/dev/full", 0x1002));
    EXPECT_EQ(file.write("abc", 3), 0U);
    EXPECT_EQ(lastError(), -(10000 + ENOSPC));
    EXPECT_FALSE(file.puts("abc"));
}

TEST_F(FileTest, OpenFileIsNotInheritedByPrograms) {
    File file(at("a"));
    ASSERT_TRUE(file.open(OpenMode_Create));
    bool found = false;
    for (int fd = 3; fd < 1024; ++fd) {
        std::error_code none;
        const auto target = std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(fd), none);
        if (target != at("a")) continue;
        found = true;
        EXPECT_NE(::fcntl(fd, F_GETFD) & FD_CLOEXEC, 0);
    }
    EXPECT_TRUE(found);
}

}  // namespace
