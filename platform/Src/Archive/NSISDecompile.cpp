#include "Archive/NSISDecompile.h"

#include <mutex>
#include <new>

#include "Package.h"

/// The open package. Whoever works on it holds a reference of its own, so that close may come at any time.
struct NSISDecompile::State {
    std::shared_ptr<Archive::Package> get() {
        std::lock_guard lock(mutex);
        return package;
    }
    void put(std::shared_ptr<Archive::Package> next) {
        std::lock_guard lock(mutex);
        if (package) package->cancelled = true;
        package.swap(next);
    }

    std::mutex mutex;
    std::shared_ptr<Archive::Package> package;
};

namespace {

bool findText(const Archive::Package& package, const char* key, std::string& text) {
    const auto found = package.version.strings.find(key);
    if (found == package.version.strings.end()) return false;
    text = found->second;
    return true;
}

}  // namespace

NSISDecompile::NSISDecompile() : mState(std::make_unique<State>()) {}

NSISDecompile::~NSISDecompile() { NSISDecompile::close(); }

bool NSISDecompile::open(const std::string& path, const std::string&) {
    mState->put(nullptr);
    try {
        auto package = std::make_shared<Archive::Package>();
        if (!package->open(path)) return false;
        mState->put(std::move(package));
        return true;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

bool NSISDecompile::getName(std::string& name) {
    const auto package = mState->get();
    return package && findText(*package, "ProductName", name);
}

bool NSISDecompile::getComment(std::string& comment) {
    const auto package = mState->get();
    return package && findText(*package, "Comments", comment);
}

bool NSISDecompile::getVersion(std::string& version) {
    const auto package = mState->get();
    if (!package || !package->version.found) return false;
    if (findText(*package, "ProductVersion", version) || findText(*package, "FileVersion", version)) return true;
    version = package->version.fixedFileVersion;
    return !version.empty();
}

bool NSISDecompile::getSize(uint64_t& size) {
    const auto package = mState->get();
    if (package) size = package->layout.end;
    return package != nullptr;
}

bool NSISDecompile::getItems(std::list<std::string>& items) {
    items.clear();
    const auto package = mState->get();
    if (!package) return false;
    for (const auto& item : package->items) items.insert(items.end(), item.names.begin(), item.names.end());
    return true;
}

bool NSISDecompile::extract(const std::shared_ptr<IExtractOutFile>& sink) {
    const auto package = mState->get();
    if (!package || !sink) return false;
    try {
        return Archive::extractPackage(*package, *sink);
    } catch (const std::bad_alloc&) {
        sink->setError(IExtractOutFile::ErrorCode_Limit);
        return false;
    }
}

void NSISDecompile::close() { mState->put(nullptr); }
