#include "Public/Base/SharedBuffer.h"

using Public::Base::SharedBuffer;

namespace {

TEST(SharedBuffer, DefaultIsEmptyAndNeverNull) {
    const SharedBuffer buffer;
    EXPECT_TRUE(buffer.empty());
    ASSERT_NE(buffer.buf(), nullptr);
    EXPECT_STREQ(buffer.buf(), "");
}

TEST(SharedBuffer, KeepsZeroBytesOfAString) {
    const SharedBuffer buffer(std::string("a\0b", 3));
    EXPECT_EQ(buffer.size(), 3U);
    EXPECT_EQ(buffer.toStdString(), std::string("a\0b", 3));
}

TEST(SharedBuffer, TakesTextUpToItsTerminatingZero) { EXPECT_EQ(SharedBuffer("abc").toStdString(), "abc"); }

TEST(SharedBuffer, TakesPointerAndLength) {
    const char bytes[] = {1, 0, 2};
    EXPECT_EQ(SharedBuffer(bytes, 3).toStdString(), std::string("\1\0\2", 3));
}

TEST(SharedBuffer, NullPointersGiveAnEmptyBuffer) {
    EXPECT_TRUE(SharedBuffer(static_cast<const char*>(nullptr)).empty());
    EXPECT_TRUE(SharedBuffer(nullptr, 5).empty());
}

TEST(SharedBuffer, CopiesShareTheBytes) {
    const SharedBuffer first("abc");
    SharedBuffer second;
    second = first;
    EXPECT_EQ(second.buf(), first.buf());
}

TEST(SharedBuffer, ConvertsToText) {
    const std::string text = SharedBuffer("xyz");
    EXPECT_EQ(text, "xyz");
}

TEST(SharedBuffer, AZeroByteFollowsTheLast) {
    const SharedBuffer buffer("ab", 1);
    EXPECT_EQ(buffer.size(), 1U);
    EXPECT_EQ(buffer.buf()[1], '\0');
}

TEST(SharedBuffer, ZeroLengthIsEmpty) { EXPECT_TRUE(SharedBuffer("ab", 0).empty()); }

TEST(SharedBuffer, KeepsItsOwnCopyOfWhatItWasMadeFrom) {
    std::string source = "before";
    const SharedBuffer fromText(source), fromPointer(source.data(), source.size());
    source.assign("after!");
    EXPECT_EQ(fromText.toStdString(), "before");
    EXPECT_EQ(fromPointer.toStdString(), "before");
}

TEST(SharedBuffer, TakesOverAStringThatIsGivenAway) {
    std::string source(1000, 'x');
    const char* const bytes = source.data();
    EXPECT_EQ(SharedBuffer(std::move(source)).buf(), bytes);
}

TEST(SharedBuffer, BytesOutliveTheFirstOwner) {
    SharedBuffer copy;
    {
        const SharedBuffer first("kept");
        copy = first;
    }
    EXPECT_EQ(copy.toStdString(), "kept");
}

TEST(SharedBuffer, CopiesMayBeReadAndDroppedOnManyThreads) {
    const SharedBuffer buffer(std::string(100, 'x'));
    std::atomic<size_t> read{0};
    std::vector<std::thread> readers;
    for (int i = 0; i < 4; ++i) {
        readers.emplace_back([&] {
            for (int k = 0; k < 500; ++k) {
                const SharedBuffer copy = buffer;
                read += copy.size();
            }
        });
    }
    for (auto& reader : readers) reader.join();
    EXPECT_EQ(read, 4U * 500U * 100U);
}

}  // namespace
