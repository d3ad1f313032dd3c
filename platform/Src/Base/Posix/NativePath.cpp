#include "Base/Posix/NativePath.h"

#include <dirent.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "Public/Base/ErrorInfo.h"
#include "Public/Base/StringEx.h"

namespace Public::Base {

bool failWith(int nativeError) {
    ErrorInfo::setLastSystemError(nativeError);
    return false;
}

bool failWithErrno() { return failWith(errno); }

bool toNativePath(const std::string& path, std::string& native) {
    if (path.empty() || path.find('\0') != std::string::npos) return failWith(EINVAL);
    native = path;
    std::replace(native.begin(), native.end(), '\\', '/');
    return true;
}

std::string findRegardlessOfCase(const std::string& native) {
    if (::access(native.c_str(), F_OK) == 0) return native;
    const size_t separator = native.rfind('/');
    const std::string folder = separator == std::string::npos ? "." : native.substr(0, separator + 1);
    const std::string name = separator == std::string::npos ? native : native.substr(separator + 1);
    DIR* directory = ::opendir(folder.c_str());
    if (directory == nullptr) return native;
    std::string found;
    while (const dirent* entry = ::readdir(directory)) {
        // Of several the first by name, so that the choice does not hang on the file system.
        if (StringEx::iequals(entry->d_name, name) && (found.empty() || found > entry->d_name)) found = entry->d_name;
    }
    ::closedir(directory);
    if (found.empty()) return native;
    return separator == std::string::npos ? found : folder + found;
}

}  // namespace Public::Base
