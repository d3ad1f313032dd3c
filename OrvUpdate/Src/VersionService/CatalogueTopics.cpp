// Answers to peers that ask for this node's catalogue.
#include "EngineLog.h"
#include "OrvVersion.h"
#include "OrvVersion/ReleaseHistory.h"
#include "TWProtocol/TWProtoUpgrade.h"
#include "Tarnwick/MQ/TWMQSystemServer.h"
#include "VersionRequest.h"
#include "VersionService.h"

namespace Tarnwick::OrvUpdate {

using Tarnwick::MQ::MQMessage;
using Tarnwick::Protocol::TWProtoUpgradeNotify;
using Tarnwick::Protocol::TWProtoUpgradePkt;

namespace {

using Message = std::shared_ptr<MQMessage>;

Message answerNoRequest(const Message& message) {
    ORV_LOG(2, "VersionService", "versionRequest empty");
    return message->buildResponse(ErrorInfo(-1, ""), nullptr);
}

TWProtoUpgradePkt versionsOf(VersionRequest& request) {
    TWProtoUpgradePkt packet;
    OrvVersion::buildVersion(request.getVersions(), packet.body);
    return packet;
}

TWProtoUpgradePkt historiesOf(VersionRequest& request) {
    TWProtoUpgradePkt packet;
    ReleaseHistory::buildReleaseHistory(request.getReleaseHistory(), packet.body);
    return packet;
}

/// The answer that follows once the cloud has been asked: the catalogue as it then is, with the cloud's result.
Function<void(const ErrorInfo&)> deferredReply(const std::weak_ptr<VersionService>& service,
                                               const std::shared_ptr<VersionRequest>& request, const Message& message,
                                               TWProtoUpgradePkt (*catalogue)(VersionRequest&)) {
    return [service, request, message, catalogue](const ErrorInfo& result) {
        if (service.expired()) return;
        const TWProtoUpgradePkt packet = catalogue(*request);
        const auto connection = message->connection();
        if (connection) connection->pushResponse(message->buildResponse(result, packet), false);
    };
}

void takeRequestVersion(VersionRequest& request, const Message& message) {
    TWProtoUpgradeNotify notify;
    if (message->parseBody(&notify, false)) request.setRequestVersion(Version(notify.body, 0));
}

}  // namespace

VersionService::Message VersionService::onMQQueryVersionCallback(const Message& message) {
    if (Message reply; routed(message, reply)) return reply;
    const auto request = mVersionRequest.lock();
    if (!request) return answerNoRequest(message);
    return message->buildResponse(ErrorInfo(0, ""), versionsOf(*request));
}

VersionService::Message VersionService::onMQQueryReleaseHistoryCallback(const Message& message) {
    if (Message reply; routed(message, reply)) return reply;
    const auto request = mVersionRequest.lock();
    if (!request) return answerNoRequest(message);
    return message->buildResponse(ErrorInfo(0, ""), historiesOf(*request));
}

VersionService::Message VersionService::onMQRequestVersionCallback(const Message& message) {
    if (Message reply; routed(message, reply)) return reply;
    const auto request = mVersionRequest.lock();
    if (!request) return answerNoRequest(message);
    takeRequestVersion(*request, message);
    request->removeVersions();
    request->requestVersionFromHttp(deferredReply(weak_from_this(), request, message, versionsOf), true);
    return nullptr;
}

VersionService::Message VersionService::onMQRequestReleaseHistoryCallback(const Message& message) {
    if (Message reply; routed(message, reply)) return reply;
    const auto request = mVersionRequest.lock();
    if (!request) return answerNoRequest(message);
    takeRequestVersion(*request, message);
    request->removeReleaseHistory();
    request->requestReleaseHistoryFromHttp(deferredReply(weak_from_this(), request, message, historiesOf), true);
    return nullptr;
}

VersionService::Message VersionService::onMQNotifyUpdateCallback(const Message& message) {
    // A node ignores its own notification.
    const auto server = std::dynamic_pointer_cast<Tarnwick::MQ::TWMQSystemServer>(mDispatcher);
    if (server && server->myMqId() == message->from()) return nullptr;
    if (Message reply; routed(message, reply)) return reply;
    const auto request = mVersionRequest.lock();
    if (!request) return answerNoRequest(message);
    const Function<void()> notify = request->getVersionRequestNotify();
    if (notify) notify();
    return message->buildResponse(ErrorInfo(0, ""), nullptr);
}

}  // namespace Tarnwick::OrvUpdate
