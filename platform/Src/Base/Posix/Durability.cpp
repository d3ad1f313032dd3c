#include "Public/Base/Durability.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "Base/Posix/Descriptor.h"
#include "Base/Posix/NativePath.h"

namespace Public::Base {

namespace {

Descriptor openAny(const std::string& native) {
    Descriptor opened(openRetrying(native, O_RDONLY | O_NONBLOCK));
    // What may be written only can be opened so.
    if (!opened.isOpen() && errno == EACCES) opened = Descriptor(openRetrying(native, O_WRONLY | O_NONBLOCK));
    return opened;
}

/// So that the disk is at work on all of them by the time that the first one is waited for.
void beginToWrite(const std::string& native) {
#ifdef SYNC_FILE_RANGE_WRITE
    const Descriptor opened = openAny(native);
    if (opened.isOpen()) ::sync_file_range(opened.get(), 0, 0, SYNC_FILE_RANGE_WRITE);
#else
    static_cast<void>(native);
#endif
}

}  // namespace

bool Durability::sync(const std::string& path) {
    std::string native;
    if (!toNativePath(path, native)) return false;
    const Descriptor opened = openAny(native);
    if (!opened.isOpen()) return failWithErrno();
    int synced = 0;
    do {
        synced = ::fsync(opened.get());
    } while (synced != 0 && errno == EINTR);
    // Some file systems have nothing to bring to a disk and say that the call makes no sense here.
    return synced == 0 || errno == EINVAL || failWithErrno();
}

bool Durability::syncAll(const std::vector<std::string>& paths) {
    for (const auto& path : paths) {
        std::string native;
        if (toNativePath(path, native)) beginToWrite(native);
    }
    return std::all_of(paths.begin(), paths.end(), sync);
}

}  // namespace Public::Base
