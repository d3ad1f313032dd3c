// How a version gets onto a peer, for host programs.
#include "ForwardDownload.h"
#include "OrvDownload/ConnectionProviders.h"
#include "OrvVersion.h"
#include "PostDownload.h"
#include "RemoteDownload.h"
#include "VersionRequest.h"

namespace Tarnwick::OrvUpdate {

namespace {

/// Nobody in the cluster has it, and the peer is not asked to reach the cloud: the package passes through here.
std::shared_ptr<IDownload> passThrough(const std::shared_ptr<IVersionRequest>& request, OrvVersion& version,
                                       const std::shared_ptr<TWMQClient>& client, const std::string& serverId) {
    const auto download = version.getDownload(request);
    if (!download) return nullptr;
    const auto post =
        std::make_shared<PostDownload>(request, version.getPackageFile(), std::make_shared<GetClientConnection>(client),
                                       VersionSource_Online, serverId);
    return std::make_shared<ForwardDownload>(download, post);
}

}  // namespace

std::shared_ptr<IDownload> IDownload::createRemoteDownload(const std::shared_ptr<IVersionRequest>& request,
                                                           const std::shared_ptr<IVersion>& version,
                                                           const std::string& serverId) {
    const auto own = std::dynamic_pointer_cast<VersionRequest>(request);
    const auto client = own ? own->getMQClient() : nullptr;
    const auto orvVersion = std::dynamic_pointer_cast<OrvVersion>(version);
    if (!client || !orvVersion) return nullptr;
    if (orvVersion->getStoragePosition() != StoragePosition_Cloud || !orvVersion->getServerid().empty()) {
        return std::make_shared<RemoteDownload>(client, version, serverId);
    }
    return passThrough(request, *orvVersion, client, serverId);
}

}  // namespace Tarnwick::OrvUpdate
