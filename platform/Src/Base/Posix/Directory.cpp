#include "Public/Base/Directory.h"

#include <dirent.h>
#include <sys/stat.h>

#include <cerrno>

#include "Base/Posix/NativePath.h"

namespace Public::Base {

struct Directory::Handle {
    ~Handle() {
        if (stream != nullptr) ::closedir(stream);
    }
    DIR* stream = nullptr;
    std::string prefix;  // the path, with one separator at its end
};

namespace {

/// A link to a directory counts as a file, so that a walk cannot be led in a circle.
Dirent::Type typeOf(const std::string& path, unsigned char hint) {
    if (hint != DT_UNKNOWN) return hint == DT_DIR ? Dirent::Type_Directory : Dirent::Type_File;
    struct stat status {};
    return ::lstat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode) ? Dirent::Type_Directory : Dirent::Type_File;
}

}  // namespace

Directory::Directory(const std::string& path) : mHandle(std::make_unique<Handle>()) {
    std::string native;
    if (!toNativePath(path, native)) return;
    mHandle->stream = ::opendir(native.c_str());
    if (mHandle->stream == nullptr) failWithErrno();
    mHandle->prefix = native.back() == '/' ? native : native + "/";
}

Directory::~Directory() = default;

bool Directory::isOpen() const { return mHandle->stream != nullptr; }

bool Directory::read(Dirent& entry) {
    if (mHandle->stream == nullptr) return false;
    for (;;) {
        errno = 0;
        const dirent* raw = ::readdir(mHandle->stream);
        if (raw == nullptr) return errno != 0 && failWithErrno();
        const std::string name = raw->d_name;
        if (name == "." || name == "..") continue;
        entry.name = name;
        entry.fullPath = mHandle->prefix + name;
        const size_t point = name.rfind('.');
        entry.suffix = point == std::string::npos ? std::string() : name.substr(point + 1);
        entry.type = typeOf(entry.fullPath, raw->d_type);
        return true;
    }
}

}  // namespace Public::Base
