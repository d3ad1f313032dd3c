#include "RemoteDownload.h"

#include "EngineLog.h"
#include "PeerDocuments.h"

namespace Tarnwick::OrvUpdate {

using Public::Base::ErrorCode_Failed;
using Public::Base::ErrorCode_NotSupported;
using Tarnwick::MQ::MQConnection;
using Tarnwick::MQ::MQMessage;

namespace {

constexpr unsigned kTimeout = 60000;

}  // namespace

RemoteDownload::RemoteDownload(const std::shared_ptr<TWMQClient>& client, const std::shared_ptr<IVersion>& version,
                               const std::string& serverId)
    : mClient(client), mVersion(version), mServerId(serverId) {}

ErrorInfo RemoteDownload::start(const Function<void()>&) {
    const std::weak_ptr<RemoteDownload> self = shared_from_this();
    {
        std::lock_guard lock(mMutex);
        mError = {};
    }
    const ErrorInfo result = sendStart(self);
    setError(result);
    return result;
}

ErrorInfo RemoteDownload::sendStart(const std::weak_ptr<RemoteDownload>& self) {
    const auto link = connection();
    if (!link) return {ErrorCode_Failed, ""};
    const auto packet = versionPacket(*mVersion);
    const auto id = link->pushMessageRequestTo(
        mServerId, "topic_upgrade_startdownload", &packet, nullptr, {},
        [self](const std::shared_ptr<MQMessage>& answer) {
            if (const auto transfer = self.lock()) transfer->setError(answer->errorInfo());
        },
        kTimeout);
    if (id == 0) {
        {
            std::lock_guard lock(mMutex);
            mError = {ErrorCode_Failed, ""};
        }
        ORV_LOG(2, "OrvDownload", "msgid == 0");
    }
    return {};
}

ErrorInfo RemoteDownload::stop() { return {ErrorCode_NotSupported, ""}; }

ErrorInfo RemoteDownload::cancel() { return {ErrorCode_NotSupported, ""}; }

ErrorInfo RemoteDownload::getProgress(float& progress) {
    std::unique_lock lock(mMutex);
    progress = mPosition;
    if (mWatch != Watch::Idle) return {};
    const std::weak_ptr<RemoteDownload> self = shared_from_this();
    // Before the push, whose answer may come before it returns.
    mWatch = Watch::Asking;
    lock.unlock();

    const ErrorInfo result = sendPoll(self);
    setError(result);
    lock.lock();
    progress = mPosition;
    return result;
}

ErrorInfo RemoteDownload::sendPoll(const std::weak_ptr<RemoteDownload>& self) {
    const auto link = connection();
    if (!link) {
        setWatch(Watch::Idle);
        return {ErrorCode_Failed, ""};
    }
    const auto packet = versionPacket(*mVersion);
    const auto id = link->pushMessageRequestTo(
        mServerId, "topic_upgrade_getdownloadpos", &packet, nullptr, {},
        [self](const std::shared_ptr<MQMessage>& answer) {
            if (const auto transfer = self.lock()) transfer->onPollResponse(*answer);
        },
        kTimeout);
    if (id == 0) {
        ORV_LOG(2, "OrvDownload", "msgid == 0");
        setWatch(Watch::Idle);
    }
    return {};
}

void RemoteDownload::onPollResponse(const MQMessage& answer) {
    PeerProgress progress;
    ErrorInfo error = answer.errorInfo();
    if (!error) error = readProgress(answer, progress);
    if (error) {
        setError(error);
        setWatch(Watch::Ended);
        return;
    }
    std::lock_guard lock(mMutex);
    mFinished = progress.finish.value_or(mFinished);
    mPosition = progress.pos.value_or(mPosition);
    mWatch = Watch::Idle;
}

ErrorInfo RemoteDownload::getFileName(std::string&) { return {ErrorCode_NotSupported, ""}; }

ErrorInfo RemoteDownload::getError() {
    std::lock_guard lock(mMutex);
    return mError;
}

bool RemoteDownload::finish() {
    std::lock_guard lock(mMutex);
    return mFinished;
}

std::shared_ptr<MQConnection> RemoteDownload::connection() const {
    return mClient && mVersion ? mClient->connection() : nullptr;
}

void RemoteDownload::setError(const ErrorInfo& error) {
    if (!error) return;
    {
        std::lock_guard lock(mMutex);
        mError = error;
    }
    ORV_LOG(2, "OrvDownload", "remote download fail! errcode:%d", error.errorCode());
}

void RemoteDownload::setWatch(Watch watch) {
    std::lock_guard lock(mMutex);
    mWatch = watch;
}

}  // namespace Tarnwick::OrvUpdate
