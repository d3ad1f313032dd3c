#include "Held.h"

#include <filesystem>
#include <fstream>

namespace faults {

namespace fs = std::filesystem;

std::multiset<std::string> openHere() {
    std::multiset<std::string> open;
    for (const auto& entry : fs::directory_iterator("/proc/self/fd")) {
        std::error_code gone;  // the listing's own is closed by now
        const fs::path target = fs::read_symlink(entry.path(), gone);
        if (!gone && !target.string().ends_with("/fd")) open.insert(target.string());
    }
    return open;
}

bool isMappedBelow(const std::string& directory) {
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);) {
        if (line.find(directory + "/") != std::string::npos) return true;
    }
    return false;
}

}  // namespace faults
