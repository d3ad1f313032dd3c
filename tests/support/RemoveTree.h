// Takes away what a test left.
#pragma once

#include <string>

namespace support {

/// Removes the directory with all that it holds, as far as the system lets it.
void removeTree(const std::string& directory);

}  // namespace support
