// What can be done to files and directories by path.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "Base/Posix/Descriptor.h"
#include "Base/Posix/NativePath.h"
#include "Public/Base/File.h"

namespace Public::Base {

namespace {

bool copyByBuffer(int from, int to) {
    std::string buffer(1 << 18, '\0');
    for (;;) {
        const ssize_t got = ::read(from, buffer.data(), buffer.size());
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) return failWithErrno();
        if (got == 0) return true;
        for (ssize_t done = 0; done < got;) {
            const ssize_t put = ::write(to, buffer.data() + done, static_cast<size_t>(got - done));
            if (put < 0 && errno == EINTR) continue;
            if (put <= 0) return put < 0 ? failWithErrno() : failWith(ENOSPC);
            done += put;
        }
    }
}

bool copyContent(int from, int to) {
    constexpr size_t kPiece = size_t{1} << 30;
    for (bool first = true;; first = false) {
        const ssize_t copied = ::copy_file_range(from, nullptr, to, nullptr, kPiece, 0);
        if (copied > 0) continue;
        if (copied == 0 && !first) return true;
        if (copied < 0 && errno == EINTR) continue;
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

/// Opens a target for writing from its start. One that may not be written, being read-only or a running program, is
/// made anew.
Descriptor openTarget(const std::string& native, mode_t permissions) {
    constexpr int kFlags = O_WRONLY | O_CREAT | O_TRUNC;
    Descriptor target(openRetrying(native, kFlags, permissions));
    const int refused = errno;
    const bool inTheWay = !target.isOpen() && (refused == EACCES || refused == ETXTBSY);
    if (inTheWay && ::unlink(native.c_str()) == 0) return Descriptor(openRetrying(native, kFlags, permissions));
    errno = refused;
    return target;
}

bool isDirectory(const std::string& native) {
    struct stat status {};
    return ::stat(native.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

}  // namespace

bool File::access(const std::string& path, AccessMode) {
    std::string native;
    return toNativePath(path, native) && (::access(native.c_str(), F_OK) == 0 || failWithErrno());
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
    struct stat present {};
    const bool overwrites = ::stat(target.c_str(), &present) == 0;
    if (overwrites && isSame(present, status)) return failWith(EEXIST);
    if (isQueue(status) || (overwrites && isQueue(present))) return failWith(EINVAL);
    // Without the bits that lend a program its owner's rights: the copy may have another owner.
    const mode_t permissions = status.st_mode & 0777;
    Descriptor output(openTarget(target, permissions | S_IWUSR));
    if (!output.isOpen()) return failWithErrno();
    if (!copyContent(input.get(), output.get())) return false;
    // A target that takes no permissions, such as a device, still has the bytes.
    if (::fstat(output.get(), &present) == 0 && S_ISREG(present.st_mode) && ::fchmod(output.get(), permissions) != 0) {
        return failWithErrno();
    }
    return output.close() || failWithErrno();
}

bool File::makeDirectory(const std::string& path) {
    std::string native;
    if (!toNativePath(path, native)) return false;
    for (size_t at = native.find('/', 1);; at = native.find('/', at + 1)) {
        const std::string part = native.substr(0, at);
        if (::mkdir(part.c_str(), 0777) != 0) {
            const int refused = errno;
            // Where an entry that is no directory is in the way, the system says that it exists.
            if (!isDirectory(part)) return failWith(refused == EEXIST ? ENOTDIR : refused);
        }
        if (at == std::string::npos) return true;
    }
}

}  // namespace Public::Base
