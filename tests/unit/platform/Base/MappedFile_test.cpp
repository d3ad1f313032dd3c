#include "FileFixture.h"
#include "FileKinds.h"
#include "OpenFiles.h"
#include "OtherProcess.h"

using namespace Public::Base;
using namespace support;

namespace {

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
    EXPECT_EQ(file.size(), 0U);
}

TEST_F(MappedFileTest, MapsAFileOfAnotherCase) {
    writeText(at("LibX.DLL"), "x");
    MappedFile file;
    EXPECT_EQ(file.open(at("libx.dll")), MappedFile::Result::Mapped);
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
    EXPECT_EQ(lastError(), errorOf(SystemError::NotThere));
    EXPECT_EQ(file.open(mDir.path()), MappedFile::Result::CannotOpen);
    EXPECT_EQ(lastError(), errorOf(SystemError::IsDirectory));
    EXPECT_EQ(file.open(at("empty")), MappedFile::Result::CannotMap);
    EXPECT_EQ(lastError(), errorOf(SystemError::EmptyToMap));
}

TEST_F(MappedFileTest, WithoutTheRightToReadItCannotBeOpened) {
    writeText(at("a"), "x");
    const WithheldFile withheld(at("a"));
    MappedFile file;
    EXPECT_EQ(file.open(at("a")), MappedFile::Result::CannotOpen);
    EXPECT_EQ(lastError(), errorOf(SystemError::Withheld));
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
    const size_t before = countOpenHere();
    MappedFile file;
    ASSERT_EQ(file.open(at("a")), MappedFile::Result::Mapped);
    EXPECT_EQ(countOpenHere(), before);
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
    makeSparse(at("big"), kSize);
    MappedFile file;
    EXPECT_EQ(file.open(at("big")), MappedFile::Result::Mapped);
    EXPECT_EQ(file.size(), kSize);
}

TEST_F(MappedFileTest, ReleasedBytesCanBeReadAgain) {
    constexpr size_t kSize = 1U << 20;
    writeText(at("a"), std::string(kSize, 'x'));
    MappedFile file;
    ASSERT_EQ(file.open(at("a")), MappedFile::Result::Mapped);
    const auto count = [&] { return std::count(file.data(), file.data() + kSize, 'x'); };
    EXPECT_EQ(count(), std::ptrdiff_t{kSize});
    file.release(file.data() + 1, kSize - 2);
    file.release(file.data(), 0);
    EXPECT_EQ(count(), std::ptrdiff_t{kSize});
}

TEST_F(MappedFileTest, IsReplacedOnlyByAnotherFile) {
    writeText(at("a"), "content");
    writeText(at("b"), "content");
    MappedFile file;
    ASSERT_EQ(file.open(at("a")), MappedFile::Result::Mapped);
    EXPECT_FALSE(file.isReplacedAt(at("a")));
    EXPECT_TRUE(file.isReplacedAt(at("b")));
    EXPECT_FALSE(file.isReplacedAt(at("none")));
    std::filesystem::create_hard_link(at("a"), at("same"));
    EXPECT_FALSE(file.isReplacedAt(at("same")));
}

TEST_F(MappedFileTest, MayBeMappedByAnotherProcessMeanwhile) {
    writeText(at("a"), "content");
    MappedFile file;
    ASSERT_EQ(file.open(at("a")), MappedFile::Result::Mapped);
    EXPECT_TRUE(OtherProcess(OtherProcess::Deed::MapFile, at("a")).did());
    EXPECT_TRUE(OtherProcess(OtherProcess::Deed::OpenToRead, at("a")).did());
    EXPECT_EQ(textOf(file), "content");
}

}  // namespace
