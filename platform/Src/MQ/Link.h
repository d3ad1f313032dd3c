// The link of one node to one other.
#pragma once

#include <memory>
#include <string>

#include "MQ/Frame.h"
#include "Tarnwick/MQ/MQConnection.h"

namespace Tarnwick::MQ {

class Node;

/// Refers to its node weakly: a link that outlives it is dead.
class Link : public MQConnection {
public:
    Link(std::weak_ptr<Node> node, const std::string& own, const std::string& peer);

    unsigned int pushMessageRequest(const std::string& topic, const Protocol::TWPacket* body,
                                    const Protocol::TWPacket* authen, TWProtoMessageLevel level,
                                    const ResponseCallback& callback, unsigned int timeoutMs) override;
    unsigned int pushMessageRequestTo(const std::string& to, const std::string& topic, const Protocol::TWPacket* body,
                                      const Protocol::TWPacket* authen, TWProtoMessageLevel level,
                                      const ResponseCallback& callback, unsigned int timeoutMs) override;
    unsigned int pushStringRequestTo(const std::string& to, const std::string& topic,
                                     const Public::Base::SharedBuffer& body, const Protocol::TWPacket* authen,
                                     TWProtoMessageLevel level, const ResponseCallback& callback,
                                     unsigned int timeoutMs) override;
    unsigned int pushSessionMessageRequestForwardTo(const std::string& via, const std::string& to,
                                                    const std::string& topic, const Protocol::TWPacket* body,
                                                    const std::string& session, TWProtoMessageLevel level,
                                                    const ResponseCallback& callback, unsigned int timeoutMs) override;
    std::string myMqId() const override;
    Public::Base::ErrorInfo pushResponse(const std::shared_ptr<MQMessage>& response, bool flag) override;
    Public::Base::ErrorInfo forwardMessageTo(const std::string& from, const std::string& to,
                                             const std::shared_ptr<MQMessage>& message,
                                             const Protocol::TWPacket* authen) override;
    int connectionState() override;

private:
    unsigned int push(const Frame& frame, const ResponseCallback& callback, unsigned int timeoutMs);

    const std::weak_ptr<Node> mNode;
    const std::string mOwn;
    const std::string mPeer;
};

}  // namespace Tarnwick::MQ
