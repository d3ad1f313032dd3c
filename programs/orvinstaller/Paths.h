// Paths between their text, which is UTF-8, and the system's form.
#pragma once

#include <filesystem>
#include <string>

/// "\\" separates too. Such paths are taken apart and put together; files are looked at by their texts, since only the
/// platform takes paths of any length.
std::filesystem::path toPath(const std::string& text);

/// With "/".
std::string toText(const std::filesystem::path& path);

/// Where the path leads, once links are followed and it is made absolute; without a separator at its end. Empty when it
/// cannot be looked at.
std::filesystem::path resolved(const std::string& path);

/// True for the directory itself too. Both are resolved.
bool holds(const std::filesystem::path& directory, const std::filesystem::path& path);

/// The file or directory of that relative name.
std::string below(const std::string& directory, const std::string& name);
