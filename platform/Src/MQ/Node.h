// A node of the queue: what clients and servers have in common.
#pragma once

#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "MQ/Deadlines.h"
#include "MQ/Frame.h"
#include "MQ/Membership.h"
#include "MQ/PendingRequests.h"
#include "MQ/Subscriptions.h"
#include "Tarnwick/MQ/Bus.h"

namespace Tarnwick::MQ {

/// Turns frames into requests, handlers' results and answers. Held by the queue object that a host owns, and weakly by
/// everything else; what it was given lives on in tasks only until they have run.
class Node : public std::enable_shared_from_this<Node> {
public:
    Node(std::shared_ptr<Bus> bus, std::string id, std::shared_ptr<Membership> membership);

    /// Joins the bus. @return false when the id is empty or taken
    bool open();
    /// Leaves the bus; callbacks that still wait run with -203, on the pool. May be called inside a handler or
    /// callback.
    void close();

    const std::string& id() const { return mId; }
    Subscriptions& subscriptions() { return mSubscriptions; }

    /// One object a peer, for as long as the node is open; null afterwards.
    std::shared_ptr<MQConnection> linkTo(const std::string& peer);
    /// False when frames to that peer are known not to arrive.
    bool usable(const std::string& peer);

    /// Sends a request by way of that peer; `frame` lacks id, token and sender. @return the id, or 0
    uint32_t push(const std::string& peer, Frame frame, const ResponseCallback& callback, unsigned timeoutMs);
    /// Sends an answer to the node that waits for it.
    bool respond(Frame answer);
    /// Passes a request on by way of that peer. When that fails the queue answers the request itself.
    bool forward(const std::string& peer, Frame request);

private:
    void onFrame(const std::string& from, const std::string& head, const Public::Base::SharedBuffer& tail);
    void onLost(const std::string& peer);
    void onAnswer(const std::shared_ptr<const Frame>& answer, const std::string& from);
    void serve(const std::shared_ptr<const Frame>& request, const std::string& from);
    void answerUnserved(const Frame& request);
    void expire(uint32_t id);
    void beat();
    void armBeat(uint64_t next);
    bool transmit(const std::string& to, const FrameParts& parts);
    void fail(PendingRequests::Entry entry, int code);
    void call(PendingRequests::Entry entry, std::shared_ptr<const Frame> answer, const std::string& from);
    void post(std::function<void()> task);

    const std::shared_ptr<Bus> mBus;
    const std::string mId;
    const std::shared_ptr<Membership> mMembership;
    const std::shared_ptr<Deadlines> mDeadlines;
    Subscriptions mSubscriptions;
    PendingRequests mPending;
    bool mJoined = false;  ///< set before anyone else sees the node
    std::atomic<bool> mClosed{false};
    std::mutex mLinkMutex;
    std::map<std::string, std::shared_ptr<MQConnection>> mLinks;
    std::mutex mBeatMutex;
    std::optional<Deadlines::Key> mBeatKey;
};

}  // namespace Tarnwick::MQ
