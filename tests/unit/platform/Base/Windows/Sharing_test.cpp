// Files that somebody has open, and what he lets others do to them meanwhile.
#include "../FileFixture.h"
#include "FileKinds.h"
#include "OtherProcess.h"
#include "WideText.h"

using namespace Public::Base;
using namespace support;

namespace {

DWORD attributesAt(const std::string& path) { return ::GetFileAttributesW(longPath(path).c_str()); }

void setAttributes(const std::string& path, DWORD attributes) {
    EXPECT_TRUE(::SetFileAttributesW(longPath(path).c_str(), attributes));
}

TEST_F(FileTest, OpenFileIsNotInheritedByPrograms) {
    File file(at("a"));
    ASSERT_TRUE(file.open(OpenMode_Create));
    const OtherProcess other(OtherProcess::Deed::Nothing, at("a"));
    ASSERT_TRUE(other.did());
    file.close();
    // If the other process had it too, nobody could open it for himself alone.
    EXPECT_NO_THROW(WithheldFile(at("a")));
}

TEST_F(FileTest, OneThatAnotherProcessKeepsForItselfIsThereButClosed) {
    writeText(at("a"), "kept");
    OtherProcess other(OtherProcess::Deed::Withhold, at("a"));
    ASSERT_TRUE(other.did());
    EXPECT_TRUE(File::access(at("a"), AccessMode_Exists));
    EXPECT_FALSE(File::isAbsent(at("a")));
    EXPECT_EQ(File::getLength(at("a")), 4U);
    EXPECT_TRUE(File::load(at("a")).empty());
    EXPECT_EQ(lastError(), errorOf(SystemError::Withheld));
    EXPECT_FALSE(File(at("a")).open(OpenMode_CreateKeep));
    EXPECT_FALSE(File::save(at("a"), SharedBuffer("new")));
    EXPECT_FALSE(File::copy(at("a"), at("b")));
    EXPECT_FALSE(File::remove(at("a")));
    EXPECT_EQ(lastError(), errorOf(SystemError::Withheld));
    EXPECT_FALSE(File::cut(at("a"), 1));
    EXPECT_EQ(MappedFile().open(at("a")), MappedFile::Result::CannotOpen);
    other.kill();
    EXPECT_EQ(readText(at("a")), "kept");
    EXPECT_EQ(filesBelow(mDir.path()), std::set<std::string>{"a"});
    EXPECT_TRUE(File::save(at("a"), SharedBuffer("new")));
}

TEST_F(ReplacedFile, StaysWhereItsReaderDoesNotShareItsRemoval) {
    writeText(at("a"), "kept");
    writeText(at("b"), "new");
    {
        const KeptFile reader(at("a"));
        EXPECT_FALSE(File::copy(at("b"), at("a")));
        EXPECT_FALSE(File::save(at("a"), SharedBuffer("new")));
    }
    EXPECT_EQ(readText(at("a")), "kept");
    EXPECT_EQ(filesBelow(mDir.path()), (std::set<std::string>{"a", "b"}));
}

TEST_F(ReplacedFile, KeepsItsAttributesWhenItIsSaved) {
    writeText(at("a"), "old");
    setAttributes(at("a"), FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM);
    EXPECT_TRUE(File::save(at("a"), SharedBuffer("new")));
    EXPECT_EQ(File::load(at("a")).toStdString(), "new");
    EXPECT_EQ(attributesAt(at("a")) & (FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM),
              DWORD{FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM});
}

TEST_F(ReplacedFile, TakesTheAttributesOfWhatIsCopiedOverIt) {
    writeText(at("hidden"), "new");
    setAttributes(at("hidden"), FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_READONLY);
    writeText(at("plain"), "plain");
    writeText(at("a"), "old");
    EXPECT_TRUE(File::copy(at("hidden"), at("a")));
    EXPECT_EQ(readText(at("a")), "new");
    EXPECT_TRUE(attributesAt(at("a")) & FILE_ATTRIBUTE_HIDDEN);
    EXPECT_TRUE(attributesAt(at("a")) & FILE_ATTRIBUTE_READONLY);
    EXPECT_TRUE(File::copy(at("plain"), at("a")));
    EXPECT_EQ(readText(at("a")), "plain");
    EXPECT_FALSE(attributesAt(at("a")) & (FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_READONLY));
}

TEST_F(ReplacedFile, ReadOnlyOneStaysSoWhenTheCopyFails) {
    writeText(at("a"), "new");
    writeText(at("b"), "kept");
    setAttributes(at("b"), FILE_ATTRIBUTE_READONLY);
    {
        const KeptFile reader(at("b"));
        EXPECT_FALSE(File::copy(at("a"), at("b")));
    }
    EXPECT_TRUE(attributesAt(at("b")) & FILE_ATTRIBUTE_READONLY);
    EXPECT_EQ(readText(at("b")), "kept");
}

TEST_F(FileTest, HiddenOneIsOpenedAndTruncated) {
    writeText(at("a"), "long content");
    setAttributes(at("a"), FILE_ATTRIBUTE_HIDDEN);
    File file(at("a"));
    ASSERT_TRUE(file.open(OpenMode_Create));
    EXPECT_EQ(File::getLength(at("a")), 0U);
    EXPECT_TRUE(file.puts("x"));
    file.close();
    EXPECT_TRUE(attributesAt(at("a")) & FILE_ATTRIBUTE_HIDDEN);
}

TEST_F(FileTest, RemoveThatFailsLeavesAReadOnlyFileReadOnly) {
    writeText(at("a"), "kept");
    const ReadOnlyFile readOnly(at("a"));
    {
        const KeptFile kept(at("a"));
        EXPECT_FALSE(File::remove(at("a")));
    }
    EXPECT_TRUE(attributesAt(at("a")) & FILE_ATTRIBUTE_READONLY);
}

TEST_F(MappedFileTest, CannotBeCutNorTruncated) {
    writeText(at("a"), "content");
    MappedFile file;
    ASSERT_EQ(file.open(at("a")), MappedFile::Result::Mapped);
    EXPECT_FALSE(File::cut(at("a"), 1));
    EXPECT_EQ(lastError(), -(10000 + ERROR_USER_MAPPED_FILE));
    EXPECT_FALSE(File(at("a")).open(OpenMode_Create));
    EXPECT_EQ(textOf(file), "content");
}

TEST_F(MappedFileTest, OneThatIsBeingWrittenIsNotMapped) {
    File writer(at("a"));
    ASSERT_TRUE(writer.open(OpenMode_Create));
    ASSERT_TRUE(writer.puts("content"));
    MappedFile file;
    EXPECT_EQ(file.open(at("a")), MappedFile::Result::CannotOpen);
    EXPECT_EQ(lastError(), errorOf(SystemError::Withheld));
    writer.close();
    EXPECT_EQ(file.open(at("a")), MappedFile::Result::Mapped);
}

TEST_F(FileOperations, CopyOverARunningProgramHappensWholeOrNotAtAll) {
    ASSERT_TRUE(File::copy(ownProgram(), at("program.exe")));
    writeText(at("new"), "next version");
    const uint64_t length = File::getLength(at("program.exe"));
    OtherProcess running(OtherProcess::Deed::Nothing, at("a"), at("program.exe"));
    ASSERT_TRUE(running.did());
    const bool copied = File::copy(at("new"), at("program.exe"));
    EXPECT_EQ(File::getLength(at("program.exe")), copied ? 12U : length);
    running.kill();
    EXPECT_EQ(filesBelow(mDir.path()), (std::set<std::string>{"new", "program.exe"}));
    EXPECT_TRUE(File::copy(at("new"), at("program.exe")));
    EXPECT_EQ(readText(at("program.exe")), "next version");
}

}  // namespace
