#include "Mutation.h"

#include <algorithm>
#include <random>

#include "SyntheticPackage.h"

namespace support {
namespace {

class Mutator {
public:
    Mutator(std::string bytes, uint32_t seed, size_t begin, size_t end)
        : mBytes(std::move(bytes)), mBegin(begin), mEnd(end), mRandom(seed) {}

    void flipBits() {
        for (size_t left = 1 + number(8); left-- > 0;) {
            char& byte = mBytes[place(1)];
            byte = static_cast<char>(byte ^ 1 << number(8));
        }
    }
    void fillRun() {
        const size_t length = std::min<size_t>(1 + number(64), mEnd - mBegin), at = place(length);
        const bool noise = number(2) == 0;
        const char value = number(2) == 0 ? '\xff' : static_cast<char>(number(256));
        for (size_t i = 0; i < length; ++i) mBytes[at + i] = noise ? static_cast<char>(number(256)) : value;
    }
    void cut() { mBytes.resize(mBegin + number(mEnd - mBegin)); }
    void splice() {
        const size_t length = std::min<size_t>(1 + number(300), (mEnd - mBegin) / 2);
        const std::string piece = mBytes.substr(place(length), length);
        const size_t at = place(length);
        switch (number(3)) {
            case 0:
                mBytes.replace(at, length, piece);
                break;
            case 1:
                mBytes.insert(at, piece);
                break;
            default:
                mBytes.erase(at, length);
        }
    }
    void setFields() {
        static const uint32_t kValues[] = {0,          1,          0x7F,       0x80,       0xFFFF,     0x10000,
                                           0x7FFFFFFF, 0x80000000, 0x80000001, 0xFFFFFFFE, 0xFFFFFFFF, 1u << 28};
        for (size_t left = 1 + number(3); left-- > 0;) {
            const size_t at = place(4);
            const auto before = static_cast<uint32_t>(static_cast<unsigned char>(mBytes[at]));
            const uint32_t value = number(4) == 0 ? before + static_cast<uint32_t>(number(3)) - 1 : kValues[number(12)];
            mBytes.replace(at, 4, le32(value));
        }
    }
    std::string take() { return std::move(mBytes); }

private:
    size_t number(size_t below) { return mRandom() % std::max<size_t>(below, 1); }
    /// Where so many bytes may be changed.
    size_t place(size_t length) { return mBegin + number(mEnd - mBegin - length + 1); }

    std::string mBytes;
    size_t mBegin, mEnd;
    std::mt19937 mRandom;
};

}  // namespace

std::string mutated(const std::string& bytes, Mutation mutation, uint32_t seed, size_t begin, size_t end) {
    Mutator mutator(bytes, seed * 8 + static_cast<uint32_t>(mutation), begin, end);
    switch (mutation) {
        case Mutation::BitFlips:
            mutator.flipBits();
            break;
        case Mutation::ByteRuns:
            mutator.fillRun();
            break;
        case Mutation::Truncation:
            mutator.cut();
            break;
        case Mutation::Splice:
            mutator.splice();
            break;
        case Mutation::FieldValues:
            mutator.setFields();
    }
    return mutator.take();
}

}  // namespace support
