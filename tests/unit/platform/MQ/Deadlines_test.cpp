#include "MQ/Deadlines.h"

#include "ManualClock.h"

namespace {

using Tarnwick::MQ::Deadlines;

class DeadlinesTest : public testing::Test {
protected:
    std::function<void()> noting(char name) {
        return [this, name] {
            std::lock_guard lock(mutex);
            ran += name;
        };
    }
    std::string ranAfter(unsigned milliseconds) {
        clock.advance(milliseconds);
        deadlines->waitUntilNothingIsDue();
        std::lock_guard lock(mutex);
        return ran;
    }

    support::ManualClock clock;
    std::mutex mutex;
    std::string ran;
    std::shared_ptr<Deadlines> deadlines = Deadlines::shared();
};

TEST_F(DeadlinesTest, RunTasksWhenTheirTimeHasComeAndInItsOrder) {
    const auto now = deadlines->now();
    deadlines->at(now + 30, noting('3'));
    deadlines->at(now + 10, noting('1'));
    deadlines->at(now + 20, noting('2'));
    EXPECT_EQ(ranAfter(9), "");
    EXPECT_EQ(ranAfter(1), "1");
    EXPECT_EQ(ranAfter(20), "123");
}

TEST_F(DeadlinesTest, RunTasksOfOneTimeInTheOrderOfEntry) {
    const auto now = deadlines->now();
    for (const char name : {'a', 'b', 'c'}) deadlines->at(now + 5, noting(name));
    EXPECT_EQ(ranAfter(5), "abc");
}

TEST_F(DeadlinesTest, RunATaskWhoseTimeHasPassedAtOnce) {
    deadlines->at(deadlines->now(), noting('x'));
    EXPECT_EQ(ranAfter(0), "x");
}

TEST_F(DeadlinesTest, DoNotRunWhatWasTakenBack) {
    const auto key = deadlines->at(deadlines->now() + 5, noting('x'));
    deadlines->at(deadlines->now() + 5, noting('y'));
    deadlines->cancel(key);
    deadlines->cancel(key);
    EXPECT_EQ(ranAfter(5), "y");
}

TEST_F(DeadlinesTest, LetTasksEnterTasks) {
    deadlines->at(deadlines->now() + 5, [this] { deadlines->at(deadlines->now(), noting('x')); });
    EXPECT_EQ(ranAfter(5), "x");
}

TEST_F(DeadlinesTest, AreSharedUntilTheClockIsReplaced) {
    EXPECT_EQ(Deadlines::shared(), deadlines);
    const support::ManualClock other;
    EXPECT_NE(Deadlines::shared(), deadlines);
}

TEST_F(DeadlinesTest, DropWhatHasNotBegunAtTheirEnd) {
    auto held = std::make_shared<int>(1);
    const std::weak_ptr<int> weak = held;
    deadlines->at(deadlines->now() + 5, [held] {});
    held.reset();
    EXPECT_FALSE(weak.expired());
    deadlines.reset();
    EXPECT_TRUE(weak.expired());
}

TEST_F(DeadlinesTest, MayEndInATask) {
    std::mutex own;
    std::condition_variable changed;
    bool done = false;
    auto* last = new std::shared_ptr<Deadlines>(std::move(deadlines));
    (*last)->at((*last)->now(), [&, last] {
        delete last;
        std::lock_guard lock(own);
        done = true;
        changed.notify_all();
    });
    std::unique_lock lock(own);
    changed.wait(lock, [&] { return done; });
    EXPECT_TRUE(done);
}

}  // namespace
