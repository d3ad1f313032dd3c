// The memory that an item is decompressed into.
#include "Archive/Buffer.h"

#include "MemoryMeter.h"

using Archive::Buffer;

namespace {

constexpr size_t kMebibyte = size_t{1} << 20;

void fill(Buffer& buffer, size_t upTo) {
    for (size_t at = buffer.size(); at < upTo; ++at) buffer.data()[at] = static_cast<unsigned char>(at * 7 >> 3);
    buffer.grew(upTo - buffer.size());
}

bool isFilled(Buffer& buffer) {
    size_t at = 0;
    for (const unsigned char byte : buffer.view()) {
        if (byte != static_cast<unsigned char>(at++ * 7 >> 3)) return false;
    }
    return true;
}

}  // namespace

TEST(ArchiveBuffer, KeepsWhatItHoldsWhileItGrows) {
    Buffer buffer;
    for (const size_t capacity : {size_t{1}, size_t{4096}, kMebibyte - 1, kMebibyte, kMebibyte + 1, 3 * kMebibyte + 5,
                                  3 * kMebibyte + 6, 20 * kMebibyte}) {
        buffer.reserve(capacity);
        ASSERT_EQ(buffer.capacity(), capacity);
        fill(buffer, capacity);
    }
    EXPECT_EQ(buffer.size(), 20 * kMebibyte);
    EXPECT_TRUE(isFilled(buffer));
}

TEST(ArchiveBuffer, NeverGetsSmaller) {
    Buffer buffer;
    buffer.reserve(2 * kMebibyte);
    const unsigned char* const block = buffer.data();
    buffer.reserve(10);
    EXPECT_EQ(buffer.capacity(), 2 * kMebibyte);
    EXPECT_EQ(buffer.data(), block);
}

TEST(ArchiveBuffer, GoesWithItsBlock) {
    for (const size_t capacity : {size_t{100}, 5 * kMebibyte}) {
        Buffer buffer;
        buffer.reserve(capacity);
        fill(buffer, capacity);
        Buffer other(std::move(buffer));
        EXPECT_EQ(buffer.capacity(), 0U);
        EXPECT_EQ(other.capacity(), capacity);
        EXPECT_TRUE(isFilled(other));
        buffer = std::move(other);
        EXPECT_TRUE(isFilled(buffer));
    }
}

TEST(ArchiveBuffer, LargeOneThatGrowsIsHeldOnce) {
    const support::MemoryMeter meter;
    Buffer buffer;
    for (size_t size = 8 * kMebibyte; size <= 64 * kMebibyte; size += 8 * kMebibyte) buffer.reserve(size);
    EXPECT_LE(meter.peak(), (64 * support::MemoryMeter::copiesOfAGrowingBlock() + 1) * kMebibyte);
    EXPECT_GE(meter.peak(), 64 * kMebibyte);
}

TEST(ArchiveBuffer, MoreThanThereIsThrowsAndLosesNothing) {
    Buffer buffer;
    buffer.reserve(2 * kMebibyte);
    fill(buffer, 2 * kMebibyte);
    EXPECT_THROW(buffer.reserve(size_t{1} << 60), std::bad_alloc);
    EXPECT_EQ(buffer.capacity(), 2 * kMebibyte);
    EXPECT_TRUE(isFilled(buffer));
}
