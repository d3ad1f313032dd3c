// What an unpacking will change, found out beforehand.
#include "Plan.h"

#include "FileLinks.h"
#include "FilePermissions.h"
#include "FileText.h"
#include "FileTimes.h"
#include "Public/Base/FileEntry.h"
#include "TempDir.h"

namespace fs = std::filesystem;
using support::writeText;

namespace {

using Kind = JournalEntry::Kind;

class Plan : public testing::Test {
protected:
    Plan() { fs::create_directory(mInstalled); }

    /// The entries as "kind name", in their order.
    std::vector<std::string> plan(const std::vector<std::string>& names) {
        EXPECT_FALSE(planUpgrade(mInstalled, mDir.path() + "/backup", names, mJournal));
        static constexpr const char* kKinds[] = {"makes ", "adds ", "replaces ", "unlinks "};
        std::vector<std::string> entries;
        for (const auto& entry : mJournal.entries) entries.push_back(kKinds[static_cast<int>(entry.kind)] + entry.name);
        return entries;
    }
    Public::Base::ErrorInfo refusal(const std::string& name) {
        return planUpgrade(mInstalled, mInstalled + "/backup", {"first.dll", name}, mJournal);
    }

    support::TempDir mDir;
    const std::string mInstalled = mDir.path() + "/installed";
    Journal mJournal;
};

using Entries = std::vector<std::string>;

TEST_F(Plan, NamesNewDirectoriesFirstAndAddedFilesLast) {
    writeText(mInstalled + "/a.dll", "old");
    fs::create_directory(mInstalled + "/there");
    EXPECT_EQ(plan({"b.dll", "a.dll", "there\\c.dll", "new\\deep\\d.dll", "new/e.dll"}),
              (Entries{"makes new", "makes new/deep", "replaces a.dll", "adds b.dll", "adds there/c.dll",
                       "adds new/deep/d.dll", "adds new/e.dll"}));
    EXPECT_EQ(mJournal.installDir, mInstalled);
}

TEST_F(Plan, NotesPermissionsAndTimeOfAReplacedFile) {
    writeText(mInstalled + "/a.dll", "old");
    ASSERT_TRUE(Public::Base::FileEntry::setPermissions(mInstalled + "/a.dll", support::kUnusualPermissions));
    const int64_t time = support::modifiedTime(mInstalled + "/a.dll");
    plan({"a.dll"});
    ASSERT_EQ(mJournal.entries.size(), 1U);
    EXPECT_EQ(mJournal.entries[0].permissions, support::kUnusualPermissions);
    EXPECT_EQ(mJournal.entries[0].modified, time);
}

TEST_F(Plan, KeepsTheTargetOfALinkThatWillBeReplacedAlsoOfADanglingOne) {
    support::makeLink("../x/y", mInstalled + "/link.dll");
    EXPECT_EQ(plan({"link.dll"}), Entries{"unlinks link.dll"});
    EXPECT_EQ(mJournal.entries[0].target, "../x/y");
}

TEST_F(Plan, NameThatComesTwiceInWhateverSpellingIsOneEntry) {
    EXPECT_EQ(plan({"lib\\a.dll", ".\\lib\\a.dll", "lib/x/../a.dll"}), (Entries{"makes lib", "adds lib/a.dll"}));
}

TEST_F(Plan, LinkToADirectoryInsideIsFollowed) {
    writeText(mInstalled + "/lib/a.dll", "old");
    support::makeLink("lib", mInstalled + "/lib64");
    EXPECT_EQ(plan({"lib64\\a.dll", "lib64\\b.dll"}), (Entries{"replaces lib64/a.dll", "adds lib64/b.dll"}));
}

TEST_F(Plan, ChangesNothing) {
    writeText(mInstalled + "/a.dll", "old");
    plan({"a.dll", "new/b.dll"});
    EXPECT_EQ(support::filesBelow(mDir.path()), std::set<std::string>{"installed/a.dll"});
    EXPECT_FALSE(fs::exists(mInstalled + "/new"));
}

TEST_F(Plan, RefusesWhatLiesInAnItemsPlaceAndIsNoFile) {
    fs::create_directory(mInstalled + "/a.dll");
    EXPECT_EQ(refusal("a.dll").errorCode(), -602);
    EXPECT_EQ(refusal("a.dll").errorMessage(), "a.dll is there already and no file");
}

TEST_F(Plan, RefusesALinkedDirectoryThatLeadsOutside) {
    fs::create_directory(mDir.path() + "/outside");
    support::makeLink(mDir.path() + "/outside", mInstalled + "/lib");
    EXPECT_EQ(refusal("lib\\a.dll").errorCode(), -602);
    EXPECT_EQ(refusal("lib\\a.dll").errorMessage(), "lib/a.dll leads outside");
}

struct BadItem {
    const char* title;
    const char* name;
    const char* reason;
};
class PlanRefusal : public testing::TestWithParam<BadItem> {};

TEST_P(PlanRefusal, TellsWhatIsWrong) {
    const support::TempDir dir;
    Journal journal;
    const auto error = planUpgrade(dir.path(), dir.path() + "/backup", {GetParam().name}, journal);
    EXPECT_EQ(error.errorCode(), -602);
    EXPECT_EQ(error.errorMessage(), GetParam().reason);
}

INSTANTIATE_TEST_SUITE_P(
    Plan, PlanRefusal,
    testing::Values(BadItem{"Above", "..\\evil.dll", "../evil.dll leads outside"},
                    BadItem{"AboveInside", "a\\..\\..\\evil.dll", "../evil.dll leads outside"},
                    BadItem{"Absolute", "/etc/evil", "/etc/evil leads outside"}, BadItem{"Empty", "", " leads outside"},
                    BadItem{"Journal", "orvinstaller.journal", "orvinstaller.journal is the name of the journal"},
                    BadItem{"JournalInAnotherCase", "OrvInstaller.Journal.new",
                            "OrvInstaller.Journal.new is the name of the journal"},
                    BadItem{"JournalAsADirectory", "orvinstaller.journal\\a",
                            "orvinstaller.journal/a is the name of the journal"},
                    BadItem{"Backup", "backup\\a.dll", "backup/a.dll leads into the backup"},
                    BadItem{"BelowTheBackup", "backup\\lib\\a.dll", "backup/lib/a.dll leads into the backup"}),
    [](const auto& one) { return one.param.title; });

}  // namespace
