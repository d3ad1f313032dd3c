#include "Public/Base/FileEntry.h"

#include "FileLinks.h"
#include "FilePermissions.h"
#include "FileText.h"
#include "FileTimes.h"
#include "Public/Base/File.h"
#include "TempDir.h"

namespace fs = std::filesystem;
using Public::Base::File;
using Public::Base::FileEntry;
using Kind = FileEntry::Kind;

namespace {

class FileEntryTest : public testing::Test {
protected:
    std::string at(const std::string& name) const { return mDir.path() + "/" + name; }

    support::TempDir mDir;
};

TEST_F(FileEntryTest, TellsWhatLiesUnderAName) {
    support::writeText(at("file"), "x");
    EXPECT_EQ(FileEntry::at(at("file")).kind, Kind::File);
    EXPECT_EQ(FileEntry::at(mDir.path()).kind, Kind::Directory);
    EXPECT_EQ(FileEntry::at(at("none")).kind, Kind::Absent);
    EXPECT_EQ(FileEntry::at(at("none/none")).kind, Kind::Absent);
    EXPECT_EQ(FileEntry::at("").kind, Kind::Unknown);
    EXPECT_EQ(FileEntry::at(std::string("a\0b", 3)).kind, Kind::Unknown);
}

TEST_F(FileEntryTest, TellsALinkWhereverItLeads) {
    support::writeText(at("file"), "x");
    support::makeLink("file", at("link"));
    support::makeLink("nowhere", at("dangling"));
    for (const char* name : {"link", "dangling"}) EXPECT_EQ(FileEntry::at(at(name)).kind, Kind::Link) << name;
    std::string target;
    EXPECT_TRUE(FileEntry::readLink(at("dangling"), target));
    EXPECT_EQ(target, "nowhere");
}

TEST_F(FileEntryTest, MakesALink) {
    support::writeText(at("file"), "x");
    EXPECT_TRUE(FileEntry::makeLink("file", at("link")));
    EXPECT_EQ(FileEntry::at(at("link")).kind, Kind::Link);
    EXPECT_EQ(support::readText(at("link")), "x");
    EXPECT_FALSE(FileEntry::makeLink("file", at("link")));
}

TEST_F(FileEntryTest, SaysSoWhereNoLinkCanBeMade) {
    EXPECT_FALSE(FileEntry::makeLink("file", at("none/link")));
    EXPECT_EQ(FileEntry::at(at("none/link")).kind, Kind::Absent);
    std::string target;
    support::writeText(at("file"), "x");
    EXPECT_FALSE(FileEntry::readLink(at("file"), target));
}

TEST_F(FileEntryTest, PermissionsAndTimeOfAFileCanBeGivenBack) {
    support::writeText(at("file"), "x");
    EXPECT_EQ(FileEntry::at(at("file")).modified, support::modifiedTime(at("file")));
    constexpr int64_t kTime = 131'000'000'123'456'789;
    EXPECT_TRUE(FileEntry::setPermissions(at("file"), support::kUnusualPermissions));
    EXPECT_TRUE(FileEntry::setModified(at("file"), kTime));
    EXPECT_EQ(support::modifiedTime(at("file")), kTime);
    EXPECT_EQ(FileEntry::at(at("file")), (FileEntry{Kind::File, support::kUnusualPermissions, kTime}));
    EXPECT_FALSE(FileEntry::setPermissions(at("none"), support::kUnusualPermissions));
    EXPECT_FALSE(FileEntry::setModified(at("none"), kTime));
}

TEST_F(FileEntryTest, RenamingReplacesAFile) {
    support::writeText(at("from"), "new");
    support::writeText(at("to"), "old");
    EXPECT_TRUE(FileEntry::rename(at("from"), at("to")));
    EXPECT_EQ(support::readText(at("to")), "new");
    EXPECT_EQ(support::filesBelow(mDir.path()), std::set<std::string>{"to"});
    EXPECT_FALSE(FileEntry::rename(at("from"), at("to")));
}

TEST_F(FileEntryTest, RemovesADirectoryUnlessItHoldsSomething) {
    fs::create_directory(at("empty"));
    support::writeText(at("full/file"), "x");
    EXPECT_TRUE(FileEntry::removeEmptyDirectory(at("empty")));
    EXPECT_FALSE(fs::exists(at("empty")));
    EXPECT_TRUE(FileEntry::removeEmptyDirectory(at("full")));
    EXPECT_EQ(support::readText(at("full/file")), "x");
}

TEST_F(FileEntryTest, FileThatNobodyHoldsIsNotInUse) {
    support::writeText(at("file"), "x");
    EXPECT_FALSE(FileEntry::isInUse(at("file")));
    EXPECT_FALSE(FileEntry::isInUse(at("none")));
    File file(at("file"));
    ASSERT_TRUE(file.open(Public::Base::OpenMode_Read));  // as the engine reads, which others may write meanwhile
    EXPECT_FALSE(FileEntry::isInUse(at("file")));
}

TEST_F(FileEntryTest, ResolvesPathsThatAreNotThereYet) {
    fs::create_directory(at("there"));
    EXPECT_EQ(FileEntry::resolved(at("there/")), at("there"));
    EXPECT_EQ(FileEntry::resolved(at("there/../there/./x/..//y\\z")), at("there/y/z"));
    EXPECT_EQ(FileEntry::resolved(at("none/x")), at("none/x"));
    EXPECT_EQ(FileEntry::resolved(""), "");
}

TEST_F(FileEntryTest, ResolvesTheRootToItself) {
    const std::string root = FileEntry::resolved("/");
    EXPECT_TRUE(root.ends_with("/")) << root;
    EXPECT_EQ(FileEntry::resolved(root), root);
    EXPECT_EQ(FileEntry::resolved("/none at all/x"), root + "none at all/x");
}

TEST_F(FileEntryTest, ResolvesLinks) {
    fs::create_directory(at("there"));
    support::makeLink("there", at("link"));
    EXPECT_EQ(FileEntry::resolved(at("link/x")), at("there/x"));
}

TEST_F(FileEntryTest, TakesNamesOfAnyScriptAndPathsOfAnyLength) {
    std::string deep = at("\xE8\xA7\x86\xE9\xA2\x91");
    for (int level = 0; level < 5; ++level) deep += "/" + std::string(80, static_cast<char>('a' + level));
    ASSERT_TRUE(File::makeDirectory(deep));
    ASSERT_TRUE(File::save(deep + "/from", Public::Base::SharedBuffer("x")));
    EXPECT_TRUE(FileEntry::rename(deep + "/from", deep + "/to"));
    EXPECT_EQ(FileEntry::at(deep + "/from").kind, Kind::Absent);
    EXPECT_EQ(FileEntry::at(deep + "/to").kind, Kind::File);
    EXPECT_EQ(FileEntry::resolved(deep + "/../x/to/.."), deep.substr(0, deep.rfind('/')) + "/x");
    EXPECT_EQ(FileEntry::resolved(deep), deep);
    EXPECT_TRUE(File::remove(deep + "/to"));
    EXPECT_TRUE(FileEntry::removeEmptyDirectory(deep));
    EXPECT_TRUE(File::removeDirectory(at("\xE8\xA7\x86\xE9\xA2\x91")));
}

}  // namespace
