// What can be done to files and directories by path.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "Base/Posix/Descriptor.h"
#include "Base/Posix/NativePath.h"
#include "Base/Posix/Replacement.h"
#include "Public/Base/File.h"

namespace Public::Base {

namespace {

bool copyByBuffer(int from, Replacement& to) {
    std::string buffer(1 << 18, '\0');
    for (;;) {
        const ssize_t got = ::read(from, buffer.data(), buffer.size());
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) return failWithErrno();
        if (got == 0) return true;
        if (!to.write(buffer.data(), static_cast<size_t>(got))) return false;
    }
}

bool copyContent(int from, Replacement& to) {
    constexpr size_t kPiece = size_t{1} << 30;
    for (bool any = false;;) {
        const ssize_t copied = ::copy_file_range(from, nullptr, to.get(), nullptr, kPiece, 0);
        if (copied < 0 && errno == EINTR) continue;
        if (copied == 0 && any) return true;
        any = true;
        if (copied > 0) continue;
        // The system cannot do it between these two, or a special file gives nothing at once; both read from where they
        // are.
        const bool byBuffer = copied == 0 || errno == EXDEV || errno == EINVAL || errno == ENOSYS ||
                              errno == EOPNOTSUPP || errno == EBADF || errno == EPERM;
        return byBuffer ? copyByBuffer(from, to) : failWithErrno();
    }
}

bool isSame(const struct stat& one, const struct stat& other) {
    return one.st_dev == other.st_dev && one.st_ino == other.st_ino;
}

/// Opening one of these would wait for somebody at its other end.
bool isQueue(const struct stat& status) { return S_ISFIFO(status.st_mode) || S_ISSOCK(status.st_mode); }

/// Makes one directory. @return the system's number of the failure, 0 when it is there now
int makeOne(const std::string& native) {
    if (::mkdir(native.c_str(), 0777) == 0) return 0;
    const int refused = errno;
    struct stat status {};
    const bool seen = ::stat(native.c_str(), &status) == 0;
    if (seen && S_ISDIR(status.st_mode)) return 0;
    if (refused != EEXIST) return refused;
    // Where something else is in the way, also a link that leads nowhere, the system says that it exists.
    return seen || errno == ENOENT || errno == ELOOP ? ENOTDIR : errno;
}

}  // namespace

bool File::access(const std::string& path, AccessMode) {
    std::string native;
    return toNativePath(path, native) && (::access(native.c_str(), F_OK) == 0 || failWithErrno());
}

bool File::isAbsent(const std::string& path) {
    std::string native;
    if (!toNativePath(path, native)) return true;
    struct stat status {};
    if (::stat(native.c_str(), &status) == 0) return false;
    const int reason = errno;
    failWith(reason);
    return reason == ENOENT || reason == ENOTDIR;
}

uint64_t File::getLength(const std::string& path) {
    std::string native;
    if (!toNativePath(path, native)) return 0;
    struct stat status {};
    if (::stat(native.c_str(), &status) != 0) {
        failWithErrno();
        return 0;
    }
    return S_ISDIR(status.st_mode) ? 0 : static_cast<uint64_t>(status.st_size);
}

bool File::cut(const std::string& path, uint64_t length) {
    std::string native;
    if (!toNativePath(path, native)) return false;
    struct stat status {};
    if (::stat(native.c_str(), &status) != 0) return failWithErrno();
    if (static_cast<uint64_t>(status.st_size) <= length) return true;
    return ::truncate(native.c_str(), static_cast<off_t>(length)) == 0 || failWithErrno();
}

bool File::remove(const std::string& path) {
    std::string native;
    return toNativePath(path, native) && (::unlink(native.c_str()) == 0 || failWithErrno());
}

bool File::copy(const std::string& from, const std::string& to) {
    std::string source;
    std::string target;
    if (!toNativePath(from, source) || !toNativePath(to, target)) return false;
    const Descriptor input(openRetrying(source, O_RDONLY | O_NONBLOCK));
    if (!input.isOpen()) return failWithErrno();
    struct stat status {};
    if (::fstat(input.get(), &status) != 0) return failWithErrno();
    if (S_ISDIR(status.st_mode)) return failWith(EISDIR);
    if (isQueue(status)) return failWith(EINVAL);
    struct stat present {};
    if (::stat(target.c_str(), &present) == 0) {
        if (isSame(present, status)) return failWith(EEXIST);
        if (isQueue(present)) return failWith(EINVAL);
    }
    // Without the bits that lend a program its owner's rights: the copy may have another owner.
    const mode_t permissions = status.st_mode & 0777;
    Replacement output;
    return output.open(target, permissions | S_IWUSR) && copyContent(input.get(), output) &&
           output.setPermissions(permissions) && output.commit();
}

bool File::save(const std::string& path, const SharedBuffer& content) {
    std::string target;
    if (!toNativePath(path, target)) return false;
    Replacement output;
    // One that may not be written is not replaced either.
    struct stat present {};
    if (::stat(target.c_str(), &present) == 0) {
        if (::faccessat(AT_FDCWD, target.c_str(), W_OK, AT_EACCESS) != 0) return failWithErrno();
    }
    if (!output.open(target, 0666)) return false;
    if (output.replaces() && !output.setPermissions(output.replaced().st_mode & 0777)) return false;
    return output.write(content.buf(), content.size()) && output.sync() && output.commit();
}

bool File::makeDirectory(const std::string& path) {
    std::string native;
    if (!toNativePath(path, native)) return false;
    for (size_t at = native.find('/', 1);; at = native.find('/', at + 1)) {
        const std::string part = native.substr(0, at);
        if (const int refused = makeOne(part)) return failWith(refused);
        if (at == std::string::npos) return true;
    }
}

}  // namespace Public::Base
