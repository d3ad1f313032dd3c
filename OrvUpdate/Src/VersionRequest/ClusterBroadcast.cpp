#include "VersionRequest/ClusterBroadcast.h"

#include "OrvVersion.h"
#include "OrvVersion/ReleaseHistory.h"
#include "TWProtocol/TWProtoUpgrade.h"

namespace Tarnwick::OrvUpdate {

using Tarnwick::MQ::MQMessage;

namespace {

constexpr unsigned int kRequestTimeoutMs = 60000;

/// The call that follows once the cloud has been asked.
Function<void(const ErrorInfo&)> callAfterCloud(const std::weak_ptr<VersionRequest>& request,
                                                const RequestFinished& callback) {
    return [request, callback](const ErrorInfo& result) {
        if (const auto self = request.lock()) callback("", result, true);
    };
}

}  // namespace

ClusterBroadcast::ClusterBroadcast(std::weak_ptr<VersionRequest> request, std::string topic, size_t nodes,
                                   RequestFinished callback)
    : mRequest(std::move(request)),
      mTopic(std::move(topic)),
      mCallback(std::move(callback)),
      mPending(static_cast<int64_t>(nodes)),
      mUnreported(static_cast<int64_t>(nodes)) {}

void ClusterBroadcast::ask(const std::string& nodeId, const Link& link, const Public::Base::SharedBuffer& body) {
    if (link) {
        // A link that refuses the push leaves the broadcast open: hosts know that as a request without an end.
        link->pushStringRequestTo(
            nodeId, mTopic, body, nullptr, Tarnwick::Protocol::TWProtoMessageLevel_Normal,
            [self = shared_from_this(), nodeId](const std::shared_ptr<MQMessage>& message) {
                self->onResponse(nodeId, message);
            },
            kRequestTimeoutMs);
        return;
    }
    if (const auto request = mRequest.lock()) report(*request, {"", ErrorInfo(0, ""), false});
}

void ClusterBroadcast::onResponse(const std::string& nodeId, const std::shared_ptr<MQMessage>& message) {
    const auto request = mRequest.lock();
    if (!request) return;
    const ErrorInfo result = message->errorInfo();
    if (!result) {
        Tarnwick::Protocol::TWProtoUpgradePkt packet;
        message->parseBody(&packet, false);
        take(*request, nodeId, packet.body);
    }
    report(*request, {nodeId, result, true});
}

void ClusterBroadcast::report(VersionRequest& request, const Report& report) {
    if (--mPending == 0) {
        mLast = report;
        leave(request);
        return;
    }
    try {
        mCallback(report.nodeId, report.result, false);
    } catch (...) {
        leave(request);  // what a host throws is not to cost it the last call
        throw;
    }
    leave(request);
}

void ClusterBroadcast::leave(VersionRequest& request) {
    if (--mUnreported == 0) finish(request, mLast);
}

void VersionBroadcast::take(VersionRequest& request, const std::string& nodeId, const std::string& document) {
    VersionSet told;
    OrvVersion::parseVersion(request.getIOWorker(), document, request.getDownloadDir(), told, nodeId,
                             request.getCurVersion());
    std::lock_guard lock(mMergeMutex);
    mMergedVersions.insert(told.begin(), told.end());
}

void VersionBroadcast::finish(VersionRequest& request, const Report& last) {
    VersionSet merged;
    {
        std::lock_guard lock(mMergeMutex);
        merged.swap(mMergedVersions);
    }
    request.updateVersions(merged, StoragePosition_Node);
    const bool asksCloud = mTopic == kTopicRequestVersion;
    mCallback(last.nodeId, last.result, !asksCloud);
    if (asksCloud) request.requestVersionFromHttp(callAfterCloud(mRequest, mCallback), true);
}

void HistoryBroadcast::take(VersionRequest& request, const std::string&, const std::string& document) {
    ReleaseHistorySet told;
    ReleaseHistory::parseReleaseHistory(document, told, request.getCurVersion());
    request.addReleaseHistory(told);
}

void HistoryBroadcast::finish(VersionRequest& request, const Report& last) {
    // A node without a connection ends the request at once, also where the cloud would follow.
    const bool asksCloud = last.answered && mTopic == kTopicRequestReleaseHistory;
    mCallback(last.nodeId, last.result, !asksCloud);
    if (asksCloud) request.requestReleaseHistoryFromHttp(callAfterCloud(mRequest, mCallback), false);
}

}  // namespace Tarnwick::OrvUpdate
