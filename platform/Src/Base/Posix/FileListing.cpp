#include <optional>

#include "Base/Posix/EntryStream.h"
#include "Base/Posix/NativePath.h"
#include "Public/Base/System.h"

namespace Public::Base {

struct FileListing::Handle {
    std::optional<EntryStream> entries;  // empty for a path that is refused
    int points = 0;                      // how many of "." and ".." were given; they come first everywhere
};

FileListing::FileListing(const std::string& directory) : mHandle(std::make_unique<Handle>()) {
    std::string native;
    if (toNativePath(directory, native)) mHandle->entries.emplace(native);
}

FileListing::~FileListing() = default;

bool FileListing::next(ListedFile& file) {
    if (!mHandle->entries || !mHandle->entries->isOpen()) return false;
    if (mHandle->points < 2) {
        file.name = mHandle->points++ == 0 ? "." : "..";
        file.attributes = ListedFile::SubDirectory;
        return true;
    }
    const dirent* entry = mHandle->entries->next();
    if (entry == nullptr) return false;
    file.name = entry->d_name;
    file.attributes = mHandle->entries->isDirectory(*entry) ? ListedFile::SubDirectory : 0U;
    if (file.name.front() == '.') file.attributes |= ListedFile::Hidden;
    return true;
}

}  // namespace Public::Base
