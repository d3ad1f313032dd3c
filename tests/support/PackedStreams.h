// Compressed streams for packages that are written byte by byte.
#pragma once

#include <cstdint>
#include <string>

namespace support {

/// Raw deflate, as the package compiler's third generation writes it.
std::string deflated(const std::string& text, int level = 9, int strategy = 0);
/// A stored block of raw deflate as the second generation writes it, on a byte boundary: without the complement.
std::string bareBlock(const std::string& text, bool last);
/// Text as such blocks of that size each.
std::string bareBlocks(const std::string& text, size_t size);

/// Five property bytes and raw LZMA with its end mark.
/// @param filtered the filter for machine code goes before   @param declared what the properties tell, if not 0
std::string lzmaStream(const std::string& text, bool filtered = false, uint32_t dictionary = 1u << 20,
                       uint32_t declared = 0);

// Streams that unpack to so many mebibytes of one byte.
std::string deflateBomb(size_t mebibytes, const std::string& before = {});
/// Without anything before it is kept under the build directory.
std::string lzmaBomb(size_t mebibytes, const std::string& before = {});
/// To so many blocks of some 46 MB each.
std::string bzip2Bomb(size_t blocks);

/// Writes bits from the most significant end of each byte.
class BitWriter {
public:
    BitWriter& put(uint32_t value, unsigned count);
    const std::string& bytes() const { return mBytes; }

private:
    std::string mBytes;
    unsigned mFill = 0;
};

}  // namespace support
