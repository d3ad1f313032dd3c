// How the data of a package is stored, found out by decoding its header.
#pragma once

#include "Decoder.h"
#include "HeaderBlock.h"
#include "PackageLayout.h"

namespace Archive {

/// One stored item of a package whose items are packed one by one.
struct StoredItem {
    bool packed = false;
    ByteView bytes;
};

/// Reads the length in front of an item. @return false when the item does not lie within the body
bool readStoredItem(ByteView body, uint64_t offset, StoredItem& item);

/// What a package's body turned out to be.
struct PackageBody {
    bool solid = false;
    Method method = Method::Deflate;  ///< of the one stream of a solid package
    ByteView bytes;                   ///< solid: the stream; else all behind the header item, where offsets count from
    uint64_t dataStart = 0;           ///< solid: position in the unpacked stream where offsets count from
    HeaderBlock header;
};

/// The body does not declare how it is stored: each way it could be is tried until the header decodes to its exact
/// length with sane tables. @return false when none fits
bool readPackageBody(ByteView file, const PackageLayout& layout, bool wide, PackageBody& body);

}  // namespace Archive
