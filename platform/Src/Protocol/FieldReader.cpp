#include "Protocol/FieldReader.h"

namespace Tarnwick::Protocol {

namespace {
enum WireType : unsigned { Varint = 0, Fixed64 = 1, Bytes = 2, Fixed32 = 5 };
constexpr uint64_t kHighestField = (1U << 29) - 1;
}  // namespace

bool FieldReader::next(TWField& field) {
    if (mRest.empty() || mMalformed) return false;
    if (readField(field)) return true;
    mMalformed = true;
    return false;
}

bool FieldReader::readField(TWField& field) {
    uint64_t tag = 0;
    if (!varint(tag) || tag >> 3 == 0 || tag >> 3 > kHighestField) return false;
    field = TWField();
    field.number = static_cast<uint32_t>(tag >> 3);
    switch (tag & 7) {
        case Varint: return varint(field.value);
        case Fixed64: return fixed(8, field.value);
        case Fixed32: return fixed(4, field.value);
        case Bytes: {
            uint64_t length = 0;
            if (!varint(length) || length > mRest.size()) return false;
            field.isBytes = true;
            field.bytes = mRest.substr(0, static_cast<size_t>(length));
            mRest.remove_prefix(static_cast<size_t>(length));
            return true;
        }
        default: return false;  // groups, which nobody writes any more
    }
}

bool FieldReader::varint(uint64_t& value) {
    value = 0;
    for (unsigned shift = 0; shift < 64 && !mRest.empty(); shift += 7) {
        const auto byte = static_cast<unsigned char>(mRest.front());
        mRest.remove_prefix(1);
        if (shift == 63 && byte > 1) return false;
        value |= static_cast<uint64_t>(byte & 0x7F) << shift;
        if ((byte & 0x80) == 0) return true;
    }
    return false;
}

bool FieldReader::fixed(size_t width, uint64_t& value) {
    if (mRest.size() < width) return false;
    value = 0;
    for (size_t i = 0; i < width; ++i) {
        value |= static_cast<uint64_t>(static_cast<unsigned char>(mRest[i])) << (8 * i);
    }
    mRest.remove_prefix(width);
    return true;
}

}  // namespace Tarnwick::Protocol
