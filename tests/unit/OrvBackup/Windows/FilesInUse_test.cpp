// Saving and restoring while some files are in use.
#include "../OrvBackupFixture.h"
#include "FileKinds.h"

using namespace Tarnwick::OrvUpdate;
using support::filesBelow;
using support::readText;
using support::writeText;

TEST_F(OrvBackupTest, AFileInUseIsToldAndTheOthersAreSaved) {
    writeText(app("a.txt"), "A");
    writeText(app("b.txt"), "B");
    std::filesystem::create_directories(saved());
    {
        const support::WithheldFile withheld(app("a.txt"));
        EXPECT_EQ(mBackup.backup(app(), note()).errorCode(), 0);
    }
    EXPECT_LT(mResults["/a.txt"].errorCode(), -10000);
    EXPECT_EQ(mResults["/b.txt"].errorCode(), 0);
    EXPECT_EQ(filesBelow(saved()), (std::set<std::string>{"b.txt"}));
}

TEST_F(OrvBackupTest, AFileInUseIsNotRestoredAndItsCopyStays) {
    writeText(app("a.txt"), "old");
    ASSERT_EQ(mBackup.backup("a.txt", app()).errorCode(), 0);
    writeText(app("a.txt"), "new");
    {
        const support::WithheldFile withheld(app("a.txt"));
        EXPECT_LT(mBackup.restore("a.txt", app()).errorCode(), -10000);
    }
    EXPECT_EQ(readText(app("a.txt")), "new");
    EXPECT_EQ(readText(saved("a.txt")), "old");
    EXPECT_EQ(mBackup.restore("a.txt", app()).errorCode(), 0);
    EXPECT_EQ(readText(app("a.txt")), "old");
}
