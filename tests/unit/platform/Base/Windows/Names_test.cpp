// Names that this system reads in its own way: cases, devices, what only the form without a limit can name.
#include "../FileFixture.h"
#include "FileKinds.h"
#include "Public/Base/DirectoryLock.h"
#include "WideText.h"

#undef RemoveDirectory  // the system's macro, which would rename the tests

using namespace Public::Base;
using namespace support;

namespace {

/// Makes a file whose name has to be taken at its word.
void makeAtItsWord(const std::string& directory, const wchar_t* name) {
    const std::wstring path = longPath(directory) + L"\\" + name;
    const HANDLE file = ::CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, 0, nullptr);
    ASSERT_NE(file, INVALID_HANDLE_VALUE) << ::GetLastError();
    ::CloseHandle(file);
}

TEST_F(FileTest, IsTheSameInWhateverCase) {
    EXPECT_TRUE(File::save(at("Name.TXT"), SharedBuffer("1")));
    EXPECT_EQ(File::load(at("nAME.txt")).toStdString(), "1");
    EXPECT_TRUE(File::save(at("NAME.txt"), SharedBuffer("2")));
    EXPECT_EQ(filesBelow(mDir.path()).size(), 1U);
    EXPECT_FALSE(File::copy(at("name.txt"), at("NAME.TXT")));
    EXPECT_EQ(lastError(), errorOf(SystemError::SameFile));
    EXPECT_EQ(File::load(at("name.txt")).toStdString(), "2");
    EXPECT_TRUE(File::remove(at("NAME.TXT")));
    EXPECT_TRUE(File::isAbsent(at("name.txt")));
}

TEST_F(FileTest, OfADeviceIsNeitherReadNorWritten) {
    for (const char* name : {"NUL", "con", "COM1", "aux.txt", "d/nul"}) {
        File file(at(name));
        EXPECT_FALSE(file.open(OpenMode_Create)) << name;
        EXPECT_FALSE(file.open(name, OpenMode_Read)) << name;
        EXPECT_TRUE(File::load(name).empty()) << name;
        EXPECT_FALSE(File::save(at(name), SharedBuffer("lost"))) << name;
        EXPECT_TRUE(File::isAbsent(at(name))) << name;
    }
    EXPECT_TRUE(std::filesystem::is_empty(mDir.path()));
}

TEST_F(FileTest, StreamIsNotWrittenBesideTheContent) {
    writeText(at("a"), "content");
    EXPECT_FALSE(File::save(at("a:hidden"), SharedBuffer("x")));
    EXPECT_FALSE(File::copy(at("a"), at("b::$DATA")));
    EXPECT_EQ(filesBelow(mDir.path()), std::set<std::string>{"a"});
    EXPECT_EQ(readText(at("a")), "content");
}

TEST_F(FileTest, PointsAndBlanksAtTheEndAreNotCutOff) {
    writeText(at("a"), "kept");
    EXPECT_FALSE(File::save(at("a."), SharedBuffer("x")));
    EXPECT_FALSE(File::save(at("a "), SharedBuffer("x")));
    EXPECT_FALSE(File::remove(at("a. .")));
    EXPECT_FALSE(File::makeDirectory(at("d ./e")));
    EXPECT_EQ(filesBelow(mDir.path()), std::set<std::string>{"a"});
    EXPECT_EQ(readText(at("a")), "kept");
}

TEST_F(DirectoryTest, GivesNamesThatBeginOrEndInPoints) {
    for (const wchar_t* name : {L"...", L"..a", L"a..", L"b."}) makeAtItsWord(mDir.path(), name);
    const auto entries = entriesOf(mDir.path());
    EXPECT_EQ(entries.size(), 4U);
    EXPECT_EQ(entries.at("..a").suffix, "a");
    EXPECT_EQ(entries.at("a..").suffix, "");
    EXPECT_EQ(entries.at("b.").suffix, "");
}

TEST_F(DirectoryTest, RootsEntriesHaveOneSeparator) {
    EXPECT_EQ(entriesOf("C:\\").at("windows").fullPath, "C:\\windows");
    EXPECT_EQ(entriesOf("C:/").at("windows").fullPath, "C:/windows");
}

TEST_F(DirectoryTest, FullPathHasTheSeparatorsThatWereGiven) {
    writeText(at("sub/f"), "");
    const std::string slashes = mDir.path() + "/sub";
    EXPECT_EQ(entriesOf(slashes).at("f").fullPath, slashes + "/f");
    EXPECT_EQ(entriesOf(mDir.path() + "\\sub").at("f").fullPath, mDir.path() + "\\sub\\f");
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(mDir.path());
    EXPECT_EQ(entriesOf("sub").at("f").fullPath, "sub\\f");
    std::filesystem::current_path(before);
}

