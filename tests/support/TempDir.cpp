#include "TempDir.h"

#include <filesystem>
#include <random>
#include <stdexcept>

#include "RemoveTree.h"

namespace support {

namespace fs = std::filesystem;

TempDir::TempDir(const std::string& parent) {
    std::random_device random;
    for (int attempt = 0; attempt < 100; ++attempt) {
        const std::string name = "orv-" + std::to_string(random()) + "-" + std::to_string(random());
        const fs::path path = fs::canonical(parent.empty() ? fs::temp_directory_path() : fs::path(parent)) / name;
        if (!fs::create_directory(path)) continue;
        mPath = path.generic_string();
        return;
    }
    throw std::runtime_error("no temporary directory to be had");
}

TempDir::~TempDir() { removeTree(mPath); }

}  // namespace support
