#include "Tarnwick/MQ/TWMQClient.h"

#include "MQ/Node.h"

namespace Tarnwick::MQ {

namespace {

class Client : public TWMQClient {
public:
    explicit Client(std::shared_ptr<Node> node) : mNode(std::move(node)) {}
    ~Client() override { mNode->leave(); }

    void subscribe(const std::string& topic, void* owner, const RequestHandler& handler,
                   const Public::Base::Function<void(const std::shared_ptr<MQMessage>&)>&) override {
        mNode->subscriptions().add(topic, owner, handler);
    }
    void unsubcribe(void* owner) override { mNode->subscriptions().remove(owner); }

    std::shared_ptr<MQConnection> connection() const override {
        return mNode->serverId().empty() ? nullptr : mNode->link(mNode->serverId());
    }
    std::string masterId() const override { return mNode->presence().master("", mNode->now()); }
    Public::Base::ErrorInfo getServerList(ServerList& list) const override {
        list.clear();
        if (mNode->serverId().empty() || !mNode->usable(mNode->serverId())) {
            return {Public::Base::ErrorCode_LinkDead, ""};
        }
        list = mNode->presence().list("", mNode->now());
        return {};
    }

private:
    const std::shared_ptr<Node> mNode;
};

}  // namespace

std::shared_ptr<TWMQClient> TWMQClient::create(std::shared_ptr<Bus> bus, const NodeOptions& options) {
    auto node = Node::join(std::move(bus), options, Node::Role::Client);
    return node ? std::make_shared<Client>(std::move(node)) : nullptr;
}

}  // namespace Tarnwick::MQ
