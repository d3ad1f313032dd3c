#include "Paths.h"

#include <algorithm>

#include "Public/Base/FileEntry.h"
#include "Public/Base/StringEx.h"

namespace fs = std::filesystem;
using Public::Base::StringEx;

fs::path toPath(const std::string& text) {
    std::u8string plain(text.begin(), text.end());
    std::replace(plain.begin(), plain.end(), u8'\\', u8'/');
    try {
        return {plain};
    } catch (const std::exception&) {  // no UTF-8, on a system whose names are UTF-16
        return toPath(StringEx::wstring2string(StringEx::string2wstring(text)));
    }
}

std::string toText(const fs::path& path) {
    const std::u8string text = path.generic_u8string();
    return {text.begin(), text.end()};
}

fs::path resolved(const std::string& path) { return toPath(Public::Base::FileEntry::resolved(path)); }

bool holds(const fs::path& directory, const fs::path& path) {
    return std::mismatch(directory.begin(), directory.end(), path.begin(), path.end()).first == directory.end();
}

std::string below(const std::string& directory, const std::string& name) {
    return name.empty() ? directory : directory + "/" + name;
}
