// The launched installer, killed at random moments and started again.
#include <chrono>
#include <random>

#include "Effort.h"
#include "FileText.h"
#include "Program.h"
#include "Public/Base/JsonValue.h"
#include "UpgradeSite.h"

namespace {

using Clock = std::chrono::steady_clock;
using State = UpgradeSite::State;

struct Batch {
    unsigned seed;
    int kills;
    bool onDisk;
};
void PrintTo(const Batch& one, std::ostream* out) { *out << "seed " << one.seed; }

/// What a batch of kills met.
struct Figures {
    int killed = 0, unfinished = 0, mixed = 0, old = 0, installed = 0, killedAgain = 0;
};

class UpgradeKills : public testing::TestWithParam<Batch> {
protected:
    UpgradeKills() {
        mWithoutPackage = mSite.order;
        mWithoutPackage.package = mSite.at("gone.exe");
    }

    support::RunningProgram start(const UpgradeOrder& order) {
        return support::RunningProgram(
            {{mProgram, order.package, order.installDir, "3", "0", order.reportFile, order.backupDir, "1"}});
    }
    /// @return true when it was killed at that moment
    static bool killAfter(support::RunningProgram installer, Clock::duration delay) {
        return !installer.endsWithin(delay) && installer.kill();
    }
    /// Some time in the life of the process, as long as that has been of late.
    Clock::duration someMoment() {
        return std::chrono::duration_cast<Clock::duration>(mUsual *
                                                           std::uniform_real_distribution<double>(0, 1)(mRandom));
    }
    /// Runs to the end. @return the report's result
    std::string finish(const UpgradeOrder& order, bool unfinished) {
        std::filesystem::remove(order.reportFile);
        const auto begin = Clock::now();
        const int status = start(order).wait();
        Public::Base::JsonValue report;
        EXPECT_FALSE(report.read(Public::Base::SharedBuffer(support::readText(order.reportFile).value_or(""))));
        const std::string result = report["result"]->toString();
        EXPECT_EQ(status, result == "installed" ? 0 : 1) << report["reason"]->toString();
        EXPECT_EQ(report["recovered"]->toBool(), unfinished);
        if (result == "installed" && !unfinished) mUsual = mUsual * 0.75 + (Clock::now() - begin) * 0.25;
        return result;
    }
    void killOnce(int number);

    support::TempDir mProgramDir;
    // The log lies beside the program, so this test has a program of its own.
    const std::string mProgram = support::copyProgram(ORV_INSTALLER, mProgramDir.path());
    UpgradeSite mSite{static_cast<size_t>(effort::kFiles), 4000,
                      GetParam().onDisk ? std::string() : UpgradeSite::memory()};
    UpgradeOrder mWithoutPackage;
    std::mt19937 mRandom{GetParam().seed};
    std::chrono::duration<double> mUsual{0.05};
    Figures mFigures;
};

void UpgradeKills::killOnce(int number) {
    const auto moment = someMoment();
    if (killAfter(start(mSite.order), moment)) ++mFigures.killed;
    bool unfinished = mSite.hasJournal();
    State state = mSite.state();
    EXPECT_TRUE(unfinished || state != State::Mixed) << mSite.differences();
    mFigures.unfinished += unfinished ? 1 : 0;
    mFigures.mixed += state == State::Mixed ? 1 : 0;

    const UpgradeOrder& again = number % 3 != 0 ? mSite.order : mWithoutPackage;
    if (number % 4 == 0) {
        if (killAfter(start(again), someMoment() / 3)) ++mFigures.killedAgain;
        unfinished = mSite.hasJournal();
        state = mSite.state();
        EXPECT_TRUE(unfinished || state != State::Mixed) << mSite.differences();
    }
    const bool becomesNew = &again == &mSite.order || (!unfinished && state == State::New);
    EXPECT_EQ(finish(again, unfinished), &again == &mSite.order ? "installed" : "restored");
    EXPECT_FALSE(mSite.hasJournal());
    EXPECT_TRUE(mSite.state() == (becomesNew ? State::New : State::Old)) << mSite.differences();
    ++(becomesNew ? mFigures.installed : mFigures.old);
    if (becomesNew) mSite.reset();
}

TEST_P(UpgradeKills, LeaveTheOldOrTheNewVersionWhole) {
    for (int round = 0; round < 3; ++round) {  // learns how long one takes
        mSite.reset();
        ASSERT_EQ(finish(mSite.order, false), "installed");
        ASSERT_TRUE(mSite.isNew()) << mSite.differences();
    }
    mSite.reset();
    // Kills that came too late do not count, nor do batches whose kills all met a whole version. On a disk, though,
    // most of the time goes into waiting for it, while the directory is one or the other.
    const int mixedAtLeast = GetParam().onDisk ? 0 : 1;
    int number = 0;
    while ((mFigures.killed < GetParam().kills || mFigures.mixed < mixedAtLeast || mFigures.unfinished == 0 ||
            mFigures.old == 0) &&
           number < 4 * GetParam().kills + 40) {
        SCOPED_TRACE("attempt " + std::to_string(number) + " of seed " + std::to_string(GetParam().seed));
        killOnce(number++);
        if (HasFailure()) break;
    }
    EXPECT_GE(mFigures.killed, GetParam().kills);
    EXPECT_GT(mFigures.unfinished, 0);
    EXPECT_GE(mFigures.mixed, mixedAtLeast);
    EXPECT_GT(mFigures.old, 0);
    std::cout << "seed " << GetParam().seed << ": killed " << mFigures.killed << ", unfinished journals "
              << mFigures.unfinished << ", of them mixed " << mFigures.mixed << ", killed again "
              << mFigures.killedAgain << ", ended old " << mFigures.old << ", ended new " << mFigures.installed
              << ", one run takes " << mUsual.count() * 1000 << " ms\n";
}

std::vector<Batch> batches() {
    std::vector<Batch> all{{11, std::min(8, effort::kKills), true}};
    for (unsigned seed = 1; seed <= 10; ++seed) all.push_back({seed, effort::kKills, false});
    return all;
}

INSTANTIATE_TEST_SUITE_P(Batches, UpgradeKills, testing::ValuesIn(batches()), [](const auto& each) {
    return (each.param.onDisk ? "OnDiskOfSeed" : "OfSeed") + std::to_string(each.param.seed);
});

}  // namespace
