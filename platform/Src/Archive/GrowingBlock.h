// Memory that grows without a second copy of what it holds.
#pragma once

#include <cstddef>

namespace Archive {

/// Makes the block larger; it may move. What lies beyond the old capacity is anything.
/// @param block null, with a capacity of 0, for a new one
/// @return null when the system has not so much, and the old block stays as it is
unsigned char* growBlock(unsigned char* block, size_t capacity, size_t wanted);

/// @param capacity that the block was last given
void freeBlock(unsigned char* block, size_t capacity);

}  // namespace Archive
