#include "MQ/Node.h"

#include "MQ/Link.h"
#include "Public/Base/ErrorInfo.h"

namespace Tarnwick::MQ {

using Public::Base::ErrorCode_LinkDead;
using Public::Base::ErrorCode_NotSupported;
using Public::Base::ErrorCode_RequestTimeout;
using Public::Base::ErrorInfo;

std::shared_ptr<Node> Node::join(std::shared_ptr<Bus> bus, const NodeOptions& options, Role role) {
    if (!bus) return nullptr;
    auto node = std::make_shared<Node>(bus, options, role);
    const std::weak_ptr<Node> weak = node;
    Bus::Endpoint endpoint;
    endpoint.onFrame = [weak](const std::string& from, const std::string& frame) {
        if (const auto self = weak.lock()) self->onFrame(from, frame);
    };
    endpoint.onLost = [weak](const std::string& peer) {
        if (const auto self = weak.lock()) self->onLost(peer);
    };
    if (!bus->join(options.id, endpoint)) {
        node->mLeft = true;  // the id is another's
        return nullptr;
    }
    node->tellPresence();
    return node;
}

Node::Node(std::shared_ptr<Bus> bus, const NodeOptions& options, Role role)
    : mBus(std::move(bus)),
      mOptions(options),
      mRole(role),
      mServerId(role == Role::Client || !options.serverId.empty() ? options.serverId : options.id),
      mDeadlines("OrvQueueTimer") {
    if (mRole == Role::SystemServer) mPresence.own(ownInfo(), mOptions.id);
}

Node::~Node() { leave(); }

void Node::leave() {
    if (mLeft.exchange(true)) return;
    mBus->leave(mOptions.id);
    for (const auto& entry : mPending.close()) fail(entry, ErrorCode_LinkDead);
    std::map<std::string, std::shared_ptr<MQConnection>> links;  // go after the lock is given back
    std::lock_guard lock(mMutex);
    links.swap(mLinks);
}

std::shared_ptr<MQConnection> Node::link(const std::string& node) {
    std::lock_guard lock(mMutex);
    auto& link = mLinks[node];
    if (!link) link = std::make_shared<Link>(weak_from_this(), mOptions.id, node);
    return link;
}

std::shared_ptr<MQConnection> Node::linkToServer(const std::string& serverId) {
    std::string node = mPresence.nodeOf(serverId);
    if (node.empty()) node = serverId;
    if (node == serverId && !usable(node)) {
        TWServerInfo info;
        if (!mPresence.find(serverId, info, now())) return nullptr;
    }
    return link(node);
}

bool Node::usable(const std::string& node) { return !mLeft && (node == mOptions.id || mBus->linked(mOptions.id, node)); }

bool Node::send(const std::string& peer, const Frame& frame) {
    const std::string bytes = frame.encode();
    if (mLeft || bytes.size() > mBus->maxFrame()) return false;
    if (peer != mOptions.id) return mBus->send(mOptions.id, peer, bytes);
    // A node's link to itself does not need the bus.
    return mBus->post([weak = weak_from_this(), bytes, peer] {
        if (const auto self = weak.lock()) self->onFrame(peer, bytes);
    });
}

uint32_t Node::request(const std::string& peer, Frame frame, const ResponseCallback& callback, unsigned int timeoutMs) {
    if (!usable(peer)) return 0;
    const uint32_t id = mPending.add(callback, peer);
    if (id == 0) return 0;
    const auto deadline = mDeadlines.after(timeoutMs, [weak = weak_from_this(), id] {
        const auto self = weak.lock();
        PendingRequests::Entry entry;
        if (self && self->mPending.take(id, entry)) self->fail(entry, ErrorCode_RequestTimeout);
    });
    if (!mPending.setDeadline(id, deadline)) mDeadlines.cancel(deadline);
    frame.kind = Frame::Request;
    frame.messageId = id;
    frame.sender = mOptions.id;
    frame.waiter = mOptions.id;
    if (send(peer, frame)) return id;
    PendingRequests::Entry entry;
    // Where the callback has run meanwhile, the request counts as sent.
    if (!mPending.take(id, entry)) return id;
    mDeadlines.cancel(entry.deadline);
    return 0;
}

void Node::finish(const PendingRequests::Entry& entry, const std::shared_ptr<MQMessage>& answer) {
    mDeadlines.cancel(entry.deadline);
    const auto run = [callback = entry.callback, answer] { callback(answer); };
    if (!mBus->post(run)) run();
}

void Node::fail(const PendingRequests::Entry& entry, int code) {
    auto frame = std::make_shared<Frame>();
    frame->kind = Frame::Response;
    frame->errorCode = code;
    frame->sender = entry.link;
    frame->addressee = mOptions.id;
    finish(entry, std::make_shared<MQMessage>(frame, std::weak_ptr<MQConnection>()));
}

void Node::onFrame(const std::string& from, const std::string& bytes) {
    auto frame = std::make_shared<Frame>();
    if (!Frame::decode(bytes, *frame)) return;
    switch (frame->kind) {
        case Frame::Request: return onRequest(from, frame);
        case Frame::Response: return onResponse(from, frame);
        case Frame::Announce: return onAnnounce(from, *frame);
        case Frame::List: return onList(from, *frame);
        case Frame::Hello: {
            {
                std::lock_guard lock(mMutex);
                mClients[from] = now();
            }
            return tellPresenceTo(from);
        }
        default: return;
    }
}

void Node::onRequest(const std::string& from, const std::shared_ptr<const Frame>& frame) {
    // Handlers may block, so each runs as a task of its own and the link goes on.
    mBus->post([weak = weak_from_this(), from, frame] {
        const auto self = weak.lock();
        if (!self || self->mLeft) return;
        const auto connection = self->link(from);
        const auto message = std::make_shared<MQMessage>(frame, connection);
        bool known = false;
        auto response = self->mSubscriptions.dispatch(frame->topic, message, known);
        if (!known) response = message->buildResponse(ErrorInfo(ErrorCode_NotSupported, ""), nullptr);
        if (response) connection->pushResponse(response, false);
    });
}

void Node::onResponse(const std::string& from, const std::shared_ptr<const Frame>& frame) {
    PendingRequests::Entry entry;
    if (frame->waiter == mOptions.id && mPending.take(frame->messageId, entry)) {
        finish(entry, std::make_shared<MQMessage>(frame, link(from)));
    }
}

void Node::onLost(const std::string& peer) {
    mPresence.lost(peer);
    {
        std::lock_guard lock(mMutex);
        mClients.erase(peer);
    }
    for (const auto& entry : mPending.takeLink(peer)) fail(entry, ErrorCode_LinkDead);
}

void Node::onAnnounce(const std::string& from, const Frame& frame) {
    TWServerInfo info;
    if (mRole == Role::Client || !Protocol::TWPacket::parseBytes(frame.body, info) || info.serverId.empty()) return;
    // One who is new has not heard of this node either.
    if (mPresence.heard(info, from, now())) tellPresenceTo(from);
}

void Node::onList(const std::string& from, const Frame& frame) {
    ServerList list;
    if (mRole == Role::Client && from == mServerId && decodeServerList(frame.body, list)) mPresence.replace(list);
}

TWServerInfo Node::ownInfo() const {
    TWServerInfo info;
    info.serverId = mServerId;
    info.systemId = mOptions.systemId;
    info.version = mOptions.version;
    for (const auto& address : mOptions.addresses) {
        info.addresses += address.getIP() + " " + std::to_string(address.getPort()) + "\n";
    }
    info.reachable = true;
    info.ready = mOptions.ready;
    return info;
}

void Node::tellPresence() {
    if (mLeft) return;
    if (mRole == Role::Client) {
        if (!mServerId.empty()) tellPresenceTo(mServerId);
    } else {
        for (const auto& peer : mBus->peers(mOptions.id)) tellPresenceTo(peer);
    }
    mDeadlines.after(Presence::kAnnounceEveryMs, [weak = weak_from_this()] {
        if (const auto self = weak.lock()) self->tellPresence();
    });
}

void Node::tellPresenceTo(const std::string& peer) {
    Frame frame;
    frame.sender = mOptions.id;
    frame.addressee = peer;
    bool isClient = false;
    {
        std::lock_guard lock(mMutex);
        isClient = mClients.contains(peer);
    }
    if (mRole == Role::Client) {
        frame.kind = Frame::Hello;
    } else if (isClient) {
        frame.kind = Frame::List;
        frame.body = encodeServerList(mPresence.list(mOptions.systemId, now()));
    } else if (mRole == Role::SystemServer) {
        frame.kind = Frame::Announce;
        frame.body = Protocol::TWPacket::serializeAsBytes(ownInfo()).toStdString();
    } else {
        return;
    }
    frame.hasBody = !frame.body.empty();
    send(peer, frame);
}

}  // namespace Tarnwick::MQ
