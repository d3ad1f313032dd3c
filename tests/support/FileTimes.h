// When files were last written, as the system itself counts it; looked at without the code under test.
#pragma once

#include <cstdint>
#include <string>

namespace support {

int64_t modifiedTime(const std::string& path);
void setModifiedTime(const std::string& path, int64_t ticks);

}  // namespace support
