// How many threads this process has.
#pragma once

#include <cstddef>

namespace support {

size_t countThreads();

}  // namespace support
