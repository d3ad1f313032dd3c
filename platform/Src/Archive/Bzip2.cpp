// Bzip2 as the package compiler writes it: blocks without the file head, the long block marks and the checksums.
#include <algorithm>
#include <cstring>

#include "BitReader.h"
#include "Decoder.h"
#include "PrefixCode.h"

namespace Archive {
namespace {

constexpr uint32_t kBlockMark = 0x31, kEndMark = 0x17;
constexpr uint32_t kBlockSize = 900000;
constexpr uint32_t kGroupSize = 50;         // symbols coded by one table before the next selector
constexpr uint32_t kSelectorsUsed = 18002;  // more than a block can want; others are read and left
constexpr uint32_t kRunOfFour = 4;

class Bzip2 : public Decoder {
public:
    bool begin(ByteView input, uint64_t) override {
        mFailed = mEnded = false;
        mBits = BitReader(input);
        mLeft = mRepeat = 0;
        return !input.empty();
    }

    size_t read(unsigned char* output, size_t size) override {
        size_t done = 0;
        while (done < size && !mFailed) {
            if (mRepeat == 0 && mLeft == 0 && !nextBlock()) break;
            done += emit(output + done, size - done);
        }
        return done;
    }

    const unsigned char* position() const override { return mBits.position(); }

private:
    bool fail() {
        mFailed = true;
        return false;
    }

    bool nextBlock() {
        if (mEnded) return false;
        const uint32_t mark = mBits.take(8);
        mEnded = mark == kEndMark && !mBits.overrun();
        if (mEnded) return false;
        if (mark != kBlockMark) return fail();
        const uint32_t origin = mBits.take(24);
        if (!readSymbols() || !readSelectors() || !readCodes() || !readBlock() || mBits.overrun()) return fail();
        if (origin >= mBlockLength) return fail();
        linkBytes();
        mPosition = mBlock[origin] >> 8;
        mLeft = mBlockLength;
        mSame = 0;
        return true;
    }

    /// Which byte values occur, in two levels of sixteen bits.
    bool readSymbols() {
        const uint32_t rows = mBits.take(16);
        mSymbolCount = 0;
        for (uint32_t row = 0; row < 16; ++row) {
            if ((rows >> (15 - row) & 1) == 0) continue;
            const uint32_t columns = mBits.take(16);
            for (uint32_t column = 0; column < 16; ++column) {
                if ((columns >> (15 - column) & 1) != 0) {
                    mRecent[mSymbolCount++] = static_cast<unsigned char>(row * 16 + column);
                }
            }
        }
        return mSymbolCount != 0;
    }

    /// Which table codes each group of symbols, as a move-to-front list.
    bool readSelectors() {
        mTables = mBits.take(3);
        const uint32_t count = mBits.take(15);
        if (mTables < 2 || mTables > 6 || count == 0) return false;
        unsigned char order[6] = {0, 1, 2, 3, 4, 5};
        mSelectors.clear();
        for (uint32_t i = 0; i < count; ++i) {
            uint32_t place = 0;
            while (mBits.take(1) != 0) {
                if (++place >= mTables) return false;
            }
            std::rotate(order, order + place, order + place + 1);
            if (i < kSelectorsUsed) mSelectors.push_back(order[0]);
        }
        return !mBits.overrun();
    }

    bool readCodes() {
        const uint32_t symbols = mSymbolCount + 2;
        for (uint32_t table = 0; table < mTables; ++table) {
            unsigned char lengths[258];
            uint32_t length = mBits.take(5);
            for (uint32_t i = 0; i < symbols; ++i) {
                while (true) {
                    if (length < 1 || length > PrefixCode::kLongest) return false;
                    if (mBits.take(1) == 0) break;
                    length += mBits.take(1) != 0 ? uint32_t(-1) : 1u;
                }
                lengths[i] = static_cast<unsigned char>(length);
            }
            mCodes[table].build(lengths, symbols);
        }
        return true;
    }

