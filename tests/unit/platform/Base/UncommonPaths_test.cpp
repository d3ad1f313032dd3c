// Every operation on names of many scripts, on names with blanks, and on paths longer than some systems like them.
#include "FileFixture.h"
#include "FileKinds.h"
#include "OtherProcess.h"
#include "Public/Base/DirectoryLock.h"
#include "Public/Base/Durability.h"

using namespace Public::Base;
using namespace support;

namespace {

struct UncommonName {
    const char* name;
    std::string text;
};

void PrintTo(const UncommonName& name, std::ostream* out) { *out << name.name; }

class UncommonPath : public testing::TestWithParam<UncommonName> {
protected:
    const std::string& name() const { return GetParam().text; }
    /// Made by the code under test, as it lies beyond what test code can make everywhere.
    void SetUp() override {
        mPath = mDir.path() + "/" + name() + "/" + name() + "/" + name();
        ASSERT_TRUE(File::makeDirectory(mPath));
    }
    std::string at(const std::string& last) const { return mPath + "/" + last; }
    TempDir mDir;
    std::string mPath;
};

TEST_P(UncommonPath, IsMadeAndThere) {
    EXPECT_TRUE(std::filesystem::is_directory(pathOf(mPath)));
    EXPECT_TRUE(File::access(mPath, AccessMode_Exists));
    EXPECT_FALSE(File::isAbsent(mPath));
    EXPECT_TRUE(File::isAbsent(at("none")));
    EXPECT_FALSE(File::access(at("none"), AccessMode_Exists));
    EXPECT_TRUE(File::makeDirectory(mPath));
}

TEST_P(UncommonPath, SavesAndLoads) {
    EXPECT_TRUE(File::save(at(name()), SharedBuffer("one")));
    EXPECT_TRUE(File::save(at(name()), SharedBuffer("two")));
    EXPECT_EQ(File::load(at(name())).toStdString(), "two");
    EXPECT_EQ(readText(at(name())), "two");
    Directory directory(mPath);
    Dirent entry;
    EXPECT_TRUE(directory.read(entry));
    EXPECT_EQ(entry.name, name());
    EXPECT_FALSE(directory.read(entry));
}

TEST_P(UncommonPath, OpensReadsAndWrites) {
    File file(at(name()));
    ASSERT_TRUE(file.open(OpenMode_Create));
    EXPECT_TRUE(file.puts("abc"));
    ASSERT_TRUE(file.open(OpenMode_CreateKeep));
    EXPECT_TRUE(file.puts("x"));
    ASSERT_TRUE(file.open(OpenMode_Read));
    std::string line;
    EXPECT_TRUE(file.gets(line));
    EXPECT_EQ(line, "xbc");
}

TEST_P(UncommonPath, CopiesWithinAndInAndOut) {
    writeText(mDir.path() + "/plain", "content");
    EXPECT_TRUE(File::copy(mDir.path() + "/plain", at(name())));
    EXPECT_TRUE(File::copy(at(name()), at("b")));
    EXPECT_TRUE(System::copyFile(at("b"), at("c")));
    EXPECT_TRUE(File::copy(at("c"), mDir.path() + "/back"));
    EXPECT_EQ(readText(mDir.path() + "/back"), "content");
    EXPECT_FALSE(File::copy(at("b"), at("b")));
}

TEST_P(UncommonPath, MeasuresCutsAndRemoves) {
    ASSERT_TRUE(File::save(at(name()), SharedBuffer("0123456789")));
    EXPECT_EQ(File::getLength(at(name())), 10U);
    EXPECT_TRUE(File::cut(at(name()), 4));
    EXPECT_EQ(File::getLength(at(name())), 4U);
    EXPECT_TRUE(File::remove(at(name())));
    EXPECT_TRUE(File::isAbsent(at(name())));
}

TEST_P(UncommonPath, IsRemovedWithAllThatItHolds) {
    ASSERT_TRUE(File::makeDirectory(at("x/" + name())));
    ASSERT_TRUE(File::save(at("x/" + name() + "/" + name()), SharedBuffer("1")));
    EXPECT_TRUE(File::removeDirectory(mDir.path() + "/" + name()));
    EXPECT_TRUE(std::filesystem::is_empty(mDir.path()));
}

TEST_P(UncommonPath, GivesItsEntries) {
    ASSERT_TRUE(File::save(at(name() + ".exe"), SharedBuffer("1")));
    Directory directory(mPath);
    Dirent entry;
    ASSERT_TRUE(directory.read(entry));
    EXPECT_EQ(entry.name, name() + ".exe");
    EXPECT_EQ(entry.suffix, "exe");
    EXPECT_EQ(File::load(entry.fullPath).toStdString(), "1");
    EXPECT_FALSE(directory.read(entry));
}

TEST_P(UncommonPath, ListsItsFiles) {
    ASSERT_TRUE(File::save(at(name()), SharedBuffer("1")));
    FileListing listing(mPath);
    ListedFile file;
    std::string last;
    for (int i = 0; i < 3; ++i) {
        ASSERT_TRUE(listing.next(file));
        last = file.name;
    }
    EXPECT_EQ(last, name());
    EXPECT_FALSE(listing.next(file));
}

TEST_P(UncommonPath, IsMappedAndReplaced) {
    ASSERT_TRUE(File::save(at(name()), SharedBuffer("content")));
    MappedFile file;
    ASSERT_EQ(file.open(at(name())), MappedFile::Result::Mapped);
    EXPECT_FALSE(file.isReplacedAt(at(name())));
    EXPECT_TRUE(File::save(at(name()), SharedBuffer("new")));
    EXPECT_TRUE(file.isReplacedAt(at(name())));
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(file.data()), file.size()), "content");
}

