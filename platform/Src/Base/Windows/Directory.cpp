#include "Public/Base/Directory.h"

#include <optional>

#include "Base/Windows/EntryStream.h"

namespace Public::Base {

struct Directory::Handle {
    std::optional<EntryStream> entries;  // empty for a path that is refused
    std::string prefix;                  // the path, with a separator at its end
};

Directory::Directory(const std::string& path) : mHandle(std::make_unique<Handle>()) {
    std::wstring native;
    if (!toNativePath(path, native)) return;
    mHandle->entries.emplace(native);
    const bool hasSeparator = path.ends_with('\\') || path.ends_with('/');
    const bool hasSlashesAlone = path.find('\\') == std::string::npos && path.find('/') != std::string::npos;
    mHandle->prefix = hasSeparator ? path : path + (hasSlashesAlone ? '/' : '\\');
}

Directory::~Directory() = default;

bool Directory::isOpen() const { return mHandle->entries && mHandle->entries->isOpen(); }

bool Directory::read(Dirent& entry) {
    const WIN32_FIND_DATAW* raw = mHandle->entries ? mHandle->entries->next() : nullptr;
    if (raw == nullptr) return false;
    entry.name = fromNative(raw->cFileName);
    entry.fullPath = mHandle->prefix + entry.name;
    const size_t point = entry.name.rfind('.');
    entry.suffix = point == std::string::npos ? std::string() : entry.name.substr(point + 1);
    entry.type = isDirectory(*raw) ? Dirent::Type_Directory : Dirent::Type_File;
    return true;
}

}  // namespace Public::Base
