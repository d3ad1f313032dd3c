#include "ParentDirectory.h"

#include "FileText.h"
#include "TempDir.h"

using Tarnwick::OrvUpdate::makeParentDirectory;
namespace fs = std::filesystem;

namespace {

class ParentDirectory : public testing::Test {
protected:
    support::TempDir mDir;
};

}  // namespace

TEST_F(ParentDirectory, OfEitherKindOfSeparatorIsMadeWithAllAboveIt) {
    EXPECT_TRUE(makeParentDirectory(mDir.path() + "/a/b/file.txt"));
    EXPECT_TRUE(makeParentDirectory(mDir.path() + "/c\\d/e\\file.txt"));
    EXPECT_TRUE(fs::is_directory(mDir.path() + "/a/b"));
    EXPECT_TRUE(fs::is_directory(mDir.path() + "/c/d/e"));
    EXPECT_FALSE(fs::exists(mDir.path() + "/a/b/file.txt"));
    EXPECT_FALSE(fs::exists(mDir.path() + "/c/d/e/file.txt"));
}

TEST_F(ParentDirectory, BehindASeparatorAtTheEndIsAllOfThePath) {
    EXPECT_TRUE(makeParentDirectory(mDir.path() + "/a/"));
    EXPECT_TRUE(fs::is_directory(mDir.path() + "/a"));
}

TEST_F(ParentDirectory, ThatIsThereAlreadyIsNoFailure) {
    EXPECT_TRUE(makeParentDirectory(mDir.path() + "/a/file.txt"));
    EXPECT_TRUE(makeParentDirectory(mDir.path() + "/a/file.txt"));
}

TEST_F(ParentDirectory, OfAPathWithoutASeparatorNeedsNotBeMade) {
    EXPECT_TRUE(makeParentDirectory("file-without-directory.txt"));
    EXPECT_TRUE(makeParentDirectory(""));
    EXPECT_FALSE(fs::exists("file-without-directory.txt"));
}

TEST_F(ParentDirectory, WhereAFileIsInTheWayFailsAndKeepsTheFile) {
    support::writeText(mDir.path() + "/a", "kept");
    EXPECT_FALSE(makeParentDirectory(mDir.path() + "/a/b/file.txt"));
    EXPECT_EQ(support::readText(mDir.path() + "/a"), "kept");
}
