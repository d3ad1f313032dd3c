// What can be done to files and directories by path.
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "Base/Posix/NativePath.h"
#include "Public/Base/File.h"

namespace Public::Base {

namespace {

class Descriptor {
public:
    explicit Descriptor(int fd) : mFd(fd) {}
    ~Descriptor() {
        if (mFd >= 0) ::close(mFd);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    int get() const { return mFd; }
    /// @return false when the system could not keep what was written
    bool close() {
        const int fd = mFd;
        mFd = -1;
        return ::close(fd) == 0;
    }

private:
    int mFd;
};

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

/// Opens a target for writing from its start; one that is read-only is made anew. @return -1, recording the failure
int openTarget(const std::string& native, mode_t permissions) {
    constexpr int kFlags = O_WRONLY | O_CREAT | O_TRUNC;
    const int fd = openNative(native, kFlags, permissions | S_IWUSR);
    const bool readOnly = fd < 0 && ::access(native.c_str(), F_OK) == 0 && ::access(native.c_str(), W_OK) != 0;
    return readOnly && ::unlink(native.c_str()) == 0 ? openNative(native, kFlags, permissions | S_IWUSR) : fd;
}

/// Removes what a directory holds and then the directory. @param name entry of the open directory `parent`
bool removeTree(int parent, const char* name) {
    const int fd = ::openat(parent, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (fd < 0) {
        // A file, or a link to anywhere: the entry itself goes.
        if (errno == ENOTDIR || errno == ELOOP) return ::unlinkat(parent, name, 0) == 0 || failWithErrno();
        return failWithErrno();
    }
    DIR* directory = ::fdopendir(fd);
    if (directory == nullptr) {
        const int error = errno;
        ::close(fd);
        return failWith(error);
    }
    bool removed = true;
    while (const dirent* entry = ::readdir(directory)) {
        const std::string child = entry->d_name;
        if (child == "." || child == "..") continue;
        if (!removeTree(fd, child.c_str())) removed = false;
    }
    ::closedir(directory);
    if (!removed) return false;
    return ::unlinkat(parent, name, AT_REMOVEDIR) == 0 || failWithErrno();
}

std::string withoutTrailingSeparators(std::string path) {
    while (path.size() > 1 && path.back() == '/') path.pop_back();
    return path;
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
    const Descriptor input(openNative(source, O_RDONLY));
    if (input.get() < 0) return false;
    struct stat status {};
    if (::fstat(input.get(), &status) != 0) return failWithErrno();
    struct stat present {};
    if (::stat(target.c_str(), &present) == 0 && present.st_dev == status.st_dev && present.st_ino == status.st_ino) {
        return failWith(EEXIST);
    }
    Descriptor output(openTarget(target, status.st_mode & 0777));
    if (output.get() < 0) return false;
    if (!copyContent(input.get(), output.get())) return false;
    if (::fstat(output.get(), &present) != 0) return failWithErrno();
    // A program that runs with its owner's rights must not get those of whoever copies it.
    const bool sameOwner = present.st_uid == status.st_uid && present.st_gid == status.st_gid;
    // A target that takes no permissions, such as a device, still has the bytes.
    if (S_ISREG(present.st_mode) && ::fchmod(output.get(), status.st_mode & (sameOwner ? 07777 : 0777)) != 0) {
        return failWithErrno();
    }
    return output.close() || failWithErrno();
}

bool File::makeDirectory(const std::string& path) {
    std::string native;
    if (!toNativePath(path, native)) return false;
    for (size_t at = native.find('/', 1);; at = native.find('/', at + 1)) {
        const std::string part = native.substr(0, at);
        const int error = ::mkdir(part.c_str(), 0777) == 0 ? 0 : errno;
        // Where an entry that is no directory is in the way, the system says that it exists.
        if (error != 0 && !isDirectory(part)) return failWith(error == EEXIST ? ENOTDIR : error);
        if (at == std::string::npos) return true;
    }
}

bool File::removeDirectory(const std::string& path) {
    std::string native;
    if (!toNativePath(path, native)) return false;
    native = withoutTrailingSeparators(native);
    if (native == "/") return failWith(EBUSY);
    const std::string last = native.substr(native.rfind('/') + 1);
    if (last == "." || last == "..") return failWith(EINVAL);  // it would be emptied and yet stay
    struct stat status {};
    if (::lstat(native.c_str(), &status) != 0) return failWithErrno();
    if (!S_ISDIR(status.st_mode) && !S_ISLNK(status.st_mode)) return failWith(ENOTDIR);
    return removeTree(AT_FDCWD, native.c_str());
}

}  // namespace Public::Base
