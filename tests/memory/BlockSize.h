// How much a block of the heap really holds.
#pragma once

#include <cstddef>

namespace support {

/// @param block that malloc gave
size_t sizeOfBlock(void* block);

}  // namespace support
