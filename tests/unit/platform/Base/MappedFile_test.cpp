#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include "FileText.h"
#include "Public/Base/ErrorInfo.h"
#include "Public/Base/System.h"
#include "TempDir.h"
#include "WithoutRights.h"

using namespace Public::Base;
using support::writeText;

namespace {

class MappedFileTest : public testing::Test {
protected:
    std::string at(const std::string& name) const { return mDir.path() + "/" + name; }
    static std::string textOf(const MappedFile& file) {
        return {reinterpret_cast<const char*>(file.data()), file.size()};
    }
    support::TempDir mDir;
};

TEST_F(MappedFileTest, MapsAFile) {
    writeText(at("a"), "hello");
    MappedFile file;
    ASSERT_EQ(file.open(at("a")), MappedFile::Result::Mapped);
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(file.data()), file.size()), "hello");
    file.close();
    EXPECT_EQ(file.size(), 0U);
    EXPECT_EQ(file.data(), nullptr);
}

TEST_F(MappedFileTest, TellsAFileThatCannotBeOpenedFromOneThatCannotBeMapped) {
    writeText(at("empty"), "");
    MappedFile file;
    EXPECT_EQ(file.open(at("none")), MappedFile::Result::CannotOpen);
    EXPECT_EQ(file.open(mDir.path()), MappedFile::Result::CannotOpen);
    EXPECT_EQ(file.open(""), MappedFile::Result::CannotOpen);
    EXPECT_EQ(file.open(at("empty")), MappedFile::Result::CannotMap);
    EXPECT_EQ(file.open("/dev/null"), MappedFile::Result::CannotMap);
    EXPECT_EQ(file.size(), 0U);
}

TEST_F(MappedFileTest, MapsAFileOfAnotherCase) {
    writeText(at("LibX.DLL"), "x");
    MappedFile file;
    EXPECT_EQ(file.open(at("libx.dll")), MappedFile::Result::Mapped);
}

TEST_F(MappedFileTest, ExactNameWinsOverOneOfAnotherCase) {
    writeText(at("LIB"), "upper");
    writeText(at("lib"), "lower");
    MappedFile file;
    ASSERT_EQ(file.open(at("lib")), MappedFile::Result::Mapped);
    EXPECT_EQ(file.data()[0], 'l');
}

TEST_F(MappedFileTest, OpeningAgainReplacesTheMapping) {
    writeText(at("a"), "1");
    writeText(at("b"), "22");
    MappedFile file;
    ASSERT_EQ(file.open(at("a")), MappedFile::Result::Mapped);
    ASSERT_EQ(file.open(at("b")), MappedFile::Result::Mapped);
    EXPECT_EQ(file.size(), 2U);
}

TEST_F(MappedFileTest, IsEmptyUntilOpenedAndAfterAFailure) {
    writeText(at("a"), "x");
    MappedFile file;
    EXPECT_EQ(file.data(), nullptr);
    EXPECT_EQ(file.size(), 0U);
    ASSERT_EQ(file.open(at("a")), MappedFile::Result::Mapped);
    EXPECT_EQ(file.open(at("none")), MappedFile::Result::CannotOpen);
    EXPECT_EQ(file.data(), nullptr);
    EXPECT_EQ(file.size(), 0U);
}

TEST_F(MappedFileTest, MayBeClosedTwice) {
    writeText(at("a"), "x");
    MappedFile file;
    ASSERT_EQ(file.open(at("a")), MappedFile::Result::Mapped);
    file.close();
    file.close();
    EXPECT_EQ(file.data(), nullptr);
}

TEST_F(MappedFileTest, TellsWhyItCannotBeOpenedOrMapped) {
    writeText(at("empty"), "");
    MappedFile file;
    EXPECT_EQ(file.open(at("none")), MappedFile::Result::CannotOpen);
    EXPECT_EQ(ErrorInfo::getLastError().errorCode(), -(10000 + ENOENT));
    EXPECT_EQ(file.open(mDir.path()), MappedFile::Result::CannotOpen);
    EXPECT_EQ(ErrorInfo::getLastError().errorCode(), -(10000 + EISDIR));
    EXPECT_EQ(file.open(at("empty")), MappedFile::Result::CannotMap);
    EXPECT_EQ(ErrorInfo::getLastError().errorCode(), -(10000 + EINVAL));
}

TEST_F(MappedFileTest, WithoutTheRightToReadItCannotBeOpened) {
    writeText(at("a"), "x");
    ::chmod(at("a").c_str(), 0);
    const support::WithoutRights nobody;
    MappedFile file;
    EXPECT_EQ(file.open(at("a")), MappedFile::Result::CannotOpen);
    EXPECT_EQ(ErrorInfo::getLastError().errorCode(), -(10000 + EACCES));
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

TEST_F(MappedFileTest, FindsAnotherCaseBehindBackslashes) {
    writeText(at("sub/LibX.DLL"), "x");
    MappedFile file;
    EXPECT_EQ(file.open(mDir.path() + "\\sub\\libx.dll"), MappedFile::Result::Mapped);
}

TEST_F(MappedFileTest, StaysWhenTheFileIsRemoved) {
    writeText(at("a"), "content");
    MappedFile file;
    ASSERT_EQ(file.open(at("a")), MappedFile::Result::Mapped);
    std::filesystem::remove(at("a"));
    EXPECT_EQ(textOf(file), "content");
}

TEST_F(MappedFileTest, NeedsNoOpenDescriptor) {
    writeText(at("a"), "content");
    const auto open = [] {
        return std::distance(std::filesystem::directory_iterator("/proc/self/fd"),
                             std::filesystem::directory_iterator());
    };
    const auto before = open();
    MappedFile file;
    ASSERT_EQ(file.open(at("a")), MappedFile::Result::Mapped);
    EXPECT_EQ(open(), before);
}

TEST_F(MappedFileTest, SeveralMayMapOneFile) {
    writeText(at("a"), "content");
    MappedFile first;
    MappedFile second;
    ASSERT_EQ(first.open(at("a")), MappedFile::Result::Mapped);
    ASSERT_EQ(second.open(at("a")), MappedFile::Result::Mapped);
    first.close();
    EXPECT_EQ(textOf(second), "content");
}

TEST_F(MappedFileTest, ReachesBeyondFourGigabytes) {
    constexpr size_t kSize = (size_t{1} << 32) + 1;
    const int memory = ::memfd_create("test", MFD_CLOEXEC);
    ASSERT_GE(memory, 0);
    ASSERT_EQ(::ftruncate(memory, static_cast<off_t>(kSize)), 0);
    MappedFile file;
    EXPECT_EQ(file.open("/proc/self/fd/" + std::to_string(memory)), MappedFile::Result::Mapped);
    EXPECT_EQ(file.size(), kSize);
    ::close(memory);
}

/// Memory of this process that holds pages of files.
size_t filePages() {
    std::ifstream statistics("/proc/self/statm");
    size_t all = 0, resident = 0, shared = 0;
    statistics >> all >> resident >> shared;
    return shared * static_cast<size_t>(::sysconf(_SC_PAGESIZE));
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
