// One request to many nodes of the cluster, while it runs.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <set>
#include <string>

#include "Public/Base/SharedBuffer.h"
#include "VersionRequest.h"

namespace Tarnwick::OrvUpdate {

/// Asks each node, takes what it tells, and reports it to the host; `pending` decides which report is the last. That
/// one begins when the others have returned, so that no host hears of a node after the end. Lives in the callbacks of
/// its pushes alone; holds its VersionRequest weakly, and stops without a word when that has gone.
class ClusterBroadcast : public std::enable_shared_from_this<ClusterBroadcast> {
public:
    using Link = std::shared_ptr<Tarnwick::MQ::MQConnection>;

    /// @param nodes how many will be asked, at least one
    ClusterBroadcast(std::weak_ptr<VersionRequest> request, std::string topic, size_t nodes, RequestFinished callback);
    virtual ~ClusterBroadcast() = default;

    /// @param link where the node is reached; null reports it as done, on this thread
    void ask(const std::string& nodeId, const Link& link, const Public::Base::SharedBuffer& body);

protected:
    struct Report {
        std::string nodeId;
        ErrorInfo result;
        bool answered = false;  // false: the node has no connection
    };

    /// Takes the document of a node that answered well. On several threads at once.
    virtual void take(VersionRequest& request, const std::string& nodeId, const std::string& document) = 0;
    /// The end, once: reports the last node, after the cloud where that is asked.
    virtual void finish(VersionRequest& request, const Report& last) = 0;

    const std::weak_ptr<VersionRequest> mRequest;
    const std::string mTopic;
    const RequestFinished mCallback;

private:
    void onResponse(const std::string& nodeId, const std::shared_ptr<Tarnwick::MQ::MQMessage>& message);
    void report(VersionRequest& request, const Report& report);
    /// A report has returned; the last one to do so does the end.
    void leave(VersionRequest& request);

    std::atomic<int64_t> mPending;     // nodes not yet finished
    std::atomic<int64_t> mUnreported;  // nodes whose report has not returned
    Report mLast;                      // written by the last report, read by whoever brings mUnreported to 0
};

/// Gathers the catalogues of the nodes, and lets them replace the entries learnt from nodes at its end.
class VersionBroadcast : public ClusterBroadcast {
public:
    using ClusterBroadcast::ClusterBroadcast;

protected:
    void take(VersionRequest& request, const std::string& nodeId, const std::string& document) override;
    void finish(VersionRequest& request, const Report& last) override;

private:
    std::mutex mMergeMutex;  // guards the set
    VersionSet mMergedVersions;
};

/// Adds the notes of the nodes as they come.
class HistoryBroadcast : public ClusterBroadcast {
public:
    using ClusterBroadcast::ClusterBroadcast;

protected:
    void take(VersionRequest& request, const std::string& nodeId, const std::string& document) override;
    void finish(VersionRequest& request, const Report& last) override;
};

inline constexpr char kTopicRequestVersion[] = "topic_upgrade_requestversion";
inline constexpr char kTopicRequestReleaseHistory[] = "topic_upgrade_requestreleasehistory";

}  // namespace Tarnwick::OrvUpdate
