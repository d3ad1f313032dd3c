#include "PrefixCode.h"

#include <algorithm>

namespace Archive {

void PrefixCode::build(const unsigned char* lengths, uint32_t count) {
    std::fill(std::begin(mQuick), std::end(mQuick), uint16_t{0});
    uint32_t code = 0, place = 0;
    for (unsigned length = 1; length <= kLongest; ++length) {
        mFirstCode[length] = code;
        mFirstPlace[length] = place;
        for (uint32_t symbol = 0; symbol < count; ++symbol) {
            if (lengths[symbol] != length) continue;
            // An over-full code runs out of codes; its symbols beyond are never met.
            if (length <= kQuickBits && code < (1u << length)) {
                std::fill_n(&mQuick[code << (kQuickBits - length)], 1u << (kQuickBits - length),
                            static_cast<uint16_t>(symbol << 4 | length));
            }
            mSymbols[place++] = static_cast<uint16_t>(symbol);
            ++code;
        }
        mEnd[length] = code << (kLongest - length);
        code <<= 1;
    }
}

uint32_t PrefixCode::takeLong(BitReader& bits, uint32_t ahead) const {
    for (unsigned length = kQuickBits + 1; length <= kLongest; ++length) {
        if (ahead >= mEnd[length]) continue;
        bits.drop(length);
        return mSymbols[(mFirstPlace[length] + (ahead >> (kLongest - length)) - mFirstCode[length]) % 258];
    }
    bits.drop(kLongest);
    return 258;
}

}  // namespace Archive
