#include "Paths.h"

#include <algorithm>

namespace fs = std::filesystem;

fs::path toPath(const std::string& text) {
    std::u8string plain(text.begin(), text.end());
    std::replace(plain.begin(), plain.end(), u8'\\', u8'/');
    return {plain};
}

std::string toText(const fs::path& path) {
    const std::u8string text = path.generic_u8string();
    return {text.begin(), text.end()};
}

fs::path resolved(const std::string& path) {
    std::error_code error;
    const fs::path whole = fs::absolute(toPath(path), error);
    if (error) return {};
    const fs::path found = fs::weakly_canonical(whole, error);
    if (error) return {};
    return found.has_filename() ? found : found.parent_path();
}

bool holds(const fs::path& directory, const fs::path& path) {
    return std::mismatch(directory.begin(), directory.end(), path.begin(), path.end()).first == directory.end();
}

std::string below(const std::string& directory, const std::string& name) {
    return name.empty() ? directory : directory + "/" + name;
}
