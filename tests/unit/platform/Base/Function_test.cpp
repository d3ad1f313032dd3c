#include "Public/Base/Function.h"

using Public::Base::Function;

namespace {

int twice(int number) { return number * 2; }

struct Counter {
    int add(int number) { return total += number; }
    int total = 0;
};

TEST(Function, DefaultIsEmpty) {
    const Function<void()> function;
    EXPECT_FALSE(function);
    EXPECT_TRUE(!function);
}

TEST(Function, CallingAnEmptyOneGivesADefaultValue) {
    EXPECT_EQ(Function<int(int)>()(5), 0);
    EXPECT_EQ(Function<std::shared_ptr<int>()>()(), nullptr);
}

TEST(Function, HoldsAFreeFunction) { EXPECT_EQ(Function<int(int)>(twice)(4), 8); }

TEST(Function, HoldsALambda) {
    int seen = 0;
    const Function<void(int)> function([&seen](int number) { seen = number; });
    function(3);
    EXPECT_EQ(seen, 3);
}

TEST(Function, HoldsAMemberFunctionWithAPlainObject) {
    Counter counter;
    const Function<int(int)> function(&Counter::add, &counter);
    EXPECT_EQ(function(2), 2);
    EXPECT_EQ(function(3), 5);
}

TEST(Function, HoldsAMemberFunctionWithASharedObject) {
    auto counter = std::make_shared<Counter>();
    const Function<int(int)> function(&Counter::add, counter);
    const std::weak_ptr<Counter> weak = counter;
    counter.reset();
    EXPECT_EQ(function(2), 2);
    EXPECT_FALSE(weak.expired());
}

TEST(Function, CopiesCallTheSameTarget) {
    auto calls = std::make_shared<int>(0);
    const Function<void()> first([calls] { ++*calls; });
    Function<void()> second = first;
    first();
    second();
    EXPECT_EQ(*calls, 2);
}

TEST(Function, AssignmentReplacesAndReleasesTheTarget) {
    auto held = std::make_shared<int>(1);
    const std::weak_ptr<int> weak = held;
    Function<void()> function([held = std::move(held)] {});
    function = Function<void()>();
    EXPECT_TRUE(weak.expired());
}

TEST(Function, MayReplaceItselfDuringItsCall) {
    Function<int()> function;
    function = [&function] {
        function = [] { return 2; };
        return 1;
    };
    EXPECT_EQ(function(), 1);
    EXPECT_EQ(function(), 2);
}

TEST(Function, SelfAssignmentKeepsTheTarget) {
    Function<int()> function([] { return 7; });
    const auto& same = function;
    function = same;
    EXPECT_EQ(function(), 7);
}

TEST(Function, MayBeReplacedWhileOthersCall) {
    Function<int()> function([] { return 1; });
    std::atomic<bool> stop{false};
    std::atomic<int> wrong{0};
    std::vector<std::thread> callers;
    for (int i = 0; i < 3; ++i) {
        callers.emplace_back([&] {
            while (!stop) {
                const int got = function();
                if (got != 1 && got != 2) ++wrong;
            }
        });
    }
    for (int i = 0; i < 2000; ++i)
        function = i % 2 == 0 ? Function<int()>([] { return 2; }) : Function<int()>([] { return 1; });
    stop = true;
    for (auto& caller : callers) caller.join();
    EXPECT_EQ(wrong, 0);
}

TEST(Function, NullPointerAndEmptyStdFunctionGiveAnEmptyOne) {
    void (*nothing)(int) = nullptr;
    EXPECT_FALSE(static_cast<bool>(Public::Base::Function<void(int)>(nothing)));
    EXPECT_FALSE(static_cast<bool>(Public::Base::Function<void(int)>(std::function<void(int)>())));
}

}  // namespace
