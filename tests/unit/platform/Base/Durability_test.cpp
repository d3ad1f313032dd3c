#include "Public/Base/Durability.h"

#include "FileKinds.h"
#include "FileText.h"
#include "Public/Base/ErrorInfo.h"
#include "Public/Base/File.h"
#include "SystemErrors.h"
#include "TempDir.h"

using Public::Base::Durability;

namespace {

// That the bytes have reached the disk cannot be seen from here; that nothing else happens to them can.
TEST(Durability, TakesFilesDirectoriesAndLinksToThem) {
    const support::TempDir dir;
    support::writeText(dir.path() + "/a/file", "text");
    support::makeDirectoryLink(dir.path() + "/a", dir.path() + "/link");
    EXPECT_TRUE(Durability::sync(dir.path() + "/a/file"));
    EXPECT_TRUE(Durability::sync(dir.path() + "/a"));
    EXPECT_TRUE(Durability::sync(dir.path() + "\\link"));
    EXPECT_TRUE(Durability::sync(dir.path() + "/link/file"));
    EXPECT_EQ(support::readText(dir.path() + "/a/file"), "text");
}

TEST(Durability, TakesAFileThatMayNotBeWritten) {
    const support::TempDir dir;
    support::writeText(dir.path() + "/file", "text");
    std::filesystem::permissions(dir.path() + "/file", std::filesystem::perms::owner_read);
    EXPECT_TRUE(Durability::sync(dir.path() + "/file"));
    const auto writers = std::filesystem::perms::owner_write | std::filesystem::perms::group_write;
    EXPECT_EQ(std::filesystem::status(dir.path() + "/file").permissions() & writers, std::filesystem::perms::none);
}

TEST(Durability, TakesAFileThatIsOpen) {
    const support::TempDir dir;
    Public::Base::File file(dir.path() + "/file");
    ASSERT_TRUE(file.open(Public::Base::OpenMode_Create));
    ASSERT_TRUE(file.puts("text"));
    EXPECT_TRUE(Durability::sync(dir.path() + "/file"));
    EXPECT_TRUE(file.puts(" and more"));
    file.close();
    EXPECT_EQ(support::readText(dir.path() + "/file"), "text and more");
}

TEST(Durability, OfWhatCannotBeOpenedFailsWithTheSystemsError) {
    const support::TempDir dir;
    support::writeText(dir.path() + "/file", "text");
    const support::WithheldFile withheld(dir.path() + "/file");
    EXPECT_FALSE(Durability::sync(dir.path() + "/file"));
    EXPECT_EQ(Public::Base::ErrorInfo::getLastError().errorCode(), errorOf(support::SystemError::Withheld));
}

TEST(Durability, OfWhatIsNotThereFailsWithTheSystemsError) {
    const support::TempDir dir;
    EXPECT_FALSE(Durability::sync(dir.path() + "/none"));
    EXPECT_EQ(Public::Base::ErrorInfo::getLastError().errorCode(), errorOf(support::SystemError::NotThere));
    EXPECT_FALSE(Durability::sync(""));
}

TEST(Durability, OfManySucceedsOnlyWhenAllOfThemDo) {
    const support::TempDir dir;
    support::writeText(dir.path() + "/one", "1");
    support::writeText(dir.path() + "/two", "2");
    EXPECT_TRUE(Durability::syncAll({}));
    EXPECT_TRUE(Durability::syncAll({dir.path() + "/one", dir.path() + "/two", dir.path()}));
    EXPECT_FALSE(Durability::syncAll({dir.path() + "/one", dir.path() + "/none", dir.path()}));
    EXPECT_EQ(Public::Base::ErrorInfo::getLastError().errorCode(), errorOf(support::SystemError::NotThere));
}

}  // namespace
