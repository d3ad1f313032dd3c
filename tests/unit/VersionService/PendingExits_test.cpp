// The ends of the host that follow installations asked for by peers.
#include "VersionService/PendingExits.h"

#include "ManualClock.h"
#include "Public/Base/DetachedThread.h"
#include "Received.h"

using namespace Tarnwick::OrvUpdate;
using Public::Base::settleDetached;

namespace {

class PendingExitsTest : public testing::Test {
protected:
    ~PendingExitsTest() override {
        mClock.advance(100000);
        settleDetached();
    }
    std::shared_ptr<AgentInstaller> installer(int number = 0) {
        return std::make_shared<AgentInstaller>(
            PackageCallback(),
            [ends = mEnds, threads = mThreads, number] {
                ends.add(number);
                threads.add(std::this_thread::get_id());
                return true;
            },
            nullptr, VersionType_Server);
    }
    void elapse(uint64_t milliseconds) {
        mClock.advance(milliseconds);
        settleDetached();
    }

    support::ManualClock mClock;
    const support::Received<int> mEnds;
    const support::Received<std::thread::id> mThreads;
    std::shared_ptr<PendingExits> mExits = std::make_shared<PendingExits>();
};

}  // namespace

TEST_F(PendingExitsTest, EndTheHostASecondLaterOnAnotherThread) {
    mExits->add(installer());
    elapse(999);
    EXPECT_EQ(mEnds.count(), 0U);
    elapse(1);
    ASSERT_EQ(mEnds.count(), 1U);
    EXPECT_NE(mThreads.values()[0], std::this_thread::get_id());
}

TEST_F(PendingExitsTest, OfAThousandLaunchesTakeOneThreadAndKeepTheirOrder) {
    std::vector<int> numbers;
    for (int number = 0; number < 1000; ++number) {
        mExits->add(installer(number));
        numbers.push_back(number);
    }
    elapse(1000);
    EXPECT_EQ(mEnds.values(), numbers);
    const auto threads = mThreads.values();
    EXPECT_EQ(std::set<std::thread::id>(threads.begin(), threads.end()).size(), 1U);
}

TEST_F(PendingExitsTest, OutliveTheirOwnerAndLetGoOfTheInstallers) {
    auto one = installer();
    const std::weak_ptr<AgentInstaller> watch = one;
    mExits->add(one);
    one.reset();
    mExits.reset();
    elapse(500);
    EXPECT_FALSE(watch.expired());
    elapse(500);
    EXPECT_EQ(mEnds.count(), 1U);
    EXPECT_TRUE(watch.expired());
}

TEST_F(PendingExitsTest, BeginAnewAfterARest) {
    mExits->add(installer());
    elapse(1000);
    mExits->add(installer());
    elapse(999);
    EXPECT_EQ(mEnds.count(), 1U);
    elapse(1);
    EXPECT_EQ(mEnds.count(), 2U);
}

TEST_F(PendingExitsTest, MayBeAddedFromManyThreads) {
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread) {
        threads.emplace_back([this] {
            for (int round = 0; round < 50; ++round) mExits->add(installer());
        });
    }
    for (auto& thread : threads) thread.join();
    elapse(1000);
    EXPECT_EQ(mEnds.count(), 200U);
}
