#include "FileLinks.h"

#include <algorithm>
#include <filesystem>
#include <stdexcept>

#include "TempDir.h"
#include "WideText.h"

namespace support {

void makeLink(const std::string& target, const std::string& path) {
    std::wstring wanted = wide(target);
    std::replace(wanted.begin(), wanted.end(), L'/', L'\\');
    const auto leadsTo = std::filesystem::path(longPath(path)).parent_path() / wanted;
    std::error_code ignored;
    const bool toDirectory = std::filesystem::is_directory(leadsTo, ignored);
    const DWORD flags = SYMBOLIC_LINK_FLAG_ALLOW_UNPRIVILEGED_CREATE | (toDirectory ? SYMBOLIC_LINK_FLAG_DIRECTORY : 0);
    const bool made = ::CreateSymbolicLinkW(longPath(path).c_str(), wanted.c_str(), flags) &&
                      ::GetFileAttributesW(longPath(path).c_str()) != INVALID_FILE_ATTRIBUTES;
    if (!made) throw std::runtime_error("no symbolic link can be made at " + path);
}

bool linksCanBeMade() {
    static const bool can = [] {
        const TempDir dir;
        try {
            makeLink("nowhere", dir.path() + "/link");
            return true;
        } catch (const std::runtime_error&) {
            return false;
        }
    }();
    return can;
}

}  // namespace support
