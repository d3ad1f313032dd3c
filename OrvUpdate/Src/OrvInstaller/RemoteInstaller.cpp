#include "RemoteInstaller.h"

#include "EngineLog.h"
#include "PeerDocuments.h"
#include "Public/Base/Time.h"
#include "VersionRequest.h"

namespace Tarnwick::OrvUpdate {

using namespace Public::Base;
using Tarnwick::MQ::MQConnection;
using Tarnwick::MQ::MQMessage;
using Tarnwick::MQ::TWMQClient;

namespace {

// Milliseconds.
constexpr unsigned kRequestTimeout = 60000;
constexpr uint64_t kPollGate = 5000;
constexpr uint64_t kInstallLimit = 180000;

/// Passing states of the queue: the peer restarts while it installs.
bool passes(const ErrorInfo& error) {
    return error.errorCode() == ErrorCode_RequestTimeout || error.errorCode() == ErrorCode_LinkDead ||
           error.errorCode() == ErrorCode_PeerNotReady;
}

}  // namespace

std::shared_ptr<IInstaller> IInstaller::createRemoteInstaller(const std::shared_ptr<IVersionRequest>& request,
                                                              const std::shared_ptr<IVersion>& version,
                                                              const std::string& serverId) {
    const auto own = std::dynamic_pointer_cast<VersionRequest>(request);
    return std::make_shared<RemoteInstaller>(own ? own->getMQClient() : nullptr, version, serverId);
}

RemoteInstaller::RemoteInstaller(const std::shared_ptr<TWMQClient>& client, const std::shared_ptr<IVersion>& version,
                                 const std::string& serverId)
    : mMQClient(client), mVersion(version), mServerId(serverId) {}

ErrorInfo RemoteInstaller::start(const std::string&, bool, const Function<void()>&) {
    {
        std::lock_guard lock(mMutex);
        mStartTime = Time::getCurrentMilliSecond();
    }
    const ErrorInfo result = sendStart();
    if (result) setError(result);
    return result;
}

ErrorInfo RemoteInstaller::sendStart() {
    const auto link = connection();
    if (!link) return {ErrorCode_Failed, ""};
    if (push(*link, "topic_upgrade_startinstall", &RemoteInstaller::onStartResponse) == 0) {
        ORV_LOG(2, "OrvInstaller", "msgid == 0");
        keepError({ErrorCode_Failed, ""});
    }
    return {};
}

unsigned RemoteInstaller::push(MQConnection& link, const char* topic,
                               void (RemoteInstaller::*onAnswer)(const MQMessage&)) {
    const auto packet = versionPacket(*mVersion);
    return link.pushMessageRequestTo(
        mServerId, topic, &packet, nullptr, {},
        [weak = weak_from_this(), onAnswer](const std::shared_ptr<MQMessage>& answer) {
            if (const auto self = weak.lock()) ((*self).*onAnswer)(*answer);
        },
        kRequestTimeout);
}

void RemoteInstaller::onStartResponse(const MQMessage& answer) { setError(answer.errorInfo()); }

ErrorInfo RemoteInstaller::stop() { return {ErrorCode_NotSupported, ""}; }

ErrorInfo RemoteInstaller::cancel() { return {ErrorCode_NotSupported, ""}; }

ErrorInfo RemoteInstaller::getProgress(float& progress) {
    std::unique_lock lock(mMutex);
    const uint64_t now = Time::getCurrentMilliSecond();
    if (!mLastPollTime || now - *mLastPollTime >= kPollGate) {
        // Before the push, whose answer may come before it returns.
        mLastPollTime = now;
        const bool over = mFinished || mError;
        lock.unlock();
        if (!over) poll();
        lock.lock();
    }
    progress = mProgress;
    return {};
}

void RemoteInstaller::poll() {
    const auto link = connection();
    if (!link) {
        endPoll();
        ORV_LOG(2, "OrvInstaller", "connection empty()");
    } else if (push(*link, "topic_upgrade_getinstallpos", &RemoteInstaller::onPollResponse) == 0) {
        ORV_LOG(2, "OrvInstaller", "msgid == 0");
        endPoll();
    }
}

void RemoteInstaller::onPollResponse(const MQMessage& answer) {
    if (const ErrorInfo error = takeAnswer(answer)) {
        ORV_LOG(2, "OrvInstaller", "remote installer fail! errcode:%d", error.errorCode());
        keepError(error);
    }
    endPoll();
}

ErrorInfo RemoteInstaller::takeAnswer(const MQMessage& answer) {
    const ErrorInfo error = answer.errorInfo();
    const bool taken = setError(error);
    if (error) return taken ? error : ErrorInfo();
    PeerProgress heard;
    if (const ErrorInfo unreadable = readProgress(answer, heard)) return unreadable;
    std::lock_guard lock(mMutex);
    mFinished = heard.finish.value_or(mFinished);
    mProgress = heard.pos.value_or(mProgress);
    return {};
}

bool RemoteInstaller::finish() {
    std::lock_guard lock(mMutex);
    return mFinished;
}

ErrorInfo RemoteInstaller::getError() {
    std::unique_lock lock(mMutex);
    const uint64_t now = Time::getCurrentMilliSecond();
    if (!mStartTime || now - *mStartTime < kInstallLimit) return mError;
    mFinished = true;
    lock.unlock();
    ORV_LOG(2, "OrvInstaller", "remote install timeout");
    return {ErrorCode_Failed, ""};
}

std::shared_ptr<MQConnection> RemoteInstaller::connection() const {
    const bool usable = mMQClient && mVersion && !weak_from_this().expired();
    return usable ? mMQClient->connection() : nullptr;
}

bool RemoteInstaller::setError(const ErrorInfo& error) {
    if (passes(error)) return false;
    keepError(error);
    if (error) ORV_LOG(2, "OrvInstaller", "remote install fail! errcode:%d", error.errorCode());
    return true;
}

void RemoteInstaller::keepError(const ErrorInfo& error) {
    std::lock_guard lock(mMutex);
    mError = error;
}

void RemoteInstaller::endPoll() {
    std::lock_guard lock(mMutex);
    mLastPollTime.reset();
}

}  // namespace Tarnwick::OrvUpdate
