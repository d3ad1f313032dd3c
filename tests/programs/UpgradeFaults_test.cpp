// An upgrade that is broken off at each of its changes of the file system, and the recovery at each of its own.
#include "Effort.h"
#include "FaultRun.h"
#include "LogRecorder.h"
#include "UpgradeSite.h"

using killpoints::Fault;
using Result = UpgradeOutcome::Result;

namespace {

struct FaultCase {
    const char* name;
    Fault fault;
    int percent = 0;  ///< how far the upgrade came before it is recovered
};
void PrintTo(const FaultCase& one, std::ostream* out) { *out << one.name; }

class UpgradeFaults : public testing::TestWithParam<FaultCase> {
protected:
    UpgradeFaults() {
        std::filesystem::create_directory(mSite.at("attic"));
        mWithoutPackage = mSite.order;
        mWithoutPackage.package = mSite.at("gone.exe");
    }

    /// Upgrades in a process of its own. @return false when that was ended at the fault
    bool runToFault(const UpgradeOrder& order, int at) {
        const FaultRun run = upgradeToFault(order, at, GetParam().fault, mSite.at("attic"));
        mCounted = run.changes;
        return run.ended;
    }

    /// Other ones for each kind of fault.
    static std::vector<int> triedOf(int changes) {
        return effort::triedOf(changes, static_cast<int>(GetParam().fault));
    }

    support::LogRecorder mLog;
    UpgradeSite mSite{9, 60, UpgradeSite::memory()};
    UpgradeOrder mWithoutPackage;
    int mCounted = 0;  // changes of the last run that ended
};

TEST_P(UpgradeFaults, BrokenOffAtAnyChangeTheDirectoryEndsWhole) {
    ASSERT_TRUE(runToFault(mSite.order, 0));
    ASSERT_TRUE(mSite.isNew()) << mSite.differences();
    const int changes = mCounted;
    ASSERT_GT(changes, 100);
    int mixed = 0, recovered = 0, old = 0, tried = 0;
    for (const int at : triedOf(changes)) {
        mSite.reset();
        ASSERT_FALSE(runToFault(mSite.order, at));
        const bool unfinished = mSite.hasJournal();
        const bool isMixed = mSite.state() == UpgradeSite::State::Mixed;
        EXPECT_TRUE(unfinished || !isMixed) << "at " << at << "\n" << mSite.differences();
        const UpgradeOutcome outcome = upgrade(mWithoutPackage);
        EXPECT_EQ(outcome.result, Result::Restored) << "at " << at << outcome.error.errorMessage();
        EXPECT_EQ(outcome.recovered, unfinished) << "at " << at;
        EXPECT_FALSE(mSite.hasJournal());
        const bool isOld = mSite.isOld();
        ASSERT_TRUE(isOld || (!unfinished && mSite.isNew())) << "at " << at << "\n" << mSite.differences();
        mixed += isMixed ? 1 : 0;
        recovered += unfinished ? 1 : 0;
        old += isOld ? 1 : 0;
        if (++tried % 8 != 0) continue;
        EXPECT_EQ(upgrade(mSite.order).result, Result::Installed);
        ASSERT_TRUE(mSite.isNew()) << "at " << at << "\n" << mSite.differences();
    }
    EXPECT_GT(mixed, tried / 13);
    EXPECT_GE(recovered, mixed);
    // The end of the journal is lost with the power before it has reached the disk.
    EXPECT_EQ(old, GetParam().fault == Fault::PowerCut ? tried : tried - 1);
    std::cout << changes << " changes, " << recovered << " recovered, of them " << mixed << " from a mixed directory\n";
}

TEST_P(UpgradeFaults, BrokenOffAtAnyChangeANewDirectoryEndsWholeOrIsGone) {
    for (UpgradeOrder* order : {&mSite.order, &mWithoutPackage}) order->installDir = mSite.at("fresh/installed");
    ASSERT_TRUE(runToFault(mSite.order, 0));
    const int changes = mCounted;
    const support::Tree whole = support::withoutTimes(support::snapshot(mSite.order.installDir));
    ASSERT_GT(whole.size(), 10U);
    int begun = 0, gone = 0, tried = 0;
    for (const int at : triedOf(changes)) {
        ++tried;
        std::filesystem::remove_all(mSite.at("fresh"));
        std::filesystem::remove_all(mSite.at("work"));
        ASSERT_FALSE(runToFault(mSite.order, at));
        begun += std::filesystem::exists(mSite.order.installDir) ? 1 : 0;
        EXPECT_EQ(upgrade(mWithoutPackage).result, Result::Restored) << "at " << at;
        EXPECT_FALSE(mSite.hasJournal());
        const support::Tree found = support::withoutTimes(support::snapshot(mSite.order.installDir));
        ASSERT_TRUE(found.empty() || found == whole) << "at " << at << "\n" << support::difference(whole, found);
        gone += found.empty() ? 1 : 0;
    }
    EXPECT_GT(begun, tried / 10);
    EXPECT_EQ(gone, GetParam().fault == Fault::PowerCut ? tried : tried - 1);
}

class RecoveryFaults : public UpgradeFaults {};

TEST_P(RecoveryFaults, BrokenOffAtAnyChangeTheRecoveryGoesOnNextTime) {
    runToFault(mSite.order, 0);
    const int far = mCounted * GetParam().percent / 100;
    int brokenOff = 0;
    for (int at = 1;; at += effort::kStep) {
        mSite.reset();
        ASSERT_FALSE(runToFault(mSite.order, far));
        ASSERT_TRUE(mSite.hasJournal());
        if (runToFault(mWithoutPackage, at)) break;
        ++brokenOff;
        runToFault(mWithoutPackage, 1 + at / 2);
        EXPECT_EQ(upgrade(mWithoutPackage).result, Result::Restored);
        ASSERT_TRUE(mSite.isOld()) << "at " << at << "\n" << mSite.differences();
        EXPECT_FALSE(mSite.hasJournal());
    }
    EXPECT_GT(brokenOff, 50 / effort::kStep);
    std::cout << brokenOff << " recoveries were broken off\n";
}

INSTANTIATE_TEST_SUITE_P(Upgrade, UpgradeFaults,
                         testing::Values(FaultCase{"Killed", Fault::Kill},
                                         FaultCase{"KilledInAWrite", Fault::HalfWrite},
                                         FaultCase{"PowerCut", Fault::PowerCut},
                                         FaultCase{"PowerCutThatSparesNames", Fault::DataLoss}),
                         [](const auto& each) { return each.param.name; });

INSTANTIATE_TEST_SUITE_P(Upgrade, RecoveryFaults,
                         testing::Values(FaultCase{"KilledEarly", Fault::Kill, 54},
                                         FaultCase{"KilledHalfWay", Fault::Kill, 75},
                                         FaultCase{"KilledAtTheEnd", Fault::Kill, 96},
                                         FaultCase{"PowerCutEarly", Fault::PowerCut, 54},
                                         FaultCase{"PowerCutHalfWay", Fault::PowerCut, 75},
                                         FaultCase{"PowerCutAtTheEnd", Fault::PowerCut, 96},
                                         FaultCase{"KilledInAWriteHalfWay", Fault::HalfWrite, 75},
                                         FaultCase{"PowerCutThatSparesNamesAtTheEnd", Fault::DataLoss, 96}),
                         [](const auto& each) { return each.param.name; });

}  // namespace
