// The routing step, on a server of which a test says what it knows.
#include "ServiceFixture.h"
#include "TWProtocol/TWProtoUser.h"

using namespace Tarnwick::OrvUpdate;
using support::Received;
using Access = VersionServiceAccess;
using Tarnwick::MQ::TWServerInfo;
using Tarnwick::Protocol::TWProtoAuthUserInfo;

namespace {

/// A link that notes what is passed on.
struct NotingConnection : support::FakeConnection {
    struct Forwarded {
        std::string from;
        std::string to;
        std::shared_ptr<MQMessage> message;
        bool hasUser = false;
        std::string user;
    };
    ErrorInfo forwardMessageTo(const std::string& from, const std::string& to,
                               const std::shared_ptr<MQMessage>& message,
                               const Tarnwick::Protocol::TWPacket* authen) override {
        const auto* user = dynamic_cast<const TWProtoAuthUserInfo*>(authen);
        forwarded.push_back({from, to, message, authen != nullptr, user ? user->login.user.userName : ""});
        return result;
    }
    int connectionState() override { return state; }

    int state = 4;
    ErrorInfo result;
    std::vector<Forwarded> forwarded;
};

struct KnowingServer : support::FakeSystemServer {
    ErrorInfo getServerInfo(const std::string& serverId, TWServerInfo& info) override {
        const auto found = known.find(serverId);
        if (found == known.end()) return {-204, ""};
        info = found->second;
        return {};
    }
    Tarnwick::MQ::TWProtoOrvSystemNotify_v2 mySystemNotify() override {
        Tarnwick::MQ::TWProtoOrvSystemNotify_v2 notify;
        notify.serverId = "own";
        return notify;
    }
    std::map<std::string, TWServerInfo> known;
};

class Routing : public ServiceFrame {
protected:
    Routing() { mNode->links["far"] = mLink; }

    void know(bool reachable, bool ready) {
        TWServerInfo info;
        info.reachable = reachable;
        info.ready = ready;
        mNode->known["far"] = info;
    }
    /// A request as a node receives it. @param user empty for none
    std::shared_ptr<MQMessage> received(const std::string& user = {}) {
        const auto server = makeServer();
        const auto peer = makeServer("peer");
        const Received<std::shared_ptr<MQMessage>> messages;
        server->subscribe("topic_test", this,
                          [messages](const std::shared_ptr<MQMessage>& message) {
                              messages.add(message);
                              return message->buildResponse(ErrorInfo(), nullptr);
                          },
                          {});
        TWProtoAuthUserInfo record;
        record.login.user.userName = user;
        Asker asker(peer->connectionTo("server", ""));
        asker.send("server", "topic_test", nullptr, user.empty() ? nullptr : &record);
        return messages.first().value_or(nullptr);
    }
    std::shared_ptr<MQMessage> route(const std::string& target, const std::shared_ptr<MQMessage>& message) {
        return Access::routeToTarget(*mService, target, message);
    }
    int codeTo(const std::string& target) {
        const auto outcome = route(target, received());
        return outcome ? static_cast<int>(outcome->errorInfo().errorCode()) : 99;
    }

    const std::shared_ptr<KnowingServer> mNode = std::make_shared<KnowingServer>();
    const std::shared_ptr<NotingConnection> mLink = std::make_shared<NotingConnection>();
    const std::shared_ptr<VersionService> mService = makeService(mNode);
};

}  // namespace

TEST_F(Routing, ServesAnEmptyTargetHere) { EXPECT_EQ(route("", received()), nullptr); }

TEST_F(Routing, ServesTheOwnServerIdHere) { EXPECT_EQ(route("own", received()), nullptr); }

TEST_F(Routing, ServesAnyTargetHereOnAClient) {
    const auto service = makeService(std::make_shared<support::FakeClient>());
    EXPECT_EQ(Access::routeToTarget(*service, "far", received()), nullptr);
}

TEST_F(Routing, ServesAnyTargetHereOnAPlainServer) {
    const auto service = makeService(std::make_shared<support::FakeServer>());
    EXPECT_EQ(Access::routeToTarget(*service, "far", received()), nullptr);
}

