// One canonical prefix code of a bzip2 block.
#pragma once

#include "BitReader.h"

namespace Archive {

class PrefixCode {
public:
    static constexpr unsigned kLongest = 20;

    /// @param lengths 1 to kLongest each, of count symbols, at most 258
    void build(const unsigned char* lengths, uint32_t count);
    /// The next symbol; one beyond all symbols when the bits are no code.
    uint32_t take(BitReader& bits) const {
        const uint32_t ahead = bits.peek(kLongest);
        const uint16_t quick = mQuick[ahead >> (kLongest - kQuickBits)];
        if (quick != 0) {
            bits.drop(quick & 15u);
            return quick >> 4;
        }
        return takeLong(bits, ahead);
    }

private:
    static constexpr unsigned kQuickBits = 10;
    uint32_t takeLong(BitReader& bits, uint32_t ahead) const;

    uint16_t mQuick[1u << kQuickBits];  // symbol and length of each short code, 0 for none
    uint32_t mEnd[kLongest + 1];        // by length: behind the last code, as kLongest bits
    uint32_t mFirstCode[kLongest + 1];
    uint32_t mFirstPlace[kLongest + 1];  // in mSymbols
    uint16_t mSymbols[258] = {};
};

}  // namespace Archive
