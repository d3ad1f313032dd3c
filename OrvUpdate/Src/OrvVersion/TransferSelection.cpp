// Which transfer brings a version's package to this disk.
#include "HttpDownload.h"
#include "LocalDownload.h"
#include "MQDownload.h"
#include "OrvDownload/ConnectionProviders.h"
#include "OrvVersion.h"
#include "VersionRequest.h"

namespace Tarnwick::OrvUpdate {

std::shared_ptr<IDownload> OrvVersion::getDownload(const std::shared_ptr<IVersionRequest>& request) {
    const auto versionRequest = std::dynamic_pointer_cast<VersionRequest>(request);
    if (!versionRequest) return nullptr;
    std::shared_ptr<IGetConnection> connection;
    if (const auto client = versionRequest->getMQClient()) {
        connection = std::make_shared<GetClientConnection>(client);
    } else if (const auto server = versionRequest->getMQServer()) {
        connection = std::make_shared<GetServerConnection>(server, mServerId);
    }
    return getDownload(connection);
}

std::shared_ptr<IDownload> OrvVersion::getDownload(const std::shared_ptr<IGetConnection>& connection) {
    std::lock_guard lock(mDownloadMutex);
    if (!mDownload && mStoragePosition != StoragePosition_Local) mDownload = findArrivedPackage(connection);
    if (!mDownload) mDownload = makeDownload(connection);
    return mDownload;
}

std::shared_ptr<IDownload> OrvVersion::findArrivedPackage(const std::shared_ptr<IGetConnection>& connection) {
    VersionSet stored;
    if (parseVersionFromCache(mIOWorker, mDownloadDir, stored, nullptr)) return nullptr;
    const auto arrived = VersionRequest::_queryVersion(stored, mSystemType, mSystemBits, mProjectType, mVersionType,
                                                       mVersionSource, mVersion);
    if (!arrived) return nullptr;
    auto transfer = arrived->getDownload(connection);
    std::string fileName;
    if (!transfer || transfer->getFileName(fileName)) return nullptr;
    setLocalFileName(fileName);
    return transfer;
}

std::shared_ptr<IDownload> OrvVersion::makeDownload(const std::shared_ptr<IGetConnection>& connection) {
    if (mStoragePosition == StoragePosition_Local) return std::make_shared<LocalDownload>(getPackageFile());
    if (mStoragePosition == StoragePosition_Cloud && !mUrl.empty()) {
        return std::make_shared<HttpDownload>(mIOWorker, shared_from_this());
    }
    const bool hasServerId = !mServerId.empty() || mGetServerId;
    if (mStoragePosition == StoragePosition_Node && hasServerId && connection) {
        return std::make_shared<MQDownload>(connection, shared_from_this());
    }
    return nullptr;
}

void OrvVersion::resetDownload() {
    std::shared_ptr<IDownload> released;  // goes after the lock is given back: the end of a transfer may wait
    std::lock_guard lock(mDownloadMutex);
    released.swap(mDownload);
    setLocalFileName("");
}

}  // namespace Tarnwick::OrvUpdate
