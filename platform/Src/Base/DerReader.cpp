#include "DerReader.h"

namespace Public::Base {

bool DerReader::take(unsigned char tag, Bytes& content) {
    if (mRest.size() < 2 || mRest[0] != tag) return false;
    size_t head = 2, length = mRest[1];
    if (length >= 0x80) {
        const size_t count = length & 0x7f;
        if (count < 1 || count > 4 || mRest.size() < head + count || mRest[head] == 0) return false;
        length = 0;
        for (size_t i = 0; i < count; ++i) length = length << 8 | mRest[head + i];
        if (length < 0x80) return false;
        head += count;
    }
    if (length > mRest.size() - head) return false;
    content = mRest.subspan(head, length);
    mRest = mRest.subspan(head + length);
    return true;
}

}  // namespace Public::Base
