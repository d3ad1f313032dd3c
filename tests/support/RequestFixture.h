// A node of a small cluster with a VersionRequest, and what tests say to it.
#pragma once

#include "LogRecorder.h"
#include "PackageStore.h"
#include "Received.h"
#include "RequestAccess.h"
#include "TWProtocol/TWProtoUpgrade.h"
#include "Tarnwick/MQ/Bus.h"

namespace Tarnwick::OrvUpdate {

using Tarnwick::MQ::Bus;
using Tarnwick::MQ::MQConnection;
using Tarnwick::MQ::MQMessage;
using Tarnwick::MQ::NodeOptions;

/// Each test begins and ends as a process does that has not scanned its store.
class RequestFixture : public testing::Test {
protected:
    RequestFixture() { VersionRequestAccess::forgetStore(); }
    ~RequestFixture() override { VersionRequestAccess::forgetStore(); }

    static NodeOptions options(const std::string& id, const std::string& serverId = {}) {
        NodeOptions node;
        node.id = id;
        node.systemId = "site";
        node.serverId = serverId;
        return node;
    }
    std::shared_ptr<TWMQSystemServer> makeServer(const std::string& id = "server") {
        return TWMQSystemServer::create(mBus, options(id));
    }
    std::shared_ptr<TWMQClient> makeClient(const std::string& id = "client", const std::string& serverId = "server") {
        return TWMQClient::create(mBus, options(id, serverId));
    }
    std::shared_ptr<VersionRequest> makeRequest(const std::shared_ptr<TWMQSystemServer>& server,
                                                VersionType role = VersionType_Server) {
        return std::make_shared<VersionRequest>(mWorker, server, role);
    }
    std::shared_ptr<VersionRequest> makeRequest(const std::shared_ptr<TWMQClient>& client,
                                                VersionType role = VersionType_Client) {
        return std::make_shared<VersionRequest>(mWorker, client, role);
    }
    static ErrorInfo startAt(VersionRequest& request, const std::string& version, const std::string& dir) {
        return request.start(Version(version, 0), {}, {}, dir);
    }
    ErrorInfo startAt(VersionRequest& request, const std::string& version = "1.0.0.0") {
        return startAt(request, version, mStore.path());
    }
    /// A store with one package of each version, where the scan looks for them.
    void fillStore(const std::vector<std::string>& versions) {
        for (const auto& version : versions) mStore.put(packageOf(version), version);
    }
    static std::string packageOf(const std::string& version, const std::string& source = "Online") {
        return source + "/Windows x64 All/" + version + "/" + version + ".exe";
    }

    support::PackageStore mStore;
    std::shared_ptr<Bus> mBus = Bus::embedded();
    std::shared_ptr<IOWorker> mWorker = IOWorker::create(2);
};

/// What came back from a request on the queue.
struct QueueAnswer {
    int code = 0;
    std::string message;
    bool hasBody = false;
    std::string body;
};

/// Sends requests in the name of one node and gathers the answers.
class Asker {
public:
    explicit Asker(std::shared_ptr<MQConnection> link) : mLink(std::move(link)) {}

    /// @return the message's id, 0 when it could not be sent
    unsigned int send(const std::string& to, const std::string& topic,
                      const Tarnwick::Protocol::TWPacket* body = nullptr,
                      const Tarnwick::Protocol::TWPacket* authen = nullptr) {
        const auto answers = mAnswers;
        return mLink->pushMessageRequestTo(
            to, topic, body, authen, {},
            [answers](const std::shared_ptr<MQMessage>& message) {
                Tarnwick::Protocol::TWProtoUpgradePkt packet;
                QueueAnswer answer;
                answer.code = message->errorInfo().errorCode();
                answer.message = message->errorInfo().errorMessage();
                answer.hasBody = message->parseBody(&packet, false);
                answer.body = packet.body;
                answers.add(answer);
            },
            60000);
    }
    /// Sends and waits. @return nothing when no answer came
    std::optional<QueueAnswer> ask(const std::string& to, const std::string& topic,
                                   const Tarnwick::Protocol::TWPacket* body = nullptr) {
        const size_t before = mAnswers.count();
        if (send(to, topic, body) == 0 || !mAnswers.waitFor(before + 1)) return std::nullopt;
        return mAnswers.values()[before];
    }
    const support::Received<QueueAnswer>& answers() const { return mAnswers; }

private:
    std::shared_ptr<MQConnection> mLink;
    support::Received<QueueAnswer> mAnswers;
};

inline Tarnwick::Protocol::TWProtoUpgradeNotify notifyBody(const std::string& text) {
    Tarnwick::Protocol::TWProtoUpgradeNotify notify;
    notify.body = text;
    return notify;
}

}  // namespace Tarnwick::OrvUpdate
