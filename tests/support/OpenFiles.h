// Which files this process has open.
#pragma once

#include <filesystem>
#include <string>

namespace support {

/// How often the file is open here, under any name that it had.
inline size_t timesOpenHere(const std::string& path) {
    size_t times = 0;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        std::error_code gone;
        const std::string target = std::filesystem::read_symlink(entry.path(), gone).string();
        if (target == path || target == path + " (deleted)") ++times;
    }
    return times;
}

inline bool isOpenHere(const std::string& path) { return timesOpenHere(path) > 0; }

}  // namespace support
