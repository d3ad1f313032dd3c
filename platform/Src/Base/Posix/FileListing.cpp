#include <dirent.h>
#include <sys/stat.h>

#include "Base/Posix/NativePath.h"
#include "Public/Base/System.h"

namespace Public::Base {

struct FileListing::Handle {
    ~Handle() {
        if (stream != nullptr) ::closedir(stream);
    }
    DIR* stream = nullptr;
    std::string prefix;
    int given = 0;  // of "." and "..", which come first whatever the file system does
};

FileListing::FileListing(const std::string& directory) : mHandle(std::make_unique<Handle>()) {
    std::string native;
    if (!toNativePath(directory, native)) return;
    mHandle->stream = ::opendir(native.c_str());
    if (mHandle->stream == nullptr) failWithErrno();
    mHandle->prefix = native + "/";
}

FileListing::~FileListing() = default;

bool FileListing::next(ListedFile& file) {
    if (mHandle->stream == nullptr) return false;
    if (mHandle->given < 2) {
        file.name = mHandle->given++ == 0 ? "." : "..";
        file.attributes = ListedFile::SubDirectory;
        return true;
    }
    while (const dirent* entry = ::readdir(mHandle->stream)) {
        const std::string name = entry->d_name;
        if (name == "." || name == "..") continue;
        struct stat status {};
        const bool directory =
            ::lstat((mHandle->prefix + name).c_str(), &status) == 0 && S_ISDIR(status.st_mode);
        file.name = name;
        file.attributes = (directory ? ListedFile::SubDirectory : 0U) | (name.front() == '.' ? ListedFile::Hidden : 0U);
        return true;
    }
    return false;
}

}  // namespace Public::Base
