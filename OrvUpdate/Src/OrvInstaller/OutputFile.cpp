#include "OutputFile.h"

#include <algorithm>
#include <filesystem>

#include "Public/Base/File.h"
#include "Public/Base/StringEx.h"
#include "RelativeName.h"

namespace Tarnwick::OrvUpdate {

namespace fs = std::filesystem;
using Public::Base::File;
using Public::Base::StringEx;

namespace {

/// "/" separates everywhere, a backslash does not.
fs::path systemPath(const std::string& path) {
    const std::string plain = StringEx::replace(path, "\\", "/");
    return fs::path(std::u8string(plain.begin(), plain.end()));
}

}  // namespace

bool liesInside(const std::string& directory, const std::string& name) {
    if (directory.empty() || !isPlainRelativeName(name)) return false;
    try {
        fs::path root = fs::weakly_canonical(fs::absolute(systemPath(directory)));
        if (!root.has_filename()) root = root.parent_path();  // without the separator at its end
        const fs::path parent = fs::weakly_canonical((root / systemPath(name)).parent_path());
        return std::mismatch(root.begin(), root.end(), parent.begin(), parent.end()).first == root.end();
    } catch (const std::exception&) {  // a name that the system cannot carry
        return false;
    }
}

bool removeLink(const std::string& path) {
    try {
        return !fs::is_symlink(fs::symlink_status(systemPath(path))) || File::remove(path);
    } catch (const std::exception&) {
        return false;  // it cannot be looked at
    }
}

}  // namespace Tarnwick::OrvUpdate