TEST_F(Routing, RefusesAServerThatIsNotReachable) {
    know(false, true);
    EXPECT_EQ(codeTo("far"), -425);
    EXPECT_TRUE(mLink->forwarded.empty());
}

TEST_F(Routing, RefusesAServerThatIsNotReady) {
    know(true, false);
    EXPECT_EQ(codeTo("far"), -426);
    EXPECT_TRUE(mLink->forwarded.empty());
}

TEST_F(Routing, TellsNotReachableBeforeNotReady) {
    know(false, false);
    EXPECT_EQ(codeTo("far"), -425);
}

TEST_F(Routing, TellsNotReachableBeforeALostLink) {
    know(false, true);
    mNode->links.clear();
    EXPECT_EQ(codeTo("far"), -425);
}

TEST_F(Routing, RefusesAServerWithoutALink) {
    know(true, true);
    mNode->links.clear();
    EXPECT_EQ(codeTo("far"), -203);
}

TEST_F(Routing, RefusesAServerWithADeadLink) {
    know(true, true);
    mLink->state = 6;
    EXPECT_EQ(codeTo("far"), -203);
    EXPECT_TRUE(mLink->forwarded.empty());
}

TEST_F(Routing, RefusesAnUnknownServerWithoutALink) { EXPECT_EQ(codeTo("nowhere"), -203); }

TEST_F(Routing, RefusesAnUnknownServerWithADeadLink) {
    mLink->state = 6;
    EXPECT_EQ(codeTo("far"), -203);
}

TEST_F(Routing, RefusalsHaveNoMessageAndNoBody) {
    know(false, true);
    const auto outcome = route("far", received());
    ASSERT_TRUE(outcome);
    EXPECT_EQ(outcome->errorInfo().errorMessage(), "");
    Tarnwick::Protocol::TWProtoUpgradePkt packet;
    EXPECT_FALSE(outcome->parseBody(&packet, false));
}

TEST_F(Routing, PassesOnToAServerThatIsReady) {
    know(true, true);
    const auto message = received();
    const auto outcome = route("far", message);
    ASSERT_TRUE(outcome);
    EXPECT_EQ(outcome->errorInfo().errorCode(), 0);
    ASSERT_EQ(mLink->forwarded.size(), 1U);
    EXPECT_EQ(mLink->forwarded[0].from, "own");
    EXPECT_EQ(mLink->forwarded[0].to, "far");
    EXPECT_EQ(mLink->forwarded[0].message, message);
}

TEST_F(Routing, PassesOnToAnUnknownServerWithAUsableLink) {
    EXPECT_EQ(codeTo("far"), 0);
    EXPECT_EQ(mLink->forwarded.size(), 1U);
}

TEST_F(Routing, LinkInAnyStateButDeadIsUsable) {
    mLink->state = 0;
    EXPECT_EQ(codeTo("far"), 0);
    mLink->state = 5;
    EXPECT_EQ(codeTo("far"), 0);
    EXPECT_EQ(mLink->forwarded.size(), 2U);
}

TEST_F(Routing, AsksForTheLinkWithAnEmptyRoute) {
    codeTo("far");
    EXPECT_EQ(mNode->asked, (std::vector<std::pair<std::string, std::string>>{{"far", ""}}));
}

TEST_F(Routing, IgnoresWhatThePassingOnGives) {
    mLink->result = ErrorInfo(-203, "");
    EXPECT_EQ(codeTo("far"), 0);
}

TEST_F(Routing, PassesTheUserOn) {
    route("far", received("operator"));
    ASSERT_EQ(mLink->forwarded.size(), 1U);
    EXPECT_TRUE(mLink->forwarded[0].hasUser);
    EXPECT_EQ(mLink->forwarded[0].user, "operator");
}

TEST_F(Routing, PassesNoUserOnWhereThereIsNone) {
    route("far", received());
    ASSERT_EQ(mLink->forwarded.size(), 1U);
    EXPECT_FALSE(mLink->forwarded[0].hasUser);
}
