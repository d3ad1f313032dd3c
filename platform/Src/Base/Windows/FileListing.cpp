#include <optional>

#include "Base/Windows/EntryStream.h"
#include "Public/Base/System.h"

namespace Public::Base {

struct FileListing::Handle {
    std::optional<EntryStream> entries;  // empty for a path that is refused
};

FileListing::FileListing(const std::string& directory) : mHandle(std::make_unique<Handle>()) {
    std::wstring native;
    if (toNativePath(directory, native)) mHandle->entries.emplace(native);
}

FileListing::~FileListing() = default;

bool FileListing::next(ListedFile& file) {
    const WIN32_FIND_DATAW* entry = mHandle->entries ? mHandle->entries->nextOfAll() : nullptr;
    if (entry == nullptr) return false;
    file.name = fromNative(entry->cFileName);
    file.attributes = entry->dwFileAttributes & ListedFile::Hidden;
    if (isDirectory(*entry)) file.attributes |= ListedFile::SubDirectory;
    return true;
}

}  // namespace Public::Base
