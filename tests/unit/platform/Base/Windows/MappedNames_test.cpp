// Files of which the system refuses the deletion because this process reads them.
#include "Base/Windows/MappedNames.h"

#include "FileText.h"
#include "Public/Base/System.h"
#include "TempDir.h"

using Public::Base::MappedFile;
namespace MappedNames = Public::Base::MappedNames;

namespace {

class MappedName : public testing::Test {
protected:
    void SetUp() override { support::writeText(mPath, "text"); }
    bool isEmpty() const { return std::filesystem::is_empty(mDir.path()); }
    std::wstring native() const { return std::filesystem::path(mPath).make_preferred().wstring(); }
    support::TempDir mDir;
    std::string mPath = mDir.path() + "/a";
    MappedFile mReader;
};

}  // namespace

TEST_F(MappedName, IsMovedAsideUntilTheReaderHasEnded) {
    ASSERT_EQ(mReader.open(mPath), MappedFile::Result::Mapped);
    EXPECT_TRUE(MappedNames::moveAside(native()));
    EXPECT_FALSE(std::filesystem::exists(mPath));
    EXPECT_FALSE(isEmpty());
    mReader.close();
    EXPECT_TRUE(isEmpty());
}

TEST_F(MappedName, OfANewReaderOfTheSameFileKeepsItAside) {
    ASSERT_EQ(mReader.open(mPath), MappedFile::Result::Mapped);
    {
        MappedFile other;
        ASSERT_EQ(other.open(mPath), MappedFile::Result::Mapped);
        EXPECT_TRUE(MappedNames::moveAside(native()));
    }
    EXPECT_FALSE(isEmpty());
    mReader.close();
    EXPECT_TRUE(isEmpty());
}

TEST_F(MappedName, IsDeletedWhereItLiesOnceTheReaderHasEnded) {
    ASSERT_EQ(mReader.open(mPath), MappedFile::Result::Mapped);
    EXPECT_TRUE(MappedNames::deleteLater(native()));
    EXPECT_TRUE(std::filesystem::exists(mPath));
    mReader.close();
    EXPECT_TRUE(isEmpty());
}

TEST_F(MappedName, OfAFileThatNobodyReadsIsLeftAlone) {
    EXPECT_FALSE(MappedNames::moveAside(native()));
    EXPECT_FALSE(MappedNames::deleteLater(native()));
    ASSERT_EQ(mReader.open(mPath), MappedFile::Result::Mapped);
    mReader.close();
    EXPECT_FALSE(MappedNames::moveAside(native()));
    EXPECT_EQ(support::readText(mPath), "text");
}
