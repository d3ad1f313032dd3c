// The frame of the message service: its life, its topics, and the routing step in front of every handler.
#include "VersionService.h"

#include "TWProtocol/TWProtoUser.h"
#include "Tarnwick/MQ/TWMQSystemServer.h"
#include "VersionRequest.h"
#include "VersionService/FileWriterManager.h"
#include "VersionService/PendingExits.h"

namespace Tarnwick::OrvUpdate {

using Tarnwick::MQ::MQDispatcher;

VersionService::VersionService(std::shared_ptr<IOWorker> worker, const std::shared_ptr<MQDispatcher>& dispatcher,
                               const std::shared_ptr<IInstaller>& installer)
    : mDispatcher(dispatcher),
      mInstallerGiven(installer),
      mIOWorker(std::move(worker)),
      mPendingExits(std::make_shared<PendingExits>()) {}

VersionService::VersionService(std::shared_ptr<IOWorker> worker, const std::shared_ptr<MQDispatcher>& dispatcher,
                               const std::shared_ptr<VersionRequest>& request, const PackageCallback& packageCallback,
                               const CheckCallback& checkCallback)
    : mDispatcher(dispatcher),
      mVersionRequest(request),
      mPackageCallback(packageCallback),
      mCheckCallback(checkCallback),
      mIOWorker(std::move(worker)),
      mPendingExits(std::make_shared<PendingExits>()) {}

VersionService::~VersionService() { stop(); }

ErrorInfo VersionService::start() {
    if (!mDispatcher) return {-1, ""};
    using Handler = Message (VersionService::*)(const Message&);
    static constexpr std::pair<const char*, Handler> kTopics[] = {
        {"topic_upgrade_requestversion", &VersionService::onMQRequestVersionCallback},
        {"topic_upgrade_requestreleasehistory", &VersionService::onMQRequestReleaseHistoryCallback},
        {"topic_upgrade_queryversion", &VersionService::onMQQueryVersionCallback},
        {"topic_upgrade_queryreleasehistory", &VersionService::onMQQueryReleaseHistoryCallback},
        {"topic_upgrade_downloadversion", &VersionService::onMQDownloadVersionCallback},
        {"topic_upgrade_postversion", &VersionService::onMQPostVersionCallback},
        {"topic_upgrade_startinstall", &VersionService::onMQStartInstallCallback},
        {"topic_upgrade_getinstallpos", &VersionService::onMQGetInstallPosCallback},
        {"topic_upgrade_startdownload", &VersionService::onMQStartDownloadCallback},
        {"topic_upgrade_getdownloadpos", &VersionService::onMQGetDownloadPosCallback},
        {"topic_upgrade_notifyupdate", &VersionService::onMQNotifyUpdateCallback},
    };
    const std::weak_ptr<VersionService> weak = shared_from_this();
    // Before the first request can come.
    mFileWriters = std::make_shared<FileWriterManager>();
    for (const auto& [topic, handler] : kTopics) {
        mDispatcher->subscribe(topic, this,
                               [weak, member = handler](const Message& message) -> Message {
                                   const auto self = weak.lock();
                                   return self ? ((*self).*member)(message) : nullptr;
                               },
                               {});
    }
    return {};
}

ErrorInfo VersionService::stop() {
    if (mDispatcher) mDispatcher->unsubcribe(this);
    mFileWriters = nullptr;
    return {};
}

ErrorInfo VersionService::getCurrentVersion(Version& version) {
    std::lock_guard lock(mStateMutex);
    version = mCurrentVersion;
    return {};
}

ErrorInfo VersionService::setCurrentVersion(const Version& version) {
    std::lock_guard lock(mStateMutex);
    mCurrentVersion = version;
    return {};
}

ErrorInfo VersionService::setDownloadCache(const std::string& path) {
    std::lock_guard lock(mStateMutex);
    mDownloadCache = path;
    return {};
}

bool VersionService::routed(const Message& message, Message& reply) {
    const std::string target = message->forwardTo().empty() ? message->to() : message->forwardTo();
    const Message outcome = routeToTarget(target, message);
    if (!outcome) return false;
    // Forwarded well: the far node answers.
    reply = outcome->errorInfo() ? outcome : nullptr;
    return true;
}

VersionService::Message VersionService::routeToTarget(const std::string& target, const Message& message) {
    const auto server = std::dynamic_pointer_cast<Tarnwick::MQ::TWMQSystemServer>(mDispatcher);
    if (!server) return nullptr;
    const std::string serverId = server->mySystemNotify().serverId;
    if (target.empty() || target == serverId) return nullptr;

    Tarnwick::MQ::TWServerInfo info;
    const ErrorInfo known = server->getServerInfo(target, info);
    const auto connection = server->connectionTo(target, "");
    if (!known && !info.reachable) return message->buildResponse(ErrorInfo(-425, ""), nullptr);
    if (!known && !info.ready) return message->buildResponse(ErrorInfo(-426, ""), nullptr);
    if (!connection || connection->connectionState() == Tarnwick::MQ::ConnectionState_Dead) {
        return message->buildResponse(ErrorInfo(-203, ""), nullptr);
    }
    Tarnwick::Protocol::TWProtoAuthUserInfo user;
    message->parseUserAuthen(&user, false);
    connection->forwardMessageTo(serverId, target, message, user.login.user.userName.empty() ? nullptr : &user);
    return message->buildResponse(ErrorInfo(0, ""), nullptr);
}

}  // namespace Tarnwick::OrvUpdate
