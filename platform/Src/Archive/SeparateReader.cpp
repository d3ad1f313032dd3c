// Items that are packed one by one.
#include <algorithm>

#include "ItemReader.h"

namespace Archive {
namespace {

class SeparateReader : public ItemReader {
public:
    explicit SeparateReader(const ItemSource& source) : mSource(source) {}

    ErrorCode read(size_t index, Buffer& memory, Allowance& allowance, ByteView& content) override {
        const PackageItem& item = mSource.items[index];
        if (item.kind == PackageItem::Uninstaller) return readUninstaller(item.offset, memory, allowance, content);
        uint64_t next = 0;
        return readAt(item.offset, memory, allowance, content, next);
    }

private:
    /// @param next offset of the item behind this one
    ErrorCode readAt(uint64_t offset, Buffer& memory, Allowance& allowance, ByteView& content, uint64_t& next) {
        StoredItem stored;
        if (!readStoredItem(mSource.body.bytes, offset, stored)) return ErrorCode::ErrorCode_Format;
        next = offset + 4 + stored.bytes.size();
        if (stored.packed) return unpack(stored.bytes, memory, allowance, content);
        if (stored.bytes.size() > mSource.itemLimit) return ErrorCode::ErrorCode_Limit;
        content = stored.bytes;
        return ErrorCode::ErrorCode_None;
    }

    ErrorCode unpack(ByteView packed, Buffer& memory, Allowance& allowance, ByteView& content) {
        constexpr size_t kUsualRatio = 3, kLargestGuess = 16u << 20;
        const size_t guess = std::min(packed.size() * kUsualRatio, kLargestGuess);
        for (const Method method : candidateMethods(packed)) {
            Decoder& decoder = mDecoders.get(method);
            if (!decoder.begin(packed, mSource.itemLimit + 1)) continue;
            memory.clear();
            if (!decodeUpTo(decoder, mSource.itemLimit + 1, guess, memory, allowance)) {
                return ErrorCode::ErrorCode_Cancelled;
            }
            if (memory.size() > mSource.itemLimit) return ErrorCode::ErrorCode_Limit;
            // An empty item may have ended without having been asked for a byte beyond.
            if (decoder.failed() || !decoder.ended()) continue;
            content = memory.view();
            return ErrorCode::ErrorCode_None;
        }
        return ErrorCode::ErrorCode_Data;
    }

    ErrorCode readUninstaller(uint64_t offset, Buffer& memory, Allowance& allowance, ByteView& content) {
        ByteView patches, data;
        uint64_t next = 0;
        ErrorCode error = readAt(offset, mPatches, allowance, patches, next);
        if (error == ErrorCode::ErrorCode_None) error = readAt(next, mData, allowance, data, next);
        if (error != ErrorCode::ErrorCode_None) return error;
        const size_t size = mSource.stub.size() + data.size();
        if (size > mSource.itemLimit) return ErrorCode::ErrorCode_Limit;
        if (!allowance.more(size - std::min(size, memory.capacity()))) return ErrorCode::ErrorCode_Cancelled;
        if (!buildUninstaller(mSource.stub, patches, data, memory)) return ErrorCode::ErrorCode_Format;
        content = memory.view();
        return ErrorCode::ErrorCode_None;
    }

    const ItemSource mSource;
    Decoders mDecoders;
    Buffer mPatches, mData;  // the two halves of an uninstaller
};

}  // namespace

std::unique_ptr<ItemReader> makeSeparateReader(const ItemSource& source) {
    return std::make_unique<SeparateReader>(source);
}

}  // namespace Archive
