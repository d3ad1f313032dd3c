#include "Base/Posix/EntryStream.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <string_view>

#include "Base/Posix/NativePath.h"

namespace Public::Base {

EntryStream::EntryStream(const std::string& native)
    : EntryStream(Descriptor(openRetrying(native, O_RDONLY | O_DIRECTORY))) {}

EntryStream::EntryStream(Descriptor directory) {
    mStream = directory.isOpen() ? ::fdopendir(directory.get()) : nullptr;
    if (mStream != nullptr) {
        directory.release();
    } else {
        mFailed = !failWithErrno();
    }
}

EntryStream::~EntryStream() {
    if (mStream != nullptr) ::closedir(mStream);
}

const dirent* EntryStream::next() {
    while (mStream != nullptr) {
        errno = 0;
        const dirent* entry = ::readdir(mStream);
        if (entry == nullptr) {
            if (errno != 0) mFailed = !failWithErrno();
            return nullptr;
        }
        const std::string_view name = entry->d_name;
        if (name != "." && name != "..") return entry;
    }
    return nullptr;
}

bool EntryStream::isDirectory(const dirent& entry) const {
    if (entry.d_type != DT_UNKNOWN) return entry.d_type == DT_DIR;
    struct stat status {};
    return ::fstatat(::dirfd(mStream), entry.d_name, &status, AT_SYMLINK_NOFOLLOW) == 0 && S_ISDIR(status.st_mode);
}

}  // namespace Public::Base
