#include "Tarnwick/MQ/TWMQSystemServer.h"

#include "MQ/ServerNode.h"

namespace Tarnwick::MQ {

namespace {

class Discover : public MQDiscover {
public:
    explicit Discover(std::shared_ptr<ServerMembership> membership) : mMembership(std::move(membership)) {}
    ServerList getSystemServerList(const std::string& systemId) override { return mMembership->list(systemId); }

private:
    const std::shared_ptr<ServerMembership> mMembership;
};

class SystemServerNode : public ServerNode<TWMQSystemServer> {
public:
    SystemServerNode(const std::shared_ptr<Bus>& bus, const NodeOptions& options)
        : ServerNode(bus, options, true), mDiscover(std::make_shared<Discover>(mMembership)) {}

    std::string masterServerId() const override { return mMembership->master(); }
    Public::Base::ErrorInfo getServerInfo(const std::string& serverId, TWServerInfo& info) override {
        const bool member = mMembership->infoOf(serverId, info);
        return Public::Base::ErrorInfo(member ? 0 : Public::Base::ErrorCode_NoSuchNode, "");
    }
    TWProtoOrvSystemNotify_v2 mySystemNotify() override {
        return {mMembership->self().systemId, mMembership->self().serverId};
    }
    std::shared_ptr<MQDiscover> discover() override { return mDiscover; }
    std::shared_ptr<MQConnection> connectionToMaster(const std::string& serverId) override {
        return connectionTo(serverId, "");
    }

private:
    const std::shared_ptr<Discover> mDiscover;
};

}  // namespace

std::shared_ptr<TWMQSystemServer> TWMQSystemServer::create(std::shared_ptr<Bus> bus, const NodeOptions& options) {
    if (!bus) return nullptr;
    auto server = std::make_shared<SystemServerNode>(bus, options);
    return server->open() ? server : nullptr;
}

}  // namespace Tarnwick::MQ
