#include "Public/Base/SafeSharedPtr.h"

namespace {

TEST(SafeSharedPtr, IsEmptyAtFirst) {
    const SafeSharedPtr<int> holder;
    EXPECT_FALSE(holder);
    EXPECT_EQ(holder.get(), nullptr);
}

TEST(SafeSharedPtr, ReaderKeepsWhatItTookAlive) {
    SafeSharedPtr<int> holder(std::make_shared<int>(5));
    const auto copy = holder.get();
    holder = std::shared_ptr<int>();
    EXPECT_EQ(*copy, 5);
    EXPECT_FALSE(holder);
}

TEST(SafeSharedPtr, ExchangeHandsOutTheOldOne) {
    SafeSharedPtr<int> holder(std::make_shared<int>(1));
    EXPECT_EQ(*holder.exchange(std::make_shared<int>(2)), 1);
    EXPECT_EQ(*holder.get(), 2);
}

TEST(SafeSharedPtr, CopyAssignmentTakesTheOthersPointer) {
    SafeSharedPtr<int> first(std::make_shared<int>(3));
    SafeSharedPtr<int> second;
    second = first;
    EXPECT_EQ(second.get(), first.get());
}

struct ReadsItsHolder {
    explicit ReadsItsHolder(SafeSharedPtr<ReadsItsHolder>& owner) : holder(owner) {}
    ~ReadsItsHolder() { EXPECT_EQ(holder.get(), nullptr); }
    SafeSharedPtr<ReadsItsHolder>& holder;
};

TEST(SafeSharedPtr, OldPointerIsReleasedAfterTheLockIsGivenBack) {
    SafeSharedPtr<ReadsItsHolder> holder;
    holder = std::make_shared<ReadsItsHolder>(holder);
    holder = std::shared_ptr<ReadsItsHolder>();  // would wait for ever if the lock were held
    EXPECT_FALSE(holder);
}

TEST(SafeSharedPtr, ThreadsMayReadAndReplaceAtOnce) {
    SafeSharedPtr<int> holder(std::make_shared<int>(0));
    std::atomic<bool> stop{false};
    std::atomic<int> wrong{0};
    std::thread reader([&] {
        while (!stop) {
            const auto copy = holder.get();
            if (!copy || *copy < 0) ++wrong;
        }
    });
    for (int i = 0; i < 2000; ++i) holder = std::make_shared<int>(i);
    stop = true;
    reader.join();
    EXPECT_EQ(wrong, 0);
}

TEST(SafeSharedPtr, CopyHoldsTheSameObjectInAHolderOfItsOwn) {
    SafeSharedPtr<int> first(std::make_shared<int>(3));
    const SafeSharedPtr<int> second(first);
    first = std::shared_ptr<int>();
    ASSERT_TRUE(second);
    EXPECT_EQ(*second.get(), 3);
}

TEST(SafeSharedPtr, SelfAssignmentKeepsTheObject) {
    SafeSharedPtr<int> holder(std::make_shared<int>(3));
    const auto& same = holder;
    holder = same;
    EXPECT_EQ(*holder.get(), 3);
}

TEST(SafeSharedPtr, TwoMayBeAssignedToEachOtherAtOnce) {
    SafeSharedPtr<int> first(std::make_shared<int>(1)), second(std::make_shared<int>(2));
    std::thread there([&] {
        for (int i = 0; i < 2000; ++i) first = second;
    });
    for (int i = 0; i < 2000; ++i) second = first;
    there.join();
    EXPECT_EQ(first.get(), second.get());
}

TEST(SafeSharedPtr, ExchangeHandsEveryPointerOutOnce) {
    SafeSharedPtr<int> holder;
    std::atomic<int> sum{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            for (int k = 1; k <= 500; ++k) {
                if (const auto old = holder.exchange(std::make_shared<int>(k))) sum += *old;
            }
        });
    }
    for (auto& thread : threads) thread.join();
    sum += *holder.get();
    EXPECT_EQ(sum, 4 * 500 * 501 / 2);
}

TEST(SafeSharedPtr, LastHolderReleasesTheObject) {
    SafeSharedPtr<int> holder(std::make_shared<int>(1));
    const std::weak_ptr<int> weak = holder.get();
    holder = std::shared_ptr<int>();
    EXPECT_TRUE(weak.expired());
}

}  // namespace
