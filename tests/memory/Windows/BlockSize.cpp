#include "BlockSize.h"

#include <malloc.h>

size_t support::sizeOfBlock(void* block) { return ::_msize(block); }
