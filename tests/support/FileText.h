// Files of a test as text, looked at without the code under test.
#pragma once

#include <filesystem>
#include <fstream>
#include <optional>
#include <set>
#include <sstream>
#include <string>

namespace support {

/// Writes the file, with the directories that it lies in.
inline void writeText(const std::string& path, const std::string& text) {
    const std::filesystem::path file(path);
    if (file.has_parent_path()) std::filesystem::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary | std::ios::trunc) << text;
}

/// The file's content; nothing when it is not there.
inline std::optional<std::string> readText(const std::string& path) {
    const std::filesystem::path name(path);
    std::ifstream file(name, std::ios::binary);
    if (!file || std::filesystem::is_directory(name)) return std::nullopt;
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

/// Relative paths, with "/", of all files below the directory.
inline std::set<std::string> filesBelow(const std::string& directory) {
    std::set<std::string> files;
    if (!std::filesystem::exists(directory)) return files;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(directory)) {
        if (!entry.is_directory()) files.insert(std::filesystem::relative(entry.path(), directory).generic_string());
    }
    return files;
}

}  // namespace support
