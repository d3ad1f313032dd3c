// Bits from the most significant end of each byte.
#pragma once

#include "Bytes.h"

namespace Archive {

/// Behind the end it gives zeros and remembers that it did.
class BitReader {
public:
    BitReader() = default;
    explicit BitReader(ByteView input) : mNext(input.data()), mEnd(input.data() + input.size()) {}

    /// The next 1 to 32 bits, which stay.
    uint32_t peek(unsigned count) {
        if (mHeld < count) fill();
        return static_cast<uint32_t>(mBits >> (64 - count));
    }
    /// Drops bits that were peeked at.
    void drop(unsigned count) {
        mBits <<= count;
        mHeld -= count;
    }
    uint32_t take(unsigned count) {
        const uint32_t bits = peek(count);
        drop(count);
        return bits;
    }
    /// Behind the last byte that was looked at.
    const unsigned char* position() const { return mNext; }
    /// True once bits behind the end were taken.
    bool overrun() const { return mHeld < mInvented; }

private:
    void fill() {
        while (mHeld <= 56) {
            uint64_t byte = 0;
            if (mNext != mEnd)
                byte = *mNext++;
            else
                mInvented += 8;
            mBits |= byte << (56 - mHeld);
            mHeld += 8;
        }
    }

    const unsigned char* mNext = nullptr;
    const unsigned char* mEnd = nullptr;
    uint64_t mBits = 0;
    unsigned mHeld = 0;
    uint64_t mInvented = 0;  // bits added behind the end
};

}  // namespace Archive
