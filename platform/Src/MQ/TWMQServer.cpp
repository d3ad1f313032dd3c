// The two kinds of server.
#include "Tarnwick/MQ/TWMQServer.h"

#include "MQ/Node.h"
#include "Tarnwick/MQ/TWMQSystemServer.h"

namespace Tarnwick::MQ {

namespace {

/// What both kinds do alike.
template <class Face>
class ServerOf : public Face {
public:
    explicit ServerOf(std::shared_ptr<Node> node) : mNode(std::move(node)) {}
    ~ServerOf() override { mNode->leave(); }

    void subscribe(const std::string& topic, void* owner, const RequestHandler& handler,
                   const Public::Base::Function<void(const std::shared_ptr<MQMessage>&)>&) override {
        mNode->subscriptions().add(topic, owner, handler);
    }
    void unsubcribe(void* owner) override { mNode->subscriptions().remove(owner); }
    std::string myMqId() const override { return mNode->options().id; }
    std::shared_ptr<MQConnection> connectionTo(const std::string& serverId, const std::string&) override {
        return mNode->linkToServer(serverId);
    }

protected:
    const std::shared_ptr<Node> mNode;
};

class Discover : public MQDiscover {
public:
    explicit Discover(std::weak_ptr<Node> node) : mNode(std::move(node)) {}
    ServerList getSystemServerList(const std::string& systemId) override {
        const auto node = mNode.lock();
        return node ? node->presence().list(systemId, node->now()) : ServerList();
    }

private:
    const std::weak_ptr<Node> mNode;
};

class SystemServer : public ServerOf<TWMQSystemServer> {
public:
    explicit SystemServer(const std::shared_ptr<Node>& node)
        : ServerOf(node), mDiscover(std::make_shared<Discover>(node)) {}

    std::string masterServerId() const override {
        return mNode->presence().master(mNode->options().systemId, mNode->now());
    }
    Public::Base::ErrorInfo getServerInfo(const std::string& serverId, TWServerInfo& info) override {
        if (mNode->presence().find(serverId, info, mNode->now())) return {};
        return {Public::Base::ErrorCode_NoSuchNode, ""};
    }
    TWProtoOrvSystemNotify_v2 mySystemNotify() override { return {mNode->options().systemId, mNode->serverId()}; }
    std::shared_ptr<MQDiscover> discover() override { return mDiscover; }
    std::shared_ptr<MQConnection> connectionToMaster(const std::string& serverId) override {
        return mNode->linkToServer(serverId);
    }

private:
    const std::shared_ptr<MQDiscover> mDiscover;
};

}  // namespace

std::shared_ptr<TWMQServer> TWMQServer::create(std::shared_ptr<Bus> bus, const NodeOptions& options) {
    auto node = Node::join(std::move(bus), options, Node::Role::Server);
    return node ? std::make_shared<ServerOf<TWMQServer>>(std::move(node)) : nullptr;
}

std::shared_ptr<TWMQSystemServer> TWMQSystemServer::create(std::shared_ptr<Bus> bus, const NodeOptions& options) {
    auto node = Node::join(std::move(bus), options, Node::Role::SystemServer);
    return node ? std::make_shared<SystemServer>(node) : nullptr;
}

}  // namespace Tarnwick::MQ
