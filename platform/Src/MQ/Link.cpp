#include "MQ/Link.h"

#include "MQ/Node.h"

namespace Tarnwick::MQ {

using Public::Base::ErrorInfo;
using Tarnwick::Protocol::TWPacket;

namespace {

Frame requestFor(const std::string& to, const std::string& topic, const Public::Base::SharedBuffer& body,
                 const TWPacket* authen, TWProtoMessageLevel level) {
    Frame request;
    request.addressee = to;
    request.topic = topic;
    request.body = body;
    request.authen = TWPacket::serializeAsBytes(authen);
    request.level = static_cast<uint32_t>(level);
    return request;
}

ErrorInfo outcome(bool sent) { return ErrorInfo(sent ? 0 : Public::Base::ErrorCode_LinkDead, ""); }

}  // namespace

Link::Link(std::weak_ptr<Node> node, std::string id, std::string peer)
    : mNode(std::move(node)), mId(std::move(id)), mPeer(std::move(peer)) {}

unsigned int Link::push(Frame request, const ResponseCallback& callback, unsigned int timeoutMs) {
    const auto node = mNode.lock();
    return node && !request.topic.empty() ? node->push(mPeer, std::move(request), callback, timeoutMs) : 0;
}

unsigned int Link::pushMessageRequest(const std::string& topic, const TWPacket* body, const TWPacket* authen,
                                      TWProtoMessageLevel level, const ResponseCallback& callback,
                                      unsigned int timeoutMs) {
    return pushMessageRequestTo(mPeer, topic, body, authen, level, callback, timeoutMs);
}

unsigned int Link::pushMessageRequestTo(const std::string& to, const std::string& topic, const TWPacket* body,
                                        const TWPacket* authen, TWProtoMessageLevel level,
                                        const ResponseCallback& callback, unsigned int timeoutMs) {
    return pushStringRequestTo(to, topic, TWPacket::serializeAsBytes(body), authen, level, callback, timeoutMs);
}

unsigned int Link::pushStringRequestTo(const std::string& to, const std::string& topic,
                                       const Public::Base::SharedBuffer& body, const TWPacket* authen,
                                       TWProtoMessageLevel level, const ResponseCallback& callback,
                                       unsigned int timeoutMs) {
    return push(requestFor(to, topic, body, authen, level), callback, timeoutMs);
}

unsigned int Link::pushSessionMessageRequestForwardTo(const std::string& via, const std::string& to,
                                                      const std::string& topic, const TWPacket* body,
                                                      const std::string& session, TWProtoMessageLevel level,
                                                      const ResponseCallback& callback, unsigned int timeoutMs) {
    auto request = requestFor(via, topic, TWPacket::serializeAsBytes(body), nullptr, level);
    request.finalTarget = to;
    request.session = session;
    return push(std::move(request), callback, timeoutMs);
}

ErrorInfo Link::pushResponse(const std::shared_ptr<MQMessage>& response, bool) {
    const auto node = mNode.lock();
    return outcome(node && response && node->respond(response->frame()));
}

ErrorInfo Link::forwardMessageTo(const std::string& from, const std::string& to,
                                 const std::shared_ptr<MQMessage>& message, const TWPacket* authen) {
    const auto node = mNode.lock();
    if (!node || !message) return outcome(false);
    auto request = message->frame();
    request.sender = from;
    request.addressee = to;
    request.finalTarget = to;
    request.authen = TWPacket::serializeAsBytes(authen);
    return outcome(node->forward(mPeer, std::move(request)));
}

int Link::connectionState() {
    const auto node = mNode.lock();
    return node && node->usable(mPeer) ? ConnectionState_Connected : ConnectionState_Dead;
}

}  // namespace Tarnwick::MQ
