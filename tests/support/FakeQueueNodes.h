// Queue objects that lead nowhere and tell what they were asked.
#pragma once

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "Tarnwick/MQ/TWMQClient.h"
#include "Tarnwick/MQ/TWMQSystemServer.h"

namespace support {

using namespace Tarnwick::MQ;
using Public::Base::ErrorInfo;
using Public::Base::SharedBuffer;
using Tarnwick::Protocol::TWPacket;

/// Sends nothing.
struct FakeConnection : MQConnection {
    unsigned int pushMessageRequest(const std::string&, const TWPacket*, const TWPacket*, TWProtoMessageLevel,
                                    const ResponseCallback&, unsigned int) override {
        return 0;
    }
    unsigned int pushMessageRequestTo(const std::string&, const std::string&, const TWPacket*, const TWPacket*,
                                      TWProtoMessageLevel, const ResponseCallback&, unsigned int) override {
        return 0;
    }
    unsigned int pushStringRequestTo(const std::string&, const std::string&, const SharedBuffer&, const TWPacket*,
                                     TWProtoMessageLevel, const ResponseCallback&, unsigned int) override {
        return 0;
    }
    unsigned int pushSessionMessageRequestForwardTo(const std::string&, const std::string&, const std::string&,
                                                    const TWPacket*, const std::string&, TWProtoMessageLevel,
                                                    const ResponseCallback&, unsigned int) override {
        return 0;
    }
    std::string myMqId() const override { return "me"; }
    ErrorInfo pushResponse(const std::shared_ptr<MQMessage>&, bool) override { return {-203, ""}; }
    ErrorInfo forwardMessageTo(const std::string&, const std::string&, const std::shared_ptr<MQMessage>&,
                               const TWPacket*) override {
        return {-203, ""};
    }
    int connectionState() override { return ConnectionState_Dead; }
};

/// A node without subscriptions, of any base.
template <class Base>
struct FakeDispatcher : Base {
    void subscribe(const std::string&, void*, const RequestHandler&,
                   const Public::Base::Function<void(const std::shared_ptr<MQMessage>&)>&) override {}
    void unsubcribe(void*) override {}
};

struct FakeClient : FakeDispatcher<TWMQClient> {
    std::shared_ptr<MQConnection> connection() const override { return link; }
    std::string masterId() const override { return master; }
    ErrorInfo getServerList(ServerList&) const override { return {}; }

    std::shared_ptr<MQConnection> link;
    std::string master;
};

/// Knows a link for each id that is written into `links`.
template <class Base>
struct FakeServerOf : FakeDispatcher<Base> {
    std::string myMqId() const override { return "me"; }
    std::shared_ptr<MQConnection> connectionTo(const std::string& serverId, const std::string& route) override {
        asked.emplace_back(serverId, route);
        const auto found = links.find(serverId);
        return found == links.end() ? nullptr : found->second;
    }

    std::map<std::string, std::shared_ptr<MQConnection>> links;
    std::vector<std::pair<std::string, std::string>> asked;  // server id and route
};

using FakeServer = FakeServerOf<TWMQServer>;

struct FakeSystemServer : FakeServerOf<TWMQSystemServer> {
    std::string masterServerId() const override { return master; }
    ErrorInfo getServerInfo(const std::string&, TWServerInfo&) override { return {-204, ""}; }
    TWProtoOrvSystemNotify_v2 mySystemNotify() override { return {}; }
    std::shared_ptr<MQDiscover> discover() override { return nullptr; }
    std::shared_ptr<MQConnection> connectionToMaster(const std::string& serverId) override {
        const auto found = masterLinks.find(serverId);
        return found == masterLinks.end() ? nullptr : found->second;
    }

    std::string master;
    std::map<std::string, std::shared_ptr<MQConnection>> masterLinks;
};

}  // namespace support
