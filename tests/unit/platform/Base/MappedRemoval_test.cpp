// A file that is removed while this process reads it.
#include "FileText.h"
#include "Public/Base/File.h"
#include "Public/Base/System.h"
#include "TempDir.h"

using Public::Base::File;
using Public::Base::MappedFile;

namespace {

class MappedRemoval : public testing::Test {
protected:
    std::string at(const std::string& name) const { return mDir.path() + "/" + name; }
    static std::string textOf(const MappedFile& file) {
        return {reinterpret_cast<const char*>(file.data()), file.size()};
    }
    support::TempDir mDir;
};

}  // namespace

TEST_F(MappedRemoval, TakesTheNameAndLeavesTheReaderItsBytes) {
    support::writeText(at("a"), "old");
    MappedFile reader;
    ASSERT_EQ(reader.open(at("a")), MappedFile::Result::Mapped);
    EXPECT_TRUE(File::remove(at("a")));
    EXPECT_FALSE(std::filesystem::exists(at("a")));
    support::writeText(at("a"), "new");
    EXPECT_EQ(textOf(reader), "old");
    EXPECT_TRUE(reader.isReplacedAt(at("a")));
}

TEST_F(MappedRemoval, LeavesNothingBehindWhenTheLastReaderHasEnded) {
    support::writeText(at("a"), "old");
    MappedFile reader;
    auto other = std::make_unique<MappedFile>();
    ASSERT_EQ(reader.open(at("a")), MappedFile::Result::Mapped);
    ASSERT_EQ(other->open(at("a")), MappedFile::Result::Mapped);
    EXPECT_TRUE(File::remove(at("a")));
    reader.close();
    EXPECT_EQ(textOf(*other), "old");
    other.reset();
    EXPECT_EQ(support::filesBelow(mDir.path()), std::set<std::string>());
}

TEST_F(MappedRemoval, TakesOneNameAfterAnother) {
    MappedFile readers[3];
    for (MappedFile& reader : readers) {
        support::writeText(at("a"), "text");
        ASSERT_EQ(reader.open(at("a")), MappedFile::Result::Mapped);
        EXPECT_TRUE(File::remove(at("a")));
    }
    for (MappedFile& reader : readers) reader.close();
    EXPECT_EQ(support::filesBelow(mDir.path()), std::set<std::string>());
}
