#include "MQ/WorkPool.h"

#include "LogRecorder.h"
#include "QueueBed.h"

namespace {

using support::Gate;
using Tarnwick::MQ::WorkPool;

TEST(WorkPool, HasFourThreadsAtLeast) {
    const WorkPool pool;
    EXPECT_EQ(pool.threads(), 4u);
}

TEST(WorkPool, RunsEveryTask) {
    std::atomic<int> ran{0};
    WorkPool pool;
    for (int i = 0; i < 1000; ++i) EXPECT_TRUE(pool.post([&ran] { ++ran; }));
    pool.waitUntilIdle();
    EXPECT_EQ(ran, 1000);
    EXPECT_EQ(pool.posted(), 1000u);
}

TEST(WorkPool, GrowsWhenAllOfItsThreadsAreBlocked) {
    Gate gate;
    WorkPool pool;
    constexpr size_t kBlocked = 20;
    for (size_t i = 0; i < kBlocked; ++i) pool.post([&gate] { gate.pass(); });
    gate.waitForVisitors(kBlocked);
    EXPECT_GE(pool.threads(), kBlocked);
    gate.open();
    pool.waitUntilIdle();
}

TEST(WorkPool, RunsWhatWaitsBeforeItEnds) {
    std::atomic<int> ran{0};
    {
        WorkPool pool;
        for (int i = 0; i < 500; ++i) pool.post([&ran] { ++ran; });
    }
    EXPECT_EQ(ran, 500);
}

TEST(WorkPool, MayEndInATask) {
    Gate ended;
    auto pool = std::make_shared<WorkPool>();
    auto* last = new std::shared_ptr<WorkPool>(pool);
    pool->post([last, &ended] {
        delete last;
        ended.open();
    });
    pool.reset();
    ended.pass();
    EXPECT_FALSE(pool);
}

TEST(WorkPool, LogsATaskThatThrowsAndGoesOn) {
    const support::LogRecorder log;
    std::atomic<bool> ran{false};
    WorkPool pool;
    pool.post([] { throw std::runtime_error("broken"); });
    pool.post([&ran] { ran = true; });
    pool.waitUntilIdle();
    EXPECT_TRUE(ran);
    EXPECT_TRUE(log.has(2, "a task of the queue threw: broken"));
}

TEST(WorkPool, TasksMayPostTasks) {
    std::atomic<int> ran{0};
    WorkPool pool;
    std::function<void(int)> next = [&](int left) {
        ++ran;
        if (left > 0) pool.post([&next, left] { next(left - 1); });
    };
    pool.post([&next] { next(99); });
    pool.waitUntilIdle();
    EXPECT_EQ(ran, 100);
}

}  // namespace
