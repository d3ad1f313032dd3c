// Items in one stream.
#include <algorithm>

#include "ItemReader.h"
#include "Limits.h"

namespace Archive {
namespace {

class SolidReader : public ItemReader {
public:
    explicit SolidReader(const ItemSource& source)
        : mSource(source),
          mDecoder(makeDecoder(source.body.method)),
          mKept(source.body.bytes.data()),
          mScratch(1u << 16) {
        if (!mDecoder->begin(source.body.bytes, UINT64_MAX)) mError = ErrorCode::ErrorCode_Data;
    }

    ErrorCode read(size_t index, Buffer& memory, Allowance& allowance, ByteView& content) override {
        // Behind an error the stream stands nowhere that an item could be read from.
        memory.clear();
        if (mError == ErrorCode::ErrorCode_None) mError = readItem(mSource.items[index], memory, allowance);
        content = memory.view();
        return mError;
    }

private:
    ErrorCode readItem(const PackageItem& item, Buffer& memory, Allowance& allowance) {
        const uint64_t target = mSource.body.dataStart + item.offset;
        // An item that begins within the one before it is nothing that the compiler makes.
        if (target < mPosition) return ErrorCode::ErrorCode_Format;
        ErrorCode error = skipTo(target, allowance);
        const uint64_t limit = itemLimit(mSource.body.bytes.size());
        if (error != ErrorCode::ErrorCode_None) return error;
        if (item.kind != PackageItem::Uninstaller) return readNext(limit, memory, allowance);

        mPatches.clear();
        error = readNext(kPatchLimit, mPatches, allowance);
        if (error != ErrorCode::ErrorCode_None) return error;
        if (!reserveMore(memory, mSource.stub.size(), allowance)) return ErrorCode::ErrorCode_Cancelled;
        memory.append(mSource.stub);
        error = readNext(limit, memory, allowance);
        if (error != ErrorCode::ErrorCode_None) return error;
        return patchStub(mPatches.view(), mSource.stub.size(), memory) ? error : ErrorCode::ErrorCode_Format;
    }

    /// Adds the item at the current position to the memory: its length, then its bytes.
    ErrorCode readNext(uint64_t limit, Buffer& memory, Allowance& allowance) {
        constexpr uint32_t kPackedBit = 0x80000000u;
        constexpr size_t kLargestGuess = 16u << 20;
        unsigned char prefix[4];
        if (mDecoder->read(prefix, sizeof prefix) != sizeof prefix) return stopReason();
        const uint32_t length = le32(prefix);
        if ((length & kPackedBit) != 0) return ErrorCode::ErrorCode_Format;
        if (length > limit) return ErrorCode::ErrorCode_Limit;
        const size_t end = memory.size() + length, guess = memory.size() + std::min<size_t>(length, kLargestGuess);
        const ErrorCode error = Unpacking(mSource, *mDecoder, allowance, mKept).fill(memory, end, guess);
        if (error != ErrorCode::ErrorCode_None) return error;
        if (memory.size() != end) return stopReason();
        mPosition += sizeof prefix + length;
        return ErrorCode::ErrorCode_None;
    }

    ErrorCode skipTo(uint64_t target, Allowance& allowance) {
        uint64_t left = target - mPosition;
        const ErrorCode error = Unpacking(mSource, *mDecoder, allowance, mKept).skip(left, mScratch);
        if (error != ErrorCode::ErrorCode_None) return error;
        mPosition = target - left;
        return left == 0 ? ErrorCode::ErrorCode_None : stopReason();
    }

    ErrorCode stopReason() const {
        return mDecoder->failed() ? ErrorCode::ErrorCode_Data : ErrorCode::ErrorCode_Format;
    }

    const ItemSource mSource;
    std::unique_ptr<Decoder> mDecoder;
    uint64_t mPosition = 0;      // in the unpacked stream
    const unsigned char* mKept;  // in the packed one: pages before it were given back
    std::vector<unsigned char> mScratch;
    Buffer mPatches;  // for an uninstaller's stub
    ErrorCode mError = ErrorCode::ErrorCode_None;
};

}  // namespace

std::unique_ptr<ItemReader> makeSolidReader(const ItemSource& source) { return std::make_unique<SolidReader>(source); }

}  // namespace Archive