TEST_P(UncommonPath, IsLocked) {
    DirectoryLock first, second;
    EXPECT_EQ(first.take(mPath), DirectoryLock::Result::Taken);
    EXPECT_EQ(second.take(mPath + "/"), DirectoryLock::Result::Held);
    EXPECT_EQ(second.take(mDir.path()), DirectoryLock::Result::Taken);
}

TEST_P(UncommonPath, IsBroughtToTheDisk) {
    ASSERT_TRUE(File::save(at(name()), SharedBuffer("1")));
    EXPECT_TRUE(Durability::syncAll({at(name()), mPath}));
    EXPECT_FALSE(Durability::sync(at("none")));
}

TEST_P(UncommonPath, MayHoldPointsAndBackslashesAndDoubledSeparators) {
    ASSERT_TRUE(File::save(mPath + "/./x", SharedBuffer("1")));
    EXPECT_EQ(File::load(mPath + "/../" + name() + "/x").toStdString(), "1");
    EXPECT_EQ(File::load(mPath + "\\x").toStdString(), "1");
    EXPECT_EQ(File::load(mPath + "//.\\x").toStdString(), "1");
    EXPECT_TRUE(File::makeDirectory(mPath + "/../" + name() + "/y/./z"));
    EXPECT_TRUE(File::access(at("y/z"), AccessMode_Exists));
    EXPECT_FALSE(File::removeDirectory(mPath + "/y/.."));
    EXPECT_FALSE(File::removeDirectory(mPath + "\\y\\.\\"));
    EXPECT_TRUE(File::access(at("y/z"), AccessMode_Exists));
}

INSTANTIATE_TEST_SUITE_P(
    Name, UncommonPath,
    testing::Values(UncommonName{"Chinese", "\xE4\xB8\xAD\xE6\x96\x87\xE7\x89\x88\xE6\x9C\xAC"},
                    UncommonName{"BeyondSixteenBits", "\xF0\x9F\x98\x80\xF0\xA0\x80\x80\xF0\x9D\x84\x9E"},
                    UncommonName{"Umlauts", "\xC3\xA4\xC3\x96\xC3\xBC\xC3\x9F"},
                    UncommonName{"CombinedMarks", "a\xCC\x88o\xCC\x82"},
                    UncommonName{"Cyrillic", "\xD0\x9F\xD1\x80\xD0\xB8\xD0\xB2\xD0\xB5\xD1\x82"},
                    UncommonName{"RightToLeft", "\xD9\x85\xD8\xB1\xD8\xAD\xD8\xA8\xD8\xA7"},
                    UncommonName{"Blanks", "a  store with blanks"},
                    UncommonName{"Signs", "%TEMP% & (1) 'x' ^!$#@=+,;~"}, UncommonName{"OnePoint", ".hidden"},
                    UncommonName{"Long", std::string(120, 'n')},
                    UncommonName{"LongAndChinese",
                                 [] {
                                     std::string text;
                                     for (int i = 0; i < 80; ++i) text += "\xE4\xB8\xAD";
                                     return text;
                                 }()}),
    [](const auto& test) { return test.param.name; });

class RelativePath : public FileTest {
protected:
    void SetUp() override { std::filesystem::current_path(mDir.path()); }
    void TearDown() override { std::filesystem::current_path(mBefore); }
    const std::filesystem::path mBefore = std::filesystem::current_path();
};

TEST_F(RelativePath, BeginsInTheCurrentDirectory) {
    EXPECT_TRUE(File::makeDirectory("d/e"));
    EXPECT_TRUE(File::save("d/e/f", SharedBuffer("1")));
    EXPECT_TRUE(File::save("g", SharedBuffer("2")));
    EXPECT_TRUE(File::copy("g", "./d/../h"));
    EXPECT_EQ(filesBelow(mDir.path()), (std::set<std::string>{"d/e/f", "g", "h"}));
    EXPECT_EQ(File::load("d\\e\\..\\e\\f").toStdString(), "1");
    EXPECT_TRUE(File::removeDirectory("d"));
    EXPECT_TRUE(File::isAbsent("d"));
}

TEST_F(RelativePath, GivesEntriesThatBeginWithIt) {
    writeText(at("d/f"), "1");
    Directory directory("d");
    Dirent entry;
    ASSERT_TRUE(directory.read(entry));
    EXPECT_TRUE(entry.fullPath.starts_with("d"));
    EXPECT_EQ(File::load(entry.fullPath).toStdString(), "1");
}

TEST_F(RelativePath, MayBeLongOnlyFromTheRoot) {
    const std::string name(120, 'n');
    ASSERT_TRUE(File::makeDirectory(name + "/" + name));
    ASSERT_TRUE(File::save(name + "/" + name + "/f", SharedBuffer("1")));
    EXPECT_EQ(File::load(name + "/" + name + "/f").toStdString(), "1");
    EXPECT_TRUE(Durability::sync(name + "/" + name));
    EXPECT_EQ(DirectoryLock().take(name + "/" + name), DirectoryLock::Result::Taken);
    EXPECT_TRUE(File::removeDirectory(name));
}

TEST_F(RelativePath, OfTheCurrentDirectoryIsNotRemoved) {
    writeText(at("f"), "kept");
    for (const char* path : {".", "./", ".\\", "..", "../"}) EXPECT_FALSE(File::removeDirectory(path)) << path;
    EXPECT_EQ(readText(at("f")), "kept");
}

}  // namespace
