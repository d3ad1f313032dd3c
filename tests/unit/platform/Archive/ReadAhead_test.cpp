// Items read ahead on other threads.
#include "Archive/ReadAhead.h"

namespace {

using Archive::Allowance;
using Archive::Buffer;
using Archive::ByteView;
using Archive::ErrorCode;
using Archive::ItemReader;
using Archive::ReadAhead;

/// What the readers of one test share.
struct Shared {
    std::atomic<size_t> reads{0};
    std::atomic<size_t> furthest{0};
    std::atomic<size_t> live{0};
    size_t itemSize = 10;
    size_t failAt = SIZE_MAX;
    size_t throwAt = SIZE_MAX;
};

/// Item i is itemSize bytes of the value i.
class CountingReader : public ItemReader {
public:
    explicit CountingReader(Shared& shared) : mShared(shared) { ++mShared.live; }
    ~CountingReader() override { --mShared.live; }
    ErrorCode read(size_t index, Buffer& memory, Allowance& allowance, ByteView& content) override {
        ++mShared.reads;
        if (index == mShared.throwAt) throw std::bad_alloc();
        if (index == mShared.failAt) return ErrorCode::ErrorCode_Data;
        if (mShared.itemSize > memory.capacity() && !allowance.more(mShared.itemSize - memory.capacity())) {
            return ErrorCode::ErrorCode_Cancelled;
        }
        size_t seen = mShared.furthest;
        while (seen < index && !mShared.furthest.compare_exchange_weak(seen, index)) {
        }
        memory.clear();
        memory.reserve(mShared.itemSize);
        std::memset(memory.data(), static_cast<int>(index & 0xFF), mShared.itemSize);
        memory.grew(mShared.itemSize);
        content = memory.view();
        return ErrorCode::ErrorCode_None;
    }

private:
    Shared& mShared;
};

std::vector<std::unique_ptr<ItemReader>> readers(Shared& shared, size_t count) {
    std::vector<std::unique_ptr<ItemReader>> all;
    for (size_t i = 0; i < count; ++i) all.push_back(std::make_unique<CountingReader>(shared));
    return all;
}

class ReadAheadThreads : public testing::TestWithParam<size_t> {};

TEST_P(ReadAheadThreads, GiveItemsInOrder) {
    Shared shared;
    std::atomic<bool> cancelled{false};
    ReadAhead ahead(1000, readers(shared, GetParam()), cancelled);
    for (size_t i = 0; i < 1000; ++i) {
        ByteView content;
        ASSERT_EQ(ahead.next(content), ErrorCode::ErrorCode_None);
        ASSERT_EQ(content.size(), 10u);
        EXPECT_EQ(content[9], i & 0xFF);
    }
    EXPECT_EQ(shared.reads, 1000u);
}

TEST_P(ReadAheadThreads, PassItemsLargerThanTheLimitOneByOne) {
    Shared shared;
    shared.itemSize = 5000;
    std::atomic<bool> cancelled{false};
    ReadAhead ahead(50, readers(shared, GetParam()), cancelled, 1000);
    for (size_t i = 0; i < 50; ++i) {
        ByteView content;
        ASSERT_EQ(ahead.next(content), ErrorCode::ErrorCode_None);
        EXPECT_EQ(content.size(), 5000u);
        // The one handed out and, since the next is wanted already, that one.
        EXPECT_LE(shared.furthest, i + 1);
    }
}

TEST_P(ReadAheadThreads, TellAnErrorAtItsPlace) {
    Shared shared;
    shared.failAt = 7;
    std::atomic<bool> cancelled{false};
    ReadAhead ahead(20, readers(shared, GetParam()), cancelled);
    for (size_t i = 0; i < 20; ++i) {
        ByteView content;
        EXPECT_EQ(ahead.next(content), i == 7 ? ErrorCode::ErrorCode_Data : ErrorCode::ErrorCode_None) << i;
    }
}

TEST_P(ReadAheadThreads, TellMemoryThatRanOut) {
    Shared shared;
    shared.throwAt = 0;
    std::atomic<bool> cancelled{false};
    ReadAhead ahead(1, readers(shared, GetParam()), cancelled);
    ByteView content;
    EXPECT_EQ(ahead.next(content), ErrorCode::ErrorCode_Limit);
    EXPECT_TRUE(content.empty());
}

TEST_P(ReadAheadThreads, EndWhenNoOneWantsMore) {
    Shared shared;
    shared.itemSize = 5000;
    std::atomic<bool> cancelled{false};
    {
        ReadAhead ahead(100000, readers(shared, GetParam()), cancelled, 20000);
        ByteView content;
        EXPECT_EQ(ahead.next(content), ErrorCode::ErrorCode_None);
    }
    EXPECT_EQ(shared.live, 0u);
    EXPECT_LT(shared.reads, 1000u);
}

TEST_P(ReadAheadThreads, NeedNotBeAskedAtAll) {
    Shared shared;
    std::atomic<bool> cancelled{false};
    { ReadAhead ahead(3, readers(shared, GetParam()), cancelled); }
    { ReadAhead ahead(0, readers(shared, GetParam()), cancelled); }
    EXPECT_EQ(shared.live, 0u);
}

INSTANTIATE_TEST_SUITE_P(Readers, ReadAheadThreads, testing::Values(1, 2, 4),
                         [](const auto& test) { return "Of" + std::to_string(test.param); });

}  // namespace
