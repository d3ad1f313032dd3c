#include "Archive/GrowingBlock.h"

#include <cstdlib>

namespace Archive {

// The system moves the pages of a large block instead of its bytes.
unsigned char* growBlock(unsigned char* block, size_t, size_t wanted) {
    return static_cast<unsigned char*>(std::realloc(block, wanted));
}

void freeBlock(unsigned char* block, size_t) { std::free(block); }

}  // namespace Archive
