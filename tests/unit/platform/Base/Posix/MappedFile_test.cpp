// Mapped files with the queues, the devices and the many cases of POSIX.
#include <sys/stat.h>
#include <unistd.h>

#include "../FileFixture.h"

using namespace Public::Base;
using namespace support;

namespace {

TEST_F(MappedFileTest, ADeviceCannotBeMapped) {
    MappedFile file;
    EXPECT_EQ(file.open("/dev/null"), MappedFile::Result::CannotMap);
    EXPECT_EQ(file.size(), 0U);
}

/// Memory of this process that holds pages of files.
size_t filePages() {
    std::ifstream statistics("/proc/self/statm");
    size_t all = 0, resident = 0, shared = 0;
    statistics >> all >> resident >> shared;
    return shared * static_cast<size_t>(::sysconf(_SC_PAGESIZE));
}

TEST_F(MappedFileTest, ExactNameWinsOverOneOfAnotherCase) {
    writeText(at("LIB"), "upper");
    writeText(at("lib"), "lower");
    MappedFile file;
    ASSERT_EQ(file.open(at("lib")), MappedFile::Result::Mapped);
    EXPECT_EQ(file.data()[0], 'l');
}

TEST_F(MappedFileTest, WaitsForNobodyAtAQueue) {
    ASSERT_EQ(::mkfifo(at("queue").c_str(), 0666), 0);
    MappedFile file;
    EXPECT_EQ(file.open(at("queue")), MappedFile::Result::CannotMap);
}

TEST_F(MappedFileTest, TakesTheFirstByNameOfSeveralCases) {
    writeText(at("lIB"), "second");
    writeText(at("LIb"), "first");
    MappedFile file;
    ASSERT_EQ(file.open(at("lib")), MappedFile::Result::Mapped);
    EXPECT_EQ(textOf(file), "first");
}

TEST_F(MappedFileTest, ReleasedBytesTakeNoMemoryAndCanBeReadAgain) {
    constexpr size_t kSize = 32U << 20;
    writeText(at("a"), std::string(kSize, 'x'));
    MappedFile file;
    ASSERT_EQ(file.open(at("a")), MappedFile::Result::Mapped);
    const auto count = [&] { return std::count(file.data(), file.data() + kSize, 'x'); };
    EXPECT_EQ(count(), std::ptrdiff_t{kSize});
    const size_t before = filePages();
    file.release(file.data() + 1, kSize - 2);
    EXPECT_LT(filePages() + kSize / 2, before);
    EXPECT_EQ(count(), std::ptrdiff_t{kSize});
}

}  // namespace
