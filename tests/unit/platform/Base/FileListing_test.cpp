#include "FileFixture.h"
#include "FileKinds.h"

using namespace Public::Base;
using namespace support;

namespace {

TEST_F(FileListingTest, GivesThePointsFirst) {
    writeText(at("a"), "");
    const auto files = list(mDir.path());
    ASSERT_EQ(files.size(), 3U);
    EXPECT_EQ(files[0].name, ".");
    EXPECT_EQ(files[1].name, "..");
    EXPECT_EQ(files[0].attributes, ListedFile::SubDirectory);
    EXPECT_EQ(files[2].name, "a");
    EXPECT_EQ(files[2].attributes, 0U);
}

TEST_F(FileListingTest, MarksHiddenFilesAndDirectories) {
    writeText(at(".h"), "");
    hide(at(".h"));
    std::filesystem::create_directory(at("d"));
    std::map<std::string, unsigned> attributes;
    for (const auto& file : list(mDir.path())) attributes[file.name] = file.attributes;
    EXPECT_EQ(attributes.at(".h"), ListedFile::Hidden);
    EXPECT_EQ(attributes.at("d"), ListedFile::SubDirectory);
}

TEST_F(FileListingTest, OfALinkToADirectoryIsNoDirectory) {
    makeDirectoryLink(mDir.path(), at("loop"));
    EXPECT_EQ(list(mDir.path()).at(2).attributes, 0U);
}

TEST_F(FileListingTest, OfWhatCannotBeReadIsEmpty) {
    EXPECT_TRUE(list(at("none")).empty());
    EXPECT_TRUE(list("").empty());
}

TEST_F(FileListingTest, EmptyDirectoryHasButThePoints) {
    EXPECT_EQ(attributesIn(mDir.path()).size(), 2U);
    EXPECT_EQ(list(mDir.path()).size(), 2U);
}

TEST_F(FileListingTest, PointsAreNotHidden) {
    const auto attributes = attributesIn(mDir.path());
    EXPECT_EQ(attributes.at("."), ListedFile::SubDirectory);
    EXPECT_EQ(attributes.at(".."), ListedFile::SubDirectory);
}

TEST_F(FileListingTest, HiddenDirectoryBearsBothMarks) {
    std::filesystem::create_directory(at(".d"));
    hide(at(".d"));
    EXPECT_EQ(attributesIn(mDir.path()).at(".d"), ListedFile::SubDirectory | ListedFile::Hidden);
}

TEST_F(FileListingTest, NamesWithoutAPointAreListedToo) {
    writeText(at("Makefile"), "");
    writeText(at("a.b.c"), "");
    EXPECT_EQ(attributesIn(mDir.path()).size(), 4U);
}

TEST_F(FileListingTest, NamesKeepTheirCaseAndTheirBytes) {
    writeText(at("LibX.DLL"), "");
    writeText(at("\xE4\xB8\xAD.dll"), "");
    const auto attributes = attributesIn(mDir.path());
    EXPECT_EQ(attributes.count("LibX.DLL"), 1U);
    EXPECT_EQ(attributes.count("\xE4\xB8\xAD.dll"), 1U);
}

TEST_F(FileListingTest, GivesEveryOneOfManyOnce) {
    for (int i = 0; i < 500; ++i) writeText(at(std::to_string(i)), "");
    EXPECT_EQ(list(mDir.path()).size(), 502U);
    EXPECT_EQ(attributesIn(mDir.path()).size(), 502U);
}

TEST_F(FileListingTest, EndsForGood) {
    FileListing listing(mDir.path());
    ListedFile file;
    EXPECT_TRUE(listing.next(file));
    EXPECT_TRUE(listing.next(file));
    EXPECT_FALSE(listing.next(file));
    EXPECT_FALSE(listing.next(file));
}

TEST_F(FileListingTest, OfAFileIsEmptyAndTellsWhy) {
    writeText(at("f"), "");
    EXPECT_TRUE(list(at("f")).empty());
    EXPECT_EQ(lastError(), errorOf(SystemError::NoDirectory));
}

TEST_F(FileListingTest, BearsATrailingSeparator) {
    writeText(at("f"), "");
    EXPECT_EQ(attributesIn(mDir.path() + "\\").count("f"), 1U);
}

}  // namespace