TEST_F(DirectoryTest, IsFoundInWhateverCase) {
    writeText(at("Sub/f"), "");
    EXPECT_EQ(entriesOf(at("sUB")).size(), 1U);
}

TEST_F(FileListingTest, HiddenAndSystemFilesAreMarkedByTheSystem) {
    for (const char* name : {"plain", "hidden", "system", "both"}) writeText(at(name), "");
    const auto mark = [&](const char* name, DWORD attributes) {
        EXPECT_TRUE(::SetFileAttributesW(longPath(at(name)).c_str(), attributes));
    };
    mark("hidden", FILE_ATTRIBUTE_HIDDEN);
    mark("system", FILE_ATTRIBUTE_SYSTEM);
    mark("both", FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM | FILE_ATTRIBUTE_READONLY);
    const auto attributes = attributesIn(mDir.path());
    EXPECT_EQ(attributes.at("plain"), 0U);
    EXPECT_EQ(attributes.at("hidden"), ListedFile::Hidden);
    EXPECT_EQ(attributes.at("system"), 0U);
    EXPECT_EQ(attributes.at("both"), ListedFile::Hidden);
}

TEST_F(RemoveDirectory, TakesNamesThatCanOnlyBeTakenAtTheirWord) {
    std::filesystem::create_directory(at("d"));
    for (const wchar_t* name : {L"aux.txt", L"CON", L"point.", L"blank ", L"..."}) makeAtItsWord(at("d"), name);
    ASSERT_TRUE(::CreateDirectoryW((longPath(at("d")) + L"\\sub. ").c_str(), nullptr));
    makeAtItsWord(at("d"), L"sub. \\nul");
    EXPECT_TRUE(File::removeDirectory(at("d")));
    EXPECT_TRUE(File::isAbsent(at("d")));
}

TEST_F(RemoveDirectory, TakesReadOnlyHiddenAndSystemEntries) {
    writeText(at("d/sub/f"), "1");
    writeText(at("d/g"), "1");
    for (const char* name : {"d/sub/f", "d/g", "d/sub", "d"}) {
        ASSERT_TRUE(::SetFileAttributesW(longPath(at(name)).c_str(),
                                         FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM));
    }
    EXPECT_TRUE(File::removeDirectory(at("d")));
    EXPECT_TRUE(File::isAbsent(at("d")));
}

TEST_F(RemoveDirectory, FailsAtWhatMayNotBeReadAndRemovesTheRest) {
    writeText(at("d/a/f"), "");
    writeText(at("d/closed/f"), "kept");
    writeText(at("d/z"), "");
    {
        const WithheldFile withheld(at("d/closed"));
        EXPECT_FALSE(File::removeDirectory(at("d")));
        EXPECT_EQ(lastError(), errorOf(SystemError::Withheld));
    }
    EXPECT_EQ(filesBelow(at("d")), std::set<std::string>{"closed/f"});
}

TEST_F(RemoveDirectory, FailsAtWhatMayNotBeChangedAndRemovesTheRest) {
    writeText(at("d/locked/f"), "kept");
    writeText(at("d/z"), "");
    {
        const KeptFile kept(at("d/locked/f"));
        EXPECT_FALSE(File::removeDirectory(at("d")));
        EXPECT_EQ(lastError(), errorOf(SystemError::Withheld));
    }
    EXPECT_EQ(filesBelow(at("d")), std::set<std::string>{"locked/f"});
}

TEST_F(RemoveDirectory, ThatFailsLeavesReadOnlyFilesReadOnly) {
    writeText(at("d/f"), "kept");
    const ReadOnlyFile readOnly(at("d/f"));
    {
        const KeptFile kept(at("d/f"));
        EXPECT_FALSE(File::removeDirectory(at("d")));
    }
    EXPECT_TRUE(::GetFileAttributesW(longPath(at("d/f")).c_str()) & FILE_ATTRIBUTE_READONLY);
    EXPECT_EQ(readText(at("d/f")), "kept");
}

TEST(DirectoryLock, IsTheSameInWhateverCase) {
    const TempDir dir;
    std::filesystem::create_directory(dir.path() + "/Store");
    DirectoryLock first, second;
    EXPECT_EQ(first.take(dir.path() + "/Store"), DirectoryLock::Result::Taken);
    EXPECT_EQ(second.take(dir.path() + "\\STORE\\"), DirectoryLock::Result::Held);
}

}  // namespace
