#include "FileFixture.h"
#include "FileKinds.h"

using namespace Public::Base;
using namespace support;

namespace {

TEST_F(DirectoryTest, GivesFilesAndDirectoriesWithTheirParts) {
    writeText(at("pkg.1.exe"), "");
    writeText(at("sub/f"), "");
    const auto entries = entriesOf(mDir.path());
    ASSERT_EQ(entries.size(), 2U);
    EXPECT_EQ(entries.at("pkg.1.exe").type, Dirent::Type_File);
    EXPECT_EQ(entries.at("pkg.1.exe").suffix, "exe");
    EXPECT_EQ(entries.at("pkg.1.exe").fullPath, at("pkg.1.exe"));
    EXPECT_EQ(entries.at("sub").type, Dirent::Type_Directory);
    EXPECT_EQ(entries.at("sub").suffix, "");
}

TEST_F(DirectoryTest, SuffixKeepsItsCaseAndMayBeEmpty) {
    writeText(at("a.EXE"), "");
    writeText(at("b"), "");
    writeText(at(".hidden"), "");
    const auto entries = entriesOf(mDir.path());
    EXPECT_EQ(entries.at("a.EXE").suffix, "EXE");
    EXPECT_EQ(entries.at("b").suffix, "");
    EXPECT_EQ(entries.at(".hidden").suffix, "hidden");
}

TEST_F(DirectoryTest, LeavesOutTheTwoPoints) { EXPECT_TRUE(entriesOf(mDir.path()).empty()); }

TEST_F(DirectoryTest, UnreadableOnesReadAsEmptyAndTellWhy) {
    writeText(at("f"), "");
    EXPECT_TRUE(entriesOf(at("f")).empty());
    EXPECT_EQ(lastError(), errorOf(SystemError::NoDirectory));
    EXPECT_TRUE(entriesOf(at("none")).empty());
    EXPECT_EQ(lastError(), errorOf(SystemError::DirectoryNotThere));
    EXPECT_FALSE(Directory(at("none")).isOpen());
    EXPECT_TRUE(entriesOf("").empty());
}

TEST_F(DirectoryTest, DoesNotDoubleATrailingSeparator) {
    writeText(at("f"), "");
    EXPECT_EQ(entriesOf(mDir.path() + "/").at("f").fullPath, at("f"));
}

TEST_F(DirectoryTest, LinkToADirectoryCountsAsAFileSoThatNoWalkGoesInCircles) {
    makeDirectoryLink(mDir.path(), at("loop"));
    EXPECT_EQ(entriesOf(mDir.path()).at("loop").type, Dirent::Type_File);
}

TEST_F(DirectoryTest, ReadingOnAfterTheEndStaysAtTheEnd) {
    Directory directory(mDir.path());
    Dirent entry;
    EXPECT_FALSE(directory.read(entry));
    EXPECT_FALSE(directory.read(entry));
}

TEST_F(DirectoryTest, GivesNonAsciiNames) {
    writeText(at("\xE4\xB8\xAD"), "");
    EXPECT_EQ(entriesOf(mDir.path()).count("\xE4\xB8\xAD"), 1U);
}

TEST_F(DirectoryTest, GivesEveryOneOfManyOnce) {
    for (int i = 0; i < 1000; ++i) writeText(at(std::to_string(i)), "");
    Directory directory(mDir.path());
    std::set<std::string> names;
    int given = 0;
    for (Dirent entry; directory.read(entry); ++given) names.insert(entry.name);
    EXPECT_EQ(names.size(), 1000U);
    EXPECT_EQ(given, 1000);
}

TEST_F(DirectoryTest, OneThatMayNotBeReadIsNotOpen) {
    const WithheldFile withheld(mDir.path());
    EXPECT_FALSE(Directory(mDir.path()).isOpen());
    EXPECT_EQ(lastError(), errorOf(SystemError::Withheld));
}

TEST_F(DirectoryTest, IsOpenToTheEndAndBeyond) {
    Directory directory(mDir.path());
    Dirent entry;
    EXPECT_TRUE(directory.isOpen());
    EXPECT_FALSE(directory.read(entry));
    EXPECT_TRUE(directory.isOpen());
}

TEST_F(DirectoryTest, FullPathBeginsWithThePathAsGiven) {
    writeText(at("f"), "");
    const std::string doubled = mDir.path() + "//";
    EXPECT_EQ(entriesOf(doubled).at("f").fullPath, doubled + "f");
}

TEST_F(DirectoryTest, SeveralMayBeOpenOnOnePath) {
    writeText(at("f"), "");
    Directory first(mDir.path());
    Directory second(mDir.path());
    Dirent entry;
    EXPECT_TRUE(first.read(entry));
    EXPECT_TRUE(second.read(entry));
    EXPECT_FALSE(first.read(entry));
}

}  // namespace
