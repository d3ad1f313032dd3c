#include "FileLinks.h"

#include <filesystem>

void support::makeLink(const std::string& target, const std::string& path) {
    std::filesystem::create_symlink(target, path);
}

bool support::linksCanBeMade() { return true; }
