// Gives the content of a package's items.
#pragma once

#include "Archive/IExtractOutFile.h"
#include "Buffer.h"
#include "ItemList.h"
#include "PackageBody.h"

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

/// What the readers of one package share. All of it outlives them.
struct ItemSource {
    const PackageBody& body;
    const std::vector<PackageItem>& items;
    ByteView stub;       ///< the installer in front of the first header: uninstallers are made of it
    uint64_t itemLimit;  ///< bytes of one item
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

/// Decodes until the memory holds upTo bytes or the stream stops. @return false when the work is to end
bool decodeUpTo(Decoder& decoder, uint64_t upTo, size_t firstGuess, Buffer& memory, Allowance& allowance);

/// Writes the uninstaller's file: the stub with the patches in it, then the data. Patches are size, offset and bytes
/// one after another, up to a zero byte. @return false when a patch does not lie within
bool buildUninstaller(ByteView stub, ByteView patches, ByteView data, Buffer& file);

}  // namespace Archive
