#include "PackageBody.h"

#include <algorithm>

namespace Archive {
namespace {

constexpr uint32_t kPackedBit = 0x80000000u;
constexpr size_t kPiece = 1u << 20;

/// Decodes exactly length bytes, whose number is not to be trusted: the block grows as it is decoded.
bool readExactly(Decoder& decoder, size_t length, std::vector<unsigned char>& bytes) {
    while (bytes.size() < length) {
        const size_t done = bytes.size(), piece = std::min(kPiece, length - done);
        if (bytes.capacity() < done + piece) bytes.reserve(std::min(length, 2 * (done + piece)));
        bytes.resize(done + piece);
        if (decoder.read(&bytes[done], piece) != piece) return false;
    }
    return true;
}

/// One try after another at reading the header; the first that succeeds fills the body.
class HeaderTries {
public:
    HeaderTries(ByteView bytes, uint32_t headerLength, bool wide, PackageBody& body)
        : mBytes(bytes), mLength(headerLength), mWide(wide), mBody(body) {}

    bool asSolid(Method method) {
        auto decoder = makeDecoder(method);
        if (!decoder->begin(mBytes, uint64_t{mLength} + 4)) return false;
        unsigned char length[4];
        if (decoder->read(length, sizeof length) != sizeof length || le32(length) != mLength) return false;
        std::vector<unsigned char> header;
        if (!readExactly(*decoder, mLength, header) || !accept(std::move(header))) return false;
        mBody.solid = true;
        mBody.method = method;
        mBody.bytes = mBytes;
        mBody.dataStart = uint64_t{mLength} + 4;
        return true;
    }

    bool asItem() {
        StoredItem item;
        if (!readStoredItem(mBytes, 0, item)) return false;
        if (!(item.packed ? decodeItem(item.bytes) : copyItem(item.bytes))) return false;
        mBody.solid = false;
        mBody.bytes = rest(mBytes, 4 + item.bytes.size());
        return true;
    }

private:
    bool copyItem(ByteView bytes) { return bytes.size() == mLength && accept({bytes.begin(), bytes.end()}); }

    bool decodeItem(ByteView bytes) {
        for (const Method method : candidateMethods(bytes)) {
            auto decoder = makeDecoder(method);
            if (!decoder->begin(bytes, uint64_t{mLength} + 1)) continue;
            std::vector<unsigned char> header;
            unsigned char beyond = 0;
            if (!readExactly(*decoder, mLength, header) || decoder->read(&beyond, 1) != 0 || !decoder->ended())
                continue;
            if (accept(std::move(header))) return true;
        }
        return false;
    }

    bool accept(std::vector<unsigned char> header) { return mBody.header.parse(std::move(header), mWide); }

    ByteView mBytes;
    uint32_t mLength;
    bool mWide;
    PackageBody& mBody;
};

}  // namespace

bool readStoredItem(ByteView body, uint64_t offset, StoredItem& item) {
    const ByteView prefix = part(body, offset, 4);
    if (prefix.empty()) return false;
    const uint32_t length = le32(prefix.data());
    item.packed = (length & kPackedBit) != 0;
    if (!fits(body.size(), offset + 4, length & ~kPackedBit)) return false;
    item.bytes = body.subspan(static_cast<size_t>(offset + 4), length & ~kPackedBit);
    return true;
}

bool readPackageBody(ByteView file, const PackageLayout& layout, bool wide, PackageBody& body) {
    const uint64_t end = std::min<uint64_t>(layout.bodyEnd, file.size());
    if (end < layout.bodyBegin) return false;
    const ByteView bytes = part(file, layout.bodyBegin, end - layout.bodyBegin);
    const std::vector<Method> methods = candidateMethods(bytes);
    HeaderTries tries(bytes, layout.headerLength, wide, body);
    // A dictionary of 8 MiB makes a solid LZMA stream look like a packed item, so that it comes before.
    if (methods.front() == Method::Lzma && tries.asSolid(Method::Lzma)) return true;
    if (tries.asItem()) return true;
    return std::any_of(methods.begin(), methods.end(), [&](Method method) { return tries.asSolid(method); });
}

}  // namespace Archive
