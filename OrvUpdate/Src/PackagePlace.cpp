#include "PackagePlace.h"

#include <mutex>

#include "Public/Base/FileEntry.h"

namespace Tarnwick::OrvUpdate {

using Public::Base::File;
using Public::Base::FileEntry;
using Public::Base::MappedFile;

namespace {

/// Held while what lies at a place is judged and changed, so that nobody discards what he has not looked at.
std::mutex& placeMutex() {
    static auto& mutex = *new std::mutex;
    return mutex;
}

}  // namespace

bool openPackageAnew(File& file, const std::string& path) {
    std::lock_guard lock(placeMutex());
    // Anything else, such as a link, is opened as it stands.
    if (FileEntry::at(path).kind == FileEntry::Kind::File) File::remove(path);
    return file.open(path, Public::Base::OpenMode_Create);
}

TestedPackage::TestedPackage(const std::string& path) : mPath(path) {
    mWasThere = mFile.open(path) == MappedFile::Result::Mapped || !File::isAbsent(path);
}

bool TestedPackage::discard() {
    std::lock_guard lock(placeMutex());
    if (!mWasThere) return File::isAbsent(mPath);
    if (mFile.isReplacedAt(mPath)) return false;
    mFile.close();  // where systems do not remove a file that is in use
    File::remove(mPath);
    return true;
}

}  // namespace Tarnwick::OrvUpdate
