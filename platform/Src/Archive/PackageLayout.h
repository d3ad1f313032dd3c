// Where a package's parts lie in its file.
#pragma once

#include <atomic>

#include "PeImage.h"
#include "Public/Base/System.h"

namespace Archive {

/// The first header of a package and what follows from it. The numbers are checked against each other, and those up to
/// bodyBegin against the file; the end may lie beyond a file that was cut.
struct PackageLayout {
    uint64_t firstHeader = 0;   ///< file offset of the first header; the stub lies in front of it
    uint32_t headerLength = 0;  ///< of the unpacked header block
    uint64_t end = 0;           ///< where the first header says that the package ends
    uint64_t bodyBegin = 0, bodyEnd = 0;
    bool hasChecksum = false;
};

/// Looks behind the executable's sections first, then at every multiple of 512.
bool findPackage(ByteView file, const PeImage& image, PackageLayout& layout);

/// Compares the checksum at the package's end with the bytes. @return false on a mismatch, or when stop became true
bool checksumHolds(const Public::Base::MappedFile& mapped, const PackageLayout& layout, const std::atomic<bool>& stop);

}  // namespace Archive
