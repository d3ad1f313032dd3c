// Queue objects of which a test says whom they know and how their links answer.
#pragma once

#include <functional>
#include <mutex>
#include <set>

#include "FakeQueueNodes.h"
#include "MQ/Frame.h"

namespace support {

/// Notes what is pushed and sends nothing. A test answers each push itself, when and from where it likes.
class ScriptedLink : public FakeConnection {
public:
    struct Push {
        std::string to;  // empty for the peer of the link
        std::string topic;
        SharedBuffer body;
        bool hasAuthen = false;
        TWProtoMessageLevel level{};
        ResponseCallback callback;
        unsigned int timeoutMs = 0;

        void answer(const ErrorInfo& result, const TWPacket* packet = nullptr) const {
            auto frame = std::make_shared<Frame>();
            frame->kind = FrameKind_Answer;
            frame->sender = to;
            frame->topic = topic;
            frame->errorCode = result.errorCode();
            frame->errorText = result.errorMessage();
            frame->body = TWPacket::serializeAsBytes(packet);
            callback(std::make_shared<MQMessage>(std::move(frame), std::weak_ptr<MQConnection>()));
        }
    };

    unsigned int pushMessageRequest(const std::string& topic, const TWPacket* body, const TWPacket* authen,
                                    TWProtoMessageLevel level, const ResponseCallback& callback,
                                    unsigned int timeoutMs) override {
        return note({"", topic, TWPacket::serializeAsBytes(body), authen != nullptr, level, callback, timeoutMs});
    }
    unsigned int pushStringRequestTo(const std::string& to, const std::string& topic, const SharedBuffer& body,
                                     const TWPacket* authen, TWProtoMessageLevel level,
                                     const ResponseCallback& callback, unsigned int timeoutMs) override {
        return note({to, topic, body, authen != nullptr, level, callback, timeoutMs});
    }

    std::vector<Push> pushes() const {
        std::lock_guard lock(mMutex);
        return mPushes;
    }
    std::vector<Push> pushesOf(const std::string& topic) const {
        auto found = pushes();
        std::erase_if(found, [&](const Push& push) { return push.topic != topic; });
        return found;
    }
    std::vector<std::string> asked() const {
        std::vector<std::string> ids;
        for (const auto& push : pushes()) ids.push_back(push.to);
        return ids;
    }
    /// The push to that node; the test fails without one.
    Push to(const std::string& id) const {
        for (const auto& push : pushes()) {
            if (push.to == id) return push;
        }
        ADD_FAILURE() << id << " was not asked";
        return {};
    }
    /// Lets go of the callbacks.
    void forget() {
        std::lock_guard lock(mMutex);
        mPushes.clear();
    }

    std::set<std::string> refused;                   // pushes to these return 0
    std::function<void(const Push&)> answersAtOnce;  // runs inside the push

private:
    unsigned int note(const Push& push) {
        if (refused.count(push.to)) return 0;
        unsigned int id = 0;
        {
            std::lock_guard lock(mMutex);
            mPushes.push_back(push);
            id = static_cast<unsigned int>(mPushes.size());
        }
        if (answersAtOnce) answersAtOnce(push);
        return id;
    }

    mutable std::mutex mMutex;
    std::vector<Push> mPushes;
};

inline ServerList serverList(const std::vector<std::string>& ids, bool reachable = true) {
    ServerList servers;
    for (const auto& id : ids) {
        servers[id].serverId = id;
        servers[id].reachable = reachable;
    }
    return servers;
}

struct ScriptedClient : FakeClient {
    ErrorInfo getServerList(ServerList& list) const override {
        list = servers;
        return listed;
    }

    ServerList servers;
    ErrorInfo listed;
};

struct ScriptedServer : FakeSystemServer, std::enable_shared_from_this<ScriptedServer> {
    struct Discover : MQDiscover {
        explicit Discover(ScriptedServer& owner) : server(owner) {}
        ServerList getSystemServerList(const std::string& systemId) override {
            server.systemsAsked.push_back(systemId);
            return server.servers;
        }
        ScriptedServer& server;
    };

    ErrorInfo getServerInfo(const std::string& serverId, TWServerInfo& info) override {
        const auto found = servers.find(serverId);
        if (found == servers.end()) return {-204, ""};
        info = found->second;
        return {};
    }
    TWProtoOrvSystemNotify_v2 mySystemNotify() override {
        TWProtoOrvSystemNotify_v2 notify;
        notify.systemId = "site";
        notify.serverId = "own";
        return notify;
    }
    std::shared_ptr<MQDiscover> discover() override { return discovers ? std::make_shared<Discover>(*this) : nullptr; }

    ServerList servers;
    bool discovers = true;
    std::vector<std::string> systemsAsked;
};

}  // namespace support
