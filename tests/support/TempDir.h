#pragma once
#include <filesystem>
#include <string>
#include <random>
namespace support {
class TempDir {
public:
    TempDir() : mPath(std::filesystem::temp_directory_path() / ("orv-a-" + std::to_string(std::random_device{}()) + std::to_string(std::random_device{}()))) { std::filesystem::create_directories(mPath); }
    ~TempDir() { std::error_code e; std::filesystem::remove_all(mPath, e); }
    std::string path() const { return mPath.string(); }
private:
    std::filesystem::path mPath;
};
}
