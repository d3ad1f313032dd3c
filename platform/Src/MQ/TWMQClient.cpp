#include "Tarnwick/MQ/TWMQClient.h"

#include "MQ/ClientMembership.h"
#include "MQ/Node.h"

namespace Tarnwick::MQ {

namespace {

class ClientNode : public TWMQClient {
public:
    ClientNode(const std::shared_ptr<Bus>& bus, const NodeOptions& options)
        : mServerId(options.serverId),
          mMembership(std::make_shared<ClientMembership>(bus, options, Deadlines::shared()->now())),
          mNode(std::make_shared<Node>(bus, options.id, mMembership)) {}
    ~ClientNode() override { mNode->close(); }

    bool open() { return mNode->open(); }

    void subscribe(const std::string& topic, void* owner, const RequestHandler& handler,
                   const Public::Base::Function<void(const std::shared_ptr<MQMessage>&)>&) override {
        mNode->subscriptions().add(topic, owner, handler);
    }
    void unsubcribe(void* owner) override { mNode->subscriptions().remove(owner); }

    std::shared_ptr<MQConnection> connection() const override {
        return mServerId.empty() ? nullptr : mNode->linkTo(mServerId);
    }
    std::string masterId() const override { return hasLiveLink() ? mMembership->master() : std::string(); }
    Public::Base::ErrorInfo getServerList(ServerList& list) const override {
        list.clear();
        if (!hasLiveLink()) return Public::Base::ErrorInfo(Public::Base::ErrorCode_LinkDead, "");
        list = mMembership->list();
        return Public::Base::ErrorInfo(0, "");
    }

private:
    bool hasLiveLink() const { return !mServerId.empty() && mNode->usable(mServerId); }

    const std::string mServerId;
    const std::shared_ptr<ClientMembership> mMembership;
    const std::shared_ptr<Node> mNode;
};

}  // namespace

std::shared_ptr<TWMQClient> TWMQClient::create(std::shared_ptr<Bus> bus, const NodeOptions& options) {
    if (!bus) return nullptr;
    auto client = std::make_shared<ClientNode>(bus, options);
    return client->open() ? client : nullptr;
}

}  // namespace Tarnwick::MQ
