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

TEST(Thread, MayBeCreatedBySeveralAtOnce) {
    std::atomic<int> runs{0};
    Body thread([&] { ++runs; });
    std::vector<std::thread> callers;
    for (int i = 0; i < 4; ++i) {
        callers.emplace_back([&] {
            for (int n = 0; n < 50; ++n) thread.createThread();
        });
    }
    for (auto& caller : callers) caller.join();
    thread.destroyThread();
    EXPECT_EQ(runs, 200);
}

}  // namespace