    /// The coded symbols: runs of the most recent byte, places in the list of recent bytes, and the end.
    bool readBlock() {
        if (!mBlock) mBlock = std::make_unique_for_overwrite<uint32_t[]>(kBlockSize);
        std::fill(std::begin(mCount), std::end(mCount), 0);
        const uint32_t endSymbol = mSymbolCount + 1;
        uint32_t length = 0, run = 0, runBit = 1, group = 0, leftInGroup = 0;
        const PrefixCode* code = nullptr;
        while (true) {
            if (leftInGroup == 0) {
                if (group >= mSelectors.size()) return false;
                code = &mCodes[mSelectors[group++]];
                leftInGroup = kGroupSize;
            }
            --leftInGroup;
            const uint32_t symbol = code->take(mBits);
            if (symbol <= 1) {
                run += runBit << symbol;
                runBit <<= 1;
                if (run > kBlockSize) return false;
                continue;
            }
            if (run != 0) {
                if (run > kBlockSize - length) return false;
                std::fill_n(&mBlock[length], run, mRecent[0]);
                mCount[mRecent[0]] += run;
                length += run;
                run = 0;
                runBit = 1;
            }
            if (symbol >= endSymbol) {
                mBlockLength = length;
                return symbol == endSymbol;
            }
            if (length == kBlockSize) return false;
            const unsigned char byte = bringToFront(symbol - 1);
            mBlock[length++] = byte;
            ++mCount[byte];
        }
    }

    unsigned char bringToFront(uint32_t place) {
        const unsigned char byte = mRecent[place];
        std::memmove(mRecent + 1, mRecent, place);
        return mRecent[0] = byte;
    }

    /// Undoes the sorting: each cell's upper bits become the place of the byte that follows.
    void linkBytes() {
        uint32_t place[256], sum = 0;
        for (uint32_t i = 0; i < 256; ++i) {
            place[i] = sum;
            sum += mCount[i];
        }
        for (uint32_t i = 0; i < mBlockLength; ++i) mBlock[place[mBlock[i] & 0xFF]++] |= i << 8;
    }

    /// Walks the links; four equal bytes are followed by a count of further ones.
    size_t emit(unsigned char* output, size_t size) {
        unsigned char* out = output;
        unsigned char* const end = output + size;
        uint32_t position = mPosition, left = mLeft, same = mSame;
        unsigned char last = mLast;
        while (out != end) {
            if (mRepeat != 0) {
                const auto piece = std::min<size_t>(mRepeat, static_cast<size_t>(end - out));
                std::memset(out, last, piece);
                out += piece;
                mRepeat -= static_cast<uint32_t>(piece);
                continue;
            }
            if (left == 0) break;
            const uint32_t cell = mBlock[position];
            const auto byte = static_cast<unsigned char>(cell);
            position = cell >> 8;
            --left;
            if (same == kRunOfFour) {
                mRepeat = byte;
                same = 0;
                continue;
            }
            same = same != 0 && byte == last ? same + 1 : 1;
            *out++ = last = byte;
        }
        mPosition = position;
        mLeft = left;
        mSame = same;
        mLast = last;
        return static_cast<size_t>(out - output);
    }

    BitReader mBits;
    std::unique_ptr<uint32_t[]> mBlock;  // a byte, and above it the place of the next
    uint32_t mBlockLength = 0;
    uint32_t mCount[256];
    unsigned char mRecent[256];
    uint32_t mSymbolCount = 0;
    uint32_t mTables = 0;
    std::vector<unsigned char> mSelectors;
    PrefixCode mCodes[6];

    uint32_t mPosition = 0;  // in the block, of the byte to emit next
    uint32_t mLeft = 0;      // bytes of the block not yet walked
    uint32_t mSame = 0;      // equal bytes emitted in a row
    uint32_t mRepeat = 0;    // further copies of the last byte to emit
    unsigned char mLast = 0;
};

}  // namespace

std::unique_ptr<Decoder> makeBzip2() { return std::make_unique<Bzip2>(); }

}  // namespace Archive
