// Saving and restoring in directories of uncommon names, and files that are read-only or in use.
#include "UncommonPlaces.h"

#include "FileKinds.h"
#include "OrvBackupFixture.h"
#include "Public/Base/File.h"

using namespace Tarnwick::OrvUpdate;
using support::filesBelow;
using support::readText;
using support::UncommonPlace;
using support::writeText;

namespace {

class BackupElsewhere : public testing::TestWithParam<UncommonPlace> {
protected:
    support::TempDir mDir;
    const std::string mApp = mDir.path() + GetParam().path + "/app";
    const std::string mSaved = mDir.path() + GetParam().path + "/saved";
    OrvBackup mBackup{mSaved};
};

}  // namespace

TEST_P(BackupElsewhere, SavesAndRestoresByName) {
    const std::string name = "配置/Größe der Datei.ini";
    writeText(mApp + "/" + name, "old");
    EXPECT_EQ(mBackup.backup(name, mApp).errorCode(), 0);
    EXPECT_EQ(readText(mSaved + "/" + name), "old");
    writeText(mApp + "/" + name, "new");
    EXPECT_EQ(mBackup.restore(name, mApp).errorCode(), 0);
    EXPECT_EQ(readText(mApp + "/" + name), "old");
}

TEST_P(BackupElsewhere, WalksAndClears) {
    writeText(mApp + "/one.txt", "1");
    writeText(mApp + "/子目录/二.txt", "2");
    ASSERT_TRUE(Public::Base::File::makeDirectory(mSaved));
    std::set<std::string> told;
    const auto note = [&](const std::string& name, const ErrorInfo& result) {
        EXPECT_EQ(result.errorCode(), 0) << name;
        told.insert(name);
    };
    EXPECT_EQ(mBackup.backup(mApp, note).errorCode(), 0);
    EXPECT_EQ(told, (std::set<std::string>{"/one.txt", "/二.txt"}));
    EXPECT_EQ(readText(mSaved + "/one.txt"), "1");
    EXPECT_EQ(readText(mSaved + "/二.txt"), "2");
    writeText(mApp + "/one.txt", "new");
    EXPECT_EQ(mBackup.restore(mApp, note).errorCode(), 0);
    EXPECT_EQ(readText(mApp + "/one.txt"), "1");
    EXPECT_EQ(mBackup.clear().errorCode(), 0);
    EXPECT_TRUE(Public::Base::File::isAbsent(mSaved));
}

INSTANTIATE_TEST_SUITE_P(Places, BackupElsewhere, testing::ValuesIn(support::uncommonPlaces()), support::nameOfPlace);

TEST_F(OrvBackupTest, AReadOnlyFileIsSavedAndRestored) {
    writeText(app("a.txt"), "old");
    support::makeReadOnly(app("a.txt"));
    EXPECT_EQ(mBackup.backup("a.txt", app()).errorCode(), 0);
    EXPECT_EQ(mBackup.backup("a.txt", app()).errorCode(), 0);  // over the copy, which is read-only too
    EXPECT_EQ(mBackup.restore("a.txt", app()).errorCode(), 0);
    EXPECT_EQ(readText(app("a.txt")), "old");
    EXPECT_EQ(readText(saved("a.txt")), "old");
    EXPECT_EQ(mBackup.clear().errorCode(), 0);
    EXPECT_TRUE(filesBelow(saved()).empty());
}

TEST_F(OrvBackupTest, AFileThatCannotBeOpenedIsNoSuccess) {
    writeText(app("a.txt"), "A");
    {
        const support::WithheldFile withheld(app("a.txt"));
        EXPECT_LT(mBackup.backup("a.txt", app()).errorCode(), -10000);
    }
    EXPECT_TRUE(filesBelow(saved()).empty());
    EXPECT_EQ(readText(app("a.txt")), "A");
}
