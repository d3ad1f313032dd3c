#include "FileText.h"

namespace support {

std::filesystem::path pathOf(const std::string& path) { return path; }

}  // namespace support
