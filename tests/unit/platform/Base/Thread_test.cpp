#include "Public/Base/Thread.h"

#include <future>

#include "ManualClock.h"

using Public::Base::Thread;

namespace {

class Body : public Thread {
public:
    explicit Body(std::function<void()> body) : Thread("test"), mBody(std::move(body)) {}
    ~Body() override { destroyThread(); }

private:
    void threadProc() override { mBody(); }
    std::function<void()> mBody;
};

TEST(Thread, RunsItsBodyOnAnotherThread) {
    std::thread::id id;
    Body thread([&] { id = std::this_thread::get_id(); });
    EXPECT_TRUE(thread.createThread());
    EXPECT_TRUE(thread.destroyThread());
    EXPECT_NE(id, std::thread::id());
    EXPECT_NE(id, std::this_thread::get_id());
}

TEST(Thread, DestroyThreadWaitsForTheBody) {
    std::promise<void> release;
    std::atomic<bool> done{false};
    Body thread([&] {
        release.get_future().wait();
        done = true;
    });
    ASSERT_TRUE(thread.createThread());
    release.set_value();
    thread.destroyThread();
    EXPECT_TRUE(done);
}

TEST(Thread, DestroyThreadWithoutAThreadSucceeds) {
    Body thread([] {});
    EXPECT_TRUE(thread.destroyThread());
    EXPECT_TRUE(thread.destroyThread());
}

TEST(Thread, MayRunAgain) {
    std::atomic<int> runs{0};
    Body thread([&] { ++runs; });
    thread.createThread();
    thread.createThread();
    thread.destroyThread();
    EXPECT_EQ(runs, 2);
}

TEST(Thread, BodyMayBeTheOneThatDestroysItsObject) {
    std::promise<bool> ended;
    Body* self = nullptr;
    self = new Body([&self, promise = &ended] {
        std::promise<bool>* const told = promise;
        const bool result = self->destroyThread();
        delete self;
        told->set_value(result);
    });
    ASSERT_TRUE(self->createThread());
    EXPECT_TRUE(ended.get_future().get());
}

TEST(Thread, SleepRunsOnTheClock) {
    support::ManualClock clock;
    const uint64_t begin = clock.now();
    std::promise<void> slept;
    std::thread sleeper([&] {
        Thread::sleep(60000);
        slept.set_value();
    });
    auto end = slept.get_future();
    while (end.wait_for(std::chrono::milliseconds(1)) != std::future_status::ready) clock.advance(10000);
    sleeper.join();
    EXPECT_GE(clock.now(), begin + 60000);
}

TEST(Thread, SleepOfNothingReturnsAtOnce) {
    const support::ManualClock clock;
    Thread::sleep(0);
    EXPECT_EQ(clock.now(), 1000000U);
}

TEST(Thread, EverybodyWhoDestroysItWaitsForTheBody) {
    std::promise<void> release;
    std::atomic<bool> done{false};
    std::atomic<int> early{0};
    std::atomic<int> waiting{0};
    Body thread([&] {
        release.get_future().wait();
        done = true;
    });
    ASSERT_TRUE(thread.createThread());
    std::vector<std::thread> waiters;
    for (int i = 0; i < 4; ++i) {
        waiters.emplace_back([&] {
            ++waiting;
            thread.destroyThread();
            if (!done) ++early;
        });
    }
    while (waiting < 4) std::this_thread::yield();
    release.set_value();
    for (auto& waiter : waiters) waiter.join();
    EXPECT_EQ(early, 0);
}

TEST(Thread, MayBeCreatedByManyThreadsAtOnce) {
    std::atomic<int> runs{0};
    std::atomic<int> atOnce{0};
    std::atomic<int> most{0};
    Body thread([&] {
        most = std::max(most.load(), ++atOnce);
        ++runs;
        --atOnce;
    });
    std::vector<std::thread> makers;
    for (int i = 0; i < 4; ++i) {
        makers.emplace_back([&] {
            for (int turn = 0; turn < 10; ++turn) thread.createThread();
        });
    }
    for (auto& maker : makers) maker.join();
    thread.destroyThread();
    EXPECT_EQ(runs, 40);
    EXPECT_EQ(most, 1);
}

TEST(Thread, BodyMayStartItselfAnew) {
    const auto letGo = std::make_shared<std::promise<bool>>();
    std::atomic<int> runs{0};
    Body* self = nullptr;
    Body thread([&] {
        if (++runs > 1) return;
        const auto told = letGo;  // outlives this function object, as the thread does that is let go
        told->set_value(self->createThread());
    });
    self = &thread;
    ASSERT_TRUE(thread.createThread());
    EXPECT_TRUE(letGo->get_future().get());
    EXPECT_TRUE(thread.destroyThread());
    EXPECT_EQ(runs, 2);
}

TEST(Thread, BodyMayLetGoOfItselfTwice) {
    const auto ended = std::make_shared<std::promise<bool>>();
    Body* self = nullptr;
    Body thread([&] {
        const auto told = ended;  // outlives this function object, as the thread does that is let go
        told->set_value(self->destroyThread() && self->destroyThread());
    });
    self = &thread;
    ASSERT_TRUE(thread.createThread());
    EXPECT_TRUE(ended->get_future().get());
}

TEST(Thread, BodyMayDestroyItWhileAnotherWaitsForIt) {
    std::promise<void> entered, release;
    const auto result = std::make_shared<std::promise<bool>>();
    Body* self = nullptr;
    Body thread([&] {
        entered.set_value();
        release.get_future().wait();
        const auto told = result;  // outlives this function object, as the thread may be let go
        told->set_value(self->destroyThread());
    });
    self = &thread;
    ASSERT_TRUE(thread.createThread());
    entered.get_future().wait();
    std::thread waiter([&] { thread.destroyThread(); });
    release.set_value();
    waiter.join();
    EXPECT_TRUE(result->get_future().get());
}

}  // namespace
