// An open file.
#include "Public/Base/File.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "Base/Posix/Descriptor.h"
#include "Base/Posix/NativePath.h"

namespace Public::Base {

struct File::Handle {
    Descriptor file;
};

namespace {

constexpr mode_t kNewFile = 0666;

/// -1 for a mode that nobody passes.
int flagsOf(int mode) {
    switch (mode) {
        case OpenMode_ReadDefault:
        case OpenMode_Read:
            return O_RDONLY;
        case OpenMode_Create:
            return O_WRONLY | O_CREAT | O_TRUNC;
        case OpenMode_CreateKeep:
            return O_RDWR | O_CREAT;
        default:
            return -1;
    }
}

}  // namespace

File::File(const std::string& path) : mPath(path) {}

File::~File() { mHandle.reset(); }

bool File::open(int mode) { return open(mPath, mode); }

bool File::open(const std::string& path, int mode) {
    close();
    mPath = path;
    mReadFailed = false;
    std::string native;
    const int flags = flagsOf(mode);
    if (flags < 0) return failWith(EINVAL);
    if (!toNativePath(mPath, native)) return false;
    auto handle = std::make_unique<Handle>(Handle{Descriptor(openRetrying(native, flags, kNewFile))});
    if (!handle->file.isOpen()) return failWithErrno();
    struct stat status {};
    if (::fstat(handle->file.get(), &status) != 0) return failWithErrno();
    if (S_ISDIR(status.st_mode)) return failWith(EISDIR);
    mHandle = std::move(handle);
    return true;
}

bool File::close() {
    const auto handle = std::move(mHandle);
    return !handle || handle->file.close() || failWithErrno();
}

bool File::isOpen() const { return mHandle != nullptr; }

size_t File::read(void* data, size_t length) {
    if (!mHandle) {
        failWith(EBADF);
        return 0;
    }
    size_t done = 0;
    while (done < length) {
        const ssize_t got = ::read(mHandle->file.get(), static_cast<char*>(data) + done, length - done);
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) mReadFailed = !failWithErrno();
        if (got <= 0) break;
        done += static_cast<size_t>(got);
    }
    return done;
}

size_t File::write(const void* data, size_t length) {
    if (!mHandle) {
        failWith(EBADF);
        return 0;
    }
    size_t done = 0;
    while (done < length) {
        const ssize_t put = ::write(mHandle->file.get(), static_cast<const char*>(data) + done, length - done);
        if (put < 0 && errno == EINTR) continue;
        if (put <= 0) {
            failWith(put < 0 ? errno : ENOSPC);
            break;
        }
        done += static_cast<size_t>(put);
    }
    return done;
}

bool File::flush() {
    // Bytes go to the system as they are written; nothing is held back here.
    return mHandle != nullptr || failWith(EBADF);
}

int64_t File::seek(int64_t distance, SeekPosition position) {
    if (!mHandle) {
        failWith(EBADF);
        return -1;
    }
    const int whence = position == SeekPosition_Begin     ? SEEK_SET
                       : position == SeekPosition_Current ? SEEK_CUR
                                                          : SEEK_END;
    const off_t offset = ::lseek(mHandle->file.get(), distance, whence);
    if (offset < 0) failWithErrno();
    return offset;
}

int64_t File::getPosition() { return seek(0, SeekPosition_Current); }

}  // namespace Public::Base
