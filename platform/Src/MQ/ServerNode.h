// What a plain server and a system server have in common.
#pragma once

#include <memory>
#include <string>

#include "MQ/Node.h"
#include "MQ/ServerMembership.h"
#include "Tarnwick/MQ/TWMQServer.h"

namespace Tarnwick::MQ {

/// @tparam Interface TWMQServer or TWMQSystemServer
template <class Interface>
class ServerNode : public Interface {
public:
    ServerNode(const std::shared_ptr<Bus>& bus, const NodeOptions& options, bool systemServer)
        : mMembership(std::make_shared<ServerMembership>(bus, options, systemServer, Deadlines::shared()->now())),
          mNode(std::make_shared<Node>(bus, options.id, mMembership)) {}
    ~ServerNode() override { mNode->close(); }

    bool open() { return mNode->open(); }

    void subscribe(const std::string& topic, void* owner, const RequestHandler& handler,
                   const Public::Base::Function<void(const std::shared_ptr<MQMessage>&)>&) override {
        mNode->subscriptions().add(topic, owner, handler);
    }
    void unsubcribe(void* owner) override { mNode->subscriptions().remove(owner); }

    std::string myMqId() const override { return mNode->id(); }
    std::shared_ptr<MQConnection> connectionTo(const std::string& serverId, const std::string&) override {
        const auto peer = mMembership->busIdOf(serverId);
        return peer.empty() ? nullptr : mNode->linkTo(peer);
    }

protected:
    const std::shared_ptr<ServerMembership> mMembership;

private:
    const std::shared_ptr<Node> mNode;
};

}  // namespace Tarnwick::MQ
