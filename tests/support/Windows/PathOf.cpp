#include "FileText.h"
#include "WideText.h"

namespace support {

std::filesystem::path pathOf(const std::string& path) {
    constexpr size_t kLongestPlain = 240;
    return path.size() > kLongestPlain ? std::filesystem::path(longPath(path)) : std::filesystem::path(path);
}

}  // namespace support
