#include "Public/Base/Clock.h"

#include "ManualClock.h"
#include "Public/Base/Time.h"

using Public::Base::Clock;
using Public::Base::Time;

namespace {

TEST(Clock, MachineClockNeverGoesBack) {
    const auto clock = Clock::current();
    uint64_t last = clock->milliseconds();
    for (int i = 0; i < 1000; ++i) {
        const uint64_t now = clock->milliseconds();
        EXPECT_GE(now, last);
        last = now;
    }
}

TEST(Clock, WaitEndsAtTheDeadline) {
    const auto clock = Clock::current();
    std::mutex mutex;
    std::condition_variable condition;
    std::unique_lock lock(mutex);
    const uint64_t deadline = clock->milliseconds() + 5;
    while (!clock->waitUntil(lock, condition, deadline)) {
    }
    EXPECT_GE(clock->milliseconds(), deadline);
}

TEST(Clock, WaitForADeadlineThatHasPassedReturnsAtOnce) {
    std::mutex mutex;
    std::condition_variable condition;
    std::unique_lock lock(mutex);
    EXPECT_TRUE(Clock::current()->waitUntil(lock, condition, 0));
}

TEST(Clock, WaitIsEndedByANotification) {
    const auto clock = Clock::current();
    std::mutex mutex;
    std::condition_variable condition;
    bool ready = false;
    std::thread waker([&] {
        std::lock_guard lock(mutex);
        ready = true;
        condition.notify_all();
    });
    std::unique_lock lock(mutex);
    while (!ready) EXPECT_FALSE(clock->waitUntil(lock, condition, UINT64_MAX));
    waker.join();
    EXPECT_TRUE(ready);
}

TEST(Clock, ReplacedClockGivesTheMillisecondsOfTime) {
    support::ManualClock clock;
    const uint64_t before = Time::getCurrentMilliSecond();
    clock.advance(12345);
    EXPECT_EQ(Time::getCurrentMilliSecond(), before + 12345);
}

TEST(Clock, NullRestoresTheMachinesOwn) {
    { const support::ManualClock clock; }
    const uint64_t before = Time::getCurrentMilliSecond();
    EXPECT_NE(Clock::current(), nullptr);
    EXPECT_GE(Time::getCurrentMilliSecond(), before);
}

TEST(Clock, MayBeReplacedWhileOthersRead) {
    std::atomic<bool> stop{false};
    std::atomic<uint64_t> reads{0};
    std::thread reader([&] {
        while (!stop) reads += Clock::current() != nullptr ? 1 : 0;
    });
    for (int i = 0; i < 200 || reads < 200; ++i) const support::ManualClock clock;
    stop = true;
    reader.join();
    EXPECT_GE(reads, 200U);
}

TEST(Clock, WaitEndsOnTheClockItBeganWith) {
    const auto first = std::make_shared<support::ManualTime>();
    Clock::replace(first);
    const uint64_t deadline = Clock::current()->milliseconds() + 1000;
    std::thread waiter([clock = Clock::current(), deadline] {
        std::mutex mutex;
        std::condition_variable condition;
        std::unique_lock lock(mutex);
        while (!clock->waitUntil(lock, condition, deadline)) {
        }
    });
    Clock::replace(nullptr);
    first->advance(1000);
    waiter.join();
    EXPECT_GE(first->milliseconds(), deadline);
}

TEST(Clock, ManualClockStandsStillByItself) {
    const support::ManualClock clock;
    EXPECT_EQ(Clock::current()->milliseconds(), clock.now());
    std::mutex mutex;
    std::condition_variable condition;
    std::unique_lock lock(mutex);
    EXPECT_FALSE(Clock::current()->waitUntil(lock, condition, clock.now() + 1));
}

}  // namespace
