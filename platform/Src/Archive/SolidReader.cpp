// Items in one stream.
#include <algorithm>

#include "ItemReader.h"

namespace Archive {
namespace {

class SolidReader : public ItemReader {
public:
    explicit SolidReader(const ItemSource& source)
        : mSource(source), mDecoder(makeDecoder(source.body.method)), mScratch(1u << 16) {
        if (!mDecoder->begin(source.body.bytes, UINT64_MAX)) mError = ErrorCode::ErrorCode_Data;
    }

    ErrorCode read(size_t index, Buffer& memory, Allowance& allowance, ByteView& content) override {
        // Behind an error the stream stands nowhere that an item could be read from.
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
        if (error != ErrorCode::ErrorCode_None) return error;
        if (item.kind != PackageItem::Uninstaller) return readNext(memory, allowance);

        error = readNext(mPatches, allowance);
        if (error == ErrorCode::ErrorCode_None) error = readNext(mData, allowance);
        if (error != ErrorCode::ErrorCode_None) return error;
        const size_t size = mSource.stub.size() + mData.size();
        if (size > mSource.itemLimit) return ErrorCode::ErrorCode_Limit;
        if (!allowance.more(size - std::min(size, memory.capacity()))) return ErrorCode::ErrorCode_Cancelled;
        const bool built = buildUninstaller(mSource.stub, mPatches.view(), mData.view(), memory);
        return built ? ErrorCode::ErrorCode_None : ErrorCode::ErrorCode_Format;
    }

    /// The item at the current position: its length, then its bytes.
    ErrorCode readNext(Buffer& memory, Allowance& allowance) {
        constexpr uint32_t kPackedBit = 0x80000000u;
        constexpr size_t kLargestGuess = 16u << 20;
        unsigned char prefix[4];
        if (mDecoder->read(prefix, sizeof prefix) != sizeof prefix) return stopReason();
        const uint32_t length = le32(prefix);
        if ((length & kPackedBit) != 0) return ErrorCode::ErrorCode_Format;
        if (length > mSource.itemLimit) return ErrorCode::ErrorCode_Limit;
        memory.clear();
        const size_t guess = std::min<size_t>(length, kLargestGuess);
        if (!decodeUpTo(*mDecoder, length, guess, memory, allowance)) return ErrorCode::ErrorCode_Cancelled;
        if (memory.size() != length) return stopReason();
        mPosition += sizeof prefix + length;
        return ErrorCode::ErrorCode_None;
    }

    ErrorCode skipTo(uint64_t target, const Allowance& allowance) {
        while (mPosition < target) {
            if (allowance.stopped()) return ErrorCode::ErrorCode_Cancelled;
            const auto piece = static_cast<size_t>(std::min<uint64_t>(mScratch.size(), target - mPosition));
            if (mDecoder->read(mScratch.data(), piece) != piece) return stopReason();
            mPosition += piece;
        }
        return ErrorCode::ErrorCode_None;
    }

    ErrorCode stopReason() const {
        return mDecoder->failed() ? ErrorCode::ErrorCode_Data : ErrorCode::ErrorCode_Format;
    }

    const ItemSource mSource;
    std::unique_ptr<Decoder> mDecoder;
    uint64_t mPosition = 0;  // in the unpacked stream
    std::vector<unsigned char> mScratch;
    Buffer mPatches, mData;  // the two halves of an uninstaller
    ErrorCode mError = ErrorCode::ErrorCode_None;
};

}  // namespace

std::unique_ptr<ItemReader> makeSolidReader(const ItemSource& source) { return std::make_unique<SolidReader>(source); }

}  // namespace Archive
