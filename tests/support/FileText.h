// Files of a test as text, looked at without the code under test.
#pragma once

#include <filesystem>
#include <fstream>
#include <optional>
#include <set>
#include <sstream>
#include <string>

namespace support {

/// The path in a form that the standard library takes however long it is.
std::filesystem::path pathOf(const std::string& path);

/// Writes the file, with the directories that it lies in.
inline void writeText(const std::string& path, const std::string& text) {
    const std::filesystem::path file = pathOf(path);
    if (file.has_parent_path()) std::filesystem::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary | std::ios::trunc) << text;
}

/// Nobody but an administrator may write the file any more.
inline void makeReadOnly(const std::string& path) {
    using std::filesystem::perms;
    std::filesystem::permissions(pathOf(path), perms::owner_read | perms::group_read | perms::others_read);
}

/// The file's content; nothing when it is not there.
inline std::optional<std::string> readText(const std::string& path) {
    const std::filesystem::path name = pathOf(path);
    std::ifstream file(name, std::ios::binary);
    if (!file || std::filesystem::is_directory(name)) return std::nullopt;
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

/// Relative paths, with "/", of all files below the directory.
inline std::set<std::string> filesBelow(const std::string& directory) {
    std::set<std::string> files;
    const std::filesystem::path top = pathOf(directory);
    if (!std::filesystem::exists(top)) return files;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(top)) {
        if (!entry.is_directory()) files.insert(entry.path().lexically_relative(top).generic_string());
    }
    return files;
}

}  // namespace support
