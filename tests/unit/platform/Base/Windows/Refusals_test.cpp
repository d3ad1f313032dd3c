// What the system refuses, where another one has a device or a right for it.
#include "../FileFixture.h"
#include "FileKinds.h"
#include "FileSizeLimit.h"
#include "ImportHook.h"

using namespace Public::Base;
using namespace support;

extern "C" {
using ReadFileFunction = BOOL(WINAPI*)(HANDLE, LPVOID, DWORD, LPDWORD, LPOVERLAPPED);
extern ReadFileFunction __imp_ReadFile;
}

namespace {

BOOL WINAPI readFromABadDisk(HANDLE, LPVOID, DWORD, LPDWORD got, LPOVERLAPPED) {
    *got = 0;
    ::SetLastError(ERROR_CRC);
    return FALSE;
}

TEST_F(FileTest, WritingToAFullDiskIsAShortWriteWithTheSystemsError) {
    File file(at("a"));
    ASSERT_TRUE(file.open(OpenMode_CreateKeep));
    const FileSizeLimit full(0);
    EXPECT_EQ(file.write("abc", 3), 0U);
    EXPECT_EQ(lastError(), -(10000 + ERROR_DISK_FULL));
    EXPECT_FALSE(file.puts("abc"));
}

TEST_F(FileTest, SaveToAFullDiskFails) {
    const FileSizeLimit full(0);
    EXPECT_FALSE(File::save(at("a"), SharedBuffer("x")));
    EXPECT_TRUE(File::isAbsent(at("a")));
}

TEST_F(FileTest, LoadOfWhatFaultsIsEmptyAndTellsWhy) {
    writeText(at("a"), "content");
    const ImportHook<ReadFileFunction> hook(&__imp_ReadFile, &readFromABadDisk);
    EXPECT_TRUE(File::load(at("a")).empty());
    EXPECT_EQ(lastError(), -(10000 + ERROR_CRC));
}

TEST_F(FileOperations, CopyToAFullDiskFailsWithTheSystemsError) {
    writeText(at("a"), "x");
    const FileSizeLimit full(0);
    EXPECT_FALSE(File::copy(at("a"), at("b")));
    EXPECT_EQ(lastError(), -(10000 + ERROR_DISK_FULL));
}

TEST_F(FileOperations, CopyOfMoreThanAPieceToAFullDiskFails) {
    writeText(at("a"), std::string(1 << 20, 'x'));
    const FileSizeLimit full(1 << 18);
    EXPECT_FALSE(File::copy(at("a"), at("b")));
    EXPECT_EQ(lastError(), -(10000 + ERROR_DISK_FULL));
    EXPECT_EQ(File::getLength(at("a")), 1U << 20);
    EXPECT_TRUE(File::isAbsent(at("b")));
}

TEST_F(FileOperations, MakeDirectoryTellsWhatRefusedIt) {
    EXPECT_FALSE(File::makeDirectory(at("x*/y")));
    EXPECT_EQ(lastError(), errorOf(SystemError::BadPath));
    writeText(at("f"), "");
    EXPECT_FALSE(File::makeDirectory(at("f/x/y")));
    EXPECT_EQ(lastError(), errorOf(SystemError::NoDirectory));
}

TEST_F(FileOperations, MakeDirectoryNeedsNoRightOnWhatIsThereAlready) {
    ASSERT_TRUE(File::makeDirectory(at("x/y")));
    const WithheldFile withheld(at("x"));
    EXPECT_TRUE(File::makeDirectory(at("x/y/z")));
    EXPECT_TRUE(File::makeDirectory(at("x")));
}

}  // namespace
