// The system calls of this program and of the libraries that it loads: each asks the layer first. A definition in the
// program comes before any library's, and the next one in the order of search is called from here; under a sanitizer
// that is the sanitizer's own, so nothing is hidden from it.
#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <poll.h>
#include <stdarg.h>
#include <stdlib.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>

#include "Operations.h"

using namespace faults;

namespace {

/// The call that stands behind the one of this name. Without a guarded static: some calls come before a sanitizer has
/// made itself ready for one.
#define ORV_NEXT(name)                                                \
    (*[] {                                                            \
        static constinit std::atomic<void*> real{nullptr};            \
        if (real.load() == nullptr) real = ::dlsym(RTLD_NEXT, #name); \
        return reinterpret_cast<decltype(::name)*>(real.load());      \
    }())

template <class Result>
Result failed(int error) {
    errno = error;
    return static_cast<Result>(-1);
}

mode_t modeOf(int flags, va_list& more) {
    return (flags & (O_CREAT | O_TMPFILE)) != 0 ? static_cast<mode_t>(va_arg(more, int)) : 0;
}

Verdict judgeAt(Call call, const char* name, int directory, const char* path) {
    if (path == nullptr) return {};
    if (directory == AT_FDCWD || path[0] == '/') return judgePath(call, name, path);
    return judgeHandle(call, name, directory, path);
}

void followAt(int descriptor, int directory, const char* path) {
    if (directory == AT_FDCWD || path[0] == '/') {
        followPath(descriptor, path);
    } else {
        follow(descriptor, isFollowed(directory));
    }
}

Call openCall(int flags) { return (flags & O_CREAT) != 0 ? Call::Create : Call::Open; }

using OpenFunction = int(const char*, int, ...);
using OpenAtFunction = int(int, const char*, int, ...);

int openBy(OpenFunction* real, const char* name, const char* path, int flags, mode_t mode) {
    const Verdict verdict = judgePath(openCall(flags), name, path);
    if (verdict.error) return failed<int>(verdict.error);
    const int descriptor = real(path, flags, mode);
    if (descriptor >= 0) followPath(descriptor, path);
    return descriptor;
}

int openAtBy(OpenAtFunction* real, const char* name, int directory, const char* path, int flags, mode_t mode) {
    const Verdict verdict = judgeAt(openCall(flags), name, directory, path);
    if (verdict.error) return failed<int>(verdict.error);
    const int descriptor = real(directory, path, flags, mode);
    if (descriptor >= 0) followAt(descriptor, directory, path);
    return descriptor;
}

}  // namespace

extern "C" {

int open(const char* path, int flags, ...) {
    va_list more;
    va_start(more, flags);
    const mode_t mode = modeOf(flags, more);
    va_end(more);
    return openBy(&ORV_NEXT(open), "open", path, flags, mode);
}

int open64(const char* path, int flags, ...) {
    va_list more;
    va_start(more, flags);
    const mode_t mode = modeOf(flags, more);
    va_end(more);
    return openBy(&ORV_NEXT(open64), "open64", path, flags, mode);
}

int openat(int directory, const char* path, int flags, ...) {
    va_list more;
    va_start(more, flags);
    const mode_t mode = modeOf(flags, more);
    va_end(more);
    return openAtBy(&ORV_NEXT(openat), "openat", directory, path, flags, mode);
}

int openat64(int directory, const char* path, int flags, ...) {
    va_list more;
    va_start(more, flags);
    const mode_t mode = modeOf(flags, more);
    va_end(more);
    return openAtBy(&ORV_NEXT(openat64), "openat64", directory, path, flags, mode);
}

int close(int descriptor) {
    const Verdict verdict = judgeHandle(Call::Close, "close", descriptor);
    forget(descriptor);
    const int result = ORV_NEXT(close)(descriptor);
    // The system closes what it complains of.
    return verdict.error ? failed<int>(verdict.error) : result;
}

ssize_t read(int descriptor, void* data, size_t length) {
    const Verdict verdict = judgeHandle(Call::Read, "read", descriptor);
    if (verdict.error) return failed<ssize_t>(verdict.error);
    return ORV_NEXT(read)(descriptor, data, allowed(verdict, length));
}

ssize_t pread(int descriptor, void* data, size_t length, off_t at) {
    const Verdict verdict = judgeHandle(Call::Read, "pread", descriptor);
    if (verdict.error) return failed<ssize_t>(verdict.error);
    return ORV_NEXT(pread)(descriptor, data, allowed(verdict, length), at);
}

ssize_t write(int descriptor, const void* data, size_t length) {
    const Verdict verdict = judgeHandle(Call::Write, "write", descriptor);
    if (verdict.error) return failed<ssize_t>(verdict.error);
    return ORV_NEXT(write)(descriptor, data, allowed(verdict, length));
}

ssize_t pwrite(int descriptor, const void* data, size_t length, off_t at) {
    const Verdict verdict = judgeHandle(Call::Write, "pwrite", descriptor);
    if (verdict.error) return failed<ssize_t>(verdict.error);
    return ORV_NEXT(pwrite)(descriptor, data, allowed(verdict, length), at);
}

ssize_t copy_file_range(int from, off64_t* fromAt, int to, off64_t* toAt, size_t length, unsigned flags) {
    const Verdict verdict = judgeHandle(Call::Write, "copy_file_range", to);
    if (verdict.error) return failed<ssize_t>(verdict.error);
    // Less than half of what is asked for, which may be far more than there is.
    const size_t most = verdict.half ? 7 : length;
    return ORV_NEXT(copy_file_range)(from, fromAt, to, toAt, most, flags);
}

int fsync(int descriptor) {
    const Verdict verdict = judgeHandle(Call::Sync, "fsync", descriptor);
    return verdict.error ? failed<int>(verdict.error) : ORV_NEXT(fsync)(descriptor);
}

int fdatasync(int descriptor) {
    const Verdict verdict = judgeHandle(Call::Sync, "fdatasync", descriptor);
    return verdict.error ? failed<int>(verdict.error) : ORV_NEXT(fdatasync)(descriptor);
}

int ftruncate(int descriptor, off_t length) noexcept {
    const Verdict verdict = judgeHandle(Call::Truncate, "ftruncate", descriptor);
    return verdict.error ? failed<int>(verdict.error) : ORV_NEXT(ftruncate)(descriptor, length);
}

off_t lseek(int descriptor, off_t distance, int whence) noexcept {
    const Verdict verdict = judgeHandle(Call::Seek, "lseek", descriptor);
    return verdict.error ? failed<off_t>(verdict.error) : ORV_NEXT(lseek)(descriptor, distance, whence);
}

int rename(const char* from, const char* to) noexcept {
    const Verdict verdict = judgePath(Call::Rename, "rename", to);
    return verdict.error ? failed<int>(verdict.error) : ORV_NEXT(rename)(from, to);
}

int unlink(const char* path) noexcept {
    const Verdict verdict = judgePath(Call::Remove, "unlink", path);
    return verdict.error ? failed<int>(verdict.error) : ORV_NEXT(unlink)(path);
}

int unlinkat(int directory, const char* path, int flags) noexcept {
    const Verdict verdict = judgeAt(Call::Remove, "unlinkat", directory, path);
    return verdict.error ? failed<int>(verdict.error) : ORV_NEXT(unlinkat)(directory, path, flags);
}

int rmdir(const char* path) noexcept {
    const Verdict verdict = judgePath(Call::Remove, "rmdir", path);
    return verdict.error ? failed<int>(verdict.error) : ORV_NEXT(rmdir)(path);
}

int mkdir(const char* path, mode_t mode) noexcept {
    const Verdict verdict = judgePath(Call::MakeDirectory, "mkdir", path);
    return verdict.error ? failed<int>(verdict.error) : ORV_NEXT(mkdir)(path, mode);
}

DIR* opendir(const char* path) {
    const Verdict verdict = judgePath(Call::OpenDirectory, "opendir", path);
    if (verdict.error) {
        errno = verdict.error;
        return nullptr;
    }
    DIR* const directory = ORV_NEXT(opendir)(path);
    if (directory != nullptr) followPath(::dirfd(directory), path);
    return directory;
}

DIR* fdopendir(int descriptor) {
    const Verdict verdict = judgeHandle(Call::OpenDirectory, "fdopendir", descriptor);
    if (verdict.error) {
        errno = verdict.error;
        return nullptr;
    }
    return ORV_NEXT(fdopendir)(descriptor);
}

struct dirent* readdir(DIR* directory) {
    const Verdict verdict = judgeHandle(Call::ReadDirectory, "readdir", ::dirfd(directory));
    if (verdict.error) {
        errno = verdict.error;
        return nullptr;
    }
    return ORV_NEXT(readdir)(directory);
}

int closedir(DIR* directory) {
    forget(::dirfd(directory));
    return ORV_NEXT(closedir)(directory);
}

int stat(const char* path, struct stat* status) noexcept {
    const Verdict verdict = judgePath(Call::Look, "stat", path);
    return verdict.error ? failed<int>(verdict.error) : ORV_NEXT(stat)(path, status);
}

int lstat(const char* path, struct stat* status) noexcept {
    const Verdict verdict = judgePath(Call::Look, "lstat", path);
    return verdict.error ? failed<int>(verdict.error) : ORV_NEXT(lstat)(path, status);
}

int fstat(int descriptor, struct stat* status) noexcept {
    const Verdict verdict = judgeHandle(Call::Look, "fstat", descriptor);
    return verdict.error ? failed<int>(verdict.error) : ORV_NEXT(fstat)(descriptor, status);
}

int fstatat(int directory, const char* path, struct stat* status, int flags) noexcept {
    const Verdict verdict = judgeAt(Call::Look, "fstatat", directory, path);
    return verdict.error ? failed<int>(verdict.error) : ORV_NEXT(fstatat)(directory, path, status, flags);
}

int access(const char* path, int mode) noexcept {
    const Verdict verdict = judgePath(Call::Look, "access", path);
    return verdict.error ? failed<int>(verdict.error) : ORV_NEXT(access)(path, mode);
}

int faccessat(int directory, const char* path, int mode, int flags) noexcept {
    const Verdict verdict = judgeAt(Call::Look, "faccessat", directory, path);
    return verdict.error ? failed<int>(verdict.error) : ORV_NEXT(faccessat)(directory, path, mode, flags);
}

ssize_t readlink(const char* path, char* text, size_t length) noexcept {
    const Verdict verdict = judgePath(Call::Look, "readlink", path);
    return verdict.error ? failed<ssize_t>(verdict.error) : ORV_NEXT(readlink)(path, text, length);
}

char* realpath(const char* path, char* resolved) noexcept {
    const Verdict verdict = judgePath(Call::Look, "realpath", path);
    if (verdict.error) {
        errno = verdict.error;
        return nullptr;
    }
    return ORV_NEXT(realpath)(path, resolved);
}

int fchmod(int descriptor, mode_t mode) noexcept {
    const Verdict verdict = judgeHandle(Call::ChangeMode, "fchmod", descriptor);
    return verdict.error ? failed<int>(verdict.error) : ORV_NEXT(fchmod)(descriptor, mode);
}

void* mmap(void* address, size_t length, int protection, int flags, int descriptor, off_t at) noexcept {
    const Verdict verdict = judgeHandle(Call::Map, "mmap", descriptor);
    if (verdict.error) {
        errno = verdict.error;
        return MAP_FAILED;
    }
    return ORV_NEXT(mmap)(address, length, protection, flags, descriptor, at);
}

int socket(int domain, int type, int protocol) noexcept {
    const Verdict verdict = judgeSocket("socket");
    if (verdict.error) return failed<int>(verdict.error);
    const int descriptor = ORV_NEXT(socket)(domain, type, protocol);
    if (descriptor >= 0) follow(descriptor, true);
    return descriptor;
}

int connect(int descriptor, const struct sockaddr* address, socklen_t length) {
    const Verdict verdict = judgeHandle(Call::Connect, "connect", descriptor);
    return verdict.error ? failed<int>(verdict.error) : ORV_NEXT(connect)(descriptor, address, length);
}

int accept(int listener, struct sockaddr* address, socklen_t* length) {
    const int descriptor = ORV_NEXT(accept)(listener, address, length);
    forget(descriptor);
    return descriptor;
}

int accept4(int listener, struct sockaddr* address, socklen_t* length, int flags) {
    const int descriptor = ORV_NEXT(accept4)(listener, address, length, flags);
    forget(descriptor);
    return descriptor;
}

ssize_t send(int descriptor, const void* data, size_t length, int flags) {
    const Verdict verdict = judgeHandle(Call::Send, "send", descriptor);
    if (verdict.error) return failed<ssize_t>(verdict.error);
    return ORV_NEXT(send)(descriptor, data, allowed(verdict, length), flags);
}

ssize_t recv(int descriptor, void* data, size_t length, int flags) {
    const Verdict verdict = judgeHandle(Call::Receive, "recv", descriptor);
    if (verdict.error) return failed<ssize_t>(verdict.error);
    return ORV_NEXT(recv)(descriptor, data, verdict.half ? allowed(verdict, length < 14 ? length : 14) : length, flags);
}

int poll(struct pollfd* descriptors, nfds_t count, int patience) {
    for (nfds_t i = 0; i < count; ++i) {
        if (!isFollowed(descriptors[i].fd)) continue;
        const Verdict verdict = judgeHandle(Call::Poll, "poll", descriptors[i].fd);
        if (verdict.error) return failed<int>(verdict.error);
        break;
    }
    return ORV_NEXT(poll)(descriptors, count, patience);
}

int getsockopt(int descriptor, int level, int option, void* value, socklen_t* length) noexcept {
    const Verdict verdict = judgeHandle(Call::SocketOption, "getsockopt", descriptor);
    return verdict.error ? failed<int>(verdict.error) : ORV_NEXT(getsockopt)(descriptor, level, option, value, length);
}

}  // extern "C"
