#include "BlockSize.h"

#include <malloc.h>

size_t support::sizeOfBlock(void* block) { return malloc_usable_size(block); }
