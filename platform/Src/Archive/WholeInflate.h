// Deflate of a whole item at once, for items whose size can be guessed.
#pragma once

#include "Bytes.h"

struct libdeflate_decompressor;

namespace Archive {

/// Twice as fast as decompressing piece by piece, but all or nothing: where the output does not fit, or stored blocks
/// lack the complement of their length, the stream has to be read again the other way.
class WholeInflate {
public:
    WholeInflate() = default;
    ~WholeInflate();
    WholeInflate(const WholeInflate&) = delete;
    WholeInflate& operator=(const WholeInflate&) = delete;

    /// @param written bytes of output   @return false when it did not work out; the output may be overwritten then
    bool decode(ByteView packed, unsigned char* output, size_t capacity, size_t& written);

private:
    libdeflate_decompressor* mDecompressor = nullptr;
};

}  // namespace Archive
