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

}  // namespace
