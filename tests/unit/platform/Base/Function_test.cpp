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

TEST(Function, NullFunctionPointerMakesAnEmptyOne) {
    const Function<int(int)> function(static_cast<int (*)(int)>(nullptr));
    EXPECT_FALSE(function);
    EXPECT_EQ(function(5), 0);
}

TEST(Function, EmptyStandardFunctionMakesAnEmptyOne) {
    EXPECT_FALSE(Function<void()>(std::function<void()>()));
    EXPECT_FALSE(Function<void()>(nullptr));
}

TEST(Function, NullObjectOrMemberMakesAnEmptyOne) {
    EXPECT_FALSE(Function<int(int)>(&Counter::add, static_cast<Counter*>(nullptr)));
    EXPECT_FALSE(Function<int(int)>(&Counter::add, std::shared_ptr<Counter>()));
    Counter counter;
    EXPECT_FALSE(Function<int(int)>(static_cast<int (Counter::*)(int)>(nullptr), &counter));
}

struct Reading {
    int twice(int number) const { return number * 2; }
    virtual int kind(int) { return 1; }
    virtual ~Reading() = default;
};
struct Derived : Reading {
    int kind(int) override { return 2; }
};

TEST(Function, HoldsAConstMemberFunction) {
    const Reading reading;
    EXPECT_EQ(Function<int(int)>(&Reading::twice, &reading)(4), 8);
}

TEST(Function, CallsTheOverridingMemberOfADerivedObject) {
    EXPECT_EQ(Function<int(int)>(&Reading::kind, std::make_shared<Derived>())(0), 2);
}

TEST(Function, PassesReferencesAndWhatCanOnlyBeMoved) {
    int number = 1;
    Function<void(int&)>([](int& given) { given = 5; })(number);
    EXPECT_EQ(number, 5);
    const Function<int(std::unique_ptr<int>)> takes([](std::unique_ptr<int> given) { return *given; });
    EXPECT_EQ(takes(std::make_unique<int>(7)), 7);
}

TEST(Function, LetsAnExceptionOfTheTargetThroughAndStaysUsable) {
    bool fail = true;
    const Function<int()> function([&fail] {
        if (fail) throw std::runtime_error("target");
        return 3;
    });
    EXPECT_THROW(function(), std::runtime_error);
    fail = false;
    EXPECT_EQ(function(), 3);
}

TEST(Function, TargetOutlivesItsCallWhenTheHolderGoesMeanwhile) {
    auto holder = std::make_unique<Function<int()>>();
    *holder = [&holder, kept = std::make_shared<int>(9)] {
        holder.reset();
        return *kept;
    };
    const Function<int()> copy = *holder;
    EXPECT_EQ(copy(), 9);
    EXPECT_EQ(holder, nullptr);
}

TEST(Function, MayDestroyTheOneThatIsBeingCalled) {
    auto holder = std::make_unique<Function<int()>>();
    *holder = [&holder, kept = std::make_shared<int>(9)] {
        holder.reset();
        return *kept;
    };
    EXPECT_EQ((*holder)(), 9);
    EXPECT_EQ(holder, nullptr);
}

TEST(Function, MayBeReplacedAgainAndAgainFromWithin) {
    Function<int(int)> function;
    const std::function<Function<int(int)>(int)> make = [&](int depth) {
        return Function<int(int)>([&, depth](int left) {
            function = make(depth + 1);
            return left == 0 ? depth : function(left - 1);
        });
    };
    function = make(0);
    EXPECT_EQ(function(5), 5);
    EXPECT_EQ(function(0), 6);
}

struct ClearsOnDestruction {
    explicit ClearsOnDestruction(Function<void()>& function) : target(function) {}
    ~ClearsOnDestruction() { wasEmpty = !target; }
    Function<void()>& target;
    static inline bool wasEmpty = false;
};

TEST(Function, OldTargetIsReleasedAfterTheLockIsGivenBack) {
    Function<void()> function;
    function = [held = std::make_shared<ClearsOnDestruction>(function)] {};
    ClearsOnDestruction::wasEmpty = false;
    function = nullptr;  // would wait for ever if the lock were held
    EXPECT_TRUE(ClearsOnDestruction::wasEmpty);
}

TEST(Function, TwoMayBeAssignedToEachOtherAtOnce) {
    Function<int()> first([] { return 1; }), second([] { return 2; });
    std::thread there([&] {
        for (int i = 0; i < 2000; ++i) first = second;
    });
    for (int i = 0; i < 2000; ++i) second = first;
    there.join();
    EXPECT_EQ(first(), second());
}

TEST(Function, MayBeCopiedTestedAndClearedWhileOthersCall) {
    auto calls = std::make_shared<std::atomic<int>>(0);
    Function<int()> function([calls] { return ++*calls; });
    std::atomic<bool> stop{false};
    std::atomic<int> wrong{0};
    std::vector<std::thread> users;
    for (int i = 0; i < 3; ++i) {
        users.emplace_back([&] {
            while (!stop) {
                const Function<int()> copy = function;
                if (copy && copy() <= 0) ++wrong;
                if (!function) std::this_thread::yield();
            }
        });
    }
    for (int i = 0; i < 1000; ++i) {
        function = nullptr;
        function = [calls] { return ++*calls; };
    }
    stop = true;
    for (auto& user : users) user.join();
    EXPECT_EQ(wrong, 0);
    function = nullptr;
    EXPECT_EQ(calls.use_count(), 1);
}

}  // namespace
