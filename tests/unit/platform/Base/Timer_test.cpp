#include "Public/Base/Timer.h"

#include <future>

#include "ManualClock.h"

using Public::Base::Timer;

namespace {

/// Counts calls and lets a test wait for them.
class Calls {
public:
    void note(unsigned long value) {
        std::lock_guard lock(mMutex);
        mValues.push_back(value);
        mChanged.notify_all();
    }
    void waitFor(size_t count) {
        std::unique_lock lock(mMutex);
        mChanged.wait(lock, [&] { return mValues.size() >= count; });
    }
    std::vector<unsigned long> values() {
        std::lock_guard lock(mMutex);
        return mValues;
    }

private:
    std::mutex mMutex;
    std::condition_variable mChanged;
    std::vector<unsigned long> mValues;
};

TEST(Timer, CallsAtOnceWithoutADelayAndPassesTheValue) {
    Calls calls;
    Timer timer("test");
    timer.start([&](unsigned long value) { calls.note(value); }, 0, 30000, 7);
    calls.waitFor(1);
    EXPECT_EQ(calls.values(), std::vector<unsigned long>{7});
}

TEST(Timer, WaitsForItsDelay) {
    support::ManualClock clock;
    Calls calls;
    Timer timer("test");
    timer.start([&](unsigned long value) { calls.note(value); }, 100, 0, 1);
    clock.advance(99);
    EXPECT_TRUE(calls.values().empty());
    clock.advance(1);
    calls.waitFor(1);
    EXPECT_EQ(calls.values().size(), 1U);
}

TEST(Timer, RepeatsAtItsPeriod) {
    support::ManualClock clock;
    Calls calls;
    Timer timer("test");
    timer.start([&](unsigned long value) { calls.note(value); }, 0, 30000, 0);
    calls.waitFor(1);
    for (size_t i = 2; i < 5; ++i) {
        clock.advance(30000);
        calls.waitFor(i);
    }
    EXPECT_EQ(calls.values().size(), 4U);
}

TEST(Timer, PeriodOfZeroCallsOnce) {
    support::ManualClock clock;
    Calls calls;
    Timer timer("test");
    timer.start([&](unsigned long value) { calls.note(value); }, 0, 0, 0);
    calls.waitFor(1);
    clock.advance(100000);
    timer.stop();
    EXPECT_EQ(calls.values().size(), 1U);
}

TEST(Timer, DestructorEndsItWithoutACall) {
    support::ManualClock clock;
    Calls calls;
    {
        Timer timer("test");
        timer.start([&](unsigned long value) { calls.note(value); }, 1000, 1000, 0);
    }
    clock.advance(5000);
    EXPECT_TRUE(calls.values().empty());
}

TEST(Timer, DestructorWaitsForARunningCall) {
    std::promise<void> entered, release;
    std::atomic<bool> done{false};
    auto timer = std::make_unique<Timer>("test");
    timer->start(
        [&](unsigned long) {
            entered.set_value();
            release.get_future().wait();
            done = true;
        },
        0, 0, 0);
    entered.get_future().wait();
    std::thread releaser([&] { release.set_value(); });
    timer.reset();
    EXPECT_TRUE(done);
    releaser.join();
}

TEST(Timer, MayBeDestroyedByItsOwnCall) {
    auto timer = std::make_shared<std::unique_ptr<Timer>>(std::make_unique<Timer>("test"));
    std::promise<void> destroyed;
    (*timer)->start(
        [&destroyed, timer](unsigned long) {
            timer->reset();
            destroyed.set_value();
        },
        0, 1000, 0);
    timer.reset();
    EXPECT_EQ(destroyed.get_future().wait_for(std::chrono::seconds(30)), std::future_status::ready);
}

TEST(Timer, StartingAgainReplacesTheFirst) {
    support::ManualClock clock;
    Calls first, second;
    Timer timer("test");
    timer.start([&](unsigned long value) { first.note(value); }, 1000, 1000, 0);
    timer.start([&](unsigned long value) { second.note(value); }, 0, 0, 2);
    second.waitFor(1);
    clock.advance(10000);
    timer.stop();
    EXPECT_TRUE(first.values().empty());
}

TEST(Timer, LateCallIsNotFollowedByAHastyOne) {
    support::ManualClock clock;
    Calls calls;
    Timer timer("test");
    timer.start([&](unsigned long) { calls.note(clock.now()); }, 0, 1000, 0);
    calls.waitFor(1);
    clock.advance(5500);
    calls.waitFor(2);
    clock.advance(999);
    clock.advance(1);
    calls.waitFor(3);
    timer.stop();
    const auto times = calls.values();
    ASSERT_EQ(times.size(), 3U);
    EXPECT_GE(times[2] - times[1], 1000U);
}

TEST(Timer, MayBeDestroyedByItsFirstCallHoweverEarlyThatComes) {
    for (int i = 0; i < 200; ++i) {
        const auto destroyed = std::make_shared<std::promise<void>>();
        auto* timer = new Timer("test");
        timer->start(
            [destroyed, timer](unsigned long) {
                delete timer;
                destroyed->set_value();
            },
            0, 1, 0);
        EXPECT_EQ(destroyed->get_future().wait_for(std::chrono::seconds(30)), std::future_status::ready);
    }
}

TEST(Timer, CallMayStopIt) {
    support::ManualClock clock;
    Calls calls;
    Timer timer("test");
    timer.start(
        [&](unsigned long value) {
            timer.stop();
            calls.note(value);
        },
        0, 1000, 3);
    calls.waitFor(1);
    clock.advance(100000);
    timer.stop();
    EXPECT_EQ(calls.values(), std::vector<unsigned long>{3});
}

TEST(Timer, CallMayStartItAnew) {
    Calls calls;
    Timer timer("test");
    timer.start([&](unsigned long) { timer.start([&](unsigned long value) { calls.note(value); }, 0, 0, 2); }, 0, 0, 1);
    calls.waitFor(1);
    timer.stop();
    EXPECT_EQ(calls.values(), std::vector<unsigned long>{2});
}

TEST(Timer, StopWithoutAStartAndTwiceDoesNothing) {
    Calls calls;
    Timer timer("test");
    timer.stop();
    timer.start([&](unsigned long value) { calls.note(value); }, 0, 0, 1);
    calls.waitFor(1);
    timer.stop();
    timer.stop();
    EXPECT_EQ(calls.values().size(), 1U);
}

TEST(Timer, EmptyCallbackIsNotCalled) {
    Timer timer("test");
    EXPECT_NO_THROW(timer.start({}, 0, 0, 0));
    EXPECT_NO_THROW(timer.stop());
}

TEST(Timer, KeepsToTheClockItWasStartedOn) {
    const auto first = std::make_shared<support::ManualTime>();
    Public::Base::Clock::replace(first);
    Calls calls;
    Timer timer("test");
    timer.start([&](unsigned long value) { calls.note(value); }, 1000, 0, 0);
    Public::Base::Clock::replace(nullptr);
    first->advance(1000);
    calls.waitFor(1);
    EXPECT_EQ(calls.values().size(), 1U);
}

TEST(Timer, MayBeStartedAndStoppedByManyThreads) {
    std::atomic<unsigned> calls{0};
    Timer timer("test");
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            for (int turn = 0; turn < 25; ++turn) {
                timer.start([&](unsigned long) { ++calls; }, 0, 1, 0);
                timer.stop();
            }
        });
    }
    for (auto& thread : threads) thread.join();
    timer.stop();
    const unsigned after = calls;
    timer.start([&](unsigned long) { ++calls; }, 0, 1, 0);
    while (calls == after) std::this_thread::yield();
    EXPECT_GT(calls, after);
}

}  // namespace
