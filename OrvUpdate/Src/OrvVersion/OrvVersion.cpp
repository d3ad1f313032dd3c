#include "OrvVersion.h"

#include <tuple>

namespace Tarnwick::OrvUpdate {

OrvVersion::OrvVersion(std::shared_ptr<IOWorker> ioWorker) : mIOWorker(std::move(ioWorker)) {}

OrvVersion::OrvVersion(std::shared_ptr<IOWorker> ioWorker, const std::string& downloadDir, const std::string& serverId)
    : mDownloadDir(downloadDir), mServerId(serverId), mIOWorker(std::move(ioWorker)) {}

OrvVersion::OrvVersion(std::shared_ptr<IOWorker> ioWorker, const std::string& downloadDir,
                       const std::shared_ptr<IGetServerId>& getServerId)
    : mDownloadDir(downloadDir), mGetServerId(getServerId), mIOWorker(std::move(ioWorker)) {}

OrvVersion::~OrvVersion() = default;

bool OrvVersion::operator<(const std::shared_ptr<IVersion>& other) const {
    if (!other) return false;  // as in the order of sets, where null comes first
    const Version otherVersion = other->getVersion();
    if (mVersion != otherVersion) return mVersion < otherVersion;
    const auto rank = [](int bits, int systemType, int versionType, int source) {
        return std::tuple(bits, systemType, versionType, source);
    };
    return rank(mSystemBits, mSystemType, mVersionType, mVersionSource) <
           rank(other->getSystemBits(), other->getSystemType(), other->getVersionType(), other->getVersionSource());
}

SystemType OrvVersion::getSystemType() const { return mSystemType; }
SystemBits OrvVersion::getSystemBits() const { return mSystemBits; }
ProjectType OrvVersion::getProjectType() const { return mProjectType; }
VersionType OrvVersion::getVersionType() const { return mVersionType; }
VersionSource OrvVersion::getVersionSource() const { return mVersionSource; }
StoragePosition OrvVersion::getStoragePosition() const { return mStoragePosition; }
std::string OrvVersion::getDescribe() const { return mDescribe; }
Version OrvVersion::getVersion() const { return mVersion; }
std::string OrvVersion::getChangeLog() const { return {}; }
unsigned long long OrvVersion::getFileSize() const { return 0; }
std::string OrvVersion::getServerid() const { return mGetServerId ? mGetServerId->getServerId() : mServerId; }
std::string OrvVersion::getUrl() const { return mUrl; }

std::string OrvVersion::getPackageFile() const {
    {
        std::lock_guard lock(mLocalFileNameMutex);
        if (!mLocalFileName.empty()) return mLocalFileName;
    }
    return buildVersionFileName(mDownloadDir, mVersionSource, mSystemType, mSystemBits, mVersionType,
                                mVersion.toString());
}

ErrorInfo OrvVersion::setSystemType(SystemType systemType) {
    mSystemType = systemType;
    return {};
}

ErrorInfo OrvVersion::setVersionType(VersionType versionType) {
    mVersionType = versionType;
    return {};
}

ErrorInfo OrvVersion::setVersionSource(VersionSource source) {
    mVersionSource = source;
    return {};
}

ErrorInfo OrvVersion::setSystemBits(SystemBits bits) {
    mSystemBits = bits;
    return {};
}

ErrorInfo OrvVersion::setStoragePosition(StoragePosition position) {
    mStoragePosition = position;
    return {};
}

ErrorInfo OrvVersion::setProjectType(ProjectType) { return {}; }

ErrorInfo OrvVersion::setDescribe(const std::string& text) {
    mDescribe = text;
    return {};
}

ErrorInfo OrvVersion::setVersion(const std::string& text) {
    mVersion = Version(text, 0);
    return {};
}

ErrorInfo OrvVersion::setChangeLog(const std::string&) { return {}; }

ErrorInfo OrvVersion::setFileSize(unsigned long long) { return {}; }

ErrorInfo OrvVersion::setLocalFileName(const std::string& path) {
    std::lock_guard lock(mLocalFileNameMutex);
    mLocalFileName = path;
    return {};
}

}  // namespace Tarnwick::OrvUpdate
