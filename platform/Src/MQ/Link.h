// One link of a node.
#pragma once

#include <memory>
#include <string>

#include "MQ/Frame.h"
#include "Tarnwick/MQ/MQConnection.h"

namespace Tarnwick::MQ {

class Node;

/// Knows its node weakly: once that is gone, every push gives 0 and the link is dead.
class Link : public MQConnection {
public:
    Link(std::weak_ptr<Node> node, std::string id, std::string peer);

    unsigned int pushMessageRequest(const std::string& topic, const Tarnwick::Protocol::TWPacket* body,
                                    const Tarnwick::Protocol::TWPacket* authen, TWProtoMessageLevel level,
                                    const ResponseCallback& callback, unsigned int timeoutMs) override;
    unsigned int pushMessageRequestTo(const std::string& to, const std::string& topic,
                                      const Tarnwick::Protocol::TWPacket* body,
                                      const Tarnwick::Protocol::TWPacket* authen, TWProtoMessageLevel level,
                                      const ResponseCallback& callback, unsigned int timeoutMs) override;
    unsigned int pushStringRequestTo(const std::string& to, const std::string& topic,
                                     const Public::Base::SharedBuffer& body, const Tarnwick::Protocol::TWPacket* authen,
                                     TWProtoMessageLevel level, const ResponseCallback& callback,
                                     unsigned int timeoutMs) override;
    unsigned int pushSessionMessageRequestForwardTo(const std::string& via, const std::string& to,
                                                    const std::string& topic, const Tarnwick::Protocol::TWPacket* body,
                                                    const std::string& session, TWProtoMessageLevel level,
                                                    const ResponseCallback& callback, unsigned int timeoutMs) override;
    std::string myMqId() const override { return mId; }
    Public::Base::ErrorInfo pushResponse(const std::shared_ptr<MQMessage>& response, bool flag) override;
    Public::Base::ErrorInfo forwardMessageTo(const std::string& from, const std::string& to,
                                             const std::shared_ptr<MQMessage>& message,
                                             const Tarnwick::Protocol::TWPacket* authen) override;
    int connectionState() override;

private:
    unsigned int push(Frame request, const ResponseCallback& callback, unsigned int timeoutMs);

    const std::weak_ptr<Node> mNode;
    const std::string mId;
    const std::string mPeer;
};

}  // namespace Tarnwick::MQ
