#include "WholeInflate.h"

#include <libdeflate.h>

namespace Archive {

WholeInflate::~WholeInflate() { libdeflate_free_decompressor(mDecompressor); }

bool WholeInflate::decode(ByteView packed, unsigned char* output, size_t capacity, size_t& written) {
    if (mDecompressor == nullptr) mDecompressor = libdeflate_alloc_decompressor();
    return mDecompressor != nullptr && libdeflate_deflate_decompress(mDecompressor, packed.data(), packed.size(),
                                                                     output, capacity, &written) == LIBDEFLATE_SUCCESS;
}

}  // namespace Archive
