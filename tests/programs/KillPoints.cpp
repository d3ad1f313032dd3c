#include "KillPoints.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstdio>
#include <filesystem>
#include <mutex>
#include <set>
#include <string>
#include <vector>

namespace fs = std::filesystem;

namespace {

using killpoints::Fault;

std::atomic<bool> sArmed{false};
std::atomic<int> sCount{0};
int sAt = 0;
Fault sFault = Fault::Kill;

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

/// What the disk itself does not hold yet, as bad as it may be: a file whose content or permissions changed since it
/// was last brought there, and every name that changed since its directory was.
class Unsynced {
public:
    void spoil(const std::string& path) { mSpoilt.insert(path); }
    void created(const std::string& path) { mNames.push_back({path, {}}); }
    /// Keeps what lies under a name that is about to go.
    void removing(const std::string& path) {
        struct stat status {};
        if (::lstat(path.c_str(), &status) != 0) return;
        std::string kept = kDirectory;
        if (!S_ISDIR(status.st_mode)) {
            kept = mAttic + "/" + std::to_string(::getpid()) + "-" + std::to_string(mKept++);
            ::syscall(SYS_linkat, AT_FDCWD, path.c_str(), AT_FDCWD, kept.c_str(), 0);
        }
        mNames.push_back({path, kept});
    }
    void renaming(const std::string& from, const std::string& to) {
        removing(from);
        struct stat status {};
        if (::lstat(to.c_str(), &status) == 0) {
            removing(to);
        } else {
            created(to);
        }
        if (mSpoilt.erase(from) != 0) spoil(to);
    }
    void synced(const std::string& path) {
        mSpoilt.erase(path);
        std::erase_if(mNames, [&](const Name& name) { return fs::path(name.path).parent_path() == path; });
    }

    void lose(bool names) {
        for (const auto& path : mSpoilt) {
            struct stat status {};
            if (::lstat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) continue;
            const int fd = static_cast<int>(::syscall(SYS_openat, AT_FDCWD, path.c_str(), O_WRONLY | O_TRUNC, 0));
            ::syscall(SYS_write, fd, "\0\0spoilt", 8);
        }
        if (!names) return;
        for (auto name = mNames.rbegin(); name != mNames.rend(); ++name) {
            if (name->kept.empty()) {
                fs::remove_all(name->path);
            } else if (name->kept == kDirectory) {
                ::syscall(SYS_mkdirat, AT_FDCWD, name->path.c_str(), 0755);
            } else {
                ::syscall(SYS_renameat2, AT_FDCWD, name->kept.c_str(), AT_FDCWD, name->path.c_str(), 0);
            }
        }
    }

    void setAttic(const std::string& path) { mAttic = path; }

private:
    static constexpr const char* kDirectory = "directory";
    struct Name {
        std::string path;
        std::string kept;  // where what lay under it can be had; empty when nothing did
    };
    std::string mAttic;
    std::set<std::string> mSpoilt;
    std::vector<Name> mNames;
    size_t mKept = 0;
};

std::recursive_mutex sMutex;
Unsynced sUnsynced;

[[noreturn]] void end() {
    sArmed = false;
    if (sFault == Fault::PowerCut || sFault == Fault::DataLoss) sUnsynced.lose(sFault == Fault::PowerCut);
    ::kill(::getpid(), SIGKILL);
    for (;;) ::pause();
}

/// Counts one call, and holds up all others until it has been noted.
class Point {
public:
    Point() : mArmed(sArmed) {
        if (!mArmed) return;
        mLock = std::unique_lock(sMutex);
        mIsLast = ++sCount == sAt;
    }
    bool armed() const { return mArmed; }
    bool isLast() const { return mIsLast; }
    /// Ends the process when it is time.
    Point& pass() {
        if (mIsLast) end();
        return *this;
    }

private:
    bool mArmed;
    bool mIsLast = false;
    std::unique_lock<std::recursive_mutex> mLock;
};

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
        if (!there(full)) sUnsynced.created(full);
        sUnsynced.spoil(full);
    }
    return static_cast<int>(::syscall(SYS_openat, directory, path, flags, mode));
}

}  // namespace

void killpoints::arm(int at, Fault fault, const char* attic) {
    sUnsynced.setAttic(attic);
    sCount = 0;
    sAt = at;
    sFault = fault;
    sArmed = true;
}

int killpoints::counted() { return sCount; }

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
    if (!sArmed || fd <= STDERR_FILENO) return ::syscall(SYS_write, fd, data, length);
    Point point;
    if (point.armed()) sUnsynced.spoil(pathOf(fd));
    if (point.isLast() && sFault == Fault::HalfWrite) ::syscall(SYS_write, fd, data, length / 2);
    point.pass();
    return ::syscall(SYS_write, fd, data, length);
}

ssize_t copy_file_range(int from, off64_t* fromAt, int to, off64_t* toAt, size_t length, unsigned flags) {
    Point point;
    if (point.armed()) sUnsynced.spoil(pathOf(to));
    if (point.isLast() && sFault == Fault::HalfWrite) ::syscall(SYS_copy_file_range, from, fromAt, to, toAt, 3, flags);
    point.pass();
    return ::syscall(SYS_copy_file_range, from, fromAt, to, toAt, length, flags);
}

int rename(const char* from, const char* to) noexcept {
    Point point;
    if (point.pass().armed()) {
        sUnsynced.renaming(plainPath(-1, from), plainPath(-1, to));
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
        if (fits) sUnsynced.removing(full);
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
    if (point.pass().armed() && !there(plainPath(-1, path))) sUnsynced.created(plainPath(-1, path));
    return static_cast<int>(::syscall(SYS_mkdirat, AT_FDCWD, path, mode));
}

int symlink(const char* target, const char* path) noexcept {
    Point point;
    if (point.pass().armed()) sUnsynced.created(plainPath(-1, path));
    return static_cast<int>(::syscall(SYS_symlinkat, target, AT_FDCWD, path));
}

int fchmod(int fd, mode_t mode) noexcept {
    Point point;
    if (point.pass().armed()) sUnsynced.spoil(pathOf(fd));
    return static_cast<int>(::syscall(SYS_fchmod, fd, mode));
}

int fchmodat(int directory, const char* path, mode_t mode, int) noexcept {
    Point point;
    if (point.pass().armed()) sUnsynced.spoil(plainPath(directory, path));
    return static_cast<int>(::syscall(SYS_fchmodat, directory, path, mode));
}

int chmod(const char* path, mode_t mode) noexcept { return fchmodat(AT_FDCWD, path, mode, 0); }

int utimensat(int directory, const char* path, const struct timespec* times, int flags) noexcept {
    Point point;
    if (point.pass().armed()) sUnsynced.spoil(plainPath(directory, path));
    return static_cast<int>(::syscall(SYS_utimensat, directory, path, times, flags));
}

/// The disk that is modelled here needs no time.
int fsync(int fd) {
    Point point;
    if (!point.pass().armed()) return static_cast<int>(::syscall(SYS_fsync, fd));
    sUnsynced.synced(pathOf(fd));
    return 0;
}

}  // extern "C"
#pragma GCC visibility pop
