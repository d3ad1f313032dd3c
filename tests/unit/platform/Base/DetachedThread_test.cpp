#include "Public/Base/DetachedThread.h"

#include <atomic>
#include <future>

#include "ManualClock.h"
#include "Public/Base/Thread.h"

using Public::Base::settleDetached;
using Public::Base::startDetached;

namespace {

TEST(DetachedThread, BodyRunsOnceAndWhatItHoldsGoesWithIt) {
    auto held = std::make_shared<std::atomic<int>>(0);
    std::atomic<int> runs{0};
    ASSERT_TRUE(startDetached("once", [held, &runs] { ++runs; }));
    settleDetached();
    EXPECT_EQ(runs, 1);
    EXPECT_EQ(held.use_count(), 1);
}

TEST(DetachedThread, SettlingWaitsForThoseThatWork) {
    std::promise<void> open;
    std::atomic<bool> done{false};
    startDetached("working", [&, gate = open.get_future().share()] {
        gate.wait();
        done = true;
    });
    auto settled = std::async(std::launch::async, [&] {
        settleDetached();
        return done.load();
    });
    EXPECT_FALSE(done);
    open.set_value();
    EXPECT_TRUE(settled.get());
}

TEST(DetachedThread, SettlingPassesOverThoseThatSleepUntilTheirTimeHasCome) {
    support::ManualClock clock;
    std::atomic<int> stage{0};
    startDetached("asleep", [&] {
        stage = 1;
        Public::Base::Thread::sleep(1000);
        stage = 2;
    });
    settleDetached();
    EXPECT_EQ(stage, 1);
    clock.advance(999);
    settleDetached();
    EXPECT_EQ(stage, 1);
    clock.advance(1);
    settleDetached();
    EXPECT_EQ(stage, 2);
}

}  // namespace
