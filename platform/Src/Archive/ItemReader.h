// Gives the content of a package's items.
#pragma once

#include <atomic>

#include "Archive/IExtractOutFile.h"
#include "Buffer.h"
#include "ItemList.h"
#include "PackageBody.h"
#include "Public/Base/System.h"

namespace Archive {

using ErrorCode = IExtractOutFile::ErrorCode;

/// What a reader asks before it takes memory, and now and then on the way.
class Allowance {
public:
    virtual ~Allowance() = default;
    /// May wait. @return false when the work is to end
    virtual bool more(size_t bytes) = 0;
    virtual bool stopped() const = 0;
};

/// Bytes that may still be decompressed, by all readers of a package together.
class Budget {
public:
    explicit Budget(uint64_t bytes) : mLeft(bytes) {}
    /// @return false when there are not as many left
    bool take(uint64_t bytes) {
        uint64_t left = mLeft;
        while (left >= bytes && !mLeft.compare_exchange_weak(left, left - bytes)) {
        }
        return left >= bytes;
    }

private:
    std::atomic<uint64_t> mLeft;
};

/// What the readers of one package share. All of it outlives them.
struct ItemSource {
    const Public::Base::MappedFile& file;
    const PackageBody& body;
    const std::vector<PackageItem>& items;
    ByteView stub;  ///< the installer in front of the first header: uninstallers are made of it
    Budget& budget;
};

/// Reads items; one thread at a time.
class ItemReader {
public:
    virtual ~ItemReader() = default;
    /// @param memory where an item goes that does not lie plainly in the file; may hold an older one
    /// @param content the item's bytes, in the file or in memory
    virtual ErrorCode read(size_t index, Buffer& memory, Allowance& allowance, ByteView& content) = 0;
};

/// For items that are packed one by one: any item in any order.
std::unique_ptr<ItemReader> makeSeparateReader(const ItemSource& source);
/// For items in one stream: in ascending order only.
std::unique_ptr<ItemReader> makeSolidReader(const ItemSource& source);

/// Decompresses, piece by piece, and lets go of the file's pages that lie behind.
class Unpacking {
public:
    /// @param kept the decoder's input from here on has its pages; moves on
    Unpacking(const ItemSource& source, Decoder& decoder, Allowance& allowance, const unsigned char*& kept)
        : mSource(source), mDecoder(decoder), mAllowance(allowance), mKept(kept) {}
    Unpacking(const Unpacking&) = delete;
    Unpacking& operator=(const Unpacking&) = delete;

    /// Adds to the memory until it holds upTo bytes or the stream stops.
    /// @param firstGuess what to reserve at first
    ErrorCode fill(Buffer& memory, uint64_t upTo, size_t firstGuess);
    /// Decompresses so many bytes and drops them. @param length becomes what is left when the stream stops
    ErrorCode skip(uint64_t& length, std::vector<unsigned char>& scratch);

private:
    ErrorCode account(size_t decoded);
    void releasePages();

    const ItemSource& mSource;
    Decoder& mDecoder;
    Allowance& mAllowance;
    const unsigned char*& mKept;
};

/// Makes room for so many bytes more. @return false when the work is to end
bool reserveMore(Buffer& memory, size_t bytes, Allowance& allowance);

/// Puts the uninstaller's file together: the memory holds the stub and then its data; the patches go into the stub.
/// They are size, offset and bytes one after another, up to a zero byte. @return false when a patch does not lie within
bool patchStub(ByteView patches, size_t stubSize, Buffer& file);

}  // namespace Archive
