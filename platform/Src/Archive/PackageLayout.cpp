#include "PackageLayout.h"

#include <lzma.h>

#include <algorithm>
#include <cstring>

#include "Limits.h"

namespace Archive {
namespace {

constexpr uint64_t kSector = 512;
constexpr uint64_t kFirstHeaderSize = 28;
constexpr uint64_t kChecksumSize = 4;
constexpr uint64_t kSearchLimit = 64u << 20;  // a stub with all its resources is far smaller
constexpr uint32_t kNoChecksum = 4, kForceChecksum = 8, kKnownFlags = 15;
constexpr unsigned char kMagic[] = {0xEF, 0xBE, 0xAD, 0xDE, 'N', 'u', 'l', 'l', 's', 'o', 'f', 't', 'I', 'n', 's', 't'};

bool readFirstHeader(ByteView file, uint64_t offset, PackageLayout& layout) {
    const ByteView header = part(file, offset, kFirstHeaderSize);
    if (header.empty() || std::memcmp(&header[4], kMagic, sizeof kMagic) != 0) return false;
    const uint32_t flags = le32(header.data());
    if ((flags & ~kKnownFlags) != 0) return false;
    layout.firstHeader = offset;
    layout.headerLength = le32(&header[20]);
    layout.end = offset + le32(&header[24]);
    layout.hasChecksum = (flags & kNoChecksum) == 0 || (flags & kForceChecksum) != 0;
    layout.bodyBegin = offset + kFirstHeaderSize;
    layout.bodyEnd = layout.end - (layout.hasChecksum ? kChecksumSize : 0);
    return layout.headerLength != 0 && layout.headerLength <= kHeaderLimit &&
           layout.end >= layout.bodyBegin + kChecksumSize && layout.bodyEnd >= layout.bodyBegin;
}

}  // namespace

bool findPackage(ByteView file, const PeImage& image, PackageLayout& layout) {
    const uint64_t expected = image.sectionsEnd();
    if (expected != 0 && expected % kSector == 0 && readFirstHeader(file, expected, layout)) return true;
    const uint64_t limit = std::min<uint64_t>(file.size(), kSearchLimit);
    for (uint64_t offset = 0; offset < limit; offset += kSector) {
        if (readFirstHeader(file, offset, layout)) return true;
    }
    return false;
}

bool checksumHolds(const Public::Base::MappedFile& mapped, const PackageLayout& layout, const std::atomic<bool>& stop) {
    constexpr uint64_t kPiece = 1u << 20;
    const ByteView file(mapped.data(), mapped.size());
    const uint64_t end = layout.bodyEnd;
    if (!fits(file.size(), end, kChecksumSize)) return false;
    uint32_t sum = 0;
    // The compiler leaves the first sector out, so that signing does not break the checksum.
    for (uint64_t at = kSector; at < end; at += kPiece) {
        if (stop) return false;
        const auto size = static_cast<size_t>(std::min(kPiece, end - at));
        sum = lzma_crc32(&file[at], size, sum);
        mapped.release(&file[at], size);
    }
    return sum == le32(&file[end]);
}

}  // namespace Archive
