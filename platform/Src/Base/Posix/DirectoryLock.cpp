#include "Public/Base/DirectoryLock.h"

#include <fcntl.h>
#include <sys/file.h>

#include <cerrno>

#include "Base/Posix/Descriptor.h"
#include "Base/Posix/NativePath.h"

namespace Public::Base {

struct DirectoryLock::Handle {
    Descriptor directory;  // the lock goes when it is closed
};

DirectoryLock::DirectoryLock() = default;

DirectoryLock::~DirectoryLock() = default;

DirectoryLock::Result DirectoryLock::take(const std::string& directory) {
    release();
    std::string native;
    if (!toNativePath(directory, native)) return Result::Failed;
    Descriptor opened(openRetrying(native, O_RDONLY | O_DIRECTORY));
    if (!opened.isOpen()) {
        failWithErrno();
        return Result::Failed;
    }
    int locked = 0;
    do {
        locked = ::flock(opened.get(), LOCK_EX | LOCK_NB);
    } while (locked != 0 && errno == EINTR);
    if (locked != 0) {
        const bool held = errno == EWOULDBLOCK;
        failWithErrno();
        return held ? Result::Held : Result::Failed;
    }
    mHandle = std::make_unique<Handle>(Handle{std::move(opened)});
    return Result::Taken;
}

void DirectoryLock::release() { mHandle.reset(); }

}  // namespace Public::Base
