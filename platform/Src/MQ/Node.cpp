#include "MQ/Node.h"

#include <exception>

#include "MQ/Link.h"
#include "Public/Base/Printer.h"

namespace Tarnwick::MQ {

namespace {

/// A request that has been passed on so often runs in a circle.
constexpr uint32_t kMostHops = 8;

Frame answerTo(const Frame& request, int code) {
    Frame answer;
    answer.kind = FrameKind_Answer;
    answer.messageId = request.messageId;
    answer.token = request.token;
    answer.addressee = request.waiter;
    answer.waiter = request.waiter;
    answer.topic = request.topic;
    answer.errorCode = code;
    return answer;
}

std::shared_ptr<MQMessage> callHandler(const RequestHandler& handler, const std::shared_ptr<MQMessage>& message) {
    try {
        return handler(message);
    } catch (const std::exception& error) {
        Public::Base::printer(Public::Base::LOG_Level_Error, "platform/Src/MQ", __func__, __LINE__,
                              "a handler of %s threw: %s",
                              {Public::Base::Value(message->topic()), Public::Base::Value(std::string(error.what()))});
        return message->buildResponse(Public::Base::ErrorInfo(Public::Base::ErrorCode_Failed, ""), nullptr);
    }
}

}  // namespace

Node::Node(std::shared_ptr<Bus> bus, std::string id, std::shared_ptr<Membership> membership)
    : mBus(std::move(bus)), mId(std::move(id)), mMembership(std::move(membership)), mDeadlines(Deadlines::shared()) {}

bool Node::open() {
    const auto weak = weak_from_this();
    Bus::Endpoint endpoint;
    endpoint.onFrame = [weak](const std::string& from, const std::string& bytes) {
        if (const auto node = weak.lock()) node->onFrame(from, bytes, {});
    };
    endpoint.onParts = [weak](const std::string& from, const std::string& head,
                              const Public::Base::SharedBuffer& tail) {
        if (const auto node = weak.lock()) node->onFrame(from, head, tail);
    };
    endpoint.onLost = [weak](const std::string& peer) {
        if (const auto node = weak.lock()) node->onLost(peer);
    };
    mJoined = mBus->join(mId, endpoint);
    if (!mJoined) return false;
    beat();
    return true;
}

void Node::close() {
    if (mClosed.exchange(true)) return;
    mSubscriptions.close();
    {
        std::lock_guard lock(mBeatMutex);
        if (mBeatKey) mDeadlines->cancel(*mBeatKey);
    }
    if (mJoined) mBus->leave(mId);  // else the id is another node's
    for (auto& entry : mPending.close()) fail(std::move(entry), Public::Base::ErrorCode_LinkDead);
    std::map<std::string, std::shared_ptr<MQConnection>> links;
    std::lock_guard lock(mLinkMutex);
    links.swap(mLinks);
}

std::shared_ptr<MQConnection> Node::linkTo(const std::string& peer) {
    std::lock_guard lock(mLinkMutex);
    if (mClosed) return nullptr;
    auto& link = mLinks[peer];
    if (!link) link = std::make_shared<Link>(weak_from_this(), mId, peer);
    return link;
}

bool Node::usable(const std::string& peer) {
    if (mClosed) return false;
    return peer == mId || (mBus->linked(mId, peer) && mMembership->alive(peer));
}

uint32_t Node::push(const std::string& peer, Frame frame, const ResponseCallback& callback, unsigned timeoutMs) {
    if (!usable(peer)) return 0;
    const auto entry = mPending.add(peer, frame.topic, callback);
    if (!entry) return 0;
    frame.kind = FrameKind_Request;
    frame.messageId = entry->id;
    frame.token = entry->token;
    frame.sender = mId;
    frame.waiter = mId;
    const auto key = mDeadlines->at(mDeadlines->now() + timeoutMs, [weak = weak_from_this(), id = entry->id] {
        if (const auto node = weak.lock()) node->expire(id);
    });
    if (!mPending.setDeadline(entry->id, key)) mDeadlines->cancel(key);
    if (transmit(peer, encodeParts(frame))) return entry->id;
    // Whoever took the entry meanwhile calls the callback; then the push counts as made.
    if (!mPending.take(entry->id)) return entry->id;
    mDeadlines->cancel(key);
    return 0;
}

bool Node::respond(Frame answer) {
    if (answer.kind != FrameKind_Answer) return false;
    answer.sender = mId;
    const auto parts = encodeParts(answer);
    if (parts.size() <= mBus->maxFrame()) return transmit(answer.waiter, parts);
    // An answer that the bus cannot carry would leave the other side waiting for its time-out.
    auto failure = answerTo(answer, Public::Base::ErrorCode_Failed);
    failure.sender = mId;
    transmit(answer.waiter, encodeParts(failure));
    return false;
}

bool Node::forward(const std::string& peer, Frame request) {
    if (request.kind != FrameKind_Request) return false;
    if (request.hops >= kMostHops) {
        respond(answerTo(request, Public::Base::ErrorCode_NoSuchNode));
        return false;
    }
    ++request.hops;
    if (usable(peer) && transmit(peer, encodeParts(request))) return true;
    respond(answerTo(request, Public::Base::ErrorCode_LinkDead));
    return false;
}

/// What a node sends to itself does not depend on the bus.
bool Node::transmit(const std::string& to, const FrameParts& parts) {
    if (mClosed || parts.size() > mBus->maxFrame()) return false;
    if (to != mId) return mBus->sendParts(mId, to, parts.head, parts.tail);
    return mBus->post([weak = weak_from_this(), parts] {
        if (const auto node = weak.lock()) node->onFrame(node->mId, parts.head, parts.tail);
    });
}

/// Runs on the link's turn, so it only sorts: handlers and callbacks get tasks of their own and cannot hold up the
/// link.
void Node::onFrame(const std::string& from, const std::string& head, const Public::Base::SharedBuffer& tail) {
    const auto frame = decodeParts(head, tail);
    if (!frame || mClosed) return;
    switch (frame->kind) {
        case FrameKind_Request:
            // A sender speaks for itself; only who passes a request on names another node that waits.
            if (frame->sender == frame->waiter && frame->sender != from) return;
            post([weak = weak_from_this(), frame, from] {
                if (const auto node = weak.lock()) node->serve(frame, from);
            });
            return;
        case FrameKind_Answer:
            onAnswer(frame, from);
            return;
        default:
            mMembership->receive(from, *frame, mDeadlines->now());
    }
}

void Node::onAnswer(const std::shared_ptr<const Frame>& answer, const std::string& from) {
    if (answer->waiter != mId) return;
    if (auto entry = mPending.takeAnswered(answer->messageId, answer->token)) call(std::move(*entry), answer, from);
}

void Node::onLost(const std::string& peer) {
    if (mClosed) return;
    mMembership->lost(peer);
    for (auto& entry : mPending.takeSentTo(peer)) fail(std::move(entry), Public::Base::ErrorCode_LinkDead);
}

void Node::expire(uint32_t id) {
    if (auto entry = mPending.take(id)) fail(std::move(*entry), Public::Base::ErrorCode_RequestTimeout);
}

/// The first response goes out at once, not after the handlers that follow.
void Node::serve(const std::shared_ptr<const Frame>& request, const std::string& from) {
    const auto message = std::make_shared<MQMessage>(request, linkTo(from));
    bool called = false;
    bool answered = false;
    for (const auto& entry : mSubscriptions.of(request->topic)) {
        if (!mSubscriptions.begin(entry)) continue;
        called = true;
        const auto response = callHandler(entry->handler, message);
        if (!response || answered) continue;
        answered = true;
        respond(response->frame());
    }
    if (!called && !mClosed) answerUnserved(*request);
}

/// Better than a time-out: nobody here serves the topic, and nobody here passes a request on to another node.
void Node::answerUnserved(const Frame& request) {
    const bool mine = request.addressee.empty() || request.addressee == mId;
    respond(answerTo(request, mine ? Public::Base::ErrorCode_NotSupported : Public::Base::ErrorCode_NoSuchNode));
}

void Node::beat() {
    if (mClosed) return;
    armBeat(mMembership->tick(mDeadlines->now()));
}

void Node::armBeat(uint64_t next) {
    std::lock_guard lock(mBeatMutex);
    if (next == kNever || mClosed) return;
    mBeatKey = mDeadlines->at(next, [weak = weak_from_this()] {
        const auto node = weak.lock();
        if (!node) return;
        node->post([weak] {
            if (const auto beating = weak.lock()) beating->beat();
        });
    });
}

void Node::fail(PendingRequests::Entry entry, int code) {
    auto answer = std::make_shared<Frame>();
    answer->kind = FrameKind_Answer;
    answer->messageId = entry.id;
    answer->token = entry.token;
    answer->sender = entry.peer;
    answer->addressee = mId;
    answer->waiter = mId;
    answer->topic = entry.topic;
    answer->errorCode = code;
    const auto peer = entry.peer;
    call(std::move(entry), std::move(answer), peer);
}

void Node::call(PendingRequests::Entry entry, std::shared_ptr<const Frame> answer, const std::string& from) {
    if (entry.deadline) mDeadlines->cancel(*entry.deadline);
    auto message = std::make_shared<MQMessage>(std::move(answer), linkTo(from));
    post([callback = std::move(entry.callback), message = std::move(message)] { callback(message); });
}

void Node::post(std::function<void()> task) {
    if (!mBus->post(task)) task();
}

}  // namespace Tarnwick::MQ
