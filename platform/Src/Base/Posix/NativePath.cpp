#include "Base/Posix/NativePath.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
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

int openNative(const std::string& native, int flags, unsigned permissions) {
    int fd = -1;
    do {
        fd = ::open(native.c_str(), flags | O_CLOEXEC | O_NONBLOCK | O_NOCTTY, permissions);
    } while (fd < 0 && errno == EINTR);
    struct stat status {};
    if (fd < 0 || ::fstat(fd, &status) != 0) {
        failWithErrno();
    } else if (S_ISDIR(status.st_mode)) {
        failWith(EISDIR);
    } else if (S_ISFIFO(status.st_mode) || S_ISSOCK(status.st_mode)) {
        failWith(ENXIO);
    } else {
        ::fcntl(fd, F_SETFL, ::fcntl(fd, F_GETFL) & ~O_NONBLOCK);
        return fd;
    }
    if (fd >= 0) ::close(fd);
    return -1;
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
