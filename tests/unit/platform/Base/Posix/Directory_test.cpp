// Directories with the links and the root of POSIX.
#include "../FileFixture.h"

using namespace Public::Base;
using namespace support;

namespace {

TEST_F(DirectoryTest, TakesBackslashesAndGivesSlashes) {
    writeText(at("sub/f"), "");
    EXPECT_EQ(entriesOf(mDir.path() + "\\sub").at("f").fullPath, at("sub/f"));
}

TEST_F(DirectoryTest, LinksToFilesAndToNowhereCountAsFiles) {
    writeText(at("real"), "");
    std::filesystem::create_symlink("real", at("link"));
    std::filesystem::create_symlink("none", at("lost"));
    const auto entries = entriesOf(mDir.path());
    EXPECT_EQ(entries.at("link").type, Dirent::Type_File);
    EXPECT_EQ(entries.at("lost").type, Dirent::Type_File);
}

TEST_F(DirectoryTest, GivesNamesThatBeginOrEndInPoints) {
    for (const char* name : {"...", "..a", "a..", "b."}) writeText(at(name), "");
    const auto entries = entriesOf(mDir.path());
    EXPECT_EQ(entries.size(), 4U);
    EXPECT_EQ(entries.at("..a").suffix, "a");
    EXPECT_EQ(entries.at("a..").suffix, "");
    EXPECT_EQ(entries.at("b.").suffix, "");
}

TEST_F(DirectoryTest, RootsEntriesHaveOneSeparator) {
    EXPECT_EQ(entriesOf("/").at("proc").fullPath, "/proc");
    EXPECT_EQ(entriesOf("\\").at("proc").fullPath, "/proc");
}

}  // namespace
