#include "Public/Base/Directory.h"

#include <optional>

#include "Base/Posix/EntryStream.h"
#include "Base/Posix/NativePath.h"

namespace Public::Base {

struct Directory::Handle {
    std::optional<EntryStream> entries;  // empty for a path that is refused
    std::string prefix;                  // the path, with a separator at its end
};

Directory::Directory(const std::string& path) : mHandle(std::make_unique<Handle>()) {
    std::string native;
    if (!toNativePath(path, native)) return;
    mHandle->entries.emplace(native);
    mHandle->prefix = native.back() == '/' ? native : native + "/";
}

Directory::~Directory() = default;

bool Directory::isOpen() const { return mHandle->entries && mHandle->entries->isOpen(); }

bool Directory::read(Dirent& entry) {
    const dirent* raw = mHandle->entries ? mHandle->entries->next() : nullptr;
    if (raw == nullptr) return false;
    entry.name = raw->d_name;
    entry.fullPath = mHandle->prefix + entry.name;
    const size_t point = entry.name.rfind('.');
    entry.suffix = point == std::string::npos ? std::string() : entry.name.substr(point + 1);
    entry.type = mHandle->entries->isDirectory(*raw) ? Dirent::Type_Directory : Dirent::Type_File;
    return true;
}

}  // namespace Public::Base
