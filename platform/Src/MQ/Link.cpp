#include "MQ/Link.h"

#include "MQ/Node.h"

namespace Tarnwick::MQ {

using Protocol::TWPacket;
using Public::Base::ErrorCode_Failed;
using Public::Base::ErrorCode_LinkDead;
using Public::Base::ErrorInfo;
using Public::Base::SharedBuffer;

namespace {

Frame requestFrame(const std::string& to, const std::string& topic, const SharedBuffer& body, bool hasBody,
                   const TWPacket* authen) {
    Frame frame;
    frame.addressee = to;
    frame.topic = topic;
    frame.hasBody = hasBody;
    frame.body = body.toStdString();
    frame.authen = TWPacket::serializeAsBytes(authen).toStdString();
    return frame;
}

}  // namespace

Link::Link(std::weak_ptr<Node> node, const std::string& own, const std::string& peer)
    : mNode(std::move(node)), mOwn(own), mPeer(peer) {}

unsigned int Link::push(const Frame& frame, const ResponseCallback& callback, unsigned int timeoutMs) {
    const auto node = mNode.lock();
    return node ? node->request(mPeer, frame, callback, timeoutMs) : 0;
}

unsigned int Link::pushMessageRequest(const std::string& topic, const TWPacket* body, const TWPacket* authen,
                                      TWProtoMessageLevel level, const ResponseCallback& callback,
                                      unsigned int timeoutMs) {
    return pushMessageRequestTo(mPeer, topic, body, authen, level, callback, timeoutMs);
}

unsigned int Link::pushMessageRequestTo(const std::string& to, const std::string& topic, const TWPacket* body,
                                        const TWPacket* authen, TWProtoMessageLevel, const ResponseCallback& callback,
                                        unsigned int timeoutMs) {
    return push(requestFrame(to, topic, TWPacket::serializeAsBytes(body), body != nullptr, authen), callback, timeoutMs);
}

unsigned int Link::pushStringRequestTo(const std::string& to, const std::string& topic, const SharedBuffer& body,
                                       const TWPacket* authen, TWProtoMessageLevel, const ResponseCallback& callback,
                                       unsigned int timeoutMs) {
    return push(requestFrame(to, topic, body, true, authen), callback, timeoutMs);
}

unsigned int Link::pushSessionMessageRequestForwardTo(const std::string& via, const std::string& to,
                                                      const std::string& topic, const TWPacket* body,
                                                      const std::string& session, TWProtoMessageLevel,
                                                      const ResponseCallback& callback, unsigned int timeoutMs) {
    Frame frame = requestFrame(via, topic, TWPacket::serializeAsBytes(body), body != nullptr, nullptr);
    frame.finalTarget = to;
    frame.session = session;
    return push(frame, callback, timeoutMs);
}

std::string Link::myMqId() const { return mOwn; }

ErrorInfo Link::pushResponse(const std::shared_ptr<MQMessage>& response, bool) {
    const auto node = mNode.lock();
    if (!response || response->frame().kind != Frame::Response) return {ErrorCode_Failed, ""};
    // Straight to the node that waits, which need not be the one that the request came from.
    if (!node || !node->send(response->frame().waiter, response->frame())) return {ErrorCode_LinkDead, ""};
    return {};
}

ErrorInfo Link::forwardMessageTo(const std::string& from, const std::string& to,
                                 const std::shared_ptr<MQMessage>& message, const TWPacket* authen) {
    const auto node = mNode.lock();
    if (!message) return {ErrorCode_Failed, ""};
    Frame frame = message->frame();
    frame.sender = from;
    frame.addressee = to;
    frame.finalTarget = to;
    frame.authen = TWPacket::serializeAsBytes(authen).toStdString();
    if (!node || !node->send(mPeer, frame)) return {ErrorCode_LinkDead, ""};
    return {};
}

int Link::connectionState() {
    const auto node = mNode.lock();
    return node && node->usable(mPeer) ? ConnectionState_Connected : ConnectionState_Dead;
}

}  // namespace Tarnwick::MQ
