#include "Public/Base/File.h"

#include <sys/stat.h>

#include "FileText.h"
#include "Public/Base/ErrorInfo.h"
#include "TempDir.h"

using namespace Public::Base;
using support::readText;
using support::writeText;

namespace {

class FileTest : public testing::Test {
protected:
    std::string at(const std::string& name) const { return mDir.path() + "/" + name; }
    support::TempDir mDir;
};

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
    EXPECT_EQ(ErrorInfo::getLastError().errorCode(), -(10000 + ENOENT));
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
    EXPECT_TRUE(support::filesBelow(mDir.path()).empty());
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

TEST_F(FileTest, WritingToAFullDiskIsAShortWriteWithTheSystemsError) {
    File file;
    ASSERT_TRUE(file.open("/dev/full", 0x1002));
    EXPECT_EQ(file.write("abc", 3), 0U);
    EXPECT_EQ(ErrorInfo::getLastError().errorCode(), -(10000 + ENOSPC));
    EXPECT_FALSE(file.puts("abc"));
}

TEST_F(FileTest, SaveReplacesTheWholeFile) {
    writeText(at("a"), "a longer text");
    EXPECT_TRUE(File::save(at("a"), SharedBuffer("new")));
    EXPECT_EQ(readText(at("a")), "new");
}

TEST_F(FileTest, SaveMakesNoDirectory) {
    EXPECT_FALSE(File::save(at("none/a"), SharedBuffer("x")));
    EXPECT_FALSE(File::access(at("none"), AccessMode_Exists));
    EXPECT_EQ(ErrorInfo::getLastError().errorCode(), -(10000 + ENOENT));
}

TEST_F(FileTest, SaveToAFullDiskFails) { EXPECT_FALSE(File::save("/dev/full", SharedBuffer("x"))); }

TEST_F(FileTest, LoadGivesTheWholeFile) {
    const std::string big(300000, 'x');
    writeText(at("a"), big);
    EXPECT_EQ(File::load(at("a")).toStdString(), big);
    EXPECT_TRUE(File::load(at("none")).empty());
    EXPECT_TRUE(File::load(mDir.path()).empty());
}

TEST_F(FileTest, LengthIsZeroForWhatIsNoFile) {
    writeText(at("a"), "12345");
    EXPECT_EQ(File::getLength(at("a")), 5U);
    EXPECT_EQ(File::getLength(at("none")), 0U);
    EXPECT_EQ(File::getLength(mDir.path()), 0U);
    EXPECT_EQ(File::getLength(""), 0U);
}

TEST_F(FileTest, AccessTestsForExistence) {
    writeText(at("a"), "");
    EXPECT_TRUE(File::access(at("a"), AccessMode_Exists));
    EXPECT_TRUE(File::access(mDir.path(), AccessMode_Exists));
    EXPECT_FALSE(File::access(at("none"), AccessMode_Exists));
    EXPECT_FALSE(File::access("", AccessMode_Exists));
    EXPECT_FALSE(File::access(at("a/below"), AccessMode_Exists));
}

TEST_F(FileTest, RemoveTakesFilesOnly) {
    writeText(at("a"), "");
    EXPECT_TRUE(File::remove(at("a")));
    EXPECT_FALSE(File::remove(at("a")));
    std::filesystem::create_directory(at("d"));
    EXPECT_FALSE(File::remove(at("d")));
    EXPECT_TRUE(File::access(at("d"), AccessMode_Exists));
}

TEST_F(FileTest, NonAsciiNamesWork) {
    const std::string name = at("\xE4\xB8\xAD\xE6\x96\x87 \xC3\xA4.txt");
    EXPECT_TRUE(File::save(name, SharedBuffer("x")));
    EXPECT_EQ(File::load(name).toStdString(), "x");
}

TEST_F(FileTest, NameThatIsTooLongFails) {
    EXPECT_FALSE(File::save(at(std::string(300, 'n')), SharedBuffer("x")));
    EXPECT_EQ(ErrorInfo::getLastError().errorCode(), -(10000 + ENAMETOOLONG));
}

TEST_F(FileTest, ProgramDirectoryIsTheOneOfThisProgram) {
    EXPECT_EQ(File::getExcutableFileFullPath(), std::filesystem::read_symlink("/proc/self/exe").parent_path().string());
}

TEST_F(FileTest, ProgramDirectoryCanBeOverriddenAndRestored) {
    const std::string own = File::getExcutableFileFullPath();
    File::setExcutableFileFullPath("/somewhere else");
    EXPECT_EQ(File::getExcutableFileFullPath(), "/somewhere else");
    File::setExcutableFileFullPath("");
    EXPECT_EQ(File::getExcutableFileFullPath(), own);
}

TEST_F(FileTest, SuccessDoesNotClearTheLastError) {
    EXPECT_FALSE(File::remove(at("none")));
    writeText(at("a"), "");
    EXPECT_TRUE(File::access(at("a"), AccessMode_Exists));
    EXPECT_EQ(ErrorInfo::getLastError().errorCode(), -(10000 + ENOENT));
}

TEST_F(FileTest, LoadOfAFileThatCannotBeReadIsEmptyAndTellsWhy) {
    EXPECT_TRUE(File::load("/proc/self/mem").empty());
    EXPECT_EQ(ErrorInfo::getLastError().errorCode(), -(10000 + EIO));
}

TEST_F(FileTest, LoadRefusesWhatIsTooLong) {
    const std::string path = mDir.path() + "/sparse";
    ASSERT_TRUE(File::save(path, SharedBuffer("x")));
    std::filesystem::resize_file(path, (uint64_t{1} << 30) + 1);
    EXPECT_TRUE(File::load(path).empty());
    EXPECT_EQ(ErrorInfo::getLastError().errorCode(), -(10000 + EFBIG));
}

TEST_F(FileTest, LoadReadsFilesThatTellNoLength) { EXPECT_FALSE(File::load("/proc/self/status").empty()); }

}  // namespace
