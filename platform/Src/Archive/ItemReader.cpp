#include "ItemReader.h"

#include <algorithm>
#include <cstring>

namespace Archive {

bool decodeUpTo(Decoder& decoder, uint64_t upTo, size_t firstGuess, Buffer& memory, Allowance& allowance) {
    constexpr size_t kPiece = 1u << 20;
    constexpr size_t kLeastGrowth = 1u << 16;
    while (memory.size() < upTo) {
        if (allowance.stopped()) return false;
        if (memory.size() == memory.capacity()) {
            const size_t wanted = std::max({firstGuess, memory.capacity() * 2, kLeastGrowth});
            const auto capacity = static_cast<size_t>(std::min<uint64_t>(wanted, upTo));
            if (!allowance.more(capacity - memory.capacity())) return false;
            memory.reserve(capacity);
        }
        const auto room = static_cast<size_t>(std::min<uint64_t>(upTo, memory.capacity()) - memory.size());
        const size_t piece = std::min(kPiece, room);
        const size_t done = decoder.read(memory.data() + memory.size(), piece);
        memory.grew(done);
        if (done != piece) break;
    }
    return true;
}

bool buildUninstaller(ByteView stub, ByteView patches, ByteView data, Buffer& file) {
    file.clear();
    file.reserve(stub.size() + data.size());
    if (!stub.empty()) std::memcpy(file.data(), stub.data(), stub.size());
    if (!data.empty()) std::memcpy(file.data() + stub.size(), data.data(), data.size());
    file.grew(stub.size() + data.size());
    size_t at = 0;
    while (at < patches.size() && patches[at] != 0) {
        const ByteView head = part(patches, at, 8);
        if (head.empty()) return false;
        const uint32_t size = le32(head.data()), target = le32(&head[4]);
        if (!fits(patches.size(), at + 8, size) || !fits(stub.size(), target, size)) return false;
        std::memcpy(file.data() + target, &patches[at + 8], size);
        at += 8 + size_t{size};
    }
    return true;
}

}  // namespace Archive
