// One node of the queue, above any bus: requests and answers, subscriptions, presence.
#pragma once

#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "MQ/Deadlines.h"
#include "MQ/Frame.h"
#include "MQ/PendingRequests.h"
#include "MQ/Presence.h"
#include "MQ/Subscriptions.h"
#include "Tarnwick/MQ/Bus.h"

namespace Tarnwick::MQ {

/// What all three kinds of queue object share. Held by the queue object, referred to weakly by bus, links and timers.
class Node : public std::enable_shared_from_this<Node> {
public:
    enum class Role { Client, Server, SystemServer };

    /// Joins the bus. @return null when the id is empty or taken
    static std::shared_ptr<Node> join(std::shared_ptr<Bus> bus, const NodeOptions& options, Role role);
    Node(std::shared_ptr<Bus> bus, const NodeOptions& options, Role role);
    ~Node();
    /// Leaves the bus. No handler begins afterwards; callbacks that still wait run with -203.
    void leave();

    const NodeOptions& options() const { return mOptions; }
    const std::string& serverId() const { return mServerId; }
    Subscriptions& subscriptions() { return mSubscriptions; }
    const Presence& presence() const { return mPresence; }
    uint64_t now() const { return mDeadlines.now(); }

    /// The link to that node, made on first use.
    std::shared_ptr<MQConnection> link(const std::string& node);
    /// The link on which that server is reached; null when neither the cluster nor the bus knows it.
    std::shared_ptr<MQConnection> linkToServer(const std::string& serverId);
    bool usable(const std::string& node);

    /// Sends a request on the link to `peer`. @return its id, or 0 when it could not be sent
    uint32_t request(const std::string& peer, Frame frame, const ResponseCallback& callback, unsigned int timeoutMs);
    bool send(const std::string& peer, const Frame& frame);

private:
    void onFrame(const std::string& from, const std::string& bytes);
    void onLost(const std::string& peer);
    void onRequest(const std::string& from, const std::shared_ptr<const Frame>& frame);
    void onResponse(const std::string& from, const std::shared_ptr<const Frame>& frame);
    void onAnnounce(const std::string& from, const Frame& frame);
    void onList(const std::string& from, const Frame& frame);
    void finish(const PendingRequests::Entry& entry, const std::shared_ptr<MQMessage>& answer);
    void fail(const PendingRequests::Entry& entry, int code);
    void tellPresence();
    void tellPresenceTo(const std::string& peer);
    TWServerInfo ownInfo() const;

    const std::shared_ptr<Bus> mBus;
    const NodeOptions mOptions;
    const Role mRole;
    const std::string mServerId;
    std::atomic<bool> mLeft{false};
    Subscriptions mSubscriptions;
    PendingRequests mPending;
    Presence mPresence;
    std::mutex mMutex;  // guards the two below
    std::map<std::string, std::shared_ptr<MQConnection>> mLinks;
    std::map<std::string, uint64_t> mClients;  // when each was last heard
    Deadlines mDeadlines;
};

}  // namespace Tarnwick::MQ
