#include "VersionService/PushedFiles.h"

#include <algorithm>

#include "PackagePlace.h"
#include "ParentDirectory.h"

namespace Tarnwick::OrvUpdate {

namespace {

constexpr size_t kWritersKept = 64;

}  // namespace

std::shared_ptr<FileObject> PushedFiles::open(const std::string& transferId, const std::string& path,
                                              uint32_t position) {
    makeParentDirectory(path);
    auto file = std::make_shared<FileObject>();
    const bool opened = begins(transferId, path, position) ? openPackageAnew(*file, path)
                                                           : file->open(path, Public::Base::OpenMode_CreateKeep);
    if (!opened) return nullptr;
    mWriters.push_back({transferId, path, file});
    if (mWriters.size() > kWritersKept) mWriters.pop_front();
    return file;
}

bool PushedFiles::begins(const std::string& transferId, const std::string& path, uint32_t position) const {
    if (position != 0) return false;
    return std::none_of(mWriters.begin(), mWriters.end(), [&](const Writer& writer) {
        return writer.path == path && (writer.transferId == transferId || !writer.file.expired());
    });
}

}  // namespace Tarnwick::OrvUpdate
