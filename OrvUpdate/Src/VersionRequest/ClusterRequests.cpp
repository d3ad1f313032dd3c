// Asking the nodes of the cluster for versions and release notes.
#include "TWProtocol/TWProtoUpgrade.h"
#include "VersionRequest.h"
#include "VersionRequest/ClusterBroadcast.h"

namespace Tarnwick::OrvUpdate {

using Public::Base::SharedBuffer;
using Tarnwick::MQ::MQConnection;
using Tarnwick::MQ::MQMessage;
using Tarnwick::MQ::ServerList;
using Tarnwick::Protocol::TWPacket;
using Tarnwick::Protocol::TWProtoUpgradeNotify;

namespace {

constexpr char kTopicQueryVersion[] = "topic_upgrade_queryversion";
constexpr char kTopicQueryReleaseHistory[] = "topic_upgrade_queryreleasehistory";
constexpr char kTopicNotifyUpdate[] = "topic_upgrade_notifyupdate";
constexpr unsigned int kNotifyTimeoutMs = 60000;

std::set<std::string> idsOf(const ServerList& servers) {
    std::set<std::string> ids;
    for (const auto& server : servers) ids.insert(ids.end(), server.first);
    return ids;
}

SharedBuffer requestBody(const Version& version) {
    TWProtoUpgradeNotify notify;
    notify.body = version.toString();
    return TWPacket::serializeAsBytes(notify);
}

/// A request that could not begin tells so by the callback alone.
ErrorInfo toldBy(const RequestFinished& callback, const ErrorInfo& begun) {
    if (begun) callback("", begun, true);
    return {0, ""};
}

}  // namespace

ErrorInfo VersionRequest::setOtherNodes(const std::set<std::string>& nodes) {
    std::lock_guard lock(mStateMutex);
    mOtherNodes = nodes;
    return {0, ""};
}

ErrorInfo VersionRequest::getOtherNodes(std::set<std::string>& nodes) {
    std::lock_guard lock(mStateMutex);
    nodes = mOtherNodes;
    return {0, ""};
}

std::set<std::string> VersionRequest::withOtherNodes(std::set<std::string> nodes) const {
    std::lock_guard lock(mStateMutex);
    nodes.insert(mOtherNodes.begin(), mOtherNodes.end());
    return nodes;
}

ErrorInfo VersionRequest::requestVersion(const RequestFinished& callback) {
    const RequestFinished thenNotify = [weak = weak_from_this(), callback](const std::string& nodeId,
                                                                           const ErrorInfo& result, bool isLast) {
        const auto self = weak.lock();
        if (!self) return;
        callback(nodeId, result, isLast);
        if (isLast) self->notifyAllNodeCheckUpgrade();
    };
    return toldBy(callback, _requestVersion(kTopicRequestVersion, thenNotify));
}

ErrorInfo VersionRequest::querySystemVersion(const RequestFinished& callback) {
    return toldBy(callback, _requestVersion(kTopicQueryVersion, callback));
}

ErrorInfo VersionRequest::querySystemVersion(const std::map<std::string, TWServerInfo>& servers,
                                             const RequestFinished& callback) {
    return toldBy(callback, _requestVersion(kTopicQueryVersion, idsOf(servers), callback));
}

ErrorInfo VersionRequest::requestReleaseHistory(const RequestFinished& callback) {
    return toldBy(callback, _requestReleaseHistory(kTopicRequestReleaseHistory, callback));
}

ErrorInfo VersionRequest::queryReleaseHistory(const RequestFinished& callback) {
    return toldBy(callback, _requestReleaseHistory(kTopicQueryReleaseHistory, callback));
}

ErrorInfo VersionRequest::_requestVersion(const std::string& topic, const RequestFinished& callback) {
    if (!mMQClient) return {-1, ""};
    ServerList servers;
    mMQClient->getServerList(servers);
    return _requestVersion(topic, idsOf(servers), callback);
}

ErrorInfo VersionRequest::_requestVersion(const std::string& topic, const std::set<std::string>& nodes,
                                          const RequestFinished& callback) {
    const auto ids = withOtherNodes(nodes);
    if (ids.empty()) {
        removeVersions();
        callback("", ErrorInfo(0, ""), true);
        return {0, ""};
    }
    const auto broadcast = std::make_shared<VersionBroadcast>(weak_from_this(), topic, ids.size(), callback);
    const SharedBuffer body = requestBody(versionToRequest());
    for (const auto& id : ids) broadcast->ask(id, linkToReachable(id), body);
    return {0, ""};
}

ErrorInfo VersionRequest::_requestReleaseHistory(const std::string& topic, const RequestFinished& callback) {
    ServerList servers;
    if (mMQClient) {
        mMQClient->getServerList(servers);
    } else if (const auto server = systemServer()) {
        if (const auto discover = server->discover()) {
            servers = discover->getSystemServerList(server->mySystemNotify().systemId);
        }
    }
    if (servers.empty()) {
        // The caller tells it once more; hosts are used to that.
        callback("", ErrorInfo(-1, ""), true);
        return {-1, ""};
    }
    return _requestReleaseHistory(topic, idsOf(servers), callback);
}

ErrorInfo VersionRequest::_requestReleaseHistory(const std::string& topic, const std::set<std::string>& nodes,
                                                 const RequestFinished& callback) {
    const auto ids = withOtherNodes(nodes);
    if (ids.empty()) {
        callback("", ErrorInfo(0, ""), true);
        return {0, ""};
    }
    removeReleaseHistory();
    const auto broadcast = std::make_shared<HistoryBroadcast>(weak_from_this(), topic, ids.size(), callback);
    const SharedBuffer body = requestBody(versionToRequest());
    for (const auto& id : ids) broadcast->ask(id, linkTo(id), body);
    return {0, ""};
}

std::shared_ptr<TWMQSystemServer> VersionRequest::systemServer() const {
    return std::dynamic_pointer_cast<TWMQSystemServer>(mMQServer);
}

std::shared_ptr<MQConnection> VersionRequest::linkTo(const std::string& nodeId) const {
    if (mMQServer) return mMQServer->connectionTo(nodeId, "");
    return mMQClient ? mMQClient->connection() : nullptr;
}

std::shared_ptr<MQConnection> VersionRequest::linkToReachable(const std::string& nodeId) const {
    if (const auto server = systemServer()) {
        TWServerInfo info;
        if (server->getServerInfo(nodeId, info) || !info.reachable) return nullptr;
    }
    return linkTo(nodeId);
}

ErrorInfo VersionRequest::notifyAllNodeCheckUpgrade() {
    const Function<void()> notify = mVersionRequestNotify;
    if (notify) {
        notify();
        return {0, ""};
    }
    const auto link = mMQClient ? mMQClient->connection() : nullptr;
    if (!link) return {-1, ""};
    link->pushMessageRequest(
        kTopicNotifyUpdate, nullptr, nullptr, Tarnwick::Protocol::TWProtoMessageLevel_Normal,
        [](const std::shared_ptr<MQMessage>&) {}, kNotifyTimeoutMs);
    return {0, ""};
}

}  // namespace Tarnwick::OrvUpdate
