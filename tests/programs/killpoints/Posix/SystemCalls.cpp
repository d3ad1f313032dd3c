// The system calls that change files, this program's own versions of them.
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstdio>
#include <string>

#include "KillPoint.h"

namespace fs = std::filesystem;
using killpoints::halvesWrites;
using killpoints::isArmed;
using killpoints::Point;
using killpoints::unsynced;

void killpoints::killThisProcess() {
    ::kill(::getpid(), SIGKILL);
    for (;;) ::pause();
}

namespace {

std::string plainPath(int directory, const char* path) {
    fs::path found = path;
    if (found.is_relative() && directory >= 0) {
        found = fs::read_symlink("/proc/self/fd/" + std::to_string(directory)) / found;
    }
    found = fs::absolute(found).lexically_normal();
    // One name for each, as the system tells them for descriptors; but the last part may be a link itself.
    return (fs::weakly_canonical(found.parent_path()) / found.filename()).string();
}

std::string pathOf(int fd) { return fs::read_symlink("/proc/self/fd/" + std::to_string(fd)).string(); }

bool there(const std::string& path) {
    struct stat status {};
    return ::lstat(path.c_str(), &status) == 0;
}

int openAny(int directory, const char* path, int flags, unsigned mode) {
    if ((flags & (O_CREAT | O_TRUNC)) == 0) {
        return static_cast<int>(::syscall(SYS_openat, directory, path, flags, mode));
    }
    Point point;
    if (point.pass().armed()) {
        const std::string full = plainPath(directory, path);
        if (!there(full)) unsynced().created(full);
        unsynced().spoil(full);
    }
    return static_cast<int>(::syscall(SYS_openat, directory, path, flags, mode));
}

}  // namespace

// Seen by the libraries too, which make some of these calls.
#pragma GCC visibility push(default)
extern "C" {

int open(const char* path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const unsigned mode = (flags & O_CREAT) != 0 ? va_arg(arguments, unsigned) : 0;
    va_end(arguments);
    return openAny(AT_FDCWD, path, flags, mode);
}

int openat(int directory, const char* path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const unsigned mode = (flags & O_CREAT) != 0 ? va_arg(arguments, unsigned) : 0;
    va_end(arguments);
    return openAny(directory, path, flags, mode);
}

ssize_t write(int fd, const void* data, size_t length) {
    if (!isArmed() || fd <= STDERR_FILENO) return ::syscall(SYS_write, fd, data, length);
    Point point;
    if (point.armed()) unsynced().spoil(pathOf(fd));
    if (point.isLast() && halvesWrites()) ::syscall(SYS_write, fd, data, length / 2);
    point.pass();
    return ::syscall(SYS_write, fd, data, length);
}

ssize_t copy_file_range(int from, off64_t* fromAt, int to, off64_t* toAt, size_t length, unsigned flags) {
    Point point;
    if (point.armed()) unsynced().spoil(pathOf(to));
    if (point.isLast() && halvesWrites()) ::syscall(SYS_copy_file_range, from, fromAt, to, toAt, 3, flags);
    point.pass();
    return ::syscall(SYS_copy_file_range, from, fromAt, to, toAt, length, flags);
}

int rename(const char* from, const char* to) noexcept {
    Point point;
    if (point.pass().armed()) {
        unsynced().renaming(plainPath(-1, from), plainPath(-1, to));
    }
    return static_cast<int>(::syscall(SYS_renameat2, AT_FDCWD, from, AT_FDCWD, to, 0));
}

int unlinkat(int directory, const char* path, int flags) noexcept {
    Point point;
    if (point.pass().armed()) {
        const std::string full = plainPath(directory, path);
        struct stat status {};
        const bool fits =
            ::lstat(full.c_str(), &status) == 0 && S_ISDIR(status.st_mode) == ((flags & AT_REMOVEDIR) != 0);
        if (fits) unsynced().removing(full);
    }
    return static_cast<int>(::syscall(SYS_unlinkat, directory, path, flags));
}

int unlink(const char* path) noexcept { return unlinkat(AT_FDCWD, path, 0); }

int rmdir(const char* path) noexcept { return unlinkat(AT_FDCWD, path, AT_REMOVEDIR); }

int remove(const char* path) noexcept {
    struct stat status {};
    if (::lstat(path, &status) != 0) return -1;
    return S_ISDIR(status.st_mode) ? rmdir(path) : unlink(path);
}

int mkdir(const char* path, mode_t mode) noexcept {
    Point point;
    if (point.pass().armed() && !there(plainPath(-1, path))) unsynced().created(plainPath(-1, path));
    return static_cast<int>(::syscall(SYS_mkdirat, AT_FDCWD, path, mode));
}

int symlink(const char* target, const char* path) noexcept {
    Point point;
    if (point.pass().armed()) unsynced().created(plainPath(-1, path));
    return static_cast<int>(::syscall(SYS_symlinkat, target, AT_FDCWD, path));
}

int fchmod(int fd, mode_t mode) noexcept {
    Point point;
    if (point.pass().armed()) unsynced().spoil(pathOf(fd));
    return static_cast<int>(::syscall(SYS_fchmod, fd, mode));
}

int fchmodat(int directory, const char* path, mode_t mode, int) noexcept {
    Point point;
    if (point.pass().armed()) unsynced().spoil(plainPath(directory, path));
    return static_cast<int>(::syscall(SYS_fchmodat, directory, path, mode));
}

int chmod(const char* path, mode_t mode) noexcept { return fchmodat(AT_FDCWD, path, mode, 0); }

int utimensat(int directory, const char* path, const struct timespec* times, int flags) noexcept {
    Point point;
    if (point.pass().armed()) unsynced().spoil(plainPath(directory, path));
    return static_cast<int>(::syscall(SYS_utimensat, directory, path, times, flags));
}

/// The disk that is modelled here needs no time.
int fsync(int fd) {
    Point point;
    if (!point.pass().armed()) return static_cast<int>(::syscall(SYS_fsync, fd));
    unsynced().synced(pathOf(fd));
    return 0;
}

}  // extern "C"
#pragma GCC visibility pop
