// Queries and changes of the catalogue and of the release notes.
#include "VersionRequest.h"

namespace Tarnwick::OrvUpdate {

namespace {

/// 0 stands for any in each of these.
struct Filter {
    SystemType systemType;
    SystemBits bits;
    ProjectType projectType;
    VersionType versionType;
    VersionSource source;

    bool passes(const IVersion& version) const {
        if (systemType != 0 && version.getSystemType() != systemType) return false;
        if (bits != 0 && version.getSystemBits() != bits) return false;
        if (projectType != 0 && version.getProjectType() != projectType) return false;
        if (versionType > VersionType_All && version.getVersionType() != versionType &&
            version.getVersionType() != VersionType_All) {
            return false;
        }
        return source == 0 || version.getVersionSource() == source;
    }
    /// The source alone does not filter.
    bool takesAll() const { return systemType == 0 && bits == 0 && projectType == 0 && versionType == 0; }
};

/// Entries taken out of the catalogue. They go after its lock is given back: with an entry its transfer ends, which can
/// take time and wait for other threads.
using Removed = std::vector<std::shared_ptr<IVersion>>;

/// Takes out the entries of which the predicate is true.
template <class Predicate>
void takeOut(VersionSet& versions, Removed& removed, const Predicate& predicate) {
    for (auto entry = versions.begin(); entry != versions.end();) {
        const auto next = std::next(entry);
        if (predicate(**entry)) removed.push_back(std::move(versions.extract(entry).value()));
        entry = next;
    }
}

}  // namespace

VersionSet VersionRequest::snapshot() {
    std::lock_guard lock(mVersionMutex);
    return mVersions;
}

VersionSet VersionRequest::getVersions() { return snapshot(); }

VersionSet VersionRequest::queryVersions(SystemType systemType, SystemBits bits, ProjectType projectType,
                                         VersionType versionType, VersionSource source) {
    return _queryVersions(snapshot(), systemType, bits, projectType, versionType, source);
}

VersionSet VersionRequest::_queryVersions(const VersionSet& versions, SystemType systemType, SystemBits bits,
                                          ProjectType projectType, VersionType versionType, VersionSource source) {
    const Filter filter{systemType, bits, projectType, versionType, source};
    if (filter.takesAll()) return versions;
    VersionSet passed;
    for (const auto& version : versions) {
        if (version && filter.passes(*version)) passed.insert(passed.end(), version);
    }
    return passed;
}

std::shared_ptr<IVersion> VersionRequest::queryVersion(const std::shared_ptr<IVersion>& key) {
    if (!key) return nullptr;
    return _queryVersion(snapshot(), key->getSystemType(), key->getSystemBits(), key->getProjectType(),
                         key->getVersionType(), key->getVersionSource(), key->getVersion());
}

std::shared_ptr<IVersion> VersionRequest::queryVersion(SystemType systemType, SystemBits bits, ProjectType projectType,
                                                       VersionType versionType, VersionSource source,
                                                       const Version& version) {
    return _queryVersion(snapshot(), systemType, bits, projectType, versionType, source, version);
}

std::shared_ptr<IVersion> VersionRequest::_queryVersion(const VersionSet& versions, SystemType systemType,
                                                        SystemBits bits, ProjectType projectType,
                                                        VersionType versionType, VersionSource source,
                                                        const Version& version) {
    const Filter filter{systemType, bits, projectType, versionType, source};
    for (const auto& entry : versions) {
        if (entry && filter.passes(*entry) && entry->getVersion() == version) return entry;
    }
    return nullptr;
}

std::shared_ptr<IVersion> VersionRequest::queryNewestVersion(SystemType systemType, SystemBits bits,
                                                             ProjectType projectType, VersionType versionType,
                                                             VersionSource source, const Version& than) {
    return _queryNewestVersion(queryVersions(systemType, bits, projectType, versionType, source), systemType, bits,
                               projectType, versionType, source, than);
}

std::shared_ptr<IVersion> VersionRequest::_queryNewestVersion(const VersionSet& versions, SystemType, SystemBits,
                                                              ProjectType, VersionType, VersionSource,
                                                              const Version& than) {
    Version best;
    std::shared_ptr<IVersion> result;
    for (const auto& entry : versions) {
        if (!entry) continue;
        const Version version = entry->getVersion();
        if (version <= than || version <= best) continue;
        best = version;
        result = entry;
    }
    return result;
}

ErrorInfo VersionRequest::addVersion(const std::shared_ptr<IVersion>& version) { return addVersions({version}); }

ErrorInfo VersionRequest::addVersions(const VersionSet& versions) {
    std::lock_guard lock(mVersionMutex);
    for (const auto& version : versions) {
        if (version) mVersions.insert(version);
    }
    return {};
}

ErrorInfo VersionRequest::removeVersions(const VersionSet& versions, StoragePosition position) {
    Removed removed;
    std::lock_guard lock(mVersionMutex);
    for (const auto& version : versions) {
        const auto found = mVersions.find(version);
        if (found == mVersions.end() || (*found)->getStoragePosition() != position) continue;
        removed.push_back(std::move(mVersions.extract(found).value()));
    }
    return {};
}

ErrorInfo VersionRequest::removeVersions() {
    Removed removed;
    std::lock_guard lock(mVersionMutex);
    takeOut(mVersions, removed,
            [](const IVersion& version) { return version.getStoragePosition() != StoragePosition_Local; });
    return {};
}

ErrorInfo VersionRequest::updateVersions(const VersionSet& versions, StoragePosition position) {
    Removed removed;
    std::lock_guard lock(mVersionMutex);
    takeOut(mVersions, removed,
            [position](const IVersion& version) { return version.getStoragePosition() == position; });
    // Both sets have one order, so that one walk over both finds every place.
    const auto isBefore = mVersions.key_comp();
    auto place = mVersions.begin();
    for (const auto& version : versions) {
        if (!version) continue;
        while (place != mVersions.end() && isBefore(*place, version)) ++place;
        if (place != mVersions.end() && !isBefore(version, *place)) {
            removed.push_back(std::move(mVersions.extract(place++).value()));
        }
        mVersions.insert(place, version);
    }
    return {};
}

ErrorInfo VersionRequest::addReleaseHistory(const ReleaseHistorySet& histories) {
    std::lock_guard lock(mVersionMutex);
    for (const auto& history : histories) {
        if (history) mReleaseHistories.insert(history);
    }
    return {};
}

ErrorInfo VersionRequest::removeReleaseHistory() {
    ReleaseHistorySet removed;  // goes after the lock is given back
    std::lock_guard lock(mVersionMutex);
    removed.swap(mReleaseHistories);
    return {};
}

ReleaseHistorySet VersionRequest::getReleaseHistory() {
    std::lock_guard lock(mVersionMutex);
    return mReleaseHistories;
}

}  // namespace Tarnwick::OrvUpdate
