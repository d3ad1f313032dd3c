#include "ItemReader.h"

#include <algorithm>
#include <cstring>

namespace Archive {
namespace {

constexpr size_t kPiece = 1u << 20;
constexpr size_t kPagesBehind = 4u << 20;  // not for every small item a call of the system

/// Doubles while that is little, since the system then moves pages instead of bytes and an item beyond has few of them.
size_t grown(size_t capacity) {
    constexpr size_t kLeast = 1u << 16, kDoubled = 16u << 20;
    return std::max(kLeast, capacity + (capacity < kDoubled ? capacity : capacity / 8));
}

}  // namespace

ErrorCode Unpacking::account(size_t decoded) {
    if (mAllowance.stopped()) return ErrorCode::ErrorCode_Cancelled;
    return mSource.budget.take(decoded) ? ErrorCode::ErrorCode_None : ErrorCode::ErrorCode_Limit;
}

ErrorCode Unpacking::fill(Buffer& memory, uint64_t upTo, size_t firstGuess) {
    while (memory.size() < upTo) {
        if (memory.size() == memory.capacity()) {
            const size_t wanted = std::max(firstGuess, grown(memory.capacity()));
            const auto capacity = static_cast<size_t>(std::min<uint64_t>(wanted, upTo));
            if (!mAllowance.more(capacity - memory.capacity())) return ErrorCode::ErrorCode_Cancelled;
            memory.reserve(capacity);
        }
        const auto room = static_cast<size_t>(std::min<uint64_t>(upTo, memory.capacity()) - memory.size());
        const size_t piece = std::min(kPiece, room);
        const size_t done = mDecoder.read(memory.data() + memory.size(), piece);
        memory.grew(done);
        if (const ErrorCode error = account(done); error != ErrorCode::ErrorCode_None) return error;
        if (done != piece) break;
        releasePages();
    }
    return ErrorCode::ErrorCode_None;
}

ErrorCode Unpacking::skip(uint64_t& length, std::vector<unsigned char>& scratch) {
    while (length != 0) {
        const auto piece = static_cast<size_t>(std::min<uint64_t>(scratch.size(), length));
        const size_t done = mDecoder.read(scratch.data(), piece);
        length -= done;
        if (const ErrorCode error = account(done); error != ErrorCode::ErrorCode_None) return error;
        if (done != piece) break;
        releasePages();
    }
    return ErrorCode::ErrorCode_None;
}

void Unpacking::releasePages() {
    const unsigned char* position = mDecoder.position();
    const auto behind = static_cast<size_t>(position - mKept);
    if (behind < kPagesBehind) return;
    mSource.file.release(mKept, behind);
    mKept = position;
}

bool reserveMore(Buffer& memory, size_t bytes, Allowance& allowance) {
    const size_t capacity = memory.size() + bytes;
    if (capacity <= memory.capacity()) return true;
    if (!allowance.more(capacity - memory.capacity())) return false;
    memory.reserve(capacity);
    return true;
}

bool patchStub(ByteView patches, size_t stubSize, Buffer& file) {
    size_t at = 0;
    while (at < patches.size() && patches[at] != 0) {
        const ByteView head = part(patches, at, 8);
        if (head.empty()) return false;
        const uint32_t size = le32(head.data()), target = le32(&head[4]);
        if (!fits(patches.size(), at + 8, size) || !fits(stubSize, target, size)) return false;
        std::memcpy(file.data() + target, &patches[at + 8], size);
        at += 8 + size_t{size};
    }
    return true;
}

}  // namespace Archive
