// Files that others hold in ways that only Windows knows.
#include <windows.h>

#include "FileText.h"
#include "Journal.h"
#include "LogRecorder.h"
#include "PackageMaker.h"
#include "Public/Base/FileEntry.h"
#include "TempDir.h"
#include "TreeSnapshot.h"
#include "Upgrade.h"
#include "WideText.h"

using Public::Base::FileEntry;
using support::readText;
using support::writeText;
using Result = UpgradeOutcome::Result;

namespace {

/// Open without a share for anybody.
class OpenForItselfAlone {
public:
    explicit OpenForItselfAlone(const std::string& path)
        : mFile(::CreateFileW(support::longPath(path).c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr)) {
        EXPECT_NE(mFile, INVALID_HANDLE_VALUE);
    }
    ~OpenForItselfAlone() { ::CloseHandle(mFile); }
    OpenForItselfAlone(const OpenForItselfAlone&) = delete;
    OpenForItselfAlone& operator=(const OpenForItselfAlone&) = delete;

private:
    HANDLE mFile;
};

class HeldFiles : public testing::Test {
protected:
    HeldFiles() {
        support::PackageSpec spec;
        spec.files = {{"Orv Client\\OrvClient.exe", "client"},
                      {"Orv Server\\a.dll", "new a"},
                      {"Orv Server\\b.dll", "new b"},
                      {"Orv Server\\c.dll", "new c"}};
        mOrder.package = support::makePackage(spec, mDir.path() + "/package.exe");
        mOrder.installDir = mDir.path() + "/installed";
        mOrder.backupDir = mDir.path() + "/backup";
        mOrder.role = 3;
        mOrder.filesFreeWithinMs = 20;
        writeText(at("a.dll"), "old a");
        writeText(at("b.dll"), "old b");
    }
    std::string at(const std::string& name) const { return mOrder.installDir + "/" + name; }

    support::TempDir mDir;
    support::LogRecorder mLog;
    UpgradeOrder mOrder;
};

TEST_F(HeldFiles, OneThatNobodyElseMayOpenStopsTheUpgradeBeforeItBegins) {
    const auto before = support::snapshot(mOrder.installDir);
    {
        const OpenForItselfAlone held(at("b.dll"));
        EXPECT_TRUE(FileEntry::isInUse(at("b.dll")));
        const UpgradeOutcome outcome = upgrade(mOrder);
        EXPECT_EQ(outcome.result, Result::Restored);
        EXPECT_EQ(outcome.error.errorMessage(), "b.dll is in use by another program");
    }
    EXPECT_TRUE(support::snapshot(mOrder.installDir) == before);
    EXPECT_FALSE(JournalFile(mOrder.backupDir).exists());
    EXPECT_EQ(upgrade(mOrder).result, Result::Installed);
}

TEST_F(HeldFiles, HiddenOneIsReplacedAndStaysHidden) {
    ASSERT_TRUE(FileEntry::setPermissions(at("a.dll"), FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_ARCHIVE));
    EXPECT_EQ(upgrade(mOrder).result, Result::Installed);
    EXPECT_EQ(readText(at("a.dll")), "new a");
    EXPECT_EQ(FileEntry::at(at("a.dll")).permissions, unsigned{FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_ARCHIVE});
}

TEST_F(HeldFiles, OneThatIsHeldDuringTheRecoveryLeavesItForTheNextTime) {
    writeText(at("a.dll"), "half of the ne");
    writeText(mOrder.backupDir + "/a.dll", "old a");
    const FileEntry old = FileEntry::at(at("b.dll"));
    const JournalEntry replaced{JournalEntry::Kind::ReplacedFile, "a.dll", old.permissions, old.modified, {}};
    ASSERT_FALSE(JournalFile(mOrder.backupDir).write({mOrder.installDir, {replaced}}));
    {
        const OpenForItselfAlone held(at("a.dll"));
        const UpgradeOutcome outcome = upgrade(mOrder);
        EXPECT_EQ(outcome.result, Result::Damaged);
        EXPECT_EQ(outcome.error.errorCode(), -10032);  // a sharing violation
        EXPECT_TRUE(JournalFile(mOrder.backupDir).exists());
    }
    EXPECT_EQ(readText(at("a.dll")), "half of the ne");
    mOrder.package = mDir.path() + "/none";
    EXPECT_TRUE(upgrade(mOrder).recovered);
    EXPECT_EQ(readText(at("a.dll")), "old a");
}

}  // namespace
