// Items that are packed one by one.
#include <algorithm>
#include <cstring>

#include "ItemReader.h"
#include "Limits.h"
#include "WholeInflate.h"

namespace Archive {
namespace {

class SeparateReader : public ItemReader {
public:
    explicit SeparateReader(const ItemSource& source) : mSource(source) {}

    ErrorCode read(size_t index, Buffer& memory, Allowance& allowance, ByteView& content) override {
        const PackageItem& item = mSource.items[index];
        const ByteView bytes = mSource.body.bytes.first(endOfItem(index));
        memory.clear();
        if (item.kind == PackageItem::Uninstaller)
            return readUninstaller(bytes, item.offset, memory, allowance, content);
        StoredItem stored;
        if (!readStoredItem(bytes, item.offset, stored)) return ErrorCode::ErrorCode_Format;
        if (stored.packed) return unpack(stored.bytes, itemLimit(stored.bytes.size()), memory, allowance, content);
        content = stored.bytes;
        return ErrorCode::ErrorCode_None;
    }

private:
    /// Items do not reach into each other: where they do, a short file could be decompressed again and again.
    size_t endOfItem(size_t index) const {
        const std::vector<PackageItem>& items = mSource.items;
        size_t next = index + 1;
        while (next < items.size() && items[next].offset == items[index].offset) ++next;
        const size_t size = mSource.body.bytes.size();
        return next < items.size() ? std::min<size_t>(items[next].offset, size) : size;
    }

    /// Adds the item to the memory. @param limit of its bytes   @param content all that the memory holds then
    ErrorCode unpack(ByteView packed, uint64_t limit, Buffer& memory, Allowance& allowance, ByteView& content) {
        // What is reserved keeps other items waiting, and a block grows at little cost.
        constexpr size_t kUsualRatio = 3, kLargestGuess = 4u << 20;
        const size_t guess = std::min(packed.size() * kUsualRatio, kLargestGuess), before = memory.size();
        for (const Method method : candidateMethods(packed)) {
            if (method == Method::Deflate) {
                const ErrorCode error = unpackAtOnce(packed, limit, memory, allowance);
                if (error != ErrorCode::ErrorCode_None) return error;
                if (memory.size() != before) {
                    content = memory.view();
                    return error;
                }
            }
            Decoder& decoder = mDecoders.get(method);
            if (!decoder.begin(packed, limit + 1)) continue;
            memory.shrink(before);
            const unsigned char* kept = packed.data();
            Unpacking unpacking(mSource, decoder, allowance, kept);
            const ErrorCode error = unpacking.fill(memory, before + limit + 1, before + guess);
            if (error != ErrorCode::ErrorCode_None) return error;
            if (memory.size() - before > limit) return ErrorCode::ErrorCode_Limit;
            // An empty item may have ended without having been asked for a byte beyond.
            if (decoder.failed() || !decoder.ended()) continue;
            content = memory.view();
            return ErrorCode::ErrorCode_None;
        }
        return ErrorCode::ErrorCode_Data;
    }

    /// Adds an item that unpacks to what is usual to the memory, or leaves it as it is.
    ErrorCode unpackAtOnce(ByteView packed, uint64_t limit, Buffer& memory, Allowance& allowance) {
        constexpr size_t kHighRatio = 5, kLeast = 1u << 16, kMost = 32u << 20;
        if (allowance.stopped()) return ErrorCode::ErrorCode_Cancelled;
        const auto room =
            static_cast<size_t>(std::min<uint64_t>(std::clamp(packed.size() * kHighRatio, kLeast, kMost), limit));
        if (packed.size() > room) return ErrorCode::ErrorCode_None;
        if (!reserveMore(memory, room, allowance)) return ErrorCode::ErrorCode_Cancelled;
        size_t written = 0;
        const bool whole = mWholeInflate.decode(packed, memory.data() + memory.size(), room, written);
        if (whole) memory.grew(written);
        // Where it fails it mostly does so at once, and small items have far more room than content.
        const uint64_t charge = whole ? written : std::min(room, 8 * packed.size());
        return mSource.budget.take(charge) ? ErrorCode::ErrorCode_None : ErrorCode::ErrorCode_Limit;
    }

    ErrorCode readUninstaller(ByteView bytes, uint64_t offset, Buffer& memory, Allowance& allowance,
                              ByteView& content) {
        StoredItem first, second;
        if (!readStoredItem(bytes, offset, first)) return ErrorCode::ErrorCode_Format;
        if (!readStoredItem(bytes, offset + 4 + first.bytes.size(), second)) return ErrorCode::ErrorCode_Format;
        ByteView patches = first.bytes;
        if (first.packed) {
            mPatches.clear();
            const ErrorCode error = unpack(first.bytes, kPatchLimit, mPatches, allowance, patches);
            if (error != ErrorCode::ErrorCode_None) return error;
        }
        if (!reserveMore(memory, mSource.stub.size(), allowance)) return ErrorCode::ErrorCode_Cancelled;
        memory.append(mSource.stub);
        ErrorCode error = ErrorCode::ErrorCode_None;
        if (second.packed) {
            error = unpack(second.bytes, itemLimit(second.bytes.size()), memory, allowance, content);
        } else if (reserveMore(memory, second.bytes.size(), allowance)) {
            memory.append(second.bytes);
        } else {
            error = ErrorCode::ErrorCode_Cancelled;
        }
        if (error != ErrorCode::ErrorCode_None) return error;
        content = memory.view();
        return patchStub(patches, mSource.stub.size(), memory) ? error : ErrorCode::ErrorCode_Format;
    }

    const ItemSource mSource;
    Decoders mDecoders;
    WholeInflate mWholeInflate;
    Buffer mPatches;  // for an uninstaller's stub
};

}  // namespace

std::unique_ptr<ItemReader> makeSeparateReader(const ItemSource& source) {
    return std::make_unique<SeparateReader>(source);
}

}  // namespace Archive
