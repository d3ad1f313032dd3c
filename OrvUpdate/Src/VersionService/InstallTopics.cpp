// Answers to peers that have this node fetch a package or install it, and watch how far that has come.
#include "EngineLog.h"
#include "IDownload.h"
#include "OrvDownload/ConnectionProviders.h"
#include "OrvInstaller/AgentInstaller.h"
#include "OrvVersion.h"
#include "PeerDocuments.h"
#include "Public/Base/File.h"
#include "TWProtocol/TWProtoUpgrade.h"
#include "VersionRequest.h"
#include "VersionService.h"
#include "VersionService/PendingExits.h"

namespace Tarnwick::OrvUpdate {

using namespace Public::Base;
using Tarnwick::MQ::MQMessage;
using Tarnwick::Protocol::TWProtoUpgradePkt;

namespace {

using Message = std::shared_ptr<MQMessage>;

/// Of a body in a log line: a version document takes a few hundred bytes, and no peer is to fill the log.
constexpr size_t kLoggedBytes = 4096;

Message answer(const Message& message, const ErrorInfo& result) { return message->buildResponse(result, nullptr); }

Message answer(const Message& message, int code) { return answer(message, ErrorInfo(code, "")); }

/// The entry of the catalogue that the version names; null when there is none.
std::shared_ptr<IVersion> findEntry(VersionRequest& request, const std::shared_ptr<OrvVersion>& named) {
    return request.queryVersion(std::static_pointer_cast<IVersion>(named));
}

/// The same, entered when there is none. What stands in the catalogue is what counts when two peers name one version
/// at the same time: it has one transfer.
std::shared_ptr<IVersion> findOrAddEntry(VersionRequest& request, const std::shared_ptr<OrvVersion>& named) {
    if (auto entry = findEntry(request, named)) return entry;
    request.addVersion(named);
    const auto added = findEntry(request, named);
    return added ? added : named;
}

std::shared_ptr<IDownload> transferOf(IVersion& version, const std::shared_ptr<Tarnwick::MQ::MQDispatcher>& node) {
    const std::shared_ptr<IGetConnection> provider = std::make_shared<GetServerConnection>(node, version.getServerid());
    return version.getDownload(provider);
}

}  // namespace

std::shared_ptr<OrvVersion> VersionService::makeVersion() const {
    std::lock_guard lock(mStateMutex);
    return std::make_shared<OrvVersion>(mIOWorker, mDownloadCache, std::shared_ptr<IGetServerId>());
}

VersionService::Message VersionService::onMQStartDownloadCallback(const Message& message) {
    if (Message reply; routed(message, reply)) return reply;
    const auto request = mVersionRequest.lock();
    if (!request) {
        ORV_LOG(2, "VersionService", "versionRequest empty()");
        return answer(message, ErrorCode_Failed);
    }
    TWProtoUpgradePkt packet;
    if (!message->parseBody(&packet, false)) {
        ORV_LOG(2, "VersionService", "protocol parse fail!");
        return answer(message, ErrorCode_BadDocument);
    }
    const auto named = makeVersion();
    if (const ErrorInfo unreadable = named->parseVersion(packet.body)) {
        ORV_LOG(2, "VersionService", "version parse fail!");
        return answer(message, unreadable);
    }
    const auto version = findOrAddEntry(*request, named);
    const auto download = transferOf(*version, mDispatcher);
    if (!download) {
        ORV_LOG(2, "VersionService", "getdownload fail!");
        return answer(message, ErrorCode_Failed);
    }
    // Nobody waits for it here: the peer polls.
    const ErrorInfo result = download->start(Function<void()>());
    if (result) ORV_LOG(2, "VersionService", "download start fail! errcode:%d", result.errorCode());
    return answer(message, result);
}

VersionService::Message VersionService::onMQGetDownloadPosCallback(const Message& message) {
    if (Message reply; routed(message, reply)) return reply;
    const auto request = mVersionRequest.lock();
    if (!request) {
        ORV_LOG(2, "VersionService", "versionRequest empty");
        return answer(message, ErrorCode_Failed);
    }
    TWProtoUpgradePkt packet;
    if (!message->parseBody(&packet, false)) {
        ORV_LOG(2, "VersionService", "protocol parse fail");
        return answer(message, ErrorCode_BadDocument);
    }
    const auto named = makeVersion();
    if (const ErrorInfo unreadable = named->parseVersion(packet.body)) {
        ORV_LOG(2, "VersionService", "version parse fail");
        return answer(message, unreadable);
    }
    const auto version = findEntry(*request, named);
    if (!version) {
        ORV_LOG(2, "VersionService", "not find version");
        return answer(message, ErrorCode_Success);
    }
    const auto download = transferOf(*version, mDispatcher);
    if (!download) {
        ORV_LOG(2, "VersionService", "getdownload fail");
        return answer(message, ErrorCode_Failed);
    }
    float pos = 0;
    if (const ErrorInfo error = download->getProgress(pos)) {
        ORV_LOG(2, "VersionService", "getProgress fail! errcode:%d", error.errorCode());
        return answer(message, error);
    }
    const bool finish = download->finish();
    if (const ErrorInfo error = download->getError()) {
        ORV_LOG(2, "VersionService", "download fail! errcode:%d", error.errorCode());
        return answer(message, error);
    }
    return message->buildResponse({}, progressPacket(pos, finish));
}

VersionService::Message VersionService::onMQStartInstallCallback(const Message& message) {
    if (Message reply; routed(message, reply)) return reply;
    const auto request = mVersionRequest.lock();
    if (!request) {
        ORV_LOG(2, "VersionService", "versionRequest empty!");
        return answer(message, ErrorCode_Failed);
    }
    TWProtoUpgradePkt packet;
    if (!message->parseBody(&packet, false)) {
        ORV_LOG(2, "VersionService", "protocol parse fail!");
        return answer(message, ErrorCode_BadDocument);
    }
    JsonValue document;
    if (document.read(SharedBuffer(packet.body))) {
        ORV_LOG(2, "VersionService", "json parse fail!");
        return answer(message, ErrorCode_Failed);
    }
    const auto named = makeVersion();
    if (const ErrorInfo unreadable = named->parseVersion(document)) {
        ORV_LOG(2, "VersionService", "version parse fail! body:%s",
                document.toStyledString(WriteStyle_Indented).toStdString().substr(0, kLoggedBytes));
        return answer(message, unreadable);
    }
    const auto entry = findEntry(*request, named);
    if (!entry) {
        ORV_LOG(2, "VersionService", "not find version, versionstr:%s", named->getVersion().toString());
        return answer(message, ErrorCode_PackageInvalid);
    }
    if (entry->getVersionType() != VersionType_All && entry->getVersionType() != request->getVersionType()) {
        return answer(message, ErrorCode_PackageInvalid);
    }
    const ErrorInfo result = install(entry, request->getVersionType());
    if (result) ORV_LOG(2, "VersionService", "installer start fail! errcode:%d", result.errorCode());
    return answer(message, result);
}

ErrorInfo VersionService::install(const std::shared_ptr<IVersion>& version, VersionType role) {
    const auto installer = std::make_shared<AgentInstaller>(mPackageCallback, mCheckCallback, version, role);
    mStartedInstaller = installer;
    const ErrorInfo result = installer->start(File::getExcutableFileFullPath(), true, Function<void()>());
    if (!result) mPendingExits->add(installer);
    return result;
}

VersionService::Message VersionService::onMQGetInstallPosCallback(const Message& message) {
    if (Message reply; routed(message, reply)) return reply;
    TWProtoUpgradePkt packet;
    if (!message->parseBody(&packet, false)) {
        ORV_LOG(2, "VersionService", "protocol parse fail!");
        return answer(message, ErrorCode_BadDocument);
    }
    const auto named = makeVersion();
    if (named->parseVersion(packet.body)) {
        ORV_LOG(2, "VersionService", "version parse fail! body:%s", packet.body.substr(0, kLoggedBytes));
        return answer(message, ErrorCode_BadDocument);
    }
    if (mVersionRequest.lock()) return runningPosition(message, named->getVersion());
    if (!mInstallerGiven) return answer(message, ErrorCode_Failed);
    float pos = 0;
    if (const ErrorInfo error = mInstallerGiven->getProgress(pos)) {
        ORV_LOG(2, "VersionService", "getProgress fail!");
        return answer(message, error);
    }
    return message->buildResponse({}, progressPacket(pos, mInstallerGiven->finish()));
}

VersionService::Message VersionService::runningPosition(const Message& message, const Version& wanted) {
    Version running;
    getCurrentVersion(running);
    // An installation replaces the running program: it is done when the node comes back as the wanted version.
    const bool done = wanted == running;
    if (!done && !mStartedInstaller) {
        ORV_LOG(2, "VersionService", "version Mismatch");
        return answer(message, ErrorCode_PackageMismatch);
    }
    return message->buildResponse({}, progressPacket(done ? 1.0F : 0.0F, done));
}

}  // namespace Tarnwick::OrvUpdate
