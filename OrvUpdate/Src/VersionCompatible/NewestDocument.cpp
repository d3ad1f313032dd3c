#include "VersionCompatible/NewestDocument.h"

#include "Public/Base/File.h"

namespace Tarnwick::OrvUpdate {

using Public::Base::File;
using Public::Base::SharedBuffer;

namespace {

/// Empty for a document whose version cannot be read.
Version versionOf(const IVersionCompatible& document) {
    Version version;
    document.getVersion(version);
    return version;
}

}  // namespace

std::string NewestDocument::path() const { return mDirectory + "\\maxVersiomCompatible.dat"; }

void NewestDocument::loadFromFile() {
    const std::string text = saved();
    if (text.empty()) return;
    const auto document = IVersionCompatible::loadFromMem(text);
    std::lock_guard adoption(mAdoption);
    adoptDocument(document);
}

void NewestDocument::loadFromText(const std::string& text) {
    if (text.empty()) return;
    const auto document = IVersionCompatible::loadFromMem(text);
    std::lock_guard adoption(mAdoption);
    if (adoptDocument(document)) save(text);
}

bool NewestDocument::adoptDocument(const std::shared_ptr<IVersionCompatible>& document) {
    if (!document) return false;
    const Version version = versionOf(*document);
    std::lock_guard lock(mMutex);
    if (mCurrentDocument && versionOf(*mCurrentDocument) >= version) return false;
    mCurrentDocument = document;
    mCompatibleVersion = version.toString();
    return true;
}

void NewestDocument::save(const std::string& text) const {
    if (!File::access(mDirectory, Public::Base::AccessMode_Exists)) File::makeDirectory(mDirectory);
    File::save(path(), SharedBuffer(text));
}

std::shared_ptr<IVersionCompatible> NewestDocument::current() const {
    std::lock_guard lock(mMutex);
    return mCurrentDocument;
}

std::string NewestDocument::version() const {
    std::lock_guard lock(mMutex);
    return mCompatibleVersion;
}

SharedBuffer NewestDocument::saved() const { return File::load(path()); }

}  // namespace Tarnwick::OrvUpdate
