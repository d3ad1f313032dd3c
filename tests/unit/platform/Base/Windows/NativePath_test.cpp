// The form in which paths are given to the system.
#include "Base/Windows/NativePath.h"

#include "../FileFixture.h"
#include "../PathOperations.h"
#include "Base/Windows/PathNames.h"
#include "WideText.h"

using namespace Public::Base;
using namespace support;

namespace {

std::string nativeOf(const std::string& path) {
    std::wstring native;
    return toNativePath(path, native) ? narrow(native) : "refused";
}

TEST(NativePath, IsFromTheRootWithBackslashes) {
    EXPECT_EQ(nativeOf("C:/a/b"), "C:\\a\\b");
    EXPECT_EQ(nativeOf("C:\\a/b\\"), "C:\\a\\b\\");
    EXPECT_EQ(nativeOf("C:/a/./b/../c"), "C:\\a\\c");
    EXPECT_EQ(nativeOf("C:/../../a"), "C:\\a");
    EXPECT_EQ(nativeOf("C:\\a\\\\b"), "C:\\a\\b");
    EXPECT_EQ(nativeOf("//server/share/a"), "\\\\server\\share\\a");
    EXPECT_EQ(nativeOf("C:/\xE4\xB8\xAD/\xF0\x9F\x98\x80"), "C:\\\xE4\xB8\xAD\\\xF0\x9F\x98\x80");
}

TEST(NativePath, OfALongPathIsTheFormWithoutALimit) {
    const std::string name(200, 'n');
    EXPECT_EQ(nativeOf("C:/" + name + "/a/../" + name), "\\\\?\\C:\\" + name + "\\" + name);
    EXPECT_EQ(nativeOf("//server/share/" + name + "/" + name), "\\\\?\\UNC\\server\\share\\" + name + "\\" + name);
    EXPECT_TRUE(nativeOf("relative/" + name + "/" + name).starts_with("\\\\?\\"));
}

TEST(NativePath, GivenInThatFormStaysAsItIs) {
    EXPECT_EQ(nativeOf("\\\\?\\C:\\a\\..\\b"), "\\\\?\\C:\\a\\..\\b");
    EXPECT_EQ(nativeOf("//?/C:/a"), "\\\\?\\C:\\a");
    EXPECT_EQ(nativeOf("\\\\?\\C:\\aux.txt"), "\\\\?\\C:\\aux.txt");
    EXPECT_EQ(nativeOf("\\\\?\\C:\\name. "), "\\\\?\\C:\\name. ");
    EXPECT_EQ(nativeOf("\\\\?\\unc\\server\\share\\a"), "\\\\?\\unc\\server\\share\\a");
}

TEST(NativePath, OfWhatTheSystemTakesForNoFileOfThatNameIsRefused) {
    for (const char* path : {"NUL",
                             "nul",
                             "C:\\CON",
                             "C:/a/con.txt",
                             "prn .x",
                             "aux.tar.gz",
                             "COM1",
                             "lpt9.log",
                             "com\xC2\xB9",
                             "CONIN$",
                             "conout$",
                             "C:/nul/a",
                             "a.",
                             "a ",
                             "a./b",
                             "a /b",
                             "...",
                             "C:/a:b",
                             "a:b:c",
                             "C:\\a\\b:stream",
                             "a::$DATA",
                             "a<b",
                             "a>b",
                             "a\"b",
                             "a|b",
                             "a?b",
                             "a*b",
                             "a\x01",
                             "\\\\.\\C:",
                             "\\\\.\\PhysicalDrive0",
                             "//./pipe/x",
                             "\\\\?\\pipe\\x",
                             "\\\\?\\GLOBALROOT\\Device\\Null",
                             "\\\\?\\C:\\a:b",
                             "\\\\?\\C:\\a*"}) {
        EXPECT_EQ(nativeOf(path), "refused") << path;
        EXPECT_EQ(ErrorInfo::getLastError().errorCode(), errorOf(SystemError::BadPath)) << path;
    }
}

TEST(NativePath, MayHoldNamesThatOnlyLookLikeDevices) {
    for (const std::string name : {"console", "con1", "auxiliary.txt", "com", "com0", "com10", "lpt", "xnul", "nul_",
                                   ".nul", " lead", ".hidden", "a.b.c", "a b", "%TEMP%", "a;b,c=d+e", "$a~1", "CON$"}) {
        EXPECT_EQ(nativeOf("C:/d/" + name), "C:\\d\\" + name);
    }
}

TEST(NativePath, OfWhatIsNoUtf8IsRefused) {
    for (const char* path : {"C:/\xFF", "C:/\xE4\xB8", "C:/\xED\xA0\x80", "\xC0\xAF"}) {
        EXPECT_EQ(nativeOf(path), "refused");
        EXPECT_EQ(ErrorInfo::getLastError().errorCode(), -(10000 + ERROR_NO_UNICODE_TRANSLATION));
    }
}

TEST(NativePath, LongestNameIsOfTwoHundredAndFiftyFiveUnits) {
    const std::string longest(255, 'n');
    EXPECT_EQ(nativeOf("C:/" + longest), "\\\\?\\C:\\" + longest);
    EXPECT_EQ(nativeOf("C:/n" + longest), "refused");
    EXPECT_EQ(ErrorInfo::getLastError().errorCode(), errorOf(SystemError::NameTooLong));
    EXPECT_EQ(nativeOf("\\\\?\\C:\\n" + longest), "refused");
}

TEST(NativePath, RootEndsBehindTheDriveOrTheShare) {
    const auto root = [](const wchar_t* path) { return rootLength(path); };
    EXPECT_EQ(root(L"C:\\a\\b"), 3U);
    EXPECT_EQ(root(L"C:\\"), 3U);
    EXPECT_EQ(root(L"\\\\?\\C:\\a"), 7U);
    EXPECT_EQ(root(L"\\\\server\\share\\a"), 15U);
    EXPECT_EQ(root(L"\\\\server\\share"), 14U);
    EXPECT_EQ(root(L"\\\\?\\UNC\\server\\share\\a"), 21U);
    EXPECT_EQ(root(L"\\\\?\\unc\\server\\share"), 20U);
}

TEST_F(FileTest, NameThatNoFileCanHaveIsRefusedByEveryOperation) {
    writeText(at("file"), "kept");
    std::vector<Operation> all = operations();
    all.insert(all.end(), directoryOperations().begin(), directoryOperations().end());
    for (const char* name : {"nul", "AUX.txt", "com1/x", "file:stream", "file.", "file ", "f*", "a\tb"}) {
        for (const Operation& operation : all) {
            EXPECT_FALSE(operation.succeeds(at(name), at("file"))) << operation.name << " " << name;
            EXPECT_EQ(lastError(), errorOf(SystemError::BadPath)) << operation.name << " " << name;
        }
    }
    EXPECT_EQ(filesBelow(mDir.path()), std::set<std::string>{"file"});
    EXPECT_EQ(readText(at("file")), "kept");
}

class DrivePath : public FileTest {
protected:
    void SetUp() override { std::filesystem::current_path(mDir.path()); }
    void TearDown() override { std::filesystem::current_path(mBefore); }
    const std::filesystem::path mBefore = std::filesystem::current_path();
};

TEST_F(DrivePath, WithoutASeparatorBeginsInTheCurrentDirectoryOfTheDrive) {
    const std::string drive = mDir.path().substr(0, 2);
    EXPECT_TRUE(File::save(drive + "x", SharedBuffer("1")));
    EXPECT_TRUE(File::makeDirectory(drive + "d\\e"));
    EXPECT_EQ(readText(at("x")), "1");
    EXPECT_TRUE(std::filesystem::is_directory(at("d/e")));
}

TEST_F(DrivePath, AloneIsNotRemoved) {
    writeText(at("f"), "kept");
    const std::string drive = mDir.path().substr(0, 2);
    for (const std::string& path : {drive, drive + "\\", drive + "/", drive + ".", "\\\\?\\" + drive + "\\"}) {
        EXPECT_FALSE(File::removeDirectory(path)) << path;
    }
    EXPECT_EQ(readText(at("f")), "kept");
}

TEST_F(DrivePath, OfADriveThatIsNotThereFails) {
    const std::string path = "Q:\\a\\b";
    EXPECT_FALSE(File::access(path, AccessMode_Exists));
    EXPECT_TRUE(File::isAbsent(path));
    EXPECT_FALSE(File::makeDirectory(path));
    EXPECT_FALSE(File::save(path, SharedBuffer("1")));
    EXPECT_FALSE(Directory("Q:\\").isOpen());
}

TEST_F(DrivePath, OfAServerThatIsNotThereFails) {
    writeText(at("f"), "1");
    const std::string path = "\\\\localhost\\no such share\\a";
    EXPECT_FALSE(File::access(path, AccessMode_Exists));
    EXPECT_FALSE(File::save(path, SharedBuffer("1")));
    EXPECT_FALSE(File::copy(at("f"), path));
    EXPECT_FALSE(File::makeDirectory(path + "\\b"));
    EXPECT_FALSE(File::removeDirectory("\\\\localhost\\no such share"));
    EXPECT_FALSE(Directory(path).isOpen());
}

TEST_F(DrivePath, MayBeGivenInTheFormWithoutALimit) {
    std::string base = "\\\\?\\" + mDir.path();
    for (char& c : base) c = c == '/' ? '\\' : c;
    EXPECT_TRUE(File::makeDirectory(base + "\\d\\e"));
    EXPECT_TRUE(File::save(base + "\\d\\e\\f", SharedBuffer("1")));
    EXPECT_TRUE(File::copy(base + "/d/e/f", base + "\\g"));
    MappedFile file;
    EXPECT_EQ(file.open(base + "\\g"), MappedFile::Result::Mapped);
    EXPECT_EQ(filesBelow(mDir.path()), (std::set<std::string>{"d/e/f", "g"}));
    EXPECT_TRUE(File::removeDirectory(base + "\\d"));
    EXPECT_EQ(filesBelow(mDir.path()), std::set<std::string>{"g"});
}

}  // namespace
