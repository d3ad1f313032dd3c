// A file that is open: its modes, its place, its lines.
#include "FileFixture.h"
#include "FileKinds.h"
#include "FileSizeLimit.h"
#include "OtherProcess.h"

using namespace Public::Base;
using namespace support;

namespace {

TEST_F(FileTest, CreateModeMakesTheFile) {
    File file;
    ASSERT_TRUE(file.open(at("a"), OpenMode_Create));
    EXPECT_EQ(file.write("abc", 3), 3U);
    file.close();
    EXPECT_EQ(readText(at("a")), "abc");
}

TEST_F(FileTest, CreateModeTruncatesWhatIsThere) {
    writeText(at("a"), "long content");
    File file(at("a"));
    ASSERT_TRUE(file.open(0x1001));
    file.close();
    EXPECT_EQ(readText(at("a")), "");
}

TEST_F(FileTest, CreateKeepModeTruncatesNothingAndReadsToo) {
    writeText(at("a"), "abcdef");
    File file(at("a"));
    ASSERT_TRUE(file.open(0x1002));
    EXPECT_EQ(file.write("XY", 2), 2U);
    char rest[8] = {};
    EXPECT_EQ(file.read(rest, 8), 4U);
    EXPECT_STREQ(rest, "cdef");
    file.close();
    EXPECT_EQ(readText(at("a")), "XYcdef");
}

TEST_F(FileTest, CreateKeepModeMakesAMissingFile) {
    File file(at("a"));
    EXPECT_TRUE(file.open(0x1002));
    EXPECT_TRUE(File::access(at("a"), AccessMode_Exists));
}

TEST_F(FileTest, BothReadModesRead) {
    writeText(at("a"), "abc");
    for (const int mode : {0, 2}) {
        File file(at("a"));
        ASSERT_TRUE(file.open(mode));
        char text[4] = {};
        EXPECT_EQ(file.read(text, 3), 3U);
        EXPECT_STREQ(text, "abc");
    }
}

TEST_F(FileTest, ReadModeDoesNotWrite) {
    writeText(at("a"), "abc");
    File file(at("a"));
    ASSERT_TRUE(file.open(2));
    EXPECT_EQ(file.write("x", 1), 0U);
    EXPECT_EQ(readText(at("a")), "abc");
}

TEST_F(FileTest, OtherModesAreRefused) {
    writeText(at("a"), "abc");
    for (const int mode : {1, 3, 0x1000, -1}) {
        File file(at("a"));
        EXPECT_FALSE(file.open(mode)) << mode;
    }
    EXPECT_EQ(readText(at("a")), "abc");
}

TEST_F(FileTest, OpeningAMissingFileForReadingFailsWithTheSystemsError) {
    File file(at("none"));
    EXPECT_FALSE(file.open(2));
    EXPECT_EQ(lastError(), errorOf(SystemError::NotThere));
    EXPECT_FALSE(file.isOpen());
}

TEST_F(FileTest, OpeningADirectoryIsRefused) {
    for (const int mode : {0, 2, 0x1001, 0x1002}) {
        File file(mDir.path());
        EXPECT_FALSE(file.open(mode)) << mode;
    }
}

TEST_F(FileTest, EmptyPathAndZeroByteAreRefused) {
    File file;
    EXPECT_FALSE(file.open(2));
    EXPECT_FALSE(file.open("", 0x1001));
    EXPECT_FALSE(file.open(at(std::string("a\0b", 3)), 0x1001));
    EXPECT_TRUE(filesBelow(mDir.path()).empty());
}

TEST_F(FileTest, BackslashesSeparateToo) {
    ASSERT_TRUE(File::makeDirectory(mDir.path() + "\\x\\y"));
    ASSERT_TRUE(File::save(mDir.path() + "\\x/y\\f", SharedBuffer("1")));
    EXPECT_EQ(readText(at("x/y/f")), "1");
}

TEST_F(FileTest, ClosedFileReadsWritesAndSeeksNothing) {
    File file(at("a"));
    char byte = 0;
    EXPECT_EQ(file.read(&byte, 1), 0U);
    EXPECT_EQ(file.write("x", 1), 0U);
    EXPECT_EQ(file.seek(0, SeekPosition_Begin), -1);
    EXPECT_EQ(file.getPosition(), -1);
    EXPECT_FALSE(file.flush());
    file.close();
    EXPECT_FALSE(file.isOpen());
}

TEST_F(FileTest, ReadStopsAtTheEnd) {
    writeText(at("a"), "abc");
    File file(at("a"));
    ASSERT_TRUE(file.open(2));
    char text[10] = {};
    EXPECT_EQ(file.read(text, 10), 3U);
    EXPECT_EQ(file.read(text, 10), 0U);
}

TEST_F(FileTest, SeeksFromAllThreePlaces) {
    writeText(at("a"), "0123456789");
    File file(at("a"));
    ASSERT_TRUE(file.open(2));
    EXPECT_EQ(file.seek(4, SeekPosition_Begin), 4);
    EXPECT_EQ(file.seek(2, SeekPosition_Current), 6);
    EXPECT_EQ(file.seek(-1, SeekPosition_End), 9);
    EXPECT_EQ(file.getPosition(), 9);
    EXPECT_EQ(file.seek(-100, SeekPosition_Begin), -1);
    EXPECT_EQ(file.getPosition(), 9);
}

TEST_F(FileTest, OpeningAnotherPathClosesTheFirst) {
    File file;
    ASSERT_TRUE(file.open(at("a"), 0x1001));
    ASSERT_TRUE(file.open(at("b"), 0x1001));
    EXPECT_EQ(file.write("x", 1), 1U);
    file.close();
    EXPECT_EQ(readText(at("a")), "");
    EXPECT_EQ(readText(at("b")), "x");
}

TEST_F(FileTest, ReadsAndWritesLines) {
    File file;
    ASSERT_TRUE(file.open(at("a"), 0x1001));
    EXPECT_TRUE(file.puts("one\r\ntwo\n\nlast"));
    ASSERT_TRUE(file.open(at("a"), 2));
    std::string line;
    std::vector<std::string> lines;
    while (file.gets(line)) lines.push_back(line);
    EXPECT_EQ(lines, (std::vector<std::string>{"one", "two", "", "last"}));
}

TEST_F(FileTest, FileThatMayNotBeReadIsRefused) {
    writeText(at("a"), "x");
    const WithheldFile withheld(at("a"));
    File file(at("a"));
    EXPECT_FALSE(file.open(OpenMode_Read));
    EXPECT_EQ(lastError(), errorOf(SystemError::Withheld));
    EXPECT_TRUE(File::load(at("a")).empty());
}

TEST_F(FileTest, CreateModeDoesNotRead) {
    File file(at("a"));
    ASSERT_TRUE(file.open(OpenMode_Create));
    ASSERT_TRUE(file.puts("abc"));
    ASSERT_EQ(file.seek(0, SeekPosition_Begin), 0);
    char text[4] = {};
    EXPECT_EQ(file.read(text, 3), 0U);
    EXPECT_EQ(lastError(), errorOf(SystemError::NoRight));
}

TEST_F(FileTest, FailedOpenLeavesTheFileClosed) {
    writeText(at("a"), "abc");
    File file;
    ASSERT_TRUE(file.open(at("a"), OpenMode_Read));
    EXPECT_FALSE(file.open(at("none"), OpenMode_Read));
    EXPECT_FALSE(file.isOpen());
}

TEST_F(FileTest, PathOfALaterOpenBecomesTheObjects) {
    File file(at("a"));
    EXPECT_FALSE(file.open(at("b"), OpenMode_Read));
    writeText(at("b"), "b");
    EXPECT_TRUE(file.open(OpenMode_Read));
}

TEST_F(FileTest, MayBeOpenedAgainAfterClose) {
    File file(at("a"));
    ASSERT_TRUE(file.open(OpenMode_Create));
    ASSERT_TRUE(file.puts("abc"));
    file.close();
    file.close();
    ASSERT_TRUE(file.open(OpenMode_Read));
    EXPECT_EQ(file.getPosition(), 0);
}

TEST_F(FileTest, ReachesBeyondFourGigabytes) {
    makeSparse(at("far"), 1);
    constexpr int64_t kFar = int64_t{5} << 30;
    File file;
    ASSERT_TRUE(file.open(at("far"), OpenMode_CreateKeep));
    EXPECT_EQ(file.seek(kFar, SeekPosition_Begin), kFar);
    EXPECT_EQ(file.write("x", 1), 1U);
    EXPECT_EQ(file.getPosition(), kFar + 1);
    EXPECT_EQ(File::getLength(at("far")), static_cast<uint64_t>(kFar) + 1);
}

TEST_F(FileTest, WritingBeyondTheEndFillsWithZeroBytes) {
    File file(at("a"));
    ASSERT_TRUE(file.open(OpenMode_CreateKeep));
    ASSERT_EQ(file.seek(2, SeekPosition_End), 2);
    EXPECT_EQ(file.write("x", 1), 1U);
    EXPECT_EQ(readText(at("a")), std::string("\0\0x", 3));
}

TEST_F(FileTest, ReadsAndWritesOfNothingDoNothing) {
    File file(at("a"));
    ASSERT_TRUE(file.open(OpenMode_CreateKeep));
    EXPECT_EQ(file.write(nullptr, 0), 0U);
    EXPECT_EQ(file.read(nullptr, 0), 0U);
    EXPECT_TRUE(file.puts(""));
    EXPECT_TRUE(file.flush());
    EXPECT_EQ(File::getLength(at("a")), 0U);
}

TEST_F(FileTest, LineEndOfTheOtherSystemIsTakenOffOnlyBeforeANewLine) {
    writeText(at("a"), "one\rtwo\r\r\nlast\r");
    File file(at("a"));
    ASSERT_TRUE(file.open(OpenMode_Read));
    std::string line;
    EXPECT_TRUE(file.gets(line));
    EXPECT_EQ(line, "one\rtwo\r");
    EXPECT_TRUE(file.gets(line));
    EXPECT_EQ(line, "last\r");
    EXPECT_FALSE(file.gets(line));
    EXPECT_EQ(line, "");
}

TEST_F(FileTest, LineEndAtTheVeryEndStartsNoFurtherLine) {
    writeText(at("a"), "\n");
    File file(at("a"));
    ASSERT_TRUE(file.open(OpenMode_Read));
    std::string line = "before";
    EXPECT_TRUE(file.gets(line));
    EXPECT_EQ(line, "");
    EXPECT_FALSE(file.gets(line));
}

TEST_F(FileTest, ClosedFileGivesNoLines) {
    File file(at("a"));
    std::string line = "before";
    EXPECT_FALSE(file.gets(line));
    EXPECT_FALSE(file.puts("x"));
    EXPECT_EQ(lastError(), errorOf(SystemError::NotOpen));
}

TEST_F(FileTest, WritingBeyondALimitIsAShortWriteWithTheSystemsError) {
    File file(at("a"));
    ASSERT_TRUE(file.open(OpenMode_Create));
    const FileSizeLimit full(2);
    EXPECT_EQ(file.write("abc", 3), 2U);
    EXPECT_EQ(lastError(), errorOf(SystemError::FileLimit));
    EXPECT_FALSE(file.puts("abc"));
    EXPECT_EQ(File::getLength(at("a")), 2U);
}

TEST_F(FileTest, OpenOneMayBeRenamedAndRemovedByOthers) {
    for (const int mode : {OpenMode_Read, OpenMode_Create, OpenMode_CreateKeep}) {
        writeText(at("a"), "abc");
        File file(at("a"));
        ASSERT_TRUE(file.open(mode)) << mode;
        std::filesystem::rename(at("a"), at("b"));
        EXPECT_TRUE(File::isAbsent(at("a"))) << mode;
        EXPECT_TRUE(File::remove(at("b"))) << mode;
        EXPECT_TRUE(file.isOpen());
        file.close();
        EXPECT_TRUE(File::isAbsent(at("b"))) << mode;
    }
}

TEST_F(FileTest, SeveralMayHaveItOpenInWhateverModes) {
    writeText(at("a"), "abc");
    File one, other, third;
    ASSERT_TRUE(one.open(at("a"), OpenMode_CreateKeep));
    ASSERT_TRUE(other.open(at("a"), OpenMode_Read));
    ASSERT_TRUE(third.open(at("a"), OpenMode_CreateKeep));
    EXPECT_EQ(one.write("x", 1), 1U);
    char text[4] = {};
    EXPECT_EQ(other.read(text, 3), 3U);
    EXPECT_STREQ(text, "xbc");
    EXPECT_EQ(third.write("yz", 2), 2U);
    EXPECT_EQ(readText(at("a")), "yzc");
}

TEST_F(FileTest, OpenOneIsReadAndWrittenByAnotherProcessToo) {
    writeText(at("a"), "abc");
    const OtherProcess other(OtherProcess::Deed::OpenToWrite, at("a"));
    ASSERT_TRUE(other.did());
    File file(at("a"));
    ASSERT_TRUE(file.open(OpenMode_CreateKeep));
    EXPECT_EQ(file.write("x", 1), 1U);
    EXPECT_EQ(File::load(at("a")).toStdString(), "xbc");
    EXPECT_TRUE(OtherProcess(OtherProcess::Deed::OpenToRead, at("a")).did());
}

TEST_F(FileTest, ReadOnlyOneIsNotOpenedForWritingNorCut) {
    writeText(at("a"), "kept");
    const ReadOnlyFile readOnly(at("a"));
    File file(at("a"));
    EXPECT_FALSE(file.open(OpenMode_Create));
    EXPECT_EQ(lastError(), errorOf(SystemError::ReadOnly));
    EXPECT_FALSE(file.open(OpenMode_CreateKeep));
    EXPECT_FALSE(File::cut(at("a"), 1));
    EXPECT_TRUE(file.open(OpenMode_Read));
    EXPECT_EQ(readText(at("a")), "kept");
}

}  // namespace
