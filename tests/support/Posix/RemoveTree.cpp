#include "RemoveTree.h"

#include <filesystem>

namespace support {

void removeTree(const std::string& directory) {
    std::error_code ignored;
    std::filesystem::remove_all(directory, ignored);
}

}  // namespace support
