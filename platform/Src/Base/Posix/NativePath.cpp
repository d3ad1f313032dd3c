#include "Base/Posix/NativePath.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "Base/Posix/EntryStream.h"
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

int openRetrying(const std::string& native, int flags, mode_t permissions) {
    int fd = -1;
    do {
        fd = ::open(native.c_str(), flags | O_CLOEXEC, permissions);
    } while (fd < 0 && errno == EINTR);
    return fd;
}

std::string findRegardlessOfCase(const std::string& native) {
    if (::access(native.c_str(), F_OK) == 0) return native;
    const size_t separator = native.rfind('/');
    const std::string folder = separator == std::string::npos ? "." : native.substr(0, separator + 1);
    const std::string name = separator == std::string::npos ? native : native.substr(separator + 1);
    EntryStream entries(folder);
    std::string found;
    while (const dirent* entry = entries.next()) {
        // Of several the first by name, so that the choice does not hang on the file system.
        if (StringEx::iequals(entry->d_name, name) && (found.empty() || found > entry->d_name)) found = entry->d_name;
    }
    if (found.empty()) return native;
    return separator == std::string::npos ? found : folder + found;
}

}  // namespace Public::Base
